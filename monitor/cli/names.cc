// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/names.h"

#include <algorithm>
#include <iterator>

#include "cli/command_table.h"
#include "clients/subjects.h"

namespace norvik::qel::monitor {

namespace {

constexpr NameWord kWords[] = {{kBatteryFamily, "the battery and the chargers"},
                               {kSensorFamily, "the proximity and hinge angle sensors"},
                               {kThermalFamily, "all temperatures"},
                               {"temperatures", "all temperatures"},
                               {kLimitsWord, "the severities of the battery's charge limits"}};

bool Watches(const Command& command) {
  return command.name == "watch";
}

template <typename Properties>
void AddKeys(const Properties& properties, std::vector<std::string>* keys) {
  for (const Property* property : properties) keys->emplace_back(property->key);
}

// The keys of a family, except temperatures.
std::vector<std::string> KeysOfWord(std::string_view word) {
  std::vector<std::string> keys;
  if (word == kBatteryFamily) AddKeys(kBatteryProperties, &keys);
  if (word == kSensorFamily) AddKeys(kSensorProperties, &keys);
  if (word == kLimitsWord) AddKeys(kChargeLimitProperties, &keys);
  return keys;
}

// The type of a TYPE:NAME, which may be in lower case, in capitals. Empty if it is none.
std::string TypeOf(std::string_view key) {
  auto parts = SplitTemperatureKey(key);
  if (!parts) return {};
  for (char& c : parts->type) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return parts->type;
}

std::string WithUpperType(std::string_view key) {
  const std::string type = TypeOf(key);
  return type + std::string(key.substr(type.size()));
}

std::string ReasonAgainst(const Command& command, const std::string& operand) {
  if (const std::string type = TypeOf(operand); !type.empty()) {
    std::string types;
    for (const std::string_view known : kThermalTypes) types.append(known).append(", ");
    return "'" + type + "' is no type that can be watched, use " + types + "or " +
           std::string(kUnknownThermalType);
  }
  const bool is_limit = operand == kLimitsWord || IsChargeLimit(operand);
  if (is_limit) return "'" + operand + "' cannot be watched, use quorvel get " + operand;
  return "unknown name '" + operand + "', use " + KnownNames(command);
}

}  // namespace

std::span<const NameWord> NameWords() {
  return kWords;
}

bool IsThermalWord(std::string_view word) {
  return word == kThermalFamily || word == "temperatures";
}

bool CanName(const Command& command, std::string_view key) {
  if (!Watches(command)) return true;
  if (const std::string type = TypeOf(key); !type.empty()) return IsWatchableType(type);
  return key != kLimitsWord && !IsChargeLimit(key);
}

std::string KnownNames(const Command& command) {
  std::vector<std::string> names;
  for (const NameWord& word : kWords) names.emplace_back(word.word);
  for (const NameWord& word : kWords) {
    for (std::string& key : KeysOfWord(word.word)) names.push_back(std::move(key));
  }
  std::erase_if(names, [&](const std::string& name) { return !CanName(command, name); });
  names.emplace_back("a TYPE:NAME such as SKIN:skin; quorvel list prints those of the device");
  return Enumerated(names, "or");
}

std::vector<Named> NamesIn(const Options& options) {
  const Command& command = *options.command;
  std::span<const std::string> operands = options.operands;
  const bool is_thermal = operands.size() > 1 && IsThermalWord(operands.front());
  if (is_thermal) operands = operands.subspan(1);
  std::vector<Named> names;
  for (const std::string& operand : operands) {
    const size_t before = names.size();
    const bool is_all = !is_thermal && IsThermalWord(operand);
    if (is_all) names.push_back({kThermalFamily, std::string(kThermalFamily)});
    for (const NameWord& word : kWords) {
      for (std::string& key : KeysOfWord(word.word)) {
        const bool is_named = !is_thermal && (operand == word.word || operand == key);
        if (is_named) names.push_back({word.word, std::move(key)});
      }
    }
    const bool is_temperature = SplitTemperatureKey(operand) || (is_thermal && !Watches(command));
    if (names.size() == before && is_temperature) names.push_back({kThermalFamily, operand});
    if (names.size() > before && CanName(command, operand)) continue;
    throw UsageError(std::string(command.name) + ": " + ReasonAgainst(command, operand));
  }
  return names;
}

const TemperatureReport* FindReport(std::string_view name,
                                    std::span<const TemperatureReport> reports) {
  const std::string key = WithUpperType(name);
  const auto of_key = std::find_if(reports.begin(), reports.end(),
                                   [&](const auto& report) { return KeyOf(report) == key; });
  if (of_key != reports.end()) return &*of_key;
  const auto of_name = std::find_if(reports.begin(), reports.end(),
                                    [&](const auto& report) { return report.name == name; });
  return of_name != reports.end() ? &*of_name : nullptr;
}

std::vector<Named> LookedUp(const std::vector<Named>& names, const Command& command,
                            std::span<const TemperatureReport> reports) {
  std::vector<Named> found;
  const auto add = [&](const Named& name) {
    if (std::find(found.begin(), found.end(), name) == found.end()) found.push_back(name);
  };
  for (const Named& name : names) {
    if (name.family != kThermalFamily) {
      add(name);
    } else if (name.key == kThermalFamily) {
      const size_t before = found.size();
      for (const TemperatureReport& report : reports) {
        if (CanName(command, KeyOf(report))) add({kThermalFamily, KeyOf(report)});
      }
      if (found.size() == before) add(name);
    } else {
      const TemperatureReport* const report = FindReport(name.key, reports);
      const bool is_type = report == nullptr && IsWatchableType(TypeOf(name.key));
      if (report != nullptr) add({kThermalFamily, KeyOf(*report)});
      if (report == nullptr) add({kThermalFamily, is_type ? WithUpperType(name.key) : name.key});
    }
  }
  return found;
}

std::set<std::string_view> FamiliesOf(const std::vector<Named>& names) {
  std::set<std::string_view> families;
  for (const Named& name : names) {
    families.insert(name.family == kLimitsWord ? kThermalFamily : name.family);
  }
  return families;
}

}  // namespace norvik::qel::monitor
