// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Sensor handles that end while they poll, share the process's looper, or are left at exit.
#include <array>
#include <cstdlib>

#include "environment.h"
#include "sensor_fixture.h"

namespace norvik::qel {
namespace {

class SensorLifetimeTest : public SensorFixture {
 protected:
  SensorLifetimeTest() { hub_.Start(); }
};

// A handle with a client of the proximity sensor.
struct Listener {
  Listener() {
    InitSensorInfo(&handle);
    EXPECT_EQ(RegisterProximitySensorCallback(handle, 0, Client<0>, &seen), 0);
  }
  ~Listener() { Close(); }
  void Close() {
    EndsInTime([this] { DeinitSensorInfo(&handle); }, "DeinitSensorInfo()");
  }

  Seen<Call> seen;
  void* handle = nullptr;
};

// All handles poll one looper, so a poll may take another handle's events, and a wake may end
// another handle's poll. Three handles, because with two at most one waits for the looper.
TEST_F(SensorLifetimeTest, HandlesThatShareTheLooperReceiveEveryReportAndEndAlone) {
  std::array<std::unique_ptr<Listener>, 3> listeners;
  for (auto& listener : listeners) listener = std::make_unique<Listener>();
  const int rounds = kSanitized ? 300 : 2'000;
  for (int round = 1; round <= rounds; ++round) {
    hub_.Report(kProximity, static_cast<float>(round));
    for (const auto& listener : listeners) {
      ASSERT_TRUE(listener->seen.TakeUntil({0, round})) << "round " << round;
    }
    ASSERT_LE(fake::LooperWaiters(), 1);
    auto& next = listeners[static_cast<size_t>(round) % listeners.size()];
    if (round % 2 == 0) next = std::make_unique<Listener>();
  }
}

// The busy handle is inside a call to the platform and holds its lock.
TEST_F(SensorLifetimeTest, ASlowPlatformCallHoldsUpNoOtherHandleAndNoDump) {
  Listener busy;
  Listener idle;
  ASSERT_TRUE(busy.seen.Take());
  ASSERT_TRUE(idle.seen.Take());
  const auto gate = std::make_shared<Gate>();
  hub_.on(SensorFunction::kRegisterSensor).Then(Outcome::After(gate));
  Background registration("a registration", [&] {
    EXPECT_EQ(RegisterHingeAngleSensorCallback(busy.handle, 0, Client<1>, &busy.seen), 0);
  });
  ASSERT_TRUE(gate->WaitForArrivals());
  for (int value = 1; value <= 20; ++value) {
    hub_.Report(kProximity, static_cast<float>(value));
    ASSERT_TRUE(idle.seen.TakeUntil({0, value}));
  }
  EndsInTime([&] {
    EXPECT_NE(TextOf(DumpSensorInfo, busy.handle).find("client id:0"), std::string::npos);
  });
  Listener late;
  EXPECT_TRUE(late.seen.TakeUntil({0, 20}));
  idle.Close();
  gate->Open();
  registration.Join();
  EXPECT_TRUE(busy.seen.TakeUntil({0, 20}));
}

// Runs `action` in a callback after Deinit...() has sent the wake that ends the poll, and before
// the poll ends. Then the handle ends.
struct ActsAtTheEnd {
  ActsAtTheEnd() {
    client.action = [this](int) { Act(); };
  }
  void Act() {
    may_act.Pass();
    action();
    done.Put(true);
  }
  // `add` registers the client.
  void Run(simulated::SensorHub& hub, void** handle,
           int (*add)(void* handle, int id, SensorCallbackFunc callback, void* cookie)) {
    const auto poll = std::make_shared<Gate>();
    hub.on(SensorFunction::kPollOnce).Then(Outcome::After(poll));
    ASSERT_EQ(add(*handle, 0, ActingClient::OnValue, &client), 0);
    ASSERT_TRUE(poll->WaitForArrivals());
    ASSERT_TRUE(may_act.WaitForArrivals());
    Background deinit("DeinitSensorInfo()", [=] { DeinitSensorInfo(handle); });
    ASSERT_TRUE(hub.on(SensorFunction::kWake).WaitForCalls(1));
    may_act.Open();
    EXPECT_TRUE(done.Take());
    meanwhile();
    poll->Open();
    deinit.Join();
    EXPECT_EQ(hub.queue_count(), 0u);
  }

  std::function<void()> action;
  std::function<void()> meanwhile = [] {};  // after the action, before the end of the poll
  ActingClient client;
  Gate may_act;
  Seen<bool> done;
};

TEST_F(SensorLifetimeTest, ACallbackThatRegistersDoesNotKeepAnEndingHandleGoing) {
  ActsAtTheEnd end;
  end.action = [&] {
    EXPECT_EQ(DeregisterProximitySensorCallback(handle_, 0), 0);
    EXPECT_EQ(RegisterProximitySensorCallback(handle_, 1, Client<1>, &seen_), 0);
  };
  end.meanwhile = [&] {
    EXPECT_EQ(log_.Count("DisableSensor: poll already stopped."), 1);
    EXPECT_EQ(log_.Count("EnableSensor: poll started."), 2);
  };
  end.Run(hub_, &handle_, RegisterProximitySensorCallback);
}

// Exits with two handles that were not destroyed: one polls, the other waits for the looper.
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
  EXPECT_EXIT(ExitWithHandles(), testing::ExitedWithCode(0), "");
}

// The worker enables a sensor that waited for the service. Its second attempt follows a second
// after the first.
using SensorEndSlowTest = SensorFixture;
TEST_F(SensorEndSlowTest, ASensorThatWaitedDoesNotKeepAnEndingHandleGoing) {
  ASSERT_EQ(RegisterProximitySensorCallback(handle_, 0, Client<0>, &seen_), 0);
  ASSERT_TRUE(Eventually([this] { return log_.Count(kNoService) == 2; }));
  hub_.Start();
  ActsAtTheEnd end;
  end.action = [&] { EXPECT_EQ(DeregisterHingeAngleSensorCallback(handle_, 0), 0); };
  end.meanwhile = [&] { EXPECT_TRUE(Eventually([&] { return hub_.listeners(kProximity) == 1; })); };
  end.Run(hub_, &handle_, RegisterHingeAngleSensorCallback);
}

}  // namespace
}  // namespace norvik::qel
