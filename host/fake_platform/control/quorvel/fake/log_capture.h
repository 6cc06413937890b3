// The log as a value: what was logged while the capture lives.
#pragma once

#include <android/log.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace norvik::qel::fake {

struct LogLine {
  int priority = 0;
  std::string tag = {};
  std::string text = {};
  bool operator==(const LogLine&) const = default;
};

// Takes over the process's logger; one at a time. Nothing is printed meanwhile. The minimum
// priority goes down to debug.
//
// Threads: any.
class LogCapture {
 public:
  LogCapture();
  ~LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  // The lines so far, of one tag if one is given.
  std::vector<LogLine> Lines(const std::string& tag = {}) const;
  // How many lines so far have this text.
  int Count(const std::string& text) const;
  // Waits until `count` lines have this text; false after `limit`.
  [[nodiscard]] bool WaitFor(const std::string& text, int count = 1,
                             std::chrono::milliseconds limit = std::chrono::seconds(10)) const;
  void Clear();
};

}  // namespace norvik::qel::fake
