#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""kills.py [--build FOLDER] [--seed N] [--chain N | --sweep N] [--verbose] KILLS

Kills the console by SIGKILL so many times, at any moment, while it indexes, counts playings, edits and publishes
playlists, and looks after each kill whether what the user has is still there: see README.md. A chain is one user's
folders, which live through ten kills; what comes when is chosen by the seed and the number of the chain, so that
"--seed N --chain N" tries that chain again. Exit status 1 when something is wrong: the chain's folders stay then.
"""

import argparse
import collections
import os
import random
import shutil
import subprocess
import sys
import time
from pathlib import Path

sys.dont_write_bytecode = True
import judge  # noqa: E402
import moment as moments  # noqa: E402
from library import Library  # noqa: E402
from life import Build, Life, Observer, read_rows  # noqa: E402

from bench.desktop import Desktop  # noqa: E402

ROOT = Path(__file__).resolve().parents[2]
CHAIN = 10  # kills
SONGS = 40
_NOT_IN = ("before", "media", "scratch", "observer", "bus", "switch", "runtime")
_RECORDING = "recording-"
# Of a database that is open, or was.
_JOURNALS = ("-wal", "-shm")


class World:
    """One user: desktop, folders, media."""

    def __init__(self, desktop, build, chooser):
        self.desktop = desktop
        self.build = build
        self.random = chooser
        self.folder = desktop.folder
        self.switch = moments.Switch(self.folder / "switch")
        self.temporary = self.folder / "temporary"
        self.temporary.mkdir()
        self.media_library = Library(self.folder / "media", self.folder / "scratch", build.media, chooser)
        self.env = {**desktop.env, "QT_QPA_PLATFORM": "offscreen", "TMPDIR": str(self.temporary),
                    "KELVO_MEDIA_DIRS": str(self.media_library.folder),
                    "KELVO_PLUGIN_PATH": ":".join(map(str, build.plugins)),
                    "GST_REGISTRY_1_0": str(build.folder / "tests/gstreamer-registry.bin"),
                    "ASAN_OPTIONS": "detect_leaks=0:verify_asan_link_order=0"}
        self.env.pop("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", None)

    def has_store(self):
        return (self.folder / "data/kelvo/tracker/meta.db").exists()

    def files(self):
        """What the product has written, but for recordings, as names."""
        found = set()
        for path in self.folder.rglob("*"):
            name = str(path.relative_to(self.folder))
            if path.is_file() and name.split("/")[0] not in _NOT_IN and not name.startswith(_RECORDING):
                found.add(name)
        return found


class Chain:
    """Ten kills of one user's console."""

    def __init__(self, build, seed, number, kills, tally):
        self.phase = moments.PHASES[number % len(moments.PHASES)]
        self.name = f"--seed {seed} --chain {number}"
        self._build = build
        self._random = random.Random(f"{seed}/{number}")
        self._kills = kills
        self._tally = tally
        self.moment = None

    def run(self, keep=None):
        """Raises AssertionError at the first fault."""
        with Desktop(display=False) as desktop:
            try:
                self._run(World(desktop, self._build, self._random))
            except BaseException:
                if keep:
                    shutil.copytree(desktop.folder, keep, ignore=shutil.ignore_patterns("bus"), dirs_exist_ok=True)
                raise

    def _run(self, world):
        self.world = world
        world.media_library.fill(SONGS)
        # Some begin without a store, and are killed while it is made.
        if self._random.random() < 0.6 or self.phase != "indexing":
            self._check("before any kill")
        observer = Observer(world) if self.phase == "publishing" else None
        for number in range(self._kills):
            self._one(number, observer)
        if observer:
            self._last(observer)
            observer.close()

    def _one(self, number, observer):
        world = self.world
        while True:
            self.moment = moments.choose(self.phase, world.has_store(), self._random)
            life = Life(world, number)
            world.media_library.deeds.clear()
            if self.phase == "indexing" or self._random.random() < 0.2:
                world.media_library.change(running=False)
            world.switch.reset()
            if self.moment.step == "start":
                world.switch.arm(self.moment)
            life.start(self.phase)
            life.until_killed(self.moment, lambda: self._work(life, observer))
            self._raise(life.faults() + judge.take_deeds(life.said, world.media_library)
                        + (observer.faults(life) if observer else []), life)
            self._check(self.moment, life)
            if life.killed:
                break
        self._tally.add(self.phase, self.moment, life)
        if self._tally.verbose:
            changes, messages = world.switch.counted()
            print(f"    {self.moment}: after {changes} changes and {messages} messages; last: {life.said[-1:]}",
                  flush=True)

    def _work(self, life, observer):
        if self.phase in ("indexing", "editing"):
            self.world.media_library.change(running=True)
        if observer and self._random.random() < 0.6:
            observer.wait_for_lists(life)

    def _last(self, observer):
        """After all kills everything works as ever: what is published is seen once, and goes once."""
        life = Life(self.world, "last")
        self.world.switch.reset()
        life.start(self.phase)
        observer.wait_for_lists(life)
        life.close()
        self._raise(life.faults() + observer.faults(life), life)

    def _check(self, when, life=None):
        rows, log = read_rows(self.world)
        wrong = judge.faults(rows, self.world.media_library)
        wrong += [line for line in log.splitlines() if "damaged" in line or "refuses" in line]
        litter = sorted(name for name in self.world.files() - self._tally.usual_files
                        if not name.endswith(_JOURNALS))
        wrong += [f"left behind: {name}" for name in litter]
        self._raise(wrong, life)

    def _raise(self, wrong, life):
        if not wrong:
            return
        log = f"\n{life.log.tail(25)}" if life else ""
        deeds = f"in the media folder: {', '.join(self.world.media_library.deeds)}"
        raise AssertionError("\n  ".join([f"killed at {self.moment}:", *wrong[:20], deeds]) + log)


class Sweep(Chain):
    """One pass of the indexer over many changes of the media folder, killed before every so-many-th change of its
    files: each time it begins with the same store."""

    def __init__(self, build, seed, every, tally):
        super().__init__(build, seed, 0, 0, tally)
        self.name = f"--seed {seed} --sweep {every}"
        self._every = every

    def _run(self, world):
        self.world = world
        world.media_library.fill(SONGS)
        self._check("before any kill")
        for song in world.media_library.songs.values():
            song.low = song.high = 0
        before = world.folder / "before"
        shutil.copytree(world.folder / "data", before)
        world.media_library.change(running=False)
        changes = 0
        while True:
            changes += self._every
            self.moment = moments.Moment("start", changes=changes, torn=changes % 2 == 0)
            shutil.rmtree(world.folder / "data")
            shutil.copytree(before, world.folder / "data")
            world.switch.reset()
            world.switch.arm(self.moment)
            life = Life(world, changes)
            life.start(self.phase)
            life.until_killed(self.moment, lambda: None)
            self._raise(life.faults(), life)
            self._check(self.moment, life)
            self._tally.add(self.phase, self.moment, life)
            if world.switch.counted()[0] < changes:  # there was nothing more to change
                break


class Tally:
    """What has been tried."""

    def __init__(self, usual_files, verbose):
        self.usual_files = usual_files
        self.verbose = verbose
        self.phases = collections.Counter()
        self.kinds = collections.Counter()
        self.steps = collections.Counter()
        self.playings = self.marks = self.lists = 0

    @property
    def kills(self):
        return sum(self.phases.values())

    def add(self, phase, moment, life):
        self.phases[phase] += 1
        self.steps[moment.step] += 1
        self.kinds["files" if moment.changes else "messages" if moment.messages else "time"] += 1
        said = collections.Counter(line.split()[0] for line in life.said)
        self.playings += said["counted"]
        self.marks += said["marked"]
        self.lists += said["publishing"]

    def text(self):
        def of(counter):
            return ", ".join(f"{count} {name}" for name, count in counter.items())
        return (f"{of(self.phases)}; from: {of(self.steps)}; by: {of(self.kinds)}; "
                f"{self.playings} playings, {self.marks} marks confirmed, {self.lists} playlists published")


def usual_files(build):
    """What a console leaves that lived and ended undisturbed."""
    with Desktop(display=False) as desktop:
        world = World(desktop, build, random.Random(0))
        world.media_library.fill(2)
        life = Life(world, 0)
        life.start("counting")
        assert life.waits_for("begun"), life.log.tail()
        life.close()
        assert world.switch.counted()[0], "the switch counts nothing"
        life.recording.unlink()
        read_rows(world)
        return world.files()


def _chains(build, options, tally):
    if options.sweep:
        return [Sweep(build, options.seed, options.sweep, tally)]
    if options.chain is not None:
        return [Chain(build, options.seed, options.chain, CHAIN, tally)]
    # Each phase has its part, also of a few.
    size = min(CHAIN, max(1, options.kills // len(moments.PHASES)))
    return [Chain(build, options.seed, number, min(size, options.kills - number * size), tally)
            for number in range(-(-options.kills // size))]


def main(arguments):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build", default=ROOT / "build-asan")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--chain", type=int, help="this one alone")
    parser.add_argument("--sweep", type=int, metavar="N",
                        help="kill one pass of the indexer before each N-th change of its files instead")
    parser.add_argument("--verbose", action="store_true", help="tell of each kill")
    parser.add_argument("kills", type=int, nargs="?", default=CHAIN)
    options = parser.parse_args(arguments)
    build = Build(options.build)
    begin = time.monotonic()
    tally = Tally(usual_files(build), options.verbose)
    failed = 0
    for chain in _chains(build, options, tally):
        keep = build.folder / f"kills{chain.name.replace(' --', '-').replace('--', '-').replace(' ', '-')}"
        shutil.rmtree(keep, ignore_errors=True)
        try:
            chain.run(keep)
        except (AssertionError, subprocess.SubprocessError) as fault:
            failed += 1
            print(f"{chain.name} ({chain.phase}), its folders are in {keep}: {fault}", flush=True)
            continue
        print(f"{chain.name} ({chain.phase}): {tally.kills} kills, {time.monotonic() - begin:.0f} s", flush=True)
    print(tally.text())
    if not failed and options.sweep:
        print(f"reliability: kills-sweep: {tally.kills} of {tally.kills} kills of one pass, before each "
              f"{options.sweep}th change of its files, with nothing lost; seed {options.seed}")
    elif not failed and options.chain is None:
        print(f"reliability: kills: {tally.kills} of {options.kills} with nothing lost: {tally.text()}; "
              f"seed {options.seed}")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
