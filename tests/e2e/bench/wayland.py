# SPDX-License-Identifier: MIT
"""A private Wayland desktop: a compositor without a screen, on which nobody has mouse or keyboard."""

import re
import subprocess

from . import atspi, process
from .desktop import Desktop
from .waiting import until

_SOCKET = "kelvo-wayland"


class WaylandDesktop(Desktop):
    """With or without an X server for those who need one (Xwayland). The program chooses the platform by itself."""

    def __init__(self, size=(1280, 800), x11=False):
        super().__init__(size)
        self._wants_x11 = x11

    def _start_display(self):
        width, height = self.size
        log = self.folder / "weston.log"
        command = ["weston", "--backend=headless-backend.so", "--use-pixman", f"--width={width}", f"--height={height}",
                   "--no-config", "--idle-time=0", f"--socket={_SOCKET}", f"--log={log}"]
        child = process.start(command + (["--xwayland"] if self._wants_x11 else []), self.env,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self._children.append(child)
        self.server = child
        until((self.folder / "runtime" / _SOCKET).exists,
              lambda: f"the compositor listens\n{log.read_text() if log.exists() else ''}", 20)
        del self.env["QT_QPA_PLATFORM"]
        self.env["WAYLAND_DISPLAY"] = _SOCKET
        if self._wants_x11:
            found = until(lambda: re.search(r"xserver listening on display (:\d+)", log.read_text()), "Xwayland listens", 20)
            self.env["DISPLAY"] = found[1]

    def _start_window_manager(self):
        """The compositor is one. What is left to start is what a desktop has before its programs: they wait for the
        registry of accessible programs a moment only, and on a crowded machine its start takes longer."""
        tree = atspi.Tree(self, 0)
        until(tree.registry_answers, "the registry of accessible programs answers", 30)
        tree.close()
