// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <stdio.h>

#include <memory>
#include <string>
#include <vector>

#include "cli/command_table.h"
#include "clients/inventory.h"
#include "clients/subjects.h"

namespace norvik::qel::monitor {

namespace {

using Temperatures = std::vector<TemperatureReport>;

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
    std::string_view last;
    ForEachCommand([&](const Command& command) {
      const bool is_single = command.family.empty();
      if (command.name != last) Add(command.name, is_single ? command.summary : "");
      last = command.name;
    });
  }

  // `value`: Command::operands or Option::value.
  void AddValues(std::string_view value) const {
    if (value.find("FILE") != value.npos || value.find("RECORDING") != value.npos) {
      puts(":files");
    } else if (value.find("COMMAND") != value.npos) {
      AddCommands();
    } else if (value == "DEVICE") {
      for (const DeviceType& type : DeviceTypes()) Add(type.name, type.description);
    } else if (value.starts_with("TYPE:NAME")) {
      for (const std::string_view& type : kThermalTypes) Add(std::string(type) + ":");
      AddTemperatures(/*with_type=*/true);
    } else if (value.starts_with("NAME")) {
      AddTemperatures(/*with_type=*/false);
    } else {
      for (const std::string& choice : ChoicesOf(value)) Add(choice);
    }
  }

 private:
  // Adds the temperatures that the device reports now.
  void AddTemperatures(bool with_type) const {
    const std::unique_ptr<Device> device = device_.make([](const DeviceEvent&) {});
    device->Start({});
    for (const TemperatureReport& report : PlatformTemperatures().value_or(Temperatures())) {
      if (!with_type || IsWatchableType(report.type)) {
        Add((with_type ? report.type + ":" : "") + report.name);
      }
    }
  }

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
  std::vector<std::string> operands = {};  // including the family
  const Option* open = nullptr;            // the option whose value is being typed
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
  for (const Option& option : AllOptions()) {
    bool is_taken = line.command.empty();
    ForEachCommand([&](const Command& command) {
      is_taken |= command.name == line.command && Takes(command, option);
    });
    if (is_taken) candidates.Add("--" + std::string(option.name), option.text);
  }
}

void AddOperands(const Line& line, const Candidates& candidates) {
  ForEachCommand([&](const Command& command) {
    if (command.name != line.command) return;
    const size_t families = command.family.empty() ? 0 : 1;
    if (line.operands.size() < families) {
      candidates.Add(command.family, command.summary);
      return;
    }
    if (families > 0 && command.family != line.operands.front()) return;
    const bool takes_more = command.operands.find("...") != std::string_view::npos;
    if (takes_more || line.operands.size() == families) candidates.AddValues(command.operands);
  });
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
