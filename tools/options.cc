#include "tools/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "tools/duration.h"

namespace norvik::qel::tool {

namespace {

// The words as they stand on the command line.
struct Words {
  bool help = false;
  bool version = false;
  bool json = false;
  bool verbose = false;
  bool force = false;
  bool step = false;
  std::string record;
  std::string output;
  std::string speed;
  std::string device = std::string(DeviceTypes().front().name);
  std::string duration;
  std::string family;
  std::vector<std::string> operands;
};

// CLI11's own help and its checks for what is missing are off: --help is to work wherever it
// stands, and all else is to be refused in one line.
void Describe(CLI::App& app, Words& words) {
  app.set_help_flag();
  app.fallthrough();
  app.require_subcommand(0, 1);
  app.add_flag("-h,--help", words.help);
  app.add_flag("--version", words.version);
  app.add_flag("--json", words.json);
  app.add_flag("--verbose", words.verbose);
  app.add_flag("--force", words.force);
  app.add_flag("--step", words.step);
  app.add_option("--record", words.record)->type_name("FILE");
  app.add_option("--output", words.output)->type_name("FILE");
  app.add_option("--speed", words.speed)->type_name("N");
  app.add_option("--device", words.device)->type_name("NAME");
  app.add_option("--for", words.duration)->type_name("DURATION");
  for (const char* command : {"watch", "get"}) {
    CLI::App* const subcommand = app.add_subcommand(command)->fallthrough();
    subcommand->add_option("FAMILY", words.family);
    subcommand->add_option("OPERAND", words.operands);
  }
  for (const char* command : {"dump", "demo"}) app.add_subcommand(command)->fallthrough();
  for (const char* command : {"record", "play", "plot"}) {
    app.add_subcommand(command)->fallthrough()->add_option("FILE", words.operands);
  }
}

// The entry of that name; otherwise the error lists the names there are.
template <typename Entry>
const Entry& Find(std::span<const Entry> entries, std::string_view name, const std::string& where) {
  std::string names;
  for (const Entry& entry : entries) {
    if (entry.name == name) return entry;
    names += (names.empty() ? "" : " or ") + std::string(entry.name);
  }
  const std::string wrong =
      name.empty() ? "a name is missing" : "unknown '" + std::string(name) + "'";
  throw UsageError(where + ": " + wrong + ", use " + names);
}

Options::Command FindCommand(const CLI::App& app) {
  const std::vector<CLI::App*> found = app.get_subcommands();
  if (found.empty())
    throw UsageError("a command is missing, use watch, get, dump, demo, record, play or plot");
  const std::string name = found.front()->get_name();
  if (name == "watch") return Options::Command::kWatch;
  if (name == "get") return Options::Command::kGet;
  if (name == "dump") return Options::Command::kDump;
  if (name == "demo") return Options::Command::kDemo;
  if (name == "play") return Options::Command::kPlay;
  if (name == "plot") return Options::Command::kPlot;
  return Options::Command::kRecord;
}

// `name` is the command's, whose families they are.
const Family& FindFamily(std::span<const Family> families, const Words& words,
                         const std::string& name) {
  const Family& family = Find(families, words.family, name);
  const std::string where = name + " " + words.family + ": ";
  if (family.operand.empty() && !words.operands.empty()) {
    throw UsageError(where + "'" + words.operands.front() + "' is too much");
  }
  const bool complete = std::none_of(words.operands.begin(), words.operands.end(),
                                     [](const std::string& operand) { return operand.empty(); });
  if (!family.operand.empty() && (words.operands.empty() || !complete)) {
    throw UsageError(where + "a name is missing, give one or more " + std::string(family.operand));
  }
  return family;
}

// Of a command that takes one and nothing else.
void CheckFile(const Words& words, const std::string& command) {
  if (words.operands.empty() || words.operands.front().empty()) {
    throw UsageError(command + ": the name of a file is missing");
  }
  if (words.operands.size() > 1) {
    throw UsageError(command + ": '" + words.operands[1] + "' is too much");
  }
}

double FindSpeed(const std::string& text) {
  constexpr double kHighest = 1e6;
  double speed = 0;
  const char* const end = text.data() + text.size();
  const auto [number_end, error] = std::from_chars(text.data(), end, speed);
  if (error == std::errc() && number_end == end && speed > 0 && speed <= kHighest) return speed;
  throw UsageError("--speed: '" + text + "' is no speed, use a number above 0 such as 0.5 or 10");
}

void SetUpPlay(const CLI::App& app, const Words& words, Options& options) {
  CheckFile(words, "play");
  if (app.count("--speed") > 0 && words.step) throw UsageError("--step: it knows no --speed");
  if (app.count("--speed") > 0) options.speed = FindSpeed(words.speed);
  options.step = words.step;
}

void SetUpPlot(const Words& words, Options& options) {
  CheckFile(words, "plot");
  if (words.output.empty()) throw UsageError("plot: --output FILE is missing");
  if (!words.output.ends_with(".svg") && !words.output.ends_with(".png")) {
    throw UsageError("--output: '" + words.output + "' ends neither with .svg nor with .png");
  }
  options.output = words.output;
}

void CheckAreFor(const CLI::App& app, std::initializer_list<const char*> names,
                 Options::Command command, const Options& options) {
  for (const char* name : names) {
    if (app.count(name) == 0 || options.command == command) continue;
    const char* const taker = command == Options::Command::kPlay ? "play" : "plot";
    throw UsageError(std::string(name) + ": only " + taker + " takes it");
  }
}

void SetUpRecording(const CLI::App& app, const Words& words, Options& options) {
  const bool is_beside =
      options.command == Options::Command::kDemo || options.command == Options::Command::kPlay;
  if (app.count("--record") > 0) {
    if (!is_beside) throw UsageError("--record: only demo and play take it");
    if (words.record.empty()) throw UsageError("--record: the name of a file is missing");
    options.record = words.record;
  }
  if (!words.force) return;
  if (options.command != Options::Command::kRecord && options.record.empty()) {
    throw UsageError("--force: nothing is to be recorded");
  }
  options.existing = ExistingFile::kOverwrite;
}

std::chrono::milliseconds FindDuration(const std::string& text, Options::Command command) {
  using Command = Options::Command;
  if (command != Command::kWatch && command != Command::kDemo && command != Command::kRecord) {
    throw UsageError("--for: only watch, demo and record take it");
  }
  const auto duration = ParseDuration(text);
  if (!duration) {
    throw UsageError("--for: '" + text + "' is no duration, use one such as 500ms, 10s or 2m");
  }
  return *duration;
}

}  // namespace

Options ParseOptions(int argc, char** argv) {
  CLI::App app;
  Words words;
  Describe(app, words);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    throw UsageError(error.what());
  }
  Options options;
  options.json = words.json;
  options.verbose = words.verbose;
  if (words.help || words.version) {
    options.command = words.help ? Options::Command::kHelp : Options::Command::kVersion;
    const std::vector<CLI::App*> commands = app.get_subcommands();
    if (!commands.empty()) options.help_of = commands.front()->get_name();
    return options;
  }
  options.command = FindCommand(app);
  options.device = &Find(DeviceTypes(), words.device, "--device");
  if (options.command == Options::Command::kWatch) {
    options.family = &FindFamily(WatchedFamilies(), words, "watch");
  } else if (options.command == Options::Command::kGet) {
    options.family = &FindFamily(AskedFamilies(), words, "get");
  }
  if (options.command == Options::Command::kRecord) CheckFile(words, "record");
  if (options.command == Options::Command::kPlay) SetUpPlay(app, words, options);
  if (options.command == Options::Command::kPlot) SetUpPlot(words, options);
  CheckAreFor(app, {"--speed", "--step"}, Options::Command::kPlay, options);
  CheckAreFor(app, {"--output"}, Options::Command::kPlot, options);
  const bool is_for_a_file =
      options.command == Options::Command::kPlay || options.command == Options::Command::kPlot;
  if (is_for_a_file && app.count("--device") > 0) {
    throw UsageError("--device: what a recording tells comes from no other device");
  }
  SetUpRecording(app, words, options);
  options.operands = words.operands;
  if (app.count("--for") > 0) options.duration = FindDuration(words.duration, options.command);
  return options;
}

}  // namespace norvik::qel::tool
