# SPDX-License-Identifier: MIT
"""Two machines with a library each answer one query together. This one is the network namespace that the scenario runs
in, the other one a namespace at the end of a cable."""

import shutil
import signal

from bench import media
from bench.scenario import Scenario
from bench.waiting import until

NEAR, FAR, PORT = "10.77.0.1", "10.77.0.2", 8099
ENDPOINT = f"http://{FAR}:{PORT}/sparql"
OF_NEAR = {"second.ogg": "Second Tone", "short one.mp3": "Short One"}
OF_FAR = {"first.mp3": "First Tone", "long.mp3": "Long Tone"}
EXECUTE, EXTEND = "Execute\nquery", "Extend\nquery"
CREATE = "Create new\n playlist from\n result set"
SONG_COLUMNS, ALBUM_COLUMNS, ARTIST_COLUMNS = 14, 8, 4


class TwoMachines(Scenario):
    def make_music(self, name, files):
        """The environment of a console with these files."""
        music = self.desktop.folder / name / "Music"
        music.mkdir(parents=True)
        for file in files:
            shutil.copy(media.folder() / file, music / file)
        return {"KELVO_PLUGINS": "gst-renderer,tracker-source", "KELVO_MEDIA_DIRS": str(music),
                "XDG_DATA_HOME": str(self.desktop.folder / name / "data")}

    def results(self, console, columns=SONG_COLUMNS):
        return console.window().wait_find("list", "Query results").rows()[1::columns]

    def query(self, console, name="All songs", columns=SONG_COLUMNS):
        combo = next(combo for combo in console.combos() if combo.name().startswith("All "))
        if combo.name() != name:
            console.user.choose_in_combo(combo, name)
        mark = console.press(EXECUTE)
        console.log.wait_for("KelvoQueryController::modelUpdatedSlot", mark)
        return self.results(console, columns)

    def extend(self, console, row, columns):
        console.user.click(console.window().wait_find("list item", row, deep=True))
        mark = console.press(EXTEND)
        console.log.wait_for("KelvoQueryController::modelUpdatedSlot", mark)
        return self.results(console, columns)

    def start_with(self, environment, songs):
        console = self.start(env=environment)
        console.tab("Query")
        until(lambda: console.button(EXECUTE).enabled(), "the store is ready", 30)
        until(lambda: self.query(console) == songs,
              lambda: f"the songs {songs}; there are {self.results(console)}\n{console.log.tail()}", 60)
        return console

    def lay_cable(self):
        """What runs a program on the other machine."""
        far = self.desktop.start(["unshare", "--net", "sleep", "infinity"])
        own = self.desktop.run(["readlink", "/proc/self/ns/net"])
        until(lambda: self.desktop.run(["readlink", f"/proc/{far.pid}/ns/net"]) != own, "the other machine is there")
        at_far = ["nsenter", f"--net=/proc/{far.pid}/ns/net", "--"]
        self.desktop.run(["ip", "link", "add", "kelvo0", "type", "veth", "peer", "name", "kelvo1", "netns", far.pid])
        for prefix, interface, address in (([], "kelvo0", NEAR), (at_far, "kelvo1", FAR)):
            self.desktop.run([*prefix, "ip", "addr", "add", f"{address}/24", "dev", interface])
            self.desktop.run([*prefix, "ip", "link", "set", interface, "up"])
        return at_far

    def serve(self, at_far, environment):
        """The library of the other machine, from its store."""
        store = f"{environment['XDG_DATA_HOME']}/kelvo/tracker"
        server = self.desktop.start([*at_far, "tracker3", "endpoint", "-d", store, "-o", "nepomuk", "--http-port", PORT])
        until(lambda: f":{PORT}" in self.desktop.run([*at_far, "ss", "-ltn"]), lambda: f"the endpoint\n{server.log.tail()}",
              20)
        return server

    def test_one_query(self):
        far = self.make_music("far", OF_FAR)
        console = self.start_with(far, list(OF_FAR.values()))
        console.close()
        at_far = self.lay_cable()
        server = self.serve(at_far, far)

        near = {**self.make_music("near", OF_NEAR), "KELVO_TRACKER": ENDPOINT}
        both = [*OF_NEAR.values(), *OF_FAR.values()]
        console = self.start_with(near, both)
        self.assertEqual(self.query(console, "All artists", ARTIST_COLUMNS),
                         ["Ann Example", "Bob Example", "Ann Example", "Dee Example"])
        self.assertEqual(self.extend(console, "Dee Example", ALBUM_COLUMNS), ["Long"])
        self.assertEqual(self.extend(console, "Long", SONG_COLUMNS), ["Long Tone"])

        server.send_signal(signal.SIGKILL)
        server.wait()
        mark = console.log.mark()
        self.assertEqual(self.query(console), list(OF_NEAR.values()))
        console.log.wait_for(f'KelvoMainWindow::updateQueryErrorLabel "The library {ENDPOINT} failed: ', mark)
        self.serve(at_far, far)
        self.assertEqual(self.query(console), both)

        # Its songs are files over there.
        console.press(CREATE)
        console.tab("Play music")
        console.user.double_click(console.window().wait_find("list item", "Long Tone", deep=True))
        text = console.dialog("dialog", "Renderer error log", limit=20).wait_find("text")
        until(lambda: text.text().startswith("Code 110, The media is a file on another machine"),
              lambda: f"the error; there is {text.text()!r}")
        console.close_error_log()
