#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What scripts/write_reliability.py writes, and that docs/reliability.md can be written by it."""
import pathlib
import re
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "scripts"))
sys.dont_write_bytecode = True
import write_reliability as writer  # noqa: E402  pylint: disable=wrong-import-position

PAGE = """# Page

| id | promise | test | last figure |
|---|---|---|---|
| `kept` | holds | `a_test` | old (yesterday) |
| `other` | holds too | `b_test` | |
"""


class Figures(unittest.TestCase):
    def test_the_last_line_of_a_promise_counts(self):
        said = writer.figures(["reliability: kept: 1 of 2", "12: reliability: kept: 2 of 2 ", "no reliability at all"])
        self.assertEqual(said, {"kept": "2 of 2"})


class Written(unittest.TestCase):
    def test_the_last_column_of_the_row_is_replaced(self):
        page = writer.written(PAGE, {"kept": "500 of 500 | none lost"}, "2030-01-02, abc")
        self.assertEqual(page.splitlines()[4], "| `kept` | holds | `a_test` | 500 of 500 \\| none lost (2030-01-02, abc) |")
        self.assertEqual(page.splitlines()[:4] + page.splitlines()[5:], PAGE.splitlines()[:4] + PAGE.splitlines()[5:])

    def test_a_promise_without_a_row_is_refused(self):
        with self.assertRaisesRegex(KeyError, "no row for: unheard"):
            writer.written(PAGE, {"kept": "1", "unheard": "2"}, "now")

    def test_what_was_written_can_be_written_again(self):
        once = writer.written(PAGE, {"kept": "a | b"}, "one")
        self.assertEqual(writer.written(once, {"kept": "c"}, "two"), writer.written(PAGE, {"kept": "c"}, "two"))


class Page(unittest.TestCase):
    def test_each_row_has_its_own_id_and_says_promise_and_test(self):
        page = writer.PAGE.read_text(encoding="utf-8")
        rows = [re.split(r"(?<!\\)\|", line) for line in page.splitlines() if line.startswith("| ") and line[2] != "i"]
        self.assertEqual(len(rows), len(writer.rows_of(page)))
        self.assertEqual(len(rows), len(set(writer.rows_of(page))))
        for row in rows:
            self.assertEqual(len(row), 6, row)
            self.assertTrue(row[2].strip() and row[3].strip(), row)


if __name__ == "__main__":
    unittest.main()
