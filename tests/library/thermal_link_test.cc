// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The link to the thermal service: which service, when, its deaths, and what waits for it.
#include <android/log.h>

#include <cerrno>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "pipe.h"
#include "thermal_fixture.h"

namespace norvik::qel {
namespace {

using aidl::android::hardware::thermal::TemperatureType;
using fake::Gate;
using fake::Outcome;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kFound[] =
    "RestorePendingThermalCallback: able to register client 1 "
    "callback(type:SKIN name:skin)";
constexpr char kDropped[] =
    "RestorePendingThermalCallback: unable  to register client 2 "
    "callback(type:CPU name:nobody)";

std::string Queued(int id) {
  return "RegisterThermalCallback: Add " + std::to_string(id) +
         " to pending queue because of thermal service isn't ready.";
}

using ThermalLinkTest = ThermalFixture;

TEST_F(ThermalLinkTest, ANewHandleAsksNobody) {
  Bring(ThermalPath::kAidl);
  EXPECT_EQ(GetBatteryChargeLimitCapacity(handle_), 16);
  EXPECT_EQ(thermal_.on(fake::BinderFunction::kIsDeclared).calls(), 0);
  EXPECT_EQ(thermal_.on(fake::BinderFunction::kTryGetHidlService).calls(), 0);
  DeinitThermalInfo(&handle_);
  EXPECT_EQ(thermal_.on(fake::BinderFunction::kIsDeclared).calls(), 0);
  EXPECT_THAT(Log(), IsEmpty());
}

TEST_F(ThermalLinkTest, AidlComesBeforeHidl) {
  EXPECT_FALSE(Operate());
  EXPECT_THAT(Log(), ElementsAre(kNotDeclared));
  thermal_.Declare(ThermalPath::kAidl);
  EXPECT_FALSE(Operate());
  EXPECT_THAT(Log(), ElementsAre(kNotDeclared, kNotRunning));
  EXPECT_EQ(thermal_.on(fake::BinderFunction::kTryGetHidlService).calls(), 2)
      << "asked for in the same call";
  Bring(ThermalPath::kHidl);
  EXPECT_TRUE(Operate());
  thermal_.Start(ThermalPath::kAidl);
  EXPECT_TRUE(Operate());
  EXPECT_EQ(thermal_.on(services::HidlThermalOperation::kGetCurrentTemperatures).calls(), 2)
      << "a link that stands is kept";
  EXPECT_EQ(thermal_.on(fake::BinderFunction::kIsDeclared).calls(), 3);

  thermal_.Kill(ThermalPath::kHidl);
  ASSERT_TRUE(log_.WaitFor(kRecovered));
  EXPECT_TRUE(Operate());
  EXPECT_EQ(thermal_.on(services::ThermalOperation::kGetTemperatures).calls(), 1);
  EXPECT_THAT(Log(ANDROID_LOG_WARN), ElementsAre(kNotDeclared, kNotRunning, kNotRunning));
}

TEST_F(ThermalLinkTest, AFailureToLinkIsLoggedAndNothingElse) {
  Bring(ThermalPath::kAidl);
  thermal_.on(fake::BinderFunction::kLinkToDeath).Then({.status = STATUS_NO_MEMORY});
  EXPECT_TRUE(Operate());
  EXPECT_TRUE(Operate());
  EXPECT_THAT(Log(), ElementsAre("Failed to link to death (AIDL): -12"));
  EXPECT_EQ(thermal_.on(fake::BinderFunction::kCheckService).calls(), 1)
      << "the connection counts as made";
}

class ThermalDeathTest : public ThermalPathTest {
 protected:
  ~ThermalDeathTest() override { DeinitThermalInfo(&handle_); }
};
using ThermalDeathSlowTest = ThermalDeathTest;
INSTANTIATE_TEST_SUITE_P(, ThermalDeathTest,
                         testing::Values(ThermalPath::kAidl, ThermalPath::kHidl), PathName);
INSTANTIATE_TEST_SUITE_P(, ThermalDeathSlowTest,
                         testing::Values(ThermalPath::kAidl, ThermalPath::kHidl), PathName);

TEST_P(ThermalDeathTest, EveryTypeIsRegisteredAgainAndHearsTheNextChange) {
  RegisterAndHear<1>("SKIN", "skin");
  RegisterAndHear<2>("CPU", "cpu");
  for (int death = 1; death <= 3; ++death) {
    log_.Clear();
    Restart();
    ASSERT_TRUE(IsRegistered(2)) << "death " << death;
    ASSERT_TRUE(log_.WaitFor(kRecovered));
    EXPECT_TRUE(Operate());
    EXPECT_EQ(log_.Count(kRecovered), 1);
    EXPECT_TRUE(seen_.empty()) << "nothing is asked for in the clients' name";
    const int severity = 4 - death;
    thermal_.SetSeverity("skin", static_cast<ThrottlingSeverity>(severity));
    EXPECT_EQ(seen_.Take(), (Call{1, severity}));
    EXPECT_EQ(registered(), 2u) << "once each";
  }
}

// The service dies between the look-up and the link.
TEST_P(ThermalDeathTest, ALinkRefusedByADeathStandsForItsNotification) {
  const auto refuse = [&](int times) {
    if (GetParam() == ThermalPath::kAidl) {
      thermal_.on(fake::BinderFunction::kLinkToDeath).Then({.status = STATUS_DEAD_OBJECT}, times);
    } else {
      thermal_.on(fake::BinderFunction::kHidlLinkToDeath)
          .Then({.status = STATUS_DEAD_OBJECT}, times);
    }
  };
  // The operation's own, and then the worker finds one that lives.
  refuse(1);
  EXPECT_TRUE(Operate()) << "the connection counts as made";
  ASSERT_TRUE(log_.WaitFor(kRecovered));
  EXPECT_EQ(look_up().calls(), 2);
  EXPECT_TRUE(Operate());
  EXPECT_EQ(look_up().calls(), 2) << "the second link stands";
  if (GetParam() == ThermalPath::kAidl) {
    EXPECT_THAT(Log(ANDROID_LOG_WARN), ElementsAre("Failed to link to death (AIDL): -32"));
  } else {
    EXPECT_THAT(Log(ANDROID_LOG_WARN), ElementsAre(kNotDeclared, kNotDeclared));
  }

  // Each refusal is one of the worker's five attempts; then the other worker makes its first one.
  RegisterAndHear<1>("SKIN", "skin");
  refuse(5);
  Restart();
  ASSERT_TRUE(IsRegistered(1));
  EXPECT_EQ(look_up().calls(), 8);
  EXPECT_TRUE(Operate());
  EXPECT_EQ(look_up().calls(), 8);
}

TEST_P(ThermalDeathTest, DeathBeforeTheFirstQuery) {
  thermal_.Kill(GetParam());
  EXPECT_FALSE(Operate());
  thermal_.Start(GetParam());
  EXPECT_TRUE(Operate());
  EXPECT_EQ(log_.Count(kRecovered), 0) << "there was nothing to recover";
}

TEST_P(ThermalDeathTest, DeathDuringARegistration) {
  RegisterAndHear<1>("CPU", "cpu");
  const auto gate = std::make_shared<Gate>();
  on(ThermalCall::kRegister).Then(Outcome::After(gate));
  std::thread client([&] { EXPECT_EQ(Register<2>("SKIN", "skin"), -EINVAL); });
  ASSERT_TRUE(gate->WaitForArrivals());
  thermal_.Kill(GetParam());
  client.join();
  thermal_.Start(GetParam());
  ASSERT_TRUE(IsRegistered(1)) << "the clients that were there before";
  RegisterAndHear<2>("SKIN", "skin");
}

TEST_P(ThermalDeathTest, DeathBetweenANotificationAndItsDispatch) {
  Stall stall;
  RegisterAndHear<1>("SKIN", "skin");
  ASSERT_EQ(RegisterClient(handle_, 2, "SKIN", "skin", Stall::Callback, &stall), 0);
  ASSERT_TRUE(stall.gate.WaitForArrivals());
  thermal_.SetSeverity("skin", ThrottlingSeverity::SEVERE);
  ASSERT_TRUE(fake::WaitUntilDelivered());
  thermal_.Kill(GetParam());
  stall.gate.Open();
  EXPECT_EQ(TakeThrottled(), (Call{1, 3})) << "what had been reported is told";
  DeinitThermalInfo(&handle_);
}

TEST_P(ThermalDeathTest, DeathWhileWaitingClientsAreRegistered) {
  thermal_.Kill(GetParam());
  ASSERT_EQ(Register<1>("SKIN", "skin"), 0);
  const auto gate = std::make_shared<Gate>();
  on(ThermalCall::kQuery).Then(Outcome::After(gate));
  thermal_.Start(GetParam());
  ASSERT_TRUE(gate->WaitForArrivals());
  thermal_.Kill(GetParam());
  ASSERT_TRUE(
      log_.WaitFor("RestorePendingThermalCallback: unable  to register client 1 "
                   "callback(type:SKIN name:skin)"))
      << "tried once only";
  ASSERT_TRUE(fake::WaitUntilDelivered());
  thermal_.Start(GetParam());
  EXPECT_EQ(DeregisterThermalCallback(handle_, 1), -EINVAL);
  RegisterAndHear<1>("SKIN", "skin");
}

TEST_P(ThermalDeathTest, DeathWhileTheHandleGoes) {
  RegisterAndHear<1>("SKIN", "skin");
  RegisterAndHear<2>("CPU", "cpu");
  const auto gate = std::make_shared<Gate>();
  on(ThermalCall::kUnregister).Then(Outcome::After(gate));
  std::thread owner([&] { DeinitThermalInfo(&handle_); });
  ASSERT_TRUE(gate->WaitForArrivals());
  thermal_.Kill(GetParam());
  owner.join();
  EXPECT_EQ(handle_, nullptr);
}

TEST_P(ThermalDeathTest, SeveralHandlesEachComeBack) {
  RegisterAndHear<1>("SKIN", "skin");
  void* other = nullptr;
  Seen<Call> other_seen;
  InitThermalInfo(&other);
  ASSERT_EQ(RegisterClient(other, 1, "SKIN", "skin", Client<5>, &other_seen), 0);
  ASSERT_TRUE(other_seen.Take());
  Restart();
  ASSERT_TRUE(IsRegistered(2));
  thermal_.SetSeverity("skin", ThrottlingSeverity::LIGHT);
  EXPECT_EQ(seen_.Take(), (Call{1, 1}));
  EXPECT_EQ(other_seen.Take(), (Call{5, 1}));
  DeinitThermalInfo(&other);
  EXPECT_EQ(registered(), 1u);
}

TEST_P(ThermalDeathTest, ADumpWhoseReaderHasStoppedHoldsUpNoRecovery) {
  Pipe pipe;
  const size_t capacity = pipe.Shrink();
  thermal_.Change([capacity](services::ThermalData& data) {
    data.temperatures.push_back(
        {.type = TemperatureType::BCL_CURRENT, .name = "AUDIO" + std::string(2 * capacity, 'x')});
  });
  int limits[4] = {};
  int size = 4;
  ASSERT_EQ(GetBatteryChargeLimitCurrent(handle_, limits, &size, false), 0);
  RegisterAndHear<1>("SKIN", "skin");
  RegisterAndHear<2>("CPU", "cpu");
  void* other = nullptr;
  Seen<Call> other_seen;
  InitThermalInfo(&other);
  ASSERT_EQ(RegisterClient(other, 3, "SKIN", "skin", Client<3>, &other_seen), 0);
  ASSERT_TRUE(other_seen.Take());

  const std::string text = Dump();
  Seen<bool> dumped;
  std::thread dumper([&] {
    DumpThermalInfo(handle_, pipe.writer());
    dumped.Put(true);
  });
  EXPECT_TRUE(Eventually([&] { return pipe.unread() > capacity / 2; }));
  Restart();
  EXPECT_TRUE(IsRegistered(3));
  thermal_.SetSeverity("cpu", ThrottlingSeverity::LIGHT);
  thermal_.SetSeverity("skin", ThrottlingSeverity::LIGHT);
  EXPECT_EQ(other_seen.Take(), (Call{3, 1}));
  EXPECT_TRUE(dumped.empty()) << "all of that while the dump waits";
  EXPECT_TRUE(pipe.Read(text.size()) == text);
  dumper.join();
  EXPECT_EQ(pipe.unread(), 0u);
  EXPECT_TRUE(seen_.Take());
  EXPECT_TRUE(seen_.Take());
  DeinitThermalInfo(&other);
}

TEST_P(ThermalDeathTest, RegistrationsWaitForALateService) {
  thermal_.Kill(GetParam());
  ASSERT_EQ(Register<1>("SKIN", "skin"), 0);
  EXPECT_EQ(log_.Count(Queued(1)), 1);
  ASSERT_TRUE(log_.WaitFor(kNotReady));
  // The same id keeps what it has; another one waits, too.
  EXPECT_EQ(RegisterClient(handle_, 1, "CPU", "cpu", Client<1>, &seen_), 0);
  EXPECT_EQ(log_.Count(Queued(1)), 1);
  ASSERT_EQ(Register<2>("CPU", "nobody"), 0);
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
  ASSERT_TRUE(
      log_.WaitFor("RestorePendingThermalCallback: unable  to register client 2 "
                   "callback(type:CPU name:nobody)"));
  EXPECT_EQ(registered(), 1u);
  EXPECT_EQ(DeregisterThermalCallback(handle_, 1), 0);

  // What has failed is dropped for good.
  thermal_.Kill(GetParam());
  ASSERT_TRUE(fake::WaitUntilDelivered());
  ASSERT_EQ(Register<1>("SKIN", "skin"), 0);
  thermal_.Start(GetParam());
  ASSERT_TRUE(log_.WaitFor(kFound, 2));
  EXPECT_EQ(log_.Count(kDropped), 1);
}

// Every length on real pauses: the service is away until so many attempts have failed.
class ThermalAwaySlowTest : public ThermalDeathTest {};
INSTANTIATE_TEST_SUITE_P(, ThermalAwaySlowTest,
                         testing::Values(ThermalPath::kAidl, ThermalPath::kHidl), PathName);

TEST_P(ThermalAwaySlowTest, ClientsComeBackHoweverLongTheServiceWasAway) {
  RegisterAndHear<1>("SKIN", "skin");
  int severity = 0;
  const auto expect_to_hear = [&] {
    ASSERT_TRUE(IsRegistered(1));
    thermal_.SetSeverity("skin", static_cast<ThrottlingSeverity>(++severity));
    EXPECT_EQ(seen_.Take(), (Call{1, severity}));
  };
  // 0.1, 0.5, 2, 5 and 8 seconds.
  for (const int failed_attempts : {4, 5 + 1, 5 + 2, 5 + 5, 5 + 8}) {
    SCOPED_TRACE(failed_attempts);
    const int before = look_up().calls();
    thermal_.Kill(GetParam());
    ASSERT_TRUE(look_up().WaitForCalls(before + failed_attempts));
    thermal_.Start(GetParam());
    ASSERT_NO_FATAL_FAILURE(expect_to_hear());
  }
  // Longer than all attempts: silent until the first query.
  const int before = look_up().calls();
  thermal_.Kill(GetParam());
  ASSERT_TRUE(look_up().WaitForCalls(before + 15, std::chrono::seconds(30)));
  EXPECT_FALSE(look_up().WaitForCalls(before + 16, std::chrono::milliseconds(1500))) << "given up";
  thermal_.Start(GetParam());
  EXPECT_EQ(registered(), 0u);
  EXPECT_TRUE(Operate());
  expect_to_hear();
}

TEST_P(ThermalDeathSlowTest, WaitingRegistrationsOutliveTheWorkersTenAttempts) {
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
