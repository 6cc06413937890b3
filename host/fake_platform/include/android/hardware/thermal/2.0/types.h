// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: the values of thermal 2.0.
//
// Records have no default values: initialize them with {}.
#pragma once

#include <android/hardware/thermal/1.0/types.h>
#include <hidl/HidlSupport.h>

#include <cstdint>
#include <string>

namespace android::hardware::thermal::V2_0 {

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
};

enum class CoolingType : uint32_t {
  FAN = 0,
  BATTERY = 1,
  CPU = 2,
  GPU = 3,
  MODEM = 4,
  NPU = 5,
  COMPONENT = 6,
};

enum class ThrottlingSeverity : uint32_t {
  NONE = 0,
  LIGHT = 1,
  MODERATE = 2,
  SEVERE = 3,
  CRITICAL = 4,
  EMERGENCY = 5,
  SHUTDOWN = 6,
};

struct Temperature final {
  TemperatureType type;
  hidl_string name;
  float value;
  ThrottlingSeverity throttlingStatus;

  bool operator==(const Temperature&) const = default;
};

struct TemperatureThreshold final {
  TemperatureType type;
  hidl_string name;
  hidl_array<float, 7> hotThrottlingThresholds;
  hidl_array<float, 7> coldThrottlingThresholds;
  float vrThrottlingThreshold;

  bool operator==(const TemperatureThreshold&) const = default;
};

struct CoolingDevice final {
  CoolingType type;
  hidl_string name;
  uint64_t value;

  bool operator==(const CoolingDevice&) const = default;
};

// The name of a value, or its number if it has no name; a record as text.
std::string toString(TemperatureType value);
std::string toString(CoolingType value);
std::string toString(ThrottlingSeverity value);
std::string toString(const Temperature& record);
std::string toString(const TemperatureThreshold& record);
std::string toString(const CoolingDevice& record);

using details::operator|;
using details::operator&;

}  // namespace android::hardware::thermal::V2_0
