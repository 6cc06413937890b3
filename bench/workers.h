// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Threads that run an action on request: the library's, and the baselines.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "probe.h"
#include "turns.h"

namespace norvik::qel::bench {

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

// The measured one.
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
