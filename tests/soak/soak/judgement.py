# SPDX-License-Identifier: MIT
"""What the samples of a run say of each gauge, in words and as rows of docs/benchmarks.md."""

from . import slopes
from .gauges import GAUGES


class Judgement:
    def __init__(self, sampler, warm_up):
        """warm_up: seconds at the beginning, in which caches fill, that do not count."""
        self._found = {}
        for gauge in GAUGES:
            line = slopes.slope([sample for sample in sampler.of(gauge) if sample[0] >= warm_up])
            self._found[gauge] = line, slopes.verdict(line, gauge.bound, gauge.visible)

    def verdicts(self):
        """{gauge's id: verdict} of those that are judged."""
        return {gauge.id: verdict for gauge, (_, verdict) in self._found.items() if gauge.is_judged}

    def not_flat(self):
        """A line for each that is not."""
        return [f"{gauge.name}: {verdict}, {_words(gauge, line)}" for gauge, (line, verdict) in self._found.items()
                if gauge.is_judged and verdict != slopes.FLAT]

    def rows(self):
        for gauge, (line, verdict) in self._found.items():
            judged = (verdict, f"at most {gauge.bound:g}{gauge.unit}/h, or two errors") if gauge.is_judged \
                else ("reported", "")
            yield f"| {gauge.name} | {line.mean:.2f}{gauge.unit} | {_rise(gauge, line)} | {judged[0]} | {judged[1]} |"

    def promises(self):
        """{id of the promise: figure} of what is flat."""
        return {f"soak-{gauge.id}": f"{_words(gauge, line)} in {line.blocks} rounds"
                for gauge, (line, verdict) in self._found.items() if gauge.is_judged and verdict == slopes.FLAT}


def _rise(gauge, line):
    return f"{line.per_hour:+.2f} ± {line.error:.2f}{gauge.unit}/h"


def _words(gauge, line):
    return f"{line.mean:.2f}{gauge.unit}, {_rise(gauge, line)}"
