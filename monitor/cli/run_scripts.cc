#include "tools/living.h"

#include <algorithm>

namespace norvik::qel::tool {

using Clock = Session::Clock;

void Live(Session& session, std::initializer_list<Life*> lives, Clock::time_point end) {
  while (true) {
    Clock::time_point next = end;
    for (const Life* life : lives) {
      if (life != nullptr) next = std::min(next, life->next_step());
    }
    const Session::Wake wake = session.WaitUntil(next);
    if (wake == Session::Wake::kStop) return;
    if (wake == Session::Wake::kEvent) continue;
    const Clock::time_point now = Clock::now();
    if (now >= end) return;
    for (Life* life : lives) {
      if (life != nullptr && life->next_step() <= now) life->TakeStep();
    }
  }
}

Clock::time_point EndOf(const Options& options) {
  return options.duration ? Clock::now() + *options.duration : Clock::time_point::max();
}

}  // namespace norvik::qel::tool
