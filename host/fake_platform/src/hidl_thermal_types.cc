// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The records and enums of the HIDL thermal interfaces as text.
#include <android/hardware/thermal/1.0/types.h>
#include <android/hardware/thermal/2.0/types.h>

#include <cstdio>
#include <string>

#include "record_text.h"
#include "thermal_names.h"

// The sizes are part of the platform's interface.
static_assert(sizeof(android::hardware::thermal::V1_0::ThermalStatus) == 24);
static_assert(sizeof(android::hardware::thermal::V1_0::Temperature) == 40);
static_assert(sizeof(android::hardware::thermal::V1_0::CoolingDevice) == 32);
static_assert(sizeof(android::hardware::thermal::V1_0::CpuUsage) == 40);
static_assert(sizeof(android::hardware::thermal::V2_0::Temperature) == 32);
static_assert(sizeof(android::hardware::thermal::V2_0::TemperatureThreshold) == 88);
static_assert(sizeof(android::hardware::thermal::V2_0::CoolingDevice) == 32);

namespace norvik::qel::fake {
namespace {

// Builds "{.field = value, ...}".
class HidlRecordText {
 public:
  template <typename T>
  HidlRecordText& Add(const char* field, const T& value) {
    if (text_.size() > 1) text_ += ", ";
    text_ += std::string(".") + field + " = " + Text(value);
    return *this;
  }
  std::string End() const { return text_ + "}"; }

 private:
  static std::string Text(const ::android::hardware::hidl_string& value) {
    return std::string("\"") + value.c_str() + "\"";
  }
  template <size_t N>
  static std::string Text(const ::android::hardware::hidl_array<float, N>& values) {
    std::string text;
    for (size_t i = 0; i < N; ++i) text += (i > 0 ? ", " : "") + ValueText(values[i]);
    return "[" + std::to_string(N) + "]{" + text + "}";
  }
  template <typename T>
  static std::string Text(const T& value) {
    return ValueText(value);
  }

  std::string text_ = "{";
};

// The name, or the number if the value has no name.
template <typename Enum>
std::string Named(const char* name, Enum value) {
  if (name != nullptr) return name;
  char text[11];
  snprintf(text, sizeof(text), "0x%x", static_cast<uint32_t>(value));
  return text;
}

}  // namespace
}  // namespace norvik::qel::fake

namespace android::hardware::thermal::V1_0 {

using norvik::qel::fake::HidlRecordText;
using norvik::qel::fake::kTemperatureTypeNames;
using norvik::qel::fake::Named;
using norvik::qel::fake::NameOf;

std::string toString(ThermalStatusCode value) {
  static constexpr const char* kNames[] = {"SUCCESS", "FAILURE"};
  return Named(NameOf(kNames, value, ThermalStatusCode::SUCCESS, ThermalStatusCode::FAILURE),
               value);
}

std::string toString(TemperatureType value) {
  return Named(
      NameOf(kTemperatureTypeNames, value, TemperatureType::UNKNOWN, TemperatureType::SKIN), value);
}

std::string toString(CoolingType value) {
  return Named(value == CoolingType::FAN_RPM ? "FAN_RPM" : nullptr, value);
}

std::string toString(const ThermalStatus& record) {
  return HidlRecordText().Add("code", record.code).Add("debugMessage", record.debugMessage).End();
}

std::string toString(const Temperature& record) {
  return HidlRecordText()
      .Add("type", record.type)
      .Add("name", record.name)
      .Add("currentValue", record.currentValue)
      .Add("throttlingThreshold", record.throttlingThreshold)
      .Add("shutdownThreshold", record.shutdownThreshold)
      .Add("vrThrottlingThreshold", record.vrThrottlingThreshold)
      .End();
}

std::string toString(const CoolingDevice& record) {
  return HidlRecordText()
      .Add("type", record.type)
      .Add("name", record.name)
      .Add("currentValue", record.currentValue)
      .End();
}

std::string toString(const CpuUsage& record) {
  return HidlRecordText()
      .Add("name", record.name)
      .Add("active", record.active)
      .Add("total", record.total)
      .Add("isOnline", record.isOnline)
      .End();
}

}  // namespace android::hardware::thermal::V1_0

namespace android::hardware::thermal::V2_0 {

using norvik::qel::fake::HidlRecordText;
using norvik::qel::fake::kCoolingTypeNames;
using norvik::qel::fake::kTemperatureTypeNames;
using norvik::qel::fake::kThrottlingSeverityNames;
using norvik::qel::fake::Named;
using norvik::qel::fake::NameOf;

std::string toString(TemperatureType value) {
  return Named(NameOf(kTemperatureTypeNames, value, TemperatureType::UNKNOWN, TemperatureType::NPU),
               value);
}

std::string toString(CoolingType value) {
  return Named(NameOf(kCoolingTypeNames, value, CoolingType::FAN, CoolingType::COMPONENT), value);
}

std::string toString(ThrottlingSeverity value) {
  return Named(NameOf(kThrottlingSeverityNames, value, ThrottlingSeverity::NONE,
                      ThrottlingSeverity::SHUTDOWN),
               value);
}

std::string toString(const Temperature& record) {
  return HidlRecordText()
      .Add("type", record.type)
      .Add("name", record.name)
      .Add("value", record.value)
      .Add("throttlingStatus", record.throttlingStatus)
      .End();
}

std::string toString(const TemperatureThreshold& record) {
  return HidlRecordText()
      .Add("type", record.type)
      .Add("name", record.name)
      .Add("hotThrottlingThresholds", record.hotThrottlingThresholds)
      .Add("coldThrottlingThresholds", record.coldThrottlingThresholds)
      .Add("vrThrottlingThreshold", record.vrThrottlingThreshold)
      .End();
}

std::string toString(const CoolingDevice& record) {
  return HidlRecordText()
      .Add("type", record.type)
      .Add("name", record.name)
      .Add("value", record.value)
      .End();
}

}  // namespace android::hardware::thermal::V2_0
