# SPDX-License-Identifier: MIT
"""Recordings as a test writes them, and the verbs that read them."""
import json
import pathlib
import tempfile

from program import ProgramCase

HEADER = {"kelvo-recording": 1, "program": "test", "started": "2026-01-01T00:00:00.000Z"}

# A renderer that is told to play, and plays.
PLAYED = [
    (0, "r", "appears", "renderer", "Speaker"),
    (0, "r", "report", "stateChanged", "Stopped"),
    (1, "r", "command", "playUri", "http://h/a"),
    (1.1, "r", "report", "stateChanged", "Transitioning"),
    (1.5, "r", "report", "stateChanged", "Playing"),
]


def lines(events, header=None):
    """The text of a run: events as (time, uuid, kind, name, arguments...)."""
    rows = [{**HEADER, **(header or {})}]
    rows += [{"time": time, "uuid": uuid, "kind": kind, "name": name, "arguments": arguments}
             for time, uuid, kind, name, *arguments in events]
    return "".join(json.dumps(row) + "\n" for row in rows)


# What a tester does in a minute, and what comes of it.
TRIED = """
media: {song: {sound: tone, seconds: 30}}
playlists: {list: [$song, $song]}
steps:
  - setKelvoProperty: {volume: 40}
  - playUri: $song
  - expect: {state: Playing}
  - pauseAt: 1
  - expect: {state: Paused, position: 1 s ± 250 ms}
  - resume
  - expect: {state: Playing}
  - setPosition: 20
  - expect: {position: 20 s ± 1 s}
  - assignPlaylist: $list
  - play
  - expect: {state: Playing, index: 0}
  - shuffle: $list
  - next
  - expect: {state: Playing, within: 5 s}
  - stop
  - expect: {state: Stopped}
"""


class RecordingCase(ProgramCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def write(self, text, name="run.jsonl"):
        path = self.folder / name
        path.write_text(text, encoding="utf-8")
        return str(path)

    def record(self, events, name="run.jsonl"):
        return self.write(lines(events), name)

    def record_run(self, name, **changes):
        """The recording of a run, which holds."""
        path = str(self.folder / name)
        done = self.run_program("run", self.write(TRIED, "tried.yaml"), "--on", "KelvoSimulatorA", "--record", path, **changes)
        self.assertEqual(done.code, 0, done.out)
        return path

    def check_refusals(self, verb, calls):
        """Wrong calls end with code 2, one line that says what is wrong, and no result."""
        for words, message in calls:
            done = self.run_program(verb, *words)
            self.assertEqual((done.code, done.out, done.err), (2, "", f"kelvo-test: {message}\n"))

    def check_bad_recordings(self, verb, *more):
        none = str(self.folder / "none")
        self.check_refusals(verb, [
            ([str(self.folder), *more], f"{self.folder} is a folder"),
            ([none, *more], f"{none} cannot be read: No such file or directory"),
            ([self.write("", "empty"), *more], f"{self.folder}/empty is empty"),
            ([self.write("Dear reader", "words"), *more],
             f'{self.folder}/words is no recording: its first line has no "kelvo-recording"'),
            ([self.write(lines([], {"kelvo-recording": 2}), "next"), *more],
             f"{self.folder}/next is of version 2, this program reads version 1"),
        ])
