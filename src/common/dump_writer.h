// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>

namespace norvik::qel::audio {

// The text of one dump: composed piece by piece, perhaps under a lock, then written at once with
// none held. WriteTo() blocks for as long as the reader does, so a lock held across it would stall
// every thread that needs that lock, such as one that handles a death notification.
//
// Threads: one at a time; each dump has a writer of its own.
class DumpWriter {
 public:
  DumpWriter() = default;
  DumpWriter(const DumpWriter&) = delete;
  DumpWriter& operator=(const DumpWriter&) = delete;

  // Appends a piece, as printf() formats it.
  [[gnu::format(printf, 2, 3)]] void Print(const char* format, ...);
  // Writes the text. The first error ends it: what has not been written by then is lost. Raises no
  // SIGPIPE when the reader has gone.
  void WriteTo(int fd) const;

 private:
  std::string text_;
};

}  // namespace norvik::qel::audio
