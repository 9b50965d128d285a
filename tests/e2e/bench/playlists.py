# SPDX-License-Identifier: MIT
"""Playlists as a user makes them, filled by a back end for tests, and what the window shows of them."""

import os

from . import console as ui
from .waiting import until

COLUMNS = 4  # id, title, URL and duration, of which the title shows


def environment(urls, renderer):
    """For a console whose new playlists hold these files."""
    return {"KELVO_PLUGINS": f"{renderer},playlist-filler",
            "KELVO_PLUGIN_PATH": os.environ["KELVO_E2E_TEST_PLUGINS"],
            "KELVO_TEST_FILES": " ".join(urls)}


def create(console, name="pl1"):
    """Through the menu, with the name that the dialog proposes."""
    mark = console.menu("Playlists", "Create new...", wait=False)
    dialog = console.dialog("dialog", "Create new playlist")
    console.user.click(dialog.wait_find("push button", "OK"))
    console.log.wait_for(rf"KelvoPlaylistController::playlistAdded .* \"{name}\"", mark)


def view(console):
    return console.window().wait_find("list", "Playlist items")


def titles(console):
    """A view tells of all columns of its model, of which the second shows."""
    return view(console).rows()[1::COLUMNS]


def wait_titles(console, expected):
    until(lambda: titles(console) == expected,
          lambda: f"items {expected}; there are {titles(console)}\n{console.log.tail()}")


def selected(console):
    """Titles of the items that show as selected."""
    return [item.name() for item in view(console).children()[1::COLUMNS] if "selected" in item.states()]


def click(console, title):
    console.user.click(view(console).wait_find("list item", title, deep=True))


def listed(console):
    """What the playlist boxes of the three tabs show and list; the music tab is in front afterwards."""
    lists = []
    for tab, place in ((ui.QUERY, 0), (ui.BROWSE, 0), (ui.MUSIC, 1)):
        console.tab(tab)
        box = console.combos()[place]
        lists.append((box.name(), box.find("list", showing=False).rows()))
    return lists
