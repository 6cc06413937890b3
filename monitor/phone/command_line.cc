// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "phone/command_line.h"

#include <getopt.h>

#include <algorithm>
#include <span>
#include <string_view>

#include "cli/duration.h"

namespace norvik::qel::monitor {

namespace {

enum Letter : int { kHelp = 'h', kFor = 'f', kVersion = 'v' };

constexpr option kLongOptions[] = {
    {.name = "help", .has_arg = no_argument, .flag = nullptr, .val = kHelp},
    {.name = "for", .has_arg = required_argument, .flag = nullptr, .val = kFor},
    {.name = "version", .has_arg = no_argument, .flag = nullptr, .val = kVersion},
    {},
};

const Family& FindFamily(std::span<const Family> families, const std::string& command,
                         std::string_view name) {
  std::string names;
  for (const Family& family : families) {
    if (family.name == name) return family;
    names += (names.empty() ? "" : " or ") + std::string(family.name);
  }
  const std::string wrong =
      name.empty() ? "a name is missing" : "unknown '" + std::string(name) + "'";
  throw UsageError(command + ": " + wrong + ", use " + names);
}

void CheckOperands(const Family& family, const std::string& command,
                   std::span<const std::string> operands) {
  const std::string where = command + " " + std::string(family.name) + ": ";
  if (family.operand.empty()) {
    if (!operands.empty()) throw UsageError(where + "'" + operands.front() + "' is too much");
    return;
  }
  const bool has_empty = std::count(operands.begin(), operands.end(), "") > 0;
  if (operands.empty() || has_empty) {
    throw UsageError(where + "a name is missing, give one or more " + std::string(family.operand));
  }
}

// `words`: what stands on the command line beside options.
void SetUpCommand(std::span<const std::string> words, Options& options) {
  if (words.empty()) throw UsageError("a command is missing, use watch, get or dump");
  const std::string& command = words.front();
  words = words.subspan(1);
  if (command == "dump") {
    if (!words.empty()) throw UsageError("dump: '" + words.front() + "' is too much");
    options.command = Options::Command::kDump;
    return;
  }
  if (command != "watch" && command != "get") {
    throw UsageError("unknown command '" + command + "', use watch, get or dump");
  }
  const bool watches = command == "watch";
  options.command = watches ? Options::Command::kWatch : Options::Command::kGet;
  options.family = &FindFamily(watches ? WatchedFamilies() : AskedFamilies(), command,
                               words.empty() ? "" : words.front());
  if (!words.empty()) words = words.subspan(1);
  CheckOperands(*options.family, command, words);
  options.operands.assign(words.begin(), words.end());
}

}  // namespace

Options ParsePhoneOptions(int argc, char** argv) {
  Options options;
  options.device = DeviceTypes().data();
  bool help = false;
  bool version = false;
  opterr = 0;  // what is wrong is told in this program's own way
  while (true) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): there is no other thread yet
    const int letter = getopt_long(argc, argv, ":h", kLongOptions, nullptr);
    if (letter == -1) break;
    if (letter == kHelp) {
      help = true;
    } else if (letter == kVersion) {
      version = true;
    } else if (letter == kFor) {
      options.duration = ParseDuration(optarg);
      if (!options.duration) {
        throw UsageError("--for: '" + std::string(optarg) +
                         "' is no duration, use one such as 500ms, 10s or 2m");
      }
    } else {
      std::string word = argv[optind - 1];
      // Of several short ones in a word only the letter is known.
      if (optopt != 0 && !word.starts_with("--")) word = {'-', static_cast<char>(optopt)};
      throw UsageError(word + (letter == ':' ? ": a value is missing" : ": unknown option"));
    }
  }
  if (help || version) {
    options.command = help ? Options::Command::kHelp : Options::Command::kVersion;
    return options;
  }
  const std::vector<std::string> words(argv + optind, argv + argc);
  SetUpCommand(words, options);
  if (options.duration && options.command != Options::Command::kWatch) {
    throw UsageError("--for: only watch takes it");
  }
  return options;
}

std::string PhoneUsage() {
  return R"(quorvel: watch what the Quorvel library tells an audio stack of this phone

Usage: quorvel COMMAND [OPTIONS]

Commands:
  watch battery       print battery and charger values as they change, until Ctrl-C
  get battery         ask for the values once
  watch sensors       print what the proximity and hinge angle sensors read, until Ctrl-C
  get sensors         wait for what they read now; one that has never reported reads 0
  watch thermal TYPE:NAME...
                      print how much the phone throttles for these temperatures, as it changes,
                      until Ctrl-C: SKIN:skin, for one
  get temperatures NAME...
                      ask for these temperatures once, by the device maker's names
  get bcl             ask once how near the battery is to its limits of current and voltage
  dump                print the state of the library, all families, as the library describes it

Options:
  --for DURATION      end by itself after this time: 500ms, 10s, 2m, 1h (watch)
  --help, -h          this text
  --version           the version

What the library logs is in the phone's log: logcat shows it.

Exit code: 0 success, also when Ctrl-C ends a command; 1 something failed, and standard error says
what; 2 the command line is wrong.)";
}

}  // namespace norvik::qel::monitor
