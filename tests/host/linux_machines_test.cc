// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Whole machines, each described by the files that its kernel shows, and the values read from them.
// The descriptions are in umockdev's format: umockdev-record makes one of a real machine.
#include <dlfcn.h>
#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libudev.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <locale>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "device_files.h"
#include "iio_channels.h"
#include "linux_machine.h"
#include "power_supplies.h"
#include "thermal_devices.h"
#include "thermal_history.h"
#include "thermal_types.h"

namespace {

// Called before a file is read, with "DEVICE/FILE". The result is an errno number, or 0 to read.
std::function<int(const std::string& file)> before_reading;

}  // namespace

// Replaces libudev's function: in a fake sysfs no file fails with a chosen error.
extern "C" const char* udev_device_get_sysattr_value(udev_device* device, const char* file) {
  static const auto real = reinterpret_cast<decltype(&udev_device_get_sysattr_value)>(
      dlsym(RTLD_NEXT, "udev_device_get_sysattr_value"));
  const auto name = std::string(udev_device_get_sysname(device)) + "/" + file;
  const int error = before_reading != nullptr ? before_reading(name) : 0;
  if (error == 0) return real(device, file);
  errno = error;
  return nullptr;
}

namespace norvik::qel {
namespace {

using linux_machine::IioChannel;
using Lines = std::vector<std::string>;

Lines Split(const std::string& text, const std::string& separator) {
  Lines parts;
  size_t start = 0;
  for (size_t end; (end = text.find(separator, start)) != std::string::npos;) {
    parts.push_back(text.substr(start, end - start));
    start = end + separator.size();
  }
  parts.push_back(text.substr(start));
  return parts;
}

Lines LinesOf(const std::string& file) {
  std::ifstream in(std::string(QUORVEL_TEST_MACHINES) + "/" + file);
  Lines lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// All values of the machine as text, a line each.
class Report {
 public:
  static Lines Make() {
    Report report;
    report.AddPower();
    report.AddTemperatures();
    report.AddSensors();
    return std::move(report.lines_);
  }

 private:
  template <typename... Words>
  void Add(const Words&... words) {
    std::ostringstream line;
    line.imbue(std::locale::classic());
    (line << ... << words);
    lines_.push_back(line.str());
  }
  template <typename T>
  void AddIf(const char* what, const std::optional<T>& value) {
    if (!value) return;
    if constexpr (std::is_enum_v<T>) {
      Add(what, toString(*value));
    } else {
      Add(what, *value);
    }
  }
  void AddFaults(const std::vector<linux_machine::Fault>& faults) {
    for (const auto& fault : faults) {
      Add("! ", NoticeOf(fault));
      // A sensor is read once to find it and once to measure.
      if (std::count(lines_.begin(), lines_.end(), lines_.back()) > 1) lines_.pop_back();
    }
  }

  static Lines List(const std::vector<const char*>& subsystems) {
    Lines listed;
    EXPECT_EQ(linux_machine::ListDevices(subsystems, &listed), 0);
    return listed;
  }

  void AddPower() {
    const auto reading = linux_machine::ReadPowerSupplies(List({"power_supply"}));
    if (const auto& battery = reading.battery) {
      if (battery->level_percent) {
        Add("battery ", *battery->level_percent, " %");
      } else {
        Add("battery unknown");
      }
      AddIf("cycles ", battery->cycle_count);
      AddIf("status ", battery->status);
      AddIf("health ", battery->health);
      AddIf("capacity level ", battery->capacity_level);
      AddIf("technology ", battery->technology);
      AddIf("mV ", battery->voltage_millivolts);
      AddIf("tenths of a degree ", battery->temperature_tenths_celsius);
      AddIf("uA ", battery->current_microamps);
      AddIf("average uA ", battery->current_average_microamps);
      AddIf("full uAh ", battery->full_charge_uah);
      AddIf("design uAh ", battery->full_charge_design_uah);
      AddIf("uAh ", battery->charge_counter_uah);
      AddIf("seconds to full ", battery->seconds_to_full);
    }
    if (const std::string parts = PartsOfLevel(reading); !parts.empty()) Add(parts);
    if (reading.chargers.ac_online) Add("online AC");
    if (reading.chargers.usb_online) Add("online USB");
    if (reading.chargers.wireless_online) Add("online wireless");
    if (reading.chargers.dock_online) Add("online dock");
    AddIf("max uA ", reading.chargers.max_current_microamps);
    AddIf("max uV ", reading.chargers.max_voltage_microvolts);
    for (const auto& supply : reading.supplies) {
      if (!supply.ignored_because.empty()) Add(supply.name, ": ", supply.ignored_because);
    }
    AddFaults(reading.faults);
  }

  void AddTemperatures() {
    const auto reading = linux_machine::ReadThermalDevices(List({"thermal", "hwmon"}));
    linux_machine::ThermalHistory history{linux_machine::ThermalTypes()};
    const services::ThermalData data = history.Continue(reading);
    for (size_t i = 0; i < data.temperatures.size(); ++i) {
      const auto& temperature = data.temperatures[i];
      std::ostringstream thresholds;
      thresholds.imbue(std::locale::classic());
      for (const float threshold : data.thresholds[i].hotThrottlingThresholds) {
        if (!std::isnan(threshold)) thresholds << " >" << threshold;
      }
      using enum aidl::android::hardware::thermal::ThrottlingSeverity;
      const bool throttles = temperature.throttlingStatus != NONE;
      Add(toString(temperature.type), ' ', temperature.name, ' ', temperature.value,
          throttles ? " " + toString(temperature.throttlingStatus) : "", thresholds.str());
    }
    for (const auto& source : history.sources()) {
      if (!source.is_readable) Add("unreadable ", source.name);
    }
    for (const auto& device : data.cooling_devices) {
      Add("cooling ", toString(device.type), ' ', device.name, ' ', device.value);
    }
    AddFaults(reading.faults);
  }

  void AddSensors() {
    linux_machine::FoundChannels found = linux_machine::FindChannels(List({"iio"}));
    const auto add = [&](const char* what, const std::optional<IioChannel>& channel) {
      if (!channel) return;
      if (const auto value = Measure(*channel, &found.faults)) {
        Add(what, channel->name, ' ', *value);
      }
    };
    add("proximity ", found.proximity);
    add("hinge ", found.hinge);
    AddFaults(found.faults);
  }

  Lines lines_;
};

class LinuxMachinesTest : public testing::TestWithParam<std::string> {};

TEST_P(LinuxMachinesTest, IsReadAsItsFilesSay) {
  Machine machine("power_supply");
  machine.Load(QUORVEL_TEST_MACHINES "/" + GetParam() + ".umockdev");
  EXPECT_EQ(Report::Make(), LinesOf(GetParam() + ".expected"));
}

std::vector<std::string> Machines() {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(QUORVEL_TEST_MACHINES)) {
    if (entry.path().extension() == ".umockdev") names.insert(entry.path().stem());
  }
  return {names.begin(), names.end()};
}

INSTANTIATE_TEST_SUITE_P(, LinuxMachinesTest, testing::ValuesIn(Machines()), [](const auto& info) {
  std::string name = info.param;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
});

TEST(LinuxMachineTest, WithoutDevicesIsEmpty) {
  const Machine machine("power_supply");
  EXPECT_THAT(Report::Make(), testing::IsEmpty());
}

// The machine that has every file, and changes of it.
class LinuxReferenceTest : public testing::Test {
 protected:
  LinuxReferenceTest() {
    machine_.Load(QUORVEL_TEST_MACHINES "/reference.umockdev");
    whole_ = Report::Make();
  }
  ~LinuxReferenceTest() override { before_reading = nullptr; }

  // The lines that the machine reports no longer, and those that it reports now: "-battery 73 %",
  // "+battery unknown".
  Lines Difference(const Lines& before) const {
    const Lines now = Report::Make();
    Lines difference;
    const auto add_missing = [&](char sign, const Lines& from, const Lines& in) {
      for (const std::string& line : from) {
        if (std::find(in.begin(), in.end(), line) == in.end()) difference.push_back(sign + line);
      }
    };
    add_missing('-', before, now);
    add_missing('+', now, before);
    return difference;
  }

  Machine machine_{"power_supply"};
  Lines whole_;
};

struct FileError {
  int error;
  const char* text;
};
constexpr FileError kErrors[] = {{ENODATA, "has no data"},
                                 {EIO, "cannot be read: Input/output error"},
                                 {ENODEV, "cannot be read: No such device"},
                                 {EAGAIN, "cannot be read: Resource temporarily unavailable"}};

// changes.txt, a case per line: "CHANGE; CHANGE | DIFFERENCE | DIFFERENCE". A change is
// "DEVICE/FILE=CONTENT", "DEVICE/FILE!" for a file that is absent, or "DEVICE/FILE<error>" for one
// that fails with each of the errors. A difference with '?' is not caused by the error "no data".
TEST_F(LinuxReferenceTest, AChangedFileHasTheseEffectsAndNoOther) {
  for (const std::string& line : LinesOf("changes.txt")) {
    if (line.empty()) continue;
    SCOPED_TRACE(line);
    Lines parts = Split(line, " | ");
    std::vector<std::function<void()>> restore;
    std::string failing;
    for (const std::string& change : Split(parts[0], "; ")) {
      const size_t end = change.find_first_of("=!<");
      const size_t slash = change.find('/');
      ASSERT_LT(slash, end);
      const std::string device = change.substr(0, slash);
      const std::string file = change.substr(slash + 1, end - slash - 1);
      const auto original = machine_.Get(device, file);
      restore.push_back([=, this] { machine_.Put(device, file, original); });
      if (change[end] == '=') machine_.Put(device, file, Unescaped(change.substr(end + 1)) + "\n");
      if (change[end] == '!') machine_.Put(device, file, std::nullopt);
      if (change[end] == '<') failing = device + "/" + file;
    }
    parts.erase(parts.begin());
    if (failing.empty()) {
      EXPECT_EQ(Difference(whole_), parts);
    } else {
      for (const auto& [error, text] : kErrors) {
        before_reading = [&failing, code = error](const std::string& file) {
          return file == failing ? code : 0;
        };
        Lines expected;
        for (std::string part : parts) {
          const bool is_optional = part.starts_with('?');
          if (is_optional && error == ENODATA) continue;
          const size_t place = part.find("<error>");
          if (place != std::string::npos) part.replace(place, std::strlen("<error>"), text);
          expected.push_back(part.substr(is_optional ? 1 : 0));
        }
        EXPECT_EQ(Difference(whole_), expected);
        before_reading = nullptr;
      }
    }
    for (auto undo = restore.rbegin(); undo != restore.rend(); ++undo) (*undo)();
    ASSERT_EQ(Report::Make(), whole_);
  }
}

// Each device vanishes before each of its files that is read, and some between the listing and
// that.
TEST_F(LinuxReferenceTest, HalfOfADeviceIsNone) {
  struct Moment {
    std::string file;  // about to be read
    std::string device;
    bool operator==(const Moment&) const = default;
  };
  std::vector<Moment> moments = {
      {"AC/type", "BAT0"}, {"thermal_zone0/type", "hwmon0"}, {"iio:device0/label", "iio:device1"}};
  before_reading = [&](const std::string& file) {
    const Moment moment = {file, file.substr(0, file.find('/'))};
    if (std::find(moments.begin(), moments.end(), moment) == moments.end()) {
      moments.push_back(moment);
    }
    return 0;
  };
  Report::Make();
  ASSERT_GT(moments.size(), 50u);
  for (const Moment& moment : moments) {
    const auto& file = moment.file;
    const auto& device = moment.device;
    SCOPED_TRACE(file);
    bool gone = false;
    before_reading = [&](const std::string& name) {
      if (gone || name != file) return 0;
      machine_.Vanish(device);
      gone = true;
      return file.starts_with(device) ? ENODEV : 0;
    };
    const Lines while_vanishing = Report::Make();
    before_reading = nullptr;
    ASSERT_TRUE(gone);
    EXPECT_THAT(Difference(while_vanishing),
                testing::ElementsAre("-! " + device + ": vanished while it was read"));
    machine_.LoadDevice(QUORVEL_TEST_MACHINES "/reference.umockdev", device);
    ASSERT_EQ(Report::Make(), whole_);
  }
}

}  // namespace
}  // namespace norvik::qel
