// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: the thermal service, version 1.0.
#pragma once

#include <android/hardware/thermal/1.0/types.h>
#include <android/hidl/base/1.0/IBase.h>
#include <hidl/HidlSupport.h>
#include <hidl/Status.h>
#include <utils/Errors.h>

#include <functional>
#include <string>

namespace android::hardware::thermal::V1_0 {

struct IThermal : public ::android::hidl::base::V1_0::IBase {
  static const char* descriptor;

  using getTemperatures_cb = std::function<void(const V1_0::ThermalStatus& status,
                                                const hidl_vec<V1_0::Temperature>& temperatures)>;
  using getCpuUsages_cb = std::function<void(const V1_0::ThermalStatus& status,
                                             const hidl_vec<V1_0::CpuUsage>& cpuUsages)>;
  using getCoolingDevices_cb = std::function<void(const V1_0::ThermalStatus& status,
                                                  const hidl_vec<V1_0::CoolingDevice>& devices)>;

  // The callback receives the results before the call returns. FAILURE has a message.
  virtual Return<void> getTemperatures(getTemperatures_cb _hidl_cb) = 0;
  virtual Return<void> getCpuUsages(getCpuUsages_cb _hidl_cb) = 0;
  virtual Return<void> getCoolingDevices(getCoolingDevices_cb _hidl_cb) = 0;

  Return<void> interfaceChain(interfaceChain_cb _hidl_cb) override;
  Return<void> interfaceDescriptor(interfaceDescriptor_cb _hidl_cb) override;

  // For any other interface, pass its IBase.
  static Return<sp<IThermal>> castFrom(const sp<IThermal>& parent, bool emitError = false);
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

}  // namespace android::hardware::thermal::V1_0
