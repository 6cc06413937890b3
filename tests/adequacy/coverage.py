#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

"""Reports the lines and branches of src/ and monitor/ that the tests have run in a build of the
coverage preset.

usage: coverage.py BUILD

Fails unless the lines of src/ that no test runs are exactly those in unreached.txt. Branches are
reported only: those that a compiler adds for exceptions do not count.
"""

import collections
import json
import pathlib
import subprocess
import sys

import reasons

ROOT = pathlib.Path(__file__).resolve().parents[2]
LIST = pathlib.Path(__file__).with_name("unreached.txt")


def measure(build):
    """gcovr's records of the files of src/ and monitor/."""
    report = build / "report"
    report.mkdir(exist_ok=True)
    subprocess.run(["gcovr", "--root", ROOT, "--filter", "src/", "--filter", "monitor/",
                    "--exclude-throw-branches", "--exclude-unreachable-branches",
                    "--json", report / "lines.json", "--html-details", report / "index.html",
                    build / "src", build / "monitor"], check=True, cwd=ROOT)
    return json.loads((report / "lines.json").read_text())["files"]


def main(build):
    totals = collections.defaultdict(lambda: [0, 0, 0, 0])
    unreached = collections.Counter()
    for record in measure(build):
        text = (ROOT / record["file"]).read_text().split("\n")
        total = totals[record["file"].split("/")[0]]
        for line in record["lines"]:
            if line["gcovr/noncode"]:
                continue
            runs = [line["count"]] + [branch["count"] for branch in line["branches"]]
            total[0] += runs[0] > 0
            total[1] += 1
            total[2] += sum(count > 0 for count in runs[1:])
            total[3] += len(runs) - 1
            if runs[0] == 0 and record["file"].startswith("src/"):
                unreached[f"{record['file']}: {text[line['line_number'] - 1].strip()}"] += 1
    for folder, total in sorted(totals.items()):
        print("{}: {} of {} lines, {} of {} branches".format(folder, *total))
    if not totals["src"][1]:
        sys.exit("no line of src/ was compiled for coverage")
    listed = collections.Counter(reasons.read(LIST))
    for entry in (unreached - listed).elements():
        print(f"not reached by any test and not in {LIST.name}: {entry}")
    for entry in (listed - unreached).elements():
        print(f"in {LIST.name}, but reached or gone: {entry}")
    sys.exit(unreached != listed)


if __name__ == "__main__":
    main(pathlib.Path(sys.argv[1]).resolve())
