// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: what a thermal service calls.
#pragma once

#include <android/hardware/thermal/2.0/types.h>
#include <android/hidl/base/1.0/IBase.h>

namespace android::hardware::thermal::V2_0 {

struct BpHwThermalChangedCallback;

struct IThermalChangedCallback
    : public details::Generated<IThermalChangedCallback, ::android::hidl::base::V1_0::IBase,
                                BpHwThermalChangedCallback> {
  static inline const char* descriptor = "android.hardware.thermal@2.0::IThermalChangedCallback";

  // One-way: runs on a thread of the receiver's HIDL pool, in the order of sending. On a local
  // object it is a plain call.
  virtual Return<void> notifyThrottling(const V2_0::Temperature& temperature) = 0;
};

}  // namespace android::hardware::thermal::V2_0
