#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""list-skips.py LOG: lists what tests have left out, and why, from CTest's log of a run.

A test of Qt or Python that skips counts as passed, so nobody would hear of it otherwise. Ends with 1 when a reason is a
package that is not installed: then a test does not run for want of something that the script for dependencies brings.
"""

import re
import sys
from pathlib import Path

_BEGIN = re.compile(r"^\d+/\d+ Testing: (\S+)$")
_SKIPS = (
    re.compile(r"^SKIP\s+: (?P<what>\S+?\(.*?\)) (?P<why>.*)$"),  # Qt Test
    re.compile(r"^(?P<what>test\w*) \(.*\) \.\.\. skipped (?P<quote>['\"])(?P<why>.*)(?P=quote)$"),  # Python
    re.compile(r"^Skipped: (?P<why>.*)$"),  # of what ends with SKIP_RETURN_CODE
)
_MISSING_PACKAGE = re.compile(r"\bnot installed\b|\bneither .* is installed\b")


def skips_of(log):
    """{test: [(what was skipped, why)]}, of all tests in the log, also of those that skipped nothing."""
    by_test = {}
    test = None
    for line in log.splitlines():
        if begin := _BEGIN.match(line):
            test = by_test.setdefault(begin[1], [])
        elif test is not None:
            for pattern in _SKIPS:
                if found := pattern.match(line):
                    test.append((found.groupdict().get("what") or "all of it", found["why"].strip()))
    return by_test


def report(log):
    """(lines, whether a package is missing)."""
    skips = [(test, *skip) for test, skipped in sorted(skips_of(log).items()) for skip in skipped]
    missing = [skip for skip in skips if _MISSING_PACKAGE.search(skip[2])]
    lines = [f"==> skipped: {len(skips)}"]
    by_reason = {}
    for test, what, why in skips:
        by_reason.setdefault((test, why), []).append(what)
    for (test, why), whats in by_reason.items():
        lines.append(f"    {test}: {why} ({', '.join(whats[:2])}{f' and {len(whats) - 2} more' if whats[2:] else ''})")
    if missing:
        lines.append(f"error: {len(missing)} of them for want of a package (scripts/install-dependencies.sh test)")
    return lines, bool(missing)


if __name__ == "__main__":
    lines, failed = report(Path(sys.argv[1]).read_text(errors="replace"))
    print("\n".join(lines))
    sys.exit(1 if failed else 0)
