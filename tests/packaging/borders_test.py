#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

"""The build keeps the borders between the folders: what a folder must not include does not compile
there. Tries each header of the tree with the include path of each target.

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
# The folders whose headers a target may include. Every target that this build makes is listed.
ALLOWED = {
    "quorvel_objects": ["include", "src", PLATFORM],
    "quorvel_monitor_core": ["include", "monitor"],
    "quorvel_monitor_simulation": ["include", "monitor"],
    "quorvel_monitor_phone_device": ["include", "monitor", PLATFORM],
    "quorvel_monitor_platform": ["include", "monitor", PLATFORM],
    "quorvel_services": [PLATFORM, CONTROL, "host/services"],
    "quorvel_simulated": [PLATFORM, CONTROL, "host/services", "host/simulated"],
    "quorvel_linux_machine": [PLATFORM, CONTROL, "host/services", "host/linux_machine"],
    "thermal_recovery_test": [*PRODUCT, SUPPORT],
    "linux_health_test": [*PRODUCT, SUPPORT],
    "quorvel_device_tests": ["include", PLATFORM, "tests/device"],
    "quorvel_random_objects": [*PRODUCT, SUPPORT, "tests/random"],
    "quorvel_stress_test": [*PRODUCT, SUPPORT, "tests/stress"],
}
# One that has to compile, so that an include path which is wrong altogether is noticed.
REACHED = {
    "quorvel_objects": "thermal/thermal_info.h",
    "quorvel_monitor_core": "clients/battery_client.h",
    "quorvel_monitor_simulation": "recording/recording.h",
    "quorvel_monitor_phone_device": "android/binder_process.h",
    "quorvel_monitor_platform": "android/binder_process.h",
    "quorvel_services": "quorvel/fake/script.h",
    "quorvel_simulated": "quorvel/services/health_service.h",
    "quorvel_linux_machine": "quorvel/services/health_service.h",
    "thermal_recovery_test": "waiting.h",
    "linux_health_test": "device_files.h",
    "quorvel_device_tests": "android/binder_process.h",
    "quorvel_random_objects": "pauses.h",
    "quorvel_stress_test": "pauses.h",
}

HEADERS = sorted(str(path.relative_to(ROOT)) for folder in ("include", "src", "monitor", "host",
                                                            "tests", "bench")
                 for path in (ROOT / folder).rglob("*.h"))


def is_in(header, folders):
    return any(header.startswith(folder + "/") for folder in folders)


def preprocess(text, include_path):
    options = [f"-I{folder}" for folder in include_path]
    return subprocess.run([COMPILER, "-std=c++20", "-x", "c++", "-E", "-P", "-o", "-", *options, "-"],
                          input=text, text=True, capture_output=True, cwd=FOLDER)


def reached(names, include_path):
    """Those of the names that an #include finds."""
    text = "".join(f'#if __has_include("{name}")\nfound {name}\n#endif\n' for name in names)
    done = preprocess(text, include_path)
    if done.returncode != 0:
        raise ValueError(done.stderr)
    return set(re.findall(r"^found (.*)$", done.stdout, re.MULTILINE))


def spellings(header):
    """The ways in which a source may name it: from the root, and from each folder on the way."""
    parts = header.split("/")
    return ["/".join(parts[i:]) for i in range(len(parts))]


class BordersTest(unittest.TestCase):
    def test_forbidden_headers_are_not_found(self):
        tried = 0
        for dirs in sorted(FOLDER.glob("*.dirs")):
            include_path = [line for line in dirs.read_text().splitlines() if line]
            with self.subTest(target=dirs.stem):
                allowed = ALLOWED[dirs.stem]
                self.assertEqual(reached([REACHED[dirs.stem]], include_path),
                                 {REACHED[dirs.stem]})
                permitted = {name for header in HEADERS if is_in(header, allowed)
                             for name in spellings(header)}
                forbidden = {name for header in HEADERS if not is_in(header, allowed)
                             for name in spellings(header)} - permitted
                # The system's own headers have names, too.
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

    def test_no_include_climbs_out_of_its_folder(self):
        sources = [path for folder in ("include", "src", "monitor", "host", "tests", "bench")
                   for path in (ROOT / folder).rglob("*.[ch]*") if path.suffix in (".h", ".c", ".cc")]
        self.assertGreater(len(sources), 0)
        for path in sources:
            self.assertNotRegex(path.read_text(), r'#include "\.\.', str(path))

    def test_kinds_of_tests_and_benchmarks_share_only_the_support(self):
        folders = {path for path in (ROOT / "tests").iterdir() if path.is_dir()} | {ROOT / "bench"}
        support = ROOT / SUPPORT
        includes = 0
        for folder in folders:
            own = {path.name for path in [*folder.rglob("*.h"), *support.rglob("*.h")]}
            others = folders - {folder, support}
            foreign = {path.name for other in others for path in other.rglob("*.h")} - own
            for path in folder.rglob("*.[ch]*"):
                named = set(re.findall(r'^#include "(.*)"', path.read_text(), re.MULTILINE))
                includes += len(named)
                self.assertEqual(named & foreign, set(), str(path))
            names = "|".join(re.escape(other.name) for other in others)
            for path in [*folder.rglob("CMakeLists.txt"), *folder.rglob("*.cmake")]:
                self.assertNotRegex(path.read_text(), rf"(\.\./|tests/)({names})\b", str(path))
        self.assertGreater(includes, 0)

    def test_the_device_build_has_the_same_border(self):
        text = (ROOT / "Android.bp").read_text()
        for module, folder in (("libquorvel", "src"), ("quorvel", "monitor")):
            body = re.search(r'^\w+ {\n    name: "%s",\n(.*?)^}' % module, text,
                             re.MULTILINE | re.DOTALL).group(1)
            self.assertIn(f'local_include_dirs: ["{folder}"],', body)
            self.assertIn('defaults: ["quorvel_defaults"],', body)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
