// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// quorvel: a client of the library, for people to look at and for programs to read.
#include "cli/commands.h"
#include "cli/options.h"
#include "cli/program.h"
#include "cli/usage.h"
#include "output/output.h"

namespace norvik::qel::monitor {

namespace {

int RunCommand(const Options& options, Output& output) {
  switch (options.command) {
    case Options::Command::kHelp: {
      std::string usage = Usage(options.help_of);
      usage.pop_back();  // the output ends the line
      output.Explain(usage);
      return EXIT_SUCCESS;
    }
    case Options::Command::kVersion:
      output.Explain(Version());
      return EXIT_SUCCESS;
    case Options::Command::kWatch:
    case Options::Command::kGet:
      return options.family->run(options, output);
    case Options::Command::kDump:
      return Dump(options, output);
    case Options::Command::kDemo:
      return Demo(options, output);
    case Options::Command::kPlay:
      return Play(options, output);
    case Options::Command::kPlot:
      return Plot(options, output);
    case Options::Command::kRecord:
      return Record(options, output);
  }
  return EXIT_FAILURE;
}

std::unique_ptr<Output> MakeOutput(const Options& options) {
  return options.json && options.device != nullptr ? MakeJsonOutput() : MakeTextOutput();
}

constexpr Program kProgram = {.parse = ParseOptions, .make_output = MakeOutput, .run = RunCommand};

}  // namespace

}  // namespace norvik::qel::monitor

int main(int argc, char** argv) {
  using norvik::qel::monitor::kProgram;
  return norvik::qel::monitor::RunProgram(kProgram, argc, argv);
}
