// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <android/log.h>
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <string>

#include "quorvel/fake/log_capture.h"
#include "quorvel/fake/thread_annotations.h"

namespace {

// A message is cut to 1023 bytes plus the terminator, as on a device.
constexpr size_t kBufferSize = 1024;

std::atomic<__android_logger_function> g_logger{__android_log_stderr_logger};
std::atomic<__android_aborter_function> g_aborter{nullptr};
std::atomic<int32_t> g_minimum_priority{ANDROID_LOG_DEFAULT};
std::atomic<int32_t> g_default_priority{ANDROID_LOG_WARN};

// Guards the default tag, which may be replaced while other threads log. Both are leaked on
// purpose: threads may log until the process ends.
std::mutex& g_tag_lock = *new std::mutex;
std::string& g_default_tag QUORVEL_GUARDED_BY(g_tag_lock) =
    *new std::string(program_invocation_short_name);

class ErrnoKeeper {
 public:
  ErrnoKeeper() = default;
  ~ErrnoKeeper() { errno = saved_; }
  ErrnoKeeper(const ErrnoKeeper&) = delete;
  ErrnoKeeper& operator=(const ErrnoKeeper&) = delete;

 private:
  const int saved_ = errno;
};

// Standard error is quiet unless a user or the program asks for more.
int32_t StderrMinimum() {
  static const android_LogPriority asked = [] {
    const char* const name = getenv("QUORVEL_LOG");
    if (name == nullptr || *name == '\0') return ANDROID_LOG_DEFAULT;
    static constexpr struct {
      const char* name;
      android_LogPriority priority;
    } kNames[] = {{"debug", ANDROID_LOG_DEBUG},
                  {"info", ANDROID_LOG_INFO},
                  {"warn", ANDROID_LOG_WARN},
                  {"error", ANDROID_LOG_ERROR},
                  {"none", ANDROID_LOG_SILENT}};
    for (const auto& known : kNames) {
      if (strcmp(name, known.name) == 0) return known.priority;
    }
    fprintf(stderr, "%s: QUORVEL_LOG: unknown '%s', use debug, info, warn, error or none\n",
            program_invocation_short_name, name);
    return ANDROID_LOG_DEFAULT;
  }();
  return asked != ANDROID_LOG_DEFAULT ? asked : g_default_priority.load(std::memory_order_relaxed);
}

char PriorityLetter(int32_t priority) {
  static constexpr char kLetters[] = "??VDIWEF";
  return priority >= 0 && priority < ANDROID_LOG_SILENT ? kLetters[priority] : '?';
}

int Emit(int prio, const char* tag, const char* text) {
  char default_tag[64];
  if (tag == nullptr) {
    std::lock_guard<std::mutex> lock(g_tag_lock);
    snprintf(default_tag, sizeof default_tag, "%s", g_default_tag.c_str());
    tag = default_tag;
  }
  const __android_log_message message = {
      .struct_size = sizeof(__android_log_message),
      .buffer_id = 0,
      .priority = prio,
      .tag = tag,
      .file = nullptr,
      .line = 0,
      .message = text,
  };
  g_logger.load()(&message);
  return 1;
}

}  // namespace

void norvik::qel::fake::SetDefaultLogPriority(int32_t priority) {
  g_default_priority = priority;
}

extern "C" {

int __android_log_is_loggable(int prio, const char* /*tag*/, int default_prio) {
  const int32_t minimum = g_minimum_priority.load(std::memory_order_relaxed);
  if (minimum != ANDROID_LOG_DEFAULT) return prio >= minimum ? 1 : 0;
  const bool is_stderr = g_logger.load(std::memory_order_relaxed) == __android_log_stderr_logger;
  return prio >= (is_stderr ? std::max(default_prio, StderrMinimum()) : default_prio) ? 1 : 0;
}

int __android_log_vprint(int prio, const char* tag, const char* fmt, va_list ap) {
  const ErrnoKeeper keep_errno;
  if (!__android_log_is_loggable(prio, tag, ANDROID_LOG_VERBOSE)) return -EPERM;
  char text[kBufferSize];
  vsnprintf(text, sizeof text, fmt, ap);
  return Emit(prio, tag, text);
}

int __android_log_print(int prio, const char* tag, const char* fmt, ...) {
  va_list ap;
  va_start(ap, fmt);
  const int result = __android_log_vprint(prio, tag, fmt, ap);
  va_end(ap);
  return result;
}

int __android_log_write(int prio, const char* tag, const char* text) {
  const ErrnoKeeper keep_errno;
  if (!__android_log_is_loggable(prio, tag, ANDROID_LOG_VERBOSE)) return -EPERM;
  return Emit(prio, tag, text);
}

void __android_log_assert(const char* cond, const char* tag, const char* fmt, ...) {
  char text[kBufferSize];
  if (fmt != nullptr) {
    va_list ap;
    va_start(ap, fmt);
    vsnprintf(text, sizeof text, fmt, ap);
    va_end(ap);
  } else if (cond != nullptr) {
    snprintf(text, sizeof text, "Assertion failed: %s", cond);
  } else {
    snprintf(text, sizeof text, "Unspecified assertion failed");
  }
  __android_log_write(ANDROID_LOG_FATAL, tag, text);
  __android_log_call_aborter(text);
  abort();
}

void __android_log_set_logger(__android_logger_function logger) {
  g_logger.store(logger);
}

void __android_log_stderr_logger(const __android_log_message* message) {
  timespec now = {};
  clock_gettime(CLOCK_REALTIME, &now);
  tm local = {};
  localtime_r(&now.tv_sec, &local);
  char stamp[32];
  strftime(stamp, sizeof stamp, "%m-%d %H:%M:%S", &local);
  // One call per line: the lock of stdio keeps the lines of different threads apart.
  fprintf(stderr, "%s.%03ld %5d %5d %c %s: %s\n", stamp, now.tv_nsec / 1'000'000, getpid(),
          gettid(), PriorityLetter(message->priority), message->tag, message->message);
}

void __android_log_logd_logger(const __android_log_message* message) {
  __android_log_stderr_logger(message);
}

void __android_log_set_aborter(__android_aborter_function aborter) {
  g_aborter.store(aborter);
}

void __android_log_call_aborter(const char* abort_message) {
  if (__android_aborter_function aborter = g_aborter.load()) {
    aborter(abort_message);
  } else {
    abort();
  }
}

int32_t __android_log_set_minimum_priority(int32_t priority) {
  return g_minimum_priority.exchange(priority);
}

int32_t __android_log_get_minimum_priority() {
  return g_minimum_priority.load();
}

void __android_log_set_default_tag(const char* tag) {
  std::lock_guard<std::mutex> lock(g_tag_lock);
  g_default_tag = tag != nullptr ? tag : "";
}

}  // extern "C"
