// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The main program: Google Benchmark with alternating passes, so that other activity on the machine
// affects the library and its baselines alike.
#include <android/binder_process.h>
#include <android/log.h>
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "benchmarks.h"
#include "threads.h"

int main(int argc, char** argv) {
  using norvik::qel::bench::Cpu;
  std::vector<std::string> arguments = {
      argv[0],
      norvik::qel::bench::IsQuick() ? "--benchmark_repetitions=2" : "--benchmark_repetitions=9",
      "--benchmark_enable_random_interleaving=true",
      "--benchmark_display_aggregates_only=true",
  };
  arguments.insert(arguments.end(), argv + 1, argv + argc);  // last, so that they take precedence
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
  benchmark::Initialize(&count, pointers.data());
  if (benchmark::ReportUnrecognizedArguments(count, pointers.data())) return 1;
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
