#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""kelvo-test run --eye, on a display of the test's own.

Environment besides: GST_REGISTRY."""
import json
import os
import subprocess
import tempfile
import unittest
from pathlib import Path

from program import ProgramCase
from sound import Sound

MEDIA = """
media:
  one: {video: timecode, seconds: 8}
  two: {video: timecode, seconds: 8}
"""


class EyeCase(ProgramCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = Path(folder.name)
        read, write = os.pipe()
        server = subprocess.Popen(["Xvfb", "-displayfd", str(write), "-screen", "0", "800x600x24", "-nolisten", "tcp"],
                                  pass_fds=[write], stderr=subprocess.DEVNULL)
        cls.addClassCleanup(server.wait)
        cls.addClassCleanup(server.kill)
        os.close(write)
        with os.fdopen(read) as number:
            cls.display = f":{number.readline().strip()}"

    def environment(self, **changes):
        return super().environment(**{"KELVO_PLUGINS": "gst-renderer", "KELVO_AUDIO_SINK": "fakesink sync=true",
                                      "DISPLAY": self.display, **changes})

    def run_steps(self, steps, eye="auto", ear=None, renderer="KelvoGstRenderer", **changes):
        path = self.folder / "scenario.yaml"
        path.write_text(MEDIA + "steps:\n" + steps, encoding="utf-8")
        where = ["--eye", eye] if eye else []
        where += ["--ear", ear] if ear else []
        return self.run_program("run", str(path), "--on", renderer, *where, **changes)


class Seen(EyeCase):
    def test_what_is_shown_is_measured_and_recorded(self):
        recording = self.folder / "run.jsonl"
        done = self.run_steps("""
  - playUri: $two
  - expect: {state: Playing, seen: {item: $two, position: 4 s ± 4 s}, within: 20 s}
  - pause
  - expect: {state: Paused, seen: {item: 2}, within: 20 s}
  - setPosition: 5
  - expect: {state: Paused, seen: {item: 2, frame: 125 ± 1, position: 5 s ± 40 ms}, within: 20 s}
""", KELVO_RECORD=str(recording))
        self.assertEqual(done.code, 0, done.out + done.err)
        self.assertRegex(done.out, r"line \d+: seen item 2, position \d\.\d+ s \(± \d+\.\d ms\)\n")
        self.assertRegex(done.out, r"line \d+: seen item 2\n")
        self.assertRegex(done.out, r"line \d+: seen item 2, picture 12[456]\.0 \(± 0\.0\), position [45]\.\d+ s \(± 20\.0 ms\)\n")
        seen = [event for event in map(json.loads, recording.read_text().splitlines()) if event.get("kind") == "seen"]
        self.assertEqual({event["uuid"] for event in seen}, {"kelvo-gst-renderer"})
        rests = [event["arguments"] for event in seen if event["name"] == "rests"]
        ago, item, position, _, left_out, doubt = rests[-1]
        self.assertGreater(ago, 0)
        self.assertEqual((item, left_out, doubt), (2, 0, ""))
        self.assertAlmostEqual(position, 5, delta=0.04)
        # Nothing was drawn into a window that had gone.
        self.assertNotIn("X Error", done.err)

    def test_what_is_not_shown_fails(self):
        done = self.run_steps("""
  - playUri: $one
  - expect: {seen: {item: $one}, within: 20 s}
  - expect: {seen: {item: $two}, within: 500 ms}
""", eye="auto")
        self.assertEqual(done.code, 1, done.out + done.err)
        self.assertRegex(done.out, r"expected item 2 seen within 500 ms; at .* s: state Playing, .*seen is item 1")


class WithSound(EyeCase):
    """Beside a sound server of the test's own."""

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.sound = Sound(cls.folder)
        cls.addClassCleanup(cls.sound.end)


class Together(WithSound):
    def run_heard(self, steps):
        return self.run_steps(steps, ear="silence.monitor", KELVO_AUDIO_SINK="pulsesink", PULSE_SERVER=self.sound.address)

    def test_picture_and_sound_are_together(self):
        done = self.run_heard("""
  - playUri: $two
  - expect: {state: Playing, sync: ± 200 ms, within: 20 s}
""")
        self.assertEqual(done.code, 0, done.out + done.err)
        self.assertRegex(done.out, r"line \d+: .*-?\d+\.\d ms \(± \d+\.\d ms\)\n")

    def test_they_are_not_apart(self):
        done = self.run_heard("""
  - playUri: $two
  - expect: {state: Playing, seen: {item: 2}, heard: {item: 2}, within: 20 s}
  - expect: {sync: 2 s ± 200 ms, within: 1 s}
""")
        self.assertEqual(done.code, 1, done.out + done.err)


class Card(WithSound):
    def test_what_it_says_and_what_came_out(self):
        card = self.folder / "card.json"
        done = self.run_program("conform", "--on", "KelvoGstRenderer", "--ear", "silence.monitor", "--eye", "auto", "--only", "eye",
                                "--json", str(card), KELVO_AUDIO_SINK="pulsesink", PULSE_SERVER=self.sound.address)
        self.assertIn(done.code, (0, 1), done.out + done.err)
        rows = {row["id"].removeprefix("eye."): row for row in json.loads(card.read_text(encoding="utf-8"))["came-out"]}
        bare = rows.pop("bare")
        self.assertEqual(bare["said"], 0)
        self.assertTrue(bare["came-out"] is not None or "comes out" in bare["doubt"], bare)
        self.assertEqual(list(rows), ["start", "item", "position", "left-out", "sync", "pause", "pause-position", "pause-at",
                                      "seek", "next", "stop"])
        for row in rows.values():
            self.assertIsNotNone(row["came-out"], row)
        # Where no busy machine has a part in it.
        for name in ("item", "pause-position"):
            self.assertFalse(rows[name]["off"], rows[name])
        self.assertRegex(done.out, r"eye\.sync: by how much the picture is ahead of the sound: said 0\.000 s, came out -?\d\.\d+ s ± ")


class NotSeen(EyeCase):
    """What cannot be measured has neither held nor failed."""

    def test_a_renderer_that_shows_nothing(self):
        done = self.run_steps("  - playUri: $one\n  - expect: {state: Playing, seen: {item: 1}, within: 2 s}\n",
                              renderer="KelvoSimulatorA", KELVO_PLUGINS="simulator")
        self.assertEqual(done.code, 2, done.out + done.err)
        self.assertIn("item 1 seen within 2 s could not be measured: no picture with a mark is there", done.out)

    def test_nobody_looks(self):
        done = self.run_steps("  - expect: {seen: {item: 1}}\n", eye=None)
        self.assertEqual(done.code, 77, done.out + done.err)
        self.assertIn("needs an eye: --eye tells where to look", done.out)
        done = self.run_steps("  - expect: {sync: ± 40 ms}\n")
        self.assertEqual(done.code, 77, done.out + done.err)
        self.assertIn("needs an ear: --ear tells where to listen", done.out)

    def test_nothing_to_look_at(self):
        for eye, display, reason in (
                ("auto", "", "DISPLAY names no X server"), ("auto", ":9999", "there is no X server at :9999"),
                ("0x7777777", self.display, "the window is not there"), ("900,900,10,10", self.display, "it is outside of the screen"),
                ("there", self.display, "it is neither a window's number, nor x,y,width,height, nor \"auto\"")):
            done = self.run_steps("  - expect: {seen: {item: 1}}\n", eye=eye, DISPLAY=display)
            self.assertEqual(done.code, 2, done.out + done.err)
            self.assertIn(f'kelvo-test: nothing can be seen at "{eye}": {reason}\n', done.err)


if __name__ == "__main__":
    unittest.main()
