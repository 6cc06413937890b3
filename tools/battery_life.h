// What a phone's battery goes through, in a loop, so that there is something to see.
#pragma once

#include <chrono>
#include <cstddef>

#include "tools/device.h"

namespace norvik::qel::tool {

// Keeps no time of its own: whoever waits for events takes the steps when they are due.
//
// Threads: the main thread.
class BatteryLife {
 public:
  using Clock = std::chrono::steady_clock;

  explicit BatteryLife(BatteryDriver& driver);
  // Leaves the service running: without it the library's farewell would wait for it.
  ~BatteryLife();
  BatteryLife(const BatteryLife&) = delete;
  BatteryLife& operator=(const BatteryLife&) = delete;

  Clock::time_point next_step() const { return next_step_; }
  void Step();

 private:
  BatteryDriver& driver_;
  size_t step_ = 0;
  int cycles_ = 10;
  Clock::time_point next_step_;
};

}  // namespace norvik::qel::tool
