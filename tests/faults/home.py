# SPDX-License-Identifier: MIT
"""The disk of the home folder fills up, fails or can only be read while a video plays and is recorded: it plays on,
what could not be written is told once, and the recording has a gap nowhere once the disk takes it."""

import json

import faults
from bench import media
from bench.waiting import until

NO_PICTURE = "The picture cannot be saved: "
NOT_RECORDED = "Nothing is recorded in "


class Home(faults.FaultScenario):
    def setUp(self):
        super().setUp()
        self.recording = self.desktop.folder / "state" / "run.jsonl"

    def pictures(self):
        return sorted((self.desktop.folder / "cache").rglob("pause-*.png"))

    def events(self):
        lines = self.recording.read_text().splitlines()
        return [json.loads(line) for line in lines][1:]

    def pauses(self):
        return sum(event["name"] == "stateChanged" and event["arguments"] == ["Paused"] for event in self.events())

    def pause(self, console):
        mark = console.press("Pause")
        console.wait_button("Resume")
        return mark

    def resume(self, console):
        before = console.position()
        console.press("Resume")
        console.wait_button("Pause")
        console.wait_position(lambda at: at > before, "goes on")

    def test_a_home_that_takes_nothing(self):
        console = self.start_with_faults(media.url("red.mp4"), env={"KELVO_RECORD": str(self.recording)})
        console.wait_button("Pause", 20)
        console.menu("Renderers", "Pause frame")
        self.pause(console)
        until(self.pictures, "a picture is saved")
        self.resume(console)
        paused = 1
        # The recording warns once in all.
        told = 0
        for name, fault, reason in (("enospc-files", faults.FULL, "No space left on device"),
                                    ("eio-files", faults.BROKEN, "Input/output error"),
                                    ("read-only-home", faults.READ_ONLY, "Read-only file system")):
            saved = len(self.pictures())
            console.faults.watch_turns()
            console.faults.begin(fault, self.desktop.folder)
            mark = self.pause(console)
            line = console.log.wait_for(NO_PICTURE, mark)
            self.assertIn(reason, console.log.lines[line])
            self.resume(console)
            if not told:
                console.log.wait_for(NOT_RECORDED + f".*{reason}", mark)
            told = console.log.count(NOT_RECORDED)
            self.assertEqual(told, 1)
            self.assertGreater(console.faults.end(), 0)
            longest = self.assert_smooth(console)
            self.assertEqual(len(self.pictures()), saved)
            paused += 1
            until(lambda: self.pauses() == paused, lambda: f"{paused} pauses are recorded; there are {self.pauses()}")
            self.assertEqual([event for event in self.events() if event["name"] == "lost"], [])
            # And pictures are saved again.
            self.pause(console)
            until(lambda: len(self.pictures()) == saved + 1, "a picture is saved again")
            self.resume(console)
            paused += 1
            faults.say(f"fault-{name}", f"plays on, nothing lost of the recording, longest turn of the event loop "
                       f"{longest * 1000:.0f} ms")
        self.assertEqual(console.close(), 0)
        self.assertEqual(self.events()[-1]["name"], "ended")
