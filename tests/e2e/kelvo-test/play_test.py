#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""kelvo-test play."""
import tempfile
import unittest
from pathlib import Path

from program import ProgramCase, Terminal

SHORT = "sim:first?duration=1&title=First"
LONG = "sim:long?duration=600&title=Long"


class Play(ProgramCase):
    def play(self, *arguments, **changes):
        return self.run_program("play", *arguments, **changes)

    def test_one_address(self):
        done = self.play(SHORT, "--on", "KelvoSimulatorA")
        self.assertEqual(done.code, 0)
        self.assertEqual(done.out.splitlines(), [
            "Transitioning", SHORT, "title: First", "duration: 1", "Playing", "Stopped"])

    def test_several_addresses_are_a_playlist(self):
        done = self.play(SHORT, SHORT.replace("First", "Second"), "--on", "Simulator A")
        self.assertEqual(done.code, 0)
        self.assertEqual([line for line in done.out.splitlines() if line.startswith("title")],
                         ["title: First", "title: Second"])

    def test_the_position_is_told(self):
        done = self.play("sim:song?duration=30", "--on", "KelvoSimulatorA", "--for", "11500 ms")
        self.assertEqual(done.code, 0)
        self.assertIn("\n0:10 of 0:30\n", done.out)

    def test_errors_fail(self):
        done = self.play("sim:bad?fail=106", "--on", "KelvoSimulatorA")
        self.assertEqual(done.code, 1)
        self.assertIn("error 106 (The media is damaged.): sim:bad?fail=106\n", done.out)

    def test_an_item_that_fails_in_a_list(self):
        done = self.play(SHORT, "sim:bad?fail=106", SHORT, "--on", "KelvoSimulatorA")
        self.assertEqual(done.code, 1)
        self.assertEqual(done.out.count("title: First"), 2)

    def test_hostile_titles_stay_text(self):
        done = self.play("sim:song?duration=1&title=%1B%5B2J%E2%80%AE%0Aline", "--on", "KelvoSimulatorA")
        self.assertIn("title: \\u001b[2J\\u202e", done.out)
        self.assertNotIn("\x1b", done.out)

    def test_renderers_that_are_none_or_several(self):
        done = self.play(SHORT, "--on", "Nobody", "--wait", "1s")
        self.assertEqual((done.code, done.out), (2, ""))
        self.assertIn('There is no renderer "Nobody" after 1 s; there are: "Simulator A" (KelvoSimulatorA), ', done.err)
        done = self.play(SHORT, "--on", "Nobody", "--wait", "100ms", KELVO_PLUGINS="")
        self.assertIn("there is none at all", done.err)
        done = self.play(SHORT, "--on", "sim*")
        self.assertEqual(done.code, 2)
        self.assertIn('"sim*" stands for several renderers, one is needed: "Simulator A"', done.err)
        done = self.play(SHORT, "--on", "Same", KELVO_SIMULATOR="sim-name=Same")
        self.assertEqual(done.code, 2)
        self.assertIn('Several renderers are named "Same"; say which by its uuid: ', done.err)

    def test_a_song_loads_no_decoder_of_films(self):
        """Which would be most of what it takes to begin to play."""
        folder = Path(self.enterContext(tempfile.TemporaryDirectory()))
        # Encoders of others are looked for leaks nowhere.
        done = self.run_program("media", str(folder), "--format", "mp3", "--songs", "1", "--seconds", "20",
                                ASAN_OPTIONS="detect_leaks=0")
        self.assertEqual(done.code, 0, done.err)
        process = self.start_program("play", str(folder / "song-01.mp3"), "--on", "KelvoGstRenderer",
                                     KELVO_PLUGINS="gst-renderer", KELVO_AUDIO_SINK="fakesink sync=true")
        self.read_until(process, "Playing")
        maps = Path(f"/proc/{process.pid}/maps").read_text(encoding="utf-8")
        self.assertIn("libmpg123", maps)
        self.assertNotIn("libavcodec", maps)

    def test_a_glob_that_fits_one(self):
        self.assertEqual(self.play(SHORT, "--on", "*torB").code, 0)

    def test_wrong_calls(self):
        for words, message in (([], "play needs a URL or the name of a file"),
                               ([SHORT], 'play needs a renderer: --on NAME ("kelvo-test list" shows them)'),
                               ([SHORT, "--on"], "Missing value after '--on'."),
                               ([SHORT, "--for", "-1", "--on", "x"], '--for takes a time such as 5s or 250ms, not "-1"')):
            done = self.play(*words)
            self.assertEqual((done.code, done.out, done.err), (2, "", f"kelvo-test: {message}\n"))

    def test_an_interruption_stops_the_renderer(self):
        process = self.start_program("play", LONG, "--on", "KelvoSimulatorA")
        self.read_until(process, "Playing")
        code, seconds = self.interrupt(process)
        self.assertEqual(code, 0)
        self.assertLess(seconds, 5)
        self.assertEqual(process.stdout.read(), "Stopped\n")


class Keys(ProgramCase):
    def terminal(self, *arguments, **changes):
        return Terminal("play", *arguments, "--on", "KelvoSimulatorA", environment=self.environment(**changes))

    def test_keys(self):
        terminal = self.terminal(LONG, SHORT, TERM="xterm")
        terminal.read_until("space: pause and resume")
        terminal.read_until("Playing")
        terminal.press(" ")
        terminal.read_until("Paused")
        terminal.press("\x1b[C")
        terminal.read_until("0:10 of 10:00")
        terminal.press("\x1bOD")
        terminal.read_until("0:00 of 10:00")
        terminal.press(" ")
        terminal.read_until("Playing")
        terminal.press("n")
        terminal.read_until("title: First")
        terminal.press("p")
        terminal.read_until("title: Long")
        terminal.press("q")
        terminal.read_until("Stopped")
        self.assertEqual(terminal.wait(), 0)
        self.assertIn("\x1b[2m", terminal.output)

    def test_no_colours(self):
        terminal = self.terminal(SHORT, TERM="xterm", NO_COLOR="1")
        terminal.read_until("Stopped")
        self.assertEqual(terminal.wait(), 0)
        self.assertNotIn("\x1b[2m", terminal.output)


if __name__ == "__main__":
    unittest.main()
