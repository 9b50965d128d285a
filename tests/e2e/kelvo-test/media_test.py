#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""kelvo-test media.

Environment besides: KELVO_TEST_LEAK_OPTIONS, what the leak checker is told, and KELVO_TEST_GLIB_TABLES, what is loaded
for it; GST_REGISTRY."""
import json
import os
import pathlib
import resource
import signal
import subprocess
import time
import unittest

from program import PATIENCE, PROGRAM
from recordings import RecordingCase

ALL = ["song-01.wav", "song-02.flac", "song-03.mp3", "song-04.m4a", "song-05.opus", "song-06.ogg", "video-07.mp4",
       "video-08.webm", "video-09.avi"]
CODECS = {"wav": ["pcm_s16le"], "flac": ["flac"], "mp3": ["mp3"], "m4a": ["aac"], "opus": ["opus"], "ogg": ["vorbis"],
          "mp4": ["aac", "h264"], "webm": ["vorbis", "vp8"], "avi": ["mp3", "mpeg4"]}

# They are served like other media, and as badly as wished.
SERVED = """
media:
  song: {sound: timecode, seconds: 20, format: mp3}
  gone: {sound: timecode, seconds: 5, fault: {status: 404}}
  film: {video: timecode, seconds: 5, title: film}
steps:
  - playUri: $song
  - expect: {state: Playing, metadata: {title: song, duration: 20 ± 1}, within: 20 s}
  - setPosition: 15
  - expect: {position: 15 s ± 2 s, within: 20 s}
  - playUri: $gone
  - expect: {error: any, within: 20 s}
  - playUri: $film
  - expect: {state: Playing, metadata: {title: film}, within: 20 s}
"""


def probe(path):
    """What another program finds in a file: its codecs, tags and seconds."""
    done = subprocess.run(["ffprobe", "-v", "error", "-show_entries", "stream=codec_name,channels:stream_tags:format=duration:format_tags",
                           "-of", "json", path], capture_output=True, text=True, timeout=PATIENCE, check=True)
    found = json.loads(done.stdout)
    tags = {}
    for part in (*found["streams"], found["format"]):
        tags |= {name.lower(): text for name, text in part.get("tags", {}).items()}
    return (sorted(stream["codec_name"] for stream in found["streams"]), tags, float(found["format"]["duration"]),
            {stream["channels"] for stream in found["streams"] if "channels" in stream})


class Media(RecordingCase):
    def environment(self, **changes):
        options = os.environ.get("KELVO_TEST_LEAK_OPTIONS", "")
        leaks = {"ASAN_OPTIONS": f"{options}:verify_asan_link_order=0", "LD_PRELOAD": os.environ["KELVO_TEST_GLIB_TABLES"]}
        return super().environment(**{**leaks, **changes})

    def setUp(self):
        super().setUp()
        self.media = self.folder / "media"

    def names(self):
        return sorted(path.name for path in self.media.iterdir())

    def check_one_complaint(self, done, begin):
        self.assertEqual(done.code, 2)
        self.assertEqual(len(done.err.splitlines()), 1, done.err)
        self.assertTrue(done.err.startswith(f"kelvo-test: {begin}"), done.err)

    def test_one_of_each(self):
        done = self.run_program("media", str(self.media), "--seconds", "2")
        self.assertEqual((done.code, done.err), (0, ""))
        self.assertEqual(self.names(), ALL)
        lines = done.out.splitlines()
        self.assertEqual(lines[:2], ["song-01.wav: begins at 01:00:00:00, 2 s", "song-02.flac: begins at 02:00:00:00, 2 s"])
        self.assertEqual(lines[9:], [f"9 of 9 media made in {self.media}"])
        for name in ALL:
            codecs, tags, seconds, channels = probe(self.media / name)
            suffix = name.split(".")[1]
            self.assertEqual((codecs, channels), (CODECS[suffix], {2}), name)
            self.assertAlmostEqual(seconds, 2, delta=0.06, msg=name)
            self.assertEqual((tags["title"], tags["artist"]), (name, "Kelvo"))
            # AVI has no place for it.
            if suffix != "avi":
                self.assertEqual(tags["album"], "timecode", name)

    def test_some_of_some(self):
        words = ("media", str(self.media), "--format", "mp3,avi,flac", "--songs", "2", "--videos", "0", "--seconds", "1")
        names = ["song-01.flac", "song-02.flac", "song-03.mp3", "song-04.mp3"]
        self.assertEqual(self.run_program(*words).code, 0)
        self.assertEqual(self.names(), names)
        # Once more: in the place of those that are there.
        (self.media / names[0]).write_text("old", encoding="utf-8")
        self.assertEqual(self.run_program(*words).code, 0)
        self.assertEqual(self.names(), names)
        self.assertEqual(probe(self.media / names[0])[1]["title"], names[0])

    def test_an_interruption_leaves_nothing_half_made(self):
        process = self.start_long_one()
        code, seconds = self.interrupt(process)
        self.assertEqual(code, 2)
        self.assertLess(seconds, 5)
        self.assertEqual(process.stdout.read(), "kelvo-test: video-01.webm was not made: interrupted\n"
                                                f"0 of 1 media made in {self.media}\n")
        self.assertEqual(self.names(), [])
        self.assertEqual(self.makers(), [])

    def test_nobody_goes_on_without_the_program(self):
        process = self.start_long_one()
        process.kill()
        process.wait(PATIENCE)
        deadline = time.monotonic() + PATIENCE
        while self.makers() and time.monotonic() < deadline:
            time.sleep(0.05)
        self.assertEqual(self.makers(), [])
        self.assertEqual(list(self.media.glob("video*")), [])

    def start_long_one(self):
        process = self.start_program("media", str(self.media), "--format", "webm", "--seconds", "86400")
        deadline = time.monotonic() + PATIENCE
        while not any(path.stat().st_size for path in self.media.glob(".kelvo-media-*/*")):
            self.assertLess(time.monotonic(), deadline, "nothing is made")
            time.sleep(0.05)
        self.assertEqual(len(self.makers()), 1)
        return process

    def makers(self):
        """Processes that make something in the folder."""
        found = []
        for path in pathlib.Path("/proc").glob("[0-9]*/cmdline"):
            try:
                words = path.read_bytes().decode(errors="replace")
            except OSError:
                continue
            if "kelvo-media-maker" in words and str(self.media) in words:
                found.append(path.parent.name)
        return found

    def test_a_folder_that_cannot_be(self):
        file = self.write("", "file")
        done = self.run_program("media", f"{file}/media")
        self.check_one_complaint(done, f"nothing can be written in {file}/media: ")
        self.assertEqual(done.out, "")

    def test_a_full_disk(self):
        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (100_000, 100_000))
        done = subprocess.run([PROGRAM, "media", str(self.media), "--seconds", "2"], env=self.environment(), text=True,
                              capture_output=True, preexec_fn=limit, timeout=PATIENCE, check=False)
        self.assertEqual(done.returncode, 2, done.stderr)
        # Told once: the others would not be there, either.
        self.assertRegex(done.stderr, r"^kelvo-test: song-01\.wav was not made: .*write.*\n$")
        self.assertEqual(done.stdout, f"0 of 9 media made in {self.media}\n")
        self.assertEqual(self.names(), [])

    def test_what_is_missing_is_named_and_the_others_are_made(self):
        plugins = self.folder / "plugins"
        plugins.mkdir()
        found = subprocess.run(["gst-inspect-1.0", "coreelements"], capture_output=True, text=True, timeout=PATIENCE, check=True)
        [system] = [pathlib.Path(line.split()[-1]).parent for line in found.stdout.splitlines() if "Filename" in line]
        for library in system.glob("libgst*.so"):
            if library.name != "libgstlame.so":
                (plugins / library.name).symlink_to(library)
        done = self.run_program("media", str(self.media), "--seconds", "1", "--format", "flac,mp3,ogg,avi",
                                GST_PLUGIN_SYSTEM_PATH_1_0=str(plugins), GST_REGISTRY=str(self.folder / "registry"))
        self.assertEqual(done.code, 2)
        lacks = "GStreamer lacks lamemp3enc (Debian package gstreamer1.0-plugins-good)"
        self.assertEqual(done.err, f"kelvo-test: song-02.mp3 was not made: {lacks}\n"
                                   f"kelvo-test: video-04.avi was not made: {lacks}\n")
        self.assertEqual(self.names(), ["song-01.flac", "song-03.ogg"])

    def test_media_of_scenarios(self):
        done = self.run_program("run", self.write(SERVED, "served.yaml"), "--on", "KelvoGstRenderer",
                                KELVO_PLUGINS="gst-renderer", KELVO_AUDIO_SINK="fakesink sync=true",
                                KELVO_VIDEO_SINK="fakesink sync=true", ASAN_OPTIONS="detect_leaks=0:verify_asan_link_order=0")
        self.assertEqual(done.code, 0, done.out + done.err)

    def test_scenarios_know_the_formats(self):
        for medium, formats in (("sound: timecode, format: mkv", "wav, flac, mp3, m4a, opus, ogg"),
                                ("video: timecode, format: mkv", "mp4, webm, avi")):
            done = self.run_program("run", self.write(f"media: {{a: {{{medium}}}}}\nsteps: [play]\n", "a.yaml"),
                                    "--on", "KelvoSimulatorA")
            self.assertEqual(done.code, 2)
            self.assertIn(formats, done.err)
        many = "".join(f"  m{i}: {{sound: timecode}}\n" for i in range(24))
        done = self.run_program("run", self.write(f"media:\n{many}steps: [play]\n", "a.yaml"), "--on", "KelvoSimulatorA")
        self.assertIn("a.yaml:25:", done.err)
        self.assertIn("at most 23 media carry a time code", done.err)

    def test_wrong_calls(self):
        there = str(self.media)
        self.check_refusals("media", [
            ([], "media takes one folder"),
            (["a", "b"], "media takes one folder"),
            ([there, "--seconds", "0"], '--seconds takes a number from 1 to 86400, not "0"'),
            ([there, "--songs", "many"], '--songs takes a number from 0 to 23, not "many"'),
            ([there, "--format", "mp3,mid"],
             'there is no format "mid": choose of wav, flac, mp3, m4a, opus, ogg, mp4, webm, avi'),
            ([there, "--songs", "0", "--videos", "0"], "no songs and no videos: there is nothing to make"),
            ([there, "--songs", "4"],
             "these are 27 media, and there are hours for 23: choose fewer formats, songs or videos"),
        ])
        self.assertFalse(self.media.exists())


if __name__ == "__main__":
    unittest.main()
