# SPDX-License-Identifier: MIT
"""Child processes that never outlive the bench, and the program's log."""

import ctypes
import os
import re
import signal
import subprocess
import threading
import time
from pathlib import Path

from .waiting import until

_libc = ctypes.CDLL(None, use_errno=True)
_PR_SET_PDEATHSIG = 1


def _die_with_parent():
    # A bench that is killed cannot clean up; its children then end by themselves.
    _libc.prctl(_PR_SET_PDEATHSIG, signal.SIGKILL, 0, 0, 0)


def start(command, env, **options):
    """Starts a child in a session of its own. Called on the main thread: the death signal follows the thread."""
    return subprocess.Popen(command, env=env, stdin=subprocess.DEVNULL, start_new_session=True,
                            preexec_fn=_die_with_parent, **options)


def end(process, limit=3.0):
    """Ends a child by its id: first asked, then forced."""
    if process.poll() is not None:
        return
    process.send_signal(signal.SIGTERM)
    try:
        process.wait(limit)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait(5)


def stacks(process):
    """Where each thread of a child is, as gdb tells it; empty without gdb."""
    command = ["gdb", "-q", "-batch", "-ex", "thread apply all backtrace 30", "-p", str(process.pid)]
    try:
        return subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True, text=True, errors="replace",
                              timeout=60, check=False).stdout
    except (FileNotFoundError, subprocess.TimeoutExpired):
        return ""


def threads(process):
    """What each thread of a child is called and waits for in the kernel, as text."""
    lines = []
    for task in sorted(Path(f"/proc/{process.pid}/task").glob("*")):
        try:
            place = (task / 'wchan').read_text()
            lines.append(f"    {(task / 'comm').read_text().strip()}: {'runs' if place in ('', '0') else place}")
        except OSError:  # it has just ended
            continue
    return "\n".join(lines)


def strays(variable, value):
    """Ids of the processes that carry this environment variable with this value, without ourselves."""
    mark = f"{variable}={value}".encode()
    found = []
    for entry in os.listdir("/proc"):
        if not entry.isdigit() or int(entry) == os.getpid():
            continue
        try:
            with open(f"/proc/{entry}/environ", "rb") as file:
                if mark in file.read().split(b"\0") and not _is_zombie(entry):
                    found.append(int(entry))
        except OSError:
            continue
    return found


def _is_zombie(entry):
    with open(f"/proc/{entry}/stat", encoding="latin-1") as file:
        return file.read().rpartition(")")[2].split()[0] == "Z"


class Log:
    """Everything the program writes, line by line, read all the time: an unread pipe would stop the program."""

    def __init__(self):
        self.lines = []
        self.stamps = []
        self._lock = threading.Lock()
        self._threads = []

    def follow(self, stream):
        thread = threading.Thread(target=self._read, args=(stream,), daemon=True)
        thread.start()
        self._threads.append(thread)

    def _read(self, stream):
        for raw in stream:
            with self._lock:
                self.lines.append(raw.decode("utf-8", "replace").rstrip("\n"))
                self.stamps.append(time.monotonic())

    def finish(self, limit=5.0):
        """Waits until the program's ends of the pipes are closed."""
        for thread in self._threads:
            thread.join(limit)

    def mark(self):
        """The present end of the log: search behind it for what an action brings."""
        with self._lock:
            return len(self.lines)

    def find(self, pattern, after=0):
        """Numbers of the lines behind the mark that match the regular expression."""
        expression = re.compile(pattern)
        with self._lock:
            return [n for n in range(after, len(self.lines)) if expression.search(self.lines[n])]

    def count(self, pattern, after=0):
        return len(self.find(pattern, after))

    def wait_for(self, pattern, after=0, limit=10.0, count=1):
        """Number of the count-th matching line behind the mark."""
        def enough():
            found = self.find(pattern, after)
            return found[count - 1] + 1 if len(found) >= count else 0
        return until(enough, lambda: f"log line /{pattern}/ ({count}x)\n{self.tail()}", limit) - 1

    def tail(self, count=25):
        with self._lock:
            return "last log lines:\n    " + "\n    ".join(self.lines[-count:])

    def text(self):
        with self._lock:
            return "\n".join(self.lines) + "\n"
