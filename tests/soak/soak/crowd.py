# SPDX-License-Identifier: MIT
"""Media players of the desktop by the dozen, as one program: each on a connection of its own, and as obedient as can be.

crowd.py COUNT: until it is ended, by SIGTERM politely. Over the media player interface of the session bus each becomes
a renderer of the console. After SIGUSR1 those that play give what they play a new title, of thousands of letters, all
the time; "told" is printed when that is over.
"""

import signal
import sys

import gi
gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

NAME, PATH = "org.mpris.MediaPlayer2", "/org/mpris/MediaPlayer2"
_PLAYER = f"{NAME}.Player"
_INTERFACES = Gio.DBusNodeInfo.new_for_xml(f"""<node><interface name="{NAME}">
<property name="Identity" type="s" access="read"/></interface>
<interface name="{_PLAYER}">
<method name="OpenUri"><arg type="s" direction="in"/></method>
<method name="Play"/><method name="Pause"/><method name="Stop"/><method name="Next"/><method name="Previous"/>
<method name="Seek"><arg type="x" direction="in"/></method>
<method name="SetPosition"><arg type="o" direction="in"/><arg type="x" direction="in"/></method>
<property name="PlaybackStatus" type="s" access="read"/><property name="Metadata" type="a{{sv}}" access="read"/>
<property name="Position" type="x" access="read"/><property name="Volume" type="d" access="readwrite"/>
<property name="Rate" type="d" access="read"/><property name="CanControl" type="b" access="read"/>
<property name="CanPause" type="b" access="read"/><property name="CanPlay" type="b" access="read"/>
<property name="CanSeek" type="b" access="read"/></interface></node>""").interfaces
_STATES = {"OpenUri": "Playing", "Play": "Playing", "Pause": "Paused", "Stop": "Stopped"}
_SECOND = 1_000_000
TITLES, _LETTERS, _PAUSE = 6000, 4000, 4  # of a flood; milliseconds between two


def identity(number):
    """What the player of that number, from 1, is called."""
    return f"Player {number:03}"


class Player:
    def __init__(self, number):
        address = Gio.dbus_address_get_for_bus_sync(Gio.BusType.SESSION, None)
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        self._bus = Gio.DBusConnection.new_for_address_sync(address, flags, None, None)
        self._state, self._uri, self._volume = "Stopped", "", 1.0
        self._title = "Song"
        self._base, self._since = 0, 0
        self._identity = identity(number)
        for interface in _INTERFACES:
            self._bus.register_object(PATH, interface, self._take_call, self._get, self._set)
        Gio.bus_own_name_on_connection(self._bus, f"{NAME}.soak{number}", Gio.BusNameOwnerFlags.NONE, None, None)

    def close(self):
        self._bus.close_sync(None)

    def _position(self):
        moved = GLib.get_monotonic_time() - self._since if self._state == "Playing" else 0
        return self._base + moved

    def _enter(self, state, position):
        self._state, self._base, self._since = state, position, GLib.get_monotonic_time()

    def _take_call(self, _bus, _sender, _path, _interface, method, arguments, invocation):
        position = self._position()
        if method == "OpenUri":
            self._uri, position = arguments[0], 0
        elif method == "SetPosition":
            position = arguments[1]
        elif method == "Seek":
            position += arguments[0]
        elif method == "Stop":
            position = 0
        self._enter(_STATES.get(method, self._state), position)
        invocation.return_value(None)
        self._tell()

    def plays(self):
        return self._state == "Playing"

    def rename(self, title):
        self._title = title
        self._tell()

    def _tell(self):
        self._bus.emit_signal(None, PATH, "org.freedesktop.DBus.Properties", "PropertiesChanged",
                              GLib.Variant("(sa{sv}as)", (_PLAYER, {}, ["PlaybackStatus", "Metadata"])))

    def _metadata(self):
        if not self._uri:
            return {}
        return {"mpris:trackid": GLib.Variant("o", "/track/1"), "xesam:url": GLib.Variant("s", self._uri),
                "mpris:length": GLib.Variant("x", 3600 * _SECOND), "xesam:title": GLib.Variant("s", self._title)}

    def _get(self, _bus, _sender, _path, _interface, name):
        if name == "Metadata":
            return GLib.Variant("a{sv}", self._metadata())
        values = {"Identity": ("s", self._identity), "PlaybackStatus": ("s", self._state),
                  "Position": ("x", self._position()), "Volume": ("d", self._volume), "Rate": ("d", 1.0)}
        return GLib.Variant(*values.get(name, ("b", True)))

    def _set(self, _bus, _sender, _path, _interface, _name, value):
        self._volume = value.unpack()
        return True


class Flood:
    """New titles for all that play."""

    def __init__(self, players):
        self._players = players
        self._left = TITLES
        GLib.timeout_add(_PAUSE, self._tell)

    def _tell(self):
        self._left -= 1
        for player in self._players:
            if player.plays():
                player.rename(f"{self._left:04} ".ljust(_LETTERS, "x") if self._left else "Song")
        if not self._left:
            print("told", flush=True)
        return bool(self._left)


def start(desktop, count):
    """Starts them on a desktop; all have their places there when this returns."""
    child = desktop.start(["/usr/bin/python3", "-B", __file__, count])
    child.log.wait_for("^ready$", limit=30)
    return child


def main(count):
    players = [Player(number) for number in range(1, count + 1)]
    loop = GLib.MainLoop()
    GLib.unix_signal_add(GLib.PRIORITY_DEFAULT, signal.SIGTERM, loop.quit)
    GLib.unix_signal_add(GLib.PRIORITY_DEFAULT, signal.SIGUSR1, lambda: Flood(players) is not None)
    print("ready", flush=True)
    loop.run()
    for player in players:
        player.close()


if __name__ == "__main__":
    sys.exit(main(int(sys.argv[1])))
