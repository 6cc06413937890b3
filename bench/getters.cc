// What a cached value costs beside a call that returns at once.
#include <benchmark/benchmark.h>

#include "bench/empty.h"
#include "bench/registration.h"
#include "devices/simulated/health.h"
#include "quorvel.h"

namespace norvik::qel::bench {

namespace {

using Getter = int (*)(void* handle, bool use_cached);

template <Getter kGetter>
void Cached(benchmark::State& state) {
  simulated::Health health;
  health.Start();
  void* handle = nullptr;
  InitBatteryInfo(&handle);
  if (GetBatteryLevel(handle, /*use_cached=*/false) < 0) state.SkipWithError("no battery level");
  for ([[maybe_unused]] auto round : state) {
    benchmark::DoNotOptimize(kGetter(handle, /*use_cached=*/true));
  }
  DeinitBatteryInfo(&handle);
}

const Registration kRegistration([] {
  benchmark::RegisterBenchmark("getter/cached/library", Cached<GetBatteryLevel>);
  benchmark::RegisterBenchmark("getter/cached/empty", Cached<EmptyGetter>);
});

}  // namespace

}  // namespace norvik::qel::bench
