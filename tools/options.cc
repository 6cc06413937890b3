#include "tools/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
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
  app.add_option("--device", words.device)->type_name("NAME");
  app.add_option("--for", words.duration)->type_name("DURATION");
  for (const char* command : {"watch", "get"}) {
    CLI::App* const subcommand = app.add_subcommand(command)->fallthrough();
    subcommand->add_option("FAMILY", words.family);
    subcommand->add_option("OPERAND", words.operands);
  }
  for (const char* command : {"dump", "demo"}) app.add_subcommand(command)->fallthrough();
  app.add_subcommand("record")->fallthrough()->add_option("FILE", words.operands);
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
  if (found.empty()) throw UsageError("a command is missing, use watch, get, dump, demo or record");
  const std::string name = found.front()->get_name();
  if (name == "watch") return Options::Command::kWatch;
  if (name == "get") return Options::Command::kGet;
  if (name == "dump") return Options::Command::kDump;
  if (name == "demo") return Options::Command::kDemo;
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

void CheckService(const Family& family, const DeviceType& device) {
  const std::string where = "the device '" + std::string(device.name) + "' ";
  if (family.service == kSensorService && !device.has_sensor_service) {
    throw UsageError(where + "has no sensors");
  }
  if (family.service == kThermalService && !device.has_thermal_service) {
    throw UsageError(where + "has no thermal service");
  }
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
    return options;
  }
  options.command = FindCommand(app);
  options.device = &Find(DeviceTypes(), words.device, "--device");
  if (options.command == Options::Command::kWatch) {
    options.family = &FindFamily(WatchedFamilies(), words, "watch");
  } else if (options.command == Options::Command::kGet) {
    options.family = &FindFamily(AskedFamilies(), words, "get");
  }
  if (options.family != nullptr) CheckService(*options.family, *options.device);
  if (options.command == Options::Command::kRecord) CheckFile(words, "record");
  if (words.force) {
    if (options.command != Options::Command::kRecord) {
      throw UsageError("--force: only record takes it");
    }
    options.existing = ExistingFile::kOverwrite;
  }
  options.operands = words.operands;
  if (app.count("--for") > 0) options.duration = FindDuration(words.duration, options.command);
  return options;
}

}  // namespace norvik::qel::tool
