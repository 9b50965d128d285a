# SPDX-License-Identifier: MIT
"""What a screen reader hears of the console without asking, and what it can do there."""

from bench import atspi, media
from bench.scenario import Scenario
from bench.waiting import until


class ScreenReader(Scenario):
    def setUp(self):
        super().setUp()
        self.reader = atspi.Listener(self.desktop, "object:state-changed:showing",
                                     "object:property-change:accessible-value")
        self.addCleanup(self.reader.close)

    def heard(self, console):
        return self.reader.announcements(console.tree)

    def wait_heard(self, console, expected, limit=15.0):
        until(lambda: self.heard(console) == expected, lambda: f"{expected} are heard; heard are {self.heard(console)}",
              limit)

    def values(self):
        return len(self.reader.events("PropertyChange", "accessible-value"))

    def test_states_and_the_end_of_playback_are_heard(self):
        console = self.start(media.url("short one.mp3"))
        console.wait_button("Pause", 20)
        until(lambda: "Playing" in self.heard(console), lambda: f"it plays; heard are {self.heard(console)}")
        console.dialog("alert message")
        until(lambda: "Playback completed!" in self.heard(console), lambda: f"the end; heard are {self.heard(console)}")
        # Not one of the seconds in between.
        self.assertEqual([text for text in self.heard(console) if text not in ("Scanning", "Buffering")],
                         ["Playing", "Stopped", "Playback completed!"])
        console.user.key("Return")
        until(lambda: not console.dialogs(), "the box closes")

    def test_errors_are_heard(self):
        console = self.start(env={"KELVO_PLUGINS": "simulator"})
        until(lambda: console.combos()[0].name() == "Simulator A", "the first renderer is current")
        console.press("Play")
        until(lambda: any(text.startswith("Code 305, ") for text in self.heard(console)),
              lambda: f"the error; heard are {self.heard(console)}")
        console.close_error_log()

    def test_seconds_are_not_heard_and_seeking_is(self):
        console = self.start(media.url("long.mp3"))
        console.wait_button("Pause", 20)
        slider = console.slider()
        console.user.tab_to(slider)
        first = console.position()
        console.wait_position(lambda at: at >= first + 1, "moves")
        values, said = self.values(), self.heard(console)
        console.wait_position(lambda at: at >= first + 4, "moves on")
        self.assertEqual(self.values(), values)
        self.assertEqual(self.heard(console), said)
        self.assertGreaterEqual(slider.value(), first + 4)  # it can be asked for
        # Set over the bus, as a reader does for somebody who cannot press keys.
        mark = console.log.mark()
        slider.set_value(40)
        console.log.wait_for(r"void KelvoRendererController::seek\(int\)", mark, count=2)
        console.wait_position(lambda at: 39 <= at <= 50, "is where it was set to")
        self.assertGreater(self.values(), values)
        self.assertIn("focused", slider.states())

    def test_combo_boxes_say_what_they_are_for(self):
        console = self.start()
        until(lambda: console.combos()[0].name() == "KelvoGstRenderer", "the box shows its choice")
        # Their names are what is chosen in them, and of name and label a reader speaks one.
        self.assertEqual([combo.labels() for combo in console.combos()], [["Renderer: KelvoGstRenderer"], ["Music playlist"]])
        console.tab("Query")
        self.assertEqual([combo.labels() for combo in console.combos() if combo.name() == "All songs"], [["Query: All songs"]])
        query = next(combo for combo in console.combos() if combo.name() == "All songs")
        console.user.tab_to(query)
        console.user.key("Down")
        until(lambda: self.heard(console) == ["Recently added songs"],
              lambda: f"the choice; heard are {self.heard(console)}")
        self.assertEqual(query.labels(), ["Query: Recently added songs"])
