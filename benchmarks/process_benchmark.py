#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The whole console against gst-play-1.0 on the same file: start to Playing, CPU time and memory while playing.

Both play in turn within this one run, through the same silent synchronised sinks. Files given with --video are played
once more with their picture on the screen, by the same sink and in the same size; files given with --adaptor on a
display with a video adaptor, which scales and converts.
"""
import argparse
import contextlib
import os
import pathlib
import re
import shutil
import signal
import statistics
import subprocess
import threading
import time

SINK = "fakesink sync=true"
SCREEN_SINK = "ximagesink"


class Player:
    """A player process and the moment at which it reported that it plays."""

    def __init__(self, command, environment, marker):
        self.playing = threading.Event()
        self.started = time.monotonic()
        self.reached = None
        self.lines = []
        self.process = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL,
                                        stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        self.reader = threading.Thread(target=self._read, args=(marker,), daemon=True)
        self.reader.start()

    def _read(self, marker):
        # Read to the end: a process whose pipe is full stands still.
        for line in self.process.stderr:
            self.lines.append(line)
            if self.reached is None and marker in line:
                self.reached = time.monotonic()
                self.playing.set()

    def wait_until_playing(self):
        if not self.playing.wait(30):
            raise SystemExit(f"{self.process.args}: does not play")
        return (self.reached - self.started) * 1000

    def cpu_seconds(self):
        """Of the threads that there are, in nanoseconds' precision: a song takes few of the clock's ticks."""
        times = pathlib.Path(f"/proc/{self.process.pid}/task").glob("*/schedstat")
        return sum(int(time.read_text().split()[0]) for time in times) / 1e9

    def memory_kilobytes(self):
        sums = {}
        for line in pathlib.Path(f"/proc/{self.process.pid}/smaps_rollup").read_text().splitlines()[1:]:
            name, value = line.split(":")
            sums[name] = int(value.split()[0])
        return sums["Rss"], sums["Pss"]

    def last_match(self, pattern):
        """The last line printed so far that matches, waited for."""
        for _ in range(300):
            found = [match for match in (re.search(pattern, line) for line in list(self.lines)) if match]
            if found:
                return found[-1]
            time.sleep(0.1)
        raise SystemExit(f"{self.process.args}: printed no {pattern!r}")

    def end(self):
        self.process.send_signal(signal.SIGTERM)
        self.process.wait()
        self.reader.join()


def row(name, values, references, unit, goal="", reference="gst-play-1.0"):
    ours, theirs = statistics.median(values), statistics.median(references)
    print(f"| {name} | {ours:.2f} {unit} | {reference}: {theirs:.2f} {unit} | {ours / theirs:.2f} | {goal} |", flush=True)


def console(arguments, media, video_sink=SINK):
    """`video_sink`: None leaves the choice to it."""
    environment = dict(os.environ, KELVO_AUDIO_SINK=SINK, KELVO_PLUGINS="gst-renderer", QT_QPA_PLATFORM="xcb")
    if video_sink:
        environment["KELVO_VIDEO_SINK"] = video_sink
    return Player([arguments.console, media.as_uri()], environment, b"Playing.")


def gst_play(media):
    # Its own output names no state; the state log of the pipeline does.
    environment = dict(os.environ, GST_DEBUG="GST_STATES:4", GST_DEBUG_NO_COLOR="1")
    command = ["gst-play-1.0", "--no-interactive", f"--audiosink={SINK}", f"--videosink={SINK}", media.as_uri()]
    return Player(command, environment, b"<playbin> completed state change to PLAYING")


def quiet_gst_play(media, video_sink=SINK):
    """Without the state log, which would count against its CPU time."""
    command = ["gst-play-1.0", "--no-interactive", f"--audiosink={SINK}", f"--videosink={video_sink}", media.as_uri()]
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
    row(f"process start to Playing, {media.suffix[1:]}, median", ours, theirs, "ms", "at most 1.1")


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
    row(f"memory while playing (PSS), {kind}", [memory["ours"][1] / 1024], [memory["theirs"][1] / 1024], "MB",
        "at most 1.4" if kind == "mp3" else "reported")


def xdotool(*arguments):
    subprocess.run(["xdotool", *map(str, arguments)], check=True, timeout=10)


def window_named(name):
    for _ in range(100):
        found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", name], capture_output=True, text=True,
                               check=False, timeout=10).stdout.split()
        if found:
            return found[0]
        time.sleep(0.1)
    raise SystemExit(f"no window named {name!r}")


def console_on_screen(arguments, media, video_sink=SCREEN_SINK):
    """Plays on the video tab; also gives the size of the picture's place."""
    player = console(arguments, media, video_sink)
    player.wait_until_playing()
    xdotool("windowfocus", window_named("KELVO test-GUI"))
    xdotool("key", "ctrl+Tab")
    time.sleep(1)  # the tab is laid out
    place = player.last_match(rb'"render-rectangle" QVariant\(QString, "-?\d+,-?\d+,(\d+),(\d+)"\)')
    return player, tuple(map(int, place.groups()))


def gst_play_on_screen(media, size):
    player = quiet_gst_play(media, SCREEN_SINK)
    xdotool("windowsize", window_named("gst-play-1.0"), *size)
    time.sleep(1)
    return player


def mpv_on_screen(media, size, output="x11"):
    """In one window of that size, decoding in software as the others do."""
    player = Player(["mpv", "--no-config", "--no-terminal", "--hwdec=no", "--ao=null", f"--vo={output}",
                     "--no-osc", "--no-keepaspect-window", f"--geometry={size[0]}x{size[1]}", "--title=reference", media], None, b"")
    window_named("^reference$")
    time.sleep(1)
    return player


def measure_on_screen(arguments, media):
    """The files last longer than what is measured; at its end the console's renderer tells what it showed."""
    has_mpv = shutil.which("mpv") is not None
    figures = {"ours": [], "theirs": [], "mpv": []}
    memory = {}
    dropped = []
    for _ in range(arguments.cpu_rounds):
        ours, size = console_on_screen(arguments, media)
        starts = {"ours": lambda: ours, "theirs": lambda: gst_play_on_screen(media, size)}
        if has_mpv:
            starts["mpv"] = lambda: mpv_on_screen(media, size)
        for name, start in starts.items():
            player = start()
            before = player.cpu_seconds()
            time.sleep(arguments.seconds)
            figures[name].append((player.cpu_seconds() - before) / arguments.seconds * 100)
            memory[name] = player.memory_kilobytes()
            if name == "ours":
                told = player.last_match(rb"Video pictures shown: (\d+) dropped: (\d+)")
                dropped.append(int(told.group(2)))
            player.end()
    row(f"CPU while showing {media.stem} at {size[0]}x{size[1]}", figures["ours"], figures["theirs"], "%", "at most 1.1")
    if has_mpv:
        row("- the same", figures["ours"], figures["mpv"], "%", "at most 1" if "1920" in media.stem else "reported",
            "mpv --vo=x11")
    for kind, index in (("RSS", 0), ("PSS", 1)):
        row(f"memory while showing {media.stem} ({kind})", [memory["ours"][index] / 1024],
            [memory["theirs"][index] / 1024], "MB", "reported")
        if has_mpv:
            row("- the same", [memory["ours"][index] / 1024], [memory["mpv"][index] / 1024], "MB", "reported",
                "mpv --vo=x11")
    print(f"| pictures dropped, {media.stem}, most | {max(dropped)} |  | | 0 |", flush=True)


@contextlib.contextmanager
def display_with_adaptor():
    """A display within the one that there is; what it scales costs its own process, and hardware nothing."""
    with subprocess.Popen(["Xephyr", "-glamor", "-screen", "1280x800", "-displayfd", "1", "-nolisten", "tcp", "-noreset"],
                          stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True) as server:
        outer = os.environ["DISPLAY"]
        os.environ["DISPLAY"] = f":{server.stdout.readline().strip()}"
        try:
            yield
        finally:
            os.environ["DISPLAY"] = outer
            server.terminate()


def measure_on_adaptor(arguments, media):
    """The work of the program alone: with the output that it chooses there, and with the one of other displays."""
    figures = {"chosen": [], "plain": [], "mpv": []}
    for _ in range(arguments.cpu_rounds):
        for name, start in (("chosen", lambda: console_on_screen(arguments, media, None)),
                            ("plain", lambda: console_on_screen(arguments, media)),
                            ("mpv", lambda: (mpv_on_screen(media, size, "xv"), size))):
            player, size = start()
            before = player.cpu_seconds()
            time.sleep(arguments.seconds)
            figures[name].append((player.cpu_seconds() - before) / arguments.seconds * 100)
            player.end()
    row(f"CPU while showing {media.stem} by a video adaptor", figures["chosen"], figures["plain"], "%", "at most 1",
        f"by {SCREEN_SINK} there")
    row("- the same", figures["chosen"], figures["mpv"], "%", "at most 1", "mpv --vo=xv")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--console", required=True)
    parser.add_argument("--rounds", type=int, default=9)
    parser.add_argument("--cpu-rounds", type=int, default=3)
    parser.add_argument("--seconds", type=int, default=10)
    parser.add_argument("--video", type=pathlib.Path, nargs="*", default=[])
    parser.add_argument("--adaptor", type=pathlib.Path, nargs="*", default=[])
    parser.add_argument("--media", type=pathlib.Path, nargs="*", default=[])
    arguments = parser.parse_args()
    for media in arguments.media:
        measure_start(arguments, media.resolve())
        measure_playing(arguments, media.resolve())
    for media in arguments.video:
        measure_on_screen(arguments, media.resolve())
    if arguments.adaptor:
        with display_with_adaptor():
            for media in arguments.adaptor:
                measure_on_adaptor(arguments, media.resolve())


if __name__ == "__main__":
    main()
