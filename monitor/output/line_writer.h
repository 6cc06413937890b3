// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Lines on standard output, whole ones only.
#pragma once

#include <string>

namespace norvik::qel::monitor {

// Unbuffered: each line is out before the next thing happens.
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
