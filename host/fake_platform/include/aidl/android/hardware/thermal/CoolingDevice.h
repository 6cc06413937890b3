// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: a record of the thermal interface.
#pragma once

#include <aidl/android/hardware/thermal/CoolingType.h>

#include <compare>
#include <cstdint>
#include <string>

namespace aidl::android::hardware::thermal {

class CoolingDevice {
 public:
  static inline const char* descriptor = "android.hardware.thermal.CoolingDevice";

  CoolingType type = static_cast<CoolingType>(0);
  std::string name = {};
  int64_t value = 0;
  // Since version 2.
  int64_t powerLimitMw = 0;
  int64_t powerMw = 0;
  int64_t timeWindowMs = 0;

  std::string toString() const;

  // NOLINTNEXTLINE(modernize-use-nullptr): clang-tidy 14 takes the default for a literal 0
  std::partial_ordering operator<=>(const CoolingDevice& other) const = default;
};

}  // namespace aidl::android::hardware::thermal
