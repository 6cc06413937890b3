// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "power_supplies.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string_view>
#include <utility>

namespace norvik::qel::linux_machine {

namespace {

using aidl::android::hardware::health::BatteryCapacityLevel;
using aidl::android::hardware::health::BatteryHealth;
using aidl::android::hardware::health::BatteryStatus;

constexpr int64_t kAbsoluteZeroTenthsCelsius = -2731;

constexpr Word<BatteryStatus> kStatusWords[] = {
    {"Unknown", BatteryStatus::UNKNOWN},
    {"Charging", BatteryStatus::CHARGING},
    {"Discharging", BatteryStatus::DISCHARGING},
    {"Not charging", BatteryStatus::NOT_CHARGING},
    {"Full", BatteryStatus::FULL},
};

// Words without an exact counterpart in the interface become UNKNOWN.
constexpr Word<BatteryHealth> kHealthWords[] = {
    {"Unknown", BatteryHealth::UNKNOWN},
    {"Good", BatteryHealth::GOOD},
    {"Overheat", BatteryHealth::OVERHEAT},
    {"Dead", BatteryHealth::DEAD},
    {"Over voltage", BatteryHealth::OVER_VOLTAGE},
    {"Under voltage", BatteryHealth::UNKNOWN},
    {"Unspecified failure", BatteryHealth::UNSPECIFIED_FAILURE},
    {"Cold", BatteryHealth::COLD},
    {"Watchdog timer expire", BatteryHealth::UNKNOWN},
    {"Safety timer expire", BatteryHealth::UNKNOWN},
    {"Over current", BatteryHealth::UNKNOWN},
    {"Calibration required", BatteryHealth::UNKNOWN},
    {"Warm", BatteryHealth::UNKNOWN},
    {"Cool", BatteryHealth::UNKNOWN},
    {"Hot", BatteryHealth::UNKNOWN},
    {"No battery", BatteryHealth::UNKNOWN},
    {"Blown fuse", BatteryHealth::UNKNOWN},
    {"Cell imbalance", BatteryHealth::UNKNOWN},
};

constexpr Word<BatteryCapacityLevel> kCapacityLevelWords[] = {
    {"Unknown", BatteryCapacityLevel::UNKNOWN}, {"Critical", BatteryCapacityLevel::CRITICAL},
    {"Low", BatteryCapacityLevel::LOW},         {"Normal", BatteryCapacityLevel::NORMAL},
    {"High", BatteryCapacityLevel::HIGH},       {"Full", BatteryCapacityLevel::FULL},
};

// Whether the supply powers the machine. A "Device" supply powers a peripheral.
constexpr Word<bool> kScopeWords[] = {{"System", true}, {"Unknown", true}, {"Device", false}};

using Kind = PowerSupply::Kind;
using Weight = PowerSupply::Weight;

constexpr Word<Kind> kTypeWords[] = {
    {"Battery", Kind::kBattery},
    {"Mains", Kind::kAc},
    {"USB", Kind::kUsb},
    {"Wireless", Kind::kWireless},
    {"Dock", Kind::kDock},
    // Old kernels without the file usb_type report the kind of port here.
    {"USB_DCP", Kind::kUsb},
    {"USB_CDP", Kind::kUsb},
    {"USB_ACA", Kind::kUsb},
    {"USB_C", Kind::kUsb},
    {"USB_PD", Kind::kUsb},
    {"USB_PD_DRP", Kind::kUsb},
    // Neither a battery of the machine nor a known kind of charger.
    {"UPS", Kind::kOther},
    {"BrickID", Kind::kOther},
    {"Unknown", Kind::kOther},
};

// Most drivers have no `scope`. One that cannot be read or is unknown excludes nothing either: to
// lose the machine's battery would be worse than to count a mouse, which is found to be an
// accessory beside a battery with energy or charge.
bool BelongsToMachine(DeviceFiles& files) {
  return !files.Has("scope") || files.OneOf("scope", kScopeWords) != false;
}

std::optional<int32_t> ReadCycleCount(DeviceFiles& files) {
  const std::optional<int32_t> count =
      files.Number("cycle_count", {0, kMaxInt32}, Absence::kANotice);
  if (count != 0) return count;
  files.AddFault("cycle_count", "0 means not available");
  return std::nullopt;
}

std::optional<int32_t> ReadVoltageMillivolts(DeviceFiles& files) {
  const std::optional<int32_t> microvolts = files.Number("voltage_now", {0, kMaxInt32});
  if (!microvolts) return std::nullopt;
  return *microvolts / 1000;
}

std::optional<std::string> ReadTechnology(DeviceFiles& files) {
  const std::optional<std::string> text = files.PrintableText("technology");
  return text != "Unknown" ? text : std::nullopt;
}

std::optional<int32_t> ReadChargeCounterUah(DeviceFiles& files) {
  // The counter starts anywhere and counts both ways, so it may be negative.
  const char* const file = files.Has("charge_counter") ? "charge_counter" : "charge_now";
  return files.Number(file, {kMinInt32, kMaxInt32});
}

// The content and the capacity of a battery. The capacity of a worn-out battery is 0. The unit
// depends on the weight.
struct Content {
  double now = 0;
  double full = 0;
};

std::optional<Content> ReadContent(DeviceFiles& files, const char* now_file,
                                   const char* full_file) {
  const std::optional<int32_t> now = files.Number(now_file, {0, kMaxInt32});
  const std::optional<int32_t> full = files.Number(full_file, {0, kMaxInt32});
  if (!now || !full) return std::nullopt;
  return Content{.now = static_cast<double>(std::min(*now, *full)),
                 .full = static_cast<double>(*full)};
}

int32_t PercentOf(const Content& content) {
  return static_cast<int32_t>(std::lround(100 * content.now / content.full));
}

// A battery of the machine.
struct Part {
  Battery battery = {};
  std::optional<Content> energy = {};  // in µWh
  // Charge times design voltage, in pWh; the energy if the charge is unknown.
  std::optional<Content> charge_times_volts = {};
  // Whether it has a gauge. Every battery that powers a machine has one.
  bool is_gauged = false;
  PowerSupply* supply = nullptr;
};

// The kernel documents 0 to 100 but does not enforce it for most drivers.
std::optional<int32_t> ReadLevel(DeviceFiles& files, const std::optional<Content>& energy,
                                 const std::optional<Content>& charge) {
  const char* const kFile = "capacity";
  if (const std::optional<int64_t> level = files.Integer(kFile, Absence::kANotice)) {
    const int32_t clamped = static_cast<int32_t>(std::clamp<int64_t>(*level, 0, 100));
    if (clamped != *level) {
      files.AddFault(kFile, std::to_string(*level) + " is not within 0 to 100, taken as " +
                                std::to_string(clamped));
    }
    return clamped;
  }
  const bool by_energy = energy && energy->full > 0;
  if (!by_energy && (!charge || charge->full <= 0)) return std::nullopt;
  files.AmendFault(kFile, by_energy ? "; computed from energy_now and energy_full"
                                    : "; computed from charge_now and charge_full");
  return PercentOf(by_energy ? *energy : *charge);
}

bool IsGauged(const DeviceFiles& files) {
  constexpr const char* kGaugeFiles[] = {
      "energy_now",         "energy_full", "energy_full_design", "charge_now",     "charge_full",
      "charge_full_design", "energy_avg",  "charge_avg",         "charge_counter", "cycle_count"};
  return std::any_of(std::begin(kGaugeFiles), std::end(kGaugeFiles),
                     [&](const char* file) { return files.Lists(file); });
}

std::optional<double> ReadDesignMicrovolts(DeviceFiles& files) {
  for (const char* const file : {"voltage_min_design", "voltage_max_design"}) {
    const std::optional<int32_t> microvolts = files.Number(file, {0, kMaxInt32});
    if (microvolts && *microvolts != 0) return *microvolts;
  }
  return std::nullopt;
}

Part ReadBattery(DeviceFiles& files) {
  constexpr Range kAnyCurrent = {kMinInt32, kMaxInt32};  // negative while discharging
  constexpr Range kAnyCharge = {0, kMaxInt32};
  Part part;
  part.is_gauged = IsGauged(files);
  part.energy = ReadContent(files, "energy_now", "energy_full");
  const std::optional<Content> charge = ReadContent(files, "charge_now", "charge_full");
  if (const auto volts = charge ? ReadDesignMicrovolts(files) : std::nullopt) {
    part.charge_times_volts = Content{.now = charge->now * *volts, .full = charge->full * *volts};
  } else if (part.energy) {
    part.charge_times_volts =
        Content{.now = part.energy->now * 1e6, .full = part.energy->full * 1e6};
  }
  part.battery = {
      .name = files.name(),
      .level_percent = ReadLevel(files, part.energy, charge),
      .cycle_count = ReadCycleCount(files),
      .status = files.OneOf("status", kStatusWords),
      .health = files.OneOf("health", kHealthWords),
      .capacity_level = files.OneOf("capacity_level", kCapacityLevelWords),
      .technology = ReadTechnology(files),
      .voltage_millivolts = ReadVoltageMillivolts(files),
      .temperature_tenths_celsius = files.Number("temp", {kAbsoluteZeroTenthsCelsius, kMaxInt32}),
      .current_microamps = files.Number("current_now", kAnyCurrent),
      .current_average_microamps = files.Number("current_avg", kAnyCurrent),
      .full_charge_uah = files.Number("charge_full", kAnyCharge),
      .full_charge_design_uah = files.Number("charge_full_design", kAnyCharge),
      .charge_counter_uah = ReadChargeCounterUah(files),
      .seconds_to_full = files.Number("time_to_full_now", {0, kMaxInt32}),
  };
  return part;
}

// An empty bay has a supply, too. A driver without the file has a built-in battery.
bool IsBatteryThere(DeviceFiles& files) {
  return files.Number("present", {0, 1}).value_or(1) == 1;
}

// The class defines no type for a dock. The type "Dock" of some drivers is accepted, and so is
// "dock" in the name of a wired charger. Such a supply does not also count as an AC or USB charger.
Kind KindOfCharger(Kind type, const std::string& name) {
  const bool wired = type == Kind::kAc || type == Kind::kUsb;
  return wired && InLowerCase(name).find("dock") != std::string::npos ? Kind::kDock : type;
}

// The reading of one supply. It is dropped if the supply vanishes meanwhile.
struct SupplyReading {
  std::optional<PowerSupply> supply = {};
  std::optional<Part> part = {};
  std::optional<int32_t> max_current_microamps = {};
  std::optional<int32_t> max_voltage_microvolts = {};
};

void ReadCharger(DeviceFiles& files, SupplyReading* reading) {
  // 0: offline, 1: online with a fixed voltage, 2: online with a programmable one.
  const std::optional<int32_t> online = files.Number("online", {0, 2}, Absence::kANotice);
  if (online) reading->supply->online = *online != 0;
  if (!reading->supply->online.value_or(false)) return;
  reading->max_current_microamps = files.Number("current_max", {0, kMaxInt32});
  if (!reading->max_current_microamps) return;
  reading->max_voltage_microvolts = files.Number("voltage_max", {0, kMaxInt32});
}

SupplyReading ReadSupply(DeviceFiles& files) {
  SupplyReading reading;
  const std::optional<Kind> type = files.OneOf("type", kTypeWords, Absence::kANotice);
  reading.supply = {.name = files.name(),
                    .kind = KindOfCharger(type.value_or(Kind::kOther), files.name())};
  PowerSupply& supply = *reading.supply;
  if (!type || supply.kind == Kind::kOther) {
    supply.ignored_because = "neither a battery nor a charger";
  } else if (!BelongsToMachine(files)) {
    supply.ignored_because = "feeds a peripheral";
  } else if (supply.kind != Kind::kBattery) {
    ReadCharger(files, &reading);
  } else if (!IsBatteryThere(files)) {
    supply.ignored_because = "not present";
  } else {
    reading.part = ReadBattery(files);
    supply.level_percent = reading.part->battery.level_percent;
    supply.cycle_count = reading.part->battery.cycle_count;
  }
  return reading;
}

void AddCharger(const SupplyReading& charger, Chargers* chargers) {
  if (!charger.supply->online.value_or(false)) return;
  const Kind kind = charger.supply->kind;
  chargers->ac_online |= kind == Kind::kAc;
  chargers->usb_online |= kind == Kind::kUsb;
  chargers->wireless_online |= kind == Kind::kWireless;
  chargers->dock_online |= kind == Kind::kDock;
  if (chargers->max_current_microamps) return;
  chargers->max_current_microamps = charger.max_current_microamps;
  chargers->max_voltage_microvolts = charger.max_voltage_microvolts;
}

std::optional<Content> ContentBy(Weight weight, const Part& part) {
  if (weight == Weight::kEnergy) return part.energy;
  if (weight == Weight::kCharge) return part.charge_times_volts;
  const std::optional<int32_t> level = part.battery.level_percent;
  if (!level) return std::nullopt;
  return Content{.now = static_cast<double>(*level), .full = 100};
}

// The first weight that all parts have.
Weight WeightOf(const std::vector<Part>& parts) {
  for (const Weight weight : {Weight::kEnergy, Weight::kCharge}) {
    const auto has_it = [&](const Part& part) { return ContentBy(weight, part).has_value(); };
    const auto holds = [&](const Part& part) { return ContentBy(weight, part)->full > 0; };
    if (std::all_of(parts.begin(), parts.end(), has_it) &&
        std::any_of(parts.begin(), parts.end(), holds)) {
      return weight;
    }
  }
  return Weight::kMean;
}

// The combined level of several batteries, and the share of each.
std::optional<int32_t> CombineLevels(const std::vector<Part>& parts) {
  const Weight weight = WeightOf(parts);
  Content all;
  for (const Part& part : parts) {
    const Content content = ContentBy(weight, part).value_or(Content{});
    all.now += content.now;
    all.full += content.full;
  }
  if (all.full == 0) return std::nullopt;
  for (const Part& part : parts) {
    part.supply->weight = weight;
    part.supply->share = ContentBy(weight, part).value_or(Content{}).full / all.full;
  }
  return PercentOf(all);
}

// If one battery is charging, the machine is charging.
std::optional<BatteryStatus> CombineStatus(const std::vector<Part>& parts) {
  for (const BatteryStatus status : {BatteryStatus::CHARGING, BatteryStatus::DISCHARGING,
                                     BatteryStatus::NOT_CHARGING, BatteryStatus::FULL}) {
    const bool any = std::any_of(parts.begin(), parts.end(),
                                 [&](const Part& part) { return part.battery.status == status; });
    if (any) return status;
  }
  return std::nullopt;
}

Battery Combine(const std::vector<Part>& parts) {
  Battery all = parts.front().battery;
  if (parts.size() == 1) {
    // The driver's level is as good as a computed one.
    if (all.level_percent) parts[0].supply->share = 1;
    return all;
  }
  all.level_percent = CombineLevels(parts);
  all.status = CombineStatus(parts);
  for (const Part& part : parts) {
    all.cycle_count = std::max(all.cycle_count, part.battery.cycle_count);
    // The capacity level of one battery is not that of all.
    if (part.battery.capacity_level != all.capacity_level) all.capacity_level = std::nullopt;
  }
  return all;
}

// If any battery has a gauge, one without a gauge belongs to an accessory, such as a keyboard.
void IgnoreAccessories(std::vector<SupplyReading>* readings, std::vector<Fault>* faults) {
  const bool any_is_gauged = std::any_of(
      readings->begin(), readings->end(),
      [](const SupplyReading& reading) { return reading.part && reading.part->is_gauged; });
  if (!any_is_gauged) return;
  for (SupplyReading& reading : *readings) {
    if (!reading.part || reading.part->is_gauged) continue;
    reading.part.reset();
    reading.supply->ignored_because = "accessory";
    // Missing files of an accessory are not faults.
    std::erase_if(*faults,
                  [&](const Fault& fault) { return fault.device == reading.supply->name; });
    faults->push_back({.device = reading.supply->name,
                       .file = "",
                       .what =
                           "ignored as an accessory: it has no energy, charge or cycle count, but "
                           "another battery has"});
  }
}

}  // namespace

PowerReading ReadPowerSupplies(const std::vector<std::string>& syspaths) {
  PowerReading all;
  std::vector<SupplyReading> readings;
  for (const std::string& syspath : syspaths) {
    SupplyReading reading;
    const auto read = [&](DeviceFiles& files) { reading = ReadSupply(files); };
    if (!ReadDevice(syspath, &all.faults, read)) continue;
    if (reading.supply) readings.push_back(std::move(reading));
  }
  IgnoreAccessories(&readings, &all.faults);
  all.supplies.reserve(readings.size());  // pointers to elements are kept below
  std::vector<Part> parts;
  for (SupplyReading& reading : readings) {
    all.supplies.push_back(*reading.supply);
    AddCharger(reading, &all.chargers);
    if (!reading.part) continue;
    parts.push_back(*std::move(reading.part));
    parts.back().supply = &all.supplies.back();
  }
  if (!parts.empty()) all.battery = Combine(parts);
  return all;
}

std::string PartsOfLevel(const PowerReading& reading) {
  std::string text;
  Weight weight = Weight::kNone;
  for (const PowerSupply& supply : reading.supplies) {
    if (supply.weight == Weight::kNone || !supply.share) continue;
    weight = supply.weight;
    text += text.empty() ? "battery level: " : " and ";
    text += supply.name + " (" + std::to_string(std::lround(100 * *supply.share)) + " %)";
  }
  switch (weight) {
    case Weight::kNone:
      return {};
    case Weight::kEnergy:
      return text + " together, by energy";
    case Weight::kCharge:
      return text + " together, by charge and design voltage";
    case Weight::kMean:
      break;
  }
  return text + " together, as the mean";
}

}  // namespace norvik::qel::linux_machine
