// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The values that the monitor shows, for all families.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace norvik::qel::monitor {

// The device does not have the property.
struct Absent {
  bool operator==(const Absent&) const = default;
};

// How strongly the device throttles. A service may report other numbers, too.
enum class Severity : int { kNone, kLight, kModerate, kSevere, kCritical, kEmergency, kShutdown };
using Severities = std::vector<Severity>;
inline constexpr Severity kAlarming = Severity::kModerate;  // and all that are worse

// In this order: unknown; a number; online or offline; not present; a measurement; a severity;
// several severities.
using Value = std::variant<std::monostate, int, bool, Absent, float, Severity, Severities>;

struct Property {
  std::string_view key;   // its name: "battery_level"
  std::string_view unit;  // follows a number: " %"
};

// "SEVERE"; nullopt for a number without a name.
std::optional<std::string_view> NameOf(Severity severity);
// The severity with this name; nullopt if there is none.
std::optional<Severity> SeverityNamed(std::string_view name);

// The worst severity in the value; NONE if there is none.
Severity WorstOf(const Value& value);

// "50 %", "online", "unknown", "not present", "36.5 degrees C", "SEVERE", "NONE, LIGHT".
std::string InWords(const Property& property, const Value& value);

}  // namespace norvik::qel::monitor
