#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""mutate.py: do the tests notice when the program is changed?

Makes one-line changes (operators.py) of src, kelvo-test and framework, chosen at random, one at a time: each is built, the tests
that can see it (areas.py) run until the first one fails, and the line is put back. What no test notices "survived".

    tests/mutation/mutate.py --count 60 --seed 1 --minutes 30   # goes on where it was when it is started again
    tests/mutation/mutate.py --again                            # the survivors once more, after a test was added
    tests/mutation/mutate.py --list                             # only says what would be changed

It changes the sources in place: run it in a clone of its own, built once with the asan preset. What it found is kept in
the folder "mutation" of the build folder, and written to tests/mutation/report.md; tests/mutation/reasons.json says
why a survivor may live.
"""

import argparse
import json
import os
import random
import re
import shlex
import signal
import subprocess
import sys
import time
from pathlib import Path

sys.dont_write_bytecode = True
import operators  # noqa: E402
from areas import programs_for  # noqa: E402

ROOT = Path(__file__).resolve().parents[2]
HERE = Path(__file__).resolve().parent
DONE = ("killed", "survived")
EQUIVALENT = "Equivalent"  # how a reason begins that says that no test can notice
QUICK = 2  # seconds; tests that take longer wait for others, and may wait in vain
_ENDED = re.compile(r"\s*\d+/\d+ Test\s+#\d+: (\S+) \.*\s*(.*?)\s+([\d.]+) sec")


def end_tree(pid):
    """Ends a child and what it has started, the children before their parents."""
    tasks = Path(f"/proc/{pid}/task")
    try:
        children = [int(child) for task in tasks.iterdir() for child in (task / "children").read_text().split()]
        os.kill(pid, signal.SIGSTOP)  # it starts no more meanwhile
        for child in children:
            end_tree(child)
        os.kill(pid, signal.SIGKILL)
    except OSError:  # it has ended by itself
        return


def batches(usual, path):
    """The tests of a program in the order in which they are asked: those named like the file, quick ones, slow ones.

    Within a call, ctest begins with those that take longest.
    """
    named = {name: set(name.split("-")) for name in usual}
    told = set.intersection(*named.values()) if named else set()  # by all of them, so by none
    words = set(re.findall("[a-z]+", re.sub("([A-Z])", r" \1", Path(path).stem).lower())) - told
    groups = {}
    for name, seconds in usual.items():
        near = bool(words & named[name])
        rank = 0 if near and seconds <= 5 * QUICK else 1 if seconds <= QUICK else 2 if near else 3
        groups.setdefault(rank, []).append(name)
    return [groups[rank] for rank in sorted(groups)]


def candidates(paths):
    """Changes by line: [(path, [mutants of that line])], the same order on every machine."""
    lines = []
    for top in ("src", "kelvo-test", "framework"):
        for file in sorted((ROOT / top).rglob("*.cpp")):
            path = str(file.relative_to(ROOT))
            if paths and not any(path.startswith(one) for one in paths):
                continue
            by_line = {}
            for mutant in operators.mutants(file.read_text()):
                by_line.setdefault(mutant.line, []).append(mutant)
            lines += [(path, mutants) for _, mutants in sorted(by_line.items())]
    return lines


def choose(paths, seed, count):
    """`count` changes of different lines, each line as likely as the others."""
    chance = random.Random(seed)
    lines = candidates(paths)
    chance.shuffle(lines)
    chosen = []
    for path, mutants in lines[:count]:
        mutant = chance.choice(mutants)
        chosen.append({"path": path, "line": mutant.line, "operator": mutant.operator,
                       "before": mutant.before, "after": mutant.after})
    return chosen


class Store:
    """What is kept between runs: the plan, its results, the times of the unchanged tests, the line in work."""

    def __init__(self, folder):
        folder.mkdir(parents=True, exist_ok=True)
        self.folder = folder

    def load(self, name, default):
        file = self.folder / f"{name}.json"
        return json.loads(file.read_text()) if file.exists() else default

    def save(self, name, value):
        file = self.folder / f"{name}.json"
        part = file.with_suffix(".part")
        part.write_text(json.dumps(value, indent=1))
        part.rename(file)

    def plan(self, options):
        """The plan is made once, so that the same changes are gone through however often a run is interrupted."""
        key = f"plan-{options.seed}-{'-'.join(options.path).replace('/', '_') or 'all'}"
        plan = self.load(key, None)
        if plan is None:
            # More than asked for: what does not compile, or is gone, is replaced by the next.
            plan = choose(options.path, options.seed, 3 * options.count + 20)
            self.save(key, plan)
        self.key = key
        return plan


class Build:
    """The build folder: builds, lists tests, runs them."""

    def __init__(self, folder, store, prefix):
        self.folder = folder
        self.store = store
        self.prefix = prefix
        self._tests = None

    def make(self, target, limit):
        command = [*self.prefix, "cmake", "--build", str(self.folder), "--target", target]
        result = subprocess.run(command, capture_output=True, text=True, timeout=limit, check=False)
        return result.returncode == 0, result.stdout + result.stderr

    def tests_of(self, program):
        """Names of the tests that run a program."""
        if self._tests is None:
            out = subprocess.run(["ctest", "--test-dir", str(self.folder), "--show-only=json-v1"],
                                 capture_output=True, text=True, check=True).stdout
            self._tests = json.loads(out)["tests"]
        wanted = f"/tests/{program}"
        return [test["name"] for test in self._tests
                if any(part.endswith(wanted) for part in test.get("command", []))]

    def run(self, tests, timeout):
        """(tests that failed, the first failure, seconds by test). Stops at the first failure."""
        names = "|".join(re.escape(name) for name in tests)
        command = ["ctest", "--test-dir", str(self.folder), "--stop-on-failure", "--timeout", str(int(timeout)), "-j2",
                   "-V", "-R", f"^({names})$"]
        failed, how, seconds, by_number = [], "", {}, {}
        with subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              text=True, errors="replace") as ctest:
            try:
                for line in ctest.stdout:
                    if begun := re.match(r"\s*Start\s+(\d+): (\S+)", line):
                        by_number[begun[1]] = begun[2]
                    if ended := _ENDED.match(line):
                        if ended[1] in tests:
                            seconds[ended[1]] = float(ended[3])
                            if not re.match(r"Passed|\*\*\*Skipped", ended[2]):
                                failed.append(ended[1])
                                how = how or ended[2].strip("* ")
                    # A Qt test goes on after its first failure, and each later one may wait in vain for long.
                    elif fault := re.match(r"(\d+): FAIL!\s+: (.*)", line):
                        return [by_number[fault[1]]], fault[2].strip(), seconds
                return failed, how, seconds
            finally:
                end_tree(ctest.pid)

    def baseline(self, program):
        """Seconds of the program's tests without a change; those that fail by themselves count for nothing."""
        known = self.store.load("baseline", {})
        if program not in known:
            ok, out = self.make(program, 3600)
            if not ok:
                raise SystemExit(f"{program} does not build without a change:\n{out[-3000:]}")
            seconds = {}
            left = self.tests_of(program)
            while left:
                failed, _, taken = self.run(left, 300)
                seconds |= {name: time for name, time in taken.items() if name not in failed}
                left = [name for name in left if name not in taken and name not in failed] if failed else []
                for name in failed:
                    print(f"  {name} fails without a change and is left out", flush=True)
            known[program] = seconds
            self.store.save("baseline", known)
        return known[program]


class Run:
    def __init__(self, options):
        self.options = options
        folder = Path(options.build).resolve()
        self.store = Store(folder / "mutation")
        self.build = Build(folder, self.store, shlex.split(options.build_prefix))
        self.results = self.store.load("results", {})
        self.put_back()

    def put_back(self):
        """The line that an earlier run, killed in the middle, left changed."""
        pending = self.store.load("pending", None)
        if pending:
            (ROOT / pending["path"]).write_text(pending["text"])
            self.store.save("pending", None)

    def judge(self, mutant):
        file = ROOT / mutant["path"]
        text = file.read_text()
        lines = text.split("\n")
        place = operators.place_of(lines, mutant["line"], mutant["before"])
        if place is None:
            return {"result": "gone"}
        changed = "\n".join([*lines[:place], mutant["after"], *lines[place + 1:]])
        end = time.monotonic() + self.options.limit
        outcome = {"result": "survived"}
        for program in programs_for(mutant["path"]):
            self.build.baseline(program)  # before the change
            self.store.save("pending", {"path": mutant["path"], "text": text})
            file.write_text(changed)
            try:
                outcome = self.verdict(program, mutant["path"], end)
            finally:
                self.put_back()
            if outcome["result"] != "survived":
                break
        return self.confirmed(outcome) if outcome["result"] == "killed" else outcome

    def confirmed(self, outcome):
        """A kill counts only when the test passes without the change, at this hour and on a machine as busy as now."""
        program, name = outcome.pop("program"), outcome["by"]
        usual = self.build.baseline(program)[name]
        if usual > QUICK and (not self.build.make(program, 3600)[0] or self.build.run([name], 60 + 8 * usual)[0]):
            return {"result": "unclear", "why": f"{name} fails without the change too"}
        return outcome

    def verdict(self, program, path, end):
        left = end - time.monotonic()
        if left <= 0:
            return {"result": "undecided", "why": f"no time for {program}"}
        try:
            built, out = self.build.make(program, max(60, left))
        except subprocess.TimeoutExpired:
            return {"result": "undecided", "why": f"building {program} took too long"}
        if not built:
            return {"result": "unbuildable", "why": next((l for l in out.splitlines() if "error:" in l), out[-200:])}
        usual = self.build.baseline(program)
        for tests in batches(usual, path):
            while tests:
                failed, how, taken = self.build.run(tests, 30 + 4 * max(usual[name] for name in tests))
                # A crowded machine fails tests too: only who fails again has noticed.
                for name in failed:
                    again, how, _ = self.build.run([name], 60 + 8 * usual[name])
                    if again:
                        return {"result": "killed", "by": name, "how": how, "program": program}
                tests = [name for name in tests if name not in taken and name not in failed] if failed else []
        return {"result": "survived"}

    def go(self):
        plan = self.store.plan(self.options)
        if self.options.list:
            for mutant in plan[:self.options.count]:
                print(f"{mutant['path']}:{mutant['line']}: {mutant['operator']}\n  - {mutant['before'].strip()}\n"
                      f"  + {mutant['after'].strip()}")
            return
        end = time.monotonic() + 60 * self.options.minutes if self.options.minutes else None
        for mutant in plan:
            key = name_of(mutant)
            known = self.results.get(key, {}).get("result")
            if self.options.again:
                if known not in ("survived", "unclear"):
                    continue
            elif known:
                continue
            elif self.decided(plan) >= self.options.count:
                break
            if end and time.monotonic() > end:
                break
            begin = time.monotonic()
            outcome = self.judge(mutant)
            if known == "survived" or self.results.get(key, {}).get("again"):
                outcome["again"] = True
            self.results[key] = {**mutant, **outcome, "seconds": round(time.monotonic() - begin)}
            self.store.save("results", self.results)
            print(f"{outcome['result']:11} {outcome.get('by', outcome.get('why', ''))}  {self.results[key]['seconds']} s\n"
                  f"    {mutant['path']}:{mutant['line']}: {mutant['operator']}\n    {mutant['after'].strip()}", flush=True)
        write_report(Path(self.options.report), [self.results[name_of(m)] for m in plan if name_of(m) in self.results],
                     self.options, self.reasons())

    def decided(self, plan):
        return sum(self.results.get(name_of(mutant), {}).get("result") in DONE for mutant in plan)

    @staticmethod
    def reasons():
        file = HERE / "reasons.json"
        return json.loads(file.read_text()) if file.exists() else {}


def name_of(mutant):
    return f"{mutant['path']}: {mutant['before'].strip()} -> {mutant['after'].strip()}"


def cell(text):
    return "`" + text.strip().replace("|", "\\|") + "`"


def percent(part, whole):
    return f" ({100 * part / whole:.1f} %)" if whole else ""


def summary(results, count, reasons):
    """What was found in figures: with and without the changes after which the program does the same."""
    number = {kind: sum(one["result"] == kind for one in results)
              for kind in (*DONE, "undecided", "unclear", "unbuildable", "gone")}
    decided = number["killed"] + number["survived"]
    equivalent = sum(one["result"] == "survived" and reasons.get(name_of(one), "").startswith(EQUIVALENT)
                     for one in results)
    late = sum(one["result"] == "killed" and one.get("again", False) for one in results)
    return [f"{decided} of {count} changes were tried to the end: {number['killed']} killed"
            f"{percent(number['killed'], decided)}, {number['survived']} survived. "
            f"Of the survivors {equivalent} are equivalent (the program does the same); without these, "
            f"{number['killed']} of {decided - equivalent} were killed{percent(number['killed'], decided - equivalent)}.",
            "",
            f"{late} of the killed had survived at first and were tried again, after a test was added or the program "
            "that has the test was named in `areas.py`.",
            "",
            f"Not counted: {number['undecided']} undecided (out of time), {number['unclear']} unclear (the test that "
            f"failed does so without the change too), {number['unbuildable']} that do not compile, {number['gone']} of "
            "lines that are gone."]


def write_report(file, results, options, reasons):
    killed = [one for one in results if one["result"] == "killed"]
    survived = [one for one in results if one["result"] == "survived"]
    others = [one for one in results if one["result"] not in DONE]
    lines = ["# Mutation report", "",
             f"Written by `tests/mutation/mutate.py --count {options.count} --seed {options.seed}"
             + "".join(f" --path {path}" for path in options.path) + "`.", "",
             *summary(results, options.count, reasons),
             "", "## Survived", "", "| where | change | now | reason |", "|---|---|---|---|"]
    lines += [f"| {one['path']}:{one['line']} | {one['operator']} | {cell(one['after'])} | "
              f"{reasons.get(name_of(one), '')} |" for one in survived]
    lines += ["", "## Killed", "", "| where | change | now | by |", "|---|---|---|---|"]
    lines += [f"| {one['path']}:{one['line']} | {one['operator']} | {cell(one['after'])} | {one['by']} |" for one in killed]
    lines += ["", "## Not counted", "", "| where | now | why |", "|---|---|---|"]
    lines += [f"| {one['path']}:{one['line']} | {cell(one['after'])} | {one['result']} |" for one in others]
    file.write_text("\n".join(lines) + "\n")


def arguments(argv):
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=60, help="changes to try (60)")
    parser.add_argument("--seed", type=int, default=1, help="chooses the changes (1)")
    parser.add_argument("--path", action="append", default=[], help="only files that begin so, for instance src/; may be repeated")
    parser.add_argument("--minutes", type=float, default=0, help="begins no further change after that time")
    parser.add_argument("--limit", type=float, default=900, help="seconds for one change (900)")
    parser.add_argument("--build", default=str(ROOT / "build-asan"), help="build folder (build-asan)")
    parser.add_argument("--build-prefix", default="", help="put before each build command, for instance 'nice'")
    parser.add_argument("--report", default=str(HERE / "report.md"), help="where the report goes")
    parser.add_argument("--again", action="store_true", help="tries the survivors again, and what was unclear")
    parser.add_argument("--list", action="store_true", help="shows the chosen changes only")
    return parser.parse_args(argv)


if __name__ == "__main__":
    for number in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, lambda *_: sys.exit(1))  # by way of put_back()
    Run(arguments(sys.argv[1:])).go()
