// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: the thermal service, version 2.
#pragma once

#include <aidl/android/hardware/thermal/CoolingDevice.h>
#include <aidl/android/hardware/thermal/CoolingType.h>
#include <aidl/android/hardware/thermal/ICoolingDeviceChangedCallback.h>
#include <aidl/android/hardware/thermal/IThermalChangedCallback.h>
#include <aidl/android/hardware/thermal/Temperature.h>
#include <aidl/android/hardware/thermal/TemperatureThreshold.h>
#include <aidl/android/hardware/thermal/TemperatureType.h>
#include <android/binder_interface_utils.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace aidl::android::hardware::thermal {

class BpThermal;

class IThermal : public ndk::internal::Generated<IThermal, BpThermal> {
 public:
  static inline const char* descriptor = "android.hardware.thermal.IThermal";
  static inline const int32_t version = 2;
  static inline const std::string hash = "2f49c78011338b42b43d5d0e250d9b520850cc1f";

  // While the service is not ready, calls fail with EX_ILLEGAL_STATE and a message. The order of
  // entries is the same in every reply.
  virtual ndk::ScopedAStatus getCoolingDevices(std::vector<CoolingDevice>* out) = 0;
  virtual ndk::ScopedAStatus getCoolingDevicesWithType(CoolingType type,
                                                       std::vector<CoolingDevice>* out) = 0;
  virtual ndk::ScopedAStatus getTemperatures(std::vector<Temperature>* out) = 0;
  virtual ndk::ScopedAStatus getTemperaturesWithType(TemperatureType type,
                                                     std::vector<Temperature>* out) = 0;
  virtual ndk::ScopedAStatus getTemperatureThresholds(std::vector<TemperatureThreshold>* out) = 0;
  virtual ndk::ScopedAStatus getTemperatureThresholdsWithType(
      TemperatureType type, std::vector<TemperatureThreshold>* out) = 0;
  // EX_ILLEGAL_ARGUMENT if `callback` is null or already registered, with or without a type. A
  // service need not send anything at registration.
  virtual ndk::ScopedAStatus registerThermalChangedCallback(
      const std::shared_ptr<IThermalChangedCallback>& callback) = 0;
  virtual ndk::ScopedAStatus registerThermalChangedCallbackWithType(
      const std::shared_ptr<IThermalChangedCallback>& callback, TemperatureType type) = 0;
  // EX_ILLEGAL_ARGUMENT if `callback` is not registered.
  virtual ndk::ScopedAStatus unregisterThermalChangedCallback(
      const std::shared_ptr<IThermalChangedCallback>& callback) = 0;
  // Since version 2.
  virtual ndk::ScopedAStatus registerCoolingDeviceChangedCallbackWithType(
      const std::shared_ptr<ICoolingDeviceChangedCallback>& callback, CoolingType type) = 0;
  virtual ndk::ScopedAStatus unregisterCoolingDeviceChangedCallback(
      const std::shared_ptr<ICoolingDeviceChangedCallback>& callback) = 0;
};

}  // namespace aidl::android::hardware::thermal
