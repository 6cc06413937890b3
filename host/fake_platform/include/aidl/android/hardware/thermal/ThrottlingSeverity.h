// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: an enum of the thermal interface.
#pragma once

#include <android/binder_enums.h>

#include <array>
#include <cstdint>
#include <string>

namespace aidl::android::hardware::thermal {

enum class ThrottlingSeverity : int32_t {
  NONE = 0,
  LIGHT = 1,
  MODERATE = 2,
  SEVERE = 3,
  CRITICAL = 4,
  EMERGENCY = 5,
  SHUTDOWN = 6,
};

// The name of the value, or its number if it has no name.
std::string toString(ThrottlingSeverity value);

}  // namespace aidl::android::hardware::thermal

namespace ndk::internal {
template <>
constexpr inline auto enum_values<aidl::android::hardware::thermal::ThrottlingSeverity> = [] {
  using enum aidl::android::hardware::thermal::ThrottlingSeverity;
  return std::array{NONE, LIGHT, MODERATE, SEVERE, CRITICAL, EMERGENCY, SHUTDOWN};
}();
}  // namespace ndk::internal
