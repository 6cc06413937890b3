// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Readings and clients, with the sensor service up.
#include "sensor/sensor_info.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "quorvel/fake/gate.h"
#include "sensor_fixture.h"

namespace norvik::qel {
namespace {

using audio::SensorInfo;
using fake::Outcome;
using fake::SensorFunction;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class SensorInfoTest : public SensorFixture {
 protected:
  SensorInfoTest() { hub_.Start(); }
};

TEST_F(SensorInfoTest, ReadingsAreCutOffTowardsZero) {
  RegisterProximityAndHearZero();
  RegisterHingeAndHearZero();
  hub_.Report(kProximity, 4.9F);
  EXPECT_EQ(seen_.Take(), (Call{0, 4}));
  hub_.Report(kProximity, 7.99F);
  EXPECT_EQ(seen_.Take(), (Call{0, 7}));
  hub_.Report(kHinge, 179.6F);
  EXPECT_EQ(seen_.Take(), (Call{1, 179}));
  hub_.Report(kHinge, -0.5F);
  EXPECT_EQ(seen_.Take(), (Call{1, 0}));
  hub_.Report(kHinge, -3.7F);
  EXPECT_EQ(seen_.Take(), (Call{1, -3}));
  // What no int can hold: the nearest one, and 0 for no number.
  hub_.Report(kHinge, 1e20F);
  EXPECT_EQ(seen_.Take(), (Call{1, INT_MAX}));
  hub_.Report(kHinge, NAN);
  EXPECT_EQ(seen_.Take(), (Call{1, 0}));
  hub_.Report(kHinge, -INFINITY);
  EXPECT_EQ(seen_.Take(), (Call{1, INT_MIN}));
}

TEST_F(SensorInfoTest, EveryReportIsDeliveredAlsoWhenTheReadingIsTheSame) {
  RegisterProximityAndHearZero();
  for (int i = 0; i < 3; ++i) {
    hub_.Report(kProximity, 5);
    EXPECT_EQ(seen_.Take(), (Call{0, 5}));
  }
}

TEST_F(SensorInfoTest, ANewClientIsToldTheLastReadingAtOnceAndNobodyElseIs) {
  RegisterProximityAndHearZero();
  hub_.Report(kProximity, 5);
  ASSERT_EQ(seen_.Take(), (Call{0, 5}));
  ASSERT_EQ(RegisterProximitySensorCallback(handle_, 1, Client<1>, &seen_), 0);
  EXPECT_EQ(seen_.Take(), (Call{1, 5}));
  hub_.Report(kProximity, 6);
  EXPECT_EQ(seen_.Take(), (Call{0, 6}));
  EXPECT_EQ(seen_.Take(), (Call{1, 6}));
}

TEST_F(SensorInfoTest, ASensorThatIsEnabledAgainBeginsWithTheHandlesLastReading) {
  RegisterProximityAndHearZero();
  hub_.Report(kProximity, 5);
  ASSERT_EQ(seen_.Take(), (Call{0, 5}));
  ASSERT_EQ(DeregisterProximitySensorCallback(handle_, 0), 0);
  hub_.Report(kProximity, 9);  // nobody hears it until the sensor is enabled again
  fake::HoldDeliveries hold(fake::Delivery::kOneway);
  ASSERT_EQ(RegisterProximitySensorCallback(handle_, 0, Client<0>, &seen_), 0);
  EXPECT_EQ(seen_.Take(), (Call{0, 5}));
  hold.Release();
  EXPECT_EQ(seen_.Take(), (Call{0, 9}));
}

// A client whose call lasts until the test lets it go.
struct SlowClient {
  std::shared_ptr<fake::Gate> gate = std::make_shared<fake::Gate>();
  Seen<int> seen;
  static void OnValue(int value, void* cookie) {
    auto& self = *static_cast<SlowClient*>(cookie);
    self.seen.Put(value);
    self.gate->Pass();
  }
};

TEST_F(SensorInfoTest, ReportsDuringACallFoldIntoOneCallWithTheLatest) {
  SlowClient slow;
  ASSERT_EQ(RegisterProximitySensorCallback(handle_, 0, SlowClient::OnValue, &slow), 0);
  ASSERT_EQ(slow.seen.Take(), 0);
  hub_.Report(kProximity, 1);
  hub_.Report({{.type = kProximity, .value = 2},
               {.type = kHinge, .value = 90},
               {.type = kProximity, .value = 3}});
  ASSERT_TRUE(Eventually([this] { return Dump().find("data:3") != std::string::npos; }));
  slow.gate->Open();
  EXPECT_EQ(slow.seen.Take(), 3);
  hub_.Report(kProximity, 4);
  EXPECT_EQ(slow.seen.Take(), 4);
  DeinitSensorInfo(&handle_);  // before the cookie goes
}

TEST_F(SensorInfoTest, AnIdIsTakenOncePerSensor) {
  RegisterProximityAndHearZero(5);
  EXPECT_EQ(RegisterProximitySensorCallback(handle_, 5, Client<2>, &seen_), -EINVAL);
  EXPECT_THAT(Log(ANDROID_LOG_WARN), ElementsAre("RegisterCallback: id(5) already existed!"));
  RegisterHingeAndHearZero(5);
  hub_.Report(kProximity, 1);
  EXPECT_EQ(seen_.Take(), (Call{0, 1}));
  hub_.Report(kHinge, 2);
  EXPECT_EQ(seen_.Take(), (Call{1, 2}));  // nothing of client 2 before it
}

TEST_F(SensorInfoTest, OnlyTheLastClientDisablesTheSensor) {
  EXPECT_EQ(DeregisterProximitySensorCallback(handle_, 3), -EINVAL);
  EXPECT_EQ(Count(ANDROID_LOG_WARN, "DeregisterCallback: id(3) didn't register!"), 1);
  RegisterProximityAndHearZero(1);
  for (int id = 2; id <= 3; ++id) {
    ASSERT_EQ(RegisterProximitySensorCallback(handle_, id, Client<0>, &seen_), 0);
  }
  EXPECT_EQ(DeregisterProximitySensorCallback(handle_, 4), -EINVAL);
  EXPECT_EQ(DeregisterProximitySensorCallback(handle_, 2), 0);
  EXPECT_EQ(hub_.listeners(kProximity), 1);
  const std::string dump = Dump();
  EXPECT_LT(dump.find("client id:1"), dump.find("client id:3"));
  EXPECT_EQ(DeregisterProximitySensorCallback(handle_, 1), 0);
  EXPECT_EQ(Calls(SensorFunction::kDisableSensor), 0);
  EXPECT_EQ(DeregisterProximitySensorCallback(handle_, 3), 0);
  EXPECT_EQ(hub_.listeners(kProximity), 0);
  EXPECT_EQ(Calls(SensorFunction::kRegisterSensor), 1);
  EXPECT_EQ(Calls(SensorFunction::kDisableSensor), 1);
  EXPECT_EQ(Count(ANDROID_LOG_DEBUG, "DeregisterCallback: remove id(3)"), 1);
}

TEST_F(SensorInfoTest, ASensorIsEnabledAtItsOwnPeriodWithoutBatching) {
  RegisterProximityAndHearZero();
  ASSERT_TRUE(hub_.last_request(kProximity));
  EXPECT_EQ(hub_.last_request(kProximity)->period_us, kProximityMinDelayUs);
  EXPECT_EQ(hub_.last_request(kProximity)->max_latency_us, 0);
}

TEST_F(SensorInfoTest, TwoSensorsShareOnePollLoop) {
  const auto poll_messages = [this] {
    std::vector<std::string> texts = Log(ANDROID_LOG_DEBUG);
    std::erase_if(texts, [](const auto& text) { return text.find("poll") == std::string::npos; });
    return texts;
  };
  RegisterProximityAndHearZero();
  RegisterHingeAndHearZero();
  ASSERT_EQ(DeregisterProximitySensorCallback(handle_, 0), 0);
  EXPECT_THAT(poll_messages(), ElementsAre("EnableSensor: poll started."));
  EXPECT_THAT(Dump(), HasSubstr("  Poll :T\n"));
  hub_.Report(kHinge, 90);
  EXPECT_EQ(seen_.Take(), (Call{1, 90}));
  ASSERT_EQ(DeregisterHingeAngleSensorCallback(handle_, 0), 0);
  EXPECT_THAT(poll_messages(),
              ElementsAre("EnableSensor: poll started.", "DisableSensor: poll stopped."));
  EXPECT_THAT(Dump(), HasSubstr("  Poll :F\n"));
}

TEST_F(SensorInfoTest, ProximityIsToldBeforeTheHingeAngle) {
  SlowClient slow;
  ASSERT_EQ(RegisterProximitySensorCallback(handle_, 9, SlowClient::OnValue, &slow), 0);
  ASSERT_EQ(slow.seen.Take(), 0);
  // Both are owed while the call lasts, the hinge angle first.
  ASSERT_EQ(RegisterHingeAngleSensorCallback(handle_, 1, Client<1>, &seen_), 0);
  ASSERT_EQ(RegisterProximitySensorCallback(handle_, 0, Client<0>, &seen_), 0);
  slow.gate->Open();
  EXPECT_EQ(seen_.Take(), (Call{0, 0}));
  EXPECT_EQ(seen_.Take(), (Call{1, 0}));
  DeinitSensorInfo(&handle_);  // before the cookie goes
}

// Hundreds of times, since the end of a poll and the start of the next may meet anywhere.
TEST_F(SensorInfoTest, ThePollEndsAndStartsAgainWithTheSensors) {
  RegisterProximityAndHearZero();
  for (int round = 1; round <= 300; ++round) {
    ASSERT_EQ(DeregisterProximitySensorCallback(handle_, 0), 0);
    ASSERT_EQ(RegisterProximitySensorCallback(handle_, 0, Client<0>, &seen_), 0);
    hub_.Report(kProximity, static_cast<float>(round));
    std::optional<Call> call;
    do {
      call = seen_.Take();
      ASSERT_TRUE(call) << "round " << round;
    } while (call->value != round);
  }
}

TEST_F(SensorInfoTest, AnEventOfAnotherTypeIsToldAndSkipped) {
  RegisterProximityAndHearZero();
  ASensorEvent stray = {};
  stray.type = ASENSOR_TYPE_LIGHT;
  stray.data[0] = 100;
  ASensorEvent event = stray;
  event.type = kProximity;
  event.data[0] = 2;
  hub_.SendUnasked({stray, event, stray});
  EXPECT_EQ(seen_.Take(), (Call{0, 2}));
  EXPECT_TRUE(Eventually(
      [this] { return Count(ANDROID_LOG_WARN, "GetAudioSensorType: unknown sensor 5") == 2; }));
  // An event of a sensor that nobody listens to is kept all the same.
  event.type = kHinge;
  event.data[0] = 45;
  hub_.SendUnasked({event});
  hub_.Report(kProximity, 3);
  EXPECT_EQ(seen_.Take(), (Call{0, 3}));
  EXPECT_THAT(Dump(), HasSubstr("active:F, data:45"));
  // And it does not make the library forget whom it owes a call.
  ASensorEvent near = event;
  near.type = kProximity;
  near.data[0] = 4;
  hub_.SendUnasked({near, event});
  EXPECT_EQ(seen_.Take(), (Call{0, 4}));
}

TEST_F(SensorInfoTest, AFailedPollReadsNothingAndGoesOn) {
  hub_.on(SensorFunction::kPollOnce).Then({.status = ALOOPER_POLL_ERROR}, 5);
  RegisterProximityAndHearZero();
  ASSERT_TRUE(hub_.on(SensorFunction::kPollOnce).WaitForCalls(6));
  EXPECT_LE(Calls(SensorFunction::kGetEvents), 1);  // the look before the first wait
  hub_.Report(kProximity, 5);
  EXPECT_EQ(seen_.Take(), (Call{0, 5}));
}

TEST_F(SensorInfoTest, ARefusedRegistrationKeepsNoClient) {
  hub_.on(SensorFunction::kRegisterSensor).Then({.status = -5});
  EXPECT_EQ(RegisterProximitySensorCallback(handle_, 0, Client<0>, &seen_), -5);
  EXPECT_THAT(Log(ANDROID_LOG_ERROR),
              ElementsAre("EnableSensor:Failed to register sensor PROXIMITY"));
  EXPECT_EQ(DeregisterProximitySensorCallback(handle_, 0), -EINVAL);
  RegisterProximityAndHearZero();
  hub_.Report(kProximity, 5);
  EXPECT_EQ(seen_.Take(), (Call{0, 5}));
}

// The platform answers 0 today; whatever else it may answer one day is for the caller to see.
TEST_F(SensorInfoTest, AnotherAnswerThanZeroIsPassedOnAndKeepsNoClient) {
  hub_.on(SensorFunction::kRegisterSensor).Then({.status = 7});
  EXPECT_EQ(RegisterProximitySensorCallback(handle_, 0, Client<0>, &seen_), 7);
  EXPECT_THAT(Dump(), HasSubstr("active:T"));
  EXPECT_THAT(Dump(), Not(HasSubstr("client id")));
  EXPECT_EQ(RegisterProximitySensorCallback(handle_, 0, Client<0>, &seen_), -EINVAL);
  EXPECT_THAT(Log(ANDROID_LOG_DEBUG), Contains("EnableSensor: already enabled."));
}

TEST_F(SensorInfoTest, ARefusedDisablingLeavesTheSensorEnabledWithoutItsClient) {
  RegisterProximityAndHearZero();
  hub_.on(SensorFunction::kDisableSensor).Then({.status = -22});
  EXPECT_EQ(DeregisterProximitySensorCallback(handle_, 0), -22);
  EXPECT_THAT(Log(ANDROID_LOG_ERROR),
              ElementsAre("DisableSensor: Failed to deregister sensor PROXIMITY"));
  EXPECT_THAT(Dump(), HasSubstr("  Poll :T\n"));
  EXPECT_EQ(DeregisterProximitySensorCallback(handle_, 0), -EINVAL);
  EXPECT_EQ(RegisterProximitySensorCallback(handle_, 0, Client<0>, &seen_), -EINVAL);
}

TEST_F(SensorInfoTest, WhatDisablingAnswersIsPassedOn) {
  RegisterProximityAndHearZero();
  RegisterHingeAndHearZero();
  hub_.on(SensorFunction::kDisableSensor).Then({.status = 7}, 2);
  EXPECT_EQ(DeregisterProximitySensorCallback(handle_, 0), 7);
  EXPECT_EQ(DeregisterHingeAngleSensorCallback(handle_, 0), 7);
  EXPECT_THAT(Dump(), Not(HasSubstr("active:T")));
}

TEST_F(SensorInfoTest, ClientsMayComeAndGoInsideACallback) {
  struct Guest {
    void* handle;
    Seen<Call>* seen;
    static void OnValue(int value, void* cookie) {
      const auto& self = *static_cast<Guest*>(cookie);
      EXPECT_EQ(DeregisterProximitySensorCallback(self.handle, 0), 0);
      EXPECT_EQ(RegisterHingeAngleSensorCallback(self.handle, 0, Client<1>, self.seen), 0);
      self.seen->Put({.client = 0, .value = value});
    }
  };
  Guest guest = {.handle = handle_, .seen = &seen_};
  ASSERT_EQ(RegisterProximitySensorCallback(handle_, 0, Guest::OnValue, &guest), 0);
  EXPECT_EQ(seen_.Take(), (Call{0, 0}));
  EXPECT_EQ(seen_.Take(), (Call{1, 0}));
  EXPECT_EQ(hub_.listeners(kProximity), 0);
  hub_.Report(kHinge, 90);
  EXPECT_EQ(seen_.Take(), (Call{1, 90}));
  DeinitSensorInfo(&handle_);  // before the cookie goes
}

TEST_F(SensorInfoTest, TheDumpShowsSensorsAndClients) {
  EXPECT_EQ(Dump(),
            "SensorInfo:\n"
            "  Poll :F\n"
            "  Sensor: PROXIMITY\n"
            "    initialized:F active:F, data:0\n"
            "  Sensor: HINGE_ANGLE\n"
            "    initialized:F active:F, data:0\n");
  RegisterHingeAndHearZero(-7);
  hub_.Report(kHinge, 90);
  ASSERT_EQ(seen_.Take(), (Call{1, 90}));
  SlowClient slow;
  ASSERT_EQ(RegisterHingeAngleSensorCallback(handle_, 8, SlowClient::OnValue, &slow), 0);
  ASSERT_EQ(slow.seen.Take(), 90);
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
  slow.gate->Open();
  DeinitSensorInfo(&handle_);  // before the cookie goes
}

TEST(SensorNamesTest, AnUnknownTypeHasAWarningForEachQuestion) {
  const fake::LogCapture log;
  const SensorInfo sensor_info;
  EXPECT_EQ(sensor_info.GetASensorTyep(SensorInfo::PROXIMITY), 8);
  EXPECT_EQ(sensor_info.GetASensorTyep(SensorInfo::HINGE_ANGLE), 36);
  EXPECT_EQ(sensor_info.GetAudioSensorType(36), SensorInfo::HINGE_ANGLE);
  EXPECT_STREQ(sensor_info.GetASensorString(SensorInfo::HINGE_ANGLE), "HINGE_ANGLE");
  EXPECT_THAT(log.Lines(), IsEmpty());
  EXPECT_EQ(sensor_info.GetASensorTyep(SensorInfo::UNKNOWN), -1);
  EXPECT_EQ(sensor_info.GetAudioSensorType(-1), SensorInfo::UNKNOWN);
  EXPECT_STREQ(sensor_info.GetASensorString(SensorInfo::UNKNOWN), "Unknown");
  const auto warning = [](const char* text) {
    return fake::LogLine{.priority = ANDROID_LOG_WARN, .tag = "audio_hw_sensor", .text = text};
  };
  EXPECT_THAT(log.Lines(), ElementsAre(warning("GetASensorTyep: unknown audio sensor 2"),
                                       warning("GetAudioSensorType: unknown sensor -1"),
                                       warning("GetASensorString: unknown audio sensor 2")));
}

TEST(SensorNamesTest, AnObjectWithoutItsThreadsRefusesClients) {
  const fake::LogCapture log;
  Seen<Call> seen;
  SensorInfo sensor_info;
  EXPECT_EQ(sensor_info.RegisterCallback(
                SensorInfo::PROXIMITY,
                {.need_to_update = true, .id = 1, .callback = Client<0>, .cookie = &seen}),
            -ENOSYS);
  EXPECT_THAT(log.Lines(),
              ElementsAre(fake::LogLine{.priority = ANDROID_LOG_WARN,
                                        .tag = "audio_hw_sensor",
                                        .text = "EnableSensor: system isn't initialized."}));
  sensor_info.Deinitialize();
}

class SensorObjectTest : public SensorFixture {};

TEST_F(SensorObjectTest, AnObjectMayBeInitializedAgain) {
  hub_.Start();
  SensorInfo sensor_info;
  for (int reading = 1; reading <= 2; ++reading) {
    ASSERT_TRUE(sensor_info.Initialize());
    ASSERT_EQ(sensor_info.RegisterCallback(
                  SensorInfo::HINGE_ANGLE,
                  {.need_to_update = true, .id = 1, .callback = Client<1>, .cookie = &seen_}),
              0);
    hub_.Report(kHinge, static_cast<float>(reading));
    std::optional<Call> call;
    do {
      call = seen_.Take();
      ASSERT_TRUE(call) << "initialization " << reading;
    } while (call->value != reading);
    sensor_info.Deinitialize();
  }
}

TEST_F(SensorObjectTest, AnObjectThatIsInitializedAgainStartsEmpty) {
  SensorInfo sensor_info;
  const auto add = [&](SensorInfo::AudioSensorType type) {
    return sensor_info.RegisterCallback(
        type, {.need_to_update = true, .id = 1, .callback = Client<1>, .cookie = &seen_});
  };
  ASSERT_TRUE(sensor_info.Initialize());
  ASSERT_EQ(add(SensorInfo::PROXIMITY), 0);
  ASSERT_EQ(add(SensorInfo::HINGE_ANGLE), 0);
  sensor_info.Deinitialize();

  hub_.Start();
  ASSERT_TRUE(sensor_info.Initialize());
  EXPECT_TRUE(sensor_info.ReconnectToSensorService());
  EXPECT_EQ(Calls(SensorFunction::kCreateEventQueue), 0) << "no sensor waits for the service";
  EXPECT_EQ(add(SensorInfo::HINGE_ANGLE), 0);
  EXPECT_EQ(seen_.Take(), (Call{1, 0}));
  hub_.Report({{.type = kProximity, .value = 1}, {.type = kHinge, .value = 90}});
  EXPECT_EQ(seen_.Take(), (Call{1, 90})) << "and no client of the first life";
  sensor_info.Deinitialize();
}

class SensorlessTest : public testing::Test {
 protected:
  fake::LogCapture log_;
  simulated::SensorHub hub_;
};

TEST_F(SensorlessTest, ASensorThatTheDeviceDoesNotHaveIsLookedUpOnce) {
  hub_.Start();
  Seen<Call> seen;
  void* handle = nullptr;
  InitSensorInfo(&handle);
  for (int i = 1; i <= 3; ++i) {
    EXPECT_EQ(RegisterHingeAngleSensorCallback(handle, 0, Client<1>, &seen), -ENOSYS);
    EXPECT_EQ(log_.Count("EnableSensor: sensor HINGE_ANGLE isn't supported."), i);
  }
  EXPECT_EQ(hub_.on(SensorFunction::kGetDefaultSensor).calls(), 1);
  EXPECT_EQ(log_.Count("EnableSensor: start to initialize sensor HINGE_ANGLE"), 1);
  EXPECT_EQ(log_.Count("EnableSensor: end to initialize sensor HINGE_ANGLE"), 1);
  DeinitSensorInfo(&handle);
}

}  // namespace
}  // namespace norvik::qel
