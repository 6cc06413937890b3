#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

"""The build keeps the borders between the folders: a header that a folder must not include is not
found there. Tries each header of the tree with the include path of each target.

usage: borders_test.py ROOT COMPILER FOLDER

FOLDER has a file for each target, NAME.dirs: its include path, a folder a line.
"""

import pathlib
import re
import subprocess
import sys
import unittest

ROOT = pathlib.Path(sys.argv[1]).resolve()
COMPILER = sys.argv[2]
FOLDER = pathlib.Path(sys.argv[3])

PLATFORM = "host/fake_platform/include"
CONTROL = "host/fake_platform/control"
PRODUCT = ["include", "src", "monitor", "host"]
SUPPORT = "tests/support"
# Each target of this build: the folders whose headers it may include, and a header that must be
# found, so that a wrong include path is noticed.
TARGETS = {
    "quorvel_objects": (["include", "src", PLATFORM], "thermal/thermal_info.h"),
    "quorvel_monitor_core": (["include", "monitor"], "clients/client.h"),
    "quorvel_monitor_simulation": (["include", "monitor"], "recording/recording.h"),
    "quorvel_monitor_phone_device": (["include", "monitor", PLATFORM], "android/binder_process.h"),
    "quorvel_monitor_platform": (["include", "monitor", PLATFORM], "android/binder_process.h"),
    "quorvel_services": ([PLATFORM, CONTROL, "host/services"], "quorvel/fake/script.h"),
    "quorvel_simulated": ([PLATFORM, CONTROL, "host/services", "host/simulated"],
                          "quorvel/services/health_service.h"),
    "quorvel_linux_machine": ([PLATFORM, CONTROL, "host/services", "host/linux_machine"],
                              "quorvel/services/health_service.h"),
    "thermal_recovery_test": ([*PRODUCT, SUPPORT], "waiting.h"),
    "host_test": ([*PRODUCT, SUPPORT], "device_files.h"),
    "fake_platform_test": ([*PRODUCT, SUPPORT], "waiting.h"),
    "quorvel_device_tests": (["include", PLATFORM, "tests/device"], "android/binder_process.h"),
    "quorvel_random_objects": ([*PRODUCT, SUPPORT, "tests/random"], "pauses.h"),
    "quorvel_stress_test": ([*PRODUCT, SUPPORT, "tests/stress"], "pauses.h"),
}

SOURCES = [path for folder in (*PRODUCT, "tests", "bench")
           for path in (ROOT / folder).rglob("*") if path.suffix in (".h", ".c", ".cc")]
HEADERS = sorted(str(path.relative_to(ROOT)) for path in SOURCES if path.suffix == ".h")


def reached(names, include_path):
    """The subset of the names that an #include finds."""
    text = "".join(f'#if __has_include("{name}")\nfound {name}\n#endif\n' for name in names)
    options = [f"-I{folder}" for folder in include_path]
    done = subprocess.run([COMPILER, "-std=c++20", "-x", "c++", "-E", "-P", *options, "-"],
                          input=text, text=True, capture_output=True, cwd=FOLDER, check=True)
    return set(re.findall(r"^found (.*)$", done.stdout, re.MULTILINE))


def spellings(header):
    """The names by which a source may include a header: relative to the root and each folder of
    its path."""
    parts = header.split("/")
    return ["/".join(parts[i:]) for i in range(len(parts))]


class BordersTest(unittest.TestCase):
    def test_forbidden_headers_are_not_found(self):
        tried = 0
        for dirs in sorted(FOLDER.glob("*.dirs")):
            include_path = [line for line in dirs.read_text().splitlines() if line]
            with self.subTest(target=dirs.stem):
                allowed, header = TARGETS[dirs.stem]
                self.assertEqual(reached([header], include_path), {header})
                permitted, forbidden = set(), set()
                for header in HEADERS:
                    is_permitted = header.startswith(tuple(folder + "/" for folder in allowed))
                    (permitted if is_permitted else forbidden).update(spellings(header))
                forbidden -= permitted
                # Names that are also headers of the system do not count.
                forbidden -= reached(forbidden, [])
                tried += len(forbidden)
                self.assertEqual(reached(forbidden, include_path), set())
        self.assertGreater(tried, 0)

    def test_the_fake_platform_compiles_alone(self):
        include = ROOT / PLATFORM
        headers = sorted(str(path.relative_to(include)) for path in include.rglob("*.h"))
        text = "".join(f"#include <{header}>\n" for header in headers)
        done = subprocess.run([COMPILER, "-std=c++20", "-fsyntax-only", f"-I{include}", "-x", "c++",
                               "-"], input=text, text=True, capture_output=True)
        self.assertEqual(done.returncode, 0, done.stderr)

    def test_no_include_climbs_and_kinds_of_tests_share_only_the_support(self):
        for path in SOURCES:
            self.assertNotRegex(path.read_text(), r'#include "\.\.', str(path))
        folders = {path for path in (ROOT / "tests").iterdir() if path.is_dir()} | {ROOT / "bench"}
        for folder in folders:
            others = "|".join(other.name for other in folders - {folder, ROOT / SUPPORT})
            for path in [*folder.rglob("CMakeLists.txt"), *folder.rglob("*.cmake")]:
                self.assertNotRegex(path.read_text(), rf"(\.\./|tests/)({others})\b", str(path))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
