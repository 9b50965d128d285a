#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""check-threads.py [arguments for ctest]

Runs the tests of preset "tsan", and shows what the thread sanitizer has reported, of the programs that the tests start
too. Needs what that preset builds. Exit status 1 when a test failed, when there is a report, or when the races that are
made on purpose (unit-races) were not looked for.
"""
import re
import shutil
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
BUILD = ROOT / "build-tsan"
REPORTS = BUILD / "thread-reports"
LOG = BUILD / "Testing" / "Temporary" / "LastTest.log"
_TEST = re.compile(r"^\d+/\d+ Testing: \S+$", re.MULTILINE)
_REPORT = re.compile(r"^WARNING: ThreadSanitizer: ", re.MULTILINE)
_RACES = re.compile(r"^\d+ of \d+ deliberate races reported$", re.MULTILINE)


def main(arguments):
    shutil.rmtree(REPORTS, ignore_errors=True)
    REPORTS.mkdir()
    failed = subprocess.run(["ctest", "--preset", "tsan", *arguments], cwd=ROOT, check=False).returncode != 0
    texts = {path: path.read_text(errors="replace") for path in sorted(REPORTS.iterdir())}
    for path, text in texts.items():
        print(f"==> {path.name}\n{text}")
    reports = sum(len(_REPORT.findall(text)) for text in texts.values())
    log = LOG.read_text(errors="replace")
    races = _RACES.search(log)
    if not races:
        print("error: the deliberate races were not reported, or not looked for")
    print(f"==> {len(_TEST.findall(log))} tests under the thread sanitizer, {reports} reports")
    if failed or texts or not races:
        return 1
    print(f"reliability: threads: {len(_TEST.findall(log))} tests, no report; {races[0]}")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
