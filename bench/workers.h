// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Threads that run an action on request: the library's, and the baselines.
#pragma once

#include <memory>

#include "probe.h"

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

}  // namespace norvik::qel::bench
