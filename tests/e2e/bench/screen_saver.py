# SPDX-License-Identifier: MIT
"""A desktop's screen saver, as a program of its own: prints what it is asked, and who vanishes without giving back."""

import sys

import gi
gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

NAME, PATH = "org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver"
_INTERFACE = Gio.DBusNodeInfo.new_for_xml(f"""<node><interface name="{NAME}">
<method name="Inhibit"><arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="u" direction="out"/></method>
<method name="UnInhibit"><arg type="u" direction="in"/></method></interface></node>""").interfaces[0]


class ScreenSaver:
    def __init__(self, bus):
        self._bus = bus
        self._held = {}  # cookie -> unique name of who has it
        self._last = 0
        bus.register_object(PATH, _INTERFACE, self._take_call, None, None)
        Gio.bus_own_name_on_connection(bus, NAME, Gio.BusNameOwnerFlags.NONE, lambda *_: say("ready"), None)

    def _take_call(self, _bus, sender, _path, _interface, method, arguments, invocation):
        if method == "Inhibit":
            self._last += 1
            self._held[self._last] = sender
            Gio.bus_watch_name_on_connection(self._bus, sender, Gio.BusNameWatcherFlags.NONE, None, self._take_vanished)
            say(f"inhibit {self._last} for {arguments[0]}: {arguments[1]}")
            invocation.return_value(GLib.Variant("(u)", (self._last,)))
        else:
            given = self._held.pop(arguments[0], None)
            say(f"uninhibit {arguments[0]}" + ("" if given == sender else ", which is not its own"))
            invocation.return_value(None)

    def _take_vanished(self, _bus, name):
        for cookie in [cookie for cookie, owner in self._held.items() if owner == name]:
            del self._held[cookie]
            say(f"vanished {cookie}")


def say(text):
    print(text, flush=True)


def start(desktop):
    """Starts it on a desktop; what it says is its log."""
    child = desktop.start(["/usr/bin/python3", "-B", __file__])
    child.log.wait_for("^ready$")
    return child


if __name__ == "__main__":
    SAVER = ScreenSaver(Gio.bus_get_sync(Gio.BusType.SESSION, None))
    sys.exit(GLib.MainLoop().run())
