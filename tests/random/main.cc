// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// quorvel_random_test: random steps of C calls and changes of the phone, against the library's
// promises. Runs go in child processes: a failure may abort or hang, and is then shrunk by trying
// again with fewer steps.
#include <fcntl.h>
#include <spawn.h>
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
#include <optional>
#include <string>
#include <vector>

#include "family.h"

extern char** environ;

namespace {

using namespace norvik::qel::random_test;  // NOLINT(google-build-using-namespace): its own program

// Longer than any step takes, also under a sanitizer on a busy machine.
constexpr std::chrono::seconds kPatience(100);
// While shrinking, where many attempts may hang.
constexpr std::chrono::seconds kShrinkingPatience(15);

std::optional<std::string> Read(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  std::string text{std::istreambuf_iterator<char>(stream), {}};
  return stream ? std::optional(std::move(text)) : std::nullopt;
}

// This program again, whose last words go to `output`. Whether it ends well.
bool RunChild(std::vector<std::string> arguments, const char* output) {
  arguments.insert(arguments.begin(), "quorvel_random_test");
  std::vector<char*> argv;
  argv.reserve(arguments.size() + 1);
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  if (output != nullptr) {
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, output, O_WRONLY, 0);
  }
  pid_t child = 0;
  const int error = posix_spawn(&child, "/proc/self/exe", &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  int status = 0;
  if (error != 0 || waitpid(child, &status, 0) != child) {
    fprintf(stderr, "quorvel_random_test: cannot run itself\n");
    exit(1);
  }
  return status == 0;
}

bool Fails(const std::string& family, const Steps& steps, const std::string& path) {
  std::ofstream(path) << StepsText(steps);
  return !RunChild({"--family", family, "--replay", path, "--child", "--patience",
                    std::to_string(kShrinkingPatience.count())},
                   "/dev/null");
}

// Delta debugging: drops ever smaller pieces as long as what is left fails.
Steps Shrink(const std::string& family, Steps steps, const std::string& path) {
  for (size_t piece = steps.size(); piece > 0; piece /= 2) {
    for (size_t begin = 0; begin < steps.size();) {
      Steps fewer(steps.begin(), steps.begin() + static_cast<ptrdiff_t>(begin));
      const size_t end = std::min(begin + piece, steps.size());
      fewer.insert(fewer.end(), steps.begin() + static_cast<ptrdiff_t>(end), steps.end());
      if (fewer.size() < steps.size() && Fails(family, fewer, path)) {
        steps = std::move(fewer);
      } else {
        begin = end;
      }
    }
  }
  return steps;
}

// Shrinks, and leaves the steps and their account.
int Report(const std::string& family, const Steps& steps, const std::string& name) {
  const std::string path = "random-failure-" + family + "-" + name + ".txt";
  fprintf(stderr, "\n%s fails with %zu steps, shrinking\n", family.c_str(), steps.size());
  const Steps few = Fails(family, steps, path) ? Shrink(family, steps, path) : steps;
  std::ofstream(path) << StepsText(few);
  fprintf(stderr, "steps that fail:\n%s", StepsText(few).c_str());
  RunChild({"--family", family, "--replay", path, "--child"}, nullptr);
  fprintf(stderr, "again with: quorvel_random_test --family %s --replay %s\n", family.c_str(),
          path.c_str());
  return 1;
}

}  // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): an exception may end the program
int main(int argc, char** argv) {
  std::vector<std::string> families = {"battery", "sensor", "thermal"};
  std::string only;
  uint64_t seed = 1;
  int runs = 10;
  size_t count = 250;
  std::vector<std::string> replays;
  bool child = false;
  bool bytes = false;
  int patience = kPatience.count();
  CLI::App app("Tries random steps, C calls and changes of the phone, against the promises.");
  app.footer("A run that fails is shrunk to few steps, which can be replayed.");
  app.add_option("--family", only, "this family alone: battery, sensor or thermal")
      ->check(CLI::IsMember(families));
  app.add_option("--seed", seed, "of the first run (1); the next runs have the next seeds");
  app.add_option("--runs", runs, "how many runs of each family (10)")->check(CLI::PositiveNumber);
  app.add_option("--steps", count, "how many steps a run has (250)")->check(CLI::PositiveNumber);
  app.add_option("--replay", replays, "runs the steps in these files, one run each")
      ->check(CLI::ExistingFile);
  app.add_flag("--bytes", bytes, "the files are inputs of a fuzz target");
  app.add_flag("--child", child, "in this process, and a failure is not shrunk");
  app.add_option("--patience", patience, "seconds that a step may take (100)");
  CLI11_PARSE(app, argc, argv);
  if (!only.empty()) families = {only};
  if (!replays.empty() && only.empty()) {
    fprintf(stderr, "quorvel_random_test: --replay needs --family\n");
    return 1;
  }
  for (const std::string& family : families) {
    const Grammar grammar = GrammarOf(family);
    const auto begin = std::chrono::steady_clock::now();
    size_t steps_done = 0;
    const size_t all = replays.empty() ? static_cast<size_t>(runs) : replays.size();
    // Where a child has got to.
    const std::string progress =
        std::filesystem::temp_directory_path() / ("quorvel-random-" + std::to_string(getpid()));
    for (size_t i = 0; i < all; ++i) {
      std::string name = std::to_string(seed + i);
      Steps steps;
      if (replays.empty()) {
        steps = StepsFromSeed(grammar, seed + i, count);
      } else {
        const std::optional<std::string> text = Read(replays[i]);
        std::string error = text ? "" : "cannot be read";
        if (bytes && text) {
          steps = StepsFromBytes(grammar,
                                 {reinterpret_cast<const uint8_t*>(text->data()), text->size()});
        } else if (text) {
          steps = StepsFromText(grammar, *text, error);
        }
        if (!error.empty()) {
          fprintf(stderr, "quorvel_random_test: %s: %s\n", replays[i].c_str(), error.c_str());
          return 1;
        }
        name = std::filesystem::path(replays[i]).stem();
      }
      steps_done += steps.size();
      if (child) {
        RunSteps(family, steps, std::chrono::seconds(patience));
        continue;
      }
      std::ofstream(progress) << StepsText(steps);
      const bool ends_well =
          RunChild({"--family", family, "--replay", progress, "--child"}, nullptr);
      std::filesystem::remove(progress);
      if (!ends_well) return Report(family, steps, name);
    }
    if (child) continue;
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    printf("%s: %zu runs, %zu steps, %.1f s\n", family.c_str(), all, steps_done, took.count());
  }
  return 0;
}
