// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Readings and clients while the sensor service runs.
#include "sensor/sensor_info.h"

#include <limits>

#include "sensor_fixture.h"

namespace norvik::qel {
namespace {

using audio::SensorInfo;

class SensorInfoTest : public SensorFixture {
 protected:
  SensorInfoTest() { hub_.Start(); }
};

TEST_F(SensorInfoTest, ProximityIsDispatchedBeforeTheHingeAngle) {
  ASSERT_EQ(RegisterProximitySensorCallback(handle_, 9, SlowClient::OnValue, &slow_), 0);
  ASSERT_EQ(slow_.seen.Take(), 0);
  // Both calls become due during the first call, the hinge angle's before the proximity's.
  ASSERT_EQ(RegisterHingeAngleSensorCallback(handle_, 1, Client<1>, &seen_), 0);
  ASSERT_EQ(RegisterProximitySensorCallback(handle_, 0, Client<0>, &seen_), 0);
  slow_.gate.Open();
  EXPECT_THAT(seen_.TakeMany(2), ElementsAre(Call{0, 0}, Call{1, 0}));
}

TEST_F(SensorInfoTest, OneDispatchCallsAnyNumberOfClients) {
  ASSERT_EQ(RegisterProximitySensorCallback(handle_, 9, SlowClient::OnValue, &slow_), 0);
  ASSERT_EQ(slow_.seen.Take(), 0);
  std::vector<Call> calls;
  for (int id = 100; id < 140; ++id) {
    ASSERT_EQ(RegisterProximitySensorCallback(handle_, id, Client<0>, &seen_), 0);
    calls.push_back({0, 0});
  }
  slow_.gate.Open();
  EXPECT_EQ(seen_.TakeMany(calls.size()), calls);
}

TEST_F(SensorInfoTest, ClientsAreKnownByIdAndThePollLastsAsLongAsTheyDo) {
  RegisterHinge(1);
  RegisterProximity(1);
  EXPECT_EQ(RegisterProximitySensorCallback(handle_, 1, Client<0>, &seen_), -EINVAL);
  EXPECT_EQ(DeregisterProximitySensorCallback(handle_, 3), -EINVAL);
  EXPECT_THAT(Warnings(), ElementsAre("RegisterCallback: id(1) already existed!",
                                      "DeregisterCallback: id(3) didn't register!"));
  ASSERT_TRUE(hub_.last_request(kProximity));
  EXPECT_EQ(hub_.last_request(kProximity)->period_us, kProximityMinDelayUs);
  EXPECT_EQ(hub_.last_request(kProximity)->max_latency_us, 0) << "no batching";
  EXPECT_EQ(DeregisterProximitySensorCallback(handle_, 1), 0);
  EXPECT_EQ(log_.Count("DeregisterCallback: remove id(1)"), 1);
  // Both sensors share one poll.
  EXPECT_EQ(log_.Count("EnableSensor: poll started."), 1);
  EXPECT_EQ(log_.Count("DisableSensor: poll stopped."), 0);
  EXPECT_EQ(DeregisterHingeAngleSensorCallback(handle_, 1), 0);
  EXPECT_EQ(log_.Count("DisableSensor: poll stopped."), 1);
}

// Repeated, because the end of a poll may overlap with the start of the next one at any point.
TEST_F(SensorInfoTest, ThePollEndsAndStartsAgainWithTheSensors) {
  RegisterProximity();
  for (int round = 1; round <= 300; ++round) {
    ASSERT_EQ(DeregisterProximitySensorCallback(handle_, 0), 0);
    ASSERT_EQ(RegisterProximitySensorCallback(handle_, 0, Client<0>, &seen_), 0);
    hub_.Report(kProximity, static_cast<float>(round));
    ASSERT_TRUE(seen_.TakeUntil({0, round})) << "round " << round;
  }
}

TEST_F(SensorInfoTest, EventsOfOtherSensorsCallNoClient) {
  RegisterProximity();
  const auto event = [](int type, float value) {
    ASensorEvent event = {};
    event.type = type;
    event.data[0] = value;
    return event;
  };
  const ASensorEvent stray = event(ASENSOR_TYPE_LIGHT, 100);
  hub_.SendUnasked({stray, event(kProximity, 2), stray});
  EXPECT_EQ(seen_.Take(), (Call{0, 2}));
  EXPECT_TRUE(log_.WaitFor("GetAudioSensorType: unknown sensor 5", 2));
  // The reading of a sensor without clients is kept, too.
  hub_.SendUnasked({event(kHinge, 45)});
  hub_.Report(kProximity, 3);
  EXPECT_EQ(seen_.Take(), (Call{0, 3}));
  EXPECT_THAT(Dump(), HasSubstr("active:F, data:45"));
  // Calls that are due from an earlier event of the same delivery are still made.
  hub_.SendUnasked({event(kProximity, 4), event(kHinge, 45)});
  EXPECT_EQ(seen_.Take(), (Call{0, 4}));
  // The first number above the range of int.
  hub_.Report(kProximity, 2147483648.0F);
  EXPECT_EQ(seen_.Take(), (Call{0, std::numeric_limits<int>::max()}));
}

TEST_F(SensorInfoTest, AFailedPollOrReadIsRepeated) {
  hub_.on(SensorFunction::kPollOnce).Then({.status = ALOOPER_POLL_ERROR}, 5);
  RegisterProximity();
  ASSERT_TRUE(hub_.on(SensorFunction::kPollOnce).WaitForCalls(6));
  EXPECT_LE(Calls(SensorFunction::kGetEvents), 1);  // the read before the first wait
  hub_.Report(kProximity, 5);
  EXPECT_EQ(seen_.Take(), (Call{0, 5}));
  const int reads = Calls(SensorFunction::kGetEvents);
  hub_.on(SensorFunction::kGetEvents).Then({.status = -EAGAIN});
  hub_.Report(kProximity, 6);
  ASSERT_TRUE(hub_.on(SensorFunction::kGetEvents).WaitForCalls(reads + 1));
  // The next event wakes the poll, which then reads both.
  hub_.Report(kProximity, 7);
  EXPECT_EQ(seen_.Take(), (Call{0, 7}));
}

// The platform currently returns 0 when it enables a sensor. Any other result is passed on to the
// caller.
TEST_F(SensorInfoTest, AnotherAnswerThanZeroIsReturnedAndKeepsNoClient) {
  hub_.on(SensorFunction::kRegisterSensor).Then({.status = -5});
  EXPECT_EQ(RegisterProximitySensorCallback(handle_, 0, Client<0>, &seen_), -5);
  EXPECT_THAT(Log(ANDROID_LOG_ERROR),
              ElementsAre("EnableSensor:Failed to register sensor PROXIMITY"));
  EXPECT_EQ(DeregisterProximitySensorCallback(handle_, 0), -EINVAL);
  hub_.on(SensorFunction::kRegisterSensor).Then({.status = 7});
  EXPECT_EQ(RegisterProximitySensorCallback(handle_, 0, Client<0>, &seen_), 7);
  EXPECT_THAT(Dump(), testing::AllOf(HasSubstr("active:T"), Not(HasSubstr("client id"))));
  EXPECT_EQ(RegisterProximitySensorCallback(handle_, 0, Client<0>, &seen_), -EINVAL);
  EXPECT_THAT(Log(), Contains("EnableSensor: already enabled."));
}

TEST_F(SensorInfoTest, TheAnswerToADisablingIsReturnedAndAnErrorLeavesTheSensorEnabled) {
  RegisterHinge();
  RegisterProximity();
  hub_.on(SensorFunction::kDisableSensor).Then({.status = 7});
  hub_.on(SensorFunction::kDisableSensor).Then({.status = -22});
  EXPECT_EQ(DeregisterHingeAngleSensorCallback(handle_, 0), 7);
  EXPECT_EQ(DeregisterProximitySensorCallback(handle_, 0), -22);
  EXPECT_THAT(Log(ANDROID_LOG_ERROR),
              ElementsAre("DisableSensor: Failed to deregister sensor PROXIMITY"));
  EXPECT_THAT(Dump(), testing::AllOf(HasSubstr("  Poll :T\n"), HasSubstr("active:F")));
  EXPECT_EQ(DeregisterProximitySensorCallback(handle_, 0), -EINVAL);
  EXPECT_EQ(RegisterProximitySensorCallback(handle_, 0, Client<0>, &seen_), -EINVAL);
}

TEST_F(SensorInfoTest, TheDumpShowsSensorsAndClients) {
  RegisterHinge(-7);
  hub_.Report(kHinge, 90);
  ASSERT_EQ(seen_.Take(), (Call{1, 90}));
  ASSERT_EQ(RegisterHingeAngleSensorCallback(handle_, 8, SlowClient::OnValue, &slow_), 0);
  ASSERT_EQ(slow_.seen.Take(), 90);
  hub_.Report(kHinge, 91);
  const std::string expected =
      "SensorInfo:\n"
      "  Poll :T\n"
      "  Sensor: PROXIMITY\n"
      "    initialized:F active:F, data:0\n"
      "  Sensor: HINGE_ANGLE\n"
      "    initialized:T active:T, data:91\n"
      "    client id:-7 need_to_update:T\n"
      "    client id:8 need_to_update:T\n";
  EXPECT_TRUE(Eventually([&] { return Dump() == expected; })) << Dump();
}

// The SensorInfo class, which C++ callers may use without the C functions.
class SensorObjectTest : public SensorFixture {
 protected:
  int Add(SensorInfo::AudioSensorType type) {
    return object_.RegisterCallback(
        type, {.need_to_update = true, .id = 1, .callback = Client<1>, .cookie = &seen_});
  }

  SensorInfo object_;
};

TEST_F(SensorObjectTest, AnUnknownTypeHasAWarningForEachQuestion) {
  EXPECT_EQ(object_.GetASensorTyep(SensorInfo::UNKNOWN), -1);
  EXPECT_EQ(object_.GetAudioSensorType(-1), SensorInfo::UNKNOWN);
  EXPECT_STREQ(object_.GetASensorString(SensorInfo::UNKNOWN), "Unknown");
  EXPECT_THAT(Warnings(), ElementsAre("GetASensorTyep: unknown audio sensor 2",
                                      "GetAudioSensorType: unknown sensor -1",
                                      "GetASensorString: unknown audio sensor 2"));
}

TEST_F(SensorObjectTest, AnObjectWithoutItsThreadsRefusesClients) {
  EXPECT_EQ(Add(SensorInfo::PROXIMITY), -ENOSYS);
  EXPECT_THAT(Warnings(), ElementsAre("EnableSensor: system isn't initialized."));
  object_.Deinitialize();
}

TEST_F(SensorObjectTest, AnObjectThatIsInitializedAgainStartsEmpty) {
  ASSERT_TRUE(object_.Initialize());
  ASSERT_EQ(Add(SensorInfo::PROXIMITY), 0);
  ASSERT_EQ(Add(SensorInfo::HINGE_ANGLE), 0);
  object_.Deinitialize();

  hub_.Start();
  for (int life = 2; life <= 3; ++life) {
    ASSERT_TRUE(object_.Initialize());
    EXPECT_TRUE(object_.ReconnectToSensorService());
    EXPECT_EQ(Calls(SensorFunction::kCreateEventQueue), life - 2)
        << "no sensor waits for the service";
    EXPECT_EQ(Add(SensorInfo::HINGE_ANGLE), 0);
    ASSERT_TRUE(seen_.Take());
    hub_.Report({{.type = kProximity, .value = 1}, {.type = kHinge, .value = 90.F + life}});
    EXPECT_TRUE(seen_.TakeUntil({1, 90 + life}));
    EXPECT_EQ(hub_.listeners(kProximity), 0) << "no client of the first life";
    object_.Deinitialize();
  }
}

using SensorlessTest = HingelessFixture;

TEST_F(SensorlessTest, TheLastClientOfASensorThatWasGivenUpReceivesTheReason) {
  hub_.Start();
  hub_.on(SensorFunction::kCreateEventQueue).Then({.status = STATUS_UNKNOWN_ERROR});
  ASSERT_EQ(RegisterProximitySensorCallback(handle_, 0, Client<0>, &seen_), 0);
  // This registration makes the worker connect at once, for both sensors.
  look_ups().Then({.status = STATUS_UNKNOWN_ERROR});
  hub_.on(SensorFunction::kRegisterSensor).Then({.status = -5});
  ASSERT_EQ(RegisterHingeAngleSensorCallback(handle_, 0, Client<1>, &seen_), 0);
  ASSERT_TRUE(log_.WaitFor("ReconnectToSensorService: client should register proper sensor", 2));
  EXPECT_EQ(DeregisterProximitySensorCallback(handle_, 0), -EINVAL);
  EXPECT_EQ(log_.Count("DisableSensor: already disabled."), 1);
  EXPECT_EQ(DeregisterHingeAngleSensorCallback(handle_, 0), -ENOSYS);
  EXPECT_EQ(log_.Count("DisableSensor: already disabled."), 1);
  // The sensor was looked up only once.
  for (int i = 2; i <= 3; ++i) {
    EXPECT_EQ(RegisterHingeAngleSensorCallback(handle_, 0, Client<1>, &seen_), -ENOSYS);
    EXPECT_EQ(log_.Count("EnableSensor: sensor HINGE_ANGLE isn't supported."), i);
  }
  EXPECT_EQ(Calls(SensorFunction::kGetDefaultSensor), 2);
  EXPECT_EQ(Calls(SensorFunction::kDisableSensor), 0);
  EXPECT_EQ(log_.Count("EnableSensor: start to initialize sensor HINGE_ANGLE"), 1);
  EXPECT_EQ(log_.Count("EnableSensor: end to initialize sensor HINGE_ANGLE"), 1);
}

}  // namespace
}  // namespace norvik::qel
