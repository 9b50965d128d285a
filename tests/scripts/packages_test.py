#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""What check-packages.py finds in packages, on some that are made up."""

import gzip
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests" / "packages"))
sys.dont_write_bytecode = True
import contents  # noqa: E402

TREE = "/a/build/tree"


@unittest.skipUnless(shutil.which("dpkg-buildflags"), "dpkg-dev is not installed")
class BuildLog(unittest.TestCase):
    def setUp(self):
        flags = {kind: " ".join(contents.build_flags(kind)) for kind in ("CXXFLAGS", "CPPFLAGS", "LDFLAGS")}
        self.compile = f"[1/2] /usr/bin/c++ {flags['CXXFLAGS']} {flags['CPPFLAGS']} -o a.o -c {TREE}/a.cpp"
        self.link = f"[2/2] : && /usr/bin/c++ {flags['LDFLAGS']} a.o -o bin/a lib/liba.so && :"

    def faults(self, *lines):
        return contents.build_log_faults("".join(line + "\n" for line in lines))

    def test_all_flags(self):
        self.assertEqual(self.faults(self.compile, self.link), [])

    def test_a_flag_that_is_missing(self):
        for flag in ("-O2", "-fstack-protector-strong", "-D_FORTIFY_SOURCE=2", "-Werror=format-security"):
            self.assertTrue(self.faults(self.compile.replace(flag + " ", ""), self.link), flag)
        self.assertTrue(self.faults(self.compile, self.link.replace("-Wl,-z,now ", "")))

    def test_no_optimisation(self):
        self.assertTrue(self.faults(self.compile.replace(" -o ", " -O0 -o "), self.link))

    def test_commands_that_nobody_saw(self):
        self.assertTrue(self.faults(self.link))
        self.assertTrue(self.faults(self.compile))


class Contents(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))

    def faults(self):
        return contents.faults(self.folder, Path(TREE))

    def program(self, *options, source="int main() { return 0; }\n"):
        """A program, which has these options; small ones pass for libraries."""
        with tempfile.TemporaryDirectory() as work:
            path = Path(work) / "a.cpp"
            path.write_text(source)
            subprocess.run([os.environ.get("CXX", "c++"), "-Wl,-z,now", "-pie", "-fPIE", *options, "-o",
                            self.folder / "program", path], check=True)

    def test_a_program_as_it_should_be(self):
        self.program()
        (self.folder / "text").write_text("a text")
        self.assertEqual(self.faults(), [])

    def test_the_folder_of_the_build(self):
        (self.folder / "text").write_text(f"made in {TREE}/x")
        (self.folder / "page.gz").write_bytes(gzip.compress(f"made in {TREE}/x".encode()))
        self.program("-g", "-gz", f'-DTREE="{TREE}"', source='extern const char a[]; const char a[] = TREE;\n'
                     'int main() { return a[0]; }\n')
        self.assertEqual([fault.split(":")[0] for fault in self.faults()], ["page.gz", "program", "text"])

    def test_the_folder_in_compressed_debug_sections(self):
        self.program("-g", "-gz", f"-fdebug-prefix-map={tempfile.gettempdir()}={TREE}")
        self.assertEqual([fault.split(":")[0] for fault in self.faults()], ["program"])

    def test_a_run_path(self):
        self.program("-Wl,-rpath,$ORIGIN")
        self.assertEqual(self.faults(), ["program: has a RUNPATH"])

    def test_functions_that_are_looked_up_late(self):
        self.program("-Wl,-z,lazy")
        self.assertEqual(self.faults(), ["program: looks functions up late"])

    def test_a_fixed_address(self):
        self.program("-no-pie")
        self.assertEqual(self.faults(), ["program: lies at a fixed address"])


class Checks(unittest.TestCase):
    """check-packages.py with stand-ins for what it calls."""

    def setUp(self):
        self.root = Path(self.enterContext(tempfile.TemporaryDirectory()))
        for name in ("scripts/check-packages.py", "tests/packages/contents.py"):
            (self.root / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(ROOT / name, self.root / name)
        self.builds('echo same > "$1/a_1_all.deb"; cp "$1/revision" "$1/a.tar.xz"; : > "$1/a_1.changes"')
        self.program("bin/unshare", "echo 'unshare: not you' >&2; exit 1")

    def builds(self, script):
        self.program("scripts/build-packages.sh", f'mkdir -p "$1"; echo "${{2-checked-out}}" > "$1/revision"; {script}')

    def program(self, path, script):
        path = self.root / path
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text("#!/bin/bash\n" + script + "\n")
        path.chmod(0o755)

    def check(self, *names):
        """Exit code, and the outcomes of the checks."""
        only = [word for name in names for word in ("--only", name)]
        done = subprocess.run([self.root / "scripts/check-packages.py", *only], capture_output=True, text=True, check=False,
                              env={"PATH": f"{self.root / 'bin'}:/usr/bin:/bin"}, timeout=60)
        outcomes = done.stdout.split("==> packages\n")[-1]
        return done.returncode, [line.strip().rpartition(" (")[0] for line in outcomes.splitlines()]

    def test_equal_builds(self):
        self.assertEqual(self.check("build", "reproducible"), (0, ["build: passed", "reproducible: passed"]))

    def test_builds_that_differ(self):
        self.builds('echo "$1" > "$1/a_1_all.deb"')
        code, outcomes = self.check("build", "reproducible")
        self.assertEqual(code, 1)
        self.assertRegex(outcomes[1], r"^reproducible: failed: not equal: a_1_all\.deb")

    def test_a_build_that_brings_other_packages(self):
        self.builds(': > "$1/$(basename "$1")_1_all.deb"')
        code, outcomes = self.check("build", "reproducible")
        self.assertEqual(code, 1)
        self.assertRegex(outcomes[1], "^reproducible: failed: other packages")

    def test_nothing_is_tried_without_packages(self):
        self.program("scripts/build-packages.sh", "exit 2")
        self.assertEqual(self.check(), (1, ["build: failed: the build failed"]))

    def test_all_of_them(self):
        self.program("bin/lintian", "")
        code, outcomes = self.check()
        self.assertEqual([outcome.split(":")[0] for outcome in outcomes],
                         ["build", "reproducible", "clean-system", "lintian", "contents", "autopkgtest"])
        # That build was none.
        self.assertEqual((code, [outcome for outcome in outcomes if "failed" in outcome]), (1, [outcomes[4]]))

    def test_what_lintian_says_fails(self):
        self.program("bin/lintian", 'case "$*" in *"--fail-on error,warning,info,pedantic"*) exit 2 ;; esac')
        code, outcomes = self.check("build", "lintian")
        self.assertEqual((code, outcomes[1]), (1, "lintian: failed: lintian has found something"))

    def test_without_the_right_to_mount_nothing_is_installed(self):
        code, outcomes = self.check("build", "clean-system", "autopkgtest")
        self.assertEqual(code, 0)
        for outcome in outcomes[1:]:
            self.assertRegex(outcome, "left out: (only root can do that|this system lets nobody mount.*: unshare: not you)")


if __name__ == "__main__":
    unittest.main(verbosity=2)
