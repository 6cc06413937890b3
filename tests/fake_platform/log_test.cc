// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The log and the statuses of the fake platform.
#include <android/binder_auto_utils.h>
#include <android/log.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "quorvel/fake/log_capture.h"

namespace norvik::qel {
namespace {

using fake::LogLine;
using testing::ElementsAre;

TEST(LogTest, GoesToTheLoggerWithTagPriorityAndText) {
  fake::LogCapture log;
  errno = ENOENT;
  EXPECT_EQ(__android_log_print(ANDROID_LOG_WARN, "tag", "%s: %d", "Function", 7), 1);
  EXPECT_EQ(errno, ENOENT);
  const std::string long_text(3000, 'x');
  __android_log_print(ANDROID_LOG_DEBUG, "tag", "%s", long_text.c_str());
  __android_log_write(ANDROID_LOG_ERROR, "tag", long_text.c_str());
  __android_log_set_default_tag("app");
  __android_log_print(ANDROID_LOG_INFO, nullptr, "untagged");
  EXPECT_THAT(log.Lines(), ElementsAre(LogLine{ANDROID_LOG_WARN, "tag", "Function: 7"},
                                       LogLine{ANDROID_LOG_DEBUG, "tag", std::string(1023, 'x')},
                                       LogLine{ANDROID_LOG_ERROR, "tag", long_text},
                                       LogLine{ANDROID_LOG_INFO, "app", "untagged"}));
}

TEST(LogTest, DropsLinesBelowTheMinimumPriorityAndIsQuietUnlessAskedForMore) {
  const int32_t before = __android_log_set_minimum_priority(ANDROID_LOG_DEFAULT);
  testing::internal::CaptureStderr();
  EXPECT_EQ(__android_log_print(ANDROID_LOG_INFO, "tag", "dropped"), -EPERM);
  EXPECT_EQ(__android_log_is_loggable(ANDROID_LOG_INFO, "tag", ANDROID_LOG_VERBOSE), 0);
  EXPECT_EQ(__android_log_print(ANDROID_LOG_WARN, "tag", "kept"), 1);
  __android_log_set_minimum_priority(ANDROID_LOG_DEBUG);
  EXPECT_EQ(__android_log_print(ANDROID_LOG_DEBUG, "tag", "asked for"), 1);
  EXPECT_EQ(__android_log_set_minimum_priority(ANDROID_LOG_DEFAULT), ANDROID_LOG_DEBUG);
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::MatchesRegex("[0-9][0-9]-[0-9][0-9] [0-9][0-9]:[0-9][0-9]:[0-9][0-9]"
                                    "\\.[0-9][0-9][0-9] +[0-9]+ +[0-9]+ W tag: kept\n"
                                    ".* D tag: asked for\n"));
  // A program's own logger receives all messages, as on a device.
  __android_log_set_logger([](const __android_log_message*) {});
  EXPECT_EQ(__android_log_print(ANDROID_LOG_VERBOSE, "tag", "text"), 1);
  __android_log_set_logger(__android_log_stderr_logger);
  __android_log_set_minimum_priority(before);
}

TEST(StatusTest, KeepsServiceSpecificErrorsAndPrunesUnknownCodes) {
  using ndk::ScopedAStatus;
  const auto specific = ScopedAStatus::fromServiceSpecificErrorWithMessage(2, "msg");
  EXPECT_EQ(specific.getDescription(), "Status(-8, EX_SERVICE_SPECIFIC): '2: msg'");
  EXPECT_EQ(specific.getServiceSpecificError(), 2);
  EXPECT_EQ(specific.getStatus(), STATUS_OK);
  EXPECT_EQ(ScopedAStatus::fromStatus(-77).getStatus(), STATUS_UNKNOWN_ERROR);
  EXPECT_EQ(ScopedAStatus::fromExceptionCode(-77).getExceptionCode(), EX_TRANSACTION_FAILED);
  EXPECT_EQ(ScopedAStatus::fromStatus(STATUS_OK).getDescription(), "No error");
  EXPECT_FALSE(ScopedAStatus().isOk());
}

}  // namespace
}  // namespace norvik::qel
