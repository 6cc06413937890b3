#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

"""The help, the manual page and the completion of the command line say the same.

usage: usage_test.py QUORVEL ROOT
"""

import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

QUORVEL = os.path.abspath(sys.argv[1])
ROOT = pathlib.Path(sys.argv[2]).resolve()
WITH_QUORVEL = {**os.environ, "PATH": f"{os.path.dirname(QUORVEL)}:{os.environ['PATH']}"}
LIMIT = 60  # seconds; only a broken monitor meets it

# What makes a command line complete but for its options.
OPERANDS = {"watch": ["battery"], "get": ["battery"], "dump": [], "demo": [], "record": ["a"],
            "play": ["a"], "plot": ["a", "--output", "a.svg"]}
VALUES = {"--device": ["linux"], "--for": ["1s"], "--record": ["b"], "--speed": ["2"],
          "--output": ["b.svg"]}


def run(*args):
    with tempfile.TemporaryDirectory() as folder:
        return subprocess.run([QUORVEL, *args], capture_output=True, text=True, timeout=LIMIT,
                              cwd=folder, stdin=subprocess.DEVNULL)


def first_column(text, title=None):
    """The entries of a part of the help, or of all of it."""
    if title:
        text = text.split(f"\n{title}:\n")[1].split("\n\n")[0]
    return re.findall(r"^  (\S+(?: \S+)*)(?:  .*)?$", text, re.MULTILINE)


def options_in(text):
    """The long options of a help text, each without its value."""
    options = [re.findall(r"--[a-z]+", entry) for entry in first_column(text, "Options")]
    return {option for found in options for option in found}


HELP = run("--help").stdout
ENTRIES = first_column(HELP, "Commands")
COMMANDS = list(dict.fromkeys(entry.split()[0] for entry in ENTRIES))


def complete(*words):
    """What bash offers for the last word; "=" and ":" make words of their own there, too."""
    script = """source "$1"; shift; COMP_WORDS=(quorvel "$@"); COMP_CWORD=$#
                _quorvel; printf '%s\\n' "${COMPREPLY[@]}\""""
    done = subprocess.run(["bash", "-euc", script, "bash", ROOT / "packaging/completions/quorvel.bash",
                           *words], capture_output=True, text=True, timeout=LIMIT, check=True,
                          env=WITH_QUORVEL)
    return set(done.stdout.split())


def complete_in_fish(*words):
    """The same of fish, which takes the line apart itself."""
    script = 'source $argv[1]; complete --do-complete "$argv[2..]"'
    with tempfile.TemporaryDirectory() as folder:  # where there is no file to offer
        done = subprocess.run(["fish", "--no-config", "-c", script,
                               ROOT / "packaging/completions/quorvel.fish", "quorvel", *words],
                              capture_output=True, text=True, timeout=LIMIT, cwd=folder,
                              env=WITH_QUORVEL)
    if done.returncode or done.stderr:
        raise RuntimeError(done.stderr)
    return {line.split("\t")[0] for line in done.stdout.splitlines()}


def documented_types():
    """The names of the types of temperatures that the header has numbers for."""
    header = (ROOT / "include/quorvel.h").read_text()
    return re.findall(r"^  QUORVEL_THERMAL_TYPE_(\w+) = \d+", header, re.MULTILINE)


class UsageTest(unittest.TestCase):
    maxDiff = None

    def test_there_is_something_to_compare(self):
        self.assertEqual(set(COMMANDS), set(OPERANDS))
        self.assertIn("watch thermal TYPE:NAME...", ENTRIES)
        self.assertLess(set(VALUES), options_in(HELP))
        self.assertIn("quorvel --help", run("dance").stderr)

    def test_the_help_of_a_command_lists_what_it_takes_and_nothing_else_is_taken(self):
        every = options_in(HELP)
        union = set()
        for command in COMMANDS:
            result = run(command, "--help")
            self.assertEqual((result.returncode, result.stderr), (0, ""))
            self.assertTrue(result.stdout.startswith(f"Usage: quorvel {command} "))
            listed = options_in(result.stdout)
            union |= listed
            self.assertEqual(first_column(result.stdout.split("\nOptions:")[0]),
                             [entry for entry in ENTRIES if entry.split()[0] == command])
            for option in every - listed:
                with self.subTest(command=command, option=option):
                    result = run(command, *OPERANDS[command], option, *VALUES.get(option, []))
                    self.assertEqual(result.returncode, 2)
                    self.assertIn(option, result.stderr)
        self.assertEqual(union, every)

    def test_the_exit_code_tells_how_it_went(self):
        for code, command in ((0, "get battery"), (0, "--version"), (1, "get temperatures attic"),
                              (1, "play nothing"), (1, "plot nothing --output a.svg"),
                              (1, "record no/such/folder"), (2, "sing"), (2, "demo --for 1s")):
            self.assertEqual(run(*command.split()).returncode, code, command)

    def test_the_manual_page_has_every_command_and_option(self):
        page = (ROOT / "docs/man/quorvel.1").read_text()
        entries = [re.sub(r"[A-Z].*|FILE.*", "", entry).split() for entry in ENTRIES]
        items = re.findall(r"^\.It Ic (\w+)(?: Cm (\w+))?", page, re.MULTILINE)
        self.assertEqual(sorted(" ".join(entry[:2]) for entry in entries),
                         sorted(" ".join(item).strip() for item in items))
        self.assertEqual(set(re.findall(r"^\.It Fl -([a-z]+)", page, re.MULTILINE)),
                         {option[2:] for option in options_in(HELP)})
        codes = re.findall(r"^  (\d)  ", HELP.split("\nExit code:\n")[1], re.MULTILINE)
        self.assertEqual(re.findall(r"^\.It (\d)$", page, re.MULTILINE), codes)
        self.assertEqual(re.findall(r"^Environment: (\w+)", HELP, re.MULTILINE),
                         re.findall(r"^\.It Ev (\w+)", page, re.MULTILINE))

    def test_the_help_lists_the_types_of_the_header(self):
        listed = HELP.split("\nTYPE is one of ")[1].split(".\n")[0]
        self.assertEqual(re.split(r",\s", listed), documented_types(),
                         "compare monitor/clients/thermal_properties.h with include/quorvel.h")

    def test_shells_complete_what_the_help_lists(self):
        devices = set(re.findall(r"^ {24}(\w+)", HELP, re.MULTILINE))
        for shell in (complete, complete_in_fish):
            self.assertEqual(shell(""), set(COMMANDS))
            self.assertEqual(shell("--json", "re"), {"record"})
            self.assertEqual(shell("--"), options_in(HELP))
            for command in COMMANDS:
                self.assertEqual(shell(command, "--"), options_in(run(command, "--help").stdout))
            for command in ("watch", "get"):
                self.assertEqual(shell(command, ""),
                                 {e.split()[1] for e in ENTRIES if e.split()[0] == command})
            self.assertEqual(shell("dump", "--device", ""), devices)
            self.assertEqual(shell("--device", "linux", "watch", "b"), {"battery"})
            self.assertEqual(shell("watch", "thermal", ""),
                             {f"{name}:" for name in documented_types()})
            for words in (["watch", "battery", ""], ["demo", ""], ["watch", "battery", "--for", ""],
                          ["record", "a", ""]):
                self.assertEqual(shell(*words), set(), words)
            with tempfile.TemporaryDirectory() as folder:
                (pathlib.Path(folder) / "day.jsonl").touch()
                file = f"{folder}/day.jsonl"
                for words in (["play"], ["record"], ["plot"], ["demo", "--record"],
                              ["plot", file, "--output"]):
                    self.assertEqual(shell(*words, f"{folder}/d"), {file})

    def test_words_that_a_shell_takes_apart_are_completed(self):
        self.assertEqual(complete("dump", "--device", "="), {"simulated", "linux"})
        self.assertEqual(complete("dump", "--device", "=", "li"), {"linux"})
        self.assertEqual(complete("--device", "=", "linux", "watch", "b"), {"battery"})
        self.assertEqual(complete("watch", "thermal", "SKIN", ":", "skin", "G"), {"GPU:"})
        self.assertEqual(complete("watch", "thermal", "SKIN", ":"), set())
        self.assertEqual(complete("watch", "thermal", "SKIN", ":", "s"), set())
        self.assertEqual(complete_in_fish("dump", "--device=li"), {"--device=linux"})
        self.assertEqual(complete_in_fish("watch", "thermal", "SKIN:skin", "G"), {"GPU:"})


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
