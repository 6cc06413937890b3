// What the kernel knows of this machine's temperatures: thermal zones with their trip points, the
// sensors of the hwmon class, and what cools the machine.
//
// The files and their units are described in the kernel's
// Documentation/ABI/testing/sysfs-class-thermal, Documentation/driver-api/thermal/sysfs-api.rst,
// Documentation/ABI/testing/sysfs-class-hwmon and Documentation/hwmon/sysfs-interface.rst.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "fault.h"

namespace norvik::qel::linux_machine {

// Of a zone: kActive to kCritical. Of a hwmon sensor: kMax, kHwmonCritical, kEmergency.
enum class TripType { kActive, kPassive, kHot, kCritical, kMax, kHwmonCritical, kEmergency };

// A temperature from which on something is done or wrong.
struct TripPoint {
  int number;
  TripType type;
  int32_t millidegrees;
  int32_t hysteresis_millidegrees = 0;
};

// A thermal zone, or one temperature of a hwmon device.
struct ThermalZone {
  std::string key = {};     // identifies it among all that are there
  std::string device = {};  // "thermal_zone3", "hwmon2:temp1"
  std::string type = {};    // what people call it: "x86_pkg_temp", "coretemp:Package id 0"
  // Whether the trip points mean anything now.
  bool acts = true;
  std::optional<int32_t> millidegrees = {};
  std::vector<TripPoint> trips = {};
};

struct CoolingState {
  std::string key = {};
  std::string device = {};  // "cooling_device0"
  std::string type = {};    // "Processor"
  int32_t state = 0;        // 0: does nothing
};

// In the order in which the kernel counts them; zones before hwmon sensors. A hwmon device that
// only repeats a zone is left out.
struct ThermalReading {
  std::vector<ThermalZone> zones = {};
  std::vector<CoolingState> cooling_devices = {};
  std::vector<Fault> faults = {};
};

// Reads devices that have been listed; they may have vanished since.
ThermalReading ReadThermalDevices(std::vector<std::string> syspaths);

}  // namespace norvik::qel::linux_machine
