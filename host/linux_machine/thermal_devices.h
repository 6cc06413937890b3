// The thermal zones, trip points and cooling devices of this machine, from the kernel's thermal
// class.
//
// The files and their units are described in the kernel's
// Documentation/ABI/testing/sysfs-class-thermal and Documentation/driver-api/thermal/sysfs-api.rst.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "fault.h"

namespace norvik::qel::linux_machine {

enum class TripType { kActive, kPassive, kHot, kCritical };

// A temperature at which the kernel acts.
struct TripPoint {
  int number;
  TripType type;
  int32_t millidegrees;
  int32_t hysteresis_millidegrees = 0;
};

struct ThermalZone {
  std::string syspath = {};
  std::string type = {};  // "x86_pkg_temp"
  // Whether the kernel acts on the trip points.
  bool acts = true;
  std::optional<int32_t> millidegrees = {};
  std::vector<TripPoint> trips = {};
};

struct CoolingState {
  std::string syspath = {};
  std::string type = {};  // "Processor"
  int32_t state = 0;      // 0: off
};

// Both are ordered by device number.
struct ThermalReading {
  std::vector<ThermalZone> zones = {};
  std::vector<CoolingState> cooling_devices = {};
  std::vector<Fault> faults = {};
};

// Reads listed devices, which may have vanished meanwhile.
ThermalReading ReadThermalDevices(std::vector<std::string> syspaths);

}  // namespace norvik::qel::linux_machine
