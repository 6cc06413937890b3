// The binder threads of one process: tasks run on the first that is free.
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

// Threads are made when a task finds none idle, up to a limit, and stay until the pool is closed.
// They are detached and share the pool's ownership: a task that never ends hinders nobody.
//
// Locks: lock_ is innermost and free while a task runs or is destroyed.
class ThreadPool : public std::enable_shared_from_this<ThreadPool> {
 public:
  explicit ThreadPool(std::string thread_name) : thread_name_(std::move(thread_name)) {}

  // Tasks wait until the pool is started.
  void Post(std::function<void()> task);
  void Start();
  bool started() const;
  void SetMaxThreads(uint32_t count);
  // Drops what waits and lets the threads end. Later tasks are dropped.
  void Close();
  // Works as one of the threads, until the pool is closed.
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
