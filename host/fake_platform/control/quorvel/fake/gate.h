// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A gate that holds threads until it is opened.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "quorvel/fake/thread_annotations.h"

namespace norvik::qel::fake {

// Threads: any. A gate opens once and stays open.
class Gate {
 public:
  // Waits until the gate is open.
  void Pass() {
    std::unique_lock<std::mutex> lock(lock_);
    AssertHeld(lock_);
    ++arrived_;
    changed_.notify_all();
    changed_.wait(lock, [this]() QUORVEL_REQUIRES(lock_) { return open_; });
  }

  void Open() {
    std::lock_guard<std::mutex> lock(lock_);
    open_ = true;
    changed_.notify_all();
  }

  // Waits until `count` threads have reached the gate; false after `limit`.
  [[nodiscard]] bool WaitForArrivals(int count = 1,
                                     std::chrono::milliseconds limit = std::chrono::seconds(10)) {
    std::unique_lock<std::mutex> lock(lock_);
    return changed_.wait_for(lock, limit,
                             [&]() QUORVEL_REQUIRES(lock_) { return arrived_ >= count; });
  }

 private:
  std::mutex lock_;
  std::condition_variable changed_;
  int arrived_ QUORVEL_GUARDED_BY(lock_) = 0;
  bool open_ QUORVEL_GUARDED_BY(lock_) = false;
};

}  // namespace norvik::qel::fake
