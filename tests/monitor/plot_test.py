#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

"""Plots and exports recordings with the monitor.

usage: plot_test.py QUORVEL QUORVEL_PHONE
"""

import csv
import io
import json
import os
import re
import unittest
import xml.etree.ElementTree

from kit import Case, run

BEGAN = 1795315606.5  # seconds since 1970
NAME = "sk'in \"1\", `touch HERE` $(touch HERE) \\ <&> \u00fc\nEND: {/Bold x}"

ZONES = [f"nvme:Composite@hwmon{i}:temp2" for i in range(16)]


def temperature(at, name, value, severity="NONE", kind="SKIN"):
    return {"at": at, "temperature": {"type": kind, "name": name, "value": value,
                                      "severity": severity}}


class PlotTest(Case):
    def setUp(self):
        super().setUp()
        self.env = {"LC_ALL": "C", "TZ": "UTC-1"}  # an hour ahead of UTC

    def record(self, *events, began="2026-11-22T02:46:46.500Z"):
        header = {"format": "quorvel recording", "version": 2, "device": "d"}
        if began:
            header["began"] = began
        self.write("a.jsonl", "".join(json.dumps(line) + "\n" for line in (header, *events)))

    def run_in(self, *args):
        done = run(*args, cwd=self.folder, env=self.env, text=False)
        self.assertEqual((done[0], done[2]), (0, b""))
        return done[1].decode()

    def fake_gnuplot(self, script):
        fake = self.folder / "gnuplot"
        fake.write_text("#!/bin/sh\n" + script)
        fake.chmod(0o755)
        self.env["PATH"] = f"{self.folder}:{os.environ['PATH']}"

    def script(self, *events, **how):
        """The commands for gnuplot, and the data rows and styles of the plots by panel."""
        self.record(*events, **how)
        self.fake_gnuplot('cat "$2"')
        self.run_in("plot", "a.jsonl", "--output", "a.svg")
        text = (self.folder / "a.svg").read_text()
        data = {name: [[float(number) for number in row.split()] for row in rows.splitlines()]
                for name, rows in re.findall(r"^(\$data\d+) << END\n(.*?)^END$", text,
                                             re.DOTALL | re.MULTILINE)}
        plots = [(panel, [(data[name], style) for name, style in
                          re.findall(r"(\$data\d+) (using .*? lc rgb '[^']*')", line)])
                 for panel, line in re.findall(r"set label 2 '(.*?)' at(?s:.*?)\nplot (.*)", text)]
        return text, dict(plots)

    def test_values_and_times_are_those_of_the_recording(self):
        zones = [temperature(i / 100, f"zone{i:02}", 30 + i / 10, "LIGHT") for i in range(16)]
        text, plots = self.script(*zones, {"at": 3, "say": "The recording ends."})
        begin = BEGAN + 3600
        self.assertEqual([float(number) for number in re.search(
            r"set xrange \[(.*):(.*)\]", text).groups()], [begin, begin + 3])
        self.assertIn("2026-11-22 (UTC+0100)", text)
        curves = plots["temperature, \u00b0C"]
        for i, (rows, _) in enumerate(curves):
            self.assertAlmostEqual(rows[0][0], begin + i / 100, 5)
            self.assertEqual([row[1] for row in rows], [30 + i / 10] * 2)
            self.assertEqual(rows[-1][0], begin + 3)
        # All curves differ in colour or dashes.
        looks = [re.search(r"dt (\S+) lc rgb '(\S+)'", style).groups() for _, style in curves]
        self.assertEqual(len(set(looks)), 16)
        severities = plots["throttling"]
        self.assertEqual(len(severities), 1)
        self.assertEqual([row[2] for row in severities[0][0]], list(range(1, 17)))

    def test_a_death_is_a_band_until_the_service_is_back(self):
        _, plots = self.script(
            {"at": 0, "battery": {"level": 50}}, {"at": 0, "proximity": 5},
            {"at": 1, "died": "health"}, {"at": 3, "started": "health"},
            {"at": 4, "died": "health"}, {"at": 5, "battery": {"level": None}}, began=None)
        bands = [[1, 3, 0], [4, 5, 0]]
        self.assertEqual(plots["battery level, %"][0][0], bands)
        self.assertEqual(len(plots["proximity, cm"]), 1)
        dead, runs, dies = plots["services and clients"]
        self.assertEqual((dead[0], runs[0]), ([[1, 3, 1], [4, 5, 1]], [[0, 1, 1], [3, 4, 1]]))
        self.assertEqual([row[0] for row in dies[0]], [1, 4])
        self.assertIn("rgb '#f0b3b3'", dead[1])

    def test_a_picture_shows_what_there_is_whatever_its_name(self):
        self.record(
            {"at": 0, "battery": {"level": None, "wireless": True, "cycles": 5}},
            {"at": 0, "hinge_angle": 30}, temperature(1, NAME, 36.5, "SEVERE"),
            temperature(1, "limit", 2e38, kind="BCL_VOLTAGE"),
            *(temperature(1, zone, 40, kind="UNKNOWN") for zone in ZONES),
            {"at": 2, "died": "health"}, {"at": 2, "refused": "thermal", "call": "getName"},
            {"at": 2, "registered": "thermal"}, {"at": 3, "called": "battery_level", "value": 50})
        svg = "it's a `plot`.svg"
        self.run_in("plot", "a.jsonl", "--output", svg)
        texts = ["".join(text.itertext()).strip() for text in xml.etree.ElementTree.parse(
            self.folder / svg).iter("{http://www.w3.org/2000/svg}text")]
        for text in ("wireless", "online", "hinge angle, degrees", "temperature, \u00b0C",
                     "SEVERE", "charge limit, mV", "health service", "service dies",
                     "service refuses a call", "battery client", "client is called",
                     "service is dead", "library registers", "03:46:47.00"):
            self.assertIn(text, texts)
        # The name of a lane and in the legend.
        for name in ("SKIN:" + NAME.replace("\n", " "), *("UNKNOWN:" + zone for zone in ZONES)):
            self.assertEqual(texts.count(name), 2, name)
        for text in ("battery level, %", "battery cycles"):  # unknown, and without a change
            self.assertNotIn(text, texts)
        self.run_in("plot", "a.jsonl", "--output", "a.png")
        png = (self.folder / "a.png").read_bytes()
        self.assertEqual(png[:4], b"\x89PNG")
        # The first and the last column are white: no text is cut.
        last = int.from_bytes(png[16:20], "big") - 1
        edges = run("-e", f"set table; plot 'a.png' binary filetype=png every {last} with rgbimage",
                    program="gnuplot", cwd=self.folder)[1]
        colours = re.findall(rf"^ *(0|{last}) +\d+ +(\d+ +\d+ +\d+) ", edges, re.MULTILINE)
        self.assertEqual(set(colours), {("0", "255  255  255"), (str(last), "255  255  255")})
        self.assertEqual(sorted(os.listdir(self.folder)), ["a.jsonl", "a.png", svg])

    def test_a_plot_that_cannot_be_made_leaves_the_old_one(self):
        self.write("a.svg", "old")
        self.record({"at": 0, "battery": {"level": 5}})

        def failure(complaint, output="a.svg"):
            self.failure(run("plot", "a.jsonl", "--output", output, cwd=self.folder, env=self.env),
                         complaint)

        failure("cannot write", "no/such.svg")
        self.fake_gnuplot("exit 1\n")
        failure("gnuplot has failed")
        self.env["PATH"] = str(self.folder / "empty")
        failure("gnuplot is not installed")
        self.record()
        failure("nothing")
        self.record(began="yesterday")
        failure("'began' is 'yesterday'")
        self.assertEqual((self.folder / "a.svg").read_text(), "old")

    def test_a_table_has_a_column_for_each_quantity(self):
        self.record({"at": 0, "battery": {"level": 50}}, temperature(0.25, NAME, 36.6, "LIGHT"),
                   {"at": 1, "died": "health"}, {"at": 1, "called": "battery_level", "value": 49},
                   {"at": 2, "gone": "SKIN:" + NAME}, {"at": 3.5, "say": "The recording ends."})
        self.run_in("export", "a.jsonl", "--to", "csv", "--output", "a.csv")
        text = (self.folder / "a.csv").read_bytes().decode()
        self.assertEqual(text, self.run_in("export", "a.jsonl", "--to", "csv"))
        skin = "SKIN:" + NAME
        self.assertEqual(list(csv.reader(io.StringIO(text, newline=""))), [
            ["time", "seconds", "battery level, %", "dock charger", "wireless charger",
             skin + " temperature, degrees C", skin + " throttling", "health service", "events"],
            ["2026-11-22 03:46:46.500", "0", "50", "0", "0", "", "", "1", ""],
            ["2026-11-22 03:46:46.750", "0.25", "50", "0", "0", "36.6", "1", "1", ""],
            ["2026-11-22 03:46:47.500", "1", "50", "0", "0", "36.6", "1", "0",
             "health service died; battery client battery_level: 49 %"],
            ["2026-11-22 03:46:48.500", "2", "50", "0", "0", "", "", "0", ""],
            ["2026-11-22 03:46:50.000", "3.5", "50", "0", "0", "", "", "0", ""]])

    def test_trace_events_have_counters_and_lives(self):
        self.record({"at": 0, "started": "health"}, {"at": 0.5, "battery": {"level": 50}},
                   {"at": 1, "died": "health"}, {"at": 2, "started": "health"},
                   temperature(2, NAME, None), {"at": 3, "called": "battery_level", "value": 50})
        trace = json.loads(self.run_in("export", "a.jsonl", "--to", "perfetto"))
        self.assertEqual(trace["otherData"], {"began": "2026-11-22T02:46:46.500Z"})
        events = trace["traceEvents"]
        for event in events:
            self.assertLessEqual({"name", "ph", "ts", "pid", "tid"}, event.keys())
        threads = {event["args"]["name"]: event["tid"] for event in events
                   if event["name"] == "thread_name"}
        self.assertEqual(list(threads), ["health service", "battery client"])
        self.assertEqual(
            [(event["ph"], event["name"], event["ts"]) for event in events
             if event["ph"] in "BE" and event["tid"] == threads["health service"]],
            [("B", "runs", 0), ("E", "runs", 1e6), ("B", "dead", 1e6), ("E", "dead", 2e6),
             ("B", "runs", 2e6), ("E", "runs", 3e6)])
        self.assertIn({"ph": "C", "name": "battery level, %", "ts": 5e5, "pid": 1, "tid": 0,
                       "args": {"value": 50}}, events)
        self.assertIn({"ph": "i", "s": "t", "name": "battery_level: 50 %", "ts": 3e6, "pid": 1,
                       "tid": threads["battery client"]}, events)
        self.assertFalse([event for event in events if "temperature" in event["name"]])


if __name__ == "__main__":
    unittest.main()
