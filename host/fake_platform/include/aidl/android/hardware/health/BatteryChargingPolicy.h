// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: an enum of the health interface.
#pragma once

#include <android/binder_enums.h>

#include <cstdint>

namespace aidl::android::hardware::health {

enum class BatteryChargingPolicy : int32_t {
  INVALID = 0,
  DEFAULT = 1,
  LONG_LIFE = 2,
  ADAPTIVE = 3,
};
using ndk::internal::toString;

}  // namespace aidl::android::hardware::health
