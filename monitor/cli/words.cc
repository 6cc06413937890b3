// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/words.h"

#include <CLI/CLI.hpp>

#include "cli/options.h"

namespace norvik::qel::monitor {

namespace {

// CLI11's own help and its checks for what is missing are off: --help is to work wherever it
// stands, and all else is to be refused in one line.
void Describe(CLI::App& app, Words& words) {
  app.set_help_flag();
  app.fallthrough();
  app.require_subcommand(0, 1);
  app.add_flag("-h,--help", words.help);
  app.add_flag("--version", words.version);
  app.add_flag("--json", words.json);
  app.add_flag("--verbose", words.verbose);
  app.add_flag("--force", words.force);
  app.add_flag("--step", words.step);
  app.add_option("--record", words.record)->type_name("FILE");
  app.add_option("--output", words.output)->type_name("FILE");
  app.add_option("--speed", words.speed)->type_name("N");
  app.add_option("--device", words.device)->type_name("NAME");
  app.add_option("--for", words.duration)->type_name("DURATION");
  for (const char* command : {"watch", "get"}) {
    CLI::App* const subcommand = app.add_subcommand(command)->fallthrough();
    subcommand->add_option("FAMILY", words.family);
    subcommand->add_option("OPERAND", words.operands);
  }
  for (const char* command : {"dump", "demo"}) app.add_subcommand(command)->fallthrough();
  for (const char* command : {"record", "play", "plot"}) {
    app.add_subcommand(command)->fallthrough()->add_option("FILE", words.operands);
  }
}

}  // namespace

Words ParseWords(int argc, char** argv) {
  CLI::App app;
  Words words;
  Describe(app, words);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ExtrasError& error) {
    const std::vector<std::string> rest = app.remaining();
    const bool is_command =
        app.get_subcommands().empty() && !rest.empty() && !rest.front().starts_with('-');
    throw UsageError(is_command ? "unknown command '" + rest.front() + "', use " + kCommandNames
                                : error.what());
  } catch (const CLI::ParseError& error) {
    throw UsageError(error.what());
  }
  const std::vector<CLI::App*> found = app.get_subcommands();
  if (!found.empty()) words.command = found.front()->get_name();
  return words;
}

}  // namespace norvik::qel::monitor
