#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

"""Breaks the library in a copy of the tree, one small change at a time, and prints the changes
(mutants) that the quick tests of the family do not notice.

usage: mutants.py BUILD [FILE...]

FILE is a source under src/; the default is all sources except headers. The build uses clang with
libc++, which also rejects most removed locks. Statements that only log or reserve memory are not
changed, and the mutants in survivors.txt are not tried. Fails if another mutant survives, or if a
listed one is not made any more.
"""

import collections
import contextlib
import json
import os
import pathlib
import re
import resource
import shutil
import signal
import subprocess
import sys
import time

import reasons

ROOT = pathlib.Path(__file__).resolve().parents[2]
LIST = pathlib.Path(__file__).with_name("survivors.txt")
TESTS = ["tests/library/all", "tests/random/all"]
# For each folder of src/, substrings of the names of its tests.
WORDS = {"battery": ["Battery", "c_api"], "sensor": ["Sensor", "c_api"],
         "thermal": ["Thermal", "c_api"], "thermal_hidl_wrapper": ["Thermal"],
         "common": ["RepeatedThread", "LiveObjects", "Dump", "ShortRecovery", "ThermalLifetime"]}

# Replacements of operators and words. The sources have spaces around operators, which distinguishes
# them from template brackets.
SWAPS = [(f" {a} ", f" {b} ") for a, b in
         [("==", "!="), ("!=", "=="), ("<", "<="), ("<=", "<"), (">", ">="), (">=", ">"),
          ("&&", "||"), ("||", "&&"), ("+", "-"), ("-", "+"), ("+=", "-="), ("|=", "=")]]
SWAPS += [("true", "false"), ("false", "true"), ("++", "--"), ("-EINVAL", "-EAGAIN"),
          ("-EAGAIN", "-EINVAL"), ("-ENOSYS", "-EINVAL"), ("any_of", "all_of")]
NUMBER = re.compile(r"(?<![\w.])\d+(?![\w.])")
NEGATION = re.compile(r"!(?=[\w(])")
NO_EFFECT = re.compile(r"\bALOG[DEWIV]\(|__android_log|\.(reserve|max_load_factor)\(|\bva_end\(|"
                       r"= delete;")
DECLARATION = re.compile(r"(?!delete |return\b|else )(?:[\w:]+(<.*>)?[&*]* )+[&*]*(\w+|\[.*\])"
                         r"( =|[;({\[])")
LOCK = re.compile(r"\b(lock_guard|unique_lock)<")


def mask(line):
    """The line without the contents of its strings and comments, at the same length."""
    return re.sub(r'"(\\.|[^"\\])*"|/\*.*?\*/|//.*', lambda m: "_" * len(m.group()), line)


def balance(text):
    return sum(text.count(c) for c in "([{") - sum(text.count(c) for c in ")]}")


def statements(lines):
    """The first and last index of each statement that ends with a semicolon."""
    previous = ";"
    for first, line in enumerate(lines):
        if not line.strip("_ "):
            continue
        starts = previous[-1] in ";{}:" or previous.startswith("#")
        previous = line.strip("_ ")
        if not starts or previous[0] in "#}" or previous[-1] == ":":
            continue
        depth = 0
        for last in range(first, min(first + 30, len(lines))):
            depth += balance(lines[last])
            code = lines[last].rstrip("_ ")
            if depth == 0 and code.endswith((";", "}")):
                if code.endswith(";"):
                    yield first, last
                break


def unmutated(lines):
    """The indices of lines whose change has no visible effect, or that only decide about a log."""
    found = {i for first, last in statements(lines) for i in range(first, last + 1)
             if NO_EFFECT.search(" ".join(lines[first:last + 1]).split("{")[0])}
    for i, line in enumerate(lines):
        block = next((j for j in range(i + 1, len(lines)) if j not in found), i)
        if line.lstrip().startswith("if (") and block > i + 1 and lines[block].strip() == "}":
            found.add(i)
    other = ("#", "namespace", "using")
    return found | {i for i, line in enumerate(lines) if line.startswith(other)}


def mutate(source):
    """Pairs of a mutant's name and its text."""
    original = source.split("\n")
    lines = [mask(line) for line in original]
    skipped = unmutated(lines)
    made = {}

    def add(first, last, text):
        old = " ".join(line.strip() for line in original[first:last + 1])
        if len(old) < 15:  # too short to identify the place without the line before
            old = f"{original[first - 1].strip()} {old}"
        indent = re.match(" *", original[first]).group()
        changed = original[:first] + [indent + text.strip()] + original[last + 1:]
        made.setdefault("\n".join(changed), f"{old} => {' '.join(text.split())}")

    for first, last in statements(lines):
        code = " ".join(line.strip() for line in lines[first:last + 1])
        if first in skipped or not lines[first].startswith("  "):
            continue
        value = re.fullmatch(r"return (.+);", code)
        if value and not re.fullmatch(r"\{\}|0|true|false|nullptr|.*\bVoid\(\)", value.group(1)):
            add(first, last, "return {};")
        nested = lines[first].startswith("    ")
        if nested if value else LOCK.search(code) or not DECLARATION.match(code):
            add(first, last, ";")
    for i, line in enumerate(lines):
        if i in skipped:
            continue
        for old, new in SWAPS:
            for match in re.finditer(r"(?<!\w)" * old[0].isalpha() + re.escape(old), line):
                add(i, i, original[i][:match.start()] + new + original[i][match.end():])
        for match in NUMBER.finditer(line):
            number = int(match.group())
            other = number + 1 if number < 100 else number * 10
            add(i, i, f"{original[i][:match.start()]}{other}{original[i][match.end():]}")
        for match in NEGATION.finditer(line):
            add(i, i, original[i][:match.start()] + original[i][match.end():])
        condition = re.search(r"\b(?:if|while) \((.+)", line)
        if condition and " = " not in line:
            begin = end = condition.start(1)
            depth = 1
            while end < len(line) and (depth := depth + balance(line[end])) > 0:
                end += 1
            # Simple comparisons and negated conditions are inverted above.
            inverted = re.fullmatch(r"![^&|]*|[^&|]* [=!<>]=? [^&|]*", line[begin:end])
            if depth == 0 and not inverted:
                add(i, i, f"{original[i][:begin]}!({original[i][begin:end]}){original[i][end:]}")
    named = collections.defaultdict(list)
    for text, name in made.items():
        named[name].append(text)
    return [(f"{name} #{number}" if number > 1 else name, text)
            for name, texts in named.items() for number, text in enumerate(texts, 1)]


def output(*command):
    return subprocess.run(command, cwd=ROOT, check=True, capture_output=True, text=True).stdout


class Build:
    """A copy of the tree, and its tests."""

    def __init__(self, folder):
        self.tree, self.out = folder / "tree", folder / "out"
        names = output("git", "ls-files", "-z", "--cached", "--others", "--exclude-standard")
        for name in filter(None, names.split("\0")):
            source, copy = ROOT / name, self.tree / name
            if source.is_file() and not (copy.is_file() and
                                         copy.read_bytes() == source.read_bytes()):
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copy(source, copy)
        print("building the tests", flush=True)
        options = {"C_COMPILER": "clang", "CXX_COMPILER": "clang++", "BUILD_TYPE": "",
                   "COMPILE_WARNING_AS_ERROR": "ON"}
        configure = ["cmake", "-G", "Ninja", "-S", self.tree, "-B", self.out, "-DQUORVEL_LIBCXX=ON",
                     "-DQUORVEL_MONITOR=OFF", "-DQUORVEL_PHONE=OFF"]
        configure += [f"-DCMAKE_{name}={value}" for name, value in options.items()]
        if not self.execute(configure, 600) or not self.build(TESTS, 3600):
            sys.exit(f"the build fails without a mutant: see {self.out}.log")

    def execute(self, command, limit):
        """Runs a command and kills its process group. Returns whether it succeeded in time."""
        with open(self.out.with_suffix(".log"), "wb") as log:
            process = subprocess.Popen(command, cwd=self.tree, stdout=log, stderr=log,
                                       start_new_session=True)
            try:
                return process.wait(limit) == 0
            except subprocess.TimeoutExpired:
                return False
            finally:
                with contextlib.suppress(ProcessLookupError):
                    os.killpg(process.pid, signal.SIGKILL)
                process.wait()

    def build(self, targets, limit=600):
        return self.execute(["cmake", "--build", self.out, "--target", *targets], limit)

    def quick_tests(self, words):
        """The commands and time limits of the tests whose names have one of the words, the fastest
        first."""
        commands = {}
        for folder in TESTS:
            folder = (self.out / folder).parent
            listed = output("ctest", "--test-dir", folder, "--show-only=json-v1")
            for test in json.loads(listed)["tests"]:
                program, arguments = test["command"][0], test["command"][1:]
                slow = any("slow" in label["value"] for label in test["properties"]
                           if label["name"] == "LABELS")
                if (slow or test["name"].endswith("_in_turkish") or
                        not any(word.lower() in test["name"].lower() for word in words)):
                    continue
                if any(argument.startswith("--gtest_filter") for argument in arguments):
                    names = ":".join(f"*{word}*" for word in words)
                    arguments = [f"--gtest_filter={names}:-*Slow*", "--gtest_fail_fast"]
                commands[(program, *arguments)] = 0
        for command in commands:
            begin = time.monotonic()
            if not self.execute(command, 600):
                sys.exit(f"fails without a mutant: {' '.join(command)}")
            commands[command] = time.monotonic() - begin
        return [(list(command), 10 + 5 * seconds)
                for command, seconds in sorted(commands.items(), key=lambda item: item[1])]

    def survivors(self, name, tests, listed):
        """Prints the unlisted mutants of a source that pass all tests. Returns their number."""
        copy = self.tree / name
        source = copy.read_text()
        counts = {"killed": 0, "rejected by the compiler": 0, "survived": 0, "listed": 0}
        # The library is shared, so only a mutant of a header requires a new build of the programs.
        targets = ["quorvel"] if name.endswith(".cc") else TESTS
        try:
            for mutant, text in mutate(source):
                entry = f"{name}: {mutant}"
                copy.write_text(text)
                if entry in listed:
                    counts["listed"] += 1
                    listed[entry] = True
                elif not self.build(targets):
                    counts["rejected by the compiler"] += 1
                elif all(self.execute(command, limit) for command, limit in tests):
                    counts["survived"] += 1
                    print(f"survives: {entry}", flush=True)
                else:
                    counts["killed"] += 1
        finally:
            copy.write_text(source)
        self.build(targets)
        fates = ", ".join(f"{count} {fate}" for fate, count in counts.items())
        print(f"{name}: {fates}", flush=True)
        return counts["survived"]


def main(folder, names):
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # ends running tests, as SIGINT does
    # A mutant may allocate without limit.
    resource.setrlimit(resource.RLIMIT_AS, (8 << 30, resource.RLIM_INFINITY))
    names = names or sorted(str(path.relative_to(ROOT)) for path in (ROOT / "src").rglob("*.cc"))
    for name in names:
        if not re.match(r"src/\w+/\w+\.(cc|h)$", name) or not (ROOT / name).is_file():
            sys.exit(f"{name} is no source of the library")
    build = Build(folder)
    listed = {entry: False for entry in reasons.read(LIST) if entry.split(":")[0] in names}
    survivors, tests = 0, {}
    for name in names:
        part = name.split("/")[1]
        if part not in tests:
            tests[part] = build.quick_tests(WORDS[part])
        survivors += build.survivors(name, tests[part], listed)
    for entry in (entry for entry, made in listed.items() if not made):
        print(f"in {LIST.name}, but not made: {entry}")
    sys.exit(survivors > 0 or not all(listed.values()))


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]).resolve(), sys.argv[2:])
