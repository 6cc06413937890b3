// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A battery handle in a type that owns it.
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>

// A queue of battery levels, filled by the library's worker and emptied by a thread of the program.
//
// Threads: any. No thread may be in NextLevel() when the object is destroyed.
class Battery {
 public:
  Battery();
  ~Battery();
  Battery(const Battery&) = delete;
  Battery& operator=(const Battery&) = delete;

  // Waits for the next level.
  int NextLevel();

 private:
  static void OnLevel(int percent, void* cookie);

  std::mutex lock_;
  std::condition_variable arrived_;
  std::deque<int> levels_;
  void* handle_ = nullptr;  // ended by ~Battery() before the members above are destroyed
};
