// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: the remote side of IHealth.
#pragma once

#include <aidl/android/hardware/health/IHealth.h>
#include <android/binder_interface_utils.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace aidl::android::hardware::health {

class BpHealth : public ndk::BpCInterface<IHealth> {
 public:
  explicit BpHealth(const ndk::SpAIBinder& binder);
  ~BpHealth() override;
  ndk::ScopedAStatus registerCallback(
      const std::shared_ptr<IHealthInfoCallback>& callback) override;
  ndk::ScopedAStatus unregisterCallback(
      const std::shared_ptr<IHealthInfoCallback>& callback) override;
  ndk::ScopedAStatus update() override;
  ndk::ScopedAStatus getChargeCounterUah(int32_t* out) override;
  ndk::ScopedAStatus getCurrentNowMicroamps(int32_t* out) override;
  ndk::ScopedAStatus getCurrentAverageMicroamps(int32_t* out) override;
  ndk::ScopedAStatus getCapacity(int32_t* out) override;
  ndk::ScopedAStatus getEnergyCounterNwh(int64_t* out) override;
  ndk::ScopedAStatus getChargeStatus(BatteryStatus* out) override;
  ndk::ScopedAStatus getStorageInfo(std::vector<StorageInfo>* out) override;
  ndk::ScopedAStatus getDiskStats(std::vector<DiskStats>* out) override;
  ndk::ScopedAStatus getHealthInfo(HealthInfo* out) override;
  ndk::ScopedAStatus setChargingPolicy(BatteryChargingPolicy policy) override;
  ndk::ScopedAStatus getChargingPolicy(BatteryChargingPolicy* out) override;
  ndk::ScopedAStatus getBatteryHealthData(BatteryHealthData* out) override;
  ndk::ScopedAStatus getInterfaceVersion(int32_t* out) override;
  ndk::ScopedAStatus getInterfaceHash(std::string* out) override;

 private:
  struct Asked;
  const std::unique_ptr<Asked> asked_;
};

}  // namespace aidl::android::hardware::health
