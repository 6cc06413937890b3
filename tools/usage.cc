#include "tools/usage.h"

#include "tools/device.h"

namespace norvik::qel::tool {

namespace {

constexpr char kCommands[] =
    R"(quorvel: watch what the Quorvel library tells an audio stack of its device

Usage: quorvel COMMAND [OPTIONS]

Commands:
  demo                tell the library's story on a simulated phone, in some 20 seconds,
                      and check that it goes as told;
                      with another device: show what that device has
  watch battery       print battery and charger values as they change, until Ctrl-C
  get battery         ask for the values once
  watch sensors       print what the proximity and hinge angle sensors read, until Ctrl-C
  get sensors         wait for what they read now; one that has never reported reads 0
  watch thermal TYPE:NAME...
                      print how much the device throttles for these temperatures, as it changes,
                      until Ctrl-C: SKIN:skin, for one
  get temperatures NAME...
                      ask for these temperatures once, by the device maker's names
  get bcl             ask once how near the battery is to its limits of current and voltage
  dump                print the state of the library, all families, as the library describes it
  record FILE         write down what the device reports and when clients of all families are
                      called, until Ctrl-C; the file is complete at every moment
  play FILE           let a simulated phone go through what the file tells, print what the clients
                      hear, and fail when something that the file expects does not come; a file
                      with a fault is refused before anything is played
  plot FILE --output PLOT.svg|PLOT.png
                      draw the file as a timeline, with gnuplot

Options:
  --device NAME       where the values come from:
)";

constexpr char kOptions[] =
    R"help(  --for DURATION      end by itself after this time: 500ms, 10s, 2m, 1h
                      (watch, record; demo on a device without a story, where it is 5s)
  --record FILE       write a recording as well (demo, play)
  --force             overwrite the recording if there is one of that name; else that is refused
  --speed N           so many times as fast as it was (play)
  --step              one event at each Enter, at no pace of its own (play)
  --output FILE       what to draw into (plot); it is replaced
  --json              one JSON object a line instead of text
  --verbose           the library's debug log on standard error; else warnings only
  --help, -h          this text
  --version           the version

Output of watch and demo: a line for each call of a client's callback,
  12:00:03.120  battery level             50 %  ->  49 %
and lines marked ** for what only the device knows: that a service died, came back, refused
a call, or that the library has linked to it (registered its callback there) or listens to a
sensor.

TYPE is CPU, GPU, BATTERY, SKIN, USB_PORT, POWER_AMPLIFIER, BCL_VOLTAGE, BCL_CURRENT,
BCL_PERCENTAGE or NPU. Throttling goes NONE, LIGHT, MODERATE, SEVERE, CRITICAL, EMERGENCY,
SHUTDOWN. While the thermal service is not up, watch waits and the library looks for it, ten times,
once a second; a temperature that it then does not report is named in the debug log only.

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
given (degrees Celsius); bcl_current and bcl_voltage (lists of throttling).

Environment: QUORVEL_THERMAL_TYPES names a file that tells what the thermal zones of this machine
are, for the device linux.

Recordings: one JSON object a line, as docs/recordings.md describes; they can be written by hand and
say what is to be expected, as docs/examples/demo.jsonl does, the story of the demo.

Exit code: 0 on success, also when Ctrl-C ends a command; 1 when something failed, such as asking
for a temperature that the device does not have, playing a file that is no recording, or something
that the demo or a played file expects and that does not come; 2 when the command line is wrong.
)help";

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

}  // namespace

std::string Usage() {
  return kCommands + Devices() + kOptions;
}

}  // namespace norvik::qel::tool
