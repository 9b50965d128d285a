# SPDX-License-Identifier: MIT
"""The registry of accessible programs hangs: the console goes on at once, however it meets the registry."""

import os
import signal
import threading
import time

from bench import atspi
from bench.scenario import Scenario
from bench.waiting import FACTOR, until
from gi.repository import Gio, GLib

REGISTRY = "org.a11y.atspi.Registry"
LAUNCHER = "org.a11y.Bus"
ALLOWED = 1.0


def call(bus, name, path, interface, method, arguments=None, limit=10.0):
    return bus.call_sync(name, path, interface, method, arguments, None, Gio.DBusCallFlags.NONE,
                         int(limit * 1000 * FACTOR), None).unpack()


def ask_bus(bus, method, arguments):
    return call(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method, arguments)


def process_of(bus, name):
    """The process that serves the name, which is started where it has to be."""
    ask_bus(bus, "StartServiceByName", GLib.Variant("(su)", (name, 0)))
    return ask_bus(bus, "GetConnectionUnixProcessID", GLib.Variant("(s)", (name,)))[0]


class Heart:
    """Asks the console, in a thread and all the time, what only its GUI thread answers, and notes the longest wait."""

    def __init__(self, address, name):
        self._bus = atspi.connect(address)
        self._name = name
        self._stop = threading.Event()
        self._thread = threading.Thread(target=self._run, daemon=True)
        self.beats = 0
        self.longest = 0.0
        self._thread.start()

    def _run(self):
        while not self._stop.is_set():
            before = time.monotonic()
            try:
                call(self._bus, self._name, "/org/kelvo/Playlists", "org.freedesktop.DBus.ObjectManager",
                     "GetManagedObjects", limit=60)
            except GLib.Error:
                return  # it has ended
            self.beats += 1
            self.longest = max(self.longest, time.monotonic() - before)
            self._stop.wait(0.02)

    def stop(self):
        self._stop.set()
        self._thread.join()
        self._bus.close_sync(None)


class Registry(Scenario):
    def setUp(self):
        super().setUp()
        self.session = atspi.connect(self.desktop.env["DBUS_SESSION_BUS_ADDRESS"])
        self.addCleanup(self.session.close_sync, None)
        address = call(self.session, LAUNCHER, "/org/a11y/bus", LAUNCHER, "GetAddress")[0]
        self.bus = atspi.connect(address)
        self.addCleanup(self.bus.close_sync, None)

    def freeze(self, bus, name):
        pid = process_of(bus, name)
        os.kill(pid, signal.SIGSTOP)
        # The desktop's end waits for it to go with its bus.
        self.addCleanup(os.kill, pid, signal.SIGCONT)
        return pid

    def start_console(self, **env):
        """Returns the console and its heart, which beats as soon as the event loop runs."""
        console = self.start(env={"KELVO_PLUGINS": "simulator", **env}, up=False)
        console.wait_constructed()
        self.constructed = time.monotonic()
        name = until(lambda: self.published(console), lambda: f"the console on the bus\n{console.log.tail()}", 60, 0.01)
        self.heart = Heart(self.desktop.env["DBUS_SESSION_BUS_ADDRESS"], name)
        self.addCleanup(self.heart.stop)
        return console

    def published(self, console):
        names = ask_bus(self.session, "ListNames", None)[0]
        return next((name for name in names if name.startswith("org.kelvo.Playlists.") and ask_bus(
            self.session, "GetConnectionUnixProcessID", GLib.Variant("(s)", (name,)))[0] == console.process.pid), None)

    def first_beat(self):
        until(lambda: self.heart.beats, "the console answers", 120, 0.01)
        return time.monotonic() - self.constructed

    def assert_beats_on(self, console, seconds=2.0):
        """No beat took too long, over a time in which there were many of them."""
        end = time.monotonic() + seconds
        before = self.heart.beats
        until(lambda: time.monotonic() > end and self.heart.beats > before + 10, "the console goes on answering", 120)
        self.assertLess(self.heart.longest, ALLOWED * FACTOR, console.log.tail())
        self.end(console)

    def end(self, console):
        console.process.send_signal(signal.SIGTERM)
        self.assertEqual(console.wait_exit(5), 0, console.log.tail())

    def switch_on(self):
        """What a screen reader does when it starts."""
        value = GLib.Variant("(ssv)", ("org.a11y.Status", "IsEnabled", GLib.Variant("b", True)))
        call(self.session, LAUNCHER, "/org/a11y/bus", "org.freedesktop.DBus.Properties", "Set", value)

    def test_the_bench_sees_a_frozen_console(self):
        console = self.start_console()
        self.first_beat()
        console.process.send_signal(signal.SIGSTOP)
        time.sleep(ALLOWED * FACTOR + 0.2)
        console.process.send_signal(signal.SIGCONT)
        until(lambda: self.heart.longest > ALLOWED * FACTOR, "the pause shows")
        self.end(console)

    def test_frozen_before_the_start(self):
        self.freeze(self.bus, REGISTRY)
        console = self.start_console()
        self.assertLess(self.first_beat(), ALLOWED * FACTOR, console.log.tail())
        self.assert_beats_on(console)

    def test_its_launcher_frozen_before_the_start(self):
        self.switch_on()
        self.freeze(self.session, LAUNCHER)
        before = time.monotonic()
        console = self.start_console(QT_LINUX_ACCESSIBILITY_ALWAYS_ON=None)
        self.assertLess(self.constructed - before, 2 * ALLOWED * FACTOR, console.log.tail())
        self.assertLess(self.first_beat(), ALLOWED * FACTOR, console.log.tail())
        self.assert_beats_on(console)

    def test_its_launcher_may_answer_late(self):
        """As on a machine that has much to do while its user logs in."""
        launcher = self.freeze(self.session, LAUNCHER)
        console = self.start_console()
        self.assertLess(self.first_beat(), ALLOWED * FACTOR, console.log.tail())
        before = self.heart.beats
        until(lambda: self.heart.beats > before + 30, "the console goes on answering", 120)
        os.kill(launcher, signal.SIGCONT)
        tree = atspi.Tree(self.desktop, console.process.pid)
        self.addCleanup(tree.close)
        tree.wait_root(20)
        self.assert_beats_on(console)

    def test_frozen_where_a_screen_reader_was_started(self):
        # As on users' desktops: nobody but the screen reader asks for accessibility.
        self.switch_on()
        self.freeze(self.bus, REGISTRY)
        console = self.start_console(QT_LINUX_ACCESSIBILITY_ALWAYS_ON=None)
        self.assertLess(self.first_beat(), ALLOWED * FACTOR, console.log.tail())
        self.assert_beats_on(console)

    def shows(self, title):
        return self.desktop.x11.windows(title)

    def test_frozen_while_keys_are_typed(self):
        # Each key is told to the registry first.
        console = self.start(env={"KELVO_PLUGINS": "simulator"})
        console.menu("Playlists", "Create new...", wait=False)
        console.dialog("dialog", "Create new playlist")
        self.assertTrue(self.shows("^Create new playlist$"))
        self.freeze(self.bus, REGISTRY)
        before = time.monotonic()
        self.desktop.x11.key("Escape")
        until(lambda: not self.shows("^Create new playlist$"), "the dialog closes", 120)
        self.assertLess(time.monotonic() - before, ALLOWED * FACTOR, console.log.tail())
        self.end(console)
