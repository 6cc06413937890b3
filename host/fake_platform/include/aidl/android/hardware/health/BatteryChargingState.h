// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: an enum of the health interface.
#pragma once

#include <android/binder_enums.h>

#include <cstdint>

namespace aidl::android::hardware::health {

enum class BatteryChargingState : int32_t {
  INVALID = 0,
  NORMAL = 1,
  TOO_COLD = 2,
  TOO_HOT = 3,
  LONG_LIFE = 4,
  ADAPTIVE = 5,
};
using ndk::internal::toString;

}  // namespace aidl::android::hardware::health
