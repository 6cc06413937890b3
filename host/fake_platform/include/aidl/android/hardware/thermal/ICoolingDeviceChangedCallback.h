// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: what a thermal service calls.
#pragma once

#include <aidl/android/hardware/thermal/CoolingDevice.h>
#include <android/binder_interface_utils.h>

#include <cstdint>
#include <string>

namespace aidl::android::hardware::thermal {

class BpCoolingDeviceChangedCallback;

class ICoolingDeviceChangedCallback
    : public ndk::internal::Generated<ICoolingDeviceChangedCallback,
                                      BpCoolingDeviceChangedCallback> {
 public:
  static inline const char* descriptor = "android.hardware.thermal.ICoolingDeviceChangedCallback";
  static inline const int32_t version = 2;
  static inline const std::string hash = "2f49c78011338b42b43d5d0e250d9b520850cc1f";

  // One-way: runs on a binder thread of the receiver, in the order of sending.
  virtual ndk::ScopedAStatus notifyCoolingDeviceChanged(const CoolingDevice& coolingDevice) = 0;
};

}  // namespace aidl::android::hardware::thermal
