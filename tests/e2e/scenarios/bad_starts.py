# SPDX-License-Identifier: MIT
"""Starts under bad circumstances: the console comes up all the same, and says what is wrong."""

import os
import re
import signal
import time
from pathlib import Path

from bench import media
from bench.desktop import Desktop
from bench.scenario import Scenario
from bench.screen import Screen
from bench.waiting import holds, until

PLAYS_AT_START = r"void KelvoGUIMain::playPlaylist"


class BadUrls(Scenario):
    def start_up(self, *arguments):
        console = self.start(*arguments)
        console.log.wait_for("Found URL:" if arguments else "KelvoMainWindow::connectSourceSignals")
        return console

    def assert_usable(self, console):
        """The window still answers to a user, and plays what it is given."""
        console.close_error_log()
        console.tab("Query")
        console.tab("Play music")
        self.assertTrue(console.has_button("Play"))

    def assert_ignored(self, console):
        until(lambda: console.combos()[0].name() == "KelvoGstRenderer", "the renderer is there")
        holds(lambda: console.log.count(PLAYS_AT_START) == 0 and console.log.count(r"^Playing\.") == 0
              and not console.dialogs(), "nothing plays", 1)
        self.assert_usable(console)

    def test_no_argument(self):
        console = self.start()
        self.assertEqual(console.log.count("Found URL:"), 0)
        until(lambda: console.combos()[0].name() == "KelvoGstRenderer", "the renderer is there")
        self.assert_ignored(console)

    def test_an_invalid_url_is_ignored(self):
        console = self.start_up("http://[")
        self.assert_ignored(console)

    def test_an_empty_url_is_ignored(self):
        console = self.start_up("")
        self.assert_ignored(console)

    def test_only_the_last_argument_counts(self):
        console = self.start(media.url("list.pls"), "http://[")
        self.assert_ignored(console)

    def test_a_relative_url_gives_an_error(self):
        console = self.start("music/song.mp3")
        console.dialog("dialog", "Renderer error log", limit=20)
        self.assertEqual(console.log.count(PLAYS_AT_START), 1)
        self.assert_usable(console)

    def test_a_missing_file_gives_an_error(self):
        console = self.start("file:///nowhere/at/all.pls")
        text = console.dialog("dialog", "Renderer error log", limit=20).wait_find("text")
        until(lambda: re.fullmatch(r"Code 100, \S.*", text.text()), lambda: f"the error; there is {text.text()!r}")
        self.assert_usable(console)

    def test_a_url_of_100_kb_gives_an_error(self):
        console = self.start("file:///" + 100_000 * "a")
        console.dialog("dialog", "Renderer error log", limit=20)
        self.assert_usable(console)

    def test_the_store_waits_for_a_song_but_not_for_long(self):
        begin = time.monotonic()
        console = self.start(self.serve().url("silent", "first.mp3"))
        console.log.wait_for("The tracker store is open", limit=20)
        self.assertGreater(time.monotonic() - begin, 2)
        self.assertEqual(console.log.count(r"^Playing\."), 0)

    def test_an_unknown_scheme_gives_an_error(self):
        console = self.start("nonsense://example/list")
        console.dialog("dialog", "Renderer error log", limit=20)
        self.assert_usable(console)


class BadFolders(Scenario):
    def test_a_home_that_cannot_be_written(self):
        # Not even root can create anything here.
        nowhere = "/proc"
        console = self.start(media.url("list.pls"), env={
            "HOME": nowhere, **{f"XDG_{name}_HOME": nowhere for name in ("CONFIG", "DATA", "CACHE", "STATE")}})
        console.wait_button("Pause", 30)
        console.wait_position(lambda at: at >= 1, "has begun to move")

    def test_plugin_files_that_are_none(self):
        folder = self.desktop.folder / "plugins"
        folder.mkdir()
        (folder / "notes.txt").write_text("no library\n")
        (folder / "textual.so").write_text("no library either\n")
        real = Path(os.environ["KELVO_E2E_PLUGINS"]) / "gst-renderer.so"
        (folder / "truncated.so").write_bytes(real.read_bytes()[:real.stat().st_size // 2])
        (folder / "empty.so").write_bytes(b"")
        console = self.start(media.url("list.pls"), env={
            "KELVO_PLUGIN_PATH": str(folder), "KELVO_PLUGINS": "textual,truncated,empty,absent,gst-renderer"})
        for name in ("textual", "truncated", "empty", "absent"):
            line = console.log.wait_for(rf"{name}\.so.*cannot be used: ?\S")
            self.assertGreater(len(console.log.lines[line].partition("cannot be used:")[2].strip()), 5)
        console.wait_button("Pause", 20)

    def test_no_plugins_at_all(self):
        console = self.start(media.url("list.pls"), env={"KELVO_PLUGINS": ""})
        holds(lambda: console.log.count(r"^Playing\.") == 0, "nothing can play", 1)
        for caption in ("Play", "Stop", "Next", "Prev", "< Seek", "Seek >"):
            console.press(caption)
        self.assertEqual(console.times(), (0, 0))


class NoBus(Scenario):
    """Without a bus there is no accessibility either: the log and the screen tell."""

    def make_desktop(self):
        return Desktop(bus=False)

    def test_plays_without_a_session_bus(self):
        console = self.start(media.url("list.pls"), up=False)
        console.log.wait_for(r"initTracking success was false", limit=30)
        console.log.wait_for(r"^Playing\.", limit=30)
        screen = Screen(self.desktop)
        before = screen.picture()
        until(lambda: screen.picture().difference(before) > 20, "the position moves on the screen")
        x11 = self.desktop.x11
        window = until(lambda: x11.windows("^KELVO test-GUI$"), "the window shows")[0]
        x11.activate(window)
        until(lambda: x11.active() == window, "the window is active")
        x11.key("alt+F4")
        self.assertEqual(console.wait_exit(), 0)


class NoDisplay(Scenario):
    def make_desktop(self):
        return Desktop(display=False)

    def test_says_so_and_ends(self):
        console = self.start(media.url("list.pls"), up=False)
        code = console.wait_exit(20)
        self.assertNotEqual(code, 0)
        self.assertNotEqual(code, -signal.SIGSEGV)
        self.assertTrue(re.search("display|platform plugin", console.log.text(), re.I), console.log.text())

    def keep_evidence(self):
        for console in self.consoles:
            print(console.log.tail(40))
