// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The cost of a cached value, compared with a call that returns at once.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <optional>
#include <string>

#include "benchmarks.h"
#include "quorvel.h"
#include "quorvel/simulated/health.h"
#include "turns.h"

// Returns its argument.
extern "C" int EmptyGetter(void* handle, bool use_cached);

namespace norvik::qel::bench {

namespace {

using Getter = int (*)(void* handle, bool use_cached);

// The number of calls per measurement. For a single call, reading the clock would dominate.
constexpr int kCalls = 1000;

// The duration of kCalls calls; empty if they returned different values.
template <Getter kGetter>
std::optional<int64_t> TimeOfCalls(void* handle) {
  const int expected = kGetter(handle, /*use_cached=*/true);
  int sum = 0;
  const int64_t began_ns = NowNs();
  for (int i = 0; i < kCalls; ++i) sum += kGetter(handle, /*use_cached=*/true);
  const int64_t took_ns = NowNs() - began_ns;
  return sum == expected * kCalls ? std::optional(took_ns) : std::nullopt;
}

// Further counters: the time of one call each, and above_ns, how much longer the library takes.
void Cached(benchmark::State& state) {
  simulated::Health health;
  health.Start();
  void* handle = nullptr;
  InitBatteryInfo(&handle);
  if (GetBatteryLevel(handle, /*use_cached=*/false) >= 0) {
    Turns turns;
    turns.Add("library", [&] { return TimeOfCalls<GetBatteryLevel>(handle); });
    turns.Add("empty", [&] { return TimeOfCalls<EmptyGetter>(handle); });
    turns.Run(state, "a getter returned different values");
  } else {
    state.SkipWithError("no battery level");
  }
  for (const char* const name : {"library", "empty"}) {
    state.counters[std::string(name) + "_call_ns"] =
        state.counters[std::string(name) + "_p50_ns"] / kCalls;
  }
  state.counters["above_ns"] = state.counters["library_call_ns"] - state.counters["empty_call_ns"];
  DeinitBatteryInfo(&handle);
}

const Registration kRegistration([] {
  benchmark::RegisterBenchmark("getter/cached", Cached)
      ->UseManualTime()
      ->Iterations(Rounds(20'000));
});

}  // namespace

}  // namespace norvik::qel::bench
