// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <string>
#include <vector>

#include "cli/command_table.h"
#include "cli/commands.h"
#include "clients/subjects.h"
#include "output/output.h"
#include "output/terminal.h"

namespace norvik::qel::monitor {

namespace {

constexpr std::string_view kPurpose = "show what the Quorvel library reports to an audio service";

struct Entry {
  std::string_view name;
  std::string_view text;
};

constexpr Entry kOutput[] = {
    {"12:00:03.120  battery_level  50 %  ->  49 %", "a client's callback was called"},
    {"12:00:03.120  ** ...",
     "the device reports that a service started, died or refused a call, or that the library "
     "registered a callback there"},
};

constexpr Entry kJson[] = {
    {"all", "\"time\" (ISO 8601, UTC), \"device\" and \"event\", one of the following"},
    {"value",
     "\"property\", \"old\", \"new\": a number; true or false for a charger that is online or not; "
     "null for what is unknown or absent; for throttling an object with \"level\" (0 to 6) and "
     "\"name\""},
    {"reading", "\"property\", \"value\""},
    {"service_started, service_died, callback_registered, callback_unregistered",
     "\"service\": \"health\", \"thermal\", \"thermal (HIDL)\" for the older kind, or \"sensor\" "
     "with the sensor as \"detail\""},
    {"call_refused, notice", "\"service\", \"detail\""},
    {"item",
     "\"service\", \"property\", \"value\", \"unit\", \"severity\", \"source\", \"remark\" "
     "(list, status)"},
    {"supply",
     "\"name\", \"kind\", \"value\", \"property\" (what it is a part of), \"remark\" (list)"},
    {"name", "\"property\" (list --names)"},
    {"check",
     "\"subject\", \"check\", \"result\": \"ok\", \"warning\" or \"failed\"; \"detail\", "
     "\"next_step\" (doctor)"},
    {"dump", "\"family\": \"battery\", \"sensors\" or \"thermal\"; \"text\""},
    {"heading, narration", "\"text\" (demo, play)"},
    {"summary",
     "\"success\", \"callbacks\", \"text\"; of the health service \"deaths\", \"relinks\", "
     "\"refusals\"; of the thermal service \"thermal_deaths\" (demo, play); \"success\", \"text\" "
     "(doctor)"},
    {"properties",
     "one of battery_level (percent), battery_cycle_count, wireless_charger, dock_charger, "
     "proximity (cm), hinge_angle (degrees), TYPE:NAME (in value the throttling, otherwise degrees "
     "Celsius, mA, mV or percent), bcl_current, bcl_voltage (lists of throttling)"},
};

constexpr Entry kEnvironment[] = {
    {"QUORVEL_DEVICE", "the device if --device is not given"},
    {"NO_COLOR", "if not empty, the text on a terminal has no colours"},
    {"COLUMNS", "the width of the text, instead of that of the terminal"},
    {"QUORVEL_LOG",
     "what the library logs without --verbose: debug, info, warn, error (the default) or none"},
    {"QUORVEL_THERMAL_TYPES",
     "a file with the types of this machine's thermal zones; host/linux_machine/README.md "
     "describes it"},
};

constexpr Entry kExitCodes[] = {
    {"0",
     "done; also when SIGINT (Ctrl-C) or SIGTERM ends watch, record or status "
     "--follow, which run until then, or "
     "when their reader closes the output"},
    {"1",
     "failed, and standard error says why: a service cannot be queried, a file cannot be read or "
     "is no recording or exists already, output cannot be written, something that the demo or a "
     "played file expects does not happen"},
    {"2", "the command line is wrong"},
    {"3", "a value that was asked for is unknown or absent (get, watch)"},
    {"130",
     "interrupted by SIGINT or SIGTERM, or by a reader that closed the output, before it was done"},
};

struct Section {
  std::string_view title;
  std::string_view manual_title;
  std::span<const Entry> entries;
};

constexpr Section kSections[] = {{"Output", "OUTPUT", kOutput},
                                 {"JSON", "JSON", kJson},
                                 {"Environment", "ENVIRONMENT", kEnvironment},
                                 {"Exit codes", "EXIT STATUS", kExitCodes}};

std::string Types() {
  std::string text = "TYPE is one of";
  for (const std::string_view& type : kThermalTypes) {
    text.append(" ").append(type) += &type == &kThermalTypes.back() ? '.' : ',';
  }
  return text + " UNKNOWN is what a service reports for any other.";
}

std::string NameOf(const Option& option) {
  std::string name = "--" + std::string(option.name);
  if (!option.value.empty()) name.append(" ").append(option.value);
  return option.letter == 0 ? name : name + ", -" + option.letter;
}

// The option's text. That of --device lists the device types of this build.
std::string TextOf(const Option& option) {
  std::string text(option.text);
  if (option.value != "DEVICE") return text;
  for (const DeviceType& type : DeviceTypes()) {
    text.append(&type == DeviceTypes().data() ? ": " : "; ").append(type.name);
    text.append(&type == DeviceTypes().data() ? " (the default), " : ", ").append(type.description);
  }
  return text;
}

// The commands that take the option, for the general help.
std::string TakersOf(const Option& option) {
  return option.is_general ? "" : " (" + Enumerated(CommandNames(&option), "and") + ")";
}

std::string UsageLine(const std::string& start, const std::string& words, size_t columns) {
  const size_t indent = start.size() + 4;
  return start + Wrapped("quorvel " + words + " [OPTIONS]", columns, indent, start.size());
}

std::string GeneralHelp(size_t columns) {
  std::string text = Wrapped("quorvel: " + std::string(kPurpose), columns) + "\n" +
                     UsageLine("Usage: ", "COMMAND [OPERAND...]", columns) + "\nCommands:\n";
  ForEachCommand([&](const Command& command) {
    text += TableEntry(UsageOf(command), command.summary, columns);
  });
  text += "\nOptions:\n";
  for (const Option& option : AllOptions()) {
    text += TableEntry(NameOf(option), TextOf(option) + TakersOf(option), columns);
  }
  text += "\n" + Wrapped(Types(), columns);
  for (const Section& section : kSections) {
    text.append("\n").append(section.title) += ":\n";
    for (const Entry& entry : section.entries) text += TableEntry(entry.name, entry.text, columns);
  }
  return text;
}

// Throws UsageError for an unknown command.
std::string HelpOf(const std::string& name, size_t columns) {
  const Command* const found = CommandNamed(name);
  if (found == nullptr) {
    throw UsageError("help: unknown command '" + name + "', use " +
                     Enumerated(CommandNames(), "or"));
  }
  const std::string usage = UsageOf(*found);
  std::string text =
      UsageLine("Usage: ", usage, columns) + "\n" + TableEntry(usage, found->summary, columns);
  if (!found->text.empty()) text += "\n" + Wrapped(found->text, columns);
  if (found->operands.starts_with("NAME")) text += "\n" + Wrapped(Types(), columns);
  text += "\nOptions:\n";
  for (const Option& option : AllOptions()) {
    if (Takes(*found, option)) text += TableEntry(NameOf(option), TextOf(option), columns);
  }
  return text + "\n" +
         Wrapped("'quorvel help' describes the output, the exit codes and the environment.",
                 columns);
}

// "NAME..." in the markup of the manual page: words in capitals are arguments.
std::string Argument(std::string_view words) {
  return words.empty() ? "" : " Ar " + std::string(words);
}

// Starts each sentence on a new line, as manual pages do.
std::string ManualItem(const std::string& head, std::string text) {
  for (size_t at = 0; (at = text.find(". ", at)) != std::string::npos;) text[++at] = '\n';
  return ".It " + head + "\n" + text + ".\n";
}

std::string Capital(std::string text) {
  if (text.front() >= 'a' && text.front() <= 'z') text.front() -= 'a' - 'A';
  return text;
}

}  // namespace

std::string ManualLists() {
  std::string page = ".Pp\nThe commands are:\n.Bl -tag -width Ds\n";
  ForEachCommand([&](const Command& command) {
    std::string head = "Ic " + std::string(command.name);
    std::string text = Capital(std::string(command.summary));
    if (!command.text.empty())
      text += ".\n" + std::string(command.text.substr(0, command.text.size() - 1));
    page += ManualItem(head + Argument(command.operands), text);
  });
  std::string types = Types();
  types[types.find(". ") + 1] = '\n';
  page += ".El\n.Pp\n" + types +
          "\n.Pp\nOptions may precede or follow the command.\n.Bl -tag -width Ds\n";
  for (const Option& option : AllOptions()) {
    std::string head = "Fl -" + std::string(option.name) + Argument(option.value);
    if (option.letter != 0) head += std::string(" , Fl ") + option.letter;
    page += ManualItem(head, Capital(TextOf(option) + TakersOf(option)));
  }
  page += ".El\n";
  for (const Section& section : kSections) {
    page.append(".Sh ").append(section.manual_title) += "\n.Bl -tag -width Ds\n";
    for (const Entry& entry : section.entries) {
      page += ManualItem("\"" + std::string(entry.name) + "\"", Capital(std::string(entry.text)));
    }
    page += ".El\n";
  }
  return page;
}

int Help(const Options& options, Output& output) {
  const size_t columns = StandardOutput().columns;
  std::string text =
      options.operands.empty() ? GeneralHelp(columns) : HelpOf(options.operands.front(), columns);
  text.pop_back();  // Explain() ends the line
  output.Explain(text);
  return EXIT_SUCCESS;
}

}  // namespace norvik::qel::monitor
