// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Helpers for all files with benchmarks.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <stdexcept>

namespace norvik::qel::bench {

// Whether to only check that everything runs: few rounds, meaningless figures.
inline bool IsQuick() {
  return std::getenv("QUORVEL_BENCH_QUICK") != nullptr;
}

// `count` rounds, or a hundredth of them in quick mode.
inline int Rounds(int count) {
  return IsQuick() ? (count + 99) / 100 : count;
}

// Registers the benchmarks of a file before main().
struct Registration {
  explicit Registration(void (*function)()) { function(); }
};

// The number of heap allocations of all threads of the process so far.
int64_t AllocationCount();

// Checks a step without which the benchmark would measure something else.
inline void Must(bool done) {
  if (!done) throw std::runtime_error("the benchmark could not be prepared");
}

}  // namespace norvik::qel::bench
