// The way to the sensor service: late, absent, unusable.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

#include "standin/service_manager.h"
#include "tests/support/sensor_fixture.h"

namespace norvik::qel {
namespace {

using standin::CheckServiceScript;
using standin::Outcome;
using standin::SensorFunction;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr char kAbsent[] = "InitSensorInterface: sensor service isn't ready, start to reconnect!";
constexpr char kGivenUp[] = "ReconnectToSensorService: client should register proper sensor";

using SensorLinkTest = SensorFixture;

TEST_F(SensorLinkTest, InitAndDeinitDoNotTouchThePlatform) {
  hub_.Start();
  DeinitSensorInfo(&handle_);
  for (int function = 0; function < static_cast<int>(SensorFunction::kCount); ++function) {
    EXPECT_EQ(Calls(static_cast<SensorFunction>(function)), 0) << function;
  }
}

TEST_F(SensorLinkTest, ASensorThatIsNoLongerWaitedForIsNotEnabled) {
  const int looked = CheckServiceScript().calls();
  ASSERT_EQ(RegisterProximitySensorCallback(handle_, 0, Client<0>, &seen_), 0);
  // Once for the registration, once for the first attempt of the worker.
  ASSERT_TRUE(CheckServiceScript().WaitForCalls(looked + 2));
  ASSERT_EQ(RegisterProximitySensorCallback(handle_, 1, Client<0>, &seen_), 0);
  EXPECT_EQ(RegisterProximitySensorCallback(handle_, 1, Client<0>, &seen_), -EINVAL);
  EXPECT_EQ(DeregisterProximitySensorCallback(handle_, 0), 0);
  EXPECT_EQ(DeregisterProximitySensorCallback(handle_, 1), 0);
  EXPECT_EQ(Calls(SensorFunction::kDisableSensor), 0);
  hub_.Start();
  RegisterHingeAndHearZero();
  EXPECT_EQ(hub_.listeners(kProximity), 0);
  EXPECT_TRUE(seen_.empty());
  EXPECT_THAT(Log(ANDROID_LOG_ERROR), IsEmpty());
}

TEST_F(SensorLinkTest, WithoutManagerLooperOrQueueAClientWaits) {
  hub_.Start();
  const struct {
    std::vector<SensorFunction> fail;
    const char* error;
  } kCases[] = {
      {{SensorFunction::kGetInstance}, "InitSensorInterface: Unable to get sensorManager."},
      {{SensorFunction::kForThread, SensorFunction::kPrepare},
       "InitSensorInterface: Failed to prepare an event looper."},
      {{SensorFunction::kCreateEventQueue}, "InitSensorInterface: Unable to get event queue."},
  };
  const int looked = CheckServiceScript().calls();
  for (const auto& row : kCases) {
    log_.Clear();
    for (const SensorFunction function : row.fail) {
      hub_.on(function).Then({.status = STATUS_UNKNOWN_ERROR});
    }
    EXPECT_EQ(RegisterProximitySensorCallback(handle_, 0, Client<0>, &seen_), 0);
    EXPECT_THAT(Log(ANDROID_LOG_ERROR), ElementsAre(row.error));
    EXPECT_THAT(Log(ANDROID_LOG_WARN), IsEmpty());
    EXPECT_THAT(Dump(), HasSubstr("client id:0"));
    EXPECT_EQ(DeregisterProximitySensorCallback(handle_, 0), 0);
  }
  EXPECT_TRUE(seen_.empty());
  // Each time from the beginning, and nobody looks for a service that is there.
  EXPECT_EQ(CheckServiceScript().calls(), looked + 3);
  // A looper that has to be prepared will do.
  hub_.on(SensorFunction::kForThread).Then({.status = STATUS_UNKNOWN_ERROR});
  RegisterProximityAndHearZero();
  EXPECT_THAT(Log(ANDROID_LOG_DEBUG),
              Contains("InitSensorInterface: success to initialize sensor interface"));
  EXPECT_EQ(CheckServiceScript().calls(), looked + 4);
  RegisterHingeAndHearZero();
  EXPECT_EQ(CheckServiceScript().calls(), looked + 4);
  hub_.Report(kProximity, 5);
  EXPECT_EQ(seen_.Take(), (Call{0, 5}));
}

TEST_F(SensorLinkTest, TheReferenceToTheServiceIsGivenBack) {
  hub_.Start();
  RegisterProximityAndHearZero();
  DeinitSensorInfo(&handle_);
  EXPECT_EQ(hub_.queue_count(), 0u);
}

using SensorLinkSlowTest = SensorFixture;

// Longer than the ten runs that a worker has for one trigger.
TEST_F(SensorLinkSlowTest, AServiceIsLookedForUntilItComes) {
  const int looked = CheckServiceScript().calls();
  ASSERT_EQ(RegisterProximitySensorCallback(handle_, 0, Client<0>, &seen_), 0);
  ASSERT_EQ(RegisterHingeAngleSensorCallback(handle_, 0, Client<1>, &seen_), 0);
  ASSERT_EQ(RegisterHingeAngleSensorCallback(handle_, 1, Client<2>, &seen_), 0);
  ASSERT_TRUE(CheckServiceScript().WaitForCalls(looked + 2 + 12, std::chrono::seconds(60)));
  EXPECT_THAT(Log(ANDROID_LOG_WARN), Each(kAbsent));
  // Nothing is owed to anybody while a sensor is not enabled: the first call comes with a reading.
  EXPECT_THAT(Dump(), Not(HasSubstr("need_to_update:T")));
  EXPECT_TRUE(seen_.empty());
  hub_.on(SensorFunction::kRegisterSensor).Then({.status = -5});  // the proximity sensor's turn
  hub_.Report(kHinge, 120);
  hub_.Start();
  EXPECT_EQ(seen_.Take(), (Call{1, 120}));
  EXPECT_EQ(seen_.Take(), (Call{2, 120}));
  EXPECT_EQ(log_.Count(kGivenUp), 1);
  // The client of the sensor that was refused is there and hears nothing.
  hub_.Report({{.type = kProximity, .value = 1}, {.type = kHinge, .value = 121}});
  EXPECT_EQ(seen_.Take(), (Call{1, 121}));
  EXPECT_EQ(seen_.Take(), (Call{2, 121}));
  EXPECT_THAT(Dump(), HasSubstr("client id:0"));
  EXPECT_EQ(DeregisterProximitySensorCallback(handle_, 0), -EINVAL);
  EXPECT_THAT(Log(ANDROID_LOG_DEBUG), Contains("DisableSensor: already disabled."));
  EXPECT_TRUE(Eventually(
      [this] { return RegisterProximitySensorCallback(handle_, 0, Client<0>, &seen_) == 0; }));
}

// A service that is there and cannot be used ends the ten runs, and with them the attempts.
TEST_F(SensorLinkSlowTest, AServiceThatCannotBeUsedIsGivenUp) {
  const int looked = CheckServiceScript().calls();
  hub_.on(SensorFunction::kCreateEventQueue).Then({.status = STATUS_UNKNOWN_ERROR}, 1000);
  ASSERT_EQ(RegisterProximitySensorCallback(handle_, 0, Client<0>, &seen_), 0);
  ASSERT_TRUE(CheckServiceScript().WaitForCalls(looked + 2));
  hub_.Start();
  ASSERT_TRUE(CheckServiceScript().WaitForCalls(looked + 1 + 10, std::chrono::seconds(60)));
  // An eleventh attempt would come a second later: can miss it, never invent it.
  EXPECT_FALSE(CheckServiceScript().WaitForCalls(looked + 1 + 11, std::chrono::milliseconds(2500)));
  hub_.on(SensorFunction::kCreateEventQueue).Clear();
  EXPECT_EQ(DeregisterProximitySensorCallback(handle_, 0), 0);
  RegisterProximityAndHearZero();
}

}  // namespace
}  // namespace norvik::qel
