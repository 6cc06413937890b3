// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What a device goes through, in a loop, so that there is something to see.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <vector>

namespace norvik::qel::monitor {

// Keeps no time of its own: the command that waits for events takes the steps when they are due.
//
// Threads: the main thread.
class DeviceScript {
 public:
  using Clock = std::chrono::steady_clock;

  struct Step {
    std::chrono::milliseconds pause_before;
    std::function<void()> act;
  };

  // At least one step.
  explicit DeviceScript(std::vector<Step> steps);
  virtual ~DeviceScript() = default;
  DeviceScript(const DeviceScript&) = delete;
  DeviceScript& operator=(const DeviceScript&) = delete;

  Clock::time_point next_step() const { return next_step_; }
  void TakeStep();

 private:
  const std::vector<Step> steps_;
  size_t step_ = 0;
  Clock::time_point next_step_;
};

}  // namespace norvik::qel::monitor
