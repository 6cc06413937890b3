// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The host program of the tests: it starts the binder threads, as on a device.
#include <android/binder_process.h>
#include <android/log.h>
#include <gtest/gtest.h>
#include <locale.h>

#include <cstdlib>
#include <locale>
#include <string>

#include "hang_guard.h"

// Ends the program with the name of a test that hangs, before ctest does so without it. Slow tests
// wait for real pauses.
class HangGuard : public testing::EmptyTestEventListener {
  void OnTestStart(const testing::TestInfo& info) override {
    using std::chrono::minutes;
    name_ = std::string(info.test_suite_name()) + "." + info.name();
    const bool slow = name_.find("Slow") != std::string::npos;
    norvik::qel::RestartHangGuard(name_.c_str(), slow ? minutes(20) : minutes(4));
  }

  std::string name_;
};

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  // Tests read the log through a LogCapture. Other log output is not needed.
  __android_log_set_minimum_priority(ANDROID_LOG_ERROR);
  // A death test runs in a new process from its start: the binder threads do not survive a fork.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  // Runs the tests in another locale, except for the language of the system's messages.
  if (const char* const name = std::getenv("QUORVEL_TEST_LOCALE")) {
    std::locale::global(std::locale(name));
    setlocale(LC_MESSAGES, "C");
  }
  testing::UnitTest::GetInstance()->listeners().Append(new HangGuard);
  ABinderProcess_startThreadPool();
  return RUN_ALL_TESTS();
}
