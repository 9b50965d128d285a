# SPDX-License-Identifier: MIT
"""Whether what the store holds is what the media folder and the user's deeds ask for."""

import collections
from urllib.parse import unquote, urlparse

SECONDS = 1  # each song's length


def place_of(url, library):
    path = unquote(urlparse(url or "").path)
    prefix = f"{library.folder}/"
    return path[len(prefix):] if path.startswith(prefix) else path


def _differences(what, found, expected):
    """Rows that are missing, and those that are there too often."""
    found, expected = collections.Counter(found), collections.Counter(expected)
    return ([f"{what} missing: {row}" + (f" ({count} times)" if count > 1 else "")
             for row, count in sorted((expected - found).items(), key=str)]
            + [f"{what} too much: {row}" + (f" ({count} times)" if count > 1 else "")
               for row, count in sorted((found - expected).items(), key=str)])


def _songs(rows, library):
    found = [(place_of(row["songUri"], library), row["songTitle"], row["artistName"], row["albumName"],
              row["songLength"]) for row in rows]
    expected = [(song.place, song.title, song.artist, song.album, SECONDS) for song in library.songs.values()]
    return _differences("song", found, expected)


def _counts(rows, library):
    faults = []
    for row in rows:
        song = library.songs.get(place_of(row["songUri"], library))
        if song and not song.low <= row["usageCounter"] <= song.high:
            faults.append(f"count of {song.place}: {row['usageCounter']}, not from {song.low} to {song.high}")
    return faults


def _marks(rows, favorites, library):
    faults = []
    marked = {place_of(row["songUri"], library) for row in favorites}
    for row in rows:
        song = library.songs.get(place_of(row["songUri"], library))
        if not song:
            continue
        if bool(row["favorited"]) != (song.place in marked):
            faults.append(f"mark of {song.place}: the results disagree")
        if bool(row["favorited"]) not in library.favorite(song):
            faults.append(f"mark of {song.place}: {bool(row['favorited'])}")
    return faults + _differences("favourite", (place_of(row["songUri"], library) for row in favorites), marked)


def _groups(rows, library):
    songs = library.songs.values()
    albums = collections.Counter((song.album, song.artist) for song in songs)
    artists = collections.Counter(song.artist for song in songs)
    return (_differences("album", [(row["albumName"], row["artistName"], row["albumTrackCount"])
                                   for row in rows["albums"]],
                         [(*album, count) for album, count in albums.items()])
            + _differences("artist", ((row["artistName"], row["numberOfSongs"]) for row in rows["artists"]),
                           artists.items()))


def _playlists(rows, library):
    found = [(place_of(row["playlistUri"], library), row["playlistTrackCount"], row["playlistLength"],
              tuple(place_of(entry["songUri"], library) for entry in row["entries"])) for row in rows]
    expected = [(place, len(entries), SECONDS * sum(entry in library.songs for entry in entries), tuple(entries))
                for place, entries in library.playlists.items()]
    return _differences("playlist", found, expected)


def faults(rows, library):
    """What is wrong with these rows (of store-rows), as texts; afterwards the library takes their counts and marks for
    what is known."""
    found = _songs(rows["songs"], library)
    found += _counts(rows["songs"], library)
    found += _marks(rows["songs"], rows["favorites"], library)
    found += _groups(rows, library)
    found += _playlists(rows["playlists"], library)
    found += _differences("video", (place_of(row["url"], library) for row in rows["videos"]), library.videos)
    found += [f"{count[0]['n']} {what}" for what, count in rows["leftovers"].items() if count[0]["n"]]
    found += [f"remembered although it is there: {row['url']}" for row in rows["remembered"]
              if place_of(row["url"], library) in library.songs]
    for row in rows["songs"]:
        song = library.songs.get(place_of(row["songUri"], library))
        if song:
            song.low = song.high = row["usageCounter"]
            song.marks = frozenset({bool(row["favorited"])})
    return found


def take_deeds(lines, library):
    """What the program has said before it was killed: counts may be one playing behind what was played, marks are
    old or new while they are being set. Returns what is wrong already."""
    wrong = []
    begun, played, confirmed = collections.Counter(), collections.Counter(), {}
    setting = None
    for line in lines:
        what, _, rest = line.partition(" ")
        if what in ("playing", "played", "counted", "marking", "marked"):
            url, _, value = rest.partition(" ")
            song = library.songs.get(place_of(url, library))
            if not song:
                continue
        if what == "playing":
            begun[song.place] += 1
        elif what == "played":
            played[song.place] += 1
        elif what == "counted":
            if int(value) > song.high + begun[song.place]:
                wrong.append(f"count of {song.place}: {value} confirmed, {song.high} before "
                             f"{begun[song.place]} playings")
            confirmed[song.place] = int(value)
        elif what == "marking":
            setting = (song, value == "1")
            song.marks |= {setting[1]}
        elif what == "marked" and setting:
            song.marks = frozenset({setting[1]})
    for place, song in library.songs.items():
        song.high += begun[place]
        song.low = max(song.low + max(0, played[place] - 1), confirmed.get(place, 0))
    return wrong
