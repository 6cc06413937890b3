#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

"""The comments of quorvel.h list all results. doxygen does not check that: it accepts a function
with a single @retval, and an enumerator without a comment.

usage: header_comments_test.py HEADER
"""

import collections
import pathlib
import re
import sys
import unittest

HEADER = pathlib.Path(sys.argv[1]).read_text()

# Functions that differ only in these words have the same errors.
KINDS = [r"BatteryLevel|BatteryCycleCount|WirelessChargerIsOnline|DockChargerIsOnline",
         r"ProximitySensor|HingeAngleSensor", r"ChargeLimitCurrent|ChargeLimitVoltage"]


def failures(results):
    return {result for result in results
            if result.startswith("-E") or result.endswith("_UNKNOWN") or result == "other"}


class HeaderCommentsTest(unittest.TestCase):
    def test_every_int_function_lists_its_results(self):
        results = {name: set(re.findall(r"@retval +(\S+)", comment)) for comment, name in
                   re.findall(r"/\*\*((?:(?!\*/).)*)\*/\nint (\w+)\(", HEADER, re.DOTALL)}
        declared = re.findall(r"^int (\w+)\(", HEADER, re.MULTILINE)
        self.assertGreater(len(declared), 20)
        self.assertEqual(sorted(results), sorted(declared))
        kinds = collections.defaultdict(dict)
        for name, listed in results.items():
            self.assertIn("-EINVAL", listed, name)
            self.assertTrue(listed - failures(listed), f"{name}: no @retval for success")
            for number, words in enumerate(KINDS):
                if re.search(words, name):
                    kinds[number, re.sub(words, "", name)][name] = failures(listed)
        self.assertEqual([len(functions) for functions in kinds.values()], [4, 4, 4, 2, 2, 2])
        for functions in kinds.values():
            together = set.union(*functions.values())
            for name, listed in functions.items():
                self.assertEqual(together - listed, set(), f"{name}: add @retval")
        self.assertEqual(results["GetWirelessChargerIsOnline"], results["GetDockChargerIsOnline"])
        # The constants for unknown values are results, too.
        constants = set(re.findall(r"^  (QUORVEL_\w+_UNKNOWN) = ", HEADER, re.MULTILINE))
        self.assertEqual(len(constants), 2)
        self.assertLessEqual(constants, set.union(*results.values()))

    def test_every_enumerator_has_a_comment(self):
        enumerators = re.findall(r"^  (QUORVEL_\w+) = (.*)$", HEADER, re.MULTILINE)
        self.assertGreater(len(enumerators), 15)
        for name, rest in enumerators:
            self.assertRegex(rest, r"/\*\*< .* \*/$", name)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
