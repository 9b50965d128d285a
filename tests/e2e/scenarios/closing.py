# SPDX-License-Identifier: MIT
"""The window is closed, by its menu, by the window manager and by signals, in every situation: the program ends at
once, cleanly and in order."""

import signal
import time

from Xlib.X import Button3

from bench import media
from bench.scenario import Scenario
from bench.user import entries
from bench.waiting import FACTOR, until

IN_ORDER = ["KelvoMainWindow", "KelvoGUIMain", "KelvoPlaylistController", "KelvoRendererController",
            "KelvoSourceController", "KelvoQueryController", "KelvoThumbnailDownloader", "KelvoPluginController"]


class Closing(Scenario):
    def assert_ends(self, console, how, allowed=1.0):
        mark = console.log.mark()
        if how == "menu":
            menu = console.user.open_menu(console.window(), "Main")
            time.sleep(0.15)  # a popup ignores what is released on it right after it opened
            x, y = console.user.point(next(e for e in entries(menu) if e.name() == "Exit"))
            before = time.monotonic()
            console.user.click_at(x, y)
        elif isinstance(how, signal.Signals):
            before = time.monotonic()
            console.process.send_signal(how)
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
        console = self.start(media.url("list.pls"))
        console.wait_button("Pause", 20)
        console.wait_position(lambda at: at >= 1, "has begun to move")
        return console

    def test_idle_by_menu(self):
        self.assert_ends(self.start(), "menu")

    def test_playing_by_menu(self):
        self.assert_ends(self.playing(), "menu")

    def test_playing_by_window_manager(self):
        self.assert_ends(self.playing(), "window manager")

    def test_paused_by_window_manager(self):
        console = self.playing()
        console.press("Pause")
        console.wait_button("Resume")
        self.assert_ends(console, "window manager")

    def test_after_a_modal_dialog(self):
        console = self.playing()
        console.menu("Renderers", "Volume...", wait=False)
        console.dialog("dialog", "Adjust volume")
        console.user.key("Escape")
        until(lambda: not console.dialogs(), "the dialog closes")
        self.assert_ends(console, "menu")

    def test_terminated_while_playing(self):
        self.assert_ends(self.playing(), signal.SIGTERM)

    def test_interrupted_while_a_dialog_is_open(self):
        console = self.playing()
        console.menu("Renderers", "Volume...", wait=False)
        console.dialog("dialog", "Adjust volume")
        self.assert_ends(console, signal.SIGINT)

    def test_hung_up_while_a_message_is_open(self):
        console = self.start(media.url("short one.mp3"))
        console.dialog("alert message", limit=20)
        self.assert_ends(console, signal.SIGHUP)

    def test_terminated_while_a_menu_is_open_over_a_dialog(self):
        console = self.start()
        console.menu("Playlists", "Create new...", wait=False)
        dialog = console.dialog("dialog", "Create new playlist")
        x, y = console.user.point(dialog.wait_find("text"))
        before = console.screen.picture()
        console.desktop.x11.click(x, y, Button3)
        # The field's own menu belongs to no window that could be asked.
        until(lambda: console.screen.picture().difference(before) > 2000, "the menu opens")
        self.assert_ends(console, signal.SIGTERM)

    def test_while_buffering(self):
        server = self.serve(rate=6000)
        console = self.start(server.url("slow", "long.mp3"))
        until(lambda: console.window().find("progress bar"), lambda: f"buffering shows\n{console.log.tail()}", 20)
        self.assert_ends(console, "window manager")

    def test_while_stalled(self):
        # Some seconds of sound, then nothing more and no end either.
        server = self.serve(stall_at=60000)
        console = self.start(server.url("stall", "long.mp3"))
        until(server.stalled.is_set, lambda: f"the server holds back\n{console.log.tail()}", 20)
        self.assert_ends(console, "menu")

    def test_while_the_server_does_not_answer(self):
        server = self.serve()
        console = self.start(server.url("silent", "long.mp3"))
        until(lambda: server.requests, lambda: f"a request\n{console.log.tail()}", 20)
        self.assert_ends(console, "window manager")

    def test_right_after_the_start(self):
        console = self.start(media.url("list.pls"))
        self.assert_ends(console, "window manager")

    def test_right_after_the_very_first_start(self):
        # GStreamer looks through all its plug-ins then, which cannot be interrupted.
        console = self.start(media.url("list.pls"), env={"GST_REGISTRY_1_0": None})
        self.assert_ends(console, "window manager")

    def test_while_gstreamer_looks_through_its_plugins_on_a_slow_disk(self):
        scanner, begun = self.desktop.folder / "scanner", self.desktop.folder / "scanner-has-begun"
        scanner.write_text(f"#!/bin/sh\n: >{begun}\nexec sleep 4\n")
        scanner.chmod(0o755)
        console = self.start(env={"GST_REGISTRY_1_0": None, "GST_PLUGIN_SCANNER_1_0": str(scanner)})
        until(begun.exists, lambda: f"it looks\n{console.log.tail()}", 20)
        self.assert_ends(console, "menu")
