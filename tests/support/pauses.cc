// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "pauses.h"

#include <dlfcn.h>
#include <errno.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <utility>
#include <vector>

#include "quorvel/fake/thread_annotations.h"

namespace norvik::qel {

namespace {

struct Pause;

// Never destroyed, because threads may wait until the program ends.
struct Pauses {
  std::mutex lock;
  std::vector<Pause*> all QUORVEL_GUARDED_BY(lock);
  std::condition_variable left;  // a worker has left its pause
};

Pauses& ThePauses() {
  static Pauses& pauses = *new Pauses;
  return pauses;
}

struct Pause {
  pthread_cond_t* condition;
  pthread_mutex_t* mutex;
  bool over = false;  // guarded by `mutex`, a type that the analysis does not know
  bool ending QUORVEL_GUARDED_BY(ThePauses().lock) = false;  // `over` is about to be set
};

// The number of seconds by which the calling thread's clock is ahead.
thread_local time_t ahead = 0;

// Whether a return address is in the library.
bool IsLibrary(const void* address) {
  Dl_info info;
  return dladdr(address, &info) != 0 && info.dli_fname != nullptr &&
         strstr(info.dli_fname, "libquorvel.so") != nullptr;
}

}  // namespace

size_t PausingWorkers() {
  std::lock_guard<std::mutex> lock(ThePauses().lock);
  return static_cast<size_t>(std::count_if(
      ThePauses().all.begin(), ThePauses().all.end(),
      [](const Pause* pause) QUORVEL_REQUIRES(ThePauses().lock) { return !pause->ending; }));
}

void EndPauses() {
  std::vector<Pause*> all;
  {
    std::lock_guard<std::mutex> lock(ThePauses().lock);
    for (Pause* pause : ThePauses().all) {
      if (!std::exchange(pause->ending, true)) all.push_back(pause);
    }
  }
  std::vector<pthread_mutex_t*> mutexes;  // the pauses go when the workers leave them
  for (Pause* pause : all) {
    mutexes.push_back(pause->mutex);
    // Under the waiting thread's own mutex, so that it either sees `over` before it waits or is
    // woken. The pause still exists: once `ending` is set, it lasts until `over` is set.
    pthread_mutex_lock(pause->mutex);
    pause->over = true;
    pthread_cond_broadcast(pause->condition);
    pthread_mutex_unlock(pause->mutex);
  }
  {
    std::unique_lock<std::mutex> lock(ThePauses().lock);
    fake::AssertHeld(ThePauses().lock);
    ThePauses().left.wait(lock, []() QUORVEL_REQUIRES(ThePauses().lock) {
      return std::none_of(ThePauses().all.begin(), ThePauses().all.end(),
                          [](const Pause* pause)
                              QUORVEL_REQUIRES(ThePauses().lock) { return pause->ending; });
    });
  }
  // A worker keeps its mutex from the end of its pause until it is idle or runs again.
  for (pthread_mutex_t* mutex : mutexes) {
    pthread_mutex_lock(mutex);
    pthread_mutex_unlock(mutex);
  }
}

extern "C" {

// The thread sanitizer's interceptor, which must see the call; null without that sanitizer.
__attribute__((weak)) int __interceptor_pthread_cond_clockwait(pthread_cond_t* condition,
                                                               pthread_mutex_t* mutex,
                                                               clockid_t clock,
                                                               const timespec* deadline);

// These replace the C library's functions, whose parameter names are reserved.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)
__attribute__((visibility("default"))) int clock_gettime(clockid_t clock, timespec* time) noexcept {
  const int result = static_cast<int>(syscall(SYS_clock_gettime, clock, time));
  if (result == 0 && clock == CLOCK_MONOTONIC) time->tv_sec += ahead;
  return result;
}

__attribute__((visibility("default"))) int pthread_cond_clockwait(pthread_cond_t* condition,
                                                                  pthread_mutex_t* mutex,
                                                                  clockid_t clock,
                                                                  const timespec* deadline) {
  using Function = int (*)(pthread_cond_t*, pthread_mutex_t*, clockid_t, const timespec*);
  static const Function original =
      __interceptor_pthread_cond_clockwait != nullptr
          ? __interceptor_pthread_cond_clockwait
          : reinterpret_cast<Function>(dlsym(RTLD_NEXT, "pthread_cond_clockwait"));
  if (!IsLibrary(__builtin_return_address(0))) return original(condition, mutex, clock, deadline);
  Pause pause{.condition = condition, .mutex = mutex};
  {
    std::lock_guard<std::mutex> lock(ThePauses().lock);
    ThePauses().all.push_back(&pause);
  }
  // Any wake-up may end this wait: the worker's loop checks its state and waits again.
  int result = 0;
  for (bool leaves = false; !leaves;) {
    if (!pause.over) result = pthread_cond_wait(condition, mutex);
    std::lock_guard<std::mutex> lock(ThePauses().lock);
    leaves = pause.over || !pause.ending;
    if (leaves) {
      std::erase(ThePauses().all, &pause);
      ThePauses().left.notify_all();
    }
  }
  if (!pause.over) return result;
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  // Advances the clock past the deadline, by up to a second more than needed.
  if (deadline->tv_sec >= now.tv_sec) ahead += deadline->tv_sec - now.tv_sec + 1;
  return ETIMEDOUT;
}

// NOLINTEND(readability-inconsistent-declaration-parameter-name)

}  // extern "C"

}  // namespace norvik::qel
