// Word from the kernel that a device of one subsystem has come, changed or gone.
#pragma once

#include <optional>
#include <string>

#include "udev.h"

namespace norvik::qel::linux_machine {

struct DeviceChange {
  enum class Kind {
    kThere,    // it has come or changed
    kRemoved,  // it is going; its files may still be there for a moment
    kLost,     // too many at once: any number of events has been dropped
  };
  Kind kind;
  std::string syspath = {};
};

// Hears from the moment it is made. Threads: one at a time.
class DeviceMonitor {
 public:
  explicit DeviceMonitor(const char* subsystem);

  // False, with errno of the constructor in error(), when nothing will ever be heard.
  bool works() const { return error_ == 0; }
  int error() const { return error_; }
  // Readable while something waits; -1 when nothing will ever be heard.
  int fd() const { return works() ? udev_monitor_get_fd(monitor_.get()) : -1; }
  // The next event; nothing when no more wait. Never blocks.
  [[nodiscard]] std::optional<DeviceChange> Next();
  // Closes the socket, which is of no use any more.
  void GiveUp(int error);

 private:
  int Open(const char* subsystem);

  Udev udev_;
  UdevMonitor monitor_;
  int error_ = 0;
};

}  // namespace norvik::qel::linux_machine
