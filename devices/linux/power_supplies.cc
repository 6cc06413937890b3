#include "devices/linux/power_supplies.h"

#include <errno.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <string_view>
#include <system_error>
#include <utility>

#include "devices/linux/udev.h"

namespace norvik::qel::linux_device {

namespace {

using aidl::android::hardware::health::BatteryCapacityLevel;
using aidl::android::hardware::health::BatteryHealth;
using aidl::android::hardware::health::BatteryStatus;

constexpr int64_t kMaxInt32 = std::numeric_limits<int32_t>::max();
constexpr int64_t kMinInt32 = std::numeric_limits<int32_t>::min();
constexpr int64_t kAbsoluteZeroTenthsCelsius = -2731;

// A word of the kernel's and what it stands for.
template <typename T>
struct Word {
  std::string_view word;
  T value;
};

constexpr Word<BatteryStatus> kStatusWords[] = {
    {"Unknown", BatteryStatus::UNKNOWN},
    {"Charging", BatteryStatus::CHARGING},
    {"Discharging", BatteryStatus::DISCHARGING},
    {"Not charging", BatteryStatus::NOT_CHARGING},
    {"Full", BatteryStatus::FULL},
};

// Words of the kernel that the service has no value for are unknown rather than rounded.
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

// "System" supplies feed the machine, "Device" ones something attached to it.
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
    // Kernels before usb_type told the kind of port here.
    {"USB_DCP", Type::kUsb},
    {"USB_CDP", Type::kUsb},
    {"USB_ACA", Type::kUsb},
    {"USB_C", Type::kUsb},
    {"USB_PD", Type::kUsb},
    {"USB_PD_DRP", Type::kUsb},
    // Neither the machine's battery nor a charger of a known kind.
    {"UPS", Type::kOther},
    {"BrickID", Type::kOther},
    {"Unknown", Type::kOther},
};

std::string ErrorText(int error) {
  return std::system_category().message(error);
}

bool IsPrintable(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

// A file's content for a message: it may be anything.
std::string Quoted(std::string_view text) {
  constexpr size_t kLongest = 40;
  std::string quoted = "\"";
  for (const char c : text.substr(0, kLongest)) quoted += IsPrintable({&c, 1}) ? c : '?';
  quoted += text.size() > kLongest ? "...\"" : "\"";
  return quoted;
}

std::string InLowerCase(std::string text) {
  // Names are ASCII; no locale has a say here.
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

enum class Absence {
  kUsual,    // many drivers do without the file
  kANotice,  // a client asks for just this
};

struct Range {
  int64_t min;
  int64_t max;
};

// The files of one supply. What is absent, unreadable or absurd has no value and adds a fault.
//
// libudev keeps what it has read of a device: an object of this class is good for one reading.
class SupplyFiles {
 public:
  SupplyFiles(std::string name, UdevDevice device, std::vector<Fault>* faults)
      : name_(std::move(name)), device_(std::move(device)), faults_(faults) {}

  const std::string& name() const { return name_; }

  bool Has(const char* file) {
    return udev_device_get_sysattr_value(device_.get(), file) != nullptr || !IsAbsence(errno);
  }

  std::optional<std::string_view> Text(const char* file, Absence absence = Absence::kUsual) {
    const char* text = udev_device_get_sysattr_value(device_.get(), file);
    if (text == nullptr) {
      const int error = errno;
      if (!IsAbsence(error)) {
        AddFault(file, "cannot be read: " + ErrorText(error));
      } else if (absence == Absence::kANotice) {
        AddFault(file, "not there");
      }
      return std::nullopt;
    }
    if (*text == '\0') {
      AddFault(file, "empty");
      return std::nullopt;
    }
    return text;
  }

  std::optional<int32_t> Number(const char* file, Range range, Absence absence = Absence::kUsual) {
    const std::optional<std::string_view> text = Text(file, absence);
    if (!text) return std::nullopt;
    int64_t value = 0;
    const char* const end = text->data() + text->size();
    const auto [stop, error] = std::from_chars(text->data(), end, value);
    if (error == std::errc::invalid_argument || stop != end) {
      AddFault(file, Quoted(*text) + " is not a number");
      return std::nullopt;
    }
    if (error != std::errc() || value < range.min || value > range.max) {
      AddFault(file, Quoted(*text) + " is not within " + std::to_string(range.min) + " to " +
                         std::to_string(range.max));
      return std::nullopt;
    }
    return static_cast<int32_t>(value);
  }

  template <typename T, size_t kSize>
  std::optional<T> OneOf(const char* file, const Word<T> (&words)[kSize],
                         Absence absence = Absence::kUsual) {
    const std::optional<std::string_view> text = Text(file, absence);
    if (!text) return std::nullopt;
    const auto found = std::find_if(std::begin(words), std::end(words),
                                    [&](const Word<T>& word) { return word.word == *text; });
    if (found == std::end(words)) {
      AddFault(file, Quoted(*text) + " is not a known word");
      return std::nullopt;
    }
    return found->value;
  }

  void AddFault(const char* file, std::string what) {
    faults_->push_back({.supply = name_, .file = file, .what = std::move(what)});
  }

 private:
  // ENODATA: the driver has the file but nothing to say in it.
  static bool IsAbsence(int error) { return error == ENOENT || error == ENODATA; }

  const std::string name_;
  const UdevDevice device_;
  std::vector<Fault>* const faults_;
};

// A file that is absent makes the machine's own supply, as most drivers have none. One that cannot
// be believed makes the supply nobody's: the level of a mouse must not pass for the machine's.
bool BelongsToMachine(SupplyFiles& files) {
  return !files.Has("scope") || files.OneOf("scope", kScopeWords) == Scope::kMachine;
}

std::optional<int32_t> ReadCycleCount(SupplyFiles& files) {
  const std::optional<int32_t> count =
      files.Number("cycle_count", {0, kMaxInt32}, Absence::kANotice);
  if (count != 0) return count;
  files.AddFault("cycle_count", "0, which means not available");
  return std::nullopt;
}

std::optional<int32_t> ReadVoltageMillivolts(SupplyFiles& files) {
  const std::optional<int32_t> microvolts = files.Number("voltage_now", {0, kMaxInt32});
  if (!microvolts) return std::nullopt;
  return *microvolts / 1000;
}

std::optional<std::string> ReadTechnology(SupplyFiles& files) {
  const std::optional<std::string_view> text = files.Text("technology");
  if (!text || *text == "Unknown") return std::nullopt;
  if (IsPrintable(*text)) return std::string(*text);
  files.AddFault("technology", Quoted(*text) + " is not a word");
  return std::nullopt;
}

std::optional<int32_t> ReadChargeCounterUah(SupplyFiles& files) {
  // Counts up and down from wherever it started, so it may be negative.
  const char* const file = files.Has("charge_counter") ? "charge_counter" : "charge_now";
  return files.Number(file, {kMinInt32, kMaxInt32});
}

Battery ReadBattery(SupplyFiles& files) {
  constexpr Range kAnyCurrent = {kMinInt32, kMaxInt32};  // negative while it leaves the battery
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

// An empty bay has a supply all the same. A driver without the file has its battery built in.
bool IsBatteryThere(SupplyFiles& files) {
  return files.Number("present", {0, 1}).value_or(1) == 1;
}

// The class has no type of its own for a dock. A driver that says "Dock" all the same is believed,
// and so is a name; such a supply is no AC or USB charger besides.
Type TypeOfCharger(Type type, const std::string& name) {
  const bool wired = type == Type::kMains || type == Type::kUsb;
  return wired && InLowerCase(name).find("dock") != std::string::npos ? Type::kDock : type;
}

void AddCharger(Type type, SupplyFiles& files, Chargers* chargers) {
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

void AddSupply(SupplyFiles& files, PowerReading* reading) {
  const std::optional<Type> type = files.OneOf("type", kTypeWords, Absence::kANotice);
  if (!type || type == Type::kOther || !BelongsToMachine(files)) return;
  if (type != Type::kBattery) {
    AddCharger(TypeOfCharger(*type, files.name()), files, &reading->chargers);
  } else if (!reading->battery && IsBatteryThere(files)) {
    reading->battery = ReadBattery(files);
  }
}

void ReadSupply(const std::string& syspath, PowerReading* reading) {
  const Udev udev(udev_new());
  UdevDevice device(udev_device_new_from_syspath(udev.get(), syspath.c_str()));
  if (device == nullptr) {
    reading->faults.push_back({.supply = SupplyName(syspath),
                               .file = "",
                               .what = "cannot be opened: " + ErrorText(errno)});
    return;
  }
  SupplyFiles files(SupplyName(syspath), std::move(device), &reading->faults);
  AddSupply(files, reading);
}

}  // namespace

std::string SupplyName(const std::string& syspath) {
  return syspath.substr(syspath.rfind('/') + 1);
}

int ListPowerSupplies(std::vector<std::string>* syspaths) {
  const Udev udev(udev_new());
  if (udev == nullptr) return errno;
  const UdevEnumerate enumerate(udev_enumerate_new(udev.get()));
  if (enumerate == nullptr) return errno;
  int result = udev_enumerate_add_match_subsystem(enumerate.get(), kPowerSupplySubsystem);
  if (result >= 0) result = udev_enumerate_scan_devices(enumerate.get());
  if (result < 0) return -result;
  syspaths->clear();
  udev_list_entry* entry = nullptr;
  udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(enumerate.get())) {
    syspaths->emplace_back(udev_list_entry_get_name(entry));
  }
  std::sort(syspaths->begin(), syspaths->end(), [](const auto& a, const auto& b) {
    return std::pair(SupplyName(a), a) < std::pair(SupplyName(b), b);
  });
  return 0;
}

PowerReading ReadPowerSupplies(const std::vector<std::string>& syspaths) {
  PowerReading reading;
  for (const std::string& syspath : syspaths) {
    const PowerReading before = reading;
    ReadSupply(syspath, &reading);
    if (access(syspath.c_str(), F_OK) == 0) continue;
    // Half of a supply is none: what was missing was not the driver's doing.
    reading = before;
    reading.faults.push_back(
        {.supply = SupplyName(syspath), .file = "", .what = "vanished while it was read"});
  }
  return reading;
}

}  // namespace norvik::qel::linux_device
