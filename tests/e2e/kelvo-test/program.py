# SPDX-License-Identifier: MIT
"""Runs kelvo-test as a tester or a script would.

Environment: KELVO_TEST_PROGRAM."""
import os
import pty
import select
import signal
import subprocess
import time
import unittest

PROGRAM = os.environ["KELVO_TEST_PROGRAM"]
# For what ends by itself; a hang is what it is there for.
PATIENCE = 60


class Result:
    def __init__(self, done):
        self.code = done.returncode
        self.out = done.stdout
        self.err = done.stderr


class ProgramCase(unittest.TestCase):
    """With the simulator alone, unless a test says otherwise."""

    maxDiff = None

    def environment(self, **changes):
        return {**os.environ, "KELVO_PLUGINS": "simulator", **changes}

    def run_program(self, *arguments, **changes):
        done = subprocess.run([PROGRAM, *arguments], env=self.environment(**changes), capture_output=True, text=True,
                              stdin=subprocess.DEVNULL, timeout=PATIENCE, check=False)
        return Result(done)

    def start_program(self, *arguments, **changes):
        """Without waiting for its end: its output comes line by line."""
        process = subprocess.Popen([PROGRAM, *arguments], env=self.environment(**changes), stdin=subprocess.DEVNULL,
                                   stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        self.addCleanup(process.stdout.close)
        self.addCleanup(self.end, process)
        return process

    def end(self, process):
        if process.poll() is None:
            process.kill()
        process.wait()

    def read_until(self, process, text):
        """The lines up to the first that holds the text; fails when the output ends before that."""
        lines = []
        for line in process.stdout:
            lines.append(line)
            if text in line:
                return "".join(lines)
        self.fail(f"no {text!r} in:\n{''.join(lines)}")

    def interrupt(self, process):
        """Ctrl-C; returns the exit code and how many seconds the end took."""
        begin = time.monotonic()
        process.send_signal(signal.SIGINT)
        process.wait(PATIENCE)
        return process.returncode, time.monotonic() - begin


class Terminal:
    """The program at a terminal of its own."""

    def __init__(self, *arguments, environment):
        self.output = ""
        self.process, self.descriptor = pty.fork()
        if self.process == 0:
            os.execve(PROGRAM, [PROGRAM, *arguments], environment)

    def read_until(self, text):
        """Reads until the text comes after what was read until before."""
        deadline = time.monotonic() + PATIENCE
        fresh = ""
        while text not in fresh:
            ready, _, _ = select.select([self.descriptor], [], [], max(0, deadline - time.monotonic()))
            if not ready:
                raise AssertionError(f"no {text!r} in {fresh!r}")
            try:
                data = os.read(self.descriptor, 4096)
            except OSError:
                data = b""
            if not data:
                raise AssertionError(f"the program ended without {text!r}: {fresh!r}")
            fresh += data.decode()
        self.output += fresh

    def press(self, keys):
        os.write(self.descriptor, keys.encode())

    def wait(self):
        """Its exit code."""
        while True:
            try:
                if not os.read(self.descriptor, 4096):
                    break
            except OSError:
                break
        _, status = os.waitpid(self.process, 0)
        os.close(self.descriptor)
        return os.waitstatus_to_exitcode(status)
