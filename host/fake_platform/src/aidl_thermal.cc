// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The proxies of the AIDL thermal interfaces.
#include <aidl/android/hardware/thermal/IThermal.h>

#include "remote_call.h"

namespace aidl::android::hardware::thermal {

using norvik::qel::fake::GeneratedProxyOf;

class BpThermalChangedCallback : public GeneratedProxyOf<IThermalChangedCallback> {
 public:
  using GeneratedProxyOf::GeneratedProxyOf;
  ndk::ScopedAStatus notifyThrottling(const Temperature& temperature) override {
    return Send(&IThermalChangedCallback::notifyThrottling, temperature);
  }
};

class BpCoolingDeviceChangedCallback : public GeneratedProxyOf<ICoolingDeviceChangedCallback> {
 public:
  using GeneratedProxyOf::GeneratedProxyOf;
  ndk::ScopedAStatus notifyCoolingDeviceChanged(const CoolingDevice& coolingDevice) override {
    return Send(&ICoolingDeviceChangedCallback::notifyCoolingDeviceChanged, coolingDevice);
  }
};

class BpThermal : public GeneratedProxyOf<IThermal> {
 public:
  using GeneratedProxyOf::GeneratedProxyOf;
  ndk::ScopedAStatus getCoolingDevices(std::vector<CoolingDevice>* out) override {
    return Call(&IThermal::getCoolingDevices, out);
  }
  ndk::ScopedAStatus getCoolingDevicesWithType(CoolingType type,
                                               std::vector<CoolingDevice>* out) override {
    return Call(&IThermal::getCoolingDevicesWithType, type, out);
  }
  ndk::ScopedAStatus getTemperatures(std::vector<Temperature>* out) override {
    return Call(&IThermal::getTemperatures, out);
  }
  ndk::ScopedAStatus getTemperaturesWithType(TemperatureType type,
                                             std::vector<Temperature>* out) override {
    return Call(&IThermal::getTemperaturesWithType, type, out);
  }
  ndk::ScopedAStatus getTemperatureThresholds(std::vector<TemperatureThreshold>* out) override {
    return Call(&IThermal::getTemperatureThresholds, out);
  }
  ndk::ScopedAStatus getTemperatureThresholdsWithType(
      TemperatureType type, std::vector<TemperatureThreshold>* out) override {
    return Call(&IThermal::getTemperatureThresholdsWithType, type, out);
  }
  ndk::ScopedAStatus registerThermalChangedCallback(
      const std::shared_ptr<IThermalChangedCallback>& callback) override {
    return Call(&IThermal::registerThermalChangedCallback, callback);
  }
  ndk::ScopedAStatus registerThermalChangedCallbackWithType(
      const std::shared_ptr<IThermalChangedCallback>& callback, TemperatureType type) override {
    return Call(&IThermal::registerThermalChangedCallbackWithType, callback, type);
  }
  ndk::ScopedAStatus unregisterThermalChangedCallback(
      const std::shared_ptr<IThermalChangedCallback>& callback) override {
    return Call(&IThermal::unregisterThermalChangedCallback, callback);
  }
  ndk::ScopedAStatus registerCoolingDeviceChangedCallbackWithType(
      const std::shared_ptr<ICoolingDeviceChangedCallback>& callback, CoolingType type) override {
    return Call(&IThermal::registerCoolingDeviceChangedCallbackWithType, callback, type);
  }
  ndk::ScopedAStatus unregisterCoolingDeviceChangedCallback(
      const std::shared_ptr<ICoolingDeviceChangedCallback>& callback) override {
    return Call(&IThermal::unregisterCoolingDeviceChangedCallback, callback);
  }
};

}  // namespace aidl::android::hardware::thermal

namespace ndk::internal {

namespace thermal = ::aidl::android::hardware::thermal;
template class Generated<thermal::IThermalChangedCallback, thermal::BpThermalChangedCallback>;
template class GeneratedLocal<thermal::IThermalChangedCallback>;
template class Generated<thermal::ICoolingDeviceChangedCallback,
                         thermal::BpCoolingDeviceChangedCallback>;
template class GeneratedLocal<thermal::ICoolingDeviceChangedCallback>;
template class Generated<thermal::IThermal, thermal::BpThermal>;
template class GeneratedLocal<thermal::IThermal>;

}  // namespace ndk::internal
