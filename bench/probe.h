// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>

#include "turns.h"

namespace norvik::qel::bench {

// A benchmark's action: it records when it ran, and the last request that it saw. One thread makes
// requests and waits, another runs the action.
class Probe {
 public:
  enum class Asker {
    kSpins,   // so that its processor does not go to sleep
    kSleeps,  // so that others can have its processor
  };
  explicit Probe(Asker asker = Asker::kSpins) : asker_(asker) {}

  // For the requesting thread: the number of a new request, before it is made.
  int64_t Announce() {
    const int64_t number = ++asked_;
    announced_.store(number, std::memory_order_release);
    return number;
  }

  // The action.
  void Run() {
    const int64_t number = announced_.load(std::memory_order_acquire);
    ran_at_ns_.store(NowNs(), std::memory_order_relaxed);
    runs_.fetch_add(1, std::memory_order_relaxed);
    seen_.store(number, std::memory_order_release);
    if (asker_ == Asker::kSpins) return;
    std::lock_guard<std::mutex> lock(lock_);
    cv_.notify_one();
  }

  // When an action ran that began after the request `number`. Empty after ten seconds.
  std::optional<int64_t> WaitFor(int64_t number) {
    if (!(asker_ == Asker::kSpins ? Spin(number) : Sleep(number))) return std::nullopt;
    return ran_at_ns_.load(std::memory_order_relaxed);
  }

  int64_t runs() const { return runs_.load(std::memory_order_relaxed); }

 private:
  static constexpr std::chrono::seconds kLimit{10};

  bool HasSeen(int64_t number) const { return seen_.load(std::memory_order_acquire) >= number; }
  bool Spin(int64_t number) const {
    const auto limit = std::chrono::steady_clock::now() + kLimit;
    while (!HasSeen(number)) {
      if (std::chrono::steady_clock::now() > limit) return false;
    }
    return true;
  }
  bool Sleep(int64_t number) {
    std::unique_lock<std::mutex> lock(lock_);
    return cv_.wait_for(lock, kLimit, [&] { return HasSeen(number); });
  }

  const Asker asker_;
  // Guards no member: prevents a notification between the check of seen_ and the wait.
  std::mutex lock_;
  std::condition_variable cv_;
  int64_t asked_ = 0;
  alignas(64) std::atomic<int64_t> announced_ = 0;
  alignas(64) std::atomic<int64_t> seen_ = 0;
  std::atomic<int64_t> ran_at_ns_ = 0;
  std::atomic<int64_t> runs_ = 0;
};

// Waits until the thread that has just run is asleep again. That takes it a microsecond or two.
inline void LetItFallAsleep() {
  const int64_t until = NowNs() + 50'000;
  while (NowNs() < until) {
  }
}

inline constexpr char kNothingRan[] = "no action ran after the last request";

}  // namespace norvik::qel::bench
