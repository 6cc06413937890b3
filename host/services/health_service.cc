// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "quorvel/services/health_service.h"

#include <stdio.h>

#include <algorithm>
#include <array>
#include <functional>
#include <iterator>
#include <utility>

namespace norvik::qel::services {

using aidl::android::hardware::health::BatteryChargingPolicy;
using aidl::android::hardware::health::BatteryHealthData;
using aidl::android::hardware::health::BatteryStatus;
using aidl::android::hardware::health::DiskStats;
using aidl::android::hardware::health::StorageInfo;

namespace {
constexpr char kNullCallback[] = "the callback is null";
}  // namespace

std::string_view HealthOperationName(HealthOperation operation) {
  static constexpr std::array<std::string_view, static_cast<size_t>(HealthOperation::kCount)>
      kNames = {"registerCallback",    "unregisterCallback",     "update",
                "getChargeCounterUah", "getCurrentNowMicroamps", "getCurrentAverageMicroamps",
                "getCapacity",         "getEnergyCounterNwh",    "getChargeStatus",
                "getStorageInfo",      "getDiskStats",           "getHealthInfo",
                "setChargingPolicy",   "getChargingPolicy",      "getBatteryHealthData"};
  static_assert(!kNames.back().empty(), "an operation has no name");
  return kNames.at(static_cast<size_t>(operation));
}

HealthService::HealthService(HealthInfo info, ServiceObserver observer)
    : events_("health", std::move(observer)), info_(std::move(info)) {}

void HealthService::Report(const HealthInfo& info) {
  std::lock_guard<std::mutex> lock(lock_);
  info_ = info;
  ReportLocked();
}

void HealthService::ReportLocked() {
  events_.SendReport(info_);
  SendLocked();
}

void HealthService::SendLocked() {
  for (const auto& callback : callbacks_) {
    // One-way: fails only if the receiver's process has died, which needs no action.
    static_cast<void>(callback->healthInfoChanged(info_));
  }
}

HealthService::HealthInfo HealthService::info() const {
  std::lock_guard<std::mutex> lock(lock_);
  return info_;
}

size_t HealthService::callback_count() const {
  std::lock_guard<std::mutex> lock(lock_);
  return callbacks_.size();
}

ndk::ScopedAStatus HealthService::registerCallback(const Callback& callback) {
  ndk::ScopedAStatus permitted = Ask(HealthOperation::kRegisterCallback);
  if (!permitted.isOk()) return permitted;
  if (callback == nullptr) {
    // STATUS_UNKNOWN is the only error that the interface allows for a registration.
    return Refuse(
        HealthOperation::kRegisterCallback,
        ndk::ScopedAStatus::fromServiceSpecificErrorWithMessage(STATUS_UNKNOWN, kNullCallback));
  }
  {
    std::lock_guard<std::mutex> lock(lock_);
    callbacks_.push_back(callback);
    static_cast<void>(callback->healthInfoChanged(info_));  // as in SendLocked()
  }
  events_.Send(ServiceEvent::Kind::kRegistered);
  return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus HealthService::unregisterCallback(const Callback& callback) {
  ndk::ScopedAStatus permitted = Ask(HealthOperation::kUnregisterCallback);
  if (!permitted.isOk()) return permitted;
  if (callback == nullptr) {
    return Refuse(
        HealthOperation::kUnregisterCallback,
        ndk::ScopedAStatus::fromExceptionCodeWithMessage(EX_ILLEGAL_ARGUMENT, kNullCallback));
  }
  std::vector<Callback> removed;  // released without the lock
  {
    std::lock_guard<std::mutex> lock(lock_);
    const ndk::SpAIBinder binder = callback->asBinder();
    const auto first_removed = std::stable_partition(
        callbacks_.begin(), callbacks_.end(),
        [&](const auto& candidate) { return candidate->asBinder() != binder; });
    removed.assign(std::make_move_iterator(first_removed),
                   std::make_move_iterator(callbacks_.end()));
    callbacks_.erase(first_removed, callbacks_.end());
  }
  if (removed.empty()) return ndk::ScopedAStatus::fromExceptionCode(EX_ILLEGAL_ARGUMENT);
  events_.Send(ServiceEvent::Kind::kUnregistered);
  return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus HealthService::update() {
  ndk::ScopedAStatus permitted = Ask(HealthOperation::kUpdate);
  if (!permitted.isOk()) return permitted;
  std::lock_guard<std::mutex> lock(lock_);
  SendLocked();
  return permitted;
}

ndk::ScopedAStatus HealthService::getChargeCounterUah(int32_t* out) {
  return Answer(HealthOperation::kGetChargeCounterUah, out, &HealthInfo::batteryChargeCounterUah);
}

ndk::ScopedAStatus HealthService::getCurrentNowMicroamps(int32_t* out) {
  return Answer(HealthOperation::kGetCurrentNowMicroamps, out,
                &HealthInfo::batteryCurrentMicroamps);
}

ndk::ScopedAStatus HealthService::getCurrentAverageMicroamps(int32_t* out) {
  return Answer(HealthOperation::kGetCurrentAverageMicroamps, out,
                &HealthInfo::batteryCurrentAverageMicroamps);
}

ndk::ScopedAStatus HealthService::getCapacity(int32_t* out) {
  return Answer(HealthOperation::kGetCapacity, out, &HealthInfo::batteryLevel);
}

ndk::ScopedAStatus HealthService::getEnergyCounterNwh(int64_t* /*out*/) {
  ndk::ScopedAStatus permitted = Ask(HealthOperation::kGetEnergyCounterNwh);
  if (!permitted.isOk()) return permitted;
  return ndk::ScopedAStatus::fromExceptionCode(EX_UNSUPPORTED_OPERATION);  // no such counter here
}

ndk::ScopedAStatus HealthService::getChargeStatus(BatteryStatus* out) {
  return Answer(HealthOperation::kGetChargeStatus, out, &HealthInfo::batteryStatus);
}

ndk::ScopedAStatus HealthService::getStorageInfo(std::vector<StorageInfo>* out) {
  return Answer(HealthOperation::kGetStorageInfo, out, &HealthInfo::storageInfos);
}

ndk::ScopedAStatus HealthService::getDiskStats(std::vector<DiskStats>* out) {
  return Answer(HealthOperation::kGetDiskStats, out, &HealthInfo::diskStats);
}

ndk::ScopedAStatus HealthService::getHealthInfo(HealthInfo* out) {
  return Answer(HealthOperation::kGetHealthInfo, out, [](const HealthInfo& info) { return info; });
}

ndk::ScopedAStatus HealthService::setChargingPolicy(BatteryChargingPolicy policy) {
  ndk::ScopedAStatus permitted = Ask(HealthOperation::kSetChargingPolicy);
  if (!permitted.isOk()) return permitted;
  ChangeChargingPolicy(policy);
  return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus HealthService::getChargingPolicy(BatteryChargingPolicy* out) {
  return Answer(HealthOperation::kGetChargingPolicy, out, &HealthInfo::chargingPolicy);
}

ndk::ScopedAStatus HealthService::getBatteryHealthData(BatteryHealthData* out) {
  ndk::ScopedAStatus permitted = Ask(HealthOperation::kGetBatteryHealthData);
  if (!permitted.isOk()) return permitted;
  const HealthInfo current = info();
  if (!current.batteryHealthData) {
    return ndk::ScopedAStatus::fromExceptionCode(EX_UNSUPPORTED_OPERATION);
  }
  *out = *current.batteryHealthData;
  return ndk::ScopedAStatus::ok();
}

binder_status_t HealthService::dump(int fd, const char** /*args*/, uint32_t /*numArgs*/) {
  dprintf(fd, "callbacks: %zu\n%s\n", callback_count(), info().toString().c_str());
  return STATUS_OK;
}

ndk::ScopedAStatus HealthService::Permit(HealthOperation /*operation*/) {
  return ndk::ScopedAStatus::ok();
}

void HealthService::ChangeChargingPolicy(BatteryChargingPolicy policy) {
  std::lock_guard<std::mutex> lock(lock_);
  info_.chargingPolicy = policy;
  ReportLocked();
}

ndk::ScopedAStatus HealthService::Ask(HealthOperation operation) {
  ndk::ScopedAStatus permitted = Permit(operation);
  return permitted.isOk() ? std::move(permitted) : Refuse(operation, std::move(permitted));
}

ndk::ScopedAStatus HealthService::Refuse(HealthOperation operation,
                                         ndk::ScopedAStatus status) const {
  events_.SendRefusal(HealthOperationName(operation), status.getDescription());
  return status;
}

template <typename T, typename Read>
ndk::ScopedAStatus HealthService::Answer(HealthOperation operation, T* out, Read read) {
  ndk::ScopedAStatus permitted = Ask(operation);
  if (permitted.isOk()) *out = std::invoke(read, info());
  return permitted;
}

}  // namespace norvik::qel::services
