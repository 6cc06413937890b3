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

[[noreturn]] void RefuseMissingValue(const Option& entry) {
  throw UsageError("--" + std::string(entry.name) + ": the value is missing, give a " +
                   std::string(entry.value));
}

[[noreturn]] void RefuseOption(int result, char** argv) {
  const Option* const entry = OptionOf(optopt);
  if (entry != nullptr && result == ':') RefuseMissingValue(*entry);
  std::string word = argv[optind - 1];
  if (entry != nullptr && word.starts_with("--")) {
    throw UsageError("--" + std::string(entry->name) + " takes no value, remove '" +
                     word.substr(word.find('=')) + "'");
  }
  // A word may have several letters: the message names the wrong one only.
  if (optopt != 0 && !word.starts_with("--")) word = {'-', static_cast<char>(optopt)};
  throw UsageError("unknown option '" + word + "'");
}

void CheckChoice(const Option& entry, const std::string& value) {
  if (entry.value.find('|') == std::string_view::npos) return;
  const std::string choices = "|" + std::string(entry.value) + "|";
  if (!value.empty() && choices.find("|" + value + "|") != std::string::npos) return;
  std::string names(entry.value);
  std::replace(names.begin(), names.end(), '|', ' ');
  throw UsageError("--" + std::string(entry.name) + ": unknown '" + value + "', use one of " +
                   names);
}

// `words`: the command line without its options. Removes the command from it.
const Command& TakeCommand(std::vector<std::string>& words) {
  const std::string all_names = Enumerated(CommandNames(), "or");
  if (words.empty()) throw UsageError("a command is missing, use " + all_names);
  const Command* found = nullptr;
  ForEachCommand([&](const Command& entry) {
    if (entry.name == words.front()) found = &entry;
  });
  if (found == nullptr) {
    throw UsageError("unknown command '" + words.front() + "', use " + all_names);
  }
  words.erase(words.begin());
  return *found;
}

void CheckOperands(const Command& command, const std::vector<std::string>& operands) {
  const std::string_view wanted = command.operands;
  const std::string where = std::string(command.name) + ": ";
  const bool is_optional = wanted.starts_with('[');
  const bool is_list = wanted.find("...") != std::string_view::npos;
  const size_t most = wanted.empty() ? 0 : is_list ? operands.size() : 1;
  if (operands.size() > most) {
    throw UsageError(where + "unexpected argument '" + operands[most] + "'");
  }
  const bool is_missing = !wanted.empty() && !is_optional && operands.empty();
  if (is_missing || std::count(operands.begin(), operands.end(), "") > 0) {
    const std::string known = wanted == "NAME..." ? ", use " + KnownNames(command) : "";
    throw UsageError(where + std::string(wanted) + " is missing" + known);
  }
}

void CheckOptions(const Command& command, const std::set<const Option*>& given) {
  for (const Option* entry : given) {
    if (Takes(command, *entry)) continue;
    std::vector<std::string> taken;
    for (const Option& other : AllOptions()) {
      if (Takes(command, other)) taken.push_back("--" + std::string(other.name));
    }
    throw UsageError(std::string(command.name) + " does not take --" + std::string(entry->name) +
                     ", only " + Enumerated(taken, "and"));
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
    const Option* const entry = OptionOf(result);
    if (entry == nullptr) RefuseOption(result, argv);
    const std::string value = entry->value.empty() ? "" : optarg;
    if (value.empty() && !entry->value.empty()) RefuseMissingValue(*entry);
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
