# SPDX-License-Identifier: MIT
"""A tester without a mouse: plays, seeks, edits, queries, loads a plug-in and closes by keys alone."""

import shutil

from bench import console as ui
from bench import media
from bench.scenario import Scenario
from bench.waiting import holds, until

SONGS = ["First Tone", "Long Tone", "Third Tone"]
FILES = ["first.mp3", "long.mp3", "third.mp3"]
EXECUTE, APPEND = "Execute\nquery", "Append\n item(s) to\n playlist"
COLUMNS = 14
# Menus and entries from left to right and from top to bottom.
MAIN, PLAYLISTS = 0, 2
PLUGINS = 0
CREATE_NEW, REMOVE_CURRENT = 0, 6


class Keyboard(Scenario):
    def setUp(self):
        super().setUp()
        self.music = self.desktop.home / "Music"
        self.music.mkdir()
        for name in FILES:
            shutil.copy(media.folder() / name, self.music / name)

    def rows(self, console, name):
        """A view tells of all columns of its model, of which the second shows."""
        return console.window().wait_find("list", name).rows()[1::COLUMNS]

    def go_to_tab(self, console, key, title):
        console.user.key(key)
        until(lambda: console.current_tab() == title, f"tab {title} is in front")

    def query_songs(self, console):
        mark = console.log.mark()
        console.user.press_by_key(console.button(EXECUTE))
        console.log.wait_for("KelvoQueryController::modelUpdatedSlot", mark)
        return self.rows(console, "Query results") == SONGS

    def append(self, console, row):
        """The song in that row of the results."""
        console.user.tab_to(console.window().wait_find("list", "Query results"))
        console.user.key("Home", *["Down"] * row)
        mark = console.log.mark()
        console.user.press_by_key(console.button(APPEND))
        console.log.wait_for("KelvoPlaylistController::addToPlaylist", mark)

    def test_everything_by_keys(self):
        console = self.start(env={"KELVO_PLUGINS": "gst-renderer,tracker-source", "KELVO_MEDIA_DIRS": str(self.music)})
        # A query.
        self.go_to_tab(console, "ctrl+shift+Tab", ui.QUERY)
        until(lambda: console.button(EXECUTE).enabled(), "the store is ready", 30)
        query = next(combo for combo in console.combos() if combo.name() == "All songs")
        console.user.tab_to(query)
        console.user.key("Down", "Down", "Up", "Up")
        self.assertEqual(query.name(), "All songs")
        until(lambda: self.query_songs(console), "all songs are indexed", 60)

        # A playlist of two of its songs, of which one is taken out again.
        console.user.choose_by_keys(PLAYLISTS, CREATE_NEW)
        dialog = console.dialog("dialog", "Create new playlist")
        until(lambda: "focused" in dialog.wait_find("text").states(), "the name can be typed")
        console.user.key("ctrl+a")
        console.user.type("keys")
        mark = console.log.mark()
        console.user.key("Return")
        console.log.wait_for('KelvoPlaylistController::playlistAdded .* "keys"', mark)
        until(lambda: not console.dialogs(), "the dialog closes")
        self.append(console, 0)
        self.append(console, 1)
        self.go_to_tab(console, "ctrl+Tab", ui.MUSIC)
        items = console.window().wait_find("list", "Playlist items")
        self.assertEqual(self.rows(console, "Playlist items"), ["First Tone", "Long Tone"])
        console.user.tab_to(items)
        console.user.key("Down")
        console.user.choose_by_keys(PLAYLISTS, REMOVE_CURRENT)
        until(lambda: self.rows(console, "Playlist items") == ["Long Tone"], "the first song is gone")

        # Playing: Return does what a double click does.
        console.user.tab_to(items)
        console.user.key("Home")
        mark = console.log.mark()
        console.user.key("Return")
        console.log.wait_for("KelvoMainWindow::emitIndex", mark)
        console.wait_button("Pause", 20)
        self.assertEqual(console.log.count("KelvoMainWindow::emitIndex", mark), 1)
        until(lambda: "title: Long Tone" in console.metadata(), "the song plays", 15)
        console.wait_position(lambda at: at >= 1, "moves")

        # Seeking, as far as with the mouse: twice for each press of a key.
        console.user.tab_to(console.slider())
        mark = console.log.mark()
        console.user.key("Page_Up", "Page_Up", "Page_Up")
        console.wait_position(lambda at: 25 <= at <= 45, "is half a minute on")
        self.assertEqual(console.log.count(r"void KelvoRendererController::seek\(int\)", mark), 6)
        console.user.key("Home")
        console.wait_position(lambda at: at <= 5, "is near the beginning")
        console.screen.shoot(self.output("-seeking.png"))
        console.user.press_by_key(console.button("Stop"))
        console.wait_button("Play")

        # A plug-in.
        console.user.choose_by_keys(MAIN, PLUGINS)
        dialog = console.dialog("dialog")
        available = dialog.wait_find("list", "Available")
        until(lambda: "focused" in available.states(), "the list can be walked through")
        number = [name for name in available.rows() if name].index("simulator")
        console.user.key(*["Down"] * (number + 1))
        console.screen.shoot(self.output("-plug-ins.png"))
        console.user.press_by_key(dialog.wait_find("push button", "Load"))
        until(lambda: "simulator" in dialog.wait_find("list", "Selected").rows(), "it is selected")
        console.user.press_by_key(dialog.wait_find("push button", "Done"))
        until(lambda: not console.dialogs(), "the dialog closes")
        box = console.combos()[0].find("list", showing=False)
        until(lambda: "Simulator A" in box.rows(), "its renderers are listed")

        # The end: the last entry of the first menu.
        console.user.key("F10", "Up", "Return")
        self.assertEqual(console.wait_exit(), 0)

    def test_volume_and_uri_by_keys(self):
        (self.desktop.home / "qkelvo-gui-uris.txt").write_text(media.url("absent.mp3") + "\n" + media.url("long.mp3") + "\n")
        console = self.start()
        until(lambda: console.combos()[0].name() == "KelvoGstRenderer", "the renderer is there")
        mark = console.log.mark()
        console.user.choose_by_keys(1, 0)
        dialog = console.dialog("dialog", "Adjust volume")
        slider = dialog.wait_find("slider")
        before = slider.value()
        console.user.key("Down", "Down")
        until(lambda: slider.value() == before - 2, lambda: f"the volume goes down; it is {slider.value()}")
        console.screen.shoot(self.output("-volume.png"))
        console.user.key("Return")
        until(lambda: not console.dialogs(), "the dialog closes")

        console.user.choose_by_keys(PLAYLISTS, 8)
        dialog = console.dialog("dialog", "Play uri")
        console.user.key("Down", "Tab", "space", "Tab", "Down")
        until(lambda: "focused" in dialog.wait_find("list").states(), "the list has the focus")
        console.screen.shoot(self.output("-play-uri.png"))
        mark = console.log.mark()
        console.user.key("Return")
        console.log.wait_for("KelvoRendererController::playUri", mark)
        console.wait_button("Pause", 20)
        until(lambda: "title: Long Tone" in console.metadata(), "it plays", 15)
        holds(lambda: not console.dialogs(), "nothing is in the way", 0.3)
