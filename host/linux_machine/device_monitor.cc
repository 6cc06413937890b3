// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "device_monitor.h"

#include <errno.h>
#include <unistd.h>

#include <string_view>

namespace norvik::qel::linux_machine {

namespace {

// udevd forwards events when its rules have run. Without udevd, as in a container, only the
// kernel's own events are available.
const char* EventSource() {
  return access("/run/udev/control", F_OK) == 0 ? "udev" : "kernel";
}

}  // namespace

DeviceMonitor::DeviceMonitor(const std::vector<const char*>& subsystems)
    : error_(Open(subsystems)) {}

int DeviceMonitor::Open(const std::vector<const char*>& subsystems) {
  udev_.reset(udev_new());
  if (udev_ == nullptr) return errno;
  monitor_.reset(udev_monitor_new_from_netlink(udev_.get(), EventSource()));
  if (monitor_ == nullptr) return errno;
  int result = 0;
  for (const char* const subsystem : subsystems) {
    if (result < 0) break;
    result = udev_monitor_filter_add_match_subsystem_devtype(monitor_.get(), subsystem,
                                                             /*devtype=*/nullptr);
  }
  if (result >= 0) result = udev_monitor_enable_receiving(monitor_.get());
  return result < 0 ? -result : 0;
}

std::optional<DeviceChange> DeviceMonitor::Next() {
  using Kind = DeviceChange::Kind;
  const UdevDevice device(udev_monitor_receive_device(monitor_.get()));
  if (device == nullptr) {
    return errno == ENOBUFS ? std::optional(DeviceChange{.kind = Kind::kLost}) : std::nullopt;
  }
  const char* const action = udev_device_get_action(device.get());
  const bool removed = action != nullptr && std::string_view(action) == "remove";
  return DeviceChange{.kind = removed ? Kind::kRemoved : Kind::kThere,
                      .syspath = udev_device_get_syspath(device.get())};
}

void DeviceMonitor::GiveUp(int error) {
  monitor_.reset();
  udev_.reset();
  error_ = error;
}

}  // namespace norvik::qel::linux_machine
