#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

"""Runs the monitor as its users do.

usage: monitor_test.py QUORVEL QUORVEL_BARE

QUORVEL_BARE is the monitor built for devices that lack something: "bare" any service, "flat" a
hinge, a reading of its other sensor and limits of its battery's voltage.
"""

import contextlib
import datetime
import json
import os
import re
import signal
import subprocess
import sys
import tempfile
import unittest

QUORVEL, QUORVEL_BARE = (os.path.abspath(path) for path in sys.argv[1:3])
LIMIT = 60  # seconds; only a broken monitor meets it

PROPERTIES = ["battery_level", "battery_cycle_count", "wireless_charger", "dock_charger"]
VALUE_LINE = re.compile(r"^\d\d:\d\d:\d\d\.\d{3}  ([\w: ]+?)  +(.+)  ->  (.+)$", re.MULTILINE)

SEVERITIES = ["NONE", "LIGHT", "MODERATE", "SEVERE", "CRITICAL", "EMERGENCY", "SHUTDOWN"]

# A machine with a battery at 77 % on a wireless charger.
MACHINE = """\
P: /devices/test/power_supply/BAT0
E: SUBSYSTEM=power_supply
A: type=Battery
A: scope=System
A: present=1
A: status=Charging
A: capacity=77
A: cycle_count=123

P: /devices/test/power_supply/pad
E: SUBSYSTEM=power_supply
A: type=Wireless
A: online=1

P: /devices/virtual/thermal/thermal_zone0
E: SUBSYSTEM=thermal
A: type=acpitz
A: temp=warm

P: /devices/virtual/thermal/thermal_zone1
E: SUBSYSTEM=thermal
A: type=x86_pkg_temp
A: temp=81500
A: mode=enabled
A: trip_point_0_type=passive
A: trip_point_0_temp=80000
A: trip_point_0_hyst=0

P: /devices/test/iio:device0
E: SUBSYSTEM=iio
A: name=hinge
A: label=hinge
A: in_angl_raw=90
A: in_angl_scale=0.017453293
"""


def start(*args, program=QUORVEL, env=None, **kwargs):
    env = {"QUORVEL_DEVICE": "simulated", **(env or os.environ)}
    if program == QUORVEL_BARE:
        del env["QUORVEL_DEVICE"]
    kwargs["env"] = env
    return subprocess.Popen(
        (program, *args),
        **{"stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE, "stderr": subprocess.PIPE,
           "text": True, **kwargs})


def finish(process):
    try:
        out, err = process.communicate(timeout=LIMIT)
    except subprocess.TimeoutExpired:
        process.kill()
        raise
    return process.returncode, out, err


def run(*args, **kwargs):
    return finish(start(*args, **kwargs))


def without_addresses(text):
    return re.sub("0x[0-9a-f]+", "0x", text)


def on_machine(description, *args, **kwargs):
    """The Linux device, with what is described and nothing else."""
    with tempfile.NamedTemporaryFile("w", suffix=".umockdev") as file:
        file.write(description)
        file.flush()
        devices = ("--device", file.name) if description else ()
        return run(*devices, "--", QUORVEL, *args, "--device", "linux", program="umockdev-run",
                   **kwargs)


class ToolTest(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        # What takes long runs beside all the rest.
        cls.demo = start("demo")
        cls.demo_json = start("demo", "--json")
        cls.script = start("watch", "battery", "--json", "--for", "15s")
        cls.sensor_script = start("watch", "sensors", "--json", "--for", "8s")
        cls.thermal_script = start("watch", "thermal", "SKIN:skin", "CPU:cpu",
                                 "BCL_CURRENT:AUDIO_current", "--json", "--for", "9s")
        cls.bare_sensors = start("get", "sensors", program=QUORVEL_BARE)
        cls.bare_dump = start("dump", program=QUORVEL_BARE)

    def parse(self, out):
        """The objects of a JSON output, each a whole line with its time."""
        self.assertTrue(out.endswith("\n"))
        objects = [json.loads(line) for line in out.splitlines()]
        times = [o["time"] for o in objects]
        for time in times:
            datetime.datetime.strptime(time, "%Y-%m-%dT%H:%M:%S.%fZ")
            self.assertRegex(time, r"\.\d{3}Z$")
        return objects

    def success(self, result, exit_code=0):
        code, out, err = result
        self.assertEqual(code, exit_code, out + err)
        return out

    def values(self, objects, name):
        return [o["new"] for o in objects
                if o["event"] == "value" and o["property"] == name]

    def levels(self, objects, name):
        """The severities that were heard of one temperature, as a chain of old and new ones."""
        changes = [o for o in objects if o["event"] == "value" and o["property"] == name]
        self.assertEqual([o["old"] for o in changes], [None] + [o["new"] for o in changes][:-1])
        for o in changes:
            self.assertEqual(o["new"]["name"], SEVERITIES[o["new"]["level"]])
        return [o["new"]["level"] for o in changes]

    def test_get_asks_for_the_four_values(self):
        self.assertEqual(
            self.success(run("get", "battery")),
            "Device: simulated\nbattery level             50 %\nbattery cycle count       10\n"
            "wireless charger          offline\ndock charger              offline\n")
        objects = self.parse(self.success(run("--json", "get", "battery")))
        self.assertEqual([(o["event"], o["property"], o["value"]) for o in objects],
                         list(zip(["reading"] * 4, PROPERTIES, [50, 10, False, False])))

    def test_dump_shows_the_library_after_the_first_report(self):
        text = self.success(run("dump"))
        self.assertIn("linked to services = T", text)
        self.assertIn("Battery Level = 50 (clients:1)", text)
        self.assertIn("Dock Charger Is Online = 1 (clients:1)", text)
        text = text.removeprefix("Device: simulated\n")
        sensors = text.index("SensorInfo:\n")
        self.assertIn("active:T, data:5", text[sensors:])
        dumps = self.parse(self.success(run("dump", "--json")))
        self.assertEqual([(o["event"], o["family"]) for o in dumps],
                         [("dump", family) for family in ("battery", "sensors", "thermal")])
        thermal = text.index("ThermalInfo:\n")
        self.assertEqual([o["text"] for o in dumps[:2]], [text[:sensors], text[sensors:thermal]])
        self.assertEqual(without_addresses(dumps[2]["text"]), without_addresses(text[thermal:]))
        self.assertIn("bcl name = AUDIO_current\n  bcl status = 0\n", text[thermal:])
        self.assertIn("temperature_name:skin", text[thermal:])

    def test_watch_ends_after_its_time_in_any_locale(self):
        outputs = [VALUE_LINE.findall(self.success(
            run("watch", "battery", "--for", "400ms", env={**os.environ, "LC_ALL": locale})))
            for locale in ("C", "de_DE.UTF-8")]
        self.assertEqual(outputs[0], [
            ("battery level", "unknown", "50 %"), ("battery cycle count", "unknown", "10"),
            ("wireless charger", "unknown", "offline"), ("dock charger", "unknown", "offline")])
        self.assertEqual(outputs[1], outputs[0])

    def test_the_simulated_phone_lives_while_it_is_watched(self):
        objects = self.parse(self.success(finish(self.script)))
        events = [o["event"] for o in objects]
        self.assertEqual(self.values(objects, "battery_level")[:6], [50, 49, 48, 49, 50, 51])
        self.assertEqual(self.values(objects, "battery_cycle_count"), [10, 11])
        self.assertEqual(self.values(objects, "wireless_charger"), [False, True, False])
        self.assertEqual(self.values(objects, "dock_charger"), [False, True, False])
        changes = [o for o in objects if o["event"] == "value"]
        self.assertEqual([o["old"] for o in changes[:5]], [None] * 4 + [50])
        # What fell while the service was away arrives with the new link.
        after = objects[events.index("service_died"):]
        self.assertIn("callback_registered", [o["event"] for o in after])
        self.assertEqual(self.values(after, "battery_level")[0], 50)
        self.assertEqual(sorted(o["time"] for o in objects), [o["time"] for o in objects])

    def test_get_waits_for_what_the_sensors_read(self):
        self.assertEqual(self.success(run("get", "sensors")),
                         "Device: simulated\nproximity                 5 cm\n"
                         "hinge angle               0 degrees\n")
        objects = self.parse(self.success(run("get", "sensors", "--json")))
        self.assertEqual([(o["event"], o["property"], o["value"]) for o in objects],
                         [("reading", "proximity", 5), ("reading", "hinge_angle", 0)])

    def test_the_sensors_of_the_simulated_phone_live_while_they_are_watched(self):
        objects = self.parse(self.success(finish(self.sensor_script)))
        # Readings may be heard twice or, on a busy machine, fold.
        angles = self.values(objects, "hinge_angle")
        opening = angles[:angles.index(180) + 1]
        self.assertEqual(opening[0], 0)
        self.assertEqual(sorted(opening), opening)
        self.assertLessEqual(set(opening), {0, 30, 60, 90, 134, 180})
        distances = self.values(objects, "proximity")
        self.assertEqual([new for old, new in zip([None] + distances, distances) if old != new][-3:],
                         [5, 0, 5])
        self.assertEqual({o["service"] for o in objects if o["event"] != "value"}, {"sensor"})

    def test_get_asks_the_thermal_service(self):
        self.assertEqual(self.success(run("get", "temperatures", "skin", "cpu", "skin")),
                         "Device: simulated\nskin                      30.0 degrees C\n"
                         "cpu                       40.0 degrees C\n"
                         "skin                      30.0 degrees C\n")
        self.assertEqual(self.success(run("get", "bcl")),
                         "Device: simulated\nbattery current limits    NONE\n"
                         "battery voltage limits    NONE\n")
        code, out, err = run("get", "temperatures", "nose", "cpu", "--json")
        self.assertEqual(code, 3)
        self.assertIn("quorvel: unknown or not present: nose; it reports cpu, skin, ", err)
        self.assertEqual([(o["event"], o["property"], o["value"]) for o in self.parse(out)],
                         [("reading", "nose", None), ("reading", "cpu", 40)])

    def test_a_thermal_service_of_the_older_kind_is_asked_as_well(self):
        flat = {"program": QUORVEL_BARE}
        limits = [{"level": 0, "name": "NONE"}] + [{"level": 1, "name": "LIGHT"}] * 19
        objects = self.parse(self.success(run("get", "bcl", "--device", "flat", "--json", **flat), 3))
        self.assertEqual([(o["property"], o["value"]) for o in objects],
                         [("bcl_current", limits), ("bcl_voltage", [])])
        self.assertRegex(self.success(run("get", "bcl", "--device", "flat", **flat), 3),
                         r"limits    NONE(, LIGHT){19}\n.*limits    none reported\n\Z")
        # A thermistor that is out of order is there all the same.
        args = ("get", "temperatures", "back:left", "--device", "flat")
        self.assertEqual(self.success(run(*args, **flat), 3),
                         "Device: flat\nback:left                 unknown\n")
        self.assertIsNone(self.parse(self.success(run(*args, "--json", **flat), 3))[0]["value"])
        # Its name has a colon.
        objects = self.parse(self.success(run("watch", "thermal", "SKIN:back:left", "--device",
                                              "flat", "--json", "--for", "1s", **flat)))
        self.assertEqual(self.levels(objects, "SKIN:back:left"), [0])
        self.assertEqual({o["service"] for o in objects if o["event"] != "value"},
                         {"thermal (HIDL)"})

    def test_the_simulated_phone_heats_up_while_it_is_watched(self):
        objects = self.parse(self.success(finish(self.thermal_script)))
        self.assertEqual(self.levels(objects, "SKIN:skin")[:7], [0, 1, 2, 3, 2, 1, 0])
        self.assertEqual(self.levels(objects, "CPU:cpu")[:4], [0, 1, 2, 0])
        self.assertEqual(self.levels(objects, "BCL_CURRENT:AUDIO_current")[:3], [0, 1, 0])
        # The new service is heard.
        after = objects[[o["event"] for o in objects].index("service_died"):]
        self.assertEqual(self.values(after, "SKIN:skin")[0]["level"], 2)
        self.assertEqual({o["service"] for o in objects if o["event"] != "value"}, {"thermal"})

    def test_what_cannot_be_watched_is_named(self):
        # All types that the help lists are the library's.
        types = re.search(r"^TYPE is ([^.]*)[.]", self.success(run("help")), re.MULTILINE)
        types = re.findall(r"[A-Z_]{3,}", types[1])
        self.assertTrue(types)
        for name in types:
            code, _, err = run("watch", "thermal", name + ":nose", "--for", "1s")
            self.assertEqual(code, 3)
            self.assertIn(f"quorvel: the thermal service reports no temperature {name}:nose; it "
                          "reports CPU:cpu, ", err)
            self.assertNotIn("unknown temperature type", err)
        text = self.success(run("watch", "thermal", "SKIN:skin", "--for", "100ms",
                                program=QUORVEL_BARE))
        self.assertIn("No thermal service yet", text)
        self.assertNotIn("->", text)

    def test_a_sensor_that_is_not_there_is_no_failure(self):
        flat = {"program": QUORVEL_BARE}
        self.assertEqual(
            self.success(run("get", "sensors", "--device", "flat", **flat), 3),
            "Device: flat\nproximity                 0 cm\nhinge angle               not present\n")
        objects = self.parse(self.success(
            run("get", "sensors", "--device", "flat", "--json", **flat), 3))
        self.assertEqual([o["value"] for o in objects], [0, None])
        self.assertIn("hinge angle               not present",
                      self.success(run("watch", "sensors", "--device", "flat", "--for", "100ms",
                                       **flat)))
        self.assertIn("HINGE_ANGLE\n    initialized:T active:F",
                      self.success(run("dump", "--device", "flat", **flat)))

    def test_a_machine_has_what_its_kernel_tells_of(self):
        code, out, err = on_machine(MACHINE, "get", "temperatures", "acpitz", "x86_pkg_temp")
        self.assertEqual(
            out, "Device: linux\nacpitz                    not present\n"
            "x86_pkg_temp              81.5 degrees C\n")
        self.assertEqual(code, 3)
        self.assertIn("unknown or not present: acpitz", err)
        self.assertEqual(
            self.success(on_machine(MACHINE, "get", "sensors"), 3),
            "Device: linux\nproximity                 not present\nhinge angle               90 degrees\n")
        objects = self.parse(self.success(on_machine(
            MACHINE, "watch", "thermal", "CPU:x86_pkg_temp", "--json", "--for", "1s")))
        self.assertEqual(self.levels(objects, "CPU:x86_pkg_temp"), [2])
        text = self.success(on_machine(MACHINE, "dump"))
        self.assertIn("Battery Level = 77", text)
        self.assertIn("HINGE_ANGLE\n    initialized:T active:T, data:90", text)
        self.assertIn("ThermalInfo:\n", text)

    def test_a_machine_may_be_told_what_its_zones_are(self):
        with tempfile.NamedTemporaryFile("w") as types:
            types.write("temperature SKIN x86_pkg_temp\n")
            types.flush()
            environment = os.environ | {"QUORVEL_THERMAL_TYPES": types.name}
            objects = self.parse(self.success(on_machine(
                MACHINE, "watch", "thermal", "SKIN:x86_pkg_temp", "--json", "--for", "1s",
                env=environment)))
            self.assertEqual(self.levels(objects, "SKIN:x86_pkg_temp"), [2])
            types.write("temperature COLD x86_pkg_temp\n")
            types.flush()
            # A broken file is named also where only values are printed, and before a failure.
            notice = f"quorvel: {types.name}:2: "
            self.assertIn(notice, on_machine(MACHINE, "get", "temperatures", "x86_pkg_temp",
                                             env=environment)[2])
            objects = self.parse(on_machine(MACHINE, "get", "temperatures", "attic", "--json",
                                            env=environment)[1])
            self.assertEqual([o["event"] for o in objects], ["notice", "notice", "reading"])
            self.assertIn(types.name + ":2: ", objects[0]["detail"] + objects[1]["detail"])
            code, out, err = on_machine(MACHINE, "watch", "thermal", "CPU:attic", env=environment)
            self.assertEqual(code, 3)
            self.assertIn("** device: " + types.name + ":2: ", out)

    def test_a_signal_ends_watch_and_demo_cleanly(self):
        for command in (["watch", "battery"], ["demo"]):
            for number in (signal.SIGINT, signal.SIGTERM):
                with self.subTest(command=command, number=number):
                    process = start(*command)
                    while "dock charger" not in process.stdout.readline():
                        pass  # It runs once this line has come.
                    process.send_signal(number)
                    code, out, err = finish(process)
                    self.assertEqual(code, 130 if command == ["demo"] else 0, err)
                    self.assertNotIn("quorvel: ", err)
                    self.assertEqual(out.count("Demo interrupted"), command == ["demo"])

    def test_a_reader_that_leaves_ends_watch_quietly(self):
        process = start("watch", "battery")
        process.stdout.readline()
        process.stdout.close()
        code, _, err = finish(process)
        self.assertEqual(code, 0, err)
        self.assertNotIn("quorvel: ", err)

    def test_output_that_cannot_be_written_is_a_failure(self):
        with open("/dev/full", "w", encoding="ascii") as full:
            code, _, err = run("get", "battery", stdout=full)
        self.assertEqual(code, 1)
        self.assertIn("quorvel: cannot write", err)

    def test_verbose_shows_the_debug_log(self):
        quiet = run("dump")
        verbose = run("dump", "--verbose")
        self.assertNotIn(" D audio_hw_battery", quiet[2])
        self.assertIn(" D audio_hw_battery", verbose[2])
        self.assertEqual(verbose[0], quiet[0])
        self.assertEqual(without_addresses(verbose[1]), without_addresses(quiet[1]))

    def test_demo_tells_its_story(self):
        text = self.success(finish(self.demo))
        self.assertEqual([int(n) for n in re.findall(r"^(\d+)\. ", text, re.MULTILINE)],
                         list(range(1, 18)))
        heard = [new for name, _, new in VALUE_LINE.findall(text) if name == "battery level"]
        self.assertEqual(heard, ["50 %", "51 %", "52 %", "53 %", "47 %", "46 %"])
        self.assertIn("** device: the health service died", text)
        self.assertIn("callback is registered with the health service", text)
        self.assertIn("refused a call: registerCallback", text)
        last = text.splitlines()[-1]
        self.assertIn("Demo OK: ", last)
        self.assertRegex(last, r"13 callbacks for the battery, \d+ for the sensors and 10 for the "
                               "heat, 2 deaths of the health service and 1 of the thermal service, "
                               "1 refusal and 2 relinks")
        self.assertEqual(text.count("Demo "), 1)

        # The sensors' part: calls may repeat a reading, or fold.
        listens = text.index("the library listens to the hinge angle sensor")
        self.assertLess(text.index("the sensor service is up"), listens)
        self.assertNotRegex(text[:text.index("the sensor service is up")], r"  ->  .* (cm|degrees)")
        angles = [new for name, _, new in VALUE_LINE.findall(text) if name == "hinge angle"]
        places = [angles.index(f"{angle} degrees") for angle in (29, 60, 89, 135, 180)]
        self.assertEqual(places, sorted(places))
        self.assertEqual(angles[-1], "0 degrees")
        self.assertIn("no longer listens to the proximity sensor", text)

        # The heat's part.
        early, late = text.split("the thermal service is up", maxsplit=1)
        self.assertNotIn("SKIN:skin  ", early)
        heard = VALUE_LINE.findall(late)
        self.assertEqual([(old, new) for name, old, new in heard if name == "SKIN:skin"],
                         list(zip(["unknown", "NONE", "LIGHT", "MODERATE", "SEVERE", "CRITICAL",
                                   "MODERATE"],
                                  ["NONE", "LIGHT", "MODERATE", "SEVERE", "CRITICAL", "MODERATE",
                                   "NONE"])))
        self.assertEqual(re.findall(r"reads: skin ([\d.]+) degrees C, cpu [\d.]+ degrees C", late),
                         ["36.5", "41.2", "46.0", "50.4", "40.7", "31.1"])
        self.assertIn("battery current limits MODERATE, battery voltage limits LIGHT", late)
        self.assertLess(late.index("the thermal service died"), late.index("->  CRITICAL"))

    def test_demo_in_json_sums_up_what_was_seen(self):
        objects = self.parse(self.success(finish(self.demo_json)))
        counts = {(o["event"], o.get("service")): 0 for o in objects}
        for o in objects:
            counts[o["event"], o.get("service")] += 1
        values = counts.pop(("value", None))
        counts.pop(("narration", None))
        self.assertEqual(counts, {
            ("heading", None): 17, ("summary", None): 1,
            ("service_started", "health"): 3, ("service_died", "health"): 2,
            ("callback_registered", "health"): 3, ("call_refused", "health"): 1,
            ("callback_unregistered", "health"): 1, ("service_started", "sensor"): 1,
            ("callback_registered", "sensor"): 2, ("callback_unregistered", "sensor"): 2,
            ("service_started", "thermal"): 2, ("service_died", "thermal"): 1,
            ("callback_registered", "thermal"): 4, ("callback_unregistered", "thermal"): 2})
        self.assertEqual(sum(o.get("property") in PROPERTIES for o in objects), 13)
        summary = objects[-1]
        self.assertEqual([summary[key] for key in
                          ("event", "success", "callbacks", "deaths", "relinks", "refusals",
                           "thermal_deaths")],
                         ["summary", True, values, 2, 2, 1, 1])

    def test_a_machine_without_a_battery_is_said_to_have_none(self):
        self.assertIn("** device: this machine has no battery",
                      self.success(on_machine("", "watch", "battery", "--for", "1s")))
        code, out, err = on_machine("", "get", "battery")
        self.assertEqual(code, 3)
        self.assertIn("battery level             unknown\n", out)
        self.assertRegex(err, "^quorvel: this machine has no battery.*\n"
                              "quorvel: unknown or not present: battery level, battery cycle count")
        objects = self.parse(on_machine("", "get", "battery", "--json")[1])
        self.assertEqual([o["value"] for o in objects if o["event"] == "reading"],
                         [None, None, False, False])
        self.assertEqual({o["device"] for o in objects}, {"linux"})

    def test_a_machine_with_a_battery_is_shown_as_it_is(self):
        objects = self.parse(self.success(
            on_machine(MACHINE, "watch", "battery", "--json", "--for", "1s")))
        self.assertEqual([self.values(objects, name) for name in PROPERTIES],
                         [[77], [123], [True], [False]])

    def test_the_device_is_this_machine_unless_another_one_is_asked_for(self):
        env = {key: value for key, value in os.environ.items() if key != "QUORVEL_DEVICE"}
        for given, option, device in ((None, (), "linux"), ("simulated", (), "simulated"),
                                      ("", (), "linux"), ("linux", ("--device", "simulated"),
                                                          "simulated")):
            added = {} if given is None else {"QUORVEL_DEVICE": given}
            done = subprocess.run([QUORVEL, "watch", "battery", "--for", "10ms", *option],
                                  env=env | added, capture_output=True, text=True, timeout=LIMIT)
            self.assertEqual(done.stdout.splitlines()[0], f"Device: {device}")
        code, _, err = run("dump", env=env | {"QUORVEL_DEVICE": "toaster"})
        self.assertEqual(code, 2)
        self.assertIn("QUORVEL_DEVICE: unknown 'toaster', use linux or simulated", err)
        self.assertEqual(run("play", "none", env=env | {"QUORVEL_DEVICE": "toaster"})[0], 1)

    def test_text_fits_its_terminal_and_has_colours_there_only(self):
        def lines(columns, **extra):
            main, terminal = os.openpty()
            process = start("watch", "thermal", "skin:skin", "bcl_current:AUDIO_current", "--for",
                            "300ms", stdout=terminal,
                            env=os.environ | {"COLUMNS": str(columns), "TERM": "xterm"} | extra)
            os.close(terminal)
            text = b""
            with contextlib.suppress(OSError):  # the end of a terminal
                while part := os.read(main, 4096):
                    text += part
            os.close(main)
            self.assertEqual(finish(process)[0], 0)
            return text.decode().splitlines()
        self.assertIn("\033[1mNONE", "".join(lines(80)))
        for columns in (40, 80):
            plain = lines(columns, NO_COLOR="1")
            self.assertNotIn("\033", "".join(plain))
            self.assertLessEqual(max(map(len, plain)), columns)
            text = " ".join(" ".join(plain).split())
            self.assertIn("SKIN:skin unknown -> NONE", text)
            self.assertIn("** the last one 1 more time", text)  # a registration for each

    def test_a_recording_can_be_piped(self):
        code, recording, err = run("record", "-", "--for", "300ms")
        self.assertEqual((code, err), (0, ""))
        self.assertEqual(json.loads(recording.splitlines()[0])["device"], "simulated")
        process = start("play", "-", "--speed", "10", stdin=subprocess.PIPE)
        process.stdin.write(recording)
        self.assertIn("Playing standard input on a simulated phone", self.success(finish(process)))
        process = start("play", "-", stdin=subprocess.PIPE)
        process.stdin.write("{")
        code, _, err = finish(process)
        self.assertEqual(code, 1)
        self.assertIn("quorvel: standard input:1: not JSON", err)

    def test_a_device_without_a_service_is_a_failure(self):
        code, out, err = run("get", "battery", program=QUORVEL_BARE)
        self.assertEqual((code, out), (1, ""))
        self.assertIn("quorvel: the health service cannot be asked", err)
        code, out, err = finish(self.bare_sensors)
        self.assertEqual((code, out), (1, ""))
        self.assertIn("quorvel: the sensor service has not reported", err)
        for args in (("bcl",), ("temperatures", "skin")):
            code, out, err = run("get", *args, program=QUORVEL_BARE)
            self.assertEqual((code, out), (1, ""))
            self.assertIn("quorvel: the thermal service cannot be asked", err)
        code, out, err = finish(self.bare_dump)
        self.assertEqual(code, 1)
        self.assertIn("linked to services = F", out)
        self.assertIn("SensorInfo:", out)
        self.assertIn("ThermalInfo:", out)
        self.assertIn("quorvel: the health service has not reported", err)
        self.assertIn("quorvel: the sensor service has not reported", err)
        self.assertIn("quorvel: the thermal service cannot be asked", err)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
