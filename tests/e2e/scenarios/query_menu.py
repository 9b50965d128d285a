# SPDX-License-Identifier: MIT
"""The dialogs of the menu "Query" about sources: searching, choosing among them, and what each tells of itself."""

from bench.scenario import Scenario
from bench.waiting import until

A, B = "Simulated source A", "Simulated source B"
# What source B has no answer to.
ONLY_OF_A = ("modelNumber", "serialNumber", "iconURL")


def properties_of(name, signed_in="false"):
    facts = {"signIn": "true", "signedIn": signed_in, "deviceType": "urn:schemas-upnp-org:device:MediaServer:1",
             "manufacturer": "Simulator", "manufacturerURL": "http://manufacturer.invalid/",
             "modelDescription": "A source without content", "modelName": name, "modelNumber": "1",
             "modelURL": "http://manufacturer.invalid/model", "serialNumber": "0000001",
             "presentationURL": "http://device.invalid/", "universalProductCode": "000000000000",
             "iconURL": "http://device.invalid/icon.png", "supportQuery": "false"}
    return [f"{key}: {value}" for key, value in facts.items() if name == A or key not in ONLY_OF_A]


class QueryMenu(Scenario):
    def start_with_sources(self):
        console = self.start(env={"KELVO_PLUGINS": "simulator"})
        until(lambda: console.combos()[0].name() == "Simulator A", "the simulator has started")
        return console

    def open(self, console, entry, title):
        console.menu("Query", entry, wait=False)
        return console.dialog("dialog", title)

    def leave(self, console, dialog, button, role="push button"):
        """Presses the button, which closes the dialog; returns the log's mark from before."""
        mark = console.log.mark()
        console.user.click(dialog.wait_find(role, button))
        until(lambda: not console.dialogs(), "the dialog closes")
        return mark

    # Search...

    def assert_proposal(self, dialog):
        self.assertEqual(dialog.wait_find("text").text(), "Miriam Makeba")
        self.assertEqual(dialog.wait_find("combo box").name(), "Filename")

    def search(self, console):
        """Fills the dialog in with something else than it proposes."""
        dialog = self.open(console, "Search...", "Search")
        self.assert_proposal(dialog)
        console.user.replace_text(dialog.wait_find("text"), "Some song")
        console.user.choose_in_combo(dialog.wait_find("combo box"), "Music piece")
        until(lambda: dialog.wait_find("combo box").name() == "Music piece", "the kind is chosen")
        return dialog

    def test_search_opens_with_its_proposal_and_asks_for_nothing_when_cancelled(self):
        console = self.start_with_sources()
        dialog = self.search(console)
        console.screen.shoot(self.output("-Search.png"))
        mark = self.leave(console, dialog, "Cancel")
        dialog = self.search(console)
        self.assertEqual(console.log.count("getSearchConditions|showQueryResults", mark), 0)
        mark = self.leave(console, dialog, "Execute")
        at = console.log.wait_for("KelvoMainWindow::getSearchConditions", mark)
        console.log.wait_for("KelvoMainWindow::showQueryResults", at)
        dialog = self.open(console, "Search...", "Search")
        self.assert_proposal(dialog)
        self.leave(console, dialog, "Cancel")

    # Select sources...

    def boxes(self, dialog):
        """Names of the sources and whether they are ticked."""
        return [(box.name(), "checked" in box.states()) for box in dialog.find_all("check box")]

    def open_sources(self, console, ticked):
        dialog = self.open(console, "Select sources...", "Dialog")
        self.assertEqual(self.boxes(dialog), [(name, name in ticked) for name in (A, B)])
        return dialog

    def tick(self, console, dialog, name):
        box = dialog.wait_find("check box", name)
        before = "checked" in box.states()
        x, y, _, height = box.extents()
        console.user.click_at(x + 10, y + height // 2)  # only indicator and text react
        until(lambda: ("checked" in box.states()) != before, f"{name} changes")

    def test_chosen_sources_stay_chosen_until_the_dialog_is_cancelled(self):
        console = self.start_with_sources()
        dialog = self.open_sources(console, ())
        self.tick(console, dialog, B)
        console.screen.shoot(self.output("-Select-sources.png"))
        self.leave(console, dialog, "Done")
        dialog = self.open_sources(console, (B,))
        self.tick(console, dialog, B)
        self.tick(console, dialog, A)
        self.leave(console, dialog, "Done")
        self.leave(console, self.open_sources(console, (A,)), "Done")
        # Cancelling takes the whole choice back, also what was accepted before.
        dialog = self.open_sources(console, (A,))
        self.tick(console, dialog, B)
        self.leave(console, dialog, "Cancel")
        self.leave(console, self.open_sources(console, ()), "Done")

    # Source properties...

    def wait_lines(self, dialog, lines):
        field = dialog.wait_find("text")
        until(lambda: field.text().split("\n") == lines, lambda: f"lines {lines}; there is\n{field.text()}")

    def press_once(self, console, dialog, button, line):
        """However often the dialog was opened before, one press is one request."""
        mark = console.log.mark()
        console.user.click(dialog.wait_find("push button", button))
        console.log.wait_for(line, mark)
        console.tree.round_trip()
        self.assertEqual(console.log.count("invokeSignIn|invokeSignOut", mark), 1)

    def test_source_properties_list_what_the_chosen_source_tells(self):
        console = self.start_with_sources()
        dialog = self.open(console, "Source properties...", "Source properties")
        combo = dialog.wait_find("combo box")
        self.assertEqual(combo.find("list", showing=False).rows(), [A, B])
        self.assertIn("read-only", dialog.wait_find("text").states())
        self.wait_lines(dialog, properties_of(A))
        console.screen.shoot(self.output("-Source-properties.png"))
        console.user.choose_in_combo(combo, B)
        self.wait_lines(dialog, properties_of(B))
        self.press_once(console, dialog, "SignIn", "KelvoSourceController::invokeSignIn")
        console.user.choose_in_combo(combo, A)
        self.wait_lines(dialog, properties_of(A))
        console.user.choose_in_combo(combo, B)
        self.wait_lines(dialog, properties_of(B, "true"))
        self.leave(console, dialog, "Done")

        # It opens anew with the first source, and signing out reaches the one that is shown.
        dialog = self.open(console, "Source properties...", "Source properties")
        self.wait_lines(dialog, properties_of(A))
        self.press_once(console, dialog, "SignIn", "KelvoSourceController::invokeSignIn")
        combo = dialog.wait_find("combo box")
        console.user.choose_in_combo(combo, B)
        self.wait_lines(dialog, properties_of(B, "true"))
        self.press_once(console, dialog, "SignOut", "KelvoSourceController::invokeSignOut")
        console.user.choose_in_combo(combo, A)
        self.wait_lines(dialog, properties_of(A, "true"))
        console.user.choose_in_combo(combo, B)
        self.wait_lines(dialog, properties_of(B))
        self.leave(console, dialog, "Done")
