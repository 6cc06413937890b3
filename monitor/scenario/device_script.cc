#include "tools/life.h"

#include <utility>

namespace norvik::qel::tool {

Life::Life(std::vector<Step> steps)
    : steps_(std::move(steps)), next_step_(Clock::now() + steps_[0].pause_before) {}

void Life::TakeStep() {
  steps_[step_].act();
  step_ = (step_ + 1) % steps_.size();
  next_step_ = Clock::now() + steps_[step_].pause_before;
}

}  // namespace norvik::qel::tool
