// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The Linux machine's sensors, on a fake sysfs made for each test.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "clients.h"
#include "linux_machine.h"
#include "quorvel.h"
#include "quorvel/linux_machine/sensors.h"
#include "waiting.h"

namespace norvik::qel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kProximity = ASENSOR_TYPE_PROXIMITY;

// A sensor that reports millimetres, with an offset of 10.
const Files kRangefinder = {{"name", "tof\n"},
                            {"in_proximity_raw", "62\n"},
                            {"in_proximity_offset", "-10\n"},
                            {"in_proximity_scale", "0.001000000\n"}};
class LinuxSensorTest : public LinuxFixture {
 protected:
  LinuxSensorTest() : LinuxFixture("iio", "iio:device900", "label") { InitSensorInfo(&handle_); }
  ~LinuxSensorTest() override {
    DeinitSensorInfo(&handle_);
    sensors_.Stop();
  }

  int RegisterProximity() {
    return RegisterProximitySensorCallback(handle_, 1, Client<0>, &proximity_);
  }
  int RegisterHinge() { return RegisterHingeAngleSensorCallback(handle_, 1, Client<1>, &hinge_); }

  Seen<Call> proximity_, hinge_;
  linux_machine::Sensors sensors_{
      observer(), linux_machine::SensorSettings{.period = std::chrono::milliseconds(2)}};
  void* handle_ = nullptr;
};

TEST_F(LinuxSensorTest, AHingeIsReportedInWholeDegrees) {
  machine_.LoadDevice(QUORVEL_TEST_MACHINES "/reference.umockdev", "iio:device1");
  sensors_.Start();
  ASSERT_EQ(RegisterHinge(), 0);
  EXPECT_TRUE(hinge_.TakeUntil({1, 90}));
  // Whole degrees arrive unchanged although the kernel truncates the scale.
  for (const int degrees : {0, 1, 57, 179, 180, 359, 360}) {
    machine_.Set("iio:device1", "in_angl0_raw", std::to_string(degrees) + "\n");
    EXPECT_TRUE(hinge_.TakeUntil({1, degrees}));
  }
  EXPECT_EQ(RegisterProximity(), -ENOSYS);
  EXPECT_THAT(Notices(), ElementsAre("this machine has no proximity sensor"));
}

TEST_F(LinuxSensorTest, OnlyEnabledSensorsAreMeasuredAndAFaultIsReportedOnce) {
  machine_.Load(QUORVEL_TEST_MACHINES "/reference.umockdev");
  machine_.Set("iio:device1", "in_angl0_raw", "wide\n");
  sensors_.Start();
  EXPECT_THAT(Notices(), IsEmpty());
  EXPECT_EQ(sensors_.measurement_count(), 0) << "found without measuring";
  ASSERT_EQ(RegisterProximity(), 0);
  EXPECT_TRUE(Eventually([&] { return sensors_.measurement_count() > 5; }));
  EXPECT_THAT(Notices(), IsEmpty()) << "the other is not enabled";

  ASSERT_EQ(DeregisterProximitySensorCallback(handle_, 1), 0);
  ASSERT_EQ(sensors_.listeners(kProximity), 0);
  Notices();  // a measurement that was under way has ended
  const int64_t idle = sensors_.measurement_count();
  for (int i = 0; i < 20; ++i) Notices();
  EXPECT_EQ(sensors_.measurement_count(), idle);

  ASSERT_EQ(RegisterHinge(), 0);
  EXPECT_TRUE(Eventually([&] { return sensors_.measurement_count() > idle + 3; }));
  EXPECT_THAT(Notices(), ElementsAre("iio:device1/in_angl0_raw: \"wide\" is not a number"));
  machine_.Set("iio:device1", "in_angl0_raw", "120\n");
  EXPECT_TRUE(hinge_.TakeUntil({1, 120}));
}

TEST_F(LinuxSensorTest, SourcesDescribeTheSensors) {
  machine_.Add("iio:device0", {{"name", "cros-ec-lid-angle\n"}, {"in_angl_raw", "118\n"}});
  machine_.Add("iio:device1",
               {{"name", "prox\n"}, {"in_proximity_raw", "1\n"}, {"in_proximity_scale", "1\n"}});
  sensors_.Start();
  EXPECT_THAT(Notices(), ElementsAre("iio:device1: tells whether a person is there, no distance: "
                                     "near or far"));
  const auto sources = sensors_.sources();
  ASSERT_EQ(sources.size(), 2u);
  EXPECT_EQ(sources[0].reading, linux_machine::SensorSource::Reading::kPresentOrAway);
  EXPECT_EQ(sources[0].maximum, 5);
  EXPECT_EQ(sources[1].name, "cros-ec-lid-angle");
  EXPECT_EQ(sources[1].maximum, 360);
}

TEST_F(LinuxSensorTest, ASensorThatIsEnabledAgainForgetsItsOldReading) {
  machine_.Add("iio:device0", kRangefinder);
  sensors_.Start();
  ASSERT_EQ(RegisterProximity(), 0);
  EXPECT_TRUE(proximity_.TakeUntil({0, 5}));
  ASSERT_EQ(DeregisterProximitySensorCallback(handle_, 1), 0);
  machine_.Set("iio:device0", "in_proximity_raw", "\n");

  void* late = nullptr;
  InitSensorInfo(&late);
  Seen<Call> seen;
  EXPECT_EQ(RegisterProximitySensorCallback(late, 1, Client<0>, &seen), 0);
  EXPECT_THAT(Notices(), testing::IsSupersetOf({"iio:device0/in_proximity_raw: empty"}));
  machine_.Set("iio:device0", "in_proximity_raw", "90\n");
  std::optional<Call> call;
  while ((call = seen.Take()) && call->value != 8) EXPECT_NE(call->value, 5);
  EXPECT_TRUE(call);
  DeinitSensorInfo(&late);
}

TEST_F(LinuxSensorTest, SensorsComeAndGo) {
  sensors_.Start();
  EXPECT_EQ(RegisterHinge(), -ENOSYS);
  EXPECT_THAT(Notices(), ElementsAre("this machine has no proximity sensor",
                                     "this machine has no hinge angle sensor"));
  machine_.Add("iio:device3", kRangefinder);
  Notices();  // the event has been handled by now
  ASSERT_EQ(RegisterProximity(), 0);
  EXPECT_TRUE(proximity_.TakeUntil({0, 5}));

  machine_.Remove("iio:device3");
  Notices();  // the event has been handled by now
  // Another device serves the registered client.
  machine_.Add("iio:device4", With(kRangefinder, {{"in_proximity_raw", "110\n"}}));
  EXPECT_TRUE(proximity_.TakeUntil({0, 10}));
  // Of several devices, the one with the lowest number is used.
  machine_.Add("iio:device2", With(kRangefinder, {{"in_proximity_raw", "210\n"}}));
  EXPECT_TRUE(proximity_.TakeUntil({0, 20}));
}

}  // namespace
}  // namespace norvik::qel
