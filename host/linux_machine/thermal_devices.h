// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The temperatures and the cooling devices of this machine: the kernel's thermal zones with their
// trip points, the sensors of the hwmon class, the cooling devices of the thermal class.
//
// The files and their units are described in the kernel's
// Documentation/ABI/testing/sysfs-class-thermal, Documentation/driver-api/thermal/sysfs-api.rst,
// Documentation/ABI/testing/sysfs-class-hwmon and Documentation/hwmon/sysfs-interface.rst.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "device_files.h"

namespace norvik::qel::linux_machine {

// A zone has kActive to kCritical, a hwmon sensor kMax, kHwmonCritical and kEmergency.
enum class TripType { kActive, kPassive, kHot, kCritical, kMax, kHwmonCritical, kEmergency };

// A temperature at which the kernel acts, or a limit of a hwmon sensor.
struct TripPoint {
  int number;
  TripType type;
  int32_t millidegrees;
  int32_t hysteresis_millidegrees = 0;
};

// A thermal zone, or one temperature of a hwmon device.
struct ThermalZone {
  std::string key = {};     // unique among all devices
  std::string device = {};  // "thermal_zone3", "hwmon2:temp1"
  std::string type = {};    // "x86_pkg_temp", "coretemp:Package id 0"
  // Whether the trip points are in effect.
  bool acts = true;
  std::optional<int32_t> millidegrees = {};
  std::vector<TripPoint> trips = {};
};

struct CoolingState {
  std::string key = {};
  std::string device = {};  // "cooling_device0"
  std::string type = {};    // "Processor"
  int32_t state = 0;        // 0: off
};

// Ordered by device number, zones before hwmon sensors. A hwmon device that repeats a zone is left
// out.
struct ThermalReading {
  std::vector<ThermalZone> zones = {};
  std::vector<CoolingState> cooling_devices = {};
  std::vector<Fault> faults = {};
};

// Reads listed devices, which may have vanished meanwhile.
ThermalReading ReadThermalDevices(std::vector<std::string> syspaths);

}  // namespace norvik::qel::linux_machine
