// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Thermal clients that call the library from their callbacks, handles that go away, and what they
// leave behind.
#include <android/log.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "environment.h"
#include "process_state.h"
#include "thermal_fixture.h"

namespace norvik::qel {
namespace {

using fake::Delivery;
using fake::Gate;
using fake::HoldDeliveries;
using fake::Outcome;

class ThermalLifetimeTest : public ThermalPathTest {
 protected:
  ~ThermalLifetimeTest() override {
    EndsInTime([this] { DeinitThermalInfo(&handle_); });
    EXPECT_EQ(registered(), 0u);
  }
  // How often the service has been told to unregister, and has not refused.
  int Unregistered() { return on(ThermalCall::kUnregister).calls(); }
};
INSTANTIATE_TEST_SUITE_P(, ThermalLifetimeTest,
                         testing::Values(ThermalPath::kAidl, ThermalPath::kHidl), PathName);

// Every thread that has not been joined keeps its stack mapped.
int Mappings() {
  std::ifstream maps("/proc/self/maps");
  return static_cast<int>(std::count(std::istreambuf_iterator<char>(maps), {}, '\n'));
}

// A client that calls the library from its callback.
struct Caller {
  void* handle = nullptr;
  std::function<void(Caller&)> action = {};
  Seen<int> results = {};

  static void Callback(int /*severity*/, void* cookie) {
    auto& caller = *static_cast<Caller*>(cookie);
    caller.action(caller);
  }
};

TEST_P(ThermalLifetimeTest, ACallbackMayDeregisterItselfAsTheLastClient) {
  Caller self = {.handle = handle_, .action = [](Caller& caller) {
                   caller.results.Put(DeregisterThermalCallback(caller.handle, 1));
                   caller.results.Put(DeregisterThermalCallback(caller.handle, 1));
                 }};
  const int rounds = kSanitized ? 50 : 300;
  for (int round = 1; round <= rounds; ++round) {
    ASSERT_EQ(RegisterClient(handle_, 1, "SKIN", "skin", Caller::Callback, &self), 0);
    ASSERT_EQ(self.results.Take(), 0);
    ASSERT_EQ(self.results.Take(), -EINVAL);
    ASSERT_EQ(Unregistered(), round);
  }
  EXPECT_EQ(registered(), 0u);
  // The two of the handle: those of the type end by themselves.
  EXPECT_TRUE(Eventually([] { return LibraryThreadCount() == 2; }));
  EndsInTime([this] { DeinitThermalInfo(&handle_); });
}

// Only callbacks call, so nobody but workers can collect what other workers have left.
TEST_P(ThermalLifetimeTest, CallbacksThatReplaceThemselvesLeaveNothingBehind) {
  static constexpr const char* kTypes[] = {"SKIN", "CPU"};
  static constexpr const char* kNames[] = {"skin", "cpu"};
  struct Relay {
    void* handle;
    const int rounds;
    int round = 0;
    int most_threads = 0;
    Seen<bool> done = {};
    static void Callback(int /*severity*/, void* cookie) {
      auto& relay = *static_cast<Relay*>(cookie);
      const int id = relay.round++;
      if (id == relay.rounds) {
        relay.done.Put(true);
        return;
      }
      relay.most_threads = std::max(relay.most_threads, LibraryThreadCount());
      EXPECT_EQ(DeregisterThermalCallback(relay.handle, id), 0);
      EXPECT_EQ(RegisterClient(relay.handle, relay.round, kTypes[relay.round % 2],
                               kNames[relay.round % 2], Callback, &relay),
                0);
    }
  };
  Relay relay = {.handle = handle_, .rounds = kSanitized ? 50 : 300};
  const int mappings = Mappings();
  ASSERT_EQ(RegisterClient(handle_, 0, kTypes[0], kNames[0], Relay::Callback, &relay), 0);
  EXPECT_TRUE(relay.done.Take());
  EXPECT_EQ(Unregistered(), relay.rounds);
  EXPECT_LE(relay.most_threads, 2 + 3);
  if (!kSanitized) {
    EXPECT_LT(Mappings(), mappings + relay.rounds / 2);
  }
  EndsInTime([this] { DeinitThermalInfo(&handle_); });
}

TEST_P(ThermalLifetimeTest, ACallbackAndAThreadMayDeregisterTheSameLastClient) {
  const int rounds = kSanitized ? 100 : 500;
  for (int round = 1; round <= rounds; ++round) {
    Caller self = {.handle = handle_, .action = [](Caller& caller) {
                     caller.results.Put(DeregisterThermalCallback(caller.handle, 1));
                   }};
    ASSERT_EQ(RegisterClient(handle_, 1, "SKIN", "skin", Caller::Callback, &self), 0);
    int outside = 0;
    EndsInTime([&] { outside = DeregisterThermalCallback(handle_, 1); });
    ASSERT_TRUE(Eventually([] { return LibraryThreadCount() == 2; }));
    // The thread may have come before the client was told at all.
    const auto inside = self.results.Take(std::chrono::milliseconds(0));
    ASSERT_TRUE(outside == 0 ? !inside || inside == -EINVAL : inside == 0);
    ASSERT_EQ(Unregistered(), round) << "told once";
  }
}

TEST_P(ThermalLifetimeTest, TwoCallbacksMayDeregisterEachOthersLastClient) {
  const int rounds = kSanitized ? 50 : 300;
  for (int round = 1; round <= rounds; ++round) {
    Gate both;
    const auto deregister = [&both](int other) {
      return [&both, other](Caller& caller) {
        both.Pass();
        caller.results.Put(DeregisterThermalCallback(caller.handle, other));
      };
    };
    Caller skin = {.handle = handle_, .action = deregister(2)};
    Caller cpu = {.handle = handle_, .action = deregister(1)};
    ASSERT_EQ(RegisterClient(handle_, 1, "SKIN", "skin", Caller::Callback, &skin), 0);
    ASSERT_EQ(RegisterClient(handle_, 2, "CPU", "cpu", Caller::Callback, &cpu), 0);
    ASSERT_TRUE(both.WaitForArrivals(2));
    both.Open();
    ASSERT_EQ(skin.results.Take(), 0);
    ASSERT_EQ(cpu.results.Take(), 0);
    ASSERT_EQ(Unregistered(), 2 * round);
    ASSERT_TRUE(Eventually([] { return LibraryThreadCount() == 2; })) << "before the gate goes";
  }
}

TEST_P(ThermalLifetimeTest, ACallbackMayCallEveryFunction) {
  Caller everything = {
      .handle = handle_, .action = [](Caller& caller) {
        void* const handle = caller.handle;
        const char* name = "skin";
        thermistor reading = {};
        int count = 1;
        int limits[16] = {};
        int size = 16;
        static Seen<Call> seen;
        caller.results.Put(GetBulkTemperatureByNames(handle, &name, 1, &reading, &count));
        caller.results.Put(GetBatteryChargeLimitCurrent(handle, limits, &size, false));
        caller.results.Put(GetBatteryChargeLimitVoltage(handle, limits, &size, true));
        caller.results.Put(RegisterClient(handle, 2, "SKIN", "skin", Client<2>, &seen));
        caller.results.Put(RegisterClient(handle, 3, "CPU", "cpu", Client<3>, &seen));
        caller.results.Put(RegisterClient(handle, 4, "GPU", "none", Client<4>, &seen) + EINVAL);
        caller.results.Put(DeregisterThermalCallback(handle, 3));
        caller.results.Put(DeregisterThermalCallback(handle, 2));
        caller.results.Put(GetThermalTypeByName(handle, "CPU"));
        caller.results.Put(GetThrottlingSeverityByName(handle, "NONE"));
        caller.results.Put(TextOf(DumpThermalInfo, handle).find("id: 1") == std::string::npos);
        caller.results.Put(DeregisterThermalCallback(handle, 1));
        caller.results.Put(1000);
      }};
  ASSERT_EQ(RegisterClient(handle_, 1, "SKIN", "skin", Caller::Callback, &everything), 0);
  for (int call = 0; call < 12; ++call) ASSERT_EQ(everything.results.Take(), 0) << call;
  ASSERT_EQ(everything.results.Take(), 1000);
  EXPECT_EQ(registered(), 0u);
  EndsInTime([this] { DeinitThermalInfo(&handle_); });
}

// For a callback: returns once the end of its handle has begun, as its registrations tell.
void WaitForTheEnd(void* handle) {
  static Seen<Call> unheard;
  while (RegisterClient(handle, 9, "CPU", "cpu", Client<9>, &unheard) == 0) {
    EXPECT_EQ(DeregisterThermalCallback(handle, 9), 0);
    std::this_thread::yield();
  }
}

TEST_P(ThermalLifetimeTest, TheEndWaitsForACallbackAndRefusesItsRegistrations) {
  Gate called;
  Caller self = {.handle = handle_, .action = [&called](Caller& caller) {
                   called.Pass();
                   WaitForTheEnd(caller.handle);
                   caller.results.Put(DeregisterThermalCallback(caller.handle, 1));
                 }};
  ASSERT_EQ(RegisterClient(handle_, 1, "SKIN", "skin", Caller::Callback, &self), 0);
  ASSERT_TRUE(called.WaitForArrivals());
  called.Open();
  EndsInTime([this] { DeinitThermalInfo(&handle_); });
  EXPECT_FALSE(self.results.empty());
  EXPECT_EQ(registered(), 0u);
  EXPECT_TRUE(Eventually([] { return LibraryThreadCount() == 0; }));
}

TEST_P(ThermalLifetimeTest, AHandleMayGoWhileItsDeathNotificationIsAboutToRun) {
  const int rounds = kSanitized ? 20 : 100;
  for (int round = 0; round < rounds; ++round) {
    RegisterAndHear<1>("SKIN", "skin");
    HoldDeliveries notifications(Delivery::kDeathNotification);
    thermal_.Start(GetParam());
    ASSERT_TRUE(notifications.WaitForHeld());
    DeinitThermalInfo(&handle_);
    // Probably at the same address: the death notification must leave it alone.
    InitThermalInfo(&handle_);
    RegisterAndHear<2>("SKIN", "skin");
    notifications.Release();
    ASSERT_TRUE(fake::WaitUntilDelivered());
    ASSERT_EQ(registered(), 1u);
    thermal_.SetSeverity("skin", ThrottlingSeverity::LIGHT);
    ASSERT_EQ(seen_.Take(), (Call{2, 1}));
    ASSERT_EQ(registered(), 1u) << "registered once, not twice";
    thermal_.SetSeverity("skin", ThrottlingSeverity::NONE);
    ASSERT_EQ(seen_.Take(), (Call{2, 0}));
    ASSERT_EQ(log_.Count(kRecovered), 0);
    DeinitThermalInfo(&handle_);
    InitThermalInfo(&handle_);
  }
}

// Connected by one path, a callback makes a link by the other while its handle goes; that link's
// death notification comes when the handle is gone.
TEST_P(ThermalLifetimeTest, ALinkMadeAtTheVeryEndTouchesNothing) {
  const ThermalPath other =
      GetParam() == ThermalPath::kAidl ? ThermalPath::kHidl : ThermalPath::kAidl;
  std::optional<HoldDeliveries> notifications;
  Gate called;
  Caller self = {
      .handle = handle_, .action = [&](Caller& caller) {
        called.Pass();
        // Until the handle has left its types and its service.
        EXPECT_TRUE(
            Eventually([&] { return TextOf(DumpThermalInfo, caller.handle) == "ThermalInfo:\n"; }));
        Bring(other);
        const char* name = "skin";
        thermistor reading = {};
        int count = 1;
        EXPECT_EQ(GetBulkTemperatureByNames(caller.handle, &name, 1, &reading, &count), 0);
        caller.results.Put(count);
        notifications.emplace(Delivery::kDeathNotification);
        thermal_.Kill(other);
        EXPECT_TRUE(notifications->WaitForHeld());
      }};
  ASSERT_EQ(RegisterClient(handle_, 1, "SKIN", "skin", Caller::Callback, &self), 0);
  ASSERT_TRUE(called.WaitForArrivals());
  called.Open();
  thermal_.Kill(GetParam());
  thermal_.Undeclare(GetParam());
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EndsInTime([this] { DeinitThermalInfo(&handle_); });
  EXPECT_EQ(self.results.Take(), 1);
  notifications->Release();
  EXPECT_TRUE(fake::WaitUntilDelivered());
}

TEST_P(ThermalLifetimeTest, TheEndUnlinksFromAHidlService) {
  RegisterAndHear<1>("SKIN", "skin");
  DeinitThermalInfo(&handle_);
  EXPECT_EQ(thermal_.on(fake::BinderFunction::kHidlUnlinkToDeath).calls(),
            GetParam() == ThermalPath::kHidl ? 1 : 0);
}

// The new handle is probably at the same address.
TEST_P(ThermalLifetimeTest, ADeathNotificationOfAnEarlierServiceLeavesALinkByTheOtherPathAlone) {
  RegisterAndHear<1>("SKIN", "skin");
  HoldDeliveries notifications(Delivery::kDeathNotification);
  thermal_.Kill(GetParam());
  ASSERT_TRUE(notifications.WaitForHeld());
  thermal_.Undeclare(GetParam());
  DeinitThermalInfo(&handle_);
  const ThermalPath other =
      GetParam() == ThermalPath::kAidl ? ThermalPath::kHidl : ThermalPath::kAidl;
  Bring(other);
  InitThermalInfo(&handle_);
  RegisterAndHear<2>("SKIN", "skin");
  notifications.Release();
  ASSERT_TRUE(fake::WaitUntilDelivered());
  thermal_.SetSeverity("skin", ThrottlingSeverity::LIGHT);
  EXPECT_EQ(seen_.Take(), (Call{2, 1}));
  EXPECT_EQ(thermal_.callback_count(other), 1u) << "registered once, not twice";
  EXPECT_EQ(log_.Count(kRecovered), 0);
}

TEST_P(ThermalLifetimeTest, ALateNotificationTouchesNothing) {
  RegisterAndHear<1>("SKIN", "skin");
  HoldDeliveries calls(Delivery::kOneway);
  thermal_.SetSeverity("skin", ThrottlingSeverity::LIGHT);
  ASSERT_TRUE(calls.WaitForHeld());
  DeinitThermalInfo(&handle_);
  calls.Release();
  EXPECT_TRUE(fake::WaitUntilDelivered());
  EXPECT_TRUE(seen_.empty());
}

TEST_P(ThermalLifetimeTest, HandlesLeaveNothingBehind) {
  DeinitThermalInfo(&handle_);
  const auto cycle = [this] {
    Seen<Call> seen;
    void* handle = nullptr;
    InitThermalInfo(&handle);
    ASSERT_EQ(RegisterClient(handle, 1, "SKIN", "skin", Client<1>, &seen), 0);
    ASSERT_EQ(RegisterClient(handle, 2, "CPU", "cpu", Client<2>, &seen), 0);
    ASSERT_EQ(DeregisterThermalCallback(handle, 1), 0);
    DeinitThermalInfo(&handle);
    ASSERT_EQ(registered(), 0u);
    log_.Clear();
  };
  for (int round = 0; round < 10; ++round) cycle();
  const int before = Descriptors();
  for (int round = 0; round < (kSanitized ? 100 : 1'000); ++round) cycle();
  EXPECT_EQ(Descriptors(), before);
  EXPECT_TRUE(Eventually([] { return LibraryThreadCount() == 0; }));
}

// Everything at once: reports, deaths, and handles that come and go with their clients.
TEST_P(ThermalLifetimeTest, HandlesComeAndGoAmidReportsAndDeaths) {
  std::atomic<bool> stop{false};
  std::thread phone([&] {
    for (int round = 0; !stop; ++round) {
      thermal_.SetSeverity("skin", static_cast<ThrottlingSeverity>(round % 7));
      if (round % 10 == 9) thermal_.Start(GetParam());
      std::this_thread::yield();
    }
  });
  std::vector<std::thread> owners;
  for (int owner = 0; owner < 2; ++owner) {
    owners.emplace_back([&] {
      for (int round = 0; round < (kSanitized ? 100 : 500); ++round) {
        void* handle = nullptr;
        InitThermalInfo(&handle);
        Seen<Call> seen;
        // The service may be away or die meanwhile: only the end is asserted.
        static_cast<void>(RegisterClient(handle, 1, "SKIN", "skin", Client<1>, &seen));
        static_cast<void>(RegisterClient(handle, 2, "CPU", "cpu", Client<2>, &seen));
        static_cast<void>(TextOf(DumpThermalInfo, handle));
        if (round % 2 == 0) {
          static_cast<void>(DeregisterThermalCallback(handle, 1));
          static_cast<void>(DeregisterThermalCallback(handle, 2));
        }
        EndsInTime([&] { DeinitThermalInfo(&handle); });
        log_.Clear();
      }
    });
  }
  for (std::thread& owner : owners) owner.join();
  stop = true;
  phone.join();
  thermal_.Start(GetParam());
  ASSERT_TRUE(fake::WaitUntilDelivered());
  thermal_.SetSeverity("skin", ThrottlingSeverity::NONE);
  RegisterAndHear<1>("SKIN", "skin");
  thermal_.SetSeverity("skin", ThrottlingSeverity::SEVERE);
  EXPECT_EQ(seen_.Take(), (Call{1, 3}));
}

}  // namespace
}  // namespace norvik::qel
