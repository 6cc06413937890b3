// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The records and enums of the health interface as text.
#include <aidl/android/hardware/health/HealthInfo.h>

#include <string>

#include "record_text.h"

namespace aidl::android::hardware::health {

using norvik::qel::fake::RecordText;

std::string toString(BatteryStatus value) {
  switch (value) {
    case BatteryStatus::UNKNOWN:
      return "UNKNOWN";
    case BatteryStatus::CHARGING:
      return "CHARGING";
    case BatteryStatus::DISCHARGING:
      return "DISCHARGING";
    case BatteryStatus::NOT_CHARGING:
      return "NOT_CHARGING";
    case BatteryStatus::FULL:
      return "FULL";
  }
  return std::to_string(static_cast<int32_t>(value));
}

std::string toString(BatteryHealth value) {
  switch (value) {
    case BatteryHealth::UNKNOWN:
      return "UNKNOWN";
    case BatteryHealth::GOOD:
      return "GOOD";
    case BatteryHealth::OVERHEAT:
      return "OVERHEAT";
    case BatteryHealth::DEAD:
      return "DEAD";
    case BatteryHealth::OVER_VOLTAGE:
      return "OVER_VOLTAGE";
    case BatteryHealth::UNSPECIFIED_FAILURE:
      return "UNSPECIFIED_FAILURE";
    case BatteryHealth::COLD:
      return "COLD";
    case BatteryHealth::FAIR:
      return "FAIR";
    case BatteryHealth::NOT_AVAILABLE:
      return "NOT_AVAILABLE";
    case BatteryHealth::INCONSISTENT:
      return "INCONSISTENT";
  }
  return std::to_string(static_cast<int32_t>(value));
}

std::string toString(BatteryCapacityLevel value) {
  switch (value) {
    case BatteryCapacityLevel::UNSUPPORTED:
      return "UNSUPPORTED";
    case BatteryCapacityLevel::UNKNOWN:
      return "UNKNOWN";
    case BatteryCapacityLevel::CRITICAL:
      return "CRITICAL";
    case BatteryCapacityLevel::LOW:
      return "LOW";
    case BatteryCapacityLevel::NORMAL:
      return "NORMAL";
    case BatteryCapacityLevel::HIGH:
      return "HIGH";
    case BatteryCapacityLevel::FULL:
      return "FULL";
  }
  return std::to_string(static_cast<int32_t>(value));
}

std::string toString(BatteryChargingState value) {
  switch (value) {
    case BatteryChargingState::INVALID:
      return "INVALID";
    case BatteryChargingState::NORMAL:
      return "NORMAL";
    case BatteryChargingState::TOO_COLD:
      return "TOO_COLD";
    case BatteryChargingState::TOO_HOT:
      return "TOO_HOT";
    case BatteryChargingState::LONG_LIFE:
      return "LONG_LIFE";
    case BatteryChargingState::ADAPTIVE:
      return "ADAPTIVE";
  }
  return std::to_string(static_cast<int32_t>(value));
}

std::string toString(BatteryChargingPolicy value) {
  switch (value) {
    case BatteryChargingPolicy::INVALID:
      return "INVALID";
    case BatteryChargingPolicy::DEFAULT:
      return "DEFAULT";
    case BatteryChargingPolicy::LONG_LIFE:
      return "LONG_LIFE";
    case BatteryChargingPolicy::ADAPTIVE:
      return "ADAPTIVE";
  }
  return std::to_string(static_cast<int32_t>(value));
}

std::string toString(BatteryPartStatus value) {
  switch (value) {
    case BatteryPartStatus::UNSUPPORTED:
      return "UNSUPPORTED";
    case BatteryPartStatus::ORIGINAL:
      return "ORIGINAL";
    case BatteryPartStatus::REPLACED:
      return "REPLACED";
  }
  return std::to_string(static_cast<int32_t>(value));
}

const char* DiskStats::descriptor = "android.hardware.health.DiskStats";

std::string DiskStats::toString() const {
  return RecordText("DiskStats")
      .Add("reads", reads)
      .Add("readMerges", readMerges)
      .Add("readSectors", readSectors)
      .Add("readTicks", readTicks)
      .Add("writes", writes)
      .Add("writeMerges", writeMerges)
      .Add("writeSectors", writeSectors)
      .Add("writeTicks", writeTicks)
      .Add("ioInFlight", ioInFlight)
      .Add("ioTicks", ioTicks)
      .Add("ioInQueue", ioInQueue)
      .End();
}

const char* StorageInfo::descriptor = "android.hardware.health.StorageInfo";

std::string StorageInfo::toString() const {
  return RecordText("StorageInfo")
      .Add("eol", eol)
      .Add("lifetimeA", lifetimeA)
      .Add("lifetimeB", lifetimeB)
      .Add("version", version)
      .End();
}

const char* BatteryHealthData::descriptor = "android.hardware.health.BatteryHealthData";

std::string BatteryHealthData::toString() const {
  return RecordText("BatteryHealthData")
      .Add("batteryManufacturingDateSeconds", batteryManufacturingDateSeconds)
      .Add("batteryFirstUsageSeconds", batteryFirstUsageSeconds)
      .Add("batteryStateOfHealth", batteryStateOfHealth)
      .Add("batterySerialNumber", batterySerialNumber)
      .Add("batteryPartStatus", batteryPartStatus)
      .End();
}

const char* HealthInfo::descriptor = "android.hardware.health.HealthInfo";

std::string HealthInfo::toString() const {
  return RecordText("HealthInfo")
      .Add("chargerAcOnline", chargerAcOnline)
      .Add("chargerUsbOnline", chargerUsbOnline)
      .Add("chargerWirelessOnline", chargerWirelessOnline)
      .Add("chargerDockOnline", chargerDockOnline)
      .Add("maxChargingCurrentMicroamps", maxChargingCurrentMicroamps)
      .Add("maxChargingVoltageMicrovolts", maxChargingVoltageMicrovolts)
      .Add("batteryStatus", batteryStatus)
      .Add("batteryHealth", batteryHealth)
      .Add("batteryPresent", batteryPresent)
      .Add("batteryLevel", batteryLevel)
      .Add("batteryVoltageMillivolts", batteryVoltageMillivolts)
      .Add("batteryTemperatureTenthsCelsius", batteryTemperatureTenthsCelsius)
      .Add("batteryCurrentMicroamps", batteryCurrentMicroamps)
      .Add("batteryCycleCount", batteryCycleCount)
      .Add("batteryFullChargeUah", batteryFullChargeUah)
      .Add("batteryChargeCounterUah", batteryChargeCounterUah)
      .Add("batteryTechnology", batteryTechnology)
      .Add("batteryCurrentAverageMicroamps", batteryCurrentAverageMicroamps)
      .Add("diskStats", diskStats)
      .Add("storageInfos", storageInfos)
      .Add("batteryCapacityLevel", batteryCapacityLevel)
      .Add("batteryChargeTimeToFullNowSeconds", batteryChargeTimeToFullNowSeconds)
      .Add("batteryFullChargeDesignCapacityUah", batteryFullChargeDesignCapacityUah)
      .Add("chargingState", chargingState)
      .Add("chargingPolicy", chargingPolicy)
      .Add("batteryHealthData", batteryHealthData)
      .End();
}

}  // namespace aidl::android::hardware::health
