// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "sensor/shared_poll.h"

#include <android/looper.h>

#include <type_traits>

namespace norvik::qel::audio {

namespace {

// Not destroyed at exit, also where the standard library's mutex has a destructor.
#if defined(__clang__)
[[clang::no_destroy]]
#else
static_assert(std::is_trivially_destructible_v<SharedPoll>);
#endif
constinit SharedPoll shared_poll;

}  // namespace

SharedPoll& SharedPoll::Get() {
  return shared_poll;
}

bool SharedPoll::Wait(uint64_t& seen) {
  {
    std::lock_guard<std::mutex> lock(lock_);
    while (round_ == seen && polling_) pthread_cond_wait(&round_begun_, lock_.native_handle());
    if (round_ != seen) return Catch(seen);
    polling_ = true;
  }
  const int result = ALooper_pollOnce(/*timeoutMillis=*/-1, nullptr, nullptr, nullptr);
  std::lock_guard<std::mutex> lock(lock_);
  polling_ = false;
  ++round_;
  if (result != ALOOPER_POLL_ERROR) good_round_ = round_;
  pthread_cond_broadcast(&round_begun_);
  return Catch(seen);
}

bool SharedPoll::Catch(uint64_t& seen) {
  const bool good = good_round_ > seen;
  seen = round_;
  return good;
}

}  // namespace norvik::qel::audio
