// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The batteries and the chargers of this machine, from the kernel's power-supply class.
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

#include "device_files.h"
#include "quorvel/linux_machine/health.h"

namespace norvik::qel::linux_machine {

// In the units of the health service. An unknown field is empty.
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

// A charger is online only if its file says so.
struct Chargers {
  bool ac_online = false;
  bool usb_online = false;
  bool wireless_online = false;
  bool dock_online = false;
  // Of the first charger by name that is online and has a current limit.
  std::optional<int32_t> max_current_microamps = {};
  std::optional<int32_t> max_voltage_microvolts = {};
};

struct PowerReading {
  // All batteries of the machine as one: the combined level, the highest cycle count, the combined
  // status. Other fields are those of the first battery by name.
  std::optional<Battery> battery = {};
  Chargers chargers = {};
  // All supplies, by name, including those that do not count.
  std::vector<PowerSupply> supplies = {};
  std::vector<Fault> faults = {};
};

// Reads listed supplies, which may have vanished meanwhile.
PowerReading ReadPowerSupplies(const std::vector<std::string>& syspaths);

// How the level is combined: "battery level: BAT0 (66 %) and BAT1 (34 %) together, by energy".
// Empty for fewer than two batteries.
std::string PartsOfLevel(const PowerReading& reading);

}  // namespace norvik::qel::linux_machine
