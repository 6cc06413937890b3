// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: the values of thermal 1.0.
//
// Records have no default values: initialize them with {}.
#pragma once

#include <hidl/HidlSupport.h>

#include <cstdint>
#include <string>

namespace android::hardware::thermal::V1_0 {

enum class ThermalStatusCode : uint32_t {
  SUCCESS = 0,
  FAILURE = 1,
};

enum class TemperatureType : int32_t {
  UNKNOWN = -1,
  CPU = 0,
  GPU = 1,
  BATTERY = 2,
  SKIN = 3,
};

enum class CoolingType : uint32_t {
  FAN_RPM = 0,
};

struct ThermalStatus final {
  ThermalStatusCode code;
  hidl_string debugMessage;

  bool operator==(const ThermalStatus&) const = default;
};

struct Temperature final {
  TemperatureType type;
  hidl_string name;
  float currentValue;
  float throttlingThreshold;
  float shutdownThreshold;
  float vrThrottlingThreshold;

  bool operator==(const Temperature&) const = default;
};

struct CoolingDevice final {
  CoolingType type;
  hidl_string name;
  float currentValue;

  bool operator==(const CoolingDevice&) const = default;
};

struct CpuUsage final {
  hidl_string name;
  uint64_t active;
  uint64_t total;
  bool isOnline;

  bool operator==(const CpuUsage&) const = default;
};

// The name of a value, or its number if it has no name; a record as text.
std::string toString(ThermalStatusCode value);
std::string toString(TemperatureType value);
std::string toString(CoolingType value);
std::string toString(const ThermalStatus& record);
std::string toString(const Temperature& record);
std::string toString(const CoolingDevice& record);
std::string toString(const CpuUsage& record);

using details::operator|;
using details::operator&;

}  // namespace android::hardware::thermal::V1_0
