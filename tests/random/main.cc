// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// quorvel_random_test: runs random steps (C calls and changes of the phone) and checks the
// library's promises. Each run has a child process, because a failure may abort or hang. A failing
// run is shrunk by repeating it with fewer steps.
#include <stdio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "environment.h"
#include "family.h"

namespace {

using namespace norvik::qel::random_test;  // NOLINT(google-build-using-namespace): its own program

// Limit for one step; longer than any step takes on a busy machine.
constexpr std::chrono::seconds kPatience(norvik::qel::kSanitized ? 100 : 20);
// Limit while shrinking, when many attempts may hang.
constexpr std::chrono::seconds kShrinkingPatience(15);

[[noreturn]] void Refuse(const std::string& why) {
  fprintf(stderr, "quorvel_random_test: %s\n", why.c_str());
  exit(1);
}

// The steps as text, a line each.
std::string TextOf(const Steps& steps) {
  std::string text;
  for (const Step& step : steps) text += StepText(step) + "\n";
  return text;
}

// Runs the steps in a child process. Returns whether it succeeds.
bool Passes(std::unique_ptr<Family>& family, const Steps& steps, std::chrono::seconds patience,
            bool silent) {
  fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    if (silent && freopen("/dev/null", "w", stderr) == nullptr) abort();
    family->Run(steps, patience);
    family.reset();
    exit(0);  // runs the leak checker
  }
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child) Refuse("cannot start a process");
  return status == 0;
}

// Delta debugging: drops ever smaller pieces as long as the remaining steps fail.
Steps Shrink(std::unique_ptr<Family>& family, Steps steps) {
  for (size_t piece = steps.size(); piece > 0; piece /= 2) {
    for (size_t begin = 0; begin < steps.size();) {
      Steps fewer = steps;
      const auto first = fewer.begin() + static_cast<ptrdiff_t>(begin);
      fewer.erase(first, first + static_cast<ptrdiff_t>(std::min(piece, steps.size() - begin)));
      if (Passes(family, fewer, kShrinkingPatience, /*silent=*/true)) {
        begin += piece;
      } else {
        steps = std::move(fewer);
      }
    }
  }
  return steps;
}

// Reads steps from a file: text with one step per line and "#" comments, or bytes from a fuzzer.
Steps Read(const Grammar& grammar, const std::string& path, bool bytes) {
  std::ifstream stream(path, std::ios::binary);
  if (bytes) {
    const std::vector<uint8_t> input{std::istreambuf_iterator<char>(stream), {}};
    return StepsFromBytes(grammar, input);
  }
  Steps steps;
  int number = 0;
  for (std::string line; std::getline(stream, line);) {
    ++number;
    std::istringstream words(line.substr(0, line.find('#')));
    const Step step{std::istream_iterator<std::string>(words), {}};
    if (step.empty()) continue;
    if (VerbOf(grammar, step) == nullptr) {
      Refuse(std::string(path)
                 .append(": line ")
                 .append(std::to_string(number))
                 .append(": not a step: ")
                 .append(line));
    }
    steps.push_back(step);
  }
  return steps;
}

}  // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): an exception may end the program
int main(int argc, char** argv) {
  std::vector<std::string> names = {"battery", "sensor", "thermal"};
  std::string only;
  uint64_t seed = 1;
  size_t runs = 10;
  size_t count = 250;
  std::vector<std::string> replays;
  bool bytes = false;
  CLI::App app("Tries random steps, C calls and changes of the phone, against the promises.");
  app.footer("A run that fails is shrunk to few steps, which can be replayed.");
  app.add_option("--family", only, "this family alone: battery, sensor or thermal")
      ->check(CLI::IsMember(names));
  app.add_option("--seed", seed, "of the first run (1); the next runs have the next seeds");
  app.add_option("--runs", runs, "how many runs of each family (10)")->check(CLI::PositiveNumber);
  app.add_option("--steps", count, "how many steps a run has (250)")->check(CLI::PositiveNumber);
  app.add_option("--replay", replays, "runs the steps in these files, one run each")
      ->check(CLI::ExistingFile)
      ->needs("--family");
  app.add_flag("--bytes", bytes, "the files are inputs of a fuzz target");
  CLI11_PARSE(app, argc, argv);
  if (!only.empty()) names = {only};
  if (!replays.empty()) runs = replays.size();
  for (const std::string& name : names) {
    std::unique_ptr<Family> family = MakeFamily(name);
    const auto begin = std::chrono::steady_clock::now();
    size_t steps_done = 0;
    for (size_t i = 0; i < runs; ++i) {
      Steps steps = replays.empty() ? StepsFromSeed(family->grammar(), seed + i, count)
                                    : Read(family->grammar(), replays[i], bytes);
      steps_done += steps.size();
      if (Passes(family, steps, kPatience, /*silent=*/false)) continue;
      fprintf(stderr, "\n%s fails with %zu steps, shrinking\n", name.c_str(), steps.size());
      if (!Passes(family, steps, kShrinkingPatience, /*silent=*/true))
        steps = Shrink(family, steps);
      const std::string run = replays.empty() ? std::to_string(seed + i)
                                              : std::filesystem::path(replays[i]).stem().string();
      std::filesystem::path path = std::filesystem::read_symlink("/proc/self/exe");
      path.replace_filename("failure-").concat(name).concat("-").concat(run).concat(".txt");
      std::ofstream(path) << TextOf(steps);
      fprintf(stderr, "steps that fail:\n%s", TextOf(steps).c_str());
      static_cast<void>(Passes(family, steps, kPatience, /*silent=*/false));
      fprintf(stderr, "again with: quorvel_random_test --family %s --replay %s\n", name.c_str(),
              path.c_str());
      return 1;
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    printf("%s: %zu runs, %zu steps, %.1f s\n", name.c_str(), runs, steps_done, took.count());
  }
  return 0;
}
