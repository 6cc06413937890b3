// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Waiting in tests: for the event itself, with a limit that only a broken build reaches.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "hang_guard.h"
#include "quorvel/fake/thread_annotations.h"

namespace norvik::qel {

inline constexpr std::chrono::seconds kHangGuard(10);

// Polls until `is_so`, for a state without an event, such as the number of threads. False after
// kHangGuard.
[[nodiscard]] inline bool Eventually(const std::function<bool()>& is_so) {
  const auto deadline = std::chrono::steady_clock::now() + kHangGuard;
  while (!is_so()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::yield();
  }
  return true;
}

// A queue of values that other threads put and the test takes, in order.
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
  // Waits for the oldest value and takes it; nullopt after `limit`.
  [[nodiscard]] std::optional<T> Take(std::chrono::milliseconds limit = kHangGuard) {
    std::unique_lock<std::mutex> lock(lock_);
    fake::AssertHeld(lock_);
    const auto filled = [this]() QUORVEL_REQUIRES(lock_) { return !values_.empty(); };
    if (!changed_.wait_for(lock, limit, filled)) return std::nullopt;
    T value = std::move(values_.front());
    values_.pop_front();
    return value;
  }
  // Takes the oldest `count` values; fewer if no more arrive in time.
  [[nodiscard]] std::vector<T> TakeMany(size_t count) {
    std::vector<T> values;
    while (values.size() < count) {
      std::optional<T> value = Take();
      if (!value) break;
      values.push_back(*std::move(value));
    }
    return values;
  }
  // Takes values up to `last`; false if it does not arrive in time.
  [[nodiscard]] bool TakeUntil(const T& last) {
    return Eventually([&] { return Take() == last; });
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

// Runs an action on a thread of its own. Join() and the destructor wait for its end. An action that
// hangs ends the process, with `what` in the message.
class Background {
 public:
  Background(const char* what, std::function<void()> action)
      : what_(what), done_(std::async(std::launch::async, std::move(action))) {}
  ~Background() { Join(); }
  Background(const Background&) = delete;
  Background& operator=(const Background&) = delete;

  void Join() {
    if (done_.wait_for(kHangGuard) == std::future_status::ready) return;
    Fail(std::string("hangs: ") + what_);
  }

 private:
  const char* const what_;
  const std::future<void> done_;  // its destructor joins
};

// Runs an action that must end in time.
inline void EndsInTime(std::function<void()> action, const char* what = "an action of a test") {
  Background(what, std::move(action)).Join();
}

}  // namespace norvik::qel
