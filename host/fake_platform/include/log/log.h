// Stand-in for the platform header of the same path: the ALOGx macros. A source that uses them
// defines LOG_TAG before its first platform include.
#pragma once

#include <android/log.h>

#ifndef LOG_TAG
#define LOG_TAG NULL
#endif

#define ALOG_STANDIN_PRINT(priority, ...) \
  ((void)__android_log_print(ANDROID_LOG_##priority, LOG_TAG, __VA_ARGS__))

#ifdef NDEBUG
#define ALOGV(...) ((void)(0 && __android_log_print(ANDROID_LOG_VERBOSE, LOG_TAG, __VA_ARGS__)))
#else
#define ALOGV(...) ALOG_STANDIN_PRINT(VERBOSE, __VA_ARGS__)
#endif
#define ALOGD(...) ALOG_STANDIN_PRINT(DEBUG, __VA_ARGS__)
#define ALOGI(...) ALOG_STANDIN_PRINT(INFO, __VA_ARGS__)
#define ALOGW(...) ALOG_STANDIN_PRINT(WARN, __VA_ARGS__)
#define ALOGE(...) ALOG_STANDIN_PRINT(ERROR, __VA_ARGS__)

#define LOG_ALWAYS_FATAL(...) __android_log_assert(NULL, LOG_TAG, __VA_ARGS__)
// The message may be left out.
#define LOG_ALWAYS_FATAL_IF(condition, ...)                                                        \
  ((condition) ? ALOG_STANDIN_FATAL##__VA_OPT__(_WITH_TEXT)(#condition __VA_OPT__(, ) __VA_ARGS__) \
               : (void)0)
#define ALOG_STANDIN_FATAL(condition) \
  __android_log_assert(condition, LOG_TAG, "Assertion failed: %s", condition)
#define ALOG_STANDIN_FATAL_WITH_TEXT(condition, ...) \
  __android_log_assert(condition, LOG_TAG, __VA_ARGS__)
