// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Maps the kernel's zones and cooling devices to the types of the thermal service.
#pragma once

#include <aidl/android/hardware/thermal/CoolingType.h>
#include <aidl/android/hardware/thermal/TemperatureType.h>

#include <string>
#include <utility>
#include <vector>

namespace norvik::qel::linux_machine {

// The kernel's `type` of a zone or a cooling device is a name chosen by its driver. Two built-in
// tables of patterns cover the common names. The first match counts; case is ignored. A file can
// add patterns, which are tried first. It consists of lines like
//
//   # How this machine names things.
//   temperature SKIN acpitz
//   cooling FAN dell-smm-fan*
//
// The rest of the line is the pattern, with the wildcards *, ? and [...]. It may contain spaces.
//
// Threads: one at a time.
class ThermalTypes {
 public:
  using CoolingType = aidl::android::hardware::thermal::CoolingType;
  using TemperatureType = aidl::android::hardware::thermal::TemperatureType;

  // Loads the patterns of a file. Returns its errors, one per wrong line ("types.txt:3: ..."). A
  // file with an error changes nothing.
  [[nodiscard]] std::vector<std::string> Load(const std::string& path);

  // UNKNOWN if no pattern matches.
  TemperatureType TypeOfZone(const std::string& type) const;
  // COMPONENT if no pattern matches.
  CoolingType TypeOfCoolingDevice(const std::string& type) const;

 private:
  template <typename Type>
  using Patterns = std::vector<std::pair<std::string, Type>>;

  // Returns an error message, empty on success.
  [[nodiscard]] std::string AddLine(const std::string& line);

  Patterns<TemperatureType> zones_;
  Patterns<CoolingType> cooling_devices_;
};

}  // namespace norvik::qel::linux_machine
