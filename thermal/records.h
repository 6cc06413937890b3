// The platform's thermal records as the family reads them.
#pragma once

#include <android/hardware/thermal/2.0/types.h>

#include <string_view>

namespace norvik::qel::audio {

// All bytes of the name, for as long as the record lives.
inline std::string_view NameOf(const ::android::hardware::thermal::V2_0::Temperature& temperature) {
  return {temperature.name.c_str(), temperature.name.size()};
}

// For one comparison after another with short names: to call memcmp() each time takes longer.
inline bool AreSame(std::string_view name, std::string_view other) {
  if (name.size() != other.size()) return false;
  for (size_t i = 0; i < name.size(); ++i) {
    if (name[i] != other[i]) return false;
  }
  return true;
}

}  // namespace norvik::qel::audio
