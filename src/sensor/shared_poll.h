// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <pthread.h>

#include <cstdint>
#include <mutex>

#include "common/thread_annotations.h"

namespace norvik::qel::audio {

// Waits on the looper for all sensor handles of the process together.
//
// The platform has one looper per process, and its wakes and event marks belong to no thread: of
// several threads that poll, one returns, and it takes the marks of all event queues and perhaps a
// wake meant for another thread. If every handle polled by itself, one could miss an event until
// the next one, and another could miss its request to end.
//
// Therefore at most one thread is inside ALooper_pollOnce(), and each return of the poll begins a
// new round for all threads. A thread continues when there has been a round that it has not seen. A
// thread that has seen all rounds polls if no other thread does, and otherwise waits for the thread
// that polls. A thread that continues reads its own queue and checks whether it is still wanted.
//
// Nothing is lost:
// 1. Events. A queue holds its events before it sets its mark. The poll that takes the mark begins
// a
//    round after that, so in that round the queue's thread finds the events. A new thread has seen
//    no round, so it reads its queue before its first wait.
// 2. Requests to end. The caller clears the flag that the thread checks, and wakes the looper,
// under
//    one hold of the handle's lock, which the thread takes to check. A thread that still found
//    itself wanted saw its last round before that. The poll that takes the wake returns, and begins
//    its round, after it, so that round is new to the thread, whichever thread polled. If no thread
//    polls, this one does, and finds the wake, because wakes are sticky. If a poll takes events
//    first, the wake stays, and that round serves as well.
// 3. Turns. The end of a poll and the start of its round become visible in one step, so no thread
//    waits for a poll that has returned. A round begins before the thread that polled takes its
//    handle's lock, so a blocked handle delays no other. A turn lasts only as long as a poll, so a
//    thread that ends takes no turn with it.
//
// Threads: any number. Locks: lock_ is innermost and free during the poll.
class SharedPoll {
 public:
  constexpr SharedPoll() = default;
  SharedPoll(const SharedPoll&) = delete;
  SharedPoll& operator=(const SharedPoll&) = delete;

  // The instance of the process. Usable in any static constructor. Never destroyed: a handle that
  // was not deinitialized waits here when the process exits.
  static SharedPoll& Get();

  // Waits until there has been a round after `seen`, then sets `seen` to the latest round. A thread
  // starts with 0. False when all polls since have failed: there is nothing to read.
  [[nodiscard]] bool Wait(uint64_t& seen) QEL_EXCLUDES(lock_);

 private:
  bool Catch(uint64_t& seen) QEL_REQUIRES(lock_);

  std::mutex lock_;
  // Not a std::condition_variable: not every standard library has a constexpr constructor for it.
  pthread_cond_t round_begun_ = PTHREAD_COND_INITIALIZER;
  bool polling_ QEL_GUARDED_BY(lock_) = false;
  uint64_t round_ QEL_GUARDED_BY(lock_) = 0;       // how many polls have returned
  uint64_t good_round_ QEL_GUARDED_BY(lock_) = 0;  // the latest one that did not fail
};

}  // namespace norvik::qel::audio
