// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The host program of the tests: it starts the binder threads, as on a device.
#include <android/binder_process.h>
#include <android/log.h>
#include <gtest/gtest.h>
#include <locale.h>

#include <cstdlib>
#include <locale>

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  // Tests look at the log through a LogCapture; what is logged outside one is only noise.
  __android_log_set_minimum_priority(ANDROID_LOG_ERROR);
  // A death test runs in a new process from its start: the binder threads do not survive a fork.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  // A program may have a locale of its own, which nothing here is to heed; but the system's
  // messages are rightly in its language.
  if (const char* const name = std::getenv("QUORVEL_TEST_LOCALE")) {
    std::locale::global(std::locale(name));
    setlocale(LC_MESSAGES, "C");
  }
  ABinderProcess_startThreadPool();
  return RUN_ALL_TESTS();
}
