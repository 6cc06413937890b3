// From a request to the action: the library's worker beside what else there is.
#include <benchmark/benchmark.h>

#include "bench/cpus.h"
#include "bench/latencies.h"
#include "bench/probe.h"
#include "bench/quick.h"
#include "bench/registration.h"
#include "bench/workers.h"

namespace norvik::qel::bench {

namespace {

std::unique_ptr<Worker> OnItsProcessor(MakeWorker make, Probe& probe) {
  const WorkersAreMadeHere here;
  return make(probe);
}

// The thread sleeps when it is asked.
void Idle(benchmark::State& state, MakeWorker make) {
  Probe probe;
  const std::unique_ptr<Worker> worker = OnItsProcessor(make, probe);
  Latencies latencies(state.max_iterations);
  for ([[maybe_unused]] auto round : state) {
    LetItFallAsleep();
    const int64_t number = probe.Announce();
    const int64_t asked_ns = NowNs();
    worker->Trigger();
    const auto ran_ns = probe.WaitFor(number);
    if (!ran_ns) {
      state.SkipWithError(kNothingRan);
      return;
    }
    latencies.Add(*ran_ns - asked_ns, state);
  }
  latencies.Report(state);
}

// Asked again and again without waiting; counters: the cost of one request, the runs of one burst.
void Burst(benchmark::State& state, MakeWorker make) {
  const int requests = Rounds(1'000'000);
  Probe probe;
  const std::unique_ptr<Worker> worker = OnItsProcessor(make, probe);
  int64_t spent_ns = 0;
  for ([[maybe_unused]] auto round : state) {
    LetItFallAsleep();
    int64_t last = 0;
    const int64_t began_ns = NowNs();
    for (int i = 0; i < requests; ++i) {
      last = probe.Announce();
      worker->Trigger();
    }
    const int64_t took_ns = NowNs() - began_ns;
    if (!probe.WaitFor(last)) {
      state.SkipWithError(kNothingRan);
      return;
    }
    state.SetIterationTime(static_cast<double>(took_ns) * 1e-9);
    spent_ns += took_ns;
  }
  const auto bursts = static_cast<double>(state.iterations());
  state.counters["request_ns"] = static_cast<double>(spent_ns) / requests / bursts;
  state.counters["runs"] = static_cast<double>(probe.runs()) / bursts;
}

const Registration kRegistration([] {
  struct Row {
    const char* name;
    MakeWorker make;
  };
  for (const Row& row : {Row{"library", MakeLibraryWorker}, Row{"bare", MakeBareWorker},
                         Row{"sd-event", MakeSdEventWorker}, Row{"glib", MakeGlibWorker},
                         Row{"libuv", MakeLibuvWorker}, Row{"asio", MakeAsioWorker}}) {
    const std::string name = row.name;
    benchmark::RegisterBenchmark(("trigger/idle/" + name).c_str(), Idle, row.make)
        ->UseManualTime()
        ->Iterations(Rounds(5'000));
    benchmark::RegisterBenchmark(("trigger/burst/" + name).c_str(), Burst, row.make)
        ->UseManualTime()
        ->Iterations(1);
  }
});

}  // namespace

}  // namespace norvik::qel::bench
