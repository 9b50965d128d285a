# SPDX-License-Identifier: MIT
"""What a process holds, looked at from outside while it runs."""

import csv
import os
import re
import threading
import time
from pathlib import Path

import gi
gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

from bench import atspi  # noqa: E402

from .gauges import GAUGES  # noqa: E402

_BUS = ("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus")
_CLIENT = re.compile(r"^\d+ - (.*) \( PID:")
_OTHERS = ("xrestop", "Openbox")
_COUNT = re.compile(r"^\t(windows|GCs|fonts|pixmaps|pictures|glyphsets|colormaps|cursors|unknowns|pixmap bytes)\s*: (\d+)")


class Probe:
    """Looks at the process once. Not to be shared between threads."""

    def __init__(self, desktop, pid):
        self._desktop = desktop
        self._pid = pid
        self._bus = atspi.connect(desktop.env["DBUS_SESSION_BUS_ADDRESS"])

    def look(self):
        """{gauge's id: value}; raises OSError when the process has ended."""
        threads = re.search(r"^Threads:\s+(\d+)", self._file("status"), re.MULTILINE)
        return {**self._memory(), "threads": int(threads[1]), "names": self._names(), **self._display(),
                "descriptors": len(os.listdir(f"/proc/{self._pid}/fd"))}

    def _file(self, name):
        return Path(f"/proc/{self._pid}/{name}").read_text(encoding="utf-8")

    def _memory(self):
        kilobytes = dict(re.findall(r"^(\w+):\s+(\d+) kB", self._file("smaps_rollup"), re.MULTILINE))
        return {name: int(kilobytes[field]) / 1024 for name, field in
                (("memory", "Private_Dirty"), ("resident", "Rss"), ("proportional", "Pss"))}

    def _ask(self, method, *arguments):
        packed = GLib.Variant("(s)", arguments) if arguments else None
        return self._bus.call_sync(*_BUS, method, packed, None, Gio.DBusCallFlags.NONE, 5000, None).unpack()[0]

    def _names(self):
        """Of the unique ones: one for each connection."""
        return sum(self._owner(name) == self._pid for name in self._ask("ListNames") if name.startswith(":"))

    def _owner(self, name):
        try:
            return self._ask("GetConnectionUnixProcessID", name)
        except GLib.Error:  # it has left meanwhile
            return None

    def _display(self):
        """Of all clients but the one that asks and the window manager, which frames each dialog for as long as it is open:
        what the console holds may be in the name of its media."""
        resources, pixmaps, client = 0, 0, ""
        for line in self._desktop.run(["xrestop", "-b", "-m", "1"]).splitlines():
            if match := _CLIENT.match(line):
                client = match[1]
            elif (match := _COUNT.match(line)) and client not in _OTHERS:
                if match[1] == "pixmap bytes":
                    pixmaps += int(match[2])
                else:
                    resources += int(match[2])
        return {"x-resources": resources, "x-pixmaps": pixmaps / 2**20}


class Sampler:
    """Looks again and again, in a thread of its own, until it is closed. What is seen belongs to the block that is set at
    that moment: the round of the day."""

    def __init__(self, desktop, pid, interval):
        self.block = 0
        self.taken = []  # (seconds since the start, block, {id: value})
        self._interval = interval
        self._probe = (desktop, pid)
        self._end = threading.Event()
        self._thread = threading.Thread(target=self._run, daemon=True)
        self._thread.start()

    def _run(self):
        probe = Probe(*self._probe)
        start = time.monotonic()
        while not self._end.wait(self._interval):
            block = self.block
            try:
                self.taken.append((time.monotonic() - start, block, probe.look()))
            except (OSError, KeyError, TypeError):  # the process has ended, or its memory is being given back
                return

    def close(self):
        self._end.set()
        self._thread.join(10)

    def of(self, gauge, first_block=0):
        """[(seconds, value, block)] of a gauge, from that block on."""
        return [(seconds, seen[gauge.id], block) for seconds, block, seen in self.taken if block >= first_block]

    def write(self, path):
        """All of it as a table, for whoever wants to draw it."""
        with open(path, "w", newline="", encoding="utf-8") as file:
            table = csv.writer(file)
            table.writerow(["seconds", "round", *(gauge.id for gauge in GAUGES)])
            for seconds, block, seen in self.taken:
                table.writerow([f"{seconds:.1f}", block, *(f"{seen[gauge.id]:.3f}" for gauge in GAUGES)])
