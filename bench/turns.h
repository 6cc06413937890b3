// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace norvik::qel::bench {

inline int64_t NowNs() {
  return std::chrono::steady_clock::now().time_since_epoch() / std::chrono::nanoseconds(1);
}

// The duration of each round of a pass, in nanoseconds.
class Latencies {
 public:
  void Add(int64_t ns) { all_.push_back(ns); }
  // The duration that this share of the rounds did not exceed. Requires at least one round.
  double Quantile(double share) {
    const auto at = all_.begin() + static_cast<ptrdiff_t>(share * static_cast<double>(all_.size()));
    std::nth_element(all_.begin(), at, all_.end());
    return static_cast<double>(*at);
  }

 private:
  std::vector<int64_t> all_;
};

// Alternates between the library and its baselines, so that other activity on the machine affects
// all alike. The first one added is the library.
class Turns {
 public:
  // Runs one turn and returns its duration in nanoseconds; empty if it failed.
  using Take = std::function<std::optional<int64_t>()>;

  void Add(const std::string& name, Take take) { ways_.push_back({name, std::move(take), {}}); }

  // Runs all rounds of a pass. Each round starts with the next contender. Sets the counters
  // NAME_p50_ns and NAME_p99_ns, and NAME_p50_ratio and NAME_p99_ratio: the library's time divided
  // by the contender's. Returns false and reports `error` if a turn failed.
  bool Run(benchmark::State& state, const char* error) {
    for ([[maybe_unused]] auto round : state) {
      int64_t sum_ns = 0;
      ++begun_;
      for (size_t i = 0; i < ways_.size(); ++i) {
        Way& way = ways_[(begun_ + i) % ways_.size()];
        const std::optional<int64_t> ns = way.take();
        if (!ns) {
          state.SkipWithError(error);
          return false;
        }
        way.times.Add(*ns);
        sum_ns += *ns;
      }
      state.SetIterationTime(static_cast<double>(sum_ns) * 1e-9);
    }
    for (const auto& [suffix, share] : {std::pair("_p50", 0.50), std::pair("_p99", 0.99)}) {
      const double library_ns = ways_.front().times.Quantile(share);
      for (Way& way : ways_) {
        const double ns = way.times.Quantile(share);
        state.counters[way.name + suffix + "_ns"] = ns;
        state.counters[way.name + suffix + "_ratio"] = library_ns / ns;
      }
    }
    return true;
  }

 private:
  struct Way {
    std::string name;
    Take take;
    Latencies times;
  };

  std::vector<Way> ways_;
  size_t begun_ = 0;  // rounds
};

}  // namespace norvik::qel::bench
