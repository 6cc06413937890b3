// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: an enum of the health interface.
#pragma once

#include <android/binder_enums.h>

#include <array>
#include <cstdint>
#include <string>

namespace aidl::android::hardware::health {

enum class BatteryCapacityLevel : int32_t {
  UNSUPPORTED = -1,
  UNKNOWN = 0,
  CRITICAL = 1,
  LOW = 2,
  NORMAL = 3,
  HIGH = 4,
  FULL = 5,
};

// The name of the value, or its number if it has no name.
std::string toString(BatteryCapacityLevel value);

}  // namespace aidl::android::hardware::health

namespace ndk::internal {
template <>
constexpr inline auto enum_values<aidl::android::hardware::health::BatteryCapacityLevel> = [] {
  using enum aidl::android::hardware::health::BatteryCapacityLevel;
  return std::array{UNSUPPORTED, UNKNOWN, CRITICAL, LOW, NORMAL, HIGH, FULL};
}();
}  // namespace ndk::internal
