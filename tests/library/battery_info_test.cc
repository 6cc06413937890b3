// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Properties, clients and dispatch, through the C functions.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <memory>
#include <thread>
#include <tuple>
#include <vector>

#include "battery_fixture.h"

namespace norvik::qel {
namespace {

using services::HealthOperation;
using testing::ElementsAre;
using testing::IsSupersetOf;

using BatteryInfoTest = BatteryFixture;

TEST_F(BatteryInfoTest, AFreshHandleKnowsNothingAndHasAskedNobody) {
  EXPECT_EQ(GetBatteryLevel(handle_, true), -1);
  EXPECT_EQ(GetBatteryCycleCount(handle_, true), -1);
  EXPECT_EQ(GetWirelessChargerIsOnline(handle_, true), -1);
  EXPECT_EQ(GetDockChargerIsOnline(handle_, true), -1);
  EXPECT_EQ(DumpOf(handle_),
            "BatteryInfo:\n"
            "  linked to services = F\n"
            "  Battery Level = -1 (clients:0)\n"
            "  Battery Cycle Count = -1 (clients:0)\n"
            "  Wireless Charger Is Online = -1 (clients:0)\n"
            "  Dock Charger Is Online = -1 (clients:0)\n");
  EXPECT_TRUE(BatteryLog().empty());
}

TEST_F(BatteryInfoTest, TheFirstClientLinksAndHearsTheValueTheServiceReports) {
  health_.Change([](auto& info) {
    info.batteryLevel = 55;
    info.batteryCycleCount = 7;
    info.chargerWirelessOnline = true;
    info.chargerDockOnline = false;
  });
  ASSERT_EQ(RegisterBatteryLevelCallback(handle_, Client<0>, &seen_), 0);
  EXPECT_EQ(seen_.Take(), (Call{0, 55}));
  EXPECT_EQ(GetBatteryLevel(handle_, true), 55);
  EXPECT_EQ(GetBatteryCycleCount(handle_, true), 7);
  EXPECT_EQ(GetWirelessChargerIsOnline(handle_, true), QUORVEL_CHARGER_ONLINE);
  EXPECT_EQ(GetDockChargerIsOnline(handle_, true), QUORVEL_CHARGER_OFFLINE);
  EXPECT_EQ(DumpOf(handle_),
            "BatteryInfo:\n"
            "  linked to services = T\n"
            "  Battery Level = 55 (clients:1)\n"
            "  Battery Cycle Count = 7 (clients:0)\n"
            "  Wireless Charger Is Online = 0 (clients:0)\n"
            "  Dock Charger Is Online = 1 (clients:0)\n");
  const auto debug = [](const char* text) {
    return fake::LogLine{.priority = ANDROID_LOG_DEBUG, .tag = "audio_hw_battery", .text = text};
  };
  EXPECT_THAT(log_.Lines(),
              ElementsAre(debug("UpdateProperty: update Battery Level from -1 to 55"),
                          debug("UpdateProperty: update Battery Cycle Count from -1 to 7"),
                          debug("UpdateProperty: update Wireless Charger Is Online from -1 to 0"),
                          debug("UpdateProperty: update Dock Charger Is Online from -1 to 1"),
                          debug("CallbackToClients: callback data[Battery Level] = 55")));
}

TEST_F(BatteryInfoTest, AClientOfAKnownValueIsCalledSoonAndSoAreItsFellows) {
  RegisterAndHearLevel();
  ASSERT_EQ(RegisterBatteryCycleCountCallback(handle_, Client<1>, &seen_), 0);
  EXPECT_EQ(seen_.Take(), (Call{1, 10}));
  ASSERT_EQ(RegisterBatteryLevelCallback(handle_, Client<2>, &seen_), 0);
  EXPECT_EQ(seen_.Take(), (Call{0, 50}));
  EXPECT_EQ(seen_.Take(), (Call{2, 50}));
  EXPECT_EQ(Calls(HealthOperation::kRegisterCallback), 1) << "one link serves all";
}

TEST_F(BatteryInfoTest, RefusedRegistrationsChangeNothing) {
  RegisterAndHearLevel();
  Seen<Call> other;
  EXPECT_EQ(RegisterBatteryLevelCallback(handle_, Client<0>, &other), -EINVAL);
  EXPECT_EQ(RegisterBatteryLevelCallback(handle_, nullptr, &other), -EINVAL);
  EXPECT_EQ(DeregisterBatteryLevelCallback(handle_, Client<1>), -EINVAL);
  EXPECT_EQ(DeregisterBatteryLevelCallback(handle_, nullptr), -EINVAL);
  EXPECT_EQ(DeregisterBatteryCycleCountCallback(handle_, Client<0>), -EINVAL) << "another property";
  health_.SetLevel(49);
  EXPECT_EQ(seen_.Take(), (Call{0, 49}));
  EXPECT_TRUE(other.empty());
  EXPECT_EQ(DeregisterBatteryLevelCallback(handle_, Client<0>), 0);
  EXPECT_EQ(DeregisterBatteryLevelCallback(handle_, Client<0>), -EINVAL);
}

TEST_F(BatteryInfoTest, ACookieMayBeNull) {
  static Seen<int> values;
  const auto client = [](int value, void* cookie) { values.Put(cookie == nullptr ? value : -2); };
  ASSERT_EQ(RegisterBatteryLevelCallback(handle_, client, nullptr), 0);
  EXPECT_EQ(values.Take(), 50);
}

TEST_F(BatteryInfoTest, UnchangedValuesCallNobodyAndLogNothing) {
  RegisterAndHearLevel();
  ASSERT_EQ(RegisterBatteryCycleCountCallback(handle_, Client<1>, &seen_), 0);
  ASSERT_EQ(seen_.Take(), (Call{1, 10}));
  log_.Clear();
  health_.SetLevel(50);
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EXPECT_TRUE(BatteryLog().empty());
  health_.SetCycleCount(11);
  EXPECT_EQ(seen_.Take(), (Call{1, 11}));  // a call for the level would stand before it
}

TEST_F(BatteryInfoTest, ChangesDuringADispatchFoldIntoOneCallWithTheLatestValue) {
  static fake::Gate* gate;
  fake::Gate the_gate;
  gate = &the_gate;
  const auto slow_client = [](int, void*) { gate->Pass(); };
  ASSERT_EQ(RegisterWirelessChargerIsOnlineCallback(handle_, slow_client, nullptr), 0);
  ASSERT_TRUE(the_gate.WaitForArrivals());
  ASSERT_EQ(RegisterBatteryLevelCallback(handle_, Client<0>, &seen_), 0);
  health_.SetLevel(49);
  health_.SetLevel(48);
  health_.SetCycleCount(11);
  ASSERT_TRUE(fake::WaitUntilDelivered()) << "a slow client never keeps the service waiting";
  EXPECT_EQ(GetBatteryLevel(handle_, true), 48);
  the_gate.Open();
  EXPECT_EQ(seen_.Take(), (Call{0, 48}));
  health_.SetLevel(47);
  EXPECT_EQ(seen_.Take(), (Call{0, 47}));
}

TEST_F(BatteryInfoTest, ADispatchGoesByPropertyThenByRegistration) {
  RegisterAndHearLevel();
  // In the reverse order of the properties.
  for (const auto& [enlist, client, value] :
       {std::tuple{&RegisterDockChargerIsOnlineCallback, &Client<3>, Call{3, 1}},
        std::tuple{&RegisterWirelessChargerIsOnlineCallback, &Client<2>, Call{2, 1}},
        std::tuple{&RegisterBatteryCycleCountCallback, &Client<1>, Call{1, 10}}}) {
    ASSERT_EQ(enlist(handle_, client, &seen_), 0);
    ASSERT_EQ(seen_.Take(), value);
  }
  ASSERT_EQ(RegisterBatteryCycleCountCallback(handle_, Client<4>, &seen_), 0);
  ASSERT_EQ(seen_.Take(), (Call{1, 10}));
  ASSERT_EQ(seen_.Take(), (Call{4, 10}));
  log_.Clear();
  health_.Change([](auto& info) {
    info.batteryLevel = 20;
    info.batteryCycleCount = 30;
    info.chargerWirelessOnline = true;
    info.chargerDockOnline = true;
  });
  for (const Call& call : {Call{0, 20}, Call{1, 30}, Call{4, 30}, Call{2, 0}, Call{3, 0}}) {
    EXPECT_EQ(seen_.Take(), call);
  }
  EXPECT_THAT(BatteryLog(),
              IsSupersetOf({"CallbackToClients: callback data[Battery Level] = 20",
                            "CallbackToClients: callback data[Wireless Charger Is Online] = 0",
                            "CallbackToClients: callback data[Dock Charger Is Online] = 0"}));
  EXPECT_EQ(log_.Count("CallbackToClients: callback data[Battery Cycle Count] = 30"), 2)
      << "one line a client";
}

TEST_F(BatteryInfoTest, TheOthersKeepTheirOrderWhenOneLeaves) {
  RegisterAndHearLevel();
  for (const BatteryInfoCallback client : {Client<1>, Client<2>, Client<3>}) {
    ASSERT_EQ(RegisterBatteryLevelCallback(handle_, client, &seen_), 0);
  }
  ASSERT_EQ(DeregisterBatteryLevelCallback(handle_, Client<0>), 0);
  while (seen_.Take() != Call{3, 50}) {
    // The first calls of each, and what those brought the others.
  }
  health_.SetLevel(49);
  std::vector<Call> calls;
  for (int i = 0; i < 3; ++i) calls.push_back(seen_.Take().value_or(Call{-1, -1}));
  EXPECT_THAT(calls, ElementsAre(Call{1, 49}, Call{2, 49}, Call{3, 49}));
}

// A client that leaves inside its first call and takes client 2 with it.
struct Leaver {
  void* handle;
  Seen<Call>* seen;

  static void OnValue(int value, void* cookie) {
    auto* self = static_cast<Leaver*>(cookie);
    EXPECT_EQ(DeregisterBatteryLevelCallback(self->handle, OnValue), 0);
    EXPECT_EQ(DeregisterBatteryLevelCallback(self->handle, Client<2>), 0);
    self->seen->Put({.client = 1, .value = value});
  }
};

TEST_F(BatteryInfoTest, TheLastClientsMayLeaveInsideACall) {
  const fake::ShortGetServiceWait short_wait;
  // Without a service at first, so that both are there before either is called.
  health_.Kill();
  health_.Undeclare();
  Leaver leaver = {handle_, &seen_};
  ASSERT_EQ(RegisterBatteryLevelCallback(handle_, Leaver::OnValue, &leaver), 0);
  ASSERT_EQ(RegisterBatteryLevelCallback(handle_, Client<2>, &seen_), 0);
  health_.Declare();
  health_.Start();
  EXPECT_EQ(seen_.Take(), (Call{1, 50}));
  EXPECT_EQ(seen_.Take(), (Call{2, 50})) << "a dispatch under way goes on to the rest of its copy";
  EXPECT_EQ(Calls(HealthOperation::kUnregisterCallback), 1) << "unlinked from inside the call";
  EXPECT_FALSE(IsLinked(handle_));
}

// A client that registers another one inside its call and asks the service.
struct Joiner {
  void* handle;
  Seen<Call>* seen;

  static void OnValue(int value, void* cookie) {
    auto* self = static_cast<Joiner*>(cookie);
    EXPECT_EQ(RegisterBatteryCycleCountCallback(self->handle, Client<2>, self->seen), 0);
    self->seen->Put({.client = 1, .value = GetBatteryLevel(self->handle, false) + value});
  }
};

TEST_F(BatteryInfoTest, AClientMayRegisterAnotherInsideItsCall) {
  Joiner joiner = {handle_, &seen_};
  ASSERT_EQ(RegisterBatteryLevelCallback(handle_, Joiner::OnValue, &joiner), 0);
  EXPECT_EQ(seen_.Take(), (Call{1, 100}));
  EXPECT_EQ(seen_.Take(), (Call{2, 10}));
}

TEST_F(BatteryInfoTest, TheLastClientUnlinksAndTheNextFirstOneLinksAgain) {
  RegisterAndHearLevel();
  ASSERT_EQ(RegisterDockChargerIsOnlineCallback(handle_, Client<1>, &seen_), 0);
  ASSERT_EQ(seen_.Take(), (Call{1, 1}));
  EXPECT_EQ(DeregisterBatteryLevelCallback(handle_, Client<0>), 0);
  EXPECT_TRUE(IsLinked(handle_));
  EXPECT_EQ(DeregisterDockChargerIsOnlineCallback(handle_, Client<1>), 0);
  EXPECT_FALSE(IsLinked(handle_));
  EXPECT_EQ(health_.callback_count(), 0u);

  health_.SetLevel(33);
  ASSERT_EQ(RegisterBatteryLevelCallback(handle_, Client<0>, &seen_), 0);
  EXPECT_EQ(seen_.Take(), (Call{0, 33}));
  EXPECT_EQ(Calls(HealthOperation::kRegisterCallback), 2);
  EXPECT_EQ(Calls(HealthOperation::kUnregisterCallback), 1);
}

TEST_F(BatteryInfoTest, AFreshQueryRefreshesAllValuesButCallsNobody) {
  EXPECT_EQ(GetBatteryCycleCount(handle_, false), 10);
  EXPECT_EQ(GetBatteryLevel(handle_, true), 50);
  EXPECT_EQ(GetWirelessChargerIsOnline(handle_, false), 1);
  EXPECT_EQ(GetDockChargerIsOnline(handle_, false), 1);
  EXPECT_EQ(Calls(HealthOperation::kRegisterCallback), 0) << "a question is no link";

  // The first client links, and hears nothing of a value that the report only repeats.
  ASSERT_EQ(RegisterBatteryLevelCallback(handle_, Client<0>, &seen_), 0);
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EXPECT_TRUE(seen_.empty());
  {
    fake::HoldDeliveries hold(fake::Delivery::kOneway);
    health_.SetLevel(49);
    EXPECT_EQ(GetBatteryLevel(handle_, false), 49);
  }
  ASSERT_TRUE(fake::WaitUntilDelivered());  // the same value again: no reason for a dispatch
  health_.SetCycleCount(11);
  EXPECT_EQ(seen_.Take(), (Call{0, 49})) << "told together with the next change";
}

TEST_F(BatteryInfoTest, AFreshQueryThatFailsSaysSoAndKeepsTheValues) {
  RegisterAndHearLevel();
  health_.on(HealthOperation::kGetHealthInfo).Then(fake::Outcome::ServiceSpecific(2 /* unknown */));
  log_.Clear();
  EXPECT_EQ(GetBatteryLevel(handle_, false), -EAGAIN);
  EXPECT_THAT(log_.Lines(), ElementsAre(fake::LogLine{
                                .priority = ANDROID_LOG_WARN,
                                .tag = "audio_hw_battery",
                                .text = "GetInfoFromHealthService: Unable to get healthInfo"}));
  EXPECT_EQ(GetBatteryLevel(handle_, true), 50);

  void* fresh = nullptr;
  InitBatteryInfo(&fresh);
  health_.Undeclare();
  log_.Clear();
  EXPECT_EQ(GetBatteryLevel(fresh, false), -EAGAIN);
  EXPECT_TRUE(log_.Lines().empty()) << "an instance that is not declared is passed over silently";
  DeinitBatteryInfo(&fresh);
}

TEST_F(BatteryInfoTest, CachedValuesAndDumpsNeverWaitForTheService) {
  RegisterAndHearLevel();
  auto gate = std::make_shared<fake::Gate>();
  health_.on(HealthOperation::kGetHealthInfo).Then(fake::Outcome::After(gate));
  std::thread asker([this] { EXPECT_EQ(GetBatteryLevel(handle_, false), 50); });
  ASSERT_TRUE(gate->WaitForArrivals());  // the handle's lock is held inside the call
  EXPECT_EQ(GetBatteryLevel(handle_, true), 50);
  EXPECT_TRUE(IsLinked(handle_));
  gate->Open();
  asker.join();
}

TEST_F(BatteryInfoTest, HandlesLiveSideBySide) {
  void* other = nullptr;
  InitBatteryInfo(&other);
  Seen<Call> other_seen;
  RegisterAndHearLevel();
  ASSERT_EQ(RegisterBatteryLevelCallback(other, Client<0>, &other_seen), 0);
  EXPECT_EQ(other_seen.Take(), (Call{0, 50}));
  health_.SetLevel(20);
  EXPECT_EQ(seen_.Take(), (Call{0, 20}));
  EXPECT_EQ(other_seen.Take(), (Call{0, 20}));
  DeinitBatteryInfo(&other);
  EXPECT_EQ(other, nullptr);
  EXPECT_EQ(health_.callback_count(), 1u) << "a client that was left leaves with its handle";
  health_.SetLevel(10);
  EXPECT_EQ(seen_.Take(), (Call{0, 10}));
  EXPECT_TRUE(other_seen.empty());
}

}  // namespace
}  // namespace norvik::qel
