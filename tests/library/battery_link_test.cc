// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The link to the health service: how it is made, refused, lost and made again.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "battery_fixture.h"
#include "quorvel/fake/service_manager.h"

namespace norvik::qel {
namespace {

using fake::Delivery;
using fake::HoldDeliveries;
using fake::Outcome;
using services::HealthOperation;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr char kStartsToRestore[] =
    "RegisterInfoCallback: health service isn't ready. start to restore callback.";
constexpr char kAttempt[] = "ReconnectToHealthService";

class BatteryLinkTest : public BatteryFixture {
 protected:
  // The battery's warnings, which are what the failure rows are about.
  std::vector<std::string> Warnings() const {
    std::vector<std::string> texts;
    for (const auto& line : log_.Lines("audio_hw_battery")) {
      if (line.priority == ANDROID_LOG_WARN) texts.push_back(line.text);
    }
    return texts;
  }
};

TEST_F(BatteryLinkTest, AnUndeclaredServiceIsPassedOverSilentlyAndFoundLater) {
  const fake::ShortGetServiceWait short_wait;  // for an attempt between Declare() and Start()
  health_.Kill();
  health_.Undeclare();
  ASSERT_EQ(RegisterBatteryLevelCallback(handle_, Client<0>, &seen_), 0);
  EXPECT_THAT(Warnings(), ElementsAre(kStartsToRestore));
  ASSERT_EQ(RegisterDockChargerIsOnlineCallback(handle_, Client<1>, &seen_), 0);
  EXPECT_THAT(BatteryLog(),
              Contains("RegisterInfoCallback: Dock Charger Is Online will updated while getting "
                       "valid value from health service."));
  ASSERT_TRUE(log_.WaitFor(kAttempt));
  health_.Declare();
  health_.Start();
  EXPECT_EQ(seen_.Take(), (Call{0, 50}));
  EXPECT_EQ(seen_.Take(), (Call{1, 1}));
  EXPECT_THAT(Warnings(), ElementsAre(kStartsToRestore));
}

TEST_F(BatteryLinkTest, ADeclaredServiceThatDoesNotRunIsFoundLater) {
  const fake::ShortGetServiceWait short_wait;
  health_.Kill();
  ASSERT_EQ(RegisterBatteryLevelCallback(handle_, Client<0>, &seen_), 0);
  EXPECT_EQ(Warnings().at(0), "IsHealthServiceReady: Unable to AIDL health service");
  EXPECT_EQ(Warnings().at(1), kStartsToRestore);
  health_.Start();
  EXPECT_EQ(seen_.Take(), (Call{0, 50}));
}

TEST_F(BatteryLinkTest, ARefusedRegistrationIsRetried) {
  health_.on(HealthOperation::kRegisterCallback).Then(Outcome::ServiceSpecific(2));
  ASSERT_EQ(RegisterBatteryLevelCallback(handle_, Client<0>, &seen_), 0);
  EXPECT_EQ(seen_.Take(), (Call{0, 50}));
  EXPECT_THAT(
      BatteryLog(),
      testing::IsSupersetOf({"LinkToHealthService: Failed to register callback to health service",
                             kStartsToRestore, kAttempt}));
  EXPECT_EQ(Calls(HealthOperation::kRegisterCallback), 2);
  EXPECT_EQ(health_.callback_count(), 1u);
}

TEST_F(BatteryLinkTest, ARefusedLinkTakesTheRegistrationBackAndIsRetried) {
  // The second try is kept waiting, so that the state in between can be seen.
  auto gate = std::make_shared<fake::Gate>();
  health_.on(fake::BinderFunction::kLinkToDeath).Then({STATUS_NO_MEMORY});
  health_.on(HealthOperation::kRegisterCallback).Then(Outcome{});
  health_.on(HealthOperation::kRegisterCallback).Then(Outcome::After(gate));
  ASSERT_EQ(RegisterBatteryLevelCallback(handle_, Client<0>, &seen_), 0);
  EXPECT_THAT(Warnings(),
              ElementsAre("LinkToHealthService:Failed to link to health death", kStartsToRestore));
  ASSERT_TRUE(gate->WaitForArrivals());
  EXPECT_EQ(Calls(HealthOperation::kUnregisterCallback), 1);
  EXPECT_EQ(health_.callback_count(), 0u);
  EXPECT_FALSE(IsLinked(handle_));
  gate->Open();
  EXPECT_TRUE(Eventually([this] { return IsLinked(handle_); }));
  EXPECT_EQ(health_.callback_count(), 1u);
  EXPECT_EQ(seen_.Take(), (Call{0, 50}));
}

TEST_F(BatteryLinkTest, UnlinkingEndsWhateverTheServiceAnswers) {
  const auto unlink_and_link_again = [this] {
    log_.Clear();
    EXPECT_EQ(DeregisterBatteryLevelCallback(handle_, Client<0>), 0);
    EXPECT_FALSE(IsLinked(handle_));
    const std::vector<std::string> warnings = Warnings();
    EXPECT_EQ(RegisterBatteryLevelCallback(handle_, Client<0>, &seen_), 0);
    EXPECT_TRUE(IsLinked(handle_));
    return warnings;
  };
  RegisterAndHearLevel();
  health_.on(HealthOperation::kUnregisterCallback)
      .Then(Outcome::Exception(EX_ILLEGAL_ARGUMENT, "not registered"));
  EXPECT_THAT(
      unlink_and_link_again(),
      ElementsAre("UnlinkToHealthService: Failed to unregister callback to health service"));

  health_.on(fake::BinderFunction::kUnlinkToDeath).Then({STATUS_NAME_NOT_FOUND});
  EXPECT_THAT(unlink_and_link_again(),
              ElementsAre("UnlinkToHealthService: Failed to unlink to health death."));

  health_.on(fake::BinderFunction::kUnlinkToDeath).Then({STATUS_DEAD_OBJECT});
  EXPECT_THAT(unlink_and_link_again(), IsEmpty());
}

TEST_F(BatteryLinkTest, AfterADeathTheClientsHearWhatHasChanged) {
  RegisterAndHearLevel();
  ASSERT_EQ(RegisterBatteryCycleCountCallback(handle_, Client<1>, &seen_), 0);
  ASSERT_EQ(seen_.Take(), (Call{1, 10}));
  log_.Clear();
  {
    const HoldDeliveries hold(Delivery::kDeathNotification);
    health_.Kill();
    health_.SetLevel(42);
    health_.Start();
  }
  EXPECT_EQ(seen_.Take(), (Call{0, 42}));
  EXPECT_TRUE(IsLinked(handle_));
  EXPECT_EQ(log_.Count(kAttempt), 1) << "the first attempt finds the service";
  EXPECT_TRUE(seen_.empty()) << "the cycle count is what it was";
  EXPECT_THAT(Warnings(), IsEmpty()) << "a death is not an error";
}

TEST_F(BatteryLinkTest, ADeathWithoutClientsIsOnlyForgotten) {
  RegisterAndHearLevel();
  {
    // The link goes while the death notification is already on its way.
    HoldDeliveries hold(Delivery::kDeathNotification);
    health_.Kill();
    ASSERT_TRUE(hold.WaitForHeld());
    log_.Clear();
    EXPECT_EQ(DeregisterBatteryLevelCallback(handle_, Client<0>), 0);
    EXPECT_THAT(Warnings(), ElementsAre("UnlinkToHealthService: Failed to unregister callback to "
                                        "health service"));
  }
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EXPECT_EQ(log_.Count(kAttempt), 0);
  health_.SetLevel(31);
  health_.Start();
  RegisterAndHearLevel();
  EXPECT_THAT(Warnings(), Not(Contains(kStartsToRestore))) << "linked at once";
}

// A handle to a service that died while no link stood tells nobody: the first call that fails does.
TEST_F(BatteryLinkTest, AServiceThatDiedUnlinkedIsLookedUpAnewByTheNextAttempt) {
  ASSERT_EQ(GetBatteryLevel(handle_, false), 50);
  health_.Kill();
  health_.SetLevel(20);
  health_.Start();
  EXPECT_EQ(GetBatteryLevel(handle_, false), -EAGAIN);
  EXPECT_EQ(GetBatteryLevel(handle_, false), 20);

  health_.Kill();
  health_.SetLevel(19);
  health_.Start();
  ASSERT_EQ(RegisterBatteryLevelCallback(handle_, Client<0>, &seen_), 0);
  EXPECT_EQ(seen_.Take(), (Call{0, 19})) << "the reconnection looks the service up anew";
  EXPECT_THAT(Warnings(),
              ElementsAre("GetInfoFromHealthService: Unable to get healthInfo",
                          "LinkToHealthService: Failed to register callback to health service",
                          kStartsToRestore));
}

TEST_F(BatteryLinkTest, ALinkRefusedByADeathLooksTheServiceUpAnew) {
  const auto lookups_until_linked = [this] {
    const int before = health_.on(fake::BinderFunction::kGetService).calls();
    EXPECT_EQ(RegisterBatteryLevelCallback(handle_, Client<0>, &seen_), 0);
    EXPECT_TRUE(Eventually([this] { return IsLinked(handle_); }));
    return health_.on(fake::BinderFunction::kGetService).calls() - before;
  };
  health_.on(fake::BinderFunction::kLinkToDeath).Then({STATUS_DEAD_OBJECT});
  EXPECT_EQ(lookups_until_linked(), 2);

  // The same, heard of only when the registration is taken back.
  ASSERT_EQ(DeregisterBatteryLevelCallback(handle_, Client<0>), 0);
  health_.on(fake::BinderFunction::kLinkToDeath).Then({STATUS_NO_MEMORY});
  health_.on(HealthOperation::kUnregisterCallback).Then({STATUS_DEAD_OBJECT});
  EXPECT_EQ(lookups_until_linked(), 1) << "known at first, looked up by the second attempt";
}

// While a link stands the handle has to stay, whatever a call says: dropping it would drop the
// death notification.
TEST_F(BatteryLinkTest, AFailedQueryKeepsTheDeathNotification) {
  RegisterAndHearLevel();
  HoldDeliveries hold(Delivery::kDeathNotification);
  health_.Kill();
  ASSERT_TRUE(hold.WaitForHeld());
  EXPECT_EQ(GetBatteryLevel(handle_, false), -EAGAIN);
  EXPECT_TRUE(IsLinked(handle_));
  health_.SetLevel(12);
  health_.Start();
  hold.Release();
  EXPECT_EQ(seen_.Take(), (Call{0, 12}));

  // The same answer well before the death.
  health_.on(HealthOperation::kGetHealthInfo).Then({STATUS_DEAD_OBJECT});
  EXPECT_EQ(GetBatteryLevel(handle_, false), -EAGAIN);
  health_.Kill();
  health_.SetLevel(11);
  health_.Start();
  EXPECT_EQ(seen_.Take(), (Call{0, 11}));
}

TEST_F(BatteryLinkTest, ALateNotificationLeavesTheNextLinkAlone) {
  RegisterAndHearLevel();
  HoldDeliveries hold(Delivery::kDeathNotification);
  health_.Kill();
  ASSERT_TRUE(hold.WaitForHeld());
  ASSERT_EQ(DeregisterBatteryLevelCallback(handle_, Client<0>), 0);
  health_.Start();
  health_.SetLevel(30);
  ASSERT_EQ(RegisterBatteryLevelCallback(handle_, Client<0>, &seen_), 0);
  ASSERT_EQ(seen_.Take(), (Call{0, 30}));
  EXPECT_THAT(Warnings(), Not(Contains(kStartsToRestore))) << "unlinking had let the dead one go";
  log_.Clear();
  hold.Release();
  ASSERT_TRUE(fake::WaitUntilDelivered());
  EXPECT_TRUE(IsLinked(handle_));
  EXPECT_EQ(log_.Count(kAttempt), 0);
  EXPECT_EQ(health_.callback_count(), 1u) << "registered once, not twice";
  health_.Kill();  // and the link still brings its own notification
  health_.SetLevel(29);
  health_.Start();
  EXPECT_EQ(seen_.Take(), (Call{0, 29}));
}

using BatteryLinkSlowTest = BatteryLinkTest;

TEST_F(BatteryLinkSlowTest, GivingUpAfterTenAttemptsAndWhatBringsTheLinkBack) {
  using std::chrono::steady_clock;
  health_.Kill();
  health_.Undeclare();
  const auto start = steady_clock::now();
  ASSERT_EQ(RegisterBatteryLevelCallback(handle_, Client<0>, &seen_), 0);
  ASSERT_TRUE(log_.WaitFor(kAttempt, 10));
  EXPECT_GE(steady_clock::now() - start, 9 * std::chrono::milliseconds(200));
  EXPECT_FALSE(log_.WaitFor(kAttempt, 11, std::chrono::milliseconds(500)));

  health_.Declare();
  health_.Start();
  ASSERT_EQ(RegisterBatteryCycleCountCallback(handle_, Client<1>, &seen_), 0);
  ASSERT_EQ(DeregisterBatteryLevelCallback(handle_, Client<0>), 0);
  EXPECT_FALSE(IsLinked(handle_)) << "only a first client links";
  ASSERT_EQ(DeregisterBatteryCycleCountCallback(handle_, Client<1>), 0);
  RegisterAndHearLevel();
  EXPECT_EQ(log_.Count(kAttempt), 10);
}

}  // namespace
}  // namespace norvik::qel
