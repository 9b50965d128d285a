#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What it takes to read recordings: the peak of memory for one ten times as long as another, and how many megabytes are read
in a second, against reading the bytes alone."""
import argparse
import json
import os
import pathlib
import subprocess
import tempfile
import time

STATES = ("Transitioning", "Playing", "Paused", "Playing", "Stopped")


def write_recording(path, megabytes):
    """One renderer that plays, pauses and answers where it is, over and over."""
    header = {"kelvo-recording": 1, "program": "benchmark", "started": "2026-01-01T00:00:00.000Z"}
    size, moment = 0, 0.0
    with open(path, "w", encoding="utf-8") as file:
        file.write(json.dumps(header) + "\n")
        while size < megabytes * 1_000_000:
            lines = []
            for turn in range(1000):
                events = [("command", "playUri", [f"http://host/song-{turn}.ogg"])]
                events += [("report", "stateChanged", [state]) for state in STATES]
                events += [("command", "getPosition", []), ("answer", "getPosition", [turn % 60])]
                for kind, name, arguments in events:
                    moment += 0.01
                    lines.append(json.dumps({"time": round(moment, 6), "uuid": "r", "kind": kind, "name": name,
                                             "arguments": arguments}, separators=(",", ":")))
            text = "\n".join(lines) + "\n"
            size += len(text)
            file.write(text)


def measure(command):
    """(seconds, peak of memory in megabytes)"""
    begin = time.monotonic()
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    if os.waitstatus_to_exitcode(status) not in (0, 1):
        raise SystemExit(f"{command} failed")
    return time.monotonic() - begin, usage.ru_maxrss / 1024


def bare_reading(path):
    begin = time.monotonic()
    with open(path, "rb", buffering=0) as file:
        while file.read(1 << 16):
            pass
    return time.monotonic() - begin


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--program", type=pathlib.Path, required=True)
    parser.add_argument("--megabytes", type=int, default=20, help="of the shorter one")
    arguments = parser.parse_args()
    program = arguments.program.resolve()
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        short, long = folder / "short.jsonl", folder / "long.jsonl"
        write_recording(short, arguments.megabytes)
        write_recording(long, 10 * arguments.megabytes)
        reading = bare_reading(long)
        for verb, goal, more in (("why", "ratio at most 1.1", []),
                                 ("report", "at most 64 MB", ["-o", str(folder / "page.html")])):
            _, least = measure([program, verb, short, *more])
            elapsed, most = measure([program, verb, long, *more])
            print(f"| {verb}: memory for {10 * arguments.megabytes} MB of events | {most:.1f} MB | {arguments.megabytes} MB of "
                  f"them: {least:.1f} MB | {most / least:.2f} | {goal} |", flush=True)
            print(f"| {verb}: MB of events read in a second | {10 * arguments.megabytes / elapsed:.0f} | bytes alone: "
                  f"{10 * arguments.megabytes / reading:.0f} | {elapsed / reading:.0f} | reported |", flush=True)


if __name__ == "__main__":
    main()
