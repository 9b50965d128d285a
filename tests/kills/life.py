# SPDX-License-Identifier: MIT
"""One life of the console, from its start until it is killed."""

import json
import os
import signal
import subprocess
import sys
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "e2e"))
from bench import process  # noqa: E402
from bench.waiting import TimedOut, until  # noqa: E402

import moment as moments  # noqa: E402

_SAID = "kills: "
_PLAYLISTS = 3
PATIENCE = 60.0  # seconds for what the program has to do, however slow the machine is
_LOOK = 0.002


class Build:
    """Where the programs are."""

    def __init__(self, folder):
        self.folder = Path(folder).resolve()
        self.console = self.folder / "bin/kelvo-test-gui"
        self.rows = self.folder / "tests/store-rows"
        self.switch = self.folder / "tests/kill-switch.so"
        self.media = self.folder / "tests/media"
        self.plugins = [self.folder / "lib/kelvo/plugins", self.folder / "tests/kills-plugins"]


class Life:
    """The console with the back end that does deeds."""

    def __init__(self, world, number):
        self.world = world
        self.recording = world.folder / f"recording-{number}.jsonl"
        self.said = []  # lines of the back end
        self.killed = False
        self.exit_code = None

    def start(self, phase):
        world = self.world
        env = {**world.env, "LD_PRELOAD": str(world.build.switch), "KELVO_KILL_SWITCH": str(world.switch.path),
               # In the order in which each needs what is there before it: the store is opened last.
               "KELVO_PLUGINS": "simulator,kill-actor,tracker-source", "KELVO_SIMULATOR": "sim-duration=1",
               "KELVO_RECORD": str(self.recording)}
        songs = sorted(world.media_library.songs)
        world.random.shuffle(songs)
        if phase == "counting":
            # Few, so that each is played more than once.
            env["KELVO_KILLS_PLAY"] = " ".join(world.media_library.url(place) for place in songs[:5])
        if phase == "editing":
            markable = [place for place in songs if not world.media_library.songs[place].listable]
            env["KELVO_KILLS_MARK"] = " ".join(world.media_library.url(place) for place in markable[:12])
        if phase in ("editing", "publishing"):
            env["KELVO_KILLS_PUBLISH"] = str(_PLAYLISTS)
        self.child = world.desktop.start([world.build.console], env)
        self.log = self.child.log

    def lines(self):
        return [line[len(_SAID):] for line in list(self.log.lines) if line.startswith(_SAID)]

    def has_said(self, word):
        return any(line.startswith(_SAID + word) for line in list(self.log.lines))

    def waits_for(self, word):
        """Waits until its back end says so. False when the program ended before it said so."""
        end = time.monotonic() + PATIENCE
        while not self.has_said(word):
            if self.child.poll() is not None:
                return self.has_said(word)
            if time.monotonic() > end:
                raise TimedOut(f"the console does not say {word!r}\n{self.log.tail()}")
            time.sleep(_LOOK)
        return True

    def until_killed(self, moment, work):
        """Lives until that moment; `work` is called once its deeds have begun."""
        switch = self.world.switch
        steps = {"start": None, "open": "open", "work": "begun", "end": "begun"}
        word = steps[moment.step]
        if word and not self.waits_for(word):
            raise AssertionError(f"the console ended by itself with code {self.child.poll()}\n{self.log.tail(60)}")
        begin = time.monotonic()
        if moment.step != "start":
            switch.arm(moment)
        if moment.step == "work":
            work()
        if moment.step == "end":
            time.sleep(self.world.random.uniform(0, 0.3))
            self.child.send_signal(signal.SIGTERM)
        while self.child.poll() is None and time.monotonic() < begin + moment.limit:
            time.sleep(_LOOK)
        self.kill()

    def kill(self):
        if self.child.poll() is None:
            self.child.kill()
        self.exit_code = self.child.wait()
        self.killed = self.exit_code == -signal.SIGKILL
        self.log.finish()
        self.said = self.lines()

    def close(self):
        """Asks it to end, and waits for it."""
        self.child.send_signal(signal.SIGTERM)
        until(lambda: self.child.poll() is not None, lambda: f"the console ends\n{self.log.tail()}", PATIENCE)
        self.exit_code = self.child.returncode
        self.log.finish()
        self.said = self.lines()

    def faults(self):
        """What is wrong with how it lived, apart from what it left in the store."""
        wrong = [line for line in self.said if line.startswith(("not open", "rebuilt"))]
        if self.exit_code not in (0, -signal.SIGKILL):
            wrong.append(f"ended with code {self.exit_code}\n{self.log.tail(60)}")
        wrong += [line for line in self.log.lines if "runtime error:" in line or "Sanitizer" in line
                  or "No such signal" in line or "No such slot" in line or "was not updated" in line
                  or "refuses" in line or "not up to date" in line]
        return wrong + self._faults_of_recording()

    def _faults_of_recording(self):
        """Each line but the last, which may be cut, is whole."""
        if not self.recording.exists():
            return []
        lines = self.recording.read_bytes().split(b"\n")[:-1]
        self.recording.unlink()
        wrong = []
        for line in lines:
            try:
                json.loads(line)
            except ValueError:
                wrong.append(f"recorded: {line[:200]!r}")
        return wrong


class Observer:
    """Another console on the same bus, with a home of its own."""

    def __init__(self, world):
        self._world = world
        home = world.folder / "observer"
        home.mkdir()
        env = {**world.env, "KELVO_PLUGINS": "", "KELVO_MEDIA_DIRS": str(home / "none")}
        env.update({f"XDG_{name}_HOME": str(home / name.lower()) for name in ("CONFIG", "DATA", "CACHE", "STATE")})
        self._child = world.desktop.start([world.build.console], env)
        self.log = self._child.log
        self.log.wait_for(r"^\d+ .*kelvo-test-gui", limit=PATIENCE)

    def _counts(self, pid):
        """How often each playlist of that process came and went: {id: (came, went)}."""
        came, went = {}, {}
        for line in list(self.log.lines):
            if "playlistAdded" in line and f"[pid {pid}]" in line:
                identity = line.split('"')[1]
                came[identity] = came.get(identity, 0) + 1
            elif "playlistRemoved" in line:
                identity = line.split('"')[1]
                went[identity] = went.get(identity, 0) + 1
        return {identity: (count, went.get(identity, 0)) for identity, count in came.items()}

    def wait_for_lists(self, life):
        """Until it sees all that are published at first, each of them once."""
        pid = life.child.pid
        until(lambda: len(self._counts(pid)) >= _PLAYLISTS or life.child.poll() is not None,
              lambda: f"the playlists of {pid} come\n{self.log.tail()}", PATIENCE, _LOOK)

    def faults(self, life):
        """After its end: each playlist that came has come once, and goes once."""
        pid = life.child.pid
        published = {line.split()[1] for line in life.said if line.startswith("publishing")}
        try:
            until(lambda: all(went for _, went in self._counts(pid).values()), "the playlists vanish", 15, 0.01)
        except TimedOut as late:
            return [f"{late}: {self._counts(pid)}"]
        counts = self._counts(pid)
        wrong = [f"playlist {identity} came {came} times and went {went} times"
                 for identity, (came, went) in counts.items() if (came, went) != (1, 1)]
        wrong += [f"playlist {identity} was never published" for identity in counts if identity not in published]
        if self._child.poll() is not None:
            wrong.append(f"the other console ended with code {self._child.returncode}\n{self.log.tail(60)}")
        return wrong

    def close(self):
        process.end(self._child, PATIENCE)


def read_rows(world):
    """What the store holds once all is indexed, read by a program that opens it anew. Raises where that fails."""
    done = subprocess.run([str(world.build.rows)], env={**world.env, "KELVO_PLUGINS": ""}, stdin=subprocess.DEVNULL,
                          capture_output=True, timeout=2 * PATIENCE, check=False)
    text = done.stderr.decode("utf-8", "replace").strip()
    if done.returncode:
        raise AssertionError(f"the store cannot be read: {text or done.returncode}")
    lines = done.stdout.decode().splitlines()
    return json.loads(lines[-1]), text
