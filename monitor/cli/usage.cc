// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/usage.h"

#include "clients/device.h"
#include "clients/thermal_properties.h"

namespace norvik::qel::monitor {

namespace {

// A command, or one of its families. `text` begins the second column and holds whole lines.
struct Command {
  std::string_view name;
  std::string_view operands;  // with a space before
  std::string_view text;
};

constexpr Command kCommands[] = {
    {"demo", "",
     R"(tell the library's story on a simulated phone, in some 20 seconds,
and check that it goes as told;
with another device: show what that device has
)"},
    {"watch", " battery", "print battery and charger values as they change, until Ctrl-C\n"},
    {"get", " battery", "ask for the values once\n"},
    {"watch", " sensors", "print what the proximity and hinge angle sensors read, until Ctrl-C\n"},
    {"get", " sensors", "wait for what they read now; one that has never reported reads 0\n"},
    {"watch", " thermal TYPE:NAME...",
     R"(print how much the device throttles for these temperatures, as it changes,
until Ctrl-C: SKIN:skin, for one
)"},
    {"get", " temperatures NAME...",
     "ask for these temperatures once, by the device maker's names\n"},
    {"get", " bcl", "ask once how near the battery is to its limits of current and voltage\n"},
    {"dump", "", "print the state of the library, all families, as the library describes it\n"},
    {"record", " FILE",
     R"(write down what the device reports and when clients of all families are
called, until Ctrl-C; the file is complete at every moment
)"},
    {"play", " FILE",
     R"(let a simulated phone go through what the file tells, print what the clients
hear, and fail when something that the file expects does not come; a file
with a fault is refused before anything is played
)"},
    {"plot", " FILE --output PLOT.svg|PLOT.png", "draw the file as a timeline, with gnuplot\n"},
};

// `commands` are those that take it, each with a space before and after; none: all of them.
struct Option {
  std::string_view words;
  std::string_view text;
  std::string_view commands;
};

constexpr std::string_view kDeviceOption = "--device NAME";

constexpr Option kOptions[] = {
    {kDeviceOption, "where the values come from:\n", " demo watch get dump record "},
    {"--for DURATION",
     R"(end by itself after this time: 500ms, 10s, 2m, 1h
(watch, record; demo on a device without a story, where it is 5s)
)",
     " watch record demo "},
    {"--record FILE", "write a recording as well (demo, play)\n", " demo play "},
    {"--force",
     R"(overwrite the recording if there is one of that name; else that is refused
(record; demo and play with --record)
)",
     " record demo play "},
    {"--speed N", "so many times as fast as it was, above 0 (play)\n", " play "},
    {"--step", "one event at each Enter, at no pace of its own (play)\n", " play "},
    {"--output FILE", "what to draw into (plot); it is replaced\n", " plot "},
    {"--json", "one JSON object a line instead of text\n", ""},
    {"--verbose", "the library's debug log on standard error; else warnings only\n", ""},
    {"--help, -h", "this text; after a command: what concerns that command\n", ""},
    {"--version", "the version\n", ""},
};

// `commands` as above.
struct Section {
  std::string_view text;
  std::string_view commands;
};

// Followed by the types, which are a table of their own.
constexpr std::string_view kTypeIs = "\nTYPE is one of";

constexpr Section kSections[] = {
    {R"(
Examples:
  quorvel demo                                see the library at work
  quorvel watch battery --device linux        follow this machine's own battery
  quorvel get temperatures skin cpu --json    ask, for a program
  quorvel record day.jsonl --for 1m           then play it, or plot it
)",
     " "},  // of no command in particular
    {R"(
Output: a line for each call of a client's callback,
  12:00:03.120  battery level             50 %  ->  49 %
and lines marked ** for what only the device knows: that a service died, came back, refused
a call, or that the library has linked to it (registered its callback there) or listens to a
sensor.
)",
     " watch demo play "},
    {kTypeIs, " watch "},
    {R"(Throttling goes NONE, LIGHT, MODERATE, SEVERE, CRITICAL, EMERGENCY, SHUTDOWN. While the thermal
service is not up, watch waits and the library looks for it, ten times, once a second; a temperature
that it then does not report is named in the debug log only.
)",
     " watch "},
    {R"help(
JSON: every object has "time" (ISO 8601, UTC) and "event", and by event:
  value                    "property", "old", "new": numbers; true or false for a charger that is
                           online or not; null for what is not known or not there; for
                           throttling an object: "level", 0 to 6, and "name"
  reading                  "property", "value" (get; watch, of what is not there; demo)
  service_started, service_died, callback_registered, callback_unregistered
                           "service": "health", "thermal", "thermal (HIDL)" for the older kind of
                           that, or "sensor" with the sensor as "detail"
  call_refused, notice     "service", "detail": text
  dump                     "family": "battery", "sensors" or "thermal"; "text"
  heading, narration       "text"
  summary                  "success", "callbacks", "text"; of the health service "deaths",
                           "relinks", "refusals"; of the thermal service "thermal_deaths" (demo;
                           play of a file that expects something)
Properties: battery_level (percent), battery_cycle_count, wireless_charger, dock_charger;
proximity (cm), hinge_angle (degrees); throttling by TYPE:NAME as given; temperatures by NAME as
given (degrees Celsius); bcl_current and bcl_voltage (lists of throttling). The decimal point is a
point in every locale.
)help",
     " watch get demo play dump "},
    {R"(
Environment: QUORVEL_THERMAL_TYPES names a file that tells what the thermal zones of this machine
are, for the device linux.
)",
     " watch get demo dump record "},
    {R"(
Recordings: one JSON object a line, as docs/recordings.md describes; they can be written by hand and
say what is to be expected, as docs/examples/demo.jsonl does, the story of the demo.
)",
     " record play plot demo "},
    {R"(
Exit code:
  0  success, also when SIGINT (Ctrl-C) or SIGTERM ends watch, demo, record or play, and when who
     reads the output leaves
  1  something failed, and a line says what: a service that cannot be asked, a temperature or
     sensor that is not heard of, a file that cannot be read, is no recording or exists already,
     output that cannot be written, something that the demo or a played file expects and that
     does not come
  2  the command line is wrong
)",
     ""},
};

bool IsFor(std::string_view commands, std::string_view command) {
  return commands.empty() || command.empty() ||
         commands.find(" " + std::string(command) + " ") != std::string_view::npos;
}

// Two columns. What is too long for the first stands in a line of its own.
void AddEntry(std::string& text, std::string_view first, std::string_view second) {
  constexpr size_t kSecond = 22;
  std::string line = "  " + std::string(first);
  if (line.size() + 2 > kSecond) {
    text += line + "\n";
    line.clear();
  }
  while (!second.empty()) {
    const size_t end = second.find('\n') + 1;
    line.resize(kSecond, ' ');
    text += line.append(second.substr(0, end));
    line.clear();
    second.remove_prefix(end);
  }
}

std::string Devices() {
  std::string text;
  for (const DeviceType& type : DeviceTypes()) {
    std::string name(type.name);
    name.resize(11, ' ');
    text += "                        " + name + std::string(type.description);
    text += &type == DeviceTypes().data() ? " (default)\n" : "\n";
  }
  return text;
}

// On lines of at most 100 columns, after the text that stands there.
void AddThermalTypes(std::string& text) {
  size_t column = text.size() - text.rfind('\n') - 1;
  for (const std::string_view& type : kThermalTypes) {
    const bool fits = column + 1 + type.size() + 1 <= 100;
    text += fits ? ' ' : '\n';
    text.append(type) += &type == &kThermalTypes.back() ? '.' : ',';
    column = (fits ? column + 1 : 0) + type.size() + 1;
  }
  text += '\n';
}

void AddOptions(std::string& text, std::string_view command) {
  text += "\nOptions:\n";
  for (const Option& option : kOptions) {
    if (!IsFor(option.commands, command)) continue;
    AddEntry(text, option.words, option.text);
    if (option.words == kDeviceOption) text += Devices();
  }
}

void AddSections(std::string& text, std::string_view command) {
  for (const Section& section : kSections) {
    if (!IsFor(section.commands, command)) continue;
    text += section.text;
    if (section.text == kTypeIs) AddThermalTypes(text);
  }
}

}  // namespace

std::string Usage(std::string_view command) {
  std::string text;
  if (command.empty()) {
    text =
        "quorvel: watch what the Quorvel library tells an audio stack of its device\n\n"
        "Usage: quorvel COMMAND [OPTIONS]\n\nCommands:\n";
  } else {
    text = "Usage: quorvel " + std::string(command) + " ... [OPTIONS]\n\n";
  }
  for (const Command& entry : kCommands) {
    if (!command.empty() && entry.name != command) continue;
    AddEntry(text, std::string(entry.name) + std::string(entry.operands), entry.text);
  }
  AddOptions(text, command);
  AddSections(text, command);
  return text + (command.empty() ? "" : "\nquorvel --help tells of all commands.\n");
}

}  // namespace norvik::qel::monitor
