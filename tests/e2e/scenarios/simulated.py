# SPDX-License-Identifier: MIT
"""What the real renderer cannot be made to do at will: the simulator's renderers do it."""

from bench import console as ui
from bench.scenario import Scenario
from bench.screen import bright_but_not_red, dark, strong_red
from bench.waiting import holds, until

PLAYBACK = ("Play", "Stop", "Prev", "Next", "< Seek", "Seek >")


class Simulated(Scenario):
    def start_simulator(self, wishes=""):
        console = self.start(env={"KELVO_PLUGINS": "simulator", "KELVO_SIMULATOR": wishes})
        until(lambda: console.combos()[0].name() == "Simulator A", "the first renderer is current")
        return console

    def colours(self, console):
        """Pixels of the playback buttons: (dark, red, bright without being red)."""
        console.user.move_to(5, self.screen_size[1] - 5)
        picture = console.screen.picture()
        areas = []
        for caption in PLAYBACK:
            x, y, width, height = console.button(caption).extents()
            areas.append((x + 4, y + 4, width - 8, height - 8))
        return [tuple(picture.count(area, kind) for kind in (dark, strong_red, bright_but_not_red)) for area in areas]

    def test_captions_are_black_without_a_policy_override(self):
        console = self.start_simulator()
        for black, red, _ in self.colours(console):
            self.assertGreater(black, 20)
            self.assertEqual(red, 0)

    def test_a_policy_override_paints_the_captions_red(self):
        # Held back by the latency, so that the console has chosen the renderer when it reports.
        console = self.start_simulator("sim-latency=1500;policy-override=true")
        console.log.wait_for(r'rendererPropertyChanged "policy-override" QVariant\(bool, true\)', limit=20)
        for tab in (ui.MUSIC, ui.VIDEO):
            console.tab(tab)
            # On black, since red cannot be read on anything bright.
            until(lambda: all(red > 20 and black > red and other == 0 for black, red, other in self.colours(console)),
                  lambda: f"red captions on {tab}: (black, red, other) are {self.colours(console)}", 10)
            console.screen.shoot(self.output(f"-{tab.replace(' ', '-')}.png"))
        # The buttons still work.
        mark = console.press("Next")
        console.log.wait_for("KelvoRendererController::next", mark)

    def test_a_renderer_without_a_name_is_listed_by_the_number_of_renderers(self):
        console = self.start_simulator()
        box = console.combos()[0].find("list", showing=False)
        self.assertEqual(box.rows(), ["Simulator A", "Simulator B", "empty 3"])
        mark = console.log.mark()
        console.user.choose_in_combo(console.combos()[0], "empty 3")
        console.log.wait_for("KelvoRendererController::rendererChanged", mark)
        until(lambda: console.combos()[0].name() == "empty 3", "the other renderer is current")

    def test_an_error_opens_the_log_and_the_next_one_reuses_it(self):
        # Play with nothing to play is an error of its own kind.
        console = self.start_simulator()
        console.press("Play")
        log = console.dialog("dialog", "Renderer error log")
        text = log.wait_find("text")
        until(lambda: text.text().startswith("Code 305, "), lambda: f"the error; there is {text.text()!r}")
        console.close_error_log()
        console.press("Play")
        log = console.dialog("dialog", "Renderer error log")
        text = log.wait_find("text")
        until(lambda: len(text.text().strip().split("\n")) == 2, lambda: f"two lines; there is {text.text()!r}")
        self.assertEqual(len(console.root().find_all("dialog")), 1)
        console.user.click(log.wait_find("push button", "Clear"))
        until(lambda: text.text().strip() == "", "the log is empty")
        console.close_error_log()

    def test_without_a_renderer_the_commands_do_nothing(self):
        console = self.start(env={"KELVO_PLUGINS": ""})
        for caption in PLAYBACK:
            console.press(caption)
        holds(lambda: console.times() == (0, 0) and not console.dialogs(), "nothing happens", 0.5)
