#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

"""The monitor says and reads the same in a locale whose decimal point is a comma.

usage: locale_test.py QUORVEL ENTER_LOCALE

LOCPATH and QUORVEL_TEST_LOCALE name the locale. ENTER_LOCALE is the library that has a program enter
its user's locale, which the monitor does not do by itself, but the programs that it starts.
"""

import os
import re
import unittest

from kit import HINGE, OTHER, Case, on_machine, run

ELSEWHERE = {"LC_ALL": os.environ["QUORVEL_TEST_LOCALE"]}
ENTERED = ELSEWHERE | {"LD_PRELOAD": OTHER}
RECORDING = """\
{"format": "quorvel recording", "version": 1}
{"at": 0, "battery": {"level": 50, "cycles": 12345}}
{"at": 0, "temperature": {"type": "SKIN", "name": "skin", "value": 36.625, "severity": "LIGHT"}}
{"at": 0.125, "hinge_angle": 89.6}
{"at": 0.25, "temperature": {"type": "SKIN", "name": "skin", "value": 1234.5, "severity": 12345}}
"""


class LocaleTest(Case):
    def same_everywhere(self, do):
        """The result in three worlds, the last of which no monitor chooses by itself."""
        results = []
        for env in ({"LC_ALL": "C"}, ELSEWHERE, ENTERED):
            code, out, err = do(env)
            self.assertIn(code, (0, 3), err)  # the machine lacks a sensor
            text = re.sub(r'"time":"[^"]*"|^[0-9:.]{12}', "", out, flags=re.MULTILINE)
            # Callbacks of different threads come in any order.
            results.append("\n".join(sorted(text.splitlines())))
        self.assertEqual(results, [results[0]] * 3)
        return results[0]

    def test_the_locale_is_one_that_matters(self):
        keys = ("-k", "decimal_point", "thousands_sep")
        self.assertEqual(self.output(run(*keys, program="locale", env=ELSEWHERE)),
                         'decimal_point=","\nthousands_sep="."\n')
        # And a program enters it.
        self.assertEqual(run("0", program="sleep", env=ENTERED), (0, "", ""))

    def test_values_have_a_point_and_files_of_the_kernel_are_read(self):
        for args, wanted in ((("temperatures", "cpu"), "40.0 degrees C"),
                             (("temperatures", "AUDIO_voltage", "--json"), '"value":3900.0,')):
            self.assertIn(wanted, self.same_everywhere(lambda env: run("get", *args, env=env)))
        self.assertRegex(
            self.same_everywhere(lambda env: on_machine([HINGE], "get", "sensors", env=env)),
            r"hinge angle +90 degrees")

    def test_recordings_are_read_written_and_drawn(self):
        path = self.write("a.jsonl", RECORDING)
        picture = self.folder / "a.svg"

        def draw(env):
            self.output(run("plot", path, "--output", str(picture), env=env))
            return 0, picture.read_text(), ""

        text = self.same_everywhere(lambda env: run(
            "play", path, "--speed", "0.5", "--json", "--record", path + "2", "--force", env=env))
        self.assertIn('"old":0,"new":89,', text)
        with open(path + "2", encoding="utf-8") as again:
            self.assertIn('"value":36.625', again.read())
        self.same_everywhere(draw)


if __name__ == "__main__":
    unittest.main(argv=["locale_test"])
