// ThermalInfo's names of types and severities. Their numbers are those of the platform.
#define LOG_TAG "audio_hw_thermal"

#include <log/log.h>

#include <array>
#include <cerrno>

#include "thermal/thermal_info.h"

namespace norvik::qel::audio {

namespace {

using ::android::hardware::thermal::V2_0::TemperatureType;
using ::android::hardware::thermal::V2_0::ThrottlingSeverity;

// The platform's number for an unknown type.
constexpr int kUnknownType = static_cast<int>(TemperatureType::UNKNOWN);

template <typename Value>
struct Named {
  std::string_view name;
  Value value;
};

constexpr std::array kTypes = {
    Named<TemperatureType>{"CPU", TemperatureType::CPU},
    Named<TemperatureType>{"GPU", TemperatureType::GPU},
    Named<TemperatureType>{"BATTERY", TemperatureType::BATTERY},
    Named<TemperatureType>{"SKIN", TemperatureType::SKIN},
    Named<TemperatureType>{"USB_PORT", TemperatureType::USB_PORT},
    Named<TemperatureType>{"POWER_AMPLIFIER", TemperatureType::POWER_AMPLIFIER},
    Named<TemperatureType>{"BCL_VOLTAGE", TemperatureType::BCL_VOLTAGE},
    Named<TemperatureType>{"BCL_CURRENT", TemperatureType::BCL_CURRENT},
    Named<TemperatureType>{"BCL_PERCENTAGE", TemperatureType::BCL_PERCENTAGE},
    Named<TemperatureType>{"NPU", TemperatureType::NPU},
};

constexpr std::array kSeverities = {
    Named<ThrottlingSeverity>{"NONE", ThrottlingSeverity::NONE},
    Named<ThrottlingSeverity>{"LIGHT", ThrottlingSeverity::LIGHT},
    Named<ThrottlingSeverity>{"MODERATE", ThrottlingSeverity::MODERATE},
    Named<ThrottlingSeverity>{"SEVERE", ThrottlingSeverity::SEVERE},
    Named<ThrottlingSeverity>{"CRITICAL", ThrottlingSeverity::CRITICAL},
    Named<ThrottlingSeverity>{"EMERGENCY", ThrottlingSeverity::EMERGENCY},
    Named<ThrottlingSeverity>{"SHUTDOWN", ThrottlingSeverity::SHUTDOWN},
};

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
