// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: the thermal service, version 2.0.
#pragma once

#include <android/hardware/thermal/1.0/IThermal.h>
#include <android/hardware/thermal/2.0/IThermalChangedCallback.h>
#include <android/hardware/thermal/2.0/types.h>

#include <functional>
#include <string>

namespace android::hardware::thermal::V2_0 {

struct IThermal : public ::android::hardware::thermal::V1_0::IThermal {
  static const char* descriptor;

  using getTemperatures_cb = std::function<void(const V1_0::ThermalStatus& status,
                                                const hidl_vec<V1_0::Temperature>& temperatures)>;
  using getCpuUsages_cb = std::function<void(const V1_0::ThermalStatus& status,
                                             const hidl_vec<V1_0::CpuUsage>& cpuUsages)>;
  using getCoolingDevices_cb = std::function<void(const V1_0::ThermalStatus& status,
                                                  const hidl_vec<V1_0::CoolingDevice>& devices)>;
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

  Return<void> getTemperatures(getTemperatures_cb _hidl_cb) override = 0;
  Return<void> getCpuUsages(getCpuUsages_cb _hidl_cb) override = 0;
  Return<void> getCoolingDevices(getCoolingDevices_cb _hidl_cb) override = 0;
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

  Return<void> interfaceChain(interfaceChain_cb _hidl_cb) override;
  Return<void> interfaceDescriptor(interfaceDescriptor_cb _hidl_cb) override;

  // For any other interface, pass its IBase.
  static Return<sp<IThermal>> castFrom(const sp<IThermal>& parent, bool emitError = false);
  static Return<sp<IThermal>> castFrom(const sp<V1_0::IThermal>& parent, bool emitError = false);
  static Return<sp<IThermal>> castFrom(const sp<::android::hidl::base::V1_0::IBase>& parent,
                                       bool emitError = false);

  // Each call returns a new proxy of a remote service. tryGetService() does not wait: it returns
  // null if the service is not declared or not running. getService() waits for a declared service.
  // Both return null with getStub.
  static sp<IThermal> tryGetService(const std::string& serviceName = "default",
                                    bool getStub = false);
  static sp<IThermal> tryGetService(const char* serviceName, bool getStub = false) {
    return tryGetService(std::string(serviceName != nullptr ? serviceName : ""), getStub);
  }
  static sp<IThermal> tryGetService(const hidl_string& serviceName, bool getStub = false) {
    return tryGetService(std::string(serviceName.c_str(), serviceName.size()), getStub);
  }
  static sp<IThermal> tryGetService(bool getStub) { return tryGetService("default", getStub); }
  static sp<IThermal> getService(const std::string& serviceName = "default", bool getStub = false);
  static sp<IThermal> getService(const char* serviceName, bool getStub = false) {
    return getService(std::string(serviceName != nullptr ? serviceName : ""), getStub);
  }
  static sp<IThermal> getService(const hidl_string& serviceName, bool getStub = false) {
    return getService(std::string(serviceName.c_str(), serviceName.size()), getStub);
  }
  static sp<IThermal> getService(bool getStub) { return getService("default", getStub); }

  __attribute__((warn_unused_result)) status_t registerAsService(
      const std::string& serviceName = "default");
};

}  // namespace android::hardware::thermal::V2_0
