#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""write_reliability.py LOG...

Writes into docs/reliability.md what the tests of reliability last said. Such a test prints, once for each promise that
it has kept, a line

    reliability: ID: FIGURE

where ID is the first column of the promise's row. Its last column becomes the figure, the day and the revision that is
checked out; rows of which the logs say nothing stay. Exit status 1 when a line names no row: nothing is written then.
"""
import datetime
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parents[1]
PAGE = ROOT / "docs" / "reliability.md"
# CTest and loggers write before the line.
SAID = re.compile(r"(?:^|\s)reliability: ([a-z0-9-]+): (.+?)\s*$")
ROW = re.compile(r"^\| `([a-z0-9-]+)` \|")


def figures(lines):
    """The last figure of each promise: {ID: FIGURE}."""
    return {match[1]: match[2] for match in map(SAID.search, lines) if match}


def rows_of(page):
    """The IDs in the order of the page."""
    return [match[1] for match in map(ROW.match, page.splitlines()) if match]


def written(page, said, when):
    """The page with the figures, each followed by when it was measured. Raises KeyError for an ID without a row."""
    unknown = said.keys() - set(rows_of(page))
    if unknown:
        raise KeyError(f"docs/reliability.md has no row for: {', '.join(sorted(unknown))}")
    lines = page.splitlines()
    for number, line in enumerate(lines):
        match = ROW.match(line)
        if match and match[1] in said:
            kept = re.split(r"(?<!\\)\|", line)[1:4]
            figure = said[match[1]].replace("|", r"\|")
            lines[number] = "|" + "|".join(kept) + f"| {figure} ({when}) |"
    return "\n".join(lines) + "\n"


def main(logs):
    said = figures(line for log in logs for line in pathlib.Path(log).read_text(errors="replace").splitlines())
    revision = subprocess.run(["git", "-C", ROOT, "rev-parse", "--short", "HEAD"], capture_output=True, text=True,
                              check=True).stdout.strip()
    try:
        page = written(PAGE.read_text(encoding="utf-8"), said, f"{datetime.date.today()}, {revision}")
    except KeyError as fault:
        print(fault.args[0], file=sys.stderr)
        return 1
    PAGE.write_text(page, encoding="utf-8")
    print(f"{len(said)} rows of {PAGE.relative_to(ROOT)} written")
    return 0


if __name__ == "__main__":
    if len(sys.argv) < 2:
        print(__doc__)
        sys.exit(2)
    sys.exit(main(sys.argv[1:]))
