// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "quorvel/services/hidl_thermal_service.h"

#include <array>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace norvik::qel::services {

namespace V1_0 = android::hardware::thermal::V1_0;
namespace V2_0 = android::hardware::thermal::V2_0;
using android::hardware::Return;
using android::hardware::Void;
using V1_0::ThermalStatusCode;

namespace {

// All records, or those of one type.
template <typename Record, typename Type>
auto Select(const std::vector<Record>& records, bool filter, Type type) {
  std::vector<decltype(ToHidl(records.front()))> selected;
  for (const Record& record : records) {
    auto hidl = ToHidl(record);
    if (!filter || hidl.type == type) selected.push_back(std::move(hidl));
  }
  return selected;
}

// The threshold of `temperature` for a severity. NaN if there is none.
float HotThreshold(const ThermalData& data, const V2_0::Temperature& temperature,
                   V2_0::ThrottlingSeverity severity) {
  for (const auto& threshold : Select(data.thresholds, /*filter=*/true, temperature.type)) {
    if (threshold.name == temperature.name) {
      return threshold.hotThrottlingThresholds[static_cast<size_t>(severity)];
    }
  }
  return std::numeric_limits<float>::quiet_NaN();
}

// Version 1.0 has only the first four types.
std::vector<V1_0::Temperature> TemperaturesOf1_0(const ThermalData& data) {
  std::vector<V1_0::Temperature> old;
  for (const auto& temperature :
       Select(data.temperatures, /*filter=*/false, V2_0::TemperatureType::UNKNOWN)) {
    if (temperature.type < V2_0::TemperatureType::CPU ||
        temperature.type > V2_0::TemperatureType::SKIN) {
      continue;
    }
    old.push_back(
        {.type = static_cast<V1_0::TemperatureType>(temperature.type),
         .name = temperature.name,
         .currentValue = temperature.value,
         .throttlingThreshold = HotThreshold(data, temperature, V2_0::ThrottlingSeverity::SEVERE),
         .shutdownThreshold = HotThreshold(data, temperature, V2_0::ThrottlingSeverity::SHUTDOWN),
         .vrThrottlingThreshold = std::numeric_limits<float>::quiet_NaN()});
  }
  return old;
}

std::vector<V1_0::CoolingDevice> FansOf1_0(const ThermalData& data) {
  std::vector<V1_0::CoolingDevice> fans;
  for (const auto& device : Select(data.cooling_devices, true, V2_0::CoolingType::FAN)) {
    fans.push_back({.type = V1_0::CoolingType::FAN_RPM,
                    .name = device.name,
                    .currentValue = static_cast<float>(device.value)});
  }
  return fans;
}

}  // namespace

std::string_view HidlThermalOperationName(HidlThermalOperation operation) {
  static constexpr std::array<std::string_view, static_cast<size_t>(HidlThermalOperation::kCount)>
      kNames = {"getTemperatures",
                "getCpuUsages",
                "getCoolingDevices",
                "getCurrentTemperatures",
                "getTemperatureThresholds",
                "registerThermalChangedCallback",
                "unregisterThermalChangedCallback",
                "getCurrentCoolingDevices"};
  static_assert(!kNames.back().empty(), "an operation has no name");
  return kNames.at(static_cast<size_t>(operation));
}

void HidlThermalService::Send(const aidl::android::hardware::thermal::Temperature& temperature) {
  const V2_0::Temperature hidl = ToHidl(temperature);
  callbacks_.ForEach(hidl.type, [&](V2_0::IThermalChangedCallback& callback) {
    static_cast<void>(callback.notifyThrottling(hidl).isOk());  // see ThermalReporter
  });
}

Return<void> HidlThermalService::getTemperatures(getTemperatures_cb _hidl_cb) {
  return Answer(HidlThermalOperation::kGetTemperatures, _hidl_cb, TemperaturesOf1_0);
}

Return<void> HidlThermalService::getCpuUsages(getCpuUsages_cb _hidl_cb) {
  return Answer(HidlThermalOperation::kGetCpuUsages, _hidl_cb,
                [](const ThermalData&) { return std::vector<V1_0::CpuUsage>(); });
}

Return<void> HidlThermalService::getCoolingDevices(getCoolingDevices_cb _hidl_cb) {
  return Answer(HidlThermalOperation::kGetCoolingDevices, _hidl_cb, FansOf1_0);
}

Return<void> HidlThermalService::getCurrentTemperatures(bool filterType, TemperatureType type,
                                                        getCurrentTemperatures_cb _hidl_cb) {
  return Answer(
      HidlThermalOperation::kGetCurrentTemperatures, _hidl_cb,
      [=](const ThermalData& data) { return Select(data.temperatures, filterType, type); });
}

Return<void> HidlThermalService::getTemperatureThresholds(bool filterType, TemperatureType type,
                                                          getTemperatureThresholds_cb _hidl_cb) {
  return Answer(HidlThermalOperation::kGetTemperatureThresholds, _hidl_cb,
                [=](const ThermalData& data) { return Select(data.thresholds, filterType, type); });
}

Return<void> HidlThermalService::registerThermalChangedCallback(
    const Callback& callback, bool filterType, TemperatureType type,
    registerThermalChangedCallback_cb _hidl_cb) {
  return Perform(HidlThermalOperation::kRegisterThermalChangedCallback,
                 ServiceEvent::Kind::kRegistered, _hidl_cb, [&] {
                   return callbacks_.Add(callback, filterType ? std::optional(type) : std::nullopt);
                 });
}

Return<void> HidlThermalService::unregisterThermalChangedCallback(
    const Callback& callback, unregisterThermalChangedCallback_cb _hidl_cb) {
  return Perform(HidlThermalOperation::kUnregisterThermalChangedCallback,
                 ServiceEvent::Kind::kUnregistered, _hidl_cb,
                 [&] { return callbacks_.Remove(callback); });
}

Return<void> HidlThermalService::getCurrentCoolingDevices(bool filterType, CoolingType type,
                                                          getCurrentCoolingDevices_cb _hidl_cb) {
  return Answer(
      HidlThermalOperation::kGetCurrentCoolingDevices, _hidl_cb,
      [=](const ThermalData& data) { return Select(data.cooling_devices, filterType, type); });
}

HidlThermalService::Verdict HidlThermalService::Verdict::Failure(const std::string& message) {
  return {.transport = {}, .status = {.code = ThermalStatusCode::FAILURE, .debugMessage = message}};
}

HidlThermalService::Verdict HidlThermalService::Permit(HidlThermalOperation /*operation*/) {
  return {};
}

HidlThermalService::Verdict HidlThermalService::Ask(HidlThermalOperation operation) {
  Verdict verdict = Permit(operation);
  if (!verdict.works()) {
    events_.SendRefusal(HidlThermalOperationName(operation),
                        verdict.transport.isOk() ? verdict.status.debugMessage.c_str()
                                                 : verdict.transport.description());
  }
  return verdict;
}

template <typename Handler, typename Read>
Return<void> HidlThermalService::Answer(HidlThermalOperation operation, const Handler& _hidl_cb,
                                        Read read) {
  const Verdict verdict = Ask(operation);
  if (!verdict.transport.isOk()) return verdict.transport;
  _hidl_cb(verdict.status, verdict.works() ? read(data()) : decltype(read(data()))());
  return Void();
}

template <typename Handler, typename Change>
Return<void> HidlThermalService::Perform(HidlThermalOperation operation, ServiceEvent::Kind kind,
                                         const Handler& _hidl_cb, Change change) {
  Verdict verdict = Ask(operation);
  if (!verdict.transport.isOk()) return verdict.transport;
  if (verdict.works()) {
    const char* reason = change();
    if (reason == nullptr) {
      events_.Send(kind);
    } else {
      verdict = Verdict::Failure(reason);
      events_.SendRefusal(HidlThermalOperationName(operation), reason);
    }
  }
  _hidl_cb(verdict.status);
  return Void();
}

}  // namespace norvik::qel::services
