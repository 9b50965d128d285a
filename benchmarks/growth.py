#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Reads the points that the benchmarks print when they are run with --growth, lines of the form

    growth: NAME | SIZE | VALUE | UNIT

and writes how each cost grows: one picture, docs/growth.svg, and a table, docs/growth.md. Other lines are passed over.

The curve of a cost is value = a * size^b, a straight line where both axes are logarithmic; a and b are those of the least
squares there. A line of size 0 tells what the clock shows for no work at all. Sizes whose value is less than FLOOR times
that are left out, and so the clock's own share of what is left is below one in FLOOR. What the smallest of the others takes
may be nearly all fixed cost, which bends the line: where a cost grows, those that take less than GROWN times as long are left
out, too.

Exit status 1, and nothing written, when a line is malformed, no cost is known by its name, a size is told twice, or one of
the costs is missing: half a run is no run.
"""
import argparse
import math
import pathlib
import sys
from typing import NamedTuple, Optional
from xml.sax.saxutils import escape

import report

FLOOR = 20
GROWN = 10
FAR = 10_000_000
FRAME = 16  # milliseconds; what takes longer is seen as a stall
MARK = "growth:"
MILLISECONDS = {"ns": 1e-6, "µs": 1e-3, "ms": 1.0, "s": 1e3}


class Wanted(NamedTuple):
    """What a kind of cost may have for an exponent."""
    limit: float
    text: str


WHOLE = Wanted(1.1, "at most 1.1")
STEP = Wanted(0.1, "about 0")


class Cost(NamedTuple):
    wanted: Wanted
    is_reckoned: bool = True  # whether so many can be met with


COSTS = {
    "playlist: append in blocks of 2,000": Cost(WHOLE),
    "playlist: sort by title": Cost(WHOLE),
    "playlist: shuffle": Cost(WHOLE),
    "playlist: remove the first half": Cost(WHOLE),
    "playlist: find 10,000 uuids": Cost(STEP),
    "renderers: one comes": Cost(STEP, False),
    "renderers: one goes": Cost(STEP, False),
    "playlists: one comes": Cost(STEP, False),
    "playlists: one goes": Cost(STEP, False),
    "shared playlist: publishing": Cost(STEP),
    "shared playlist: first page": Cost(STEP),
    "shared playlist: the whole list": Cost(WHOLE),
    "songs: first 200 rows of all songs": Cost(STEP),
    "songs: first 200 rows of all albums": Cost(STEP),
    "songs: search, a word in every song, 200 rows": Cost(STEP),
    "songs: search, a word in one song": Cost(STEP),
    "songs: all rows of all songs": Cost(WHOLE),
    "songs on a server: first 200 rows of all songs": Cost(STEP),
    "songs on a server: first 200 rows of all albums": Cost(STEP),
    "songs on a server: all rows of all songs": Cost(WHOLE),
    "files: indexed": Cost(WHOLE),
    "files: unchanged, looked through again": Cost(WHOLE),
}


class Malformed(Exception):
    """What is wrong with the lines."""


class Fit(NamedTuple):
    """value = factor * size^exponent; without an error when there are only two points, on which any line fits."""
    factor: float
    exponent: float
    error: Optional[float]

    def at(self, size):
        return self.factor * size ** self.exponent


class Curve(NamedTuple):
    """A cost: milliseconds by size, and what the clock shows for no work."""
    name: str
    points: dict
    noise: float

    def is_told_apart(self, size):
        """Whether the value is one of work, not of the clock."""
        return self.points[size] > 0 and self.points[size] >= FLOOR * self.noise

    def fitted(self):
        """The sizes that tell how it grows."""
        sizes = [size for size in self.points if self.is_told_apart(size)]
        grown = [size for size in sizes if self.points[size] >= GROWN * self.points[sizes[0]]]
        return grown if len(grown) > 1 else sizes

    def fit(self):
        """None with fewer than two sizes."""
        sizes = self.fitted()
        return fit([(size, self.points[size]) for size in sizes]) if len(sizes) > 1 else None


def fit(points):
    """The least squares of the logarithms of two points or more, each a size and a value."""
    xs, ys = [math.log(x) for x, _ in points], [math.log(y) for _, y in points]
    mean_x, mean_y = sum(xs) / len(xs), sum(ys) / len(ys)
    spread = sum((x - mean_x) ** 2 for x in xs)
    exponent = sum((x - mean_x) * (y - mean_y) for x, y in zip(xs, ys)) / spread
    offset = mean_y - exponent * mean_x
    residue = sum((y - offset - exponent * x) ** 2 for x, y in zip(xs, ys))
    error = math.sqrt(residue / (len(xs) - 2) / spread) if len(xs) > 2 else None
    return Fit(math.exp(offset), exponent, error)


def last_step(curve):
    """The exponent between the two largest sizes, where fixed costs weigh least; None with fewer."""
    sizes = curve.fitted()[-2:]
    return fit([(size, curve.points[size]) for size in sizes]).exponent if len(sizes) == 2 else None


def point_of(line):
    """Name, size and milliseconds."""
    fields = [field.strip() for field in line.removeprefix(MARK).split("|")]
    if len(fields) != 4:
        raise Malformed(f"not NAME | SIZE | VALUE | UNIT: {line}")
    name, size, value, unit = fields
    if name not in COSTS:
        raise Malformed(f"not a cost that is known: {line}")
    if unit not in MILLISECONDS:
        raise Malformed(f"not a unit of time: {line}")
    try:
        size, value = int(size), float(value) * MILLISECONDS[unit]
    except ValueError:
        raise Malformed(f"not a number: {line}") from None
    if size < 0 or value < 0 or not math.isfinite(value):
        raise Malformed(f"out of range: {line}")
    return name, size, value


def curves_of(lines):
    """All costs, in the order of COSTS."""
    points, noises = {}, {}
    for line in lines:
        if not line.startswith(MARK):
            continue
        name, size, value = point_of(line.strip())
        if size == 0:
            noises[name] = max(noises.get(name, 0), value)
        elif size in points.setdefault(name, {}):
            raise Malformed(f"told twice: {line.strip()}")
        else:
            points[name][size] = value
    missing = [name for name in COSTS if not points.get(name)]
    if missing:
        raise Malformed(f"these are missing: {', '.join(missing)}")
    return [Curve(name, dict(sorted(points[name].items())), noises.get(name, 0)) for name in COSTS]


# The table

def short(size):
    """10 000 000 as 10M."""
    for letter, step in (("M", 1_000_000), ("k", 1_000)):
        if size >= step:
            return f"{size / step:g}{letter}"
    return str(size)


def time_text(milliseconds):
    """With three digits that count, in the unit that suits."""
    for unit, step, below in (("µs", 1e-3, 1), ("ms", 1, 1e3), ("s", 1e3, 6e5)):
        if milliseconds < below:
            value = float(f"{milliseconds / step:.3g}")
            return f"{value:.{max(0, 2 - math.floor(math.log10(value)))}f} {unit}" if value >= 0.01 else f"0 {unit}"
    return f"{milliseconds / 6e4:.0f} min"


def exponent_text(found):
    if not found:
        return "not told apart from the clock"
    return f"{found.exponent:.2f}" + (f" ± {found.error:.2f}" if found.error is not None else "")


def verdict(found, wanted):
    """Whether the exponent is as wanted; two errors are what chance does."""
    if not found:
        return ""
    if found.exponent <= wanted.limit:
        return "yes"
    return "within its error" if found.error and found.exponent - 2 * found.error <= wanted.limit else "no"


def row(curve):
    cost, found = COSTS[curve.name], curve.fit()
    fitted = curve.fitted()
    values = ", ".join(f"{short(size)}: " + (time_text(value) if size in fitted else f"({time_text(value)})")
                       for size, value in curve.points.items())
    step = last_step(curve)
    far = time_text(found.at(FAR)) if found and cost.is_reckoned else ""
    return (f"| {curve.name} | {values} | {exponent_text(found)} | {'' if step is None else f'{step:.2f}'} "
            f"| {cost.wanted.text} | {verdict(found, cost.wanted)} | {far} |\n")


def page(curves, facts):
    """The text of docs/growth.md."""
    return ("# How costs grow\n\n"
            "Written by `benchmarks/growth.sh`; do not edit. What something costs with 10, 100, 1,000, ... of what it is done "
            "with there:\nitems of a playlist, renderers and playlists in the registry while the window is shown, songs in the "
            "tracker's store, files\nthat are indexed. The line through the points is value = a · size^b: with b = 1 ten times "
            "as much takes ten times as long, with\nb = 0 it takes no longer. What works on a whole list should have an "
            "exponent of 1 (sorting: a little more), what shows the first\nrows or does one step one of 0.\n\n"
            f"![the curves](growth.svg)\n\n{report.told(facts)}\n"
            "| what | how long with so many | exponent | of the last step | wanted | so it is | reckoned for 10,000,000 |\n"
            "|---|---|---|---|---|---|---|\n" + "".join(map(row, curves)) +
            "\nThe exponent is told with its standard error, which two points do not have. Values in brackets are left out of "
            f"it: those\nbelow {FLOOR} times what the clock shows for no work; and, where a cost grows so far, those below "
            f"{GROWN} times what the smallest size\ntakes, which are mostly fixed cost. The last step is the exponent between "
            "the two largest sizes: above the other, when caches\nof the processor overflow. What is reckoned goes far past "
            "what was measured: it tells the order, not the figure. Nobody meets\nso many renderers or playlists. Finding is "
            "10,000 times the last item; publishing is the longest of all rounds; files are\nsmall, and in the page cache.\n")


# The picture

WIDTH, LEFT, TOP, PLOT_WIDTH, PLOT_HEIGHT = 1280, 80, 56, 720, 720
LEGEND, LINE = LEFT + PLOT_WIDTH + 30, 21
# Told apart by most who see colours differently; within a group no two are alike.
COLOURS = ["#0072b2", "#d55e00", "#009e73", "#cc79a7", "#7a5c00"]
# One for each beginning of a name: what marks its points (around 0, 0), and how its lines are drawn.
MARKS = ["M-4,0a4,4 0 1,0 8,0a4,4 0 1,0 -8,0z", "M-4,-4h8v8h-8z", "M0,-5l5,9h-10z", "M0,-5.5l5.5,5.5l-5.5,5.5l-5.5,-5.5z",
         "M0,5l5,-9h-10z", "M-5,-2h3v-3h4v3h3v4h-3v3h-4v-3h-3z",
         "M-2.5,-4.5h5l2.5,4.5l-2.5,4.5h-5l-2.5,-4.5z"]
DASHES = ["", "7 3", "2 3", "10 3 2 3", "4 2", "12 4", "6 2 1 2"]


def decades(lowest, highest):
    """The powers of ten around both, as exponents."""
    return math.floor(math.log10(lowest)), math.ceil(math.log10(highest))


class Axes:
    """Where a size and a time are on the picture."""

    def __init__(self, curves):
        points = [point for curve in curves for point in curve.points.items() if point[1] > 0]
        ends = [curve.fit().at(FAR) for curve in curves if is_drawn_far(curve)]
        values = [value for _, value in points] + ends
        self.x = decades(min(size for size, _ in points), max([FAR] * bool(ends) + [size for size, _ in points]) * 1.01)
        self.x = (self.x[0], max(self.x[0] + 1, self.x[1] - bool(ends)))
        self.y = decades(min(values), max(values) * 1.01)

    def at(self, size, value):
        x = (math.log10(size) - self.x[0]) / (self.x[1] - self.x[0])
        y = (math.log10(value) - self.y[0]) / (self.y[1] - self.y[0])
        return LEFT + x * PLOT_WIDTH, TOP + (1 - y) * PLOT_HEIGHT

    def svg(self):
        parts = [f'<rect x="{LEFT}" y="{TOP}" width="{PLOT_WIDTH}" height="{PLOT_HEIGHT}" fill="none" stroke="#888"/>']
        for power in range(self.x[0], self.x[1] + 1):
            x = self.at(10 ** power, 10.0 ** self.y[0])[0]
            parts.append(line((x, TOP), (x, TOP + PLOT_HEIGHT), 'stroke="#ddd"'))
            parts.append(text(x, TOP + PLOT_HEIGHT + 20, f"{10 ** power:,}", 'text-anchor="middle"'))
        for power in range(self.y[0], self.y[1] + 1):
            y = self.at(10.0 ** self.x[0], 10.0 ** power)[1]
            parts.append(line((LEFT, y), (LEFT + PLOT_WIDTH, y), 'stroke="#ddd"'))
            parts.append(text(LEFT - 8, y + 4, tick(power), 'text-anchor="end"'))
        if self.y[0] <= math.log10(FRAME) <= self.y[1]:
            y = self.at(10.0 ** self.x[0], FRAME)[1]
            parts.append(line((LEFT, y), (LEFT + PLOT_WIDTH, y), 'stroke="#b00" stroke-dasharray="1 3"'))
            parts.append(text(LEFT + PLOT_WIDTH - 6, y - 5, f"{FRAME} ms: a frame", 'text-anchor="end" fill="#b00"'))
        parts.append(text(LEFT + PLOT_WIDTH / 2, TOP + PLOT_HEIGHT + 42, "how many there are", 'text-anchor="middle"'))
        return parts


def tick(power):
    """A power of ten milliseconds, without digits that say nothing."""
    for unit, step in (("s", 3), ("ms", 0), ("µs", -3)):
        if power >= step:
            return f"{10 ** (power - step):,} {unit}"
    return f"{10 ** (power + 6)} ns" if power >= -6 else f"1e{power} ms"


def line(begin, end, style):
    return f'<line x1="{begin[0]:.1f}" y1="{begin[1]:.1f}" x2="{end[0]:.1f}" y2="{end[1]:.1f}" {style}/>'


def text(x, y, words, style=""):
    return f'<text x="{x:.1f}" y="{y:.1f}" {style}>{escape(words)}</text>'


def is_drawn_far(curve):
    return COSTS[curve.name].is_reckoned and curve.fit() is not None and max(curve.points) < FAR


class Look(NamedTuple):
    colour: str
    mark: str
    dash: str

    def point(self, at, is_filled):
        return (f'<path d="{self.mark}" transform="translate({at[0]:.1f} {at[1]:.1f})" '
                f'fill="{self.colour if is_filled else "#fff"}" stroke="{self.colour}"/>')


def group_of(curve):
    return curve.name.split(":")[0]


def looks(curves):
    """By name: the mark tells the group, the colour which of it."""
    groups, found, within = [], {}, {}
    for curve in curves:
        group = group_of(curve)
        if group not in groups:
            groups.append(group)
        place = groups.index(group) % len(MARKS)
        found[curve.name] = Look(COLOURS[within.get(group, 0) % len(COLOURS)], MARKS[place], DASHES[place])
        within[group] = within.get(group, 0) + 1
    return found


def drawn(curve, look, axes):
    """Its points, hollow where they are left out of the fit, and where it leads."""
    fitted = curve.fitted()
    places = [(axes.at(size, value), size in fitted) for size, value in curve.points.items() if value > 0]
    corners = " ".join(f"{x:.1f},{y:.1f}" for (x, y), _ in places)
    parts = [f'<polyline points="{corners}" fill="none" stroke="{look.colour}" stroke-width="1.8" '
             f'stroke-dasharray="{look.dash or "none"}"/>']
    parts += [look.point(at, is_filled) for at, is_filled in places]
    if is_drawn_far(curve) and places:
        end = axes.at(FAR, curve.fit().at(FAR))
        parts.append(line(places[-1][0], end, f'stroke="{look.colour}" stroke-dasharray="1 4"'))
        parts.append(look.point(end, False))
    return parts


def legend(curves, by_name):
    parts, y, group = [], TOP + 6, ""
    for curve in curves:
        if group_of(curve) != group:
            group = group_of(curve)
            parts.append(text(LEGEND, y + 8, group, 'font-weight="bold"'))
            y += LINE + 6
        look, found = by_name[curve.name], curve.fit()
        parts.append(line((LEGEND, y), (LEGEND + 34, y),
                          f'stroke="{look.colour}" stroke-width="1.8" stroke-dasharray="{look.dash or "none"}"'))
        parts.append(look.point((LEGEND + 17, y), True))
        parts.append(text(LEGEND + 44, y + 4, curve.name.split(": ", 1)[1]))
        is_kept = verdict(found, COSTS[curve.name].wanted) != "no"
        parts.append(text(WIDTH - 16, y + 4, exponent_text(found) if found else "–",
                          f'text-anchor="end" font-weight="bold" fill="{"#222" if is_kept else "#b00"}"'))
        y += LINE
    for words in ("Numbers: the exponent b of a · size^b; red: more than wanted.",
                  "Hollow: left out of it, or reckoned for 10,000,000."):
        y += LINE - 3
        parts.append(text(LEGEND, y, words, 'font-size="12" fill="#555"'))
    return parts, y


def picture(curves):
    """The text of docs/growth.svg. It brings its own background: pages are light or dark."""
    axes, by_name = Axes(curves), looks(curves)
    beside, lowest = legend(curves, by_name)
    height = max(TOP + PLOT_HEIGHT + 56, lowest + 16)
    parts = ['<rect width="100%" height="100%" fill="#fff"/>',
             text(LEFT, 32, "How long it takes, by how many there are", 'font-size="18" font-weight="bold"'), *axes.svg()]
    for curve in curves:
        parts += drawn(curve, by_name[curve.name], axes)
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {height:.0f}" width="{WIDTH}" '
            f'height="{height:.0f}" font-family="sans-serif" font-size="13" fill="#222">\n'
            + "\n".join(parts + beside) + "\n</svg>\n")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--root", type=pathlib.Path, required=True, help="of the repository")
    root = parser.parse_args().root
    lines = []
    for told in sys.stdin:
        print(told, end="", flush=True)
        lines.append(told)
    try:
        curves = curves_of(lines)
    except Malformed as fault:
        print(f"Not written, {fault}", file=sys.stderr)
        return 1
    (root / "docs/growth.svg").write_text(picture(curves), encoding="utf-8")
    (root / "docs/growth.md").write_text(page(curves, report.facts_of(root)), encoding="utf-8")
    return 0


if __name__ == "__main__":
    sys.exit(main())
