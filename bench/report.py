#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

"""report.py RESULTS.json... [--plot FILE.svg]: the library's costs compared with its baselines.

Reads the results of the benchmark programs and library_figures.py from one run, and prints a table
in Markdown. Exits with 1 if a figure is missing or a benchmark has reported an error. A missed mark
is shown but is not a failure, because machines differ.
"""

import argparse
import json
import subprocess
import sys

FAMILIES = ["battery", "sensor", "thermal"]
LOOPS = {"sd-event": "sd-event", "glib": "GLib", "libuv": "libuv", "asio": "Boost.Asio"}
CLIENTS = [1, 10, 100, 1000]


class Results:
    """The medians and the standard deviations of the passes, by the benchmark's name."""

    def __init__(self, files):
        self.medians, self.deviations, self.errors, self.figures = {}, {}, [], {}
        for file in files:
            with open(file, encoding="utf-8") as text:
                content = json.load(text)
            for run in content.get("benchmarks", []):
                self._add(run)
            if "stripped_bytes" in content:
                self.figures = content

    def _add(self, run):
        name = run["run_name"]
        for suffix in ("/real_time", "/manual_time", "/repeats"):
            name = name.split(suffix)[0]
        name = name.split("/iterations:")[0]
        if run.get("error_occurred"):
            self.errors.append(f"{name}: {run['error_message']}")
        elif run["run_type"] == "iteration":
            self.medians.setdefault(name, run)  # the only one, or before its median
        elif run["aggregate_name"] == "median":
            self.medians[name] = run
        elif run["aggregate_name"] == "stddev":
            self.deviations[name] = run

    def of(self, name, metric):
        if metric not in self.medians.get(name, {}):
            raise KeyError(f"no {metric} of {name}")
        return self.medians[name][metric]

    def run(self, name):
        return lambda metric: self.of(name, metric)

    def spread(self, name, metric):
        return self.deviations[name][metric]


def shown(ns):
    for limit, factor, unit in ((1e3, 1, "ns"), (1e6, 1e3, "µs"), (1e9, 1e6, "ms")):
        if abs(ns) < limit:
            return f"{ns / factor:.3g} {unit}"
    return f"{ns / 1e9:.3g} s"


class Table:
    def __init__(self):
        self.rows, self.met, self.asked = [], 0, 0

    def ratio(self, what, ours, beside, theirs, most=None, ratio=None):
        ratio = ratio or ours / theirs
        digits = 3 if most and most < 1.1 else 2
        self.figure(what, shown(ours), f"{beside}: {shown(theirs)}", most and f"at most {most:g}",
                    most and ratio <= most, f"{ratio:.{digits}f}")

    def turns(self, what, run, beside, theirs, most=None, share="p50"):
        """Adds a row for a measurement of Turns, whose counters RUN returns."""
        self.ratio(what, run(f"library_{share}_ns"), beside, run(f"{theirs}_{share}_ns"), most,
                   run(f"{theirs}_{share}_ratio"))

    def figure(self, what, ours, beside="", mark=None, met=None, ratio=""):
        if mark:
            self.asked += 1
            self.met += bool(met)
        verdict = {None: "", False: "**missed**", True: "met"}[bool(met) if mark else None]
        self.rows.append([what, ours, beside, ratio, mark or "", verdict])

    def markdown(self):
        head = ["what", "library", "beside", "ratio", "to reach", ""]
        lines = [head, ["---"] * len(head)] + self.rows
        widths = [max(len(line[i]) for line in lines) for i in range(len(head))]
        laid_out = []
        for line in lines:
            fill = "-" if line[0] == "---" else " "
            cells = [cell.ljust(width, fill) for cell, width in zip(line, widths)]
            laid_out.append("| " + " | ".join(cells) + " |")
        return "\n".join(laid_out)


def trigger(table, results):
    idle, burst = results.run("trigger/idle"), results.run("trigger/burst")
    for share, most in (("p50", 1.15), ("p99", 2)):
        table.turns(f"trigger to action, asleep, {share}", idle, "bare pair", "bare", most, share)
    for loop, name in LOOPS.items():
        within = results.spread("trigger/idle", "asio_p50_ratio") if loop == "asio" else 0
        ratio = idle(f"{loop}_p50_ratio")
        table.figure("trigger to action, asleep, p50", shown(idle("library_p50_ns")),
                     f"{name}: {shown(idle(f'{loop}_p50_ns'))}",
                     "level, within the spread" if within else "ahead", ratio <= 1 + within,
                     f"{ratio:.2f}")
    for loop, name in LOOPS.items():
        table.turns("trigger to action, asleep, p99", idle, name, loop, share="p99")
    for key, name in {"bare": "bare pair", **LOOPS}.items():
        table.ratio("a trigger in a burst of a million", burst("library_request_ns"), name,
                    burst(f"{key}_request_ns"), {"bare": 1.2, "libuv": 2}.get(key),
                    burst(f"{key}_p50_ratio"))
        table.figure("runs made for that burst", f"{burst('library_runs'):,.0f}",
                     f"{name}: {burst(f'{key}_runs'):,.0f}")
    table.figure("a trigger in such a burst, DEBUG loggable",
                 shown(results.of("trigger/burst-debug", "library_request_ns")),
                 f"not loggable: {shown(burst('library_request_ns'))}")


def events(table, results):
    for name, what, pairs, most in (
            ("battery", "battery report to client", "bare pair", 1.3),
            ("thermal-hidl", "throttling, HIDL to client", "bare pair", 1.3),
            ("thermal-aidl", "throttling, AIDL to client", "bare pair", 1.3),
            ("sensor", "a sensor poll's return to client", "bare pair", 1.3),
            ("sensor-push", "sensor event from its push to client", "two bare pairs", 1.3),
            ("battery-one-processor", "battery event to client on one processor", "bare pair", 1.2),
            ("sensor-one-processor", "sensor event to client on one processor", "two bare pairs",
             1.2)):
        table.turns(f"{what}, p50", results.run(f"event/{name}"), pairs, "bare", most)
    table.figure("context switches, ten sensor handles, an event for one",
                 f"{results.of('event/ten-sensor-handles', 'context_switches'):.1f}")


def above(table, what, beside, run, ours, theirs, most):
    table.figure(what, shown(run(ours)), f"{beside}: {shown(run(theirs))}",
                 most and f"at most +{most:g} ns", most and run("above_ns") <= most,
                 f"{run('above_ns'):+.1f} ns")


def getter(table, results):
    above(table, "cached getter", "empty function", results.run("getter/cached"),
          "library_call_ns", "empty_call_ns", 2)


def queries(table, results):
    def runs(kind):
        yield "uncached getter", results.run(f"query/{kind}/getter"), 1
        for transport in ("aidl", "hidl"):
            for sensors in (8, 100):
                yield (f"charge limits, {transport.upper()}, {sensors} sensors",
                       results.run(f"query/{kind}/bcl/{transport}/sensors:{sensors}"), sensors)
            for sensors in (8, 100):
                for count in (1, 8, 32):
                    yield (f"{count} name{'s' if count > 1 else ''}, {sensors} sensors, {transport.upper()}",
                           results.run(f"query/{kind}/bulk/{transport}/sensors:{sensors}/names:{count}"),
                           sensors)

    for what, run, sensors in runs("latency"):
        table.turns(what, run, "direct calls", "direct", 1.05 if sensors <= 8 else None)
    for what, run, sensors in runs("free"):
        table.figure(f"{what}: the library's own part, a record",
                     f"{run('own_cpu_ns') / sensors:.0f} ns, "
                     f"{run('own_allocations') / sensors:.1f} allocations", "free calls")


def dispatch(table, results):
    for family in FAMILIES:
        for clients in CLIENTS:
            # One client bears the fixed cost of a dispatch alone; among 100 it is negligible.
            most = 10 if clients >= 100 else 40 if clients == 1 else None
            above(table, f"{family} dispatch, a client of {clients}", "loop",
                  results.run(f"dispatch/{family}/clients:{clients}"), "per_client_ns",
                  "loop_per_client_ns", most)
        table.figure(f"{family} dispatch to one client, allocations", "{:g}".format(
            results.of(f"dispatch/{family}/clients:1", "allocations")))


def handles(table, results):
    for family in FAMILIES:
        table.turns(f"create and destroy a {family} handle", results.run(f"handle/{family}"),
                    "as many named threads", "threads", 1.2)


def idle(table, results):
    switches = results.of("idle/all-families", "context_switches")
    threads = results.of("idle/all-families", "threads")
    table.figure("context switches, idle for 60 s", f"{switches:g}", f"{threads:g} threads", "0",
                 switches == 0)


def sizes(table, results):
    for family in FAMILIES:
        heap, resident = (results.of(f"memory/{family}", metric) / 1024
                          for metric in ("heap_bytes", "resident_bytes"))
        threads = results.of(f"memory/{family}", "threads")
        table.figure(f"memory of a {family} handle",
                     f"{heap:.1f} KiB heap, {resident:.0f} KiB resident", f"{threads:g} threads")
    figures = results.figures
    if not figures:
        raise KeyError("no figures of the library's file")
    for what, count in figures["instructions"].items():
        table.figure(f"instructions of {what}", f"{count:.0f}")
    table.figure("the library, stripped", f"{figures['stripped_bytes'] / 1024:.0f} KiB")
    table.figure("its relocations", f"{figures['relocations']['total']}",
                 f"{figures['relocations']['symbolic']} by name")
    table.ratio("loading it", figures["load_ns"]["library"],
                "an empty one, with the platform", figures["load_ns"]["empty"])


GROUPS = [trigger, events, getter, queries, dispatch, handles, idle, sizes]


def plot(results, path):
    workers = {"library": "library", "bare": "bare pair", **LOOPS}
    lines = ["$workers << END"]
    for key, label in workers.items():
        p50, p99 = (results.of("trigger/idle", f"{key}_{share}_ns") / 1e3
                    for share in ("p50", "p99"))
        burst = results.of("trigger/burst", f"{key}_request_ns")
        lines.append(f'"{label}" {p50} {p99} {burst}')
    lines += ["END", "$dispatch << END"]
    for clients in CLIENTS:
        cells = [results.of(f"dispatch/{family}/clients:{clients}", metric)
                 for family in FAMILIES for metric in ("per_client_ns", "loop_per_client_ns")]
        lines.append(" ".join(map(str, [clients, *cells])))
    lines += [
        "END",
        "set terminal svg size 1100,380 background rgb 'white' font 'sans,12'",
        f"set output '{path}'",
        "set multiplot layout 1,3",
        "set style fill solid 0.8", "set boxwidth 0.8", "set grid ytics", "set yrange [0:*]",
        "set xtics rotate by -35", "set key above",
        "set title 'trigger to action, asleep (µs)'",
        "set style data histograms",
        "plot $workers using 2:xtic(1) title 'p50', '' using 3 title 'p99'",
        "set title 'a trigger in a burst of a million (ns)'", "set key off",
        "plot $workers using 4:xtic(1) title ''",
        "set title 'dispatch, a client (ns)'", "set key inside top right", "set logscale xy",
        "set yrange [*:*]", "set xtics norotate", "set xlabel 'clients'",
        "plot " + ", ".join(
            f"$dispatch using 1:{2 * i + 2} with linespoints linecolor {i + 1} title '{family}', "
            f"'' using 1:{2 * i + 3} with lines linecolor {i + 1} dashtype 2 "
            f"title '{family}: a loop'" for i, family in enumerate(FAMILIES)),
    ]
    subprocess.run(["gnuplot"], input="\n".join(lines), text=True, check=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("results", nargs="+", metavar="RESULTS.json")
    parser.add_argument("--plot", metavar="FILE.svg")
    arguments = parser.parse_args()
    results = Results(arguments.results)
    if results.errors:
        sys.exit("\n".join(results.errors))
    table = Table()
    try:
        for group in GROUPS:
            group(table, results)
        if arguments.plot:
            plot(results, arguments.plot)
    except KeyError as error:
        sys.exit(f"report.py: {error.args[0]}")
    print(table.markdown())
    print(f"\n{table.met} of {table.asked} marks met.")


if __name__ == "__main__":
    main()
