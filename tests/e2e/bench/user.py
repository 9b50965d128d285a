# SPDX-License-Identifier: MIT
"""Mouse and keyboard of the display, with care for the places where a machine is quicker than a hand."""

import time

from .atspi import Gone
from .waiting import until

_DOUBLE_CLICK_GAP = 0.45
_POPUP_PAUSE = 0.15
_NEAR = 8
_STEP_PAUSE = 0.06


class Input:
    """Acts on what the tree shows: the points clicked are those of widgets that are really there."""

    def __init__(self, desktop, tree):
        self._desktop = desktop
        self._tree = tree
        self._last = (0.0, -100, -100)

    @property
    def _x11(self):
        return self._desktop.x11

    def _settle(self):
        time.sleep(_STEP_PAUSE)

    # Mouse

    def click(self, node, where=(0.5, 0.5), wait=True):
        """A single click on a widget; where: fractions of its size."""
        x, y = self.point(node, where)
        self.click_at(x, y)
        if wait:
            self._tree.round_trip()

    def click_at(self, x, y):
        self._part_from_last(x, y)
        self._x11.click(x, y)
        self._last = (time.monotonic(), x, y)
        self._settle()

    def double_click(self, node, where=(0.5, 0.5)):
        x, y = self.point(node, where)
        self._part_from_last(x, y)
        self._x11.click(x, y)
        time.sleep(_STEP_PAUSE)
        self._x11.click(x, y)
        self._last = (time.monotonic(), x, y)
        self._settle()
        self._tree.round_trip()

    def move_to(self, x, y):
        self._x11.move(x, y)
        self._settle()

    def point(self, node, where=(0.5, 0.5)):
        """A point of the widget, once it shows. It must lie inside all that surrounds it, or it is scrolled away."""
        until(lambda: _showing(node), lambda: f"{node!r} shows", 10)
        x, y, width, height = node.extents()
        x += int((width - 1) * where[0])
        y += int((height - 1) * where[1])
        around = node.parent()
        # Popups of menus and combo boxes lie outside their owners.
        while around.role() not in ("application", "invalid", "popup menu", "menu bar", "menu item", "combo box"):
            left, top, width, height = around.extents()
            if width and height and not (left <= x < left + width and top <= y < top + height):
                raise AssertionError(f"{node!r} at {x},{y} lies outside {around!r} {around.extents()}")
            if around.role() in ("frame", "dialog", "window", "alert message"):
                break
            around = around.parent()
        return x, y

    def _part_from_last(self, x, y):
        """Two clicks on one spot that follow quickly would be taken for a double click."""
        at, last_x, last_y = self._last
        if abs(x - last_x) <= _NEAR and abs(y - last_y) <= _NEAR:
            time.sleep(max(0.0, at + _DOUBLE_CLICK_GAP - time.monotonic()))

    # Keys

    def key(self, *names):
        self._x11.key(*names)
        self._settle()

    def type(self, text):
        """Plain ASCII only."""
        self._x11.type(text)
        self._settle()

    def tab_to(self, node, limit=40):
        """Presses Tab until the widget has the focus."""
        for _ in range(limit):
            if "focused" in node.states():
                return
            self.key("Tab")
            self._tree.round_trip()
        raise AssertionError(f"Tab does not come to {node!r}")

    def press_by_key(self, node):
        """Goes to a button by Tab and presses it by the space bar."""
        self.tab_to(node)
        self.key("space")

    def choose_by_keys(self, menu, entry):
        """The entry of that number in the menu of that number, both counted from 0 without separators."""
        self.key("F10", *["Right"] * menu, *["Down"] * entry)
        time.sleep(_POPUP_PAUSE)
        self.key("Return")

    def replace_text(self, node, text):
        self.click(node)
        self.key("ctrl+a", "Delete")
        self.type(text)
        until(lambda: node.text() == text, lambda: f"{node!r} holds {text!r}")

    # Windows

    def window(self, title="^KELVO test-GUI$"):
        """Id of this program's visible window with that title; another program may have one of the same title."""
        return until(lambda: self._search(title), f"a window titled {title}", 10)[0]

    def _search(self, title):
        return self._x11.windows(title, self._tree.pid)

    def wait_placed(self, frame, limit=10.0):
        """Until the window manager has put the window of that node in its place and the program knows that: what it tells
        of its widgets' places before is not true, and a click there goes to whatever lies below."""
        def placed():
            told = frame().extents()
            places = map(self._x11.geometry, reversed(self._search("")))
            return any(place and _is_at(told, place) for place in places)
        until(placed, lambda: f"{frame()!r} is where its window is", limit)

    def activate(self, title="^KELVO test-GUI$"):
        window = self.window(title)
        self._x11.activate(window)
        until(lambda: self._x11.active() == window, f"the window titled {title} is active", 5)

    def resize(self, width, height, title="^KELVO test-GUI$"):
        """Asks for that inner size, at the screen's upper left corner."""
        window = self.window(title)
        self._x11.move_window(window, 0, 0)
        self._x11.resize(window, width, height)
        self._settle()
        self._tree.round_trip()

    def move_window(self, x, y, title="^KELVO test-GUI$"):
        self._x11.move_window(self.window(title), x, y)
        self._settle()
        self._tree.round_trip()

    def close_window(self, title="^KELVO test-GUI$"):
        """Closes through the window manager, as the title bar's button does."""
        self.activate(title)
        self._x11.key("alt+F4")

    # Compound widgets

    def open_menu(self, root, *titles):
        """Opens the menus one by one and returns the last one's node. Titles may leave out trailing blanks."""
        node = root.wait_find("menu bar", showing=True)
        for level, title in enumerate(titles):
            if level:
                time.sleep(_POPUP_PAUSE)
            node = self._entry(node, title)
            self.click(node, wait=False)
            until(lambda: _any_showing(node), lambda: f"the menu {title!r} opens", 5)
        return node

    def choose(self, root, *titles, wait=True):
        """Chooses a menu entry by the titles on the way to it."""
        try:
            menu = self.open_menu(root, *titles[:-1])
            time.sleep(_POPUP_PAUSE)  # a popup ignores what is released on it right after it opened
            self.click(self._entry(menu, titles[-1]), wait=wait)
        except BaseException:
            self.leave_menus()
            raise

    def leave_menus(self):
        """An open menu would eat the next click."""
        self.key("Escape", "Escape", "Escape")

    def _entry(self, menu, title):
        def look():
            try:
                for item in entries(menu):
                    if item.name().rstrip() == title and item.showing():
                        return item
            except Gone:
                pass
            return None
        return until(look, lambda: f"entry {title!r} of {menu!r}; there is {[i.name() for i in entries(menu)]}", 5)

    def choose_in_combo(self, combo, text):
        """Picks an entry of a combo box through its popup."""
        self.click(combo, wait=False)
        box = combo.wait_find("list", showing=True)
        time.sleep(_POPUP_PAUSE)
        try:
            item = until(lambda: box.find("list item", text, deep=True), f"entry {text!r} of {combo!r}", 5)
            self.click(item)
        except BaseException:
            self.leave_menus()
            raise

    def drag_slider(self, slider, value, handle=15):
        """Drags the handle to the value and releases it there. Only this presses and releases the slider."""
        x, y, width, height = slider.extents()
        span = max(1.0, slider.maximum() - slider.minimum())
        middle = y + height // 2

        def place(of):
            return int(x + handle / 2 + (width - handle) * (of - slider.minimum()) / span)

        self._x11.move(place(slider.value()), middle)
        self._x11.press()
        try:
            at = place(value)
            for step in range(1, 6):
                start = place(slider.value()) if step == 1 else start
                self._x11.move(start + (at - start) * step // 5, middle)
                self._settle()
            for _ in range(40):
                self._tree.round_trip()
                if slider.value() == value:
                    break
                at += 1 if slider.value() < value else -1
                self._x11.move(at, middle)
                self._settle()
            assert slider.value() == value, f"the slider stands at {slider.value()}, not at {value}"
        finally:
            self._x11.release()  # a button left down would spoil all that follows
        self._settle()
        self._tree.round_trip()


def entries(menu):
    """The entries of a menu or a menu bar. A submenu's entries may lie one "popup menu" deeper."""
    found = []
    for child in menu.children():
        if child.role() == "popup menu":
            found.extend(entries(child))
        else:
            found.append(child)
    return found


def _showing(node):
    try:
        return node.showing()
    except Gone:
        return False


def _any_showing(menu):
    try:
        return any(item.showing() for item in entries(menu))
    except Gone:
        return False


def _is_at(extents, geometry):
    """Whether a program means that place. On a dense screen its pixels are several of the X server's each."""
    scale = round(geometry[2] / extents[2]) if extents[2] else 0
    return scale > 0 and all(abs(ours * scale - real) < scale for ours, real in zip(extents, geometry))
