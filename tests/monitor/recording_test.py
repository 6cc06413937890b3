#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

"""Records and plays with the monitor, as its users do.

usage: recording_test.py QUORVEL QUORVEL_PHONE
"""

import json
import os
import pathlib
import re
import resource
import signal
import subprocess
import tempfile
import unittest

import jsonschema

from kit import ROOT, Case, Started, run

DOCS = ROOT / "docs"
HEADER = '{"format": "quorvel recording", "version": 1}\n'
HEADER_2 = '{"format": "quorvel recording", "version": 2}\n'
EVENT = HEADER + '{"at": 1, "proximity": 5}\n'
# Files that cannot be played: the reason, and their lines, the last of which is faulty.
WRONG = [
    ("empty", ""),
    ("header", '{"at": 0, "proximity": 5}\n'),
    ("header", "[]\n"),
    ("'song'", '{"format": "song", "version": 1}\n'),
    ("'version' is missing", '{"format": "quorvel recording"}\n'),
    ("version 3", '{"format": "quorvel recording", "version": 3}\n'),
    ("'x'", '{"format": "quorvel recording", "version": 1, "x": 1}\n'),
    ("exclude", HEADER_2, '{"at": 1, "after": 1, "say": "x"}\n')]
WRONG_EVENTS = [
    ("needs version 2", '{"at": 1, "scene": "A"}'),
    ("needs version 2", '{"at": 1, "join": "battery_level"}'),
    ("needs version 2", '{"at": 1, "hinge_angle": [1, 2]}'),
    ("not JSON", "{"),
    ("not JSON", ""),
    ("not an object", "7"),
    ("not UTF-8", '{"at": 1, "notice": "\udcff"}'),
    ("twice", '{"at": 1, "at": 2, "proximity": 5}'),
    ("'at' is missing", '{"proximity": 5}'),
    ("'at' is '1', not a number from 0", '{"at": "1", "proximity": 5}'),
    ("'at' is -1, not", '{"at": -1, "proximity": 5}'),
    ("0.5 after 1", '{"at": 0.5, "proximity": 5}'),
    ("(at) is one of battery, ", '{"at": 1}'),
    ("(at, rain)", '{"at": 1, "rain": 5}'),
    ("'hinge_angle'", '{"at": 1, "proximity": 5, "hinge_angle": 5}'),
    ("1e+39", '{"at": 1, "proximity": 1e39}'),
    ("1e999 is too large", '{"at": 1, "proximity": 1e999}'),
    ("'05' is not a number", '{"at": 1, "proximity": 05}'),
    ("(at byte 23): a control", '{"at": 1, "notice": "a\tb"}'),
    ("Extra non-whitespace", '{"at": 1, "notice": "a"} 7'),
    ("nested too deeply", "[" * 2000),
    ("'battery' is 5, not an object", '{"at": 1, "battery": 5}'),
    ("101", '{"at": 1, "battery": {"level": 101}}'),
    ("whole", '{"at": 1, "battery": {"level": 5.5}}'),
    ("'battery.dock'", '{"at": 1, "battery": {"dock": 1}}'),
    ("'battery.volts', accepted here: level, cycles", '{"at": 1, "battery": {"volts": 1}}'),
    ("temperature.name", '{"at": 1, "temperature": {"type": "SKIN"}}'),
    ("'HOT', not one of NONE, LIGHT",
     '{"at": 1, "temperature": {"type": "SKIN", "name": "s", "severity": "HOT"}}'),
    ("'radio'", '{"at": 1, "started": "radio"}'),
    ("sensor service cannot die", '{"at": 1, "died": "sensor"}'),
    ("down already", *2 * ['{"at": 1, "died": "health"}']),
    ("up already", *2 * ['{"at": 1, "started": "health"}']),
    ("no health service", '{"at": 1, "join": "battery"}'),
    ("joined already", *2 * ['{"at": 1, "join": "sensors"}'])]
BATTERY = {"battery": {"level": 50}}
SKIN = {"temperature": {"type": "SKIN", "name": "skin", "value": 30, "severity": "LIGHT"}}
WRONG_SCENARIOS = [
    ("'after' is -1", {"after": -1, "say": "x"}),
    ("'noise', not one of battery, ", {"join": "noise"}),
    ("contains 'x'", {"proximity": [1, "x"]}),
    ("[], not", {"proximity": []}),
    ("'skin'", {"gone": "skin"}),
    ("(rain) is one of silence, ", {"expect": {"rain": 1}}),
    ("'noise'", {"expect": {"called": "noise", "value": 1}}),
    ("'NONE', not a whole", {"expect": {"called": "battery_level", "value": "NONE"}}),
    ("is 1.5, not one of NONE", {"expect": {"called": "SKIN:skin", "value": 1.5}}),
    ("1, not true or false", {"expect": {"called": "dock_charger", "value": 1}}),
    ("'expect.for' is missing", {"expect": {"silence": "battery"}}),
    ("'answer.skin'", {"ask": "bcl", "answer": {"skin": 1}}),
    ("not an object with bcl_current", {"ask": "bcl", "answer": {}}),
    ("joined already", BATTERY, {"join": "battery"}, {"join": "dock_charger"}),
    ("could leave", BATTERY, {"join": "battery"}, {"leave": "battery"}, {"leave": "battery"}),
    ("could be called", BATTERY, {"join": "battery_level"},
     {"expect": {"called": "dock_charger", "value": False}}),
    ("could be silent", BATTERY, {"expect": {"silence": "sensors", "for": 1}}),
    ("is down", BATTERY, {"died": "health"}, {"expect": {"called": "battery_level", "value": 50}}),
    ("is down", BATTERY, {"died": "health"}, {"expect": {"registered": "health"}}),
    ("is down", SKIN, {"died": "thermal"}, {"ask": "temperatures", "answer": {"skin": 1}}),
    ("no thermal", BATTERY, {"refuse": "thermal", "call": "getTemperatures"}),
    ("'sing', only one of registerCallback", BATTERY, {"refuse": "health", "call": "sing"}),
    ("told", BATTERY, {"refuse": "health", "call": "update"},
     {"expect": {"refused": "health", "call": "registerCallback"}})]
# Scenarios whose last line fails when it is played, with the message.
LEVEL = {"called": "battery_level", "value": 50}
IN_VAIN = [
    ("it last heard: 50 %", BATTERY, {"expect": LEVEL},
     {"expect": LEVEL | {"value": 51, "within": 0.1}}),
    # A call meets one expectation.
    ("in vain", BATTERY, {"expect": LEVEL}, {"expect": LEVEL | {"within": 0.1}}),
    ("to register", BATTERY, {"expect": {"registered": "health"}},
     {"expect": {"registered": "health", "within": 0.1}}),
    ("to unregister", BATTERY, {"expect": {"unregistered": "health", "within": 0.1}}),
    ("to refuse update", BATTERY, {"refuse": "health", "call": "update"},
     {"expect": {"refused": "health", "call": "update", "within": 0.1}}),
    ("called with 51 %", BATTERY, {"expect": LEVEL}, {"after": 0.1, "battery": {"level": 51}},
     {"expect": {"silence": "battery_level", "for": 30}}),
    ("battery_level 50 %, not 49 %", BATTERY, {"ask": "battery", "answer": {"battery_level": 49}}),
    ("cannot be asked", BATTERY, {"refuse": "health", "call": "getHealthInfo"},
     {"ask": "battery", "answer": {"battery_level": 50}}),
    ("cpu not present, not 40.0", SKIN, {"ask": "temperatures", "answer": {"skin": 30, "cpu": 40}})]
# Events caused by the library's calls, which depend on its pauses. All others are the device's own.
OF_THE_LIBRARY = {"called", "registered", "unregistered", "refused"}


class RecordingTest(Case):
    @classmethod
    def setUpClass(cls):
        cls.schema = jsonschema.Draft7Validator(
            json.loads((DOCS / "recording.schema.json").read_text(encoding="utf-8")))
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        # Long-running commands run in parallel with the other tests.
        cls.script_file = os.path.join(folder.name, "script")
        cls.script = Started("record", cls.script_file, "--for", "13s")
        cls.demo_file = os.path.join(folder.name, "demo")
        cls.demo = Started("demo", "--record", cls.demo_file)

    def path(self, name):
        return str(self.folder / name)

    def events(self, path):
        """The events of a recording. Checks every line against the schema."""
        text = pathlib.Path(path).read_text(encoding="utf-8")
        self.assertTrue(text.endswith("\n"))
        lines = [json.loads(line) for line in text.splitlines()]
        for line in lines:
            self.schema.validate(line)
        self.assertIn("format", lines[0])
        times = [line["at"] for line in lines[1:] if "at" in line]
        self.assertEqual(times, sorted(times))
        return lines[1:]

    def of_device(self, events):
        return [{key: value for key, value in event.items() if key != "at"}
                for event in events if not OF_THE_LIBRARY & event.keys()]

    def test_what_is_played_is_recorded_as_the_same_again(self):
        self.output(self.script.finish())
        self.output(self.demo.finish())
        for path in (self.script_file, self.demo_file):
            recorded = self.events(path)
            for kind in ("battery", "hinge_angle", "proximity", "temperature", "started", "died",
                         "registered", "called"):
                self.assertTrue([event for event in recorded if kind in event], kind)
            again = path + "-again"
            self.output(run("play", path, "--speed", "10", "--record", again))
            self.assertEqual(self.of_device(self.events(again)), self.of_device(recorded))
        # Slowly enough, the library does the same as well.
        calls = [[event for event in self.events(path) if "refused" in event]
                 for path in (self.demo_file, self.demo_file + "-again")]
        self.assertEqual([len(refusals) for refusals in calls], [1, 1])

    def test_the_examples_are_recordings_and_can_be_played(self):
        examples = sorted((DOCS / "examples").glob("*.jsonl"))
        self.assertTrue(examples)
        for example in examples:
            self.events(example)
        crash = self.path("crash")
        self.output(run("play", DOCS / "examples/crash.jsonl", "--record", crash))
        for name, values in {"battery_level": [50, 47], "wireless_charger": [False, True],
                             "SKIN:skin": ["NONE", "SEVERE"]}.items():
            self.assertEqual([event["value"] for event in self.events(crash)
                              if event.get("called") == name], values)
        late = self.path("late")
        self.output(run("play", DOCS / "examples/late_sensors.jsonl", "--record", late))
        kinds = [next(key for key in event if key != "at") for event in self.events(late)]
        self.assertEqual(kinds[:2], ["notice", "join"])
        self.assertLess(kinds.index("started"), kinds.index("called"))

    def scenario(self, *lines):
        return self.write("scenario", HEADER_2 + "".join(json.dumps(line) + "\n" for line in lines))

    def test_what_cannot_work_is_refused_with_its_line_before_it_is_played(self):
        files = [(reason, "".join(lines)) for reason, *lines in WRONG]
        files += [(reason, EVENT + "".join(line + "\n" for line in lines))
                  for reason, *lines in WRONG_EVENTS]
        files += [(reason, pathlib.Path(self.scenario(*lines)).read_text())
                  for reason, *lines in WRONG_SCENARIOS]
        for reason, content in files:
            with self.subTest(content):
                path = self.write("broken", content.encode(errors="surrogateescape"))
                kept = self.write("kept", "as it was")
                code, out, err = run("play", path, "--record", kept, "--force")
                self.assertEqual((code, out, err.count("\n")), (1, "", 1), err)
                self.assertIn(f"quorvel: {path}:{content.count(chr(10)) or ''}", err)
                self.assertIn(reason, err)
                self.assertEqual(pathlib.Path(kept).read_text(encoding="ascii"), "as it was")
        for path in (self.path("nothing"), str(self.folder)):
            self.failure(run("play", path), path)

    def test_what_a_scenario_expects_has_to_come(self):
        for reason, *lines in IN_VAIN:
            with self.subTest(lines):
                path = self.scenario(*lines)
                code, out, err = run("play", path)
                self.assertEqual(code, 1, out + err)
                self.assertRegex(out.splitlines()[-1], "^Play FAILED: ")
                self.assertIn(f"{path}:{len(lines) + 1}: ", out)
                self.assertIn(reason, out)
        # Without a "join" the player registers clients itself; such a failure has no line number.
        for place, *lines in (
                (":3", SKIN, {"after": 0.1, "join": "CPU:cpu"},
                 {"expect": {"silence": "CPU:cpu", "for": 0}}),
                ("", SKIN, {"gone": "SKIN:skin"}, {"expect": {"registered": "thermal"}})):
            path = self.scenario(*lines)
            self.assertRegex(self.output(run("play", path), 1),
                             f"Play FAILED: {path}{place}: .*refuses to register")
        # A play that ends early fails, too. Control characters of a file are not printed.
        path = self.scenario({"say": "a\u001b[2J\nb"}, {"join": "sensors"}, {"proximity": 5},
                             {"expect": {"called": "proximity", "value": 5}})
        out = self.output(run("play", path, "--step", stdin=subprocess.DEVNULL), 1)
        self.assertIn("the input ended before this was played", out.splitlines()[-1])
        self.assertIn("a\\x1b[2J\\x0ab", out)
        path = self.scenario(BATTERY, {"expect": LEVEL | {"value": 51}})
        summary = self.objects(run("play", path, "--json"), 1)[-1]
        self.assertEqual((summary["event"], summary["success"]), ("summary", False))

    def test_expectations_hold_at_every_pace(self):
        for pace in (("--speed", "1e6"), ("--speed", "9"), ("--step",)):
            out = self.output(run("play", DOCS / "examples/demo.jsonl", *pace, written="\n" * 100))
            self.assertRegex(out.splitlines()[-1], "^Play OK: ")
            self.assertRegex(out, r"(?s)\n1\. A client registers\n.*\n5\. .*refused a call.*\n6\. ")
            self.assertEqual("Enter plays" in out, pace == ("--step",))

    def test_what_goes_and_what_comes_in_one_delivery_is_recorded_so(self):
        path = self.scenario(
            {"temperature": {"type": "SKIN", "name": "s", "value": 50, "severity": "SEVERE"}},
            {"started": "thermal"}, {"join": "hinge_angle"}, {"hinge_angle": 10},
            {"battery": {"level": 50}},
            {"expect": {"called": "SKIN:s", "value": "SEVERE"}},
            {"expect": {"called": "hinge_angle", "value": 10}},
            {"ask": "battery", "answer": {"battery_level": 50, "wireless_charger": False}},
            {"started": "thermal (HIDL)"},  # in addition to the AIDL service
            {"hinge_angle": [20, None, 30.5]}, {"expect": {"called": "hinge_angle", "value": 30}},
            {"battery": {}},
            {"gone": "SKIN:s"}, {"expect": {"called": "SKIN:s", "value": "NONE"}},
            {"ask": "temperatures", "answer": {"s": None}},
            {"gone": "hinge_angle"}, {"leave": "hinge_angle"},
            {"temperature": {"type": "SKIN", "name": "s", "value": 41, "severity": "LIGHT"}},
            {"expect": {"called": "SKIN:s", "value": "LIGHT"}},
            {"join": "hinge_angle"}, {"expect": {"registered": "sensor", "sensor": "hinge_angle"}},
            {"hinge_angle": 0.5}, {"expect": {"called": "hinge_angle", "value": 0}})
        first, second = self.path("gone"), self.path("gone-again")
        self.output(run("play", path, "--record", first))
        told = [event for event in self.of_device(self.events(first))
                if not {"join", "leave", "started"} & event.keys()]
        self.assertCountEqual(told[:3], [
            {"temperature": {"type": "SKIN", "name": "s", "value": 50, "severity": "SEVERE"}},
            {"hinge_angle": 10},
            {"battery": {"level": 50, "cycles": None, "wireless": False, "dock": False}}])
        self.assertEqual(told[3:], [
            {"hinge_angle": [20, None, 30.5]}, {"battery": {}}, {"gone": "SKIN:s"},
            {"gone": "hinge_angle"},
            {"temperature": {"type": "SKIN", "name": "s", "value": 41, "severity": "LIGHT"}},
            {"hinge_angle": 0.5}])
        self.output(run("play", first, "--record", second))
        self.assertEqual(self.of_device(self.events(second)), self.of_device(self.events(first)))

    def test_step_plays_one_event_at_each_enter(self):
        path = self.write("steps", HEADER + "".join(
            f'{{"at": {at}, "battery": {{"level": {level}}}}}\n'
            for at, level in ((0, 50), (100, 51), (200, 52))))
        again = self.path("steps-again")
        process = Started("play", path, "--step", "--record", again, stdin=subprocess.PIPE)
        for heard in ("->  50 %", "->  51 %"):
            process.stdin.write("\n")
            process.stdin.flush()
            process.until(heard)
        self.failure(process.finish(), f"{path}:4: the input ended before this was played")
        self.assertEqual([event["value"] for event in self.events(again)
                          if event.get("called") == "battery_level"], [50, 51])

    def test_a_recording_that_exists_is_kept_unless_it_is_to_be_overwritten(self):
        path = self.write("precious", "all my work")
        for args in (("record", path), ("play", self.write("short", HEADER), "--record", path),
                     ("demo", "--record", path)):
            self.failure(run(*args), "exists already")
            self.assertEqual(pathlib.Path(path).read_text(encoding="ascii"), "all my work")
        out = self.output(run("record", path, "--force", "--for", "100ms"))
        self.assertRegex(out, r"more times: .*\n(.*\n)*Recorded \d+ events in .*\n\Z")
        self.events(path)
        # What is read is not overwritten, whatever its name. Names are printed without their bytes.
        os.link(path, self.path("link.svg"))
        before = pathlib.Path(path).read_bytes()
        for args in (("export", path, "--to", "csv", "--output", self.path("link.svg")),
                     ("plot", path, "--output", self.path("link.svg")),
                     ("play", path, "--record", self.path("link.svg"), "--force"),
                     ("play", "-", "--record", path, "--force")):
            with open(path, "rb") as stdin:
                self.failure(run(*args, stdin=stdin), "it is the recording itself")
            self.assertEqual(pathlib.Path(path).read_bytes(), before)
        bell = self.path("\a")
        self.assertEqual(2, self.output(run("record", bell, "--for", "1ms")).count("\\x07"))
        for args in (("play",), ("export", "--to", "csv", "--output", bell + ".csv")):
            out = self.output(run(*args, bell))
            self.assertEqual(("\a" in out, "\\x07" in out), (False, True), out)

    def test_a_signal_leaves_a_whole_recording(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGKILL):
            path = self.path(f"stopped-{number}")
            process = Started("record", path)
            process.until("->  49 %")
            process.send_signal(number)
            code, _, err = process.finish()
            self.assertEqual(code, -number if number == signal.SIGKILL else 0, err)
            self.assertIn({"battery": {"level": 49}}, self.of_device(self.events(path)))

    def test_a_recording_holds_no_log_where_standard_error_is_closed(self):
        path = self.path("closed")
        code, out, _ = run("record", path, "--for", "100ms", "--verbose", stderr=None,
                           preexec_fn=lambda: os.close(2))
        self.assertEqual(code, 0, out)
        self.events(path)
        # Without standard input, a file that the program opens must not take its place.
        process = Started("play", path, "--step", stdin=None, preexec_fn=lambda: os.close(0))
        self.assertNotIn("->", self.output(process.finish(), 1))

    def test_a_full_disk_leaves_a_whole_recording_and_is_a_failure(self):
        limit = 1001

        def limit_files():
            resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))

        path = self.path("full")
        for args in (("record", path, "--for", "30s", "--force"),
                     ("play", DOCS / "examples/crash.jsonl", "--record", path, "--force")):
            # Redirects the counters of a coverage build, which the limit would truncate.
            full = run(*args, preexec_fn=limit_files, env={"GCOV_PREFIX": str(self.folder)})
            self.failure(full, "cannot write " + path)
            self.events(path)
            self.assertGreater(os.path.getsize(path), limit - 200)
        self.failure(run("record", "/dev/full", "--force"), "cannot write /dev/full")
        self.failure(run("record", self.path("no/such")), "cannot write")
        for force in ((), ("--force",)):
            self.failure(run("record", str(self.folder), *force), "Is a directory")


if __name__ == "__main__":
    unittest.main()
