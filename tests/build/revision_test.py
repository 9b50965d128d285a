#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Revision and build time are those of the build, whenever it was configured: a small program of a repository of its
own is built again and again.

Environment: CXX (the compiler), KELVO_TEST_CMAKE (cmake)."""

import os
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
CMAKE = os.environ.get("KELVO_TEST_CMAKE", "cmake")
PROJECT = """cmake_minimum_required(VERSION 3.25)
project(small LANGUAGES CXX)
set(KELVO_REVISION "" CACHE STRING "")
include(cmake/KelvoRevision.cmake)
add_executable(small main.cpp)
kelvo_add_build_library(small-build DEPENDS main.cpp)
target_link_libraries(small PRIVATE small-build)
"""
MAIN = """#include "KelvoBuild.h"
#include <cstdio>
int main() { std::printf("%s\\n%s\\n", KelvoBuild::revision(), KelvoBuild::time()); }
"""
DAY = 24 * 60 * 60
DAYS = ["Thu Jan  1 00:00:00 UTC 1970", "Fri Jan  2 00:00:00 UTC 1970", "Sat Jan  3 00:00:00 UTC 1970"]


class Revision(unittest.TestCase):
    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.source, self.build_folder = self.folder / "source", self.folder / "build"
        shutil.copytree(ROOT / "cmake", self.source / "cmake")
        (self.source / "CMakeLists.txt").write_text(PROJECT)
        (self.source / "main.cpp").write_text(MAIN)

    def run_tool(self, *command, **environment):
        # Nothing of the user's settings, nor of a repository around.
        env = {"PATH": os.environ["PATH"], "HOME": str(self.folder), "GIT_CONFIG_NOSYSTEM": "1",
               "GIT_CEILING_DIRECTORIES": str(self.folder), **environment}
        if "CXX" in os.environ:
            env["CXX"] = os.environ["CXX"]
        done = subprocess.run(command, cwd=self.source, env=env, capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)
        return done.stdout.strip()

    def git(self, *arguments):
        return self.run_tool("git", "-c", "user.name=Tester", "-c", "user.email=tester@example.org", *arguments)

    def commit(self):
        self.git("add", "-A")
        self.git("commit", "--quiet", "--allow-empty", "--message", "A change")
        return self.git("rev-parse", "--short", "HEAD")

    def first_commit(self):
        self.git("init", "--quiet")
        return self.commit()

    def configure(self, *arguments):
        self.run_tool(CMAKE, "-G", "Ninja", "-S", ".", "-B", str(self.build_folder), *arguments)

    def build(self, day=None):
        """(revision, time) as the program tells them."""
        epoch = {} if day is None else {"SOURCE_DATE_EPOCH": str(day * DAY)}
        self.run_tool(CMAKE, "--build", str(self.build_folder), **epoch)
        return tuple(self.run_tool(str(self.build_folder / "small")).split("\n"))

    def linked(self):
        return (self.build_folder / "small").stat().st_mtime_ns

    def test_a_new_commit_is_named_by_the_next_build(self):
        first = self.first_commit()
        self.configure()
        self.assertEqual(self.build(0), (first, DAYS[0]))
        second = self.commit()
        self.assertNotEqual(second, first)
        self.assertEqual(self.build(1), (second, DAYS[1]))

    def test_nothing_is_made_anew_without_a_change(self):
        first = self.first_commit()
        self.configure()
        self.build(0)
        before = self.linked()
        self.assertEqual(self.build(1), (first, DAYS[0]))
        self.assertEqual(self.linked(), before)

    def test_changed_sources_have_the_time_of_their_build(self):
        first = self.first_commit()
        self.configure()
        self.build(0)
        (self.source / "main.cpp").write_text(MAIN + "// changed\n")
        self.assertEqual(self.build(1), (first + "-dirty", DAYS[1]))
        # The revision is the same, the source is not.
        (self.source / "main.cpp").write_text(MAIN + "// changed again\n")
        self.assertEqual(self.build(2), (first + "-dirty", DAYS[2]))
        before = self.linked()
        self.build(0)
        self.assertEqual(self.linked(), before)

    def test_the_time_is_that_of_the_clock_otherwise(self):
        self.first_commit()
        self.configure()
        before = int(self.run_tool("date", "+%s"))
        told = int(self.run_tool("date", "+%s", "--date", self.build()[1]))
        self.assertTrue(before <= told <= int(self.run_tool("date", "+%s")), told)

    def test_without_a_repository_there_is_no_revision(self):
        self.configure()
        self.assertEqual(self.build(0), ("N/A", DAYS[0]))

    def test_a_given_revision_is_taken(self):
        self.first_commit()
        self.configure("-DKELVO_REVISION=1.2-3")
        self.assertEqual(self.build(0), ("1.2-3", DAYS[0]))
        self.commit()
        self.assertEqual(self.build(1), ("1.2-3", DAYS[0]))


if __name__ == "__main__":
    unittest.main()
