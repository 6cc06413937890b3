// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Writes a recording while things happen.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "cli/options.h"
#include "recording/recording.h"

namespace norvik::qel::monitor {

// The file is a complete recording after every line, whatever becomes of the program.
//
// Threads: the main thread.
class Recorder {
 public:
  // Makes the file and writes its header. Throws when that cannot be done, or when the file exists
  // and is to be kept.
  Recorder(const std::string& path, ExistingFile existing, std::string_view device);
  ~Recorder();
  Recorder(const Recorder&) = delete;
  Recorder& operator=(const Recorder&) = delete;

  // False once the file cannot be written. Nothing is written afterwards.
  [[nodiscard]] bool Note(const Event& event);
  // What is done now, and no event. Whether it was written, the next Note() or failure() says.
  void NoteAct(const RecordedWhat& what);

  int event_count() const { return line_count_ - 1; }
  // What is wrong with the file, in words; empty when nothing is.
  const std::string& failure() const { return failure_; }

 private:
  [[nodiscard]] bool Write(const RecordedWhat& what, WallTime time);
  [[nodiscard]] bool WriteLine(std::string line);

  const std::string path_;
  const WallTime begin_;
  std::optional<BatteryReport> battery_;  // as it was written last
  Seconds last_{};
  int fd_;
  int line_count_ = 0;
  bool is_closed_ = false;  // nothing can be written any more
  std::string failure_;
};

}  // namespace norvik::qel::monitor
