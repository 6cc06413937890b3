// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/options.h"

#include <getopt.h>
#include <stdlib.h>

#include <algorithm>
#include <set>

#include "cli/command_table.h"
#include "cli/names.h"

namespace norvik::qel::monitor {

namespace {

// What getopt_long() returns for an option: its letter, or kFirst plus its index in the table.
int ResultOf(const Option& entry) {
  constexpr int kFirst = 256;
  return entry.letter != 0 ? entry.letter : kFirst + static_cast<int>(&entry - AllOptions().data());
}

std::vector<option> LongOptions() {
  std::vector<option> options;
  for (const Option& entry : AllOptions()) {
    const int has_arg = entry.value.empty() ? no_argument : required_argument;
    options.push_back(
        {.name = entry.name.data(), .has_arg = has_arg, .flag = nullptr, .val = ResultOf(entry)});
  }
  options.push_back({});
  return options;
}

// The leading ":" makes getopt_long() return ':' for a missing value.
std::string Letters() {
  std::string letters = ":";
  for (const Option& entry : AllOptions()) {
    if (entry.letter != 0) letters += entry.letter;
  }
  return letters;
}

// Null if the result is not an option's.
const Option* OptionOf(int result) {
  for (const Option& entry : AllOptions()) {
    if (ResultOf(entry) == result) return &entry;
  }
  return nullptr;
}

std::string OptionsOf(const Command& command, const std::string& last) {
  std::vector<std::string> names;
  for (const Option& option : AllOptions()) {
    if (Takes(command, option)) names.push_back("--" + std::string(option.name));
  }
  return Enumerated(names, last);
}

// Explains what getopt_long() has just refused.
[[noreturn]] void RefuseOption(std::span<char* const> words) {
  std::string word = words[static_cast<size_t>(optind) - 1];
  const std::string name = word.substr(0, word.find('='));
  if (const Option* const entry = OptionOf(optopt)) {
    throw UsageError("--" + std::string(entry->name) + " takes no value, remove '" +
                     word.substr(name.size()) + "'");
  }
  std::vector<std::string> meant;
  for (const Option& option : AllOptions()) {
    const std::string whole = "--" + std::string(option.name);
    if (optopt == 0 && whole.starts_with(name)) meant.push_back(whole);
  }
  if (!meant.empty()) {
    throw UsageError("option '" + word + "' is ambiguous, use " + Enumerated(meant, "or"));
  }
  // A word may have several letters: the message names the wrong one only.
  if (optopt != 0) word = {'-', static_cast<char>(optopt)};
  std::string text = "unknown option '" + word + "'";
  for (const char* const other : words) {
    const Command* const command = CommandNamed(other);
    if (command == nullptr) continue;
    throw UsageError(std::string(other) + ": " + text + ", use " + OptionsOf(*command, "or"));
  }
  throw UsageError(text);
}

void CheckChoice(const Option& entry, const std::string& value) {
  const std::vector<std::string> choices = ChoicesOf(entry.value);
  if (choices.empty() || std::count(choices.begin(), choices.end(), value) > 0) return;
  throw UsageError("--" + std::string(entry.name) + ": unknown '" + value + "', use " +
                   Enumerated(choices, "or"));
}

// `words`: the command line without its options. Removes the command from it.
const Command& TakeCommand(std::vector<std::string>& words) {
  const std::string all_names = Enumerated(CommandNames(), "or");
  if (words.empty()) throw UsageError("a command is missing, use " + all_names);
  const Command* const found = CommandNamed(words.front());
  if (found == nullptr) {
    throw UsageError("unknown command '" + words.front() + "', use " + all_names);
  }
  words.erase(words.begin());
  return *found;
}

void CheckOperands(const Command& command, const std::vector<std::string>& operands) {
  const std::string_view wanted = command.operands;
  const std::string who(command.name);
  const bool is_optional = wanted.starts_with('[');
  const std::string word(is_optional ? wanted.substr(1, wanted.size() - 2) : wanted);
  const bool is_list = wanted.find("...") != std::string_view::npos;
  const size_t most = wanted.empty() ? 0 : is_list ? operands.size() : 1;
  if (operands.size() > most) {
    throw UsageError(who + " takes " + (most == 0 ? "no operands" : "one " + word) + ", remove '" +
                     operands[most] + "'");
  }
  const bool is_missing = !wanted.empty() && !is_optional && operands.empty();
  if (is_missing || std::count(operands.begin(), operands.end(), "") > 0) {
    const std::string known = wanted == "NAME..." ? ", use " + KnownNames(command) : "";
    throw UsageError(who + ": " + std::string(wanted) + " is missing" + known);
  }
}

void CheckOptions(const Command& command, const std::set<const Option*>& given) {
  for (const Option* entry : given) {
    if (Takes(command, *entry)) continue;
    throw UsageError(std::string(command.name) + " does not take --" + std::string(entry->name) +
                     ", only " + OptionsOf(command, "and"));
  }
}

}  // namespace

const DeviceType& DefaultDevice() {
  const char* const name =
      getenv("QUORVEL_DEVICE");  // NOLINT(concurrency-mt-unsafe): set by no thread
  const bool is_given = name != nullptr && *name != 0;
  return is_given ? DeviceNamed(name, "QUORVEL_DEVICE") : DeviceTypes().front();
}

Options ParseOptions(int argc, char** argv) {
  Options options;
  std::set<const Option*> given;
  const std::vector<option> long_options = LongOptions();
  const std::string letters = Letters();
  opterr = 0;  // errors are reported here
  while (true) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): there is no other thread yet
    const int result = getopt_long(argc, argv, letters.c_str(), long_options.data(), nullptr);
    if (result == -1) break;
    const bool is_missing = result == ':';  // some C libraries: also a value that is not taken
    const Option* const entry = OptionOf(is_missing ? optopt : result);
    if (entry == nullptr || (is_missing && entry->value.empty())) {
      RefuseOption(std::span(argv, static_cast<size_t>(argc)));
    }
    // Any value but the name of a file says what it has to be.
    const std::string value = is_missing || entry->value.empty() ? "" : optarg;
    if (value.empty() && entry->value == "FILE") {
      throw UsageError("--" + std::string(entry->name) + ": FILE is missing");
    }
    CheckChoice(*entry, value);
    entry->set(value, options);
    given.insert(entry);
  }
  std::vector<std::string> words(argv + optind, argv + argc);
  if (options.help || options.version) {
    options.operands = std::move(words);
    return options;
  }
  options.command = &TakeCommand(words);
  CheckOperands(*options.command, words);
  CheckOptions(*options.command, given);
  options.operands = std::move(words);
  const bool has_device = Takes(*options.command, *OptionNamed("device"));
  if (has_device && options.device == nullptr) options.device = &DefaultDevice();
  return options;
}

}  // namespace norvik::qel::monitor
