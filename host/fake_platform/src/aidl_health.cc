// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The local and remote sides of the health interface.
#include <aidl/android/hardware/health/BnHealth.h>
#include <aidl/android/hardware/health/BnHealthInfoCallback.h>
#include <aidl/android/hardware/health/BpHealth.h>
#include <aidl/android/hardware/health/BpHealthInfoCallback.h>

#include "remote_call.h"

namespace aidl::android::hardware::health {

namespace fake = ::norvik::qel::fake;

namespace {

constexpr AIBinder_Class kHealthClass = {"android.hardware.health.IHealth", fake::ObjectOf,
                                         fake::DestroyArgs};
constexpr AIBinder_Class kHealthInfoCallbackClass = {"android.hardware.health.IHealthInfoCallback",
                                                     fake::ObjectOf, fake::DestroyArgs};

}  // namespace

const char* IHealth::descriptor = kHealthClass.descriptor;
const char* IHealthInfoCallback::descriptor = kHealthInfoCallbackClass.descriptor;

std::shared_ptr<IHealth> IHealth::fromBinder(const ndk::SpAIBinder& binder) {
  return fake::FromBinder<IHealth, BpHealth, kHealthClass>(binder);
}

bool IHealth::setDefaultImpl(const std::shared_ptr<IHealth>& impl) {
  return fake::SetDefaultImpl(impl);
}

const std::shared_ptr<IHealth>& IHealth::getDefaultImpl() {
  return fake::DefaultImpl<IHealth>();
}

std::shared_ptr<IHealthInfoCallback> IHealthInfoCallback::fromBinder(
    const ndk::SpAIBinder& binder) {
  return fake::FromBinder<IHealthInfoCallback, BpHealthInfoCallback, kHealthInfoCallbackClass>(
      binder);
}

bool IHealthInfoCallback::setDefaultImpl(const std::shared_ptr<IHealthInfoCallback>& impl) {
  return fake::SetDefaultImpl(impl);
}

const std::shared_ptr<IHealthInfoCallback>& IHealthInfoCallback::getDefaultImpl() {
  return fake::DefaultImpl<IHealthInfoCallback>();
}

BnHealth::BnHealth() = default;
BnHealth::~BnHealth() = default;

ndk::SpAIBinder BnHealth::createBinder() {
  return fake::MakeLocal<kHealthClass>(ref<ndk::ICInterface>());
}

ndk::ScopedAStatus BnHealth::getInterfaceVersion(int32_t* out) {
  *out = version;
  return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus BnHealth::getInterfaceHash(std::string* out) {
  *out = hash;
  return ndk::ScopedAStatus::ok();
}

BnHealthInfoCallback::BnHealthInfoCallback() = default;
BnHealthInfoCallback::~BnHealthInfoCallback() = default;

ndk::SpAIBinder BnHealthInfoCallback::createBinder() {
  return fake::MakeLocal<kHealthInfoCallbackClass>(ref<ndk::ICInterface>());
}

ndk::ScopedAStatus BnHealthInfoCallback::getInterfaceVersion(int32_t* out) {
  *out = version;
  return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus BnHealthInfoCallback::getInterfaceHash(std::string* out) {
  *out = hash;
  return ndk::ScopedAStatus::ok();
}

struct BpHealthInfoCallback::Asked {
  fake::AskedOnce<int32_t> version;
  fake::AskedOnce<std::string> hash;
};

BpHealthInfoCallback::BpHealthInfoCallback(const ndk::SpAIBinder& binder)
    : BpCInterface(binder), asked_(std::make_unique<Asked>()) {}
BpHealthInfoCallback::~BpHealthInfoCallback() = default;

ndk::ScopedAStatus BpHealthInfoCallback::healthInfoChanged(const HealthInfo& info) {
  return fake::SendRemote(asBinder(), &IHealthInfoCallback::healthInfoChanged, info);
}

ndk::ScopedAStatus BpHealthInfoCallback::getInterfaceVersion(int32_t* out) {
  return asked_->version.Get(out, [this](int32_t* value) {
    return fake::CallRemote(asBinder(), &IHealthInfoCallback::getInterfaceVersion, value);
  });
}

ndk::ScopedAStatus BpHealthInfoCallback::getInterfaceHash(std::string* out) {
  return asked_->hash.Get(out, [this](std::string* value) {
    return fake::CallRemote(asBinder(), &IHealthInfoCallback::getInterfaceHash, value);
  });
}

struct BpHealth::Asked {
  fake::AskedOnce<int32_t> version;
  fake::AskedOnce<std::string> hash;
};

BpHealth::BpHealth(const ndk::SpAIBinder& binder)
    : BpCInterface(binder), asked_(std::make_unique<Asked>()) {}
BpHealth::~BpHealth() = default;

ndk::ScopedAStatus BpHealth::registerCallback(
    const std::shared_ptr<IHealthInfoCallback>& callback) {
  return fake::CallRemote(asBinder(), &IHealth::registerCallback, callback);
}

ndk::ScopedAStatus BpHealth::unregisterCallback(
    const std::shared_ptr<IHealthInfoCallback>& callback) {
  return fake::CallRemote(asBinder(), &IHealth::unregisterCallback, callback);
}

ndk::ScopedAStatus BpHealth::update() {
  return fake::CallRemote(asBinder(), &IHealth::update);
}

ndk::ScopedAStatus BpHealth::getChargeCounterUah(int32_t* out) {
  return fake::CallRemote(asBinder(), &IHealth::getChargeCounterUah, out);
}

ndk::ScopedAStatus BpHealth::getCurrentNowMicroamps(int32_t* out) {
  return fake::CallRemote(asBinder(), &IHealth::getCurrentNowMicroamps, out);
}

ndk::ScopedAStatus BpHealth::getCurrentAverageMicroamps(int32_t* out) {
  return fake::CallRemote(asBinder(), &IHealth::getCurrentAverageMicroamps, out);
}

ndk::ScopedAStatus BpHealth::getCapacity(int32_t* out) {
  return fake::CallRemote(asBinder(), &IHealth::getCapacity, out);
}

ndk::ScopedAStatus BpHealth::getEnergyCounterNwh(int64_t* out) {
  return fake::CallRemote(asBinder(), &IHealth::getEnergyCounterNwh, out);
}

ndk::ScopedAStatus BpHealth::getChargeStatus(BatteryStatus* out) {
  return fake::CallRemote(asBinder(), &IHealth::getChargeStatus, out);
}

ndk::ScopedAStatus BpHealth::getStorageInfo(std::vector<StorageInfo>* out) {
  return fake::CallRemote(asBinder(), &IHealth::getStorageInfo, out);
}

ndk::ScopedAStatus BpHealth::getDiskStats(std::vector<DiskStats>* out) {
  return fake::CallRemote(asBinder(), &IHealth::getDiskStats, out);
}

ndk::ScopedAStatus BpHealth::getHealthInfo(HealthInfo* out) {
  return fake::CallRemote(asBinder(), &IHealth::getHealthInfo, out);
}

ndk::ScopedAStatus BpHealth::setChargingPolicy(BatteryChargingPolicy policy) {
  return fake::CallRemote(asBinder(), &IHealth::setChargingPolicy, policy);
}

ndk::ScopedAStatus BpHealth::getChargingPolicy(BatteryChargingPolicy* out) {
  return fake::CallRemote(asBinder(), &IHealth::getChargingPolicy, out);
}

ndk::ScopedAStatus BpHealth::getBatteryHealthData(BatteryHealthData* out) {
  return fake::CallRemote(asBinder(), &IHealth::getBatteryHealthData, out);
}

ndk::ScopedAStatus BpHealth::getInterfaceVersion(int32_t* out) {
  return asked_->version.Get(out, [this](int32_t* value) {
    return fake::CallRemote(asBinder(), &IHealth::getInterfaceVersion, value);
  });
}

ndk::ScopedAStatus BpHealth::getInterfaceHash(std::string* out) {
  return asked_->hash.Get(out, [this](std::string* value) {
    return fake::CallRemote(asBinder(), &IHealth::getInterfaceHash, value);
  });
}

}  // namespace aidl::android::hardware::health
