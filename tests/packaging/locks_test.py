#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

"""Every mutex has an annotation that names what it guards. clang checks only annotated data, and
reports nothing about a mutex without annotations.

usage: locks_test.py ROOT

A mutex that guards no data has a comment at its declaration: "Guards no member: ...".
"""

import pathlib
import re
import sys
import unittest

ROOT = pathlib.Path(sys.argv[1]).resolve()
FOLDERS = ("src", "host", "monitor", "tests", "bench")

# Tokens: the begin or end of a scope; a mutex variable or reference, but not a parameter or a
# template argument; an annotation.
TOKEN = re.compile(r"[{}]|^[ \t]*(?:(?:static|mutable|inline|constinit|const|thread_local)\s+)*"
                   r"(?:std::(?:recursive_|timed_|recursive_timed_|shared_|shared_timed_)?mutex"
                   r"|pthread_(?:mutex|rwlock|spinlock)_t)\s*&?\s+?&?(?P<mutex>\w+)\s*(?=[;={[])"
                   r"|(?:\w*GUARDED_BY|guarded_by)\s*\((?P<lock>[^()]*(?:\(\))?[^()]*)\)",
                   re.MULTILINE)
REASON = re.compile(r"//.*\bGuards no member: \S+")


def without_comments(text):
    """The same text with comments and literals blanked: every position keeps its line."""
    blank = lambda match: re.sub(r"[^\n]", " ", match.group())
    return re.sub(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"', blank, text, flags=re.DOTALL)


def is_explained(lines, number):
    """Whether the line or the comment above it states the reason."""
    while not REASON.search(lines[number]):
        number -= 1
        if number < 0 or not lines[number].lstrip().startswith("//"):
            return False
    return True


def unguarded(text):
    """The name and line of each mutex that guards nothing, and the number of mutexes. Guarded data
    must be in the same scope, because inner and outer classes may have a mutex of the same name."""
    code = without_comments(text) + "}"  # ends the file
    lines = text.splitlines()
    found, count, scopes = [], 0, [({}, set())]
    for token in TOKEN.finditer(code):
        if token[0] == "{":
            scopes.append(({}, set()))
        elif token[0] == "}":
            mutexes, guarding = scopes.pop()
            found += [(name, number + 1) for name, number in mutexes.items()
                      if name not in guarding and not is_explained(lines, number)]
        elif token["mutex"]:
            count += 1
            scopes[-1][0][token["mutex"]] = code.count("\n", 0, token.start("mutex"))
        else:
            scopes[-1][1].add(re.split(r"->|\.", token["lock"])[-1].strip())
    return found, count


class LocksTest(unittest.TestCase):
    def test_every_mutex_guards_something(self):
        count = 0
        for folder in FOLDERS:
            for path in sorted((ROOT / folder).rglob("*")):
                if path.suffix not in (".h", ".cc", ".c"):
                    continue
                found, here = unguarded(path.read_text())
                count += here
                for name, line in found:
                    with self.subTest(file=str(path.relative_to(ROOT)), line=line):
                        self.fail(f"nothing is annotated as guarded by '{name}'")
        self.assertGreater(count, 0)

    def test_a_mutex_that_guards_nothing_is_found(self):
        for text, names in (
                ("class A {\n  mutable std::mutex lock_;\n  int i_;\n};", ["lock_"]),
                ("class A {\n  std::mutex lock_;\n  int i_;  // GUARDED_BY(lock_)\n};", ["lock_"]),
                ("class A {\n  std::mutex a_;\n  std::mutex b_;\n  std::mutex c_;\n  std::mutex d_;\n"
                 "  int i_ GUARDED_BY(a_);\n  int* j_ PT_GUARDED_BY(b_);\n"
                 "  int k_ GUARDED_BY(other->c_);\n};", ["d_"]),
                ("class A {\n  std::mutex lock_;\n};\n"
                 "class B {\n  std::mutex lock_;\n  int i_ GUARDED_BY(lock_);\n};", ["lock_"]),
                ("class A {\n  struct B {\n    std::mutex lock_;\n    int i_ GUARDED_BY(lock_){};\n  };\n"
                 "  std::mutex lock_;\n};", ["lock_"]),
                ("class A {\n  // Guards no member: one at a time.\n  std::mutex lock_;\n};", []),
                ("class A {\n  // Guards no member:\n  std::mutex lock_;\n};", ["lock_"]),
                ("pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;", ["lock"]),
                ("std::mutex& lock = *new std::mutex;\nint& i GUARDED_BY(lock) = *new int;", []),
                ("std::mutex& lock = *new std::mutex;\nint& i = *new int;", ["lock"]),
                ("void Take(std::mutex& lock);\nstd::lock_guard<std::mutex> guard(lock);", [])):
            with self.subTest(text=text):
                self.assertEqual([name for name, line in unguarded(text)[0]], names)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
