// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// How tests wait: for the event itself, with a limit that only a broken build meets.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <functional>
#include <future>
#include <iostream>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include "quorvel/fake/thread_annotations.h"

namespace norvik::qel {

inline constexpr std::chrono::seconds kHangGuard(10);

// What happened on another thread, in order; the test takes it out one by one.
//
// Threads: any.
template <typename T>
class Seen {
 public:
  void Put(T value) {
    std::lock_guard<std::mutex> lock(lock_);
    values_.push_back(std::move(value));
    changed_.notify_all();
  }
  // The oldest one, waited for; nothing after `limit`.
  [[nodiscard]] std::optional<T> Take(std::chrono::milliseconds limit = kHangGuard) {
    std::unique_lock<std::mutex> lock(lock_);
    fake::AssertHeld(lock_);
    const auto filled = [this]() QUORVEL_REQUIRES(lock_) { return !values_.empty(); };
    if (!changed_.wait_for(lock, limit, filled)) return std::nullopt;
    T value = std::move(values_.front());
    values_.pop_front();
    return value;
  }
  bool empty() const {
    std::lock_guard<std::mutex> lock(lock_);
    return values_.empty();
  }

 private:
  mutable std::mutex lock_;
  std::condition_variable changed_;
  std::deque<T> values_ QUORVEL_GUARDED_BY(lock_);
};

// For what the system tells to those who ask only, such as the number of threads: asks until it is
// so. False after the hang guard.
[[nodiscard]] inline bool Eventually(const std::function<bool()>& is_so) {
  const auto deadline = std::chrono::steady_clock::now() + kHangGuard;
  while (!is_so()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::yield();
  }
  return true;
}

// Runs what must come to an end. A thread that hangs can only be ended with the process.
inline void EndsInTime(std::function<void()> action) {
  std::packaged_task<void()> task(std::move(action));
  std::future<void> done = task.get_future();
  std::thread thread(std::move(task));
  if (done.wait_for(kHangGuard) != std::future_status::ready) {
    std::cerr << "hangs\n";
    std::abort();
  }
  thread.join();
}

}  // namespace norvik::qel
