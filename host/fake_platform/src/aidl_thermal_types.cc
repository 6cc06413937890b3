// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The records of the AIDL thermal interface as text.
#include <aidl/android/hardware/thermal/CoolingDevice.h>
#include <aidl/android/hardware/thermal/Temperature.h>
#include <aidl/android/hardware/thermal/TemperatureThreshold.h>

#include <string>

#include "record_text.h"

namespace aidl::android::hardware::thermal {

using norvik::qel::fake::RecordText;

std::string Temperature::toString() const {
  return RecordText("Temperature", QUORVEL_FAKE_FIELDS(type, name, value, throttlingStatus));
}

std::string TemperatureThreshold::toString() const {
  return RecordText("TemperatureThreshold", QUORVEL_FAKE_FIELDS(type, name, hotThrottlingThresholds,
                                                                coldThrottlingThresholds));
}

std::string CoolingDevice::toString() const {
  return RecordText("CoolingDevice",
                    QUORVEL_FAKE_FIELDS(type, name, value, powerLimitMw, powerMw, timeWindowMs));
}

}  // namespace aidl::android::hardware::thermal
