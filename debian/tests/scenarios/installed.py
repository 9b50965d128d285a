# SPDX-License-Identifier: MIT
"""The installed console with the installed back ends, just as the packages start it."""

import shutil

from bench import media
from bench.scenario import Scenario
from bench.waiting import until

DESKTOP_FILE = "/usr/share/applications/org.kelvo.TestGui.desktop"
INSTALLED = {"KELVO_PLUGINS": None}  # those that start by default
EXECUTE = "Execute\nquery"
SONG_COLUMNS = 14


class Installed(Scenario):
    def test_plays_and_closes(self):
        console = self.start(media.url("list.pls"), env=INSTALLED)
        console.wait_button("Pause", 20)
        until(lambda: "title: First Tone" in console.metadata(), "the first song plays", 15)
        first = console.wait_position(lambda at: at >= 1, "has begun to move")
        console.press("Pause")
        console.wait_button("Resume")
        console.press("Resume")
        console.wait_position(lambda at: at > first[0], "goes on after the pause")
        self.assertEqual(console.close(), 0, console.log.tail())

    def test_queries_what_is_indexed(self):
        music = self.desktop.home / "Music"
        music.mkdir()
        for name in ("first.mp3", "second.ogg"):
            shutil.copy(media.folder() / name, music)
        console = self.start(env={**INSTALLED, "KELVO_MEDIA_DIRS": str(music)})
        console.tab("Query")
        until(lambda: console.button(EXECUTE).enabled(), "the store is ready", 30)
        until(lambda: self.all_songs(console) == ["First Tone", "Second Tone"],
              lambda: f"the songs in the results\n{console.log.tail()}", 60)
        self.assertEqual(console.close(), 0, console.log.tail())

    def all_songs(self, console):
        combo = next(combo for combo in console.combos() if combo.name().startswith("All "))
        if combo.name() != "All songs":
            console.user.choose_in_combo(combo, "All songs")
        mark = console.press(EXECUTE)
        console.log.wait_for("KelvoQueryController::modelUpdatedSlot", mark)
        # A view tells of all columns of its model, of which the second shows.
        return console.window().wait_find("list", "Query results").rows()[1::SONG_COLUMNS]

    def test_the_desktop_file_starts_it(self):
        self.desktop.run(["desktop-file-validate", DESKTOP_FILE])
        self.desktop.start(["gio", "launch", DESKTOP_FILE])
        window = ["xdotool", "search", "--sync", "--onlyvisible", "--name", "^KELVO test-GUI$"]
        found = self.desktop.run(window, 30).split()[0]
        pid = self.desktop.run(["xdotool", "getwindowpid", found]).strip()
        self.desktop.run(["xdotool", "windowactivate", "--sync", found, "key", "alt+F4"])
        until(lambda: not self.runs(pid), "the console has ended", 15)

    def runs(self, pid):
        try:
            self.desktop.run(["kill", "-0", pid])
        except RuntimeError:
            return False
        return True
