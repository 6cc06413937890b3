// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: an enum of the thermal interface.
#pragma once

#include <android/binder_enums.h>

#include <cstdint>

namespace aidl::android::hardware::thermal {

enum class CoolingType : int32_t {
  FAN = 0,
  BATTERY = 1,
  CPU = 2,
  GPU = 3,
  MODEM = 4,
  NPU = 5,
  COMPONENT = 6,
  TPU = 7,
  POWER_AMPLIFIER = 8,
  DISPLAY = 9,
  SPEAKER = 10,
  // Since version 2.
  WIFI = 11,
  CAMERA = 12,
  FLASHLIGHT = 13,
  USB_PORT = 14,
};
using ndk::internal::toString;

}  // namespace aidl::android::hardware::thermal
