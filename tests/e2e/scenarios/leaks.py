# SPDX-License-Identifier: MIT
"""The look for leaks of other scenarios: the program is started with a back end that loses memory."""

import os

from bench.process import threads
from bench.scenario import Scenario
from bench.waiting import until

LOSING = {"KELVO_PLUGIN_PATH": os.environ["KELVO_E2E_TEST_PLUGINS"], "KELVO_PLUGINS": "leaking"}


class Leaks(Scenario):
    leak_check = True
    used_before = False  # the making of the store is looked at, too

    def test_a_leak_ends_the_program_with_a_report(self):
        console = self.start(env=LOSING)
        # A program that cannot wait for the opening of the store to the end leaves without looking.
        until(lambda: "kelvo-tracker" not in threads(console.process), "the store has been opened", 60)
        self.assertNotEqual(console.close(60), 0, console.log.tail())
        self.consoles.remove(console)  # what it reported is not for the general look at the log
        console.log.wait_for("LeakSanitizer: detected memory leaks")
        console.log.wait_for("leak of 4321 byte")
        self.assertEqual(console.log.count(r"SUMMARY: AddressSanitizer: 4321 byte\(s\) leaked in 1 allocation"), 1,
                         "that leak and no other\n" + console.log.tail(60))


class NoLook(Scenario):
    leak_check = False

    def test_without_the_look_it_is_not_seen(self):
        console = self.start(env=LOSING)
        self.assertEqual(console.close(), 0, console.log.tail())
