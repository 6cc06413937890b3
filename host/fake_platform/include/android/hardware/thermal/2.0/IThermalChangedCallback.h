// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: what a thermal service calls.
#pragma once

#include <android/hardware/thermal/2.0/types.h>
#include <android/hidl/base/1.0/IBase.h>
#include <hidl/HidlSupport.h>
#include <hidl/Status.h>
#include <utils/Errors.h>

#include <functional>
#include <string>

namespace android::hardware::thermal::V2_0 {

struct IThermalChangedCallback : public ::android::hidl::base::V1_0::IBase {
  static const char* descriptor;

  // One-way: runs on a thread of the receiver's HIDL pool, in the order of sending. On a local
  // object it is a plain call.
  virtual Return<void> notifyThrottling(const V2_0::Temperature& temperature) = 0;

  Return<void> interfaceChain(interfaceChain_cb _hidl_cb) override;
  Return<void> interfaceDescriptor(interfaceDescriptor_cb _hidl_cb) override;

  // For any other interface, pass its IBase.
  static Return<sp<IThermalChangedCallback>> castFrom(const sp<IThermalChangedCallback>& parent,
                                                      bool emitError = false);
  static Return<sp<IThermalChangedCallback>> castFrom(
      const sp<::android::hidl::base::V1_0::IBase>& parent, bool emitError = false);

  // Each call returns a new proxy of a remote service. tryGetService() does not wait: it returns
  // null if the service is not declared or not running. getService() waits for a declared service.
  // Both return null with getStub.
  static sp<IThermalChangedCallback> tryGetService(const std::string& serviceName = "default",
                                                   bool getStub = false);
  static sp<IThermalChangedCallback> tryGetService(const char* serviceName, bool getStub = false) {
    return tryGetService(std::string(serviceName != nullptr ? serviceName : ""), getStub);
  }
  static sp<IThermalChangedCallback> tryGetService(const hidl_string& serviceName,
                                                   bool getStub = false) {
    return tryGetService(std::string(serviceName.c_str(), serviceName.size()), getStub);
  }
  static sp<IThermalChangedCallback> tryGetService(bool getStub) {
    return tryGetService("default", getStub);
  }
  static sp<IThermalChangedCallback> getService(const std::string& serviceName = "default",
                                                bool getStub = false);
  static sp<IThermalChangedCallback> getService(const char* serviceName, bool getStub = false) {
    return getService(std::string(serviceName != nullptr ? serviceName : ""), getStub);
  }
  static sp<IThermalChangedCallback> getService(const hidl_string& serviceName,
                                                bool getStub = false) {
    return getService(std::string(serviceName.c_str(), serviceName.size()), getStub);
  }
  static sp<IThermalChangedCallback> getService(bool getStub) {
    return getService("default", getStub);
  }

  __attribute__((warn_unused_result)) status_t registerAsService(
      const std::string& serviceName = "default");
};

}  // namespace android::hardware::thermal::V2_0
