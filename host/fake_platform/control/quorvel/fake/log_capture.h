// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Control of the log: what standard error shows, and a capture for tests.
#pragma once

#include <android/log.h>

#include <chrono>
#include <string>
#include <vector>

namespace norvik::qel::fake {

// Standard error shows the log from this priority up, ANDROID_LOG_WARN at first, unless QUORVEL_LOG
// names another one.
void SetDefaultLogPriority(int32_t priority);

struct LogLine {
  int priority = 0;
  std::string tag = {};
  std::string text = {};
  bool operator==(const LogLine&) const = default;
};

// Captures the log for as long as it lives. Replaces the process's logger: nothing is printed
// meanwhile. Lowers the minimum priority to debug. Only one capture may exist at a time.
//
// Threads: any.
class LogCapture {
 public:
  LogCapture();
  ~LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  // The lines so far; only those of `tag` unless it is empty.
  std::vector<LogLine> Lines(const std::string& tag = {}) const;
  // The number of lines so far with this text.
  int Count(const std::string& text) const;
  // Waits until `count` lines have this text; false after `limit`.
  [[nodiscard]] bool WaitFor(const std::string& text, int count = 1,
                             std::chrono::milliseconds limit = std::chrono::seconds(10)) const;
  void Clear();
};

}  // namespace norvik::qel::fake
