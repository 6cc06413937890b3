// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The subjects of recordings: families, their properties and services.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "clients/battery_properties.h"
#include "clients/event.h"
#include "clients/sensor_properties.h"

namespace norvik::qel::monitor {

// Null when it has no such key.
const BatteryProperty* BatteryPropertyOf(std::string_view key);
const SensorProperty* SensorPropertyOf(std::string_view key);

// A TYPE:NAME in its parts, whatever the type; nothing when it is none. The device maker's name may
// hold further colons.
struct TemperatureKey {
  std::string type;
  std::string name;
};
std::optional<TemperatureKey> SplitTemperatureKey(std::string_view key);
// The same, but nothing when the library does not know the type.
std::optional<TemperatureKey> TemperatureOf(std::string_view key);

// The family of a property; nothing when there is none of that key.
std::optional<std::string_view> FamilyOfProperty(std::string_view key);
// The same of a family or a property.
std::optional<std::string_view> FamilyOfSubject(std::string_view subject);

// Whether the property is the subject, or one of its family.
bool Covers(std::string_view subject, std::string_view property);

// As which the values of a property that has no table are shown, too: a temperature's throttling.
Property PropertyOf(std::string_view key);
const SensorProperty& PropertyOf(Sensor sensor);

std::string_view FamilyOfService(std::string_view service);

}  // namespace norvik::qel::monitor
