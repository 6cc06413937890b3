// quorvel on a phone: watches, asks and dumps the phone's own services, in text.
#include "tools/commands.h"
#include "tools/phone/options.h"
#include "tools/program.h"

namespace norvik::qel::tool {

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

}  // namespace norvik::qel::tool

int main(int argc, char** argv) {
  using norvik::qel::tool::kProgram;
  return norvik::qel::tool::RunProgram(kProgram, argc, argv);
}
