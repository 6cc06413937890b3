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

struct Captured {
  std::mutex lock;
  std::condition_variable changed;
  std::vector<LogLine> lines QUORVEL_GUARDED_BY(lock);
  int32_t priority_before = 0;  // touched by the owner of the one LogCapture only
};

// Leaked on purpose: threads may log until the process ends.
Captured& g_captured = *new Captured;

void Keep(const __android_log_message* message) {
  std::lock_guard<std::mutex> lock(g_captured.lock);
  g_captured.lines.push_back(
      {.priority = message->priority, .tag = message->tag, .text = message->message});
  g_captured.changed.notify_all();
}

int CountLocked(const std::string& text) QUORVEL_REQUIRES(g_captured.lock) {
  return static_cast<int>(std::count_if(g_captured.lines.begin(), g_captured.lines.end(),
                                        [&](const LogLine& line) { return line.text == text; }));
}

}  // namespace

LogCapture::LogCapture() {
  Clear();
  g_captured.priority_before = __android_log_set_minimum_priority(ANDROID_LOG_DEBUG);
  __android_log_set_logger(Keep);
}

LogCapture::~LogCapture() {
  __android_log_set_logger(__android_log_stderr_logger);
  __android_log_set_minimum_priority(g_captured.priority_before);
}

std::vector<LogLine> LogCapture::Lines(const std::string& tag) const {
  std::lock_guard<std::mutex> lock(g_captured.lock);
  std::vector<LogLine> lines;
  std::copy_if(g_captured.lines.begin(), g_captured.lines.end(), std::back_inserter(lines),
               [&](const LogLine& line) { return tag.empty() || line.tag == tag; });
  return lines;
}

int LogCapture::Count(const std::string& text) const {
  std::lock_guard<std::mutex> lock(g_captured.lock);
  return CountLocked(text);
}

bool LogCapture::WaitFor(const std::string& text, int count,
                         std::chrono::milliseconds limit) const {
  std::unique_lock<std::mutex> lock(g_captured.lock);
  return g_captured.changed.wait_for(
      lock, limit, [&]() QUORVEL_REQUIRES(g_captured.lock) { return CountLocked(text) >= count; });
}

void LogCapture::Clear() {
  std::lock_guard<std::mutex> lock(g_captured.lock);
  g_captured.lines.clear();
}

}  // namespace norvik::qel::fake
