// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/command_table.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include "cli/commands.h"
#include "cli/decimal.h"

namespace norvik::qel::monitor {

namespace {

void SetDevice(const std::string& value, Options& options) {
  options.device = &DeviceNamed(value, "--device");
}

void SetDuration(const std::string& value, Options& options) {
  constexpr std::pair<std::string_view, double> kUnits[] = {
      {"ms", 1}, {"s", 1000}, {"m", 60'000}, {"h", 3'600'000}};
  constexpr double kLongest = 8760 * 3'600'000.0;
  const size_t size = std::min(value.find_first_not_of("0123456789."), value.size());
  const double number = ParseDecimal(value.substr(0, size)).value_or(0);
  for (const auto& [unit, milliseconds] : kUnits) {
    const double count = number * milliseconds;
    if (value.substr(size) != unit || count < 1 || count > kLongest) continue;
    options.duration = std::chrono::milliseconds(std::llround(count));
    return;
  }
  throw UsageError("--for: '" + value +
                   "' is no duration, use one such as 500ms, 1.5s, 10m or 2h, 1ms to 8760h");
}

void SetSpeed(const std::string& value, Options& options) {
  constexpr double kHighest = 1e6;
  options.speed = ParseDecimal(value);
  if (options.speed && *options.speed > 0 && *options.speed <= kHighest) return;
  throw UsageError("--speed: '" + value +
                   "' is no speed, use a number above 0 such as 0.5 or 10, at most 1000000");
}

}  // namespace

std::span<const Command> GeneralCommands() {
  static constexpr Command kCommands[] = {
      {.name = "list",
       .summary = "print every value that a command can name, with its source",
       .options = "device names",
       .run = List},
      {.name = "status",
       .summary = "print the present state on one screen",
       .text = "--for ends --follow, and is refused without it.",
       .options = "device follow for",
       .run = Status},
      {.name = "watch",
       .operands = "NAME...",
       .summary = "print values as they change",
       .text =
           "NAME is one that quorvel list prints, such as battery_level or SKIN:skin; battery, "
           "sensors or thermal name all of their values. Of a temperature, watch prints the "
           "throttling severity. While a service is not up, watch waits for it, as the library "
           "does; only thermal needs the service, which lists the names. A temperature that the "
           "service then does not report is named in the debug log only.",
       .options = "device for",
       .run = Watch},
      {.name = "get",
       .operands = "NAME...",
       .summary = "print values once",
       .text = "NAME is one that quorvel list prints, such as battery_level or SKIN:skin; battery, "
               "sensors, temperatures (or thermal) and bcl (the battery's charge limits) name all "
               "of their values. The names after temperatures may lack the type. A sensor that has "
               "never reported reads 0.",
       .options = "device",
       .run = Get},
      {.name = "dump",
       .summary = "print the library's own dump of its state, all families",
       .options = "device",
       .run = Dump},
      {.name = "doctor",
       .summary = "check the services and the device, and name the next step for what fails",
       .text =
           "Every line is a check: ok, warning or failed. The exit code is 1 if a check failed.",
       .options = "device",
       .run = Doctor},
      {.name = "record",
       .operands = "FILE",
       .summary = "write what the device reports and when clients are called",
       .text = "The file is a complete recording after every line; - is standard output. "
               "docs/recordings.md describes the format.",
       .options = "device for force",
       .run = Record},
      {.name = "export",
       .operands = "FILE",
       .summary = "print a recording as a table or as trace events",
       .text = "--to csv prints a table for spreadsheets: a row for each time at which something "
               "happened, with the values that hold. --to perfetto prints trace events for the "
               "Perfetto viewer: counters, the services' lives and events. The file - is standard "
               "input.",
       .options = "to output",
       .run = Export},
      {.name = "help",
       .operands = "[COMMAND]",
       .summary = "print this text, or the help of a command",
       .run = Help},
  };
  return kCommands;
}

std::span<const Option> AllOptions() {
  using Text = const std::string&;
  static constexpr Option kOptions[] = {
      {.name = "device", .value = "DEVICE", .text = "the source of the values", .set = SetDevice},
      {.name = "for",
       .value = "DURATION",
       .text = "stop after this time: 500ms, 1.5s, 10m or 2h, at most 8760h",
       .set = SetDuration},
      {.name = "record",
       .value = "FILE",
       .text = "also write a recording",
       .set = [](Text value, Options& options) { options.record = value; }},
      {.name = "force",
       .text = "overwrite an existing recording, which is refused otherwise",
       .set = [](Text, Options& options) { options.existing = ExistingFile::kOverwrite; }},
      {.name = "speed",
       .value = "N",
       .text = "play at N times the original speed",
       .set = SetSpeed},
      {.name = "step",
       .text = "play one event each time Enter is pressed",
       .set = [](Text, Options& options) { options.step = true; }},
      {.name = "output",
       .value = "FILE",
       .text = "the file to write, replaced if it exists",
       .set = [](Text value, Options& options) { options.output = value; }},
      {.name = "names",
       .text = "print the names only, one per line",
       .set = [](Text, Options& options) { options.names = true; }},
      {.name = "follow",
       .text = "keep the screen current until SIGINT (Ctrl-C); * marks a value that has changed",
       .set = [](Text, Options& options) { options.follow = true; }},
      {.name = "to",
       .value = "csv|perfetto",
       .text = "the format of the export",
       .set = [](Text value, Options& options) { options.to = value; }},
      {.name = "json",
       .text = "print one JSON object per line instead of text",
       .set = [](Text, Options& options) { options.json = true; },
       .is_general = true},
      {.name = "verbose",
       .text = "write the library's debug log to standard error",
       .set = [](Text, Options& options) { options.verbose = true; },
       .is_general = true},
      {.name = "help",
       .letter = 'h',
       .text = "print the help of the command, or of all commands",
       .set = [](Text, Options& options) { options.help = true; },
       .is_general = true},
      {.name = "version",
       .letter = 'V',
       .text = "print the version",
       .set = [](Text, Options& options) { options.version = true; },
       .is_general = true},
  };
  // A phone's program has no command for some of them.
  static const std::vector<Option> taken = [] {
    std::vector<Option> options(std::begin(kOptions), std::end(kOptions));
    std::erase_if(options, [](const Option& option) { return CommandNames(&option).empty(); });
    return options;
  }();
  return taken;
}

const Command* CommandNamed(std::string_view name) {
  const Command* found = nullptr;
  ForEachCommand([&](const Command& command) {
    if (command.name == name) found = &command;
  });
  return found;
}

const Option* OptionNamed(std::string_view name) {
  for (const Option& option : AllOptions()) {
    if (option.name == name) return &option;
  }
  return nullptr;
}

const DeviceType& DeviceNamed(std::string_view name, const std::string& source) {
  std::vector<std::string> names;
  for (const DeviceType& type : DeviceTypes()) {
    if (type.name == name) return type;
    names.emplace_back(type.name);
  }
  throw UsageError(source + ": unknown '" + std::string(name) + "', use " +
                   Enumerated(names, "or"));
}

std::vector<std::string> ChoicesOf(std::string_view value) {
  std::vector<std::string> choices;
  if (value.find('|') == std::string_view::npos) return choices;
  for (size_t end; !value.empty(); value.remove_prefix(std::min(end + 1, value.size()))) {
    end = std::min(value.find('|'), value.size());
    choices.emplace_back(value.substr(0, end));
  }
  return choices;
}

std::string UsageOf(const Command& command) {
  const std::string name(command.name);
  return command.operands.empty() ? name : name + " " + std::string(command.operands);
}

bool Takes(const Command& command, const Option& option) {
  const std::string names = " " + std::string(command.options) + " ";
  return option.is_general || names.find(" " + std::string(option.name) + " ") != std::string::npos;
}

std::vector<std::string> CommandNames(const Option* taken) {
  std::vector<std::string> names;
  ForEachCommand([&](const Command& command) {
    if (taken != nullptr && !Takes(command, *taken)) return;
    names.emplace_back(command.name);
  });
  return names;
}

std::string Enumerated(std::span<const std::string> names, const std::string& last) {
  std::string text;
  for (size_t i = 0; i < names.size(); ++i) {
    if (i > 0) text += i + 1 == names.size() ? " " + last + " " : ", ";
    text += names[i];
  }
  return text;
}

}  // namespace norvik::qel::monitor
