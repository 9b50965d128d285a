#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""kelvo-test itself, and "kelvo-test list"."""
import json
import time
import unittest

from program import ProgramCase


class Program(ProgramCase):
    def test_without_a_verb_it_tells_of_all(self):
        done = self.run_program()
        self.assertEqual((done.code, done.out), (2, ""))
        self.assertRegex(done.err, r"(?m)^  list +shows ")
        self.assertRegex(done.err, r"(?m)^  play +plays ")

    def test_help_is_no_fault(self):
        for words in (["--help"], ["help"], ["-h"]):
            done = self.run_program(*words)
            self.assertEqual((done.code, done.err), (0, ""))
            self.assertIn("Verbs:", done.out)

    def test_each_verb_has_help_with_an_example(self):
        verbs = [line.split()[0] for line in self.run_program("--help").out.splitlines() if line.startswith("  ")]
        self.assertGreaterEqual(len(verbs), 2)
        for verb in verbs:
            for words in ([verb, "--help"], ["help", verb]):
                done = self.run_program(*words)
                self.assertEqual((done.code, done.err), (0, ""))
                self.assertRegex(done.out, rf"^Usage: kelvo-test {verb} ")
                self.assertRegex(done.out, rf"(?s)\nExamples?:\n.*kelvo-test {verb}")
                self.assertLessEqual(max(map(len, done.out.splitlines())), 120)

    def test_a_misspelt_verb(self):
        done = self.run_program("lst")
        self.assertEqual((done.code, done.out), (2, ""))
        self.assertEqual(done.err, 'kelvo-test: there is no verb "lst"; did you mean "list"?\n')
        self.assertIn("; there are: list, play", self.run_program("help", "quux").err)

    def test_version(self):
        self.assertRegex(self.run_program("--version").out, r"^kelvo-test \d+\.\d+\.\d+\n$")


class List(ProgramCase):
    def test_lines(self):
        done = self.run_program("list", "--wait", "1s")
        self.assertEqual(done.code, 0)
        self.assertRegex(done.out, r"(?m)^Renderers:\n  KelvoSimulatorA +Simulator A\n  KelvoSimulatorB +Simulator B\n"
                                   r"  KelvoSimulatorUnnamed +\(no name\)\n"
                                   r"Sources:\n  KelvoSimulatorSourceA +Simulated source A\n")
        self.assertRegex(done.out, r"(?m)^Back ends:\n(  .*\n)*  simulator.so +running\n")

    def test_json(self):
        found = json.loads(self.run_program("list", "--json", "--wait", "1s").out)
        self.assertEqual(sorted(found), ["playlists", "plug-ins", "renderers", "sources"])
        self.assertIn({"uuid": "KelvoSimulatorA", "name": "Simulator A"}, found["renderers"])
        states = {plugin["file"]: plugin["state"] for plugin in found["plug-ins"]}
        self.assertEqual(states["simulator.so"], "running")

    def test_a_back_end_that_is_not_there(self):
        done = self.run_program("list", "--json", "--wait", "1s", KELVO_PLUGINS="simulator,nothing-such")
        (missing,) = [plugin for plugin in json.loads(done.out)["plug-ins"] if plugin["file"] == "nothing-such.so"]
        self.assertEqual(done.code, 0)
        self.assertTrue(missing["error"])

    def test_nothing_at_all(self):
        done = self.run_program("list", "--wait", "100ms", KELVO_PLUGINS="")
        self.assertEqual(done.code, 0)
        self.assertIn("Renderers: none\nSources: none\nPlaylists: none\n", done.out)

    def test_hostile_names_stay_text(self):
        name = "sim-name=\x1b[2J\u202egnp\u200b<script>"
        done = self.run_program("list", "--wait", "1s", KELVO_SIMULATOR=name)
        self.assertIn("\\u001b[2J\\u202egnp\\u200b<script>", done.out)
        self.assertNotIn("\x1b", done.out)

    def test_wrong_calls(self):
        for words, message in ((["--wait", "soon"], '--wait takes a time such as 5s or 250ms, not "soon"'),
                               (["--wait"], "Missing value after '--wait'."),
                               (["--jsn"], "Unknown option 'jsn'."), (["there"], "list takes no arguments")):
            done = self.run_program("list", *words)
            self.assertEqual((done.code, done.out, done.err), (2, "", f"kelvo-test: {message}\n"))

    def test_an_interruption_shows_what_was_found(self):
        process = self.start_program("list", "--wait", "1 min")
        # What it has found it tells at its end only.
        time.sleep(2)
        code, seconds = self.interrupt(process)
        self.assertEqual(code, 0)
        self.assertLess(seconds, 5)
        self.assertIn("Simulator A", process.stdout.read())


if __name__ == "__main__":
    unittest.main()
