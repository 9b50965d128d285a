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


def judged(rows):
    return [report.judged(one) for one in rows]


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
        self.assertEqual(report.rows_of(page.splitlines()), judged([*others, *reversed(rows)]))
        self.assertEqual(report.rows_of(readme.splitlines()), judged(rows))
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
        self.assertEqual(report.rows_of(readme.splitlines()), judged(complete()))

    def test_a_later_one_takes_its_place(self):
        self.write(complete())
        self.write([row("private memory", "90.00 MB")], "--long-day")
        _, _, page = self.write([row("private memory", "80.00 MB")], "--long-day")
        self.assertEqual(report.rows_of(page.splitlines()), [*judged(complete()), row("private memory", "80.00 MB")])
        self.assertEqual(page.count("## A long day"), 1)

    def test_later_benchmarks_keep_it(self):
        self.write(complete())
        self.write([row("private memory", "90.00 MB")], "--long-day")
        _, _, page = self.write([*complete(), row("another")])
        self.assertEqual(report.rows_of(page.splitlines()), [*judged([*complete(), row("another")]),
                                                           row("private memory", "90.00 MB")])
        self.assertEqual(page.count("## A long day"), 1)

    def test_no_day_at_all_is_not_written(self):
        self.write(complete())
        before = self.page.read_text(encoding="utf-8")
        done, _, page = self.write(["it failed"], "--long-day")
        self.assertEqual((done.returncode, page), (1, before))


class Judged(unittest.TestCase):
    def test_a_goal_that_is_a_number(self):
        for fields, verdict in (("1.00 ms | x: 2.00 ms | 0.50 | at most 0.5", "met"),
                                ("1.00 ms | x: 2.00 ms | 0.51 | at most 0.5", "**missed**"),
                                ("8.00 ms | x: 1.00 ms | 8.00 | at most 8 ms", "met"),
                                ("8.01 ms | x: 9.00 ms | 0.89 | at most 8 ms", "**missed**"),
                                ("1300.00 bytes |  | | at most 1200", "**missed**"),
                                ("0.50 /s | x: 0.00 /s | | at most 1 /s", "met"),
                                ("21 (19) ms |  | | at most 20 ms", "**missed**"),
                                ("3.00 ms | x: 1.50 ms | 2.00 | at most 1 ms more", "**missed**"),
                                ("3.00 ms | x: 2.00 ms | 1.50 | at most 1 ms more", "met"),
                                ("19.6 MB | 20 MB of them: 19.7 MB | 1.20 | ratio at most 1.1", "**missed**")):
            with self.subTest(fields):
                line = f"| what | {fields} |"
                self.assertEqual(report.judged(line), f"{line} {verdict} |")

    def test_what_is_only_told(self):
        for goal in ("", "reported", "flat", "1"):
            line = f"| what | 1.00 ms | x: 1.00 ms | 1.00 | {goal} |"
            self.assertEqual(report.judged(line), f"{line} |")


class InTheTree(unittest.TestCase):
    def test_the_readme_tells_figures_of_the_page(self):
        page = report.rows_of((ROOT / "docs/benchmarks.md").read_text(encoding="utf-8").splitlines())
        readme = (ROOT / "README.md").read_text(encoding="utf-8")
        told = readme.split(report.BEGIN)[1].split(report.END)[0]
        self.assertEqual(report.rows_of(told.splitlines()), report.chosen_rows(page)[0])
        self.assertEqual(len(report.rows_of(told.splitlines())), len(report.CHOSEN))


if __name__ == "__main__":
    unittest.main()
