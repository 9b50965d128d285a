# SPDX-License-Identifier: MIT
"""A tester's day: what the console holds at its end is what it held when all had been done once.

Environment: KELVO_SOAK_MINUTES (60), KELVO_SOAK_SAMPLES (a file for all samples). Prints rows of docs/benchmarks.md and
figures of docs/reliability.md.
"""

import os
import sys
import time
import traceback
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
from bench.waiting import TimedOut  # noqa: E402
from soak.case import SoakCase  # noqa: E402
from soak.judgement import Judgement  # noqa: E402

SONGS, PLAYERS = 10_000, 20
# What is to be done at least, in an hour.
AN_HOURS_WORK = {"renderers": 200, "plug-in cycles": 50, "queries": 100, "searches": 50, "edits": 200,
                 "items played": 150, "films": 50, "full screens": 50, "sound restarts": 10, "dialogs": 100}


class LongDay(SoakCase):
    def setUp(self):
        super().setUp()
        self.minutes = float(os.environ.get("KELVO_SOAK_MINUTES", "60"))
        self.mishaps = []

    def attempt(self, day, activity):
        """One that fails is kept for the end with all that shows why, and the day goes on: the hour is not lost."""
        try:
            activity()
        except TimedOut:
            if self.consoles[0].process.poll() is not None:
                raise
            self.mishaps.append(f"{activity.__name__}:\n{traceback.format_exc()}")
            print(self.mishaps[-1], file=sys.stderr, flush=True)
            self.keep_evidence()
            day.recover()

    def work(self, day, sampler):
        end = time.monotonic() + 60 * self.minutes
        while time.monotonic() < end:
            sampler.block += 1
            for activity in day.activities:
                self.attempt(day, activity)
            print(f"round {sampler.block}: {dict(day.done)}", file=sys.stderr, flush=True)

    def test_nothing_grows(self):
        day = self.start_day(SONGS, PLAYERS)
        day.fill_the_ring()
        sampler = self.watch(self.consoles[0])
        self.work(day, sampler)
        sampler.close()
        if path := os.environ.get("KELVO_SOAK_SAMPLES"):
            sampler.write(path)
        # The heaps have their size after some thirty rounds.
        judgement = Judgement(sampler, 60 * self.minutes / 2)
        for row in judgement.rows():
            print(row, flush=True)
        done = ", ".join(f"{count} {what}" for what, count in day.done.items())
        print(f"| done in {self.minutes:g} minutes, {sampler.block} rounds | {done} | | | |", flush=True)
        for promise, figure in judgement.promises().items():
            print(f"reliability: {promise}: {figure}", flush=True)
        self.assertEqual(self.mishaps, [])
        for what, count in AN_HOURS_WORK.items():
            self.assertGreaterEqual(day.done[what], count * self.minutes / 60, what)
        print(f"reliability: soak-day: {done} in {self.minutes:g} min, nothing failed", flush=True)
        self.assertEqual(judgement.not_flat(), [])
