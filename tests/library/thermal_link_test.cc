// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The link to the thermal service: the choice of the service, its deaths, and registrations that
// wait for it.
#include "thermal_fixture.h"

namespace norvik::qel {
namespace {

constexpr char kFound[] =
    "RestorePendingThermalCallback: able to register client 1 callback(type:SKIN name:skin)";
constexpr char kDropped[] =
    "RestorePendingThermalCallback: unable  to register client 2 callback(type:CPU name:none)";

std::string Queued(int id) {
  return "RegisterThermalCallback: Add " + std::to_string(id) +
         " to pending queue because of thermal service isn't ready.";
}

using ThermalLinkTest = ThermalFixture;

TEST_F(ThermalLinkTest, AidlComesBeforeHidl) {
  EXPECT_EQ(GetBatteryChargeLimitCapacity(handle_), 16);
  EXPECT_THAT(Log(), testing::IsEmpty()) << "no look-up before the first operation";
  EXPECT_FALSE(Operate());
  EXPECT_THAT(Log(), ElementsAre(kNotDeclared));
  thermal_.Declare(ThermalPath::kAidl);
  EXPECT_FALSE(Operate());
  EXPECT_THAT(Log(), ElementsAre(kNotDeclared, kNotRunning));
  EXPECT_EQ(thermal_.on(BinderFunction::kTryGetHidlService).calls(), 2)
      << "asked for in the same call";
  Bring(ThermalPath::kHidl);
  EXPECT_TRUE(Operate());
  thermal_.Start(ThermalPath::kAidl);
  EXPECT_TRUE(Operate());
  EXPECT_EQ(thermal_.on(HidlThermalOperation::kGetCurrentTemperatures).calls(), 2)
      << "a link that stands is kept";
  EXPECT_EQ(thermal_.on(BinderFunction::kIsDeclared).calls(), 3);

  thermal_.Kill(ThermalPath::kHidl);
  ASSERT_TRUE(log_.WaitFor(kRecovered));
  EXPECT_TRUE(Operate());
  EXPECT_EQ(thermal_.on(ThermalOperation::kGetTemperatures).calls(), 1);
  EXPECT_THAT(Warnings(), ElementsAre(kNotDeclared, kNotRunning, kNotRunning));
}

TEST_F(ThermalLinkTest, AFailureToLinkIsLoggedAndNothingElse) {
  Bring(ThermalPath::kAidl);
  thermal_.on(BinderFunction::kLinkToDeath).Then({.status = STATUS_NO_MEMORY});
  EXPECT_TRUE(Operate());
  EXPECT_TRUE(Operate());
  EXPECT_THAT(Log(), ElementsAre("Failed to link to death (AIDL): -12"));
  EXPECT_EQ(thermal_.on(BinderFunction::kCheckService).calls(), 1)
      << "the connection counts as made";
}

using ThermalDeathTest = ThermalPathTest;
using ThermalDeathSlowTest = ThermalPathTest;
QUORVEL_TEST_BOTH_PATHS(ThermalDeathTest);
QUORVEL_TEST_BOTH_PATHS(ThermalDeathSlowTest);

// The service dies between the look-up and the link.
TEST_P(ThermalDeathTest, ALinkRefusedByADeathIsTreatedAsADeathNotification) {
  const auto refuse = [&](int times) {
    fake::Script& link = is_aidl() ? thermal_.on(BinderFunction::kLinkToDeath)
                                   : thermal_.on(BinderFunction::kHidlLinkToDeath);
    link.Then({.status = STATUS_DEAD_OBJECT}, times);
  };
  // The operation's link is refused. Then the worker links to a service that is alive.
  refuse(1);
  EXPECT_TRUE(Operate()) << "the connection counts as made";
  ASSERT_TRUE(log_.WaitFor(kRecovered));
  EXPECT_EQ(look_up().calls(), 2);
  EXPECT_TRUE(Operate());
  EXPECT_EQ(look_up().calls(), 2) << "the second link stands";
  if (is_aidl()) {
    EXPECT_THAT(Warnings(), ElementsAre("Failed to link to death (AIDL): -32"));
  } else {
    EXPECT_THAT(Warnings(), ElementsAre(kNotDeclared, kNotDeclared));
  }

  // The refusals use up the quick worker's five attempts. Then the slow worker succeeds.
  RegisterSkin();
  refuse(5);
  Restart();
  ASSERT_TRUE(IsRegistered(1));
  EXPECT_EQ(look_up().calls(), 8);
  EXPECT_TRUE(Operate());
  EXPECT_EQ(look_up().calls(), 8);
}

TEST_P(ThermalDeathTest, ADeathDuringARegistrationRefusesItAndKeepsTheOtherClients) {
  RegisterAndTake<1>("CPU", "cpu");
  const auto gate = std::make_shared<Gate>();
  on(ThermalCall::kRegister).Then(Outcome::After(gate));
  Background client("a registration", [&] { EXPECT_EQ(Register<2>("SKIN", "skin"), -EINVAL); });
  ASSERT_TRUE(gate->WaitForArrivals());
  thermal_.Kill(GetParam());
  client.Join();
  thermal_.Start(GetParam());
  ASSERT_TRUE(IsRegistered(1)) << "the clients that were there before";
  RegisterAndTake<2>("SKIN", "skin");
}

TEST_P(ThermalDeathTest, RegistrationsWaitForALateService) {
  thermal_.Kill(GetParam());
  ASSERT_EQ(Register<1>("SKIN", "skin"), 0);
  EXPECT_EQ(log_.Count(Queued(1)), 1);
  ASSERT_TRUE(log_.WaitFor(kNotReady));
  // The first registration of an id is kept. Registrations with other ids also wait.
  EXPECT_EQ(RegisterClient(handle_, 1, "CPU", "cpu", Client<1>, &seen_), 0);
  EXPECT_EQ(log_.Count(Queued(1)), 1);
  ASSERT_EQ(Register<2>("CPU", "none"), 0);
  ASSERT_EQ(Register<3>("CPU", "cpu"), 0);
  EXPECT_EQ(DeregisterThermalCallback(handle_, 3), 0);
  EXPECT_EQ(log_.Count("DeregisterThermalCallback: remove 3 from pending queue because of thermal "
                       "service isn't ready."),
            1);
  EXPECT_EQ(DeregisterThermalCallback(handle_, 3), 0);
  EXPECT_EQ(log_.Count("DeregisterThermalCallback: double remove for id 3"), 1);
  thermal_.Start(GetParam());
  EXPECT_EQ(DeregisterThermalCallback(handle_, 1), -EINVAL) << "not found while it waits";
  EXPECT_EQ(seen_.Take(), (Call{1, 0}));
  ASSERT_TRUE(log_.WaitFor(kFound));
  ASSERT_TRUE(log_.WaitFor(kDropped));
  EXPECT_EQ(registered(), 1u);
  EXPECT_EQ(DeregisterThermalCallback(handle_, 1), 0);

  // A waiting registration that has failed is not tried again.
  thermal_.Kill(GetParam());
  ASSERT_TRUE(fake::WaitUntilDelivered());
  ASSERT_EQ(Register<1>("SKIN", "skin"), 0);
  thermal_.Start(GetParam());
  ASSERT_TRUE(log_.WaitFor(kFound, 2));
  EXPECT_EQ(log_.Count(kDropped), 1);
}

TEST_P(ThermalDeathSlowTest, WaitingRegistrationsOutliveTenAttempts) {
  thermal_.Kill(GetParam());
  ASSERT_EQ(Register<1>("SKIN", "skin"), 0);
  ASSERT_TRUE(log_.WaitFor(kNotReady, 10, std::chrono::seconds(30)));
  EXPECT_FALSE(log_.WaitFor(kNotReady, 11, std::chrono::milliseconds(1500))) << "given up";
  EXPECT_EQ(Register<1>("SKIN", "skin"), 0);
  EXPECT_FALSE(log_.WaitFor(kNotReady, 11, std::chrono::milliseconds(100)))
      << "the same id starts nothing";
  EXPECT_EQ(Register<2>("CPU", "cpu"), 0);
  ASSERT_TRUE(log_.WaitFor(kNotReady, 11));
  thermal_.Start(GetParam());
  ASSERT_TRUE(log_.WaitFor(kFound));
  EXPECT_TRUE(IsRegistered(2));
}

}  // namespace
}  // namespace norvik::qel
