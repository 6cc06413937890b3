// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Runs the scripted steps of a device while a session shows its events.
#pragma once

#include <set>
#include <string_view>
#include <vector>

#include "cli/session.h"

namespace norvik::qel::monitor {

// Threads: the main thread.
class DeviceScript {
 public:
  // Runs the steps of the families' services, or of all services.
  explicit DeviceScript(Device& device, const std::set<std::string_view>& families = {});
  ~DeviceScript() { device_.EndSteps(); }
  DeviceScript(const DeviceScript&) = delete;
  DeviceScript& operator=(const DeviceScript&) = delete;

  // Returns when the session is stopped or at `end`; time_point::max() means no end.
  void Run(Session& session, Session::Clock::time_point end);

 private:
  struct Loop {
    std::vector<DeviceStep> steps;
    size_t next = 0;
    Session::Clock::time_point due = Session::Clock::now() + steps[0].pause_before;
  };

  Device& device_;
  std::vector<Loop> loops_;
};

// When a command ends by itself (--for); time_point::max() without that option.
Session::Clock::time_point EndOf(const Options& options);

}  // namespace norvik::qel::monitor
