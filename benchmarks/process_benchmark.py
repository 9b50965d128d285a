#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The whole console against gst-play-1.0 on the same file: start to Playing, CPU time and memory while playing.

Both play in turn within this one run, through the same silent synchronised sink.
"""
import argparse
import os
import pathlib
import signal
import statistics
import subprocess
import threading
import time

SINK = "fakesink sync=true"


class Player:
    """A player process and the moment at which it reported that it plays."""

    def __init__(self, command, environment, marker):
        self.playing = threading.Event()
        self.started = time.monotonic()
        self.reached = None
        self.process = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL,
                                        stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        self.reader = threading.Thread(target=self._read, args=(marker,), daemon=True)
        self.reader.start()

    def _read(self, marker):
        # Read to the end: a process whose pipe is full stands still.
        for line in self.process.stderr:
            if self.reached is None and marker in line:
                self.reached = time.monotonic()
                self.playing.set()

    def wait_until_playing(self):
        if not self.playing.wait(30):
            raise SystemExit(f"{self.process.args}: does not play")
        return (self.reached - self.started) * 1000

    def cpu_seconds(self):
        fields = pathlib.Path(f"/proc/{self.process.pid}/stat").read_text().rsplit(")", 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")

    def memory_kilobytes(self):
        sums = {}
        for line in pathlib.Path(f"/proc/{self.process.pid}/smaps_rollup").read_text().splitlines()[1:]:
            name, value = line.split(":")
            sums[name] = int(value.split()[0])
        return sums["Rss"], sums["Pss"]

    def end(self):
        self.process.send_signal(signal.SIGTERM)
        self.process.wait()
        self.reader.join()


def row(name, values, references, unit, goal=""):
    ours, theirs = statistics.median(values), statistics.median(references)
    print(f"| {name} | {ours:.2f} {unit} | gst-play-1.0: {theirs:.2f} {unit} | {ours / theirs:.2f} | {goal} |", flush=True)


def console(arguments, media):
    environment = dict(os.environ, KELVO_AUDIO_SINK=SINK, KELVO_PLUGINS="gst-renderer", QT_QPA_PLATFORM="xcb")
    return Player([arguments.console, media.as_uri()], environment, b"Playing.")


def gst_play(media):
    # Its own output names no state; the state log of the pipeline does.
    environment = dict(os.environ, GST_DEBUG="GST_STATES:4", GST_DEBUG_NO_COLOR="1")
    command = ["gst-play-1.0", "--no-interactive", f"--audiosink={SINK}", f"--videosink={SINK}", media.as_uri()]
    return Player(command, environment, b"<playbin> completed state change to PLAYING")


def quiet_gst_play(media):
    """Without the state log, which would count against its CPU time."""
    command = ["gst-play-1.0", "--no-interactive", f"--audiosink={SINK}", f"--videosink={SINK}", media.as_uri()]
    player = Player(command, dict(os.environ), b"")
    return player


def measure_start(arguments, media):
    ours, theirs = [], []
    for number in range(arguments.rounds + 1):
        for figures, start in ((ours, lambda: console(arguments, media)), (theirs, lambda: gst_play(media))):
            player = start()
            elapsed = player.wait_until_playing()
            player.end()
            if number:  # the first round warms the caches
                figures.append(elapsed)
    row(f"process start to Playing, {media.suffix[1:]}, median", ours, theirs, "ms", "2 (reported)")


def measure_playing(arguments, media):
    figures = {"ours": [], "theirs": []}
    memory = {}
    for _ in range(arguments.cpu_rounds):
        for name, start in (("ours", lambda: console(arguments, media)), ("theirs", lambda: quiet_gst_play(media))):
            player = start()
            if name == "ours":
                player.wait_until_playing()
            time.sleep(2)  # start-up is measured elsewhere
            before = player.cpu_seconds()
            time.sleep(arguments.seconds)
            figures[name].append((player.cpu_seconds() - before) / arguments.seconds * 100)
            memory[name] = player.memory_kilobytes()
            player.end()
    kind = media.suffix[1:]
    row(f"CPU while playing, {kind}", figures["ours"], figures["theirs"], "%", "at most 1.1")
    row(f"memory while playing (RSS), {kind}", [memory["ours"][0] / 1024], [memory["theirs"][0] / 1024], "MB", "reported")
    row(f"memory while playing (PSS), {kind}", [memory["ours"][1] / 1024], [memory["theirs"][1] / 1024], "MB", "reported")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--console", required=True)
    parser.add_argument("--rounds", type=int, default=9)
    parser.add_argument("--cpu-rounds", type=int, default=3)
    parser.add_argument("--seconds", type=int, default=10)
    parser.add_argument("media", type=pathlib.Path, nargs="+")
    arguments = parser.parse_args()
    for media in arguments.media:
        measure_start(arguments, media.resolve())
        measure_playing(arguments, media.resolve())


if __name__ == "__main__":
    main()
