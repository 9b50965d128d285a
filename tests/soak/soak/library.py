# SPDX-License-Identifier: MIT
"""A collection of as many songs as are wanted, each with tags of its own, and a film."""

import shutil
import struct
import subprocess

from bench import media

FILM = "red.mp4"
SECONDS = 4


def _frame(name, text):
    body = b"\0" + text.encode("latin-1")
    return name.encode() + struct.pack(">IH", len(body), 0) + body


def _tags(title, artist, album):
    """An ID3v2.3 header; its size is in four times seven bits."""
    frames = _frame("TIT2", title) + _frame("TPE1", artist) + _frame("TALB", album)
    size = bytes(len(frames) >> shift & 0x7F for shift in (21, 14, 7, 0))
    return b"ID3\x03\0\0" + size + frames


def make(folder, songs):
    """Ten songs to an album, each by an artist of its own: extending any result again and again ends with no rows."""
    folder.mkdir()
    sound = folder / "sound.part"
    subprocess.run(["ffmpeg", "-nostdin", "-loglevel", "error", "-f", "lavfi", "-i",
                    f"sine=frequency=440:sample_rate=16000:duration={SECONDS}", "-c:a", "libmp3lame", "-b:a", "16k",
                    "-id3v2_version", "0", "-f", "mp3", sound], check=True)
    body = sound.read_bytes()
    sound.unlink()
    for number in range(songs):
        album = folder / f"{number // 10:04}"
        album.mkdir(exist_ok=True)
        tags = _tags(f"Song {number:05}", f"Artist {number:05}", f"Album {number // 10:04}")
        (album / f"{number:05}.mp3").write_bytes(tags + body)
    shutil.copy(media.folder() / FILM, folder / FILM)
