#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""kelvo-test scenario."""
import unittest

from recordings import PLAYED, RecordingCase


class Scenario(RecordingCase):
    def test_the_same_again(self):
        done = self.run_program("scenario", self.record(PLAYED))
        self.assertEqual((done.code, done.err), (0, ""))
        self.assertEqual(done.out, 'title: "run"\n'
                                   "media:\n"
                                   '  medium1: {url: "http://h/a"}\n'
                                   "steps:\n"
                                   "  - playUri: $medium1\n"
                                   "  - expect: {state: Playing, within: 3 s}\n"
                                   "  - never: {error: any}\n")

    def test_what_is_made_of_a_run_holds_again(self):
        made = self.run_program("scenario", self.record_run("run.jsonl"))
        self.assertEqual((made.code, made.err), (0, ""))
        again = self.write(made.out, "again.yaml")
        done = self.run_program("run", again, "--on", "KelvoSimulatorB")
        self.assertEqual(done.code, 0, made.out + done.out)
        # On a renderer that does otherwise it shows the difference.
        done = self.run_program("run", again, "--on", "KelvoSimulatorB", KELVO_SIMULATOR="sim-stall=true")
        self.assertEqual(done.code, 1)
        self.assertRegex(done.out, r"again\.yaml:\d+: expected state Paused")

    def test_a_title(self):
        done = self.run_program("scenario", self.record(PLAYED), "--title", 'Plays "it"')
        self.assertTrue(done.out.startswith('title: "Plays \\"it\\""\n'))

    def test_nothing_to_make_it_of(self):
        path = self.record(PLAYED[:2])
        done = self.run_program("scenario", path)
        self.assertEqual((done.code, done.out), (77, ""))
        self.assertEqual(done.err, f"kelvo-test: {path} has no command: there is nothing to make a scenario of\n")

    def test_wrong_calls(self):
        self.check_bad_recordings("scenario")
        self.check_refusals("scenario", [([], "scenario takes one recording")])


if __name__ == "__main__":
    unittest.main()
