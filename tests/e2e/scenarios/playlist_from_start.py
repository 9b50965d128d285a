# SPDX-License-Identifier: MIT
"""The console is started with the URL of a playlist file and plays it on the real renderer."""

from bench import media
from bench.scenario import Scenario
from bench.waiting import holds, until


class PlaylistFromStart(Scenario):
    leak_check = True

    def wait_metadata(self, console, *lines):
        until(lambda: set(lines) <= set(console.metadata()),
              lambda: f"metadata {lines}; there is {console.metadata()}\n{console.log.tail()}", 15)

    def test_plays_and_obeys_the_buttons(self):
        console = self.start(media.url("list.pls"))
        console.wait_button("Pause", 20)
        self.assertEqual(console.combos()[0].name(), "KelvoGstRenderer")
        console.log.wait_for(r"^Playing\.")
        self.wait_metadata(console, "title: First Tone", "artist: Ann Example")
        first = console.wait_position(lambda at: at >= 1, "has begun to move")
        self.assertEqual(first[1], 8)
        console.wait_position(lambda at: at > first[0], "goes on")

        mark = console.press("Next")
        console.log.wait_for("KelvoRendererController::next", mark)
        self.wait_metadata(console, "title: Second Tone", "artist: Bob Example")
        self.assertNotIn("title: First Tone", console.metadata())
        mark = console.press("Prev")
        self.wait_metadata(console, "title: First Tone")
        console.wait_position(lambda at: 0 < at < 8, "moves in the first item again")

        console.press("Pause")
        console.wait_button("Resume")
        self.assertFalse(console.has_button("Pause"))
        console.tree.round_trip()
        still = until(console.times, "times")
        holds(lambda: console.times() == still, "the position while paused", 1.6)
        console.press("Resume")
        console.wait_button("Pause")
        console.wait_position(lambda at: at > still[0], "goes on after the pause")

        mark = console.press("Stop")
        console.log.wait_for(r"^Stopped\.", mark)
        console.wait_button("Play")
        self.assertEqual(console.position(), 0)
        holds(lambda: console.position() == 0 and console.has_button("Play"), "stopped", 1.5)
        self.assertEqual(console.dialogs(), [])

    def test_the_end_of_the_list_is_announced_once(self):
        console = self.start(media.url("short.pls"))
        console.wait_button("Pause", 20)
        self.wait_metadata(console, "title: Short One")
        self.wait_metadata(console, "title: Short Two")
        box = console.dialog("alert message", limit=20)
        self.assertIsNotNone(box.find("label", "Playback completed!"), box.outline())
        self.assertEqual(len(console.dialogs()), 1)
        console.user.click(box.wait_find("push button", "OK"), wait=False)
        until(lambda: not console.dialogs(), "the message box closes")
        console.wait_button("Play")
        self.assertEqual(console.position(), 0)
        holds(lambda: not console.dialogs(), "no second message box", 1)
        console.press("Play")
        console.wait_button("Pause")

    def test_an_item_that_is_missing_is_named_and_the_next_one_plays(self):
        console = self.start(media.url("with-missing.pls"))
        self.wait_metadata(console, "title: Short Two")
        console.log.wait_for(r"absent\.mp3")
        box = console.dialog("alert message", limit=20)
        console.user.click(box.wait_find("push button", "OK"), wait=False)
        until(lambda: not console.root().find("alert message"), "the message box closes")
        console.close_error_log()

    def test_a_list_of_plain_lines_plays(self):
        """Nothing in it says that it is a list, but its name does."""
        plain = self.desktop.folder / "mine.m3u"
        plain.write_text(f"{media.folder() / 'first.mp3'}\n{media.folder() / 'second.ogg'}\n")
        console = self.start(plain.as_uri())
        console.wait_button("Pause", 20)
        self.wait_metadata(console, "title: First Tone")
        console.press("Next")
        self.wait_metadata(console, "title: Second Tone")
        self.assertEqual(console.dialogs(), [])

    def test_an_empty_list_does_not_play(self):
        console = self.start(media.url("empty.pls"))
        console.dialog("dialog", "Renderer error log", limit=20)
        self.assertEqual(console.log.count(r"^Playing\."), 0)
        console.close_error_log()
        self.assertTrue(console.has_button("Play"))


class FileFromStart(Scenario):
    def test_the_name_of_a_file_is_as_good_as_its_url(self):
        console = self.start("-style", "fusion", str(media.folder() / "list.pls"))
        console.wait_button("Pause", 20)
        self.assertEqual(console.log.count("Found URL: QUrl\\(\"" + media.url("list.pls")), 1)
        console.wait_position(lambda at: at >= 1, "has begun to move")
