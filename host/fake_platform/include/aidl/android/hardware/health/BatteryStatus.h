// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: an enum of the health interface.
#pragma once

#include <android/binder_enums.h>

#include <array>
#include <cstdint>
#include <string>

namespace aidl::android::hardware::health {

enum class BatteryStatus : int32_t {
  UNKNOWN = 1,
  CHARGING = 2,
  DISCHARGING = 3,
  NOT_CHARGING = 4,
  FULL = 5,
};

// The name of the value, or its number if it has no name.
std::string toString(BatteryStatus value);

}  // namespace aidl::android::hardware::health

namespace ndk::internal {
template <>
constexpr inline auto enum_values<aidl::android::hardware::health::BatteryStatus> = [] {
  using enum aidl::android::hardware::health::BatteryStatus;
  return std::array{UNKNOWN, CHARGING, DISCHARGING, NOT_CHARGING, FULL};
}();
}  // namespace ndk::internal
