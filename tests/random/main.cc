// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// quorvel_random_test: runs random steps (C calls and changes of the phone) and checks the
// library's promises. Each run has a child process, because a failure may abort or hang. A failing
// run is shrunk by repeating it with fewer steps.
#include <getopt.h>
#include <stdio.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
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

constexpr char kUsage[] =
    "use [--family battery|sensor|thermal] [--seed N] [--runs N] [--steps N], or --family NAME "
    "--replay [--bytes] FILE...";
constexpr option kOptions[] = {{"family", 1, nullptr, 'f'},
                               {"seed", 1, nullptr, 's'},
                               {"runs", 1, nullptr, 'r'},
                               {"steps", 1, nullptr, 'n'},
                               {"replay", 0, nullptr, 'p'},
                               {"bytes", 0, nullptr, 'b'},
                               {}};

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
  if (!stream) Refuse("cannot read " + path);
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
      fprintf(stderr, "%s: line %d: not a step: %s\n", path.c_str(), number, line.c_str());
      exit(1);
    }
    steps.push_back(step);
  }
  return steps;
}

}  // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): an exception may end the program
int main(int argc, char** argv) {
  std::vector<std::string> names = {"battery", "sensor", "thermal"};
  std::map<int, uint64_t> values = {{'s', 1}, {'r', 10}, {'n', 250}, {'b', 0}, {'p', 0}};
  for (int letter; (letter = getopt_long(argc, argv, "", kOptions, nullptr)) != -1;) {
    const std::string value = letter == '?' ? "?" : optarg == nullptr ? "1" : optarg;
    if (letter == 'f' && std::count(names.begin(), names.end(), value) > 0) {
      names = {value};
    } else if (value.find_first_not_of("0123456789") != std::string::npos ||
               (values[letter] = strtoull(value.c_str(), nullptr, 10)) == 0) {
      Refuse(kUsage);
    }
  }
  const std::vector<std::string> replays(argv + optind, argv + argc);
  const bool replay = values['p'] != 0;
  if (replay == replays.empty() || (replay && names.size() > 1)) Refuse(kUsage);
  const size_t runs = replay ? replays.size() : values['r'];
  for (const std::string& name : names) {
    std::unique_ptr<Family> family = MakeFamily(name);
    const auto begin = std::chrono::steady_clock::now();
    size_t steps_done = 0;
    for (size_t i = 0; i < runs; ++i) {
      Steps steps = replays.empty() ? StepsFromSeed(family->grammar(), values['s'] + i, values['n'])
                                    : Read(family->grammar(), replays[i], values['b'] != 0);
      steps_done += steps.size();
      if (Passes(family, steps, kPatience, /*silent=*/false)) continue;
      fprintf(stderr, "\n%s fails with %zu steps, shrinking\n", name.c_str(), steps.size());
      if (!Passes(family, steps, kShrinkingPatience, /*silent=*/true))
        steps = Shrink(family, steps);
      const std::string run = replays.empty() ? std::to_string(values['s'] + i)
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
