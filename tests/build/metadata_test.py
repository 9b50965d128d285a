#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The version is one everywhere, and the manual pages name every variable and file that the sources do.

Environment: KELVO_TEST_BUILD (the build folder)."""

import os
import re
import subprocess
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]
BUILD = Path(os.environ["KELVO_TEST_BUILD"])
PRODUCT = ("src", "ui", "framework", "conformance", "kelvo-test")
# What each program is made of, beside what both are.
PAGES = {"kelvo-test-gui": ("src", "ui", "framework"), "kelvo-test": ("kelvo-test", "conformance")}

# What reads a variable: its name is the literal behind it.
READS = re.compile(r'(?:qgetenv|getenv|qEnvironmentVariable\w*)\(\s*"(\w+)"')
OURS = re.compile(r'"(Q?KELVO_[A-Z0-9_]+)"')
FOLDER = re.compile(r'UserFolders::(data|cache|state)\(QStringLiteral\("([\w-]+)"\)')
PLACES = {"data": "~/.local/share", "cache": "~/.cache", "state": "~/.local/state"}
ABSOLUTE = re.compile(r'QStringLiteral\("(/(?:usr|etc|var|opt)/[^"]*)"\)')
# Whoever else asks where the user's things are, and what the page calls that.
HOMES = {"src/KelvoPlayUriDialog.cpp": "~/qkelvo-gui-uris.txt",
         "framework/plugins/tracker-source/index/IndexSettings.cpp": "the user's music and video folders",
         # Takes it out of what is shown to others.
         "framework/recording/Evidence.cpp": None,
         "framework/core/UserFolders.cpp": None}


def sources(*folders):
    for folder in folders:
        for path in sorted((SOURCE / folder).rglob("*")):
            if path.suffix in (".cpp", ".h"):
                yield path.relative_to(SOURCE).as_posix(), path.read_text(encoding="utf-8")


def page(program):
    return (BUILD / "data" / f"{program}.1").read_text(encoding="utf-8").replace("\\-", "-")


def section(program, title):
    return re.search(rf"^\.SH {title}\n(.*?)(?=^\.SH|\Z)", page(program), re.MULTILINE | re.DOTALL)[1]


def variables_of(program):
    """What the page has as entries of ENVIRONMENT."""
    lines = re.findall(r"^\.TP\n\.BR? (.*)$", section(program, "ENVIRONMENT"), re.MULTILINE)
    return {name for line in lines for name in re.findall(r"[A-Z][A-Z0-9_]+", line)}


def files_of(program):
    return set(re.findall(r"^\.TP\n\.I (.*)$", section(program, "FILES"), re.MULTILINE))


class Version(unittest.TestCase):
    def setUp(self):
        cache = (BUILD / "CMakeCache.txt").read_text(encoding="utf-8")
        self.version = re.search(r"^CMAKE_PROJECT_VERSION:\w+=(.+)$", cache, re.MULTILINE)[1]
        top = (SOURCE / "CMakeLists.txt").read_text(encoding="utf-8")
        self.date = re.search(r"set\(KELVO_RELEASE_DATE (\S+)\)", top)[1]

    def test_programs_tell_it(self):
        for program in PAGES:
            done = subprocess.run([BUILD / "bin" / program, "--version"], capture_output=True, text=True, check=True,
                                  timeout=60, env={**os.environ, "ASAN_OPTIONS": "detect_leaks=0"})
            self.assertEqual(done.stdout, f"{program} {self.version}\n")

    def test_manual_pages_tell_it(self):
        for program in PAGES:
            self.assertIn(f'.TH {program.upper()} 1 {self.date} "{program} {self.version}" ', page(program))

    def test_software_centres_are_told_it(self):
        root = ElementTree.parse(BUILD / "data/org.kelvo.TestGui.metainfo.xml").getroot()
        newest = root.find("releases/release")
        self.assertEqual((newest.get("version"), newest.get("date")), (self.version, self.date))
        picture = root.findtext("screenshots/screenshot/image").rsplit("/", 1)[-1]
        self.assertTrue((SOURCE / "docs" / picture).is_file(), picture)
        self.assertTrue(root.findtext("url[@type='homepage']").startswith("https://"))

    def test_packages_tell_it(self):
        for module in ("kelvo", "kelvo-playback"):
            text = (BUILD / f"package/{module}.pc").read_text(encoding="utf-8")
            self.assertIn(f"\nVersion: {self.version}\n", text)

    def test_the_changelog_has_it(self):
        text = (SOURCE / "CHANGELOG.md").read_text(encoding="utf-8")
        headings = re.findall(r"^## (.*)$", text, re.MULTILINE)
        self.assertEqual(headings[:2], ["[Unreleased]", f"[{self.version}] - {self.date}"])
        for heading in headings[1:]:
            self.assertRegex(heading, r"^\[\d+\.\d+\.\d+\] - \d{4}-\d\d-\d\d$")
        kinds = set(re.findall(r"^### (.*)$", text, re.MULTILINE))
        self.assertLessEqual(kinds, {"Added", "Changed", "Deprecated", "Removed", "Fixed", "Security"})

    def test_nobody_else_has_a_copy(self):
        files = [path for folder in (*PRODUCT, "data", "cmake", "scripts") for path in (SOURCE / folder).rglob("*")]
        for path in files:
            if path.suffix in (".cpp", ".h", ".in", ".xml", ".cmake", ".txt", ".sh", ".py"):
                self.assertFalse(self.version in path.read_text(encoding="utf-8"), path)


class ManualPages(unittest.TestCase):
    def test_all_variables_that_are_read(self):
        for program, folders in PAGES.items():
            read = {name for _, text in sources(*folders) for name in READS.findall(text) + OURS.findall(text)}
            self.assertGreater(len(read), 1)
            # kelvo-test has the other page's besides.
            known = variables_of(program) | variables_of("kelvo-test-gui")
            self.assertEqual(read - known, set(), f"variables that {program}.1 does not name")

    def test_no_other_variables(self):
        everything = "".join(text for _, text in sources(*PRODUCT))
        for program in PAGES:
            for name in variables_of(program):
                self.assertTrue(f'"{name}"' in everything, f"{program}.1 names {name}, which nobody reads")

    def test_all_files_that_are_used(self):
        for program, folders in PAGES.items():
            used = set()
            for _, text in sources(*folders):
                used |= {f"{PLACES[kind]}/kelvo/{name}" for kind, name in FOLDER.findall(text)}
                used |= set(ABSOLUTE.findall(text))
            self.assertTrue(used)
            missing = {name for name in used if name not in files_of(program)}
            # Those of UserFolders, which both programs have, are on the page of whoever uses them.
            missing -= files_of("kelvo-test") | files_of("kelvo-test-gui")
            self.assertEqual(missing, set(), f"files that {program}.1 does not name")

    def test_nobody_else_asks_for_the_home_of_the_user(self):
        asking = {name for name, text in sources(*PRODUCT)
                  if re.search(r"QDir::home|QStandardPaths::writableLocation|XDG_\w+_HOME", text)
                  and not name.endswith(".h")}
        self.assertEqual(asking, set(HOMES))
        for words in filter(None, HOMES.values()):
            self.assertIn(words, page("kelvo-test-gui"))

    def test_they_are_pages(self):
        for program in PAGES:
            done = subprocess.run(["man", "--warnings", "-l", BUILD / "data" / f"{program}.1"], capture_output=True,
                                  text=True, env={**os.environ, "MANWIDTH": "80"}, timeout=60, check=False)
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            self.assertNotIn("@", done.stdout)


class Completion(unittest.TestCase):
    """Of the console; that of kelvo-test needs the program."""

    def complete(self, *words):
        script = (f'source "{SOURCE}/data/kelvo-test-gui.bash"; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); '
                  '_kelvo_test_gui; printf "%s\\n" "${COMPREPLY[@]}"')
        done = subprocess.run(["bash", "-c", script, "bash", "kelvo-test-gui", *words], cwd=self.folder, text=True,
                              capture_output=True, timeout=60, check=True)
        return sorted(filter(None, done.stdout.split("\n")))

    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))
        for name in ("list.pls", "list of mine.m3u", "song.mp3"):
            (self.folder / name).touch()
        (self.folder / "sub").mkdir()

    def test_names_of_files(self):
        self.assertEqual(self.complete("l"), ["list of mine.m3u", "list.pls"])
        self.assertEqual(self.complete(""), ["list of mine.m3u", "list.pls", "song.mp3", "sub"])
        self.assertEqual(self.complete("-platform", "xcb", "so"), ["song.mp3"])

    def test_options(self):
        self.assertEqual(self.complete("--"), ["--help", "--version"])
        self.assertEqual(self.complete("--v"), ["--version"])
        # Elsewhere they mean nothing.
        self.assertEqual(self.complete("song.mp3", "--"), [])
        self.assertEqual(self.complete("-platform", "off"), ["offscreen"])
        self.assertEqual(self.complete("-style", ""), [])


if __name__ == "__main__":
    unittest.main()
