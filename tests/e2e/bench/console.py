# SPDX-License-Identifier: MIT
"""The console as a user sees it: its window, buttons, menus and displays."""

import re
import time

from . import atspi, user
from .screen import Screen
from .waiting import until

MUSIC, VIDEO, IMAGES, BROWSE, QUERY = "Play music", "Play video", "Show images", "Browse content", "Query"
TABS = (MUSIC, VIDEO, IMAGES, BROWSE, QUERY)
_POSITION = re.compile(r"^(\d+):(\d\d) /\s+(\d+):(\d\d)$")


class Console:
    """One running console."""

    def __init__(self, desktop, process):
        self.desktop = desktop
        self.process = process
        self.log = process.log
        self.screen = Screen(desktop)
        self.tree = None
        self.user = None
        self._known = {}

    def wait_up(self, limit=30.0):
        """Until the window is there, all controllers exist and its widgets can be read."""
        self.wait_constructed(limit)
        self.tree = atspi.Tree(self.desktop, self.process.pid)
        self.tree.wait_root(limit)
        self.user = user.Input(self.desktop, self.tree)
        until(lambda: self.root().find("frame", "KELVO test-GUI"), "the window shows", limit)
        self.user.wait_placed(self.window, limit)
        return self

    def wait_constructed(self, limit=30.0):
        """The line with the arguments follows the construction of the window and the controllers."""
        self.log.wait_for(r"^\d+ " + re.escape(str(self.process.args[0])), limit=limit)

    def root(self):
        return self.tree.root

    def window(self):
        return until(lambda: self._all("frame", self.root()), "the window shows")[0].node

    def _all(self, role, below=None):
        """What shows of that role in the window. A whole walk through it takes a good part of a second, so what was
        found last time is looked at again, as long as all of that still shows."""
        paths = self._known.get(role, [])
        seen = list(self.tree.look_at(paths))
        if not paths or len(seen) < len(paths) or not all(one.showing for one in seen):
            seen = [one for one in (below or self.window()).walk() if one.role == role]
            self._known[role] = [one.node.path for one in seen]
        return seen

    def _named(self, role, name):
        """The node of that role and name (text or expression), or None."""
        return next((one.node for one in self._all(role) if atspi.matches(name, one.name)), None)

    def _wait_named(self, role, name, limit=10.0):
        return until(lambda: self._named(role, name),
                     lambda: f"a {role} {name!r}; there is\n{self.window().outline()}\n{self.log.tail()}", limit)

    # Widgets of the tab that shows

    def tab(self, title):
        """Brings a tab to the front."""
        page = self._wait_named("page tab", lambda name: name.rstrip() == title)
        self.user.click(page)
        until(lambda: self.current_tab() == title, f"tab {title} is in front")

    def current_tab(self):
        return self._all("page tab list")[0].name.rstrip()

    def button(self, caption):
        return self._wait_named("push button", caption)

    def press(self, caption):
        mark = self.log.mark()
        self.user.click(self.button(caption))
        return mark

    def has_button(self, caption):
        return self._named("push button", caption) is not None

    def wait_button(self, caption, limit=10.0):
        until(lambda: self.has_button(caption), lambda: f"a button {caption!r}\n{self.log.tail()}", limit)

    def combos(self):
        """The combo boxes that show, from left to right."""
        return [one.node for one in sorted(self._all("combo box"), key=lambda one: one.extents[0])]

    def slider(self):
        return self._wait_named("slider", None)

    def metadata(self):
        """Lines of the metadata field of the music or video tab."""
        fields = [one.node for one in self._all("text") if "multi-line" in one.states]
        return fields[0].text().split("\n") if fields else []

    def times(self):
        """(position, duration) in seconds as the duration label shows them."""
        label = until(lambda: next((one for one in self._all("label") if _POSITION.match(one.name)), None),
                      lambda: f"a label with times; there is {[one.name for one in self._all('label')]}")
        minutes, seconds, all_minutes, all_seconds = map(int, _POSITION.match(label.name).groups())
        return minutes * 60 + seconds, all_minutes * 60 + all_seconds

    def position(self):
        return self.times()[0]

    def wait_position(self, condition, what, limit=15.0):
        return until(lambda: condition(self.position()) and self.times(),
                     lambda: f"position {what}; it is {self.times()}\n{self.log.tail()}", limit)

    def menu(self, *titles, wait=True):
        """Chooses a menu entry; returns the log's mark from before."""
        mark = self.log.mark()
        self.user.choose(self.window(), *titles, wait=wait)
        return mark

    def dialog(self, role="dialog", name=None, limit=10.0):
        """In its place: what is clicked is there."""
        dialog = self.root().wait_find(role, name, limit=limit)
        self.user.wait_placed(lambda: dialog, limit)
        return dialog

    def dialogs(self):
        return self.root().find_all("dialog") + self.root().find_all("alert message")

    def play_uri(self, uri):
        """Plays a URI that the dialog offers since it read ~/qkelvo-gui-uris.txt when the console started."""
        self.menu("Playlists", "Play uri...", wait=False)
        dialog = self.dialog("dialog", "Play uri")
        self.user.click(dialog.wait_find("push button", "Add uri"))
        item = until(lambda: dialog.find("list item", uri, deep=True), f"{uri} in the list")
        self.user.click(item, (0.05, 0.5))  # it may be longer than the list is wide
        mark = self.log.mark()
        self.user.click(dialog.wait_find("push button", "Play uri"), wait=False)
        until(lambda: not self.root().find("dialog", "Play uri"), "the dialog closes")
        return mark

    def close_error_log(self):
        """Presses Ok in the error log, if it is open."""
        for dialog in self.root().find_all("dialog", "Renderer error log"):
            self.user.click(dialog.wait_find("push button", "Ok"))
        until(lambda: not self.root().find("dialog", "Renderer error log"), "the error log closes")

    # Its end

    def wait_exit(self, limit=10.0):
        """Exit code, once the process has ended and its log is complete."""
        until(lambda: self.process.poll() is not None, lambda: f"the program ends\n{self.log.tail()}", limit, 0.01)
        self.ended_at = time.monotonic()
        self.log.finish()
        return self.process.returncode

    def close(self, limit=10.0):
        self.user.close_window()
        return self.wait_exit(limit)
