// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: an enum of the health interface.
#pragma once

#include <android/binder_enums.h>

#include <array>
#include <cstdint>
#include <string>

namespace aidl::android::hardware::health {

enum class BatteryPartStatus : int32_t {
  UNSUPPORTED = 0,
  ORIGINAL = 1,
  REPLACED = 2,
};

// The name of the value, or its number if it has no name.
std::string toString(BatteryPartStatus value);

}  // namespace aidl::android::hardware::health

namespace ndk::internal {
template <>
constexpr inline auto enum_values<aidl::android::hardware::health::BatteryPartStatus> = [] {
  using enum aidl::android::hardware::health::BatteryPartStatus;
  return std::array{UNSUPPORTED, ORIGINAL, REPLACED};
}();
}  // namespace ndk::internal
