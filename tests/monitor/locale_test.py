#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

"""The monitor says and reads the same in a locale whose decimal point is a comma.

usage: locale_test.py QUORVEL ENTER_LOCALE

LOCPATH and QUORVEL_TEST_LOCALE name the locale. ENTER_LOCALE is the library that has a program enter
its user's locale, which the monitor does not do by itself, but the programs that it starts.
"""

import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

QUORVEL, ENTER_LOCALE = (os.path.abspath(path) for path in sys.argv[1:3])
os.environ["QUORVEL_DEVICE"] = "simulated"
ELSEWHERE = {**os.environ, "LC_ALL": os.environ["QUORVEL_TEST_LOCALE"]}
LIMIT = 60  # seconds; only a broken monitor meets it

RECORDING = """\
{"format": "quorvel recording", "version": 1}
{"at": 0, "battery": {"level": 50, "cycles": 12345}}
{"at": 0, "temperature": {"type": "SKIN", "name": "skin", "value": 36.625, "severity": "LIGHT"}}
{"at": 0.125, "hinge_angle": 89.6}
{"at": 0.25, "temperature": {"type": "SKIN", "name": "skin", "value": 1234.5, "severity": 12345}}
"""
HINGE = """\
P: /devices/test/iio:device0
E: SUBSYSTEM=iio
A: name=hinge
A: label=hinge
A: in_angl_raw=90
A: in_angl_scale=0.017453293
"""


class LocaleTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def run_in(self, env, *args, before=()):
        done = subprocess.run([*before, QUORVEL, *args], env=env, cwd=self.folder, text=True,
                              capture_output=True, timeout=LIMIT, stdin=subprocess.DEVNULL)
        self.assertIn(done.returncode, (0, 3), done.stderr)  # the machine lacks a sensor
        text = re.sub(r'"time":"[^"]*"|^[0-9:.]{12}', "", done.stdout, flags=re.MULTILINE)
        return sorted(text.splitlines())  # callbacks of different threads come in any order

    def same_everywhere(self, *args, before=()):
        """What it prints in three worlds, the last of which no monitor chooses by itself."""
        here = self.run_in({**os.environ, "LC_ALL": "C"}, *args, before=before)
        self.assertEqual(self.run_in(ELSEWHERE, *args, before=before), here)
        entered = {**ELSEWHERE, "LD_PRELOAD": ENTER_LOCALE}
        self.assertEqual(self.run_in(entered, *args, before=before), here)
        return "\n".join(here)

    def test_the_locale_is_one_that_matters(self):
        done = subprocess.run(["locale", "-k", "decimal_point", "thousands_sep"], env=ELSEWHERE,
                              capture_output=True, text=True, check=True)
        self.assertEqual(done.stdout, 'decimal_point=","\nthousands_sep="."\n')
        # And a program enters it.
        done = subprocess.run(["sleep", "0"], env={**ELSEWHERE, "LD_PRELOAD": ENTER_LOCALE},
                              capture_output=True, text=True)
        self.assertEqual((done.returncode, done.stderr), (0, ""))

    def test_values_have_a_point(self):
        self.assertIn("40.0 degrees C", self.same_everywhere("get", "temperatures", "cpu"))
        self.assertIn('"value":3900.0,',
                      self.same_everywhere("get", "temperatures", "AUDIO_voltage", "--json"))

    def test_files_of_the_kernel_are_read(self):
        machine = self.folder / "hinge.umockdev"
        machine.write_text(HINGE)
        text = self.same_everywhere("get", "sensors", "--device", "linux",
                                    before=["umockdev-run", "--device", machine, "--"])
        self.assertRegex(text, r"hinge angle +90 degrees")

    def test_recordings_are_read_written_and_drawn(self):
        (self.folder / "a.jsonl").write_text(RECORDING)
        text = self.same_everywhere("play", "a.jsonl", "--speed", "0.5", "--json", "--record",
                                    "b.jsonl", "--force")
        self.assertIn('"old":0,"new":89,', text)
        self.assertIn('"value":36.625', (self.folder / "b.jsonl").read_text())
        drawings = []
        for env in ({**os.environ, "LC_ALL": "C"}, ELSEWHERE,
                    {**ELSEWHERE, "LD_PRELOAD": ENTER_LOCALE}):
            self.run_in(env, "plot", "a.jsonl", "--output", "a.svg")
            drawings.append((self.folder / "a.svg").read_text())
        self.assertEqual(drawings[1], drawings[0])
        self.assertEqual(drawings[2], drawings[0])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
