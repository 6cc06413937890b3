// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Thermal clients that call the library from their callbacks, also while their handle ends.
#include <fstream>
#include <iterator>

#include "environment.h"
#include "process_state.h"
#include "thermal_fixture.h"

namespace norvik::qel {
namespace {

class ThermalLifetimeTest : public ThermalPathTest {
 protected:
  ~ThermalLifetimeTest() override {
    Deinit();
    EXPECT_EQ(registered(), 0u);
  }
  // The number of unregistrations that the service has received.
  int Unregistered() { return on(ThermalCall::kUnregister).calls(); }
  int RegisterActing(int id, ActingClient& client, const char* type = "SKIN",
                     const char* name = "skin") {
    return RegisterClient(handle_, id, type, name, ActingClient::OnValue, &client);
  }
  // Waits until only the handle's two threads are left. The types' threads end by themselves.
  static bool TypesHaveEnded() {
    return Eventually([] { return LibraryThreadCount() == 2; });
  }
  static ThermalPath other_path() { return is_aidl() ? ThermalPath::kHidl : ThermalPath::kAidl; }

  Seen<int> results_;
};
QUORVEL_TEST_BOTH_PATHS(ThermalLifetimeTest);

// The number of memory mappings. A thread that was not joined keeps its stack mapped.
int Mappings() {
  std::ifstream maps("/proc/self/maps");
  return static_cast<int>(std::count(std::istreambuf_iterator<char>(maps), {}, '\n'));
}

// Only callbacks call the library, so only workers can join the workers that have ended.
TEST_P(ThermalLifetimeTest, CallbacksThatReplaceThemselvesLeaveNothingBehind) {
  const int rounds = kSanitized ? 50 : 300;
  int round = 0;
  int most_threads = 0;
  ActingClient relay;
  const auto add = [&] {
    const bool skin = round % 2 == 0;
    return RegisterActing(round, relay, skin ? "SKIN" : "CPU", skin ? "skin" : "cpu");
  };
  relay.action = [&](int) {
    most_threads = std::max(most_threads, LibraryThreadCount());
    const int id = round++;
    results_.Put(id);
    if (id == rounds) return;
    EXPECT_EQ(DeregisterThermalCallback(handle_, id), 0);
    EXPECT_EQ(add(), 0);
  };
  const int mappings = Mappings();
  ASSERT_EQ(add(), 0);
  EXPECT_EQ(results_.TakeMany(rounds + 1).size(), rounds + 1u);
  EXPECT_EQ(Unregistered(), rounds);
  EXPECT_LT(most_threads, rounds / 2);
  if (!kSanitized) {
    EXPECT_LT(Mappings(), mappings + rounds / 2);
  }
  Deinit();
}

TEST_P(ThermalLifetimeTest, ACallbackAndAThreadMayDeregisterTheSameLastClient) {
  ActingClient self = {
      .action = [this](int) { results_.Put(DeregisterThermalCallback(handle_, 1)); }};
  const int rounds = kSanitized ? 100 : 500;
  for (int round = 1; round <= rounds; ++round) {
    ASSERT_EQ(RegisterActing(1, self), 0);
    int outside = 0;
    EndsInTime([&] { outside = DeregisterThermalCallback(handle_, 1); });
    ASSERT_TRUE(TypesHaveEnded());
    // The thread may have deregistered the client before its first call.
    const auto inside = results_.Take(std::chrono::milliseconds(0));
    ASSERT_TRUE(outside == 0 ? !inside || inside == -EINVAL : inside == 0);
    ASSERT_EQ(Unregistered(), round) << "unregistered once";
  }
  Deinit();
}

TEST_P(ThermalLifetimeTest, TwoCallbacksMayDeregisterEachOthersLastClient) {
  const int rounds = kSanitized ? 50 : 300;
  for (int round = 1; round <= rounds; ++round) {
    Gate both;
    const auto deregister = [&](int other) {
      return [&both, other, this](int) {
        both.Pass();
        results_.Put(DeregisterThermalCallback(handle_, other));
      };
    };
    ActingClient skin = {.action = deregister(2)};
    ActingClient cpu = {.action = deregister(1)};
    ASSERT_EQ(RegisterActing(1, skin), 0);
    ASSERT_EQ(RegisterActing(2, cpu, "CPU", "cpu"), 0);
    ASSERT_TRUE(both.WaitForArrivals(2));
    both.Open();
    ASSERT_THAT(results_.TakeMany(2), testing::ElementsAre(0, 0));
    ASSERT_EQ(Unregistered(), 2 * round);
    ASSERT_TRUE(TypesHaveEnded()) << "before the gate is destroyed";
  }
}

TEST_P(ThermalLifetimeTest, DeinitWaitsForACallbackAndRefusesItsRegistrations) {
  Gate called;
  ActingClient self = {.action = [&](int) {
    called.Pass();
    int result = 0;
    EXPECT_TRUE(Eventually([&] {
      result = Register<9>("CPU", "cpu");
      static_cast<void>(DeregisterThermalCallback(handle_, 9));  // Deinit...() may have been first
      return result != 0;
    }));
    EXPECT_EQ(result, -EINVAL);
    results_.Put(DeregisterThermalCallback(handle_, 1));
  }};
  ASSERT_EQ(RegisterActing(1, self), 0);
  ASSERT_TRUE(called.WaitForArrivals());
  called.Open();
  Deinit();
  EXPECT_FALSE(results_.empty());
  EXPECT_EQ(registered(), 0u);
  EXPECT_TRUE(Eventually([] { return LibraryThreadCount() == 0; }));
}

// While its handle ends, a callback connects to the service of the other path. That service's death
// notification arrives after the handle has been destroyed.
TEST_P(ThermalLifetimeTest, ALinkMadeDuringDeinitIsNotUsedAfterwards) {
  std::optional<HoldDeliveries> notifications;
  Gate called;
  ActingClient self = {.action = [&](int) {
    called.Pass();
    // Waits until Deinit...() has removed the handle's types.
    EXPECT_TRUE(Eventually([this] { return Dump() == "ThermalInfo:\n"; }));
    Bring(other_path());
    results_.Put(QuerySkin(handle_));
    notifications.emplace(Delivery::kDeathNotification);
    thermal_.Kill(other_path());
    EXPECT_TRUE(notifications->WaitForHeld());
  }};
  ASSERT_EQ(RegisterActing(1, self), 0);
  ASSERT_TRUE(called.WaitForArrivals());
  called.Open();
  thermal_.Kill(GetParam());
  thermal_.Undeclare(GetParam());
  ASSERT_TRUE(fake::WaitUntilDelivered());
  Deinit();
  EXPECT_EQ(results_.Take(), 1);
  notifications->Release();
  EXPECT_TRUE(fake::WaitUntilDelivered());
}

// The new handle probably has the same address as the old one.
TEST_P(ThermalLifetimeTest, ADeathNotificationOfAnEarlierServiceLeavesALinkByTheOtherPathAlone) {
  RegisterSkin();
  HoldDeliveries notifications(Delivery::kDeathNotification);
  thermal_.Kill(GetParam());
  ASSERT_TRUE(notifications.WaitForHeld());
  thermal_.Undeclare(GetParam());
  Deinit();
  EXPECT_EQ(thermal_.on(BinderFunction::kHidlUnlinkToDeath).calls(), is_aidl() ? 0 : 1);
  Bring(other_path());
  Init();
  RegisterSkin();
  notifications.Release();
  ASSERT_TRUE(fake::WaitUntilDelivered());
  SetSkin(1);
  EXPECT_EQ(seen_.Take(), (Call{1, 1}));
  EXPECT_EQ(thermal_.callback_count(other_path()), 1u) << "registered once, not twice";
  EXPECT_EQ(log_.Count(kRecovered), 0);
}

}  // namespace
}  // namespace norvik::qel
