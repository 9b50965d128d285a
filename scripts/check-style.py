#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""check-style.py [--base REVISION | --all] [--build FOLDER] [--minutes N]

Checks the format of all C++ files, and looks with clang-tidy at those that changed since the revision: the sources
themselves, and of a changed header the source of the same name. Without --base that is where this branch left
origin/main, on that branch itself the commit before; where that is not there either, as in a shallow clone, the format
alone is checked. With --minutes no further source is begun once that time is over. Needs a build folder in which each source
is compiled by itself (preset "edit"), and what is made of the sources is there (target "autogen").

Exit status 1 when there is something to mend.
"""
import argparse
import json
import os
import re
import subprocess
import sys
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
PATTERNS = ("*.cpp", "*.h")
ALL = object()


def git(*arguments):
    done = subprocess.run(["git", *arguments], cwd=ROOT, capture_output=True, text=True, check=False)
    return done.stdout.split("\n")[:-1] if done.returncode == 0 else None


def default_base():
    """The commit that the changes are counted from."""
    (head,) = git("rev-parse", "HEAD")
    base = git("merge-base", "HEAD", "origin/main")
    if base and base[0] != head:
        return base[0]
    return "HEAD~1" if git("rev-parse", "--verify", "--quiet", "HEAD~1") else None


def changed_files(base):
    """Changed since the base or not committed yet; all of them where `base` is ALL."""
    if base is ALL:
        return git("ls-files", "--", *PATTERNS)
    changed = git("diff", "--name-only", "--diff-filter=d", base, "--", *PATTERNS)
    if changed is None:
        sys.exit(f"error: {base} names no revision")
    return changed + git("ls-files", "--others", "--exclude-standard", "--", *PATTERNS)


def format_is_right():
    files = git("ls-files", "--cached", "--others", "--exclude-standard", "--", *PATTERNS)
    files = [name for name in files if (ROOT / name).exists()]
    print(f"==> format of {len(files)} files", flush=True)
    return subprocess.run(["clang-format", "--dry-run", "--Werror", *files], cwd=ROOT, check=False).returncode == 0


def without_precompiled_headers(command):
    """GCC's precompiled headers mean nothing to clang."""
    return re.sub(r" -Winvalid-pch -include \S+/cmake_pch\.hxx", "", command)


def write_database(build):
    """A compilation database for clang-tidy; returns its folder and the sources that it knows."""
    entries = json.loads((build / "compile_commands.json").read_text(encoding="utf-8"))
    for entry in entries:
        entry["command"] = without_precompiled_headers(entry["command"])
    folder = build / "clang-tidy"
    folder.mkdir(exist_ok=True)
    (folder / "compile_commands.json").write_text(json.dumps(entries), encoding="utf-8")
    return folder, {Path(entry["file"]) for entry in entries}


def sources_of(files, known):
    """The sources to look at for the files that changed."""
    sources = {(ROOT / name).with_suffix(".cpp") for name in files}
    return sorted(source for source in sources if source in known)


def tidy(folder, source):
    done = subprocess.run(
        ["clang-tidy", "-p", str(folder), "--quiet", "--warnings-as-errors=*",
         f"--header-filter=^{re.escape(str(ROOT))}/(src|kelvo-test|conformance|framework|tests|benchmarks)/.*\\.h$",
         "--extra-arg=-Wno-unknown-warning-option", str(source)],
        cwd=ROOT, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
    if done.returncode != 0:
        print(done.stdout, flush=True)
    return done.returncode == 0


def sources_are_tidy(build, base, minutes):
    """Looks at the sources that changed, for as long as there is time; says how many were left out."""
    if base is None:
        print("==> no clang-tidy: there is no earlier revision to compare with", flush=True)
        return True
    folder, known = write_database(build)
    sources = sources_of(changed_files(base), known)
    print(f"==> clang-tidy on {len(sources)} sources changed since {'ever' if base is ALL else base}", flush=True)
    deadline = time.monotonic() + 60 * minutes
    left_out = []

    def look(source):
        if time.monotonic() > deadline:
            left_out.append(source)
            return True
        return tidy(folder, source)

    with ThreadPoolExecutor(os.cpu_count()) as pool:
        good = all(list(pool.map(look, sources)))
    if left_out:
        print(f"==> {len(left_out)} of them left out after {minutes:g} minutes", flush=True)
    return good


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--base", default=None)
    parser.add_argument("--all", action="store_true")
    parser.add_argument("--build", type=Path, default=ROOT / "build-edit")
    parser.add_argument("--minutes", type=float, default=60)
    arguments = parser.parse_args()
    base = ALL if arguments.all else arguments.base or default_base()
    good = [format_is_right(), sources_are_tidy(arguments.build.resolve(), base, arguments.minutes)]
    return 0 if all(good) else 1


if __name__ == "__main__":
    sys.exit(main())
