// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The main program: Google Benchmark with alternating passes, so that other activity on the machine
// affects the library and its baselines alike. --quick only checks that all benchmarks run.
#include <android/binder_process.h>
#include <android/log.h>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "cpus.h"
#include "quick.h"
#include "registration.h"

namespace norvik::qel::bench {

namespace {

bool is_quick = false;

}  // namespace

bool IsQuick() {
  return is_quick;
}

}  // namespace norvik::qel::bench

int main(int argc, char** argv) {
  using norvik::qel::bench::Cpu;
  const auto is_quick_flag = [](std::string_view argument) { return argument == "--quick"; };
  norvik::qel::bench::is_quick = std::any_of(argv + 1, argv + argc, is_quick_flag);
  std::vector<std::string> arguments = {
      argv[0],
      norvik::qel::bench::is_quick ? "--benchmark_repetitions=2" : "--benchmark_repetitions=9",
      "--benchmark_enable_random_interleaving=true",
      "--benchmark_display_aggregates_only=true",
  };
  // Last, so that they take precedence.
  std::remove_copy_if(argv + 1, argv + argc, std::back_inserter(arguments), is_quick_flag);
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  int count = static_cast<int>(pointers.size());
  pointers.push_back(nullptr);

  // Without debug messages: the cost of a log is not the library's.
  __android_log_set_minimum_priority(ANDROID_LOG_WARN);
  {
    const norvik::qel::bench::WorkersAreMadeHere binder_threads;
    ABinderProcess_startThreadPool();
  }
  norvik::qel::bench::PinThisThread(Cpu::kCaller);
  norvik::qel::bench::Registration::RegisterAll();
  benchmark::Initialize(&count, pointers.data());
  if (benchmark::ReportUnrecognizedArguments(count, pointers.data())) return 1;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
