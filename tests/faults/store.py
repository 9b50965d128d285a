# SPDX-License-Identifier: MIT
"""The disk of the store fills up or fails while songs are played, and when the console starts: what the user heard and
marked is there afterwards."""

import errno

import faults

ONE, TWO, FAVORITE = "Short One", "Short Two", "Short Two"
LISTS = ["Favorites", "mine"]
NOT_WRITTEN = "The tracker store was not updated, and will be later: "
ONLY_READ = "The tracker store can only be read: "
NOT_OPENED = "The tracker store cannot be used: "


def played(times):
    return {ONE: (times, False), TWO: (times, True)}, LISTS


class Store(faults.FaultScenario):
    def fill(self):
        """As if the user had used the console before."""
        self.make_library(["short one.mp3", "short-two.ogg"], "short-two.ogg")
        self.list = self.music / "mine.m3u"
        self.list.write_text("short one.mp3\nshort-two.ogg\n")
        console = self.start_with_library(up=False)
        self.wait_kept(played(0))
        self.end(console)

    def start_with_library(self, *arguments, **options):
        return self.start_with_faults(*arguments, plugins="gst-renderer,tracker-source", env=self.music_environment(),
                                      **options)

    def test_what_is_played_while_nothing_can_be_written(self):
        self.fill()
        console = self.start_with_library(self.list.as_uri())
        self.hear_to_the_end(console)
        self.wait_kept(played(1))
        for times, (name, fault, reason) in enumerate((("enospc", faults.FULL, "disk is full"),
                                                       ("eio", faults.BROKEN, "disk I/O error|Input/output error")), 2):
            console.faults.watch_turns()
            console.faults.begin(fault, self.store)
            mark = console.press("Play")
            console.log.wait_for(f"{NOT_WRITTEN}.*{reason}", mark, 20)
            self.hear_to_the_end(console)
            self.assertGreater(console.faults.end(), 0)
            self.wait_kept(played(times))
            longest = self.assert_smooth(console)
            faults.say(f"fault-{name}", f"2 plays kept, longest turn of the event loop {longest * 1000:.0f} ms")
        self.assertEqual(console.close(), 0)
        self.assert_all_is_there(played(3))

    def assert_all_is_there(self, expected):
        """After another start."""
        console = self.start_with_library(up=False)
        console.log.wait_for("The tracker store is open", limit=20)
        self.wait_kept(expected)
        self.end(console)
        self.assertEqual([path.name for path in self.store.parent.iterdir()], ["tracker"])

    def test_a_start_with_a_failing_disk(self):
        self.fill()
        for fault, reason in ((faults.BROKEN, "Input/output error|disk I/O error"),
                              ((errno.EIO, faults.WRITE | faults.SYNC), "Input/output error|disk I/O error"),
                              ((errno.EIO, faults.READ), "Input/output error|disk I/O error"),
                              (faults.FULL, "is full"), (faults.READ_ONLY, "Read-only file system"),
                              ((errno.EMFILE, faults.OPEN), "Too many open files")):
            with self.subTest(fault):
                console = self.start_with_library(up=False, before=lambda given: given.begin(fault, self.store))
                line = console.log.wait_for(f"{NOT_OPENED}|{ONLY_READ}", limit=30)
                self.assertRegex(console.log.lines[line], reason)
                self.assertGreater(console.faults.end(), 0)
                self.end(console)
                self.assert_all_is_there(played(0))
        faults.say("fault-store-start", "6 ways to fail, the store kept in each")
