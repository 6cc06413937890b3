// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The binder threads of one process. A task runs on the first idle thread.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "quorvel/fake/thread_annotations.h"

namespace norvik::qel::fake {

// A thread is started when a task finds none idle, up to a limit. Threads stay until the pool is
// closed. They are detached and share ownership of the pool: nothing waits for a thread to end.
//
// Locks: lock_ is innermost and free while a task runs or is destroyed.
class ThreadPool : public std::enable_shared_from_this<ThreadPool> {
 public:
  explicit ThreadPool(std::string thread_name) : thread_name_(std::move(thread_name)) {}

  // Queues a task. Tasks wait until the pool is started.
  void Post(std::function<void()> task);
  void Start();
  bool started() const;
  void SetMaxThreads(uint32_t count);
  // Drops waiting and later tasks, and lets the threads end.
  void Close();
  // Makes the calling thread one of the pool until the pool is closed.
  void Run();

 private:
  void SpawnIfNeededLocked() QUORVEL_REQUIRES(lock_);

  const std::string thread_name_;
  mutable std::mutex lock_;
  std::condition_variable changed_;
  std::deque<std::function<void()>> tasks_ QUORVEL_GUARDED_BY(lock_);
  uint32_t max_threads_ QUORVEL_GUARDED_BY(lock_) = 16;
  uint32_t threads_ QUORVEL_GUARDED_BY(lock_) = 0;
  uint32_t idle_ QUORVEL_GUARDED_BY(lock_) = 0;
  bool started_ QUORVEL_GUARDED_BY(lock_) = false;
  bool closed_ QUORVEL_GUARDED_BY(lock_) = false;
};

}  // namespace norvik::qel::fake
