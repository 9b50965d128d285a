# SPDX-License-Identifier: MIT
"""A back end that somebody else wrote and installed beside the console, which is installed, too.

Environment besides: KELVO_E2E_OTHER_VERSION (a folder with the same back end, built for another version of the API)."""

import os

from bench.scenario import Scenario
from bench.waiting import holds, until

NAME = "silence"


class PlugInAuthor(Scenario):
    def setUp(self):
        super().setUp()
        (self.desktop.home / "qkelvo-gui-uris.txt").write_text("silence:20\n")

    def open_plugins(self, console):
        console.menu("Main", "Plugins", wait=False)
        dialog = console.dialog("dialog")
        return dialog, until(lambda: dialog.find("list item", NAME, deep=True), f"{NAME} in the lists", 10)

    def choose(self, console, button):
        """Moves it from the one list of the dialog to the other."""
        dialog, item = self.open_plugins(console)
        console.user.click(item)
        console.user.click(dialog.wait_find("push button", button))
        console.user.click(dialog.wait_find("push button", "Done"))
        until(lambda: not console.dialogs(), "the dialog closes")

    def renderers(self, console):
        return console.combos()[0].find("list", showing=False).rows()

    def test_it_is_listed_loaded_and_plays(self):
        console = self.start(env={"KELVO_PLUGINS": ""})
        self.assertEqual(self.renderers(console), [])
        self.choose(console, "Load")
        until(lambda: console.combos()[0].name() == "Silence", "its renderer is current")
        console.play_uri("silence:20")
        console.wait_button("Pause")
        until(lambda: "title: silence:20" in console.metadata(), lambda: f"its facts; there are {console.metadata()}")
        self.assertEqual(console.wait_position(lambda at: at >= 1, "has begun to move")[1], 20)
        console.press("Pause")
        console.wait_button("Resume")
        still = console.position()
        holds(lambda: console.position() == still, "the position while paused", 1.2)
        console.user.drag_slider(console.slider(), 10)
        console.press("Resume")
        console.wait_position(lambda at: 10 <= at < 15, "goes on where the slider was left")
        # In mid-play, as the developer of a back end does it.
        self.choose(console, "Unload")
        until(lambda: self.renderers(console) == [], "its renderer is gone")
        self.choose(console, "Load")
        until(lambda: console.combos()[0].name() == "Silence", "and comes again")
        self.assertEqual(console.log.count("cannot be used"), 0)

    def test_one_for_another_version_says_why_it_is_not_loaded(self):
        console = self.start(env={"KELVO_PLUGIN_PATH": os.environ["KELVO_E2E_OTHER_VERSION"]})
        until(lambda: console.combos()[0].name() == "KelvoGstRenderer", "the renderer is there")
        mark = console.log.mark()
        self.choose(console, "Load")
        line = console.log.lines[console.log.wait_for(rf"Plug-in {NAME}\.so cannot be used: ", mark)]
        reason = line.partition("cannot be used: ")[2]
        self.assertRegex(reason, r"^made for version 7\.0 of the plug-in API")
        dialog, item = self.open_plugins(console)
        self.assertEqual(item.description(), f"Cannot be used: {reason}")
        console.user.click(dialog.wait_find("push button", "Done"))
        until(lambda: not console.dialogs(), "the dialog closes")
        self.assertEqual(console.combos()[0].name(), "KelvoGstRenderer")
