// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Whole machines: the files in their sysfs, and the values that the services read from them. The
// descriptions are in umockdev's format. umockdev-record makes one from a real machine.
#include <dlfcn.h>
#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libudev.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <locale>
#include <optional>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "device_files.h"
#include "iio_channels.h"
#include "linux_machine.h"
#include "quorvel/linux_machine/health.h"
#include "quorvel/linux_machine/thermal.h"

namespace {

// Called with "DEVICE/FILE" before the file is read. Returns an errno value to fail, or 0 to read.
std::function<int(const std::string& file)> before_reading;

}  // namespace

// Replaces libudev's function, because a file in a fake sysfs cannot fail with a chosen error.
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

using Lines = std::vector<std::string>;

const std::string kMachines = QUORVEL_TEST_MACHINES "/";
const std::string kReference = kMachines + "reference.umockdev";

Lines Split(const std::string& text, const char* separator) {
  g_auto(GStrv) parts = g_strsplit(text.c_str(), separator, /*max_tokens=*/0);
  return {parts, parts + g_strv_length(parts)};
}

Lines LinesOf(const std::string& file) {
  std::ostringstream text;
  text << std::ifstream(kMachines + file).rdbuf();
  return Split(text.str(), "\n");
}

Lines FieldsOf(const aidl::android::hardware::health::HealthInfo& info) {
  const std::string text = info.toString();
  return Split(text.substr(text.find('{') + 1), ", ");
}

// The lines of `from` that are not in `in`.
Lines Missing(const Lines& from, const Lines& in) {
  Lines missing;
  std::copy_if(from.begin(), from.end(), std::back_inserter(missing),
               [&](const auto& line) { return std::find(in.begin(), in.end(), line) == in.end(); });
  return missing;
}

// The values that the machine's services report, and their notices, as text with one line each.
class Report {
 public:
  static Lines Make(const std::string& types_file = "") {
    Report report;
    report.text_.imbue(std::locale::classic());
    report.AddPower();
    report.AddTemperatures(types_file);
    report.AddSensors();
    return Split(report.text_.str(), "\n");
  }

 private:
  void AddNotice(std::string notice) {
    if (notice.starts_with(kMachines)) notice.erase(0, kMachines.size());
    text_ << "! " << notice << '\n';
  }
  services::ServiceObserver observer() {
    return [this](const services::ServiceEvent& event) {
      if (event.kind == services::ServiceEvent::Kind::kNotice) AddNotice(event.detail);
    };
  }

  void AddPower() {
    linux_machine::Health health(observer());
    const Lines unknown = FieldsOf(health.info());
    health.Start();
    for (const std::string& field : Missing(FieldsOf(health.info()), unknown)) {
      text_ << field << '\n';
    }
    for (const auto& supply : health.supplies()) {
      const std::string& reason = supply.ignored_because;
      if (!reason.empty()) text_ << supply.name << ": " << reason << '\n';
    }
  }

  void AddTemperatures(const std::string& types_file) {
    linux_machine::Thermal thermal(observer(), {.types_file = types_file});
    thermal.Start();
    const services::ThermalData data = thermal.data();
    for (size_t i = 0; i < data.temperatures.size(); ++i) {
      const auto& [type, name, value, severity] = data.temperatures[i];
      const auto& [limits_type, limits_name, hot, cold] = data.thresholds.at(i);
      EXPECT_EQ(limits_type, type);
      EXPECT_EQ(limits_name, name);
      EXPECT_THAT(cold, testing::Each(testing::IsNan()));
      text_ << toString(type) << ' ' << name << ' ' << value << ' ' << toString(severity);
      for (size_t level = 0; level < hot.size(); ++level) {
        if (!std::isnan(hot[level])) text_ << ' ' << level << '>' << hot[level];
      }
      text_ << '\n';
    }
    for (const auto& source : thermal.sources()) {
      if (!source.is_readable) text_ << "unreadable " << source.name << '\n';
    }
    for (const auto& device : data.cooling_devices) {
      text_ << "cooling " << toString(device.type) << ' ' << device.name << ' ' << device.value
            << '\n';
    }
  }

  // Measures without the service, which does so only for a client.
  void AddSensors() {
    Lines listed;
    EXPECT_EQ(linux_machine::ListDevices({"iio"}, &listed), 0);
    linux_machine::FoundChannels found = linux_machine::FindChannels(listed);
    const auto add = [&](const char* what,
                         const std::optional<linux_machine::IioChannel>& channel) {
      const auto value = channel ? Measure(*channel, &found.faults) : std::nullopt;
      if (value) text_ << what << channel->name << ' ' << *value << '\n';
    };
    add("proximity ", found.proximity);
    add("hinge ", found.hinge);
    // Each sensor is read twice, so a fault may occur twice: to find the sensor, and to measure.
    std::set<std::string> notices;
    for (const auto& fault : found.faults) {
      if (notices.insert(NoticeOf(fault)).second) AddNotice(NoticeOf(fault));
    }
  }

  std::ostringstream text_;
};

class LinuxMachinesTest : public testing::TestWithParam<std::string> {};

TEST_P(LinuxMachinesTest, IsReadAsItsFilesSay) {
  Machine machine("power_supply");
  machine.Load(kMachines + GetParam() + ".umockdev");
  const std::string types_file = kMachines + GetParam() + ".types";
  const Lines report = Report::Make(std::filesystem::exists(types_file) ? types_file : "");
  EXPECT_EQ(report, LinesOf(GetParam() + ".expected"));
}

std::vector<std::string> Machines() {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(kMachines)) {
    if (entry.path().extension() == ".umockdev") names.insert(entry.path().stem());
  }
  return {names.begin(), names.end()};
}

INSTANTIATE_TEST_SUITE_P(, LinuxMachinesTest, testing::ValuesIn(Machines()), [](const auto& info) {
  std::string name = info.param;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
});

// A machine that has all files that the services read, for tests that change some of them.
class LinuxReferenceTest : public testing::Test {
 protected:
  LinuxReferenceTest() {
    machine_.Load(kReference);
    whole_ = Report::Make();
  }
  ~LinuxReferenceTest() override { before_reading = nullptr; }

  // The lines that have disappeared from the report and those that are new: "-batteryLevel: 73",
  // "+unreadable skin".
  Lines Difference(const Lines& before) const {
    const Lines now = Report::Make();
    Lines difference;
    for (const std::string& line : Missing(before, now)) difference.push_back('-' + line);
    for (const std::string& line : Missing(now, before)) difference.push_back('+' + line);
    return difference;
  }

  Machine machine_{"power_supply"};
  Lines whole_;
};

// The errors of a read and their texts in notices; 0 is for changes without an error.
constexpr std::pair<int, const char*> kErrors[] = {
    {0, ""},
    {ENODATA, "has no data"},
    {EIO, "cannot be read: Input/output error"},
    {ENODEV, "cannot be read: No such device"},
    {EAGAIN, "cannot be read: Resource temporarily unavailable"}};

// changes.txt has a case per line: "CHANGE; CHANGE | DIFFERENCE | DIFFERENCE". A change is
// "DEVICE/FILE=CONTENT", "DEVICE/FILE!" for a file that is absent, or "DEVICE/FILE<error>" for a
// file that fails with each of the errors. A difference with '?' does not occur with ENODATA.
TEST_F(LinuxReferenceTest, AChangedFileHasTheseEffectsAndNoOther) {
  for (const std::string& line : LinesOf("changes.txt")) {
    if (line.empty()) continue;
    SCOPED_TRACE(line);
    Lines parts = Split(line, " | ");
    std::vector<std::function<void()>> restore;
    std::string failing;
    for (const std::string& change : Split(parts[0], "; ")) {
      static const std::regex kChange("([^/]+)/([^=!<]+)([=!<])(.*)");
      std::smatch words;
      ASSERT_TRUE(std::regex_match(change, words, kChange)) << change;
      const std::string device = words[1];
      const std::string file = words[2];
      const auto original = machine_.Get(device, file);
      restore.push_back([=, this] { machine_.Put(device, file, original); });
      if (words[3] == "=") machine_.Put(device, file, Unescaped(words[4]) + "\n");
      if (words[3] == "!") machine_.Put(device, file, std::nullopt);
      if (words[3] == "<") failing = device + "/" + file;
    }
    parts.erase(parts.begin());
    for (const auto& [error, text] : kErrors) {
      if ((error == 0) != failing.empty()) continue;
      before_reading = [&failing, code = error](const std::string& file) {
        return file == failing ? code : 0;
      };
      Lines expected;
      for (const std::string& part : parts) {
        const bool is_optional = part.starts_with('?');
        if (is_optional && error == ENODATA) continue;
        expected.push_back(
            std::regex_replace(part.substr(is_optional ? 1 : 0), std::regex("<error>"), text));
      }
      EXPECT_THAT(Difference(whole_), testing::UnorderedElementsAreArray(expected));
      before_reading = nullptr;
    }
    for (auto undo = restore.rbegin(); undo != restore.rend(); ++undo) (*undo)();
    ASSERT_EQ(Report::Make(), whole_);
  }
}

// Each device vanishes before each read of one of its files. Some also vanish after the listing of
// devices and before their first read.
TEST_F(LinuxReferenceTest, HalfOfADeviceIsNone) {
  // Pairs of a file that is about to be read and the device that vanishes at that moment.
  std::set<std::pair<std::string, std::string>> moments = {
      {"AC/type", "BAT0"}, {"thermal_zone0/type", "hwmon0"}, {"iio:device0/label", "iio:device1"}};
  before_reading = [&](const std::string& file) {
    moments.emplace(file, file.substr(0, file.find('/')));
    return 0;
  };
  Report::Make();
  ASSERT_GT(moments.size(), 50u);
  for (const auto& moment : moments) {
    const auto& file = moment.first;
    const auto& device = moment.second;
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
    machine_.LoadDevice(kReference, device);
    ASSERT_EQ(Report::Make(), whole_);
  }
}

}  // namespace
}  // namespace norvik::qel
