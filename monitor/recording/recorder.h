// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Writes a recording while events occur.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "cli/options.h"
#include "recording/recording.h"

namespace norvik::qel::monitor {

// Writes each event at once, so that the file is a complete recording even if the program crashes.
//
// Threads: the main thread.
class Recorder {
 public:
  // Creates the file and writes its header. Throws if that fails, or if the file exists and
  // `existing` is kRefuse.
  Recorder(const std::string& path, ExistingFile existing, std::string_view device);
  ~Recorder();
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;

  // Writes an event. Returns false if the file cannot be written; later calls write nothing.
  [[nodiscard]] bool Note(const Event& event);
  // Writes an action of the program with the current time. The next Note() or failure() reports an
  // error.
  void NoteAct(const RecordedWhat& what);

  int event_count() const { return line_count_ - 1; }
  // The error message; empty if there was no error.
  const std::string& failure() const { return failure_; }

 private:
  [[nodiscard]] bool Write(const RecordedWhat& what, WallTime time);
  [[nodiscard]] bool WriteLine(std::string line);

  const std::string path_;
  const WallTime begin_;
  std::optional<BatteryReport> battery_;  // the last one written
  Seconds last_{};
  int fd_;
  int line_count_ = 0;
  bool is_closed_ = false;  // set by the first failure; nothing is written afterwards
  std::string failure_;
};

}  // namespace norvik::qel::monitor
