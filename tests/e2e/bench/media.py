# SPDX-License-Identifier: MIT
"""Media of the tests: computed by ffmpeg once per build folder, with lengths, tags and pictures that tests know."""

import os
import subprocess
import sys
from pathlib import Path

VERSION = "2"
REGISTRY = "gst-registry.bin"
# The store of a user without music, by scenarios/first_start.py.
STORE = "store"


def folder():
    return Path(os.environ["KELVO_E2E_MEDIA"])


def url(name):
    return (folder() / name).as_uri()


def _ffmpeg(*arguments):
    subprocess.run(["ffmpeg", "-nostdin", "-hide_banner", "-loglevel", "error", "-y", *map(str, arguments)], check=True)


def _tone(path, seconds, hertz, title, artist, album, codec):
    _ffmpeg("-f", "lavfi", "-i", f"sine=frequency={hertz}:sample_rate=44100:duration={seconds},volume=0.3",
            "-metadata", f"title={title}", "-metadata", f"artist={artist}", "-metadata", f"album={album}", *codec, path)


def _colour(path, seconds, colour, title):
    _ffmpeg("-f", "lavfi", "-i", f"color=c={colour}:s=640x360:r=25:d={seconds}", "-f", "lavfi", "-i",
            f"sine=frequency=330:sample_rate=44100:duration={seconds}", "-shortest", "-c:v", "libx264", "-preset",
            "ultrafast", "-g", 50, "-pix_fmt", "yuv420p", "-c:a", "aac", "-metadata", f"title={title}", path)


def _list(path, entries):
    lines = ["[playlist]"]
    for number, (file, title) in enumerate(entries, 1):
        lines += [f"File{number}={file}", f"Title{number}={title}"]
    path.write_text("\n".join([*lines, f"NumberOfEntries={len(entries)}", "Version=2", ""]))


def _make_files(to):
    mp3 = ["-c:a", "libmp3lame", "-b:a", "64k", "-id3v2_version", "3"]
    vorbis = ["-c:a", "libvorbis"]
    _tone(to / "first.mp3", 8, 440, "First Tone", "Ann Example", "Two Tones", mp3)
    _tone(to / "second.ogg", 8, 550, "Second Tone", "Bob Example", "Two Tones", vorbis)
    _tone(to / "third.mp3", 8, 660, "Third Tone", "Cay Example", "Two Tones", mp3)
    _tone(to / "short one.mp3", 2, 440, "Short One", "Ann Example", "Short", mp3)
    _tone(to / "short-two.ogg", 2, 550, "Short Two", "Bob Example", "Short", vorbis)
    _tone(to / "long.mp3", 60, 440, "Long Tone", "Dee Example", "Long", ["-c:a", "libmp3lame", "-b:a", "128k"])
    _colour(to / "red.mp4", 20, "red", "All Red")
    _list(to / "list.pls", [("first.mp3", "One"), ("second.ogg", "Two"), ("third.mp3", "Three")])
    _list(to / "short.pls", [("short one.mp3", "One"), ("short-two.ogg", "Two")])
    _list(to / "with-missing.pls", [("absent.mp3", "Absent"), ("short-two.ogg", "Two")])
    (to / "empty.pls").write_text("[playlist]\nNumberOfEntries=0\nVersion=2\n")


def make(to):
    """Fills the folder; what is complete is left alone."""
    done = to / "version"
    if not done.is_file() or done.read_text() != VERSION:
        to.mkdir(parents=True, exist_ok=True)
        _make_files(to)
        done.write_text(VERSION)
    # Otherwise each start with a home of its own would look through all of GStreamer's plug-ins first.
    subprocess.run(["gst-inspect-1.0", "playbin"], check=True, stdout=subprocess.DEVNULL,
                   env={**os.environ, "GST_REGISTRY_1_0": str(to / REGISTRY)})


if __name__ == "__main__":
    make(Path(sys.argv[1]))
