// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The Linux machine's sensors, on a fake sysfs made for each test.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "clients.h"
#include "device_files.h"
#include "iio_channels.h"
#include "linux_machine.h"
#include "quorvel.h"
#include "quorvel/fake/deliveries.h"
#include "quorvel/linux_machine/sensors.h"
#include "waiting.h"

namespace norvik::qel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;

constexpr int kProximity = ASENSOR_TYPE_PROXIMITY;

// In millimetres, and 10 of them off.
const Files kRangefinder = {{"name", "tof\n"},
                            {"in_proximity_raw", "62\n"},
                            {"in_proximity_offset", "-10\n"},
                            {"in_proximity_scale", "0.001000000\n"}};
// The nearer, the higher.
const Files kNearnessSensor = {
    {"name", "glow\n"}, {"in_proximity_raw", "199\n"}, {"in_proximity_nearlevel", "200\n"}};
// A laptop's: in degrees, of which two more that are no hinge's.
const Files kHingeSensor = {
    {"name", "hinge\n"},
    {"in_angl0_raw", "90\n"},
    {"in_angl0_label", "hinge\n"},
    {"in_angl1_raw", "33\n"},
    {"in_angl1_label", "screen\n"},
    {"in_angl2_raw", "44\n"},
    {"in_angl2_label", "keyboard"},
    {"in_angl_scale", "0.017453293\n"},
    {"in_angl_offset", "0\n"},
};

class LinuxSensorTest : public testing::Test {
 protected:
  void SetUp() override {
    machine_ = std::make_unique<Machine>("iio");
    // Of a real machine's directories only those exist that hold a device.
    ASSERT_FALSE(std::filesystem::exists("/sys/kernel")) << "run this under umockdev-wrapper";
    InitSensorInfo(&handle_);
  }
  void TearDown() override {
    DeinitSensorInfo(&handle_);
    sensors_.Stop();
  }

  int RegisterProximity() {
    return RegisterProximitySensorCallback(handle_, 1, Client<0>, &proximity_);
  }
  int RegisterHinge() { return RegisterHingeAngleSensorCallback(handle_, 1, Client<1>, &hinge_); }

  // What a client is told until it is told this. The first is often 0, from before any reading.
  static std::vector<int> Until(Seen<Call>& seen, int value) {
    std::vector<int> values;
    while (const std::optional<Call> call = seen.Take()) {
      values.push_back(call->value);
      if (call->value == value) return values;
    }
    ADD_FAILURE() << "no " << value;
    return values;
  }

  // What people have been told since they were last asked.
  std::vector<std::string> Notices() {
    const std::string marker = "iio:device" + std::to_string(++marker_);
    machine_->Add(marker, {{"label", "\n"}});
    return notices_.Until(marker + "/label: empty");
  }

  std::unique_ptr<Machine> machine_;
  NoticeListener notices_;
  Seen<Call> proximity_, hinge_;
  linux_machine::Sensors sensors_{
      notices_.observer(), linux_machine::SensorSettings{.period = std::chrono::milliseconds(2)}};
  void* handle_ = nullptr;
  int marker_ = 9000;
};

TEST_F(LinuxSensorTest, ALaptopsHingeIsToldInWholeDegrees) {
  machine_->Add("iio:device0", kHingeSensor);
  sensors_.Start();
  ASSERT_EQ(RegisterHinge(), 0);
  Until(hinge_, 90);
  // Every whole number of degrees comes as itself, though the scale is cut off.
  for (const int degrees : {0, 1, 57, 179, 180, 359, 360}) {
    machine_->Set("iio:device0", "in_angl0_raw", std::to_string(degrees) + "\n");
    Until(hinge_, degrees);
  }
  EXPECT_EQ(RegisterProximity(), -ENOSYS);
  EXPECT_THAT(Notices(), ElementsAre("this machine has no proximity sensor"));
}

TEST_F(LinuxSensorTest, ADistanceIsToldInCentimetres) {
  machine_->Add("iio:device0", kRangefinder);
  sensors_.Start();
  ASSERT_EQ(RegisterProximity(), 0);
  Until(proximity_, 5);  // 5.2 cm
  machine_->Set("iio:device0", "in_proximity_raw", "1510\n");
  Until(proximity_, 150);
  machine_->Set("iio:device0", "in_proximity_scale", "0.002\n");
  Until(proximity_, 300);
}

TEST_F(LinuxSensorTest, NearnessWithoutAUnitIsNearOrFar) {
  machine_->Add("iio:device0", kNearnessSensor);
  sensors_.Start();
  ASSERT_EQ(RegisterProximity(), 0);
  Until(proximity_, 5);
  for (int round = 0; round < 2; ++round) {
    machine_->Set("iio:device0", "in_proximity_raw", "200\n");
    Until(proximity_, 0);
    machine_->Set("iio:device0", "in_proximity_raw", "0\n");
    Until(proximity_, 5);
  }
}

struct SensorCase {
  const char* test;
  Files files;
  std::optional<float> proximity;
  std::optional<float> hinge;
  std::vector<std::string> faults;
  friend std::ostream& operator<<(std::ostream& os, const SensorCase& c) { return os << c.test; }
};

class LinuxChannelTest : public testing::TestWithParam<SensorCase> {};

TEST_P(LinuxChannelTest, IsFoundAndMeasuredOrDoesNotCount) {
  Machine machine("iio");
  machine.Add("iio:device0", GetParam().files);
  std::vector<std::string> listed;
  ASSERT_EQ(linux_machine::ListDevices({"iio"}, &listed), 0);
  linux_machine::FoundChannels found = linux_machine::FindChannels(listed);
  std::vector<linux_machine::Fault>& faults = found.faults;
  EXPECT_EQ(found.proximity ? Measure(*found.proximity, &faults) : std::nullopt,
            GetParam().proximity);
  EXPECT_EQ(found.hinge ? Measure(*found.hinge, &faults) : std::nullopt, GetParam().hinge);
  std::vector<std::string> told;
  for (const linux_machine::Fault& fault : faults) {
    EXPECT_EQ(fault.device, "iio:device0");
    told.push_back(fault.file + ": " + fault.what);
  }
  EXPECT_EQ(told, GetParam().faults);
}

INSTANTIATE_TEST_SUITE_P(
    , LinuxChannelTest,
    testing::Values(
        SensorCase{"Processed", {{"in_proximity_input", "0.25\n"}}, 25, {}, {}},
        SensorCase{"Numbered",
                   {{"in_proximity10_raw", "10"},
                    {"in_proximity2_raw", "20"},
                    {"in_proximity_scale", "0.01"},
                    {"in_proximity2_scale", "0.001"}},
                   2,
                   {},
                   {}},
        SensorCase{"BeforeADisplay", With(kRangefinder, {{"label", "front"}}), 5.2f, {}, {}},
        SensorCase{
            "AtAnAntenna", With(kRangefinder, {{"label", "proximity-wifi-left\n"}}), {}, {}, {}},
        SensorCase{
            "NobodyKnowsWhere", With(kRangefinder, {{"label", "\n"}}), {}, {}, {"label: empty"}},
        SensorCase{
            "APersonIsThere",
            {{"name", "prox"}, {"in_proximity_raw", "1"}, {"in_proximity_scale", "1.000000"}},
            0,
            {},
            {}},
        SensorCase{"NoPersonIsThere",
                   {{"name", "prox"}, {"in_proximity0_raw", "0"}, {"in_proximity_scale", "1"}},
                   5,
                   {},
                   {}},
        SensorCase{"WithoutUnit",
                   {{"in_proximity_raw", "17"}},
                   {},
                   {},
                   {"in_proximity_raw: unknown unit: no nearlevel file and no scale file"}},
        SensorCase{
            "LevelBeforeScale", With(kNearnessSensor, {{"in_proximity_scale", "1"}}), 5, {}, {}},
        SensorCase{"EmptyRaw",
                   With(kRangefinder, {{"in_proximity_raw", "\n"}}),
                   {},
                   {},
                   {"in_proximity_raw: empty"}},
        SensorCase{"InfiniteRaw",
                   With(kRangefinder, {{"in_proximity_raw", "inf"}}),
                   {},
                   {},
                   {"in_proximity_raw: \"inf\" is not a number"}},
        SensorCase{"NoNumber",
                   With(kRangefinder, {{"in_proximity_raw", "nan"}}),
                   {},
                   {},
                   {"in_proximity_raw: \"nan\" is not a number"}},
        SensorCase{"RawWithUnit",
                   With(kRangefinder, {{"in_proximity_raw", "62 mm"}}),
                   {},
                   {},
                   {"in_proximity_raw: \"62 mm\" is not a number"}},
        SensorCase{"ZeroScale",
                   With(kRangefinder, {{"in_proximity_scale", "0.0"}}),
                   {},
                   {},
                   {"in_proximity_scale: invalid scale 0"}},
        SensorCase{"TextOffset",
                   With(kRangefinder, {{"in_proximity_offset", "?"}}),
                   {},
                   {},
                   {"in_proximity_offset: \"?\" is not a number"}},
        SensorCase{"BehindTheDevice",
                   With(kRangefinder, {{"in_proximity_raw", "5"}}),
                   {},
                   {},
                   {"in_proximity: -0.5 cm is not within 0 to 10000"}},
        SensorCase{"OnTheMoon",
                   With(kRangefinder, {{"in_proximity_raw", "384400000000"}}),
                   {},
                   {},
                   {"in_proximity: 38439999999.0 cm is not within 0 to 10000"}},
        SensorCase{"TextLevel",
                   With(kNearnessSensor, {{"in_proximity_nearlevel", "close"}}),
                   {},
                   {},
                   {"in_proximity_nearlevel: \"close\" is not a number"}},
        SensorCase{"HingeByTheDevicesLabel",
                   {{"label", "hinge\n"}, {"in_angl_raw", "1"}, {"in_angl_scale", "0.5"}},
                   {},
                   28.6f,
                   {}},
        SensorCase{"SomeOtherAngle", {{"in_angl_raw", "1"}, {"in_angl_scale", "0.5"}}, {}, {}, {}},
        SensorCase{"ALidOfAChromebook",
                   {{"name", "cros-ec-lid-angle\n"}, {"in_angl_raw", "118"}},
                   {},
                   118,
                   {}},
        SensorCase{"ALidWhoseAngleIsUnreliable",
                   {{"name", "cros-ec-lid-angle\n"}, {"in_angl_raw", "500"}},
                   {},
                   {},
                   {"in_angl: 500.0 degrees is not within 0 to 360"}},
        SensorCase{"HingeWithoutUnit",
                   {{"label", "hinge"}, {"in_angl_raw", "1"}},
                   {},
                   {},
                   {"in_angl_raw: unknown unit: no scale file"}},
        SensorCase{"MoreThanATurn",
                   With(kHingeSensor, {{"in_angl0_raw", "361"}}),
                   {},
                   {},
                   {"in_angl0: 361.0 degrees is not within 0 to 360"}}),
    [](const auto& info) { return std::string(info.param.test); });

TEST_F(LinuxSensorTest, NothingIsMeasuredWhileNoSensorIsEnabled) {
  machine_->Add("iio:device0", kRangefinder);
  // Whoever measures it is told so.
  machine_->Add("iio:device1", With(kHingeSensor, {{"in_angl0_raw", "wide\n"}}));
  sensors_.Start();
  EXPECT_THAT(Notices(), IsEmpty());
  EXPECT_EQ(sensors_.measurement_count(), 0) << "to find a sensor is not to measure";
  ASSERT_EQ(RegisterProximity(), 0);
  EXPECT_TRUE(Eventually([&] { return sensors_.measurement_count() > 5; }));
  EXPECT_THAT(Notices(), IsEmpty()) << "nobody has enabled the other";

  ASSERT_EQ(DeregisterProximitySensorCallback(handle_, 1), 0);
  ASSERT_EQ(sensors_.listeners(kProximity), 0);
  Notices();  // a measurement that was under way has ended
  const int64_t idle = sensors_.measurement_count();
  for (int i = 0; i < 20; ++i) Notices();
  EXPECT_EQ(sensors_.measurement_count(), idle);
}

TEST_F(LinuxSensorTest, SourcesTellWhatTheSensorsAreMadeOf) {
  machine_->Add("iio:device0", {{"name", "cros-ec-lid-angle\n"}, {"in_angl_raw", "118\n"}});
  machine_->Add("iio:device1",
                {{"name", "prox\n"}, {"in_proximity_raw", "1\n"}, {"in_proximity_scale", "1\n"}});
  sensors_.Start();
  ASSERT_EQ(RegisterHinge(), 0);
  Until(hinge_, 118);
  ASSERT_EQ(RegisterProximity(), 0);
  machine_->Set("iio:device1", "in_proximity_raw", "0\n");
  Until(proximity_, 5);
  EXPECT_THAT(Notices(), ElementsAre("iio:device1: tells whether a person is there, no distance: "
                                     "near or far"));
  const auto sources = sensors_.sources();
  ASSERT_EQ(sources.size(), 2u);
  EXPECT_EQ(sources[0].reading, linux_machine::SensorSource::Reading::kPresentOrAway);
  EXPECT_EQ(sources[0].maximum, 5);
  EXPECT_EQ(sources[1].name, "cros-ec-lid-angle");
  EXPECT_EQ(sources[1].maximum, 360);
}

TEST_F(LinuxSensorTest, ASensorThatIsEnabledAgainDoesNotTellWhatWas) {
  machine_->Add("iio:device0", kRangefinder);
  sensors_.Start();
  ASSERT_EQ(RegisterProximity(), 0);
  Until(proximity_, 5);
  ASSERT_EQ(DeregisterProximitySensorCallback(handle_, 1), 0);
  machine_->Set("iio:device0", "in_proximity_raw", "\n");

  void* late = nullptr;
  InitSensorInfo(&late);
  Seen<Call> seen;
  EXPECT_EQ(RegisterProximitySensorCallback(late, 1, Client<0>, &seen), 0);
  EXPECT_THAT(Notices(), IsSupersetOf({"iio:device0/in_proximity_raw: empty"}));
  machine_->Set("iio:device0", "in_proximity_raw", "90\n");
  for (const int value : Until(seen, 8)) EXPECT_NE(value, 5);
  DeinitSensorInfo(&late);
}

TEST_F(LinuxSensorTest, SensorsComeAndGo) {
  sensors_.Start();
  EXPECT_EQ(RegisterHinge(), -ENOSYS);
  EXPECT_THAT(Notices(), ElementsAre("this machine has no proximity sensor",
                                     "this machine has no hinge angle sensor"));
  machine_->Add("iio:device3", kRangefinder);
  Notices();  // the event has been heard by now
  ASSERT_EQ(RegisterProximity(), 0);
  Until(proximity_, 5);

  machine_->Remove("iio:device3");
  EXPECT_THAT(Notices(), IsSupersetOf({"this machine has no proximity sensor"}));
  // Another device serves the client that has been there all the time.
  machine_->Add("iio:device4", With(kRangefinder, {{"in_proximity_raw", "110\n"}}));
  Until(proximity_, 10);
  // The first by number counts.
  machine_->Add("iio:device2", With(kRangefinder, {{"in_proximity_raw", "210\n"}}));
  Until(proximity_, 20);
}

TEST_F(LinuxSensorTest, ASensorThatVanishesBeforeItIsMeasuredTellsNothing) {
  machine_->Add("iio:device0", kRangefinder);
  machine_->Add("iio:device1", With(kRangefinder, {{"name", "second\n"}}));
  std::vector<std::string> listed;
  ASSERT_EQ(linux_machine::ListDevices({"iio"}, &listed), 0);
  const auto first = linux_machine::FindChannels(listed).proximity;
  ASSERT_TRUE(first);
  EXPECT_EQ(first->name, "tof");
  machine_->Vanish("iio:device0");
  std::vector<linux_machine::Fault> faults;
  EXPECT_EQ(Measure(*first, &faults), std::nullopt);
  ASSERT_EQ(faults.size(), 1u);
  EXPECT_EQ(faults[0].what, "vanished while it was read");
  const linux_machine::FoundChannels found = linux_machine::FindChannels(listed);
  ASSERT_TRUE(found.proximity);
  EXPECT_EQ(found.proximity->name, "second");
}

TEST_F(LinuxSensorTest, AFaultIsToldOnceAndEndsWhenTheFileIsGood) {
  machine_->Add("iio:device0", With(kHingeSensor, {{"in_angl0_raw", "wide\n"}}));
  sensors_.Start();
  ASSERT_EQ(RegisterHinge(), 0);
  const int64_t before = sensors_.measurement_count();
  ASSERT_TRUE(Eventually([&] { return sensors_.measurement_count() > before + 3; }));
  EXPECT_THAT(Notices(), ElementsAre("this machine has no proximity sensor",
                                     "iio:device0/in_angl0_raw: \"wide\" is not a number"));
  machine_->Set("iio:device0", "in_angl0_raw", "120\n");
  Until(hinge_, 120);
}

}  // namespace
}  // namespace norvik::qel
