// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The one looper of the process.
#pragma once

#include <android/looper.h>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <set>

#include "quorvel/fake/thread_annotations.h"

namespace norvik::qel::fake {

// An event queue as the looper sees it.
class EventSource {
 public:
  virtual ~EventSource() = default;
  // Called by the poll that took the events. Calls the queue's callback, if any.
  virtual void Dispatch() = 0;
};

}  // namespace norvik::qel::fake

// Locks: lock_ is innermost; nothing is called under it.
struct ALooper {
 public:
  static ALooper& Get();
  // Whether the calling thread is inside a callback of the looper.
  static bool InCallback();

  int PollOnce(int timeout_ms);
  void Wake();
  void DropWake();
  void Mark(const std::shared_ptr<norvik::qel::fake::EventSource>& source);
  void Forget(const std::shared_ptr<norvik::qel::fake::EventSource>& source);
  int waiters() const;

 private:
  mutable std::mutex lock_;
  std::condition_variable changed_;
  std::set<std::shared_ptr<norvik::qel::fake::EventSource>> marked_ QUORVEL_GUARDED_BY(lock_);
  bool woken_ QUORVEL_GUARDED_BY(lock_) = false;
  int waiters_ QUORVEL_GUARDED_BY(lock_) = 0;
};
