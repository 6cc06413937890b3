// quorvel_histories: random histories of C calls and device changes, held against a model.
#include <getopt.h>
#include <signal.h>
#include <stdio.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz/history.h"

namespace {

using norvik::qel::fuzz::Choices;
using norvik::qel::fuzz::RunHistory;

constexpr char kUsage[] =
    "usage: quorvel_histories [--family NAME] [--seed N] [--runs N] [--bytes N]\n"
    "       quorvel_histories --family NAME --file FILE...\n"
    "\n"
    "  --family NAME  battery, sensor or thermal; all three unless given\n"
    "  --seed N       of the first run (1); the next runs have the next seeds\n"
    "  --runs N       how many runs of each family (10)\n"
    "  --bytes N      how many decisions a run has (1000); a step takes a few\n"
    "  --file FILE    the decisions, as a fuzzer writes them\n"
    "\n"
    "A run that fails prints what has been done, and how to do it again.\n";

// A client's call or the library that never returns ends the program, too.
void OnHang(int /*signal*/) {
  constexpr char kText[] = "quorvel_histories: a run hangs\n";
  static_cast<void>(!write(STDERR_FILENO, kText, sizeof kText - 1));
  abort();
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> families = {"battery", "sensor", "thermal"};
  uint64_t seed = 1;
  int runs = 10;
  size_t bytes = 1000;
  std::vector<std::string> files;
  const option options[] = {{"family", required_argument, nullptr, 'f'},
                            {"seed", required_argument, nullptr, 's'},
                            {"runs", required_argument, nullptr, 'r'},
                            {"bytes", required_argument, nullptr, 'b'},
                            {"file", required_argument, nullptr, 'i'},
                            {"help", no_argument, nullptr, 'h'},
                            {}};
  for (int choice; (choice = getopt_long(argc, argv, "h", options, nullptr)) != -1;) {
    switch (choice) {
      case 'f':
        families = {optarg};
        break;
      case 's':
        seed = std::strtoull(optarg, nullptr, 10);
        break;
      case 'r':
        runs = std::atoi(optarg);
        break;
      case 'b':
        bytes = std::strtoull(optarg, nullptr, 10);
        break;
      case 'i':
        files.emplace_back(optarg);
        break;
      case 'h':
        fputs(kUsage, stdout);
        return 0;
      default:
        fputs(kUsage, stderr);
        return 2;
    }
  }
  for (; optind < argc; ++optind) files.emplace_back(argv[optind]);
  signal(SIGALRM, OnHang);
  for (const std::string& family : families) {
    const auto begin = std::chrono::steady_clock::now();
    long steps = 0;
    int done = 0;
    for (const std::string& file : files) {
      std::ifstream stream(file, std::ios::binary);
      const std::vector<uint8_t> content{std::istreambuf_iterator<char>(stream), {}};
      alarm(600);
      std::string origin = "--family ";
      origin.append(family).append(" --file ").append(file);
      steps += RunHistory(family, Choices(content), origin);
      ++done;
    }
    for (int i = 0; files.empty() && i < runs; ++i, ++done) {
      const std::string origin = "--family " + family + " --seed " + std::to_string(seed + i) +
                                 " --bytes " + std::to_string(bytes) + " --runs 1";
      alarm(600);
      steps += RunHistory(family, Choices(seed + i, bytes), origin);
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    printf("%s: %d runs, %ld steps, %.1f s\n", family.c_str(), done, steps, took.count());
  }
  return 0;
}
