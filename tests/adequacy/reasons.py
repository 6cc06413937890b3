# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

"""Lists of exceptions with their reasons."""


def read(path):
    """The entries of a list. Comment lines are the reason for the entries that follow them."""
    entries = []
    reason = False
    for number, line in enumerate(path.read_text().split("\n"), 1):
        if line.startswith("#"):
            reason = True
        elif not line:
            reason = False
        else:
            assert reason, f"{path}:{number}: an entry without a reason above it"
            entries.append(line)
    return entries
