# SPDX-License-Identifier: MIT
"""Every tab and every menu of the window: their texts, and that nothing is cut or covered at the sizes in use."""

import itertools
import re
import unittest
from pathlib import Path

from bench import console as ui
from bench.scenario import Scenario
from bench.screen import dark
from bench.user import entries
from bench.waiting import until

ROOT = Path(__file__).resolve().parents[3]
TAB_TEXTS = ["Play music" + 12 * " ", "Play video" + 12 * " ", "Show images", "Browse content" + 5 * " ",
             "Query" + 14 * " "]
MENU_TEXTS = ["Main" + 14 * " ", "Renderers" + 11 * " ", "Playlists" + 15 * " ", "Query" + 15 * " "]
MENUS = {
    ("Main",): ["Plugins", "Help", "Exit"],
    ("Renderers",): ["Volume...", "Pause frame", "Auto Advance", "Pause At..."],
    ("Renderers", "Pause At..."): ["0 sec", "1 sec", "3 sec", "6 sec", "10 sec"],
    ("Playlists",): ["Create new...", "Load...", "Save", "Delete", "Delete from tracker", "Clear", "Remove current",
                     "Remove several selected", "Play uri...", "Shuffle", "Repeat all", "Sort by..."],
    ("Playlists", "Sort by..."): ["A-Z", "Z-A", "Duration short -> long", "Duration long -> short"],
    ("Query",): ["Select sources...", "Search...", "Source properties...", "Show all metadata...", "Launch browser",
                 "Query properties"],
}
BUTTONS = {
    ui.MUSIC: ["Play", "Stop", "Prev", "Next", "< Seek", "Seek >"],
    ui.VIDEO: ["Play", "Stop", "Seek >", "Prev", "Next", "< Seek"],
    ui.IMAGES: [],
    ui.BROWSE: ["Browse", "Clear", "Append\nitem(s) to\nplaylist", "Show all\n metadata"],
    ui.QUERY: ["Create new\n playlist from\n result set", "Append\n item(s) to\n playlist", "Extend\nquery",
               "Execute\nquery"],
}
QUERIES = ["All songs", "Recently added songs", "Recently played songs", "Most played songs", "All albums",
           "All artists", "All playlists", "Favorite songs", "Never played songs", "Downloaded songs",
           "All videos (blocking query)"]
CONTROLS = {"push button", "combo box", "slider", "list", "text", "label", "page tab", "progress bar"}


class Window(Scenario):
    screen_size = (1660, 1040)

    def test_texts_of_tabs_and_widgets(self):
        console = self.start()
        window = console.window()
        self.assertEqual([tab.name() for tab in window.find_all("page tab")], TAB_TEXTS)
        self.assertEqual(console.current_tab(), ui.MUSIC)
        self.assertEqual(console.times(), (0, 0))
        self.assertEqual(console.slider().maximum(), 10)
        for tab, captions in BUTTONS.items():
            console.tab(tab)
            found = [button.name() for button in console.window().find_all("push button")]
            self.assertCountEqual(found, captions, tab)
        console.tab(ui.QUERY)
        texts = [label.name() for label in console.window().find_all("label")]
        self.assertIn("Query:", texts)
        self.assertIn("%n results", texts)
        box = next(box for box in console.combos() if box.name() == "All songs")
        self.assertEqual(box.find("list", showing=False).rows(), QUERIES)
        console.tab(ui.BROWSE)
        texts = [label.name() for label in console.window().find_all("label")]
        self.assertIn("Browse:", texts)
        self.assertIn("%n results", texts)

    def test_the_desktop_knows_whose_window_it_is(self):
        console = self.start()
        window = console.user.window()
        entry = (ROOT / "data" / "org.kelvo.TestGui.desktop").read_text()
        name = re.search(r"^StartupWMClass=(.+)$", entry, re.MULTILINE)[1]
        self.assertIn(f'"{name}"', self.desktop.run(["xprop", "-id", window, "WM_CLASS"]))
        icons = self.desktop.run(["xprop", "-id", window, "_NET_WM_ICON"])
        for size in (16, 32, 48, 128):
            self.assertIn(f"Icon ({size} x {size})", icons)

    def test_texts_of_menus(self):
        console = self.start()
        bar = console.window().wait_find("menu bar")
        self.assertEqual([menu.name() for menu in bar.children() if menu.role() == "menu item"], MENU_TEXTS)
        for path, texts in MENUS.items():
            with self.subTest(menu=path):
                menu = console.user.open_menu(console.window(), *path)
                items = [entry for entry in entries(menu) if entry.role() == "menu item"]
                self.assertEqual([item.name() for item in items], texts)
                # Which entries are ticked at start: one alone.
                ticked = [item.name() for item in items if "checked" in item.states()]
                self.assertEqual(ticked, ["Auto Advance"] if path == ("Renderers",) else [])
                for item in items:
                    self.assertTrue(inside(item.extents(), (0, 0, *self.screen_size)), item.name())
                console.screen.shoot(self.output(f"-{path[-1].strip('.').replace(' ', '-')}.png"))
                console.user.leave_menus()
                until(lambda: not any(item.showing() for item in entries(menu)), "the menu closes")

    def test_dialogs_open_and_close(self):
        console = self.start()
        for path, title in ((("Renderers", "Volume..."), "Adjust volume"),
                            (("Playlists", "Create new..."), "Create new playlist"),
                            (("Playlists", "Play uri..."), "Play uri")):
            with self.subTest(dialog=path):
                console.menu(*path, wait=False)
                dialog = console.dialog("dialog", title)
                self.assertEqual(layout_faults(dialog, dialog.extents()), [])
                console.screen.shoot(self.output(f"-{path[-1].strip('.').replace(' ', '-')}.png"))
                console.user.key("Escape")
                until(lambda: not console.dialogs(), "the dialog closes")

    def test_nothing_is_cut_at_the_large_size(self):
        self.look_at_all_tabs(1280, 800)

    def test_nothing_is_cut_at_the_small_size(self):
        self.look_at_all_tabs(800, 480)

    def look_at_all_tabs(self, width, height):
        console = self.start()
        # Texts are compared with how they look where there is more than enough room.
        roomy, _ = self.look(console, 1640, 1000, keep=False)
        texts, faults = self.look(console, width, height, keep=True)
        for key, ink in texts.items():
            if ink < 0.97 * roomy[key]:
                faults.append(f"{key} shows {ink} of the {roomy[key]} pixels of its text")
        self.assertEqual(faults, [], f"at {width}x{height}")

    def look(self, console, width, height, keep):
        """Resizes, looks at each tab, and returns how many pixels each text has, and what is wrong."""
        console.user.resize(width, height)
        until(lambda: console.window().extents()[2:] == (width, height),
              lambda: f"the window is {width}x{height}; it is {console.window().extents()}")
        texts, faults = {}, []
        for tab in ui.TABS:
            console.tab(tab)
            console.user.move_to(width // 2, self.screen_size[1] - 1)  # no control lies highlighted under the pointer
            window = console.window()
            if keep:
                console.screen.shoot(self.output(f"-{tab.replace(' ', '-')}.png"), window.extents())
            faults += [f"{tab}: {fault}" for fault in layout_faults(window, window.extents())]
            picture = console.screen.picture()
            for one in window.walk():
                if one.role in ("push button", "label") or (one.role == "page tab" and tab == ui.MUSIC):
                    x, y, w, h = one.extents
                    texts[tab, one.role, one.name] = picture.count((x + 3, y + 3, w - 6, h - 6), dark)
                if one.role == "push button" and any(picture.count((edge, y + 4, 2, h - 8), dark)
                                                     for edge in (x + 3, x + w - 5)):
                    faults.append(f"{tab}: the text of {one.name!r} touches the edge of its button")
        return texts, faults


def layout_faults(window, frame):
    """Controls that do not lie inside, are too small to hit, or cover one another."""
    faults = []
    seen = [one for one in window.walk() if one.role in CONTROLS]
    for one in seen:
        if not inside(one.extents, frame):
            faults.append(f"{one.role} {one.name!r} {one.extents} is not inside {frame}")
        if one.role in ("push button", "combo box") and min(one.extents[2:]) < 20:
            faults.append(f"{one.role} {one.name!r} is small: {one.extents}")
    for one, other in itertools.combinations(seen, 2):
        if overlap(one.extents, other.extents):
            faults.append(f"{one.role} {one.name!r} {one.extents} and {other.role} {other.name!r} {other.extents} overlap")
    return faults


def inside(inner, outer):
    x, y, width, height = inner
    left, top, all_width, all_height = outer
    return left <= x and top <= y and x + width <= left + all_width and y + height <= top + all_height


def overlap(one, other):
    return (one[0] < other[0] + other[2] and other[0] < one[0] + one[2]
            and one[1] < other[1] + other[3] and other[1] < one[1] + one[3])


class Overlap(unittest.TestCase):
    """The judge of the layout itself."""

    def test_overlap(self):
        self.assertTrue(overlap((0, 0, 10, 10), (9, 9, 10, 10)))
        self.assertFalse(overlap((0, 0, 10, 10), (10, 0, 10, 10)))
        self.assertFalse(overlap((0, 0, 10, 10), (0, 10, 10, 10)))
