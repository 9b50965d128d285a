# SPDX-License-Identifier: MIT
"""The clock of the day is put forward and back by an hour while songs and a video play: nothing that lasts is measured
by it."""

import json

import faults
from bench import media
from bench.waiting import until

HOUR = 3600
# As VideoFrameStore keeps them.
KEPT_PICTURES = 20


class Clock(faults.FaultScenario):
    def watch(self, console, seconds=2):
        """The position goes on as before, for so many seconds."""
        console.faults.watch_turns()
        before = console.position()
        console.wait_position(lambda at: at >= before + seconds, f"goes on by {seconds} s", 6)
        self.assertLess(console.position() - before, seconds + 4, console.log.tail())
        return self.assert_smooth(console)

    def heard(self):
        """Titles in the order in which the store has them as played."""
        with faults.music_of(self.store) as data:
            return [title for title, in data.execute(
                'SELECT "nie:title" FROM "nie:InformationElement" WHERE "nie:usageCounter" > 0 '
                'ORDER BY "nie:contentAccessed"')]

    def test_songs(self):
        self.make_library(["first.mp3", "second.ogg", "third.mp3"], "third.mp3")
        songs = self.music / "mine.m3u"
        songs.write_text("first.mp3\nsecond.ogg\nthird.mp3\n")
        recording = self.desktop.folder / "run.jsonl"
        console = self.start_with_faults(plugins="gst-renderer,tracker-source", up=False,
                                         env=self.music_environment())
        self.wait_kept(({f"{name} Tone": (0, name == "Third") for name in ("First", "Second", "Third")},
                        ["Favorites", "mine"]))
        self.end(console)
        console = self.start_with_faults(songs.as_uri(), plugins="gst-renderer,tracker-source",
                                         env={**self.music_environment(), "KELVO_RECORD": str(recording)})
        longest = 0
        # Each song plays for eight seconds and counts after four: the clock jumps before and after that.
        for title, offset in (("First Tone", HOUR), ("Second Tone", 0), ("Third Tone", -HOUR)):
            until(lambda: f"title: {title}" in console.metadata(), f"{title} plays", 15)
            console.faults.set_clock(offset)
            # What has played is added up, and what is left reckoned anew.
            console.press("Pause")
            console.wait_button("Resume")
            console.press("Resume")
            console.wait_button("Pause")
            longest = max(longest, self.watch(console))
        self.wait_kept(({f"{name} Tone": (1, name == "Third") for name in ("First", "Second", "Third")},
                        ["Favorites", "mine"]))
        self.assertEqual(self.heard(), ["First Tone", "Second Tone", "Third Tone"])
        times = [json.loads(line)["time"] for line in recording.read_text().splitlines()[1:]]
        self.assertEqual(times, sorted(times))
        self.assertLess(times[-1], HOUR)
        faults.say("fault-clock", f"an hour both ways, 3 plays counted in their order, longest turn of the event loop "
                   f"{longest * 1000:.0f} ms")
        self.hear_to_the_end(console)

    def test_the_picture_of_a_pause_is_kept_among_newer_ones(self):
        folder = self.desktop.folder / "cache" / "kelvo" / "pause-frames"
        folder.mkdir(parents=True)
        for number in range(KEPT_PICTURES):
            (folder / f"pause-29990101-000000-{number:03}-1-1.png").write_bytes(b"of a time to come")
        console = self.start_with_faults(media.url("red.mp4"), up=True)
        console.wait_button("Pause", 20)
        console.menu("Renderers", "Pause frame")
        console.press("Pause")
        console.wait_button("Resume")
        until(lambda: any(line.startswith("pause-frame: ") for line in console.metadata()), "the picture is reported")
        self.assertEqual(len(list(folder.glob("pause-2999*"))), KEPT_PICTURES - 1)
        self.assertEqual(len(list(folder.iterdir())), KEPT_PICTURES)
