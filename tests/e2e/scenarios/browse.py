# SPDX-License-Identifier: MIT
"""The tab "Browse content" and "Launch browser": browsing finds nothing yet, and the buttons say so in the log."""

from bench import console as ui
from bench import playlists
from bench.scenario import Scenario
from bench.waiting import holds, until

APPEND = "Append\nitem(s) to\nplaylist"
BROWSE_BUTTONS = ("Browse", "Clear")


class Browse(Scenario):
    def results_label(self, console):
        return [label for label in ("%n results", "0 results") if console.window().find("label", label)]

    def press_logs(self, console, caption, *lines):
        """The lines come in this order, each once."""
        mark = at = console.press(caption)
        for line in lines:
            at = console.log.wait_for(line, at)
            self.assertEqual(console.log.count(line, mark), 1, line)

    def test_the_buttons_of_the_tab(self):
        environment = playlists.environment(["sim:alpha", "sim:bravo"], "simulator")
        console = self.start(env=environment)
        playlists.create(console)
        console.tab(ui.BROWSE)
        self.assertEqual(self.results_label(console), ["%n results"])
        for _ in range(2):
            self.press_logs(console, "Browse", "KelvoSourceController::executeBrowse", r"KelvoBrowseController::browse\(",
                            "KelvoMainWindow::showBrowseResults")
            until(lambda: self.results_label(console) == ["0 results"], "the count shows")
            self.assertTrue(all(console.button(caption).enabled() for caption in BROWSE_BUTTONS))
            self.assertEqual(console.window().wait_find("list", "Browse results").rows(), [])
        self.press_logs(console, "Clear", "KelvoSourceController::clearBrowseResults",
                        "KelvoBrowseController::clearBrowseResults", "KelvoMainWindow::clearBrowseResults")
        self.assertEqual(self.results_label(console), ["0 results"])
        self.press_logs(console, APPEND, "KelvoSourceController::addBrowseToPlaylist")
        console.tab(ui.MUSIC)
        self.assertEqual(playlists.titles(console), ["alpha", "bravo"])
        self.assertEqual(console.dialogs(), [])

    def test_no_browser_is_launched_where_nothing_is_selected(self):
        started = self.desktop.folder / "browser-was-started"
        browser = self.desktop.folder / "browser"
        browser.write_text(f"#!/bin/sh\n: >{started}\n")
        browser.chmod(0o755)
        console = self.start(env={"KELVO_PLUGINS": "", "KELVO_BROWSER": str(browser)})
        for tab, asked in ((ui.MUSIC, 0), (ui.VIDEO, 0), (ui.IMAGES, 0), (ui.BROWSE, 1), (ui.QUERY, 1)):
            console.tab(tab)
            mark = console.menu("Query", "Launch browser")
            console.log.wait_for("KelvoMainWindow::launchBrowser", mark)
            if asked:
                console.log.wait_for("Please select item to launch!", mark)
            console.tree.round_trip()
            self.assertEqual(console.log.count("Please select item to launch!", mark), asked, tab)
        self.assertEqual(console.log.count("KelvoGUIMain::startBrowser"), 0)
        holds(lambda: not started.exists(), "no browser starts", 0.5)
