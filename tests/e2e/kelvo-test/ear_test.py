#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""kelvo-test run --ear, on a sound server of the test's own.

Environment besides: GST_REGISTRY."""
import json
import subprocess
import tempfile
import time
import unittest
from pathlib import Path

from program import PATIENCE, ProgramCase
from sound import Sound

MEDIA = """
media:
  one: {sound: timecode, seconds: 8, format: wav}
  two: {sound: timecode, seconds: 8, format: wav}
  tone: {sound: tone, seconds: 8}
playlists: {both: [$one, $two]}
"""


class EarCase(ProgramCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = Path(folder.name)
        cls.sound = Sound(folder.name)
        cls.addClassCleanup(cls.sound.end)

    def environment(self, **changes):
        return super().environment(**{"KELVO_PLUGINS": "gst-renderer", "KELVO_AUDIO_SINK": "pulsesink",
                                      "PULSE_SERVER": self.sound.address, **changes})

    def mixer(self, *arguments):
        return subprocess.run(["pactl", *arguments], env=self.environment(), capture_output=True, text=True, check=True).stdout

    def write(self, steps):
        path = self.folder / "scenario.yaml"
        path.write_text(MEDIA + "steps:\n" + steps, encoding="utf-8")
        return str(path)

    def run_steps(self, steps, *arguments, ear="silence.monitor", **changes):
        return self.run_program("run", self.write(steps), "--on", "KelvoGstRenderer", "--ear", ear, *arguments, **changes)


class Heard(EarCase):
    def test_what_comes_out_is_measured_and_recorded(self):
        recording = self.folder / "run.jsonl"
        done = self.run_steps("""
  - playUri: $two
  - expect: {state: Playing, heard: {item: $two}, speed: 1 ± 1 %, within: 20 s}
  - setKelvoProperty: {volume: 99}
  - expect: {level: {dB: -18 ± 0.5}}
  - wait: 1 s
  - setKelvoProperty: {volume: 50}
  - expect: {level: {dB: -17.8 ± 0.5, against: 99}}
  - setPosition: 5
  - expect: {heard: {item: 2, position: 5.5 s ± 500 ms}}
  - pause
  - expect: {state: Paused, heard: {item: 2, position: 6 s ± 1 s}, silence: {within: 1 s}}
""", "--record", str(recording))
        self.assertEqual(done.code, 0, done.out + done.err)
        self.assertRegex(done.out, r"line \d+: heard item 2, speed (1|1\.\d+|0\.99\d+) \(± 0\.001\)\n")
        self.assertRegex(done.out, r"line \d+: heard -1[78]\.\d\d dB \(± 0.2 dB\)\n")
        self.assertRegex(done.out, r"line \d+: heard item 2, position 5\.\d+ s \(± 20.2 ms\)\n")
        self.assertRegex(done.out, r"heard item 2, position \d\.\d+ s \(± 0.7 ms\), silence after -?\d+\.\d ms \(± 20.5 ms\)\n")
        heard = [event for event in map(json.loads, recording.read_text().splitlines()) if event.get("kind") == "heard"]
        self.assertEqual(heard[0]["name"], "begins")
        self.assertEqual({event["uuid"] for event in heard}, {"kelvo-gst-renderer"})
        self.assertIn("ends", {event["name"] for event in heard})
        ago, item, position, speed, _, doubt = heard[0]["arguments"]
        self.assertGreater(ago, 0)
        self.assertEqual((item, speed, doubt), (2, 1, ""))
        self.assertLess(position, 1)

    def test_what_does_not_come_out_fails(self):
        done = self.run_steps("""
  - playUri: $one
  - expect: {heard: {item: $one}, within: 20 s}
  - expect: {heard: {item: $two}, within: 500 ms}
""")
        self.assertEqual(done.code, 1, done.out + done.err)
        self.assertRegex(done.out, r"expected item 2 heard within 500 ms; at .* s: state Playing, .*heard (is|was) item 1")

    def test_from_one_item_to_the_next(self):
        done = self.run_steps("""
  - assignPlaylist: $both
  - gotoIndex: 0
  - setPosition: 7
  - expect: {heard: {item: 2}, gap: {at most: 2 s}, within: 20 s}
""")
        self.assertEqual(done.code, 0, done.out + done.err)
        self.assertRegex(done.out, r"heard item 2, a gap of \d+\.\d ms \(± 1.0 ms\)|heard item 2, a gap of 0.0 ms \(± 5.2 ms\)")


class Auto(EarCase):
    def test_what_begins_to_play_is_moved_and_heard(self):
        """A player of another process, whose own sink is another one."""
        self.mixer("load-module", "module-null-sink", "sink_name=mine")
        steps = """
  - wait: 1 s
  - playUri: $one
  - expect: {state: Playing, heard: {item: 1}, within: 20 s}
"""
        done = self.run_steps(steps, ear="auto")
        self.assertEqual(done.code, 0, done.out + done.err)
        self.assertNotIn("kelvo_ear", self.mixer("list", "short", "sinks"))
        scenario = self.write("  - expect: {heard: {item: 7, position: 9 s ± 8 s}, within: 20 s}\n")
        process = self.start_program("run", scenario, "--on", "KelvoGstRenderer", "--ear", "auto")
        folder = str(self.folder / "media")
        self.assertEqual(self.run_program("media", folder, "--format", "wav", "--songs", "7", "--seconds", "9").code, 0)
        deadline = time.monotonic() + PATIENCE
        while "kelvo_ear" not in self.mixer("list", "short", "sinks"):
            self.assertLess(time.monotonic(), deadline)
        time.sleep(1)
        player = subprocess.Popen(["paplay", "--device=mine", f"{folder}/song-07.wav"], env=self.environment())
        self.addCleanup(player.wait)
        self.addCleanup(player.kill)
        self.read_until(process, "held: ")


class Card(EarCase):
    """Of our own renderer and of a player of the desktop, both at once, each on a sink of its own."""

    def start_card(self, name, renderer, **changes):
        self.mixer("load-module", "module-null-sink", f"sink_name={name}")
        card = self.folder / name
        return card, self.start_program("conform", "--on", renderer, "--wait", "30s", "--ear", f"{name}.monitor", "--only", "ear",
                                        "--json", f"{card}.json", "--markdown", f"{card}.md", PULSE_SINK=name, **changes)

    def start_player(self, sink):
        """Returns the address of its bus."""
        bus = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address"], stdout=subprocess.PIPE, text=True,
                               env=self.environment())
        self.addCleanup(bus.stdout.close)
        self.addCleanup(self.end, bus)
        address = bus.stdout.readline().strip()
        player = subprocess.Popen(
            ["mpv", "--no-config", "--script=/usr/lib/mpv-mpris/mpris.so", "--ao=pulse", "--vo=null", "--idle=yes", "--no-terminal"],
            env=self.environment(PULSE_SINK=sink, DBUS_SESSION_BUS_ADDRESS=address))
        self.addCleanup(self.end, player)
        return address

    def check(self, card, process):
        output = process.stdout.read()
        self.assertIn(process.wait(PATIENCE), (0, 1), output)
        rows = {row["id"].removeprefix("ear."): row for row in json.loads(Path(f"{card}.json").read_text())["came-out"]}
        bare = rows.pop("bare")
        self.assertEqual(bare["said"], 0)
        self.assertTrue(bare["came-out"] is not None or "comes out" in bare["doubt"], bare)
        self.assertEqual(list(rows), ["start", "item", "position", "level-50", "level-25", "pause", "pause-position",
                                      "pause-at", "seek", "next", "stop"])
        for row in rows.values():
            # What is quieter than the ear can hear is not guessed.
            self.assertTrue(row["came-out"] is not None or row["id"].startswith("level"), row)
        # Where no busy machine has a part in it.
        for name in ("item", "pause-position"):
            self.assertFalse(rows[name]["off"], rows[name])
        self.assertIn("| which item plays | 1 | 1 |", Path(f"{card}.md").read_text())
        return rows

    def test_what_it_says_and_what_came_out(self):
        address = self.start_player("theirs")
        theirs = self.start_card("theirs", "mpris:mpv", KELVO_PLUGINS="mpris", DBUS_SESSION_BUS_ADDRESS=address)
        ours = self.start_card("ours", "KelvoGstRenderer")
        rows = self.check(*ours)
        for name in ("level-50", "level-25"):
            self.assertFalse(rows[name]["off"] or rows[name]["came-out"] is None, rows[name])
        self.check(*theirs)


class NotHeard(EarCase):
    """What cannot be measured has neither held nor failed."""

    def test_a_sound_without_code(self):
        done = self.run_steps("""
  - playUri: $tone
  - expect: {state: Playing, within: 20 s}
  - expect: {heard: {item: $one}, within: 4 s}
""")
        self.assertEqual(done.code, 2, done.out + done.err)
        self.assertRegex(done.out, r"could not run.*\n.*item 1 heard within 4 s could not be measured: its tone has 440 Hz")

    def test_a_device_that_is_not_played_to(self):
        self.mixer("load-module", "module-null-sink", "sink_name=other")
        done = self.run_steps("""
  - playUri: $one
  - expect: {state: Playing}
  - expect: {silence: {within: 1 s}, within: 1 s}
""", ear="other.monitor", PULSE_SINK="silence")
        self.assertEqual(done.code, 2, done.out + done.err)
        self.assertIn("could not be measured: nothing has been heard at all", done.out)

    def test_nobody_listens(self):
        done = self.run_program("run", self.write("  - expect: {heard: {item: 1}}\n"), "--on", "KelvoGstRenderer")
        self.assertEqual(done.code, 77, done.out + done.err)
        self.assertIn("needs an ear: --ear tells where to listen", done.out)

    def test_nothing_to_listen_to(self):
        for ear, server in (("nobody", self.sound.address), ("silence.monitor", "unix:/nonexistent")):
            done = self.run_steps("  - expect: {heard: {item: 1}}\n", ear=ear, PULSE_SERVER=server)
            self.assertEqual(done.code, 2)
            self.assertRegex(done.err, f'(?m)^kelvo-test: nothing can be heard at "{ear}": .+\n')


if __name__ == "__main__":
    unittest.main()
