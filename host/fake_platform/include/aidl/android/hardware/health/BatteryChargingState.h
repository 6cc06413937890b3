// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: an enum of the health interface.
#pragma once

#include <android/binder_enums.h>

#include <array>
#include <cstdint>
#include <string>

namespace aidl::android::hardware::health {

enum class BatteryChargingState : int32_t {
  INVALID = 0,
  NORMAL = 1,
  TOO_COLD = 2,
  TOO_HOT = 3,
  LONG_LIFE = 4,
  ADAPTIVE = 5,
};

// The name of the value, or its number if it has no name.
std::string toString(BatteryChargingState value);

}  // namespace aidl::android::hardware::health

namespace ndk::internal {
template <>
constexpr inline auto enum_values<aidl::android::hardware::health::BatteryChargingState> = [] {
  using enum aidl::android::hardware::health::BatteryChargingState;
  return std::array{INVALID, NORMAL, TOO_COLD, TOO_HOT, LONG_LIFE, ADAPTIVE};
}();
}  // namespace ndk::internal
