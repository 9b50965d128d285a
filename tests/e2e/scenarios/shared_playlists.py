# SPDX-License-Identifier: MIT
"""Two consoles on one session bus: what one has as a playlist, the other one lists, plays and loses."""

import os
import signal
import time

from bench import media, playlists
from bench.scenario import Scenario
from bench.waiting import FACTOR, until

FILES = ("first.mp3", "second.ogg", "third.mp3")
TITLES = ["first", "second", "third"]


class SharedPlaylists(Scenario):
    def start_owner(self):
        return self.start(env=playlists.environment([media.url(name) for name in FILES], "gst-renderer"))

    def wait_metadata(self, console, line):
        until(lambda: line in console.metadata(),
              lambda: f"metadata {line}; there is {console.metadata()}\n{console.log.tail()}", 15)

    def test_one_console_plays_the_playlist_of_another(self):
        owner = self.start_owner()
        playlists.create(owner)
        playlists.wait_titles(owner, TITLES)
        reader = self.start()
        name = f"pl1 [pid {owner.process.pid}]"
        reader.log.wait_for(r'KelvoPlaylistController::playlistAdded ".+" "' + name.replace("[", r"\[") + '"')
        playlists.wait_titles(reader, TITLES)
        self.assertEqual(playlists.listed(reader), [(name, [name])] * 3)

        # An edit at the owner's side shows.
        owner.user.activate()
        mark = reader.log.mark()
        owner.menu("Playlists", "Sort by...", "Z-A")
        playlists.wait_titles(owner, TITLES[::-1])
        reader.log.wait_for("KelvoPlaylistController::playlistContentsChanged", mark)
        reader.user.activate()
        playlists.wait_titles(reader, TITLES[::-1])

        # It plays as any other playlist: the item that was current has stayed current through the edit.
        mark = reader.press("Play")
        reader.wait_button("Pause")
        reader.log.wait_for(r"^Playing\.", mark)
        self.wait_metadata(reader, "title: First Tone")
        reader.press("Prev")
        self.wait_metadata(reader, "title: Second Tone")
        reader.user.double_click(playlists.view(reader).wait_find("list item", "third", deep=True))
        self.wait_metadata(reader, "title: Third Tone")

        # It cannot be edited here, and the log tells why.
        mark = reader.menu("Playlists", "Clear")
        reader.log.wait_for("clear changes nothing: .* is owned by another process and can only be read", mark)
        self.assertEqual(playlists.titles(reader), TITLES[::-1])
        self.assertEqual(owner.log.count(r"owned by another process"), 0)

        # A second one comes, and goes when its owner deletes it.
        owner.user.activate()
        playlists.create(owner, "pl2")
        second = f"pl2 [pid {owner.process.pid}]"
        reader.user.activate()
        until(lambda: playlists.listed(reader) == [(name, [name, second])] * 3, "the second playlist is listed")
        owner.user.activate()
        owner.user.choose_in_combo(owner.combos()[1], "pl2")
        owner.menu("Playlists", "Delete")
        reader.user.activate()
        until(lambda: playlists.listed(reader) == [(name, [name])] * 3, "the deleted playlist is gone")

        # It is gone with its process.
        mark = reader.log.mark()
        killed = time.monotonic()
        os.kill(owner.process.pid, signal.SIGKILL)
        line = reader.log.wait_for("KelvoPlaylistController::playlistRemoved", mark)
        self.assertLess(reader.log.stamps[line] - killed, 0.5 * FACTOR)
        reader.log.wait_for("No current playlist set", mark)
        reader.wait_button("Play")
        self.assertEqual(playlists.titles(reader), [])
        self.assertEqual([rows for _, rows in playlists.listed(reader)], [[]] * 3)
        self.assertEqual(reader.dialogs(), [])
