#!/bin/sh
# SPDX-License-Identifier: MIT
# make-media.sh folder
# Short tones for the renderers that play real media. What is there already is kept.
set -eu
mkdir -p "$1"
cd "$1"
tone() {
    file=$1 seconds=$2 frequency=$3
    shift 3
    [ -s "$file" ] && return
    ffmpeg -nostdin -loglevel error -y -f lavfi -i "sine=frequency=$frequency:duration=$seconds" "$@" "part-$file"
    mv "part-$file" "$file"
}
tone short.wav 0.7 440
tone short.ogg 0.7 550 -c:a libvorbis
tone short.mp3 0.7 660 -c:a libmp3lame
tone long.flac 10 330 -metadata title="Long tone" -metadata artist="Contract"
