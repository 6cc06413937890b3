// Scripted faults: per operation a queue of outcomes. While it is empty the operation works
// normally. Every operation counts its calls.
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_status.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "quorvel/fake/gate.h"
#include "quorvel/fake/thread_annotations.h"

namespace norvik::qel::fake {

// What one call does.
struct Outcome {
  // Anything but STATUS_OK is the call's result: the transport status of a service call, the
  // result of a link or unlink, and for a look-up "nothing there" (null, or not declared).
  binder_status_t status = STATUS_OK;
  // For a service call that is to fail with an exception instead.
  binder_exception_t exception = EX_NONE;
  int32_t service_specific = 0;  // with EX_SERVICE_SPECIFIC
  std::string message = {};
  // When set, the call waits here first.
  std::shared_ptr<Gate> gate = nullptr;

  // The call waits at `gate`, then works.
  static Outcome After(std::shared_ptr<Gate> gate) { return {.gate = std::move(gate)}; }
  static Outcome Exception(binder_exception_t exception, std::string message) {
    return {.exception = exception, .message = std::move(message)};
  }
  static Outcome ServiceSpecific(int32_t error, std::string message = {}) {
    return {
        .exception = EX_SERVICE_SPECIFIC, .service_specific = error, .message = std::move(message)};
  }

  bool works() const { return status == STATUS_OK && exception == EX_NONE; }
  // As the result of a service's method.
  ndk::ScopedAStatus ToStatus() const {
    if (status != STATUS_OK) return ndk::ScopedAStatus::fromStatus(status);
    if (exception == EX_SERVICE_SPECIFIC) {
      return ndk::ScopedAStatus::fromServiceSpecificErrorWithMessage(service_specific,
                                                                     message.c_str());
    }
    return ndk::ScopedAStatus::fromExceptionCodeWithMessage(exception, message.c_str());
  }
};

// Threads: any.
class Script {
 public:
  // Appends what a later call is to do.
  void Then(Outcome outcome) {
    std::lock_guard<std::mutex> lock(lock_);
    outcomes_.push_back(std::move(outcome));
  }
  // Appends the same outcome `times` times.
  void Then(const Outcome& outcome, int times) {
    for (int i = 0; i < times; ++i) Then(outcome);
  }

  // The operation's side: counts the call, waits at the gate if there is one, and says what to do.
  // With `ended`, a service whose flag is set takes nothing that is meant for its successor: it
  // is dead. Whoever ends one sets the flag and then calls OpenGates(), so that a call waits at no
  // gate that nobody opens any more.
  [[nodiscard]] Outcome Next(const std::atomic<bool>* ended = nullptr) {
    Outcome outcome;
    {
      std::lock_guard<std::mutex> lock(lock_);
      if (ended != nullptr && *ended) return {.status = STATUS_DEAD_OBJECT};
      ++calls_;
      changed_.notify_all();
      if (!outcomes_.empty()) {
        outcome = std::move(outcomes_.front());
        outcomes_.pop_front();
      }
      if (outcome.gate != nullptr) waiting_.push_back(outcome.gate);
    }
    if (outcome.gate == nullptr) return outcome;
    outcome.gate->Pass();
    std::lock_guard<std::mutex> lock(lock_);
    std::erase(waiting_, outcome.gate);
    return outcome;
  }

  int calls() const {
    std::lock_guard<std::mutex> lock(lock_);
    return calls_;
  }
  // Waits until the operation has been called `count` times in all; false after `limit`.
  [[nodiscard]] bool WaitForCalls(
      int count, std::chrono::milliseconds limit = std::chrono::seconds(10)) const {
    std::unique_lock<std::mutex> lock(lock_);
    return changed_.wait_for(lock, limit,
                             [&]() QUORVEL_REQUIRES(lock_) { return calls_ >= count; });
  }

  // Lets every call go on that waits at its gate: its process has died.
  void OpenGates() {
    std::vector<std::shared_ptr<Gate>> waiting;
    {
      std::lock_guard<std::mutex> lock(lock_);
      waiting.swap(waiting_);
    }
    for (const auto& gate : waiting) gate->Open();
  }

  // Forgets the outcomes that no call has taken yet.
  void Clear() {
    std::lock_guard<std::mutex> lock(lock_);
    outcomes_.clear();
  }
  // And the calls so far.
  void Reset() {
    std::lock_guard<std::mutex> lock(lock_);
    outcomes_.clear();
    calls_ = 0;
  }

 private:
  mutable std::mutex lock_;
  mutable std::condition_variable changed_;
  std::deque<Outcome> outcomes_ QUORVEL_GUARDED_BY(lock_);
  std::vector<std::shared_ptr<Gate>> waiting_ QUORVEL_GUARDED_BY(lock_);
  int calls_ QUORVEL_GUARDED_BY(lock_) = 0;
};

}  // namespace norvik::qel::fake
