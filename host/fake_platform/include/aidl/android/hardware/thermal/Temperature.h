// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: a record of the thermal interface.
#pragma once

#include <aidl/android/hardware/thermal/TemperatureType.h>
#include <aidl/android/hardware/thermal/ThrottlingSeverity.h>

#include <compare>
#include <cstdint>
#include <string>

namespace aidl::android::hardware::thermal {

class Temperature {
 public:
  static inline const char* descriptor = "android.hardware.thermal.Temperature";

  TemperatureType type = static_cast<TemperatureType>(0);
  std::string name = {};
  float value = 0;
  ThrottlingSeverity throttlingStatus = static_cast<ThrottlingSeverity>(0);

  std::string toString() const;

  // NOLINTNEXTLINE(modernize-use-nullptr): clang-tidy 14 takes the default for a literal 0
  std::partial_ordering operator<=>(const Temperature& other) const = default;
};

}  // namespace aidl::android::hardware::thermal
