// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The link to the health service: how it is made, refused, lost and made again.
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>

#include "battery_fixture.h"

namespace norvik::qel {
namespace {

constexpr char kStartsToRestore[] =
    "RegisterInfoCallback: health service isn't ready. start to restore callback.";
constexpr char kRefused[] = "LinkToHealthService: Failed to register callback to health service";
constexpr char kUnregisterFailed[] =
    "UnlinkToHealthService: Failed to unregister callback to health service";
constexpr char kAttempt[] = "ReconnectToHealthService";

class BatteryLinkTest : public BatteryFixture {
 protected:
  // Registers the first client. It is called once the handle is linked.
  void RegisterFirst() { ASSERT_EQ(RegisterBatteryLevelCallback(handle_, Client<0>, &seen_), 0); }
  void DeregisterLast() { ASSERT_EQ(DeregisterBatteryLevelCallback(handle_, Client<0>), 0); }
};

TEST_F(BatteryLinkTest, AnUndeclaredServiceIsNoErrorAndIsFoundLater) {
  health_.Kill();
  health_.Undeclare();
  RegisterFirst();
  EXPECT_THAT(Warnings(), ElementsAre(kStartsToRestore));
  ASSERT_EQ(RegisterDockChargerIsOnlineCallback(handle_, Client<1>, &seen_), 0);
  EXPECT_THAT(Log(),
              Contains("RegisterInfoCallback: Dock Charger Is Online will updated while getting "
                       "valid value from health service."));
  ASSERT_TRUE(log_.WaitFor(kAttempt));
  EXPECT_THAT(Dump(), HasSubstr("  Dock Charger Is Online = -1 (clients:1)\n"));
  health_.Start();
  health_.Declare();  // only now: an attempt between the two would log a warning
  EXPECT_THAT(seen_.TakeMany(2), ElementsAre(Call{0, 50}, Call{1, 1}));
  EXPECT_THAT(Warnings(), ElementsAre(kStartsToRestore));
}

TEST_F(BatteryLinkTest, AFailureToLinkIsLoggedUndoneAndRetried) {
  const struct {
    fake::Script& operation;
    Outcome outcome;
    const char* warning;
  } kCases[] = {
      {health_.on(BinderFunction::kGetService),
       {STATUS_NAME_NOT_FOUND},
       "IsHealthServiceReady: Unable to AIDL health service"},
      {health_.on(HealthOperation::kRegisterCallback), Outcome::ServiceSpecific(2), kRefused},
      {health_.on(BinderFunction::kLinkToDeath),
       {STATUS_NO_MEMORY},
       "LinkToHealthService:Failed to link to health death"},
  };
  for (const auto& row : kCases) {
    log_.Clear();
    row.operation.Then(row.outcome);
    RegisterFirst();
    EXPECT_THAT(Warnings(), ElementsAre(row.warning, kStartsToRestore));
    EXPECT_TRUE(Eventually([this] { return IsLinked(); }));
    EXPECT_EQ(log_.Count(kAttempt), 1);
    EXPECT_EQ(health_.callback_count(), 1u);
    DeregisterLast();
  }
  EXPECT_EQ(Calls(HealthOperation::kUnregisterCallback), 4) << "one for each link, made or refused";
}

TEST_F(BatteryLinkTest, UnlinkingCompletesWhateverTheServiceAnswers) {
  const auto unlink_and_link_again = [this] {
    log_.Clear();
    DeregisterLast();
    EXPECT_FALSE(IsLinked());
    const std::vector<std::string> warnings = Warnings();
    RegisterFirst();
    EXPECT_TRUE(IsLinked());
    return warnings;
  };
  RegisterLevel();
  health_.on(HealthOperation::kUnregisterCallback)
      .Then(Outcome::Exception(EX_ILLEGAL_ARGUMENT, "not registered"));
  EXPECT_THAT(unlink_and_link_again(), ElementsAre(kUnregisterFailed));
  health_.on(BinderFunction::kUnlinkToDeath).Then({STATUS_NAME_NOT_FOUND});
  EXPECT_THAT(unlink_and_link_again(),
              ElementsAre("UnlinkToHealthService: Failed to unlink to health death."));
  health_.on(BinderFunction::kUnlinkToDeath).Then({STATUS_DEAD_OBJECT});
  EXPECT_THAT(unlink_and_link_again(), IsEmpty());
}

// The link is removed while its death notification is already being delivered.
TEST_F(BatteryLinkTest, ALateDeathNotificationLeavesTheNextLinkAlone) {
  for (const bool links_again : {false, true}) {
    RegisterLevel();
    HoldDeliveries hold(Delivery::kDeathNotification);
    health_.Kill();
    ASSERT_TRUE(hold.WaitForHeld());
    log_.Clear();
    DeregisterLast();
    health_.SetLevel(links_again ? 30 : 31);
    health_.Start();
    if (links_again) RegisterLevel();
    EXPECT_THAT(Warnings(), ElementsAre(kUnregisterFailed)) << "unlinking released the dead one";
    hold.Release();
    ASSERT_TRUE(fake::WaitUntilDelivered());
    EXPECT_EQ(IsLinked(), links_again);
    EXPECT_EQ(log_.Count(kAttempt), 0);
  }
  EXPECT_EQ(health_.callback_count(), 1u) << "registered once, not twice";
  log_.Clear();
  {
    const HoldDeliveries hold(Delivery::kDeathNotification);
    Restart(29);  // the new link has its own death notification
  }
  EXPECT_EQ(seen_.Take(), (Call{0, 29}));
  EXPECT_THAT(Warnings(), IsEmpty()) << "the first attempt finds the service";
}

// Without a link there is no death notification: the first call that fails reveals the death.
TEST_F(BatteryLinkTest, AServiceThatDiedUnlinkedIsLookedUpAgainByTheNextAttempt) {
  ASSERT_EQ(GetBatteryLevel(handle_, false), 50);
  Restart(20);
  EXPECT_EQ(GetBatteryLevel(handle_, false), -EAGAIN);
  EXPECT_EQ(GetBatteryLevel(handle_, false), 20);
  Restart(19);
  RegisterFirst();
  EXPECT_EQ(seen_.Take(), (Call{0, 19})) << "the reconnection looks the service up again";
}

TEST_F(BatteryLinkTest, ALinkRefusedByADeathLooksTheServiceUpAgain) {
  const auto lookups_until_linked = [this] {
    const int before = health_.on(BinderFunction::kGetService).calls();
    RegisterFirst();
    EXPECT_TRUE(Eventually([this] { return IsLinked(); }));
    return health_.on(BinderFunction::kGetService).calls() - before;
  };
  health_.on(BinderFunction::kLinkToDeath).Then({STATUS_DEAD_OBJECT});
  EXPECT_EQ(lookups_until_linked(), 2);

  // The same, but only the removal of the registration reveals the death.
  DeregisterLast();
  health_.on(BinderFunction::kLinkToDeath).Then({STATUS_NO_MEMORY});
  health_.on(HealthOperation::kUnregisterCallback).Then({STATUS_DEAD_OBJECT});
  EXPECT_EQ(lookups_until_linked(), 1) << "known at first, looked up by the second attempt";
}

// Dropping the proxy of a linked service would drop the death notification.
TEST_F(BatteryLinkTest, AFailedQueryKeepsTheDeathNotification) {
  RegisterLevel();
  HoldDeliveries hold(Delivery::kDeathNotification);
  health_.Kill();
  ASSERT_TRUE(hold.WaitForHeld());
  EXPECT_EQ(GetBatteryLevel(handle_, false), -EAGAIN);
  EXPECT_THAT(Warnings(), ElementsAre("GetInfoFromHealthService: Unable to get healthInfo"));
  EXPECT_TRUE(IsLinked());
  health_.SetLevel(12);
  health_.Start();
  hold.Release();
  EXPECT_EQ(seen_.Take(), (Call{0, 12}));

  // A query fails with the same status before the death.
  health_.on(HealthOperation::kGetHealthInfo).Then({STATUS_DEAD_OBJECT});
  EXPECT_EQ(GetBatteryLevel(handle_, false), -EAGAIN);
  Restart(11);
  EXPECT_EQ(seen_.Take(), (Call{0, 11}));
}

// Another recipient in the process is notified of the same death first.
TEST_F(BatteryLinkTest, AHandleMayEndInsideTheDeathNotificationOfAnotherRecipient) {
  const ndk::SpAIBinder service(AServiceManager_checkService(services::kHealthInstance));
  void* handle = nullptr;
  InitBatteryInfo(&handle);
  const ndk::ScopedAIBinder_DeathRecipient recipient(AIBinder_DeathRecipient_new(
      [](void* cookie) { DeinitBatteryInfo(static_cast<void**>(cookie)); }));
  ASSERT_EQ(AIBinder_linkToDeath(service.get(), recipient.get(), &handle), STATUS_OK);
  ASSERT_EQ(RegisterBatteryLevelCallback(handle, Client<0>, &seen_), 0);
  ASSERT_TRUE(seen_.Take());
  health_.Kill();
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EXPECT_EQ(handle, nullptr);
}

using BatteryLinkSlowTest = BatteryLinkTest;

TEST_F(BatteryLinkSlowTest, AfterTenFailedAttemptsOnlyAFirstClientLinks) {
  using std::chrono::steady_clock;
  health_.Kill();
  health_.Undeclare();
  const auto start = steady_clock::now();
  RegisterFirst();
  ASSERT_TRUE(log_.WaitFor(kAttempt, 10));
  EXPECT_GE(steady_clock::now() - start, 9 * std::chrono::milliseconds(200));
  EXPECT_FALSE(log_.WaitFor(kAttempt, 11, std::chrono::milliseconds(500)));

  health_.Declare();
  health_.Start();
  ASSERT_EQ(RegisterBatteryCycleCountCallback(handle_, Client<1>, &seen_), 0);
  EXPECT_FALSE(IsLinked());
  ASSERT_EQ(DeregisterBatteryCycleCountCallback(handle_, Client<1>), 0);
  DeregisterLast();
  RegisterLevel();
  EXPECT_EQ(log_.Count(kAttempt), 10);
}

}  // namespace
}  // namespace norvik::qel
