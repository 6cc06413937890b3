// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <stdio.h>

#include <memory>
#include <string>
#include <vector>

#include "cli/command_table.h"
#include "cli/names.h"
#include "clients/inventory.h"
#include "clients/subjects.h"

namespace norvik::qel::monitor {

namespace {

// Prints candidates for the word that is being typed.
class Candidates {
 public:
  // `stem`: the part of the word that precedes `typed` and that each candidate repeats, such as
  // "--device=" of --device=li.
  Candidates(const DeviceType& device, std::string_view typed, std::string_view stem)
      : device_(device), typed_(typed), stem_(stem) {}

  void Add(std::string_view name, std::string_view description = {}) const {
    if (!name.starts_with(typed_)) return;
    const std::string line =
        std::string(stem_) + std::string(name) + "\t" + std::string(description);
    puts(line.c_str());
  }

  void AddCommands() const {
    ForEachCommand([&](const Command& command) { Add(command.name, command.summary); });
  }

  // `value`: Command::operands or Option::value.
  void AddValues(std::string_view value) const {
    if (value.find("FILE") != value.npos || value.find("RECORDING") != value.npos) {
      puts(":files");
    } else if (value.find("COMMAND") != value.npos) {
      AddCommands();
    } else if (value == "DEVICE") {
      for (const DeviceType& type : DeviceTypes()) Add(type.name, type.description);
    } else {
      for (const std::string& choice : ChoicesOf(value)) Add(choice);
    }
  }

  // Adds what the command can name of the device. `first`: the first operand, if it is complete.
  void AddNames(const Command& command, std::string_view first) const {
    const bool is_thermal = IsThermalWord(first);
    for (const std::string_view word : kNameWords) {
      if (!is_thermal && CanName(command, word)) Add(word);
    }
    const std::unique_ptr<Device> device = device_.make([](const DeviceEvent&) {});
    device->Start({});
    for (const std::string& key : KeysOf()) {
      const bool fits = !is_thermal || SplitTemperatureKey(key);
      if (fits && CanName(command, key)) Add(key);
    }
    if (!is_thermal || command.name != "watch") return;
    for (const std::string_view& type : kThermalTypes) Add(std::string(type) + ":");
  }

 private:
  const DeviceType& device_;
  const std::string_view typed_;
  const std::string_view stem_;
};

// The device of the command line, or the default one.
const DeviceType& DeviceOf(std::span<const std::string> words) {
  for (const DeviceType& type : DeviceTypes()) {
    const std::string name(type.name);
    for (size_t i = 0; i < words.size(); ++i) {
      const bool is_value = i > 0 && words[i - 1] == "--device" && words[i] == name;
      if (is_value || words[i] == "--device=" + name) return type;
    }
  }
  return DefaultDevice();
}

// Null if there is none.
const Option* FindOption(std::string_view word) {
  return word.starts_with("--") ? OptionNamed(word.substr(2)) : nullptr;
}

// The words before the one that is being typed.
struct Line {
  std::string command = {};
  std::vector<std::string> operands = {};
  const Option* open = nullptr;  // the option whose value is being typed
};

Line Read(std::span<const std::string> words) {
  Line line;
  for (const std::string& word : words) {
    if (line.open != nullptr) {
      line.open = nullptr;
    } else if (word.starts_with('-')) {
      const Option* const option = FindOption(word);
      if (option != nullptr && !option->value.empty()) line.open = option;
    } else if (line.command.empty()) {
      line.command = word;
    } else {
      line.operands.push_back(word);
    }
  }
  return line;
}

void AddOptions(const Line& line, const Candidates& candidates) {
  const Command* const command = CommandNamed(line.command);
  for (const Option& option : AllOptions()) {
    const bool is_taken = command != nullptr ? Takes(*command, option) : line.command.empty();
    if (is_taken) candidates.Add("--" + std::string(option.name), option.text);
  }
}

void AddOperands(const Line& line, const Candidates& candidates) {
  const Command* const command = CommandNamed(line.command);
  if (command == nullptr) return;
  if (command->operands == "NAME...") {
    candidates.AddNames(*command, line.operands.empty() ? "" : line.operands.front());
  } else if (line.operands.empty()) {
    candidates.AddValues(command->operands);
  }
}

}  // namespace

void PrintCompletions(std::span<const std::string> words) {
  if (words.empty()) return;
  const Line line = Read(words.first(words.size() - 1));
  const std::string_view typed = words.back();
  const DeviceType& device = DeviceOf(words);
  if (line.open != nullptr) return Candidates(device, typed, "").AddValues(line.open->value);
  const size_t equals = typed.find('=');
  if (typed.starts_with("--") && equals != std::string_view::npos) {
    const Option* const option = FindOption(typed.substr(0, equals));
    const Candidates candidates(device, typed.substr(equals + 1), typed.substr(0, equals + 1));
    if (option != nullptr) candidates.AddValues(option->value);
    return;
  }
  const Candidates candidates(device, typed, "");
  if (typed.starts_with('-')) return AddOptions(line, candidates);
  if (line.command.empty()) return candidates.AddCommands();
  AddOperands(line, candidates);
}

}  // namespace norvik::qel::monitor
