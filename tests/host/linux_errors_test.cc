// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What files of the kernel that fail, and devices that vanish while they are read, leave of a
// reading.
#include <dlfcn.h>
#include <errno.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libudev.h>
#include <string.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "device_files.h"
#include "iio_channels.h"
#include "linux_machine.h"
#include "power_supplies.h"
#include "thermal_devices.h"

namespace {

// What to do before a file is read: an errno number, or 0 to read it.
std::function<int(std::string_view file)> before_reading;

}  // namespace

// Stands before libudev's, as fake sysfs has no file whose reading fails with an error of choice.
extern "C" const char* udev_device_get_sysattr_value(udev_device* device, const char* file) {
  using Function = decltype(&udev_device_get_sysattr_value);
  static const auto real =
      reinterpret_cast<Function>(dlsym(RTLD_NEXT, "udev_device_get_sysattr_value"));
  const int error = before_reading != nullptr ? before_reading(file) : 0;
  if (error == 0) return real(device, file);
  errno = error;
  return nullptr;
}

namespace norvik::qel {
namespace {

using linux_machine::Fault;
using linux_machine::PowerReading;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> Told(const std::vector<Fault>& faults) {
  std::vector<std::string> told;
  for (const Fault& fault : faults) told.push_back(NoticeOf(fault));
  return told;
}

struct FileError {
  int error;
  const char* text;
  friend std::ostream& operator<<(std::ostream& os, const FileError& e) { return os << e.text; }
};

class LinuxReadingTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_FALSE(std::filesystem::exists("/sys/kernel")) << "run this under umockdev-wrapper";
  }
  void TearDown() override { before_reading = nullptr; }

  Machine machine_{"power_supply"};
};

class LinuxFileErrorTest : public LinuxReadingTest, public testing::WithParamInterface<FileError> {
 protected:
  static void Fail(const std::string& file) {
    before_reading = [file](std::string_view name) { return name == file ? GetParam().error : 0; };
  }
  static std::vector<std::string> List(const char* subsystem) {
    std::vector<std::string> listed;
    EXPECT_EQ(linux_machine::ListDevices({subsystem}, &listed), 0);
    return listed;
  }
  // The only fault, of a file that has to be there; one that need not be may lack data in silence.
  static void ExpectOneFault(const std::vector<Fault>& faults, const std::string& file,
                             bool is_needed) {
    if (GetParam().error == ENODATA && !is_needed) {
      EXPECT_THAT(Told(faults), IsEmpty()) << file;
    } else {
      ASSERT_EQ(faults.size(), 1u) << file;
      EXPECT_EQ(faults[0].file, file);
      EXPECT_EQ(faults[0].what.find(GetParam().text), 0u) << faults[0].what;
    }
  }
};

TEST_P(LinuxFileErrorTest, OfABatteryCostsThatFileAlone) {
  const Files battery = {{"type", "Battery"},         {"present", "1"},
                         {"capacity", "73"},          {"cycle_count", "312"},
                         {"status", "Charging"},      {"health", "Good"},
                         {"voltage_now", "12000000"}, {"temp", "301"},
                         {"energy_now", "14000000"},  {"energy_full", "20000000"}};
  machine_.AddTo("power_supply", "BAT0", battery);
  for (const auto& [file, content] : battery) {
    if (file == "type") continue;
    Fail(file);
    const PowerReading reading = linux_machine::ReadPowerSupplies(List("power_supply"));
    ASSERT_TRUE(reading.battery) << file;
    EXPECT_EQ(reading.battery->level_percent, file == "capacity" ? 70 : 73) << file;
    EXPECT_EQ(reading.battery->cycle_count,
              file == "cycle_count" ? std::nullopt : std::optional(312));
    EXPECT_EQ(reading.battery->status.has_value(), file != "status");
    EXPECT_EQ(reading.battery->health.has_value(), file != "health");
    EXPECT_EQ(reading.battery->voltage_millivolts.has_value(), file != "voltage_now");
    EXPECT_EQ(reading.battery->temperature_tenths_celsius.has_value(), file != "temp");
    ExpectOneFault(reading.faults, file, file == "capacity" || file == "cycle_count");
  }
  // Without its type it is nothing, and says so.
  Fail("type");
  const PowerReading reading = linux_machine::ReadPowerSupplies(List("power_supply"));
  EXPECT_FALSE(reading.battery);
  ExpectOneFault(reading.faults, "type", true);
}

TEST_P(LinuxFileErrorTest, OfAChargerMakesItOffline) {
  machine_.AddTo("power_supply", "pad", {{"type", "Wireless"}, {"online", "1"}});
  Fail("online");
  const PowerReading reading = linux_machine::ReadPowerSupplies(List("power_supply"));
  EXPECT_FALSE(reading.chargers.wireless_online);
  EXPECT_EQ(reading.supplies.at(0).online, std::nullopt);
  ExpectOneFault(reading.faults, "online", true);
}

TEST_P(LinuxFileErrorTest, OfATemperatureCostsThatFileAlone) {
  machine_.AddTo("thermal", "thermal_zone0",
                 {{"type", "cpu"},
                  {"temp", "41000"},
                  {"mode", "enabled"},
                  {"trip_point_0_type", "hot"},
                  {"trip_point_0_temp", "90000"}});
  for (const char* const file : {"temp", "mode", "trip_point_0_type", "trip_point_0_temp"}) {
    Fail(file);
    const auto reading = linux_machine::ReadThermalDevices(List("thermal"));
    ASSERT_EQ(reading.zones.size(), 1u);
    EXPECT_EQ(reading.zones[0].millidegrees.has_value(), std::string(file) != "temp");
    EXPECT_EQ(reading.zones[0].trips.empty(), std::string(file).starts_with("trip"));
    EXPECT_TRUE(reading.zones[0].acts);
    ExpectOneFault(reading.faults, file, std::string(file) != "mode");
  }
  machine_.AddTo("hwmon", "hwmon0",
                 {{"name", "nvme"},
                  {"temp1_input", "38000"},
                  {"temp1_label", "Composite"},
                  {"temp1_crit", "85000"}});
  for (const char* const file : {"name", "temp1_input", "temp1_label", "temp1_crit"}) {
    Fail(file);
    const auto reading = linux_machine::ReadThermalDevices(List("hwmon"));
    ASSERT_EQ(reading.zones.size(), 1u);
    EXPECT_EQ(reading.zones[0].millidegrees.has_value(), std::string(file) != "temp1_input");
    EXPECT_EQ(reading.zones[0].trips.empty(), std::string(file) == "temp1_crit");
    ExpectOneFault(reading.faults, file, std::string(file) == "temp1_input");
  }
}

TEST_P(LinuxFileErrorTest, OfASensorLeavesNoReading) {
  machine_.AddTo("iio", "iio:device0",
                 {{"name", "glow"}, {"in_proximity_raw", "9"}, {"in_proximity_nearlevel", "5"}});
  const auto found = linux_machine::FindChannels(List("iio"));
  ASSERT_TRUE(found.proximity);
  for (const char* const file : {"in_proximity_raw", "in_proximity_nearlevel"}) {
    Fail(file);
    std::vector<Fault> faults;
    EXPECT_EQ(Measure(*found.proximity, &faults), std::nullopt);
    ExpectOneFault(faults, file, true);
  }
}

INSTANTIATE_TEST_SUITE_P(
    , LinuxFileErrorTest,
    testing::Values(FileError{ENODATA, "has no data"},
                    FileError{EIO, "cannot be read: Input/output error"},
                    FileError{ENODEV, "cannot be read: No such device"},
                    FileError{EAGAIN, "cannot be read: Resource temporarily unavailable"}),
    [](const auto& info) { return std::string(strerrorname_np(info.param.error)); });

class LinuxVanishingTest : public LinuxReadingTest {
 protected:
  // The device goes when this file of it is about to be read.
  void VanishAt(const std::string& device, const std::string& file) {
    before_reading = [this, device, file, gone = false](std::string_view name) mutable {
      if (gone || name != file) return 0;
      gone = true;
      machine_.Vanish(device);
      return ENODEV;
    };
  }
};

TEST_F(LinuxVanishingTest, HalfOfADeviceIsNone) {
  const Files battery = {{"type", "Battery"}, {"capacity", "10"}, {"cycle_count", "5"}};
  for (const char* const file : {"type", "capacity", "cycle_count", "status", "temp"}) {
    machine_.AddTo("power_supply", "BAT0", battery);
    machine_.AddTo("power_supply", "BAT1", With(battery, {{"capacity", "90"}}));
    std::vector<std::string> listed;
    ASSERT_EQ(linux_machine::ListDevices({"power_supply"}, &listed), 0);
    VanishAt("BAT0", file);
    const PowerReading reading = linux_machine::ReadPowerSupplies(listed);
    ASSERT_TRUE(reading.battery) << file;
    EXPECT_EQ(reading.battery->level_percent, 90) << file;
    EXPECT_THAT(Told(reading.faults), ElementsAre("BAT0: vanished while it was read")) << file;
    machine_.Vanish("BAT1");
  }
  for (const char* const file : {"name", "temp1_input", "temp2_label"}) {
    machine_.AddTo(
        "hwmon", "hwmon0",
        {{"name", "nvme"}, {"temp1_input", "1"}, {"temp2_input", "2"}, {"temp2_label", "b"}});
    std::vector<std::string> listed;
    ASSERT_EQ(linux_machine::ListDevices({"hwmon"}, &listed), 0);
    VanishAt("hwmon0", file);
    const auto reading = linux_machine::ReadThermalDevices(listed);
    EXPECT_TRUE(reading.zones.empty()) << file;
    EXPECT_THAT(Told(reading.faults), ElementsAre("hwmon0: vanished while it was read")) << file;
  }
}

}  // namespace
}  // namespace norvik::qel
