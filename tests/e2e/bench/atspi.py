# SPDX-License-Identifier: MIT
"""Reads a program's widgets over the accessibility bus.

Plain bus calls, each with a limit: a program whose GUI thread is busy answers nothing. Object paths die with their
widgets, so nothing is kept; widgets are searched anew before each use.
"""

import dataclasses
import re

import gi
gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

from .waiting import FACTOR, Gone, until  # noqa: E402

_A11Y = "org.a11y.atspi"
_ACCESSIBLE = "org.a11y.atspi.Accessible"
_PROPERTIES = "org.freedesktop.DBus.Properties"
_ROOT = "/org/a11y/atspi/accessible/root"
_NAME = GLib.Variant("(ss)", (_ACCESSIBLE, "Name"))
_ON_SCREEN = GLib.Variant("(u)", (0,))
_LABELLED_BY = 2
_STATES = {1: "active", 4: "checked", 7: "editable", 8: "enabled", 11: "focusable", 12: "focused", 17: "multi-line",
           20: "pressed", 23: "selected", 24: "sensitive", 25: "showing", 30: "visible", 39: "is-default",
           43: "read-only"}
# Views may hold thousands of rows, each of which would be asked; search them by Node.rows().
_DEEP = {"list", "table", "tree", "tree table"}


class NoReply(Exception):
    """The program did not answer in time."""


class Node:
    """One accessible object; valid as long as its widget is."""

    def __init__(self, tree, path):
        self.tree = tree
        self.path = path

    def __repr__(self):
        try:
            return f"<{self.role()} {self.name()!r}>"
        except (Gone, NoReply):
            return f"<gone {self.path}>"

    def _call(self, interface, method, arguments=None):
        return self.tree.call(self.path, f"{_A11Y}.{interface}", method, arguments)

    def _property(self, interface, name):
        return self.tree.call(self.path, _PROPERTIES, "Get",
                              GLib.Variant("(ss)", (f"{_A11Y}.{interface}", name)))[0]

    def role(self):
        return self._call("Accessible", "GetRoleName")[0]

    def name(self):
        return self._property("Accessible", "Name")

    def description(self):
        return self._property("Accessible", "Description")

    def labels(self):
        """Names of the labels that it is in a relation with."""
        return [Node(self.tree, path).name() for kind, targets in self._call("Accessible", "GetRelationSet")[0]
                if kind == _LABELLED_BY for _, path in targets]

    def states(self):
        return _states(self._call("Accessible", "GetState")[0])

    def children(self):
        return [Node(self.tree, path) for _, path in self._call("Accessible", "GetChildren")[0]]

    def parent(self):
        return Node(self.tree, self._property("Accessible", "Parent")[1])

    def extents(self):
        """(x, y, width, height) on the screen."""
        return tuple(self._call("Component", "GetExtents", _ON_SCREEN)[0])

    def text(self):
        return self._call("Text", "GetText", GLib.Variant("(ii)", (0, -1)))[0]

    def value(self):
        return self._property("Value", "CurrentValue")

    def set_value(self, value):
        """As assistive technology sets it: no press, no key."""
        self.tree.call(self.path, _PROPERTIES, "Set",
                       GLib.Variant("(ssv)", (f"{_A11Y}.Value", "CurrentValue", GLib.Variant("d", value))))

    def minimum(self):
        return self._property("Value", "MinimumValue")

    def maximum(self):
        return self._property("Value", "MaximumValue")

    def press(self):
        """Its first action, whether a user could reach it or not: for desktops without mouse and keyboard."""
        self._call("Action", "DoAction", GLib.Variant("(i)", (0,)))

    def showing(self):
        """Visible with a real size. "showing" alone is also said of what has no size yet."""
        return "showing" in self.states() and min(self.extents()[2:]) > 0

    def enabled(self):
        return "enabled" in self.states()

    def rows(self):
        """Texts of the cells of a list."""
        return [child.name() for child in self.children()]

    def walk(self, deep=False, showing=True):
        """What is seen of all below this node, level by level: by default only what shows, and without the insides of
        views; menus' entries are left to user.entries()."""
        level = [self]
        while level:
            asked = self.tree.call_many([(node.path, _ACCESSIBLE, "GetChildren", None) for node in level])
            children = [path for answer in asked if answer for _, path in answer[0]]
            level = []
            for seen in self.tree.look_at(children):
                if showing and not seen.showing:
                    continue
                yield seen
                if seen.role != "menu bar" and (deep or seen.role not in _DEEP):
                    level.append(seen.node)

    def find_each(self, role=None, name=None, showing=True, where=None, deep=False):
        """Nodes below that match, one by one. `name`: the exact text, a compiled expression or a function."""
        for seen in self.walk(deep, showing):
            try:
                if (role is None or seen.role == role) and matches(name, seen.name) \
                        and (where is None or where(seen.node)):
                    yield seen.node
            except Gone:
                continue

    def find_all(self, *args, **options):
        return list(self.find_each(*args, **options))

    def find(self, *args, **options):
        """The first match, which is one of the highest level, or None. What is below it is not asked."""
        return next(self.find_each(*args, **options), None)

    def wait_find(self, role=None, name=None, limit=10.0, **options):
        return until(lambda: _or_none(self.find, role, name, **options),
                     lambda: f"{role} {name!r} below {self!r}; there is:\n{self.outline()}", limit)

    def outline(self):
        """What is showing below, for messages."""
        lines = [f"    {seen.role} {seen.name!r} {seen.extents}" for seen in self.walk()]
        return "\n".join(lines[:120])


@dataclasses.dataclass
class Seen:
    """What a node was like when it was looked at."""

    node: Node
    role: str
    name: str
    states: set
    extents: tuple

    @property
    def showing(self):
        return "showing" in self.states and min(self.extents[2:]) > 0


def matches(name, actual):
    """Whether a name is the one asked for: a text, a compiled expression or a function; None: any."""
    if name is None:
        return True
    if isinstance(name, re.Pattern):
        return bool(name.search(actual))
    return name(actual) if callable(name) else actual == name


def _states(words):
    low, high = words
    bits = low | high << 32
    return {name for bit, name in _STATES.items() if bits >> bit & 1}


def _or_none(function, *args, **options):
    try:
        return function(*args, **options)
    except (Gone, NoReply):
        return None


class Tree:
    """The accessible objects of the program with this process id."""

    def __init__(self, desktop, pid, limit=1.0):
        self._limit = limit * FACTOR
        self._bus = connect_accessibility(desktop)
        self.pid = pid
        self._owner = None
        # By path, which no later object gets again: what a widget is does not change, its name and state do.
        self._roles = {}
        self.root = None  # the program's own node

    def close(self):
        self._bus.close_sync(None)

    def call(self, path, interface, method, arguments=None, owner=None):
        try:
            return self._bus.call_sync(owner or self._owner, path, interface, method, arguments, None,
                                       Gio.DBusCallFlags.NONE, int(self._limit * 1000), None).unpack()
        except GLib.Error as error:
            remote = Gio.DBusError.get_remote_error(error) or ""
            if "NoReply" in remote or error.matches(Gio.io_error_quark(), Gio.IOErrorEnum.TIMED_OUT):
                raise NoReply(f"{method} on {path}") from error
            raise Gone(f"{method} on {path}: {error.message}") from error

    def registry_answers(self):
        """Whether programs can register; asking starts it."""
        try:
            self.call(_ROOT, f"{_A11Y}.Accessible", "GetChildren", owner="org.a11y.atspi.Registry")
        except (Gone, NoReply):
            return False
        return True

    def wait_root(self, limit=20.0):
        """The program's own node, once it is on the bus."""
        def look():
            try:
                children = self.call(_ROOT, f"{_A11Y}.Accessible", "GetChildren", owner="org.a11y.atspi.Registry")[0]
                for name, path in children:
                    pid = self.call("/org/freedesktop/DBus", "org.freedesktop.DBus", "GetConnectionUnixProcessID",
                                    GLib.Variant("(s)", (name,)), owner="org.freedesktop.DBus")[0]
                    if pid == self.pid:
                        self._owner = name
                        self.root = Node(self, path)
                        return self.root
            except (Gone, NoReply):
                pass
            return None
        return until(look, f"process {self.pid} on the accessibility bus", limit)

    def call_many(self, requests):
        """Answers to many requests (path, interface, method, arguments) that are under way at the same time; None for
        each that failed. One by one, a window of a hundred widgets would take too long."""
        answers = [None] * len(requests)
        pending = len(requests)

        def done(bus, result, number):
            nonlocal pending
            pending -= 1
            try:
                answers[number] = bus.call_finish(result).unpack()
            except GLib.Error:
                pass  # gone or silent: the same as not there

        for number, (path, interface, method, arguments) in enumerate(requests):
            self._bus.call(self._owner, path, interface, method, arguments, None, Gio.DBusCallFlags.NONE,
                           int(self._limit * 1000), None, done, number)
        while pending:
            GLib.MainContext.default().iteration(True)
        return answers

    def look_at(self, paths):
        """What is seen of these objects, without those that are gone."""
        unknown = [path for path in paths if path not in self._roles]
        requests = [(path, _ACCESSIBLE, "GetRoleName", None) for path in unknown]
        for path in paths:
            requests += [(path, _PROPERTIES, "Get", _NAME), (path, _ACCESSIBLE, "GetState", None),
                         (path, f"{_A11Y}.Component", "GetExtents", _ON_SCREEN)]
        answers = self.call_many(requests)
        self._roles.update((path, answer[0]) for path, answer in zip(unknown, answers) if answer)
        for number, path in enumerate(paths):
            first = len(unknown) + 3 * number
            name, state, extents = answers[first:first + 3]
            if path in self._roles and name and state:
                yield Seen(Node(self, path), self._roles[path], name[0], _states(state[0]),
                           tuple(extents[0]) if extents else (0, 0, 0, 0))

    def round_trip(self):
        """One cheap question, answered when the GUI thread has worked off what came before it."""
        until(lambda: _or_none(lambda: Node(self, _ROOT).role()) is not None, "the program answers", 10)


class Listener:
    """Hears what programs tell assistive technology, as a screen reader does. To be made before the program is started:
    that asks once, at its start, what somebody listens to, and later changes reach it when it has time."""

    def __init__(self, desktop, *events):
        """events: names as assistive technology has them, for instance "object:state-changed:showing"."""
        self._bus = connect_accessibility(desktop)
        self._heard = []
        for event in events:
            self._bus.call_sync("org.a11y.atspi.Registry", "/org/a11y/atspi/registry", "org.a11y.atspi.Registry",
                                "RegisterEvent", GLib.Variant("(s)", (event,)), None, Gio.DBusCallFlags.NONE, 10000, None)
        self._bus.signal_subscribe(None, f"{_A11Y}.Event.Object", None, None, None, Gio.DBusSignalFlags.NONE, self._hear)

    def _hear(self, bus, sender, path, interface, member, arguments):
        kind, first = arguments.unpack()[:2]
        self._heard.append((member, kind, first, path))

    def close(self):
        self._bus.close_sync(None)

    def events(self, member, kind):
        """Objects of all events so far, in order, with the first number that came with each."""
        while GLib.MainContext.default().iteration(False):
            pass
        return [(path, first) for heard, of_kind, first, path in self._heard if (heard, of_kind) == (member, kind)]

    def announcements(self, tree):
        """What a screen reader speaks by itself: the labels of notifications, when those begin to show."""
        texts = []
        for path, begins in self.events("StateChanged", "showing"):
            node = Node(tree, path)
            if begins and node.role() == "notification":
                texts.append(" ".join(child.name() for child in node.children()
                                      if child.role() == "label" and "showing" in child.states()))
        return texts


def connect_accessibility(desktop):
    session = connect(desktop.env["DBUS_SESSION_BUS_ADDRESS"])
    # Asking for the address starts the accessibility bus.
    address = session.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None, None,
                                Gio.DBusCallFlags.NONE, 10000, None).unpack()[0]
    session.close_sync(None)
    return connect(address)


def connect(address):
    flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
    connection = Gio.DBusConnection.new_for_address_sync(address, flags, None, None)
    connection.set_exit_on_close(False)
    return connection
