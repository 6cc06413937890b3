#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

"""Tests the documents: runs their commands on their programs with an installed tree, checks their
links, and compares their table of retries with the code.

usage: docs_test.py ROOT QUORVEL CMAKE BUILD-FOLDER

A block marked ```console holds commands after "$ ", each with the output that it has to have, where
any is shown: a line of "..." stands for any lines, and times of day may differ. A compiler has to
print nothing. One marked ```sh holds commands that are not run: each has to match one of NOT_RUN. A
block of c or cpp is a whole program or a part of one. Its first line is a comment that begins with
the name of its file; the document's commands find it under that name.
"""

import functools
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(sys.argv[1]).resolve()
QUORVEL = pathlib.Path(sys.argv[2]).resolve()
CMAKE = sys.argv[3]
BUILD = pathlib.Path(sys.argv[4]).resolve()
LIMIT = 120  # seconds; only a broken program reaches it

DOCUMENTS = sorted([*(ROOT / name for name in ("README.md", "CONTRIBUTING.md", "SECURITY.md")),
                    *ROOT.glob("docs/*.md")])

# Commands that this test must not run, and why.
NOT_RUN = {
    r"\./dev ": "they build the tree, run this very test, or install packages",
    r"export PKG_CONFIG_PATH=": "it says where a tree is installed, and this test has its own",
}

# Lines of the library's log on standard error, which the documents do not show.
LOG_LINE = re.compile(r"^\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} +\d+ +\d+ [VDIWEF] .*\n", re.MULTILINE)
COMPILER = re.compile(r"(cc|c\+\+) ")
FILE_NAME = re.compile(r"(?:/\*|//) ([a-z_]+\.(?:cc|c))\b")
TIME_OF_DAY = re.compile(r"\d\d:\d\d:\d\d\.\d{3}")


def blocks(document):
    """(language, text) of each fenced block."""
    text = document.read_text()
    if len(re.findall(r"^ *```", text, re.MULTILINE)) % 2:
        raise ValueError(f"{document}: a block without an end")
    return re.findall(r"^```(\w*)\n(.*?)^```$", text, re.MULTILINE | re.DOTALL)


def prose(document):
    return re.sub(r"^```.*?^```$", "", document.read_text(), flags=re.MULTILINE | re.DOTALL)


def anchors(document):
    """The anchors that the usual renderers make from headings."""
    headings = re.findall(r"^#+ (.*)$", prose(document), re.MULTILINE)
    return {re.sub(r"[^\w -]", "", heading.lower()).strip().replace(" ", "-")
            for heading in headings}


def transcript(text):
    """[command, output] of each command of a console block."""
    commands = []
    for line in text.splitlines():
        if line.startswith("$ "):
            commands.append([line[2:], []])
        else:
            commands[-1][1].append(line)
    return commands


def matches(output, shown):
    pattern = "".join("(?s:.*)" if line == "..." else re.escape(TIME_OF_DAY.sub("TIME", line)) + "\n"
                      for line in shown)
    return re.fullmatch(pattern, TIME_OF_DAY.sub("TIME", output))


def programs(document):
    """(file name, text) of each program; None for a name that is missing."""
    for language, text in blocks(document):
        if language in ("c", "cpp"):
            name = FILE_NAME.match(text)
            yield name and name[1], text


class DocsTest(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        subprocess.run([CMAKE, "--install", BUILD, "--prefix", folder.name, "--strip"], check=True,
                       stdout=subprocess.DEVNULL, timeout=LIMIT)
        package, = pathlib.Path(folder.name).rglob("quorvel.pc")
        # The environment that the documents tell readers to set.
        cls.installed = {"PKG_CONFIG_PATH": str(package.parent),
                         "LD_LIBRARY_PATH": str(package.parent.parent)}

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        (self.folder / "docs").symlink_to(ROOT / "docs")

    def run_here(self, *command):
        env = {**os.environ, "PATH": f"{QUORVEL.parent}:{os.environ['PATH']}", "LC_ALL": "C.UTF-8",
               **self.installed}
        done = subprocess.run(command, cwd=self.folder, env=env, text=True, timeout=LIMIT,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT)
        return done.returncode, LOG_LINE.sub("", done.stdout)

    def test_commands_and_programs_work_as_shown(self):
        used, count = set(), 0
        for document in DOCUMENTS:
            commands = "".join(text for language, text in blocks(document) if language == "console")
            for name, text in programs(document):
                with self.subTest(document=document.name, program=text):
                    self.assertIsNotNone(name, "it has no file name")
                    self.assertRegex(commands, rf"(?m)^\$ (cc|c\+\+) .*\b{re.escape(name)} ")
                    (self.folder / name).write_text(text)
            for command, shown in transcript(commands):
                with self.subTest(document=document.name, command=command):
                    count += 1
                    code, output = self.run_here("bash", "-c", command)
                    self.assertEqual(code, 0, output)
                    if (shown or COMPILER.match(command)) and not matches(output, shown):
                        self.assertEqual(output, "\n".join(shown) + "\n")
            for language, text in blocks(document):
                if language != "console":
                    self.assertNotRegex(text, re.compile(r"^\$ ", re.MULTILINE))
                for line in text.splitlines() if language == "sh" else []:
                    fitting = {pattern for pattern in NOT_RUN if re.match(pattern, line)}
                    self.assertTrue(fitting, f"{document.name}: {line}: mark its block as console")
                    used |= fitting
        self.assertEqual(used, set(NOT_RUN))
        self.assertGreater(count, 10)

    def test_commands_in_the_text_exist(self):
        known = subprocess.run([ROOT / "dev", "help"], capture_output=True, text=True).stdout
        known = set(re.findall(r"^  ([\w-]+)", known, re.MULTILINE))
        help_of = functools.cache(lambda command: self.run_here(QUORVEL, command, "--help"))
        for document in DOCUMENTS:
            for code in re.findall(r"`([^`\n]+)`", prose(document)):
                words = code.split()
                with self.subTest(document=document.name, command=code):
                    if words[0] == "./dev":
                        self.assertLessEqual(set(words[1:2]), known)
                    if words[0] == "quorvel" and words[1:] and not words[1].startswith("-"):
                        exit_code, text = help_of(words[1])
                        self.assertEqual(exit_code, 0, text)
                        self.assertLessEqual({word for word in words if word.startswith("--")},
                                             set(re.findall(r"--[a-z]+", text)))

    def test_links_lead_somewhere(self):
        for document in DOCUMENTS:
            for link in re.findall(r"\]\(([^)\s]+)\)", prose(document)):
                if "://" in link:
                    continue
                with self.subTest(document=document.name, link=link):
                    path, _, anchor = link.partition("#")
                    target = (document.parent / path) if path else document
                    self.assertTrue(target.exists())
                    if anchor:
                        self.assertIn(anchor, anchors(target))

    def test_the_address_is_that_of_the_packages(self):
        addresses = {re.search(r"CPACK_PACKAGE_CONTACT .*<(.*)>",
                               (ROOT / "packaging/package.cmake").read_text())[1]}
        for name in ("CONTRIBUTING.md", "SECURITY.md"):
            self.assertEqual(set(re.findall(r"[\w.]+@[\w.]+\w", (ROOT / name).read_text())), addresses)

    def test_the_index_has_every_document(self):
        index = (ROOT / "docs/README.md").read_text()
        for document in ROOT.glob("docs/*.md"):
            if document.name not in ("README.md", "reference.md"):
                self.assertIn(f"({document.name})", index)

    def test_the_table_of_workers_is_that_of_the_code(self):
        constructed = {}
        for source in (ROOT / "src").rglob("*.cc"):
            for name, pause, count in re.findall(
                    r'this,\s*"(\w+)",\s*/\*pause_ms=\*/(\d+),\s*/\*repeat_count=\*/(\d+)\)',
                    source.read_text()):
                constructed[name] = (int(pause), int(count))
        rows = re.findall(r"^\| `(\w+)` \|.*\| ?(?:(\d+) ms)? ?\| ?(\d*).*\|$",
                          (ROOT / "docs/how-it-works.md").read_text(), re.MULTILINE)
        self.assertGreater(len(constructed), 5)
        self.assertEqual({name: (int(pause or 0), int(count or 0)) for name, pause, count in rows},
                         constructed)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
