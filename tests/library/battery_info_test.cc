// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Properties, clients and dispatch of the battery, through the C functions.
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

TEST_F(BatteryInfoTest, ADispatchIsOrderedByPropertyThenByRegistration) {
  const auto add = [this](auto enlist, BatteryInfoCallback client, const Call& first) {
    ASSERT_EQ(enlist(handle_, client, &seen_), 0);
    ASSERT_TRUE(seen_.TakeUntil(first));
  };
  // Registers in the reverse order of the properties.
  add(RegisterDockChargerIsOnlineCallback, Client<5>, {5, 1});
  add(RegisterWirelessChargerIsOnlineCallback, Client<4>, {4, 1});
  add(kRegisterCycles, Client<1>, {1, 10});
  add(kRegisterCycles, Client<2>, {2, 10});
  add(kRegisterCycles, Client<3>, {3, 10});
  add(kRegisterLevel, Client<0>, {0, 50});
  ASSERT_EQ(DeregisterBatteryCycleCountCallback(handle_, Client<1>), 0);
  log_.Clear();
  health_.Change([](auto& info) {
    info.batteryLevel = 20;
    info.batteryCycleCount = 30;
    info.chargerWirelessOnline = true;
    info.chargerDockOnline = true;
  });
  EXPECT_THAT(seen_.TakeMany(5),
              ElementsAre(Call{0, 20}, Call{2, 30}, Call{3, 30}, Call{4, 0}, Call{5, 0}));
  EXPECT_THAT(Log(), testing::IsSupersetOf(
                         {"CallbackToClients: callback data[Battery Cycle Count] = 30",
                          "CallbackToClients: callback data[Battery Cycle Count] = 30",
                          "CallbackToClients: callback data[Wireless Charger Is Online] = 0"}))
      << "one line a client";
}

TEST_F(BatteryInfoTest, ClientsMayComeAndGoInsideACall) {
  // No service at first, so that both clients are registered before either is called.
  health_.Kill();
  health_.Undeclare();
  ActingClient leaver;
  leaver.action = [&](int value) {
    EXPECT_EQ(GetBatteryLevel(handle_, false), value);
    EXPECT_EQ(DeregisterBatteryLevelCallback(handle_, ActingClient::OnValue), 0);
    EXPECT_EQ(DeregisterBatteryLevelCallback(handle_, Client<2>), 0);
    EXPECT_FALSE(IsLinked());
    EXPECT_EQ(kRegisterCycles(handle_, Client<3>, &seen_), 0);
    seen_.Put({1, value});
  };
  ASSERT_EQ(kRegisterLevel(handle_, ActingClient::OnValue, &leaver), 0);
  ASSERT_EQ(kRegisterLevel(handle_, Client<2>, &seen_), 0);
  health_.Declare();
  health_.Start();
  EXPECT_THAT(seen_.TakeMany(2), ElementsAre(Call{1, 50}, Call{2, 50}))
      << "a dispatch under way continues with the rest of its copy";
  health_.SetCycleCount(11);
  EXPECT_EQ(seen_.Take(), (Call{3, 11}));
  Deinit();
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
