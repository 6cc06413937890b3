// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: the health service, version 3.
#pragma once

#include <aidl/android/hardware/health/BatteryChargingPolicy.h>
#include <aidl/android/hardware/health/BatteryHealthData.h>
#include <aidl/android/hardware/health/BatteryStatus.h>
#include <aidl/android/hardware/health/DiskStats.h>
#include <aidl/android/hardware/health/HealthInfo.h>
#include <aidl/android/hardware/health/IHealthInfoCallback.h>
#include <aidl/android/hardware/health/StorageInfo.h>
#include <android/binder_interface_utils.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace aidl::android::hardware::health {

class BpHealth;

class IHealth : public ndk::internal::Generated<IHealth, BpHealth> {
 public:
  static inline const char* descriptor = "android.hardware.health.IHealth";
  static inline const int32_t version = 3;
  static inline const std::string hash = "3bab6273a5491102b29c9d7a1f0efa749533f46d";

  // Service-specific error codes.
  static constexpr int32_t STATUS_UNKNOWN = 2;
  static constexpr int32_t STATUS_CALLBACK_DIED = 4;

  // Sends the current data to `callback` before it returns.
  virtual ndk::ScopedAStatus registerCallback(
      const std::shared_ptr<IHealthInfoCallback>& callback) = 0;
  // EX_ILLEGAL_ARGUMENT if `callback` is not registered.
  virtual ndk::ScopedAStatus unregisterCallback(
      const std::shared_ptr<IHealthInfoCallback>& callback) = 0;
  virtual ndk::ScopedAStatus update() = 0;
  virtual ndk::ScopedAStatus getChargeCounterUah(int32_t* out) = 0;
  virtual ndk::ScopedAStatus getCurrentNowMicroamps(int32_t* out) = 0;
  virtual ndk::ScopedAStatus getCurrentAverageMicroamps(int32_t* out) = 0;
  virtual ndk::ScopedAStatus getCapacity(int32_t* out) = 0;
  virtual ndk::ScopedAStatus getEnergyCounterNwh(int64_t* out) = 0;
  virtual ndk::ScopedAStatus getChargeStatus(BatteryStatus* out) = 0;
  virtual ndk::ScopedAStatus getStorageInfo(std::vector<StorageInfo>* out) = 0;
  virtual ndk::ScopedAStatus getDiskStats(std::vector<DiskStats>* out) = 0;
  virtual ndk::ScopedAStatus getHealthInfo(HealthInfo* out) = 0;
  virtual ndk::ScopedAStatus setChargingPolicy(BatteryChargingPolicy policy) = 0;
  virtual ndk::ScopedAStatus getChargingPolicy(BatteryChargingPolicy* out) = 0;
  virtual ndk::ScopedAStatus getBatteryHealthData(BatteryHealthData* out) = 0;
};

}  // namespace aidl::android::hardware::health
