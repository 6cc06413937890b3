// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The operands of `get` and `watch`: the names that `list` prints, and words for several of them.
#pragma once

#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "cli/options.h"
#include "clients/event.h"

namespace norvik::qel::monitor {

// The charge limits are no family of the library: they belong to the thermal family.
inline constexpr std::string_view kLimitsWord = "bcl";

// A value that an operand names.
struct Named {
  std::string_view family;  // of kClientFamilies, or kLimitsWord
  // "battery_level", "SKIN:skin". For a temperature that has not been looked up, what was typed;
  // kThermalFamily for all of them.
  std::string key;
  bool operator==(const Named&) const = default;
};

// A word that stands for several names.
struct NameWord {
  std::string_view word;
  std::string_view text;  // what it stands for, for completions
};
std::span<const NameWord> NameWords();
// Whether the word stands for temperatures. As the first of several operands it says that the
// others are temperatures, which may then be named without their types.
bool IsThermalWord(std::string_view word);
// Whether the command can name the value: `watch` cannot name those without callbacks.
bool CanName(const Command& command, std::string_view key);

// The names that the command accepts, for error messages.
std::string KnownNames(const Command& command);
// The names in the operands, without those of a device. Throws UsageError.
std::vector<Named> NamesIn(const Options& options);

// The report of a temperature that is named by type and name, or by name. Null if there is none.
const TemperatureReport* FindReport(std::string_view name,
                                    std::span<const TemperatureReport> reports);
// Replaces the names of temperatures by those that are reported, and that of all temperatures by
// each that the command can name. Each name comes once. A name that is not reported stays.
std::vector<Named> LookedUp(const std::vector<Named>& names, const Command& command,
                            std::span<const TemperatureReport> reports);

// The families of the library that the names belong to.
std::set<std::string_view> FamiliesOf(const std::vector<Named>& names);

}  // namespace norvik::qel::monitor
