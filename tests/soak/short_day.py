# SPDX-License-Identifier: MIT
"""One round of a tester's day, and the proof that its samples show what is lost."""

import os
import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parent))
from bench.scenario import Scenario  # noqa: E402
from bench.waiting import until  # noqa: E402
from soak import slopes  # noqa: E402
from soak.case import SoakCase  # noqa: E402
from soak.gauges import GAUGES  # noqa: E402
from soak.judgement import Judgement  # noqa: E402
from soak.samples import Sampler  # noqa: E402

SONGS, PLAYERS = 1000, 8
A_ROUNDS_WORK = {"queries": 5, "playlists": 1, "edits": 9, "items played": 3, "searches": 1, "films": 1,
                 "full screens": 1, "renderers": PLAYERS, "sound restarts": 1, "plug-in cycles": 2, "dialogs": 3}


class ShortDay(SoakCase):
    interval = 0.5

    def test_a_round_does_all_that_it_says(self):
        day = self.start_day(SONGS, PLAYERS)
        before = dict(day.done)
        sampler = self.watch(self.consoles[0])
        for activity in day.activities:
            activity()
        sampler.close()
        self.assertEqual({what: count - before.get(what, 0) for what, count in day.done.items()}, A_ROUNDS_WORK)
        self.assertGreater(len(sampler.taken), 10)
        for gauge in GAUGES:
            self.assertGreater(min(value for _, value, _ in sampler.of(gauge)), 0, gauge.id)
        # Players and their renderers leave nothing on the bus: a console has as many names as before.
        names = [seen["names"] for _, _, seen in sampler.taken]
        self.assertLessEqual(names[-1], names[0] + 1)


class Watched(Scenario):
    """Ten blocks of two samples each."""

    blocks, interval = 10, 0.4
    used_before = False

    def judge(self, **environment):
        console = self.start(env={"KELVO_PLUGIN_PATH": os.environ["KELVO_E2E_TEST_PLUGINS"], **environment})
        sampler = Sampler(self.desktop, console.process.pid, self.interval)
        self.addCleanup(sampler.close)
        for block in range(self.blocks):
            sampler.block = block
            until(lambda: len(sampler.taken) >= 2 * (block + 1), "two more samples", 20, 0.02)
        sampler.close()
        return Judgement(sampler, 0)

    def test_what_is_lost_grows(self):
        judgement = self.judge(KELVO_PLUGINS="losing")
        verdicts = judgement.verdicts()
        # Windows that nobody sees have no pixels.
        for gauge in ("memory", "descriptors", "threads", "names", "x-resources"):
            self.assertEqual(verdicts[gauge], slopes.GROWS, judgement.not_flat())
            self.assertNotIn(f"soak-{gauge}", judgement.promises())

    def test_what_rests_does_not(self):
        verdicts = self.judge(KELVO_PLUGINS="").verdicts()
        # Memory still settles so soon after the start.
        for gauge in ("descriptors", "threads", "names", "x-resources"):
            self.assertNotEqual(verdicts[gauge], slopes.GROWS, gauge)
