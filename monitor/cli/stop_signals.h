// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// SIGINT and SIGTERM as something to wait for.
#pragma once

#include <signal.h>

namespace norvik::qel::monitor {

// Made before the program's other threads, which inherit that the signals are blocked.
//
// Threads: the main thread.
class StopSignals {
 public:
  StopSignals();
  // The signals are what they were.
  ~StopSignals();
  StopSignals(const StopSignals&) = delete;
  StopSignals& operator=(const StopSignals&) = delete;

  // Readable once a signal has come.
  int fd() const { return fd_; }
  // Takes the signal. From here on a second one ends the program at once.
  void Accept();

 private:
  int fd_;
  sigset_t before_;
};

}  // namespace norvik::qel::monitor
