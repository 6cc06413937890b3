// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The commands and options of the program, as tables: the parser, the help, the completions and the
// manual page are made from them. A new command is a row and a handler.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "cli/options.h"

namespace norvik::qel::monitor {

class Output;

struct Command {
  std::string_view name;
  // The operands: "FILE", "[COMMAND]" for an optional one, "NAME..." for one or more. Shells
  // complete COMMAND, FILE, NAME, RECORDING and choices such as "csv|perfetto".
  std::string_view operands = {};
  std::string_view summary;
  std::string_view text = {};     // the rest of the help
  std::string_view options = {};  // names of those that are not general: "device for"
  int (*run)(const Options& options, Output& output);  // returns the program's exit code
};

struct Option {
  std::string_view name;        // "for" is --for
  char letter = 0;              // "h" is -h
  std::string_view value = {};  // as Command::operands; empty: the option takes no value
  std::string_view text;
  void (*set)(const std::string& value, Options& options);  // throws UsageError
  bool is_general = false;                                  // every command takes it
};

// The commands of every build.
std::span<const Command> GeneralCommands();
// The commands that need a simulated phone. Empty in a build for a phone.
std::span<const Command> SimulationCommands();
// Those that a command takes.
std::span<const Option> AllOptions();

// The rows of all commands in the order of the help.
template <typename Visitor>
void ForEachCommand(const Visitor& visit) {
  for (const Command& command : GeneralCommands()) visit(command);
  for (const Command& command : SimulationCommands()) visit(command);
}

// Prints the completions of the last word, one per line, each followed by a tab and its
// description. ":files" stands for file names. The shell scripts in packaging/completions/ run
// `quorvel --complete WORD...`.
void PrintCompletions(std::span<const std::string> words);
// The commands, options, exit codes and so on in the markup of the manual page, for `quorvel
// --man`.
std::string ManualLists();

// The following two return null if there is none.
const Command* CommandNamed(std::string_view name);
const Option* OptionNamed(std::string_view name);
// Throws UsageError. `source` is the option or variable that names the device.
const DeviceType& DeviceNamed(std::string_view name, const std::string& source);
// "csv" and "perfetto" of "csv|perfetto". Empty if the value is not one of choices.
std::vector<std::string> ChoicesOf(std::string_view value);
// "watch NAME..."
std::string UsageOf(const Command& command);
bool Takes(const Command& command, const Option& option);
// The names of all commands, or of those that take an option, each once.
std::vector<std::string> CommandNames(const Option* taken = nullptr);
// "a, b and c" with "and" or "or" as the last separator.
std::string Enumerated(std::span<const std::string> names, const std::string& last);

}  // namespace norvik::qel::monitor
