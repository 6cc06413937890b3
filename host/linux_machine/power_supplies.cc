#include "power_supplies.h"

#include <string_view>
#include <utility>

#include "device_files.h"

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

enum class Scope { kMachine, kPeripheral };

// A "System" supply powers the machine, a "Device" supply a peripheral.
constexpr Word<Scope> kScopeWords[] = {
    {"System", Scope::kMachine},
    {"Unknown", Scope::kMachine},
    {"Device", Scope::kPeripheral},
};

enum class Type { kBattery, kMains, kUsb, kWireless, kDock, kOther };

constexpr Word<Type> kTypeWords[] = {
    {"Battery", Type::kBattery},
    {"Mains", Type::kMains},
    {"USB", Type::kUsb},
    {"Wireless", Type::kWireless},
    {"Dock", Type::kDock},
    // Old kernels without the file usb_type report the kind of port here.
    {"USB_DCP", Type::kUsb},
    {"USB_CDP", Type::kUsb},
    {"USB_ACA", Type::kUsb},
    {"USB_C", Type::kUsb},
    {"USB_PD", Type::kUsb},
    {"USB_PD_DRP", Type::kUsb},
    // Neither a battery of the machine nor a known kind of charger.
    {"UPS", Type::kOther},
    {"BrickID", Type::kOther},
    {"Unknown", Type::kOther},
};

// Most drivers have no `scope`: without it the supply belongs to the machine. With an invalid one
// the supply is ignored: it may be a mouse, whose level must not be reported as the machine's.
bool BelongsToMachine(DeviceFiles& files) {
  return !files.Has("scope") || files.OneOf("scope", kScopeWords) == Scope::kMachine;
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

Battery ReadBattery(DeviceFiles& files) {
  constexpr Range kAnyCurrent = {kMinInt32, kMaxInt32};  // negative while discharging
  constexpr Range kAnyCharge = {0, kMaxInt32};
  return {
      .name = files.name(),
      .level_percent = files.Number("capacity", {0, 100}, Absence::kANotice),
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
}

// An empty bay has a supply, too. A driver without the file has a built-in battery.
bool IsBatteryThere(DeviceFiles& files) {
  return files.Number("present", {0, 1}).value_or(1) == 1;
}

// The class defines no type for a dock. The type "Dock" of some drivers is accepted, and so is
// "dock" in the name of a wired charger. Such a supply does not also count as an AC or USB charger.
Type TypeOfCharger(Type type, const std::string& name) {
  const bool wired = type == Type::kMains || type == Type::kUsb;
  return wired && InLowerCase(name).find("dock") != std::string::npos ? Type::kDock : type;
}

void AddCharger(Type type, DeviceFiles& files, Chargers* chargers) {
  // 0: offline, 1: online with a fixed voltage, 2: online with a programmable one.
  const bool online = files.Number("online", {0, 2}, Absence::kANotice).value_or(0) != 0;
  if (!online) return;
  switch (type) {
    case Type::kMains:
      chargers->ac_online = true;
      break;
    case Type::kUsb:
      chargers->usb_online = true;
      break;
    case Type::kWireless:
      chargers->wireless_online = true;
      break;
    case Type::kDock:
      chargers->dock_online = true;
      break;
    case Type::kBattery:
    case Type::kOther:
      return;  // not chargers
  }
  if (chargers->max_current_microamps) return;
  chargers->max_current_microamps = files.Number("current_max", {0, kMaxInt32});
  if (!chargers->max_current_microamps) return;
  chargers->max_voltage_microvolts = files.Number("voltage_max", {0, kMaxInt32});
}

void AddSupply(DeviceFiles& files, PowerReading* reading) {
  const std::optional<Type> type = files.OneOf("type", kTypeWords, Absence::kANotice);
  if (!type || type == Type::kOther || !BelongsToMachine(files)) return;
  if (type != Type::kBattery) {
    AddCharger(TypeOfCharger(*type, files.name()), files, &reading->chargers);
  } else if (!reading->battery && IsBatteryThere(files)) {
    reading->battery = ReadBattery(files);
  }
}

}  // namespace

PowerReading ReadPowerSupplies(const std::vector<std::string>& syspaths) {
  PowerReading reading;
  for (const std::string& syspath : syspaths) {
    const PowerReading before = reading;
    if (auto files = DeviceFiles::Open(syspath, &reading.faults)) AddSupply(*files, &reading);
    std::vector<Fault> faults = before.faults;
    if (IsStillThere(syspath, &faults)) continue;
    // The supply was removed during the reading. Drops its incomplete values and their faults.
    reading = before;
    reading.faults = std::move(faults);
  }
  return reading;
}

}  // namespace norvik::qel::linux_machine
