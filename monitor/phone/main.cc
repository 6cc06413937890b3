// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// quorvel on a phone: watches, asks and dumps the phone's own services, in text.
#include "cli/commands.h"
#include "cli/program.h"
#include "phone/command_line.h"

namespace norvik::qel::monitor {

namespace {

int RunCommand(const Options& options, Output& output) {
  switch (options.command) {
    case Options::Command::kHelp:
      output.Explain(PhoneUsage());
      return EXIT_SUCCESS;
    case Options::Command::kVersion:
      output.Explain(Version());
      return EXIT_SUCCESS;
    case Options::Command::kDump:
      return Dump(options, output);
    default:
      return options.family->run(options, output);
  }
}

std::unique_ptr<Output> MakeOutput(const Options& /*options*/) {
  return MakeTextOutput();
}

constexpr Program kProgram = {
    .parse = ParsePhoneOptions, .make_output = MakeOutput, .run = RunCommand};

}  // namespace

}  // namespace norvik::qel::monitor

int main(int argc, char** argv) {
  using norvik::qel::monitor::kProgram;
  return norvik::qel::monitor::RunProgram(kProgram, argc, argv);
}
