#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""package_test.py PROGRAM: installs the build into a folder of its own, builds against that a back end that lies
outside of the tree, and starts the test program, which loads it from the folder that it was installed into.

Environment: KELVO_TEST_BUILD (the build folder), KELVO_TEST_CMAKE, CXX."""

import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

HERE = Path(__file__).resolve().parent
SOURCE = HERE.parents[1]
CMAKE = os.environ["KELVO_TEST_CMAKE"]
# Includes whatever is installed, so that none of it needs a header that is not.
ALL_HEADERS = """cmake_minimum_required(VERSION 3.25)
project(all-headers LANGUAGES CXX)
find_package(Kelvo 0.1 REQUIRED)
add_library(all-headers OBJECT all-headers.cpp)
target_link_libraries(all-headers PRIVATE Kelvo::Core)
"""


def run(*command):
    print("+", *command, flush=True)
    subprocess.run([str(part) for part in command], check=True)


def build(source, folder, prefix):
    run(CMAKE, "-G", "Ninja", "-S", source, "-B", folder, f"-DCMAKE_PREFIX_PATH={prefix}", "-DCMAKE_BUILD_TYPE=Debug")
    run(CMAKE, "--build", folder)


def build_all_headers(work, prefix):
    headers = sorted((prefix / "include/kelvo").glob("*.h"))
    assert any(header.name == "KelvoRenderer.h" for header in headers), headers
    source = work / "all-headers"
    source.mkdir()
    (source / "CMakeLists.txt").write_text(ALL_HEADERS)
    (source / "all-headers.cpp").write_text("".join(f"#include <{header.name}>\n" for header in headers))
    build(source, work / "all-headers-build", prefix)


def check_that_nothing_names_the_tree(prefix):
    for file in prefix.rglob("*.cmake"):
        named = re.search(re.escape(str(SOURCE)), file.read_text(encoding="utf-8"))
        assert not named, f"{file} names {SOURCE}"


def main():
    with tempfile.TemporaryDirectory(prefix="kelvo-package.") as folder:
        work = Path(folder)
        prefix, other_prefix = work / "prefix", work / "other-prefix"
        run(CMAKE, "--install", os.environ["KELVO_TEST_BUILD"], "--prefix", prefix)
        check_that_nothing_names_the_tree(prefix)
        build_all_headers(work, prefix)
        build(HERE / "third-party-renderer", work / "build", prefix)
        run(CMAKE, "--install", work / "build", "--prefix", other_prefix)
        (plugin,) = other_prefix.rglob("kelvo/plugins/third-party.so")
        environment = {**os.environ, "KELVO_PLUGIN_PATH": str(plugin.parent)}
        return subprocess.run(sys.argv[1:], env=environment, check=False).returncode


if __name__ == "__main__":
    sys.exit(main())
