# SPDX-License-Identifier: MIT
"""Base of the scenarios, and the runner of one scenario file."""

import importlib.util
import os
import re
import shutil
import signal
import sys
import unittest
from pathlib import Path

from . import media
from .console import Console
from .desktop import Desktop
from .process import stacks, threads
from .screen import Screen
from .webserver import WebServer

# Lines that no healthy run has.
_WRONG = re.compile(r"No such (signal|slot)|QObject::connect|runtime error:|(Address|Leak|Undefined\w*)Sanitizer"
                    r"|^ASSERT|-CRITICAL \*\*|Timers cannot be|QObject::killTimer|QPainter::|QWidget::|Selecting when no model")
ONLY_THE_REAL_RENDERER = {"KELVO_PLUGINS": "gst-renderer"}


def leak_options():
    """Makes the program look for leaks, whatever is set for the other tests."""
    options = os.environ.get("KELVO_E2E_LEAK_OPTIONS")
    if not options:
        print("no look for leaks: KELVO_E2E_LEAK_OPTIONS is not set", file=sys.stderr)
        return {"ASAN_OPTIONS": "detect_leaks=0"}
    # The preloaded library is no sanitizer's, which is fine.
    return {"ASAN_OPTIONS": f"{options}:verify_asan_link_order=0", "LD_PRELOAD": os.environ["KELVO_E2E_GLIB_TABLES"]}


class Scenario(unittest.TestCase):
    """Each test has a desktop of its own. What still runs at its end is closed through the window manager and must end
    by itself, cleanly."""

    screen_size = (1280, 800)
    # Looking for leaks at exit needs exact stacks of all allocations, which makes every run several times as slow and
    # its times meaningless.
    leak_check = False
    # Whether the user has started the program before. Making the store takes longer than all else of the start.
    used_before = True
    maxDiff = None

    def setUp(self):
        self.addCleanup(self._check_no_strays)  # the last thing to run: the desktop has ended by then
        self.desktop = self.enterContext(self.make_desktop())
        self.consoles = []
        self.failed = False
        store = media.folder() / media.STORE
        # Where first_start.py has not run, as on a system that only has the packages, the console makes its own.
        if self.used_before and store.is_dir():
            shutil.copytree(store, self.desktop.folder / "data" / "kelvo")

    def make_desktop(self):
        return Desktop(size=self.screen_size)

    def start(self, *arguments, env=None, up=True):
        """Starts the program on the real renderer alone, with a sound sink that keeps the time. A variable given as
        None is not set."""
        sanitizer = leak_options() if self.leak_check else {"ASAN_OPTIONS": "detect_leaks=0"}
        environment = {**self.desktop.env, **sanitizer, "KELVO_AUDIO_SINK": "fakesink sync=true",
                       # Made once: some plug-ins depend on the home, and would be looked at again in that of each test.
                       "GST_REGISTRY_1_0": str(media.folder() / media.REGISTRY), "GST_REGISTRY_UPDATE": "no",
                       **ONLY_THE_REAL_RENDERER, **(env or {})}
        environment = {name: value for name, value in environment.items() if value is not None}
        process = self.desktop.start([os.environ["KELVO_E2E_PROGRAM"], *arguments], environment)
        console = Console(self.desktop, process)
        self.consoles.append(console)
        return console.wait_up() if up else console

    def serve(self, **options):
        server = WebServer(media.folder(), **options)
        self.addCleanup(server.close)
        return server

    def tearDown(self):
        for console in self.consoles:
            if console.process.poll() is None and not self.failed:
                self.assertEqual(console.close(), 0, console.log.tail())
            self.assert_healthy(console)

    def assert_healthy(self, console):
        console.log.finish(0.2 if console.process.poll() is None else 5)
        wrong = [line for line in console.log.lines if _WRONG.search(line)]
        self.assertEqual(wrong, [], console.log.tail(60))

    def _check_no_strays(self):
        left = self.desktop.left_behind
        if left and not self.failed:
            self.fail(f"processes were left behind: {left}")

    # What a failed test leaves behind

    def output(self, suffix):
        folder = Path(os.environ["KELVO_E2E_OUTPUT"])
        folder.mkdir(parents=True, exist_ok=True)
        return folder / f"{self.id()}{suffix}"

    def keep_evidence(self):
        for number, console in enumerate(self.consoles):
            self.output(f".{number}.log").write_text(console.log.text())
        try:
            Screen(self.desktop).shoot(self.output(".png"))
        except (RuntimeError, AttributeError) as error:
            print(f"no screenshot: {error}", file=sys.stderr)
        for number, console in enumerate(self.consoles):
            print(console.log.tail(40), file=sys.stderr)
            if console.process.poll() is None:
                print(f"its threads:\n{threads(console.process)}", file=sys.stderr)
                self.output(f".{number}.stacks").write_text(stacks(console.process))


class _Result(unittest.TextTestResult):
    """Keeps evidence at the moment of the failure, while the program still runs."""

    def addFailure(self, test, err):  # noqa: N802
        super().addFailure(test, err)
        self._keep(test)

    def addError(self, test, err):  # noqa: N802
        super().addError(test, err)
        if isinstance(err[1], SystemExit):
            self.stop()
        self._keep(test)

    def _keep(self, test):
        if getattr(test, "desktop", None) and not test.failed:
            test.failed = True
            test.keep_evidence()


def main(arguments):
    """Runs a scenario file, or with further arguments only the tests whose ids contain one of them."""
    # Asked to end, everything that was started still gets ended.
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))
    path = Path(arguments[0]).resolve()
    specification = importlib.util.spec_from_file_location(path.stem, path)
    module = importlib.util.module_from_spec(specification)
    sys.modules[path.stem] = module
    specification.loader.exec_module(module)
    media.make(media.folder())
    loader = unittest.TestLoader()
    loader.testNamePatterns = [f"*{pattern}*" for pattern in arguments[1:]] or None
    suite = loader.loadTestsFromModule(module)
    if not suite.countTestCases():
        print("no tests found", file=sys.stderr)
        return 2
    result = unittest.TextTestRunner(verbosity=2, resultclass=_Result).run(suite)
    return 0 if result.wasSuccessful() else 1
