// What the kernel's power-supply class knows of this machine: its batteries and its chargers.
//
// The files, their units and their special values are described in the kernel's
// Documentation/ABI/testing/sysfs-class-power and Documentation/power/power_supply_class.rst.
#pragma once

#include <aidl/android/hardware/health/BatteryCapacityLevel.h>
#include <aidl/android/hardware/health/BatteryHealth.h>
#include <aidl/android/hardware/health/BatteryStatus.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "fault.h"
#include "quorvel/linux_machine/health.h"

namespace norvik::qel::linux_machine {

// In the units of the health service. What is not known has no value.
struct Battery {
  std::string name = {};
  std::optional<int32_t> level_percent = {};
  std::optional<int32_t> cycle_count = {};
  std::optional<aidl::android::hardware::health::BatteryStatus> status = {};
  std::optional<aidl::android::hardware::health::BatteryHealth> health = {};
  std::optional<aidl::android::hardware::health::BatteryCapacityLevel> capacity_level = {};
  std::optional<std::string> technology = {};
  std::optional<int32_t> voltage_millivolts = {};
  std::optional<int32_t> temperature_tenths_celsius = {};
  std::optional<int32_t> current_microamps = {};
  std::optional<int32_t> current_average_microamps = {};
  std::optional<int32_t> full_charge_uah = {};
  std::optional<int32_t> full_charge_design_uah = {};
  std::optional<int32_t> charge_counter_uah = {};
  std::optional<int32_t> seconds_to_full = {};
};

// A charger counts as online only when the kernel says so.
struct Chargers {
  bool ac_online = false;
  bool usb_online = false;
  bool wireless_online = false;
  bool dock_online = false;
  // Of the first charger by name that is online and tells its limit of current.
  std::optional<int32_t> max_current_microamps = {};
  std::optional<int32_t> max_voltage_microvolts = {};
};

struct PowerReading {
  // All batteries that feed the machine as one: the level of all of them together, the highest
  // cycle count, the status that tells the most. The rest is that of the first by name.
  std::optional<Battery> battery = {};
  Chargers chargers = {};
  // Every supply, by name, counted or not.
  std::vector<PowerSupply> supplies = {};
  std::vector<Fault> faults = {};
};

// Reads supplies that have been listed; they may have vanished since.
PowerReading ReadPowerSupplies(const std::vector<std::string>& syspaths);

// How the level comes about: "battery level: BAT0 (66 %) and BAT1 (34 %) together, by energy".
// Empty when one battery at most feeds the machine.
std::string PartsOfLevel(const PowerReading& reading);

}  // namespace norvik::qel::linux_machine
