#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""check-packages.py [--only CHECK]... [FOLDER]

Builds the Debian packages (scripts/build-packages.sh) and tries them:

    build         the packages, into the folder (build-packages)
    contents      no file names the folder of the build, nothing has a RUNPATH, the compiler got all flags of hardening
    lintian       finds nothing to say
    reproducible  a second build in another folder, in another time zone and language, is equal bit for bit
    clean-system  on a Debian 12 made for it they are installed, upgraded, removed and purged, and leave nothing behind
    autopkgtest   the installed console plays, queries and closes: debian/tests, on a copy of this system

The last two need root and the right to mount; where that is missing they say so and are left out. Exit status 1 when
a check failed. With --only: those checks, on the packages that are in the folder.

KELVO_SHARE_COMPILED=1 lets the second build take from ccache what the first one has compiled, which is quick, and finds a
folder or time that gets into a file. Without it, or with CCACHE_DISABLE=1, all of it is compiled twice.
"""
import argparse
import contextlib
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]
INSIDE = ROOT / "tests" / "packages"
OUTCOMES = "==> packages\n"
sys.path.insert(0, str(INSIDE))
sys.dont_write_bytecode = True
import contents  # noqa: E402


class Failed(Exception):
    """A check has found something; its text says what."""


class LeftOut(Exception):
    """A check cannot be made here; its text says what is missing."""


def run(*command, **options):
    print("+", *command, flush=True)
    return subprocess.run([str(part) for part in command], check=False, **options)


def must(*command, **options):
    if run(*command, **options).returncode:
        raise Failed(f"{command[0]} failed")


def packages(folder):
    found = sorted(folder.glob("*.deb"))
    if not found:
        raise Failed(f"there are no packages in {folder}")
    return found


def needs_mounts():
    if os.geteuid():
        raise LeftOut("only root can do that")
    tried = subprocess.run(["unshare", "--mount", "true"], capture_output=True, text=True, check=False)
    if tried.returncode:
        raise LeftOut(f"this system lets nobody mount (right CAP_SYS_ADMIN): {tried.stderr.strip()}")


def build_into(folder, *arguments, environment=None):
    with tempfile.TemporaryDirectory(prefix="kelvo-build.") as work:
        log = pathlib.Path(work) / "build.log"
        with log.open("w") as output:
            done = run(ROOT / "scripts" / "build-packages.sh", folder, *arguments, env=environment, stdout=output,
                       stderr=subprocess.STDOUT)
        if done.returncode:
            print(log.read_text()[-8000:])
            raise Failed("the build failed")
        shutil.copy(log, folder)


def build(folder):
    build_into(folder)
    for package in packages(folder):
        print(f"    {package.stat().st_size / 1024:8.0f} KiB  {package.name}")


def check_contents(folder):
    with tempfile.TemporaryDirectory(prefix="kelvo-contents.") as unpacked:
        faults = contents.build_log_faults((folder / "build.log").read_text())
        for package in packages(folder):
            place = pathlib.Path(unpacked) / package.name
            subprocess.run(["dpkg-deb", "--raw-extract", package, place], check=True)
            faults += [f"{package.name}: {fault}" for fault in contents.faults(place, folder / "kelvo-test-gui")]
    if faults:
        raise Failed("\n".join(faults))


def lintian(folder):
    (changes,) = folder.glob("*.changes")
    done = run("lintian", "-EviL", "+pedantic", "--allow-root", "--no-cfg", "--fail-on",
               "error,warning,info,pedantic,experimental", changes)
    if done.returncode:
        raise Failed("lintian has found something")


def reproducible(folder):
    with tempfile.TemporaryDirectory(prefix="kelvo-again.") as other:
        again = pathlib.Path(other) / "a-folder-with-another-name"
        environment = {**os.environ, "TZ": "Pacific/Kiritimati", "LC_ALL": "C", "USER": "somebody"}
        build_into(again, (folder / "revision").read_text().strip(), environment=environment)
        files = [{path.name: path for kind in ("*.deb", "*.tar.xz") for path in place.glob(kind)}
                 for place in (folder, again)]
        if files[0].keys() != files[1].keys():
            raise Failed(f"other packages: {sorted(files[0].keys() ^ files[1].keys())}")
        differing = [name for name, path in files[0].items() if path.read_bytes() != files[1][name].read_bytes()]
        if differing:
            kept = folder / "differing"
            shutil.rmtree(kept, ignore_errors=True)
            kept.mkdir()
            for name in differing:
                shutil.copy(files[1][name], kept)
            raise Failed(f"not equal: {', '.join(differing)} (those of the second build are in {kept})")
        print(f"    {len(files[0])} files are equal")


def debian_sources():
    """Where this system gets Debian from, as lines of apt's sources.list."""
    lines = subprocess.run(["apt-get", "indextargets", "--format", "$(ORIGIN)|deb $(REPO_URI) $(RELEASE) $(COMPONENT)",
                            "Created-By: Packages"], capture_output=True, text=True, check=True).stdout.splitlines()
    return list(dict.fromkeys(line.split("|", 1)[1] for line in lines if line.startswith("Debian|")))


def clean_system(folder):
    needs_mounts()
    if not shutil.which("mmdebstrap"):
        raise LeftOut("mmdebstrap is not installed")
    sources = debian_sources()
    if not sources:
        raise LeftOut("this system knows no source of Debian packages")
    with tempfile.TemporaryDirectory(prefix="kelvo-clean.") as work:
        options = pathlib.Path(work) / "apt.conf"
        dump = subprocess.run(["apt-config", "dump"], capture_output=True, text=True, check=True).stdout
        options.write_text("".join(line + "\n" for line in dump.splitlines() if line.startswith("Acquire::")))
        inside = pathlib.Path(work) / "packages"
        inside.mkdir()
        plain = [path for path in packages(folder) if "-dbgsym_" not in path.name]
        for path in [*plain, INSIDE / "clean-system.sh"]:
            shutil.copy(path, inside)
        must(INSIDE / "raise-version.sh", inside / "upgraded", *plain)
        release = sources[0].split()[2]
        # Made in a folder that it removes itself; nothing is left of it.
        must("mmdebstrap", "--variant=apt", "--mode=root", "--quiet", f"--aptopt={options}",
             f"--customize-hook=copy-in {inside} /", '--customize-hook=chroot "$1" sh /packages/clean-system.sh',
             release, "/dev/null", *sources)


def autopkgtest(folder):
    needs_mounts()
    if not shutil.which("autopkgtest"):
        raise LeftOut("autopkgtest is not installed")
    code = run("unshare", "--mount", "--pid", "--fork", "--kill-child", INSIDE / "copy-of-this-system.sh", folder).returncode
    if code == 77:
        raise LeftOut("this system cannot lay a file system over its own")
    if code:
        raise Failed(f"autopkgtest ended with {code}")


CHECKS = {"build": build, "contents": check_contents, "lintian": lintian, "reproducible": reproducible,
          "clean-system": clean_system, "autopkgtest": autopkgtest}
# Beside one another: some wait for disk and network, others calculate. The tests at the end have the machine to
# themselves, as a user would.
IN_TURN = [["build"], ["reproducible", "clean-system", "lintian", "contents"], ["autopkgtest"]]


def check(name, folder):
    """Makes one check and tells what came of it."""
    print(f"==> packages: {name}", flush=True)
    begin, outcome = time.monotonic(), "passed"
    try:
        CHECKS[name](folder)
    except (Failed, subprocess.CalledProcessError) as failure:
        outcome = f"failed: {failure}"
    except LeftOut as reason:
        outcome = f"left out: {reason}"
    return f"{name}: {outcome} ({time.monotonic() - begin:.0f} s)"


def check_together(names, folder):
    """The same for several, each by a process of its own; what they print comes when all have ended."""
    with contextlib.ExitStack() as stack:
        logs = [stack.enter_context(tempfile.TemporaryFile("w+")) for _ in names]
        children = [subprocess.Popen([sys.executable, __file__, "--only", name, folder], stdout=log, stderr=log)
                    for name, log in zip(names, logs)]
        outcomes = []
        for name, child, log in zip(names, children, logs):
            child.wait()
            log.seek(0)
            text, found, outcome = log.read().rpartition(OUTCOMES)
            print(text or outcome, flush=True)
            outcomes.append(outcome.strip() if found else f"{name}: failed: it ended with {child.returncode}")
        return outcomes


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--only", action="append", choices=CHECKS)
    parser.add_argument("folder", nargs="?", type=pathlib.Path, default=ROOT / "build-packages")
    arguments = parser.parse_args()
    folder = arguments.folder.resolve()
    outcomes = []
    for names in [[name] for name in arguments.only] if arguments.only else IN_TURN:
        outcomes += [check(names[0], folder)] if len(names) == 1 else check_together(names, folder)
        if names == ["build"] and ": failed" in outcomes[-1]:
            break
    print(OUTCOMES + "\n".join(f"    {outcome}" for outcome in outcomes))
    return 1 if any(": failed" in outcome for outcome in outcomes) else 0


if __name__ == "__main__":
    sys.exit(main())
