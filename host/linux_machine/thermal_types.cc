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
#include <initializer_list>
#include <locale>
#include <optional>
#include <sstream>
#include <string_view>
#include <system_error>

#include "device_files.h"

namespace norvik::qel::linux_machine {

using aidl::android::hardware::thermal::CoolingType;
using aidl::android::hardware::thermal::TemperatureType;

namespace {

// The type of names that match one of the patterns.
template <typename Type>
struct Row {
  Type type;
  std::initializer_list<const char*> patterns;
};

// README.md names the documents and drivers of the kernel that define the names. Names that do not
// identify what is measured are left out: "acpitz" may be anywhere on the board, and "nvme" has no
// type.
constexpr Row<TemperatureType> kZones[] = {
    {TemperatureType::CPU, {"x86_pkg_temp"}},
    {TemperatureType::CPU, {"coretemp*", "k10temp*", "k8temp*", "via_cputemp*"}},
    {TemperatureType::CPU, {"TCPU*", "B0D4"}},
    {TemperatureType::SKIN, {"TSKN*"}},
    {TemperatureType::GPU, {"amdgpu:*", "radeon:*", "nouveau:*", "i915:*", "xe:*"}},
    {TemperatureType::WIFI, {"iwlwifi*", "ath1[012]k_hwmon:*", "mt7[0-9]*_phy*"}},
    {TemperatureType::BATTERY,
     {"bat", "bat[-_0-9]*", "battery*", "bq27*", "max170*_battery*", "qcom[-_]battmgr[-_]bat*"}},
    {TemperatureType::CPU, {"*:CPU*"}},
    {TemperatureType::GPU, {"*:GPU*"}},
    {TemperatureType::BATTERY, {"*:Battery*"}},
    {TemperatureType::AMBIENT, {"*:Ambient*"}},
    {TemperatureType::CPU, {"cpu*"}},
    {TemperatureType::GPU, {"gpu*"}},
    {TemperatureType::NPU, {"npu*"}},
    {TemperatureType::SOC, {"soc", "soc[-_0-9]*"}},
    {TemperatureType::SKIN, {"skin*"}},
    {TemperatureType::MODEM, {"modem*", "mdm*"}},
    {TemperatureType::POWER_AMPLIFIER, {"pa[-_]therm*"}},
    {TemperatureType::CAMERA, {"camera*", "cam[-_]therm*"}},
    {TemperatureType::DISPLAY, {"display*", "lcd*"}},
    {TemperatureType::USB_PORT, {"usb[-_]port*", "usb[-_]therm*", "usb[-_]conn*", "usbc[-_]*"}},
    {TemperatureType::WIFI, {"wifi*", "wlan*"}},
    {TemperatureType::FLASHLIGHT, {"flashlight*"}},
    {TemperatureType::SPEAKER, {"speaker*", "spk[-_]*"}},
    {TemperatureType::AMBIENT, {"ambient*"}},
    {TemperatureType::TPU, {"tpu*"}},
    {TemperatureType::POGO, {"pogo*"}},
};

constexpr Row<CoolingType> kCoolingDevices[] = {
    {CoolingType::CPU,
     {"Processor", "intel_powerclamp", "TCC Offset", "cpu*", "thermal-cpu*", "thermal-idle-*",
      "idle-cpu*"}},
    {CoolingType::FAN, {"*fan*"}},
    {CoolingType::GPU, {"gpu*"}},
    {CoolingType::DISPLAY, {"LCD", "*backlight*"}},
    {CoolingType::BATTERY, {"battery*", "bat[-_0-9]*"}},
    {CoolingType::WIFI, {"iwlwifi*", "wifi*", "wlan*", "ath1*"}},
    {CoolingType::MODEM, {"modem*", "mdm*"}},
    {CoolingType::NPU, {"npu*"}},
    {CoolingType::TPU, {"tpu*"}},
    {CoolingType::CAMERA, {"camera*"}},
    {CoolingType::FLASHLIGHT, {"flashlight*"}},
    {CoolingType::SPEAKER, {"speaker*"}},
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
  for (const auto& [type, patterns] : usual) {
    for (const char* const pattern : patterns) {
      if (Fits(name, pattern)) return type;
    }
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
  std::istringstream words(line);
  words.imbue(std::locale::classic());
  std::string kind;
  std::string type;
  std::string rest;
  words >> kind >> type >> std::ws;
  std::getline(words, rest);
  rest.erase(rest.find_last_not_of(" \t\r") + 1);
  if (kind.empty() || kind.front() == '#') return {};
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
