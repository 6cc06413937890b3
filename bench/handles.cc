// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Creating and destroying a handle, compared with the same number of threads that only wait to end.
//
// No service is declared meanwhile. Creating a handle looks up no service. Neither does destroying
// a sensor or thermal handle that never had a client. Destroying a battery handle asks whether the
// health service is declared and, if so, looks it up: if the service did not run, that would take
// five seconds.
#include <benchmark/benchmark.h>
#include <pthread.h>

#include <array>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

#include "cpus.h"
#include "latencies.h"
#include "probe.h"
#include "process_state.h"
#include "quick.h"
#include "quorvel.h"
#include "quorvel/fake/thread_annotations.h"
#include "registration.h"
#include "turns.h"
#include "waiting.h"

namespace norvik::qel::bench {

namespace {

constexpr char kThreadName[] = "bench_waiting";

class WaitingThread {
 public:
  WaitingThread() : thread_([this] { Run(); }) {}

  void End() {
    {
      std::lock_guard<std::mutex> lock(lock_);
      ends_ = true;
      cv_.notify_one();
    }
    thread_.join();
  }

 private:
  void Run() {
    pthread_setname_np(pthread_self(), kThreadName);
    std::unique_lock<std::mutex> lock(lock_);
    cv_.wait(lock, [this]() QUORVEL_REQUIRES(lock_) { return ends_; });
  }

  std::mutex lock_;
  std::condition_variable cv_;
  bool ends_ QUORVEL_GUARDED_BY(lock_) = false;
  std::thread thread_;  // last: it uses all the others
};

template <size_t kCount>
using WaitingThreads = std::array<WaitingThread, kCount>;

template <size_t kCount>
void MakeThreads(void** handle) {
  *handle = new WaitingThreads<kCount>;
}

// One after another, as in the library.
template <size_t kCount>
void EndThreads(void** handle) {
  auto* threads = static_cast<WaitingThreads<kCount>*>(*handle);
  for (WaitingThread& thread : *threads) thread.End();
  delete threads;
  *handle = nullptr;
}

// The two ways to start and end threads.
struct Way {
  void (*make)(void** handle);
  void (*destroy)(void** handle);
};

int Threads() {
  return LibraryThreadCount() + static_cast<int>(ThreadIdsNamed({kThreadName}).size());
}

bool HasItsThreads(const Way& way, int threads) {
  void* handle = nullptr;
  way.make(&handle);
  const bool has = handle != nullptr && Eventually([&] { return Threads() == threads; });
  way.destroy(&handle);
  return has;
}

// In between, the threads start and fall asleep, as those of a handle in use. Destroying a handle
// whose threads have not started logs a warning.
std::optional<int64_t> TimeOf(const Way& way) {
  void* handle = nullptr;
  int64_t made_in_ns = 0;
  {
    const WorkersAreMadeHere here;
    const int64_t began_ns = NowNs();
    way.make(&handle);
    made_in_ns = NowNs() - began_ns;
  }
  if (handle == nullptr) return std::nullopt;
  LetItFallAsleep();
  const int64_t began_ns = NowNs();
  way.destroy(&handle);
  return made_in_ns + (NowNs() - began_ns);
}

void MakeAndDestroy(benchmark::State& state, int threads, Way library, Way bare) {
  if (!HasItsThreads(library, threads) || !HasItsThreads(bare, threads)) {
    state.SkipWithError("unexpected number of threads");
    return;
  }
  Turns turns;
  turns.Add("library", [&] { return TimeOf(library); });
  turns.Add("threads", [&] { return TimeOf(bare); });
  turns.Run(state, "a handle could not be made");
  if (!Eventually([] { return Threads() == 0; })) state.SkipWithError("threads were left running");
}

const Registration kRegistration([] {
  const auto add = [](const char* name, int threads, Way library, Way bare) {
    benchmark::RegisterBenchmark(name, MakeAndDestroy, threads, library, bare)
        ->UseManualTime()
        ->Iterations(Rounds(2'000));
  };
  add("handle/battery", 2, {InitBatteryInfo, DeinitBatteryInfo}, {MakeThreads<2>, EndThreads<2>});
  add("handle/sensor", 3, {InitSensorInfo, DeinitSensorInfo}, {MakeThreads<3>, EndThreads<3>});
  add("handle/thermal", 2, {InitThermalInfo, DeinitThermalInfo}, {MakeThreads<2>, EndThreads<2>});
});

}  // namespace

}  // namespace norvik::qel::bench
