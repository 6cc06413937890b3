// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Text that is written at once: whole lines, whole files.
#pragma once

#include <string>
#include <string_view>

namespace norvik::qel::monitor {

// Waits where the descriptor does not. Returns what is left when errno says why; empty: nothing is.
[[nodiscard]] std::string_view WriteAll(int fd, std::string_view text);

// Replaces a regular file when the content is complete, and otherwise leaves it as it was. Throws
// std::runtime_error.
void WriteFile(const std::string& path, std::string_view content);

// Standard output, unbuffered: each line is out before the next thing happens.
//
// Threads: the main thread.
class LineWriter {
 public:
  // Adds the newline. Nothing is written after a failure.
  void Write(std::string line);
  // Lines are dropped from here on.
  void Mute() { is_muted_ = true; }
  // False once the reader has left.
  bool open() const { return error_ == 0; }
  // The error that ended the writing; 0 also when the reader has left, which is no error.
  [[nodiscard]] int error() const;

 private:
  int error_ = 0;
  bool is_muted_ = false;
};

}  // namespace norvik::qel::monitor
