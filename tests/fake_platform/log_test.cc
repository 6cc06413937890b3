// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The log, statuses and texts of the fake platform.
#include <aidl/android/hardware/health/HealthInfo.h>
#include <android/binder_auto_utils.h>
#include <android/binder_enums.h>
#include <android/log.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "quorvel/fake/log_capture.h"

namespace norvik::qel {
namespace {

using fake::LogCapture;
using fake::LogLine;
using testing::ElementsAre;

TEST(LogTest, GoesToTheLoggerWithTagPriorityAndText) {
  LogCapture log;
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

TEST(LogTest, AMessageIsPassedOnUnlessItsBufferIsNotForPrograms) {
  LogCapture log;
  __android_log_set_default_tag("app");
  __android_log_message message = {.struct_size = sizeof message,
                                   .buffer_id = LOG_ID_SYSTEM,
                                   .priority = ANDROID_LOG_VERBOSE,
                                   .tag = "tag",
                                   .file = "file.cc",
                                   .line = 7,
                                   .message = "ready"};
  errno = ENOENT;
  __android_log_write_log_message(&message);
  EXPECT_EQ(errno, ENOENT);
  message.tag = nullptr;
  message.buffer_id = LOG_ID_DEFAULT;
  __android_log_write_log_message(&message);
  message.buffer_id = LOG_ID_EVENTS;
  __android_log_write_log_message(&message);
  // Below the minimum priority of the capture, which the function does not ask for.
  EXPECT_THAT(log.Lines(), ElementsAre(LogLine{ANDROID_LOG_VERBOSE, "tag", "ready"},
                                       LogLine{ANDROID_LOG_VERBOSE, "app", "ready"}));
}

TEST(LogTest, DropsLinesBelowTheMinimumPriority) {
  LogCapture log;
  const int32_t before = __android_log_set_minimum_priority(ANDROID_LOG_WARN);
  EXPECT_EQ(__android_log_print(ANDROID_LOG_INFO, "tag", "dropped"), -EPERM);
  EXPECT_EQ(__android_log_print(ANDROID_LOG_WARN, "tag", "kept"), 1);
  EXPECT_EQ(__android_log_is_loggable(ANDROID_LOG_INFO, "tag", ANDROID_LOG_VERBOSE), 0);
  EXPECT_EQ(__android_log_set_minimum_priority(before), ANDROID_LOG_WARN);
  EXPECT_THAT(log.Lines(), ElementsAre(LogLine{ANDROID_LOG_WARN, "tag", "kept"}));
}

TEST(LogTest, IsQuietOnStandardErrorUnlessAskedForMore) {
  const int32_t before = __android_log_set_minimum_priority(ANDROID_LOG_DEFAULT);
  testing::internal::CaptureStderr();
  EXPECT_EQ(__android_log_print(ANDROID_LOG_INFO, "tag", "dropped"), -EPERM);
  EXPECT_EQ(__android_log_print(ANDROID_LOG_WARN, "tag", "kept"), 1);
  __android_log_set_minimum_priority(ANDROID_LOG_DEBUG);
  EXPECT_EQ(__android_log_print(ANDROID_LOG_DEBUG, "tag", "asked for"), 1);
  __android_log_set_minimum_priority(ANDROID_LOG_DEFAULT);
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::MatchesRegex(".* W tag: kept\n.* D tag: asked for\n"));
  // A program's own logger gets everything, as on a device.
  __android_log_set_logger([](const __android_log_message*) {});
  EXPECT_EQ(__android_log_print(ANDROID_LOG_VERBOSE, "tag", "text"), 1);
  __android_log_set_logger(__android_log_stderr_logger);
  __android_log_set_minimum_priority(before);
}

TEST(LogTest, PrintsLikeLogcatToStandardError) {
  testing::internal::CaptureStderr();
  __android_log_print(ANDROID_LOG_ERROR, "audio_hw_battery", "%s: text", "Function");
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::MatchesRegex("[0-9][0-9]-[0-9][0-9] [0-9][0-9]:[0-9][0-9]:[0-9][0-9]"
                                    "\\.[0-9][0-9][0-9] +[0-9]+ +[0-9]+ E audio_hw_battery: "
                                    "Function: text\n"));
}

TEST(StatusTest, CarriesCodeMessageAndDescription) {
  using ndk::ScopedAStatus;
  EXPECT_TRUE(ScopedAStatus::ok().isOk());
  EXPECT_TRUE(ScopedAStatus::fromStatus(STATUS_OK).isOk());
  EXPECT_FALSE(ScopedAStatus().isOk());
  EXPECT_EQ(ScopedAStatus::ok().getDescription(), "No error");

  const ScopedAStatus specific = ScopedAStatus::fromServiceSpecificErrorWithMessage(2, "msg");
  EXPECT_EQ(specific.getExceptionCode(), EX_SERVICE_SPECIFIC);
  EXPECT_EQ(specific.getServiceSpecificError(), 2);
  EXPECT_EQ(specific.getStatus(), STATUS_OK);
  EXPECT_STREQ(specific.getMessage(), "msg");
  EXPECT_EQ(specific.getDescription(), "Status(-8, EX_SERVICE_SPECIFIC): '2: msg'");

  const ScopedAStatus dead = ScopedAStatus::fromStatus(STATUS_DEAD_OBJECT);
  EXPECT_EQ(dead.getExceptionCode(), EX_TRANSACTION_FAILED);
  EXPECT_EQ(dead.getStatus(), STATUS_DEAD_OBJECT);
  EXPECT_STREQ(dead.getMessage(), "");
  EXPECT_EQ(dead.getDescription(), "Status(-129, EX_TRANSACTION_FAILED): 'DEAD_OBJECT: '");

  EXPECT_EQ(ScopedAStatus::fromExceptionCode(-77).getExceptionCode(), EX_TRANSACTION_FAILED);
  EXPECT_EQ(ScopedAStatus::fromStatus(-77).getStatus(), STATUS_UNKNOWN_ERROR);
}

TEST(RecordTest, ComparesAndPrintsItsFields) {
  using namespace aidl::android::hardware::health;
  HealthInfo one = {.chargerDockOnline = true, .batteryLevel = 40};
  HealthInfo other = one;
  EXPECT_EQ(one, other);
  other.batteryHealthData = BatteryHealthData{.batteryStateOfHealth = 90};
  EXPECT_NE(one, other);
  EXPECT_LT(one, other);
  EXPECT_THAT(other.toString(), testing::HasSubstr("batteryLevel: 40"));
  EXPECT_THAT(other.toString(), testing::HasSubstr("batterySerialNumber: (null)"));
  EXPECT_EQ(toString(BatteryStatus::FULL), "FULL");
  EXPECT_EQ(toString(static_cast<BatteryStatus>(77)), "77");
  int count = 0;
  for (const BatteryStatus status : ndk::enum_range<BatteryStatus>()) {
    count += static_cast<int>(status);
  }
  EXPECT_EQ(count, 1 + 2 + 3 + 4 + 5);
}

}  // namespace
}  // namespace norvik::qel
