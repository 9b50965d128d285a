#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""package_test.py FOLDER PROGRAM: installs the build into FOLDER/prefix and builds the example back end of plug-in
authors there, outside of the tree, as docs/plug-in-authors.md says:

    by CMake, installed into the same prefix
    by hand with pkg-config, into FOLDER/by-hand
    with the headers of another version of the API, into FOLDER/other-version

Then starts the test program with each of them. The folder stays for tests that start the installed console.

Environment: KELVO_TEST_BUILD (the build folder), KELVO_TEST_CMAKE, CXX."""

import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
SOURCE = HERE.parents[1]
sys.path.insert(0, str(SOURCE / "tests" / "architecture"))
from check_architecture import run_path_faults, run_path_of  # noqa: E402

CMAKE = os.environ["KELVO_TEST_CMAKE"]
# Includes whatever is installed, so that none of it needs a header that is not.
ALL_HEADERS = """cmake_minimum_required(VERSION 3.25)
project(all-headers LANGUAGES CXX)
find_package(Kelvo 0.1 REQUIRED)
if(NOT Kelvo_API_VERSION STREQUAL "{api}" OR NOT IS_DIRECTORY "${{Kelvo_PLUGIN_DIR}}")
    message(FATAL_ERROR "API ${{Kelvo_API_VERSION}}, plug-ins in ${{Kelvo_PLUGIN_DIR}}")
endif()
add_library(all-headers OBJECT all-headers.cpp)
target_link_libraries(all-headers PRIVATE Kelvo::Playback)
"""


def run(*command, **options):
    print("+", *command, flush=True)
    return subprocess.run([str(part) for part in command], check=True, **options)


def build(source, folder, prefix):
    run(CMAKE, "-G", "Ninja", "-S", source, "-B", folder, f"-DCMAKE_PREFIX_PATH={prefix}", "-DCMAKE_BUILD_TYPE=Debug")
    run(CMAKE, "--build", folder)


def the_only(paths):
    (path,) = paths
    return path


def install(work):
    """Somewhere, and moved from there: nothing that is installed may know where it was."""
    run(CMAKE, "--install", os.environ["KELVO_TEST_BUILD"], "--prefix", work / "elsewhere")
    (work / "elsewhere").rename(work / "prefix")
    return work / "prefix"


def check_that_nothing_names_the_tree(prefix):
    for pattern in ("*.cmake", "*.pc", "*.h", "*.md", "*.txt"):
        for file in prefix.rglob(pattern):
            named = re.search(re.escape(str(SOURCE)), file.read_text(encoding="utf-8"))
            assert not named, f"{file} names {SOURCE}"


def build_all_headers(work, prefix, api):
    folder = prefix / "include/kelvo"
    headers = sorted(header.relative_to(folder).as_posix() for header in folder.rglob("*.h"))
    assert {"KelvoRenderer.h", "playback/ItemRenderer.h"} <= set(headers), headers
    source = work / "all-headers"
    source.mkdir()
    (source / "CMakeLists.txt").write_text(ALL_HEADERS.format(api=api))
    (source / "all-headers.cpp").write_text("".join(f"#include <{header}>\n" for header in headers))
    build(source, work / "all-headers-build", prefix)


def pkg_config(prefix, *arguments):
    folder = the_only(prefix.rglob("kelvo.pc")).parent
    environment = {**os.environ, "PKG_CONFIG_PATH": str(folder)}
    return environment, subprocess.run(["pkg-config", *arguments], env=environment, check=True, text=True,
                                       stdout=subprocess.PIPE).stdout.strip()


def build_by_hand(example, folder, prefix):
    """By the commands of the text, word for word."""
    text = the_only(prefix.rglob("plug-in-authors.md")).read_text(encoding="utf-8")
    commands = the_only(re.findall(r"^```sh\n(.*?)^```$", text, re.MULTILINE | re.DOTALL))
    shutil.copytree(example, folder)
    environment, _ = pkg_config(prefix, "--exists", "--print-errors", "kelvo-playback")
    run("sh", "-euxc", commands, cwd=folder, env=environment)
    return folder / "silence.so"


def check_pkg_config(prefix, plugin, api):
    _, plugins = pkg_config(prefix, "--variable=plugindir", "kelvo")
    assert Path(plugins).samefile(plugin.parent), plugins
    _, version = pkg_config(prefix, "--variable=api_version", "kelvo")
    assert version == api, version


def build_for_another_version(work, prefix, example):
    """Against headers in which what is called first has moved: were it called all the same, the program would crash."""
    other = work / "other-prefix"
    shutil.copytree(prefix, other, symlinks=True)
    header = other / "include/kelvo/KelvoApiVersion.h"
    text = header.read_text(encoding="utf-8")
    header.write_text(re.sub(r'(_MAJOR |_VERSION ")\d+', r"\g<1>7", text))
    header = other / "include/kelvo/KelvoPlugin.h"
    text = header.read_text(encoding="utf-8")
    moved = text.replace("    virtual bool start(", "    virtual bool addedBeforeAll() { return true; }\n    virtual bool start(")
    assert moved != text
    header.write_text(moved)
    build(example, work / "other-build", other)
    (work / "other-version").mkdir()
    shutil.copy(work / "other-build/silence.so", work / "other-version")
    assert b"org.kelvo.Plugin/7." in (work / "other-version/silence.so").read_bytes()


def check_run_paths(prefix):
    """Those of the build, and with them nothing of it."""
    found = {file.relative_to(prefix).as_posix(): run_path_of(file)
             for pattern in ("bin/*", "lib/libkelvo-*.so.*", "lib/kelvo/plugins/*.so") for file in prefix.glob(pattern)}
    faults = [fault for name, run_path in found.items() for fault in run_path_faults(name, run_path)]
    assert found and not faults, faults


def main():
    work = Path(sys.argv[1])
    shutil.rmtree(work, ignore_errors=True)
    work.mkdir(parents=True)
    prefix = install(work)
    check_that_nothing_names_the_tree(prefix)
    check_run_paths(prefix)
    header = (prefix / "include/kelvo/KelvoApiVersion.h").read_text(encoding="utf-8")
    api = re.search(r'KELVO_API_VERSION "(.+)"', header)[1]
    build_all_headers(work, prefix, api)
    example = the_only(prefix.rglob("examples/silence"))
    build(example, work / "build", prefix)
    run(CMAKE, "--install", work / "build", "--prefix", prefix)
    plugin = the_only(prefix.rglob("kelvo/plugins/silence.so"))
    check_pkg_config(prefix, plugin, api)
    by_hand = build_by_hand(example, work / "by-hand", prefix)
    build_for_another_version(work, prefix, example)
    for made in (plugin, by_hand):
        environment = {**os.environ, "KELVO_PLUGIN_PATH": str(made.parent),
                       "KELVO_TEST_OTHER_VERSION": str(work / "other-version")}
        code = subprocess.run(sys.argv[2:], env=environment, check=False).returncode
        if code != 0:
            return code
    return 0


if __name__ == "__main__":
    sys.exit(main())
