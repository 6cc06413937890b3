// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The proxies of the health interfaces.
#include <aidl/android/hardware/health/IHealth.h>

#include "remote_call.h"

namespace aidl::android::hardware::health {

using norvik::qel::fake::GeneratedProxyOf;

class BpHealthInfoCallback : public GeneratedProxyOf<IHealthInfoCallback> {
 public:
  using GeneratedProxyOf::GeneratedProxyOf;
  ndk::ScopedAStatus healthInfoChanged(const HealthInfo& info) override {
    return Send(&IHealthInfoCallback::healthInfoChanged, info);
  }
};

class BpHealth : public GeneratedProxyOf<IHealth> {
 public:
  using GeneratedProxyOf::GeneratedProxyOf;
  ndk::ScopedAStatus registerCallback(
      const std::shared_ptr<IHealthInfoCallback>& callback) override {
    return Call(&IHealth::registerCallback, callback);
  }
  ndk::ScopedAStatus unregisterCallback(
      const std::shared_ptr<IHealthInfoCallback>& callback) override {
    return Call(&IHealth::unregisterCallback, callback);
  }
  ndk::ScopedAStatus update() override { return Call(&IHealth::update); }
  ndk::ScopedAStatus getChargeCounterUah(int32_t* out) override {
    return Call(&IHealth::getChargeCounterUah, out);
  }
  ndk::ScopedAStatus getCurrentNowMicroamps(int32_t* out) override {
    return Call(&IHealth::getCurrentNowMicroamps, out);
  }
  ndk::ScopedAStatus getCurrentAverageMicroamps(int32_t* out) override {
    return Call(&IHealth::getCurrentAverageMicroamps, out);
  }
  ndk::ScopedAStatus getCapacity(int32_t* out) override { return Call(&IHealth::getCapacity, out); }
  ndk::ScopedAStatus getEnergyCounterNwh(int64_t* out) override {
    return Call(&IHealth::getEnergyCounterNwh, out);
  }
  ndk::ScopedAStatus getChargeStatus(BatteryStatus* out) override {
    return Call(&IHealth::getChargeStatus, out);
  }
  ndk::ScopedAStatus getStorageInfo(std::vector<StorageInfo>* out) override {
    return Call(&IHealth::getStorageInfo, out);
  }
  ndk::ScopedAStatus getDiskStats(std::vector<DiskStats>* out) override {
    return Call(&IHealth::getDiskStats, out);
  }
  ndk::ScopedAStatus getHealthInfo(HealthInfo* out) override {
    return Call(&IHealth::getHealthInfo, out);
  }
  ndk::ScopedAStatus setChargingPolicy(BatteryChargingPolicy policy) override {
    return Call(&IHealth::setChargingPolicy, policy);
  }
  ndk::ScopedAStatus getChargingPolicy(BatteryChargingPolicy* out) override {
    return Call(&IHealth::getChargingPolicy, out);
  }
  ndk::ScopedAStatus getBatteryHealthData(BatteryHealthData* out) override {
    return Call(&IHealth::getBatteryHealthData, out);
  }
};

}  // namespace aidl::android::hardware::health

namespace ndk::internal {

namespace health = ::aidl::android::hardware::health;
template class Generated<health::IHealthInfoCallback, health::BpHealthInfoCallback>;
template class GeneratedLocal<health::IHealthInfoCallback>;
template class Generated<health::IHealth, health::BpHealth>;
template class GeneratedLocal<health::IHealth>;

}  // namespace ndk::internal
