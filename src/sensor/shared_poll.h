#pragma once

#include <pthread.h>

#include <cstdint>
#include <mutex>

#include "common/thread_annotations.h"

namespace norvik::qel::audio {

// Waits on the looper for all sensor handles of the process together.
//
// The platform has one looper per process, and its wakes and its "has news" marks are nobody's in
// particular: of several threads that poll, one goes on, and it takes the marks of all queues and
// perhaps a wake that was meant for somebody else. Were every handle to poll by itself, one would
// miss its events until its next one and another would never hear that it has to end.
//
// So at most one thread is inside ALooper_pollOnce(), and each return of it begins a new round for
// all. A thread goes on when there has been a round that it has not seen; one that has seen all of
// them polls if nobody does, and waits for the one that does otherwise. Whoever goes on reads its
// own queue, and looks whether it is still wanted; nothing else.
//
// Nothing is lost:
// - News. A queue's events are there before its mark. Whichever poll takes the mark begins a round
//   after that, and in that round the queue's owner finds the events. A thread that starts anew has
//   seen no round, so it looks at its queue before it first waits.
// - Ends. Whoever ends a thread clears what the thread looks at and wakes, under one hold of the
//   handle's lock, with which the thread looks. A thread that has still found itself wanted saw its
//   last round before that. The poll that takes the wake returns, and begins its round, after it:
//   that round is new to the thread, whoever polled. If nobody does, the thread polls itself, and
//   the wake is still there, because wakes are kept. If a poll takes news first, the wake is left,
//   but its round serves as well.
// - Turns. That a poll is over and that a round has begun becomes visible in one step, so nobody
//   waits for a poll that has returned. A round begins before the thread that polled takes its
//   handle's lock: a handle that is held up keeps no other waiting. A thread that leaves takes no
//   turn with it: turns last only as long as a poll.
//
// Threads: any number. Locks: lock_ is innermost and free during the poll.
class SharedPoll {
 public:
  constexpr SharedPoll() = default;
  SharedPoll(const SharedPoll&) = delete;
  SharedPoll& operator=(const SharedPoll&) = delete;

  // The one of the process. Usable in any static constructor, and never destroyed: a handle that
  // is never given back waits here when the process exits.
  static SharedPoll& Get();

  // Waits until there has been a round after `seen`, which becomes the latest one; a thread starts
  // with 0. False when all polls since have failed, so that there is nothing to read.
  bool Wait(uint64_t& seen) QEL_EXCLUDES(lock_);

 private:
  bool Catch(uint64_t& seen) QEL_REQUIRES(lock_);

  std::mutex lock_;
  // Not a std::condition_variable: not every standard library can make one at compile time.
  pthread_cond_t round_begun_ = PTHREAD_COND_INITIALIZER;
  bool polling_ QEL_GUARDED_BY(lock_) = false;
  uint64_t round_ QEL_GUARDED_BY(lock_) = 0;       // how many polls have returned
  uint64_t good_round_ QEL_GUARDED_BY(lock_) = 0;  // the latest one that did not fail
};

}  // namespace norvik::qel::audio
