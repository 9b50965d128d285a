#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""kelvo-test report."""
import json
import unittest

from recordings import PLAYED, RecordingCase, lines


class Report(RecordingCase):
    def test_a_page_beside_the_recording(self):
        done = self.run_program("report", self.record(PLAYED))
        self.assertEqual((done.code, done.out, done.err), (0, "", ""))
        page = (self.folder / "run.html").read_text(encoding="utf-8")
        self.assertTrue(page.startswith("<!DOCTYPE html>"))
        self.assertIn("<h3>Speaker</h3>", page)
        self.assertTrue(page.endswith("</html>\n"))

    def test_a_page_elsewhere_and_a_trace(self):
        page, trace = self.folder / "page.html", self.folder / "trace.json"
        done = self.run_program("report", self.record(PLAYED), "-o", str(page), "--trace", str(trace))
        self.assertEqual((done.code, done.err), (0, ""))
        self.assertIn("playUri(http://h/a)", page.read_text(encoding="utf-8"))
        names = [event["name"] for event in json.loads(trace.read_text(encoding="utf-8"))["traceEvents"]]
        self.assertIn("Playing", names)

    def test_a_trace_alone(self):
        done = self.run_program("report", self.record(PLAYED), "--trace", str(self.folder / "trace.json"))
        self.assertEqual(done.code, 0)
        self.assertFalse((self.folder / "run.html").exists())

    def test_what_is_wrong_with_a_recording_is_told(self):
        path = self.write(lines(PLAYED) + lines(PLAYED) + '{"time":1,"ki')
        done = self.run_program("report", path)
        self.assertEqual(done.code, 0)
        self.assertEqual(done.err, "kelvo-test: run.jsonl has 2 runs; this is about the last one\n"
                                   "kelvo-test: run.jsonl: 1 lines could not be understood\n")
        self.assertEqual(self.run_program("report", path, "--run", "1").code, 0)
        self.assertIn("this is number 1.", (self.folder / "run.html").read_text(encoding="utf-8"))
        self.check_refusals("report", [([path, "--run", "3"], f"{path} has no run 3: it has 2")])

    def test_what_cannot_be_written(self):
        path = self.record(PLAYED)
        for place in (str(self.folder / "none" / "page.html"), str(self.folder)):
            done = self.run_program("report", path, "-o", place)
            self.assertEqual(done.code, 2)
            self.assertRegex(done.err, f"^kelvo-test: {place} cannot be written: .+\n$")

    def test_wrong_calls(self):
        self.check_bad_recordings("report")
        self.check_refusals("report", [([], "report takes one recording"), (["a", "b"], "report takes one recording")])


if __name__ == "__main__":
    unittest.main()
