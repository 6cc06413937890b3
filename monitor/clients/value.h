// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The values that the monitor shows, whatever family they are of.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace norvik::qel::monitor {

// The device has nothing of the kind.
struct Absent {
  bool operator==(const Absent&) const = default;
};

// How much the device throttles; other numbers than these may come as well.
enum class Severity : int { kNone, kLight, kModerate, kSevere, kCritical, kEmergency, kShutdown };
using Severities = std::vector<Severity>;

// Not known; a number; whether something is online; not there; a measurement; how much something
// throttles, and the same of several.
using Value = std::variant<std::monostate, int, bool, Absent, float, Severity, Severities>;

struct Property {
  std::string_view key;   // for programs: "battery_level"
  std::string_view name;  // for people: "battery level"
  std::string_view unit;  // follows a number: " %"
};

// "SEVERE"; nothing for a number that has no name.
std::optional<std::string_view> NameOf(Severity severity);
// The severity of that name; nothing when there is none.
std::optional<Severity> SeverityNamed(std::string_view name);

// "50 %", "online", "unknown", "not present", "36.5 degrees C", "SEVERE", "NONE, LIGHT".
std::string InWords(const Property& property, const Value& value);

}  // namespace norvik::qel::monitor
