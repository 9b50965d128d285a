# SPDX-License-Identifier: MIT
"""The X server, the bus, the registry of accessible programs and the sound server stand still for a while: the console
goes on where it does not need them, and with them when they do."""

import os
import signal
import time
from contextlib import contextmanager

import faults
from bench import atspi, media
from bench.waiting import holds, until
from gi.repository import Gio, GLib

STANDSTILL = 3.0
# The console waits for the registry so long (AccessibilityWaits.cpp) when somebody begins to listen: this test does, a
# moment before.
REGISTRY_WAIT = 0.3


class Servers(faults.FaultScenario):
    @contextmanager
    def frozen(self, pid):
        os.kill(pid, signal.SIGSTOP)
        try:
            yield
        finally:
            os.kill(pid, signal.SIGCONT)

    def start_playing(self, **env):
        console = self.start_with_faults(media.url("long.mp3"), env=env)
        console.wait_button("Pause", 20)
        console.wait_position(lambda at: at >= 1, "has begun to move")
        console.faults.watch_turns()
        return console

    def assert_plays_on(self, console, before, began):
        """Also while the server stood still."""
        passed = time.monotonic() - began
        console.wait_position(lambda at: at >= before + passed - 1, "has gone on", 0.5)
        console.wait_position(lambda at: at > before + passed, "goes on")
        console.press("Pause")
        console.wait_button("Resume")

    def test_the_x_server(self):
        console = self.start_playing()
        before, began = console.position(), time.monotonic()
        with self.frozen(self.desktop.server.pid):
            # It is waited for from the next change of the window on, and told from a second on.
            time.sleep(STANDSTILL + 2)
        self.assert_plays_on(console, before, began)
        line = console.log.wait_for("The window stood still for")
        # Which shows as well that such a turn is seen.
        self.assertGreater(console.faults.longest_turn(), 1)
        self.assertLess(console.faults.ran_in_longest_turn(), 1)
        faults.say("fault-x-server", f"plays on, {console.log.lines[line].partition('The window ')[2]}")

    def test_the_bus(self):
        console = self.start_playing()
        before, began = console.position(), time.monotonic()
        with self.frozen(self.desktop.bus.pid):
            time.sleep(STANDSTILL)
            longest = self.assert_smooth(console)
        self.assert_plays_on(console, before, began)
        self.assertEqual(console.log.count("The window stood still for"), 0)
        faults.say("fault-bus", f"plays on, longest turn of the event loop {longest * 1000:.0f} ms")

    def registry(self):
        bus = atspi.connect_accessibility(self.desktop)
        pid = bus.call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                            "GetConnectionUnixProcessID", GLib.Variant("(s)", ("org.a11y.atspi.Registry",)), None,
                            Gio.DBusCallFlags.NONE, 10000, None).unpack()[0]
        bus.close_sync(None)
        return pid

    def test_the_registry_of_accessible_programs(self):
        console = self.start_playing()
        before, began = console.position(), time.monotonic()
        with self.frozen(self.registry()):
            time.sleep(STANDSTILL)
            longest = self.assert_smooth(console, REGISTRY_WAIT)
        self.assert_plays_on(console, before, began)
        faults.say("fault-accessibility", f"plays on, longest turn of the event loop {longest * 1000:.0f} ms")

    def start_sound_server(self):
        socket = self.desktop.folder / "sound"
        server = self.desktop.start([
            "pulseaudio", "--daemonize=no", "-n", "--exit-idle-time=-1", "--use-pid-file=no", "--disable-shm=yes",
            "-L", f"module-native-protocol-unix socket={socket} auth-anonymous=1", "-L", "module-null-sink"])
        until(socket.exists, lambda: f"the sound server listens\n{server.log.tail()}", 20)
        self.desktop.env["PULSE_SERVER"] = f"unix:{socket}"
        return server

    def test_the_sound_server(self):
        server = self.start_sound_server()
        console = self.start_playing(KELVO_AUDIO_SINK="pulsesink")
        with self.frozen(server.pid):
            time.sleep(STANDSTILL)
            # What the user asks for meanwhile.
            console.press("Pause")
            console.press("Stop")
            time.sleep(1)
            longest = self.assert_smooth(console)
        console.wait_button("Play", 20)
        console.press("Play")
        console.wait_button("Pause", 20)
        console.wait_position(lambda at: at >= 1, "plays again")
        faults.say("fault-sound-server",
                   f"stops and plays again, longest turn of the event loop {longest * 1000:.0f} ms")
