# SPDX-License-Identifier: MIT
"""An X server as a hand and a pager reach it: pointer and keys by the extension XTEST, windows by the properties that
the window manager keeps (Extended Window Manager Hints).

One connection for each display: scenarios ask it thousands of times, and a tool that is started each time would take
as long as some of the answers that they wait for.
"""

import re
import time

from Xlib import X, XK, display, error
from Xlib.protocol import event

# Seconds: how long a hand stays on a key or a button.
_HELD = 0.012
_MODIFIERS = {"ctrl": "Control_L", "alt": "Alt_L", "shift": "Shift_L", "super": "Super_L"}
# What asks for the window: not a program for itself, but a pager for the user.
_PAGER = 2


class X11:
    """Windows are their ids."""

    def __init__(self, name):
        self._display = display.Display(name)
        self._root = self._display.screen().root
        # A window may close while it is asked for something.
        self._display.set_error_handler(lambda *_: None)

    def close(self):
        try:
            self._display.close()
        except error.ConnectionClosedError:  # the server has gone before
            pass

    # Pointer

    def move(self, x, y):
        self._fake(X.MotionNotify, x=int(x), y=int(y))

    def press(self, button=X.Button1):
        self._fake(X.ButtonPress, button)

    def release(self, button=X.Button1):
        self._fake(X.ButtonRelease, button)

    def click(self, x, y, button=X.Button1):
        self.move(x, y)
        self.press(button)
        time.sleep(_HELD)
        self.release(button)

    # Keys

    def key(self, *names):
        """Presses one after the other, by the names of their symbols, with modifiers before them: "Return", "ctrl+a"."""
        for name in names:
            *modifiers, last = re.split(r"\+(?!$)", name)
            self._stroke(last, [_MODIFIERS[modifier] for modifier in modifiers])

    def type(self, text):
        """Plain ASCII only: other letters have no key on the keyboard map."""
        assert text.isascii()
        for letter in text:
            self._stroke("Return" if letter == "\n" else ord(letter))

    def _stroke(self, symbol, modifiers=()):
        code, is_shifted = self._place(symbol)
        held = [self._place(modifier)[0] for modifier in (*modifiers, *(["Shift_L"] if is_shifted else []))]
        for key in (*held, code):
            self._fake(X.KeyPress, key)
        time.sleep(_HELD)
        for key in (code, *reversed(held)):
            self._fake(X.KeyRelease, key)

    def _place(self, symbol):
        """The code of the key that has the symbol, and whether only with Shift."""
        number = XK.string_to_keysym(symbol) if isinstance(symbol, str) else symbol
        places = [(code, index) for code, index in self._display.keysym_to_keycodes(number) if index < 2]
        if not places:
            raise ValueError(f"no key has the symbol {symbol!r}")
        code, index = min(places, key=lambda place: place[1])
        return code, index == 1

    def _fake(self, kind, detail=0, **place):
        self._display.xtest_fake_input(kind, detail, **place)
        self._display.sync()

    # Windows

    def windows(self, title, pid=None):
        """The visible ones that the window manager has taken over, the latest last, of which the title holds the regular
        expression; of that program if one is named."""
        return [window for window in self.managed() if self._is_such(window, title, pid)]

    def _is_such(self, number, title, pid):
        window = self._window(number)
        try:
            if window.get_attributes().map_state != X.IsViewable:
                return False
            if pid is not None and list(self._property(window, "_NET_WM_PID") or []) != [pid]:
                return False
            text = self._property(window, "_NET_WM_NAME") or b""
        except error.BadWindow:  # it has just closed
            return False
        return re.search(title, text.decode("utf-8", "replace")) is not None

    def _property(self, window, name):
        answer = window.get_full_property(self._display.intern_atom(name), X.AnyPropertyType)
        return answer.value if answer else None

    def managed(self):
        """All that the window manager has taken over, the latest last."""
        return list(self._property(self._root, "_NET_CLIENT_LIST") or [])

    def active(self):
        """The one that has the keyboard, or None."""
        return next(iter(self._property(self._root, "_NET_ACTIVE_WINDOW") or []), 0) or None

    def geometry(self, window):
        """x, y, width, height without the frame, or None when it has closed."""
        try:
            drawable = self._window(window)
            size = drawable.get_geometry()
            place = self._root.translate_coords(drawable, 0, 0)
        except (error.BadWindow, error.BadDrawable):
            return None
        return place.x, place.y, size.width, size.height

    def activate(self, window):
        self._ask("_NET_ACTIVE_WINDOW", _PAGER, window=self._window(window))

    def move_window(self, window, x, y):
        self._window(window).configure(x=x, y=y)
        self._display.sync()

    def resize(self, window, width, height):
        self._window(window).configure(width=width, height=height)
        self._display.sync()

    def set_desktops(self, number):
        self._ask("_NET_NUMBER_OF_DESKTOPS", number)

    def desktops(self):
        return next(iter(self._property(self._root, "_NET_NUMBER_OF_DESKTOPS") or []), 0)

    def _window(self, number):
        return self._display.create_resource_object("window", number)

    def _ask(self, what, *values, window=None):
        """Of the window manager."""
        data = (32, [*values, *[0] * (5 - len(values))])
        message = event.ClientMessage(window=window or self._root, client_type=self._display.intern_atom(what), data=data)
        self._root.send_event(message, X.SubstructureRedirectMask | X.SubstructureNotifyMask)
        self._display.sync()
