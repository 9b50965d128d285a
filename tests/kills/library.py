# SPDX-License-Identifier: MIT
"""The media folder: what a user does to it, and what the store has to hold afterwards."""

import dataclasses
import os
import shutil
import struct
from pathlib import Path

SONG_FOLDERS = ("", "a", "b b", "Ünïcode/déep", "Downloads")


@dataclasses.dataclass
class Song:
    """A song at its place. Counts and marks go with the file where it is moved, and stay with the place where it gets
    another content."""

    number: int
    place: str
    title: str = ""
    artist: str = ""
    album: str = ""
    low: int = 0  # the least count that the store may have
    high: int = 0
    marks: frozenset = frozenset({False})  # what the store may say
    listable: bool = False  # listed songs are never marked by hand, which an edited list would undo

    @property
    def downloaded(self):
        return self.place.startswith("Downloads/")


def _frame(name, text):
    body = b"\x01" + text.encode("utf-16")
    return name + struct.pack(">IH", len(body), 0) + body


def _tag(song):
    """An ID3v2.3 tag, https://id3.org/id3v2.3.0"""
    frames = _frame(b"TIT2", song.title) + _frame(b"TPE1", song.artist) + _frame(b"TALB", song.album)
    # No two of the same size: clocks of file systems are coarse, and what differs in neither is taken for the same.
    frames += _frame(b"TENC", "x" * int(song.title.split()[1]))
    size = bytes((len(frames) >> shift) & 0x7F for shift in (21, 14, 7, 0))
    return b"ID3\x03\x00\x00" + size + frames


def _without_tag(data):
    if not data.startswith(b"ID3"):
        return data
    size = 0
    for byte in data[6:10]:
        size = size << 7 | byte
    return data[10 + size:]


class Library:
    """The files of one media folder and what is known of them. All choices are made by `random`."""

    def __init__(self, folder, scratch, media, random):
        self.folder = folder
        self._scratch = scratch  # on the same file system, outside of the media folder
        self._random = random
        self._sound = _without_tag((media / "short.mp3").read_bytes())
        self._video = media / "silent.mp4"
        self.songs = {}  # by place
        self.gone = {}  # songs that were taken away, by place: they may come back
        self._long_gone = set()
        self._touched = set()  # places; what more than one thing happens to at once cannot be told from something else
        self.videos = set()
        self.playlists = {}  # entries by place
        self.deeds = []  # since they were last asked for, in words
        self._number = 0
        folder.mkdir()
        scratch.mkdir()

    def path(self, place):
        return self.folder / place

    def url(self, place):
        return self.path(place).as_uri()

    # Single deeds

    def _retag(self, song):
        self._number += 1
        song.title = f"Title {self._number:04}"
        song.artist = f"Artist {self._random.randrange(9)}"
        song.album = f"Album {self._random.randrange(12)}"

    def _put(self, song, in_place=False):
        """Most programs write a new file and rename it, some write into the old one."""
        path = self.path(song.place)
        path.parent.mkdir(parents=True, exist_ok=True)
        data = _tag(song) + self._sound
        if in_place:
            path.write_bytes(data)
            return
        new = self._scratch / "new"
        new.write_bytes(data)
        os.replace(new, path)

    def _new_place(self, ending):
        self._number += 1
        folder = self._random.choice(SONG_FOLDERS)
        return f"{folder}/{self._number:04} #%.{ending}".lstrip("/")

    def _some_song(self):
        places = sorted(set(self.songs) - self._touched)
        place = self._random.choice(places) if places else None
        self._touched.add(place)
        return place

    def add_song(self):
        place = self._new_place("mp3")
        song = Song(self._number, place, listable=self._number % 3 == 0)
        self._retag(song)
        self._put(song)
        self.songs[place] = song
        self._touched.add(place)
        self.deeds.append(f"added {place}")

    def remove_song(self):
        place = self._some_song()
        if place:
            self.path(place).unlink()
            song = self.songs.pop(place)
            # Marks go with the file, counts wait for its place to be filled again.
            song.marks = frozenset({False})
            self.gone[place] = song
            self.deeds.append(f"removed {place}")

    def bring_song_back(self):
        # What was taken away just now is seen as gone before it comes back.
        places = sorted(place for place in self.gone if place in self._long_gone)
        if places:
            place = self._random.choice(places)
            song = self.gone.pop(place)
            self._put(song)
            self.songs[place] = song
            self._touched.add(place)
            self.deeds.append(f"brought back {place}")

    def change_song(self):
        place = self._some_song()
        if place:
            self._retag(self.songs[place])
            self._put(self.songs[place], in_place=self._random.random() < 0.3)
            self.deeds.append(f"changed {place}")

    def move_song(self):
        place = self._some_song()
        if place and not self.songs[place].listable:
            song = self.songs.pop(place)
            song.place = self._new_place("mp3")
            self._touched.add(song.place)
            self.path(song.place).parent.mkdir(parents=True, exist_ok=True)
            os.rename(self.path(place), self.path(song.place))
            self.songs[song.place] = song
            self.deeds.append(f"moved {place} to {song.place}")

    def swap_songs(self):
        """Counts and marks stay where they are: both places just have another content."""
        places = (self._some_song(), self._some_song())
        if None in places:
            return
        one, other = (self.songs[place] for place in places)
        new = self._scratch / "new"
        os.rename(self.path(one.place), new)
        os.rename(self.path(other.place), self.path(one.place))
        os.rename(new, self.path(other.place))
        self.deeds.append(f"swapped {one.place} and {other.place}")
        for name in ("title", "artist", "album"):
            mine, its = getattr(one, name), getattr(other, name)
            setattr(one, name, its)
            setattr(other, name, mine)

    def add_video(self):
        place = self._new_place("mp4")
        self.path(place).parent.mkdir(parents=True, exist_ok=True)
        shutil.copy(self._video, self._scratch / "new")
        os.replace(self._scratch / "new", self.path(place))
        self.videos.add(place)

    def move_video(self):
        if self.videos:
            place = self._random.choice(sorted(self.videos))
            new = self._new_place("mp4")
            self.path(new).parent.mkdir(parents=True, exist_ok=True)
            os.rename(self.path(place), self.path(new))
            self.videos.remove(place)
            self.videos.add(new)

    def remove_video(self):
        if self.videos:
            place = self._random.choice(sorted(self.videos))
            self.path(place).unlink()
            self.videos.remove(place)

    def _write_list(self, place, entries):
        lines = [self.url(entry) for entry in entries]
        if place.endswith(".pls"):
            pairs = [f"File{number}={line}" for number, line in enumerate(lines, 1)]
            lines = ["[playlist]", *pairs, f"NumberOfEntries={len(lines)}", "Version=2"]
        else:
            lines = ["#EXTM3U", *lines]
        new = self._scratch / "new"
        new.write_text("\n".join(lines) + "\n")
        os.replace(new, self.path(place))
        self.playlists[place] = list(entries)

    def write_playlist(self):
        place = f"List {self._random.randrange(6)}.{self._random.choice(('m3u', 'pls'))}"
        if self.songs:
            self._write_list(place, self._random.choices(sorted(self.songs), k=self._random.randrange(1, 40)))

    def write_favorites(self):
        listable = sorted(place for place, song in self.songs.items() if song.listable)
        if listable:
            many = self._random.randrange(1, len(listable) + 1)
            self._write_list("Favorites.m3u", self._random.sample(listable, many))

    def remove_playlist(self):
        places = sorted(set(self.playlists) - {"Favorites.m3u"})
        if places:
            place = self._random.choice(places)
            self.path(place).unlink()
            del self.playlists[place]

    # Many of them

    def fill(self, songs):
        for _ in range(songs):
            self.add_song()
        self.add_video()
        self.write_playlist()
        self.write_favorites()

    def change(self, running):
        """A few changes at once. What looks like a removal to who reads one folder after the other, as a move does,
        comes while nothing runs."""
        many = self._random.randrange(4, 16)
        deeds = [(self.add_song, 6), (self.remove_song, 3), (self.bring_song_back, 3), (self.change_song, 5),
                 (self.write_playlist, 2), (self.write_favorites, 2), (self.remove_playlist, 1)]
        if not running:
            deeds += [(self.move_song, 6), (self.swap_songs, 1), (self.add_video, 1), (self.move_video, 1),
                      (self.remove_video, 1)]
        self._long_gone = set(self.gone)
        self._touched.clear()
        for deed in self._random.choices([deed for deed, _ in deeds], [weight for _, weight in deeds], k=many):
            deed()

    # What has to be

    def listed(self):
        return set(self.playlists.get("Favorites.m3u", ()))

    def favorite(self, song):
        """What the store may say of the song."""
        return frozenset({song.place in self.listed()}) if song.listable else song.marks

    def tree(self):
        return sorted(str(path.relative_to(self.folder)) for path in Path(self.folder).rglob("*") if path.is_file())
