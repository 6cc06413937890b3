#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

"""The size of the library, its relocations, and the time to load it.

The load time includes the dependencies. The baseline is an empty library with the same ones.
"""

import argparse
import json
import os
import pathlib
import re
import shutil
import statistics
import subprocess
import sys
import tempfile

RUNS = 31


def run(*command):
    try:
        return subprocess.run(command, check=True, capture_output=True, text=True,
                              env={**os.environ, "LC_ALL": "C"}).stdout
    except FileNotFoundError:
        sys.exit(f"{command[0]} is needed and was not found")
    except OSError as error:
        sys.exit(f"{command[0]}: {error.strerror}")
    except subprocess.CalledProcessError as error:
        sys.exit(f"{' '.join(command)} failed: {error.stderr.strip()}")


def stripped_bytes(library):
    with tempfile.TemporaryDirectory() as folder:
        copy = pathlib.Path(folder, "stripped.so")
        shutil.copyfile(library, copy)
        run("strip", str(copy))
        return copy.stat().st_size


def relocations(library):
    """Relocations with a symbol cost a search through the libraries, the others an addition."""
    text = run("readelf", "-rW", library)
    promised = sum(int(count) for count in re.findall(r" contains (\d+) entr", text))
    # Offset, info, type; then the symbol's value and name, or only the addend.
    rows = re.findall(r"^[0-9a-f]{8,}\s+[0-9a-f]{8,}\s+R_\w+(.*)$", text, re.MULTILINE)
    if len(rows) != promised:
        sys.exit(f"readelf tells of {promised} relocations in {library} and shows {len(rows)}")
    return {
        "total": len(rows),
        "symbolic": sum(bool(re.match(r"\s+[0-9a-f]{8,}\s+\S", rest)) for rest in rows),
    }


def load_times(load, libraries):
    """The median load time of each library; alternates, with a new process each time."""
    times = [[] for _ in libraries]
    for _ in range(RUNS):
        for library, taken in zip(libraries, times):
            taken.append(int(run(load, library)))
    return [statistics.median(taken) for taken in times]


# The functions of frequent operations. Platform functions that they call are included.
COUNTED = {
    "a cached getter": "GetBatteryLevel",
    "a battery dispatch to one client": "norvik::qel::audio::BatteryInfo::CallbackToClients()",
    "a sensor dispatch to one client": "norvik::qel::audio::SensorInfo::DispatchToClient()",
    "a thermal dispatch to one client":
        "norvik::qel::audio::AudioThermalCallback::DispatchToClient()",
    "a battery report": "norvik::qel::audio::AudioHealthInfoCallback::healthInfoChanged(*)",
    "a thermal report": "norvik::qel::audio::AudioThermalChangedCallback::notifyThrottling(*)",
}
ROUNDS = 100


def instructions(program):
    counts = {}
    for what, function in COUNTED.items():
        command = ["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null",
                   f"--toggle-collect={function}", program, str(ROUNDS)]
        done = subprocess.run(command, capture_output=True, text=True, check=False)
        found = re.search(r"Collected : (\d+)", done.stderr)
        if done.returncode != 0 or not found or found[1] == "0":
            sys.exit(f"{' '.join(command)} counted nothing: {done.stderr}")
        counts[what] = int(found[1]) / ROUNDS
    return counts


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("library", help="libquorvel.so")
    parser.add_argument("empty", help="an empty library with the same dependencies")
    parser.add_argument("load", help="the program that loads a library once")
    parser.add_argument("work", help="the program whose instructions are counted")
    parser.add_argument("--output", required=True, help="where the JSON goes")
    args = parser.parse_args()
    paths = []
    for path in (args.library, args.empty, args.load, args.work):
        if not os.path.isfile(path):
            sys.exit(f"there is no file {path}")
        # The loader searches for a name without a slash.
        paths.append(os.path.realpath(path))
    library, empty, load, work = paths
    library_ns, empty_ns = load_times(load, [library, empty])
    figures = {
        "stripped_bytes": stripped_bytes(library),
        "relocations": relocations(library),
        "instructions": instructions(work),
        "load_ns": {"library": library_ns, "empty": empty_ns},
    }
    with open(args.output, "w", encoding="utf-8") as output:
        json.dump(figures, output, indent=2)
        output.write("\n")


if __name__ == "__main__":
    main()
