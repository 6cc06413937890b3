// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The proximity and hinge-angle channels of the kernel's industrial-I/O subsystem.
//
// The files and their units are described in the kernel's Documentation/ABI/testing/sysfs-bus-iio.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "device_files.h"

namespace norvik::qel::linux_machine {

// One measured value of a device.
struct IioChannel {
  enum class Kind {
    kDistance,  // in metres after scaling
    kNearness,  // no unit; the value rises with nearness, and from a level on it means near
    kPresence,  // no unit; not 0 if a person is present
    kAngle,     // in radians after scaling
    kDegrees,   // in degrees, without scaling
  };
  Kind kind;
  std::string syspath;
  std::string channel;  // "in_proximity", "in_angl0"
  std::string name;     // of the chip or the driver
};

// The first sensor of each kind, by device number.
struct FoundChannels {
  std::optional<IioChannel> proximity = {};
  std::optional<IioChannel> hinge = {};
  std::vector<Fault> faults = {};
};

// Searches listed devices, which may have vanished meanwhile. Measures nothing.
FoundChannels FindChannels(std::vector<std::string> syspaths);

// The readings for "near" and "far" of a sensor that measures no distance. "Far" is its maximum.
inline constexpr float kNearCentimetres = 0;
inline constexpr float kFarCentimetres = 5;

// Measures a channel, in centimetres or degrees. If the value is unreadable or invalid, returns
// empty and adds a fault.
[[nodiscard]] std::optional<float> Measure(const IioChannel& channel, std::vector<Fault>* faults);

}  // namespace norvik::qel::linux_machine
