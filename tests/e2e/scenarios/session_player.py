# SPDX-License-Identifier: MIT
"""A media player of the desktop session, driven from the console's own buttons."""

import re
import unittest

from bench import media, players
from bench.scenario import Scenario
from bench.waiting import until

PLAYER = "org.mpris.MediaPlayer2.Player"


@unittest.skipUnless(players.have_mpv(), players.NO_MPV)
class SessionPlayer(Scenario):
    def property(self, name):
        """What the player itself says, as GLib prints it."""
        return self.desktop.run(["gdbus", "call", "--session", "--dest", "org.mpris.MediaPlayer2.mpv",
                                 "--object-path", "/org/mpris/MediaPlayer2", "--method",
                                 "org.freedesktop.DBus.Properties.Get", PLAYER, name])

    def number(self, name):
        return float(re.search(r"-?\d+(\.\d+)?(?=>)", self.property(name))[0])

    def wait_property(self, name, text):
        until(lambda: text in self.property(name), lambda: f"{name} is {text}; it is {self.property(name)}")

    def start_console(self):
        (self.desktop.home / "qkelvo-gui-uris.txt").write_text(media.url("long.mp3") + "\n")
        console = self.start(env={"KELVO_PLUGINS": "mpris.so"})
        until(lambda: console.combos()[0].name() == "mpv", "the player is the current renderer", 20)
        return console

    def test_it_is_driven_by_the_console(self):
        players.start_mpv(self.desktop)
        console = self.start_console()
        console.play_uri(media.url("long.mp3"))
        console.wait_button("Pause", 20)
        console.wait_position(lambda at: at >= 1, "has begun to move")
        self.assertEqual(console.times()[1], 60)
        self.wait_property("Metadata", "long.mp3")
        # Of the first item after it was idle mpv says that it is stopped, while it plays.
        until(lambda: self.number("Position") >= 1e6, "the player plays")
        self.pause_and_seek(console)
        self.change_the_volume(console)
        console.press("Stop")
        console.wait_button("Play")
        self.wait_property("Metadata", "noplaylist")
        console.wait_position(lambda at: at == 0, "is 0")
        self.assertEqual(console.dialogs(), [])

    def test_what_plays_already_is_shown_when_it_is_chosen(self):
        players.start_mpv(self.desktop, media.url("long.mp3"))
        console = self.start(env={"KELVO_PLUGINS": "simulator,mpris.so"})
        box = console.combos()[0]
        until(lambda: "mpv" in box.find("list", showing=False).rows(), "the player is there", 20)
        self.wait_property("PlaybackStatus", "Playing")
        self.assertNotEqual(box.name(), "mpv")
        console.wait_button("Play")
        console.user.choose_in_combo(box, "mpv")
        console.wait_button("Pause")
        console.wait_position(lambda at: at >= 1, "is the player's")
        self.assertEqual(console.times()[1], 60)
        self.pause_and_seek(console)
        self.assertEqual(console.dialogs(), [])

    def test_it_is_killed_while_its_volume_is_adjusted(self):
        player = players.start_mpv(self.desktop, media.url("long.mp3"))
        console = self.start_console()
        box = console.combos()[0]
        console.wait_button("Pause")
        console.menu("Renderers", "Volume...", wait=False)
        dialog = console.dialog("dialog", "Adjust volume")
        player.kill()
        until(lambda: not box.find("list", showing=False).rows(), "the player leaves the list")
        for button in ("Volume down", "Volume up"):
            console.user.click(dialog.wait_find("push button", button))
        console.user.key("Escape")
        until(lambda: not console.dialogs(), "the dialog closes")
        for button in ("Stop", "Next", "Seek >"):
            console.press(button)
        players.start_mpv(self.desktop)
        until(lambda: box.find("list", showing=False).rows() == ["mpv"], "a new player is listed", 20)
        self.choose(console, "mpv")
        console.play_uri(media.url("long.mp3"))
        console.wait_button("Pause", 20)
        console.wait_position(lambda at: at >= 1, "has begun to move")
        self.assertEqual(console.dialogs(), [])

    def choose(self, console, name):
        console.user.choose_in_combo(console.combos()[0], name)
        console.log.wait_for("KelvoRendererController::rendererChanged")

    def pause_and_seek(self, console):
        console.press("Pause")
        self.wait_property("PlaybackStatus", "Paused")
        console.wait_button("Resume")
        before = console.position()
        console.press("Seek >")
        console.wait_position(lambda at: at >= before + 10, "jumps ahead")
        self.assertAlmostEqual(self.number("Position") / 1e6, console.position(), delta=1.5)
        self.wait_property("PlaybackStatus", "Paused")
        console.press("Resume")
        self.wait_property("PlaybackStatus", "Playing")
        console.wait_button("Pause")

    def change_the_volume(self, console):
        console.menu("Renderers", "Volume...", wait=False)
        dialog = console.dialog("dialog", "Adjust volume")
        loud = self.number("Volume")
        console.user.click(dialog.wait_find("push button", "Volume down"))
        until(lambda: self.number("Volume") < loud, lambda: f"the player is less loud than {loud}")
        console.user.key("Escape")
        until(lambda: not console.dialogs(), "the dialog closes")
