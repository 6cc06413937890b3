// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/options.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/decimal.h"
#include "cli/duration.h"
#include "cli/words.h"

namespace norvik::qel::monitor {

namespace {

// The entry of that name; otherwise the error lists the names there are.
template <typename Entry>
const Entry& Find(std::span<const Entry> entries, std::string_view name, const std::string& where) {
  std::string names;
  for (const Entry& entry : entries) {
    if (entry.name == name) return entry;
    names += (names.empty() ? "" : " or ") + std::string(entry.name);
  }
  const std::string wrong =
      name.empty() ? "a name is missing" : "unknown '" + std::string(name) + "'";
  throw UsageError(where + ": " + wrong + ", use " + names);
}

Options::Command FindCommand(const std::string& name) {
  if (name.empty()) {
    throw UsageError(std::string("a command is missing, use ") + kCommandNames);
  }
  if (name == "watch") return Options::Command::kWatch;
  if (name == "get") return Options::Command::kGet;
  if (name == "dump") return Options::Command::kDump;
  if (name == "demo") return Options::Command::kDemo;
  if (name == "play") return Options::Command::kPlay;
  if (name == "plot") return Options::Command::kPlot;
  return Options::Command::kRecord;
}

// `name` is the command's, whose families they are.
const Family& FindFamily(std::span<const Family> families, const Words& words,
                         const std::string& name) {
  const Family& family = Find(families, words.family, name);
  const std::string where = name + " " + words.family + ": ";
  if (family.operand.empty() && !words.operands.empty()) {
    throw UsageError(where + "'" + words.operands.front() + "' is too much");
  }
  const bool complete = std::none_of(words.operands.begin(), words.operands.end(),
                                     [](const std::string& operand) { return operand.empty(); });
  if (!family.operand.empty() && (words.operands.empty() || !complete)) {
    throw UsageError(where + "a name is missing, give one or more " + std::string(family.operand));
  }
  return family;
}

// Of a command that takes one and nothing else.
void CheckFile(const Words& words, const std::string& command) {
  if (words.operands.empty() || words.operands.front().empty()) {
    throw UsageError(command + ": the name of a file is missing");
  }
  if (words.operands.size() > 1) {
    throw UsageError(command + ": '" + words.operands[1] + "' is too much");
  }
}

double FindSpeed(const std::string& text) {
  constexpr double kHighest = 1e6;
  const std::optional<double> speed = ParseDecimal(text);
  if (speed && *speed > 0 && *speed <= kHighest) return *speed;
  throw UsageError("--speed: '" + text +
                   "' is no speed, use a number above 0 such as 0.5 or 10, at most 1000000");
}

void SetUpPlay(const Words& words, Options& options) {
  CheckFile(words, "play");
  if (words.speed && words.step) throw UsageError("--step: it knows no --speed");
  if (words.speed) options.speed = FindSpeed(*words.speed);
  options.step = words.step;
}

void SetUpPlot(const Words& words, Options& options) {
  CheckFile(words, "plot");
  const std::string output = words.output.value_or("");
  if (output.empty()) throw UsageError("plot: --output FILE is missing");
  if (!output.ends_with(".svg") && !output.ends_with(".png")) {
    throw UsageError("--output: '" + output + "' ends neither with .svg nor with .png");
  }
  options.output = output;
}

void CheckAreForTheirCommands(const Words& words, Options::Command command) {
  using Command = Options::Command;
  if (words.speed && command != Command::kPlay) throw UsageError("--speed: only play takes it");
  if (words.step && command != Command::kPlay) throw UsageError("--step: only play takes it");
  if (words.output && command != Command::kPlot) throw UsageError("--output: only plot takes it");
  const bool is_for_a_file = command == Command::kPlay || command == Command::kPlot;
  if (is_for_a_file && words.device) {
    throw UsageError("--device: what a recording tells comes from no other device");
  }
}

void SetUpRecording(const Words& words, Options& options) {
  const bool is_beside =
      options.command == Options::Command::kDemo || options.command == Options::Command::kPlay;
  if (words.record) {
    if (!is_beside) throw UsageError("--record: only demo and play take it");
    if (words.record->empty()) throw UsageError("--record: the name of a file is missing");
    options.record = *words.record;
  }
  if (!words.force) return;
  if (options.command != Options::Command::kRecord && options.record.empty()) {
    throw UsageError("--force: nothing is to be recorded");
  }
  options.existing = ExistingFile::kOverwrite;
}

std::chrono::milliseconds FindDuration(const std::string& text, Options::Command command) {
  using Command = Options::Command;
  if (command != Command::kWatch && command != Command::kDemo && command != Command::kRecord) {
    throw UsageError("--for: only watch, demo and record take it");
  }
  const auto duration = ParseDuration(text);
  if (!duration) {
    throw UsageError("--for: '" + text + "' is no duration, use one such as 500ms, 10s or 2m");
  }
  return *duration;
}

}  // namespace

Options ParseOptions(int argc, char** argv) {
  const Words words = ParseWords(argc, argv);
  Options options;
  options.json = words.json;
  options.verbose = words.verbose;
  if (words.help || words.version) {
    options.command = words.help ? Options::Command::kHelp : Options::Command::kVersion;
    options.help_of = words.command;
    return options;
  }
  options.command = FindCommand(words.command);
  options.device =
      words.device ? &Find(DeviceTypes(), *words.device, "--device") : DeviceTypes().data();
  if (options.command == Options::Command::kWatch) {
    options.family = &FindFamily(WatchedFamilies(), words, "watch");
  } else if (options.command == Options::Command::kGet) {
    options.family = &FindFamily(AskedFamilies(), words, "get");
  }
  if (options.command == Options::Command::kRecord) CheckFile(words, "record");
  if (options.command == Options::Command::kPlay) SetUpPlay(words, options);
  if (options.command == Options::Command::kPlot) SetUpPlot(words, options);
  CheckAreForTheirCommands(words, options.command);
  SetUpRecording(words, options);
  options.operands = words.operands;
  if (words.duration) options.duration = FindDuration(*words.duration, options.command);
  return options;
}

}  // namespace norvik::qel::monitor
