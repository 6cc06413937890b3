// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// quorvel_stress_test: far more of everything than a device ever sees, and what is left afterwards.
#include <malloc.h>
#include <stdio.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "guard.h"
#include "silent_process.h"
#include "stress_tests.h"

namespace {

using norvik::qel::stress::Await;
using norvik::qel::stress::ExpectEqual;
using norvik::qel::stress::Fail;
using norvik::qel::stress::Figures;
using norvik::qel::stress::Measure;
using norvik::qel::stress::Settle;
using norvik::qel::stress::Subject;

struct Counts {
  double reports = 100'000;
  double restarts = 10'000;
  double outages = 300;
  double late = 1'000;
  double teardowns = 200;
  double hostile = 20;
};

struct Family {
  const char* name;
  std::unique_ptr<Subject> (*make)();
};
constexpr Family kFamilies[] = {
    {"battery", norvik::qel::stress::MakeBattery},
    {"thermal", norvik::qel::stress::MakeThermal},
    {"thermal-hidl", norvik::qel::stress::MakeHidlThermal},
    {"sensor", norvik::qel::stress::MakeSensors},
};

// The fake platform keeps threads that it once needed: two pools of at most 16 for the program.
// There are the main thread and, under the sanitizers, one more.
constexpr long kOtherThreads = 16 + 16 + 1 + 1;
// What the allocator may need more after a stress test than after a small one.
constexpr long kSlackKb = 4L * 1024;

struct Left {
  Figures process;
  long held = 0;  // callbacks that the running service holds
};

void Compare(const Left& left_before, const Left& left_after) {
  const Figures& before = left_before.process;
  const Figures& after = left_after.process;
  printf("    threads of the library %ld -> %ld, others %ld -> %ld, descriptors %ld -> %ld",
         before.library_threads, after.library_threads, before.other_threads, after.other_threads,
         before.descriptors, after.descriptors);
  if (before.resident_kb != 0) {
    printf(", resident %.1f -> %.1f MB", static_cast<double>(before.resident_kb) / 1024,
           static_cast<double>(after.resident_kb) / 1024);
  }
  printf(", callbacks held %ld -> %ld\n", left_before.held, left_after.held);
  fflush(stdout);
  ExpectEqual(left_after.held, left_before.held, "callbacks left behind");
  ExpectEqual(after.library_threads, before.library_threads, "threads left behind");
  ExpectEqual(after.descriptors, before.descriptors, "descriptors left behind");
  if (after.resident_kb > before.resident_kb + kSlackKb) Fail("memory grows");
}

Left MeasureAtRest(Subject& subject) {
  const auto held = static_cast<long>(subject.held());
  subject.Kill();  // whose threads are not the program's
  // A thread that has been joined, or whose process has died, can be there for a moment still.
  const auto too_many = [] {
    const Figures figures = Measure();
    return figures.library_threads + std::max(figures.other_threads - kOtherThreads, 0L);
  };
  Await("threads that have to end", too_many, 0);
  Settle();
  return {.process = Measure(), .held = held};
}

void RunFamily(const Family& family, const Counts& counts, uint64_t seed) {
  using StressTest = std::function<std::string(Subject&, int count, uint64_t seed)>;
  struct Kind {
    const char* name;
    double count;
    StressTest run;
    bool of_death = false;
  };
  const Kind kinds[] = {
      {"reports", counts.reports, norvik::qel::stress::ReportStress},
      {"restarts", counts.restarts, norvik::qel::stress::RestartStress, true},
      {"outages", counts.outages, norvik::qel::stress::OutageStress, true},
      {"late services", counts.late, norvik::qel::stress::LateStress},
      {"ends of handles", counts.teardowns, norvik::qel::stress::TeardownStress},
      {"hostile values", counts.hostile,
       [](Subject& subject, int count, uint64_t) {
         return std::to_string(subject.Hostilities(count)) + " values, names and records";
       }},
  };
  for (const Kind& kind : kinds) {
    norvik::qel::stress::UnderWay(kind.name);
    const std::unique_ptr<Subject> subject = family.make();
    if (kind.of_death && subject->pauses() == 0) continue;
    const auto count = std::max(1, static_cast<int>(kind.count));
    // A small one first: what is kept for ever has been made then.
    kind.run(*subject, std::max(1, std::min(count / 10, 500)), seed + 1'000'000);
    const Left before = MeasureAtRest(*subject);
    const auto begin = std::chrono::steady_clock::now();
    const std::string done = kind.run(*subject, count, seed);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    printf("%s, %s: %s (%.1f s)\n", family.name, kind.name, done.c_str(), took.count());
    Compare(before, MeasureAtRest(*subject));
  }
}

}  // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): what nobody expects may end the program
int main(int argc, char** argv) {
  Counts counts;
  std::string only;
  double scale = 1;
  double seconds = 0;
  uint64_t seed = 1;
  std::vector<std::string> names;
  for (const Family& family : kFamilies) names.emplace_back(family.name);
  CLI::App app(
      "Reports, deaths, outages and ends of handles, far more than a device ever sees, and what "
      "they leave behind.");
  app.footer("Ends with 1 when something is not as documented, or more is left than there was.");
  app.add_option("--family", only, "this family alone: battery, sensor, thermal or thermal-hidl")
      ->check(CLI::IsMember(names));
  const auto add_number = [&](const char* name, double& number, const char* description) {
    app.add_option(name, number, description)->check(CLI::PositiveNumber);
  };
  add_number("--scale", scale, "this many times the counts below (1)");
  add_number(
      "--seconds", seconds,
      "stress tests with the next seeds until that much time has passed; once around at least");
  app.add_option("--seed", seed, "of the first round (1)");
  add_number("--reports", counts.reports, "reports while clients come and go (100000)");
  add_number("--restarts", counts.restarts,
             "deaths, most of them over before their death notifications are handled (10000)");
  add_number("--outages", counts.outages,
             "outages shorter than the retries, and as many that are longer (300)");
  add_number("--late", counts.late, "services that come up after their clients (1000)");
  add_number("--teardowns", counts.teardowns, "ends of a handle at each point (200)");
  add_number("--hostile", counts.hostile, "rounds of hostile values (20)");
  CLI11_PARSE(app, argc, argv);
  for (double* count : {&counts.reports, &counts.restarts, &counts.outages, &counts.late,
                        &counts.teardowns, &counts.hostile}) {
    *count *= scale;
  }
  // Memory is comparable only when the allocator does not make more room the more threads meet.
  mallopt(M_ARENA_MAX, 1);
  norvik::qel::SetUpSilentProcess();
  const auto begin = std::chrono::steady_clock::now();
  do {
    printf("seed %llu\n", static_cast<unsigned long long>(seed));
    for (const Family& family : kFamilies) {
      if (only.empty() || only == family.name) RunFamily(family, counts, seed);
    }
    ++seed;
  } while (std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count() <
           seconds);
  printf("all stress tests over, nothing left behind\n");
  return 0;
}
