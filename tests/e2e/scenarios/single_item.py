# SPDX-License-Identifier: MIT
"""The console is started with the URL of one piece of media: seeking, pausing at a position, video."""

import time

from bench import media
from bench.scenario import Scenario
from bench.user import entries
from bench.waiting import holds, until

SEEK = r"void KelvoRendererController::seek\(int\)"


class SingleItem(Scenario):
    leak_check = True

    def start_long(self):
        console = self.start(media.url("long.mp3"))
        console.wait_button("Pause", 20)
        console.wait_position(lambda at: at >= 1, "has begun to move")
        self.assertEqual(console.times()[1], 60)
        return console

    def test_a_drag_of_the_slider_seeks_twice_to_the_same_place(self):
        console = self.start_long()
        mark = console.log.mark()
        console.user.drag_slider(console.slider(), 30)
        console.log.wait_for("KelvoMainWindow::emitPosition", mark)
        console.log.wait_for(SEEK, mark, count=2)
        console.wait_position(lambda at: 30 <= at < 50, "follows the slider", 6)
        self.assertEqual(console.log.count(SEEK, mark), 2)
        self.assertEqual(console.log.count("KelvoMainWindow::emitPosition", mark), 1)
        # A click into the groove does not let go of the handle, a key does.
        mark = console.log.mark()
        console.user.click(console.slider(), (0.9, 0.5))
        holds(lambda: console.log.count(SEEK, mark) == 0, "no seek without a release", 0.5)
        console.user.key("Left")
        console.log.wait_for(SEEK, mark, count=2)
        self.assertEqual(console.log.count("KelvoMainWindow::emitPosition", mark), 1)

    def test_the_seek_buttons_jump_by_ten_seconds(self):
        console = self.start_long()
        before = console.position()
        started = time.monotonic()
        mark = console.press("Seek >")
        console.log.wait_for(r"void KelvoRendererController::seekForw\(\)", mark)
        at = console.wait_position(lambda at: at >= before + 10, "jumps ahead", 8)[0]
        self.assertLess(time.monotonic() - started, 8, "time alone may have brought it there")
        mark = console.press("< Seek")
        console.log.wait_for(r"void KelvoRendererController::seekBack\(\)", mark)
        console.wait_position(lambda now: now < at, "jumps back", 5)
        # At the beginning a step back stops at the beginning.
        console.press("< Seek")
        console.press("< Seek")
        console.press("< Seek")
        console.wait_position(lambda now: now < 5, "is near the beginning", 5)
        console.wait_button("Pause")

    def test_pause_at_three_seconds(self):
        console = self.start_long()
        console.press("Stop")
        console.wait_button("Play")
        mark = console.menu("Renderers", "Pause At...", "3 sec")
        console.log.wait_for(r"KelvoRendererController::pauseAt\( ?3 ?\)", mark)
        console.press("Play")
        console.wait_button("Pause")
        console.wait_button("Resume", 10)
        console.wait_position(lambda at: at == 3, "is 3", 4)
        holds(lambda: console.position() == 3, "it rests at 3 s", 1.5)
        console.press("Resume")
        console.wait_position(lambda at: at >= 5, "goes on", 8)
        self.assertTrue(console.has_button("Pause"), "it paused only once")

    def test_pause_at_cannot_be_chosen_while_playing(self):
        console = self.start_long()
        menu = console.user.open_menu(console.window(), "Renderers")
        item = next(entry for entry in entries(menu) if entry.name() == "Pause At...")
        self.assertFalse(item.enabled())
        console.user.leave_menus()
        console.press("Stop")
        console.wait_button("Play")
        self.assertTrue(until(item.enabled, "Pause At... is enabled"))
