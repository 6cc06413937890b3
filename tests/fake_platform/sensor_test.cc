// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The fake platform's looper and sensors behave like the platform's sensor library for vendor code.
#include <android/looper.h>
#include <android/sensor.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <future>
#include <vector>

#include "quorvel/fake/deliveries.h"
#include "quorvel/fake/log_capture.h"
#include "quorvel/fake/sensor_functions.h"
#include "quorvel/simulated/sensor_hub.h"
#include "waiting.h"

namespace norvik::qel {
namespace {

using testing::ElementsAre;

int Poll(int timeout_ms) {
  return ALooper_pollOnce(timeout_ms, nullptr, nullptr, nullptr);
}

TEST(PlatformLooperTest, AWakeIsKeptAndFoldedAndGoesToOneOfTheThreads) {
  fake::DropWake();
  ALooper* const looper = ALooper_prepare(0);
  for (int i = 0; i < 3; ++i) ALooper_wake(looper);
  EXPECT_EQ(Poll(-1), ALOOPER_POLL_WAKE);
  EXPECT_EQ(Poll(0), ALOOPER_POLL_TIMEOUT);

  std::vector<std::future<int>> polls;
  for (int i = 0; i < 2; ++i) {
    polls.push_back(std::async(std::launch::async, [&] {
      EXPECT_EQ(ALooper_forThread(), looper) << "one for all threads";
      return Poll(-1);
    }));
  }
  for (const int waiters : {2, 1}) {
    EXPECT_TRUE(Eventually([&] { return fake::LooperWaiters() == waiters; }));
    ALooper_wake(looper);
  }
  for (auto& poll : polls) EXPECT_EQ(poll.get(), ALOOPER_POLL_WAKE);
}

class PlatformSensorTest : public testing::Test {
 protected:
  PlatformSensorTest() {
    hub_.Add(ASENSOR_TYPE_PROXIMITY, "proximity", 1000);
    hub_.Start();
    manager_ = ASensorManager_getInstanceForPackage("any");
    sensor_ = ASensorManager_getDefaultSensor(manager_, ASENSOR_TYPE_PROXIMITY);
  }

  // Creates a queue and enables the sensor on it.
  ASensorEventQueue* MakeQueue(ALooper_callbackFunc callback = nullptr, void* data = nullptr) {
    ASensorEventQueue* const queue =
        ASensorManager_createEventQueue(manager_, ALooper_forThread(), /*ident=*/5, callback, data);
    EXPECT_EQ(ASensorEventQueue_registerSensor(queue, sensor_, 1000, 0), 0);
    return queue;
  }
  static std::vector<float> Read(ASensorEventQueue* queue, size_t at_most = 100) {
    std::vector<ASensorEvent> events(at_most);
    const ssize_t count = ASensorEventQueue_getEvents(queue, events.data(), at_most);
    std::vector<float> values;
    for (ssize_t i = 0; i < count; ++i) values.push_back(events[static_cast<size_t>(i)].data[0]);
    return values;
  }
  void Report(float value) {
    hub_.Report(ASENSOR_TYPE_PROXIMITY, value);
    ASSERT_TRUE(fake::WaitUntilDelivered());
  }

  simulated::SensorHub hub_;
  ASensorManager* manager_ = nullptr;
  const ASensor* sensor_ = nullptr;
};

TEST_F(PlatformSensorTest, EventsAreKeptInOrderUntilTheyAreRead) {
  Report(1);
  ASensorEventQueue* const queue = MakeQueue();
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EXPECT_THAT(Read(queue), ElementsAre(1)) << "the latest reading";
  EXPECT_EQ(ASensorEventQueue_hasEvents(queue), 0);
  EXPECT_THAT(Read(queue), ElementsAre());
  for (const float value : {2, 3, 4, 5}) Report(value);
  EXPECT_EQ(ASensorEventQueue_hasEvents(queue), 1);
  EXPECT_THAT(Read(queue, 1), ElementsAre(2));
  EXPECT_THAT(Read(queue), ElementsAre(3, 4, 5));
  EXPECT_EQ(ASensorEventQueue_disableSensor(queue, sensor_), 0);
  EXPECT_EQ(ASensorEventQueue_disableSensor(queue, sensor_), -EINVAL);
  Report(6);
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EXPECT_EQ(ASensorEventQueue_hasEvents(queue), 0);
  EXPECT_EQ(ASensorManager_destroyEventQueue(manager_, queue), 0);
}

TEST_F(PlatformSensorTest, OnePollTakesTheEventsOfAllQueuesAndLeavesTheWake) {
  ASensorEventQueue* const queues[] = {MakeQueue(), MakeQueue()};
  ALooper_wake(ALooper_forThread());
  Report(1);
  Report(2);
  EXPECT_EQ(Poll(0), ALOOPER_POLL_CALLBACK);
  EXPECT_EQ(Poll(0), ALOOPER_POLL_WAKE);
  EXPECT_EQ(Poll(0), ALOOPER_POLL_TIMEOUT);
  for (ASensorEventQueue* queue : queues) EXPECT_THAT(Read(queue), ElementsAre(1, 2));
  // The events of a destroyed queue wake no poll.
  Report(3);
  for (ASensorEventQueue* queue : queues) ASensorManager_destroyEventQueue(manager_, queue);
  EXPECT_EQ(Poll(0), ALOOPER_POLL_TIMEOUT);
}

TEST_F(PlatformSensorTest, ACallbackIsCalledByThePollUntilItLeavesAndMustNotDestroyItsQueue) {
  int calls = 0;
  ASensorEventQueue* const queue = MakeQueue(
      [](int, int, void* data) { return ++*static_cast<int*>(data) < 2 ? 1 : 0; }, &calls);
  for (const int expected : {1, 2, 2}) {
    Report(7);
    EXPECT_EQ(Poll(-1), ALOOPER_POLL_CALLBACK);
    EXPECT_EQ(calls, expected);
  }
  ASensorManager_destroyEventQueue(manager_, queue);
  ASensorEventQueue* destroyed = nullptr;
  const ALooper_callbackFunc destroy = [](int, int, void* own) {
    return ASensorManager_destroyEventQueue(ASensorManager_getInstance(),
                                            *static_cast<ASensorEventQueue**>(own));
  };
  destroyed = MakeQueue(destroy, &destroyed);
  Report(7);
  EXPECT_DEATH(Poll(-1), "called from a looper callback");
  ASensorManager_destroyEventQueue(manager_, destroyed);
}

TEST(PlatformSensorServiceTest, TheManagerWaitsForTheServiceAndEndsWithIt) {
  std::future<ASensorManager*> waiting =
      std::async(std::launch::async, [] { return ASensorManager_getInstance(); });
  EXPECT_EQ(waiting.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
  {
    simulated::SensorHub hub;
    hub.Start();
    EXPECT_NE(waiting.get(), nullptr);
    EXPECT_EQ(ASensorManager_getSensorList(ASensorManager_getInstance(), nullptr), 0);
  }
  simulated::SensorHub hub;
  hub.Add(ASENSOR_TYPE_LIGHT, "light");
  hub.Start();
  const fake::LogCapture log;
  hub.on(fake::BinderFunction::kLinkToDeath).Then({.status = STATUS_UNKNOWN_ERROR});
  EXPECT_EQ(ASensorManager_getInstance(), nullptr);
  EXPECT_EQ(ASensorManager_getSensorList(ASensorManager_getInstance(), nullptr), 1);
}

}  // namespace
}  // namespace norvik::qel
