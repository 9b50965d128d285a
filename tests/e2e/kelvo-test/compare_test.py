#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""kelvo-test compare."""
import unittest

from recordings import PLAYED, RecordingCase


class Compare(RecordingCase):
    def test_the_same(self):
        done = self.run_program("compare", self.record(PLAYED), self.record(PLAYED, "other"))
        self.assertEqual((done.code, done.out, done.err), (0, "No difference.\n", ""))

    def test_differences(self):
        later = [*PLAYED[:-1], (2, "r", "report", "stateChanged", "Playing"), (3, "r", "report", "playbackCompleted")]
        first, second = self.record(PLAYED), self.record(later, "other")
        done = self.run_program("compare", first, second)
        self.assertEqual((done.code, done.err), (1, ""))
        self.assertEqual(done.out.splitlines(), [
            "Speaker: stateChanged(Playing) came 0.500 s later: 0.500 s after playUri(http://h/a), in the second run 1.000 s.",
            "Speaker: playbackCompleted() came only in the second run: 2.000 s after playUri(http://h/a)."])
        done = self.run_program("compare", first, second, "--tolerance", "1s")
        self.assertEqual(len(done.out.splitlines()), 1)

    def test_two_runs(self):
        first = self.record_run("first.jsonl")
        done = self.run_program("compare", first, self.record_run("second.jsonl"))
        self.assertEqual((done.code, done.out), (0, "No difference.\n"), done.out)
        done = self.run_program("compare", first, self.record_run("third.jsonl", KELVO_SIMULATOR="sim-latency=700"))
        self.assertEqual(done.code, 1)
        self.assertRegex(done.out, r"(?m)^Simulator A: stateChanged\(Transitioning\) came 0\.[67]\d+ s later: ")

    def test_wrong_calls(self):
        good = self.record(PLAYED)
        self.check_bad_recordings("compare", good)
        self.check_refusals("compare", [
            ([good], "compare takes two recordings"),
            ([good, good, "--tolerance", "much"], '--tolerance takes a time such as 5s or 250ms, not "much"')])


if __name__ == "__main__":
    unittest.main()
