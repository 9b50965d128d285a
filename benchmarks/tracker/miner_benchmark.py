#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""miner_benchmark.py FOLDER

Lets the desktop's own miner (tracker-miner-fs) index the 10,000 files that index-benchmark has made in FOLDER, on a
session bus and in a home folder of its own, and prints what it takes until every song has its tags. Prints nothing where
the miner is not installed.
"""
import os
import pathlib
import shutil
import subprocess
import sys
import time

MINER = pathlib.Path("/usr/libexec/tracker-miner-fs-3")
SERVICE = "org.freedesktop.Tracker3.Miner.Files"
TAGGED = "SELECT COUNT(?song) { ?song a nmm:MusicPiece ; nie:title ?title }"
FILES = 10_000
LONGEST = 600  # seconds


def make_home(folder, media):
    """A home in which the miner begins at once and looks into the one folder."""
    home = folder / "miner-home"
    shutil.rmtree(home, ignore_errors=True)
    settings = home / "config/glib-2.0/settings"
    settings.mkdir(parents=True)
    (settings / "keyfile").write_text(
        "[org/freedesktop/tracker/miner/files]\n"
        "initial-sleep=0\n"
        f"index-recursive-directories=['{media}']\n"
        "index-single-directories=@as []\n"
    )
    temporary = home / "temporary"
    runtime = home / "runtime"
    for path in (temporary, runtime):
        path.mkdir(mode=0o700)
    return os.environ | {
        "HOME": str(home),
        "XDG_CONFIG_HOME": str(home / "config"),
        "XDG_CACHE_HOME": str(home / "cache"),
        "XDG_DATA_HOME": str(home / "data"),
        "XDG_RUNTIME_DIR": str(runtime),
        "TMPDIR": str(temporary),  # the miner leaves temporary folders out
        "GSETTINGS_BACKEND": "keyfile",
    }


def tagged_songs():
    answer = subprocess.run(
        ["tracker3", "sparql", f"--dbus-service={SERVICE}", "-q", TAGGED], capture_output=True, text=True
    )
    numbers = [int(word) for word in answer.stdout.split() if word.isdigit()]
    return numbers[-1] if numbers else 0


def watch():
    """On the private bus, where the first question starts the miner: waits for its tags."""
    start = time.monotonic()
    done = 0
    while done < FILES and time.monotonic() - start < LONGEST:
        time.sleep(0.5)
        done = tagged_songs()
    taken = time.monotonic() - start
    name = "tracker-miner-fs, the same 10,000 files in the page cache"
    if done < FILES:
        name += f" (given up at {done})"
    print(f"| {name} | {1000 * taken:.2f} ms |  | |  |")
    print(f"| - files per second | {done / taken:.2f} files/s |  | |  |")


def main():
    if sys.argv[1] == "--watch":
        watch()
        return
    folder = pathlib.Path(sys.argv[1]).resolve()
    if not MINER.exists() or not shutil.which("tracker3"):
        print("tracker-miner-fs is not installed", file=sys.stderr)
        return
    environment = make_home(folder, folder / "media")
    subprocess.run(["dbus-run-session", "--", sys.executable, __file__, "--watch"], env=environment,
                   stderr=subprocess.DEVNULL, check=True)


main()
