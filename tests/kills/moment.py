# SPDX-License-Identifier: MIT
"""When a program is killed: after something it has said, before a certain change of its files or message to others, or
after a time."""

import dataclasses
import math
import mmap
import struct

PHASES = ("indexing", "counting", "editing", "publishing")

# How often the program is killed from which of its steps on, in each phase.
_STEPS = {
    "indexing": (("start", 6), ("open", 4), ("work", 8), ("end", 2)),
    "counting": (("start", 1), ("open", 1), ("work", 15), ("end", 3)),
    "editing": (("start", 2), ("open", 1), ("work", 14), ("end", 3)),
    "publishing": (("start", 1), ("open", 1), ("work", 15), ("end", 3)),
}
# How many changes and messages there are at most from that step on, and how long it takes (seconds).
_CHANGES = {"start": 300, "open": 250, "work": 200, "end": 40}
_CHANGES_OF_A_NEW_STORE = 1800
_MESSAGES = {"start": 25, "open": 25, "work": 120, "end": 20}
_SECONDS = {"start": 0.8, "open": 0.4, "work": 0.6, "end": 0.15}
_LONGEST = {"counting": 2.5}


@dataclasses.dataclass(frozen=True)
class Moment:
    step: str  # "start", "open" (the store is), "work" (its deeds have begun), "end" (it was asked to end)
    changes: int = 0  # killed before so many-th change of its files; 0: not by that
    messages: int = 0
    seconds: float = 0.0
    torn: bool = False  # of a change of many pages, half are done

    def __str__(self):
        if self.changes:
            return f"{self.step} + {self.changes} changes" + (" (torn)" if self.torn else "")
        if self.messages:
            return f"{self.step} + {self.messages} messages"
        return f"{self.step} + {1000 * self.seconds:.0f} ms"

    @property
    def limit(self):
        """Seconds after the step: by then the program is killed in any case."""
        return self.seconds or 3.0


def choose(phase, has_store, random):
    steps = _STEPS[phase]
    step = random.choices([name for name, _ in steps], [weight for _, weight in steps])[0]
    kind = random.random()
    if kind < 0.4:
        longest = _LONGEST.get(phase, _SECONDS[step]) if step == "work" else _SECONDS[step]
        return Moment(step, seconds=random.uniform(0.001, longest))
    if kind < 0.75 and phase == "publishing":
        return Moment(step, messages=_number(_MESSAGES[step], random))
    most = _CHANGES[step]
    if not has_store:
        step, most = "start", _CHANGES_OF_A_NEW_STORE
    return Moment(step, changes=_number(most, random), torn=random.random() < 0.3)


def _number(most, random):
    """Half of them small: what begins is over soon."""
    if random.random() < 0.5:
        return random.randint(1, most)
    return int(math.exp(random.uniform(0, math.log(most))))


class Switch:
    """The file through which kill-switch.cpp is told."""

    _LAYOUT = struct.Struct("=qqqqq")  # changes left, messages left, torn, changes, messages

    def __init__(self, path):
        path.write_bytes(bytes(self._LAYOUT.size))
        self.path = path
        with open(path, "r+b") as file:
            self._map = mmap.mmap(file.fileno(), self._LAYOUT.size)

    def arm(self, moment):
        struct.pack_into("=q", self._map, 16, moment.torn)
        struct.pack_into("=q", self._map, 0, moment.changes)
        struct.pack_into("=q", self._map, 8, moment.messages)

    def counted(self):
        """Changes and messages since the start of the program."""
        return self._LAYOUT.unpack(self._map[:])[3:]

    def reset(self):
        self._map[:] = bytes(self._LAYOUT.size)
