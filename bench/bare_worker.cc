// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <pthread.h>

#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

#include "quorvel/fake/thread_annotations.h"
#include "workers.h"

namespace norvik::qel::bench {

namespace {

template <typename Action>
class BareWorker : public Worker {
 public:
  explicit BareWorker(Action action) : action_(std::move(action)), thread_([this] { Loop(); }) {}
  ~BareWorker() override {
    {
      std::lock_guard<std::mutex> lock(lock_);
      ends_ = true;
      cv_.notify_one();
    }
    thread_.join();
  }

  void Trigger() override {
    std::lock_guard<std::mutex> lock(lock_);
    triggered_ = true;
    cv_.notify_one();
  }

 private:
  void Loop() {
    pthread_setname_np(pthread_self(), kBareThreadName);
    std::unique_lock<std::mutex> lock(lock_);
    fake::AssertHeld(lock_);  // except while the action runs
    while (true) {
      cv_.wait(lock, [this]() QUORVEL_REQUIRES(lock_) { return triggered_ || ends_; });
      if (ends_) return;
      triggered_ = false;
      lock.unlock();
      action_();
      lock.lock();
    }
  }

  const Action action_;
  std::mutex lock_;
  std::condition_variable cv_;
  bool triggered_ QUORVEL_GUARDED_BY(lock_) = false;
  bool ends_ QUORVEL_GUARDED_BY(lock_) = false;
  std::thread thread_;  // last: it uses all the others
};

template <typename Action>
std::unique_ptr<Worker> Make(Action action) {
  return std::make_unique<BareWorker<Action>>(std::move(action));
}

}  // namespace

std::unique_ptr<Worker> MakeBareWorker(Probe& probe) {
  return Make([&probe] { probe.Run(); });
}

std::unique_ptr<Worker> MakeBareRelay(std::unique_ptr<Worker> next) {
  return Make([next = std::move(next)] { next->Trigger(); });
}

}  // namespace norvik::qel::bench
