// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Recovery of thermal clients after the service's death, for any length of its absence and any
// thread that reconnects.
#include "environment.h"
#include "pauses.h"
#include "process_state.h"
#include "quiet.h"
#include "thermal_fixture.h"

namespace norvik::qel {
namespace {

constexpr int kQuickAttempts = 5;  // of "thermal_reconnect", 30 ms apart
constexpr int kSlowAttempts = 10;  // of "thermal_restore", 1000 ms apart

class ThermalRecoveryTest : public ThermalPathTest {
 protected:
  // Both clients receive the next change, and the service holds each callback once.
  void ExpectBothReceive() {
    ASSERT_TRUE(IsRegistered(2));
    severity_ = severity_ % 6 + 1;
    SetSkin(severity_);
    EXPECT_EQ(seen_.Take(), (Call{1, severity_}));
    thermal_.SetSeverity("cpu", static_cast<ThrottlingSeverity>(severity_));
    EXPECT_EQ(seen_.Take(), (Call{2, severity_}));
    EXPECT_EQ(registered(), 2u);
    EXPECT_TRUE(seen_.empty());
  }
  void RegisterBoth() {
    RegisterSkin();
    RegisterCpu();
  }

  int severity_ = 0;
};

// The workers' pauses last until the test ends them.
class ThermalShortRecoveryTest : public ThermalRecoveryTest {
 protected:
  // Kills the service and waits until the workers have made `attempts` attempts and pause.
  void StayAway(int attempts) {
    const int before = look_up().calls();
    thermal_.Kill(GetParam());
    for (int made = 1; made <= attempts; ++made) {
      ASSERT_TRUE(look_up().WaitForCalls(before + made)) << "attempt " << made;
      // The slow worker's first attempt follows at once, during the last quick pause.
      if (made == kQuickAttempts && attempts > kQuickAttempts) continue;
      const size_t pausing = made == kQuickAttempts + 1 ? 2 : 1;
      ASSERT_TRUE(Eventually([=] { return PausingWorkers() == pausing; }));
      if (made != attempts) EndPauses();
    }
    ASSERT_EQ(look_up().calls(), before + attempts);
  }
  void EndPausesUntil(const std::function<bool()>& is_so) {
    ASSERT_TRUE(Eventually([&] {
      EndPauses();
      // A worker between a failed attempt and its pause is neither idle nor counted.
      return (kEmulated || WaitUntilQuiet()) && is_so();
    }));
  }
  static bool AreIdle() { return PausingWorkers() == 0; }
  // Lets both workers use up their attempts.
  void GiveUp() {
    StayAway(kQuickAttempts + kSlowAttempts);
    EndPausesUntil(AreIdle);
  }
};

QUORVEL_TEST_BOTH_PATHS(ThermalShortRecoveryTest);

TEST_P(ThermalShortRecoveryTest, ClientsComeBackHoweverLongTheServiceWasAway) {
  RegisterBoth();
  for (int round = 0; round < 50; ++round) {
    for (const int slow_attempts : {-1, 1, 2, 5, 8}) {
      SCOPED_TRACE(slow_attempts);
      ASSERT_NO_FATAL_FAILURE(StayAway(kQuickAttempts + slow_attempts));
      thermal_.Start(GetParam());
      EndPauses();  // a worker that pauses again would disturb the next round
      ASSERT_NO_FATAL_FAILURE(ExpectBothReceive());
    }
  }
}

TEST_P(ThermalShortRecoveryTest, AfterGivingUpAnyOperationBringsTheClientsBack) {
  int values[16];
  int size = 16;
  const std::function<void()> operations[] = {
      [&] { EXPECT_TRUE(Operate()); },
      [&] { EXPECT_EQ(GetBatteryChargeLimitCurrent(handle_, values, &size, false), 0); },
      [&] { EXPECT_EQ((Register<3>("GPU", "no such name")), -EINVAL); },
      [&] { EXPECT_EQ(DeregisterThermalCallback(handle_, 4), -EINVAL); },
  };
  RegisterBoth();
  for (const auto& operate : operations) {
    ASSERT_NO_FATAL_FAILURE(GiveUp());
    thermal_.Start(GetParam());
    EXPECT_EQ(registered(), 0u) << "idle costs nothing";
    const int before = look_up().calls();
    operate();
    EXPECT_EQ(look_up().calls(), before + 1);
    ASSERT_NO_FATAL_FAILURE(ExpectBothReceive());
  }
  EXPECT_EQ(log_.Count(kNotReady), 4 * kSlowAttempts);
}

// The service returns for one query in the middle of a series of attempts, and dies again. The
// quick worker continues its series; the slow worker makes all its attempts.
TEST_P(ThermalShortRecoveryTest, ASecondDeathDuringARecoveryIsRecoveredFrom) {
  RegisterBoth();
  for (const int attempts : {3, kQuickAttempts + 1, kQuickAttempts + 4}) {
    SCOPED_TRACE(attempts);
    ASSERT_NO_FATAL_FAILURE(StayAway(attempts));
    thermal_.Start(GetParam());
    EXPECT_TRUE(Operate());
    ASSERT_EQ(registered(), 2u);
    log_.Clear();
    thermal_.Kill(GetParam());
    ASSERT_TRUE(fake::WaitUntilDelivered());
    ASSERT_NO_FATAL_FAILURE(EndPausesUntil([this] { return log_.Count(kNotReady) >= 3; }));
    thermal_.Start(GetParam());
    ASSERT_NO_FATAL_FAILURE(EndPausesUntil([this] { return registered() == 2 && AreIdle(); }));
    ASSERT_NO_FATAL_FAILURE(ExpectBothReceive());
  }
}

TEST_P(ThermalShortRecoveryTest, WithoutClientsTheSlowWorkerIsNotStarted) {
  RegisterSkin();
  EXPECT_EQ(DeregisterThermalCallback(handle_, 1), 0);
  ASSERT_NO_FATAL_FAILURE(StayAway(kQuickAttempts));
  ASSERT_NO_FATAL_FAILURE(EndPausesUntil(AreIdle));
  EXPECT_EQ(log_.Count(kNotReady), 0);
}

QUORVEL_TEST_BOTH_PATHS(ThermalRecoveryTest);

// The worker registers the types while a caller waits for the lock. That caller and later ones must
// not register them again.
TEST_P(ThermalRecoveryTest, EveryTypeIsRegisteredOncePerConnection) {
  RegisterBoth();
  const int before = on(ThermalCall::kRegister).calls();
  const auto gate = std::make_shared<Gate>();
  on(ThermalCall::kRegister).Then(Outcome::After(gate));
  Restart();
  ASSERT_TRUE(gate->WaitForArrivals());  // the worker, with the handle's lock held
  Background caller("a query", [&] { EXPECT_TRUE(Operate()); });
  gate->Open();
  caller.Join();
  EXPECT_TRUE(Operate());
  EXPECT_EQ((Register<3>("SKIN", "no such name")), -EINVAL);
  EXPECT_EQ(on(ThermalCall::kRegister).calls(), before + 2);
  ASSERT_NO_FATAL_FAILURE(ExpectBothReceive());
}

TEST_P(ThermalRecoveryTest, ARefusalIsNotRepeatedOnTheSameConnection) {
  RegisterBoth();
  log_.Clear();
  const int before = on(ThermalCall::kRegister).calls();
  on(ThermalCall::kRegister).Then(Outcome::Exception(EX_ILLEGAL_STATE, "not now"));
  Restart();
  ASSERT_TRUE(IsRegistered(1));
  EXPECT_TRUE(Operate());
  EXPECT_EQ(on(ThermalCall::kRegister).calls(), before + 2);
  EXPECT_EQ(Warnings().back().find("RegisterCallbackToThermal: "), 0u);
  Restart();
  ASSERT_NO_FATAL_FAILURE(ExpectBothReceive());
}

// The worker of a refused registration ends before the next registration is tried.
TEST_P(ThermalRecoveryTest, WaitingRegistrationsThatFailLeaveNoWorkers) {
  constexpr int kWaiting = 300;
  RegisterSkin();
  const auto workers = [] { return ThreadIdsNamed({"thermal_callback"}).size(); };
  ASSERT_TRUE(Eventually([&] { return workers() == 1u; }));
  thermal_.Kill(GetParam());
  ASSERT_TRUE(fake::WaitUntilDelivered());
  ASSERT_FALSE(Operate());
  for (int id = 10; id < 10 + kWaiting; ++id) {
    ASSERT_EQ(
        RegisterClient(handle_, id, id % 2 == 0 ? "CPU" : "GPU", "no such name", Client<9>, &seen_),
        0);
  }
  // Stops in the query of the last registration, when all others have been refused.
  const auto gate = std::make_shared<Gate>();
  for (int i = 1; i < kWaiting; ++i) on(ThermalCall::kQuery).Then({});
  on(ThermalCall::kQuery).Then(Outcome::After(gate));
  ASSERT_TRUE(Eventually([] { return PausingWorkers() == 2u; }));
  thermal_.Start(GetParam());
  EndPauses();
  ASSERT_TRUE(gate->WaitForArrivals(1, std::chrono::minutes(2))) << "all other registrations";
  EXPECT_TRUE(Eventually([&] { return workers() <= 2u; })) << workers();
  gate->Open();
  // Both in one condition, because a worker that has just started does not have its name yet.
  EXPECT_TRUE(Eventually([&] { return workers() == 1u && registered() == 1; }))
      << workers() << " workers, " << registered() << " registered";
}

}  // namespace
}  // namespace norvik::qel
