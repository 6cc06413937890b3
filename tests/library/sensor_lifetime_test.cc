// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Sensor handles that go away, share the process's looper, and are used by many threads.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <semaphore>
#include <string>
#include <thread>
#include <vector>

#include "environment.h"
#include "process_state.h"
#include "quorvel/fake/gate.h"
#include "sensor_fixture.h"

namespace norvik::qel {
namespace {

using fake::Delivery;
using fake::Gate;
using fake::HoldDeliveries;
using fake::Outcome;
using fake::SensorFunction;

class SensorLifetimeTest : public SensorFixture {
 protected:
  SensorLifetimeTest() { hub_.Start(); }

  // Takes calls until one brings `value`; earlier ones may come before it.
  static bool Hears(Seen<Call>& seen, int value) {
    while (const std::optional<Call> call = seen.Take()) {
      if (call->value == value) return true;
    }
    return false;
  }
};

// A handle with a client of the proximity sensor that remembers.
struct Listener {
  Listener() {
    InitSensorInfo(&handle);
    EXPECT_EQ(RegisterProximitySensorCallback(handle, 0, Client<0>, &seen), 0);
  }
  ~Listener() { Close(); }
  void Close() {
    EndsInTime([this] { DeinitSensorInfo(&handle); });
  }

  Seen<Call> seen;
  void* handle = nullptr;
};

TEST_F(SensorLifetimeTest, AHandleThatWaitsForEventsEndsAtOnce) {
  RegisterProximityAndHearZero();
  RegisterHingeAndHearZero();
  ASSERT_TRUE(Eventually([] { return fake::LooperWaiters() == 1; }));
  EndsInTime([this] { DeinitSensorInfo(&handle_); });
  EXPECT_EQ(handle_, nullptr);
  EXPECT_EQ(Calls(SensorFunction::kDisableSensor), 2);
  EXPECT_EQ(hub_.queue_count(), 0u);
  DeinitSensorInfo(&handle_);
}

// The looper is one for all: each poll may take the others' news, each wake another's end. Three,
// since of two handles never more than one waits for its turn.
TEST_F(SensorLifetimeTest, HandlesSideBySideHearEveryReportAndEndAlone) {
  std::array<std::unique_ptr<Listener>, 3> listeners;
  for (auto& listener : listeners) listener = std::make_unique<Listener>();
  const int rounds = kSanitized ? 300 : 2'000;
  for (int round = 1; round <= rounds; ++round) {
    hub_.Report(kProximity, static_cast<float>(round));
    for (const auto& listener : listeners) {
      ASSERT_TRUE(Hears(listener->seen, round)) << "round " << round;
    }
    ASSERT_LE(fake::LooperWaiters(), 1);
    auto& next = listeners[static_cast<size_t>(round) % listeners.size()];
    if (round % 2 == 0) next = std::make_unique<Listener>();
  }
}

TEST_F(SensorLifetimeTest, HandlesComeAndGoAmidReports) {
  std::atomic<bool> stop{false};
  std::atomic<int> latest{0};
  std::thread sensor([&] {
    while (!stop) {
      hub_.Report(kProximity, static_cast<float>(++latest % 1000));
      std::this_thread::yield();
    }
  });
  Listener lasting;
  const int rounds = kSanitized ? 50 : 300;
  std::vector<std::thread> owners;
  for (int owner = 0; owner < 2; ++owner) {
    owners.emplace_back([&] {
      for (int round = 0; round < rounds; ++round) {
        Listener listener;
        EXPECT_TRUE(listener.seen.Take());
        if (round % 3 == 0) {
          EXPECT_EQ(DeregisterProximitySensorCallback(listener.handle, 0), 0);
        }
      }
    });
  }
  for (std::thread& owner : owners) owner.join();
  stop = true;
  sensor.join();
  hub_.Report(kProximity, 5000);
  EXPECT_TRUE(Hears(lasting.seen, 5000));
}

// One handle is inside a call to the platform, with its lock held; the other goes on.
TEST_F(SensorLifetimeTest, AHandleThatIsHeldUpHoldsNoOtherUp) {
  Listener busy;
  Listener idle;
  ASSERT_TRUE(busy.seen.Take());
  ASSERT_TRUE(idle.seen.Take());
  const auto gate = std::make_shared<Gate>();
  hub_.on(SensorFunction::kRegisterSensor).Then(Outcome::After(gate));
  std::thread registration([&] {
    EXPECT_EQ(RegisterHingeAngleSensorCallback(busy.handle, 0, Client<1>, &busy.seen), 0);
  });
  ASSERT_TRUE(gate->WaitForArrivals());
  for (int value = 1; value <= 20; ++value) {
    hub_.Report(kProximity, static_cast<float>(value));
    ASSERT_TRUE(Hears(idle.seen, value));
  }
  // A dump waits for nobody.
  EndsInTime([&] {
    EXPECT_NE(TextOf(DumpSensorInfo, busy.handle).find("client id:0"), std::string::npos);
  });
  Listener late;
  EXPECT_TRUE(Hears(late.seen, 20));
  idle.Close();
  gate->Open();
  registration.join();
  EXPECT_TRUE(Hears(busy.seen, 20));
}

// A client whose call lasts until the test lets it go, and which then does something.
struct LastGuest {
  std::function<void()> act;
  std::shared_ptr<Gate> gate = std::make_shared<Gate>();
  std::shared_ptr<Gate> done = std::make_shared<Gate>();
  static void OnValue(int, void* cookie) {
    const auto& self = *static_cast<LastGuest*>(cookie);
    self.gate->Pass();
    self.act();
    self.done->Open();
  }
};

// Between the moment at which Deinit tells the poll thread to end, and the one at which it has.
TEST_F(SensorLifetimeTest, ACallbackThatRegistersDoesNotKeepAnEndingHandleGoing) {
  LastGuest guest;
  guest.act = [&] {
    EXPECT_EQ(DeregisterProximitySensorCallback(handle_, 0), 0);
    EXPECT_EQ(RegisterProximitySensorCallback(handle_, 1, Client<1>, &seen_), 0);
  };
  const auto poll = std::make_shared<Gate>();
  hub_.on(SensorFunction::kPollOnce).Then(Outcome::After(poll));
  ASSERT_EQ(RegisterProximitySensorCallback(handle_, 0, LastGuest::OnValue, &guest), 0);
  ASSERT_TRUE(poll->WaitForArrivals());
  ASSERT_TRUE(guest.gate->WaitForArrivals());
  std::thread deinit([this] { EndsInTime([this] { DeinitSensorInfo(&handle_); }); });
  ASSERT_TRUE(hub_.on(SensorFunction::kWake).WaitForCalls(1));
  guest.gate->Open();
  guest.done->Pass();
  EXPECT_EQ(Count(ANDROID_LOG_DEBUG, "DisableSensor: poll already stopped."), 1);
  EXPECT_EQ(Count(ANDROID_LOG_DEBUG, "EnableSensor: poll started."), 2);
  poll->Open();
  deinit.join();
  EXPECT_EQ(hub_.queue_count(), 0u);
}

TEST_F(SensorLifetimeTest, EventsUnderWayTouchNothingThatIsGone) {
  RegisterProximityAndHearZero();
  HoldDeliveries hold(Delivery::kOneway);
  hub_.Report(kProximity, 1);
  ASSERT_TRUE(hold.WaitForHeld());
  EndsInTime([this] { DeinitSensorInfo(&handle_); });
  hold.Release();
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EXPECT_TRUE(seen_.empty());
}

TEST_F(SensorLifetimeTest, NobodyIsCalledAfterDeinitHasReturned) {
  const int rounds = kSanitized ? 200 : 1'000;
  for (int round = 0; round < rounds; ++round) {
    Seen<Call> seen;  // goes right after the handle: a later call would be a use after free
    void* handle = nullptr;
    InitSensorInfo(&handle);
    ASSERT_EQ(RegisterProximitySensorCallback(handle, 0, Client<0>, &seen), 0);
    ASSERT_EQ(RegisterHingeAngleSensorCallback(handle, 0, Client<1>, &seen), 0);
    hub_.Report({{.type = kProximity, .value = 1}, {.type = kHinge, .value = 2}});
    if (round % 2 == 0) {
      ASSERT_TRUE(seen.Take());
    }
    EndsInTime([&] { DeinitSensorInfo(&handle); });
  }
}

// Clients that come and go and dumps, each on two threads, beside the reports.
TEST_F(SensorLifetimeTest, OneHandleServesManyThreads) {
  constexpr int kRounds = kSanitized ? 200 : 1'000;
  std::atomic<int> heard{0};
  const auto count = [](int, void* cookie) { ++*static_cast<std::atomic<int>*>(cookie); };
  std::vector<std::thread> threads;
  const auto in_turn = [&](auto action) {
    threads.emplace_back([action] {
      for (int round = 0; round < kRounds; ++round) action(round);
    });
  };
  for (int id = 0; id < 2; ++id) {
    in_turn([&, id](int) {
      EXPECT_EQ(RegisterProximitySensorCallback(handle_, id, count, &heard), 0);
      EXPECT_EQ(RegisterHingeAngleSensorCallback(handle_, id, count, &heard), 0);
      EXPECT_EQ(DeregisterProximitySensorCallback(handle_, id), 0);
      EXPECT_EQ(DeregisterHingeAngleSensorCallback(handle_, id), 0);
    });
    in_turn([&](int) {
      const std::string dump = Dump();
      EXPECT_TRUE(dump.starts_with("SensorInfo:\n  Poll :"));
      EXPECT_NE(dump.find("  Sensor: HINGE_ANGLE\n"), std::string::npos);
    });
  }
  in_turn([&](int round) {
    const auto value = static_cast<float>(round);
    hub_.Report({{.type = kProximity, .value = value}, {.type = kHinge, .value = value}});
  });
  for (std::thread& thread : threads) thread.join();
  EXPECT_GT(heard, 0);
  ASSERT_EQ(RegisterProximitySensorCallback(handle_, 0, Client<0>, &seen_), 0);
  hub_.Report(kProximity, 5000);
  EXPECT_TRUE(Hears(seen_, 5000));
  DeinitSensorInfo(&handle_);  // before the counter goes
}

TEST_F(SensorLifetimeTest, HandlesLeaveNothingBehind) {
  EXPECT_TRUE(Eventually([] { return LibraryThreadCount() == 3; }));
  DeinitSensorInfo(&handle_);
  const int rounds = kSanitized ? 100 : 1'000;
  for (int round = 0; round < rounds; ++round) Listener();
  EXPECT_EQ(hub_.queue_count(), 0u);
  EXPECT_TRUE(Eventually([] { return LibraryThreadCount() == 0; }));
}

TEST_F(SensorLifetimeTest, AHandleThatLivesLongDoesNotGrow) {
  if (kSanitized) GTEST_SKIP() << "the sanitizers have an allocator of their own";
  RegisterProximityAndHearZero();
  const auto cycles = [this](int count) {
    for (int i = 0; i < count; ++i) {
      ASSERT_EQ(RegisterProximitySensorCallback(handle_, 1, Client<0>, &seen_), 0);
      ASSERT_EQ(DeregisterProximitySensorCallback(handle_, 1), 0);
      log_.Clear();  // the capture's own memory
      while (seen_.Take(std::chrono::milliseconds(0))) continue;
    }
  };
  cycles(1'000);
  const size_t before = mallinfo2().uordblks;
  cycles(20'000);
  EXPECT_LT(mallinfo2().uordblks, before + 100'000);  // 5 bytes a round
}

// Two handles that are never given back, one of which polls while the other waits its turn.
[[noreturn]] void ExitWithHandles() {
  static auto& hub = *new simulated::SensorHub;
  hub.Add(kProximity, "proximity");
  hub.Start();
  static auto& seen = *new Seen<Call>;
  static std::array<void*, 2> handles;
  for (void*& handle : handles) {
    InitSensorInfo(&handle);
    RegisterProximitySensorCallback(handle, 0, Client<0>, &seen);
    if (!seen.Take()) std::_Exit(1);
  }
  if (!Eventually([] { return fake::LooperWaiters() == 1; })) std::_Exit(1);
  std::exit(0);
}

TEST(SensorExitDeathTest, TheProcessMayExitWithHandlesLeft) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(ExitWithHandles(), testing::ExitedWithCode(0), "");
}

TEST(SensorLateServiceTest, AHandleMayEndWhileItsWorkerFindsTheService) {
  const fake::LogCapture log;
  const int rounds = 20;
  int enabled = 0;
  for (int round = 0; round < rounds; ++round) {
    simulated::SensorHub hub;
    hub.Add(kProximity, "proximity");
    Seen<Call> seen;
    void* handle = nullptr;
    InitSensorInfo(&handle);
    // The worker's first attempt waits until the service is there, and Deinit for the attempt.
    fake::Script& look_ups = hub.on(fake::BinderFunction::kCheckService);
    const auto gate = std::make_shared<Gate>();
    look_ups.Then({.status = STATUS_NAME_NOT_FOUND});
    look_ups.Then(Outcome::After(gate));
    EXPECT_EQ(RegisterProximitySensorCallback(handle, 0, Client<0>, &seen), 0);
    ASSERT_TRUE(look_ups.WaitForCalls(2));
    hub.Start();
    std::thread opener([&] {
      if (round % 2 == 0) std::this_thread::yield();
      gate->Open();
    });
    EndsInTime([&] { DeinitSensorInfo(&handle); });
    opener.join();
    EXPECT_EQ(hub.queue_count(), 0u);
    enabled += hub.on(SensorFunction::kRegisterSensor).calls();
    ASSERT_TRUE(fake::WaitUntilDelivered());
  }
  EXPECT_GT(enabled, 0);
}

// The same moment as above, and now it is the worker that enables a sensor, one that was asked for
// before the service was up. Its second attempt comes a second after the first.
TEST(SensorLateServiceSlowTest, ASensorThatWaitedDoesNotKeepAnEndingHandleGoing) {
  const fake::LogCapture log;
  simulated::SensorHub hub;
  hub.Add(kProximity, "proximity");
  hub.Add(kHinge, "hinge angle");
  Seen<Call> seen;
  void* handle = nullptr;
  InitSensorInfo(&handle);
  ASSERT_EQ(RegisterProximitySensorCallback(handle, 0, Client<0>, &seen), 0);
  ASSERT_TRUE(hub.on(fake::BinderFunction::kCheckService).WaitForCalls(2));
  hub.Start();
  LastGuest guest;
  guest.act = [&] { EXPECT_EQ(DeregisterHingeAngleSensorCallback(handle, 0), 0); };
  const auto poll = std::make_shared<Gate>();
  hub.on(SensorFunction::kPollOnce).Then(Outcome::After(poll));
  ASSERT_EQ(RegisterHingeAngleSensorCallback(handle, 0, LastGuest::OnValue, &guest), 0);
  ASSERT_TRUE(poll->WaitForArrivals());
  ASSERT_TRUE(guest.gate->WaitForArrivals());
  std::thread deinit([&] { EndsInTime([&] { DeinitSensorInfo(&handle); }); });
  ASSERT_TRUE(hub.on(SensorFunction::kWake).WaitForCalls(1));
  guest.gate->Open();
  guest.done->Pass();
  EXPECT_TRUE(Eventually([&] { return hub.listeners(kProximity) == 1; }));
  poll->Open();
  deinit.join();
  EXPECT_EQ(hub.queue_count(), 0u);
}

}  // namespace
}  // namespace norvik::qel
