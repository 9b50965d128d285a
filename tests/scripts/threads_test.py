#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""check-threads.py, with a stand-in for ctest that leaves the log and the reports which the real one would."""
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
RACES = "2 of 2 deliberate races reported\n"
CTEST = """#!/bin/bash
echo "$*" > arguments
mkdir -p build-tsan/Testing/Temporary
cp log build-tsan/Testing/Temporary/LastTest.log
if [ -e report ]; then cp report build-tsan/thread-reports/report.peer.12; fi
exit "$(cat code)"
"""


class Threads(unittest.TestCase):
    def setUp(self):
        self.root = Path(self.enterContext(tempfile.TemporaryDirectory()))
        for folder in ("scripts", "bin", "build-tsan/thread-reports"):
            (self.root / folder).mkdir(parents=True)
        shutil.copy(ROOT / "scripts/check-threads.py", self.root / "scripts")
        (self.root / "bin/ctest").write_text(CTEST)
        (self.root / "bin/ctest").chmod(0o755)
        (self.root / "code").write_text("0")
        (self.root / "log").write_text(f"1/2 Testing: unit-a\nfine\n2/2 Testing: unit-races\n{RACES}")

    def run_it(self, *arguments):
        """(exit code, lines of output)."""
        done = subprocess.run(["scripts/check-threads.py", *arguments], cwd=self.root, capture_output=True, text=True,
                              env={"PATH": f"{self.root}/bin:/usr/bin:/bin"}, timeout=60, check=False)
        return done.returncode, done.stdout.splitlines()

    def test_it_says_what_was_looked_at(self):
        # Of an earlier run.
        (self.root / "build-tsan/thread-reports/report.1").write_text("WARNING: ThreadSanitizer: data race\n")
        code, lines = self.run_it("-R", "unit-")
        self.assertEqual((code, lines[-1]), (
            0, "reliability: threads: 2 tests, no report; 2 of 2 deliberate races reported"))
        self.assertEqual((self.root / "arguments").read_text(), "--preset tsan -R unit-\n")

    def test_a_report_fails(self):
        (self.root / "report").write_text("====\nWARNING: ThreadSanitizer: data race (pid=1)\n  Write of size 4\n")
        code, lines = self.run_it()
        self.assertEqual(code, 1)
        self.assertIn("==> report.peer.12", lines)
        self.assertIn("  Write of size 4", lines)
        self.assertEqual(lines[-1], "==> 2 tests under the thread sanitizer, 1 reports")

    def test_a_test_that_fails_fails(self):
        (self.root / "code").write_text("8")
        code, lines = self.run_it()
        self.assertEqual((code, lines[-1]), (1, "==> 2 tests under the thread sanitizer, 0 reports"))

    def test_without_the_deliberate_races_nothing_is_said(self):
        (self.root / "log").write_text("1/1 Testing: unit-a\nfine\n")
        code, lines = self.run_it()
        self.assertEqual(code, 1)
        self.assertIn("error: the deliberate races were not reported, or not looked for", lines)
        self.assertFalse([line for line in lines if line.startswith("reliability")])


if __name__ == "__main__":
    unittest.main(verbosity=2)
