// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The thermal state of a device, in the types of the AIDL interface, which has the most.
#pragma once

#include <aidl/android/hardware/thermal/CoolingDevice.h>
#include <aidl/android/hardware/thermal/Temperature.h>
#include <aidl/android/hardware/thermal/TemperatureThreshold.h>
#include <android/hardware/thermal/2.0/types.h>

#include <optional>
#include <vector>

namespace norvik::qel::services {

struct ThermalData {
  std::vector<aidl::android::hardware::thermal::Temperature> temperatures = {};
  std::vector<aidl::android::hardware::thermal::TemperatureThreshold> thresholds = {};
  std::vector<aidl::android::hardware::thermal::CoolingDevice> cooling_devices = {};
};

// The temperatures whose severity has changed. A service notifies these. A new temperature counts
// as NONE before.
std::vector<aidl::android::hardware::thermal::Temperature> ChangedSeverities(
    const ThermalData& before, const ThermalData& now);
// The temperatures that are new or have changed in any way.
std::vector<aidl::android::hardware::thermal::Temperature> ChangedTemperatures(
    const ThermalData& before, const ThermalData& now);
// The temperatures that have been removed.
std::vector<aidl::android::hardware::thermal::Temperature> GoneTemperatures(
    const ThermalData& before, const ThermalData& now);
// The notification for a removed temperature: value NaN, severity NONE. Empty if its severity was
// NONE already.
std::optional<aidl::android::hardware::thermal::Temperature> Release(
    const aidl::android::hardware::thermal::Temperature& gone);
// The cooling devices that are new or have changed.
std::vector<aidl::android::hardware::thermal::CoolingDevice> ChangedCoolingDevices(
    const ThermalData& before, const ThermalData& now);

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
