#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string_view>
#include <thread>

#include "common/thread_annotations.h"

namespace norvik::qel::audio {

// Runs one action on a thread of its own each time somebody asks for it. Requests that come during
// a run, or during the pause after a failed one, fold into one further run. An action that returns
// false is run again after a pause, max(repeat count, 1) times in all for one request.
//
// Threads: Start() from any thread, another worker's action and the own one included. Initialize()
// and Deinitialize() once each, by the owner. Deinitialize() joins: never from the action, and
// never with a lock held that the action takes. It has to come before the destructor, which ends
// the process when the thread is still there.
// Locks: lock_ is the innermost lock of the library; an owner may hold its own around Start().
// It is free while the action runs.
// Costs: one thread; no allocation after Initialize(); an idle thread sleeps without a time-out.
class RepeatedThread {
 public:
  // `name` must be a literal: it is kept, not copied. The thread carries its first 15 characters.
  RepeatedThread(std::string_view name, uint32_t pause_ms, uint32_t repeat_count);
  virtual ~RepeatedThread();
  RepeatedThread(const RepeatedThread&) = delete;
  RepeatedThread& operator=(const RepeatedThread&) = delete;

  // Makes the thread. std::system_error reaches the caller when the system has none to give.
  void Initialize();

  // Asks for one run and returns at once. Nothing happens after Deinitialize().
  void Start() QEL_EXCLUDES(lock_);

  // Cuts a pause short, waits for a run that is under way, and joins the thread.
  void Deinitialize() QEL_EXCLUDES(lock_);

  // The part of Deinitialize() that does not wait, for whoever must not: from now on no run begins,
  // and the thread ends with the run that is under way. Also from the action itself.
  void RequestExit() QEL_EXCLUDES(lock_);
  // Whether the thread has left its loop, so that Deinitialize() would not wait for an action.
  bool HasEnded() QEL_EXCLUDES(lock_);
  // Whether the calling thread is a worker, of any object.
  static bool IsWorker();
  // Whether the calling thread is a worker that gives up, or has given up, if the run under way
  // fails. The owner's action asks it to hand the job on.
  static bool IsLastAttempt();

  // The body of the thread: for Initialize() only.
  void ThreadLoop() QEL_EXCLUDES(lock_);

 private:
  enum class TriggerState : int32_t {
    kIdle = 0,       // waits for a request
    kTriggered = 1,  // a run is asked for or under way, the pauses between runs included
  };

  // The job, called without lock_. False: run it again after the pause.
  virtual bool ClientAction() = 0;

  // All that the thread does: names it, goes through the loop, and says that it has ended.
  void RunThread() QEL_EXCLUDES(lock_);
  void EndLoop() QEL_REQUIRES(lock_);
  // What follows a run, and the pause after a failed one.
  void FinishSuccess() QEL_REQUIRES(lock_);
  void FinishFailure() QEL_REQUIRES(lock_);

  bool exit_requested_ QEL_GUARDED_BY(lock_) = false;
  bool running_ QEL_GUARDED_BY(lock_) = false;    // the thread is inside its loop
  bool run_again_ QEL_GUARDED_BY(lock_) = false;  // a request came during a run; one is remembered
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
