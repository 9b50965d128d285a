#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Reads the rows that the benchmarks print and writes them down: all of them, with what they were measured on, into
docs/benchmarks.md, and the few that a newcomer asks for into the README, between its two marks.

With --long-day the rows are those of tests/soak/run.sh: they get a part of docs/benchmarks.md of their own, which the
benchmarks leave as it is.

Exit status 1, and nothing written, when a row for the README is missing, or there is none of a long day: half a run is
no run.
"""
import argparse
import datetime
import os
import pathlib
import platform
import re
import subprocess
import sys

HEADER = "| what | here | reference in the same run | ratio | goal | |\n|---|---|---|---|---|---|\n"
BEGIN = "<!-- figures: written by benchmarks/run.sh -->\n"
END = "<!-- end of figures -->\n"
LONG_DAY = "<!-- a long day: written by tests/soak/run.sh -->\n"
LONG_DAY_HEADER = "| what the console holds | mean | grows | verdict | flat is |\n|---|---|---|---|---|\n"
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
    return [row for row in rows if not row.startswith(("| what |", "| what the console holds |", "|---"))]


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


def judged(row):
    """The row with one more field: whether a goal that is a number was met, by the ratio where there is one and
    the goal has no unit, else by the value."""
    _, value, reference, ratio, goal = [field.strip() for field in row.strip("|").split("|")]
    most = re.fullmatch(r"(?:ratio )?at most ([\d.]+)( \S+)?( more)?", goal)
    if not most:
        return f"{row} |"
    number = float(re.match(r"-?[\d.]+", value if most[2] or not ratio else ratio)[0])
    if most[3]:
        number -= float(re.search(r": ([\d.]+)", reference)[1])
    return f"{row} {'met' if number <= float(most[1]) else '**missed**'} |"


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


def facts_of(root):
    """When and on what the rows were measured."""
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2**30
    return [("date", datetime.datetime.now(datetime.timezone.utc).strftime("%Y-%m-%d %H:%M UTC")),
            ("revision", revision(root)),
            ("machine", f"{os.cpu_count()} cores of {processor()}, {memory:.0f} GB, {system()}, no sound device")]


def told(facts):
    return "".join(f"- {name}: {value}\n" for name, value in facts)


def page(rows, facts):
    """The text of docs/benchmarks.md, but for the long day."""
    return ("# Speed and memory\n\n"
            "Written by `benchmarks/run.sh`; do not edit. Each figure stands beside a reference that was measured in the same "
            "run of the\nsame program, so that the ratio holds on other machines too. "
            "[Profiles](profiles.md) show why a goal is missed.\n"
            "[How costs grow](growth.md) shows them with ten, a hundred, ... a million of what they are for.\n\n"
            f"{told(facts)}\n{HEADER}" + "".join(f"{row}\n" for row in rows))


def long_day(rows, facts):
    """The part of docs/benchmarks.md about a long day."""
    return (f"\n{LONG_DAY}## A long day\n\n"
            "Written by `tests/soak/run.sh`; do not edit. The console does everything that a tester does, round after round. "
            "What it holds\nis looked at from outside every two seconds; a round's mean is one point of the line, whose slope "
            "is told with its\nstandard error. The first half, in which heaps and caches find their size, does not count.\n\n"
            f"{told(facts)}\n{LONG_DAY_HEADER}" + "".join(f"{row}\n" for row in rows))


def parts_of(text):
    """The page without its part about a long day, and that part, which may be empty."""
    before, mark, after = text.partition(f"\n{LONG_DAY}")
    return before, mark + after


def with_figures(readme, rows):
    """The README with these rows between its marks."""
    before, rest = readme.split(BEGIN)
    _, after = rest.split(END)
    return before + BEGIN + HEADER + "".join(f"{row}\n" for row in rows) + END + after


def write_long_day(root, rows):
    """Whether there was something to write."""
    path = root / "docs/benchmarks.md"
    if rows:
        rest, _ = parts_of(path.read_text(encoding="utf-8"))
        path.write_text(rest + long_day(rows, facts_of(root)), encoding="utf-8")
    return bool(rows)


def write_benchmarks(root, rows):
    """The beginnings of the rows that are missing, for which nothing was written."""
    chosen, missing = chosen_rows(rows)
    if not missing:
        rows, chosen = [judged(row) for row in rows], [judged(row) for row in chosen]
        path, readme = root / "docs/benchmarks.md", root / "README.md"
        text = with_figures(readme.read_text(encoding="utf-8"), chosen)
        kept = parts_of(path.read_text(encoding="utf-8"))[1] if path.exists() else ""
        path.write_text(page(rows, facts_of(root)) + kept, encoding="utf-8")
        readme.write_text(text, encoding="utf-8")
    return missing


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--root", type=pathlib.Path, required=True, help="of the repository")
    parser.add_argument("--long-day", action="store_true", help="the rows are those of tests/soak/run.sh")
    arguments = parser.parse_args()
    lines = []
    for line in sys.stdin:
        print(line, end="", flush=True)
        lines.append(line)
    rows = rows_of(lines)
    if arguments.long_day:
        missing = [] if write_long_day(arguments.root, rows) else ["all of a long day"]
    else:
        missing = write_benchmarks(arguments.root, rows)
    if missing:
        print(f"Not written, because these rows are missing: {', '.join(missing)}", file=sys.stderr)
    return 1 if missing else 0


if __name__ == "__main__":
    sys.exit(main())
