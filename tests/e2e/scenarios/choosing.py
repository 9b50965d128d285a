# SPDX-License-Identifier: MIT
"""A renderer that plays already is chosen: the window shows what goes on there."""

from bench import media
from bench.scenario import Scenario
from bench.waiting import holds, until


class Choosing(Scenario):
    def start_beside_the_simulator(self):
        """The start URL plays on the real renderer, while the simulator's first one is current."""
        console = self.start(media.url("long.mp3"), env={"KELVO_PLUGINS": "simulator,gst-renderer"})
        until(lambda: console.combos()[0].name() == "Simulator A", "the first renderer is current")
        box = console.combos()[0].find("list", showing=False)
        until(lambda: "KelvoGstRenderer" in box.rows(), "the real renderer is listed")
        return console

    def choose(self, console, name):
        mark = console.log.mark()
        console.user.choose_in_combo(console.combos()[0], name)
        console.log.wait_for("KelvoRendererController::rendererChanged", mark)
        until(lambda: console.combos()[0].name() == name, "the other renderer is current")

    def test_what_plays_already_is_shown(self):
        console = self.start_beside_the_simulator()
        holds(lambda: console.has_button("Play") and console.position() == 0, "the current one is stopped", 1)
        self.choose(console, "KelvoGstRenderer")
        console.wait_button("Pause")
        first = console.wait_position(lambda at: at >= 1, "is shown")
        self.assertEqual(first[1], 60)
        console.wait_position(lambda at: at > first[0], "goes on")
        self.assertEqual(console.metadata()[:3], ["title: Long Tone", "artist: Dee Example", "album: Long"])
        self.assertEqual(len(console.metadata()), len(set(console.metadata())))
        console.screen.shoot(self.output(".png"))
        console.press("Pause")
        console.wait_button("Resume")

    def test_a_stopped_one_shows_nothing_of_the_one_before(self):
        console = self.start_beside_the_simulator()
        self.choose(console, "KelvoGstRenderer")
        console.wait_button("Pause")
        self.choose(console, "Simulator B")
        console.wait_button("Play")
        until(lambda: console.metadata() == [""], lambda: f"no metadata; there is {console.metadata()}")
        # It was stopped when it was left, and tells of its address again when that plays.
        self.choose(console, "KelvoGstRenderer")
        holds(lambda: console.has_button("Play") and console.position() == 0, "it is stopped", 1)
        console.press("Play")
        console.wait_button("Pause")
        until(lambda: console.metadata().count("title: Long Tone") == 1, "its title")
