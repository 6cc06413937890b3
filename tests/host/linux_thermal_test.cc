// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The Linux machine's temperatures, on a fake sysfs made for each test.
#include "quorvel/linux_machine/thermal.h"

#include <aidl/android/hardware/thermal/BnCoolingDeviceChangedCallback.h>
#include <aidl/android/hardware/thermal/IThermal.h>
#include <android/binder_manager.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <limits>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "clients.h"
#include "linux_machine.h"
#include "process_state.h"
#include "quorvel.h"
#include "quorvel/fake/deliveries.h"
#include "thermal_devices.h"
#include "thermal_types.h"
#include "waiting.h"

namespace norvik::qel {
namespace {

using aidl::android::hardware::thermal::BnCoolingDeviceChangedCallback;
using aidl::android::hardware::thermal::CoolingDevice;
using aidl::android::hardware::thermal::CoolingType;
using aidl::android::hardware::thermal::IThermal;
using aidl::android::hardware::thermal::TemperatureType;
using aidl::android::hardware::thermal::ThrottlingSeverity;
using linux_machine::ThermalTypes;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::NanSensitiveFloatEq;
using testing::Pointwise;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

// Throttled from 90 degrees on until it is below 85, again from 95 on; off at 105.
const Files kProcessorZone = {
    {"type", "x86_pkg_temp\n"},
    {"temp", "41500\n"},
    {"mode", "enabled\n"},
    {"trip_point_0_type", "critical\n"},
    {"trip_point_0_temp", "105000"},
    {"trip_point_1_type", "passive\n"},
    {"trip_point_1_temp", "90000"},
    {"trip_point_1_hyst", "5000\n"},
    {"trip_point_2_type", "passive"},
    {"trip_point_2_temp", "95000\n"},
};

class LinuxThermalTest : public LinuxFixture {
 protected:
  LinuxThermalTest() : LinuxFixture("thermal", "thermal_zone900", "type") {
    InitThermalInfo(&handle_);
  }
  ~LinuxThermalTest() override {
    DeinitThermalInfo(&handle_);
    if (thermal_ != nullptr) thermal_->Stop();
    EXPECT_TRUE(fake::WaitUntilDelivered());
  }

  void Start(const std::string& types_file = "") {
    thermal_ = std::make_unique<linux_machine::Thermal>(
        notices_.observer(), linux_machine::ThermalSettings{
                                 .types_file = types_file, .period = std::chrono::milliseconds(2)});
    thermal_->Start();
  }

  int Register(const char* type, const char* name) {
    const ThermalCallbackParam param = {
        .id = 1, .type_name = type, .temperature_name = name, .callback = Client<0>};
    return RegisterThermalCallback(handle_, &param, &seen_);
  }
  std::optional<int> NextSeverity() {
    const std::optional<Call> call = seen_.Take();
    return call ? std::optional(call->value) : std::nullopt;
  }

  // As clients see it; nothing when there is no such temperature.
  std::optional<float> Read(const char* name) {
    thermistor out = {};
    int count = 1;
    EXPECT_EQ(GetBulkTemperatureByNames(handle_, &name, 1, &out, &count), 0);
    return count == 1 ? std::optional(out.value) : std::nullopt;
  }
  ThrottlingSeverity SeverityOf(const std::string& name) const {
    for (const auto& temperature : thermal_->data().temperatures) {
      if (temperature.name == name) return temperature.throttlingStatus;
    }
    ADD_FAILURE() << "no " << name;
    return ThrottlingSeverity::NONE;
  }
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& temperature : thermal_->data().temperatures) names.push_back(temperature.name);
    return names;
  }

  Seen<Call> seen_;
  std::unique_ptr<linux_machine::Thermal> thermal_;
  void* handle_ = nullptr;
};

TEST_F(LinuxThermalTest, ALaptopIsServedInTheUnitsOfTheService) {
  machine_.Add("thermal_zone0", {{"type", "acpitz\n"}, {"temp", "-1250\n"}});
  machine_.Add("thermal_zone1", kProcessorZone);
  machine_.Add("cooling_device0",
               {{"type", "Processor\n"}, {"cur_state", "3\n"}, {"max_state", "10\n"}});
  machine_.Add("cooling_device1",
               {{"type", "dell-smm-fan1\n"}, {"cur_state", "0\n"}, {"max_state", "2\n"}});
  Start();
  EXPECT_EQ(Read("x86_pkg_temp"), 41.5f);
  EXPECT_EQ(Read("acpitz"), -1.25f);
  EXPECT_EQ(Read("acpit"), std::nullopt);

  const services::ThermalData data = thermal_->data();
  ASSERT_EQ(data.temperatures.size(), 2u);
  EXPECT_EQ(data.temperatures[0].type, TemperatureType::UNKNOWN);
  EXPECT_EQ(data.temperatures[1].type, TemperatureType::CPU);
  ASSERT_EQ(data.thresholds.size(), 2u);
  EXPECT_EQ(data.thresholds[1].name, "x86_pkg_temp");
  EXPECT_EQ(data.thresholds[1].type, TemperatureType::CPU);
  EXPECT_THAT(
      data.thresholds[1].hotThrottlingThresholds,
      Pointwise(NanSensitiveFloatEq(), std::vector<float>{kNan, kNan, 90, 95, kNan, kNan, 105}));
  const std::vector<float> none(7, kNan);
  EXPECT_THAT(data.thresholds[0].hotThrottlingThresholds, Pointwise(NanSensitiveFloatEq(), none));
  EXPECT_THAT(data.thresholds[1].coldThrottlingThresholds, Pointwise(NanSensitiveFloatEq(), none));
  EXPECT_THAT(data.cooling_devices,
              ElementsAre(CoolingDevice{.type = CoolingType::CPU, .name = "Processor", .value = 3},
                          CoolingDevice{.type = CoolingType::FAN, .name = "dell-smm-fan1"}));
  EXPECT_THAT(Notices(), IsEmpty());
}

TEST_F(LinuxThermalTest, UnannouncedTripPointsReachClients) {
  machine_.Add("thermal_zone0", kProcessorZone);
  Start();
  ASSERT_EQ(Register("CPU", "x86_pkg_temp"), 0);
  ASSERT_EQ(NextSeverity(), 0);
  const auto heat_to = [&](const char* millidegrees) {
    machine_.Set("thermal_zone0", "temp", millidegrees);
  };
  heat_to("89999\n");
  heat_to("90000\n");
  EXPECT_EQ(NextSeverity(), 2);
  heat_to("110000\n");
  EXPECT_EQ(NextSeverity(), 6);
  heat_to("95000\n");
  EXPECT_EQ(NextSeverity(), 3);
  heat_to("85000\n");
  EXPECT_EQ(NextSeverity(), 2) << "within the hysteresis";
  heat_to("84999\n");
  EXPECT_EQ(NextSeverity(), 0);
  heat_to("89000\n");  // within the hysteresis, but from below
  heat_to("97000\n");
  EXPECT_EQ(NextSeverity(), 3);
}

TEST_F(LinuxThermalTest, NothingIsReadWhileNoClientListens) {
  machine_.Add("thermal_zone0", kProcessorZone);
  Start();
  EXPECT_EQ(thermal_->reading_count(), 1);
  ASSERT_EQ(Register("CPU", "x86_pkg_temp"), 0);
  const int64_t before = thermal_->reading_count();
  EXPECT_TRUE(Eventually([&] { return thermal_->reading_count() > before + 3; }));

  ASSERT_EQ(DeregisterThermalCallback(handle_, 1), 0);
  ASSERT_EQ(thermal_->callback_count(), 0u);
  // From here on its readings are those of the events, however long the events take.
  Notices();
  constexpr int kEvents = 30;
  const int64_t idle = thermal_->reading_count();
  for (int i = 0; i < kEvents; ++i) Notices();
  EXPECT_LE(thermal_->reading_count(), idle + kEvents);
  machine_.Set("thermal_zone0", "temp", "50000\n");
  EXPECT_EQ(Read("x86_pkg_temp"), 50.0f) << "a question reads";
}

TEST_F(LinuxThermalTest, AnAnnouncedChangeIsReadAtOnce) {
  machine_.Add("thermal_zone0", kProcessorZone);
  Start();
  // As the governor for user space announces a trip point.
  machine_.Change("thermal_zone0", "temp", "99000\n");
  EXPECT_TRUE(Eventually([&] { return SeverityOf("x86_pkg_temp") == ThrottlingSeverity::SEVERE; }));
}

TEST_F(LinuxThermalTest, ASeverityEndsWithItsZone) {
  Start();
  EXPECT_THAT(Notices(), ElementsAre("this machine has no temperature sensor"));
  machine_.Add("thermal_zone0", With(kProcessorZone, {{"type", "skin\n"}}));
  ASSERT_TRUE(Eventually([&] { return Read("skin") == 41.5f; }));
  ASSERT_EQ(Register("SKIN", "skin"), 0);
  ASSERT_EQ(NextSeverity(), 0);
  machine_.Set("thermal_zone0", "temp", "92000\n");
  ASSERT_EQ(NextSeverity(), 2);
  machine_.Remove("thermal_zone0");
  EXPECT_EQ(NextSeverity(), 0) << "a zone that is gone throttles nothing";
  EXPECT_EQ(Read("skin"), std::nullopt);
  // Another comes under the same number, at a temperature within the hysteresis of the old one.
  machine_.Add("thermal_zone0", With(kProcessorZone, {{"type", "skin\n"}, {"temp", "87000\n"}}));
  machine_.Change("thermal_zone0", "temp", "96000\n");
  EXPECT_EQ(NextSeverity(), 3);
  // There may also be notices of files that a reading found missing.
  EXPECT_THAT(Notices(), Contains("this machine has no temperature sensor"));
}

TEST_F(LinuxThermalTest, ZonesOfOneTypeKeepTheirNames) {
  const Files zone = {{"type", "acpitz\n"}, {"temp", "30000\n"}};
  machine_.Add("thermal_zone10", With(zone, {{"temp", "40000\n"}}));
  machine_.Add("thermal_zone9", zone);
  Start();
  EXPECT_THAT(Names(), ElementsAre("acpitz", "acpitz@thermal_zone10")) << "as the kernel counts";
  EXPECT_EQ(Read("acpitz@thermal_zone10"), 40.0f);
  machine_.Remove("thermal_zone9");
  machine_.Add("thermal_zone2", With(zone, {{"temp", "20000\n"}}));
  ASSERT_TRUE(Eventually([&] { return Read("acpitz") == 20.0f; }));
  EXPECT_EQ(Read("acpitz@thermal_zone10"), 40.0f);
}

class CoolingListener : public BnCoolingDeviceChangedCallback {
 public:
  ndk::ScopedAStatus notifyCoolingDeviceChanged(const CoolingDevice& device) override {
    states.Put(device.value);
    return ndk::ScopedAStatus::ok();
  }
  Seen<int64_t> states;
};

TEST_F(LinuxThermalTest, CoolingDevicesAreReadForTheirOwnListeners) {
  machine_.Add("cooling_device0",
               {{"type", "pwm-fan\n"}, {"cur_state", "0\n"}, {"max_state", "4\n"}});
  Start();
  const auto service = IThermal::fromBinder(
      ndk::SpAIBinder(AServiceManager_checkService(services::kThermalInstance)));
  ASSERT_NE(service, nullptr);
  const auto listener = ndk::SharedRefBase::make<CoolingListener>();
  ASSERT_TRUE(
      service->registerCoolingDeviceChangedCallbackWithType(listener, CoolingType::FAN).isOk());
  for (const int state : {1, 4, 0}) {
    machine_.Set("cooling_device0", "cur_state", std::to_string(state));
    EXPECT_EQ(listener->states.Take(), state);
  }
  machine_.Set("cooling_device0", "cur_state", "5\n");  // above the maximum
  EXPECT_EQ(notices_.Next(), "this machine has no temperature sensor");
  EXPECT_EQ(notices_.Next(), "cooling_device0/cur_state: \"5\" is not within 0 to 4");
  EXPECT_THAT(thermal_->data().cooling_devices, IsEmpty()) << "a state that is not known is none";
}

TEST_F(LinuxThermalTest, AReadingThatFailsChangesNoSeverity) {
  machine_.Add("thermal_zone0", With(kProcessorZone, {{"temp", "91000\n"}}));
  Start();
  ASSERT_EQ(SeverityOf("x86_pkg_temp"), ThrottlingSeverity::MODERATE);
  machine_.MakeUnreadable("thermal_zone0", "temp");
  EXPECT_TRUE(std::isnan(Read("x86_pkg_temp").value_or(0)));
  EXPECT_EQ(SeverityOf("x86_pkg_temp"), ThrottlingSeverity::MODERATE);
  EXPECT_THAT(Notices(),
              ElementsAre("thermal_zone0/temp: cannot be read: Operation not permitted"));
}

TEST_F(LinuxThermalTest, AZoneThatHasNeverBeenReadHasNoSeverity) {
  machine_.Add("thermal_zone0", kProcessorZone);
  machine_.MakeUnreadable("thermal_zone0", "temp");
  Start();
  EXPECT_EQ(Register("CPU", "x86_pkg_temp"), -EINVAL);
  EXPECT_EQ(Read("x86_pkg_temp"), std::nullopt);
  EXPECT_THAT(Notices(),
              ElementsAre("thermal_zone0/temp: cannot be read: Operation not permitted"));
  ASSERT_EQ(thermal_->sources().size(), 1u);
  EXPECT_FALSE(thermal_->sources()[0].is_readable);
  machine_.Vanish("thermal_zone0");
  machine_.Add("thermal_zone0", With(kProcessorZone, {{"temp", "91000\n"}}));
  ASSERT_TRUE(Eventually([&] { return Read("x86_pkg_temp") == 91.0f; }));
  EXPECT_EQ(Register("CPU", "x86_pkg_temp"), 0);
  EXPECT_EQ(NextSeverity(), 2);
}

TEST_F(LinuxThermalTest, HwmonSensorsAreNamedByChipAndLabel) {
  machine_.Add("thermal_zone0", {{"type", "iwlwifi-1\n"}, {"temp", "30000\n"}});
  machine_.AddTo("hwmon", "hwmon10", {{"name", "k10temp\n"}, {"temp1_input", "51000\n"}});
  machine_.AddTo("hwmon", "hwmon9",
                 {{"name", "nvme\n"},
                  {"temp1_label", "Composite\n"},
                  {"temp1_input", "38850\n"},
                  {"temp1_max", "81850\n"},
                  {"temp1_crit", "84850\n"},
                  {"temp10_label", "Sensor 8\n"},
                  {"temp10_input", "36850\n"},
                  {"temp2_label", "Composite\n"},
                  {"temp2_input", "39850\n"},
                  {"temp2_max", "65261850\n"},  // what the drive says for "none"
                  {"temp2_crit", "0\n"}});
  machine_.AddTo("hwmon", "hwmon1", {{"name", "iwlwifi_1\n"}, {"temp1_input", "30000\n"}});
  machine_.AddTo("hwmon", "hwmon2", {{"name", "fans\n"}, {"fan1_input", "3000\n"}});
  const Files processor = {{"name", "coretemp\n"},     {"temp1_label", "Package id 0\n"},
                           {"temp1_input", "99000\n"}, {"temp1_max", "80000\n"},
                           {"temp1_crit", "100000\n"}, {"temp2_label", "Core 0\n"},
                           {"temp2_input", "45000\n"}, {"temp2_fault", "1\n"}};
  machine_.AddTo("hwmon", "hwmon3", processor);
  Start();
  EXPECT_THAT(Names(),
              ElementsAre("iwlwifi-1", "coretemp:Package id 0", "nvme:Composite",
                          "nvme:Composite@hwmon9:temp2", "nvme:Sensor 8", "k10temp:temp1"));
  EXPECT_EQ(Read("nvme:Composite"), 38.85f);
  const services::ThermalData data = thermal_->data();
  EXPECT_EQ(data.temperatures[1].type, TemperatureType::CPU);
  EXPECT_EQ(data.temperatures[2].type, TemperatureType::UNKNOWN);
  const std::vector<float> none(7, kNan);
  EXPECT_THAT(data.thresholds[2].hotThrottlingThresholds,
              Pointwise(NanSensitiveFloatEq(),
                        std::vector<float>{kNan, kNan, 81.85f, kNan, 84.85f, kNan, kNan}));
  EXPECT_THAT(data.thresholds[3].hotThrottlingThresholds, Pointwise(NanSensitiveFloatEq(), none));
  EXPECT_EQ(thermal_->sources().size(), 7u) << "the broken one is there, too";
  EXPECT_THAT(Notices(), ElementsAre("hwmon3/temp2_fault: 1 means that the sensor is faulty"));

  ASSERT_EQ(Register("CPU", "coretemp:Package id 0"), 0);
  EXPECT_EQ(NextSeverity(), 2);
  machine_.Set("hwmon3", "temp1_input", "100000\n");
  EXPECT_EQ(NextSeverity(), 4);
  machine_.Remove("hwmon3");
  EXPECT_EQ(NextSeverity(), 0);
  machine_.AddTo("hwmon", "hwmon3", processor);
  EXPECT_EQ(NextSeverity(), 2) << "the client is still registered";
  EXPECT_EQ(Register("UNKNOWN", "nvme:Sensor 8"), 0) << "a temperature of no known type";
}

TEST_F(LinuxThermalTest, NamesMayHoldAnything) {
  const Files zone = {{"temp", "30000\n"}};
  machine_.Add("thermal_zone0", With(zone, {{"type", "INT3400 Thermal\n"}}));
  machine_.Add("thermal_zone1", With(zone, {{"type", "a:b: c\n"}}));
  machine_.Add("thermal_zone2", With(zone, {{"type", "SEN\xff\n"}}));
  machine_.Add("thermal_zone3", With(zone, {{"type", "SEN\x01\n"}}));
  machine_.Add("thermal_zone4", With(zone, {{"type", std::string(100, 'x') + "\n"}}));
  Start();
  EXPECT_THAT(Names(), ElementsAre("INT3400 Thermal", "a:b: c", "SEN?", "SEN?@thermal_zone3",
                                   std::string(100, 'x')));
  for (const char* const name : {"INT3400 Thermal", "a:b: c", "SEN?", "SEN?@thermal_zone3"}) {
    EXPECT_EQ(Read(name), 30.0f) << name;
  }
  EXPECT_THAT(Notices(), ElementsAre("thermal_zone2/type: \"SEN?\" has unprintable characters",
                                     "thermal_zone3/type: \"SEN?\" has unprintable characters"));
}

TEST_F(LinuxThermalTest, AThousandZonesAreServed) {
  constexpr int kZones = 1000;
  for (int i = 0; i < kZones; ++i) {
    machine_.AddUnannounced("thermal_zone" + std::to_string(i),
                            {{"type", "cpu-" + std::to_string(i / 2) + "\n"},
                             {"temp", std::to_string(1000 * (i % 100)) + "\n"}});
  }
  Start();
  const std::vector<std::string> names = Names();
  EXPECT_EQ(std::set<std::string>(names.begin(), names.end()).size(), size_t{kZones});
  EXPECT_EQ(Read("cpu-499@thermal_zone999"), 99.0f);
  EXPECT_THAT(Notices(), IsEmpty());
  // A client of one of them hears its trip point.
  ASSERT_EQ(Register("CPU", "cpu-499@thermal_zone999"), 0);
  ASSERT_EQ(NextSeverity(), 0);
  machine_.Set("thermal_zone999", "trip_point_0_type", "passive\n");
  machine_.Set("thermal_zone999", "trip_point_0_temp", "99000\n");
  EXPECT_EQ(NextSeverity(), 2);
}

TEST_F(LinuxThermalTest, AServiceThatWasStoppedServesAgainAndLeavesNothingOpen) {
  machine_.Add("thermal_zone0", kProcessorZone);
  Start();
  ASSERT_EQ(Register("CPU", "x86_pkg_temp"), 0);
  ASSERT_EQ(NextSeverity(), 0);
  ASSERT_EQ(DeregisterThermalCallback(handle_, 1), 0);
  thermal_->Stop();
  ASSERT_TRUE(fake::WaitUntilDelivered());  // the library knows
  EXPECT_FALSE(AServiceManager_isDeclared(services::kThermalInstance));
  EXPECT_EQ(Read("x86_pkg_temp"), std::nullopt);
  thermal_->Start();
  ASSERT_EQ(Register("CPU", "x86_pkg_temp"), 0);
  ASSERT_EQ(NextSeverity(), 0);
  machine_.Set("thermal_zone0", "temp", "93000\n");
  EXPECT_EQ(NextSeverity(), 2);

  constexpr int kRounds = 20;
  const int before = Descriptors();
  for (int i = 0; i < kRounds; ++i) thermal_->Start();
  // umockdev may have opened a few of its own meanwhile.
  EXPECT_LT(Descriptors(), before + kRounds);
}

// No client registers, so that nothing is read at intervals: see EventuallyWhileAsked().
TEST_F(LinuxThermalTest, TheLastStateWinsWhileZonesComeAndGoAndManyThreadsAsk) {
  machine_.Add("thermal_zone0", kProcessorZone);
  Start();
  const auto has_zones = [&](size_t count) {
    return EventuallyWhileAsked([&] { return Names().size() == count; },
                                [&] { EXPECT_EQ(Read("x86_pkg_temp"), 41.5f); });
  };
  for (int i = 0; i < 30; ++i) {
    machine_.Add("thermal_zone1", {{"type", "gpu\n"}, {"temp", "20000\n"}});
    EXPECT_TRUE(has_zones(2));
    machine_.Remove("thermal_zone1");
    EXPECT_TRUE(has_zones(1));
  }
  EXPECT_EQ(Read("gpu"), std::nullopt);
  EXPECT_THAT(Names(), ElementsAre("x86_pkg_temp"));
}

class LinuxThermalTypesTest : public LinuxThermalTest {
 protected:
  // The name of a file with this text, which lives as long as the test.
  std::string FileWith(const std::string& text) {
    std::ofstream(path_) << text;
    return path_;
  }
  void TearDown() override {
    LinuxThermalTest::TearDown();
    std::remove(path_.c_str());
  }

  const std::string path_ =
      testing::TempDir() + "thermal_types_" + std::to_string(getpid()) + ".txt";
};

TEST_F(LinuxThermalTypesTest, NamesWithoutAPatternStayUnknown) {
  const ThermalTypes types;
  EXPECT_EQ(types.TypeOfZone("cpu0-thermal"), TemperatureType::CPU);
  EXPECT_EQ(types.TypeOfZone("GPU-therm"), TemperatureType::GPU);
  EXPECT_EQ(types.TypeOfZone("BAT0"), TemperatureType::BATTERY);
  EXPECT_EQ(types.TypeOfZone("soc_thermal"), TemperatureType::SOC);
  EXPECT_EQ(types.TypeOfZone("usb_port_therm"), TemperatureType::USB_PORT);
  for (const char* const other : {"acpitz", "INT3400 Thermal", "bath", "society", "hidpp_battery_0",
                                  "pch_cannonlake", "usb", "nvme:Composite"}) {
    EXPECT_EQ(types.TypeOfZone(other), TemperatureType::UNKNOWN) << other;
  }
  EXPECT_EQ(types.TypeOfCoolingDevice("cpufreq-cpu0"), CoolingType::CPU);
  EXPECT_EQ(types.TypeOfCoolingDevice("Fan"), CoolingType::FAN);
  EXPECT_EQ(types.TypeOfCoolingDevice("devfreq-soc"), CoolingType::COMPONENT);
}

TEST_F(LinuxThermalTypesTest, AFileComesBeforeTheTables) {
  machine_.Add("thermal_zone0", {{"type", "acpitz\n"}, {"temp", "30000\n"}});
  machine_.Add("thermal_zone1", {{"type", "INT3400 Thermal\n"}, {"temp", "31000\n"}});
  machine_.Add("thermal_zone2", kProcessorZone);
  machine_.Add("cooling_device0",
               {{"type", "Processor\n"}, {"cur_state", "0\n"}, {"max_state", "1\n"}});
  Start(
      FileWith("# This machine\n"
               "\n"
               "temperature SKIN acpitz\n"
               "temperature\tAMBIENT   int34?? thermal \r\n"
               "  temperature UNKNOWN x86*\n"
               "temperature CPU x86_pkg_temp\n"  // comes too late
               "cooling COMPONENT Proc[eu]ssor"));
  EXPECT_EQ(Register("SKIN", "acpitz"), 0);
  const services::ThermalData data = thermal_->data();
  ASSERT_EQ(data.temperatures.size(), 3u);
  EXPECT_EQ(data.temperatures[1].type, TemperatureType::AMBIENT);
  EXPECT_EQ(data.temperatures[2].type, TemperatureType::UNKNOWN);
  EXPECT_EQ(data.cooling_devices.at(0).type, CoolingType::COMPONENT);
  EXPECT_THAT(Notices(), IsEmpty());
}

TEST_F(LinuxThermalTypesTest, AFileWithErrorsIsReportedLineByLineAndChangesNothing) {
  machine_.Add("thermal_zone0", {{"type", "acpitz\n"}, {"temp", "30000\n"}});
  const std::string file = FileWith(
      "temperature SKIN acpitz\n"
      "temperature WARM acpitz\n"
      "temperature BCL_VOLTAGE acpitz\n"
      "cooling SKIN acpitz\n"
      "heating FAN acpitz\n"
      "temperature CPU  \n"
      "cooling\n"
      "temperature CPU a\x01z\n");
  Start(file);
  EXPECT_THAT(
      Notices(),
      ElementsAre(file + ":2: \"WARM\" is not a temperature type",
                  file + ":3: \"BCL_VOLTAGE\" is not a temperature type",
                  file + ":4: \"SKIN\" is not a cooling device type",
                  file + ":5: unknown keyword \"heating\", use \"temperature\" or \"cooling\"",
                  file + ":6: the pattern is missing",
                  file + ":7: \"\" is not a cooling device type",
                  file + ":8: \"a?z\" has unprintable characters"));
  EXPECT_EQ(thermal_->data().temperatures.at(0).type, TemperatureType::UNKNOWN);
}

TEST_F(LinuxThermalTypesTest, AFileThatCannotBeReadIsReported) {
  ThermalTypes types;
  EXPECT_THAT(types.Load("/nowhere/types"),
              ElementsAre("/nowhere/types: No such file or directory"));
  EXPECT_THAT(types.Load("/"), ElementsAre("/: Is a directory"));
}

}  // namespace
}  // namespace norvik::qel
