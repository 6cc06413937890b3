// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: a record of the health interface.
#pragma once

#include <aidl/android/hardware/health/BatteryPartStatus.h>

#include <compare>
#include <cstdint>
#include <optional>
#include <string>

namespace aidl::android::hardware::health {

class BatteryHealthData {
 public:
  static inline const char* descriptor = "android.hardware.health.BatteryHealthData";
  int64_t batteryManufacturingDateSeconds = 0;
  int64_t batteryFirstUsageSeconds = 0;
  int64_t batteryStateOfHealth = 0;
  std::optional<std::string> batterySerialNumber = {};
  BatteryPartStatus batteryPartStatus = BatteryPartStatus::UNSUPPORTED;

  std::string toString() const;

  // NOLINTNEXTLINE(modernize-use-nullptr): clang-tidy 14 takes the default for a literal 0
  std::partial_ordering operator<=>(const BatteryHealthData& other) const = default;
};

}  // namespace aidl::android::hardware::health
