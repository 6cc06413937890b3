// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// ThermalInfo's queries: battery charge limits, and temperatures in bulk.
#define LOG_TAG "audio_hw_thermal"

#include <log/log.h>

#include <algorithm>
#include <utility>

#include "thermal/temperature_name.h"
#include "thermal/thermal_info.h"

namespace norvik::qel::audio {

namespace {

using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hardware::thermal::V1_0::ThermalStatus;
using ::android::hardware::thermal::V1_0::ThermalStatusCode;

constexpr int kBatteryChargeLimitCapacity = 16;
// Part of the names of the limits that concern audio.
constexpr std::string_view kAudio = "AUDIO";

}  // namespace

int ThermalInfo::GetBatteryChargeLimitCapacity() const {
  return kBatteryChargeLimitCapacity;
}

std::vector<int> ThermalInfo::GetBatteryChargeLimitCurrent(bool use_cached) {
  if (!use_cached) GetCurrentBCLFromThermalService();
  return FilterBCLData(TemperatureType::BCL_CURRENT);
}

std::vector<int> ThermalInfo::GetBatteryChargeLimitVoltage(bool use_cached) {
  if (!use_cached) GetCurrentBCLFromThermalService();
  return FilterBCLData(TemperatureType::BCL_VOLTAGE);
}

std::vector<int> ThermalInfo::FilterBCLData(const TemperatureType& type) {
  std::vector<int> severities;
  std::lock_guard<std::mutex> lock(lock_);
  severities.reserve(bcl_temperatures_.size());
  for (const Temperature& temperature : bcl_temperatures_) {
    if (temperature.type == type) {
      severities.push_back(static_cast<int>(temperature.throttlingStatus));
    }
  }
  return severities;
}

void ThermalInfo::GetCurrentBCLFromThermalService() {
  std::lock_guard<std::mutex> lock(lock_);
  if (!GetThermalService()) {
    ALOGW("%s: unable to get a thermal client.", __func__);
    return;
  }
  bcl_temperatures_.clear();
  std::vector<Temperature> limits;
  limits.reserve(kBatteryChargeLimitCapacity);
  const auto keep = [&limits](const ThermalStatus& status,
                              const hidl_vec<Temperature>& temperatures) {
    if (status.code != ThermalStatusCode::SUCCESS) return;
    for (const Temperature& temperature : temperatures) {
      if (NameOf(temperature).find(kAudio) != std::string_view::npos) {
        limits.push_back(temperature);
      }
    }
  };
  // Both or none: half of the limits would look like all of them.
  if (thermal_->getCurrentTemperatures(/*filterType=*/true, TemperatureType::BCL_VOLTAGE, keep)
          .isOk() &&
      thermal_->getCurrentTemperatures(/*filterType=*/true, TemperatureType::BCL_CURRENT, keep)
          .isOk()) {
    bcl_temperatures_ = std::move(limits);
  } else {
    ALOGW("%s: Transaction failed.", __func__);
  }
}

std::optional<std::vector<ThermalInfo::Temperature>> ThermalInfo::GetBulkTemperatureByNames(
    const std::vector<std::string_view>& names) {
  std::lock_guard<std::mutex> lock(lock_);
  if (names.empty()) return std::nullopt;
  std::vector<std::string_view> wanted = names;
  std::sort(wanted.begin(), wanted.end());
  wanted.erase(std::unique(wanted.begin(), wanted.end()), wanted.end());
  std::vector<Temperature> found;
  found.reserve(wanted.size());
  if (!GetThermalService()) return found;
  const Return<void> answered = thermal_->getCurrentTemperatures(
      /*filterType=*/false, TemperatureType::UNKNOWN,
      [&](const ThermalStatus& status, const hidl_vec<Temperature>& temperatures) {
        if (status.code != ThermalStatusCode::SUCCESS) return;
        // As C strings: up to the first NUL.
        std::vector<std::string_view> reported;
        reported.reserve(temperatures.size());
        for (const Temperature& temperature : temperatures) {
          reported.emplace_back(temperature.name.c_str());
        }
        for (const std::string_view name : wanted) {
          const auto first = std::find(reported.begin(), reported.end(), name);
          if (first == reported.end()) continue;
          found.push_back(temperatures[static_cast<size_t>(first - reported.begin())]);
        }
      });
  if (!answered.isOk()) {
    ALOGW("%s: Transaction failed.", __func__);
  }
  return found;
}

}  // namespace norvik::qel::audio
