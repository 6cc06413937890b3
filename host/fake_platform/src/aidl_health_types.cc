// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The records of the health interface as text.
#include <aidl/android/hardware/health/HealthInfo.h>

#include <string>

#include "record_text.h"

namespace aidl::android::hardware::health {

using norvik::qel::fake::RecordText;

std::string DiskStats::toString() const {
  return RecordText("DiskStats", QUORVEL_FAKE_FIELDS(reads, readMerges, readSectors, readTicks,
                                                     writes, writeMerges, writeSectors, writeTicks,
                                                     ioInFlight, ioTicks, ioInQueue));
}

std::string StorageInfo::toString() const {
  return RecordText("StorageInfo", QUORVEL_FAKE_FIELDS(eol, lifetimeA, lifetimeB, version));
}

std::string BatteryHealthData::toString() const {
  return RecordText(
      "BatteryHealthData",
      QUORVEL_FAKE_FIELDS(batteryManufacturingDateSeconds, batteryFirstUsageSeconds,
                          batteryStateOfHealth, batterySerialNumber, batteryPartStatus));
}

std::string HealthInfo::toString() const {
  return RecordText(
      "HealthInfo",
      QUORVEL_FAKE_FIELDS(
          chargerAcOnline, chargerUsbOnline, chargerWirelessOnline, chargerDockOnline,
          maxChargingCurrentMicroamps, maxChargingVoltageMicrovolts, batteryStatus, batteryHealth,
          batteryPresent, batteryLevel, batteryVoltageMillivolts, batteryTemperatureTenthsCelsius,
          batteryCurrentMicroamps, batteryCycleCount, batteryFullChargeUah, batteryChargeCounterUah,
          batteryTechnology, batteryCurrentAverageMicroamps, diskStats, storageInfos,
          batteryCapacityLevel, batteryChargeTimeToFullNowSeconds,
          batteryFullChargeDesignCapacityUah, chargingState, chargingPolicy, batteryHealthData));
}

}  // namespace aidl::android::hardware::health
