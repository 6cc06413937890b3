#include <condition_variable>
#include <mutex>
#include <thread>

#include "bench/workers.h"

namespace norvik::qel::bench {

namespace {

class BareWorker : public Worker {
 public:
  explicit BareWorker(Probe& probe) : probe_(probe), thread_([this] { Loop(); }) {}
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
    std::unique_lock<std::mutex> lock(lock_);
    while (true) {
      cv_.wait(lock, [this] { return triggered_ || ends_; });
      if (ends_) return;
      triggered_ = false;
      lock.unlock();
      probe_.Run();
      lock.lock();
    }
  }

  Probe& probe_;
  std::mutex lock_;
  std::condition_variable cv_;
  bool triggered_ = false;
  bool ends_ = false;
  std::thread thread_;  // last: it uses all the others
};

}  // namespace

std::unique_ptr<Worker> MakeBareWorker(Probe& probe) {
  return std::make_unique<BareWorker>(probe);
}

}  // namespace norvik::qel::bench
