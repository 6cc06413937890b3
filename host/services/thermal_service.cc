// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "quorvel/services/thermal_service.h"

#include <stdio.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>
#include <utility>

namespace norvik::qel::services {

namespace {

constexpr auto kAll = [](const auto&) { return true; };

template <typename Type>
auto OfType(Type type) {
  return [type](const auto& record) { return record.type == type; };
}

}  // namespace

std::string_view ThermalOperationName(ThermalOperation operation) {
  static constexpr std::array<std::string_view, static_cast<size_t>(ThermalOperation::kCount)>
      kNames = {"getCoolingDevices",
                "getCoolingDevicesWithType",
                "getTemperatures",
                "getTemperaturesWithType",
                "getTemperatureThresholds",
                "getTemperatureThresholdsWithType",
                "registerThermalChangedCallback",
                "registerThermalChangedCallbackWithType",
                "unregisterThermalChangedCallback",
                "registerCoolingDeviceChangedCallbackWithType",
                "unregisterCoolingDeviceChangedCallback"};
  static_assert(!kNames.back().empty(), "an operation has no name");
  return kNames.at(static_cast<size_t>(operation));
}

ThermalService::ThermalService(ThermalData data, ServiceObserver observer)
    : observer_(std::move(observer)), data_(std::move(data)) {}

void ThermalService::Report(const ThermalData& data) {
  std::lock_guard<std::mutex> lock(lock_);
  const ThermalChanges changes = Compare(std::exchange(data_, data), data);
  for (const services::Report& report : changes.reports) TellReport(report);
  for (const auto& temperature : changes.severities) SendLocked(temperature);
  for (const CoolingDevice& device : changes.cooling_devices) {
    cooling_callbacks_.ForEach(device.type, [&](auto& callback) {
      static_cast<void>(callback.notifyCoolingDeviceChanged(device));  // as in SendLocked()
    });
  }
}

void ThermalService::Notify(const Temperature& temperature) {
  std::lock_guard<std::mutex> lock(lock_);
  TellReport(temperature);
  SendLocked(temperature);
}

void ThermalService::SendLocked(const Temperature& temperature) {
  callbacks_.ForEach(temperature.type, [&](auto& callback) {
    // One-way: fails only if the receiver's process has died, which needs no action.
    static_cast<void>(callback.notifyThrottling(temperature));
  });
}

ThermalData ThermalService::data() const {
  std::lock_guard<std::mutex> lock(lock_);
  return data_;
}

size_t ThermalService::callback_count() const {
  std::lock_guard<std::mutex> lock(lock_);
  return callbacks_.size();
}

size_t ThermalService::cooling_callback_count() const {
  std::lock_guard<std::mutex> lock(lock_);
  return cooling_callbacks_.size();
}

ndk::ScopedAStatus ThermalService::getCoolingDevices(std::vector<CoolingDevice>* out) {
  return Answer(ThermalOperation::kGetCoolingDevices, &ThermalData::cooling_devices, kAll, out);
}

ndk::ScopedAStatus ThermalService::getCoolingDevicesWithType(CoolingType type,
                                                             std::vector<CoolingDevice>* out) {
  return Answer(ThermalOperation::kGetCoolingDevicesWithType, &ThermalData::cooling_devices,
                OfType(type), out);
}

ndk::ScopedAStatus ThermalService::getTemperatures(std::vector<Temperature>* out) {
  return Answer(ThermalOperation::kGetTemperatures, &ThermalData::temperatures, kAll, out);
}

ndk::ScopedAStatus ThermalService::getTemperaturesWithType(TemperatureType type,
                                                           std::vector<Temperature>* out) {
  return Answer(ThermalOperation::kGetTemperaturesWithType, &ThermalData::temperatures,
                OfType(type), out);
}

ndk::ScopedAStatus ThermalService::getTemperatureThresholds(
    std::vector<TemperatureThreshold>* out) {
  return Answer(ThermalOperation::kGetTemperatureThresholds, &ThermalData::thresholds, kAll, out);
}

ndk::ScopedAStatus ThermalService::getTemperatureThresholdsWithType(
    TemperatureType type, std::vector<TemperatureThreshold>* out) {
  return Answer(ThermalOperation::kGetTemperatureThresholdsWithType, &ThermalData::thresholds,
                OfType(type), out);
}

ndk::ScopedAStatus ThermalService::registerThermalChangedCallback(const Callback& callback) {
  return Register(ThermalOperation::kRegisterThermalChangedCallback, &ThermalService::callbacks_,
                  callback, std::optional<TemperatureType>());
}

ndk::ScopedAStatus ThermalService::registerThermalChangedCallbackWithType(const Callback& callback,
                                                                          TemperatureType type) {
  return Register(ThermalOperation::kRegisterThermalChangedCallbackWithType,
                  &ThermalService::callbacks_, callback, std::optional(type));
}

ndk::ScopedAStatus ThermalService::unregisterThermalChangedCallback(const Callback& callback) {
  return Unregister(ThermalOperation::kUnregisterThermalChangedCallback,
                    &ThermalService::callbacks_, callback);
}

ndk::ScopedAStatus ThermalService::registerCoolingDeviceChangedCallbackWithType(
    const CoolingCallback& callback, CoolingType type) {
  return Register(ThermalOperation::kRegisterCoolingDeviceChangedCallbackWithType,
                  &ThermalService::cooling_callbacks_, callback, std::optional(type));
}

ndk::ScopedAStatus ThermalService::unregisterCoolingDeviceChangedCallback(
    const CoolingCallback& callback) {
  return Unregister(ThermalOperation::kUnregisterCoolingDeviceChangedCallback,
                    &ThermalService::cooling_callbacks_, callback);
}

binder_status_t ThermalService::dump(int fd, const char** /*args*/, uint32_t /*numArgs*/) {
  dprintf(fd, "callbacks: %zu\n", callback_count());
  const ThermalData current = data();
  for (const Temperature& temperature : current.temperatures) {
    dprintf(fd, "%s\n", temperature.toString().c_str());
  }
  for (const CoolingDevice& device : current.cooling_devices) {
    dprintf(fd, "%s\n", device.toString().c_str());
  }
  return STATUS_OK;
}

ndk::ScopedAStatus ThermalService::Permit(ThermalOperation /*operation*/) {
  return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus ThermalService::Ask(ThermalOperation operation) {
  ndk::ScopedAStatus permitted = Permit(operation);
  if (!permitted.isOk()) {
    Tell(ServiceEvent::Kind::kRefused,
         std::string(ThermalOperationName(operation)) + ": " + permitted.getDescription());
  }
  return permitted;
}

template <typename Record, typename Filter>
ndk::ScopedAStatus ThermalService::Answer(ThermalOperation operation,
                                          std::vector<Record> ThermalData::*records, Filter filter,
                                          std::vector<Record>* out) {
  ndk::ScopedAStatus permitted = Ask(operation);
  if (!permitted.isOk()) return permitted;
  const ThermalData current = data();
  out->clear();
  std::copy_if((current.*records).begin(), (current.*records).end(), std::back_inserter(*out),
               filter);
  return permitted;
}

template <typename List, typename Pointer, typename Type>
ndk::ScopedAStatus ThermalService::Register(ThermalOperation operation, List ThermalService::*list,
                                            const Pointer& callback, Type type) {
  ndk::ScopedAStatus permitted = Ask(operation);
  if (!permitted.isOk()) return permitted;
  if (callback == nullptr) return Refuse(operation, "the callback is null");
  bool added;
  {
    std::lock_guard<std::mutex> lock(lock_);
    added = (this->*list).Add(callback, type);
  }
  if (!added) return Refuse(operation, "the callback is registered already");
  Tell(ServiceEvent::Kind::kRegistered);
  return permitted;
}

template <typename List, typename Pointer>
ndk::ScopedAStatus ThermalService::Unregister(ThermalOperation operation,
                                              List ThermalService::*list, const Pointer& callback) {
  ndk::ScopedAStatus permitted = Ask(operation);
  if (!permitted.isOk()) return permitted;
  if (callback == nullptr) return Refuse(operation, "the callback is null");
  Pointer removed;  // released without the lock
  {
    std::lock_guard<std::mutex> lock(lock_);
    removed = (this->*list).Remove(callback);
  }
  if (removed == nullptr) return Refuse(operation, "the callback is not registered");
  Tell(ServiceEvent::Kind::kUnregistered);
  return permitted;
}

ndk::ScopedAStatus ThermalService::Refuse(ThermalOperation operation, const char* reason) const {
  Tell(ServiceEvent::Kind::kRefused, std::string(ThermalOperationName(operation)) + ": " + reason);
  return ndk::ScopedAStatus::fromExceptionCodeWithMessage(EX_ILLEGAL_ARGUMENT, reason);
}

void ThermalService::Tell(ServiceEvent::Kind kind, std::string detail) const {
  if (observer_ != nullptr) {
    observer_({.kind = kind, .service = "thermal", .detail = std::move(detail)});
  }
}

void ThermalService::TellReport(services::Report report) const {
  if (observer_ == nullptr) return;
  observer_(
      {.kind = ServiceEvent::Kind::kReported, .service = "thermal", .report = std::move(report)});
}

}  // namespace norvik::qel::services
