# SPDX-License-Identifier: MIT
"""What must not be found in an unpacked package, and what must be found in the log of its build."""

import gzip
import os
import re
import shlex
import subprocess
import tempfile
from pathlib import Path

COMPILES = re.compile(r"^\[\d+/\d+\] .* -c \S+\.(?:cpp|cxx)$", re.MULTILINE)
LINKS = re.compile(r"^\[\d+/\d+\] .*-o (?:bin|lib)/\S+ .*$", re.MULTILINE)


def build_flags(kind):
    """Debian's flags for this machine with all hardening, without the one that names a folder."""
    environment = {**os.environ, "DEB_BUILD_MAINT_OPTIONS": "hardening=+all"}
    told = subprocess.run(["dpkg-buildflags", "--get", kind], env=environment, capture_output=True, text=True, check=True)
    return [flag for flag in shlex.split(told.stdout) if not flag.startswith("-ffile-prefix-map=")]


def build_log_faults(log):
    """Commands of the build that lack a flag of Debian's."""
    faults = []
    for kinds, commands in (("CXXFLAGS CPPFLAGS", COMPILES.findall(log)), ("LDFLAGS", LINKS.findall(log))):
        wanted = [flag for kind in kinds.split() for flag in build_flags(kind)]
        if not commands:
            faults.append(f"build.log: no command with {kinds}")
        for command in commands:
            given = command.split()
            missing = [flag for flag in wanted if flag not in given]
            # An optimisation that comes later counts instead.
            levels = [word for word in given if re.fullmatch(r"-O\S*", word)]
            if missing or levels[-1:] == ["-O0"]:
                faults.append(f"build.log: without {' '.join(missing)} or with -O0: {command}")
    return faults


def faults(place, tree):
    """Of the files of a package that is unpacked in a folder and was built in another one."""
    found = []
    for path in sorted(place.rglob("*")):
        if path.is_symlink() or not path.is_file():
            continue
        name = path.relative_to(place).as_posix()
        data = path.read_bytes()
        is_program = data.startswith(b"\x7fELF")
        if is_program:
            data = _with_readable_debug_sections(path)
            found += [f"{name}: {fault}" for fault in _program_faults(path)]
        elif data.startswith(b"\x1f\x8b"):
            data = gzip.decompress(data)
        if os.fsencode(tree) in data:
            found.append(f"{name}: names the folder that it was built in")
    return found


def _with_readable_debug_sections(path):
    with tempfile.NamedTemporaryFile() as plain:
        subprocess.run(["objcopy", "--decompress-debug-sections", path, plain.name], check=True, capture_output=True)
        return Path(plain.name).read_bytes()


def _program_faults(path):
    if "/usr/lib/debug/" in path.as_posix():
        return []
    dynamic = subprocess.run(["readelf", "--wide", "--dynamic", "--file-header", path], capture_output=True, text=True,
                             check=True).stdout
    found = [f"has a {entry}" for entry in ("RUNPATH", "RPATH") if f"({entry})" in dynamic]
    if "BIND_NOW" not in dynamic:
        found.append("looks functions up late")
    if not re.search(r"Type:\s+DYN", dynamic):
        found.append("lies at a fixed address")
    return found
