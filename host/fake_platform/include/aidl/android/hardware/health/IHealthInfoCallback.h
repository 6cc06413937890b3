// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: what a health service calls.
#pragma once

#include <aidl/android/hardware/health/HealthInfo.h>
#include <android/binder_interface_utils.h>

#include <cstdint>
#include <string>

namespace aidl::android::hardware::health {

class BpHealthInfoCallback;

class IHealthInfoCallback
    : public ndk::internal::Generated<IHealthInfoCallback, BpHealthInfoCallback> {
 public:
  static inline const char* descriptor = "android.hardware.health.IHealthInfoCallback";
  static inline const int32_t version = 3;
  static inline const std::string hash = "3bab6273a5491102b29c9d7a1f0efa749533f46d";

  // One-way: runs on a binder thread of the receiver, in the order of sending.
  virtual ndk::ScopedAStatus healthInfoChanged(const HealthInfo& info) = 0;
};

}  // namespace aidl::android::hardware::health
