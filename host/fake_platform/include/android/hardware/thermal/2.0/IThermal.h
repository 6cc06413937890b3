// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: the thermal service, version 2.0.
#pragma once

#include <android/hardware/thermal/1.0/IThermal.h>
#include <android/hardware/thermal/2.0/IThermalChangedCallback.h>
#include <android/hardware/thermal/2.0/types.h>

#include <functional>

namespace android::hardware::thermal::V2_0 {

struct BpHwThermal;

struct IThermal : public details::Generated<IThermal, ::android::hardware::thermal::V1_0::IThermal,
                                            BpHwThermal> {
  static inline const char* descriptor = "android.hardware.thermal@2.0::IThermal";

  using getCurrentTemperatures_cb = std::function<void(
      const V1_0::ThermalStatus& status, const hidl_vec<V2_0::Temperature>& temperatures)>;
  using getTemperatureThresholds_cb =
      std::function<void(const V1_0::ThermalStatus& status,
                         const hidl_vec<V2_0::TemperatureThreshold>& temperatureThresholds)>;
  using registerThermalChangedCallback_cb = std::function<void(const V1_0::ThermalStatus& status)>;
  using unregisterThermalChangedCallback_cb =
      std::function<void(const V1_0::ThermalStatus& status)>;
  using getCurrentCoolingDevices_cb = std::function<void(
      const V1_0::ThermalStatus& status, const hidl_vec<V2_0::CoolingDevice>& devices)>;

  virtual Return<void> getCurrentTemperatures(bool filterType, V2_0::TemperatureType type,
                                              getCurrentTemperatures_cb _hidl_cb) = 0;
  virtual Return<void> getTemperatureThresholds(bool filterType, V2_0::TemperatureType type,
                                                getTemperatureThresholds_cb _hidl_cb) = 0;
  // FAILURE if `callback` is null or already registered.
  virtual Return<void> registerThermalChangedCallback(
      const sp<V2_0::IThermalChangedCallback>& callback, bool filterType,
      V2_0::TemperatureType type, registerThermalChangedCallback_cb _hidl_cb) = 0;
  virtual Return<void> unregisterThermalChangedCallback(
      const sp<V2_0::IThermalChangedCallback>& callback,
      unregisterThermalChangedCallback_cb _hidl_cb) = 0;
  virtual Return<void> getCurrentCoolingDevices(bool filterType, V2_0::CoolingType type,
                                                getCurrentCoolingDevices_cb _hidl_cb) = 0;
};

}  // namespace android::hardware::thermal::V2_0
