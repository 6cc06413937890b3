// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: a record of the thermal interface.
#pragma once

#include <aidl/android/hardware/thermal/TemperatureType.h>

#include <compare>
#include <cstdint>
#include <string>
#include <vector>

namespace aidl::android::hardware::thermal {

class TemperatureThreshold {
 public:
  static inline const char* descriptor = "android.hardware.thermal.TemperatureThreshold";

  TemperatureType type = static_cast<TemperatureType>(0);
  std::string name = {};
  // One entry per severity, NaN for none. The length is not checked.
  std::vector<float> hotThrottlingThresholds = {};
  std::vector<float> coldThrottlingThresholds = {};

  std::string toString() const;

  // NOLINTNEXTLINE(modernize-use-nullptr): clang-tidy 14 takes the default for a literal 0
  std::partial_ordering operator<=>(const TemperatureThreshold& other) const = default;
};

}  // namespace aidl::android::hardware::thermal
