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

// The results: see ThermalReporter.
void ThermalService::Send(const Temperature& temperature) {
  callbacks_.ForEach(temperature.type, [&](auto& callback) {
    static_cast<void>(callback.notifyThrottling(temperature));
  });
}

void ThermalService::Send(const CoolingDevice& device) {
  cooling_callbacks_.ForEach(device.type, [&](auto& callback) {
    static_cast<void>(callback.notifyCoolingDeviceChanged(device));
  });
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
  return Perform(ThermalOperation::kRegisterThermalChangedCallback, ServiceEvent::Kind::kRegistered,
                 [&] { return callbacks_.Add(callback, std::nullopt); });
}

ndk::ScopedAStatus ThermalService::registerThermalChangedCallbackWithType(const Callback& callback,
                                                                          TemperatureType type) {
  return Perform(ThermalOperation::kRegisterThermalChangedCallbackWithType,
                 ServiceEvent::Kind::kRegistered, [&] { return callbacks_.Add(callback, type); });
}

ndk::ScopedAStatus ThermalService::unregisterThermalChangedCallback(const Callback& callback) {
  return Perform(ThermalOperation::kUnregisterThermalChangedCallback,
                 ServiceEvent::Kind::kUnregistered, [&] { return callbacks_.Remove(callback); });
}

ndk::ScopedAStatus ThermalService::registerCoolingDeviceChangedCallbackWithType(
    const CoolingCallback& callback, CoolingType type) {
  return Perform(ThermalOperation::kRegisterCoolingDeviceChangedCallbackWithType,
                 ServiceEvent::Kind::kRegistered,
                 [&] { return cooling_callbacks_.Add(callback, type); });
}

ndk::ScopedAStatus ThermalService::unregisterCoolingDeviceChangedCallback(
    const CoolingCallback& callback) {
  return Perform(ThermalOperation::kUnregisterCoolingDeviceChangedCallback,
                 ServiceEvent::Kind::kUnregistered,
                 [&] { return cooling_callbacks_.Remove(callback); });
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
    events_.SendRefusal(ThermalOperationName(operation), permitted.getDescription());
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

template <typename Change>
ndk::ScopedAStatus ThermalService::Perform(ThermalOperation operation, ServiceEvent::Kind kind,
                                           Change change) {
  ndk::ScopedAStatus permitted = Ask(operation);
  if (!permitted.isOk()) return permitted;
  if (const char* const reason = change()) {
    events_.SendRefusal(ThermalOperationName(operation), reason);
    return ndk::ScopedAStatus::fromExceptionCodeWithMessage(EX_ILLEGAL_ARGUMENT, reason);
  }
  events_.Send(kind);
  return permitted;
}

}  // namespace norvik::qel::services
