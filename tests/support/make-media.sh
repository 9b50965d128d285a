#!/bin/sh
# SPDX-License-Identifier: MIT
# make-media.sh folder
# Makes the media that tests play: short tagged ones that are sound, and broken ones. Does nothing when the folder
# holds the set of this script already.
set -eu
stamp="made-by-$(cksum < "$0" | cut -d ' ' -f 1)"
mkdir -p "$1"
cd "$1"
[ -e "$stamp" ] && exit 0
rm -rf ./*

make() { ffmpeg -nostdin -v error -y "$@"; }
tone() { echo "sine=frequency=$1:sample_rate=44100:duration=$2"; }
picture() { echo "testsrc2=size=${2:-160x120}:rate=25:duration=$1"; }

# --- sound ones ---
make -f lavfi -i "testsrc2=size=320x240:rate=1:duration=1" -frames:v 1 cover.png
tags() { echo "-metadata title=$1 -metadata artist=Artist_$1 -metadata album=Album_$1 -metadata genre=Rock"; }
# shellcheck disable=SC2046
make -f lavfi -i "$(tone 440 3)" -i cover.png -map 0 -map 1 -c:v copy -disposition:v attached_pic -b:a 128k \
    $(tags tone) tone.mp3
# shellcheck disable=SC2046
for kind in ogg flac opus mka; do make -f lavfi -i "$(tone 550 2)" $(tags "$kind") "tone.$kind"; done
# shellcheck disable=SC2046
make -f lavfi -i "$(tone 660 2)" -c:a aac $(tags m4a) tone.m4a
make -f lavfi -i "$(tone 440 1)" -b:a 128k short.mp3
make -f lavfi -i "$(tone 440 20)" -i cover.png -map 0 -map 1 -c:v copy -disposition:v attached_pic -b:a 128k \
    -metadata title=covered covered.mp3
# Without a header that tells its length and bit rate, both of which rise while it plays.
make -f lavfi -i "anoisesrc=duration=6:amplitude=0.9,volume='if(lt(t,2),0,1)':eval=frame" -q:a 2 -write_xing 0 rising.mp3
make -f lavfi -i "$(tone 440 20)" -b:a 128k -metadata title=long long.mp3
make -f lavfi -i "$(tone 440 0.3)" blip.flac
# What every renderer is held to its contract with: three short ones to run through, a long one to move in.
make -f lavfi -i "$(tone 440 0.7)" blip.wav
make -f lavfi -i "$(tone 550 0.7)" -c:a libvorbis blip.ogg
make -f lavfi -i "$(tone 660 0.7)" -b:a 128k blip.mp3
make -f lavfi -i "$(tone 330 10)" -metadata title="Long tone" -metadata artist=Contract long.flac
h264="-c:v libx264 -preset ultrafast -pix_fmt yuv420p -g 25"
# shellcheck disable=SC2086
make -f lavfi -i "$(picture 2)" -f lavfi -i "$(tone 330 2)" $h264 -c:a aac -movflags +faststart \
    -metadata title=clip clip.mp4
make -f lavfi -i "$(picture 2)" -f lavfi -i "$(tone 330 2)" -c:v libvpx -deadline realtime -c:a libvorbis clip.webm
# shellcheck disable=SC2086
make -f lavfi -i "$(picture 10)" -f lavfi -i "$(tone 330 10)" $h264 -c:a aac -movflags +faststart long.mp4
# shellcheck disable=SC2086
make -f lavfi -i "$(picture 2)" $h264 silent.mp4
# shellcheck disable=SC2086
for colour in red blue; do
    make -f lavfi -i "color=c=$colour:size=160x120:rate=25:duration=20" $h264 "$colour.mp4"
done
# Each of its pixels is twice as wide as high.
# shellcheck disable=SC2086
make -f lavfi -i "$(picture 2),setsar=2/1" $h264 wide.mp4

# --- broken ones ---
: > empty.mp3
head -c 300000 /dev/urandom > random.mp3
cut_to() { head -c "$(($(wc -c < "$1") * $2 / 100))" "$1" > "$3"; }
cut_to long.mp3 50 truncated.mp3
cut_to long.mp4 50 truncated.mp4
for kind in ogg flac; do
    make -f lavfi -i "anoisesrc=duration=4:amplitude=0.3" "whole.$kind"
    cut_to "whole.$kind" 85 "truncated.$kind"
    rm "whole.$kind"
done
cut_to clip.webm 75 truncated.webm # less than a second short, however it was packed
# The index at the end, and cut off.
# shellcheck disable=SC2086
make -f lavfi -i "$(picture 2)" $h264 indexed-last.mp4
cut_to indexed-last.mp4 60 no-index.mp4
rm indexed-last.mp4
# One box that claims to be far larger than the file.
{ printf '\000\000\000\030ftypisom\000\000\002\000isomiso2\177\377\377\377moov'; head -c 4000 /dev/zero; } > huge-atom.mp4
{ printf '\000\000\000\030ftypisom\000\000\002\000isomiso2\177\377\377\377mdat'; head -c 4000 /dev/zero; } > huge-mdat.mp4
# An ID3 tag that claims to have 200 MB, and one that really has 20.
{ printf 'ID3\004\000\000\137\057\044\000'; head -c 100000 /dev/zero; } > endless-tag.mp3
{ printf 'ID3\004\000\000\011\104\132\000'; head -c 20000000 /dev/zero; cat short.mp3; } > large-tag.mp3
spoil() { # file offset bytes
    cp "$1" "$4"
    dd if=/dev/urandom of="$4" bs=1 seek="$2" count="$3" conv=notrunc status=none
}
spoil long.mp3 100000 100000 garbage.mp3
spoil long.mp4 100000 100000 garbage.mp4
make -f lavfi -i "anoisesrc=duration=5" loud.flac
spoil loud.flac 100000 100000 garbage.flac
rm loud.flac
# Streams of codecs that nobody has: the identifiers are changed to others of the same length.
make -f lavfi -i "$(tone 440 2)" -c:a mp3 known.mka
sed 's#A_MPEG/L3#A_NOPE/L9#' known.mka > unknown-codec.mka
# shellcheck disable=SC2086
make -f lavfi -i "$(picture 2)" -f lavfi -i "$(tone 330 2)" $h264 -c:a mp3 known.mkv
sed 's#A_MPEG/L3#A_NOPE/L9#' known.mkv > partly-known.mkv
rm known.mka known.mkv
printf '<!DOCTYPE html>\n<html><head><title>Not found</title></head><body><p>Sorry.</p></body></html>\n' > page.html
printf 'Just some words\nin a few lines of text.\n' > words.txt
cp cover.png picture.png
mkdir folder.mp3
touch "$stamp"
