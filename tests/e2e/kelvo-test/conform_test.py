#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""kelvo-test conform"""
import json
import os
import pathlib
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree

from program import PATIENCE, ProgramCase


class Conform(ProgramCase):
    def conform(self, *arguments, **changes):
        return self.run_program("conform", "--on", "KelvoSimulatorA", *arguments, **changes)

    def test_what_holds(self):
        done = self.conform("--only", "seek.*")
        self.assertEqual((done.code, done.out), (0, "Simulator A: 19 holds\n"))

    def test_what_does_not_hold(self):
        done = self.conform("--only", "seek.position-follows", KELVO_SIMULATOR="sim-stall=true")
        self.assertEqual(done.code, 1)
        self.assertIn("seek.position-follows: The position follows", done.out)
        self.assertIn("    expected: position() == 2\n    came: not within 12 s; the last position was 0\n", done.out)
        self.assertIn(" s  Playing\n", done.out)

    def test_cards(self):
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            files = {option: folder / f"card.{option}" for option in ("html", "json", "markdown", "junit")}
            options = [word for option, file in files.items() for word in (f"--{option}", str(file))]
            self.assertEqual(self.conform("--only", "state.p*", *options).code, 0)
            card = json.loads(files["json"].read_text())
            self.assertEqual(card["renderer"]["uuid"], "KelvoSimulatorA")
            self.assertEqual(card["renderer"]["back-end"], "simulator.so")
            self.assertEqual(card["counts"]["holds"], len(card["results"]))
            suite = xml.etree.ElementTree.parse(files["junit"]).getroot().find("testsuite")
            self.assertEqual((suite.get("name"), suite.get("tests")), ("Simulator A.state", str(len(card["results"]))))
            self.assertIn("Simulator A", files["html"].read_text())
            self.assertTrue(files["markdown"].read_text().startswith("# Simulator A\n"))

    def test_faults_for_a_ci_system(self):
        with tempfile.TemporaryDirectory() as folder:
            file = os.path.join(folder, "card.xml")
            done = self.conform("--only", "seek.*", "--junit", file, KELVO_SIMULATOR="sim-stall=true")
            self.assertEqual(done.code, 1)
            subprocess.run(["xmllint", "--noout", "--schema", os.environ["KELVO_TEST_JUNIT_SCHEMA"], file], check=True,
                           capture_output=True, timeout=PATIENCE)
            cases = {case.get("name"): case for case in xml.etree.ElementTree.parse(file).getroot().iter("testcase")}
        failure = cases["seek.position-follows"].find("failure")
        self.assertIn("The position follows", failure.get("message"))
        self.assertIn("expected: position() == 2\n", failure.text)
        self.assertTrue(any(len(case) == 0 for case in cases.values()), "nothing held")

    def test_card_that_cannot_be_written(self):
        done = self.conform("--only", "state.stopped-at-first", "--json", "/nowhere/card.json")
        self.assertEqual(done.code, 2)
        self.assertRegex(done.err, r"(?m)^kelvo-test: /nowhere/card.json cannot be written: .+$")

    def test_list_of_statements(self):
        done = self.run_program("conform", "--statements")
        self.assertEqual((done.code, done.err), (0, ""))
        self.assertIn("| `seek.relative-add-up` | Relative seeks in a row add up. | seek |\n", done.out)

    def test_nothing_fits(self):
        done = self.conform("--only", "quux")
        self.assertEqual((done.code, done.out), (77, ""))

    def test_wrong_calls(self):
        self.assertEqual(self.run_program("conform").code, 2)
        done = self.run_program("conform", "--on", "nobody", "--wait", "100ms")
        self.assertEqual((done.code, done.out), (2, ""))

    def test_interrupted(self):
        process = self.start_program("conform", "--on", "KelvoSimulatorA", "--only", "s*", KELVO_SIMULATOR="sim-stall=true")
        self.read_until(process, "expected: ")
        code, seconds = self.interrupt(process)
        self.assertEqual(code, 1)
        self.assertLess(seconds, 5)


if __name__ == "__main__":
    unittest.main()
