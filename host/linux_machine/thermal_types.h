// What the kernel's zones and cooling devices are, in the types of the thermal service.
#pragma once

#include <aidl/android/hardware/thermal/CoolingType.h>
#include <aidl/android/hardware/thermal/TemperatureType.h>

#include <string>
#include <utility>
#include <vector>

namespace norvik::qel::linux_machine {

// The kernel's `type` of a zone or a cooling device is a name that its driver has chosen. What the
// usual ones are is in two tables of patterns, the first that fits counts; capitals make no
// difference. A machine's owner can put patterns before them, with a file of lines
//
//   # How this machine names things.
//   temperature SKIN acpitz
//   cooling FAN dell-smm-fan*
//
// The pattern, with the wildcards *, ? and [...], is the rest of the line and may have spaces.
//
// Threads: one at a time.
class ThermalTypes {
 public:
  using CoolingType = aidl::android::hardware::thermal::CoolingType;
  using TemperatureType = aidl::android::hardware::thermal::TemperatureType;

  // Takes the patterns of a file. What is wrong with it, line by line ("types.txt:3: ..."): a file
  // with an error changes nothing.
  [[nodiscard]] std::vector<std::string> Load(const std::string& path);

  // UNKNOWN when no pattern fits.
  TemperatureType TypeOfZone(const std::string& type) const;
  // COMPONENT when no pattern fits.
  CoolingType TypeOfCoolingDevice(const std::string& type) const;

 private:
  template <typename Type>
  using Patterns = std::vector<std::pair<std::string, Type>>;

  // An error; empty when there is none.
  [[nodiscard]] std::string AddLine(const std::string& line);

  Patterns<TemperatureType> zones_;
  Patterns<CoolingType> cooling_devices_;
};

}  // namespace norvik::qel::linux_machine
