// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Threads that run an action on request (the library's worker and the baselines), and the action.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>

#include "turns.h"

namespace norvik::qel::bench {

// A benchmark's action: it records when it ran, and the last request that it saw. One thread makes
// requests and waits, another runs the action.
class Probe {
 public:
  enum class Asker {
    kSpins,   // busy-waits, so that its processor does not go to sleep
    kSleeps,  // leaves its processor to other threads
  };
  explicit Probe(Asker asker = Asker::kSpins) : asker_(asker) {}

  // Returns the number of the next request. The requesting thread calls it before the request.
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

// Busy-waits 50 µs, so that the thread that has just run is asleep again. It needs 1 to 2 µs.
inline void LetItFallAsleep() {
  const int64_t until = NowNs() + 50'000;
  while (NowNs() < until) {
  }
}

inline constexpr char kNothingRan[] = "no action ran after the last request";

class Worker {
 public:
  Worker() = default;
  virtual ~Worker() = default;  // ends the thread
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  // Asks for a run of Probe::Run() on the worker's thread.
  virtual void Trigger() = 0;
};

using MakeWorker = std::unique_ptr<Worker> (*)(Probe& probe);

// The library's RepeatedThread, which is measured.
std::unique_ptr<Worker> MakeLibraryWorker(Probe& probe);
// A flag under a mutex with a condition variable that is notified each time, with the mutex held.
// The thread names itself.
inline constexpr char kBareThreadName[] = "bench_waiting";
std::unique_ptr<Worker> MakeBareWorker(Probe& probe);
// A bare pair whose action makes a request to `next`: the minimal cost of two threads in a row.
std::unique_ptr<Worker> MakeBareRelay(std::unique_ptr<Worker> next);
// An eventfd that a sd-event loop watches.
std::unique_ptr<Worker> MakeSdEventWorker(Probe& probe);
// A source of a GLib main loop, marked ready.
std::unique_ptr<Worker> MakeGlibWorker(Probe& probe);
// uv_async_send().
std::unique_ptr<Worker> MakeLibuvWorker(Probe& probe);
// boost::asio::post(), which runs the action once for each request.
std::unique_ptr<Worker> MakeAsioWorker(Probe& probe);

// The nanoseconds from a request to the action, or from the event that it causes. Empty if no
// action ran.
inline std::optional<int64_t> FromRequestToAction(Worker& worker, Probe& probe,
                                                  int64_t (*event_ns)() = nullptr) {
  const int64_t number = probe.Announce();
  const int64_t asked_ns = NowNs();
  worker.Trigger();
  const std::optional<int64_t> ran_ns = probe.WaitFor(number);
  if (!ran_ns) return std::nullopt;
  return *ran_ns - (event_ns != nullptr ? event_ns() : asked_ns);
}

}  // namespace norvik::qel::bench
