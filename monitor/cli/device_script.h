// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Takes the steps of a device while its events are shown.
#pragma once

#include <string_view>
#include <vector>

#include "cli/session.h"
#include "scenario/device_steps.h"

namespace norvik::qel::monitor {

// Threads: the main thread.
class DeviceScript {
 public:
  // The steps of one service, or of all those that the device can be told about.
  explicit DeviceScript(Device& device, std::string_view service = "");
  // Leaves the health service running: without it the library's farewell would wait for it.
  ~DeviceScript();
  DeviceScript(const DeviceScript&) = delete;
  DeviceScript& operator=(const DeviceScript&) = delete;

  // Until the user stops it or the time is over, if there is an end.
  void Run(Session& session, Session::Clock::time_point end);

 private:
  struct Loop {
    DeviceSteps steps;
    size_t next = 0;
    Session::Clock::time_point due = Session::Clock::now() + steps[0].pause_before;
  };

  Device& device_;
  std::vector<Loop> loops_;
};

// The time after which a command ends by itself, if there is one.
Session::Clock::time_point EndOf(const Options& options);

}  // namespace norvik::qel::monitor
