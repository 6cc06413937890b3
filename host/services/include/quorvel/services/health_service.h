// A health service as a device maker would write it, over whatever knows the battery.
#pragma once

#include <aidl/android/hardware/health/BnHealth.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
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

// Behaves as the platform's reference service does: a new callback is sent the current data before
// its registration returns; callbacks are compared by binder identity; duplicates are kept, and
// one unregistration removes all of them. A null callback is refused, and is never registered.
//
// Threads: any. Locks: lock_ is held while a report is put on its way, so that reports reach every
// callback in the order in which they were made. Callbacks belong to other processes: nothing waits
// for a receiver there, and no last reference is released.
class HealthService : public aidl::android::hardware::health::BnHealth {
 public:
  using HealthInfo = aidl::android::hardware::health::HealthInfo;

  explicit HealthService(HealthInfo info, ServiceObserver observer = nullptr);

  // Replaces the data and tells every callback.
  void Report(const HealthInfo& info) QUORVEL_EXCLUDES(lock_);
  HealthInfo info() const QUORVEL_EXCLUDES(lock_);
  size_t callback_count() const QUORVEL_EXCLUDES(lock_);

  ndk::ScopedAStatus registerCallback(
      const std::shared_ptr<aidl::android::hardware::health::IHealthInfoCallback>& callback)
      override;
  ndk::ScopedAStatus unregisterCallback(
      const std::shared_ptr<aidl::android::hardware::health::IHealthInfoCallback>& callback)
      override;
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
  // Asked before a call does anything: anything but ok is its answer. May block.
  virtual ndk::ScopedAStatus Permit(HealthOperation operation);
  // A client has set another policy: to be stored and reported.
  virtual void ChangeChargingPolicy(aidl::android::hardware::health::BatteryChargingPolicy policy);

 private:
  // Permit(), and the observer hears of a refusal.
  ndk::ScopedAStatus Ask(HealthOperation operation);
  // The observer hears of it, and the caller gets `status`.
  ndk::ScopedAStatus Refuse(HealthOperation operation, ndk::ScopedAStatus status) const;
  template <typename T, typename Read>
  ndk::ScopedAStatus Answer(HealthOperation operation, T* out, Read read);
  void SendLocked() QUORVEL_REQUIRES(lock_);
  void Tell(ServiceEvent::Kind kind, std::string detail = {}) const;
  void TellReport(const HealthInfo& info) const;

  const ServiceObserver observer_;
  mutable std::mutex lock_;
  HealthInfo info_ QUORVEL_GUARDED_BY(lock_);
  std::vector<std::shared_ptr<aidl::android::hardware::health::IHealthInfoCallback>> callbacks_
      QUORVEL_GUARDED_BY(lock_);
};

}  // namespace norvik::qel::services
