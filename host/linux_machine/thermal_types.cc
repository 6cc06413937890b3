// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "thermal_types.h"

#include <android/binder_enums.h>
#include <errno.h>
#include <fnmatch.h>
#include <locale.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string_view>
#include <system_error>

#include "device_files.h"

namespace norvik::qel::linux_machine {

using aidl::android::hardware::thermal::CoolingType;
using aidl::android::hardware::thermal::TemperatureType;

namespace {

template <typename Type>
struct Pattern {
  const char* pattern;
  Type type;
};

// Each group names its source: the document or driver of the kernel that defines the names. Names
// that do not identify what is measured are left out: "acpitz" may be anywhere on the board, and
// "nvme" has no type.
constexpr Pattern<TemperatureType> kZones[] = {
    // drivers/thermal/intel/x86_pkg_temp_thermal.c
    {"x86_pkg_temp", TemperatureType::CPU},
    // Documentation/hwmon/coretemp.rst, k10temp.rst, k8temp.rst, via-cputemp in drivers/hwmon
    {"coretemp*", TemperatureType::CPU},
    {"k10temp*", TemperatureType::CPU},
    {"k8temp*", TemperatureType::CPU},
    {"via_cputemp*", TemperatureType::CPU},
    // Documentation/driver-api/thermal/intel_dptf.rst: the participants' ACPI names
    {"TCPU*", TemperatureType::CPU},
    {"B0D4", TemperatureType::CPU},
    {"TSKN*", TemperatureType::SKIN},
    // Documentation/gpu/amdgpu/thermal.rst, drivers/gpu/drm/radeon, nouveau, i915, xe
    {"amdgpu:*", TemperatureType::GPU},
    {"radeon:*", TemperatureType::GPU},
    {"nouveau:*", TemperatureType::GPU},
    {"i915:*", TemperatureType::GPU},
    {"xe:*", TemperatureType::GPU},
    // drivers/net/wireless/intel/iwlwifi/mvm/tt.c, ath/ath10k/thermal.c (11k, 12k), mediatek/mt76
    {"iwlwifi*", TemperatureType::WIFI},
    {"ath1[012]k_hwmon:*", TemperatureType::WIFI},
    {"mt7[0-9]*_phy*", TemperatureType::WIFI},
    // drivers/power/supply/power_supply_core.c and power_supply_hwmon.c: the supply's name
    {"bat", TemperatureType::BATTERY},
    {"bat[-_0-9]*", TemperatureType::BATTERY},
    {"battery*", TemperatureType::BATTERY},
    {"bq27*", TemperatureType::BATTERY},
    {"max170*_battery*", TemperatureType::BATTERY},
    {"qcom[-_]battmgr[-_]bat*", TemperatureType::BATTERY},
    // temp*_label in Documentation/ABI/testing/sysfs-class-hwmon: what the sensor measures
    {"*:CPU*", TemperatureType::CPU},
    {"*:GPU*", TemperatureType::GPU},
    {"*:Battery*", TemperatureType::BATTERY},
    {"*:Ambient*", TemperatureType::AMBIENT},
    // Names of zones in arch/arm/boot/dts and arch/arm64/boot/dts, whose form is
    // Documentation/devicetree/bindings/thermal/thermal-zones.yaml
    {"cpu*", TemperatureType::CPU},
    {"gpu*", TemperatureType::GPU},
    {"npu*", TemperatureType::NPU},
    {"soc", TemperatureType::SOC},
    {"soc[-_0-9]*", TemperatureType::SOC},
    {"skin*", TemperatureType::SKIN},
    {"modem*", TemperatureType::MODEM},
    {"mdm*", TemperatureType::MODEM},
    {"pa[-_]therm*", TemperatureType::POWER_AMPLIFIER},
    {"camera*", TemperatureType::CAMERA},
    {"cam[-_]therm*", TemperatureType::CAMERA},
    {"display*", TemperatureType::DISPLAY},
    {"lcd*", TemperatureType::DISPLAY},
    {"usb[-_]port*", TemperatureType::USB_PORT},
    {"usb[-_]therm*", TemperatureType::USB_PORT},
    {"usb[-_]conn*", TemperatureType::USB_PORT},
    {"usbc[-_]*", TemperatureType::USB_PORT},
    {"wifi*", TemperatureType::WIFI},
    {"wlan*", TemperatureType::WIFI},
    {"flashlight*", TemperatureType::FLASHLIGHT},
    {"speaker*", TemperatureType::SPEAKER},
    {"spk[-_]*", TemperatureType::SPEAKER},
    {"ambient*", TemperatureType::AMBIENT},
    // Names of the thermal interface's types
    {"tpu*", TemperatureType::TPU},
    {"pogo*", TemperatureType::POGO},
};

constexpr Pattern<CoolingType> kCoolingDevices[] = {
    {"Processor", CoolingType::CPU},
    {"intel_powerclamp", CoolingType::CPU},
    {"TCC Offset", CoolingType::CPU},
    {"cpu*", CoolingType::CPU},
    {"thermal-cpu*", CoolingType::CPU},
    {"thermal-idle-*", CoolingType::CPU},
    {"idle-cpu*", CoolingType::CPU},
    {"*fan*", CoolingType::FAN},
    {"gpu*", CoolingType::GPU},
    {"LCD", CoolingType::DISPLAY},
    {"*backlight*", CoolingType::DISPLAY},
    {"battery*", CoolingType::BATTERY},
    {"bat[-_0-9]*", CoolingType::BATTERY},
    {"iwlwifi*", CoolingType::WIFI},
    {"wifi*", CoolingType::WIFI},
    {"wlan*", CoolingType::WIFI},
    {"ath1*", CoolingType::WIFI},
    {"modem*", CoolingType::MODEM},
    {"mdm*", CoolingType::MODEM},
    {"npu*", CoolingType::NPU},
    {"tpu*", CoolingType::TPU},
    {"camera*", CoolingType::CAMERA},
    {"flashlight*", CoolingType::FLASHLIGHT},
    {"speaker*", CoolingType::SPEAKER},
};

// Uses the C locale: in Turkish, the lower case of I is not i.
bool Fits(const std::string& type, const char* pattern) {
  static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);  // leaked on purpose
  const locale_t own = uselocale(plain);
  const bool fits = fnmatch(pattern, type.c_str(), FNM_CASEFOLD) == 0;
  uselocale(own);
  return fits;
}

template <typename Own, typename Usual, typename Type>
Type TypeOf(const std::string& name, const Own& own, const Usual& usual, Type none) {
  for (const auto& [pattern, type] : own) {
    if (Fits(name, pattern.c_str())) return type;
  }
  for (const auto& [pattern, type] : usual) {
    if (Fits(name, pattern)) return type;
  }
  return none;
}

template <typename Type>
std::optional<Type> ByName(std::string_view name) {
  const auto values = ndk::enum_range<Type>();
  const auto found =
      std::find_if(values.begin(), values.end(), [&](Type type) { return toString(type) == name; });
  return found != values.end() ? std::optional(*found) : std::nullopt;
}

// A zone measures degrees; the BCL types are not temperatures.
bool IsTemperature(TemperatureType type) {
  return type != TemperatureType::BCL_VOLTAGE && type != TemperatureType::BCL_CURRENT &&
         type != TemperatureType::BCL_PERCENTAGE;
}

constexpr std::string_view kSpaces = " \t\r";

std::string_view Trimmed(std::string_view text) {
  const size_t first = text.find_first_not_of(kSpaces);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kSpaces) - first + 1);
}

// Removes the first word from the text and returns it.
std::string_view TakeWord(std::string_view* text) {
  const std::string_view word = text->substr(0, text->find_first_of(kSpaces));
  *text = Trimmed(text->substr(word.size()));
  return word;
}

}  // namespace

std::vector<std::string> ThermalTypes::Load(const std::string& path) {
  std::ifstream file(path);
  if (!file) return {path + ": " + ErrorText(errno)};
  // A directory can be opened; with libc++ it then looks like an empty file.
  std::error_code unknown;
  if (std::filesystem::is_directory(path, unknown)) return {path + ": " + ErrorText(EISDIR)};
  std::vector<std::string> errors;
  ThermalTypes loaded;
  std::string line;
  for (int number = 1; std::getline(file, line); ++number) {
    const std::string error = loaded.AddLine(line);
    if (error.empty()) continue;
    errors.push_back(path);
    errors.back().append(":").append(std::to_string(number)).append(": ").append(error);
  }
  if (file.bad()) errors.push_back(path + ": cannot be read");
  if (errors.empty()) *this = std::move(loaded);
  return errors;
}

ThermalTypes::TemperatureType ThermalTypes::TypeOfZone(const std::string& type) const {
  return TypeOf(type, zones_, kZones, TemperatureType::UNKNOWN);
}

ThermalTypes::CoolingType ThermalTypes::TypeOfCoolingDevice(const std::string& type) const {
  return TypeOf(type, cooling_devices_, kCoolingDevices, CoolingType::COMPONENT);
}

std::string ThermalTypes::AddLine(const std::string& line) {
  std::string_view rest = Trimmed(line);
  if (rest.empty() || rest.front() == '#') return {};
  const std::string_view kind = TakeWord(&rest);
  const std::string_view type = TakeWord(&rest);
  if (kind != "temperature" && kind != "cooling") {
    return "unknown keyword " + Quoted(kind) + ", use \"temperature\" or \"cooling\"";
  }
  if (kind == "temperature") {
    const auto known = ByName<TemperatureType>(type);
    if (!known || !IsTemperature(*known)) return Quoted(type) + " is not a temperature type";
    zones_.emplace_back(rest, *known);
  } else {
    const auto known = ByName<CoolingType>(type);
    if (!known) return Quoted(type) + " is not a cooling device type";
    cooling_devices_.emplace_back(rest, *known);
  }
  if (rest.empty()) return "the pattern is missing";
  return IsPrintable(rest) ? "" : Quoted(rest) + " has unprintable characters";
}

}  // namespace norvik::qel::linux_machine
