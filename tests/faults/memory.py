# SPDX-License-Identifier: MIT
"""There is no more memory to be had. Not for the sanitizers' build, whose memory is reserved at the start."""

import os
import re
import resource
import time
from pathlib import Path

import faults
from bench import media, process
from bench.waiting import TimedOut, until

TITLES = ("First Tone", "Second Tone", "Third Tone")
LISTS = ["Favorites", "mine"]
# Parts of the address space that a console takes: whatever the start does fails at one of them, not always at the same.
TOO_LITTLE = (0.2, 0.25, 0.3, 0.4, 0.5, 0.6, 0.8)
SAYS_WHY = re.compile("allocate memory|Thread creation error|failed to m?map|bad_alloc|has crashed|Could not load")
# What the toolkit says of a window for which it has found no memory.
NOT_DRAWN = re.compile("^Q(Painter|Widget|BackingStore|Image|Pixmap)::")


def played(*plays):
    return {title: (count, title == "Third Tone") for title, count in zip(TITLES, plays)}, LISTS


class Memory(faults.FaultScenario):
    def fill(self):
        self.make_library(["first.mp3", "second.ogg", "third.mp3"], "third.mp3")
        self.list = self.music / "mine.m3u"
        self.list.write_text("first.mp3\nsecond.ogg\nthird.mp3\n")
        console = self.start_with_library(up=False)
        self.wait_kept(played(0, 0, 0))
        self.taken = self.memory_of(console, "VmPeak")
        self.end(console)

    def start_with_library(self, *arguments, **options):
        return self.start_with_faults(*arguments, plugins="gst-renderer,tracker-source", env=self.music_environment(),
                                      **options)

    def assert_all_is_there(self, expected):
        console = self.start_with_library(up=False)
        console.log.wait_for("The tracker store is open", limit=20)
        self.wait_kept(expected)
        self.end(console)
        self.assertEqual([path.name for path in self.store.parent.iterdir()], ["tracker"])

    def limit(self, console, size):
        resource.prlimit(console.process.pid, resource.RLIMIT_AS, (size, resource.RLIM_INFINITY))

    def memory_of(self, console, name):
        """In bytes: "VmSize" is its address space, "VmPeak" the largest that it ever was."""
        status = Path(f"/proc/{console.process.pid}/status").read_text()
        return 1024 * int(re.search(rf"{name}:\s+(\d+)", status)[1])

    def test_no_more_in_mid_run(self):
        self.fill()
        console = self.start_with_library(self.list.as_uri())
        console.wait_button("Pause", 20)
        console.wait_position(lambda at: at >= 1, "has begun to move")
        console.faults.watch_turns()
        self.limit(console, self.memory_of(console, "VmSize"))
        self.wait_kept(played(1, 0, 0))
        console.wait_position(lambda at: at >= 5, "goes on")
        longest = self.assert_smooth(console)
        # The toolkit cannot draw a window without memory, and may end the program.
        self.desktop.x11.resize(console.user.window(), 1200, 780)
        outcome = self.outcome_of(console)
        self.assert_all_is_there(played(1, 0, 0))
        faults.say("fault-memory", f"the song counted, longest turn of the event loop {longest * 1000:.0f} ms; "
                   f"made larger it {outcome}")

    def outcome_of(self, console):
        """Whether it could draw the larger window, or has ended with all that is known of it."""
        try:
            until(lambda: console.process.poll() is not None, "it ends", 1)
        except TimedOut:
            self.limit(console, resource.RLIM_INFINITY)
            self.end(console)
            console.log.lines = [line for line in console.log.lines if not NOT_DRAWN.match(line)]
            return "goes on"
        console.log.wait_for("has crashed, what is known of it is in ")
        folder = Path(console.log.lines[-1].rpartition(" is in ")[2])
        self.assertIn("stateChanged", (folder / "recording.jsonl").read_text())
        console.log.lines.clear()  # the toolkit's last words
        return "ends, and leaves its evidence"

    def test_a_start_with_too_little(self):
        self.fill()
        ended = 0
        for part in TOO_LITTLE:
            with self.subTest(part=part):
                child = self.desktop.start(
                    ["sh", "-c", 'ulimit -v "$0"; exec "$@"', int(part * self.taken / 1024), os.environ["KELVO_E2E_PROGRAM"]],
                    {**self.desktop.env, **self.music_environment(), "KELVO_PLUGINS": "tracker-source,gst-renderer",
                     "GST_REGISTRY_1_0": str(media.folder() / media.REGISTRY)})
                # It ends, or goes on with what it got: until then it has opened its store, or tried to.
                end = time.monotonic() + 2.5
                while child.poll() is None and time.monotonic() < end:
                    time.sleep(0.1)
                has_ended = child.poll() is not None
                ended += has_ended
                process.end(child)
                child.log.finish()
                if has_ended:
                    self.assertRegex(child.log.text(), SAYS_WHY)
        self.assertGreater(ended, 0)
        self.assert_all_is_there(played(0, 0, 0))
        faults.say("fault-memory-start", f"{len(TOO_LITTLE)} limits, {ended} of which ended it with the reason told, "
                   "the store kept in each")
