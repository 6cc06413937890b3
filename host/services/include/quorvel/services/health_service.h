// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A health service as a device maker would write it. The caller provides the data.
#pragma once

#include <aidl/android/hardware/health/BnHealth.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

#include "quorvel/fake/thread_annotations.h"
#include "quorvel/services/service_event.h"

namespace norvik::qel::services {

enum class HealthOperation {
  kRegisterCallback,
  kUnregisterCallback,
  kUpdate,
  kGetChargeCounterUah,
  kGetCurrentNowMicroamps,
  kGetCurrentAverageMicroamps,
  kGetCapacity,
  kGetEnergyCounterNwh,
  kGetChargeStatus,
  kGetStorageInfo,
  kGetDiskStats,
  kGetHealthInfo,
  kSetChargingPolicy,
  kGetChargingPolicy,
  kGetBatteryHealthData,
  kCount,
};

std::string_view HealthOperationName(HealthOperation operation);

inline constexpr char kHealthInstance[] = "android.hardware.health.IHealth/default";

// Behaves like the platform's reference service:
// - A registration sends the current data to the new callback before it returns.
// - Callbacks are compared by binder identity. Duplicates are kept. One unregistration removes all
//   duplicates.
// - A null callback is refused.
//
// Threads: any. Locks: lock_ is held while a report is sent, so that every callback receives the
// reports in order. This cannot deadlock: callbacks belong to other processes, so sending does not
// wait for the receiver, and no last reference is released under lock_.
class HealthService : public aidl::android::hardware::health::BnHealth {
 public:
  using HealthInfo = aidl::android::hardware::health::HealthInfo;
  using Callback = std::shared_ptr<aidl::android::hardware::health::IHealthInfoCallback>;

  explicit HealthService(HealthInfo info, ServiceObserver observer = nullptr);

  // Replaces the data and reports it to every callback.
  void Report(const HealthInfo& info) QUORVEL_EXCLUDES(lock_);
  HealthInfo info() const QUORVEL_EXCLUDES(lock_);
  size_t callback_count() const QUORVEL_EXCLUDES(lock_);

  ndk::ScopedAStatus registerCallback(const Callback& callback) override;
  ndk::ScopedAStatus unregisterCallback(const Callback& callback) override;
  ndk::ScopedAStatus update() override;
  ndk::ScopedAStatus getChargeCounterUah(int32_t* out) override;
  ndk::ScopedAStatus getCurrentNowMicroamps(int32_t* out) override;
  ndk::ScopedAStatus getCurrentAverageMicroamps(int32_t* out) override;
  ndk::ScopedAStatus getCapacity(int32_t* out) override;
  ndk::ScopedAStatus getEnergyCounterNwh(int64_t* out) override;
  ndk::ScopedAStatus getChargeStatus(aidl::android::hardware::health::BatteryStatus* out) override;
  ndk::ScopedAStatus getStorageInfo(
      std::vector<aidl::android::hardware::health::StorageInfo>* out) override;
  ndk::ScopedAStatus getDiskStats(
      std::vector<aidl::android::hardware::health::DiskStats>* out) override;
  ndk::ScopedAStatus getHealthInfo(HealthInfo* out) override;
  ndk::ScopedAStatus setChargingPolicy(
      aidl::android::hardware::health::BatteryChargingPolicy policy) override;
  ndk::ScopedAStatus getChargingPolicy(
      aidl::android::hardware::health::BatteryChargingPolicy* out) override;
  ndk::ScopedAStatus getBatteryHealthData(
      aidl::android::hardware::health::BatteryHealthData* out) override;
  binder_status_t dump(int fd, const char** args, uint32_t numArgs) override;

 protected:
  // Called at the start of every call. A status that is not ok becomes the result of the call. May
  // block.
  virtual ndk::ScopedAStatus Permit(HealthOperation operation);
  // Called when a client sets a charging policy. Stores and reports it.
  virtual void ChangeChargingPolicy(aidl::android::hardware::health::BatteryChargingPolicy policy);

 private:
  // Calls Permit() and reports a refusal to the observer.
  ndk::ScopedAStatus Ask(HealthOperation operation);
  // Reports a refusal to the observer and returns `status`.
  ndk::ScopedAStatus Refuse(HealthOperation operation, ndk::ScopedAStatus status) const;
  // `read` is a field of HealthInfo, or a function of it.
  template <typename T, typename Read>
  ndk::ScopedAStatus Answer(HealthOperation operation, T* out, Read read);
  void ReportLocked() QUORVEL_REQUIRES(lock_);
  void SendLocked() QUORVEL_REQUIRES(lock_);

  const EventSender events_;
  mutable std::mutex lock_;
  HealthInfo info_ QUORVEL_GUARDED_BY(lock_);
  std::vector<Callback> callbacks_ QUORVEL_GUARDED_BY(lock_);
};

}  // namespace norvik::qel::services
