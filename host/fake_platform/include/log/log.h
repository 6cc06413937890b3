// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the platform header at this path: the ALOGx macros. A source that uses them
// defines LOG_TAG before its first platform include.
#pragma once

#include <android/log.h>

#ifndef LOG_TAG
#define LOG_TAG NULL
#endif

#define ALOG_FAKE_PRINT(priority, ...) \
  ((void)__android_log_print(ANDROID_LOG_##priority, LOG_TAG, __VA_ARGS__))

#ifdef NDEBUG
#define ALOGV(...) ((void)(0 && __android_log_print(ANDROID_LOG_VERBOSE, LOG_TAG, __VA_ARGS__)))
#else
#define ALOGV(...) ALOG_FAKE_PRINT(VERBOSE, __VA_ARGS__)
#endif
#define ALOGD(...) ALOG_FAKE_PRINT(DEBUG, __VA_ARGS__)
#define ALOGI(...) ALOG_FAKE_PRINT(INFO, __VA_ARGS__)
#define ALOGW(...) ALOG_FAKE_PRINT(WARN, __VA_ARGS__)
#define ALOGE(...) ALOG_FAKE_PRINT(ERROR, __VA_ARGS__)

#define LOG_ALWAYS_FATAL(...) __android_log_assert(NULL, LOG_TAG, __VA_ARGS__)
// The message is optional.
#define LOG_ALWAYS_FATAL_IF(condition, ...)                                                     \
  ((condition) ? ALOG_FAKE_FATAL##__VA_OPT__(_WITH_TEXT)(#condition __VA_OPT__(, ) __VA_ARGS__) \
               : (void)0)
#define ALOG_FAKE_FATAL(condition) \
  __android_log_assert(condition, LOG_TAG, "Assertion failed: %s", condition)
#define ALOG_FAKE_FATAL_WITH_TEXT(condition, ...) \
  __android_log_assert(condition, LOG_TAG, __VA_ARGS__)
