#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

"""Runs the monitor as its users do.

usage: monitor_test.py QUORVEL QUORVEL_BARE

QUORVEL_BARE is the monitor built for devices that lack something: "bare" any service, "flat" a
hinge, a reading of its other sensor and limits of its battery's voltage.
"""

import json
import os
import re
import signal
import subprocess
import tempfile
import unittest

from kit import HINGE, OTHERS, Case, Started, on_machine, on_terminal, run

PROPERTIES = ["battery_level", "battery_cycle_count", "wireless_charger", "dock_charger"]
VALUE_LINE = re.compile(r"^\d\d:\d\d:\d\d\.\d{3}  ([\w: ]+?)  +(.+)  ->  (.+)$", re.MULTILINE)

SEVERITIES = ["NONE", "LIGHT", "MODERATE", "SEVERE", "CRITICAL", "EMERGENCY", "SHUTDOWN"]

# A machine with a battery at 77 % on a wireless charger.
MACHINE = [
    ("power_supply", "BAT0", {"type": "Battery", "scope": "System", "present": "1",
                              "status": "Charging", "capacity": "77", "cycle_count": "123"}),
    ("power_supply", "pad", {"type": "Wireless", "online": "1"}),
    ("thermal", "thermal_zone0", {"type": "acpitz", "temp": "warm"}),
    ("thermal", "thermal_zone1", {
        "type": "x86_pkg_temp", "temp": "81500", "mode": "enabled", "trip_point_0_type": "passive",
        "trip_point_0_temp": "80000", "trip_point_0_hyst": "0"}),
    HINGE]
BARE = {"program": OTHERS[0]}


def without_addresses(text):
    return re.sub("0x[0-9a-f]+", "0x", text)


class MonitorTest(Case):
    @classmethod
    def setUpClass(cls):
        # What takes long runs beside all the rest.
        cls.demo = Started("demo")
        cls.demo_json = Started("demo", "--json")
        cls.script = Started("watch", "battery", "--json", "--for", "15s")
        cls.sensor_script = Started("watch", "sensors", "--json", "--for", "8s")
        cls.thermal_script = Started("watch", "thermal", "SKIN:skin", "CPU:cpu",
                                 "BCL_CURRENT:AUDIO_current", "--json", "--for", "9s")
        cls.bare_sensors = Started("get", "sensors", **BARE)
        cls.bare_dump = Started("dump", **BARE)

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
            self.output(run("get", "battery")),
            "Device: simulated\nbattery level             50 %\nbattery cycle count       10\n"
            "wireless charger          offline\ndock charger              offline\n")
        objects = self.objects(run("--json", "get", "battery"))
        self.assertEqual([(o["event"], o["property"], o["value"]) for o in objects],
                         list(zip(["reading"] * 4, PROPERTIES, [50, 10, False, False])))

    def test_dump_shows_the_library_after_the_first_report(self):
        text = self.output(run("dump"))
        self.assertIn("linked to services = T", text)
        self.assertIn("Battery Level = 50 (clients:1)", text)
        self.assertIn("Dock Charger Is Online = 1 (clients:1)", text)
        text = text.removeprefix("Device: simulated\n")
        sensors = text.index("SensorInfo:\n")
        self.assertIn("active:T, data:5", text[sensors:])
        dumps = self.objects(run("dump", "--json"))
        self.assertEqual([(o["event"], o["family"]) for o in dumps],
                         [("dump", family) for family in ("battery", "sensors", "thermal")])
        thermal = text.index("ThermalInfo:\n")
        self.assertEqual([o["text"] for o in dumps[:2]], [text[:sensors], text[sensors:thermal]])
        self.assertEqual(without_addresses(dumps[2]["text"]), without_addresses(text[thermal:]))
        self.assertIn("bcl name = AUDIO_current\n  bcl status = 0\n", text[thermal:])
        self.assertIn("temperature_name:skin", text[thermal:])

    def test_watch_ends_after_its_time(self):
        self.assertEqual(VALUE_LINE.findall(self.output(run("watch", "battery", "--for", "400ms"))), [
            ("battery level", "unknown", "50 %"), ("battery cycle count", "unknown", "10"),
            ("wireless charger", "unknown", "offline"), ("dock charger", "unknown", "offline")])

    def test_the_simulated_phone_lives_while_it_is_watched(self):
        objects = self.objects(self.script.finish())
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
        self.assertEqual(self.output(run("get", "sensors")),
                         "Device: simulated\nproximity                 5 cm\n"
                         "hinge angle               0 degrees\n")
        objects = self.objects(run("get", "sensors", "--json"))
        self.assertEqual([(o["event"], o["property"], o["value"]) for o in objects],
                         [("reading", "proximity", 5), ("reading", "hinge_angle", 0)])

    def test_the_sensors_of_the_simulated_phone_live_while_they_are_watched(self):
        objects = self.objects(self.sensor_script.finish())
        # Readings may be heard twice or, on a busy machine, fold.
        angles = self.values(objects, "hinge_angle")
        opening = angles[:angles.index(180) + 1]
        self.assertEqual(opening[0], 0)
        self.assertEqual(sorted(opening), opening)
        self.assertLessEqual(set(opening), {0, 30, 60, 90, 134, 180})
        distances = self.values(objects, "proximity")
        changes = [new for old, new in zip([None] + distances, distances) if old != new]
        self.assertEqual(changes[-3:], [5, 0, 5])
        self.assertEqual({o["service"] for o in objects if o["event"] != "value"}, {"sensor"})

    def test_get_asks_the_thermal_service(self):
        self.assertEqual(self.output(run("get", "temperatures", "skin", "cpu", "skin")),
                         "Device: simulated\nskin                      30.0 degrees C\n"
                         "cpu                       40.0 degrees C\n"
                         "skin                      30.0 degrees C\n")
        self.assertEqual(self.output(run("get", "bcl")),
                         "Device: simulated\nbattery current limits    NONE\n"
                         "battery voltage limits    NONE\n")
        done = run("get", "temperatures", "nose", "cpu", "--json")
        self.failure(done, "unknown or not present: nose; it reports cpu, skin, ", code=3)
        self.assertEqual([(o["event"], o["property"], o["value"]) for o in self.objects(done, 3)],
                         [("reading", "nose", None), ("reading", "cpu", 40)])

    def test_a_thermal_service_of_the_older_kind_is_asked_as_well(self):
        limits = [{"level": 0, "name": "NONE"}] + [{"level": 1, "name": "LIGHT"}] * 19
        objects = self.objects(run("get", "bcl", "--device", "flat", "--json", **BARE), 3)
        self.assertEqual([(o["property"], o["value"]) for o in objects],
                         [("bcl_current", limits), ("bcl_voltage", [])])
        self.assertRegex(self.output(run("get", "bcl", "--device", "flat", **BARE), 3),
                         r"limits    NONE(, LIGHT){19}\n.*limits    none reported\n\Z")
        # A thermistor that is out of order is there all the same.
        args = ("get", "temperatures", "back:left", "--device", "flat")
        self.assertEqual(self.output(run(*args, **BARE), 3),
                         "Device: flat\nback:left                 unknown\n")
        self.assertIsNone(self.objects(run(*args, "--json", **BARE), 3)[0]["value"])
        # Its name has a colon.
        objects = self.objects(run("watch", "thermal", "SKIN:back:left", "--device",
                                              "flat", "--json", "--for", "1s", **BARE))
        self.assertEqual(self.levels(objects, "SKIN:back:left"), [0])
        self.assertEqual({o["service"] for o in objects if o["event"] != "value"},
                         {"thermal (HIDL)"})

    def test_the_simulated_phone_heats_up_while_it_is_watched(self):
        objects = self.objects(self.thermal_script.finish())
        self.assertEqual(self.levels(objects, "SKIN:skin")[:7], [0, 1, 2, 3, 2, 1, 0])
        self.assertEqual(self.levels(objects, "CPU:cpu")[:4], [0, 1, 2, 0])
        self.assertEqual(self.levels(objects, "BCL_CURRENT:AUDIO_current")[:3], [0, 1, 0])
        # The new service is heard.
        after = objects[[o["event"] for o in objects].index("service_died"):]
        self.assertEqual(self.values(after, "SKIN:skin")[0]["level"], 2)
        self.assertEqual({o["service"] for o in objects if o["event"] != "value"}, {"thermal"})

    def test_what_cannot_be_watched_is_named(self):
        # All types that the help lists are the library's.
        types = re.search(r"^TYPE is ([^.]*)[.]", self.output(run("help")), re.MULTILINE)
        types = re.findall(r"[A-Z_]{3,}", types[1])
        self.assertTrue(types)
        for name in types:
            code, _, err = run("watch", "thermal", name + ":nose", "--for", "1s")
            self.assertEqual(code, 3)
            self.assertIn(f"quorvel: the thermal service reports no temperature {name}:nose; it "
                          "reports CPU:cpu, ", err)
            self.assertNotIn("unknown temperature type", err)
        text = self.output(run("watch", "thermal", "SKIN:skin", "--for", "100ms",
                                **BARE))
        self.assertIn("No thermal service yet", text)
        self.assertNotIn("->", text)

    def test_a_sensor_that_is_not_there_is_no_failure(self):
        self.assertEqual(
            self.output(run("get", "sensors", "--device", "flat", **BARE), 3),
            "Device: flat\nproximity                 0 cm\nhinge angle               not present\n")
        objects = self.objects(
            run("get", "sensors", "--device", "flat", "--json", **BARE), 3)
        self.assertEqual([o["value"] for o in objects], [0, None])
        self.assertIn("hinge angle               not present",
                      self.output(run("watch", "sensors", "--device", "flat", "--for", "100ms",
                                       **BARE)))
        self.assertIn("HINGE_ANGLE\n    initialized:T active:F",
                      self.output(run("dump", "--device", "flat", **BARE)))

    def test_a_machine_has_what_its_kernel_tells_of(self):
        code, out, err = on_machine(MACHINE, "get", "temperatures", "acpitz", "x86_pkg_temp")
        self.assertEqual(
            out, "Device: linux\nacpitz                    not present\n"
            "x86_pkg_temp              81.5 degrees C\n")
        self.assertEqual(code, 3)
        self.assertIn("unknown or not present: acpitz", err)
        self.assertEqual(
            self.output(on_machine(MACHINE, "get", "sensors"), 3),
            "Device: linux\nproximity                 not present\n"
            "hinge angle               90 degrees\n")
        objects = self.objects(on_machine(
            MACHINE, "watch", "thermal", "CPU:x86_pkg_temp", "--json", "--for", "1s"))
        self.assertEqual(self.levels(objects, "CPU:x86_pkg_temp"), [2])
        text = self.output(on_machine(MACHINE, "dump"))
        self.assertIn("Battery Level = 77", text)
        self.assertIn("HINGE_ANGLE\n    initialized:T active:T, data:90", text)
        self.assertIn("ThermalInfo:\n", text)

    def test_a_machine_may_be_told_what_its_zones_are(self):
        with tempfile.NamedTemporaryFile("w") as types:
            types.write("temperature SKIN x86_pkg_temp\n")
            types.flush()
            environment = {"QUORVEL_THERMAL_TYPES": types.name}
            objects = self.objects(on_machine(
                MACHINE, "watch", "thermal", "SKIN:x86_pkg_temp", "--json", "--for", "1s",
                env=environment))
            self.assertEqual(self.levels(objects, "SKIN:x86_pkg_temp"), [2])
            types.write("temperature COLD x86_pkg_temp\n")
            types.flush()
            # A broken file is named also where only values are printed, and before a failure.
            notice = f"quorvel: {types.name}:2: "
            self.assertIn(notice, on_machine(MACHINE, "get", "temperatures", "x86_pkg_temp",
                                             env=environment)[2])
            objects = self.objects(on_machine(MACHINE, "get", "temperatures", "attic", "--json",
                                              env=environment), 3)
            self.assertEqual([o["event"] for o in objects], ["notice", "notice", "reading"])
            self.assertIn(types.name + ":2: ", objects[0]["detail"] + objects[1]["detail"])
            code, out, err = on_machine(MACHINE, "watch", "thermal", "CPU:attic", env=environment)
            self.assertEqual(code, 3)
            self.assertIn("** device: " + types.name + ":2: ", out)

    def test_a_signal_ends_watch_and_demo_cleanly(self):
        for command in (["watch", "battery"], ["demo"]):
            for number in (signal.SIGINT, signal.SIGTERM):
                with self.subTest(command=command, number=number):
                    process = Started(*command)
                    process.until("dock charger")  # it runs once this line has come
                    process.send_signal(number)
                    code, out, err = process.finish()
                    self.assertEqual(code, 130 if command == ["demo"] else 0, err)
                    self.assertNotIn("quorvel: ", err)
                    self.assertEqual(out.count("Demo interrupted"), command == ["demo"])

    def test_a_reader_that_leaves_ends_watch_quietly(self):
        process = Started("watch", "battery")
        process.until("")
        process.stdout.close()
        code, _, err = process.finish()
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
        text = self.output(self.demo.finish())
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
        objects = self.objects(self.demo_json.finish())
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
                      self.output(on_machine((), "watch", "battery", "--for", "1s")))
        code, out, err = on_machine((), "get", "battery")
        self.assertEqual(code, 3)
        self.assertIn("battery level             unknown\n", out)
        self.assertRegex(err, "^quorvel: this machine has no battery.*\n"
                              "quorvel: unknown or not present: battery level, battery cycle count")
        objects = self.objects(on_machine((), "get", "battery", "--json"), 3)
        self.assertEqual([o["value"] for o in objects if o["event"] == "reading"],
                         [None, None, False, False])
        self.assertEqual({o["device"] for o in objects}, {"linux"})

    def test_a_machine_with_a_battery_is_shown_as_it_is(self):
        objects = self.objects(
            on_machine(MACHINE, "watch", "battery", "--json", "--for", "1s"))
        self.assertEqual([self.values(objects, name) for name in PROPERTIES],
                         [[77], [123], [True], [False]])

    def test_the_device_is_this_machine_unless_another_one_is_asked_for(self):
        for given, option, device in (("", (), "linux"), ("simulated", (), "simulated"),
                                      ("linux", ("--device", "simulated"), "simulated")):
            out = self.output(run("watch", "battery", "--for", "10ms", *option,
                                  env={"QUORVEL_DEVICE": given}))
            self.assertEqual(out.splitlines()[0], f"Device: {device}")
        toaster = {"QUORVEL_DEVICE": "toaster"}
        self.failure(run("dump", env=toaster), "unknown 'toaster', use linux or simulated", code=2)
        self.assertEqual(run("play", "none", env=toaster)[0], 1)

    def test_text_fits_its_terminal_and_has_colours_there_only(self):
        watch = ("watch", "thermal", "skin:skin", "bcl_current:AUDIO_current", "--for", "300ms")
        self.assertIn("\033[1mNONE", on_terminal(80, *watch)[1])
        for columns in (40, 80):
            code, plain = on_terminal(columns, *watch, NO_COLOR="1")
            self.assertEqual(code, 0)
            self.assertNotIn("\033", plain)
            self.assertLessEqual(max(map(len, plain.splitlines())), columns)
            text = " ".join(plain.split())
            self.assertIn("SKIN:skin unknown -> NONE", text)
            self.assertIn("** 1 more time: linked: the library's callback", text)  # a registration for each

    def test_the_log_is_what_the_environment_asks_for(self):
        for level, wanted in (("debug", " D audio_hw_battery"), ("error", ""), ("none", ""),
                              ("loud", "QUORVEL_LOG is 'loud', use debug, info, warn, error or ")):
            done = run("dump", env={"QUORVEL_LOG": level})
            self.output(done)
            self.assertIn(wanted, done[2])
            self.assertEqual(" D audio_hw_battery" in done[2], level == "debug", level)

    def test_a_recording_can_be_piped(self):
        code, recording, err = run("record", "-", "--for", "300ms")
        self.assertEqual((code, err), (0, ""))
        self.assertEqual(json.loads(recording.splitlines()[0])["device"], "simulated")
        process = Started("play", "-", "--speed", "10", stdin=subprocess.PIPE)
        process.stdin.write(recording)
        self.assertIn("Playing standard input on a simulated phone", self.output(process.finish()))
        process = Started("play", "-", stdin=subprocess.PIPE)
        process.stdin.write("{")
        code, _, err = process.finish()
        self.assertEqual(code, 1)
        self.assertIn("quorvel: standard input:1: not JSON", err)

    def test_a_device_without_a_service_is_a_failure(self):
        for asked, complaint in ((run("get", "battery", **BARE), "health service cannot be asked"),
                                 (self.bare_sensors.finish(), "sensor service has not reported"),
                                 (run("get", "bcl", **BARE), "thermal service cannot be asked"),
                                 (run("get", "temperatures", "skin", **BARE),
                                  "thermal service cannot be asked")):
            self.failure(asked, "quorvel: the " + complaint)
            self.assertEqual(asked[1], "")
        dump = self.bare_dump.finish()
        self.failure(dump, "the health service has not reported",
                     "the sensor service has not reported", "the thermal service cannot be asked")
        for text in ("linked to services = F", "SensorInfo:", "ThermalInfo:"):
            self.assertIn(text, dump[1])


if __name__ == "__main__":
    unittest.main(argv=["monitor_test"])
