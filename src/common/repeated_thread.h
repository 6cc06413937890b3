// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string_view>
#include <thread>

#include "common/thread_annotations.h"

namespace norvik::qel::audio {

// A worker thread that runs one action on request. Requests that arrive during a run, or during the
// pause after a failed one, fold into one further run. An action that returns false runs again
// after a pause, max(repeat count, 1) times in all for one request.
//
// Threads: Start() from any thread, including any worker's action. The owner calls Initialize() and
// Deinitialize() once each. Deinitialize() joins: never call it from the action, or with a lock
// held that the action takes. Call it before the destructor, which ends the process if the thread
// is still there. Every Start() has returned before the destructor begins.
// Locks: lock_ is the innermost lock of the library; an owner may hold its own around Start(). It
// is free while the action runs. Costs: one thread; no allocation after Initialize(); an idle
// thread sleeps without a timeout.
class RepeatedThread {
 public:
  // `name` must be a literal: it is kept, not copied. The thread gets its first 15 characters.
  RepeatedThread(std::string_view name, uint32_t pause_ms, uint32_t repeat_count);
  virtual ~RepeatedThread();
  RepeatedThread(const RepeatedThread&) = delete;
  RepeatedThread& operator=(const RepeatedThread&) = delete;

  // Creates the thread. Throws std::system_error when the system cannot.
  void Initialize();

  // Requests one run and returns at once. No effect after Deinitialize().
  void Start() QEL_EXCLUDES(lock_);

  // Ends a pause, waits for a run under way, and joins the thread.
  void Deinitialize() QEL_EXCLUDES(lock_);

  // The part of Deinitialize() that does not wait: no further run begins, and the thread ends after
  // the run under way. May be called from the action itself.
  void RequestExit() QEL_EXCLUDES(lock_);
  // Whether the thread has left its loop, so that Deinitialize() would not wait for an action.
  bool HasEnded() QEL_EXCLUDES(lock_);
  // Whether the calling thread is a worker, of any object.
  static bool IsWorker();
  // Whether the calling thread is a worker that gives up, or has given up, if the run under way
  // fails. The owner's action asks it to hand the job on.
  static bool IsLastAttempt();

  // The worker's loop. For Initialize() only.
  void ThreadLoop() QEL_EXCLUDES(lock_);

 private:
  enum class TriggerState : int32_t {
    kIdle = 0,       // waits for a request
    kTriggered = 1,  // a run is requested or under way, including the pauses between runs
  };

  // The rest of Start(): false when nothing is left to wake.
  bool TakeRequest(bool was_ready) QEL_EXCLUDES(lock_);
  // The job, called with lock_ free. False: run it again after the pause.
  virtual bool ClientAction() = 0;

  // The thread's function: sets its name, runs the loop, and records its end.
  void RunThread() QEL_EXCLUDES(lock_);
  void EndLoop() QEL_REQUIRES(lock_);
  // After a successful run; after the pause that follows a failed one.
  void FinishSuccess() QEL_REQUIRES(lock_);
  void FinishFailure() QEL_REQUIRES(lock_);

  bool exit_requested_ QEL_GUARDED_BY(lock_) = false;
  bool running_ QEL_GUARDED_BY(lock_) = false;  // the thread is inside its loop
  // A request that no run has served yet. Set by Start() without lock_, see there.
  std::atomic<bool> run_again_{false};
  const std::string_view name_;
  TriggerState state_ QEL_GUARDED_BY(lock_) = TriggerState::kIdle;
  std::thread thread_;  // touched by the owner only
  std::mutex lock_;
  std::condition_variable cv_;
  const uint32_t pause_ms_;
  const uint32_t repeat_count_;
  uint32_t failed_runs_ = 0;                           // in a row; touched by the worker only
  bool exit_announced_ QEL_GUARDED_BY(lock_) = false;  // by RequestExit(), for Deinitialize()
  bool ended_ QEL_GUARDED_BY(lock_) = false;
};

}  // namespace norvik::qel::audio
