// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "quorvel/fake/log_capture.h"

#include <algorithm>
#include <condition_variable>
#include <iterator>
#include <mutex>

#include "quorvel/fake/thread_annotations.h"

namespace norvik::qel::fake {

namespace {

// Leaked on purpose: threads may log until the process ends.
struct Captured {
  std::mutex lock;
  std::condition_variable changed;
  std::vector<LogLine> lines QUORVEL_GUARDED_BY(lock);
  int32_t priority_before = 0;  // touched by the owner of the one LogCapture only
};

Captured& TheCaptured() {
  static Captured& captured = *new Captured;
  return captured;
}

void Keep(const __android_log_message* message) {
  Captured& captured = TheCaptured();
  std::lock_guard<std::mutex> lock(captured.lock);
  captured.lines.push_back(
      {.priority = message->priority, .tag = message->tag, .text = message->message});
  captured.changed.notify_all();
}

int CountLocked(const Captured& captured, const std::string& text) QUORVEL_REQUIRES(captured.lock) {
  return static_cast<int>(std::count_if(captured.lines.begin(), captured.lines.end(),
                                        [&](const LogLine& line) { return line.text == text; }));
}

}  // namespace

LogCapture::LogCapture() {
  Captured& captured = TheCaptured();
  Clear();
  captured.priority_before = __android_log_set_minimum_priority(ANDROID_LOG_DEBUG);
  __android_log_set_logger(Keep);
}

LogCapture::~LogCapture() {
  __android_log_set_logger(__android_log_stderr_logger);
  __android_log_set_minimum_priority(TheCaptured().priority_before);
}

std::vector<LogLine> LogCapture::Lines(const std::string& tag) const {
  Captured& captured = TheCaptured();
  std::lock_guard<std::mutex> lock(captured.lock);
  std::vector<LogLine> lines;
  std::copy_if(captured.lines.begin(), captured.lines.end(), std::back_inserter(lines),
               [&](const LogLine& line) { return tag.empty() || line.tag == tag; });
  return lines;
}

int LogCapture::Count(const std::string& text) const {
  Captured& captured = TheCaptured();
  std::lock_guard<std::mutex> lock(captured.lock);
  return CountLocked(captured, text);
}

bool LogCapture::WaitFor(const std::string& text, int count,
                         std::chrono::milliseconds limit) const {
  Captured& captured = TheCaptured();
  std::unique_lock<std::mutex> lock(captured.lock);
  return captured.changed.wait_for(lock, limit, [&]() QUORVEL_REQUIRES(captured.lock) {
    return CountLocked(captured, text) >= count;
  });
}

void LogCapture::Clear() {
  Captured& captured = TheCaptured();
  std::lock_guard<std::mutex> lock(captured.lock);
  captured.lines.clear();
}

}  // namespace norvik::qel::fake
