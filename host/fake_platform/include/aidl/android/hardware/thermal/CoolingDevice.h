// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: a record of the thermal interface.
#pragma once

#include <aidl/android/hardware/thermal/CoolingType.h>

#include <cstdint>
#include <string>
#include <tuple>

namespace aidl::android::hardware::thermal {

class CoolingDevice {
 public:
  static const char* descriptor;

  CoolingType type = static_cast<CoolingType>(0);
  std::string name = {};
  int64_t value = 0;
  // Since version 2.
  int64_t powerLimitMw = 0;
  int64_t powerMw = 0;
  int64_t timeWindowMs = 0;

  std::string toString() const;

 private:
  auto Tie() const { return std::tie(type, name, value, powerLimitMw, powerMw, timeWindowMs); }

 public:
  bool operator!=(const CoolingDevice& other) const { return Tie() != other.Tie(); }
  bool operator<(const CoolingDevice& other) const { return Tie() < other.Tie(); }
  bool operator<=(const CoolingDevice& other) const { return Tie() <= other.Tie(); }
  bool operator==(const CoolingDevice& other) const { return Tie() == other.Tie(); }
  bool operator>(const CoolingDevice& other) const { return Tie() > other.Tie(); }
  bool operator>=(const CoolingDevice& other) const { return Tie() >= other.Tie(); }
};

}  // namespace aidl::android::hardware::thermal
