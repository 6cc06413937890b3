// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "clients/subjects.h"

#include <algorithm>
#include <utility>

namespace norvik::qel::monitor {

namespace {

template <typename Properties>
auto Find(const Properties& properties, std::string_view key) {
  const auto found = std::find_if(properties.begin(), properties.end(),
                                  [&](const Property* property) { return property->key == key; });
  return found != properties.end() ? *found : nullptr;
}

bool IsKnownType(std::string_view type) {
  return std::find(kThermalTypes.begin(), kThermalTypes.end(), type) != kThermalTypes.end();
}

// The BCL types measure the battery, not heat.
std::string_view UnitOf(std::string_view type) {
  if (type == "BCL_VOLTAGE") return " mV";
  if (type == "BCL_CURRENT") return " mA";
  return type == "BCL_PERCENTAGE" ? " %" : kCelsius;
}

}  // namespace

bool IsWatchableType(std::string_view type) {
  return type == kUnknownThermalType || IsKnownType(type);
}

const BatteryProperty* BatteryPropertyOf(std::string_view key) {
  return Find(kBatteryProperties, key);
}

const SensorProperty* SensorPropertyOf(std::string_view key) {
  return Find(kSensorProperties, key);
}

bool IsChargeLimit(std::string_view key) {
  return Find(kChargeLimitProperties, key) != nullptr;
}

std::optional<TemperatureKey> SplitTemperatureKey(std::string_view key) {
  const size_t colon = key.find(':');
  if (colon == std::string_view::npos || colon == 0 || colon + 1 == key.size()) return std::nullopt;
  return TemperatureKey{.type = std::string(key.substr(0, colon)),
                        .name = std::string(key.substr(colon + 1))};
}

std::optional<TemperatureKey> TemperatureOf(std::string_view key) {
  auto split = SplitTemperatureKey(key);
  return split && IsKnownType(split->type) ? std::move(split) : std::nullopt;
}

std::optional<std::string_view> FamilyOfProperty(std::string_view key) {
  if (BatteryPropertyOf(key) != nullptr) return kBatteryFamily;
  if (SensorPropertyOf(key) != nullptr) return kSensorFamily;
  if (TemperatureOf(key)) return kThermalFamily;
  return std::nullopt;
}

std::optional<std::string_view> FamilyOfSubject(std::string_view subject) {
  const auto* const found = std::find(kClientFamilies.begin(), kClientFamilies.end(), subject);
  return found != kClientFamilies.end() ? std::optional(*found) : FamilyOfProperty(subject);
}

bool Covers(std::string_view subject, std::string_view property) {
  return subject == property || FamilyOfProperty(property) == subject;
}

Property PropertyOf(std::string_view key) {
  if (const auto* battery = BatteryPropertyOf(key)) return *battery;
  if (const auto* sensor = SensorPropertyOf(key)) return *sensor;
  if (const auto* limits = Find(kChargeLimitProperties, key)) return *limits;
  return {.key = key, .unit = UnitOf(key.substr(0, key.find(':')))};
}

Value Interpret(std::string_view key, int number) {
  if (const auto* battery = BatteryPropertyOf(key)) {
    if (number == QUORVEL_BATTERY_UNKNOWN) return {};
    if (battery->is_charger) return number == QUORVEL_CHARGER_ONLINE;
    return number;
  }
  if (SensorPropertyOf(key) != nullptr) return number;
  return static_cast<Severity>(number);
}

const SensorProperty& PropertyOf(Sensor sensor) {
  return sensor == Sensor::kProximity ? kProximity : kHingeAngle;
}

std::string_view FamilyOfService(std::string_view service) {
  if (service == kHealthService) return kBatteryFamily;
  return service == kSensorService ? kSensorFamily : kThermalFamily;
}

}  // namespace norvik::qel::monitor
