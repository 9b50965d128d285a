# SPDX-License-Identifier: MIT
"""What the tests of failing resources share: a console whose system fails as told (FaultPreload.cpp), a library of
music with what its user made of it, and the time for which the GUI thread kept its event loop waiting."""

import contextlib
import errno
import mmap
import os
import re
import shutil
import signal
import sqlite3
import struct
import time
from pathlib import Path

from bench import media
from bench.scenario import Scenario
from bench.waiting import FACTOR, until

# As in FaultPage.h.
READ, WRITE, SYNC, OPEN, OPEN_TO_WRITE, CREATE, RENAME, REMOVE, DESCRIPTOR, THREAD = (1 << bit for bit in range(10))
_PROCESS, _ERROR, _OPERATIONS, _FAILURES, _CLOCK, _TURNS, _LONGEST, _BUSY, _RAN, _PATH = 0, 4, 8, 12, 16, 24, 32, 40, 48, 56
_SIZE = 1016

FULL = errno.ENOSPC, WRITE | CREATE
BROKEN = errno.EIO, READ | WRITE | SYNC | OPEN
NONE_LEFT = errno.EMFILE, DESCRIPTOR
NO_THREAD = errno.EAGAIN, THREAD
READ_ONLY = errno.EROFS, WRITE | OPEN_TO_WRITE | CREATE | RENAME | REMOVE

# Libraries report what the system refuses them as errors of the program: that of the store, and GStreamer.
_COMPLAINT = re.compile(r"Tracker-CRITICAL \*\*: |gst_poll_get_read_gpollfd: assertion 'set != NULL' failed")

# For how long the GUI thread may be busy with anything, in seconds.
LONGEST_TURN = 0.1 * FACTOR


class Faults:
    """What fails in one console."""

    def __init__(self, path):
        self.path = path
        path.write_bytes(bytes(_SIZE))
        with path.open("r+b") as file:
            self._page = mmap.mmap(file.fileno(), _SIZE)

    def environment(self):
        return {"LD_PRELOAD": os.environ["KELVO_FAULT_PRELOAD"], "KELVO_FAULT_PAGE": str(self.path),
                "ASAN_OPTIONS": "detect_leaks=0:verify_asan_link_order=0"}

    def _get(self, kind, place):
        return struct.unpack_from(kind, self._page, place)[0]

    def _set(self, kind, place, value):
        struct.pack_into(kind, self._page, place, value)

    def begin(self, fault, below):
        """From now on it fails on all paths that begin with that one."""
        error, operations = fault
        text = os.fsencode(below)
        self._page[_PATH:_PATH + len(text) + 1] = text + b"\0"
        self._set("I", _FAILURES, 0)
        self._set("I", _OPERATIONS, operations)
        self._set("i", _ERROR, error)

    def end(self):
        """Nothing fails any more. Returns how often something has."""
        self._set("i", _ERROR, 0)
        return self.count()

    def count(self):
        return self._get("I", _FAILURES)

    def set_clock(self, seconds):
        """The clock of the day differs by that from the real one."""
        self._set("q", _CLOCK, seconds)

    # The GUI thread

    def turns(self):
        return self._get("Q", _TURNS)

    def watch_turns(self):
        self._set("Q", _LONGEST, 0)

    def longest_turn(self):
        """Seconds for which the event loop waited for one turn since watch_turns(), the one under way included."""
        since = self._get("Q", _BUSY)
        under_way = time.monotonic() - since / 1e9 if since else 0
        longest = self._get("Q", _LONGEST) / 1e9
        # Other programs may have had the processor meanwhile: only a turn that has ended is known exactly.
        return max(longest, under_way) if under_way > 10 * LONGEST_TURN else longest

    def ran_in_longest_turn(self):
        """Seconds of it for which it had the processor. The others it waited: for a server, a lock or the disk."""
        return self._get("Q", _RAN) / 1e9


def say(promise, figure):
    """For docs/reliability.md."""
    print(f"reliability: {promise}: {figure}", flush=True)


class FaultScenario(Scenario):
    def setUp(self):
        super().setUp()
        self.music = self.desktop.home / "Music"
        self.store = self.desktop.folder / "data" / "kelvo" / "tracker"
        self.keep_fonts()

    def keep_fonts(self):
        """Fontconfig notes for everybody what fonts it has found: none, where files cannot be opened or mapped."""
        config = self.desktop.folder / "fonts.conf"
        config.write_text("<fontconfig><include>/etc/fonts/conf.d</include><dir>/usr/share/fonts</dir>"
                          f"<cachedir>{self.desktop.folder}/font-cache</cachedir></fontconfig>\n")
        self.desktop.env["FONTCONFIG_FILE"] = str(config)

    def start_with_faults(self, *arguments, plugins="gst-renderer", env=None, before=None, up=True):
        """before: called with the faults before the program starts."""
        faults = Faults(self.desktop.folder / f"faults-{len(self.consoles)}")
        if before:
            before(faults)
        console = self.start(*arguments, up=up, env={**faults.environment(), "KELVO_PLUGINS": plugins, **(env or {})})
        console.faults = faults
        return console

    def tearDown(self):
        for console in self.consoles:
            if console.user is None and console.process.poll() is None and not self.failed:
                self.end(console)
        super().tearDown()

    def end(self, console, limit=10):
        """As the end of a desktop does, and without a look at the screen."""
        console.process.send_signal(signal.SIGTERM)
        self.assertEqual(console.wait_exit(limit), 0, console.log.tail())

    def assert_healthy(self, console):
        console.log.lines = [line for line in console.log.lines if not _COMPLAINT.search(line)]
        super().assert_healthy(console)

    def assert_smooth(self, console, wait=0):
        """No turn of the event loop took too long since watch_turns(), beside a wait of so many seconds."""
        self.assertGreater(console.faults.turns(), 10)
        self.assertLess(console.faults.longest_turn(), LONGEST_TURN + wait,
                        f"{console.faults.ran_in_longest_turn()} s of it with the processor\n{console.log.tail()}")
        return console.faults.longest_turn()

    def hear_to_the_end(self, console):
        """Until the end of the list is announced, which the user confirms."""
        box = console.dialog("alert message", limit=20)
        console.user.click(box.wait_find("push button", "OK"), wait=False)
        until(lambda: not console.root().find("alert message"), "the message box closes")

    # A library

    def make_library(self, names, favorite):
        """One of the songs is a favourite, by a playlist file."""
        self.music.mkdir()
        for name in names:
            shutil.copy(media.folder() / name, self.music / name)
        (self.music / "Favorites.m3u").write_text(f"{favorite}\n")

    def music_environment(self):
        return {"KELVO_MEDIA_DIRS": str(self.music)}

    def kept(self):
        """What the store holds on disk: {title: (plays, favourite)} and the names of its playlists."""
        return kept_in(self.store)

    def wait_kept(self, expected, limit=30):
        until(lambda: _or_none(self.kept) == expected,
              lambda: f"kept {expected}; there is {_or_none(self.kept)}\n{self.consoles[-1].log.tail()}", limit)


def _or_none(function):
    try:
        return function()
    except sqlite3.OperationalError as error:
        if re.search("unable to open|no such table", str(error)):
            return None  # it is being made
        raise


@contextlib.contextmanager
def music_of(store):
    """The database of the songs and playlists, to be read."""
    path = store / "urn%3Akelvo%3Amusic.db"
    with contextlib.closing(sqlite3.connect(f"{path.as_uri()}?mode=ro", uri=True)) as data:
        # Its views name what only the store's own library knows, and would be refused.
        data.execute("PRAGMA writable_schema = ON")
        yield data


def kept_in(store):
    with music_of(store) as data:
        songs = data.execute('SELECT e."nie:title", "nie:usageCounter", m.ID FROM "nmm:MusicPiece" m '
                             'JOIN "nie:InformationElement" e ON e.ID = m.ID').fetchall()
        favorites = {song for song, in data.execute('SELECT ID FROM "rdfs:Resource_nao:hasTag"')}
        lists = [title for title, in data.execute('SELECT e."nie:title" FROM "nmm:Playlist" l '
                                                  'JOIN "nie:InformationElement" e ON e.ID = l.ID')]
    return {title: (plays, song in favorites) for title, plays, song in songs}, sorted(lists)
