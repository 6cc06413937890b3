// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <vector>

namespace norvik::qel::bench {

inline int64_t NowNs() {
  return std::chrono::steady_clock::now().time_since_epoch() / std::chrono::nanoseconds(1);
}

// The duration of each round of a pass, in nanoseconds.
class Latencies {
 public:
  Latencies() = default;
  explicit Latencies(size_t rounds) { all_.reserve(rounds); }

  void Add(int64_t ns) { all_.push_back(ns); }
  // Also reports the time to the benchmark.
  void Add(int64_t ns, benchmark::State& state) {
    Add(ns);
    state.SetIterationTime(static_cast<double>(ns) * 1e-9);
  }

  // The duration that this share of the rounds did not exceed. Requires at least one round.
  double Quantile(double share) {
    const auto at = all_.begin() + static_cast<ptrdiff_t>(share * static_cast<double>(all_.size()));
    std::nth_element(all_.begin(), at, all_.end());
    return static_cast<double>(*at);
  }

 private:
  std::vector<int64_t> all_;
};

}  // namespace norvik::qel::bench
