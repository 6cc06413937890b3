// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Scripted faults: a queue of outcomes per operation. If the queue is empty, the operation works
// normally. Every operation counts its calls.
#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_status.h>

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
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
  // If not STATUS_OK, the call fails. It is the transport status of a service call or the result of
  // a link or unlink call. A look-up returns null or false for it.
  binder_status_t status = STATUS_OK;
  // If not EX_NONE, the service call fails with this exception.
  binder_exception_t exception = EX_NONE;
  int32_t service_specific = 0;  // with EX_SERVICE_SPECIFIC
  std::string message = {};
  // If set, the call waits here first.
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
  // The outcome as the result of a service method.
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
  // Appends the outcome of a later call.
  void Then(Outcome outcome) {
    std::lock_guard<std::mutex> lock(lock_);
    outcomes_.push_back(std::move(outcome));
  }
  // Appends the same outcome `times` times.
  void Then(const Outcome& outcome, int times) {
    for (int i = 0; i < times; ++i) Then(outcome);
  }

  // For the operation: counts the call, waits at the gate of the next outcome, returns the outcome.
  //
  // `ended` is the flag of a service that may die. If it is set, the result is STATUS_DEAD_OBJECT
  // and no outcome is taken: the queued ones are for the next service. To end a service, set the
  // flag, then call OpenGates(): calls that are already waiting at a gate then return.
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
  // Waits until the operation has been called `count` times in total; false after `limit`.
  [[nodiscard]] bool WaitForCalls(
      int count, std::chrono::milliseconds limit = std::chrono::seconds(10)) const {
    std::unique_lock<std::mutex> lock(lock_);
    return changed_.wait_for(lock, limit,
                             [&]() QUORVEL_REQUIRES(lock_) { return calls_ >= count; });
  }

  // Opens the gates of all waiting calls. For a process that has died.
  void OpenGates() {
    std::vector<std::shared_ptr<Gate>> waiting;
    {
      std::lock_guard<std::mutex> lock(lock_);
      waiting.swap(waiting_);
    }
    for (const auto& gate : waiting) gate->Open();
  }

  // Drops the queued outcomes.
  void Clear() {
    std::lock_guard<std::mutex> lock(lock_);
    outcomes_.clear();
  }

 private:
  mutable std::mutex lock_;
  mutable std::condition_variable changed_;
  std::deque<Outcome> outcomes_ QUORVEL_GUARDED_BY(lock_);
  std::vector<std::shared_ptr<Gate>> waiting_ QUORVEL_GUARDED_BY(lock_);
  int calls_ QUORVEL_GUARDED_BY(lock_) = 0;
};

// A script for each operation of an enumeration that ends with kCount.
template <typename Operation>
class Scripts {
 public:
  Script& on(Operation operation) { return scripts_.at(static_cast<size_t>(operation)); }
  void OpenGates() {
    for (Script& script : scripts_) script.OpenGates();
  }

 private:
  std::array<Script, static_cast<size_t>(Operation::kCount)> scripts_;
};

}  // namespace norvik::qel::fake
