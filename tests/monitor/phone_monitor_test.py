#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

"""The phone's monitor, on a phone whose services run.

usage: phone_monitor_test.py QUORVEL_PHONE
"""

import pathlib
import unittest

from kit import Case, Started, run

ALL = {  # what each command prints; columns count as one space
    "get battery": (0, "battery level 61 %", "dock charger online", "wireless charger offline"),
    "get battery --json": (0, '"property":"battery_level"'),
    "get sensors": (0, "proximity 5 cm", "hinge angle 120 degrees"),
    "get temperatures skin cpu": (0, "skin 38.5 degrees C", "cpu 40.0 degrees C"),
    "get temperatures nowhere": (3, "unknown or not present: nowhere"),
    "get bcl": (0, "NONE"),
    "watch --for=1ms sensors": (0, "Device: phone", "Watching the sensors."),
    "dump": (0, "linked to services = T"),
    "list": (0, "battery_level 61 % health service",
             "SKIN:skin 38.5 degrees C, LIGHT thermal service"),
    "status": (0, "services: health up, sensor up, thermal up", "SKIN:skin 38.5 C, LIGHT"),
    "doctor": (0, "ok health: link made", "ok thermal: callback registered", " 0 failed"),
    "help": (0, "watch thermal TYPE:NAME"),
    "--version": (0, "quorvel "),
    **dict.fromkeys(("", "demo", "watch fans", "dump --for 2s", "dump --device linux", "-x dump"),
                    (2, "quorvel: ", "(see quorvel --help)"))}
HEARD = {"watch battery": "battery level +unknown +-> +61 %",
         # The library may have heard the sensor before it first calls its client.
         "watch sensors": r"hinge angle +(unknown|0 degrees) +-> +120 degrees",
         "watch thermal SKIN:skin": "SKIN:skin +unknown +-> +LIGHT"}
PHONE = {"QUORVEL_DEVICE": ""}


class PhoneTest(Case):
    def test_commands_print_what_the_services_say(self):
        self.says(ALL, env=PHONE)
        for command, line in HEARD.items():
            process = Started(*command.split(), env=PHONE)
            process.until(line)
            process.stdout.close()
            self.assertEqual(process.wait(60), 0)
            process.stderr.close()

    def test_a_phone_is_recorded_and_says_nothing_of_itself(self):
        path = str(self.folder / "a.jsonl")
        self.assertIn("Recorded", self.output(run("record", path, "--for", "500ms", env=PHONE)))
        self.assertIn('"join":"thermal"', pathlib.Path(path).read_text())
        self.assertNotIn("**", self.output(run("watch", "battery", "--for", "1ms", env=PHONE)))


if __name__ == "__main__":
    unittest.main(argv=["phone_monitor_test"])
