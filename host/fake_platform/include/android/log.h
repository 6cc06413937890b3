// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the platform header at this path: the log.
//
// Messages below the minimum priority are dropped before they are formatted. The others are cut to
// 1023 bytes and passed to one process-wide logger. The default logger writes to standard error in
// the format of `logcat -v threadtime`.
#pragma once

#include <stdarg.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef enum android_LogPriority {
  ANDROID_LOG_UNKNOWN = 0,
  ANDROID_LOG_DEFAULT,
  ANDROID_LOG_VERBOSE,
  ANDROID_LOG_DEBUG,
  ANDROID_LOG_INFO,
  ANDROID_LOG_WARN,
  ANDROID_LOG_ERROR,
  ANDROID_LOG_FATAL,
  ANDROID_LOG_SILENT,
} android_LogPriority;

// 1 if the message was written, -EPERM if it is below the loggable level. Preserves errno. A null
// tag means the process's default tag.
int __android_log_print(int prio, const char* tag, const char* fmt, ...)
    __attribute__((__format__(printf, 3, 4)));
int __android_log_vprint(int prio, const char* tag, const char* fmt, va_list ap)
    __attribute__((__format__(printf, 3, 0)));
// As above, but the text is neither formatted nor cut.
int __android_log_write(int prio, const char* tag, const char* text);
// Logs at FATAL (`cond` if `fmt` is null), calls the aborter and aborts.
void __android_log_assert(const char* cond, const char* tag, const char* fmt, ...)
    __attribute__((__noreturn__)) __attribute__((__format__(printf, 3, 4)));

struct __android_log_message {
  size_t struct_size;
  int32_t buffer_id;  // 0: the main buffer
  int32_t priority;
  const char* tag;
  const char* file;  // null if from __android_log_print()
  uint32_t line;
  const char* message;  // without a newline at its end
};

typedef void (*__android_logger_function)(const struct __android_log_message* log_message);
typedef void (*__android_aborter_function)(const char* abort_message);

// Process-wide. The logger gets every message that passed the level test.
void __android_log_set_logger(__android_logger_function logger);
void __android_log_stderr_logger(const struct __android_log_message* log_message);
// The same as __android_log_stderr_logger(): a host has no log daemon.
void __android_log_logd_logger(const struct __android_log_message* log_message);
void __android_log_set_aborter(__android_aborter_function aborter);
void __android_log_call_aborter(const char* abort_message);

// Returns the previous minimum, ANDROID_LOG_DEFAULT if none was set.
int32_t __android_log_set_minimum_priority(int32_t priority);
int32_t __android_log_get_minimum_priority(void);
void __android_log_set_default_tag(const char* tag);
// 1 or 0. While no minimum is set, `default_prio` is the minimum; on a host, while no logger is set
// either, at least ANDROID_LOG_WARN, or what the environment variable QUORVEL_LOG says if that is
// debug, info, warn, error or none.
int __android_log_is_loggable(int prio, const char* tag, int default_prio);

#ifdef __cplusplus
}
#endif
