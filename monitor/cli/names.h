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

// The words that stand for several names.
inline constexpr std::string_view kNameWords[] = {"battery", "sensors", "thermal", "temperatures",
                                                  "bcl"};
// Whether the word stands for all temperatures.
bool IsThermalWord(std::string_view word);
// Whether the command takes the word or name: `watch` takes none without callbacks.
bool CanName(const Command& command, std::string_view name);
// All that the command takes, for error messages.
std::string KnownNames(const Command& command);

// The operands. Without the first one if that only says that all others are temperatures: "get
// temperatures skin", where they need no types, "watch thermal SKIN:skin".
std::span<const std::string> NamesIn(const Options& options);
// The keys that the operands name. Those of temperatures are not looked up: kThermalFamily stands
// for all, ":skin" for one without a type, and a type may be in lower case. Throws UsageError.
std::vector<std::string> KeysIn(const Options& options);
// Null if no report is of this temperature.
const TemperatureReport* FindReport(std::string_view key,
                                    const std::vector<TemperatureReport>& reports);
// The keys with those of the reported temperatures, each once. What is not reported stays.
std::vector<std::string> LookedUp(const std::vector<std::string>& keys,
                                  const std::vector<TemperatureReport>& reports);

std::string_view ServiceOf(std::string_view key);
// The families of the library that the keys belong to.
std::set<std::string_view> FamiliesOf(const std::vector<std::string>& keys);

}  // namespace norvik::qel::monitor
