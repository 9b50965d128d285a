#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The mutation run's own parts: what it changes, what it leaves alone, and that it puts everything back."""

import contextlib
import io
import json
import sys
import tempfile
import textwrap
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
import mutate  # noqa: E402
import operators  # noqa: E402


def changes(source, operator=None):
    """(operator, changed line) of all changes."""
    return [(m.operator, m.after.strip()) for m in operators.mutants(textwrap.dedent(source))
            if operator in (None, m.operator)]


def of_line(line, operator):
    return [after for _, after in changes(f"void f()\n{{\n    {line}\n}}\n", operator)]


class Operators(unittest.TestCase):
    TABLE = (
        ("if (a && b.isEmpty())", "negated condition", ["if (!(a && b.isEmpty()))"]),
        ("while (next(i)) {", "negated condition", ["while (!(next(i))) {"]),
        ("} else if (x) {", "negated condition", ["} else if (!(x)) {"]),
        ("return a == b;", "negated result", ["return !(a == b);"]),
        ("return a;", "negated result", []),
        ("set(true, false);", "swapped true and false", ["set(false, false);", "set(true, true);"]),
        ("if (a == b)", "negated comparison", ["if (a != b)"]),
        ("if (a != b)", "negated comparison", ["if (a == b)"]),
        ("for (int i = 0; i < n; ++i)", "off by one", ["for (int i = 0; i <= n; ++i)"]),
        ("if (a >= b)", "off by one", ["if (a > b)"]),
        ("QList<int> list;", "off by one", []),
        ("if (a && b)", "swapped and and or", ["if (a || b)"]),
        ("if (a && b && c)", "swapped and and or", []),  # both kinds would stand side by side
        ("return end - begin;", "minus to plus", ["return end + begin;"]),
        ("++count;", "turned step", ["--count;"]),
        ("left -= taken;", "added to instead of taken from", ["left += taken;"]),
        ("constexpr int limit = 0;", "changed constant", ["constexpr int limit = 1;"]),
        ("m_timer->start(700);", "changed constant", ["m_timer->start((700 + 1));"]),
        ("wait(1'000);", "changed constant", ["wait((1'000 + 1));"]),
        ("const double x = 1.5;", "changed constant", []),
        ("case 3:", "changed constant", []),
        ('use(QStringLiteral("text 1"));', "changed text", ['use(QStringLiteral("text 1~"));']),
        ("m_timer->stop();", "removed call", ["while (false) m_timer->stop();"]),
        ("connect(a, SIGNAL(b()), this, SLOT(c()));", "removed connection",
         ["while (false) connect(a, SIGNAL(b()), this, SLOT(c()));"]),
        ("a->disconnect(this);", "removed connection", ["while (false) a->disconnect(this);"]),
        ("Q_EMIT changed(1);", "removed signal", ["while (false) Q_EMIT changed(1);"]),
        ("m_state = Idle;", "removed assignment", ["while (false) m_state = Idle;"]),
        ("int state = idle();", "removed assignment", []),
        ("return;", "removed return", ["while (false) return;"]),
        ("break;", "removed return", []),
        ("Widget::~Widget();", "removed call", ["while (false) Widget::~Widget();"]),
    )

    def test_what_each_operator_makes_of_a_line(self):
        for line, operator, expected in self.TABLE:
            with self.subTest(line=line, operator=operator):
                self.assertEqual(of_line(line, operator), expected)

    def test_lines_that_no_test_can_see_are_left_alone(self):
        for line in ("// if (a == 1) return;", "/* connect(a, b); */", "Q_UNUSED(a)", "Q_ASSERT(a == 1);",
                     'qDebug() << "a == 1" << true;', 'qt_assert("a", __FILE__, 1);', "#if 1", "using T = A<1>;"):
            with self.subTest(line=line):
                self.assertEqual(changes(f"void f()\n{{\n    {line}\n}}\n"), [])

    def test_the_rest_of_a_log_statement_belongs_to_it(self):
        self.assertEqual(changes("""
            void f()
            {
                qWarning() << "a"
                           << (count == 1) << true;
            }
            """), [])

    def test_the_statement_after_a_log_line_does_not(self):
        self.assertEqual(changes("""
            void f()
            {
                qDebug() << "a";
                m_on = true;
            }
            """), [("swapped true and false", "m_on = false;"), ("removed assignment", "while (false) m_on = true;")])

    def test_texts_and_comments_are_no_code(self):
        self.assertEqual(of_line('use("a == 1", b); // c == 2', "negated comparison"), [])
        self.assertEqual(of_line('use("a == 1", b); // c == 2', "changed constant"), [])
        self.assertEqual(of_line("use('1', b);", "changed constant"), [])
        self.assertEqual(changes('const auto t = R"(a == 1 && true\n if (b) return;\n)";\n', None), [])

    def test_a_statement_of_several_lines_is_removed_as_one(self):
        source = """
            void f()
            {
                connect(
                    a, SIGNAL(b()), this, [this] {
                        go();
                    });
            }
            """
        self.assertIn(("removed connection", "while (false) connect("), changes(source))
        self.assertNotIn(("removed call", "while (false) a, SIGNAL(b()), this, [this] {"), changes(source))

    def test_heads_of_functions_are_no_calls(self):
        self.assertEqual(changes("Window::Window(QWidget *parent)\n    : QWidget(parent)\n{\n}\n", "removed call"), [])
        self.assertEqual(changes("void Window::show()\n{\n}\n", "removed call"), [])

    def test_a_branch_keeps_its_else(self):
        # Neither braces nor another "if" come in: "else" still belongs to the condition that it belonged to.
        self.assertEqual(changes("void f()\n{\n    if (a)\n        b();\n    else\n        c();\n}\n", "removed call"),
                         [("removed call", "while (false) b();"), ("removed call", "while (false) c();")])

    def test_each_change_is_one_line_and_a_change(self):
        for file in sorted((mutate.ROOT / "src").rglob("*.cpp"))[:20]:
            for mutant in operators.mutants(file.read_text()):
                self.assertNotEqual(mutant.before, mutant.after)
                self.assertNotIn("\n", mutant.after)
                self.assertEqual(file.read_text().split("\n")[mutant.line - 1], mutant.before)

    def test_a_line_is_found_where_it_has_moved_to(self):
        self.assertEqual(operators.place_of(["a", "b", "a"], 3, "a"), 2)
        self.assertEqual(operators.place_of(["x", "a"], 1, "a"), 1)
        self.assertIsNone(operators.place_of(["x"], 1, "a"))


class Choice(unittest.TestCase):
    def test_a_seed_always_chooses_the_same(self):
        self.assertEqual(mutate.choose([], 7, 40), mutate.choose([], 7, 40))
        self.assertNotEqual(mutate.choose([], 7, 40), mutate.choose([], 8, 40))

    def test_one_change_for_a_line_in_all_folders(self):
        chosen = mutate.choose([], 1, 300)
        self.assertEqual(len({(one["path"], one["line"]) for one in chosen}), 300)
        self.assertEqual({one["path"].split("/")[0] for one in chosen}, {"src", "kelvo-test", "framework"})

    def test_a_path_limits_it(self):
        self.assertEqual({one["path"] for one in mutate.choose(["src/RowCopier.cpp"], 1, 10)}, {"src/RowCopier.cpp"})

    def test_each_file_has_programs_that_see_it(self):
        for path, _ in mutate.candidates([]):
            self.assertTrue(mutate.programs_for(path), path)


class Order(unittest.TestCase):
    def test_tests_named_like_the_file_come_first_and_slow_ones_last(self):
        usual = {"unit-slow": 60, "unit-quick": 1, "unit-gate": 3, "unit-gate-slow": 50, "unit-other": 2}
        self.assertEqual(mutate.batches(usual, "src/GateKeeper_words.cpp"),
                         [["unit-gate"], ["unit-quick", "unit-other"], ["unit-gate-slow"], ["unit-slow"]])

    def test_what_all_tests_are_named_like_says_nothing(self):
        usual = {"unit-gate-a": 1, "unit-gate-b": 30}
        self.assertEqual(mutate.batches(usual, "src/Gate.cpp"), [["unit-gate-a"], ["unit-gate-b"]])

    def test_no_test_is_left_out_of_the_order(self):
        usual = {f"unit-{number}": number for number in range(40)}
        self.assertEqual(sorted(name for tests in mutate.batches(usual, "src/A.cpp") for name in tests), sorted(usual))


class FakeBuild:
    """Builds and tests nothing: looks at the file as it is at that moment."""

    def __init__(self, file, fails_when):
        self.file = file
        self.fails_when = fails_when

    def baseline(self, _program):
        return {"quick": 0.1, "slow": 9}

    def make(self, _program, _limit):
        return "uncompilable" not in self.file.read_text(), "x.cpp:1: error: no\n"

    def run(self, tests, _timeout):
        found = [name for name in tests if self.fails_when(name, self.file.read_text())]
        return found[:1], "because", {name: 1.0 for name in tests}


class Verdicts(unittest.TestCase):
    SOURCE = "void f()\n{\n    m_on = true;\n}\n"

    def setUp(self):
        folder = self.enterContext(tempfile.TemporaryDirectory())
        self.root = Path(folder)
        self.file = self.root / "src" / "a.cpp"
        self.file.parent.mkdir()
        self.file.write_text(self.SOURCE)
        self.addCleanup(setattr, mutate, "ROOT", mutate.ROOT)
        mutate.ROOT = self.root

    def run_with(self, fails_when, *arguments):
        options = mutate.arguments(["--build", str(self.root / "build"), "--report", str(self.root / "report.md"), *arguments])
        run = mutate.Run(options)
        run.build = FakeBuild(self.file, fails_when)
        with contextlib.redirect_stdout(io.StringIO()):
            run.go()
        self.assertEqual(self.file.read_text(), self.SOURCE)
        return {one["after"].strip(): one for one in run.results.values()}

    def test_what_a_test_notices_is_killed(self):
        results = self.run_with(lambda test, text: test == "slow" and "false" in text)
        self.assertEqual(results["m_on = false;"]["result"], "killed")
        self.assertEqual(results["m_on = false;"]["by"], "slow")

    def test_what_none_notices_survives(self):
        results = self.run_with(lambda test, text: False)
        self.assertEqual({one["result"] for one in results.values()}, {"survived"})
        self.assertIn("0 killed (0.0 %)", (self.root / "report.md").read_text())

    def test_one_failure_alone_is_no_kill(self):
        failures = iter([True])
        results = self.run_with(lambda test, text: test == "quick" and next(failures, False))
        self.assertEqual({one["result"] for one in results.values()}, {"survived"})

    def test_a_test_that_fails_without_the_change_has_noticed_nothing(self):
        results = self.run_with(lambda test, text: test == "slow")
        self.assertEqual({one["result"] for one in results.values()}, {"unclear"})
        self.assertIn("0 of 60 changes were tried to the end", (self.root / "report.md").read_text())

    def test_what_does_not_compile_is_not_counted(self):
        self.SOURCE = "void f()\n{\n    use(uncompilable, true);\n}\n"
        self.file.write_text(self.SOURCE)
        results = self.run_with(lambda test, text: False)
        self.assertEqual({one["result"] for one in results.values()}, {"unbuildable"})
        self.assertIn("0 of 60 changes were tried to the end", (self.root / "report.md").read_text())

    def test_it_goes_on_where_it_was(self):
        first = self.run_with(lambda test, text: False)
        again = self.run_with(lambda test, text: self.fail("tried twice"))
        self.assertEqual(first, again)

    def test_survivors_are_tried_again_when_asked_to(self):
        self.run_with(lambda test, text: False)
        results = self.run_with(lambda test, text: text != self.SOURCE, "--again")
        self.assertEqual({one["result"] for one in results.values()}, {"killed"})
        count = len(results)
        self.assertIn(f"{count} of the killed had survived at first", (self.root / "report.md").read_text())

    def test_the_share_is_given_with_and_without_what_no_test_can_notice(self):
        one = {"path": "src/a.cpp", "line": 1, "operator": "o", "before": "a", "after": "b"}
        results = [{**one, "result": "killed", "by": "t"} for _ in range(9)] + [{**one, "after": "c", "result": "survived"}]
        names = {mutate.name_of(results[-1]): "Equivalent: it is the same."}
        self.assertIn("9 killed (90.0 %), 1 survived. Of the survivors 1 are equivalent (the program does the same); "
                      "without these, 9 of 9 were killed (100.0 %).", "\n".join(mutate.summary(results, 60, names)))
        names[mutate.name_of(results[-1])] = "Open: equivalent to nothing."
        self.assertIn("9 of 10 were killed (90.0 %)", "\n".join(mutate.summary(results, 60, names)))

    def test_a_program_is_measured_before_the_line_is_changed_for_it(self):
        seen = []
        options = mutate.arguments(["--build", str(self.root / "build"), "--report", str(self.root / "report.md"), "--count", "1"])
        run = mutate.Run(options)
        run.build = FakeBuild(self.file, lambda test, text: False)
        baseline = run.build.baseline
        measured = set()

        def measure(program):
            if program not in measured:
                seen.append(self.file.read_text())
            measured.add(program)
            return baseline(program)
        run.build.baseline = measure
        self.addCleanup(setattr, mutate, "programs_for", mutate.programs_for)
        mutate.programs_for = lambda _path: ("one", "two")
        with contextlib.redirect_stdout(io.StringIO()):
            run.go()
        self.assertEqual(seen, [self.SOURCE, self.SOURCE])

    def test_a_line_left_changed_by_a_run_that_was_killed_is_put_back(self):
        folder = self.root / "build" / "mutation"
        folder.mkdir(parents=True)
        (folder / "pending.json").write_text(json.dumps({"path": "src/a.cpp", "text": self.SOURCE}))
        self.file.write_text(self.SOURCE.replace("true", "false"))
        self.run_with(lambda test, text: True, "--list")

    def test_the_line_is_put_back_when_the_run_is_interrupted(self):
        def interrupted(test, text):
            raise KeyboardInterrupt
        with self.assertRaises(KeyboardInterrupt):
            self.run_with(interrupted)
        self.assertEqual(self.file.read_text(), self.SOURCE)


if __name__ == "__main__":
    unittest.main()
