// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The thermal state of a device, in the types of the AIDL interface, which has the most.
#pragma once

#include <aidl/android/hardware/thermal/CoolingDevice.h>
#include <aidl/android/hardware/thermal/Temperature.h>
#include <aidl/android/hardware/thermal/TemperatureThreshold.h>
#include <android/hardware/thermal/2.0/types.h>

#include <vector>

#include "quorvel/services/service_event.h"

namespace norvik::qel::services {

struct ThermalData {
  std::vector<aidl::android::hardware::thermal::Temperature> temperatures = {};
  std::vector<aidl::android::hardware::thermal::TemperatureThreshold> thresholds = {};
  std::vector<aidl::android::hardware::thermal::CoolingDevice> cooling_devices = {};
};

// What a service does with a change of its data.
struct ThermalChanges {
  // For the observer: the temperatures that are new or have changed in any way, and those removed.
  std::vector<Report> reports = {};
  // For the callbacks: the temperatures whose severity has changed. A new one counts as NONE
  // before; one that was throttling and has been removed is NONE, with the value NaN.
  std::vector<aidl::android::hardware::thermal::Temperature> severities = {};
  // The cooling devices that are new or have changed.
  std::vector<aidl::android::hardware::thermal::CoolingDevice> cooling_devices = {};
};
ThermalChanges Compare(const ThermalData& before, const ThermalData& now);

// Conversions to HIDL 2.0. A type that HIDL does not have becomes UNKNOWN, or COMPONENT for a
// cooling device. A missing threshold becomes NaN.
android::hardware::thermal::V2_0::TemperatureType ToHidl(
    aidl::android::hardware::thermal::TemperatureType type);
android::hardware::thermal::V2_0::Temperature ToHidl(
    const aidl::android::hardware::thermal::Temperature& temperature);
android::hardware::thermal::V2_0::TemperatureThreshold ToHidl(
    const aidl::android::hardware::thermal::TemperatureThreshold& threshold);
android::hardware::thermal::V2_0::CoolingDevice ToHidl(
    const aidl::android::hardware::thermal::CoolingDevice& device);

}  // namespace norvik::qel::services
