// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A host program that has not started its binder threads receives nothing.
#include <android/binder_process.h>
#include <android/sensor.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "battery_fixture.h"
#include "quorvel/simulated/sensor_hub.h"

namespace norvik::qel {
namespace {

// Runs in a separate process, because the sensor manager starts a binder thread.
[[noreturn]] void HearASensor() {
  simulated::SensorHub hub;
  hub.Add(ASENSOR_TYPE_PROXIMITY, "proximity");
  hub.Start();
  if (ABinderProcess_isThreadPoolStarted()) std::_Exit(1);
  ASensorManager* const manager = ASensorManager_getInstance();
  ASensorEventQueue* const queue =
      ASensorManager_createEventQueue(manager, ALooper_forThread(), 0, nullptr, nullptr);
  ASensorEventQueue_registerSensor(
      queue, ASensorManager_getDefaultSensor(manager, ASENSOR_TYPE_PROXIMITY), 0, 0);
  hub.Report(ASENSOR_TYPE_PROXIMITY, 1);
  std::_Exit(ALooper_pollOnce(10'000, nullptr, nullptr, nullptr) == ALOOPER_POLL_CALLBACK ? 0 : 2);
}

TEST(NoBinderThreadsDeathTest, TheSensorManagerBringsABinderThread) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(HearASensor(), testing::ExitedWithCode(0), "");
}

TEST(NoBinderThreadsTest, NothingArrivesBeforeTheThreadPoolIsStarted) {
  simulated::Health health;
  health.Start();
  Seen<Call> seen;
  void* handle = nullptr;
  InitBatteryInfo(&handle);
  EXPECT_FALSE(ABinderProcess_isThreadPoolStarted());
  ASSERT_EQ(RegisterBatteryLevelCallback(handle, Client<0>, &seen), 0);
  EXPECT_TRUE(IsLinked(handle)) << "calls out work";
  EXPECT_EQ(GetBatteryLevel(handle, true), -1);
  health.Kill();
  health.SetLevel(9);
  health.Start();
  EXPECT_FALSE(fake::WaitUntilDelivered(std::chrono::milliseconds(20)));
  EXPECT_TRUE(IsLinked(handle)) << "the death is not heard of";

  // A second handle, which does not wait for the first one.
  void* other = nullptr;
  InitBatteryInfo(&other);
  ASSERT_EQ(RegisterBatteryLevelCallback(other, Client<1>, &seen), 0);
  {
    fake::HoldDeliveries hold(fake::Delivery::kOneway);
    ABinderProcess_startThreadPool();
    EXPECT_TRUE(hold.WaitForHeld(2));
  }
  EXPECT_TRUE(fake::WaitUntilDelivered());
  EXPECT_TRUE(Eventually([&] { return GetBatteryLevel(handle, true) == 9; }));
  DeinitBatteryInfo(&other);
  DeinitBatteryInfo(&handle);
}

}  // namespace
}  // namespace norvik::qel
