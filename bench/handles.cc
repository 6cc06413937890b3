// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The cost of a handle without clients: its memory, and the time to create and destroy it, compared
// with the same number of threads that only wait to end.
//
// No service is declared meanwhile. Creating a handle looks up no service. Neither does destroying
// a sensor or thermal handle that never had a client. Destroying a battery handle asks whether the
// health service is declared and, if so, looks it up: if the service did not run, that would take
// five seconds.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "benchmarks.h"
#include "process_state.h"
#include "quorvel.h"
#include "threads.h"
#include "turns.h"
#include "waiting.h"
#include "workers.h"

namespace norvik::qel::bench {

namespace {

struct Family {
  const char* name;
  int threads;
  void (*make)(void** handle);
  void (*destroy)(void** handle);
};

int Threads() {
  return LibraryThreadCount() + static_cast<int>(ThreadIdsNamed({kBareThreadName}).size());
}

// A handle of the library.
class Handle {
 public:
  explicit Handle(const Family& family) : family_(family) { family_.make(&handle_); }
  ~Handle() { family_.destroy(&handle_); }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

 private:
  const Family& family_;
  void* handle_ = nullptr;
};

// The same number of threads, ended one after another as in the library.
class BareThreads {
 public:
  explicit BareThreads(const Family& family) {
    for (int i = 0; i < family.threads; ++i) threads_.push_back(MakeBareWorker(probe_));
  }

 private:
  Probe probe_;
  std::vector<std::unique_ptr<Worker>> threads_;
};

template <typename Made>
bool HasItsThreads(const Family& family) {
  const Made made(family);
  return Eventually([&] { return Threads() == family.threads; });
}

// In between, the threads start and fall asleep, as those of a handle in use. Destroying a handle
// whose threads have not started logs a warning.
template <typename Made>
int64_t TimeOf(const Family& family) {
  std::optional<Made> made;
  int64_t made_in_ns = 0;
  {
    const WorkersAreMadeHere here;
    const int64_t began_ns = NowNs();
    made.emplace(family);
    made_in_ns = NowNs() - began_ns;
  }
  LetItFallAsleep();
  const int64_t began_ns = NowNs();
  made.reset();
  return made_in_ns + (NowNs() - began_ns);
}

void MakeAndDestroy(benchmark::State& state, Family family) {
  if (!HasItsThreads<Handle>(family) || !HasItsThreads<BareThreads>(family)) {
    return state.SkipWithError("unexpected number of threads");
  }
  Turns turns;
  turns.Add("library", [&] { return TimeOf<Handle>(family); });
  turns.Add("threads", [&] { return TimeOf<BareThreads>(family); });
  turns.Run(state, "a handle could not be made");
  if (!Eventually([] { return Threads() == 0; })) state.SkipWithError("threads were left running");
}

struct Memory {
  // Used memory according to the C library's allocator, with its headers. The allocator counts a
  // few freed blocks of each size as used, some dozen bytes per handle.
  int64_t heap_bytes;
  int64_t resident_bytes;  // 0 if the kernel does not report it
};

Memory TakenNow() {
  const struct mallinfo2 heap = mallinfo2();
  return {.heap_bytes = static_cast<int64_t>(heap.uordblks + heap.hblkhd),
          .resident_bytes = ResidentBytes()};
}

// Counters, each for one handle. A thread that has not run yet has not touched its stack, so all
// threads must be asleep before anything is read.
void TakeMemory(benchmark::State& state, Family family) {
  constexpr int kHandles = 64;
  // Created before and kept, so that they use up the stacks of earlier threads: the C library
  // caches 40 MB of stacks for new threads, five of the usual size.
  constexpr int kEarlierHandles = 8;
  std::array<std::optional<Handle>, kEarlierHandles + kHandles> handles;  // not on the heap
  int made = 0;
  const auto make = [&](int count) {
    for (int i = 0; i < count; ++i) handles.at(static_cast<size_t>(made++)).emplace(family);
    return LibraryThreadsSettle(made * family.threads);
  };
  for ([[maybe_unused]] auto round : state) {
    if (!make(kEarlierHandles)) return state.SkipWithError("unexpected number of threads");
    const int threads_before = LibraryThreadCount();
    malloc_trim(/*pad=*/0);  // otherwise handles would reuse memory that is already resident
    const Memory before = TakenNow();
    if (!make(kHandles)) return state.SkipWithError("unexpected number of threads");
    const Memory after = TakenNow();
    if (before.resident_bytes == 0 || after.resident_bytes == 0) {
      return state.SkipWithError("the kernel does not report the resident memory");
    }
    const auto per_handle = [](int64_t sum) { return static_cast<double>(sum) / kHandles; };
    state.counters["heap_bytes"] = per_handle(after.heap_bytes - before.heap_bytes);
    state.counters["resident_bytes"] = per_handle(after.resident_bytes - before.resident_bytes);
    state.counters["threads"] = per_handle(LibraryThreadCount() - threads_before);
  }
}

const Registration kRegistration([] {
  for (const Family& family : {Family{"battery", 2, InitBatteryInfo, DeinitBatteryInfo},
                               Family{"sensor", 3, InitSensorInfo, DeinitSensorInfo},
                               Family{"thermal", 2, InitThermalInfo, DeinitThermalInfo}}) {
    const std::string name = family.name;
    benchmark::RegisterBenchmark(("handle/" + name).c_str(), MakeAndDestroy, family)
        ->UseManualTime()
        ->Iterations(Rounds(2'000));
    benchmark::RegisterBenchmark(("memory/" + name).c_str(), TakeMemory, family)
        ->Iterations(1)
        ->Repetitions(1);
  }
});

}  // namespace

}  // namespace norvik::qel::bench
