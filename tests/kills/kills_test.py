#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The judge of the kills finds each kind of fault."""

import copy
import random
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
import judge  # noqa: E402
from library import Library  # noqa: E402


def rows_for(library):
    """What a right store would answer."""
    songs = [{"songUri": library.url(song.place), "songTitle": song.title, "artistName": song.artist,
              "albumName": song.album, "songLength": 1, "usageCounter": song.low,
              "favorited": max(library.favorite(song))} for song in library.songs.values()]
    albums, artists = {}, {}
    for song in library.songs.values():
        albums.setdefault((song.album, song.artist), []).append(song)
        artists.setdefault(song.artist, []).append(song)
    return {
        "songs": songs,
        "favorites": [song for song in songs if song["favorited"]],
        "albums": [{"albumName": album, "artistName": artist, "albumTrackCount": len(of)}
                   for (album, artist), of in albums.items()],
        "artists": [{"artistName": artist, "numberOfSongs": len(of)} for artist, of in artists.items()],
        "playlists": [{"playlistUri": library.url(place), "playlistTrackCount": len(entries),
                       "playlistLength": sum(entry in library.songs for entry in entries),
                       "entries": [{"songUri": library.url(entry)} for entry in entries]}
                      for place, entries in library.playlists.items()],
        "videos": [{"url": library.url(place)} for place in library.videos],
        "remembered": [],
        "leftovers": {"songs without a place": [{"n": 0}]},
    }


class JudgeTest(unittest.TestCase):
    def setUp(self):
        folder = Path(self.enterContext(tempfile.TemporaryDirectory()))
        for name in ("short.mp3", "silent.mp4"):
            (folder / name).write_bytes(b"sound")
        self.media_library = Library(folder / "media", folder / "scratch", folder, random.Random(1))
        self.media_library.fill(20)
        for _ in range(5):
            self.media_library.change(running=False)
        self.rows = rows_for(self.media_library)
        self.url = self.rows["songs"][0]["songUri"]
        self.song = self.media_library.songs[judge.place_of(self.url, self.media_library)]

    def assert_found(self, text, rows=None):
        found = judge.faults(rows or self.rows, self.media_library)
        self.assertTrue(any(text in fault for fault in found), found)

    def test_a_right_store(self):
        self.assertEqual(judge.faults(self.rows, self.media_library), [])
        self.assertEqual(self.media_library.tree(),
                         sorted([*self.media_library.songs, *self.media_library.videos, *self.media_library.playlists]))

    def test_rows(self):
        for part, what in (("songs", "song"), ("albums", "album"), ("artists", "artist"), ("playlists", "playlist"),
                           ("videos", "video")):
            with self.subTest(part):
                doubled, missing = copy.deepcopy(self.rows), copy.deepcopy(self.rows)
                doubled[part].append(doubled[part][0])
                missing[part].pop()
                self.assert_found(f"{what} too much", doubled)
                self.assert_found(f"{what} missing", missing)

    def test_half_a_playlist(self):
        self.rows["playlists"][0]["entries"].pop()
        self.assert_found("playlist missing")

    def test_old_tags(self):
        self.rows["songs"][0]["songTitle"] = "Old"
        self.assert_found("song too much")

    def test_leftovers(self):
        self.rows["leftovers"]["songs without a place"][0]["n"] = 2
        self.assert_found("2 songs without a place")

    def test_counts_may_be_one_playing_behind(self):
        said = [f"playing {self.url}", f"played {self.url}"] * 2
        for count, right in ((0, False), (1, True), (2, True), (3, False)):
            with self.subTest(count):
                self.song.low = self.song.high = 0
                self.assertEqual(judge.take_deeds(said, self.media_library), [])
                self.rows["songs"][0]["usageCounter"] = count
                found = judge.faults(copy.deepcopy(self.rows), self.media_library)
                self.assertEqual(found == [], right, found)

    def test_what_was_confirmed_stays(self):
        said = [f"playing {self.url}", f"counted {self.url} 1", f"played {self.url}"]
        self.assertEqual(judge.take_deeds(said, self.media_library), [])
        self.assert_found("count of")

    def test_marks(self):
        place = next(place for place, song in self.media_library.songs.items() if not song.listable)
        url = self.media_library.url(place)
        row = next(row for row in self.rows["songs"] if row["songUri"] == url)
        judge.take_deeds([f"marking {url} 1"], self.media_library)
        for value in (False, True):
            self.media_library.songs[place].marks = frozenset({False, True})
            row["favorited"] = value
            rows = copy.deepcopy(self.rows)
            rows["favorites"] = [song for song in rows["songs"] if song["favorited"]]
            self.assertEqual(judge.faults(rows, self.media_library), [])
        judge.take_deeds([f"marking {url} 0", f"marked {url}"], self.media_library)
        self.rows["favorites"] = [song for song in self.rows["songs"] if song["favorited"]]
        self.assert_found("mark of")


if __name__ == "__main__":
    result = unittest.main(exit=False).result
    if not result.wasSuccessful():
        sys.exit(1)
    print(f"reliability: kills-judge: {result.testsRun} kinds of right and wrong stores told apart")
