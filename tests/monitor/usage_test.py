#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

"""The parser, the help, the manual page and the completions of three shells agree.

usage: usage_test.py QUORVEL ROOT
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

QUORVEL = os.path.abspath(sys.argv[1])
ROOT = pathlib.Path(sys.argv[2]).resolve()
COMPLETIONS = ROOT / "packaging/completions"
ENVIRONMENT = {**os.environ, "PATH": f"{os.path.dirname(QUORVEL)}:{os.environ['PATH']}",
               "COLUMNS": "500", "QUORVEL_DEVICE": "simulated"}  # an entry of the help is one line
LIMIT = 60  # seconds; only a broken monitor meets it

# Operands by their word in the help, and values of options.
WORDS = {"": [], "[COMMAND]": [], "FILE": ["a"], "RECORDING": ["a"], "NAME...": ["n"],
         "TYPE:NAME...": ["SKIN:n"]}
VALUES = {"DEVICE": "linux", "DURATION": "1s", "FILE": "b", "N": "2", "csv|perfetto": "csv"}


def run(*args, **kwargs):
    with tempfile.TemporaryDirectory() as folder:
        return subprocess.run(args, capture_output=True, text=True, timeout=LIMIT, cwd=folder,
                              stdin=subprocess.DEVNULL, env=ENVIRONMENT | kwargs)


def quorvel(*args, **kwargs):
    return run(QUORVEL, *args, **kwargs)


def entries(text, title):
    """The first column of a part of the help, with the rest of each line."""
    part = text.split(f"\n{title}:\n")[1].split("\n\n")[0]
    return [re.split(r"\s{2,}", line.strip(), maxsplit=1)
            for line in re.sub(r"\n {3,}", "   ", part).splitlines()]


def options_in(text):
    """The long options of a help text and the words for their values."""
    return {entry[0].split(",")[0].split(" ")[0]: entry[0].split(",")[0].partition(" ")[2]
            for entry in entries(text, "Options")}


HELP = quorvel("help").stdout
COMMANDS = [entry[0] for entry in entries(HELP, "Commands")]
NAMES = list(dict.fromkeys(command.split()[0] for command in COMMANDS))


def bash(line):
    script = """source "$1/quorvel.bash"; COMP_LINE=$2 COMP_POINT=${#2}; _quorvel
                printf '%s\\n' "${COMPREPLY[@]}\""""
    return run("bash", "-euc", script, "bash", COMPLETIONS, line)


def fish(line):
    return run("fish", "--no-config", "-c",
               "source $argv[1]/quorvel.fish; complete --do-complete $argv[2]", COMPLETIONS, line)


def zsh(line):
    """Runs the function with what zsh would give it, and prints what it offers."""
    script = """compadd() { print -rl -- $names }; _files() { print -rl -- $PREFIX*(N) }
                compset() { PREFIX=${PREFIX#*=} }
                words=(${(z)2}); [[ $2 == *' ' ]] && words+=(''); CURRENT=$#words PREFIX=$words[-1]
                complete() { source $1/_quorvel }; complete $1"""
    return run("zsh", "-fc", script, "zsh", COMPLETIONS, line)


SHELLS = [shell for shell in (bash, fish, zsh) if shutil.which(shell.__name__)]


def offered(shell, line):
    done = shell(line)
    if done.stderr:
        raise RuntimeError(done.stderr)
    return {candidate.split("\t")[0] for candidate in done.stdout.splitlines() if candidate}


class UsageTest(unittest.TestCase):
    maxDiff = None

    def test_a_command_takes_what_its_help_lists_and_nothing_else(self):
        self.assertIn("watch thermal TYPE:NAME...", COMMANDS)
        every = options_in(HELP)
        union = set()
        for command in COMMANDS:
            name, words = command.split()[0], re.findall(r"[a-z]+(?= |$)", command)
            help_text = quorvel(name, "--help")
            self.assertEqual((help_text.returncode, help_text.stderr), (0, ""))
            self.assertEqual(quorvel("help", name).stdout, help_text.stdout)
            self.assertIn(f"\n  {command}", help_text.stdout)
            listed = options_in(help_text.stdout)
            union |= listed.keys()
            operands = WORDS[command.removeprefix(" ".join(words)).strip()]
            for option in every.keys() - listed.keys():
                value = [VALUES[every[option]]] if every[option] else []
                result = quorvel(*words, *operands, option, *value)
                self.assertEqual(result.returncode, 2, (command, option))
                self.assertIn(f"does not take {option}", result.stderr)
        self.assertEqual(union, every.keys())

    def test_help_fits_its_terminal(self):
        for columns in (40, 80):
            for args in (["help"], ["help", "watch"], ["play", "-h"]):
                text = quorvel(*args, COLUMNS=str(columns)).stdout
                words = [word for word in text.split() if len(word) > columns]
                long = [line for line in text.splitlines() if len(line) > columns]
                self.assertEqual((words, [line for line in long if " " in line.strip()]), ([], []))

    def test_the_help_lists_the_types_of_the_header(self):
        header = (ROOT / "include/quorvel.h").read_text()
        types = re.findall(r"^  QUORVEL_THERMAL_TYPE_(\w+) = \d+", header, re.MULTILINE)
        listed = HELP.split("\nTYPE is one of ")[1].split(". ")[0]
        self.assertEqual(re.split(r",\s", listed), types)
        for shell in SHELLS:
            self.assertLessEqual({f"{name}:" for name in types},
                                 offered(shell, "quorvel watch thermal "))

    def test_shells_complete_what_the_help_lists(self):
        self.assertIn(bash, SHELLS)
        for shell in SHELLS:
            self.assertEqual(offered(shell, "quorvel "), set(NAMES))
            self.assertEqual(offered(shell, "quorvel --json re"), {"record"})
            self.assertEqual(offered(shell, "quorvel --"), options_in(HELP).keys())
            self.assertEqual(offered(shell, "quorvel --device linux watch b"), {"battery"})
            self.assertEqual(offered(shell, "quorvel dump --device li"), {"linux"})
            self.assertEqual(offered(shell, "quorvel dump --device=li"),
                             {"linux"} if shell is bash else {"--device=linux"})
            for name in NAMES:
                self.assertEqual(offered(shell, f"quorvel {name} --"),
                                 options_in(quorvel(name, "--help").stdout).keys())
            self.assertIn("SKIN:skin" if shell is not bash else "skin",
                          offered(shell, "quorvel watch --device simulated thermal SKIN:"))
            self.assertEqual(offered(shell, "quorvel get temperatures --device simulated sk"),
                             {"skin"})
            for name in ("watch", "get"):
                self.assertEqual(offered(shell, f"quorvel {name} "),
                                 {c.split()[1] for c in COMMANDS if c.startswith(name)})
            for line in ("watch battery ", "demo ", "watch battery --for ", "record a ", "sing "):
                self.assertEqual(offered(shell, f"quorvel {line}"), set(), line)
            with tempfile.TemporaryDirectory() as folder:
                (pathlib.Path(folder) / "day.jsonl").touch()
                for line in ("play ", "record ", "demo --record "):
                    self.assertEqual(offered(shell, f"quorvel {line}{folder}/d"),
                                     {f"{folder}/day.jsonl"})

    def test_the_manual_page_has_every_command_and_option(self):
        lists = quorvel("--man").stdout
        page = (ROOT / "docs/man/quorvel.1").read_text().replace('.\\" LISTS\n', lists)
        self.assertIn(lists, page)
        if shutil.which("mandoc"):
            done = subprocess.run(["mandoc", "-Tlint", "-Wwarning"], input=page, text=True,
                                  capture_output=True)
            self.assertEqual((done.returncode, done.stdout), (0, ""))
        commands = re.findall(r"^\.It Ic (\w+)(?: Cm (\w+))?(?: Ar (.*))?$", page, re.MULTILINE)
        self.assertEqual([" ".join(filter(None, command)) for command in commands], COMMANDS)
        self.assertEqual({"--" + name for name in re.findall(r"^\.It Fl -([a-z]+)", page,
                                                             re.MULTILINE)},
                         options_in(HELP).keys())


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
