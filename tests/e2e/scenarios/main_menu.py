# SPDX-License-Identifier: MIT
"""The Main menu: the help page, and back ends that are loaded and unloaded while the console runs."""

from bench import console as ui
from bench import media
from bench.scenario import Scenario
from bench.screen import strong_red
from bench.waiting import until


class MainMenu(Scenario):
    def test_help_opens_and_closes(self):
        console = self.start()
        console.menu("Main", "Help", wait=False)
        dialog = console.dialog("dialog", "Help")
        text = dialog.wait_find("text").text()
        for heading in ("What and where?", "NOTE", "How?"):
            self.assertIn(heading, text)
        self.assertIn("read-only", dialog.wait_find("text").states())
        console.screen.shoot(self.output("-Help.png"))
        console.user.click(dialog.wait_find("push button", "Close"))
        until(lambda: not console.dialogs(), "the help closes")

    def choose_plugin(self, console, name, button):
        """Opens the dialog, moves the plug-in by the button and presses Done."""
        console.menu("Main", "Plugins", wait=False)
        dialog = console.dialog("dialog")
        console.screen.shoot(self.output("-Plugins.png"))
        item = until(lambda: dialog.find("list item", name, deep=True), f"{name} in the lists", 10)
        console.user.click(item)
        console.user.click(dialog.wait_find("push button", button))
        console.user.click(dialog.wait_find("push button", "Done"))
        until(lambda: not console.dialogs(), "the dialog closes")

    def shows_video(self, console):
        x, y, width, height = console.window().wait_find("label", "Video").extents()
        return console.screen.picture().count((x + width // 2, y + height // 2, 1, 1), strong_red) == 1

    def test_the_real_renderer_goes_in_mid_play_and_plays_the_start_url_again(self):
        console = self.start(media.url("red.mp4"))
        console.wait_button("Pause", 20)
        console.tab(ui.VIDEO)
        until(lambda: self.shows_video(console), "the video shows", 15)
        mark = console.log.mark()
        self.choose_plugin(console, "gst-renderer", "Unload")
        console.log.wait_for("KelvoRendererController::rendererRemoved", mark)
        until(lambda: not self.shows_video(console), "the video goes with its renderer", 10)
        mark = console.log.mark()
        self.choose_plugin(console, "gst-renderer", "Load")
        console.log.wait_for(r"^Playing\.", mark, 20)
        until(lambda: self.shows_video(console), "the video is back", 10)
        console.tab(ui.MUSIC)
        self.assertEqual(self.renderers(console), ["KelvoGstRenderer"])
        self.assertEqual(console.dialogs(), [])

    def renderers(self, console):
        return console.combos()[0].find("list", showing=False).rows()

    def test_a_back_end_comes_and_goes(self):
        console = self.start()
        until(lambda: self.renderers(console) == ["KelvoGstRenderer"], "the real renderer alone")
        for _ in range(2):
            self.choose_plugin(console, "simulator", "Load")
            until(lambda: self.renderers(console) == ["KelvoGstRenderer", "Simulator A", "Simulator B", "empty 4"],
                  lambda: f"the simulated renderers; there are {self.renderers(console)}")
            self.choose_plugin(console, "simulator", "Unload")
            until(lambda: self.renderers(console) == ["KelvoGstRenderer"],
                  lambda: f"they are gone; there are {self.renderers(console)}")

    def start_with_both(self):
        console = self.start()
        until(lambda: self.renderers(console) == ["KelvoGstRenderer"], "the real renderer is the first one")
        self.choose_plugin(console, "simulator", "Load")
        until(lambda: len(self.renderers(console)) == 4, "the simulated renderers follow", 20)
        console.user.choose_in_combo(console.combos()[0], "Simulator A")
        until(lambda: console.combos()[0].name() == "Simulator A", "another renderer is current")
        return console

    def unload(self, console, name):
        mark = console.log.mark()
        self.choose_plugin(console, name, "Unload")
        console.log.wait_for("KelvoPluginController::showPluginsDialog ends", mark)
        return mark

    def test_a_renderer_that_is_not_current_goes_alone(self):
        console = self.start_with_both()
        mark = self.unload(console, "gst-renderer")
        until(lambda: "KelvoGstRenderer" not in self.renderers(console), "it is gone")
        self.assertEqual(console.combos()[0].name(), "Simulator A")
        self.assertEqual(console.log.count("KelvoRendererController::(rendererChanged|stop)", mark), 0)

    def test_nobody_follows_a_current_renderer_that_goes(self):
        console = self.start_with_both()
        mark = self.unload(console, "simulator")
        until(lambda: self.renderers(console) == ["KelvoGstRenderer"], "they are gone")
        self.assertNotEqual(console.combos()[0].name(), "KelvoGstRenderer")
        self.assertEqual(console.log.count("KelvoRendererController::rendererChanged", mark), 0)
        console.user.choose_in_combo(console.combos()[0], "KelvoGstRenderer")
        console.log.wait_for("KelvoRendererController::rendererChanged", mark)
        until(lambda: console.combos()[0].name() == "KelvoGstRenderer", "the one that was picked is current")
