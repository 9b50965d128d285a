# SPDX-License-Identifier: MIT
"""The desktop of a tester's day: a library, a sound server, and the console with all that a day needs."""

from bench import media
from bench.scenario import Scenario

from . import library
from .day import Day
from .samples import Sampler
from .sound import SoundServer


class SoakCase(Scenario):
    used_before = False
    interval = 2.0  # seconds between two looks

    def start_day(self, songs, players):
        """A console of its own and a day on it, which has begun."""
        music = self.desktop.home / "Music"
        library.make(music, songs)
        (self.desktop.home / "qkelvo-gui-uris.txt").write_text(media.url(library.FILM) + "\n")
        sound = SoundServer(self.desktop)
        console = self.start(env={
            **sound.environment, "KELVO_AUDIO_SINK": None, "KELVO_PLUGINS": "gst-renderer,tracker-source,mpris.so",
            "KELVO_MEDIA_DIRS": str(music), "KELVO_UPNP_INTERFACE": "lo"})
        day = Day(console, sound, songs, players)
        day.begin()
        return day

    def watch(self, console):
        """From now on to the end of the test."""
        sampler = Sampler(self.desktop, console.process.pid, self.interval)
        self.addCleanup(sampler.close)
        return sampler
