# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

"""Helpers of the monitor's tests. Every wait has a deadline and names what it waited for."""

import concurrent.futures
import datetime
import fcntl
import json
import os
import pathlib
import pty
import re
import signal
import struct
import subprocess
import sys
import tempfile
import termios
import threading
import unittest

# The monitor, and a second program or file that the test needs.
QUORVEL, OTHER = (os.path.abspath(sys.argv.pop(1)) for _ in range(2))
# The phone's monitor on three kinds of phones: complete, without services, and old.
PHONE, BARE, FLAT = ({"program": OTHER, "env": {"QUORVEL_PHONE": kind}}
                     for kind in ("", "bare", "flat"))
ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
LIMIT = 60  # seconds; only a broken monitor reaches it


class Started(subprocess.Popen):
    """A running program, on the simulated phone by default. `env` is added to the environment."""

    def __init__(self, *args, program=QUORVEL, env=None, **kwargs):
        env = {**os.environ, "QUORVEL_DEVICE": "simulated" if program == QUORVEL else "",
               **(env or {})}
        pipes = dict.fromkeys(("stdout", "stderr"), subprocess.PIPE)
        super().__init__((program, *args), env=env,
                         **{"stdin": subprocess.DEVNULL, **pipes, "text": True, **kwargs})
        self.guard = threading.Timer(LIMIT, self.kill)
        self.guard.daemon = True
        self.guard.start()

    def finish(self, written=None):
        out, err = self.communicate(written)
        if self.returncode == -signal.SIGKILL and not self.guard.is_alive():
            raise AssertionError(f"no end of {self.args} within {LIMIT} s: {out}")
        self.guard.cancel()
        return self.returncode, out, err

    def until(self, *texts):
        """Reads until each of these texts was in a line."""
        missing = set(texts)
        while missing and (line := self.stdout.readline()):
            missing = {text for text in missing if not re.search(text, line)}
        if missing:
            raise AssertionError(f"no lines {missing} of {self.args}")


def run(*args, written=None, **kwargs):
    """Runs a program with `written` as standard input. Returns the exit code and both outputs."""
    stdin = {} if written is None else {"stdin": subprocess.PIPE}
    return Started(*args, **stdin, **kwargs).finish(written)


def on_machine(devices, *args, **kwargs):
    """Runs the monitor on a Linux machine that has only these devices (SUBSYSTEM, NAME, FILES)."""
    with tempfile.NamedTemporaryFile("w", suffix=".umockdev") as file:
        for subsystem, name, files in devices:
            file.write(f"P: /devices/test/{subsystem}/{name}\nE: SUBSYSTEM={subsystem}\n")
            file.write("".join(f"A: {key}={value}\n" for key, value in files.items()) + "\n")
        file.flush()
        described = ("--device", file.name) if devices else ()
        return run(*described, "--", QUORVEL, *args, "--device", "linux", program="umockdev-run",
                   **kwargs)


# A machine with two batteries, accessories, all kinds of chargers, temperatures with known and
# unknown types (one is unreadable), and a hinge.
MACHINE = [
    ("power_supply", "BAT0", {"type": "Battery", "capacity": "80", "energy_now": "40000000",
                              "energy_full": "50000000", "cycle_count": "5"}),
    ("power_supply", "BAT1", {"type": "Battery", "capacity": "20", "energy_now": "10000000",
                              "energy_full": "50000000", "cycle_count": "7"}),
    ("power_supply", "hidpp_battery_0", {"type": "Battery", "scope": "Device",
                                         "capacity": "12"}),
    ("power_supply", "keyboard", {"type": "Battery", "capacity": "12"}),
    ("power_supply", "ups", {"type": "UPS", "capacity": "99"}),
    ("power_supply", "ucsi-source-psy-USBC000:001", {"type": "USB", "online": "1"}),
    ("power_supply", "pad", {"type": "Wireless", "online": "1"}),
    ("thermal", "thermal_zone0", {"type": "acpitz", "temp": "warm"}),
    ("thermal", "thermal_zone1", {
        "type": "x86_pkg_temp", "temp": "81500", "mode": "enabled", "trip_point_0_type": "passive",
        "trip_point_0_temp": "80000", "trip_point_0_hyst": "0"}),
    ("hwmon", "hwmon0", {"name": "nvme", "temp1_input": "40900", "temp1_label": "Composite"}),
    ("iio", "iio:device0", {"name": "hinge", "label": "hinge", "in_angl_raw": "90",
                            "in_angl_scale": "0.017453293"})]


def on_terminal(columns, *args, rows=60, **env):
    """Runs the monitor on a terminal of this size. Returns the exit code and the output."""
    terminal, program = pty.openpty()
    fcntl.ioctl(program, termios.TIOCSWINSZ, struct.pack("HHHH", rows, columns, 0, 0))
    process = Started(*args, stdout=program, env={"TERM": "xterm", **env})
    os.close(program)
    received = b""
    try:
        while data := os.read(terminal, 4096):
            received += data
    except OSError:  # the program has closed it
        pass
    os.close(terminal)
    return process.finish()[0], received.decode().replace("\r\n", "\n")


class Case(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def write(self, name, content):
        path = self.folder / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        return str(path)

    def output(self, result, code=0):
        self.assertEqual(result[0], code, result)
        return result[1]

    def says(self, table, run=run, **kwargs):
        """Checks the exit code and texts of each command line. Columns count as one space."""
        with concurrent.futures.ThreadPoolExecutor(4) as pool:
            results = pool.map(lambda line: run(*line.split(), **kwargs), table)
        for (line, (code, *wanted)), (done, out, err) in zip(table.items(), results):
            with self.subTest(line):
                self.assertEqual(done, code, out + err)
                for text in wanted:
                    self.assertIn(text, " ".join((out + err).split()))

    def failure(self, result, *complaints, code=1):
        self.assertEqual(result[0], code, result)
        for complaint in ("quorvel: ", *complaints):
            self.assertIn(complaint, result[2])

    def objects(self, result, code=0):
        """The objects of a JSON output. Checks that each is one line and has a time."""
        out = self.output(result, code)
        self.assertTrue(out.endswith("\n"))
        objects = [json.loads(line) for line in out.splitlines()]
        for o in objects:
            self.assertRegex(o["time"], r"\.\d{3}Z$")
            datetime.datetime.strptime(o["time"], "%Y-%m-%dT%H:%M:%S.%fZ")
        return objects
