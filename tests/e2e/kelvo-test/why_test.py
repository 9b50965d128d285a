#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""kelvo-test why."""
import unittest

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

    def test_one_of_several(self):
        path = self.record([*PLAYED, (2, "q", "appears", "renderer", "Kitchen")])
        for name in ("q", "Kitchen", "kitchen"):
            done = self.run_program("why", path, "--on", name)
            self.assertEqual(done.code, 1)
            self.assertIn("No command to play arrived at Kitchen.\n", done.out)
        self.check_refusals("why", [([path, "--on", "Cellar"], "No renderer Cellar is there.")])

    def test_wrong_calls(self):
        self.check_bad_recordings("why")
        self.check_refusals("why", [([], "why takes one recording")])


if __name__ == "__main__":
    unittest.main()
