#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

"""Android.bp builds each module with the sources and flags of the host build, and enables our own
lint checks in the Android source tree.

usage: android_bp_test.py ROOT "MODULE:srcs:SOURCE..." "MODULE:flags:FLAG..."...
"""

import ast
import pathlib
import re
import sys
import unittest

ROOT = pathlib.Path(sys.argv[1]).resolve()
# Flags that the Android source tree adds to every module, and flags that only one build needs.
OF_THE_TREE = {"-fno-exceptions", "-fno-rtti", "-Wl,-z,defs"}
OF_ONE_SIDE = re.compile(r"-Werror$|-D|-ffile-prefix-map|-Wthread-safety$")


def read_modules():
    """The modules by name, with the properties of their defaults. The file is formatted by bpfmt."""
    text = re.sub(r"^ *//.*\n", "", (ROOT / "Android.bp").read_text(), flags=re.MULTILINE)
    names = {"true": True, "false": False}
    for name, value in re.findall(r"^(\w+) = (\[.*?^\])$", text, re.MULTILINE | re.DOTALL):
        names[name] = ast.literal_eval(value)
    modules = {}
    for body in re.findall(r"^\w+ ({\n.*?^})", text, re.MULTILINE | re.DOTALL):
        module = eval(re.sub(r"^( +)(\w+):", r'\1"\2":', body, flags=re.MULTILINE), names)
        for name in module.get("defaults", []):
            for key, value in modules[name].items():
                if key != "name":
                    module[key] = value + module.get(key, []) if isinstance(value, list) else value
        modules[module.get("name")] = module
    return modules


def host_build():
    """The expected values by module and property, from the command line."""
    values = {}
    for word in sys.argv[2:]:
        name, what, items = word.split(":", 2)
        values.setdefault((name, what), set()).update(items.split())
    return values


def device_flags(module):
    flags = OF_THE_TREE | {flag for key in ("cflags", "cppflags", "ldflags")
                           for flag in module.get(key, [])}
    if "version_script" in module:
        flags.add("-Wl,--version-script=" + module["version_script"])
    if "-fexceptions" in flags:
        flags -= {"-fexceptions", "-fno-exceptions"}
    return {flag for flag in flags if not OF_ONE_SIDE.match(flag)}


class AndroidBpTest(unittest.TestCase):
    maxDiff = None
    modules = read_modules()

    def test_sources_and_flags_are_those_of_the_host_build(self):
        host = host_build()
        self.assertIn(("libquorvel", "srcs"), host)
        for (name, what), values in host.items():
            with self.subTest(module=name, what=what):
                module = self.modules[name]
                self.assertEqual(module["cpp_std"], "c++20")
                self.assertTrue(values)
                if what == "srcs":
                    self.assertEqual(set(module["srcs"]), values)
                    continue
                flags = {flag.replace("LINKER:", "-Wl,").replace(f"{ROOT}/", "") for flag in values}
                flags = {flag for flag in flags if not OF_ONE_SIDE.match(flag)}
                self.assertEqual(device_flags(module), flags | {"-Wl,-z,defs"})

    def test_the_library_has_every_source_of_its_folder_and_sees_no_other(self):
        self.assertEqual(set(self.modules["libquorvel"]["srcs"]),
                         {str(path.relative_to(ROOT)) for path in (ROOT / "src").rglob("*.cc")})
        for name, folder in (("libquorvel", "src"), ("quorvel", "monitor")):
            self.assertEqual(self.modules[name]["local_include_dirs"], [folder])

    def test_the_tree_runs_the_checks_of_our_lint(self):
        text = re.search(r"^Checks: >\n(.*?)^\w", (ROOT / ".clang-tidy").read_text(),
                         re.MULTILINE | re.DOTALL)[1]
        # The Android source tree has default checks, and treats compiler warnings as errors.
        ours = {check for check in re.findall(r"[^\s,]+", text)
                if check != "-*" and "clang-diagnostic" not in check}
        for name in ("libquorvel", "quorvel", "quorvel_device_test"):
            module = self.modules[name]
            self.assertTrue(module["tidy"])
            for key in ("tidy_checks", "tidy_checks_as_errors"):
                self.assertEqual(set(module[key]), ours, f"{name}: {key}")


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
