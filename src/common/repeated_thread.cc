// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#define LOG_TAG "audio_hw_repeated_thread"

#include "common/repeated_thread.h"

#include <log/log.h>
#include <pthread.h>

#include <chrono>
#include <exception>
#include <utility>

namespace norvik::qel::audio {

namespace {

thread_local const RepeatedThread* current_worker = nullptr;

// Linux keeps 15 characters of a thread's name and rejects longer names.
void NameThisThread(std::string_view name) {
  char kept[16] = {};
  name.copy(kept, sizeof kept - 1);
  pthread_setname_np(pthread_self(), kept);
}

// In a burst of requests, a message that is dropped would be most of the cost of each.
bool LogsRequests() {
  return __android_log_is_loggable(ANDROID_LOG_DEBUG, LOG_TAG, ANDROID_LOG_VERBOSE) != 0;
}

}  // namespace

RepeatedThread::RepeatedThread(std::string_view name, uint32_t pause_ms, uint32_t repeat_count)
    : name_(name), pause_ms_(pause_ms), repeat_count_(repeat_count) {}

RepeatedThread::~RepeatedThread() {
  // The destructor of a joinable std::thread ends the process. Do so before the members are
  // destroyed: some C libraries block in the destructor of a condition variable that a thread
  // sleeps on.
  if (thread_.joinable()) std::terminate();
}

void RepeatedThread::Initialize() {
  thread_ = std::thread(&RepeatedThread::RunThread, this);
}

void RepeatedThread::RunThread() {
  current_worker = this;
  NameThisThread(name_);
  ThreadLoop();
  std::lock_guard<std::mutex> lock(lock_);
  ended_ = true;
}

bool RepeatedThread::IsWorker() {
  return current_worker != nullptr;
}

bool RepeatedThread::IsLastAttempt() {
  return current_worker != nullptr &&
         current_worker->failed_runs_ + 1 >= current_worker->repeat_count_;
}

bool RepeatedThread::HasEnded() {
  std::lock_guard<std::mutex> lock(lock_);
  return ended_;
}

// run_again_ is a mark. A request sets it and the start of a run clears it, each by one atomic
// exchange. No request is lost:
// 1. The request that sets the mark then takes lock_. Either a run is requested or under way, and
//    its end takes the mark; or the worker is idle, and this request starts a run; or the mark is
//    gone, so a run has started since.
// 2. A request that finds the mark set has nothing to do: a run that has not started yet will clear
//    it. That run sees what the requesting thread wrote before, because its exchange reads this
//    one's. A plain load would not order them.
void RepeatedThread::Start() {
  const bool was_ready = run_again_.exchange(true, std::memory_order_acq_rel);
  if (was_ready && !LogsRequests()) return;
  // With lock_ free: a worker on the same processor would wake only to wait for it.
  if (TakeRequest(was_ready)) cv_.notify_one();
}

bool RepeatedThread::TakeRequest(bool was_ready) {
  std::lock_guard<std::mutex> lock(lock_);
  if (exit_requested_) return false;
  if (state_ == TriggerState::kIdle) {
    if (!run_again_.exchange(false, std::memory_order_acq_rel)) return false;
    state_ = TriggerState::kTriggered;
    return true;
  }
  // Not notified: a thread in its pause finishes the pause first.
  const char* const format =
      was_ready ? "%s[%s]: run again is already ready." : "%s[%s]: trigger run again.";
  if (LogsRequests()) ALOGD(format, "Start", name_.data());
  return false;
}

void RepeatedThread::ThreadLoop() {
  std::unique_lock<std::mutex> lock(lock_);
  AssertHeld(lock_);
  if (exit_requested_) return;  // Deinitialize() came first.
  running_ = true;
  while (running_) {
    if (state_ == TriggerState::kIdle) {
      cv_.wait(lock);
      continue;
    }
    lock.unlock();
    const bool done = ClientAction();
    lock.lock();
    if (!running_) return;
    if (done) {
      FinishSuccess();
      continue;
    }
    ++failed_runs_;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(pause_ms_);
    if (cv_.wait_until(lock, deadline, [this]() QEL_REQUIRES(lock_) { return !running_; })) {
      ALOGD("%s[%s]: thread existed after sleep!", "ThreadLoop", name_.data());
      return;
    }
    FinishFailure();
  }
}

void RepeatedThread::FinishSuccess() {
  failed_runs_ = 0;
  if (!run_again_.exchange(false, std::memory_order_acq_rel)) {
    state_ = TriggerState::kIdle;
    return;
  }
  ALOGD("%s[%s]: action run again!", "ThreadLoop", name_.data());
}

void RepeatedThread::FinishFailure() {
  const bool run_again = run_again_.exchange(false, std::memory_order_acq_rel);
  if (failed_runs_ < repeat_count_) {
    if (!run_again) return;
    ALOGD("%s[%s]: action run again at repeated %d !", "ThreadLoop", name_.data(), failed_runs_);
    return;
  }
  if (!run_again) {
    // Gives up until the next request.
    failed_runs_ = 0;
    state_ = TriggerState::kIdle;
    return;
  }
  // failed_runs_ stays: the further run gets no retries of its own.
  ALOGD("%s[%s]: action run again at last count(%d:%d)!", "ThreadLoop", name_.data(), failed_runs_,
        repeat_count_);
}

void RepeatedThread::Deinitialize() {
  {
    std::lock_guard<std::mutex> lock(lock_);
    if (!std::exchange(exit_announced_, false)) EndLoop();
  }
  if (thread_.joinable()) thread_.join();
}

void RepeatedThread::RequestExit() {
  std::lock_guard<std::mutex> lock(lock_);
  if (exit_requested_) return;
  EndLoop();
  exit_announced_ = true;
}

void RepeatedThread::EndLoop() {
  if (!running_) {
    ALOGW("%s[%s]: Thread wasn't started, force to end the thread.", "Deinitialize", name_.data());
  }
  exit_requested_ = true;
  running_ = false;
  cv_.notify_one();
}

}  // namespace norvik::qel::audio
