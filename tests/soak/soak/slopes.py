# SPDX-License-Identifier: MIT
"""Whether a quantity grows: the slope of its samples, how sure that is, and what follows.

Samples that follow one another closely are alike, so counting each of them would make the error far too small. They are
put together first: what falls into one block (a round of the day, in which all is done that is done in the others)
becomes its mean. The line goes through these means by least squares. What likeness is left between neighbouring
blocks is in the error too: it grows by sqrt((1 + r) / (1 - r)), r being the correlation of the neighbours' residuals.
"""

import dataclasses
import itertools
import math
import statistics

HOUR = 3600.0
FEWEST_BLOCKS = 6  # below that an error says little
ERRORS = 2  # so many errors of the slope are no growth


@dataclasses.dataclass(frozen=True)
class Slope:
    """A line through block means: all in the unit of the samples."""

    mean: float
    per_hour: float
    error: float  # of per_hour, one standard deviation; inf where it cannot be told
    blocks: int


def block_means(samples):
    """[(seconds, value)] of [(seconds, value, block)], one for each block, in the order of time."""
    ordered = sorted(samples, key=lambda sample: sample[2])
    means = []
    for _, group in itertools.groupby(ordered, key=lambda sample: sample[2]):
        times, values, _ = zip(*group)
        means.append((statistics.fmean(times), statistics.fmean(values)))
    return sorted(means)


def _likeness(residuals):
    """Correlation of neighbouring residuals, 0 to 0.95: that of opposites would make the error smaller. A line follows
    what wanders, so the residuals are less alike than the noise is, by about (2 + 4 r) / n."""
    count, square = len(residuals), sum(value * value for value in residuals)
    if not square or count <= 4:
        return 0.0
    seen = sum(a * b for a, b in itertools.pairwise(residuals)) / square
    return min(0.95, max(0.0, (seen + 2 / count) / (1 - 4 / count)))


def slope(samples):
    """The line through the blocks of [(seconds, value, block)]."""
    points = block_means(samples)
    if not points:
        return Slope(math.nan, 0.0, math.inf, 0)
    times, values = zip(*points)
    mean, middle = statistics.fmean(values), statistics.fmean(times)
    spread = sum((time - middle) ** 2 for time in times)
    if len(points) < 3 or not spread:
        return Slope(mean, 0.0, math.inf, len(points))
    rise = sum((time - middle) * (value - mean) for time, value in points) / spread
    residuals = [value - mean - rise * (time - middle) for time, value in points]
    variance = sum(value * value for value in residuals) / (len(points) - 2) / spread
    likeness = _likeness(residuals)
    error = math.sqrt(variance * (1 + likeness) / (1 - likeness))
    return Slope(mean, rise * HOUR, error * HOUR, len(points))


FLAT, GROWS, UNCLEAR = "flat", "grows", "unclear"


def verdict(line, bound, visible):
    """What the line says, bound and visible being growths in an hour.

    GROWS: by more than the bound, and more than two errors from none at all. FLAT: not so, and a growth of `visible`
    would have been seen. UNCLEAR: too few blocks or too much noise to tell."""
    if line.blocks < FEWEST_BLOCKS or not math.isfinite(line.error):
        return UNCLEAR
    if line.per_hour > max(bound, ERRORS * line.error):
        return GROWS
    return FLAT if ERRORS * line.error <= visible else UNCLEAR
