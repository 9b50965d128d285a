#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The whole console when nobody uses it, against an empty window of the same toolkit: memory, and how often it wakes
the processor up.

Both stand on a desktop of their own, with a bus and a home: the console with the back ends that it starts by itself.
"""
import argparse
import os
import pathlib
import statistics
import subprocess
import tempfile
import time


class Idle:
    """A program that was started and left alone."""

    def __init__(self, program, home):
        environment = dict(os.environ, HOME=home, XDG_CONFIG_HOME=home, XDG_DATA_HOME=home, XDG_CACHE_HOME=home,
                           XDG_STATE_HOME=home, KELVO_MEDIA_DIRS=home)
        self.process = subprocess.Popen([program], env=environment, stdin=subprocess.DEVNULL,
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def _file(self, name):
        return pathlib.Path(f"/proc/{self.process.pid}/{name}")

    def memory(self):
        """Proportional set size in MB: of what is shared with other programs, its share."""
        lines = self._file("smaps_rollup").read_text().splitlines()
        return next(int(line.split()[1]) for line in lines if line.startswith("Pss:")) / 1024

    def wake_ups(self):
        """Of each thread by its id, since its start: how often it was given the processor after it had waited."""
        counts = {}
        for status in self._file("task").glob("*/status"):
            counts[status.parent.name] = next(int(line.split()[1]) for line in status.read_text().splitlines()
                                              if line.startswith("voluntary_ctxt_switches"))
        return counts

    def end(self):
        self.process.terminate()
        self.process.wait(20)


def measure(program, seconds, settle):
    """(memory in MB, wake-ups per second)"""
    with tempfile.TemporaryDirectory() as home:
        idle = Idle(program, home)
        try:
            time.sleep(settle)  # back ends start, the library is looked through
            before = idle.wake_ups()
            time.sleep(seconds)
            # Threads that have ended meanwhile woke up before.
            count = sum(now - before.get(thread, 0) for thread, now in idle.wake_ups().items())
            return idle.memory(), count / seconds
        finally:
            idle.end()


def ratio(ours, theirs):
    return f"{ours / theirs:.2f}" if theirs else ""


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--console", required=True)
    parser.add_argument("--reference", required=True, help="the program with the empty window")
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--seconds", type=float, default=10)
    parser.add_argument("--settle", type=float, default=8)
    arguments = parser.parse_args()
    figures = {arguments.console: [], arguments.reference: []}
    for _ in range(arguments.rounds):
        for program, found in figures.items():
            found.append(measure(program, arguments.seconds, arguments.settle))
    (memory, wakes), (their_memory, their_wakes) = (
        [statistics.median(values) for values in zip(*found)] for found in figures.values())
    # The more other programs share the toolkit, the less of it counts for the empty window: hence no closer goal.
    print(f"| memory when idle (PSS) | {memory:.2f} MB | empty Qt window: {their_memory:.2f} MB | "
          f"{ratio(memory, their_memory)} | at most 4 |", flush=True)
    print(f"| wake-ups per second when idle | {wakes:.2f} /s | empty Qt window: {their_wakes:.2f} /s | | at most 1 /s |",
          flush=True)


if __name__ == "__main__":
    main()
