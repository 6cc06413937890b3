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
  // Whether somebody still reads.
  bool open() const { return error_ == 0; }
  // The error that ended the writing; 0 also when the reader has left, which is no error.
  [[nodiscard]] int error() const;

 private:
  int error_ = 0;
};

}  // namespace norvik::qel::monitor
