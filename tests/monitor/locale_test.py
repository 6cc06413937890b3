#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

"""The monitor's output and input are the same in a locale with a decimal comma.

usage: locale_test.py QUORVEL ENTER_LOCALE

LOCPATH and QUORVEL_TEST_LOCALE name the locale. ENTER_LOCALE is a library to preload that makes a
program use the locale of its environment, which the monitor does not do by itself.
"""

import functools
import os
import re
import unittest

from kit import MACHINE, OTHER, Case, on_machine, run

ENTERED = {"LC_ALL": os.environ["QUORVEL_TEST_LOCALE"], "LD_PRELOAD": OTHER}
RECORDING = """\
{"format": "quorvel recording", "version": 1}
{"at": 0, "battery": {"level": 50, "cycles": 12345}}
{"at": 0, "temperature": {"type": "SKIN", "name": "skin", "value": 36.625, "severity": "LIGHT"}}
{"at": 0.125, "hinge_angle": 89.6}
{"at": 0.25, "temperature": {"type": "SKIN", "name": "skin", "value": 1234.5, "severity": 12345}}
"""


class LocaleTest(Case):
    def test_the_locale_is_one_that_matters(self):
        keys = ("-k", "decimal_point", "thousands_sep")
        self.assertEqual(run(*keys, program="locale", env=ENTERED),
                         (0, 'decimal_point=","\nthousands_sep="."\n', ""))

    def test_values_have_a_point_and_files_of_the_kernel_are_read(self):
        self.says({"get temperatures cpu": (0, "40.0 degrees C"),
                   "get temperatures AUDIO_voltage --json": (0, '"value":3900.0,')}, env=ENTERED)
        self.says({"get sensors": (3, "hinge_angle 90 degrees")},
                  run=functools.partial(on_machine, MACHINE), env=ENTERED)

    def test_recordings_are_read_written_and_drawn(self):
        path = self.write("a.jsonl", RECORDING)
        results = []
        for env in ({"LC_ALL": "C"}, ENTERED):
            out = self.output(run("play", path, "--speed", "0.5", "--json", "--record", path + "2",
                                  "--force", env=env))
            self.output(run("plot", path, "--output", path + ".svg", env=env))
            # Callbacks of different threads have no order.
            results.append((sorted(re.sub(r'"time":"[^"]*"', "", out).splitlines()),
                            (self.folder / "a.jsonl.svg").read_text()))
            self.assertIn('"value":36.625', (self.folder / "a.jsonl2").read_text())
        self.assertIn('"old":0,"new":89,', out)
        self.assertEqual(*results)


if __name__ == "__main__":
    unittest.main()
