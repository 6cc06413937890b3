// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The connection to a sensor service that is late, absent or unusable.
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>

#include "sensor_fixture.h"

namespace norvik::qel {
namespace {

using testing::Each;

constexpr char kGivenUp[] = "ReconnectToSensorService: client should register proper sensor";

using SensorLinkTest = SensorFixture;
using SensorLinkSlowTest = SensorFixture;

TEST_F(SensorLinkSlowTest, ASensorThatWaitsTakesFurtherClientsAndLetsThemGo) {
  ASSERT_EQ(RegisterProximitySensorCallback(handle_, 0, Client<0>, &seen_), 0);
  // One look-up by the registration, and one by the worker's first attempt.
  ASSERT_TRUE(look_ups().WaitForCalls(2));
  ASSERT_EQ(RegisterProximitySensorCallback(handle_, 1, Client<0>, &seen_), 0);
  EXPECT_EQ(RegisterProximitySensorCallback(handle_, 1, Client<0>, &seen_), -EINVAL);
  EXPECT_EQ(look_ups().calls(), 2);
  EXPECT_EQ(DeregisterProximitySensorCallback(handle_, 0), 0);
  EXPECT_EQ(DeregisterProximitySensorCallback(handle_, 1), 0);
  EXPECT_EQ(Calls(SensorFunction::kDisableSensor), 0);
  EXPECT_THAT(Log(ANDROID_LOG_ERROR), IsEmpty());
  // No attempt follows after the pause. This can miss a bug, never invent one.
  EXPECT_FALSE(look_ups().WaitForCalls(3, std::chrono::milliseconds(2000)));
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
  for (const auto& row : kCases) {
    log_.Clear();
    for (const SensorFunction function : row.fail) {
      hub_.on(function).Then({.status = STATUS_UNKNOWN_ERROR});
    }
    EXPECT_EQ(RegisterProximitySensorCallback(handle_, 0, Client<0>, &seen_), 0);
    EXPECT_THAT(Warnings(), ElementsAre(row.error));
    EXPECT_THAT(Dump(), HasSubstr("client id:0"));
    EXPECT_EQ(DeregisterProximitySensorCallback(handle_, 0), 0);
  }
  // Each registration made one look-up. A service that is there is not looked for again.
  EXPECT_EQ(look_ups().calls(), 3);
  // Without a looper of the thread, ALooper_prepare() is sufficient.
  hub_.on(SensorFunction::kForThread).Then({.status = STATUS_UNKNOWN_ERROR});
  RegisterProximity();
  EXPECT_EQ(log_.Count("InitSensorInterface: start to initialize sensor interface"),
            2);  // once for this registration, and once for the last case above
  EXPECT_EQ(log_.Count("InitSensorInterface: success to initialize sensor interface"), 1);
  EXPECT_EQ(look_ups().calls(), 4);
  RegisterHinge();
  EXPECT_EQ(look_ups().calls(), 4);
  hub_.Report(kProximity, 5);
  EXPECT_EQ(seen_.Take(), (Call{0, 5}));
}

TEST(SensorReferenceTest, TheReferenceToTheServiceIsGivenBack) {
  Seen<Call> seen;
  ndk::ScopedAIBinder_Weak service;
  {
    simulated::SensorHub hub;
    hub.Add(kProximity, "proximity");
    hub.Start();
    ndk::SpAIBinder binder(AServiceManager_checkService(services::kSensorInstance));
    service.set(AIBinder_Weak_new(binder.get()));
    void* handle = nullptr;
    InitSensorInfo(&handle);
    ASSERT_EQ(RegisterProximitySensorCallback(handle, 0, Client<0>, &seen), 0);
    binder.set(nullptr);
    ASSERT_NE(service.promote().get(), nullptr);
    DeinitSensorInfo(&handle);
    EXPECT_EQ(hub.queue_count(), 0u);
  }
  // The platform's sensor manager has been destroyed, so only the library could still hold it.
  EXPECT_EQ(service.promote().get(), nullptr);
}

// The search lasts longer than the ten runs of a worker for one request.
TEST_F(SensorLinkSlowTest, AServiceIsLookedForUntilItComes) {
  const auto begin = std::chrono::steady_clock::now();
  ASSERT_EQ(RegisterProximitySensorCallback(handle_, 0, Client<0>, &seen_), 0);
  ASSERT_EQ(RegisterHingeAngleSensorCallback(handle_, 0, Client<1>, &seen_), 0);
  ASSERT_EQ(RegisterHingeAngleSensorCallback(handle_, 1, Client<2>, &seen_), 0);
  ASSERT_TRUE(look_ups().WaitForCalls(2 + 12, std::chrono::seconds(60)));
  // The look-ups: two registrations, the first attempt, and eleven attempts after a pause each.
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
  EXPECT_THAT(Warnings(), Each(kNoService));
  // Clients of a sensor that is not enabled are not called before its first reading.
  EXPECT_THAT(Dump(), Not(HasSubstr("need_to_update:T")));
  EXPECT_TRUE(seen_.empty());
  hub_.on(SensorFunction::kRegisterSensor).Then({.status = -5});  // for the proximity sensor
  hub_.Report(kHinge, 120);
  hub_.Start();
  EXPECT_THAT(seen_.TakeMany(2), ElementsAre(Call{1, 120}, Call{2, 120}));
  EXPECT_EQ(log_.Count(kGivenUp), 1);
  // The client of the refused sensor stays registered.
  EXPECT_THAT(Dump(), HasSubstr("client id:0"));
}

using SensorLateServiceSlowTest = HingelessFixture;

// When the service starts, the proximity sensor has no client left, and the device has no hinge.
TEST_F(SensorLateServiceSlowTest, OnlySensorsThatExistAndHaveClientsAreEnabled) {
  ASSERT_EQ(RegisterProximitySensorCallback(handle_, 0, Client<0>, &seen_), 0);
  ASSERT_EQ(RegisterHingeAngleSensorCallback(handle_, 0, Client<1>, &seen_), 0);
  EXPECT_EQ(DeregisterProximitySensorCallback(handle_, 0), 0);
  hub_.Start();
  ASSERT_TRUE(log_.WaitFor(kGivenUp));  // for the hinge angle, the last sensor with clients
  EXPECT_EQ(hub_.listeners(kProximity), 0);
  EXPECT_EQ(Calls(SensorFunction::kRegisterSensor), 0);
  RegisterProximity();
}

TEST_F(SensorLinkSlowTest, AServiceThatCannotBeUsedIsGivenUpAfterTenAttempts) {
  hub_.on(SensorFunction::kCreateEventQueue).Then({.status = STATUS_UNKNOWN_ERROR}, 1000);
  ASSERT_EQ(RegisterProximitySensorCallback(handle_, 0, Client<0>, &seen_), 0);
  ASSERT_TRUE(look_ups().WaitForCalls(2));
  hub_.Start();
  ASSERT_TRUE(look_ups().WaitForCalls(1 + 10, std::chrono::seconds(60)));
  // An eleventh attempt would follow a second later. This can miss a bug, never invent one.
  EXPECT_FALSE(look_ups().WaitForCalls(1 + 11, std::chrono::milliseconds(2500)));
  hub_.on(SensorFunction::kCreateEventQueue).Clear();
  EXPECT_EQ(DeregisterProximitySensorCallback(handle_, 0), 0);
  RegisterProximity();
}

}  // namespace
}  // namespace norvik::qel
