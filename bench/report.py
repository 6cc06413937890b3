#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

"""report.py RESULTS.json... [--plot FILE.svg]: the library's costs compared with its baselines.

Reads what the benchmark programs and library_figures.py have written, all of one run, and prints a
table in Markdown. Ends with 1 if a figure is missing or a benchmark has found its own work wrong;
a mark that is missed is told, and is no failure: machines differ.
"""

import argparse
import json
import subprocess
import sys

FAMILIES = ["battery", "sensor", "thermal"]
LOOPS = {"sd-event": "sd-event", "glib": "GLib", "libuv": "libuv"}
CLIENTS = [1, 10, 100, 1000]


class Results:
    """Medians, and the spread of the passes, by the benchmark's name."""

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

    def of(self, name, metric="real_time"):
        run = self.medians.get(name)
        if run is None or metric not in run:
            raise KeyError(f"no {metric} of {name}")
        return in_ns(run, run[metric]) if metric == "real_time" else run[metric]

    def spread(self, name, metric):
        return self.deviations[name][metric]


def in_ns(run, time):
    return time * {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[run["time_unit"]]


def shown(ns):
    for limit, factor, unit in ((1e3, 1, "ns"), (1e6, 1e3, "µs"), (1e9, 1e6, "ms")):
        if abs(ns) < limit:
            return f"{ns / factor:.3g} {unit}"
    return f"{ns / 1e9:.3g} s"


class Table:
    def __init__(self):
        self.rows, self.met, self.asked = [], 0, 0

    def ratio(self, what, ours, beside, theirs, most, ratio=None):
        ratio = ratio or ours / theirs
        digits = 3 if most and most < 1.1 else 2
        self._row(what, shown(ours), f"{beside}: {shown(theirs)}", f"{ratio:.{digits}f}", most and
                  f"at most {most:g}", most and ratio <= most)

    def above(self, what, ours, beside, theirs, more, most):
        self._row(what, shown(ours), f"{beside}: {shown(theirs)}", f"{more:+.1f} ns",
                  most and f"at most +{most:g} ns", most and more <= most)

    def ahead(self, what, ours, beside, theirs, ratio, within):
        mark = "level, within the spread" if within else "ahead"
        self._row(what, shown(ours), f"{beside}: {shown(theirs)}", f"{ratio:.2f}", mark,
                  ratio <= 1 + within)

    def figure(self, what, ours, beside="", mark=None, met=None):
        self._row(what, ours, beside, "", mark, met)

    def _row(self, what, ours, beside, ratio, mark, met):
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
    def idle(metric):
        return results.of("trigger/idle", metric)

    def burst(metric):
        return results.of("trigger/burst", metric)

    for share, most in (("p50", 1.15), ("p99", 2)):
        table.ratio(f"trigger to action, asleep, {share}", idle(f"library_{share}_ns"),
                    "bare pair", idle(f"bare_{share}_ns"), most, idle(f"bare_{share}_ratio"))
    for loop, name in LOOPS.items():
        table.ahead("trigger to action, asleep, p50", idle("library_p50_ns"), name,
                    idle(f"{loop}_p50_ns"), idle(f"{loop}_p50_ratio"), within=0)
    table.ahead("trigger to action, asleep, p50", idle("library_p50_ns"), "Boost.Asio",
                idle("asio_p50_ns"), idle("asio_p50_ratio"),
                within=results.spread("trigger/idle", "asio_p50_ratio"))
    others = {**LOOPS, "asio": "Boost.Asio"}
    for key, name in others.items():
        table.ratio("trigger to action, asleep, p99", idle("library_p99_ns"), name,
                    idle(f"{key}_p99_ns"), None, idle(f"{key}_p99_ratio"))
    for key, name in {"bare": "bare pair", **others}.items():
        table.ratio("a trigger in a burst of a million", burst("library_request_ns"), name,
                    burst(f"{key}_request_ns"), {"bare": 1.2, "libuv": 2}.get(key),
                    burst(f"{key}_p50_ratio"))
        table.figure("runs made for that burst", f"{burst('library_runs'):,.0f}",
                     f"{name}: {burst(f'{key}_runs'):,.0f}")
    debug = results.of("trigger/burst-debug", "library_request_ns")
    table.figure("a trigger in such a burst, DEBUG loggable", shown(debug),
                 f"not loggable: {shown(burst('library_request_ns'))}")


def events(table, results):
    for name, what in (("battery", "battery report"), ("thermal-hidl", "throttling, HIDL"),
                       ("thermal-aidl", "throttling, AIDL"), ("sensor", "a sensor poll's return"),
                       ("sensor-push", "sensor event from its push")):
        event = f"event/{name}"
        table.ratio(f"{what} to client, p50", results.of(event, "library_p50_ns"),
                    "two bare pairs" if name == "sensor-push" else "bare pair",
                    results.of(event, "bare_p50_ns"), 1.3, results.of(event, "bare_p50_ratio"))
    for name, pairs in (("battery", "bare pair"), ("sensor", "two bare pairs")):
        event = f"event/{name}-one-processor"
        table.ratio(f"{name} event to client on one processor, p50",
                    results.of(event, "library_p50_ns"), pairs, results.of(event, "bare_p50_ns"),
                    1.2, results.of(event, "bare_p50_ratio"))
    table.figure("context switches, ten sensor handles, an event for one",
                 f"{results.of('event/ten-sensor-handles', 'context_switches'):.1f}")


def getter(table, results):
    library, empty, above = (results.of("getter/cached", metric) for metric in
                             ("library_call_ns", "empty_call_ns", "above_ns"))
    table.above("cached getter", library, "empty function", empty, above, 2)


def queries(table, results):
    def names(kind):
        yield "uncached getter", f"query/{kind}/getter", 1
        for transport in ("aidl", "hidl"):
            for sensors in (8, 100):
                yield (f"charge limits, {transport.upper()}, {sensors} sensors",
                       f"query/{kind}/bcl/{transport}/sensors:{sensors}", sensors)
            for sensors in (8, 100):
                for count in (1, 8, 32):
                    yield (f"{count} name{'s' if count > 1 else ''}, {sensors} sensors, {transport.upper()}",
                           f"query/{kind}/bulk/{transport}/sensors:{sensors}/names:{count}",
                           sensors)

    for what, name, sensors in names("latency"):
        table.ratio(what, results.of(name, "library_ns"), "direct calls",
                    results.of(name, "direct_ns"), 1.05 if sensors <= 8 else None,
                    results.of(name, "ratio"))
    for what, name, sensors in names("free"):
        nanoseconds, allocations = (results.of(name, metric) / sensors
                                    for metric in ("own_cpu_ns", "own_allocations"))
        table.figure(f"{what}: the library's own part, a record",
                     f"{nanoseconds:.0f} ns, {allocations:.1f} allocations",
                     "free calls")


def dispatch(table, results):
    for family in FAMILIES:
        for clients in CLIENTS:
            name = f"dispatch/{family}/clients:{clients}"
            ours = results.of(name, "per_client_ns")
            theirs = results.of(name, "loop_per_client_ns")
            # The fixed cost of a dispatch does not count for a client.
            most = 10 if clients >= 100 else 40 if clients == 1 else None
            table.above(f"{family} dispatch, a client of {clients}", ours, "loop", theirs,
                        results.of(name, "above_ns"), most)
        table.figure(f"{family} dispatch to one client, allocations", "{:g}".format(
            results.of(f"dispatch/{family}/clients:1", "allocations")))


def handles(table, results):
    for family in FAMILIES:
        ours, theirs, ratio = (results.of(f"handle/{family}", metric) for metric in
                               ("library_p50_ns", "threads_p50_ns", "threads_p50_ratio"))
        table.ratio(f"create and destroy a {family} handle", ours, "as many named threads", theirs,
                    1.2, ratio)


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
                "an empty one, with the platform", figures["load_ns"]["empty"], None)


GROUPS = [trigger, events, getter, queries, dispatch, handles, idle, sizes]


def plot(results, path):
    workers = {"library": "library", "bare": "bare pair", **LOOPS, "asio": "Asio"}
    lines = ["$workers << END"]
    for key, label in workers.items():
        p50, p99 = (results.of("trigger/idle", f"{key}_{share}_ns") / 1e3
                    for share in ("p50", "p99"))
        burst = results.of("trigger/burst", f"{key}_request_ns")
        lines.append(f'"{label}" {p50} {p99} {burst}')
    lines += ["END", "$dispatch << END"]
    columns = [(family, metric) for family in FAMILIES
               for metric in ("per_client_ns", "loop_per_client_ns")]
    for clients in CLIENTS:
        cells = [results.of(f"dispatch/{family}/clients:{clients}", metric)
                 for family, metric in columns]
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
