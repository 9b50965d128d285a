# SPDX-License-Identifier: MIT
"""The X server goes while the console runs, as at the end of a session: it ends with code 1 and one line that says why,
never by a signal."""

import os
import re
import signal
from pathlib import Path

from bench import media
from bench.desktop import Desktop
from bench.scenario import Scenario
from bench.waiting import until

SAYS_WHY = re.compile(r"X11|X server|XIO|[Xx]cb|display", re.IGNORECASE)
# Those that this build has.
PLUGINS = sorted(plugin.stem for plugin in Path(os.environ["KELVO_E2E_PLUGINS"]).glob("*.so"))


class DisplayGone(Scenario):
    def assert_ends(self, console, how=signal.SIGKILL):
        mark = console.log.mark()
        os.kill(self.desktop.server.pid, how)
        code = console.wait_exit(10)
        self.assertEqual(code, 1, console.log.tail())
        reasons = [line for line in console.log.lines[mark:] if SAYS_WHY.search(line)]
        self.assertEqual(len(reasons), 1, console.log.tail())

    def playing(self, name):
        console = self.start(media.url(name), up=False)
        console.wait_constructed()
        console.log.wait_for(r"^Playing\.", limit=20)
        return console

    def idle(self, **env):
        console = self.start(env=env, up=False)
        console.wait_constructed()
        console.log.wait_for("KelvoMainWindow::setQueryButtonsEnabled", limit=20, count=2)
        return console

    def test_idle(self):
        self.assert_ends(self.idle())

    def test_idle_when_the_server_is_ended(self):
        self.assert_ends(self.idle(), signal.SIGTERM)

    def test_while_a_song_plays(self):
        self.assert_ends(self.playing("list.pls"))

    def test_while_a_video_plays(self):
        console = self.start(media.url("red.mp4"))
        console.tab("Play video")
        console.wait_button("Pause", 20)
        console.wait_position(lambda at: at >= 1, "has begun to move")
        self.assert_ends(console)

    def test_while_a_dialog_is_open(self):
        console = self.start()
        console.menu("Renderers", "Volume...", wait=False)
        console.dialog("dialog", "Adjust volume")
        self.assert_ends(console)


def alone(name):
    def test(self):
        console = self.idle(KELVO_PLUGINS=name)
        # The plug-ins start from the event loop: this one runs when it is listed as loaded.
        until(lambda: f"{name}.so" in Path(f"/proc/{console.process.pid}/maps").read_text(), f"{name} is loaded", 20)
        self.assert_ends(console)
    return test


for plugin in PLUGINS:
    setattr(DisplayGone, f"test_with_{plugin.replace('-', '_')}_alone", alone(plugin))


class WithoutBus(DisplayGone):
    def make_desktop(self):
        return Desktop(bus=False)

    # What is read over the bus is left out.
    test_while_a_video_plays = None
    test_while_a_dialog_is_open = None
