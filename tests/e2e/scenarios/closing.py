# SPDX-License-Identifier: MIT
"""The window is closed, by its menu and by the window manager, in every situation: the program ends at once, cleanly
and in order."""

import time

from bench import media
from bench.scenario import Scenario
from bench.user import entries
from bench.waiting import FACTOR, until

IN_ORDER = ["KelvoMainWindow", "KelvoGUIMain", "KelvoPlaylistController", "KelvoRendererController",
            ]
# What the leak check at exit takes says nothing about the program.
NO_LEAK_CHECK = {"ASAN_OPTIONS": "fast_unwind_on_malloc=0:detect_leaks=0"}


class Closing(Scenario):
    def assert_ends(self, console, how, allowed=1.0):
        mark = console.log.mark()
        if how == "menu":
            menu = console.user.open_menu(console.window(), "Main")
            time.sleep(0.15)  # a popup ignores what is released on it right after it opened
            x, y = console.user.point(next(e for e in entries(menu) if e.name() == "Exit"))
            before = time.monotonic()
            console.user.click_at(x, y)
        else:
            console.user.activate()
            before = time.monotonic()
            console.user.key("alt+F4")
        code = console.wait_exit(allowed + 5)
        took = console.ended_at - before
        self.assertEqual(code, 0, console.log.tail())
        at = mark
        for name in IN_ORDER:
            line = f"{name}::~{name}"
            self.assertEqual(console.log.count(line), 1, line + "\n" + console.log.tail())
            at = console.log.wait_for(line, at, limit=1) + 1
        self.assertLess(took, allowed * FACTOR, console.log.tail(40))
        print(f"{self.id()}: ended after {took * 1000:.0f} ms")

    def playing(self):
        console = self.start(media.url("list.pls"), env=NO_LEAK_CHECK)
        console.wait_button("Pause", 20)
        console.wait_position(lambda at: at >= 1, "has begun to move")
        return console

    def test_idle_by_menu(self):
        self.assert_ends(self.start(env=NO_LEAK_CHECK), "menu")

    def test_playing_by_menu(self):
        self.assert_ends(self.playing(), "menu")

    def test_playing_by_window_manager(self):
        self.assert_ends(self.playing(), "window manager")

    def test_paused_by_window_manager(self):
        console = self.playing()
        console.press("Pause")
        console.wait_button("Resume")
        self.assert_ends(console, "window manager")

    def test_with_a_modal_dialog_open_the_program_stays_until_it_is_closed(self):
        console = self.playing()
        console.menu("Renderers", "Volume...", wait=False)
        console.dialog("dialog", "Adjust volume")
        console.user.key("Escape")
        until(lambda: not console.dialogs(), "the dialog closes")
        self.assert_ends(console, "menu")

    def test_while_buffering(self):
        server = self.serve(rate=6000)
        console = self.start(server.url("slow", "long.mp3"), env=NO_LEAK_CHECK)
        until(lambda: console.window().find("progress bar"), lambda: f"buffering shows\n{console.log.tail()}", 20)
        self.assert_ends(console, "window manager")

    def test_while_stalled(self):
        # Some seconds of sound, then nothing more and no end either.
        server = self.serve(stall_at=60000)
        console = self.start(server.url("stall", "long.mp3"), env=NO_LEAK_CHECK)
        until(server.stalled.is_set, lambda: f"the server holds back\n{console.log.tail()}", 20)
        self.assert_ends(console, "menu")

    def test_while_the_server_does_not_answer(self):
        server = self.serve()
        console = self.start(server.url("silent", "long.mp3"), env=NO_LEAK_CHECK)
        until(lambda: server.requests, lambda: f"a request\n{console.log.tail()}", 20)
        self.assert_ends(console, "window manager")

    def test_right_after_the_start(self):
        console = self.start(media.url("list.pls"), env=NO_LEAK_CHECK)
        self.assert_ends(console, "window manager")

    def test_right_after_the_very_first_start(self):
        # GStreamer looks through its plug-ins once per user, and cannot be interrupted in that.
        console = self.start(media.url("list.pls"), env={**NO_LEAK_CHECK, "GST_REGISTRY_1_0": None})
        self.assert_ends(console, "window manager", allowed=4.0)
