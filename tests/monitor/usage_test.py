#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

"""The parser, the help, the manual page and the completions of three shells.

usage: usage_test.py QUORVEL QUORVEL_PHONE
"""

import os
import re
import shutil
import unittest

from kit import QUORVEL, ROOT, Case, Started, run

COMPLETIONS = str(ROOT / "packaging/completions")
# With PATH the shells find the program by its name. With COLUMNS an entry of the help is one line.
HERE = {"PATH": f"{os.path.dirname(QUORVEL)}:{os.environ['PATH']}", "COLUMNS": "500",
        "QUORVEL_DEVICE": "simulated"}

# Example operands and option values, by their words in the help.
OPERANDS = {"": [], "[COMMAND]": [], "FILE": ["a"], "RECORDING": ["a"], "NAME...": ["bcl"]}
VALUES = {"DEVICE": "linux", "DURATION": "1s", "FILE": "b", "N": "2", "csv|perfetto": "csv"}

# Invalid command lines and a part of the error message.
WRONG = {
    "": "command", "sing": "sing", "watch": "battery", "help me": "'me'",
    "list x": "list takes no operands, remove 'x'", "help watch battery": "takes one COMMAND",
    "get fish": "'fish', use battery, sensors, ", "watch battery get": "'get'",
    "watch bcl_current": "quorvel get bcl_current", "no\nsuch": "'no\\x0asuch'", "get bcl 1": "'1'",
    "watch thermal skin": "'skin'", "watch thermal SKIN:": "'SKIN:'",
    "watch thermal :skin": "':skin'", "watch thermal SKIN:skin ski:x": "'SKI'",
    "get": "NAME", "get temperatures ": "NAME", "watch SPEAKER:speaker": "'SPEAKER'",
    "dump --fast": "use --device, --json,", "--fast": "'--fast'", "--json -xh": "'-x'",
    "--ve dump": "'--ve' is ambiguous, use --verbose or --version", "dump --device toaster": "toaster",
    "dump --device": "--device", "dump --json=maybe": "maybe",
    "status --for 1s": "--follow", "demo --force": "--record", "play --force a": "--record",
    "record": "FILE", "record a b": "'b'", "play ": "FILE", "play - --step": "standard input",
    "play a --speed 0": "'0'", "play a --speed x": "'x'", "play a --speed inf": "'inf'",
    "play a --speed 2 --step": "--step", "plot a": "--output", "plot a --output b.pdf": "b.pdf",
    "export a": "--to", "export a --to xls": "'xls', use csv or perfetto",
    "watch battery --for": "500ms", "watch battery --for 10": "'10'",
    "watch battery --for 0s": "'0s'", "watch battery --for -1s": "'-1s'",
    "watch battery --for .s": "'.s'", "watch battery --for 8760.1h": "1ms to 8760h",
    "watch battery --for 99999999999999999999s": "99999999999999999999s"}


def entries(text, title):
    """The first column of a part of the help."""
    part = text.split(f"\n{title}:\n")[1].split("\n\n")[0]
    return [re.split(r"\s{2,}", line.strip())[0]
            for line in re.sub(r"\n {3,}", "   ", part).splitlines()]


def options_in(text):
    """The long options of a help text and the words for their values."""
    words = [entry.split(",")[0].partition(" ") for entry in entries(text, "Options")]
    return {option: value for option, _, value in words}


HELP = run("help", env=HERE)[1]
COMMANDS = entries(HELP, "Commands")
NAMES = list(dict.fromkeys(command.split()[0] for command in COMMANDS))
SHELLS = {
    "bash": ("-euc", """source "$1/quorvel.bash"; COMP_LINE=$2 COMP_POINT=${#2}; _quorvel
                        printf '%s\\n' "${COMPREPLY[@]}\"""", "bash"),
    "fish": ("--no-config", "-c", "source $argv[1]/quorvel.fish; complete --do-complete $argv[2]"),
    # Runs the completion function with the variables of zsh, and prints its candidates.
    "zsh": ("-fc", """compadd() { print -rl -- $names }; _files() { print -rl -- $PREFIX*(N) }
                      compset() { PREFIX=${PREFIX#*=} }
                      words=(${(z)2}); [[ $2 == *' ' ]] && words+=('')
                      CURRENT=$#words PREFIX=$words[-1]
                      complete() { source $1/_quorvel }; complete $1""", "zsh")}


class UsageTest(Case):
    def offered(self, shell, line):
        done = run(*SHELLS[shell], COMPLETIONS, line, program=shell, env=HERE)
        self.assertEqual(done[2], "")
        return {candidate.split("\t")[0] for candidate in done[1].splitlines() if candidate}

    def test_a_wrong_command_line_is_one_line_and_exit_code_2(self):
        started = {args: Started(*(args.split(" ") if args else [])) for args in WRONG}
        for args, complaint in WRONG.items():
            with self.subTest(args):
                code, out, err = started[args].finish()
                self.assertEqual((code, out), (2, ""))
                self.assertRegex(err, r"\Aquorvel: [^\n]+\n\Z")
                self.assertIn(complaint, err)

    def test_a_command_takes_what_its_help_lists_and_nothing_else(self):
        self.assertIn("watch NAME...", COMMANDS)
        every = options_in(HELP)
        for command in COMMANDS:
            name, words = command.split()[0], re.findall(r"[a-z]+(?= |$)", command)
            text = self.output(run(name, "--help", env=HERE))
            self.assertEqual(self.output(run("help", name, env=HERE)), text)
            self.assertIn(f" quorvel {command} [OPTIONS]\n", text)
            operands = OPERANDS[command.removeprefix(" ".join(words)).strip()]
            for option in every.keys() - options_in(text).keys():
                value = [VALUES[every[option]]] if every[option] else []
                self.failure(run(*words, *operands, option, *value, cwd=self.folder),
                             f"does not take {option}", code=2)

    def test_help_fits_its_terminal_and_names_its_version(self):
        self.assertEqual(self.output(run("-h", "--json", env=HERE)), HELP)
        self.assertRegex(self.output(run("-V")), r"^quorvel \d+\.\d+\.\d+\n$")
        for columns in (40, 80):
            for args in (["help"], ["help", "watch"], ["play", "-h"]):
                text = self.output(run(*args, env={"COLUMNS": str(columns)}))
                self.assertEqual([line for line in text.splitlines() if len(line) > columns and
                                  (" " in line.strip())], [])

    def test_the_types_of_the_header_are_listed_and_known(self):
        types = re.findall(r"^  QUORVEL_THERMAL_TYPE_(\w+) = \d+",
                           (ROOT / "include/quorvel.h").read_text(), re.MULTILINE)
        listed = HELP.split("\nTYPE is one of ")[1].split(". ")[0]
        self.assertEqual(re.split(r",\s", listed), types)
        self.says({f"watch thermal {name}:nose --for 1s": (
            3, f"quorvel: not present: {name}:nose; the thermal service reports CPU:")
                   for name in types})
        self.assertLessEqual({f"{name}:" for name in types},
                             self.offered("bash", "quorvel watch thermal "))

    def test_shells_complete_what_the_help_lists(self):
        (self.folder / "day.jsonl").touch()
        file = {f"{self.folder}/day.jsonl"}
        wanted = {"": set(NAMES), "--json re": {"record"}, "--": options_in(HELP).keys(),
                  "watch b": {"battery", "battery_level", "battery_cycle_count"},
                  "dump --device li": {"linux"},
                  "get temperatures --device simulated SK": {"SKIN:skin"},
                  "export a --to c": {"csv"},
                  "get b": {"battery", "battery_level", "battery_cycle_count", "bcl", "bcl_current",
                            "bcl_voltage"},
                  "play --": options_in(run("help", "play", env=HERE)[1]).keys(),
                  f"play {self.folder}/d": file, f"demo --record {self.folder}/d": file,
                  "watch battery --for ": set(), "record a ": set(), "sing ": set()}
        for shell in filter(shutil.which, SHELLS):
            # bash replaces only the text after the last = or :
            stem, kind = ("", "") if shell == "bash" else ("--device=", "SKIN:")
            for line, words in {**wanted, "dump --device=li": {stem + "linux"}}.items():
                self.assertEqual(self.offered(shell, f"quorvel {line}"), words, (shell, line))
            self.assertIn(f"{kind}skin", self.offered(
                shell, "quorvel watch --device simulated thermal SKIN:"))

    @unittest.skipUnless(shutil.which("mandoc"), "mandoc is not installed")
    def test_the_manual_page_has_no_mistake(self):
        page = (ROOT / "docs/man/quorvel.1").read_text()
        self.assertIn('.\\" LISTS\n', page)
        self.assertNotRegex(self.output(run("--man")), r"[A-Z][a-z]+_")  # of a JSON field
        path = self.write("quorvel.1", page.replace('.\\" LISTS\n', self.output(run("--man"))))
        self.assertEqual(run("-Tlint", "-Wwarning", path, program="mandoc"), (0, "", ""))


if __name__ == "__main__":
    unittest.main()
