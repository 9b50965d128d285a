#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What kelvo-test itself costs: from its start to the first command against gst-play-1.0's start to Playing, from a report
to the step that has waited for it, and the whole contract on the simulator, whose clock is moved by hand."""
import argparse
import datetime
import json
import os
import pathlib
import statistics
import subprocess
import tempfile
import time

from process_benchmark import SINK, gst_play, row

TURNS = 100
SCENARIO = f"""media: {{song: {{sound: tone, seconds: 60}}}}
steps:
  - playUri: $song
  - expect: {{state: Playing, within: 10 s}}
  - repeat:
      times: {TURNS}
      steps:
        - pause
        - expect: {{state: Paused}}
        - resume
        - expect: {{state: Playing}}
"""
FIRST = "media: {song: {sound: tone, seconds: 60}}\nsteps:\n  - playUri: $song\n"


def environment(plugin):
    return dict(os.environ, KELVO_PLUGINS=plugin, KELVO_AUDIO_SINK=SINK)


def recorded_run(program, plugin, renderer, scenario, folder):
    """(when it was started, seconds since the epoch; the header; the events)."""
    file, recording = folder / "scenario.yaml", folder / "run.jsonl"
    file.write_text(scenario, encoding="utf-8")
    recording.unlink(missing_ok=True)
    started = time.time()
    done = subprocess.run([program, "run", file, "--on", renderer, "--record", recording], env=environment(plugin),
                          stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False, timeout=120)
    if done.returncode != 0:
        raise SystemExit(f"the scenario did not hold: {done.stdout}{done.stderr}")
    header, *events = [json.loads(line) for line in recording.read_text(encoding="utf-8").splitlines()]
    return started, header, events


def start_to_first_command(program, folder):
    """Milliseconds. The recording tells its time 0 in milliseconds of the clock on the wall."""
    started, header, events = recorded_run(program, "gst-renderer", "KelvoGstRenderer", FIRST, folder)
    begin = datetime.datetime.fromisoformat(header["started"].replace("Z", "+00:00")).timestamp()
    first = next(event["time"] for event in events if event["name"] == "playUri")
    return (begin + first - started) * 1000


def measure_start(arguments, folder):
    ours, theirs = [], []
    for number in range(arguments.rounds + 1):
        elapsed = start_to_first_command(arguments.program, folder)
        player = gst_play(arguments.media)
        reference = player.wait_until_playing()
        player.end()
        if number:  # the first round warms the caches
            ours.append(elapsed)
            theirs.append(reference)
    row("kelvo-test run: process start to first command, median", ours, theirs, "ms", "at most 1.2",
        "gst-play-1.0 to Playing")


def measure_steps(arguments, folder):
    _, _, events = recorded_run(arguments.program, "simulator", "KelvoSimulatorA", SCENARIO, folder)
    times = []
    told = None
    for event in events:
        if event["kind"] == "report" and event["name"] == "stateChanged":
            told = event["time"]
        elif event["kind"] == "command" and event["name"] in ("pause", "resume") and told is not None:
            times.append((event["time"] - told) * 1000)
            told = None
    if len(times) < TURNS:
        raise SystemExit("not every step followed a report")
    times.sort()
    for name, value in (("median", statistics.median(times)), ("99 %", times[int(len(times) * 0.99) - 1])):
        print(f"| scenario: report to the next command, {name} | {value:.3f} ms |  | | at most 1 ms |", flush=True)


def measure_contract(arguments):
    begin = time.monotonic()
    done = subprocess.run([arguments.program, "conform", "--on", "KelvoSimulatorA"], env=environment("simulator"),
                          stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False, timeout=300)
    if done.returncode != 0:
        raise SystemExit(f"the simulator does not keep the contract: {done.stdout}{done.stderr}")
    print(f"| the whole contract on the simulator | {time.monotonic() - begin:.1f} s |  | | under 20 s |", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--program", type=pathlib.Path, required=True)
    parser.add_argument("--media", type=pathlib.Path, required=True)
    parser.add_argument("--rounds", type=int, default=9)
    arguments = parser.parse_args()
    arguments.program = arguments.program.resolve()
    arguments.media = arguments.media.resolve()
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        measure_start(arguments, folder)
        measure_steps(arguments, folder)
    measure_contract(arguments)


if __name__ == "__main__":
    main()
