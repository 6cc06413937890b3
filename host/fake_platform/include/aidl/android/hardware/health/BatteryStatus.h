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
constexpr inline std::array<aidl::android::hardware::health::BatteryStatus, 5>
    enum_values<aidl::android::hardware::health::BatteryStatus> = {
        aidl::android::hardware::health::BatteryStatus::UNKNOWN,
        aidl::android::hardware::health::BatteryStatus::CHARGING,
        aidl::android::hardware::health::BatteryStatus::DISCHARGING,
        aidl::android::hardware::health::BatteryStatus::NOT_CHARGING,
        aidl::android::hardware::health::BatteryStatus::FULL,
};
}  // namespace ndk::internal
