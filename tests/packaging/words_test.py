#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

"""The project's prose does not use certain words that have plainer replacements.

usage: words_test.py ROOT

Lists every use as FILE:LINE: WORD: REPLACEMENT.
"""

import pathlib
import re
import sys
import unittest

ROOT = pathlib.Path(sys.argv[1]).resolve()

# A phrase may be wrapped, also inside a comment.
WORDS = {
    "nobody": "name the subject, such as 'no client'",
    "somebody": "name the subject, such as 'a client'",
    "anybody": "name the subject, such as 'any client'",
    "everybody": "name the subject, such as 'all clients'",
    "whoever": "name the subject, such as 'the caller'",
    "but for": "say 'except' or 'without'",
    "anew": "say 'again'",
    "heed": "say 'check' or 'depend on'",
    "heeds": "say 'checks' or 'depends on'",
    "comes to rest": "say 'stops'",
    "goes on": "say 'continues'",
    "goes deaf": "say 'gives up'",
    "yardstick": "say 'baseline'",
    "yardsticks": "say 'baselines'",
    "stand-in": "say 'fake platform'",
    "device tree": "say 'Android source tree' or 'fake sysfs'",
}
PLACES = ("include src host monitor tests bench docs examples packaging cmake dev Android.bp "
          "CMakeLists.txt README.md CONTRIBUTING.md SECURITY.md").split()

SPACE = r"(?:\s|//|#|\*)+"  # between two words, with the comment marks of a wrapped line
PATTERN = re.compile(
    r"(?<![\w-])(" + "|".join(SPACE.join(map(re.escape, words.split())) for words in WORDS) +
    r")(?![\w-])", re.IGNORECASE)


def uses(text):
    """The line number and the word of each use."""
    for match in PATTERN.finditer(text):
        word = " ".join(re.sub(r"//|#|\*", " ", match.group().lower()).split())
        yield text.count("\n", 0, match.start()) + 1, word


def files():
    """All text files of the places that exist, without pictures and build folders."""
    for place in map(ROOT.joinpath, PLACES):
        for path in [place, *sorted(place.rglob("*"))]:
            if (path.is_file() and path.suffix not in (".png", ".svg") and
                    path.name != "words_test.py" and "build" not in path.relative_to(ROOT).parts):
                yield path


class Words(unittest.TestCase):
    def test_uses_are_found_with_their_line(self):
        text = "One.\n// Nobody waits, but\n  // for the last thread.\n# It starts\n# Anew."
        self.assertEqual(list(uses(text)), [(2, "nobody"), (2, "but for"), (5, "anew")])
        self.assertEqual(list(uses("kNobody, stand-in-place, renew, but not for all")), [])

    def test_prose_is_plain(self):
        texts = {path: path.read_text(encoding="utf-8") for path in files()}
        self.assertGreater(len(texts), 100, "not the root of the project")
        found = [f"{path.relative_to(ROOT)}:{line}: '{word}': {WORDS[word]}"
                 for path, text in texts.items() for line, word in uses(text)]
        self.assertFalse(found, "\n" + "\n".join(found))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
