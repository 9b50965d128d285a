# SPDX-License-Identifier: MIT
"""On Wayland the console plays and says that there is no video output; with an X server beside there is one."""

import signal

from bench import atspi, console as ui, media, screen_saver
from bench.scenario import Scenario
from bench.screen import Screen, strong_red
from bench.waiting import holds, until
from bench.wayland import WaylandDesktop


class WaylandCase(Scenario):
    def play(self, env=None):
        """The film, on the video tab."""
        console = self.start(media.url("red.mp4"), env=env, up=False)
        console.wait_constructed()
        console.tree = atspi.Tree(self.desktop, console.process.pid)
        console.tree.wait_root()
        console.log.wait_for(r"^Playing\.", limit=20)
        tab = until(lambda: console.root().find("page tab", lambda name: name.rstrip() == ui.VIDEO), "the window shows")
        tab.press()
        until(lambda: console.current_tab() == ui.VIDEO, "the video tab is in front")
        return console

    def wait_output(self, console, name):
        until(lambda: f"video-output: {name}" in console.metadata(), lambda: f"{name}; there is {console.metadata()}")

    def end(self, console):
        console.process.send_signal(signal.SIGTERM)
        self.assertEqual(console.wait_exit(), 0, console.log.tail())

    def keep_evidence(self):
        for number, console in enumerate(self.consoles):
            self.output(f".{number}.log").write_text(console.log.text())
            print(console.log.tail(40))

    def tearDown(self):
        for console in self.consoles:
            if console.process.poll() is None and not self.failed:
                self.end(console)
        super().tearDown()


class Wayland(WaylandCase):
    def make_desktop(self):
        return WaylandDesktop()

    def test_plays_and_says_that_there_is_no_video_output(self):
        saver = screen_saver.start(self.desktop)
        console = self.play({"WAYLAND_DEBUG": "client"})  # prints what the compositor is told
        console.log.wait_for(r'set_app_id\("org\.kelvo\.TestGui"\)')
        self.wait_output(console, "no video output")
        console.wait_position(lambda at: at >= 2, "moves on")
        self.assertEqual(console.dialogs(), [])
        holds(lambda: saver.log.lines == ["ready"], "the screen may be locked", 0.5)


class WaylandWithX11(WaylandCase):
    def make_desktop(self):
        return WaylandDesktop(x11=True)

    def test_shows_the_video_by_x11(self):
        saver = screen_saver.start(self.desktop)
        console = self.play()
        self.wait_output(console, "ximagesink")
        saver.log.wait_for("^inhibit 1 ")
        window = self.desktop.run(["xdotool", "search", "--onlyvisible", "--name", "^KELVO test-GUI$"]).split()[0]
        self.wait_red(window)

    def test_asked_for_wayland_it_does_not_draw_where_nobody_sees_it(self):
        console = self.play({"QT_QPA_PLATFORM": "wayland"})
        self.wait_output(console, "no video output")
        console.wait_position(lambda at: at >= 2, "moves on")

    def wait_red(self, window):
        screen = Screen(self.desktop)
        until(lambda: screen.picture_of(window).share(strong_red) > 0.2, "the picture shows", 15)
