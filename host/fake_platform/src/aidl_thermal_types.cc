// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The records and enums of the AIDL thermal interface as text.
#include <aidl/android/hardware/thermal/CoolingDevice.h>
#include <aidl/android/hardware/thermal/Temperature.h>
#include <aidl/android/hardware/thermal/TemperatureThreshold.h>

#include <string>

#include "record_text.h"
#include "thermal_names.h"

namespace aidl::android::hardware::thermal {

using norvik::qel::fake::EnumText;
using norvik::qel::fake::kCoolingTypeNames;
using norvik::qel::fake::kTemperatureTypeNames;
using norvik::qel::fake::kThrottlingSeverityNames;
using norvik::qel::fake::RecordText;

std::string toString(TemperatureType value) {
  return EnumText(value, kTemperatureTypeNames);
}

std::string toString(ThrottlingSeverity value) {
  return EnumText(value, kThrottlingSeverityNames);
}

std::string toString(CoolingType value) {
  return EnumText(value, kCoolingTypeNames);
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
