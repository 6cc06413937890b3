// The records and enums of the HIDL thermal interfaces as text.
#include <android/hardware/thermal/1.0/types.h>
#include <android/hardware/thermal/2.0/types.h>

#include <cstdio>
#include <string>

#include "record_text.h"

// The sizes are part of the platform's interface.
static_assert(sizeof(android::hardware::thermal::V1_0::ThermalStatus) == 24);
static_assert(sizeof(android::hardware::thermal::V1_0::Temperature) == 40);
static_assert(sizeof(android::hardware::thermal::V1_0::CoolingDevice) == 32);
static_assert(sizeof(android::hardware::thermal::V1_0::CpuUsage) == 40);
static_assert(sizeof(android::hardware::thermal::V2_0::Temperature) == 32);
static_assert(sizeof(android::hardware::thermal::V2_0::TemperatureThreshold) == 88);
static_assert(sizeof(android::hardware::thermal::V2_0::CoolingDevice) == 32);

namespace norvik::qel::standin {
namespace {

// "{.field = value, ...}"
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
    for (size_t i = 0; i < N; ++i) text += (i > 0 ? ", " : "") + std::to_string(values[i]);
    return "[" + std::to_string(N) + "]{" + text + "}";
  }
  template <typename T>
  static std::string Text(const T& value) {
    return ValueText(value);
  }

  std::string text_ = "{";
};

// What stands for a number that has no name.
std::string HexText(uint32_t value) {
  char text[11];
  snprintf(text, sizeof(text), "0x%x", value);
  return text;
}

}  // namespace
}  // namespace norvik::qel::standin

namespace android::hardware::thermal::V1_0 {

using norvik::qel::standin::HexText;
using norvik::qel::standin::HidlRecordText;

std::string toString(ThermalStatusCode value) {
  switch (value) {
    case ThermalStatusCode::SUCCESS:
      return "SUCCESS";
    case ThermalStatusCode::FAILURE:
      return "FAILURE";
  }
  return HexText(static_cast<uint32_t>(value));
}

std::string toString(TemperatureType value) {
  switch (value) {
    case TemperatureType::UNKNOWN:
      return "UNKNOWN";
    case TemperatureType::CPU:
      return "CPU";
    case TemperatureType::GPU:
      return "GPU";
    case TemperatureType::BATTERY:
      return "BATTERY";
    case TemperatureType::SKIN:
      return "SKIN";
  }
  return HexText(static_cast<uint32_t>(value));
}

std::string toString(CoolingType value) {
  switch (value) {
    case CoolingType::FAN_RPM:
      return "FAN_RPM";
  }
  return HexText(static_cast<uint32_t>(value));
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

using norvik::qel::standin::HexText;
using norvik::qel::standin::HidlRecordText;

std::string toString(TemperatureType value) {
  switch (value) {
    case TemperatureType::UNKNOWN:
      return "UNKNOWN";
    case TemperatureType::CPU:
      return "CPU";
    case TemperatureType::GPU:
      return "GPU";
    case TemperatureType::BATTERY:
      return "BATTERY";
    case TemperatureType::SKIN:
      return "SKIN";
    case TemperatureType::USB_PORT:
      return "USB_PORT";
    case TemperatureType::POWER_AMPLIFIER:
      return "POWER_AMPLIFIER";
    case TemperatureType::BCL_VOLTAGE:
      return "BCL_VOLTAGE";
    case TemperatureType::BCL_CURRENT:
      return "BCL_CURRENT";
    case TemperatureType::BCL_PERCENTAGE:
      return "BCL_PERCENTAGE";
    case TemperatureType::NPU:
      return "NPU";
  }
  return HexText(static_cast<uint32_t>(value));
}

std::string toString(CoolingType value) {
  switch (value) {
    case CoolingType::FAN:
      return "FAN";
    case CoolingType::BATTERY:
      return "BATTERY";
    case CoolingType::CPU:
      return "CPU";
    case CoolingType::GPU:
      return "GPU";
    case CoolingType::MODEM:
      return "MODEM";
    case CoolingType::NPU:
      return "NPU";
    case CoolingType::COMPONENT:
      return "COMPONENT";
  }
  return HexText(static_cast<uint32_t>(value));
}

std::string toString(ThrottlingSeverity value) {
  switch (value) {
    case ThrottlingSeverity::NONE:
      return "NONE";
    case ThrottlingSeverity::LIGHT:
      return "LIGHT";
    case ThrottlingSeverity::MODERATE:
      return "MODERATE";
    case ThrottlingSeverity::SEVERE:
      return "SEVERE";
    case ThrottlingSeverity::CRITICAL:
      return "CRITICAL";
    case ThrottlingSeverity::EMERGENCY:
      return "EMERGENCY";
    case ThrottlingSeverity::SHUTDOWN:
      return "SHUTDOWN";
  }
  return HexText(static_cast<uint32_t>(value));
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
