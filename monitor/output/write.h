// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Unbuffered output of whole lines and whole files.
#pragma once

#include <string>
#include <string_view>

namespace norvik::qel::monitor {

// Writes the text, and waits for a descriptor that is non-blocking. Returns the unwritten rest,
// which is empty on success; on failure errno is set.
[[nodiscard]] std::string_view WriteAll(int fd, std::string_view text);

// Replaces a regular file atomically: a failure leaves the old file unchanged. Throws
// std::runtime_error.
void WriteFile(const std::string& path, std::string_view content);

// Standard output, unbuffered: each line is written before Write() returns.
//
// Threads: the main thread.
class LineWriter {
 public:
  // Appends a newline to the line. Writes nothing after a failure.
  void Write(std::string line);
  // Drops all later lines.
  void Mute() { is_muted_ = true; }
  // False after a failure, such as a closed pipe.
  bool open() const { return error_ == 0; }
  // The errno value of the failure, or 0. A pipe closed by its reader counts as no error.
  [[nodiscard]] int error() const;

 private:
  int error_ = 0;
  bool is_muted_ = false;
};

}  // namespace norvik::qel::monitor
