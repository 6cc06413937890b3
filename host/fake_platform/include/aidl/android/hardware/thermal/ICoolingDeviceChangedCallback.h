// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: what a thermal service calls.
#pragma once

#include <aidl/android/hardware/thermal/CoolingDevice.h>
#include <android/binder_interface_utils.h>

#include <cstdint>
#include <memory>
#include <string>

namespace aidl::android::hardware::thermal {

class ICoolingDeviceChangedCallback : public ndk::ICInterface {
 public:
  static const char* descriptor;
  static inline const int32_t version = 2;
  static inline const std::string hash = "2f49c78011338b42b43d5d0e250d9b520850cc1f";

  static std::shared_ptr<ICoolingDeviceChangedCallback> fromBinder(const ndk::SpAIBinder& binder);
  // Sets the implementation that answers calls which a service does not implement
  // (STATUS_UNKNOWN_TRANSACTION). Set it once, before the first call. False for null.
  static bool setDefaultImpl(const std::shared_ptr<ICoolingDeviceChangedCallback>& impl);
  static const std::shared_ptr<ICoolingDeviceChangedCallback>& getDefaultImpl();

  // One-way: runs on a binder thread of the receiver, in the order of sending.
  virtual ndk::ScopedAStatus notifyCoolingDeviceChanged(const CoolingDevice& coolingDevice) = 0;
  virtual ndk::ScopedAStatus getInterfaceVersion(int32_t* out) = 0;
  virtual ndk::ScopedAStatus getInterfaceHash(std::string* out) = 0;
};

}  // namespace aidl::android::hardware::thermal
