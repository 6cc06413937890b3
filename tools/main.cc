// quorvel: a client of the library, for people to look at and for programs to read.
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <unistd.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <system_error>

#include "tools/commands.h"
#include "tools/options.h"
#include "tools/output.h"
#include "tools/usage.h"

namespace norvik::qel::tool {

void Complain(std::string text) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  fprintf(stderr, "quorvel: %s\n", text.c_str());
}

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
      output.Explain("quorvel " QUORVEL_VERSION);
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

int Run(int argc, char** argv) {
  // A descriptor that is opened later must not take the place of standard output.
  if (fcntl(STDOUT_FILENO, F_GETFD) < 0) {
    Complain("standard output is closed");
    return EXIT_FAILURE;
  }
  // A reader that leaves is noticed at the next line; it is no reason to die.
  signal(SIGPIPE, SIG_IGN);
  signal(SIGXFSZ, SIG_IGN);  // and a file that must not grow is an error to tell
  const Options options = ParseOptions(argc, argv);
  const bool for_programs = options.json && options.device != nullptr;
  const std::unique_ptr<Output> output = for_programs ? MakeJsonOutput() : MakeTextOutput();
  const int exit_code = RunCommand(options, *output);
  if (const int error = output->lines().error()) {
    Complain("cannot write: " + std::generic_category().message(error));
    return EXIT_FAILURE;
  }
  return exit_code;
}

}  // namespace

}  // namespace norvik::qel::tool

int main(int argc, char** argv) {
  using norvik::qel::tool::Complain;
  try {
    return norvik::qel::tool::Run(argc, argv);
  } catch (const norvik::qel::tool::UsageError& error) {
    Complain(std::string(error.what()) + " (see quorvel --help)");
    return norvik::qel::tool::kExitUsage;
  } catch (const std::exception& error) {
    Complain(error.what());
    return EXIT_FAILURE;
  }
}
