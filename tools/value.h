// The values that the monitor shows, whatever family they are of.
#pragma once

#include <string>
#include <string_view>
#include <variant>

namespace norvik::qel::tool {

// The device has nothing of the kind.
struct Absent {
  bool operator==(const Absent&) const = default;
};

// Not known; a number; whether something is online; not there.
using Value = std::variant<std::monostate, int, bool, Absent>;

struct Property {
  std::string_view key;   // for programs: "battery_level"
  std::string_view name;  // for people: "battery level"
  std::string_view unit;  // follows a number: " %"
};

// "50 %", "online", "unknown", "not present".
std::string InWords(const Property& property, const Value& value);

}  // namespace norvik::qel::tool
