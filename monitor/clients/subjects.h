// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The subjects that clients register for: the library's families, and tables of their properties.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "clients/event.h"
#include "clients/value.h"
#include "quorvel.h"

namespace norvik::qel::monitor {

inline constexpr std::string_view kBatteryFamily = "battery";
inline constexpr std::string_view kSensorFamily = "sensors";
inline constexpr std::string_view kThermalFamily = "thermal";
inline constexpr std::array kClientFamilies = {kBatteryFamily, kSensorFamily, kThermalFamily};

struct BatteryProperty : Property {
  bool is_charger;
  int (*get)(void* handle, bool use_cached);
  int (*register_callback)(void* handle, BatteryInfoCallback callback, void* cookie);
  int (*deregister_callback)(void* handle, BatteryInfoCallback callback);
};

inline constexpr BatteryProperty kBatteryLevel = {{.key = "battery_level", .unit = " %"},
                                                  /*is_charger=*/false,
                                                  GetBatteryLevel,
                                                  RegisterBatteryLevelCallback,
                                                  DeregisterBatteryLevelCallback};
inline constexpr BatteryProperty kBatteryCycleCount = {{.key = "battery_cycle_count", .unit = ""},
                                                       /*is_charger=*/false,
                                                       GetBatteryCycleCount,
                                                       RegisterBatteryCycleCountCallback,
                                                       DeregisterBatteryCycleCountCallback};
inline constexpr BatteryProperty kWirelessCharger = {{.key = "wireless_charger", .unit = ""},
                                                     /*is_charger=*/true,
                                                     GetWirelessChargerIsOnline,
                                                     RegisterWirelessChargerIsOnlineCallback,
                                                     DeregisterWirelessChargerIsOnlineCallback};
inline constexpr BatteryProperty kDockCharger = {{.key = "dock_charger", .unit = ""},
                                                 /*is_charger=*/true,
                                                 GetDockChargerIsOnline,
                                                 RegisterDockChargerIsOnlineCallback,
                                                 DeregisterDockChargerIsOnlineCallback};
inline constexpr std::array kBatteryProperties = {&kBatteryLevel, &kBatteryCycleCount,
                                                  &kWirelessCharger, &kDockCharger};

struct SensorProperty : Property {
  Sensor sensor;
  std::string_view name;  // for people: "hinge angle"; recordings contain it
  int (*register_callback)(void* handle, int id, SensorCallbackFunc callback, void* cookie);
  int (*deregister_callback)(void* handle, int id);
};

inline constexpr SensorProperty kProximity = {{.key = "proximity", .unit = " cm"},
                                              Sensor::kProximity,
                                              "proximity",
                                              RegisterProximitySensorCallback,
                                              DeregisterProximitySensorCallback};
inline constexpr SensorProperty kHingeAngle = {{.key = "hinge_angle", .unit = " degrees"},
                                               Sensor::kHingeAngle,
                                               "hinge angle",
                                               RegisterHingeAngleSensorCallback,
                                               DeregisterHingeAngleSensorCallback};
inline constexpr std::array kSensorProperties = {&kProximity, &kHingeAngle};

// The throttling severities of the battery's limits.
struct ChargeLimitProperty : Property {
  int (*get)(void* handle, int* values, int* size, bool use_cached);
};

inline constexpr ChargeLimitProperty kCurrentLimits = {{.key = "bcl_current", .unit = ""},
                                                       GetBatteryChargeLimitCurrent};
inline constexpr ChargeLimitProperty kVoltageLimits = {{.key = "bcl_voltage", .unit = ""},
                                                       GetBatteryChargeLimitVoltage};
inline constexpr std::array kChargeLimitProperties = {&kCurrentLimits, &kVoltageLimits};

inline constexpr std::string_view kCelsius = " degrees C";

// The types of temperatures that the library knows. tests/monitor/usage_test.py compares them with
// quorvel.h.
inline constexpr auto kThermalTypes =
    std::to_array<std::string_view>({"CPU", "GPU", "BATTERY", "SKIN", "USB_PORT", "POWER_AMPLIFIER",
                                     "BCL_VOLTAGE", "BCL_CURRENT", "BCL_PERCENTAGE", "NPU"});
// The type of a zone that has none of these types. Registrations accept it, too.
inline constexpr std::string_view kUnknownThermalType = "UNKNOWN";
// Whether a callback can be registered for temperatures of this type.
bool IsWatchableType(std::string_view type);

// Null if there is no property with this key.
const BatteryProperty* BatteryPropertyOf(std::string_view key);
const SensorProperty* SensorPropertyOf(std::string_view key);
bool IsChargeLimit(std::string_view key);

// The parts of TYPE:NAME, for any type; nullopt if one is missing. The device maker's name may
// contain further colons.
struct TemperatureKey {
  std::string type;
  std::string name;
};
std::optional<TemperatureKey> SplitTemperatureKey(std::string_view key);
// The same, but nullopt if the library does not know the type.
std::optional<TemperatureKey> TemperatureOf(std::string_view key);

// The family of a property; nullopt if there is no property with this key.
std::optional<std::string_view> FamilyOfProperty(std::string_view key);
// The same for a property, and the family itself for a family.
std::optional<std::string_view> FamilyOfSubject(std::string_view subject);

// Whether the subject is this property or its family.
bool Covers(std::string_view subject, std::string_view property);

// The key and unit of a property. For a property that is in no table, a temperature, the result
// refers to `key`.
Property PropertyOf(std::string_view key);
// Converts a number from the C interface to the property's value.
Value Interpret(std::string_view key, int number);
const SensorProperty& PropertyOf(Sensor sensor);

std::string_view FamilyOfService(std::string_view service);

}  // namespace norvik::qel::monitor
