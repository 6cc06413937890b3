#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

"""Runs the monitor as its users do.

usage: monitor_test.py QUORVEL QUORVEL_PHONE

QUORVEL_PHONE is the phone's monitor. The environment variable QUORVEL_PHONE selects its phone.
"""

import collections
import csv
import functools
import json
import re
import signal
import time
import unittest

from kit import BARE, FLAT, MACHINE, PHONE, ROOT, Case, Started, on_machine, run

SEVERITIES = ["NONE", "LIGHT", "MODERATE", "SEVERE", "CRITICAL", "EMERGENCY", "SHUTDOWN"]

# The exit codes and texts of commands on the simulated phone.
ON_SIMULATED = {
    "get battery": (0, "Device: simulated battery_level 50 % battery_cycle_count 10 "
                       "wireless_charger offline dock_charger offline"),
    "get sensors": (0, "Device: simulated proximity 5 cm hinge_angle 0 degrees"),
    "get bcl": (0, "Device: simulated bcl_current NONE bcl_voltage NONE"),
    # Names of several families and spellings; each value comes once.
    "get bcl_voltage skin:skin proximity SPEAKER:speaker SKIN:skin battery_level":
        (0, "Device: simulated bcl_voltage NONE SKIN:skin 30.0 degrees C proximity 5 cm "
            "SPEAKER:speaker 30.0 degrees C battery_level 50 %"),
    "get temperatures": (0, "AUDIO_current 500.0 mA", "BCL_VOLTAGE:battery_voltage 3900.0 mV"),
    "get temperatures nose cpu --json":
        (3, '"property":"nose","value":null,', '"property":"CPU:cpu","value":40.0,',
         "unknown or not present: nose; the thermal service reports CPU:cpu, SKIN:skin, "),
    "watch hinge_angle SKIN:skin --for 200ms":
        (0, "Watching hinge_angle and SKIN:skin.", "hinge_angle unknown -> 0 degrees",
         "SKIN:skin unknown -> NONE")}
# On a complete phone.
ON_PHONE = {
    "get battery": (0, "battery_level 61 %", "dock_charger online", "wireless_charger offline"),
    "get sensors": (0, "proximity 5 cm", "hinge_angle 120 degrees"),
    "get temperatures skin cpu": (0, "SKIN:skin 38.5 degrees C CPU:cpu 40.0 degrees C"),
    "watch --for=1ms sensors": (0, "Device: phone", "Watching sensors."),
    "dump": (0, "linked to services = T"),
    "list": (0, "battery_level 61 % health service",
             "SKIN:skin 38.5 degrees C, LIGHT thermal service"),
    "status": (0, "services: health up, sensor up, thermal up", "SKIN:skin 38.5 C, LIGHT"),
    "doctor": (0, "ok health: link made", "ok thermal: callback registered", " 0 failed"),
    "help": (0, "watch NAME..."),
    "--version": (0, "quorvel "),
    **dict.fromkeys(("", "demo", "watch fans", "dump --for 2s", "dump --device linux", "-x dump"),
                    (2, "quorvel: ", "(see quorvel --help)")),
    "record a --step": (2, "unknown option '--step'")}
# On a phone without a hinge, with a HIDL thermal service.
ON_FLAT = {
    "get bcl": (3, "bcl_current NONE" + 19 * ", LIGHT" + " bcl_voltage none reported"),
    "get bcl --json":
        (3, '"property":"bcl_current","value":[{"level":0,"name":"NONE"}' +
         19 * ',{"level":1,"name":"LIGHT"}' + "]", '"property":"bcl_voltage","value":[]'),
    # A broken thermistor is listed with an unknown value. Its name has a colon.
    "get temperatures back:left": (3, "Device: phone SKIN:back:left unknown"),
    "get temperatures back:left --json": (3, '"property":"SKIN:back:left","value":null'),
    "watch thermal SKIN:back:left --json --for 1s":
        (0, '"property":"SKIN:back:left","old":null,"new":{"level":0,"name":"NONE"}'),
    "get sensors": (3, "Device: phone proximity 0 cm hinge_angle not present"),
    "get sensors --json": (3, '"proximity","value":0,', '"hinge_angle","value":null,'),
    "watch sensors --for 100ms": (0, "hinge_angle unknown -> not present"),
    "watch hinge_angle": (3, "quorvel: not present: hinge_angle"),
    "dump": (0, "HINGE_ANGLE initialized:T active:F")}
# On a phone without services.
ON_BARE = {
    "get battery": (1, "quorvel: the health service cannot be asked"),
    "get sensors": (1, "quorvel: the sensor service cannot be asked: ", " is not found; quorvel doctor"),
    "get bcl": (1, "quorvel: the thermal service cannot be asked"),
    "get temperatures skin": (1, "quorvel: the thermal service cannot be asked"),
    "watch thermal": (1, "quorvel: the thermal service cannot be asked"),
    "watch thermal SKIN:skin --for 100ms": (0, "No thermal service yet"),
    "watch battery sensors --for 1ms": (0, "No health service yet", "No sensor service yet"),
    "dump": (1, "linked to services = F", "SensorInfo:", "ThermalInfo:",
             "quorvel: the health service cannot be asked: ", "the sensor service cannot be asked",
             "the thermal service cannot be asked")}
# On a phone whose thermal service refuses to list temperatures.
ON_REFUSED = dict.fromkeys(
    ("get skin:skin", "get temperatures skin", "get bcl", "watch thermal", "watch SKIN:skin"),
    (1, "quorvel: the thermal service cannot be asked: the call fails; quorvel doctor"))
ON_REFUSED["list"] = (0, "bcl_current unknown thermal service; the call fails")
# On a Linux machine.
ON_MACHINE = {
    "get temperatures acpitz x86_pkg_temp":
        (3, "Device: linux acpitz not present CPU:x86_pkg_temp 81.5 degrees C",
         "unknown or not present: acpitz; the thermal service reports CPU:x86_pkg_temp, "),
    "get sensors": (3, "Device: linux proximity not present hinge_angle 90 degrees"),
    "watch thermal CPU:x86_pkg_temp --json --for 1s":
        (0, '"property":"CPU:x86_pkg_temp","old":null,"new":{"level":2,"name":"MODERATE"}'),
    "watch battery --json --for 1s":
        (0, '"battery_level","old":null,"new":50,', '"battery_cycle_count","old":null,"new":7,',
         '"wireless_charger","old":null,"new":true,', '"dock_charger","old":null,"new":false,'),
    "get battery_level CPU:x86_pkg_temp":
        (0, "battery_level 50 %", "quorvel: hidpp_battery_0: ignored: feeds a peripheral",
         "quorvel: keyboard: ignored as an accessory"),
    "dump": (0, "Battery Level = 50", "HINGE_ANGLE initialized:T active:T, data:90",
             "ThermalInfo:")}
# On a Linux machine without battery, sensors and temperatures.
ON_EMPTY_MACHINE = {
    "watch battery --for 1s": (0, "** device: this machine has no battery"),
    "watch sensors": (3, "hinge_angle unknown -> not present",
                      "quorvel: not present: proximity, hinge_angle"),
    "get sensors": (3, "quorvel: this machine has no proximity sensor"),
    "list": (0, "quorvel: this machine has no temperature sensor"),
    "get temperatures": (3, "thermal not present", "the thermal service reports none"),
    "get battery": (3, "battery_level unknown ", "quorvel: this machine has no battery",
                    "quorvel: unknown or not present: battery_level, battery_cycle_count"),
    "get battery --json": (3, '"battery_level","value":null,"device":"linux"',
                           '"battery_cycle_count","value":null', '"wireless_charger","value":false',
                           '"dock_charger","value":false')}

HEARD_ON_PHONE = {
    "watch battery": "battery_level +unknown +-> +61 %",
    # The first reading may arrive before the client's first call.
    "watch sensors": r"hinge_angle +(unknown|0 degrees) +-> +120 degrees",
    "watch thermal SKIN:skin": "SKIN:skin +unknown +-> +LIGHT"}

# Commands, the property and value that show that the service is back, and the first values of all
# properties.
LIVES = {
    "battery --for 15s": ("battery_level", 50, {
        "battery_level": [50, 49, 48, 49, 50, 51], "battery_cycle_count": [10, 11],
        "wireless_charger": [False, True, False], "dock_charger": [False, True, False]}),
    "thermal SKIN:skin CPU:cpu BCL_CURRENT:AUDIO_current --for 9s": ("SKIN:skin", 2, {
        "SKIN:skin": [0, 1, 2, 3, 2, 1, 0], "CPU:cpu": [0, 1, 2, 0],
        "BCL_CURRENT:AUDIO_current": [0, 1, 0]})}


def without_addresses(text):
    return re.sub("0x[0-9a-f]+", "0x", text)


def midnight_in(seconds):
    """A time zone in which the day ends after this time."""
    ahead = 86400 - seconds - int(time.time()) % 86400
    sign, ahead = ("-" if ahead >= 0 else ""), abs(ahead)
    return f"QVL{sign}{ahead // 3600}:{ahead // 60 % 60}:{ahead % 60}"


class MonitorTest(Case):
    @classmethod
    def setUpClass(cls):
        # Long-running commands run in parallel with the other tests.
        cls.demo = Started("demo", env={"TZ": midnight_in(8)})
        cls.demo_json = Started("demo", "--json")
        cls.lives = {line: Started("watch", *line.split(), "--json") for line in LIVES}
        cls.sensors = Started("watch", "sensors", "--json", "--for", "8s")

    def heard(self, objects, name):
        """The new values of one property; the levels of severities. Checks that each change starts
        from the value before."""
        changes = [o for o in objects if o["event"] == "value" and o["property"] == name]
        values = [o["new"] for o in changes]
        self.assertEqual([o["old"] for o in changes], [None, *values][:-1])
        for value in values if ":" in name else []:
            self.assertEqual(value["name"], SEVERITIES[value["level"]])
        return [value["level"] for value in values] if ":" in name else values

    def test_commands_print_what_the_device_says(self):
        self.says(ON_SIMULATED)
        self.says(ON_PHONE, **PHONE)
        self.says(ON_FLAT, **FLAT)
        self.says(ON_BARE, **BARE)
        self.assertEqual(run("get", "bcl", **BARE)[1], "")
        self.says(ON_REFUSED, program=PHONE["program"], env={"QUORVEL_PHONE": "refused-thermal"})
        self.says(ON_MACHINE, run=functools.partial(on_machine, MACHINE))
        self.says(ON_EMPTY_MACHINE, run=functools.partial(on_machine, ()))

    def test_dump_shows_the_library_after_the_first_report(self):
        text = self.output(run("dump"))
        for part in ("linked to services = T", "Battery Level = 50 (clients:1)", "active:T, data:5",
                     "Dock Charger Is Online = 1 (clients:1)", "temperature_name:skin",
                     "bcl name = AUDIO_current\n  bcl status = 0\n"):
            self.assertIn(part, text)
        dumps = self.objects(run("dump", "--json"))
        self.assertEqual([(o["event"], o["family"]) for o in dumps],
                         [("dump", family) for family in ("battery", "sensors", "thermal")])
        self.assertEqual(without_addresses("Device: simulated\n" + "".join(
            o["text"] for o in dumps)), without_addresses(text))

    def test_the_simulated_phone_lives_while_it_is_watched(self):
        for line, (returning, value, wanted) in LIVES.items():
            objects = self.objects(self.lives[line].finish())
            for name, values in wanted.items():
                self.assertEqual(self.heard(objects, name)[:len(values)], values)
            self.assertEqual(sorted(o["time"] for o in objects), [o["time"] for o in objects])
            events = [o["event"] for o in objects]
            death = events.index("service_died")
            self.assertIn("callback_registered", events[death:])
            before = len(self.heard(objects[:death], returning))
            self.assertEqual(self.heard(objects, returning)[before], value)

    def test_the_sensors_of_the_simulated_phone_live_while_they_are_watched(self):
        objects = self.objects(self.sensors.finish())
        # A reading may arrive twice or, on a busy machine, be skipped.
        angles = self.heard(objects, "hinge_angle")
        opening = angles[:angles.index(180) + 1]
        self.assertEqual((opening[0], sorted(opening)), (0, opening))
        self.assertLessEqual(set(opening), {0, 30, 60, 90, 134, 180})
        distances = self.heard(objects, "proximity")
        changes = [new for old, new in zip([None] + distances, distances) if old != new]
        self.assertEqual(changes[-3:], [5, 0, 5])
        self.assertEqual({o["service"] for o in objects if o["event"] != "value"}, {"sensor"})

    def test_a_machine_may_be_told_what_its_zones_are(self):
        types = self.write("types", "temperature SKIN x86_pkg_temp\n")
        told = functools.partial(on_machine, MACHINE, env={"QUORVEL_THERMAL_TYPES": types})
        self.says({"watch thermal SKIN:x86_pkg_temp --json --for 1s": (
            0, '"SKIN:x86_pkg_temp","old":null,"new":{"level":2,')}, run=told)
        self.write("types", "\ntemperature COLD x86_pkg_temp\n")
        # A faulty file is reported also by commands that print only values, and before a failure.
        self.says({"get temperatures x86_pkg_temp": (0, f"quorvel: {types}:2: "),
                   "get temperatures attic --json": (3, '"event":"notice"', f'"{types}:2: '),
                   "watch thermal CPU:attic": (3, f"** device: {types}:2: ")}, run=told)

    def test_a_phone_is_watched_and_says_nothing_of_itself(self):
        for command, line in HEARD_ON_PHONE.items():
            process = Started(*command.split(), **PHONE)
            process.until(line)
            process.stdout.close()
            self.assertEqual(process.finish()[0], 0)
        self.assertNotIn("**", self.output(run("watch", "battery", "--for", "1ms", **PHONE)))

    def test_a_phone_is_recorded_by_what_its_clients_hear(self):
        path = self.folder / "a.jsonl"
        # The thermal service may start after the recording. 0 is no signal.
        process = Started("record", path, **{**PHONE, "env": {"QUORVEL_PHONE": "late-thermal"}})
        for number, *lines in (
                (0, "->  61 %", "->  5 cm", "->  120 degrees", "SKIN:skin +unknown +->  LIGHT"),
                (signal.SIGUSR2, "->  62 %", "LIGHT  ->  NONE"), (signal.SIGUSR1, "->  61 %"),
                (signal.SIGTERM, "Recorded ")):
            process.send_signal(number)
            process.until(*lines)
        self.output(process.finish())
        for part in ('"battery":{"level":62}', '"name":"skin","severity":"NONE"',
                     '"died":"health"', '"died":"thermal"'):
            self.assertIn(part, path.read_text())
        table = self.output(run("export", path, "--to", "csv", **PHONE)).splitlines()
        self.assertLessEqual({
            "battery level, %": "61", "dock charger": "1", "proximity, cm": "5",
            "hinge angle, degrees": "120", "SKIN:skin temperature, degrees C": "38.5",
            "health service": "1"}.items(), list(csv.DictReader(table))[-1].items())
        self.output(run("play", path, "--speed", "10"))
        self.assertIn("No service answers for battery, sensors and thermal yet", self.output(
            run("record", path, "--force", "--for", "1ms", **BARE)))
        self.output(run("play", path))

    def test_a_signal_ends_watch_and_demo_cleanly(self):
        for command in (["watch", "battery"], ["demo"]):
            for number in (signal.SIGINT, signal.SIGTERM):
                with self.subTest(command=command, number=number):
                    process = Started(*command)
                    process.until("dock_charger")  # printed once the command runs
                    process.send_signal(number)
                    code, out, err = process.finish()
                    self.assertEqual(code, 130 if command == ["demo"] else 0, err)
                    self.assertNotIn("quorvel: ", err)
                    self.assertEqual(out.count("Demo interrupted"), command == ["demo"])

    def test_output_ends_quietly_with_its_reader_and_fails_on_a_full_disk(self):
        process = Started("watch", "battery")
        process.until("")
        process.stdout.close()
        code, _, err = process.finish()
        self.assertEqual(code, 0, err)
        self.assertNotIn("quorvel: ", err)
        with open("/dev/full", "w", encoding="ascii") as full:
            self.failure(run("get", "battery", stdout=full), "quorvel: cannot write")

    def test_demo_tells_its_story(self):
        text = self.output(self.demo.finish())
        self.assertEqual(re.findall(r"(?m)^(\d+)\. ", text), [str(n) for n in range(1, 18)])
        for part in ("** device: the health service died", "refused a call: registerCallback",
                     "callback is registered with the health service", "47 %  ->  46 %",
                     "the library listens to the hinge angle sensor", "60 degrees  ->  89 degrees",
                     "no longer listens to the proximity sensor", "SEVERE  ->  CRITICAL",
                     "bcl_current MODERATE, bcl_voltage LIGHT"):
            self.assertIn(part, text)
        self.assertEqual(re.findall(r"reads: skin ([\d.]+) degrees C, cpu [\d.]+ degrees C", text),
                         ["36.5", "41.2", "46.0", "50.4", "40.7", "31.1"])
        self.assertRegex(text, r"\nDemo OK: .* 13 callbacks for the battery, \d+ for the sensors and "
                               "10 for the heat, 2 deaths of the health service and 1 of the thermal "
                               r"service, 1 refusal and 2 relinks in .*\n\Z")
        self.assertEqual(text.count("Demo "), 1)
        # The demo runs past midnight.
        day = re.split(r"\n--- \d{4}-\d\d-\d\d\n", text)
        self.assertEqual([set(re.findall(r"(?m)^(\d\d):\d\d:\d\d\.\d{3}  ", part)) for part in day],
                         [{"23"}, {"00"}])

    def test_demo_in_json_sums_up_what_was_seen(self):
        objects = self.objects(self.demo_json.finish())
        counts = collections.Counter((o["event"], o.get("service")) for o in objects)
        values = counts.pop(("value", None))
        del counts["narration", None]
        self.assertEqual(counts, {
            ("heading", None): 17, ("summary", None): 1,
            ("service_started", "health"): 3, ("service_died", "health"): 2,
            ("callback_registered", "health"): 3, ("call_refused", "health"): 1,
            ("callback_unregistered", "health"): 1, ("service_started", "sensor"): 1,
            ("callback_registered", "sensor"): 2, ("callback_unregistered", "sensor"): 2,
            ("service_started", "thermal"): 2, ("service_died", "thermal"): 1,
            ("callback_registered", "thermal"): 4, ("callback_unregistered", "thermal"): 2})
        self.assertLessEqual({"event": "summary", "success": True, "callbacks": values, "deaths": 2,
                              "relinks": 2, "refusals": 1, "thermal_deaths": 1}.items(),
                             objects[-1].items())

    def test_the_device_is_this_machine_unless_another_one_is_asked_for(self):
        for given, option, device in (("", "", "linux"), ("simulated", "", "simulated"),
                                      ("linux", " --device simulated", "simulated")):
            self.says({"watch battery --for 10ms" + option: (0, f"Device: {device} ")},
                      env={"QUORVEL_DEVICE": given})
        self.says({"dump": (2, "unknown 'toaster', use linux or simulated"), "play none": (1,)},
                  env={"QUORVEL_DEVICE": "toaster"})

    def test_the_log_is_what_is_asked_for(self):
        # The library warns of a registration that is refused.
        play = ("play", str(ROOT / "docs/examples/crash.jsonl"), "--speed", "100")
        for level, args, letters, wanted in (
                ("", (), "", ""), ("", ("--verbose",), "DW", ""), ("debug", (), "DW", ""),
                ("warn", (), "W", ""), ("error", (), "", ""), ("none", (), "", ""),
                ("loud", (), "", "QUORVEL_LOG: unknown 'loud', use debug, info, warn, error or ")):
            out, err = run(*play, *args, env={"QUORVEL_LOG": level})[1:]
            seen = {letter for letter in "DW" if f" {letter} audio_hw_battery: " in err}
            self.assertEqual(seen, set(letters), level)
            self.assertIn(wanted, err)
            self.assertNotIn(" audio_hw_", out)

    def test_a_recording_can_be_piped(self):
        code, recording, err = run("record", "-", "--for", "300ms")
        self.assertEqual((code, err), (0, ""))
        self.assertEqual(json.loads(recording.splitlines()[0])["device"], "simulated")
        out = self.output(run("play", "-", "--speed", "10", written=recording))
        self.assertIn("Playing standard input on a simulated phone", out)
        self.failure(run("play", "-", written="{"), "quorvel: standard input:1: not JSON")


if __name__ == "__main__":
    unittest.main()
