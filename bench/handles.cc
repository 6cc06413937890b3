// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What it takes to make a handle and to destroy it, beside as many threads that only wait to end.
//
// Nothing is declared while this runs. Making a handle asks for no service, whether one runs or
// not. Nor does the end of a sensor or thermal handle that has never had a client. The end of a
// battery handle asks whether the health service is declared, and looks it up where it is: with one
// that is declared and does not run it would wait five seconds.
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

// One after another, as the library does.
template <size_t kCount>
void EndThreads(void** handle) {
  auto* threads = static_cast<WaitingThreads<kCount>*>(*handle);
  for (WaitingThread& thread : *threads) thread.End();
  delete threads;
  *handle = nullptr;
}

// Two ways to have some threads.
struct Way {
  void (*make)(void** handle);
  void (*destroy)(void** handle);
};

int Threads() {
  return LibraryThreadCount() + ThreadsNamed({kThreadName});
}

bool HasItsThreads(const Way& way, int threads) {
  void* handle = nullptr;
  way.make(&handle);
  const bool has = handle != nullptr && Eventually([&] { return Threads() == threads; });
  way.destroy(&handle);
  return has;
}

// In between, the threads get going and fall asleep, as those of a handle that is in use: the end
// of one that has not got going is one that the library warns of.
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
    state.SkipWithError("not the threads that were expected");
    return;
  }
  Turns turns;
  turns.Add("library", [&] { return TimeOf(library); });
  turns.Add("threads", [&] { return TimeOf(bare); });
  turns.Run(state, "a handle could not be made");
  if (!Eventually([] { return Threads() == 0; })) state.SkipWithError("threads are left");
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
