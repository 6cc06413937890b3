// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The records and enums of the health interface as text.
#include <aidl/android/hardware/health/HealthInfo.h>

#include <string>

#include "record_text.h"

namespace aidl::android::hardware::health {

using norvik::qel::fake::EnumText;
using norvik::qel::fake::RecordText;

std::string toString(BatteryStatus value) {
  return EnumText(value, {"UNKNOWN", "CHARGING", "DISCHARGING", "NOT_CHARGING", "FULL"});
}

std::string toString(BatteryHealth value) {
  return EnumText(value, {"UNKNOWN", "GOOD", "OVERHEAT", "DEAD", "OVER_VOLTAGE",
                          "UNSPECIFIED_FAILURE", "COLD", "FAIR", "NOT_AVAILABLE", "INCONSISTENT"});
}

std::string toString(BatteryCapacityLevel value) {
  return EnumText(value, {"UNSUPPORTED", "UNKNOWN", "CRITICAL", "LOW", "NORMAL", "HIGH", "FULL"});
}

std::string toString(BatteryChargingState value) {
  return EnumText(value, {"INVALID", "NORMAL", "TOO_COLD", "TOO_HOT", "LONG_LIFE", "ADAPTIVE"});
}

std::string toString(BatteryChargingPolicy value) {
  return EnumText(value, {"INVALID", "DEFAULT", "LONG_LIFE", "ADAPTIVE"});
}

std::string toString(BatteryPartStatus value) {
  return EnumText(value, {"UNSUPPORTED", "ORIGINAL", "REPLACED"});
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
