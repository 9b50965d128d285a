# SPDX-License-Identifier: MIT
"""What the menu "Playlists" does to a playlist: items and lists are removed, the order and the repeating changed."""

import re

from bench import playlists
from bench.scenario import Scenario
from bench.user import entries
from bench.waiting import until

TITLES = ["alpha", "bravo", "charlie", "delta", "echo", "foxtrot", "golf", "hotel"]


class PlaylistMenu(Scenario):
    def start_with_playlist(self, titles, seconds=30):
        urls = [f"sim:{title}?duration={seconds}" for title in titles]
        console = self.start(env=playlists.environment(urls, "simulator"))
        until(lambda: console.combos()[0].name() == "Simulator A", "the first renderer is current")
        playlists.create(console)
        playlists.wait_titles(console, titles)
        return console

    def entry(self, console, pattern):
        """Text and tick of the entry of the menu as it shows when it is open."""
        menu = console.user.open_menu(console.window(), "Playlists")
        found = [(item.name(), "checked" in item.states()) for item in entries(menu) if re.match(pattern, item.name())]
        console.user.leave_menus()
        until(lambda: not any(item.showing() for item in entries(menu)), "the menu closes")
        self.assertEqual(len(found), 1, found)
        return found[0]

    def choose(self, console, title, line):
        """Chooses an entry; what is done logs its name, once."""
        mark = console.menu("Playlists", title)
        console.log.wait_for(line, mark)
        self.assertEqual(console.log.count(line, mark), 1)
        return mark

    def wait_playing(self, console, title):
        until(lambda: f"title: {title}" in console.metadata(),
              lambda: f"{title} plays; there is {console.metadata()}\n{console.log.tail()}")

    # Removing

    def remove_current(self, console, title):
        playlists.click(console, title)
        self.assertEqual(playlists.selected(console), [title])
        self.choose(console, "Remove current", "KelvoPlaylistController::removeCurrentItem")

    def test_remove_current_takes_the_item_that_is_chosen(self):
        console = self.start_with_playlist(TITLES[:4])
        self.remove_current(console, "charlie")
        playlists.wait_titles(console, ["alpha", "bravo", "delta"])
        self.remove_current(console, "alpha")
        playlists.wait_titles(console, ["bravo", "delta"])
        self.remove_current(console, "delta")
        playlists.wait_titles(console, ["bravo"])
        console.press("Play")
        console.wait_button("Pause")
        self.wait_playing(console, "bravo")

    def select(self, console, title, key, steps):
        playlists.click(console, title)
        console.user.key(*[key] * steps)

    def test_remove_several_takes_what_is_selected_in_either_direction(self):
        console = self.start_with_playlist(TITLES[:6])
        self.select(console, "bravo", "shift+Down", 2)
        until(lambda: playlists.selected(console) == ["bravo", "charlie", "delta"], "three items are selected")
        self.choose(console, "Remove several selected", "KelvoPlaylistController::removeSeveralItems")
        playlists.wait_titles(console, ["alpha", "echo", "foxtrot"])
        self.select(console, "echo", "shift+Up", 1)
        until(lambda: playlists.selected(console) == ["alpha", "echo"], "two items are selected")
        self.choose(console, "Remove several selected", "KelvoPlaylistController::removeSeveralItems")
        playlists.wait_titles(console, ["foxtrot"])

    def test_delete_takes_the_current_playlist_from_all_tabs(self):
        console = self.start_with_playlist(TITLES[:2])
        playlists.create(console, "pl2")
        console.user.choose_in_combo(console.combos()[1], "pl2")
        until(lambda: console.combos()[1].name() == "pl2", "the second playlist is current")
        self.choose(console, "Delete from tracker", r"KelvoPlaylistController::deletePersistentPlaylist\(\)")
        self.assertEqual(playlists.listed(console), [("pl2", ["pl1", "pl2"])] * 3)
        mark = self.choose(console, "Delete", r"Deleting current playlist, id=")
        console.log.wait_for("KelvoPlaylistController::playlistRemoved", mark)
        self.assertEqual(playlists.listed(console), [("pl1", ["pl1"])] * 3)
        playlists.wait_titles(console, TITLES[:2])
        self.choose(console, "Delete", r"Deleting current playlist, id=")
        until(lambda: [rows for _, rows in playlists.listed(console)] == [[]] * 3,
              lambda: f"no playlist is left; there is {playlists.listed(console)}\n{console.log.tail()}")
        self.assertEqual(playlists.titles(console), [])
        # Nothing is left that could be deleted.
        mark = self.choose(console, "Delete", "KelvoPlaylistController::deletePlaylist")
        self.assertEqual(console.log.count("Deleting current playlist", mark), 0)

    # Order and repeating

    def test_shuffle_mixes_the_items_and_puts_them_back(self):
        console = self.start_with_playlist(TITLES)
        self.assertEqual(self.entry(console, "Shuffle"), ("Shuffle", False))
        self.choose(console, "Shuffle", "KelvoPlaylistController::shufflePlaylist")
        # Of 40320 orders one is that of before.
        until(lambda: playlists.titles(console) != TITLES, "another order shows")
        mixed = playlists.titles(console)
        self.assertEqual(sorted(mixed), TITLES)
        self.assertEqual(self.entry(console, "Shuffle"), ("Shuffle", True))

        # What shows is what plays.
        console.user.double_click(playlists.view(console).wait_find("list item", mixed[0], deep=True))
        self.wait_playing(console, mixed[0])
        console.press("Next")
        self.wait_playing(console, mixed[1])

        self.choose(console, "Shuffle", "KelvoPlaylistController::shufflePlaylist")
        playlists.wait_titles(console, TITLES)
        self.assertEqual(self.entry(console, "Shuffle"), ("Shuffle", False))

    def items(self, console, mark=0):
        """Rows of the items that came into play, as the log tells them."""
        expression = re.compile(r"rendererMediaChanged, index (\d+)")
        return [int(expression.search(console.log.lines[n]).group(1)) for n in console.log.find(expression, mark)]

    def step_repeat(self, console, text):
        """The entry bears the mode's text once it is in force."""
        mark = self.choose(console, self.entry(console, "Repeat")[0], "KelvoPlaylistController::repeatPlaylist")
        self.assertEqual(self.entry(console, "Repeat"), (text, False))
        return mark

    def test_repeat_names_the_mode_in_force_and_what_plays_follows_it(self):
        console = self.start_with_playlist(["alpha", "bravo"], seconds=2)
        self.assertEqual(self.entry(console, "Repeat"), ("Repeat off", False))
        self.step_repeat(console, "Repeat all")
        mark = console.press("Play")
        # From the last item to the first one.
        until(lambda: self.items(console, mark)[-3:] == [0, 1, 0],
              lambda: f"it goes round; there were {self.items(console, mark)}\n{console.log.tail()}", 20)
        mark = self.step_repeat(console, "Repeat one")
        row = self.items(console)[-1]
        # Twice from its end to its beginning, and never to another item.
        for _ in range(2):
            console.wait_position(lambda at: at >= 1, "comes near the end")
            console.wait_position(lambda at: at < 1, "is back at the beginning")
        self.assertEqual({*self.items(console, mark)} | {row}, {row})
        self.assertEqual(console.dialogs(), [])

        # The item may end, and the message come over the menus, before they are opened once more.
        self.choose(console, "Repeat one", "KelvoPlaylistController::repeatPlaylist")
        console.user.click(console.dialog("alert message", limit=20).wait_find("push button", "OK"))
        until(lambda: not console.dialogs(), "the message closes")
        self.assertEqual(self.entry(console, "Repeat"), ("Repeat off", False))
        console.wait_button("Play")
