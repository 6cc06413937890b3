// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: an enum of the health interface.
#pragma once

#include <android/binder_enums.h>

#include <cstdint>

namespace aidl::android::hardware::health {

enum class BatteryStatus : int32_t {
  UNKNOWN = 1,
  CHARGING = 2,
  DISCHARGING = 3,
  NOT_CHARGING = 4,
  FULL = 5,
};
using ndk::internal::toString;

}  // namespace aidl::android::hardware::health
