# SPDX-License-Identifier: MIT
"""Video is seen on the screen, in its place and nowhere else."""

from bench import console as ui
from bench import media
from bench.scenario import Scenario
from bench.screen import strong_red
from bench.waiting import until


class Video(Scenario):
    def test_video_shows_in_its_place_and_nowhere_else(self):
        console = self.start(media.url("red.mp4"))
        console.wait_button("Pause", 20)
        console.tab(ui.VIDEO)
        x, y, width, height = console.window().wait_find("label", "Video").extents()
        centre = (x + width // 2 - 4, y + height // 2 - 4, 8, 8)

        def red():
            shade = console.screen.mean(centre)
            return shade[0] > 200 and shade[1] < 60 and shade[2] < 60
        until(red, lambda: f"red in the middle of {(x, y, width, height)}; it is {console.screen.mean(centre)}", 15)
        console.press("Pause")
        console.wait_button("Resume")
        self.assertTrue(red(), "the picture stays while paused")
        console.tab(ui.MUSIC)
        frame = console.window().extents()
        until(lambda: console.screen.picture().count(frame, strong_red) == 0, "no red on another tab", 5)
        console.tab(ui.VIDEO)
        until(red, "the picture is back", 5)
        console.press("Stop")
        console.wait_button("Play")
        until(lambda: not red(), "the picture goes away when stopped", 5)
