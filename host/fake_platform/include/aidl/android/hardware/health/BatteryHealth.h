// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: an enum of the health interface.
#pragma once

#include <android/binder_enums.h>

#include <cstdint>

namespace aidl::android::hardware::health {

enum class BatteryHealth : int32_t {
  UNKNOWN = 1,
  GOOD = 2,
  OVERHEAT = 3,
  DEAD = 4,
  OVER_VOLTAGE = 5,
  UNSPECIFIED_FAILURE = 6,
  COLD = 7,
  FAIR = 8,
  NOT_AVAILABLE = 11,
  INCONSISTENT = 12,
};
using ndk::internal::toString;

}  // namespace aidl::android::hardware::health
