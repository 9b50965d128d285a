# SPDX-License-Identifier: MIT
"""Every tab and dialog on the desktops, scales, palettes and directions in use: nothing is cut, covers something else or
leaves its text too little room. The pictures are kept in the folder KELVO_E2E_PICTURES."""

import os

from bench.desktop import Desktop
from bench.scenario import Scenario
from bench.wayland import WaylandDesktop

# A name for the run, and what it has in its environment.
SCALES = [(f"scale-{scale}", {"QT_SCALE_FACTOR": scale}) for scale in ("1", "1.25", "1.5", "2")]
LOOKS = [("dark", {"KELVO_PICTURES_LOOK": "dark"}), ("contrast", {"KELVO_PICTURES_LOOK": "contrast"})]
MIRRORED = ("right-to-left", {"KELVO_PICTURES_MIRRORED": "1", "LC_ALL": "ar_EG.UTF-8"})


class TouchScreen(Desktop):
    """The device: one program on a small screen, whose windows have no frames."""

    def __init__(self):
        super().__init__(size=(800, 480))

    def _start_window_manager(self):
        pass


class Pictures(Scenario):
    screen_size = (2600, 1700)

    def take(self, session, runs):
        """Two at a time: each waits for its windows more than it works."""
        for first in range(0, len(runs), 2):
            started = [(name, self.start_pictures(f"{session}-{name}", env)) for name, env in runs[first:first + 2]]
            for name, program in started:
                with self.subTest(session=session, run=name):
                    code = program.wait(60)
                    program.log.finish()
                    lines = [line for line in program.log.lines if not line.startswith("QDEBUG")]
                    self.assertEqual(code, 0, "\n".join(lines))

    def start_pictures(self, name, environment):
        return self.desktop.start(
            [os.environ["KELVO_E2E_PICTURE_TESTS"], "PicturesTest"],
            {**self.desktop.env, "ASAN_OPTIONS": "detect_leaks=0", "KELVO_PLUGINS": "", "KELVO_PICTURES_NAME": name,
             "KELVO_PICTURES_FOLDER": os.environ["KELVO_E2E_PICTURES"], **environment})

    def keep_evidence(self):
        """The pictures are there already."""


class OnX11(Pictures):
    def test_scales_looks_and_directions(self):
        self.take("x11", SCALES + LOOKS + [MIRRORED])


class OnATouchScreen(Pictures):
    def make_desktop(self):
        return TouchScreen()

    def test_directions(self):
        self.take("touch", [("left-to-right", {}), MIRRORED])


class OnWayland(Pictures):
    def make_desktop(self):
        return WaylandDesktop(size=self.screen_size)

    def test_scales(self):
        self.take("wayland", SCALES)


class OnXWayland(Pictures):
    def make_desktop(self):
        return WaylandDesktop(size=self.screen_size, x11=True)

    def test_scales(self):
        self.take("xwayland", [(name, {**env, "QT_QPA_PLATFORM": "xcb"}) for name, env in SCALES])
