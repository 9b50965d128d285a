# SPDX-License-Identifier: MIT
"""A private desktop: X display, session bus, window manager, home folder."""

import os
import shutil
import signal
import subprocess
import tempfile
import time
import uuid
from pathlib import Path

from . import process
from .waiting import until
from .x11 import X11

RUN_VARIABLE = "KELVO_E2E_RUN"
_OPENBOX = Path(__file__).resolve().parents[3] / "scripts" / "headless-openbox.xml"
_PASSED_ON = ("PATH", "ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS", "TMPDIR")


class Desktop:
    """Use as a context manager. Everything it started has ended when it is left, also after a failure."""

    def __init__(self, size=(1280, 800), bus=True, display=True):
        self.size = size
        self._wants_bus = bus
        self._wants_display = display
        self._children = []
        self.x11 = None
        self.id = uuid.uuid4().hex
        self.left_behind = []

    def __enter__(self):
        self.folder = Path(tempfile.mkdtemp(prefix="kelvo-e2e."))
        try:
            self.env = self._environment()
            if self._wants_display:
                self._start_display()
            if self._wants_bus:
                self._start_bus()
            if self._wants_display:
                self._start_window_manager()
        except BaseException:
            self.__exit__(None, None, None)
            raise
        return self

    def __exit__(self, *unused):
        if self.x11:
            self.x11.close()
        for child in reversed(self._children):
            process.end(child)
        self._end_strays()
        shutil.rmtree(self.folder, ignore_errors=True)

    # What the desktop consists of

    @property
    def home(self):
        return self.folder / "home"

    def start(self, command, env=None, log=None):
        """Starts a program on this desktop, its output going to the log."""
        child = process.start([str(part) for part in command], env or self.env,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, cwd=self.home)
        self._children.append(child)
        log = log or process.Log()
        log.follow(child.stdout)
        log.follow(child.stderr)
        child.log = log
        return child

    def run(self, command, limit=10.0):
        """Runs a small tool and returns the text it printed; its failure raises."""
        return self.run_bytes(command, limit).decode("utf-8", "replace")

    def run_bytes(self, command, limit=10.0):
        done = subprocess.run([str(part) for part in command], env=self.env, stdin=subprocess.DEVNULL,
                              capture_output=True, timeout=limit, check=False)
        if done.returncode:
            raise RuntimeError(f"{command[0]}: {done.stderr.decode('utf-8', 'replace').strip()}")
        return done.stdout

    # Its making

    def _environment(self):
        """Nothing of the caller's session gets in."""
        env = {name: os.environ[name] for name in _PASSED_ON if name in os.environ}
        env.update({RUN_VARIABLE: self.id, "HOME": str(self.home), "LANG": "C.UTF-8",
                    "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", "QT_QPA_PLATFORM": "xcb",
                    "NO_AT_BRIDGE": "1",
                    # Addresses that nobody listens on, until there is a bus: nothing may reach the caller's.
                    "DBUS_SESSION_BUS_ADDRESS": f"unix:path={self.folder}/no-bus",
                    "PULSE_SERVER": f"unix:{self.folder}/no-sound"})
        self.home.mkdir()
        for name in ("CONFIG", "DATA", "CACHE", "STATE"):
            path = self.folder / name.lower()
            path.mkdir()
            env[f"XDG_{name}_HOME"] = str(path)
        runtime = self.folder / "runtime"
        runtime.mkdir(mode=0o700)
        env["XDG_RUNTIME_DIR"] = str(runtime)
        return env

    def _start_display(self):
        read, write = os.pipe()
        width, height = self.size
        child = process.start(["Xvfb", "-displayfd", str(write), "-screen", "0", f"{width}x{height}x24",
                               "-nolisten", "tcp", "-noreset"], self.env, pass_fds=(write,),
                              stdout=subprocess.DEVNULL, stderr=open(self.folder / "xvfb.log", "wb"))
        self._children.append(child)
        self.server = child
        os.close(write)
        with os.fdopen(read) as answer:
            number = answer.readline().strip()  # ends at once when the server does
        if not number:
            raise RuntimeError("no X display: " + (self.folder / "xvfb.log").read_text())
        self.env["DISPLAY"] = f":{number}"
        self.x11 = X11(self.env["DISPLAY"])

    def _start_bus(self):
        address = f"unix:path={self.folder}/bus"
        child = process.start(["dbus-daemon", "--session", "--nofork", "--nopidfile", f"--address={address}",
                               "--print-address"], self.env, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        self._children.append(child)
        answer = child.stdout.readline().decode().strip()
        if not answer:
            raise RuntimeError("no session bus")
        self.bus = child
        self.env["DBUS_SESSION_BUS_ADDRESS"] = answer

    def _start_window_manager(self):
        child = process.start(["openbox", "--config-file", str(_OPENBOX)], self.env,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self._children.append(child)
        until(self._window_manager_answers, "the window manager is ready")

    def _window_manager_answers(self):
        """It announces itself long before it listens, and what comes between may stay in its queue for ever. Only what
        it does on a wish proves that its keys are bound and that it will see a window."""
        self.x11.set_desktops(2)
        return self.x11.desktops() == 2

    def _end_strays(self):
        """The accessibility services are nobody's children; they end with their bus. Whatever else carries our mark
        is a stray: it is ended and remembered."""
        end = time.monotonic() + 5
        while time.monotonic() < end:
            left = process.strays(RUN_VARIABLE, self.id)
            if not left:
                return
            time.sleep(0.05)
        for pid in left:
            self.left_behind.append((pid, _command_of(pid)))
            try:
                os.kill(pid, signal.SIGKILL)
            except ProcessLookupError:
                pass


def _command_of(pid):
    try:
        return Path(f"/proc/{pid}/cmdline").read_bytes().replace(b"\0", b" ").decode("utf-8", "replace").strip()
    except OSError:
        return "?"
