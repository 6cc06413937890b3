// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Owning types for libudev's objects.
#pragma once

#include <libudev.h>

#include <memory>

namespace norvik::qel::linux_machine {

template <auto kUnref>
struct Unref {
  template <typename T>
  void operator()(T* object) const {
    kUnref(object);
  }
};

// libudev counts references without a lock. No object may be shared between threads, not even the
// context.
using Udev = std::unique_ptr<udev, Unref<udev_unref>>;
using UdevDevice = std::unique_ptr<udev_device, Unref<udev_device_unref>>;
using UdevEnumerate = std::unique_ptr<udev_enumerate, Unref<udev_enumerate_unref>>;
using UdevMonitor = std::unique_ptr<udev_monitor, Unref<udev_monitor_unref>>;

}  // namespace norvik::qel::linux_machine
