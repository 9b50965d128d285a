#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What benchmarks/growth.py makes of points: the exponents, what it leaves out and refuses, its picture and table."""
import pathlib
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "benchmarks"))
import growth  # noqa: E402  pylint: disable=wrong-import-position

SIZES = [10 ** power for power in range(1, 6)]
SVG = "{http://www.w3.org/2000/svg}"


def curve(value, sizes=SIZES, noise=0.0):
    """Of a cost that takes value(size)."""
    return growth.Curve("playlist: shuffle", {size: value(size) for size in sizes}, noise)


def lines_of(name, value=lambda size: size / 100):
    return [f"growth: {name} | {size} | {value(size):.9f} | ms" for size in SIZES]


def complete(**others):
    """All costs; those that are named by their beginning are what they are given as."""
    lines = []
    for name in growth.COSTS:
        value = next((value for beginning, value in others.items() if name.startswith(beginning)), lambda size: size / 100)
        lines += lines_of(name, value)
    return lines


class Exponents(unittest.TestCase):
    def test_of_powers_are_exact(self):
        for exponent in (-0.5, 0, 0.5, 1, 2):
            with self.subTest(exponent):
                found = curve(lambda size, b=exponent: 3 * size ** b).fit()
                self.assertAlmostEqual(found.exponent, exponent, places=9)
                self.assertAlmostEqual(found.factor, 3, places=6)
                self.assertAlmostEqual(found.error or 0, 0, places=6)
                self.assertAlmostEqual(found.at(growth.FAR) / (3 * growth.FAR ** exponent), 1, places=6)

    def test_the_error_is_that_of_the_slope(self):
        # Logarithms 0, 1, 3 over 0, 1, 2 (to any base): the slope is 1.5, what is left over 1/6, its error sqrt(1/12).
        found = growth.fit([(1, 1), (10, 10), (100, 1000)])
        self.assertAlmostEqual(found.exponent, 1.5)
        self.assertAlmostEqual(found.error, (1 / 12) ** 0.5)

    def test_two_points_have_no_error_and_one_has_none_at_all(self):
        self.assertEqual(curve(float, [10, 100]).fit().error, None)
        self.assertAlmostEqual(curve(float, [10, 100]).fit().exponent, 1)
        self.assertIsNone(curve(float, [10]).fit())
        self.assertIsNone(growth.last_step(curve(float, [10])))

    def test_the_clock_is_left_out(self):
        bent = curve(lambda size: max(size, 19.9), noise=1)
        self.assertEqual([size for size in SIZES if not bent.is_told_apart(size)], [10])
        self.assertAlmostEqual(bent.fit().exponent, 1)
        self.assertTrue(curve(lambda size: 20, noise=1).is_told_apart(10))
        self.assertIsNone(curve(lambda size: 19, noise=1).fit())

    def test_nothing_is_never_told_apart(self):
        self.assertFalse(curve(lambda size: 0).is_told_apart(10))

    def test_fixed_costs_are_left_out_where_a_cost_grows(self):
        found = curve(lambda size: 2000 + size, [*SIZES, 1_000_000])
        self.assertEqual(found.fitted(), [100_000, 1_000_000])
        self.assertAlmostEqual(found.fit().exponent, 1, delta=0.02)
        self.assertEqual(curve(lambda size: 2000 + size).fitted(), [*SIZES])  # one point is no line

    def test_the_last_step(self):
        self.assertAlmostEqual(growth.last_step(curve(lambda size: size if size < 1e5 else 1e6)), 2)

    def test_as_wanted(self):
        for exponent, error, wanted, said in ((1.1, 0.0, growth.WHOLE, "yes"), (1.2, 0.06, growth.WHOLE, "within its error"),
                                              (1.2, 0.04, growth.WHOLE, "no"), (1.2, None, growth.WHOLE, "no"),
                                              (0.05, 0.0, growth.STEP, "yes"), (1.0, 0.1, growth.STEP, "no"),
                                              (-1.0, 0.1, growth.STEP, "yes")):
            with self.subTest((exponent, error)):
                self.assertEqual(growth.verdict(growth.Fit(1, exponent, error), wanted), said)
        self.assertEqual(growth.verdict(None, growth.STEP), "")


class Texts(unittest.TestCase):
    def test_of_times(self):
        for value, told in ((0, "0 µs"), (0.00005, "0.0500 µs"), (0.00123, "1.23 µs"), (0.0456, "45.6 µs"), (1, "1.00 ms"),
                            (999, "999 ms"), (1234, "1.23 s"), (599_000, "599 s"), (600_000, "10 min")):
            self.assertEqual(growth.time_text(value), told)

    def test_of_sizes(self):
        self.assertEqual([growth.short(size) for size in (10, 1000, 30_000, 2_500_000)], ["10", "1k", "30k", "2.5M"])


class Points(unittest.TestCase):
    def test_of_all_units(self):
        for unit, value in (("ns", 2e-6), ("µs", 2e-3), ("ms", 2), ("s", 2000)):
            self.assertAlmostEqual(growth.point_of(f"growth: files: indexed | 10 | 2 | {unit}")[2], value)

    def test_the_worst_noise_counts(self):
        name = "files: indexed"
        noises = [f"growth: {name} | 0 | {value} | ms" for value in (1, 3, 2)]
        found = {curve.name: curve.noise for curve in growth.curves_of([*noises, *complete()])}
        self.assertEqual((found[name], found["playlist: shuffle"]), (3, 0))


class Written(unittest.TestCase):
    def setUp(self):
        self.root = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        (self.root / "docs").mkdir()
        self.picture, self.page = self.root / "docs/growth.svg", self.root / "docs/growth.md"

    def write(self, lines):
        return subprocess.run([sys.executable, ROOT / "benchmarks/growth.py", "--root", self.root], text=True, check=False,
                              input="".join(f"{line}\n" for line in lines), capture_output=True)

    def row(self, name):
        line = next(line for line in self.page.read_text(encoding="utf-8").splitlines() if line.startswith(f"| {name} |"))
        return [field.strip() for field in line.strip("|").split("|")]

    def test_the_table(self):
        lines = ["==> building", *complete(renderers=lambda size: size ** 2, songs=lambda size: 5)]
        done = self.write(lines)
        self.assertEqual((done.returncode, done.stdout.splitlines()), (0, lines), done.stderr)
        self.assertEqual(self.row("playlist: shuffle"),
                         ["playlist: shuffle", "10: (100 µs), 100: 1.00 ms, 1k: 10.0 ms, 10k: 100 ms, 100k: 1.00 s",
                          "1.00 ± 0.00", "1.00", "at most 1.1", "yes", "100 s"])
        self.assertEqual(self.row("renderers: one comes")[2:], ["2.00 ± 0.00", "2.00", "about 0", "no", ""])
        self.assertEqual(self.row("songs: search, a word in one song")[4:], ["about 0", "yes", "5.00 ms"])
        for fact in ("date: 20", "revision: ", "machine: ", "](growth.svg)"):
            self.assertIn(fact, self.page.read_text(encoding="utf-8"))

    def test_the_picture(self):
        self.assertEqual(self.write(complete(renderers=lambda size: size ** 2)).returncode, 0)
        drawn = xml.etree.ElementTree.parse(self.picture).getroot()
        self.assertEqual(drawn.tag, f"{SVG}svg")
        self.assertEqual(drawn[0].get("fill"), "#fff")
        self.assertEqual(len(drawn.findall(f"{SVG}polyline")), len(growth.COSTS))
        told = [text.text for text in drawn.findall(f"{SVG}text")]
        for name in growth.COSTS:
            self.assertIn(name.split(": ")[1], told)
        self.assertEqual(told.count("2.00 ± 0.00"), 2)
        corners = [corner.split(",") for line in drawn.findall(f"{SVG}polyline") for corner in line.get("points").split()]
        self.assertTrue(all(growth.LEFT <= float(x) <= growth.LEFT + growth.PLOT_WIDTH
                            and growth.TOP <= float(y) <= growth.TOP + growth.PLOT_HEIGHT for x, y in corners))

    def test_curves_look_different(self):
        looks = growth.looks(growth.curves_of(complete()))
        self.assertEqual(len(set(looks.values())), len(growth.COSTS))

    def test_what_is_too_small_is_drawn_too(self):
        self.assertEqual(self.write(complete(files=lambda size: 0)).returncode, 0)
        self.assertEqual(self.row("files: indexed")[2:6], ["not told apart from the clock", "", "at most 1.1", ""])
        xml.etree.ElementTree.parse(self.picture)

    def test_refused(self):
        for bad in ("growth: playlist: shuffle | 10 | 1", "growth: playlist: shuffle | 7 | 1 | ms | ms", "growth:",
                    "growth: playlist: shuffle | ten | 1 | ms", "growth: playlist: shuffle | 7 | quick | ms",
                    "growth: playlist: shuffle | -7 | 1 | ms", "growth: playlist: shuffle | 7 | -1 | ms",
                    "growth: playlist: shuffle | 7 | nan | ms", "growth: playlist: shuffle | 7 | inf | ms",
                    "growth: playlist: shuffle | 7 | 1 | kB", "growth: something else | 7 | 1 | ms",
                    "growth: playlist: shuffle | 10 | 1 | ms"):
            with self.subTest(bad):
                done = self.write([*complete(), bad])
                self.assertEqual(done.returncode, 1)
                self.assertIn(bad, done.stderr)
                self.assertNotIn("Traceback", done.stderr)
                self.assertEqual(list((self.root / "docs").iterdir()), [])

    def test_half_a_run_is_not_written(self):
        for lines in ([], complete()[len(SIZES):]):
            done = self.write(lines)
            self.assertEqual(done.returncode, 1)
            self.assertIn(next(iter(growth.COSTS)), done.stderr)
            self.assertEqual(list((self.root / "docs").iterdir()), [])


class InTheTree(unittest.TestCase):
    def test_the_programs_print_what_is_known(self):
        """By the texts in their sources: a name that is changed in one place only is seen before the benchmarks are run."""
        sources = "".join(path.read_text(encoding="utf-8") for path in (ROOT / "benchmarks").rglob("*.cpp"))
        for name in growth.COSTS:
            group, rest = name.split(": ", 1)
            self.assertTrue(f'"{name}"' in sources or (f'"{group}: "' in sources or f'"{group}"' in sources) and
                            (f'"{rest}"' in sources or f'": {rest}"' in sources), name)


if __name__ == "__main__":
    unittest.main()
