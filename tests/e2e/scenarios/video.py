# SPDX-License-Identifier: MIT
"""Video is seen on the screen, in its place and nowhere else, whatever happens to the window."""

from pathlib import Path

from bench import console as ui
from bench import media
from bench.scenario import Scenario
from bench.screen import strong_red
from bench.waiting import holds, until

VIDEO_SHAPE = 640 / 360
EDGE = 3  # pixels beside which nothing is looked at: rounding of sizes


class VideoCase(Scenario):
    screen_size = (1660, 1040)
    scale = 1  # native pixels per pixel of the console

    def play(self, **options):
        console = self.start(media.url("red.mp4"), **options)
        console.wait_button("Pause", 20)
        console.tab(ui.VIDEO)
        return console

    def pause(self, console):
        console.press("Pause")
        console.wait_button("Resume")

    def place(self, console):
        """Where on the screen the video's box is: x, y, width, height in native pixels."""
        extents = console.window().wait_find("label", "Video").extents()
        return tuple(self.scale * value for value in extents)

    def fault(self, console):
        """What is wrong with the picture; empty when it fills its box as far as its shape allows, and only that."""
        x, y, width, height = self.place(console)
        shown_width = min(width, int(height * VIDEO_SHAPE))
        shown_height = min(height, int(width / VIDEO_SHAPE))
        left, top = x + (width - shown_width) // 2, y + (height - shown_height) // 2
        inside = [(left + EDGE, top + EDGE), (left + shown_width - EDGE, top + EDGE),
                  (left + EDGE, top + shown_height - EDGE), (left + shown_width - EDGE, top + shown_height - EDGE),
                  (left + shown_width // 2, top + shown_height // 2)]
        beside = [(x - EDGE, y + height // 2), (x + width + EDGE, y + height // 2), (x + width // 2, y - EDGE),
                  (x + width // 2, y + height + EDGE)]
        if shown_width < width - 4 * EDGE:
            beside += [(left - 2 * EDGE, y + height // 2), (left + shown_width + 2 * EDGE, y + height // 2)]
        if shown_height < height - 4 * EDGE:
            beside += [(x + width // 2, top - 2 * EDGE), (x + width // 2, top + shown_height + 2 * EDGE)]
        picture = console.screen.picture()
        wrong = [point for point in inside if not picture.count((*point, 1, 1), strong_red)]
        wrong += [point for point in beside if picture.count((*point, 1, 1), strong_red)]
        return f"box {(x, y, width, height)}: wrong at {wrong}" if wrong else ""

    def wait_picture(self, console, what, limit=5):
        until(lambda: not self.fault(console), lambda: f"{what}: {self.fault(console)}", limit)

    def red_pixels(self, console):
        return console.screen.picture().count((0, 0, *self.screen_size), strong_red)

    def wait_no_picture(self, console, what):
        until(lambda: self.red_pixels(console) == 0, what, 5)


class Video(VideoCase):
    def test_shows_in_its_place_and_nowhere_else(self):
        console = self.play()
        self.wait_picture(console, "the picture shows", 15)
        _, _, width, height = self.place(console)
        shown = min(width, int(height * VIDEO_SHAPE)) * min(height, int(width / VIDEO_SHAPE))
        self.assertAlmostEqual(self.red_pixels(console) / shown, 1, delta=0.03)
        self.pause(console)
        self.assertEqual(self.fault(console), "", "the picture stays while paused")
        console.tab(ui.MUSIC)
        self.wait_no_picture(console, "no red on another tab")
        console.tab(ui.VIDEO)
        self.wait_picture(console, "the picture is back")
        console.press("Stop")
        console.wait_button("Play")
        self.wait_no_picture(console, "the picture goes away when stopped")
        console.press("Play")
        self.wait_picture(console, "the picture comes back with the next playing")

    def test_leaving_the_tab_while_playing(self):
        console = self.play()
        self.wait_picture(console, "the picture shows", 15)
        for tab in (ui.BROWSE, ui.QUERY):
            console.tab(tab)
            self.wait_no_picture(console, f"no red on tab {tab}")
            console.tab(ui.VIDEO)
            self.wait_picture(console, f"back from tab {tab}")

    def follow_the_window(self, console):
        for width, height in ((1500, 900), (1240, 700), (1300, 760)):
            console.user.resize(width, height)
            self.wait_picture(console, f"at {width}x{height}")
        console.user.move_window(200, 120)
        self.wait_picture(console, "moved")

    def test_follows_the_window(self):
        console = self.play()
        self.wait_picture(console, "the picture shows", 15)
        self.follow_the_window(console)

    def test_follows_the_window_while_paused(self):
        console = self.play()
        self.wait_picture(console, "the picture shows", 15)
        self.pause(console)
        position = console.position()
        self.follow_the_window(console)
        self.assertEqual(console.position(), position)
        self.assertTrue(console.has_button("Resume"))

    def test_covered_and_uncovered(self):
        console = self.play()
        self.wait_picture(console, "the picture shows", 15)
        x, y, width, height = self.place(console)
        for what in ("playing", "paused"):
            console.menu("Renderers", "Volume...", wait=False)
            dialog = console.dialog(name="Adjust volume")
            console.user.move_window(x + 10, y + 10, title="^Adjust volume$")
            until(lambda: self.fault(console), f"covered while {what}", 5)
            console.user.click(dialog.wait_find("push button", "Close"))
            self.wait_picture(console, f"uncovered while {what}")
            if what == "playing":
                self.pause(console)

    def test_does_not_flicker(self):
        console = self.play()
        self.wait_picture(console, "the picture shows", 15)
        # The displays beside it are painted anew all the time.
        holds(lambda: not self.fault(console), "the picture shows", 3)

    def test_clicks_on_the_video_reach_the_window(self):
        console = self.play()
        self.wait_picture(console, "the picture shows", 15)
        mark = console.log.mark()
        console.user.click(console.window().wait_find("label", "Video"))
        console.log.wait_for(r"KelvoMainWindow::mousePressEvent", mark)
        self.assertEqual(self.fault(console), "", "a tap changes nothing")

    def choose_renderer(self, console, name):
        console.tab(ui.MUSIC)
        box = next(box for box in console.combos() if "KelvoGstRenderer" in box.find("list", showing=False).rows())
        console.user.choose_in_combo(box, name)
        console.tab(ui.VIDEO)

    def test_comes_and_goes_with_the_current_renderer(self):
        # The simulated ones are there first, so the video starts on a renderer that is not current.
        console = self.start(media.url("red.mp4"), env={"KELVO_PLUGINS": "simulator,gst-renderer"})
        console.log.wait_for("rendererAdded .*KelvoGstRenderer", limit=20)
        self.choose_renderer(console, "KelvoGstRenderer")
        console.wait_button("Pause")  # as soon as it is chosen
        self.wait_picture(console, "the picture shows", 15)
        self.choose_renderer(console, "Simulator A")
        self.wait_no_picture(console, "the picture goes with its renderer")

    def test_pause_frame(self):
        console = self.play()
        console.menu("Renderers", "Pause frame")
        self.wait_picture(console, "the picture shows", 15)
        self.pause(console)
        lines = until(lambda: [line for line in console.metadata() if line.startswith("pause-frame: ")],
                      lambda: f"the frame is reported; there is {console.metadata()}", 10)
        self.assertIn("pause-frame-size: 640x360", console.metadata())
        path = Path(lines[0].removeprefix("pause-frame: "))
        self.assertTrue(path.is_relative_to(self.desktop.env["XDG_CACHE_HOME"]), path)
        size = self.desktop.run(["identify", "-format", "%m %w %h %[fx:int(mean.r*255)]", path])
        self.assertTrue(size.startswith("PNG 640 360 2"), size)
        self.assertEqual(len(list(path.parent.iterdir())), 1)

    def test_follows_the_display_named_by_an_argument(self):
        console = self.start("-display", self.desktop.env["DISPLAY"], media.url("red.mp4"), env={"DISPLAY": None})
        console.wait_button("Pause", 20)
        console.tab(ui.VIDEO)
        self.wait_picture(console, "the picture shows", 15)

    def test_closing_while_the_video_plays(self):
        console = self.play()
        self.wait_picture(console, "the picture shows", 15)
        self.assertEqual(console.close(), 0)

    def test_closing_while_the_video_is_paused(self):
        console = self.play()
        self.wait_picture(console, "the picture shows", 15)
        self.pause(console)
        self.assertEqual(console.close(), 0)


class VideoOnADenseScreen(VideoCase):
    """Two native pixels for each of the console's. Positions are told in the console's pixels, so everything that is
    clicked would be missed: only what needs no click is looked at."""

    screen_size = (2600, 1700)
    scale = 2

    def play(self, **options):
        console = self.start(media.url("red.mp4"), env={"QT_SCALE_FACTOR": "2"})
        console.wait_button("Pause", 20)
        console.user.activate()
        console.user.key("ctrl+Tab")
        until(lambda: console.current_tab() == ui.VIDEO, "the video tab is in front", 5)
        return console

    def test_shows_in_its_place_and_nowhere_else(self):
        console = self.play()
        self.wait_picture(console, "the picture shows", 15)
        console.user.resize(2500, 1500)
        self.wait_picture(console, "resized")
        console.user.key("ctrl+Tab")
        self.wait_no_picture(console, "no red on another tab")

