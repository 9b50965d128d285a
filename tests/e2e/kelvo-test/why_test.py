#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""kelvo-test why."""
import re
import signal
import time
import unittest

from program import PATIENCE
from recordings import PLAYED, RecordingCase


class Why(RecordingCase):
    def test_a_reason_and_what_shows_it(self):
        buffering = [*PLAYED[:-1], (2, "r", "report", "bufferingInfo", 0.4), (10, "", "note", "ended")]
        done = self.run_program("why", self.record(buffering))
        self.assertEqual((done.code, done.err), (1, ""))
        self.assertEqual(done.out.splitlines(), [
            "Speaker is buffering at 40 % for 8.000 s.",
            "     1.000  playUri(http://h/a)",
            "     1.100  stateChanged(Transitioning)",
            "     2.000  bufferingInfo(0.4)"])

    def test_no_reason(self):
        done = self.run_program("why", self.record(PLAYED))
        self.assertEqual((done.code, done.err), (0, ""))
        self.assertRegex(done.out, "^Nothing keeps Speaker silent")

    def test_one_without_a_name_beside_it(self):
        done = self.run_program("why", self.record([*PLAYED, (2, "q", "appears", "renderer", "")]))
        self.assertRegex(done.out, "^Nothing keeps Speaker silent")

    def test_one_of_several(self):
        path = self.record([*PLAYED, (2, "q", "appears", "renderer", "Kitchen")])
        for name in ("q", "Kitchen", "kitchen"):
            done = self.run_program("why", path, "--on", name)
            self.assertEqual(done.code, 1)
            self.assertIn("No command to play arrived at Kitchen.\n", done.out)
        self.check_refusals("why", [([path, "--on", "Cellar"], "No renderer Cellar is there.")])

    def test_now(self):
        done = self.run_program("why", "--on", "KelvoSimulatorA", "--for", "500ms")
        self.assertEqual(done.code, 1)
        self.assertEqual(done.out.splitlines()[0], "No command to play arrived at Simulator A.")
        self.assertRegex(done.out, r"(?m)^ +\d\.\d{3}  stateChanged\(Stopped\)$")

    def test_a_device_that_does_not_answer_now(self):
        done = self.run_program("why", "--on", "KelvoSimulatorA", KELVO_SIMULATOR="sim-latency=600000")
        self.assertEqual(done.code, 1)
        self.assertRegex(done.out, r"^Simulator A does not answer: \w+\(\w*\) was asked at ")

    def test_wrong_calls(self):
        self.check_bad_recordings("why")
        usage = "why takes one recording, or a renderer that is there: --on NAME"
        self.check_refusals("why", [
            ([], usage), (["a", "b"], usage),
            (["--on", "KelvoSimulatorA", "--for", "long"], '--for takes a time such as 5s or 250ms, not "long"')])
        done = self.run_program("why", "--on", "Nobody", "--wait", "100ms")
        self.assertEqual((done.code, done.out), (2, ""))
        self.assertIn('There is no renderer "Nobody"', done.err)


class Faults(RecordingCase):
    """What a tester does with a renderer that is silent: takes the evidence while it is, and asks why."""

    SONG = "media: {song: {sound: tone, seconds: 60}}\n"
    PLAYING = "steps:\n  - playUri: $song\n  - expect: {state: Playing}\n"

    def bundle_of(self, process):
        """The recording in the newest evidence of a process, which is asked for it now."""
        before = set(self.evidence.glob("*"))
        process.send_signal(signal.SIGUSR1)
        self.wait_until(lambda: set(self.evidence.glob("*/recording.jsonl")) - {b / "recording.jsonl" for b in before})
        (bundle,) = set(self.evidence.glob("*")) - before
        return bundle / "recording.jsonl"

    def wait_until(self, condition):
        deadline = time.monotonic() + PATIENCE
        while not condition():
            self.assertLess(time.monotonic(), deadline, "it does not come")
            time.sleep(0.05)

    def check(self, scenario, sentence, renderer="KelvoSimulatorA", **changes):
        """Runs the scenario until what is said of it fits."""
        self.evidence = self.folder / "evidence"
        record = self.folder / "run.jsonl"
        process = self.start_program("run", self.write(scenario, "scenario.yaml"), "--on", renderer, "--wait", "20s",
                                     "--record", str(record), KELVO_EVIDENCE_DIR=str(self.evidence), **changes)
        # From then on it can be asked.
        self.wait_until(lambda: record.exists() and '"appears"' in record.read_text(encoding="utf-8"))
        said = []

        def fits():
            said[:] = [self.run_program("why", str(self.bundle_of(process)), "--on", renderer)]
            return re.search(sentence, said[0].out)
        try:
            self.wait_until(fits)
        except AssertionError:
            self.fail(f"{sentence!r} is not said, but {said[0].out!r}{said[0].err!r}")
        self.assertEqual(said[0].code, 1)

    def test_no_command(self):
        self.check("steps: [wait: 10 min]\n", r"^No command to play arrived at Simulator A\.\n")

    def test_nothing_to_play(self):
        self.check("steps: [play, wait: 10 min]\n", r"^Simulator A has nothing to play: error 305.* at \d+\.\d+ s\.\n")

    def test_buffering(self):
        self.check(self.SONG + "steps:\n  - playUri: $song\n  - wait: 10 min\n",
                   r"^Simulator A is buffering at [1-9]\d % for \d+\.\d+ s\.\n", KELVO_SIMULATOR="sim-buffering=20000")

    def test_still_transitioning(self):
        self.check("media: {song: {sound: tone, fault: {delay: 5 min}}}\nsteps:\n  - playUri: $song\n  - wait: 10 min\n",
                   r"^Told to play at \d+\.\d+ s, KelvoGstRenderer is still Transitioning since \d+\.\d+ s, for ",
                   "kelvo-gst-renderer", KELVO_PLUGINS="gst-renderer")

    def test_the_clock_stands(self):
        self.check(self.SONG + self.PLAYING + "  - expect: {position: 30 s, within: 10 min}\n",
                   r"^Simulator A says Playing, but its clock stands at 0\.000 s since \d+\.\d+ s\.\n",
                   KELVO_SIMULATOR="sim-stall=true")

    def test_volume_0(self):
        self.check(self.SONG + self.PLAYING + "  - setKelvoProperty: {volume: 0}\n  - wait: 10 min\n",
                   r"^Simulator A plays, but its volume is 0 since \d+\.\d+ s\.\n")

    def test_a_policy(self):
        self.check(self.SONG + self.PLAYING + "  - setKelvoProperty: {policy-override: true}\n  - wait: 10 min\n",
                   r"^Simulator A is overridden by a policy outside of the program since \d+\.\d+ s\.\n")

    def test_no_answer(self):
        self.check(self.SONG + "steps:\n  - playUri: $song\n  - wait: 10 min\n", r"^Simulator A does not answer: ",
                   KELVO_SIMULATOR="sim-latency=600000")


if __name__ == "__main__":
    unittest.main()
