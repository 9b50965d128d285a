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


class Written(unittest.TestCase):
    def write(self, lines):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            (root / "docs").mkdir()
            (root / "README.md").write_text(README, encoding="utf-8")
            done = subprocess.run([sys.executable, ROOT / "benchmarks/report.py", "--root", root],
                                  input="\n".join(lines) + "\n", capture_output=True, text=True, check=False)
            page = root / "docs/benchmarks.md"
            return done, (root / "README.md").read_text(encoding="utf-8"), page.exists() and page.read_text(encoding="utf-8")

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


class InTheTree(unittest.TestCase):
    def test_the_readme_tells_figures_of_the_page(self):
        page = report.rows_of((ROOT / "docs/benchmarks.md").read_text(encoding="utf-8").splitlines())
        readme = (ROOT / "README.md").read_text(encoding="utf-8")
        told = readme.split(report.BEGIN)[1].split(report.END)[0]
        self.assertEqual(report.rows_of(told.splitlines()), report.chosen_rows(page)[0])
        self.assertEqual(len(report.rows_of(told.splitlines())), len(report.CHOSEN))


if __name__ == "__main__":
    unittest.main()
