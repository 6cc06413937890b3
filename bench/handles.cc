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
#include <string>
#include <thread>

#include "bench/cpus.h"
#include "bench/latencies.h"
#include "bench/library_threads.h"
#include "bench/probe.h"
#include "bench/quick.h"
#include "bench/registration.h"
#include "quorvel.h"
#include "tests/support/process_state.h"
#include "tests/support/waiting.h"

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
    cv_.wait(lock, [this] { return ends_; });
  }

  std::mutex lock_;
  std::condition_variable cv_;
  bool ends_ = false;
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

struct Row {
  const char* name;
  int threads;
  void (*make)(void** handle);
  void (*destroy)(void** handle);
};

int Threads() {
  return LibraryThreadCount() + ThreadsNamed({kThreadName});
}

bool HasItsThreads(const Row& row) {
  void* handle = nullptr;
  row.make(&handle);
  const bool has = handle != nullptr && Eventually([&] { return Threads() == row.threads; });
  row.destroy(&handle);
  return has;
}

// Counters: the two parts of it. In between, the threads get going and fall asleep, as those of a
// handle that is in use: the end of one that has not got going is one that the library warns of.
void MakeAndDestroy(benchmark::State& state, Row row) {
  if (!HasItsThreads(row)) {
    state.SkipWithError("not the threads that were expected");
    return;
  }
  Latencies latencies(static_cast<size_t>(state.max_iterations));
  int64_t make_ns = 0;
  int64_t destroy_ns = 0;
  for ([[maybe_unused]] auto round : state) {
    void* handle = nullptr;
    int64_t made_in_ns = 0;
    {
      const WorkersAreMadeHere here;
      const int64_t began_ns = NowNs();
      row.make(&handle);
      made_in_ns = NowNs() - began_ns;
    }
    LetItFallAsleep();
    const int64_t began_ns = NowNs();
    row.destroy(&handle);
    const int64_t destroyed_in_ns = NowNs() - began_ns;
    latencies.Add(made_in_ns + destroyed_in_ns, state);
    make_ns += made_in_ns;
    destroy_ns += destroyed_in_ns;
  }
  latencies.Report(state);
  const auto rounds = static_cast<double>(state.iterations());
  state.counters["make_ns"] = static_cast<double>(make_ns) / rounds;
  state.counters["destroy_ns"] = static_cast<double>(destroy_ns) / rounds;
  if (!Eventually([] { return Threads() == 0; })) state.SkipWithError("threads are left");
}

const Registration kRegistration([] {
  for (const Row& row : {
           Row{"battery/library", 2, InitBatteryInfo, DeinitBatteryInfo},
           Row{"battery/threads", 2, MakeThreads<2>, EndThreads<2>},
           Row{"sensor/library", 3, InitSensorInfo, DeinitSensorInfo},
           Row{"sensor/threads", 3, MakeThreads<3>, EndThreads<3>},
           Row{"thermal/library", 2, InitThermalInfo, DeinitThermalInfo},
           Row{"thermal/threads", 2, MakeThreads<2>, EndThreads<2>},
       }) {
    const std::string name = std::string("handle/") + row.name;
    benchmark::RegisterBenchmark(name.c_str(), MakeAndDestroy, row)
        ->UseManualTime()
        ->Iterations(Rounds(2'000));
  }
});

}  // namespace

}  // namespace norvik::qel::bench
