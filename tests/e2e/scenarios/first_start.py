# SPDX-License-Identifier: MIT
"""The first start of a user makes the store. It is kept for the other scenarios, whose user has started before."""

import shutil

from bench import media
from bench.scenario import Scenario


class FirstStart(Scenario):
    used_before = False

    def test_it_makes_the_store(self):
        console = self.start()
        console.log.wait_for("The tracker store is open", limit=20)
        self.assertEqual(console.close(), 0, console.log.tail())
        self.keep_store()

    def keep_store(self):
        made = media.folder() / "store.new"
        kept = media.folder() / media.STORE
        for folder in (made, kept):
            shutil.rmtree(folder, ignore_errors=True)
        shutil.copytree(self.desktop.folder / "data" / "kelvo", made)
        made.rename(kept)
