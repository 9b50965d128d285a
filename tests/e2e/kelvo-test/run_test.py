#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""kelvo-test run.

Environment besides: KELVO_TEST_JUNIT_SCHEMA."""
import json
import os
import re
import subprocess
import tempfile
import time
import unittest
import xml.etree.ElementTree as xml
from pathlib import Path

from program import PATIENCE, PROGRAM, ProgramCase

HOLDS = """
title: starts
media: {song: {sound: tone, seconds: 30}}
steps:
  - playUri: $song
  - expect: {state: Playing}
"""
FAILS = """
title: pauses by itself
media: {song: {sound: tone, seconds: 30}}
steps:
  - playUri: $song
  - expect: {state: Playing}
  - expect: {state: Paused, within: 300 ms}
"""
SKIPPED = "needs: [media]\nsteps: [play]\n"
ENDLESS = "steps: [wait: 10 min]\n"
SIMULATOR = ("--on", "KelvoSimulatorA")


class RunCase(ProgramCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def write(self, text, name="scenario.yaml"):
        path = self.folder / name
        path.write_text(text, encoding="utf-8")
        return str(path)

    def run_text(self, text, *arguments, **changes):
        return self.run_program("run", self.write(text), *SIMULATOR, *arguments, **changes)


class Results(RunCase):
    def test_one_that_holds(self):
        done = self.run_text(HOLDS)
        self.assertEqual(done.code, 0)
        self.assertRegex(done.out, r"^\[1/1\] held: starts on Simulator A \(0\.\d s\)\n"
                                   r"1 held, 0 failed, 0 skipped, 0 could not run; seed \d+\n$")

    def test_one_that_fails_says_what_came(self):
        done = self.run_text(FAILS)
        self.assertEqual(done.code, 1)
        self.assertRegex(done.out, r"\[1/1\] FAILED: pauses by itself on Simulator A")
        self.assertRegex(done.out, r"scenario\.yaml:7: expected state Paused within 300 ms; at 0\.\d+ s: "
                                   r"state Playing, item song\n")
        self.assertRegex(done.out, r"The last events:\n +0\.\d+ s  command playUri song\n"
                                   r"(.*\n)* +0\.\d+ s  report stateChanged Playing\n")

    def test_one_that_is_not_for_this_renderer(self):
        done = self.run_text(SKIPPED)
        self.assertEqual(done.code, 77)
        self.assertIn("skipped: scenario on Simulator A", done.out)
        self.assertIn("needs a renderer that plays media, this one only pretends to", done.out)
        done = self.run_text("needs: [no-such-thing]\nsteps: [play]\n")
        self.assertEqual(done.code, 77)
        self.assertIn('needs the property "no-such-thing", which the renderer does not have', done.out)

    def test_the_next_runs_after_one_that_fails(self):
        done = self.run_program("run", self.write(FAILS, "a.yaml"), self.write(HOLDS, "b.yaml"), *SIMULATOR)
        self.assertEqual(done.code, 1)
        self.assertIn("1 held, 1 failed", done.out)

    def test_a_folder_on_all(self):
        self.write(HOLDS, "a.yaml")
        self.write(SKIPPED, "b.yaml")
        self.write("no scenario", "c.txt")
        done = self.run_program("run", str(self.folder), "--on", "all")
        self.assertEqual(done.code, 0)
        self.assertIn("3 held, 0 failed, 3 skipped, 0 could not run", done.out)

    def test_repeat_and_shard(self):
        names = []
        for shard in ("1/2", "2/2"):
            done = self.run_text(HOLDS, "--repeat", "3", "--shard", shard)
            self.assertEqual(done.code, 0)
            names += re.findall(r"held: (.*) on", done.out)
        self.assertEqual(sorted(names), ["starts", "starts (2)", "starts (3)"])

    def test_a_shard_with_nothing_in_it(self):
        done = self.run_text(HOLDS, "--shard", "2/2")
        self.assertEqual(done.code, 77)

    def test_the_seed_decides_the_random_numbers(self):
        text = HOLDS + "  - setPosition: random 0..25\n" * 3 + "  - expect: {state: Stopped, within: 0 s}\n"
        seeks = [re.findall(r"setPosition (\d+)", self.run_text(text, "--seed", seed).out) for seed in ("1", "1", "2")]
        self.assertEqual(len(seeks[0]), 3)
        self.assertEqual(seeks[0], seeks[1])
        self.assertNotEqual(seeks[0], seeks[2])

    def test_properties_are_given_back(self):
        self.write(HOLDS + "  - setKelvoProperty: {volume: 11}\n  - expect: {property: {volume: 11}}\n", "a.yaml")
        self.write("steps:\n  - expect: {property: {volume: 70}}\n", "b.yaml")
        self.assertEqual(self.run_program("run", str(self.folder), *SIMULATOR).code, 0)


class Junit(RunCase):
    def read(self, path):
        subprocess.run(["xmllint", "--noout", "--schema", os.environ["KELVO_TEST_JUNIT_SCHEMA"], path], check=True,
                       capture_output=True, timeout=PATIENCE)
        return xml.parse(path).getroot()

    def test_all_outcomes(self):
        for name, text in (("a", HOLDS), ("b", FAILS), ("c", SKIPPED)):
            self.write(text, f"{name}.yaml")
        report = self.folder / "result.xml"
        done = self.run_program("run", str(self.folder), "--on", "KelvoSimulatorA", "--on", "KelvoSimulatorB",
                                "--junit", str(report))
        self.assertEqual(done.code, 1)
        root = self.read(report)
        self.assertEqual([root.get("tests"), root.get("failures"), root.get("errors")], ["6", "2", "0"])
        self.assertEqual([suite.get("name") for suite in root], ["Simulator A", "Simulator B"])
        cases = {case.get("name"): case for case in root[0]}
        self.assertEqual(list(cases["starts"]), [])
        failure = cases["pauses by itself"].find("failure")
        self.assertIn("expected state Paused within 300 ms", failure.get("message"))
        self.assertIn("command playUri song", failure.text)
        self.assertEqual(cases["pauses by itself"].get("line"), "7")
        self.assertIsNotNone(cases["c"].find("skipped"))

    def test_hostile_texts(self):
        title = '<b attr="]]>&amp;\\e\\0\\u202e\\uFFFE\\U0001F600'
        text = (f'title: "{title}"\n'.replace('attr="', 'attr=\\"')
                + "steps:\n  - expect: {state: Playing, within: 0 s}\n")
        report = self.folder / "result.xml"
        self.assertEqual(self.run_text(text, "--junit", str(report)).code, 1)
        (case,) = self.read(report).iter("testcase")
        self.assertEqual(case.get("name"), '<b attr="]]>&amp;\ufffd\ufffd\u202e\ufffd\U0001F600')

    def test_where_it_cannot_be_written(self):
        done = self.run_text(HOLDS, "--junit", str(self.folder / "none" / "result.xml"))
        self.assertEqual(done.code, 2)
        self.assertIn("result.xml cannot be written: No such file or directory", done.err)


class Readme(RunCase):
    def test_the_first_page_shows_what_works(self):
        text = (Path(os.environ["KELVO_TEST_DATA"]).parent / "README.md").read_text(encoding="utf-8")
        (block,) = re.findall(r"(?ms)^```sh\n(.*?)^```$", text)
        self.assertEqual(len(block.splitlines()), 5)
        script = block.replace("build/bin/kelvo-test", PROGRAM).replace("KelvoGstRenderer", "KelvoSimulatorA")
        done = subprocess.run(["bash", "-eu", "-c", script], cwd=self.folder, env=self.environment(), text=True,
                              capture_output=True, timeout=PATIENCE, check=False)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        self.assertRegex(done.stdout, r"^\[1/1\] held: pause-at on Simulator A \(3\.\d s\)\n")
        self.assertIn("<h3>Simulator A</h3>", (self.folder / "report.html").read_text(encoding="utf-8"))


class Records(RunCase):
    def test_a_recording(self):
        path = self.folder / "run.jsonl"
        self.assertEqual(self.run_text(HOLDS, "--record", str(path)).code, 0)
        events = [json.loads(line) for line in path.read_text(encoding="utf-8").splitlines()]
        self.assertEqual(events[0]["program"], "kelvo-test")
        self.assertTrue(events[0]["revision"])
        names = [event["name"] for event in events[1:] if event["uuid"] == "KelvoSimulatorA"]
        self.assertLess(names.index("renderer"), names.index("playUri"))
        self.assertIn("stateChanged", names[names.index("playUri"):])
        # In the order in which they were written: to the very end of the program's work.
        self.assertEqual(events[-1]["name"], "ended")
        # What is there already stays there.
        self.assertEqual(self.run_text(HOLDS, "--record", str(path)).code, 0)
        self.assertEqual(path.read_text(encoding="utf-8").count('"kelvo-recording"'), 2)

    def test_the_file_of_the_environment(self):
        path = self.folder / "run.jsonl"
        self.assertEqual(self.run_text(HOLDS, KELVO_RECORD=str(path)).code, 0)
        self.assertIn('"playUri"', path.read_text(encoding="utf-8"))

    def test_one_that_cannot_be_written(self):
        path = self.folder / "none" / "run.jsonl"
        done = self.run_text(HOLDS, "--record", str(path))
        self.assertEqual((done.code, done.out), (2, ""))
        self.assertEqual(done.err, f"kelvo-test: {path} cannot be written: No such file or directory\n")

    def test_a_page(self):
        for name, text in (("a", HOLDS), ("b", FAILS), ("c", SKIPPED)):
            self.write(text, f"{name}.yaml")
        page = self.folder / "page.html"
        self.assertEqual(self.run_program("run", str(self.folder), *SIMULATOR, "--html", str(page)).code, 1)
        html = page.read_text(encoding="utf-8")
        results = html[html.index("<section id=results>"):html.index("<section id=lanes")]
        self.assertEqual(re.findall(r"<tr class=(\w+)><td>([^<]+)<td>([^<]+)<td>Simulator A<", results),
                         [("held", "held", "starts"), ("error", "failed", "pauses by itself"),
                          ("other", "skipped", "c")])
        self.assertIn("expected state Paused within 300 ms", results)
        self.assertIn("command playUri song\n", results)
        self.assertIn("<h3>Simulator A</h3>", html)
        self.assertEqual(list(self.folder.glob("*.jsonl")), [])

    def test_a_page_of_a_recording_that_is_kept(self):
        path, page = self.folder / "run.jsonl", self.folder / "page.html"
        for _ in range(2):
            self.assertEqual(self.run_text(HOLDS, "--html", str(page), "--record", str(path)).code, 0)
        self.assertIn("The recording has 2 runs; this is number 2.", page.read_text(encoding="utf-8"))


class Trouble(RunCase):
    def test_an_interruption_tells_what_was_found(self):
        self.write(HOLDS, "a.yaml")
        self.write(ENDLESS, "b.yaml")
        self.write(HOLDS, "c.yaml")
        report = self.folder / "result.xml"
        process = self.start_program("run", str(self.folder), *SIMULATOR, "--junit", str(report))
        self.read_until(process, "[1/3] held")
        code, seconds = self.interrupt(process)
        self.assertEqual(code, 2)
        self.assertLess(seconds, 5)
        self.assertIn("1 held, 0 failed, 0 skipped, 1 could not run", process.stdout.read())
        self.assertEqual(len(list(xml.parse(report).iter("testcase"))), 2)

    def test_a_renderer_that_dies(self):
        self.write(HOLDS + "  - setKelvoProperty: {sim-vanish: 300}\n"
                           "  - expect: {there: false}\n  - pause\n", "a.yaml")
        self.write(HOLDS, "b.yaml")
        done = self.run_program("run", str(self.folder), *SIMULATOR)
        self.assertEqual(done.code, 1)
        self.assertRegex(done.out, r"expected pause; at .* s: the renderer is gone")
        # It has come back.
        self.assertIn("[2/2] held: starts", done.out)

    def test_a_renderer_that_does_not_come_back(self):
        self.write("steps:\n  - setKelvoProperty: {sim-vanish: -2}\n  - wait: 100 ms\n", "a.yaml")
        self.write(HOLDS, "b.yaml")
        done = self.run_program("run", str(self.folder), *SIMULATOR)
        self.assertEqual(done.code, 2)
        self.assertIn("[2/2] could not run: starts on KelvoSimulatorA (0.0 s)\n  the renderer is gone\n", done.out)

    def test_a_renderer_that_does_not_answer(self):
        begin = time.monotonic()
        done = self.run_text("media: {song: {sound: tone}}\nsteps:\n  - playUri: $song\n"
                             "  - expect: {state: Playing, within: 1 s}\n", KELVO_SIMULATOR="sim-latency=600000")
        self.assertEqual(done.code, 1)
        self.assertLess(time.monotonic() - begin, 20)
        self.assertIn("expected state Playing within 1 s; at", done.out)

    def test_a_renderer_that_floods(self):
        flood = "steps:\n  - repeat:\n      times: 9000\n      steps:\n        - setKelvoProperty: {sim-metadata: a=b}\n"
        text = flood + "  - expect: {state: Playing, within: 1 s}\n"
        self.write(text, "a.yaml")
        self.write(HOLDS, "b.yaml")
        done = self.run_program("run", str(self.folder), *SIMULATOR)
        self.assertEqual(done.code, 1)
        self.assertIn("[2/2] held: starts", done.out)


class Calls(RunCase):
    def test_wrong_calls(self):
        file = self.write(HOLDS)
        for words, message in (([], "run needs a scenario: a file, or a folder with *.yaml"),
                               ([file], 'run needs a renderer: --on NAME ("kelvo-test list" shows them)'),
                               ([file, *SIMULATOR, "--shard", "3/2"], '--shard takes a part such as 2/8, not "3/2"'),
                               ([file, *SIMULATOR, "--repeat", "0"], '--repeat takes a number from 1 to 100000, not "0"'),
                               ([file, *SIMULATOR, "--serve-at", "here"], '--serve-at takes an IP address, not "here"'),
                               ([file, *SIMULATOR, "--jnit", "x"], "Unknown option 'jnit'.")):
            done = self.run_program("run", *words)
            self.assertEqual((done.code, done.out, done.err), (2, "", f"kelvo-test: {message}\n"))

    def test_a_renderer_that_is_not_there(self):
        done = self.run_program("run", self.write(HOLDS), "--on", "Nobody", "--wait", "100ms")
        self.assertEqual(done.code, 2)
        self.assertIn('There is no renderer "Nobody"', done.err)

    def test_an_empty_folder(self):
        done = self.run_program("run", str(self.folder), *SIMULATOR)
        self.assertEqual((done.code, done.err), (2, f"kelvo-test: there are no scenarios (*.yaml) in {self.folder}\n"))


class Files(RunCase):
    """What is wrong with a file is told by its place, and nothing runs."""

    def fault(self, text):
        path = self.write(text)
        begin = time.monotonic()
        done = self.run_program("run", path, *SIMULATOR)
        self.assertEqual((done.code, done.out), (2, ""))
        self.assertLess(time.monotonic() - begin, 20)
        (line,) = done.err.splitlines()
        return line.removeprefix(f"kelvo-test: {path}")

    def test_faults(self):
        for text, expected in (
                ("", ":1:1: holds no scenario"),
                ("# nothing\n", ":1:1: holds no scenario"),
                ("title: [", ":1:9: is no YAML: end of sequence flow not found"),
                ("just words", ':1:1: scenario takes a map ("name: value"), not "just words"'),
                ("title: x\n", ':1:1: there are no "steps"'),
                ("steps: []\n", ":1:8: steps is empty"),
                ("stps: []\n", ':1:7: scenario has no "stps"; did you mean "steps"?'),
                ("steps: [play]\nsteps: [stop]\n", ':2:1: "steps" is given twice'),
                ("steps:\n  - plaay\n", ':2:5: there is no step "plaay"; did you mean "play"?'),
                ("steps:\n  - playURL: x\n", ':2:14: there is no step "playURL"; did you mean "playUri"?'),
                ("steps:\n  - pauseAt: soon\n", ':2:14: pauseAt takes a whole number from -86400 to 86400, not "soon"'),
                ("steps:\n  - pauseAt\n", ':2:5: pauseAt needs "pauseAt: seconds"'),
                ("steps:\n  - play: 3\n", ":2:11: play takes nothing"),
                ("steps:\n  - wait: long\n", ':2:11: wait takes a time such as 5 s or 250 ms, not "long"'),
                ("steps:\n  - {play: , stop: }\n", ':2:5: a step is one thing to do, and perhaps "on"; here are 2'),
                ("steps:\n  - {play: , on: left}\n", ':2:18: on is not "left"; there are: renderer'),
                ("media: {song: {sound: tone}}\nsteps:\n  - playUri: $sing\n",
                 ':3:14: there is no medium "$sing"; did you mean "$song"?'),
                ("media: {song: {sound: tone, second: 3}}\nsteps: [play]\n",
                 ':1:37: song has no "second"; did you mean "seconds"?'),
                ("media: {song: {file: none.mp3}}\nsteps: [play]\n", f':1:22: there is no file "{self.folder}/none.mp3"'),
                ("media: {song: {}}\nsteps: [play]\n", ':1:15: "song" must be one of: sound, video, file, url'),
                ("media: {song: {url: nowhere}}\nsteps: [play]\n",
                 ':1:21: "nowhere" is no address such as http://host/song.mp3'),
                ("steps:\n  - expect: {state: Playng}\n", ':2:21: state is not "Playng"; did you mean "Playing"?'),
                ("steps:\n  - expect: {within: 3 s}\n", ":2:13: expect says nothing of: state, item, index, position, "
                                                        "property, metadata, error, completed, there, heard, silence, gap, level, speed, seen, sync"),
                ("steps:\n  - never: {position: 3 s}\n", ":2:12: never takes one report: one of state, item, index, "
                 "position, property, metadata, error, completed, there (not the position, which is asked for)"),
                ("steps:\n  - expect: {of: {error: any}}\n", ':2:13: how many? "of" needs times, at least or at most'),
                ("steps:\n  - include: none.yaml\n", f':2:14: there is no file "{self.folder}/none.yaml"'),
                ("steps:\n  - include: scenario.yaml\n", ':2:14: "scenario.yaml" includes itself'),
                ("steps:\n  - repeat: {times: 10000, steps: [play, stop]}\n", ":2:36: these are more than 10000 steps"),
                ("a: &a [x]\nsteps: [*a]\n", ':2:9: references (*name) are not understood; write it out, or use '
                                             '"repeat" or "include"'),
                ("---\nsteps: [play]\n---\nsteps: [play]\n", ": holds more than one document, a scenario is one"),
        ):
            with self.subTest(text=text):
                self.assertEqual(self.fault(text), expected)

    def test_huge_deep_and_multiplying(self):
        self.assertEqual(self.fault("steps:\n" + "  - play\n" * 6_000_000), ": is larger than 1 MiB, which no scenario is")
        self.assertRegex(self.fault("steps: " + "[" * 100_000), r"^:1:\d+: ")
        bomb = "a: &a [x, x, x, x, x, x, x, x, x]\n" + "".join(
            f"{new}: &{new} [{', '.join(['*' + old] * 9)}]\n" for old, new in zip("abcdefgh", "bcdefghi"))
        self.assertRegex(self.fault(bomb + "steps: *i\n"), r"^:2:8: references \(\*name\) are not understood")

    def test_bytes_that_are_no_text(self):
        path = self.folder / "bytes.yaml"
        path.write_bytes(bytes(range(256)) * 100)
        done = self.run_program("run", str(path), *SIMULATOR)
        self.assertEqual((done.code, done.out), (2, ""))

    def test_a_file_that_is_not_there(self):
        done = self.run_program("run", str(self.folder / "none.yaml"), *SIMULATOR)
        self.assertEqual((done.code, done.err),
                         (2, f"kelvo-test: {self.folder}/none.yaml: cannot be read: No such file or directory\n"))

    def test_all_faults_are_told_at_once(self):
        self.write("", "a.yaml")
        self.write(HOLDS, "b.yaml")
        self.write("steps: []", "c.yaml")
        done = self.run_program("run", str(self.folder), *SIMULATOR)
        self.assertEqual((done.code, done.out, len(done.err.splitlines())), (2, "", 2))


if __name__ == "__main__":
    unittest.main()
