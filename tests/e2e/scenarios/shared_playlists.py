# SPDX-License-Identifier: MIT
"""Two consoles on one session bus: what one has as a playlist, the other one lists, plays and loses."""

import os
import signal
import time

from bench import console as ui
from bench import media
from bench.scenario import Scenario
from bench.waiting import FACTOR, until

FILES = ("first.mp3", "second.ogg", "third.mp3")
COLUMNS = 4  # id, title, URL and duration, of which the title shows
TITLES = ["first", "second", "third"]


class SharedPlaylists(Scenario):
    def start_owner(self):
        return self.start(env={"KELVO_PLUGINS": "gst-renderer,playlist-filler",
                               "KELVO_PLUGIN_PATH": os.environ["KELVO_E2E_TEST_PLUGINS"],
                               "KELVO_TEST_FILES": " ".join(media.url(name) for name in FILES)})

    def create_playlist(self, console):
        """Through the menu, with the name that the dialog proposes."""
        mark = console.menu("Playlists", "Create new...", wait=False)
        dialog = console.dialog("dialog", "Create new playlist")
        console.user.click(dialog.wait_find("push button", "OK"))
        console.log.wait_for(r"KelvoPlaylistController::playlistAdded .* \"pl1\"", mark)

    def view(self, console):
        return console.window().wait_find("list", "Playlist items")

    def titles(self, console):
        return self.view(console).rows()[1::COLUMNS]

    def wait_titles(self, console, titles):
        until(lambda: self.titles(console) == titles,
              lambda: f"items {titles}; there are {self.titles(console)}\n{console.log.tail()}")

    def listed(self, console):
        """What the playlist boxes of the three tabs list."""
        lists = []
        for tab, place in ((ui.QUERY, 0), (ui.BROWSE, 0), (ui.MUSIC, 1)):
            console.tab(tab)
            box = console.combos()[place]
            lists.append((box.name(), box.find("list", showing=False).rows()))
        return lists

    def wait_metadata(self, console, line):
        until(lambda: line in console.metadata(),
              lambda: f"metadata {line}; there is {console.metadata()}\n{console.log.tail()}", 15)

    def test_one_console_plays_the_playlist_of_another(self):
        owner = self.start_owner()
        self.create_playlist(owner)
        self.wait_titles(owner, TITLES)
        reader = self.start()
        name = f"pl1 [pid {owner.process.pid}]"
        reader.log.wait_for(r'KelvoPlaylistController::playlistAdded ".+" "' + name.replace("[", r"\[") + '"')
        self.wait_titles(reader, TITLES)
        self.assertEqual(self.listed(reader), [(name, [name])] * 3)

        # An edit at the owner's side shows.
        owner.user.activate()
        mark = reader.log.mark()
        owner.menu("Playlists", "Sort by...", "Z-A")
        self.wait_titles(owner, TITLES[::-1])
        reader.log.wait_for("KelvoPlaylistController::playlistContentsChanged", mark)
        reader.user.activate()
        self.wait_titles(reader, TITLES[::-1])

        # It plays as any other playlist: the item that was current has stayed current through the edit.
        mark = reader.press("Play")
        reader.wait_button("Pause")
        reader.log.wait_for(r"^Playing\.", mark)
        self.wait_metadata(reader, "title: First Tone")
        reader.press("Prev")
        self.wait_metadata(reader, "title: Second Tone")
        reader.user.double_click(self.view(reader).wait_find("list item", "third", deep=True))
        self.wait_metadata(reader, "title: Third Tone")

        # It cannot be edited here, and the log tells why.
        mark = reader.menu("Playlists", "Clear")
        reader.log.wait_for("clear changes nothing: .* is owned by another process and can only be read", mark)
        self.assertEqual(self.titles(reader), TITLES[::-1])
        self.assertEqual(owner.log.count(r"owned by another process"), 0)

        # It is gone with its process.
        mark = reader.log.mark()
        killed = time.monotonic()
        os.kill(owner.process.pid, signal.SIGKILL)
        line = reader.log.wait_for("KelvoPlaylistController::playlistRemoved", mark)
        self.assertLess(reader.log.stamps[line] - killed, 0.5 * FACTOR)
        reader.log.wait_for("No current playlist set", mark)
        reader.wait_button("Play")
        self.assertEqual(self.titles(reader), [])
        self.assertEqual([rows for _, rows in self.listed(reader)], [[]] * 3)
        self.assertEqual(reader.dialogs(), [])
