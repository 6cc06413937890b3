// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The memory of a handle without clients.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdint>
#include <string>
#include <vector>

#include "library_threads.h"
#include "process_state.h"
#include "quorvel.h"
#include "registration.h"

namespace norvik::qel::bench {

namespace {

constexpr int kHandles = 64;

// Created before and kept, so that they use up the stacks of earlier threads: the C library caches
// 40 MB of stacks for new threads, five of the usual size.
constexpr int kEarlierHandles = 8;

struct Row {
  const char* name;
  int threads;
  void (*make)(void** handle);
  void (*destroy)(void** handle);
};

struct Memory {
  // Of the C library's allocator, including its headers. It counts a few freed blocks of each size
  // as used, which is some dozen bytes per handle.
  int64_t heap_bytes;
  int64_t resident_bytes;  // 0 when the kernel does not tell
};

Memory TakenNow() {
  const struct mallinfo2 heap = mallinfo2();
  return {.heap_bytes = static_cast<int64_t>(heap.uordblks + heap.hblkhd),
          .resident_bytes = ResidentBytes()};
}

// Handles of one kind, destroyed with this object.
class Handles {
 public:
  Handles(const Row& row, int count) : row_(row), handles_(static_cast<size_t>(count)) {
    for (void*& handle : handles_) row_.make(&handle);
  }
  ~Handles() {
    for (void*& handle : handles_) row_.destroy(&handle);
  }
  Handles(const Handles&) = delete;
  Handles& operator=(const Handles&) = delete;

 private:
  const Row& row_;
  std::vector<void*> handles_;
};

// Counters, each for one handle. A thread that has not run yet has not touched its stack, so all
// threads must be asleep before anything is read.
void TakeMemory(benchmark::State& state, Row row) {
  for ([[maybe_unused]] auto round : state) {
    const Handles earlier(row, kEarlierHandles);
    if (!LibraryThreadsSettle(kEarlierHandles * row.threads)) {
      state.SkipWithError("unexpected number of threads");
      return;
    }
    const int threads_before = LibraryThreadCount();
    malloc_trim(/*pad=*/0);  // or handles would come to lie where memory is resident already
    const Memory before = TakenNow();
    const Handles handles(row, kHandles);
    if (!LibraryThreadsSettle((kEarlierHandles + kHandles) * row.threads)) {
      state.SkipWithError("unexpected number of threads");
      return;
    }
    const Memory after = TakenNow();
    if (before.resident_bytes == 0 || after.resident_bytes == 0) {
      state.SkipWithError("the kernel does not report the resident memory");
      return;
    }
    const auto per_handle = [](int64_t sum) { return static_cast<double>(sum) / kHandles; };
    state.counters["heap_bytes"] = per_handle(after.heap_bytes - before.heap_bytes);
    state.counters["resident_bytes"] = per_handle(after.resident_bytes - before.resident_bytes);
    state.counters["threads"] = per_handle(LibraryThreadCount() - threads_before);
  }
}

const Registration kRegistration([] {
  for (const Row& row : {Row{"battery", 2, InitBatteryInfo, DeinitBatteryInfo},
                         Row{"sensor", 3, InitSensorInfo, DeinitSensorInfo},
                         Row{"thermal", 2, InitThermalInfo, DeinitThermalInfo}}) {
    const std::string name = std::string("memory/") + row.name;
    benchmark::RegisterBenchmark(name.c_str(), TakeMemory, row)->Iterations(1)->Repetitions(1);
  }
});

}  // namespace

}  // namespace norvik::qel::bench
