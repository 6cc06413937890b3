// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "quorvel/services/thermal_data.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace norvik::qel::services {

namespace V2_0 = android::hardware::thermal::V2_0;
using aidl::android::hardware::thermal::CoolingDevice;
using aidl::android::hardware::thermal::CoolingType;
using aidl::android::hardware::thermal::Temperature;
using aidl::android::hardware::thermal::TemperatureThreshold;
using aidl::android::hardware::thermal::TemperatureType;
using aidl::android::hardware::thermal::ThrottlingSeverity;

namespace {

// The record of the same type and name. Null if there is none.
template <typename Record>
const Record* Find(const std::vector<Record>& records, const Record& like) {
  const auto found = std::find_if(records.begin(), records.end(), [&](const Record& record) {
    return record.type == like.type && record.name == like.name;
  });
  return found != records.end() ? &*found : nullptr;
}

// Two unknown values (NaN) are the same.
bool AreSame(const Temperature& left, const Temperature& right) {
  const bool same_value =
      left.value == right.value || (std::isnan(left.value) && std::isnan(right.value));
  return same_value && left.throttlingStatus == right.throttlingStatus;
}

void Copy(const std::vector<float>& from, android::hardware::hidl_array<float, 7>& to) {
  for (size_t i = 0; i < to.size(); ++i) {
    to[i] = i < from.size() ? from[i] : std::numeric_limits<float>::quiet_NaN();
  }
}

}  // namespace

ThermalChanges Compare(const ThermalData& before, const ThermalData& now) {
  ThermalChanges changes;
  for (const Temperature& temperature : now.temperatures) {
    const Temperature* old = Find(before.temperatures, temperature);
    if (old == nullptr || !AreSame(*old, temperature)) changes.reports.push_back(temperature);
    const auto severity = old != nullptr ? old->throttlingStatus : ThrottlingSeverity::NONE;
    if (temperature.throttlingStatus != severity) changes.severities.push_back(temperature);
  }
  for (Temperature old : before.temperatures) {
    if (Find(now.temperatures, old) != nullptr) continue;
    changes.reports.push_back(TemperatureGone{.type = old.type, .name = old.name});
    if (old.throttlingStatus == ThrottlingSeverity::NONE) continue;
    old.value = std::numeric_limits<float>::quiet_NaN();
    old.throttlingStatus = ThrottlingSeverity::NONE;
    changes.severities.push_back(old);
  }
  for (const CoolingDevice& device : now.cooling_devices) {
    const CoolingDevice* old = Find(before.cooling_devices, device);
    if (old == nullptr || *old != device) changes.cooling_devices.push_back(device);
  }
  return changes;
}

void ThermalReporter::Report(const ThermalData& data) {
  std::lock_guard<std::mutex> lock(lock_);
  const ThermalChanges changes = Compare(std::exchange(data_, data), data);
  for (const services::Report& report : changes.reports) events_.SendReport(report);
  for (const Temperature& temperature : changes.severities) Send(temperature);
  for (const CoolingDevice& device : changes.cooling_devices) Send(device);
}

void ThermalReporter::Notify(const Temperature& temperature) {
  std::lock_guard<std::mutex> lock(lock_);
  events_.SendReport(temperature);
  Send(temperature);
}

ThermalData ThermalReporter::data() const {
  std::lock_guard<std::mutex> lock(lock_);
  return data_;
}

V2_0::TemperatureType ToHidl(TemperatureType type) {
  const bool known = type >= TemperatureType::CPU && type <= TemperatureType::NPU;
  return known ? static_cast<V2_0::TemperatureType>(type) : V2_0::TemperatureType::UNKNOWN;
}

V2_0::Temperature ToHidl(const Temperature& temperature) {
  return {.type = ToHidl(temperature.type),
          .name = temperature.name,
          .value = temperature.value,
          .throttlingStatus = static_cast<V2_0::ThrottlingSeverity>(temperature.throttlingStatus)};
}

V2_0::TemperatureThreshold ToHidl(const TemperatureThreshold& threshold) {
  V2_0::TemperatureThreshold hidl{};
  hidl.type = ToHidl(threshold.type);
  hidl.name = threshold.name;
  Copy(threshold.hotThrottlingThresholds, hidl.hotThrottlingThresholds);
  Copy(threshold.coldThrottlingThresholds, hidl.coldThrottlingThresholds);
  hidl.vrThrottlingThreshold = std::numeric_limits<float>::quiet_NaN();
  return hidl;
}

V2_0::CoolingDevice ToHidl(const CoolingDevice& device) {
  const bool known = device.type >= CoolingType::FAN && device.type <= CoolingType::COMPONENT;
  return {
      .type = known ? static_cast<V2_0::CoolingType>(device.type) : V2_0::CoolingType::COMPONENT,
      .name = device.name,
      .value = static_cast<uint64_t>(device.value)};
}

}  // namespace norvik::qel::services
