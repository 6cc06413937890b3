// What a device goes through, in a loop, so that there is something to see.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <vector>

namespace norvik::qel::tool {

// Keeps no time of its own: whoever waits for events takes the steps when they are due.
//
// Threads: the main thread.
class Life {
 public:
  using Clock = std::chrono::steady_clock;

  struct Step {
    std::chrono::milliseconds pause_before;
    std::function<void()> act;
  };

  // At least one step.
  explicit Life(std::vector<Step> steps);
  virtual ~Life() = default;
  Life(const Life&) = delete;
  Life& operator=(const Life&) = delete;

  Clock::time_point next_step() const { return next_step_; }
  void TakeStep();

 private:
  const std::vector<Step> steps_;
  size_t step_ = 0;
  Clock::time_point next_step_;
};

}  // namespace norvik::qel::tool
