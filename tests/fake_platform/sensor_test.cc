// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The fake platform's looper and sensors behave as the library for vendor code does.
#include <android/binder_process.h>
#include <android/looper.h>
#include <android/sensor.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <future>
#include <thread>
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

TEST(PlatformLooperTest, TheProcessHasOneLooper) {
  ALooper* const looper = ALooper_forThread();
  ASSERT_NE(looper, nullptr);
  EXPECT_EQ(ALooper_prepare(0), looper);
  std::thread([&] {
    EXPECT_EQ(ALooper_forThread(), looper);
    EXPECT_EQ(ALooper_prepare(ALOOPER_PREPARE_ALLOW_NON_CALLBACKS), looper);
  }).join();
}

TEST(PlatformLooperTest, AWakeIsKeptAndFolded) {
  fake::DropWake();
  for (int i = 0; i < 3; ++i) ALooper_wake(ALooper_forThread());
  int fd = 7;
  int events = 7;
  void* data = &fd;
  EXPECT_EQ(ALooper_pollOnce(-1, &fd, &events, &data), ALOOPER_POLL_WAKE);
  EXPECT_EQ(fd, 0);
  EXPECT_EQ(events, 0);
  EXPECT_EQ(data, nullptr);
  EXPECT_EQ(Poll(0), ALOOPER_POLL_TIMEOUT);
}

TEST(PlatformLooperTest, AThreadThatPreparedNothingMayWaitAndOneOfSeveralIsWoken) {
  fake::DropWake();
  std::vector<std::future<int>> polls;
  for (int i = 0; i < 2; ++i) polls.push_back(std::async(std::launch::async, Poll, -1));
  ASSERT_TRUE(Eventually([] { return fake::LooperWaiters() == 2; }));
  ALooper_wake(ALooper_forThread());
  ASSERT_TRUE(Eventually([] { return fake::LooperWaiters() == 1; }));
  ALooper_wake(ALooper_forThread());
  for (auto& poll : polls) EXPECT_EQ(poll.get(), ALOOPER_POLL_WAKE);
}

class PlatformSensorTest : public testing::Test {
 protected:
  PlatformSensorTest() {
    hub_.Add(ASENSOR_TYPE_PROXIMITY, "proximity", 1000);
    hub_.Add(ASENSOR_TYPE_LIGHT, "light");
    hub_.Start();
    manager_ = ASensorManager_getInstanceForPackage("any");
    sensor_ = ASensorManager_getDefaultSensor(manager_, ASENSOR_TYPE_PROXIMITY);
  }

  ASensorEventQueue* MakeQueue(ALooper_callbackFunc callback = nullptr, void* data = nullptr) {
    return ASensorManager_createEventQueue(manager_, ALooper_forThread(), /*ident=*/5, callback,
                                           data);
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

TEST_F(PlatformSensorTest, OneManagerKnowsTheSensors) {
  EXPECT_EQ(ASensorManager_getInstance(), manager_);
  ASensorList list = nullptr;
  ASSERT_EQ(ASensorManager_getSensorList(manager_, &list), 2);
  EXPECT_EQ(list[0], sensor_);
  EXPECT_STREQ(ASensor_getName(list[1]), "light");
  EXPECT_EQ(ASensor_getType(list[1]), ASENSOR_TYPE_LIGHT);
  EXPECT_EQ(ASensor_getMinDelay(sensor_), 1000);
  EXPECT_EQ(ASensor_getMinDelay(nullptr), ASENSOR_DELAY_INVALID);
  EXPECT_EQ(ASensorManager_getDefaultSensor(manager_, ASENSOR_TYPE_HINGE_ANGLE), nullptr);
  EXPECT_EQ(ASensorManager_getDefaultSensor(manager_, ASENSOR_TYPE_INVALID), nullptr);
}

TEST_F(PlatformSensorTest, InvalidArgumentsAreRefused) {
  EXPECT_EQ(ASensorManager_createEventQueue(nullptr, ALooper_forThread(), 0, nullptr, nullptr),
            nullptr);
  EXPECT_EQ(ASensorManager_createEventQueue(manager_, nullptr, 0, nullptr, nullptr), nullptr);
  EXPECT_EQ(ASensorEventQueue_registerSensor(nullptr, sensor_, 0, 0), -EINVAL);
  EXPECT_EQ(ASensorEventQueue_disableSensor(nullptr, sensor_), -EINVAL);
  EXPECT_EQ(ASensorEventQueue_getEvents(nullptr, nullptr, 0), -EINVAL);
  EXPECT_EQ(ASensorManager_destroyEventQueue(nullptr, nullptr), -EINVAL);
  ASensorEventQueue* const queue = MakeQueue();
  EXPECT_EQ(ASensorEventQueue_disableSensor(queue, sensor_), -EINVAL);
  EXPECT_EQ(ASensorEventQueue_registerSensor(queue, sensor_, 1000, 0), 0);
  EXPECT_EQ(ASensorEventQueue_disableSensor(queue, sensor_), 0);
  EXPECT_EQ(ASensorManager_destroyEventQueue(manager_, queue), 0);
}

TEST_F(PlatformSensorTest, EventsAreKeptInOrderUntilTheyAreRead) {
  ASensorEventQueue* const queue = MakeQueue();
  Report(1);  // the sensor is not enabled on the queue
  ASSERT_EQ(ASensorEventQueue_registerSensor(queue, sensor_, 1000, 0), 0);
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EXPECT_THAT(Read(queue), ElementsAre(1));  // its latest reading
  EXPECT_EQ(ASensorEventQueue_hasEvents(queue), 0);
  EXPECT_THAT(Read(queue), ElementsAre());
  for (int value = 2; value <= 5; ++value) Report(static_cast<float>(value));
  EXPECT_EQ(ASensorEventQueue_hasEvents(queue), 1);
  EXPECT_THAT(Read(queue, 1), ElementsAre(2));
  EXPECT_THAT(Read(queue), ElementsAre(3, 4, 5));
  ASensorEvent extra = {};
  extra.type = ASENSOR_TYPE_ADDITIONAL_INFO;
  hub_.SendUnasked({extra});
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EXPECT_EQ(ASensorEventQueue_hasEvents(queue), 0);
  ASensorEventQueue_requestAdditionalInfoEvents(queue, true);
  hub_.SendUnasked({extra});
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EXPECT_EQ(ASensorEventQueue_hasEvents(queue), 1);
  EXPECT_EQ(ASensorManager_destroyEventQueue(manager_, queue), 0);
}

TEST_F(PlatformSensorTest, OnePollTakesTheEventsOfAllQueuesAndLeavesTheWake) {
  ASensorEventQueue* const queues[] = {MakeQueue(), MakeQueue()};
  for (ASensorEventQueue* queue : queues) {
    ASSERT_EQ(ASensorEventQueue_registerSensor(queue, sensor_, 1000, 0), 0);
  }
  ALooper_wake(ALooper_forThread());
  Report(1);
  Report(2);
  EXPECT_EQ(Poll(-1), ALOOPER_POLL_CALLBACK);
  EXPECT_EQ(Poll(-1), ALOOPER_POLL_WAKE);
  EXPECT_EQ(Poll(0), ALOOPER_POLL_TIMEOUT);
  for (ASensorEventQueue* queue : queues) EXPECT_THAT(Read(queue), ElementsAre(1, 2));
  // Brought at once, to all of them, whatever the service knows.
  ASensorEvent brought = {};
  brought.type = ASENSOR_TYPE_LIGHT;
  brought.data[0] = 7;
  fake::BringSensorEvents({brought});
  EXPECT_EQ(Poll(0), ALOOPER_POLL_CALLBACK);
  for (ASensorEventQueue* queue : queues) EXPECT_THAT(Read(queue), ElementsAre(7));
  // The events of a destroyed queue wake no poll.
  Report(3);
  for (ASensorEventQueue* queue : queues) ASensorManager_destroyEventQueue(manager_, queue);
  EXPECT_EQ(Poll(0), ALOOPER_POLL_TIMEOUT);
}

TEST_F(PlatformSensorTest, ACallbackIsCalledByThePollUntilItLeaves) {
  struct Count {
    int calls = 0;
    static int OnNews(int /*fd*/, int /*events*/, void* data) {
      return ++static_cast<Count*>(data)->calls < 2 ? 1 : 0;
    }
  };
  Count count;
  ASensorEventQueue* const queue = MakeQueue(Count::OnNews, &count);
  ASSERT_EQ(ASensorEventQueue_registerSensor(queue, sensor_, 1000, 0), 0);
  for (int value = 1; value <= 3; ++value) {
    Report(static_cast<float>(value));
    EXPECT_EQ(Poll(-1), ALOOPER_POLL_CALLBACK);
    EXPECT_EQ(count.calls, std::min(value, 2));
  }
  ASensorManager_destroyEventQueue(manager_, queue);
}

struct Doomed {
  ASensorManager* manager;
  ASensorEventQueue* queue;
  static int OnNews(int /*fd*/, int /*events*/, void* data) {
    const auto& self = *static_cast<Doomed*>(data);
    ASensorManager_destroyEventQueue(self.manager, self.queue);
    return 1;
  }
};

[[noreturn]] void DestroyInACallback() {
  ABinderProcess_startThreadPool();
  simulated::SensorHub hub;
  hub.Add(ASENSOR_TYPE_PROXIMITY, "proximity");
  hub.Start();
  hub.Report(ASENSOR_TYPE_PROXIMITY, 1);
  Doomed doomed = {.manager = ASensorManager_getInstance(), .queue = nullptr};
  doomed.queue = ASensorManager_createEventQueue(doomed.manager, ALooper_forThread(), 0,
                                                 Doomed::OnNews, &doomed);
  ASensorEventQueue_registerSensor(
      doomed.queue, ASensorManager_getDefaultSensor(doomed.manager, ASENSOR_TYPE_PROXIMITY), 0, 0);
  Poll(-1);
  std::_Exit(0);
}

TEST(PlatformSensorDeathTest, AQueueMustNotBeDestroyedInACallback) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(DestroyInACallback(), "called from a looper callback");
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
