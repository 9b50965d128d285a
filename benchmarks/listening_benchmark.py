#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What comes out of KelvoGstRenderer, as kelvo-test hears it at a sink of a sound server of its own: where pauseAt() really
pauses, and the silence between two items of a list."""
import argparse
import contextlib
import os
import pathlib
import re
import statistics
import subprocess
import tempfile
import time

PERIOD = 10  # milliseconds in which the sound server asks for sound while kelvo-test listens: it cannot stop within one
SECOND = 1  # where it is to pause
PAUSE = f"""media: {{song: {{sound: timecode, seconds: 20}}}}
steps:
  - playUri: $song
  - expect: {{state: Playing, within: 10 s}}
  - pauseAt: {SECOND}
  - expect: {{state: Paused, heard: {{position: {SECOND} s ± 500 ms}}, within: 10 s}}
"""
# Those that hold their length to the sample, and those to which encoders add something that decoders do not know of; with
# the milliseconds that may lie between two items.
FORMATS = {"wav": 4, "flac": 4, "ogg": 4, "opus": 4, "mp3": 20, "m4a": 20}
SONGS = 10
PATIENCE = 10  # seconds, for a sound server to be there


def gap_scenario(kind):
    lines = ["media:"]
    lines += [f"  song{n}: {{sound: timecode, format: {kind}, seconds: 2}}" for n in range(SONGS)]
    lines += ["playlists:", "  list: [" + ", ".join(f"$song{n}" for n in range(SONGS)) + "]", "steps:",
              "  - assignPlaylist: $list", "  - play", "  - expect: {heard: {item: $song0}, within: 10 s}"]
    lines += [f"  - expect: {{heard: {{item: $song{n}}}, gap: {{at most: 5 s}}, within: 10 s}}" for n in range(1, SONGS)]
    return "\n".join(lines) + "\n"


@contextlib.contextmanager
def sound_server(folder):
    """Its address: one with an output that nobody hears."""
    socket = folder / "sound"
    with subprocess.Popen(["pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no", "-L",
                           "module-null-sink sink_name=silence", "-L", f"module-native-protocol-unix auth-anonymous=1 socket={socket}"],
                          stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as server:
        try:
            deadline = time.monotonic() + PATIENCE
            while not socket.exists():
                if time.monotonic() > deadline:
                    raise SystemExit("the sound server does not start")
                time.sleep(0.02)
            yield f"unix:{socket}"
        finally:
            server.terminate()


def heard(program, server, folder, scenario, pattern, repeat=1):
    """What the pattern finds in what is printed, as numbers."""
    file = folder / "scenario.yaml"
    file.write_text(scenario, encoding="utf-8")
    environment = dict(os.environ, KELVO_PLUGINS="gst-renderer", KELVO_AUDIO_SINK="pulsesink", PULSE_SERVER=server)
    done = subprocess.run([program, "run", file, "--on", "KelvoGstRenderer", "--ear", "silence.monitor", "--repeat", str(repeat)],
                          env=environment, stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False, timeout=900)
    if done.returncode != 0:
        raise SystemExit(f"the scenario did not hold: {done.stdout}{done.stderr}")
    return [float(value) for value in re.findall(pattern, done.stdout)]


def measure_pauses(program, server, folder, pauses):
    places = heard(program, server, folder, PAUSE, r"heard position ([\d.]+) s", pauses)
    if len(places) != pauses:
        raise SystemExit(f"{len(places)} of {pauses} pauses were heard")
    errors = sorted(abs(place - SECOND) * 1000 for place in places)
    for name, value in (("median", statistics.median(errors)), ("99 %", errors[-max(1, pauses // 100)])):
        print(f"| pauseAt error, as heard, {name} | {value:.1f} ms |  | | at most {1 + PERIOD} ms |", flush=True)


def measure_gaps(program, server, folder):
    for kind, most in FORMATS.items():
        gaps = heard(program, server, folder, gap_scenario(kind), r"a gap of (-?[\d.]+) ms")
        if len(gaps) != SONGS - 1:
            raise SystemExit(f"{len(gaps)} of {SONGS - 1} changes were heard of {kind}")
        print(f"| silence between two items of a list, as heard, {kind}, median (longest) | "
              f"{statistics.median(gaps):.0f} ({max(gaps):.0f}) ms |  | | at most {most} ms |", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--program", type=pathlib.Path, required=True)
    parser.add_argument("--pauses", type=int, default=100)
    arguments = parser.parse_args()
    program = arguments.program.resolve()
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        with sound_server(folder) as server:
            measure_pauses(program, server, folder, arguments.pauses)
            measure_gaps(program, server, folder)


if __name__ == "__main__":
    main()
