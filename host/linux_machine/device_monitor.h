// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Events of the devices of some subsystems: added, changed, removed.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "device_files.h"

namespace norvik::qel::linux_machine {

struct DeviceChange {
  enum class Kind {
    kThere,    // added or changed
    kRemoved,  // removed; its files may still exist for a moment
    kLost,     // overflow: an unknown number of events was dropped
  };
  Kind kind;
  std::string syspath = {};
};

// Receives events from its construction on. Threads: one at a time.
class DeviceMonitor {
 public:
  explicit DeviceMonitor(const std::vector<const char*>& subsystems);

  // False if no events can be received. error() is then an errno number.
  bool works() const { return error_ == 0; }
  int error() const { return error_; }
  // Readable while events wait. -1 if no events can be received.
  int fd() const { return works() ? udev_monitor_get_fd(monitor_.get()) : -1; }
  // The next event, empty if none waits. Never blocks.
  [[nodiscard]] std::optional<DeviceChange> Next();
  // Closes the socket after an error.
  void GiveUp(int error);

 private:
  int Open(const std::vector<const char*>& subsystems);

  Udev udev_;
  UdevMonitor monitor_;
  int error_ = 0;
};

}  // namespace norvik::qel::linux_machine
