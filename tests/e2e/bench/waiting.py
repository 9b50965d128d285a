# SPDX-License-Identifier: MIT
"""Waiting on conditions, each with a limit and a text that says what was missing."""

import os
import time

# Everything is slower under the sanitizers and on busy machines. Limits of waiting are generous for that reason: they
# only cost time when something is wrong.
FACTOR = float(os.environ.get("KELVO_E2E_SLOWNESS", "1"))
_FIRST_PAUSE = 0.02  # seconds


class Gone(Exception):
    """The widget or the program no longer exists."""


class TimedOut(AssertionError):
    """A condition did not come true in time."""


def until(condition, what, limit=10.0, poll=0.1):
    """Calls the condition until it returns something true, and returns that; `what` may be a function. What goes while
    the condition looks at it (a row of a list, say) is looked for again. Most comes soon: the first looks follow one
    another more quickly than the later ones, `poll` seconds apart."""
    end = time.monotonic() + limit * FACTOR
    pause = _FIRST_PAUSE
    while True:
        try:
            value = condition()
        except Gone:
            value = None
        if value:
            return value
        if time.monotonic() >= end:
            text = what() if callable(what) else what
            raise TimedOut(f"not within {limit * FACTOR:.1f} s: {text}")
        time.sleep(min(pause, poll))
        pause *= 2


def holds(condition, what, seconds):
    """Checks that the condition stays true for a while: for what must not happen."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        if not condition():
            raise AssertionError(f"did not stay so for {seconds} s: {what}")
        time.sleep(0.05)
