#include "tools/value.h"

namespace norvik::qel::tool {

std::string InWords(const Property& property, const Value& value) {
  if (const int* number = std::get_if<int>(&value)) {
    return std::to_string(*number) + std::string(property.unit);
  }
  if (const bool* online = std::get_if<bool>(&value)) return *online ? "online" : "offline";
  return std::holds_alternative<Absent>(value) ? "not present" : "unknown";
}

}  // namespace norvik::qel::tool
