# SPDX-License-Identifier: MIT
"""There are no file descriptors left: the next song fails and says so, and plays again once there are some. What needs
a thread that does not run yet is not tried: GLib ends every program that it cannot give one. Threads of the program
itself may be refused from the start."""

import os
import resource
import shutil
from pathlib import Path

import faults
from bench import media, process
from bench.waiting import until

LISTS = ["Favorites", "mine"]
MOST = 65_536


class Descriptors(faults.FaultScenario):
    def test_while_a_list_plays(self):
        self.make_library(["first.mp3", "second.ogg"], "first.mp3")
        songs = self.music / "mine.m3u"
        songs.write_text("first.mp3\nsecond.ogg\n")
        console = self.start_with_faults(songs.as_uri(), plugins="gst-renderer,tracker-source",
                                         env=self.music_environment())
        self.wait_kept(({"First Tone": (0, True), "Second Tone": (0, False)}, LISTS))
        console.wait_button("Pause", 20)
        console.faults.watch_turns()
        console.faults.begin(faults.NONE_LEFT, "")
        mark = console.press("Next")
        log = console.dialog("dialog", "Renderer error log", limit=20)
        text = log.wait_find("text")
        until(lambda: "The media could not be read." in text.text(),
              lambda: f"the error; there is {text.text()!r}\n{console.log.tail()}")
        console.log.wait_for("Too many open files", mark)
        self.hear_to_the_end(console)
        console.close_error_log()
        self.assertGreater(console.faults.end(), 0)
        longest = self.assert_smooth(console)
        console.press("Play")
        console.wait_button("Pause", 20)
        console.wait_position(lambda at: at >= 1, "plays again")
        faults.say("fault-emfile", f"told, and plays again, longest turn of the event loop {longest * 1000:.0f} ms")

    def test_no_thread_of_its_own(self):
        self.music.mkdir()
        recording = self.desktop.folder / "run.jsonl"
        song = shutil.copy(media.folder() / "first.mp3", self.music)
        console = self.start_with_faults(Path(song).as_uri(), env={"KELVO_RECORD": str(recording)},
                                         before=lambda system: system.begin(faults.NO_THREAD, ""))
        console.wait_button("Pause", 20)
        console.wait_position(lambda at: at >= 1, "plays")
        console.log.wait_for(f"Nothing is recorded in {recording}: Resource temporarily unavailable")
        self.assertEqual(console.faults.end(), 2, "the fonts' and the recording's")
        faults.say("fault-threads", "no thread for fonts and recording: told, and plays")

    def test_it_takes_as_many_as_the_system_allows(self):
        child = self.desktop.start(["sh", "-c", 'ulimit -S -n 256; exec "$0"', os.environ["KELVO_E2E_PROGRAM"]],
                                   {**self.desktop.env, "KELVO_PLUGINS": ""})
        child.log.wait_for("KelvoGUIMain::KelvoGUIMain", limit=20)
        soft, hard = resource.prlimit(child.pid, resource.RLIMIT_NOFILE)
        self.assertEqual(soft, min(hard, MOST))
        process.end(child)
