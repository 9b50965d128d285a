#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""test.sh, .ci/run and what is in scripts/ on a system that is made up: the programs that they call are stand-ins."""

import json
import shutil
import socket
import subprocess
import sys
import tempfile
import textwrap
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


class MadeUp(unittest.TestCase):
    def setUp(self):
        self.root = Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.bin = self.root / "bin"
        self.bin.mkdir()

    def take(self, name):
        (self.root / name).parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(ROOT / name, self.root / name)

    def program(self, path, script):
        path = self.root / path
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text("#!/bin/bash\n" + textwrap.dedent(script))
        path.chmod(0o755)

    def run_script(self, *command, **environment):
        return subprocess.run(command, cwd=self.root, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, check=False, timeout=60,
                              env={"PATH": f"{self.bin}:/usr/bin:/bin", "HOME": str(self.root), **environment})


class DemoLibrary(MadeUp):
    """The demo library lies where everything of the user's does; what earlier versions made moves there."""

    def setUp(self):
        super().setUp()
        self.take("run.sh")
        self.program("scripts/install-dependencies.sh", "")
        self.program("scripts/make-demo-library.sh", 'mkdir -p "$1"; touch "$1/demo.pls"')
        self.program("bin/cmake", "")
        self.program("bin/xdpyinfo", "")
        self.program("build/bin/kelvo-test-gui", 'echo "started with $*"')
        (self.root / "build/build.ninja").touch()
        self.old, self.new = (self.root / f".local/share/{name}/demo" for name in ("kelvo-test-gui", "kelvo"))

    def make(self, folder):
        folder.mkdir(parents=True)
        (folder / "song.mp3").write_text(str(folder))

    def start(self, *arguments, **environment):
        result = self.run_script("./run.sh", *arguments, DISPLAY=":1", DBUS_SESSION_BUS_ADDRESS="none", **environment)
        self.assertEqual(result.returncode, 0, result.stdout)
        return result.stdout

    def test_made_anew(self):
        self.assertIn(f"started with file://{self.new}/demo.pls", self.start())
        self.assertFalse(self.old.parent.exists())

    def test_an_old_one_moves(self):
        self.make(self.old)
        self.assertIn(f"started with file://{self.new}/demo.pls", self.start())
        self.assertEqual((self.new / "song.mp3").read_text(), str(self.old))
        self.assertFalse(self.old.parent.exists())

    def test_also_when_something_else_is_played(self):
        self.make(self.old)
        self.assertIn("started with http://h/list.pls", self.start("http://h/list.pls"))
        self.assertTrue((self.new / "song.mp3").exists())

    def test_of_two_each_stays(self):
        self.make(self.old)
        self.make(self.new)
        self.start()
        self.assertEqual([(place / "song.mp3").read_text() for place in (self.old, self.new)],
                         [str(self.old), str(self.new)])

    def test_a_link_moves_as_a_link(self):
        self.make(self.root / "elsewhere")
        self.old.parent.mkdir(parents=True)
        self.old.symlink_to(self.root / "elsewhere")
        self.start()
        self.assertTrue(self.new.is_symlink())
        self.assertTrue((self.new / "song.mp3").exists())

    def test_one_that_cannot_move_stays(self):
        self.make(self.old)
        self.new.parent.write_text("no folder")
        self.start("http://h/list.pls")
        self.assertTrue((self.old / "song.mp3").exists())

    def test_a_place_of_ones_own_is_left_alone(self):
        self.make(self.old)
        self.start(KELVO_DEMO_DIR=str(self.root / "mine"))
        self.assertTrue((self.old / "song.mp3").exists())
        self.assertTrue((self.root / "mine/demo.pls").exists())


# Ends as it is told to.
CTEST = """
    echo "ctest $*" >> "$HOME/calls"
    logs=build-asan/Testing/Temporary
    mkdir -p $logs
    cp "$HOME/ctest.log" $logs/LastTest.log
    exit "$(cat "$HOME/ctest.code")"
"""


class RunScript(MadeUp):
    """Where the console is shown."""

    def setUp(self):
        super().setUp()
        self.take("run.sh")
        for name in ("bin/cmake", "bin/xdg-user-dir", "scripts/install-dependencies.sh", "scripts/make-demo-library.sh"):
            self.program(name, "")
        self.program("bin/dbus-run-session", 'shift; exec "$@"')
        self.program("bin/xdpyinfo", '[ "$DISPLAY" = :good ]')
        self.program("scripts/show-headless.sh", 'echo headless')
        self.program("build/bin/kelvo-test-gui", 'echo "shown with $1"')
        (self.root / "build/build.ninja").touch()

    def shown(self, **environment):
        done = self.run_script("./run.sh", "file:///list.pls", XDG_RUNTIME_DIR=str(self.root), **environment)
        self.assertEqual(done.returncode, 0, done.stdout)
        return done.stdout.splitlines()[-1]

    def test_on_x11(self):
        self.assertEqual(self.shown(DISPLAY=":good"), "shown with file:///list.pls")

    def test_without_a_display_on_a_virtual_one(self):
        self.assertEqual(self.shown(), "headless")
        self.assertEqual(self.shown(DISPLAY=":bad", WAYLAND_DISPLAY="wayland-gone"), "headless")

    def test_on_wayland_alone(self):
        with socket.socket(socket.AF_UNIX) as compositor:
            compositor.bind(str(self.root / "wayland-0"))
            self.assertEqual(self.shown(WAYLAND_DISPLAY="wayland-0"), "shown with file:///list.pls")
            self.assertEqual(self.shown(WAYLAND_DISPLAY=str(self.root / "wayland-0")), "shown with file:///list.pls")
            self.assertEqual(self.shown(DISPLAY=":bad", WAYLAND_DISPLAY="wayland-0"), "shown with file:///list.pls")


class TestScript(MadeUp):
    def setUp(self):
        super().setUp()
        for name in ("test.sh", "tests/support/list-skips.py"):
            self.take(name)
        self.program("scripts/install-dependencies.sh", "")
        self.program("bin/cmake", "")
        self.program("bin/ctest", CTEST)
        self.ends()

    def ends(self, log="", code=0):
        (self.root / "ctest.log").write_text(textwrap.dedent(log))
        (self.root / "ctest.code").write_text(str(code))

    def start(self):
        return self.run_script("./test.sh", "-L", "unit")

    def calls(self):
        return (self.root / "calls").read_text().splitlines()

    def test_tests_are_run_once_whatever_comes_of_them(self):
        for code in (0, 8):
            with self.subTest(code=code):
                (self.root / "calls").unlink(missing_ok=True)
                self.ends(code=code)
                result = self.start()
                self.assertEqual(result.returncode, code, result.stdout)
                self.assertEqual(self.calls(), ["ctest --preset asan -j6 -L unit"])
                self.assertIn("==> skipped: 0", result.stdout)

    def test_what_ctest_cannot_do_lists_no_skips(self):
        self.ends(code=4)
        result = self.start()
        self.assertEqual(result.returncode, 4, result.stdout)
        self.assertNotIn("==> skipped", result.stdout)

    LOG = """
        1/2 Testing: unit-a
        1/2 Test: unit-a
        PASS   : ATest::one()
        SKIP   : ATest::two(a row) no mounts here
           Loc: [a.cpp(1)]
        SKIP   : ATest::three() no mounts here
        SKIP   : ATest::three() no mounts here
        SKIP   : ATest::four(x (y)) no mounts here
        1/2 Testing: e2e-b
        test_three (b.B.test_three) ... skipped "it's no use here"
        2/2 Testing: contract-c
        Skipped: this system has no cables.
        """

    def test_skips_are_listed_at_the_end_with_their_reasons(self):
        self.ends(self.LOG)
        result = self.start()
        self.assertEqual(result.returncode, 0, result.stdout)
        self.assertEqual(result.stdout.splitlines()[-4:], [
            "==> skipped: 6", "    contract-c: this system has no cables. (all of it)",
            "    e2e-b: it's no use here (test_three)",
            "    unit-a: no mounts here (ATest::two(a row), ATest::three() and 2 more)"])

    def test_a_skip_for_want_of_a_package_fails(self):
        for reason in ("rygel is not installed", "mpv or its script (packages mpv and mpv-mpris) is not installed",
                       "neither gmediarender, rygel, minidlna nor gerbera is installed"):
            for line in (f"SKIP   : ATest::two() {reason}", f"test_a (b.B.test_a) ... skipped '{reason}'",
                         f"Skipped: {reason}."):
                with self.subTest(line=line):
                    self.ends(f"1/1 Testing: unit-a\n{line}\n")
                    result = self.start()
                    self.assertEqual(result.returncode, 1, result.stdout)
                    self.assertIn("error: 1 of them for want of a package", result.stdout)


class RunOften(MadeUp):
    """run-often.sh, beside loops that a stand-in for test.sh can see."""

    def setUp(self):
        super().setUp()
        self.take("tests/support/run-often.sh")
        self.ends(["passed"] * 3)

    def ends(self, outcomes):
        """How the runs end, one after the other."""
        for number, outcome in enumerate(outcomes, 1):
            failed = outcome.split()[1:] if outcome.startswith("failed") else []
            lines = [f"{'99' if failed else '100'}% tests passed, {len(failed)} tests failed out of 7", "",
                     f"Total Test time (real) = {100 + number}.50 sec", "", "The following tests did not run:",
                     "\t  2 - contract-b (Skipped)", *(["", "The following tests FAILED:"] if failed else []),
                     *(f"\t{at:3} - {name} (Failed)" for at, name in enumerate(failed, 1))]
            (self.root / f"{number}.out").write_text("\n".join(lines) + "\n")
            (self.root / f"{number}.code").write_text("8" if failed else "1" if outcome == "lacking" else "0")
        self.program("test.sh", """
            echo "$*" >> "$HOME/calls"
            pgrep -P $PPID -x run-often.sh | wc -l >> "$HOME/loops"
            run=$(wc -l < "$HOME/calls")
            cat "$HOME/$run.out"
            exit "$(cat "$HOME/$run.code")"
            """)

    def start(self, *arguments):
        result = self.run_script("tests/support/run-often.sh", *arguments)
        return result.returncode, result.stdout.splitlines()

    def test_each_run_has_a_line_and_all_passed_is_a_promise_kept(self):
        code, lines = self.start("--runs", "3", "--busy", "2", "-j4")
        self.assertEqual(lines, ["run 1 of 3: code 0, 7 tests, failed: none, 101 s",
                                 "run 2 of 3: code 0, 7 tests, failed: none, 102 s",
                                 "run 3 of 3: code 0, 7 tests, failed: none, 103 s",
                                 "reliability: suite-steady: 3 runs of 7 tests beside 2 busy loops, none failed"])
        self.assertEqual(code, 0)
        self.assertEqual((self.root / "calls").read_text(), "-j4\n" * 3)
        self.assertEqual((self.root / "loops").read_text(), "2\n" * 3)

    def test_no_loop_outlives_the_script(self):
        self.start("--runs", "1", "--busy", "3")
        command = str(self.root / "tests/support/run-often.sh")
        left = subprocess.run(["pgrep", "-f", command], stdout=subprocess.PIPE, text=True, check=False).stdout
        self.assertEqual(left, "")

    def test_a_run_that_fails_is_told_and_the_others_follow(self):
        self.ends(["passed", "failed unit-a e2e-b", "lacking"])
        code, lines = self.start("--runs", "3", "--busy", "1")
        self.assertEqual(lines[1:], ["run 2 of 3: code 8, 7 tests, failed: unit-a e2e-b, 102 s",
                                     "run 3 of 3: code 1, 7 tests, failed: none, 103 s"])
        self.assertEqual(code, 1)

    def test_alone_the_longest_run_tells_the_time(self):
        code, lines = self.start("--runs", "2", "--busy", "0")
        self.assertRegex(lines[-1], r"^reliability: suite-time: 7 tests in 102 s on \d+ cores$")
        self.assertEqual(code, 0)

    def test_too_long_a_run_keeps_no_promise(self):
        (self.root / "1.out").write_text("100% tests passed, 0 tests failed out of 7\nTotal Test time (real) = 240.01 sec\n")
        code, lines = self.start("--runs", "1", "--busy", "0")
        self.assertEqual(lines, ["run 1 of 1: code 0, 7 tests, failed: none, 240 s"])
        self.assertEqual(code, 0)


class ContinuousIntegration(MadeUp):
    STEPS = ["test.sh -L unit", "install-dependencies.sh lint", "cmake --preset edit",
             "cmake --build edit --target autogen memory-limits",
             "ctest --preset edit -R ^faults-memory$", "check-style.py --minutes 8", "install-dependencies.sh fuzz",
             "cmake --preset fuzz", "cmake --build fuzz", "run.sh 10", "cmake --preset tsan", "cmake --build tsan",
             "check-threads.py", "cmake --preset minimal", "cmake --build minimal", "check-packages.py"]

    def setUp(self):
        super().setUp()
        self.take(".ci/run")
        shorten = "s/ $//; s/ --parallel [0-9]*//; s/ -DCMAKE_CXX_COMPILER_LAUNCHER=ccache//; s/--build --preset/--build/"
        note = f'echo "$(basename "$0") $*" | sed "{shorten}" >> "$HOME/calls"\n'
        for path in ("test.sh", "scripts/install-dependencies.sh", "scripts/check-style.py",
                     "tests/fuzz/run.sh", "scripts/check-threads.py", "scripts/check-packages.py", "bin/cmake",
                     "bin/ctest"):
            self.program(path, note + 'echo "12% tests passed"; exit "$(cat "$HOME/$(basename "$0").code" || echo 0)"')

    def start(self, **codes):
        for name, code in codes.items():
            (self.root / f"{name}.code").write_text(str(code))
        for name in ("test.sh", "install-dependencies.sh", "check-style.py", "run.sh", "check-threads.py",
                     "check-packages.py", "cmake", "ctest"):
            if not (self.root / f"{name}.code").exists():
                (self.root / f"{name}.code").write_text("0")
        result = self.run_script(".ci/run", "-L", "unit")
        return result, (self.root / "calls").read_text().splitlines()

    def test_the_tests_come_first(self):
        result, calls = self.start()
        self.assertEqual(result.returncode, 0, result.stdout)
        self.assertEqual(calls, self.STEPS)
        closing = result.stdout.split("==> closing lines\n")[1].splitlines()
        self.assertEqual(closing[0], "12% tests passed")
        self.assertEqual(len([line for line in closing if ": passed (" in line]), 12)

    def test_all_steps_are_taken_and_the_first_failure_counts(self):
        result, calls = self.start(**{"test.sh": 8, "check-style.py": 1})
        self.assertEqual(result.returncode, 8, result.stdout)
        self.assertEqual(calls, self.STEPS)
        self.assertIn("tests: failed with code 8 (", result.stdout)
        self.assertIn("format and static analysis: failed with code 1 (", result.stdout)

    def test_a_finding_of_a_fuzz_target_fails(self):
        result, calls = self.start(**{"run.sh": 1})
        self.assertEqual(result.returncode, 1, result.stdout)
        self.assertEqual(calls, self.STEPS)
        self.assertIn("fuzz targets: failed with code 1 (", result.stdout)

    def test_a_build_that_cannot_be_configured_fails(self):
        result, calls = self.start(cmake=3)
        self.assertEqual(result.returncode, 3, result.stdout)
        self.assertEqual([call for call in calls if "--build" in call], [])
        self.assertIn("build without optional parts: failed with code 3 (", result.stdout)


class Style(MadeUp):
    """check-style.py in a repository of its own."""

    def setUp(self):
        super().setUp()
        self.take("scripts/check-style.py")
        self.program("bin/clang-format", 'echo "clang-format $*" >> "$HOME/calls"; ! grep -qs ugly "${@:3}"')
        self.program("bin/clang-tidy", """
            echo "clang-tidy ${*: -1}" | sed "s,$HOME/,," >> "$HOME/calls"
            if grep -qs faulty "${@: -1}"; then echo "${@: -1}: it is faulty"; exit 1; fi
            """)
        for name in ("src/A.cpp", "src/A.h", "src/B.cpp", "src/not-built.cpp"):
            self.write(name, "int a;\n")
        self.write(".gitignore", "/bin/\n/build-edit/\n/calls\n")
        self.git("init", "--quiet", "--initial-branch=main")
        self.commit()
        entries = [{"directory": str(self.root), "file": str(self.root / name),
                    "command": f"c++ -Winvalid-pch -include {self.root}/x/cmake_pch.hxx -DX -c {name}"}
                   for name in ("src/A.cpp", "src/B.cpp")]
        self.write("build-edit/compile_commands.json", json.dumps(entries))

    def write(self, name, text):
        path = self.root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)

    def git(self, *arguments):
        return subprocess.run(["git", "-c", "user.name=Tester", "-c", "user.email=tester@example.org", *arguments],
                              cwd=self.root, check=True, capture_output=True, text=True).stdout

    def commit(self):
        self.git("add", "-A")
        self.git("commit", "--quiet", "--message", "A change")

    def check(self, *arguments):
        result = self.run_script("scripts/check-style.py", *arguments)
        calls = (self.root / "calls").read_text().splitlines()
        return result, sorted(call.split()[1] for call in calls if call.startswith("clang-tidy"))

    def test_looks_at_what_changed(self):
        self.write("src/B.cpp", "int b;\n")
        self.write("src/not-built.cpp", "int b;\n")
        self.commit()
        result, sources = self.check()
        self.assertEqual(result.returncode, 0, result.stdout)
        self.assertEqual(sources, ["src/B.cpp"])

    def test_a_header_is_looked_at_with_its_source(self):
        self.commit_nothing()
        self.write("src/A.h", "int c;\n")
        self.assertEqual(self.check()[1], ["src/A.cpp"])

    def commit_nothing(self):
        self.git("commit", "--quiet", "--allow-empty", "--message", "Nothing")

    def test_a_branch_is_looked_at_from_where_it_left(self):
        self.git("update-ref", "refs/remotes/origin/main", "HEAD")
        self.write("src/A.cpp", "int d;\n")
        self.commit()
        self.commit_nothing()
        self.assertEqual(self.check()[1], ["src/A.cpp"])

    def test_all_of_them_on_request(self):
        self.assertEqual(self.check("--all")[1], ["src/A.cpp", "src/B.cpp"])

    def test_without_an_earlier_revision_only_the_format_counts(self):
        self.write("src/A.cpp", "int faulty;\n")
        self.git("commit", "--quiet", "--all", "--amend", "--message", "The only one")
        result, sources = self.check()
        self.assertEqual((result.returncode, sources), (0, []), result.stdout)
        self.assertIn("no clang-tidy: there is no earlier revision", result.stdout)

    def test_no_source_is_begun_when_the_time_is_over(self):
        result, sources = self.check("--all", "--minutes", "-1")
        self.assertEqual((result.returncode, sources), (0, []), result.stdout)
        self.assertIn("2 of them left out after -1 minutes", result.stdout)

    def test_a_base_that_is_unknown_is_an_error(self):
        result, _ = self.check("--base", "nowhere")
        self.assertEqual(result.returncode, 1, result.stdout)
        self.assertIn("nowhere names no revision", result.stdout)

    def test_faults_fail(self):
        self.write("src/A.cpp", "int faulty;\n")
        result, _ = self.check("--all")
        self.assertEqual(result.returncode, 1, result.stdout)
        self.assertIn("it is faulty", result.stdout)

    def test_a_wrong_format_fails_wherever_it_is(self):
        self.write("src/not-built.cpp", "ugly\n")
        self.commit()
        self.commit_nothing()
        result, sources = self.check()
        self.assertEqual((result.returncode, sources), (1, []), result.stdout)

    def test_precompiled_headers_are_left_out(self):
        self.check("--all")
        database = json.loads((self.root / "build-edit/clang-tidy/compile_commands.json").read_text())
        self.assertEqual([entry["command"] for entry in database], ["c++ -DX -c src/A.cpp", "c++ -DX -c src/B.cpp"])


class Installation(MadeUp):
    def setUp(self):
        super().setUp()
        for name in ("scripts/install-dependencies.sh", "scripts/packages.txt"):
            self.take(name)
        self.policy = self.root / "policy-rc.d"
        self.program("bin/dpkg-query", "")
        self.program("bin/update-rc.d", 'echo "update-rc.d $*" >> "$HOME/calls"')
        # Looks at what dpkg would ask before it starts a service.
        self.program("bin/apt-get", """
            case "$*" in *install*) ;; *) exit 0 ;; esac
            if [ -e "$KELVO_POLICY_FILE" ]; then
                answer=0
                "$KELVO_POLICY_FILE" minidlna start || answer=$?
                echo "policy $answer" >> "$HOME/calls"
            else
                echo "no policy" >> "$HOME/calls"
            fi
            exit "${APT_ENDS:-0}"
            """)
        self.program("bin/id", "echo 0")

    def install(self, group, **environment):
        result = self.run_script("sh", "scripts/install-dependencies.sh", group, KELVO_POLICY_FILE=str(self.policy),
                                 **environment)
        calls = self.root / "calls"
        return result, calls.read_text().splitlines() if calls.exists() else []

    def test_servers_are_not_started_while_the_tests_packages_come(self):
        result, calls = self.install("test")
        self.assertEqual(result.returncode, 0, result.stdout)
        self.assertEqual(calls, ["policy 101", "update-rc.d minidlna disable", "update-rc.d gerbera disable",
                                 "update-rc.d gmediarender disable"])
        self.assertFalse(self.policy.exists())

    def test_what_looks_at_the_sources_comes_alone(self):
        self.program("bin/apt-get", 'echo "$*" >> "$HOME/calls"')
        _, calls = self.install("lint")
        self.assertRegex(calls[-1], r"--no-install-recommends ccache clang-format clang-tidy$")

    def test_what_the_console_needs_comes_as_usual(self):
        _, calls = self.install("run")
        self.assertEqual(calls, ["no policy"])

    def test_somebody_elses_policy_stays(self):
        self.program("policy-rc.d", "exit 104")
        before = self.policy.read_text()
        _, calls = self.install("test")
        self.assertEqual(calls[0], "policy 104")
        self.assertEqual(self.policy.read_text(), before)

    def test_the_policy_goes_when_the_installation_fails(self):
        result, _ = self.install("test", APT_ENDS="100")
        self.assertEqual(result.returncode, 1, result.stdout)
        self.assertFalse(self.policy.exists())

    def test_the_policy_of_a_script_that_was_killed_means_nothing(self):
        self.program("policy-rc.d", "# kelvo-install\n[ ! -d /proc/4194305 ] || exit 101\n")
        self.assertEqual(subprocess.run([self.policy], check=False).returncode, 0)
        _, calls = self.install("test")
        self.assertEqual(calls[0], "policy 101")
        self.assertFalse(self.policy.exists())

    def test_a_user_does_it_by_sudo(self):
        self.program("bin/id", "echo 1000")
        self.program("bin/sudo", 'echo "sudo" >> "$HOME/sudos"; [ "$1" != -n ] || shift; exec "$@"')
        _, calls = self.install("test")
        self.assertEqual(calls[0], "policy 101")
        self.assertFalse(self.policy.exists())
        # Lists, policy and its rights, packages, three services, removal.
        self.assertEqual((self.root / "sudos").read_text().count("sudo"), 8)

    def test_nothing_is_done_when_all_is_there(self):
        self.program("bin/dpkg-query", 'for name; do echo "ii $name"; done')
        result, calls = self.install("test")
        self.assertIn("all installed", result.stdout)
        self.assertEqual(calls, [])


if __name__ == "__main__":
    sys.dont_write_bytecode = True
    unittest.main(verbosity=2)
