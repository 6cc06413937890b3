// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: an enum of the thermal interface.
#pragma once

#include <android/binder_enums.h>

#include <cstdint>

namespace aidl::android::hardware::thermal {

enum class TemperatureType : int32_t {
  UNKNOWN = -1,
  CPU = 0,
  GPU = 1,
  BATTERY = 2,
  SKIN = 3,
  USB_PORT = 4,
  POWER_AMPLIFIER = 5,
  BCL_VOLTAGE = 6,
  BCL_CURRENT = 7,
  BCL_PERCENTAGE = 8,
  NPU = 9,
  TPU = 10,
  DISPLAY = 11,
  MODEM = 12,
  SOC = 13,
  // Since version 2.
  WIFI = 14,
  CAMERA = 15,
  FLASHLIGHT = 16,
  SPEAKER = 17,
  AMBIENT = 18,
  POGO = 19,
};
using ndk::internal::toString;

}  // namespace aidl::android::hardware::thermal
