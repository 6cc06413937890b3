// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// ThermalInfo's names of types and severities. Their numbers are those of the platform.
#define LOG_TAG "audio_hw_thermal"

#include <log/log.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <string_view>

#include "quorvel.h"
#include "thermal/thermal_info.h"

namespace norvik::qel::audio {

namespace {

using ::android::hardware::thermal::V2_0::TemperatureType;
using ::android::hardware::thermal::V2_0::ThrottlingSeverity;

// The platform's number for an unknown type.
constexpr int kUnknownType = static_cast<int>(TemperatureType::UNKNOWN);
static_assert(kUnknownType == QUORVEL_THERMAL_TYPE_UNKNOWN);

template <typename Value>
struct Named {
  std::string_view name;
  Value value;
  int constant;  // in quorvel.h; the same number
};

constexpr Named<TemperatureType> kTypes[] = {
    {"CPU", TemperatureType::CPU, QUORVEL_THERMAL_TYPE_CPU},
    {"GPU", TemperatureType::GPU, QUORVEL_THERMAL_TYPE_GPU},
    {"BATTERY", TemperatureType::BATTERY, QUORVEL_THERMAL_TYPE_BATTERY},
    {"SKIN", TemperatureType::SKIN, QUORVEL_THERMAL_TYPE_SKIN},
    {"USB_PORT", TemperatureType::USB_PORT, QUORVEL_THERMAL_TYPE_USB_PORT},
    {"POWER_AMPLIFIER", TemperatureType::POWER_AMPLIFIER, QUORVEL_THERMAL_TYPE_POWER_AMPLIFIER},
    {"BCL_VOLTAGE", TemperatureType::BCL_VOLTAGE, QUORVEL_THERMAL_TYPE_BCL_VOLTAGE},
    {"BCL_CURRENT", TemperatureType::BCL_CURRENT, QUORVEL_THERMAL_TYPE_BCL_CURRENT},
    {"BCL_PERCENTAGE", TemperatureType::BCL_PERCENTAGE, QUORVEL_THERMAL_TYPE_BCL_PERCENTAGE},
    {"NPU", TemperatureType::NPU, QUORVEL_THERMAL_TYPE_NPU},
};

constexpr Named<ThrottlingSeverity> kSeverities[] = {
    {"NONE", ThrottlingSeverity::NONE, QUORVEL_THROTTLING_NONE},
    {"LIGHT", ThrottlingSeverity::LIGHT, QUORVEL_THROTTLING_LIGHT},
    {"MODERATE", ThrottlingSeverity::MODERATE, QUORVEL_THROTTLING_MODERATE},
    {"SEVERE", ThrottlingSeverity::SEVERE, QUORVEL_THROTTLING_SEVERE},
    {"CRITICAL", ThrottlingSeverity::CRITICAL, QUORVEL_THROTTLING_CRITICAL},
    {"EMERGENCY", ThrottlingSeverity::EMERGENCY, QUORVEL_THROTTLING_EMERGENCY},
    {"SHUTDOWN", ThrottlingSeverity::SHUTDOWN, QUORVEL_THROTTLING_SHUTDOWN},
};

constexpr auto kAgree = [](const auto& named) {
  return static_cast<int>(named.value) == named.constant;
};
static_assert(std::all_of(std::begin(kTypes), std::end(kTypes), kAgree));
static_assert(std::all_of(std::begin(kSeverities), std::end(kSeverities), kAgree));

}  // namespace

int ThermalInfo::GetThermalTypeByName(const std::string& name) const {
  for (const auto& type : kTypes) {
    if (type.name == name) return static_cast<int>(type.value);
  }
  ALOGW("%s: unknown temperature type name! %s", __func__, name.c_str());
  return kUnknownType;
}

int ThermalInfo::GetThrottlingSeverityByName(const std::string& name) const {
  for (const auto& severity : kSeverities) {
    if (severity.name == name) return static_cast<int>(severity.value);
  }
  ALOGW("%s: unknown throttling severity name! %s", __func__, name.c_str());
  return -EINVAL;
}

}  // namespace norvik::qel::audio
