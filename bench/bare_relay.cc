#include "bench/bare_relay.h"

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

namespace norvik::qel::bench {

namespace {

constinit std::atomic<int64_t> relayed_ns = 0;

class BareRelay : public Worker {
 public:
  explicit BareRelay(std::unique_ptr<Worker> next)
      : next_(std::move(next)), thread_([this] { Loop(); }) {}
  ~BareRelay() override {
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
    std::unique_lock<std::mutex> lock(lock_);
    while (true) {
      cv_.wait(lock, [this] { return triggered_ || ends_; });
      if (ends_) return;
      triggered_ = false;
      lock.unlock();
      relayed_ns.store(NowNs(), std::memory_order_relaxed);
      next_->Trigger();
      lock.lock();
    }
  }

  const std::unique_ptr<Worker> next_;
  std::mutex lock_;
  std::condition_variable cv_;
  bool triggered_ = false;
  bool ends_ = false;
  std::thread thread_;  // last: it uses all the others
};

}  // namespace

std::unique_ptr<Worker> MakeBareRelay(std::unique_ptr<Worker> next) {
  return std::make_unique<BareRelay>(std::move(next));
}

int64_t LastRelayNs() {
  return relayed_ns.load(std::memory_order_relaxed);
}

}  // namespace norvik::qel::bench
