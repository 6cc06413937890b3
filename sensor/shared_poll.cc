#include "sensor/shared_poll.h"

#include <android/looper.h>

namespace norvik::qel::audio {

namespace {

// Its destructor leaves the value alone.
template <typename T>
union NeverDestroyed {
  constexpr NeverDestroyed() : value() {}
  ~NeverDestroyed() {}  // NOLINT(modernize-use-equals-default): a union's default one is deleted
  T value;
};

constinit NeverDestroyed<SharedPoll> shared_poll;

}  // namespace

SharedPoll& SharedPoll::Get() {
  return shared_poll.value;
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
