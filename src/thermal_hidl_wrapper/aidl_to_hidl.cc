// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "thermal_hidl_wrapper/aidl_to_hidl.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace aidl::android::hardware::thermal {

namespace {

namespace V2_0 = ::android::hardware::thermal::V2_0;

constexpr float kNotAvailable = std::numeric_limits<float>::quiet_NaN();

// Compared as unsigned, so that negative values are out of range, too.
template <typename Hidl, typename Aidl>
Hidl ToHidlType(Aidl type, Hidl last, Hidl otherwise) {
  const auto value = static_cast<uint32_t>(type);
  return value <= static_cast<uint32_t>(last) ? static_cast<Hidl>(value) : otherwise;
}

V2_0::TemperatureType ToHidlType(TemperatureType type) {
  return ToHidlType(type, V2_0::TemperatureType::NPU, V2_0::TemperatureType::UNKNOWN);
}

// The interface asks for one entry per severity, and nothing enforces it. Missing entries become
// NaN, the interface's value for "not available".
void CopyThresholds(const std::vector<float>& from, ::android::hardware::hidl_array<float, 7>& to) {
  for (size_t i = 0; i < to.size(); ++i) to[i] = i < from.size() ? from[i] : kNotAvailable;
}

}  // namespace

V2_0::Temperature ToHidl(const Temperature& temperature) {
  V2_0::Temperature hidl = {};
  hidl.type = ToHidlType(temperature.type);
  hidl.name.setToExternal(temperature.name.c_str(), temperature.name.size());
  hidl.value = temperature.value;
  hidl.throttlingStatus = static_cast<V2_0::ThrottlingSeverity>(temperature.throttlingStatus);
  return hidl;
}

V2_0::TemperatureThreshold ToHidl(const TemperatureThreshold& threshold) {
  V2_0::TemperatureThreshold hidl = {};
  hidl.type = ToHidlType(threshold.type);
  hidl.name.setToExternal(threshold.name.c_str(), threshold.name.size());
  CopyThresholds(threshold.hotThrottlingThresholds, hidl.hotThrottlingThresholds);
  CopyThresholds(threshold.coldThrottlingThresholds, hidl.coldThrottlingThresholds);
  hidl.vrThrottlingThreshold = kNotAvailable;
  return hidl;
}

V2_0::CoolingDevice ToHidl(const CoolingDevice& device) {
  V2_0::CoolingDevice hidl = {};
  hidl.type = ToHidlType(device.type, V2_0::CoolingType::COMPONENT, V2_0::CoolingType::COMPONENT);
  hidl.name.setToExternal(device.name.c_str(), device.name.size());
  hidl.value = static_cast<uint64_t>(device.value);
  return hidl;
}

}  // namespace aidl::android::hardware::thermal
