// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Properties, clients and dispatch, through the C functions.
#include "battery_fixture.h"

namespace norvik::qel {
namespace {

using BatteryInfoTest = BatteryFixture;

constexpr auto* kRegisterLevel = &RegisterBatteryLevelCallback;
constexpr auto* kRegisterCycles = &RegisterBatteryCycleCountCallback;

TEST_F(BatteryInfoTest, TheFirstClientLinksAndIsCalledWithTheReportedValue) {
  EXPECT_FALSE(IsLinked());
  health_.Change([](auto& info) {
    info.batteryLevel = 55;
    info.batteryCycleCount = 7;
    info.chargerWirelessOnline = true;
    info.chargerDockOnline = false;
  });
  RegisterLevel();
  EXPECT_EQ(GetBatteryLevel(handle_, true), 55);
  EXPECT_EQ(GetBatteryCycleCount(handle_, true), 7);
  EXPECT_EQ(GetWirelessChargerIsOnline(handle_, true), QUORVEL_CHARGER_ONLINE);
  EXPECT_EQ(GetDockChargerIsOnline(handle_, true), QUORVEL_CHARGER_OFFLINE);
  EXPECT_EQ(Dump(),
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

TEST_F(BatteryInfoTest, AClientOfAKnownValueIsCalledWithTheOthersOfItsProperty) {
  RegisterLevel();
  ASSERT_EQ(kRegisterCycles(handle_, Client<1>, &seen_), 0);
  EXPECT_EQ(seen_.Take(), (Call{1, 10}));
  ASSERT_EQ(kRegisterLevel(handle_, Client<2>, &seen_), 0);
  EXPECT_THAT(seen_.TakeMany(2), ElementsAre(Call{0, 50}, Call{2, 50}));
  EXPECT_EQ(Calls(HealthOperation::kRegisterCallback), 1) << "one link serves all";
}

TEST_F(BatteryInfoTest, RefusedRegistrationsChangeNothing) {
  RegisterLevel();
  Seen<Call> other;
  EXPECT_EQ(kRegisterLevel(handle_, Client<0>, &other), -EINVAL);
  EXPECT_EQ(DeregisterBatteryLevelCallback(handle_, Client<1>), -EINVAL);
  EXPECT_EQ(DeregisterBatteryCycleCountCallback(handle_, Client<0>), -EINVAL) << "another property";
  health_.SetLevel(49);
  EXPECT_EQ(seen_.Take(), (Call{0, 49}));
  EXPECT_TRUE(other.empty());
}

TEST_F(BatteryInfoTest, ACookieMayBeNull) {
  static Seen<int> values;
  const auto client = [](int value, void* cookie) { values.Put(cookie == nullptr ? value : -2); };
  ASSERT_EQ(kRegisterLevel(handle_, client, nullptr), 0);
  EXPECT_EQ(values.Take(), 50);
}

TEST_F(BatteryInfoTest, UnchangedValuesCallNoClientAndLogNothing) {
  RegisterLevel();
  ASSERT_EQ(kRegisterCycles(handle_, Client<1>, &seen_), 0);
  ASSERT_EQ(seen_.Take(), (Call{1, 10}));
  log_.Clear();
  health_.SetLevel(50);
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EXPECT_TRUE(Log().empty());
  health_.SetCycleCount(11);
  EXPECT_EQ(seen_.Take(), (Call{1, 11}));  // a call for the level would stand before it
}

TEST_F(BatteryInfoTest, ChangesDuringADispatchFoldIntoOneCallWithTheLatestValue) {
  ASSERT_EQ(RegisterWirelessChargerIsOnlineCallback(handle_, SlowClient::OnValue, &slow_), 0);
  ASSERT_TRUE(slow_.gate.WaitForArrivals());
  ASSERT_EQ(kRegisterLevel(handle_, Client<0>, &seen_), 0);
  health_.SetLevel(49);
  health_.SetLevel(48);
  health_.SetCycleCount(11);
  ASSERT_TRUE(fake::WaitUntilDelivered()) << "a slow client never keeps the service waiting";
  EXPECT_EQ(GetBatteryLevel(handle_, true), 48);
  slow_.gate.Open();
  EXPECT_EQ(seen_.Take(), (Call{0, 48}));
  health_.SetLevel(47);
  EXPECT_EQ(seen_.Take(), (Call{0, 47}));
}

TEST_F(BatteryInfoTest, ADispatchIsOrderedByPropertyThenByRegistration) {
  RegisterLevel();
  // In the reverse order of the properties.
  for (const auto& [enlist, client, value] :
       {std::tuple{&RegisterDockChargerIsOnlineCallback, &Client<3>, Call{3, 1}},
        std::tuple{&RegisterWirelessChargerIsOnlineCallback, &Client<2>, Call{2, 1}},
        std::tuple{kRegisterCycles, &Client<1>, Call{1, 10}}}) {
    ASSERT_EQ(enlist(handle_, client, &seen_), 0);
    ASSERT_EQ(seen_.Take(), value);
  }
  ASSERT_EQ(kRegisterCycles(handle_, Client<4>, &seen_), 0);
  ASSERT_THAT(seen_.TakeMany(2), ElementsAre(Call{1, 10}, Call{4, 10}));
  log_.Clear();
  health_.Change([](auto& info) {
    info.batteryLevel = 20;
    info.batteryCycleCount = 30;
    info.chargerWirelessOnline = true;
    info.chargerDockOnline = true;
  });
  EXPECT_THAT(seen_.TakeMany(5),
              ElementsAre(Call{0, 20}, Call{1, 30}, Call{4, 30}, Call{2, 0}, Call{3, 0}));
  EXPECT_THAT(Log(), testing::IsSupersetOf(
                         {"CallbackToClients: callback data[Battery Cycle Count] = 30",
                          "CallbackToClients: callback data[Battery Cycle Count] = 30",
                          "CallbackToClients: callback data[Wireless Charger Is Online] = 0"}))
      << "one line a client";
}

TEST_F(BatteryInfoTest, TheOthersKeepTheirOrderWhenOneLeaves) {
  RegisterLevel();
  for (const BatteryInfoCallback client : {Client<1>, Client<2>, Client<3>}) {
    ASSERT_EQ(kRegisterLevel(handle_, client, &seen_), 0);
  }
  ASSERT_EQ(DeregisterBatteryLevelCallback(handle_, Client<0>), 0);
  // The first calls of each, and those that they brought the others.
  ASSERT_TRUE(seen_.TakeUntil({3, 50}));
  health_.SetLevel(49);
  EXPECT_THAT(seen_.TakeMany(3), ElementsAre(Call{1, 49}, Call{2, 49}, Call{3, 49}));
}

TEST_F(BatteryInfoTest, TheLastClientsMayLeaveInsideACall) {
  // Without a service at first, so that both are there before either is called.
  health_.Kill();
  health_.Undeclare();
  ActingClient leaver;
  leaver.action = [&](int value) {
    EXPECT_EQ(DeregisterBatteryLevelCallback(handle_, ActingClient::OnValue), 0);
    EXPECT_EQ(DeregisterBatteryLevelCallback(handle_, Client<2>), 0);
    seen_.Put({1, value});
  };
  ASSERT_EQ(kRegisterLevel(handle_, ActingClient::OnValue, &leaver), 0);
  ASSERT_EQ(kRegisterLevel(handle_, Client<2>, &seen_), 0);
  health_.Declare();
  health_.Start();
  EXPECT_THAT(seen_.TakeMany(2), ElementsAre(Call{1, 50}, Call{2, 50}))
      << "a dispatch under way continues with the rest of its copy";
  EXPECT_EQ(Calls(HealthOperation::kUnregisterCallback), 1) << "unlinked from inside the call";
  EXPECT_FALSE(IsLinked());
  Deinit();
}

TEST_F(BatteryInfoTest, AClientMayRegisterAnotherAndQueryInsideItsCall) {
  ActingClient joiner;
  joiner.action = [&](int value) {
    EXPECT_EQ(kRegisterCycles(handle_, Client<2>, &seen_), 0);
    seen_.Put({1, GetBatteryLevel(handle_, false) + value});
  };
  ASSERT_EQ(kRegisterLevel(handle_, ActingClient::OnValue, &joiner), 0);
  EXPECT_THAT(seen_.TakeMany(2), ElementsAre(Call{1, 100}, Call{2, 10}));
  Deinit();
}

TEST_F(BatteryInfoTest, TheLastClientUnlinksAndTheNextFirstOneLinksAgain) {
  RegisterLevel();
  ASSERT_EQ(RegisterDockChargerIsOnlineCallback(handle_, Client<1>, &seen_), 0);
  ASSERT_EQ(seen_.Take(), (Call{1, 1}));
  EXPECT_EQ(DeregisterBatteryLevelCallback(handle_, Client<0>), 0);
  EXPECT_TRUE(IsLinked());
  EXPECT_EQ(DeregisterDockChargerIsOnlineCallback(handle_, Client<1>), 0);
  EXPECT_FALSE(IsLinked());
  EXPECT_EQ(health_.callback_count(), 0u);

  health_.SetLevel(33);
  RegisterLevel();
  EXPECT_EQ(Calls(HealthOperation::kRegisterCallback), 2);
  EXPECT_EQ(Calls(HealthOperation::kUnregisterCallback), 1);
}

TEST_F(BatteryInfoTest, AFreshQueryRefreshesAllValuesWithoutACall) {
  EXPECT_EQ(GetBatteryCycleCount(handle_, false), 10);
  EXPECT_EQ(GetBatteryLevel(handle_, true), 50);
  EXPECT_EQ(GetWirelessChargerIsOnline(handle_, false), 1);
  EXPECT_EQ(GetDockChargerIsOnline(handle_, false), 1);
  EXPECT_EQ(Calls(HealthOperation::kRegisterCallback), 0) << "a query does not link";

  // The first client links. The report repeats a known value and brings no call.
  ASSERT_EQ(kRegisterLevel(handle_, Client<0>, &seen_), 0);
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EXPECT_TRUE(seen_.empty());
  {
    HoldDeliveries hold(Delivery::kOneway);
    health_.SetLevel(49);
    EXPECT_EQ(GetBatteryLevel(handle_, false), 49);
  }
  ASSERT_TRUE(fake::WaitUntilDelivered());  // the same value again: no reason for a dispatch
  health_.SetCycleCount(11);
  EXPECT_EQ(seen_.Take(), (Call{0, 49})) << "together with the next change";
}

TEST_F(BatteryInfoTest, AFreshQueryThatFailsReturnsAnErrorAndKeepsTheValues) {
  RegisterLevel();
  health_.on(HealthOperation::kGetHealthInfo).Then(Outcome::ServiceSpecific(2 /* unknown */));
  log_.Clear();
  EXPECT_EQ(GetBatteryLevel(handle_, false), -EAGAIN);
  EXPECT_THAT(Warnings(), ElementsAre("GetInfoFromHealthService: Unable to get healthInfo"));
  EXPECT_EQ(GetBatteryLevel(handle_, true), 50);

  void* fresh = nullptr;
  InitBatteryInfo(&fresh);
  health_.Undeclare();
  log_.Clear();
  EXPECT_EQ(GetBatteryLevel(fresh, false), -EAGAIN);
  EXPECT_TRUE(Log().empty()) << "an instance that is not declared is not an error";
  DeinitBatteryInfo(&fresh);
}

TEST_F(BatteryInfoTest, CachedValuesAndDumpsNeverWaitForTheService) {
  RegisterLevel();
  auto gate = std::make_shared<Gate>();
  health_.on(HealthOperation::kGetHealthInfo).Then(Outcome::After(gate));
  Background query("a query that the service holds up",
                   [this] { EXPECT_EQ(GetBatteryLevel(handle_, false), 50); });
  ASSERT_TRUE(gate->WaitForArrivals());  // the handle's lock is held inside the call
  EndsInTime([this] {
    EXPECT_EQ(GetBatteryLevel(handle_, true), 50);
    EXPECT_TRUE(IsLinked());
  });
  gate->Open();
}

}  // namespace
}  // namespace norvik::qel
