// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: a record of the thermal interface.
#pragma once

#include <aidl/android/hardware/thermal/TemperatureType.h>
#include <aidl/android/hardware/thermal/ThrottlingSeverity.h>

#include <cstdint>
#include <string>
#include <tuple>

namespace aidl::android::hardware::thermal {

class Temperature {
 public:
  static const char* descriptor;

  TemperatureType type = static_cast<TemperatureType>(0);
  std::string name = {};
  float value = 0;
  ThrottlingSeverity throttlingStatus = static_cast<ThrottlingSeverity>(0);

  std::string toString() const;

 private:
  auto Tie() const { return std::tie(type, name, value, throttlingStatus); }

 public:
  bool operator!=(const Temperature& other) const { return Tie() != other.Tie(); }
  bool operator<(const Temperature& other) const { return Tie() < other.Tie(); }
  bool operator<=(const Temperature& other) const { return Tie() <= other.Tie(); }
  bool operator==(const Temperature& other) const { return Tie() == other.Tie(); }
  bool operator>(const Temperature& other) const { return Tie() > other.Tie(); }
  bool operator>=(const Temperature& other) const { return Tie() >= other.Tie(); }
};

}  // namespace aidl::android::hardware::thermal
