# SPDX-License-Identifier: MIT
"""What a tester does all day, as rounds that are alike: each ends as it began, so that whatever is held longer than a
round was forgotten. Every deed is confirmed, in the window, in the log or on the screen, before it counts."""

import collections
import itertools
import re
import signal

from bench import console as ui
from bench import media
from bench.screen import strong_red
from bench.user import entries
from bench.waiting import until

from . import crowd, library

EXECUTE, EXTEND, FETCH = "Execute\nquery", "Extend\nquery", "Fetch\nrest"
CREATE = "Create new\n playlist from\n result set"
FIRST_ROW, SECOND_ROW = (0.2, 0.06), (0.2, 0.18)  # of a list, as parts of its width and height
FIRST_BLOCK = 200  # of a result that is longer
RENDERER = "KelvoGstRenderer"
# As the dialog lists them, and whether they are loaded when a round begins.
PLUGINS = (("simulator", False), ("upnp", False), ("mpris", True), ("gst-renderer", True), ("tracker-source", True))
# Menu, entry and title of dialogs that are opened and left again.
DIALOGS = (("Renderers", "Volume...", "Adjust volume"), ("Main", "Help", "Help"),
           ("Query", "Query properties", "Dialog"), ("Query", "Select sources...", "Dialog"),
           ("Query", "Source properties...", "Source properties"),
           ("Playlists", "Create new...", "Create new playlist"), ("Playlists", "Play uri...", "Play uri"))
FULL_SCREEN = "alt+F11"


class Day:
    """One console, used. It has the renderer for media, the tracker's source and the players of the desktop."""

    def __init__(self, console, sound, songs, players):
        self.done = collections.Counter()
        self._console = console
        self._log = console.log
        self._sound = sound
        self._songs = songs
        self._players = players
        self._plugins = itertools.cycle(PLUGINS)
        self._dialogs = itertools.cycle(DIALOGS)
        self._others = itertools.cycle(("All albums", "Recently added songs", "All artists"))
        self._ends = itertools.cycle((signal.SIGTERM, signal.SIGKILL))

    @property
    def activities(self):
        """What a round consists of, in its order."""
        return (self.query_and_edit, self.query_further, self.search, self.watch_a_film, self.meet_players,
                self.lose_the_sound, self.load_and_unload, self.open_dialogs)

    def begin(self):
        """Until all songs are indexed; they become the playlist that stays."""
        console = self._console
        console.tab(ui.QUERY)
        until(lambda: console.button(EXECUTE).enabled(), "the store is ready", 30)
        until(lambda: self._query("All songs") and self._results() == self._songs,
              lambda: f"{self._songs} songs; there are {self._results()}", 120, 1)
        self._create()
        console.tab(ui.MUSIC)
        self._choose_renderer(RENDERER)

    def recover(self):
        """Back to where a round begins, after one of its deeds has failed."""
        console = self._console
        console.user.leave_menus()
        for _ in range(5):
            if not console.dialogs():
                break
            console.user.key("Escape")
        if not self._sound.runs():
            self._sound.start()
        console.tab(ui.MUSIC)
        self._choose_renderer(RENDERER)
        self._stop()

    # Queries

    def _results(self):
        label = self._console.window().find("label", re.compile(r"^\d+ results$"))
        return int(label.name().split()[0]) if label else 0

    def _query(self, name):
        console = self._console
        box = next(box for box in console.combos() if box.name().startswith(("All ", "Recently ")))
        if box.name() != name:
            console.user.choose_in_combo(box, name)
        self._press_and_fetch(EXECUTE)
        return True

    def _press_and_fetch(self, button):
        """The rest of a long result is fetched, too."""
        console = self._console
        mark = console.press(button)
        finished = "KelvoQueryController::modelUpdatedSlot"
        until(lambda: self._log.count(finished, mark) or self._results() == FIRST_BLOCK, "results", 30)
        if not self._log.count(finished, mark):
            console.press(FETCH)
            self._log.wait_for(finished, mark, 30)
        console.wait_button(EXECUTE)
        self.done["queries"] += 1

    def _extend(self):
        """What belongs to the first result, and so on until nothing does. That is how results go: one that another query
        takes the place of stays in memory for good, because a playlist may show it, and would look like a leak. Only
        the last one does, which has no rows."""
        console = self._console
        while self._results():
            console.user.click(console.window().wait_find("list", "Query results"), FIRST_ROW)
            self._press_and_fetch(EXTEND)

    def _create(self):
        """A playlist of the results; returns its name."""
        mark = self._console.press(CREATE)
        line = self._log.lines[self._log.wait_for("KelvoPlaylistController::playlistAdded", mark, 20)]
        self.done["playlists"] += 1
        return line.rsplit('"', 2)[1]

    def query_and_edit(self):
        """All songs, as a playlist that is edited, played and deleted."""
        console = self._console
        console.tab(ui.QUERY)
        self._query("All songs")
        until(lambda: self._results() == self._songs, lambda: f"{self._songs} songs; there are {self._results()}", 20)
        name = self._create()
        console.tab(ui.MUSIC)
        console.user.choose_in_combo(console.combos()[1], name)
        until(lambda: console.combos()[1].name() == name, f"{name} is current")
        self._edit()
        self._play_songs()
        mark = console.menu("Playlists", "Delete")
        self._log.wait_for("KelvoPlaylistController::playlistRemoved", mark)
        console.tab(ui.QUERY)
        self._extend()
        console.tab(ui.MUSIC)

    def _edit(self):
        changed = "KelvoPlaylistController::playlistContentsChanged"
        for path in (("Sort by...", "Z-A"), ("Sort by...", "A-Z"), ("Shuffle",), ("Shuffle",)):
            mark = self._console.menu("Playlists", *path)
            self._log.wait_for(changed, mark)
            self._console.tree.round_trip()
            self.done["edits"] += 1
        for row in (FIRST_ROW, SECOND_ROW):
            self._console.user.click(self._console.window().wait_find("list", "Playlist items"), row)
            mark = self._console.menu("Playlists", "Remove current")
            self._log.wait_for("KelvoPlaylistController::removeCurrentItem", mark)
            self._log.wait_for(changed, mark)
            self.done["edits"] += 1
        self._repeat()

    def _repeat(self):
        """Through all modes of repeating and back; the entry bears the mode's name."""
        for _ in range(3):
            menu = self._console.user.open_menu(self._console.window(), "Playlists")
            entry = next(item.name() for item in entries(menu) if item.name().startswith("Repeat"))
            self._console.user.leave_menus()
            mark = self._console.menu("Playlists", entry)
            self._log.wait_for("KelvoPlaylistController::repeatPlaylist", mark)
            self.done["edits"] += 1

    def _play_songs(self):
        console = self._console
        mark = console.press("Play")
        console.wait_button("Pause", 20)
        self._log.wait_for("rendererMediaChanged, index", mark)
        for button in ("Next", "Next", "Prev"):
            mark = console.press(button)
            self._log.wait_for("rendererMediaChanged, index", mark)
            self.done["items played"] += 1
        console.press("Pause")
        console.wait_button("Resume")
        console.press("Resume")
        console.wait_button("Pause")
        mark = console.press("Seek >")
        self._log.wait_for("KelvoRendererController::seek|rendererMediaChanged", mark)
        self._stop()

    def _stop(self):
        self._console.press("Stop")
        self._console.wait_button("Play", 20)

    def query_further(self):
        """Another query and all that is below its first result."""
        self._console.tab(ui.QUERY)
        self._query(next(self._others))
        self._extend()
        self._console.tab(ui.MUSIC)

    def search(self):
        console = self._console
        console.menu("Query", "Search...", wait=False)
        dialog = console.dialog("dialog", "Search")
        mark = self._log.mark()
        console.user.click(dialog.wait_find("push button", "Execute"))
        self._log.wait_for("KelvoMainWindow::showQueryResults", mark)
        until(lambda: not console.dialogs(), "the dialog closes")
        self.done["searches"] += 1

    # Films

    def _shows_red(self):
        x, y, width, height = self._console.window().wait_find("label", "Video").extents()
        return self._console.screen.picture().count((x + width // 2, y + height // 2, 1, 1), strong_red) == 1

    def _fills_the_screen(self):
        return self._console.window().extents() == (0, 0, *self._console.desktop.size)

    def watch_a_film(self):
        """On its tab, on the whole screen and back, paused and away from it."""
        console = self._console
        console.play_uri(media.url(library.FILM))
        console.wait_button("Pause", 20)
        console.tab(ui.VIDEO)
        until(self._shows_red, "the picture shows", 15)
        for wanted in (True, False):
            console.user.key(FULL_SCREEN)
            until(lambda: self._fills_the_screen() == wanted, f"full screen: {wanted}")
            until(self._shows_red, f"the picture shows, full screen: {wanted}", 15)
        self.done["full screens"] += 1
        console.press("Pause")
        console.wait_button("Resume")
        console.tab(ui.BROWSE)
        until(lambda: not console.screen.picture().count((0, 0, *console.desktop.size), strong_red),
              "the picture goes with its tab")
        console.tab(ui.VIDEO)
        until(self._shows_red, "the picture is back", 15)
        console.press("Resume")
        console.wait_button("Pause")
        self._stop()
        console.tab(ui.MUSIC)
        self.done["films"] += 1

    # Renderers

    def _renderers(self):
        return self._console.combos()[0].find("list", showing=False).rows()

    def _choose_renderer(self, name):
        console = self._console
        until(lambda: name in self._renderers(), lambda: f"{name} is listed; there are {self._renderers()}", 20)
        if console.combos()[0].name() != name:
            mark = self._log.mark()
            console.user.choose_in_combo(console.combos()[0], name)
            self._log.wait_for("KelvoRendererController::rendererChanged", mark)
        until(lambda: console.combos()[0].name() == name, f"{name} is current")

    def meet_players(self):
        """Players come, one of them plays, and all go: politely or at once."""
        players = self._let_players_come()
        self._let_players_go(players)
        self.done["renderers"] += self._players

    def _let_players_come(self):
        mark = self._log.mark()
        players = crowd.start(self._console.desktop, self._players)
        self._log.wait_for('rendererAdded ".*" "Player ', mark, 30, self._players)
        self._choose_renderer(next(name for name in self._renderers() if name.startswith("Player ")))
        self._console.press("Play")
        self._console.wait_button("Pause", 20)
        return players

    def _let_players_go(self, players):
        gone = self._log.mark()
        players.send_signal(next(self._ends))
        self._log.wait_for('rendererRemoved  "Player ', gone, 30, self._players)
        players.wait(10)
        self._choose_renderer(RENDERER)

    def fill_the_ring(self):
        """The last events of the boundary are kept in memory of a fixed size, which an hour would not fill: a player that
        tells far too much does."""
        players = self._let_players_come()
        players.send_signal(signal.SIGUSR1)
        players.log.wait_for("^told$", limit=120)
        self._let_players_go(players)

    def load_and_unload(self):
        """Two plug-ins through a whole cycle each."""
        for name, loaded in (next(self._plugins), next(self._plugins)):
            for button in ("Unload", "Load") if loaded else ("Load", "Unload"):
                self._move_plugin(name, button)
            self.done["plug-in cycles"] += 1
            self._choose_renderer(RENDERER)

    def _move_plugin(self, name, button):
        console = self._console
        mark = console.menu("Main", "Plugins", wait=False)
        dialog = console.dialog("dialog")
        item = until(lambda: dialog.find("list item", name, deep=True), f"{name} in the lists")
        console.user.click(item)
        console.user.click(dialog.wait_find("push button", button))
        console.user.click(dialog.wait_find("push button", "Done"))
        until(lambda: not console.dialogs(), "the dialog closes")
        self._log.wait_for("KelvoPluginController::showPluginsDialog ends", mark)

    def lose_the_sound(self):
        """The sound server ends while a song plays, which goes on; it starts anew, and the next song is on it."""
        console = self._console
        console.press("Play")
        console.wait_button("Pause", 20)
        until(lambda: self._sound.streams() == 1, "the song is on the sound server", 20)
        self._sound.kill()
        dialog = console.dialog("dialog", "Renderer error log", 20)
        console.user.click(dialog.wait_find("push button", "Clear"))
        console.close_error_log()
        self._sound.start()
        console.press("Next")
        until(lambda: self._sound.streams() == 1, "the next song is on the sound server", 20)
        console.wait_button("Pause", 20)
        self._stop()
        self.done["sound restarts"] += 1

    # Dialogs

    def open_dialogs(self):
        """Three of them, left by the keyboard."""
        console = self._console
        for menu, entry, title in itertools.islice(self._dialogs, 3):
            console.menu(menu, entry, wait=False)
            console.dialog("dialog", title)
            console.user.activate(f"^{re.escape(title)}$")  # the window manager may be slow to give it the keys
            console.user.key("Escape")
            until(lambda: not console.dialogs(), f"{title} closes")
            self.done["dialogs"] += 1
