// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The interposed clock: the library's pauses last until a test ends them, and no other wait does.
#include "pauses.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "quorvel.h"
#include "quorvel/fake/service_manager.h"
#include "quorvel/simulated/health.h"
#include "waiting.h"

namespace norvik::qel {

namespace {

// A battery handle whose client waits for a service that does not run: its worker pauses after each
// attempt.
class PausesTest : public testing::Test {
 protected:
  PausesTest() { InitBatteryInfo(&handle_); }
  ~PausesTest() override { DeinitBatteryInfo(&handle_); }

  static bool OnePauses() { return PausingWorkers() == 1; }
  static bool NonePauses() { return PausingWorkers() == 0; }
  void Register() {
    ASSERT_EQ(RegisterBatteryLevelCallback(
                  handle_, [](int, void*) {}, nullptr),
              0);
  }

  fake::ShortGetServiceWait short_wait_;
  simulated::Health health_;
  const fake::Script& look_ups_ = health_.on(fake::BinderFunction::kGetService);
  void* handle_ = nullptr;
};

TEST_F(PausesTest, APauseLastsUntilItIsEnded) {
  Register();  // the caller's attempt, and the worker's
  ASSERT_TRUE(Eventually(OnePauses));
  // Longer than the pause of 200 ms: the waits of others take their time, and end by themselves.
  // Guards no member: a wait needs one.
  std::mutex lock;
  std::condition_variable never;
  std::unique_lock<std::mutex> hold(lock);
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(never.wait_for(hold, std::chrono::milliseconds(250)), std::cv_status::timeout);
  EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(250));
  EXPECT_EQ(PausingWorkers(), 1U);
  EXPECT_EQ(look_ups_.calls(), 2);
}

TEST_F(PausesTest, AWorkerThatPausesGivesUpAfterItsAttempts) {
  Register();
  for (int attempts = 1; attempts <= 10; ++attempts) {
    ASSERT_TRUE(Eventually([&] { return OnePauses() && look_ups_.calls() == attempts + 1; }))
        << attempts;
    EndPauses();
  }
  ASSERT_TRUE(Eventually(NonePauses));
  EXPECT_EQ(look_ups_.calls(), 11);
}

TEST_F(PausesTest, TheEndOfAHandleEndsItsPause) {
  Register();
  ASSERT_TRUE(Eventually(OnePauses));
  EndsInTime([this] { DeinitBatteryInfo(&handle_); });
  EXPECT_EQ(PausingWorkers(), 0U);
  EndPauses();  // of no worker: returns
}

}  // namespace

}  // namespace norvik::qel
