// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/names.h"

#include <algorithm>

#include "cli/command_table.h"
#include "clients/subjects.h"

namespace norvik::qel::monitor {

namespace {

constexpr std::string_view kLimits = "bcl";

// The keys that a word or a key stands for. Empty for a single temperature.
std::vector<std::string> KeysOf(std::string_view word) {
  std::vector<std::string> keys;
  const auto add = [&](std::string_view family, const auto& properties) {
    for (const Property* property : properties) {
      if (word == family || word == property->key) keys.emplace_back(property->key);
    }
  };
  add(kBatteryFamily, kBatteryProperties);
  add(kSensorFamily, kSensorProperties);
  add(kLimits, kChargeLimitProperties);
  if (IsThermalWord(word)) keys.emplace_back(kThermalFamily);
  return keys;
}

// The type of a TYPE:NAME in capitals. Empty if it is none.
std::string TypeOf(std::string_view key) {
  std::string type = SplitTemperatureKey(key).value_or(TemperatureKey()).type;
  for (char& c : type) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return type;
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
           std::string(kUnknownThermalType) + "; or quorvel get " + operand;
  }
  if (CanName(command, operand)) return "unknown '" + operand + "', use " + KnownNames(command);
  return "'" + operand + "' cannot be watched, use quorvel get " + operand;
}

}  // namespace

bool IsThermalWord(std::string_view word) {
  return word == kThermalFamily || word == "temperatures";
}

bool CanName(const Command& command, std::string_view name) {
  if (command.name != "watch") return true;
  if (const std::string type = TypeOf(name); !type.empty()) return IsWatchableType(type);
  return name != kLimits && !IsChargeLimit(name);
}

std::string KnownNames(const Command& command) {
  std::vector<std::string> names(std::begin(kNameWords), std::end(kNameWords));
  for (const std::string_view word : {kBatteryFamily, kSensorFamily, kLimits}) {
    for (std::string& key : KeysOf(word)) names.push_back(std::move(key));
  }
  std::erase_if(names, [&](const std::string& name) { return !CanName(command, name); });
  names.emplace_back("a TYPE:NAME such as SKIN:skin; quorvel list prints those of the device");
  return Enumerated(names, "or");
}

std::span<const std::string> NamesIn(const Options& options) {
  const std::span<const std::string> operands = options.operands;
  if (operands.size() < 2 || !IsThermalWord(operands.front())) return operands;
  const auto rest = operands.subspan(1);
  const bool are_temperatures = std::all_of(rest.begin(), rest.end(), [&](const auto& operand) {
    return options.command->name == "get" ? KeysOf(operand).empty()
                                          : SplitTemperatureKey(operand).has_value();
  });
  return are_temperatures ? rest : operands;
}

std::vector<std::string> KeysIn(const Options& options) {
  const Command& command = *options.command;
  const std::span<const std::string> names = NamesIn(options);
  const bool are_temperatures = names.size() < options.operands.size();
  std::vector<std::string> all;
  for (const std::string& operand : names) {
    std::vector<std::string> keys = KeysOf(operand);
    if (SplitTemperatureKey(operand)) keys = {operand};
    if (keys.empty() && are_temperatures) keys = {":" + operand};
    if (keys.empty() || !CanName(command, operand)) {
      throw UsageError(std::string(command.name) + ": " + ReasonAgainst(command, operand));
    }
    all.insert(all.end(), keys.begin(), keys.end());
  }
  return all;
}

const TemperatureReport* FindReport(std::string_view key,
                                    const std::vector<TemperatureReport>& reports) {
  // A name may have colons.
  const auto found = std::find_if(reports.begin(), reports.end(), [&](const auto& report) {
    return KeyOf(report) == WithUpperType(key) || report.name == key || ":" + report.name == key;
  });
  return found != reports.end() ? &*found : nullptr;
}

std::vector<std::string> LookedUp(const std::vector<std::string>& keys,
                                  const std::vector<TemperatureReport>& reports) {
  std::vector<std::string> found;
  const auto add = [&](const std::string& key) {
    if (std::find(found.begin(), found.end(), key) == found.end()) found.push_back(key);
  };
  for (const std::string& key : keys) {
    const bool is_temperature = key.find(':') != std::string::npos;
    const auto* const report = is_temperature ? FindReport(key, reports) : nullptr;
    if (key == kThermalFamily && !reports.empty()) {
      for (const TemperatureReport& each : reports) add(KeyOf(each));
    } else {
      add(report != nullptr ? KeyOf(*report) : WithUpperType(key));
    }
  }
  return found;
}

std::string_view ServiceOf(std::string_view key) {
  if (BatteryPropertyOf(key) != nullptr) return kHealthService;
  return SensorPropertyOf(key) != nullptr ? kSensorService : kThermalService;
}

std::set<std::string_view> FamiliesOf(const std::vector<std::string>& keys) {
  std::set<std::string_view> families;
  for (const std::string& key : keys) families.insert(FamilyOfService(ServiceOf(key)));
  return families;
}

}  // namespace norvik::qel::monitor
