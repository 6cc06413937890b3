// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "thread_pool.h"

#include <pthread.h>

#include <thread>
#include <utility>

namespace norvik::qel::fake {

void ThreadPool::Post(std::function<void()> task) {
  std::lock_guard<std::mutex> lock(lock_);
  if (closed_) return;  // `task` is destroyed by the caller, after the lock
  tasks_.push_back(std::move(task));
  SpawnIfNeededLocked();
  changed_.notify_one();
}

void ThreadPool::Start() {
  std::lock_guard<std::mutex> lock(lock_);
  started_ = true;
  for (size_t i = 0; i < tasks_.size(); ++i) SpawnIfNeededLocked();
}

bool ThreadPool::started() const {
  std::lock_guard<std::mutex> lock(lock_);
  return started_;
}

void ThreadPool::SetMaxThreads(uint32_t count) {
  std::lock_guard<std::mutex> lock(lock_);
  max_threads_ = count;
}

void ThreadPool::Close() {
  std::deque<std::function<void()>> dropped;
  std::lock_guard<std::mutex> lock(lock_);
  closed_ = true;
  dropped.swap(tasks_);  // declared before the lock: destroyed after it
  changed_.notify_all();
}

void ThreadPool::Run() {
  std::unique_lock<std::mutex> lock(lock_);
  AssertHeld(lock_);  // except while a task runs, which touches no member
  while (true) {
    ++idle_;
    changed_.wait(lock, [this]() QUORVEL_REQUIRES(lock_) {
      return closed_ || (started_ && !tasks_.empty());
    });
    --idle_;
    if (closed_) return;
    std::function<void()> task = std::move(tasks_.front());
    tasks_.pop_front();
    lock.unlock();
    task();
    task = nullptr;
    lock.lock();
  }
}

void ThreadPool::SpawnIfNeededLocked() {
  if (!started_ || tasks_.size() <= idle_ || threads_ >= max_threads_) return;
  ++threads_;
  std::thread([pool = shared_from_this()] {
    pthread_setname_np(pthread_self(), pool->thread_name_.substr(0, 15).c_str());
    pool->Run();
    std::lock_guard<std::mutex> lock(pool->lock_);
    --pool->threads_;
  }).detach();
}

}  // namespace norvik::qel::fake
