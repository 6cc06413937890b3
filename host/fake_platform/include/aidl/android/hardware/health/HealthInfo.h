// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: a record of the health interface.
#pragma once

#include <aidl/android/hardware/health/BatteryCapacityLevel.h>
#include <aidl/android/hardware/health/BatteryChargingPolicy.h>
#include <aidl/android/hardware/health/BatteryChargingState.h>
#include <aidl/android/hardware/health/BatteryHealth.h>
#include <aidl/android/hardware/health/BatteryHealthData.h>
#include <aidl/android/hardware/health/BatteryStatus.h>
#include <aidl/android/hardware/health/DiskStats.h>
#include <aidl/android/hardware/health/StorageInfo.h>

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace aidl::android::hardware::health {

class HealthInfo {
 public:
  static inline const char* descriptor = "android.hardware.health.HealthInfo";
  static constexpr int32_t BATTERY_CHARGE_TIME_TO_FULL_NOW_SECONDS_UNSUPPORTED = -1;

  bool chargerAcOnline = false;
  bool chargerUsbOnline = false;
  bool chargerWirelessOnline = false;
  bool chargerDockOnline = false;
  int32_t maxChargingCurrentMicroamps = 0;
  int32_t maxChargingVoltageMicrovolts = 0;
  BatteryStatus batteryStatus = static_cast<BatteryStatus>(0);
  BatteryHealth batteryHealth = static_cast<BatteryHealth>(0);
  bool batteryPresent = false;
  int32_t batteryLevel = 0;
  int32_t batteryVoltageMillivolts = 0;
  int32_t batteryTemperatureTenthsCelsius = 0;
  int32_t batteryCurrentMicroamps = 0;
  int32_t batteryCycleCount = 0;
  int32_t batteryFullChargeUah = 0;
  int32_t batteryChargeCounterUah = 0;
  std::string batteryTechnology = {};
  int32_t batteryCurrentAverageMicroamps = 0;
  std::vector<DiskStats> diskStats = {};
  std::vector<StorageInfo> storageInfos = {};
  BatteryCapacityLevel batteryCapacityLevel = static_cast<BatteryCapacityLevel>(0);
  int64_t batteryChargeTimeToFullNowSeconds = 0;
  int32_t batteryFullChargeDesignCapacityUah = 0;
  BatteryChargingState chargingState = static_cast<BatteryChargingState>(0);
  BatteryChargingPolicy chargingPolicy = static_cast<BatteryChargingPolicy>(0);
  std::optional<BatteryHealthData> batteryHealthData = {};

  std::string toString() const;

  // NOLINTNEXTLINE(modernize-use-nullptr): clang-tidy 14 takes the default for a literal 0
  std::partial_ordering operator<=>(const HealthInfo& other) const = default;
};

}  // namespace aidl::android::hardware::health
