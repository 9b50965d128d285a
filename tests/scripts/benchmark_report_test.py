#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What benchmarks/report.py writes, and that the README tells what docs/benchmarks.md does."""
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "benchmarks"))
import report  # noqa: E402  pylint: disable=wrong-import-position

README = "# Console\n\nbefore\n" + report.BEGIN + "old\n" + report.END + "after\n"


def row(name, value="1.00 ms"):
    return f"| {name} | {value} |  | | |"


def complete():
    """The fewest rows that the benchmarks must have."""
    return [row(name) for name in report.CHOSEN]


class Written(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        (self.root / "docs").mkdir()
        self.page = self.root / "docs/benchmarks.md"
        (self.root / "README.md").write_text(README, encoding="utf-8")

    def write(self, lines, *options):
        done = subprocess.run([sys.executable, ROOT / "benchmarks/report.py", "--root", self.root, *options],
                              input="\n".join(lines) + "\n", capture_output=True, text=True, check=False)
        page = self.page.exists() and self.page.read_text(encoding="utf-8")
        return done, (self.root / "README.md").read_text(encoding="utf-8"), page

    def test_all_rows_in_their_order_and_the_chosen_ones(self):
        rows = [row(f"{name}, median" if "median" not in name else name) for name in report.CHOSEN]
        others = [row("first of the others"), row("- its detail")]
        done, readme, page = self.write(["==> building", "| what | here |", "|---|---|", *others, *reversed(rows)])
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(report.rows_of(page.splitlines()), [*others, *reversed(rows)])
        self.assertEqual(report.rows_of(readme.splitlines()), rows)
        self.assertTrue(readme.startswith("# Console\n\nbefore\n") and readme.endswith(report.END + "after\n"))
        self.assertNotIn("old", readme)
        for fact in ("date: 20", "revision: ", "machine: "):
            self.assertIn(fact, page)

    def test_half_a_run_is_not_written(self):
        done, readme, page = self.write([row(name) for name in report.CHOSEN[1:]])
        self.assertEqual(done.returncode, 1)
        self.assertIn(report.CHOSEN[0], done.stderr)
        self.assertEqual((readme, page), (README, False))


    def test_a_long_day_has_its_part_and_leaves_the_rest(self):
        self.write(complete())
        before = self.page.read_text(encoding="utf-8")
        done, readme, page = self.write(["Ran 1 test", row("private memory", "90.00 MB")], "--long-day")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertTrue(page.startswith(before))
        self.assertEqual(report.rows_of(page[len(before):].splitlines()), [row("private memory", "90.00 MB")])
        self.assertIn("## A long day", page[len(before):])
        self.assertEqual(report.rows_of(readme.splitlines()), complete())

    def test_a_later_one_takes_its_place(self):
        self.write(complete())
        self.write([row("private memory", "90.00 MB")], "--long-day")
        _, _, page = self.write([row("private memory", "80.00 MB")], "--long-day")
        self.assertEqual(report.rows_of(page.splitlines()), [*complete(), row("private memory", "80.00 MB")])
        self.assertEqual(page.count("## A long day"), 1)

    def test_later_benchmarks_keep_it(self):
        self.write(complete())
        self.write([row("private memory", "90.00 MB")], "--long-day")
        _, _, page = self.write([*complete(), row("another")])
        self.assertEqual(report.rows_of(page.splitlines()), [*complete(), row("another"), row("private memory", "90.00 MB")])
        self.assertEqual(page.count("## A long day"), 1)

    def test_no_day_at_all_is_not_written(self):
        self.write(complete())
        before = self.page.read_text(encoding="utf-8")
        done, _, page = self.write(["it failed"], "--long-day")
        self.assertEqual((done.returncode, page), (1, before))


class InTheTree(unittest.TestCase):
    def test_the_readme_tells_figures_of_the_page(self):
        page = report.rows_of((ROOT / "docs/benchmarks.md").read_text(encoding="utf-8").splitlines())
        readme = (ROOT / "README.md").read_text(encoding="utf-8")
        told = readme.split(report.BEGIN)[1].split(report.END)[0]
        self.assertEqual(report.rows_of(told.splitlines()), report.chosen_rows(page)[0])
        self.assertEqual(len(report.rows_of(told.splitlines())), len(report.CHOSEN))


if __name__ == "__main__":
    unittest.main()
