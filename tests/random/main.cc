// quorvel_random_test: random steps of C calls and device changes, held against a model.
#include <signal.h>
#include <stdio.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "random_run.h"

namespace {

using norvik::qel::random_test::Choices;
using norvik::qel::random_test::RunRandomTest;

// A client's call or the library that never returns ends the program, too.
void OnHang(int /*signal*/) {
  constexpr char kText[] = "quorvel_random_test: a run hangs\n";
  static_cast<void>(!write(STDERR_FILENO, kText, sizeof kText - 1));
  abort();
}

}  // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): what nobody expects may end the program
int main(int argc, char** argv) {
  std::vector<std::string> families = {"battery", "sensor", "thermal"};
  uint64_t seed = 1;
  int runs = 10;
  size_t bytes = 1000;
  std::vector<std::string> files;
  CLI::App app("Tries random steps, C calls and changes of the device, against a model.");
  app.footer("A run that fails prints what has been done, and how to do it again.");
  std::string only;
  app.add_option("--family", only, "this family alone: battery, sensor or thermal")
      ->check(CLI::IsMember(families));
  app.add_option("--seed", seed, "of the first run (1); the next runs have the next seeds");
  app.add_option("--runs", runs, "how many runs of each family (10)")->check(CLI::PositiveNumber);
  app.add_option("--bytes", bytes, "how many decisions a run has (1000); a step takes a few")
      ->check(CLI::PositiveNumber);
  app.add_option("FILE", files, "the decisions, as a fuzzer writes them")->check(CLI::ExistingFile);
  CLI11_PARSE(app, argc, argv);
  if (!only.empty()) families = {only};
  signal(SIGALRM, OnHang);
  for (const std::string& family : families) {
    const auto begin = std::chrono::steady_clock::now();
    long steps = 0;
    int done = 0;
    for (const std::string& file : files) {
      std::ifstream stream(file, std::ios::binary);
      const std::vector<uint8_t> content{std::istreambuf_iterator<char>(stream), {}};
      if (!stream) {
        fprintf(stderr, "quorvel_random_test: cannot read %s\n", file.c_str());
        return 1;
      }
      alarm(600);
      std::string origin = "--family ";
      origin.append(family).append(" ").append(file);
      steps += RunRandomTest(family, Choices(content), origin);
      ++done;
    }
    for (int i = 0; files.empty() && i < runs; ++i, ++done) {
      const std::string origin = "--family " + family + " --seed " + std::to_string(seed + i) +
                                 " --bytes " + std::to_string(bytes) + " --runs 1";
      alarm(600);
      steps += RunRandomTest(family, Choices(seed + i, bytes), origin);
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    printf("%s: %d runs, %ld steps, %.1f s\n", family.c_str(), done, steps, took.count());
  }
  return 0;
}
