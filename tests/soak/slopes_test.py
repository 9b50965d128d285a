#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The arithmetic that tells a leak from noise, and what is said of it, on samples of which it is known what they hold."""

import math
import random
import sys
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
from soak import slopes  # noqa: E402
from soak.gauges import GAUGES  # noqa: E402
from soak.judgement import Judgement  # noqa: E402

ROUND, STEP = 75, 2  # seconds of a round and between two samples


def day(minutes=45, leak=0.0, noise=1.0, drift=0.0, swing=8.0, seed=1):
    """Samples of a quantity about 100: each round it swings alike, and drifts as a heap does, which is slow to forget.
    leak: in an hour; drift: of a step, of which nine tenths stay from round to round."""
    chance = random.Random(seed)
    samples, wandering, last = [], 0.0, None
    for second in range(0, minutes * 60, STEP):
        block = second // ROUND
        if block != last:
            wandering = 0.9 * wandering + chance.gauss(0, drift)
            last = block
        phase = swing * math.sin(2 * math.pi * (second % ROUND) / ROUND)
        samples.append((second, 100 + leak * second / 3600 + phase + wandering + chance.gauss(0, noise), block))
    return samples


class Arithmetic(unittest.TestCase):
    def test_a_straight_line_is_found_without_an_error(self):
        line = slopes.slope([(60 * n, 7 + 2 * n, n) for n in range(10)])
        self.assertAlmostEqual(line.per_hour, 120)
        self.assertAlmostEqual(line.mean, 16)
        self.assertAlmostEqual(line.error, 0)
        self.assertEqual(line.blocks, 10)

    def test_the_error_is_that_of_least_squares(self):
        # By hand: means 0, 1, 0, 1, 0 at 0 to 4 hours: slope 0, residuals' squares 1.2, spread 10, 3 degrees of freedom.
        line = slopes.slope([(3600 * n, n % 2, n) for n in range(5)])
        self.assertAlmostEqual(line.per_hour, 0)
        self.assertAlmostEqual(line.error, math.sqrt(1.2 / 3 / 10))

    def test_many_samples_in_a_block_are_one_point(self):
        once = [(60 * n, n * n % 7, n) for n in range(12)]
        often = [sample for sample in once for _ in range(30)]
        self.assertEqual(slopes.slope(often), slopes.slope(once))

    def test_neighbours_that_are_alike_make_it_less_sure(self):
        chance = random.Random(3)
        values = [chance.gauss(0, 1) for _ in range(40)]
        apart = slopes.slope([(n, value, n) for n, value in enumerate(values)])
        alike = slopes.slope([(n, value, n) for n, value in enumerate(sorted(values[:20]) + sorted(values[20:])[::-1])])
        self.assertGreater(alike.error, 1.5 * apart.error)

    def test_the_error_is_as_large_as_the_slopes_differ(self):
        """Of 300 days that wander without a leak, few lie beyond two errors: half of them would if all were counted."""
        beyond = 0
        for seed in range(300):
            line = slopes.slope(day(drift=1.0, seed=seed))
            beyond += abs(line.per_hour) > slopes.ERRORS * line.error
        self.assertLess(beyond / 300, 0.2)

    def test_few_samples_tell_nothing(self):
        for samples in ([], [(0, 1, 0)], [(0, 1, 0), (5, 3, 1)], [(n, n, 0) for n in range(50)]):
            self.assertEqual(slopes.verdict(slopes.slope(samples), 1, 10), slopes.UNCLEAR, samples)


class Verdicts(unittest.TestCase):
    def verdict(self, bound=1.0, visible=10.0, **options):
        return slopes.verdict(slopes.slope(day(**options)), bound, visible)

    def test_no_leak_is_flat(self):
        for seed in range(50):
            self.assertEqual(self.verdict(seed=seed, drift=0.02), slopes.FLAT, seed)

    def test_a_leak_grows(self):
        for seed in range(50):
            self.assertEqual(self.verdict(leak=5, seed=seed, drift=0.02), slopes.GROWS, seed)

    def test_a_leak_grows_though_it_comes_in_steps(self):
        samples = [(second, 10 + second // 900, second // ROUND) for second in range(0, 3600, STEP)]
        self.assertEqual(slopes.verdict(slopes.slope(samples), 0.5, 3), slopes.GROWS)

    def test_less_than_the_bound_is_flat_however_sure_it_is(self):
        self.assertEqual(self.verdict(leak=0.8, noise=0, swing=0), slopes.FLAT)
        self.assertEqual(self.verdict(leak=1.2, noise=0, swing=0), slopes.GROWS)

    def test_what_shrinks_is_flat(self):
        self.assertEqual(self.verdict(leak=-20), slopes.FLAT)

    def test_noise_that_would_hide_a_leak_is_not_called_flat(self):
        self.assertEqual(self.verdict(drift=12, seed=2), slopes.UNCLEAR)

    def test_a_constant_is_flat(self):
        self.assertEqual(self.verdict(noise=0, swing=0), slopes.FLAT)


class Taken:
    """What a sampler has taken: of one gauge these samples, of the others a constant."""

    def __init__(self, leaking, samples):
        self._leaking, self._samples = leaking, samples

    def of(self, gauge):
        return [(second, value if gauge.id == self._leaking else 7, block) for second, value, block in self._samples]


class Judgements(unittest.TestCase):
    def test_what_leaks_is_named_and_not_promised(self):
        for gauge in GAUGES:
            judgement = Judgement(Taken(gauge.id, day(leak=50, noise=0.1, swing=1)), 0)
            flat = {f"soak-{other.id}" for other in GAUGES if other.is_judged and other != gauge}
            self.assertEqual(set(judgement.promises()), flat)
            named = [line.split(": ")[0] for line in judgement.not_flat()]
            self.assertEqual(named, [gauge.name] if gauge.is_judged else [])
            self.assertEqual(judgement.verdicts().get(gauge.id), slopes.GROWS if gauge.is_judged else None)

    def test_what_fills_in_the_warm_up_is_no_leak(self):
        filling = [(second, min(second, 600) / 6, second // ROUND) for second in range(0, 3600, STEP)]
        self.assertNotEqual(Judgement(Taken("memory", filling), 0).verdicts()["memory"], slopes.FLAT)
        self.assertEqual(Judgement(Taken("memory", filling), 600).verdicts()["memory"], slopes.FLAT)

    def test_each_gauge_has_a_row_of_the_same_columns(self):
        rows = list(Judgement(Taken("threads", day(leak=50)), 0).rows())
        self.assertEqual(len(rows), len(GAUGES))
        self.assertEqual({row.count("|") for row in rows}, {6})
        self.assertIn("| grows |", next(row for row in rows if row.startswith("| threads |")))


if __name__ == "__main__":
    unittest.main()
