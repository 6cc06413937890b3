// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: an enum of the thermal interface.
#pragma once

#include <android/binder_enums.h>

#include <array>
#include <cstdint>
#include <string>

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

// The name of the value, or its number if it has no name.
std::string toString(TemperatureType value);

}  // namespace aidl::android::hardware::thermal

namespace ndk::internal {
template <>
constexpr inline auto enum_values<aidl::android::hardware::thermal::TemperatureType> = [] {
  using enum aidl::android::hardware::thermal::TemperatureType;
  return std::array{UNKNOWN,         CPU,         GPU,         BATTERY,        SKIN,   USB_PORT,
                    POWER_AMPLIFIER, BCL_VOLTAGE, BCL_CURRENT, BCL_PERCENTAGE, NPU,    TPU,
                    DISPLAY,         MODEM,       SOC,         WIFI,           CAMERA, FLASHLIGHT,
                    SPEAKER,         AMBIENT,     POGO};
}();
}  // namespace ndk::internal
