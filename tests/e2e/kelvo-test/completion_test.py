#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The completion for bash and the man page know what the program knows.

Environment besides: KELVO_TEST_DATA and KELVO_TEST_MAN, the folders of the two."""
import os
import re
import subprocess
import unittest
from pathlib import Path

from program import PATIENCE, PROGRAM, ProgramCase

DATA = Path(os.environ["KELVO_TEST_DATA"])
PAGE = Path(os.environ["KELVO_TEST_MAN"]) / "kelvo-test.1"


class Known(ProgramCase):
    def complete(self, *words):
        script = (f'source "{DATA}/kelvo-test.bash"; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); '
                  '_kelvo_test; printf "%s\\n" "${COMPREPLY[@]}"')
        done = subprocess.run(["bash", "-c", script, "bash", PROGRAM, *words], env=self.environment(), text=True,
                              capture_output=True, timeout=PATIENCE, check=True)
        return done.stdout.split()

    def verbs(self):
        return re.findall(r"(?m)^  ([a-z]+) ", self.run_program("--help").out)

    def options(self, verb):
        return re.findall(r"(?m)^  (-[a-z-]+)", self.run_program(verb, "--help").out)

    def test_verbs(self):
        self.assertEqual(self.complete("l"), ["list"])
        self.assertEqual(self.complete(""), self.verbs() + ["--help", "--version"])

    def test_options(self):
        self.assertEqual(self.complete("run", "--s"), ["--seed", "--shard", "--serve-at"])
        for verb in self.verbs():
            self.assertEqual(self.complete(verb, "-"), self.options(verb))

    def test_renderers(self):
        self.assertEqual(self.complete("play", "--on", "Kelvo"),
                         ["KelvoSimulatorA", "KelvoSimulatorB", "KelvoSimulatorUnnamed"])
        self.assertEqual(self.complete("play", "--on", "a"), ["all"])

    def test_values_that_nobody_can_guess(self):
        self.assertEqual(self.complete("run", "--seed", ""), [])

    def test_formats(self):
        self.assertEqual(self.complete("media", "--format", "m"), ["mp3", "m4a", "mp4"])

    def test_the_man_page_names_all_verbs_and_options(self):
        page = PAGE.read_text(encoding="utf-8").replace("\\-", "-")
        for verb in self.verbs():
            self.assertIn(f".B {verb}\n", page)
            for option in self.options(verb):
                self.assertIn(option, page)

    def test_the_man_page_is_one(self):
        done = subprocess.run(["man", "--warnings", "-l", PAGE], capture_output=True, text=True,
                              env={**os.environ, "MANWIDTH": "80"}, timeout=PATIENCE, check=False)
        self.assertEqual((done.returncode, done.stderr), (0, ""))


if __name__ == "__main__":
    unittest.main()
