// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// From a request to the action: the library's worker compared with other event loops.
#include <android/log.h>
#include <benchmark/benchmark.h>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "benchmarks.h"
#include "threads.h"
#include "turns.h"
#include "workers.h"

namespace norvik::qel::bench {

namespace {

std::unique_ptr<Worker> OnItsProcessor(MakeWorker make, Probe& probe) {
  const WorkersAreMadeHere here;
  return make(probe);
}

struct Contender {
  Contender(std::string name, MakeWorker make)
      : name(std::move(name)), worker(OnItsProcessor(make, probe)) {}

  const std::string name;
  Probe probe;
  const std::unique_ptr<Worker> worker;
};

std::vector<std::unique_ptr<Contender>> All() {
  std::vector<std::unique_ptr<Contender>> all;
  constexpr std::pair<const char*, MakeWorker> kMakers[] = {
      {"library", MakeLibraryWorker}, {"bare", MakeBareWorker},   {"sd-event", MakeSdEventWorker},
      {"glib", MakeGlibWorker},       {"libuv", MakeLibuvWorker}, {"asio", MakeAsioWorker},
  };
  for (const auto& [name, make] : kMakers) {
    all.push_back(std::make_unique<Contender>(name, make));
  }
  return all;
}

// The worker is asleep at each request.
void Idle(benchmark::State& state) {
  const auto all = All();
  Turns turns;
  for (const auto& contender : all) {
    turns.Add(contender->name, [&contender = *contender] {
      LetItFallAsleep();
      return FromRequestToAction(*contender.worker, contender.probe);
    });
  }
  turns.Run(state, kNothingRan);
}

// Waits until the worker is idle. A worker that runs the action once per request is still busy
// after the probe has seen the last request.
void AwaitQuiet(const Probe& probe) {
  int64_t runs = 0;
  do {
    runs = probe.runs();
    LetItFallAsleep();
  } while (probe.runs() != runs);
}

// A turn is a burst of requests without waiting. Further counters: NAME_request_ns, and NAME_runs,
// the runs per burst. The logger drops all messages.
void Burst(benchmark::State& state, android_LogPriority minimum_priority) {
  const int32_t usual_priority = __android_log_set_minimum_priority(minimum_priority);
  __android_log_set_logger([](const __android_log_message*) {});
  const int requests = Rounds(1'000'000);
  const auto all = All();
  std::map<std::string, int64_t> runs;
  Turns turns;
  for (const auto& contender : all) {
    turns.Add(contender->name, [&, &contender = *contender, requests]() -> std::optional<int64_t> {
      LetItFallAsleep();
      const int64_t runs_before = contender.probe.runs();
      int64_t last = 0;
      const int64_t began_ns = NowNs();
      for (int i = 0; i < requests; ++i) {
        last = contender.probe.Announce();
        contender.worker->Trigger();
      }
      const int64_t took_ns = NowNs() - began_ns;
      if (!contender.probe.WaitFor(last)) return std::nullopt;
      AwaitQuiet(contender.probe);
      runs[contender.name] += contender.probe.runs() - runs_before;
      return took_ns;
    });
  }
  turns.Run(state, kNothingRan);
  for (const auto& [name, count] : runs) {
    state.counters[name + "_request_ns"] = state.counters[name + "_p50_ns"] / requests;
    state.counters[name + "_runs"] =
        static_cast<double>(count) / static_cast<double>(state.iterations());
  }
  __android_log_set_logger(__android_log_stderr_logger);
  __android_log_set_minimum_priority(usual_priority);
}

const Registration kRegistration([] {
  benchmark::RegisterBenchmark("trigger/idle", Idle)->UseManualTime()->Iterations(Rounds(5'000));
  benchmark::RegisterBenchmark("trigger/burst", Burst, ANDROID_LOG_WARN)
      ->UseManualTime()
      ->Iterations(3);
  benchmark::RegisterBenchmark("trigger/burst-debug", Burst, ANDROID_LOG_DEBUG)
      ->UseManualTime()
      ->Iterations(1);
});

}  // namespace

}  // namespace norvik::qel::bench
