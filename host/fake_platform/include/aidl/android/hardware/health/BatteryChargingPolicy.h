// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: an enum of the health interface.
#pragma once

#include <android/binder_enums.h>

#include <array>
#include <cstdint>
#include <string>

namespace aidl::android::hardware::health {

enum class BatteryChargingPolicy : int32_t {
  INVALID = 0,
  DEFAULT = 1,
  LONG_LIFE = 2,
  ADAPTIVE = 3,
};

// The name of the value, or its number if it has no name.
std::string toString(BatteryChargingPolicy value);

}  // namespace aidl::android::hardware::health

namespace ndk::internal {
template <>
constexpr inline auto enum_values<aidl::android::hardware::health::BatteryChargingPolicy> = [] {
  using enum aidl::android::hardware::health::BatteryChargingPolicy;
  return std::array{INVALID, DEFAULT, LONG_LIFE, ADAPTIVE};
}();
}  // namespace ndk::internal
