// quorvel: a client of the library, for people to look at and for programs to read.
#include "tools/commands.h"
#include "tools/options.h"
#include "tools/output.h"
#include "tools/program.h"
#include "tools/usage.h"

namespace norvik::qel::tool {

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

}  // namespace norvik::qel::tool

int main(int argc, char** argv) {
  using norvik::qel::tool::kProgram;
  return norvik::qel::tool::RunProgram(kProgram, argc, argv);
}
