// The records and enums of the AIDL thermal interface as text.
#include <aidl/android/hardware/thermal/CoolingDevice.h>
#include <aidl/android/hardware/thermal/Temperature.h>
#include <aidl/android/hardware/thermal/TemperatureThreshold.h>

#include <string>

#include "record_text.h"

namespace aidl::android::hardware::thermal {

using norvik::qel::standin::RecordText;

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
    case TemperatureType::TPU:
      return "TPU";
    case TemperatureType::DISPLAY:
      return "DISPLAY";
    case TemperatureType::MODEM:
      return "MODEM";
    case TemperatureType::SOC:
      return "SOC";
    case TemperatureType::WIFI:
      return "WIFI";
    case TemperatureType::CAMERA:
      return "CAMERA";
    case TemperatureType::FLASHLIGHT:
      return "FLASHLIGHT";
    case TemperatureType::SPEAKER:
      return "SPEAKER";
    case TemperatureType::AMBIENT:
      return "AMBIENT";
    case TemperatureType::POGO:
      return "POGO";
  }
  return std::to_string(static_cast<int32_t>(value));
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
  return std::to_string(static_cast<int32_t>(value));
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
    case CoolingType::TPU:
      return "TPU";
    case CoolingType::POWER_AMPLIFIER:
      return "POWER_AMPLIFIER";
    case CoolingType::DISPLAY:
      return "DISPLAY";
    case CoolingType::SPEAKER:
      return "SPEAKER";
    case CoolingType::WIFI:
      return "WIFI";
    case CoolingType::CAMERA:
      return "CAMERA";
    case CoolingType::FLASHLIGHT:
      return "FLASHLIGHT";
    case CoolingType::USB_PORT:
      return "USB_PORT";
  }
  return std::to_string(static_cast<int32_t>(value));
}

const char* Temperature::descriptor = "android.hardware.thermal.Temperature";

std::string Temperature::toString() const {
  return RecordText("Temperature")
      .Add("type", type)
      .Add("name", name)
      .Add("value", value)
      .Add("throttlingStatus", throttlingStatus)
      .End();
}

const char* TemperatureThreshold::descriptor = "android.hardware.thermal.TemperatureThreshold";

std::string TemperatureThreshold::toString() const {
  return RecordText("TemperatureThreshold")
      .Add("type", type)
      .Add("name", name)
      .Add("hotThrottlingThresholds", hotThrottlingThresholds)
      .Add("coldThrottlingThresholds", coldThrottlingThresholds)
      .End();
}

const char* CoolingDevice::descriptor = "android.hardware.thermal.CoolingDevice";

std::string CoolingDevice::toString() const {
  return RecordText("CoolingDevice")
      .Add("type", type)
      .Add("name", name)
      .Add("value", value)
      .Add("powerLimitMw", powerLimitMw)
      .Add("powerMw", powerMw)
      .Add("timeWindowMs", timeWindowMs)
      .End();
}

}  // namespace aidl::android::hardware::thermal
