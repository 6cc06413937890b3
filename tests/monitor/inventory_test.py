#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

"""list, status and doctor on a simulated phone, on a fake Linux machine, and without services.

usage: inventory_test.py QUORVEL QUORVEL_PHONE
"""

import functools
import os
import re
import signal
import unittest

from kit import BARE, FLAT, MACHINE, OTHER, Case, Started, on_machine, on_terminal, run


class InventoryTest(Case):
    def test_what_is_listed_can_be_named_in_other_commands(self):
        names = self.output(run("list", "--names")).splitlines()
        self.assertLessEqual({"battery_level", "dock_charger", "hinge_angle", "bcl_current",
                              "SKIN:skin", "BCL_CURRENT:AUDIO_current"}, set(names))
        items = self.objects(run("list", "--json"))
        self.assertEqual([item["property"] for item in items], names)
        temperatures = {item["property"]: item for item in items if item["severity"]}
        watchable = [name for name, item in temperatures.items() if not item["remark"]]
        self.assertEqual(temperatures.keys() - watchable, {"SPEAKER:speaker"})
        watched = [name for name in names if name not in temperatures and "bcl" not in name]
        self.output(run("watch", *watched, *watchable, "--for", "1ms"))
        readings = self.objects(run("get", *names, "--json"))
        self.assertEqual([(o["property"], o["value"]) for o in readings],
                         [(item["property"], item["value"]) for item in items])

    def test_a_machine_is_listed_with_the_reason_for_what_does_not_count(self):
        lines = self.objects(on_machine(MACHINE, "list", "--json"))
        items = {line["property"]: line for line in lines if line["event"] == "item"}
        parts = {line["name"]: line["remark"] for line in lines if line["event"] == "supply"}
        for name, value, source in (("battery_level", 50, "BAT0, BAT1"),
                                    ("battery_cycle_count", 7, "BAT0, BAT1"),
                                    ("wireless_charger", True, "pad"),
                                    ("hinge_angle", 90, "iio:device0 (hinge)"),
                                    ("CPU:x86_pkg_temp", 81.5, "thermal_zone1"),
                                    ("UNKNOWN:nvme:Composite", 40.9, "hwmon0:temp1")):
            self.assertEqual((items[name]["value"], items[name]["source"]), (value, source))
        self.assertIsNone(items["proximity"]["value"])
        self.assertEqual((items["UNKNOWN:acpitz"]["value"], items["UNKNOWN:acpitz"]["remark"]),
                         (None, "cannot be read"))
        self.assertEqual(parts, {
            "BAT0": "50 % of the level, by energy", "BAT1": "50 % of the level, by energy",
            "hidpp_battery_0": "ignored: feeds a peripheral", "keyboard": "ignored: accessory",
            "ups": "ignored: neither a battery nor a charger",
            "ucsi-source-psy-USBC000:001": "neither a wireless nor a dock charger"})

    def test_doctor_and_status_name_what_lacks(self):
        self.says({"doctor": (
            0, *(f"ok {service}: running, look-up allowed"
                 for service in ("health", "sensor", "thermal")),
            "ok health: link made", "ok sensor: first value of hinge_angle", " 0 failed",
            "ok sensor: callback registered: hinge_angle ok sensor: link made",
            "warning health: notice: keyboard: ignored as an accessory",
            "ok health: notice: battery level: BAT0 (50 %) and BAT1 (50 %) together, by energy",
            "warning device: thermal_zone0: temperature, UNKNOWN:acpitz, cannot be read; next: ",
            "warning thermal: notice: thermal_zone0/temp", "warning sensor: proximity: the device has "
            "no such sensor", "ok device: hidpp_battery_0: battery, ignored: feeds a peripheral")},
            run=functools.partial(on_machine, MACHINE))
        self.says({"doctor": (0, "hinge_angle: the device has no such sensor, so no callback is ",
                              "warning thermal: callback registered, first value: not checked: ",
                              "warning health: notice: this machine has no battery; next: ")},
                  run=functools.partial(on_machine, ()))
        # A silent service does not use up the time of the others.
        self.says({"doctor": (1, "failed health: first value", "ok thermal: first value", " 2 failed")},
                  program=OTHER, env={"QUORVEL_PHONE": "refused-battery"})
        self.says({"doctor": (
            0, "ok thermal (HIDL): death notification possible",
            "ok thermal (HIDL): first value of ",
            "warning thermal (HIDL): readings: 1 temperature without a value",
            "warning sensor: hinge_angle: the device has no such sensor")}, **FLAT)
        self.says({
            "doctor": (
                1, "failed health: declared: android.hardware.health.IHealth/default; next: declare ",
                "avc: denied", "failed sensor: running, look-up allowed: ", " is not found; next: ",
                " 1 ok, 0 warnings, 3 failed"),
            "status": (0, "services: health down, sensor down, thermal down",
                       "battery_level unknown")}, **BARE)

    def test_what_is_cut_off_was_interrupted(self):
        def interrupted():
            signal.pthread_sigmask(signal.SIG_BLOCK, [signal.SIGINT])
            os.kill(os.getpid(), signal.SIGINT)
        reader, writer = os.pipe()
        os.close(reader)
        for command in ("doctor", "list", "status", "get sensors"):
            with self.subTest(command):
                self.assertEqual(run(*command.split(), stdout=writer), (130, None, ""))
                code, out, err = run(*command.split(), preexec_fn=interrupted)
                self.assertEqual((code, err), (130, ""))
                self.assertNotIn("failed", out)
        os.close(writer)

    def test_text_fits_its_terminal_and_has_colours_there_only(self):
        watch = "watch thermal skin:skin bcl_voltage:battery_voltage --for 300ms"
        for columns in (40, 80):
            for command, wanted in ((watch, "\033[1mNONE\033[0m"), (watch, "\033[33m** device: lin"),
                                    ("doctor", "\033[32mok\033[0m "), ("get bcl", "\033[1mNONE")):
                self.assertIn(wanted, on_terminal(columns, *command.split())[1])
            for command in ("status", "list", "doctor", watch):
                code, out = on_terminal(columns, *command.split(), NO_COLOR="1")
                self.assertEqual(code, 0)
                self.assertNotIn("\033", out)
                self.assertLessEqual(max(map(len, out.splitlines())), columns, out)
            # No trailing blanks; no line that is only a time or begins within the change.
            self.assertNotRegex(out, r"(?m) $|^[\d:.]+$|^ *->")
            first = [line.index("unknown") for line in out.splitlines() if "unknown" in line]
            self.assertEqual(len(set(first)), {40: 2, 80: 1}[columns], out)
            text = " ".join(out.split())
            self.assertIn("SKIN:skin unknown -> NONE", text)
            # One registration per client.
            self.assertIn("** 1 more time: linked: the library's callback", text)
        for command in ("list", "doctor"):  # one line each in a pipe
            self.assertNotRegex(self.output(run(command)), "(?m)^ ")
        code, out = on_terminal(80, "status", rows=12)
        self.assertEqual((code, len(out.splitlines())), (0, 11))
        self.assertIn(" more: quorvel list\n", out)

    def test_status_follows_in_place_on_a_terminal(self):
        # Also without room for all, it shows what is throttled.
        code, out = on_terminal(80, "status", "--follow", "--for", "4s", rows=12)
        self.assertEqual(code, 0)
        first, *others = re.split("\033\\[\\d+A\033\\[J", out)
        self.assertGreater(len(others), 2)
        first = first.removeprefix("Device: simulated\n")
        self.assertEqual({len(screen.splitlines()) for screen in others}, {len(first.splitlines())})
        self.assertNotIn("* ", first)
        # Bold marks changed values, yellow marks high severities.
        self.assertRegex("".join(others), r"\n\033\[1m\* [a-zA-Z_: ]+? {2,}\d")
        self.assertRegex("".join(others), r"\n.*\033\[33m. (CPU|SKIN):.*, (MODERATE|SEVERE)")

    def test_status_follows_with_tables_otherwise(self):
        followed = Started("status", "--follow", "--for", "3s", "--json")
        out = self.output(run("status", "--follow", "--for", "3s"))
        self.assertNotIn("\033", out)
        self.assertGreater(len(re.findall(r"(?m)^\d\d:\d\d:\d\d$", out)), 1)
        values = {}
        for line in self.objects(followed.finish()):
            values.setdefault(line["property"], []).append(line["value"])
        self.assertTrue(any(len(seen) > 1 for seen in values.values()))
        self.assertEqual(len(values["bcl_voltage"]), 1)


if __name__ == "__main__":
    unittest.main()
