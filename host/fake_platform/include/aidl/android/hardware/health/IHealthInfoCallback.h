// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: what a health service calls.
#pragma once

#include <aidl/android/hardware/health/HealthInfo.h>
#include <android/binder_interface_utils.h>

#include <cstdint>
#include <memory>
#include <string>

namespace aidl::android::hardware::health {

class IHealthInfoCallback : public ndk::ICInterface {
 public:
  static const char* descriptor;
  static inline const int32_t version = 3;
  static inline const std::string hash = "3bab6273a5491102b29c9d7a1f0efa749533f46d";

  static std::shared_ptr<IHealthInfoCallback> fromBinder(const ndk::SpAIBinder& binder);
  // Sets the implementation that answers calls which a service does not implement
  // (STATUS_UNKNOWN_TRANSACTION). Set it once, before the first call. False for null.
  static bool setDefaultImpl(const std::shared_ptr<IHealthInfoCallback>& impl);
  static const std::shared_ptr<IHealthInfoCallback>& getDefaultImpl();

  // One-way: runs on a binder thread of the receiver, in the order of sending.
  virtual ndk::ScopedAStatus healthInfoChanged(const HealthInfo& info) = 0;
  virtual ndk::ScopedAStatus getInterfaceVersion(int32_t* out) = 0;
  virtual ndk::ScopedAStatus getInterfaceHash(std::string* out) = 0;
};

}  // namespace aidl::android::hardware::health
