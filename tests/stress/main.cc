// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// quorvel_stress_test: far more of everything than a device ever sees, and what is left afterwards.
#include <malloc.h>
#include <stdio.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "environment.h"
#include "hang_guard.h"
#include "process_state.h"
#include "silent_process.h"
#include "storm.h"

namespace {

using namespace norvik::qel::stress;  // NOLINT(google-build-using-namespace): its own program

constexpr double kReports = 100'000;
constexpr double kDeaths = 10'000;

struct Family {
  const char* name;
  std::unique_ptr<Subject> (*make)();
};
constexpr Family kFamilies[] = {
    {"battery", MakeBattery},
    {"thermal", MakeThermal},
    {"thermal-hidl", MakeHidlThermal},
    {"sensor", MakeSensors},
};

// The fake platform keeps threads that it once needed: two pools of at most 16 for the program.
// There are the main thread and, under the sanitizers, one more.
constexpr long kOtherThreads = 16 + 16 + 1 + 1;
// What the allocator may need more after a storm than after a small one.
constexpr long kSlackKb = 4L * 1024;

struct Left {
  long descriptors = 0;
  long resident_kb = 0;  // 0 under the sanitizers, whose own memory grows with time
};

Left MeasureAtRest(Subject& subject) {
  subject.Kill();  // whose threads are not the program's
  // A thread that has been joined, or whose process has died, can be listed for a moment still.
  Await(
      "threads that have to end",
      [] {
        const long library = norvik::qel::LibraryThreadCount();
        const long others = static_cast<long>(norvik::qel::ThreadIds().size()) - library;
        return library + std::max(others - kOtherThreads, 0L);
      },
      0);
  Settle();
  Left left = {.descriptors = norvik::qel::Descriptors()};
  if (norvik::qel::kSanitized) return left;
  malloc_trim(0);
  left.resident_kb = norvik::qel::ResidentBytes() / 1024;
  if (left.resident_kb == 0) Fail("the kernel does not tell the resident memory");
  return left;
}

void RunStorm(const Family& family, Kind kind, double counted, uint64_t seed) {
  norvik::qel::RestartHangGuard("start", std::chrono::minutes(5));
  const std::unique_ptr<Subject> subject = family.make();
  if (kind == Kind::kDeaths && !subject->survives_deaths()) return;
  const int count = std::max(1, static_cast<int>(counted));
  // A small one first: what is kept for ever has been made then.
  static_cast<void>(Storm(*subject, kind, std::min(count / 10, 500) + 1, seed + 1'000'000));
  const Left before = MeasureAtRest(*subject);
  const auto begin = std::chrono::steady_clock::now();
  const std::string done = Storm(*subject, kind, count, seed);
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
  const Left after = MeasureAtRest(*subject);
  printf("%s: %s (%.1f s)\n    descriptors %ld -> %ld, resident %.1f -> %.1f MB\n", family.name,
         done.c_str(), took.count(), before.descriptors, after.descriptors,
         static_cast<double>(before.resident_kb) / 1024,
         static_cast<double>(after.resident_kb) / 1024);
  fflush(stdout);
  ExpectEqual(after.descriptors, before.descriptors, "descriptors left behind");
  if (after.resident_kb > before.resident_kb + kSlackKb) Fail("memory grows");
}

}  // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): an exception may end the program
int main(int argc, char** argv) {
  std::string only;
  double scale = 1;
  double seconds = 0;
  uint64_t seed = 1;
  std::vector<std::string> names;
  for (const Family& family : kFamilies) names.emplace_back(family.name);
  CLI::App app(
      "100,000 reports and 10,000 deaths of the service in each family, while clients and handles "
      "come and go, and what they leave behind.");
  app.footer("Ends with 1 when something is not as documented, or more is left than there was.");
  app.add_option("--family", only, "this family alone: battery, sensor, thermal or thermal-hidl")
      ->check(CLI::IsMember(names));
  app.add_option("--scale", scale, "this many times as many (1)")->check(CLI::PositiveNumber);
  app.add_option("--seconds", seconds,
                 "again with the next seeds until that much time has passed; once at least")
      ->check(CLI::PositiveNumber);
  app.add_option("--seed", seed, "of the first time (1)");
  CLI11_PARSE(app, argc, argv);
  // Memory is comparable only when the allocator does not make more room the more threads meet.
  mallopt(M_ARENA_MAX, 1);
  norvik::qel::SetUpSilentProcess();
  const auto begin = std::chrono::steady_clock::now();
  do {
    printf("seed %llu\n", static_cast<unsigned long long>(seed));
    for (const Family& family : kFamilies) {
      if (!only.empty() && only != family.name) continue;
      RunStorm(family, Kind::kReports, kReports * scale, seed);
      RunStorm(family, Kind::kDeaths, kDeaths * scale, seed);
    }
    ++seed;
  } while (std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count() <
           seconds);
  printf("all stress tests over, nothing left behind\n");
  return 0;
}
