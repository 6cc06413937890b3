// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "looper.h"

#include <chrono>

#include "next_outcome.h"
#include "quorvel/fake/sensor_functions.h"

using norvik::qel::fake::EventSource;
using norvik::qel::fake::NextOutcome;
using norvik::qel::fake::Outcome;
using norvik::qel::fake::SensorFunction;

namespace {
thread_local bool t_in_callback = false;
}  // namespace

ALooper& ALooper::Get() {
  // Leaked on purpose: threads may poll until the process ends.
  static ALooper& looper = *new ALooper;
  return looper;
}

bool ALooper::InCallback() {
  return t_in_callback;
}

int ALooper::PollOnce(int timeout_ms) {
  std::set<std::shared_ptr<EventSource>> taken;
  {
    std::unique_lock<std::mutex> lock(lock_);
    norvik::qel::fake::AssertHeld(lock_);
    const auto ready = [this]() QUORVEL_REQUIRES(lock_) { return !marked_.empty() || woken_; };
    ++waiters_;
    if (timeout_ms < 0) {
      changed_.wait(lock, ready);
    } else {
      changed_.wait_for(lock, std::chrono::milliseconds(timeout_ms), ready);
    }
    --waiters_;
    if (marked_.empty()) {
      const bool woken = woken_;
      woken_ = false;
      return woken ? ALOOPER_POLL_WAKE : ALOOPER_POLL_TIMEOUT;
    }
    taken.swap(marked_);  // a wake is left for the next poll
  }
  t_in_callback = true;
  for (const auto& source : taken) source->Dispatch();
  t_in_callback = false;
  return ALOOPER_POLL_CALLBACK;
}

void ALooper::Wake() {
  std::lock_guard<std::mutex> lock(lock_);
  woken_ = true;
  changed_.notify_one();
}

void ALooper::DropWake() {
  std::lock_guard<std::mutex> lock(lock_);
  woken_ = false;
}

void ALooper::Mark(const std::shared_ptr<EventSource>& source) {
  std::lock_guard<std::mutex> lock(lock_);
  marked_.insert(source);
  changed_.notify_one();
}

void ALooper::Forget(const std::shared_ptr<EventSource>& source) {
  std::lock_guard<std::mutex> lock(lock_);
  marked_.erase(source);  // never the last reference: the caller holds one
}

int ALooper::waiters() const {
  std::lock_guard<std::mutex> lock(lock_);
  return waiters_;
}

int norvik::qel::fake::LooperWaiters() {
  return ALooper::Get().waiters();
}

void norvik::qel::fake::DropWake() {
  ALooper::Get().DropWake();
}

extern "C" {

ALooper* ALooper_forThread() {
  return NextOutcome(SensorFunction::kForThread).works() ? &ALooper::Get() : nullptr;
}

ALooper* ALooper_prepare(int /*opts*/) {
  return NextOutcome(SensorFunction::kPrepare).works() ? &ALooper::Get() : nullptr;
}

int ALooper_pollOnce(int timeoutMillis, int* outFd, int* outEvents, void** outData) {
  if (outFd != nullptr) *outFd = 0;
  if (outEvents != nullptr) *outEvents = 0;
  if (outData != nullptr) *outData = nullptr;
  const Outcome outcome = NextOutcome(SensorFunction::kPollOnce);
  return outcome.status < 0 ? outcome.status : ALooper::Get().PollOnce(timeoutMillis);
}

void ALooper_wake(ALooper* looper) {
  static_cast<void>(NextOutcome(SensorFunction::kWake));
  looper->Wake();
}

}  // extern "C"
