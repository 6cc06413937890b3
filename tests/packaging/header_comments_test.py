#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

"""The comments of quorvel.h list the results that doxygen does not miss: it accepts a function with
a single @retval, and an enumerator without a comment.

usage: header_comments_test.py HEADER
"""

import collections
import pathlib
import re
import sys
import unittest

HEADER = pathlib.Path(sys.argv[1]).read_text()

# Functions that differ in these words only fail in the same ways.
KINDS = [r"BatteryLevel|BatteryCycleCount|WirelessChargerIsOnline|DockChargerIsOnline",
         r"ProximitySensor|HingeAngleSensor", r"ChargeLimitCurrent|ChargeLimitVoltage"]



def documented_results():
    """The @retval names of each function that returns int."""
    return {name: set(re.findall(r"@retval +(\S+)", comment)) for comment, name in
            re.findall(r"/\*\*((?:(?!\*/).)*)\*/\nint (\w+)\(", HEADER, re.DOTALL)}


def failures(results):
    return {result for result in results
            if result.startswith("-E") or result.endswith("_UNKNOWN") or result == "other"}


class HeaderCommentsTest(unittest.TestCase):
    def test_every_int_function_has_a_comment(self):
        declared = re.findall(r"^int (\w+)\(", HEADER, re.MULTILINE)
        self.assertGreater(len(declared), 20)
        self.assertEqual(sorted(documented_results()), sorted(declared))

    def test_success_and_the_refusal_of_null_are_listed(self):
        for name, results in documented_results().items():
            with self.subTest(function=name):
                self.assertIn("-EINVAL", results)
                self.assertTrue(results - failures(results), "no @retval for success")

    def test_functions_of_one_kind_list_the_same_failures(self):
        kinds = collections.defaultdict(dict)
        for name, results in documented_results().items():
            for number, words in enumerate(KINDS):
                if re.search(words, name):
                    kinds[number, re.sub(words, "", name)][name] = failures(results)
        self.assertEqual([len(functions) for functions in kinds.values()],
                         [4, 4, 4, 2, 2, 2])
        for functions in kinds.values():
            together = set.union(*functions.values())
            for name, listed in functions.items():
                self.assertEqual(together - listed, set(), f"{name}: add @retval")
        self.assertEqual(documented_results()["GetWirelessChargerIsOnline"],
                         documented_results()["GetDockChargerIsOnline"])

    def test_every_enumerator_has_a_comment(self):
        enumerators = re.findall(r"^  (QUORVEL_\w+) = (.*)$", HEADER, re.MULTILINE)
        self.assertGreater(len(enumerators), 15)
        for name, rest in enumerators:
            self.assertRegex(rest, r"/\*\*< .* \*/$", name)

    def test_the_constants_for_no_value_are_results(self):
        constants = set(re.findall(r"^  (QUORVEL_\w+_UNKNOWN) = ", HEADER, re.MULTILINE))
        self.assertEqual(len(constants), 2)
        self.assertLessEqual(constants, set.union(*documented_results().values()))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
