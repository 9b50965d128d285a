#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""races_test.py PROGRAM: the thread sanitizer, told what it is told in all tests, reports each race that PROGRAM makes
on purpose, where it is, and nothing of what is in order."""
import os
import re
import subprocess
import sys
import unittest

RACES = ("sharedMemory", "touchedAfterHandOver", "touchedAfterReturn", "notWaitedFor", "afterChild")
EXIT_CODE_OF_REPORTS = 66
_REPORT = re.compile(r"^WARNING: ThreadSanitizer: (.+?) \(pid=\d+\)\n(.*?)^SUMMARY: ", re.MULTILINE | re.DOTALL)


def run(case):
    """(exit code, [(kind, text) of each report])."""
    environment = os.environ | {"TSAN_OPTIONS": os.environ.get("TSAN_OPTIONS", "") + ":log_path=stderr"}
    done = subprocess.run([PROGRAM, case], env=environment, capture_output=True, text=True, timeout=60, check=False)
    return done.returncode, _REPORT.findall(done.stderr)


class Races(unittest.TestCase):
    def test_each_is_reported(self):
        for case in RACES:
            with self.subTest(case):
                _, reports = run(case)
                self.assertEqual([kind for kind, _ in reports], ["data race"])
                self.assertIn(case, reports[0][1])

    def test_a_report_fails_the_program(self):
        self.assertEqual(run(RACES[0])[0], EXIT_CODE_OF_REPORTS)

    def test_what_is_in_order_is_not_reported(self):
        self.assertEqual(run("none"), (0, []))


if __name__ == "__main__":
    PROGRAM = sys.argv.pop(1)
    test = unittest.main(exit=False, verbosity=2)
    if not test.result.wasSuccessful():
        sys.exit(1)
    print(f"{len(RACES)} of {len(RACES)} deliberate races reported")
