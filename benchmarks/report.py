#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Reads the rows that the benchmarks print and writes them down: all of them, with what they were measured on, into
docs/benchmarks.md, and the few that a newcomer asks for into the README, between its two marks.

Exit status 1, and nothing written, when a row for the README is missing: half a run is no run.
"""
import argparse
import datetime
import os
import pathlib
import platform
import re
import subprocess
import sys

HEADER = "| what | here | reference in the same run | ratio | goal |\n|---|---|---|---|---|\n"
BEGIN = "<!-- figures: written by benchmarks/run.sh -->\n"
END = "<!-- end of figures -->\n"
# Beginnings of the rows for the README.
CHOSEN = [
    "start to window shown",
    "process start to Playing, mp3",
    "playUri to Playing, mp3",
    "pauseAt error, mp3, median",
    "CPU while showing video-1920x1080",
    "UPnP: command to state report",
    "100,000 songs: first 200 rows",
    "100,000 songs: all rows in the model",
]


def rows_of(lines):
    """The table rows among the lines, without those of a header."""
    rows = [line.strip() for line in lines if line.startswith("|")]
    return [row for row in rows if not row.startswith(("| what |", "|---"))]


def chosen_rows(rows):
    """One row for each entry of CHOSEN, and the entries that have none."""
    found, missing = [], []
    for beginning in CHOSEN:
        matching = [row for row in rows if row.startswith(f"| {beginning}")]
        if matching:
            found.append(matching[0])
        else:
            missing.append(beginning)
    return found, missing


def processor():
    for line in pathlib.Path("/proc/cpuinfo").read_text(encoding="utf-8").splitlines():
        if line.startswith("model name"):
            return line.split(":", 1)[1].strip()
    return platform.machine()


def system():
    release = pathlib.Path("/etc/os-release").read_text(encoding="utf-8")
    return re.search(r'^PRETTY_NAME="?([^"\n]+)', release, re.MULTILINE).group(1)


def revision(root):
    command = ["git", "-C", str(root), "describe", "--always", "--dirty"]
    return subprocess.run(command, capture_output=True, text=True, check=False).stdout.strip() or "unknown"


def page(rows, facts):
    """The text of docs/benchmarks.md."""
    told = "".join(f"- {name}: {value}\n" for name, value in facts)
    return ("# Speed and memory\n\n"
            "Written by `benchmarks/run.sh`; do not edit. All rows are of one run, each beside a reference that was measured "
            "within it,\nso that the ratio holds on other machines too.\n\n"
            f"{told}\n{HEADER}" + "".join(f"{row}\n" for row in rows))


def with_figures(readme, rows):
    """The README with these rows between its marks."""
    before, rest = readme.split(BEGIN)
    _, after = rest.split(END)
    return before + BEGIN + HEADER + "".join(f"{row}\n" for row in rows) + END + after


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--root", type=pathlib.Path, required=True, help="of the repository")
    arguments = parser.parse_args()
    lines = []
    for line in sys.stdin:
        print(line, end="", flush=True)
        lines.append(line)
    rows = rows_of(lines)
    chosen, missing = chosen_rows(rows)
    if missing:
        print(f"Not written, because these rows are missing: {', '.join(missing)}", file=sys.stderr)
        return 1
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2**30
    facts = [("date", datetime.datetime.now(datetime.timezone.utc).strftime("%Y-%m-%d %H:%M UTC")),
             ("revision", revision(arguments.root)),
             ("machine", f"{os.cpu_count()} cores of {processor()}, {memory:.0f} GB, {system()}, no sound device")]
    readme = arguments.root / "README.md"
    text = with_figures(readme.read_text(encoding="utf-8"), chosen)
    (arguments.root / "docs/benchmarks.md").write_text(page(rows, facts), encoding="utf-8")
    readme.write_text(text, encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main())
