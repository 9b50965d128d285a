# SPDX-License-Identifier: MIT
"""The screen is not locked while a video plays on it, and only then."""

from bench import media, screen_saver
from bench.scenario import Scenario
from bench.waiting import holds, until

FILM, SONG = "red.mp4", "long.mp3"


class ScreenLock(Scenario):
    def setUp(self):
        super().setUp()
        (self.desktop.home / "qkelvo-gui-uris.txt").write_text(media.url(SONG) + "\n")
        self.saver = screen_saver.start(self.desktop)

    def asked(self):
        """All but the first line, which says that it is ready."""
        return self.saver.log.lines[1:]

    def wait_asked(self, *lines):
        until(lambda: self.asked() == list(lines), lambda: f"{lines}; it was asked {self.asked()}")

    def inhibit(self, cookie):
        return f"inhibit {cookie} for org.kelvo.TestGui: A video plays"

    def play_film(self):
        console = self.start(media.url(FILM))
        console.wait_button("Pause", 20)
        self.wait_asked(self.inhibit(1))
        return console

    def test_it_follows_the_film(self):
        console = self.play_film()
        console.press("Pause")
        self.wait_asked(self.inhibit(1), "uninhibit 1")
        console.press("Resume")
        self.wait_asked(self.inhibit(1), "uninhibit 1", self.inhibit(2))
        console.press("Stop")
        self.wait_asked(self.inhibit(1), "uninhibit 1", self.inhibit(2), "uninhibit 2")

    def test_a_song_is_no_film(self):
        console = self.play_film()
        console.play_uri(media.url(SONG))
        self.wait_asked(self.inhibit(1), "uninhibit 1")
        console.wait_position(lambda at: at >= 1, "has begun to move")
        holds(lambda: len(self.asked()) == 2, "nothing is asked for a song", 1)

    def test_it_ends_with_the_film_and_with_its_renderer(self):
        console = self.play_film()
        console.press("Seek >")
        console.press("Seek >")  # past the end of its 20 seconds
        self.wait_asked(self.inhibit(1), "uninhibit 1")
        console.user.click(console.dialog("alert message").wait_find("push button"))
        console.press("Play")
        self.wait_asked(self.inhibit(1), "uninhibit 1", self.inhibit(2))
        console.menu("Main", "Plugins", wait=False)
        dialog = console.dialog()
        console.user.click(until(lambda: dialog.find("list item", "gst-renderer", deep=True), "the renderer's plug-in"))
        console.user.click(dialog.wait_find("push button", "Unload"))
        console.user.click(dialog.wait_find("push button", "Done"))
        self.wait_asked(self.inhibit(1), "uninhibit 1", self.inhibit(2), "uninhibit 2")

    def test_it_goes_with_the_window(self):
        console = self.play_film()
        self.assertEqual(console.close(), 0)
        until(lambda: len(self.asked()) == 2, "it is given back")

    def test_it_goes_with_a_crash(self):
        console = self.play_film()
        console.process.kill()
        console.wait_exit()
        self.wait_asked(self.inhibit(1), "vanished 1")
