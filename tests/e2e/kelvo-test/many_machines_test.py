#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What docs/many-machines.md shows with two network namespaces works as it stands there.

Environment besides: KELVO_TEST_DATA. Needs root, for the namespaces."""
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as xml
from pathlib import Path

from program import PROGRAM, ProgramCase

DATA = Path(os.environ["KELVO_TEST_DATA"])
SCENARIOS = ("start", "pause-at", "play-to-the-end")
# For two renderers to be found and three scenarios; a hang is what it is there for.
LIMIT = 200
SKIPPED = 77


def can_have_namespaces():
    return subprocess.run(["unshare", "--net", "--mount", "true"], capture_output=True, check=False).returncode == 0


class TwoNetworks(ProgramCase):
    def script(self):
        text = (DATA.parent / "docs" / "many-machines.md").read_text(encoding="utf-8")
        (block,) = re.findall(r"(?ms)^```sh\n(.*?)^```$", text)
        return block

    def end_all(self, process):
        try:
            os.killpg(process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass  # as it should be
        process.wait()

    def test_one_renderer_in_each(self):
        with tempfile.TemporaryDirectory() as name:
            folder = Path(name)
            (folder / "scenarios").mkdir()
            for scenario in SCENARIOS:
                shutil.copy(DATA / "scenarios" / f"{scenario}.yaml", folder / "scenarios")
            # Names of namespaces are files, which nobody else is to see.
            private = 'mount -t tmpfs none /run && exec bash -eu -c "$1"'
            environment = self.environment(PATH=f"{Path(PROGRAM).parent}:{Path(sys.executable).parent}:{os.environ['PATH']}", ASAN_OPTIONS="detect_leaks=0")
            with open(folder / "log", "w", encoding="utf-8") as log:
                process = subprocess.Popen(["unshare", "--mount", "sh", "-c", private, "sh", self.script()], cwd=folder,
                                           env=environment, stdin=subprocess.DEVNULL, stdout=log,
                                           stderr=subprocess.STDOUT, start_new_session=True)
                self.addCleanup(self.end_all, process)
                code = process.wait(LIMIT)
            logs = "".join((folder / log).read_text(encoding="utf-8", errors="replace")
                           for log in ("log", "hall.log", "kitchen.log") if (folder / log).exists())
            self.assertEqual(code, 0, logs)
            suites = xml.parse(folder / "all.xml").getroot().findall("testsuite")
            self.assertEqual(sorted(suite.get("name") for suite in suites), ["hall", "kitchen"], logs)
            for suite in suites:
                self.assertEqual((suite.get("tests"), suite.get("failures"), suite.get("errors")), ("3", "0", "0"), logs)


if __name__ == "__main__":
    if not can_have_namespaces():
        print("Skipped: network namespaces can only be made by root.")
        sys.exit(SKIPPED)
    unittest.main()
