// What the kernel's industrial-I/O subsystem has for the library's sensors: how near something is,
// and the angle of a hinge.
//
// The files and their units are described in the kernel's Documentation/ABI/testing/sysfs-bus-iio.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "fault.h"

namespace norvik::qel::linux_machine {

// One value that a device measures.
struct IioChannel {
  enum class Kind {
    kDistance,  // in metres, once scaled
    kNearness,  // without a unit: the nearer the higher, and from a level on it is near
    kAngle,     // in radians, once scaled
  };
  Kind kind;
  std::string syspath;
  std::string channel;  // "in_proximity", "in_angl0"
  std::string name;     // the chip's or the driver's
};

// The first of each kind of sensor, in the order in which the kernel counts the devices.
struct FoundChannels {
  std::optional<IioChannel> proximity = {};
  std::optional<IioChannel> hinge = {};
  std::vector<Fault> faults = {};
};

// Looks through devices that have been listed; they may have vanished since. Nothing is measured.
FoundChannels FindChannels(std::vector<std::string> syspaths);

// What a near thing reads and what a far one does where nothing else is known of a distance.
inline constexpr float kNearCentimetres = 0;
inline constexpr float kFarCentimetres = 5;

// Measures: centimetres or degrees. Nothing, and a fault, when it cannot be done or believed.
[[nodiscard]] std::optional<float> Measure(const IioChannel& channel, std::vector<Fault>* faults);

}  // namespace norvik::qel::linux_machine
