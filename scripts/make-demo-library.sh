#!/bin/bash
# SPDX-License-Identifier: MIT
# make-demo-library.sh FOLDER
# Makes a small music and video library to try the console with, all of it computed by ffmpeg: tagged songs of
# several artists and albums with covers, two videos, and the playlist FOLDER/demo.pls. It is made once; a folder
# that is complete is left alone. Takes some 20 seconds on two cores.
set -euo pipefail

folder=${1:?usage: make-demo-library.sh FOLDER}
version=1
if [ "$(cat "$folder/.complete" 2>/dev/null)" = "$version" ]; then
    echo "==> demo library: $folder"
    exit 0
fi
echo "==> demo library: making it in $folder"
mkdir -p "$(dirname "$folder")"
# Made beside its place and moved when it is whole: an interrupted run leaves no half library behind.
work=$(mktemp -d "$folder.XXXXXX")
trap 'rm -rf "$work"' EXIT
font=/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf

run_ffmpeg() { nice ffmpeg -nostdin -hide_banner -loglevel error -y "$@"; }

# phrase ROOT BEAT CHORDS MELODY: an ffmpeg filter graph, one segment per chord, four melody notes in each.
# ROOT: frequency of the key's first note. BEAT: seconds. CHORDS: degrees of the major scale (1..7), three notes
# of the scale each. MELODY: steps of the pentatonic scale, one digit (0..9) per beat, "-" a rest.
phrase() {
    awk -v root="$1" -v beat="$2" -v chords="$3" -v melody="$4" '
    function tone(semitones) { return sprintf("%.3f", root * 2 ^ (semitones / 12)) }
    function degree(n) { return scale[(n - 1) % 7 + 1] + 12 * int((n - 1) / 7) }
    function pluck(note) { return note == "-" ? 0 : tone(12 + pentatonic[note + 1]) }
    BEGIN {
        split("0 2 4 5 7 9 11", scale, " ")
        split("0 2 4 7 9 12 14 16 19 21", pentatonic, " ")
        count = length(chords)
        for (i = 1; i <= count; ++i) {
            first = substr(chords, i, 1)
            for (k = 1; k <= 4; ++k)
                note[k] = pluck(substr(melody, ((i - 1) * 4 + k - 1) % length(melody) + 1, 1))
            seconds = 4 * beat
            # ld(0): time within the beat, ld(1): the beat note, ld(2): fades the segment out so that it ends without a click
            printf "aevalsrc=sample_rate=32000:duration=%s:exprs=", seconds
            printf "'\''st(0,mod(t,%s));", beat
            printf "st(1,if(lt(t,%s),%s,if(lt(t,%s),%s,if(lt(t,%s),%s,%s))));", \
                beat, note[1], 2 * beat, note[2], 3 * beat, note[3], note[4]
            printf "st(2,min(1,min(t*200,(%s-t)*40)));", seconds
            printf "ld(2)*(0.22*exp(-4*ld(0))*min(1,ld(0)*300)*(sin(2*PI*ld(1)*ld(0))+0.3*sin(4*PI*ld(1)*ld(0)))"
            printf "+0.06*exp(-0.6*t)*(sin(2*PI*%s*t)+sin(2*PI*%s*t)+sin(2*PI*%s*t))", \
                tone(degree(first)), tone(degree(first + 2)), tone(degree(first + 4))
            printf "+0.16*exp(-1.2*mod(t,%s))*sin(2*PI*%s*t))'\''[c%d];", 2 * beat, tone(degree(first) - 12), i
        }
        for (i = 1; i <= count; ++i) printf "[c%d]", i
        printf "concat=n=%d:v=0:a=1,", count
        # A little room, and width from two slightly different echoes.
        printf "pan=stereo|c0=c0|c1=c0,aecho=0.9:0.7:70|130:0.22|0.12,haas=side_gain=0.5"
    }'
}

# cover FILE COLOUR1 COLOUR2 TITLE ARTIST
cover() {
    run_ffmpeg -f lavfi -i "gradients=s=400x400:c0=$2:c1=$3:x0=0:y0=0:x1=400:y1=400:n=2:d=1" -frames:v 1 -vf \
        "drawbox=x=40:y=250:w=320:h=2:color=white@0.7:t=fill,drawtext=fontfile=$font:text='$4':x=40:y=200:fontsize=34:fontcolor=white,drawtext=fontfile=$font:text='$5':x=40:y=270:fontsize=22:fontcolor=white@0.9" \
        -pix_fmt yuvj420p -q:v 3 "$1"
}

# song ARTIST ALBUM YEAR GENRE NUMBER TITLE FORMAT ROOT BEAT CHORDS MELODY
song() {
    local dir="$work/Music/$1/$2" file picture=()
    file="$dir/$(printf '%02d' "$5") - $6.$7"
    local tags=(-metadata "artist=$1" -metadata "album=$2" -metadata "date=$3" -metadata "genre=$4"
        -metadata "track=$5" -metadata "title=$6")
    local codec=(-c:a libmp3lame -q:a 4 -id3v2_version 3)
    case $7 in
        ogg) codec=(-c:a libvorbis -q:a 4) ;;
        flac) codec=(-c:a flac -sample_fmt s16) ;;
        m4a) codec=(-c:a aac -b:a 128k) ;;
    esac
    # The Ogg muxer takes no picture; players find the cover in the folder.
    if [ "$7" != ogg ]; then
        picture=(-i "$dir/cover.jpg" -map 1:v -c:v copy -disposition:v attached_pic)
    fi
    run_ffmpeg -filter_complex_threads 1 -f lavfi -i "$(phrase "$8" "$9" "${10}" "${11}")" "${picture[@]}" \
        -map 0:a "${codec[@]}" "${tags[@]}" "$file"
    echo "    $1 - $6"
}

# video FILE TITLE SOURCE ROOT BEAT CHORDS MELODY
video() {
    run_ffmpeg -filter_complex_threads 1 -f lavfi -i "$3" -f lavfi -i "$(phrase "$4" "$5" "$6" "$7")" -shortest \
        -c:v libx264 -preset ultrafast -g 50 -pix_fmt yuv420p -c:a aac -b:a 128k -movflags +faststart \
        -metadata "title=$2" -metadata "artist=KELVO demo" "$work/Videos/$1"
    echo "    $2"
}

mkdir -p "$work/Music/Ada Lark/First Light" "$work/Music/Ada Lark/Long Shadows" \
    "$work/Music/The Quiet Harbour/Tides" "$work/Music/Brass Fern/Small Rooms" "$work/Videos"
cover "$work/Music/Ada Lark/First Light/cover.jpg" 0xf2994a 0xeb5757 "First Light" "Ada Lark"
cover "$work/Music/Ada Lark/Long Shadows/cover.jpg" 0x56407a 0x1f2f55 "Long Shadows" "Ada Lark"
cover "$work/Music/The Quiet Harbour/Tides/cover.jpg" 0x2193b0 0x134e5e "Tides" "The Quiet Harbour"
cover "$work/Music/Brass Fern/Small Rooms/cover.jpg" 0x3f7d4e 0x93a33b "Small Rooms" "Brass Fern"

# Two workers share the list; each line is one piece.
songs() {
    song "Ada Lark" "First Light" 2021 Folk 1 "Morning Bus" mp3 261.626 0.45 15641564145115 "024-4202457-5420797542024-0245"
    song "Ada Lark" "First Light" 2021 Folk 2 "Paper Kites" mp3 293.665 0.36 1451645145164511 "5-7-9-7-5-4-2-4-0-2-4-5-4-2-0-"
    song "Ada Lark" "Long Shadows" 2023 Folk 1 "Streetlamp Waltz" flac 220.000 0.50 64156415641 "4-2-0-2-4-5-7-5"
    song "The Quiet Harbour" "Tides" 2019 Ambient 1 "Low Water" ogg 196.000 0.80 16451645 "0---4---2---5---4---7---5-4-2-0-"
    song "The Quiet Harbour" "Tides" 2019 Ambient 2 "Lighthouse" ogg 174.614 0.70 1564156415 "7-5-4-2-0-2-4-5-"
}
more() {
    song "The Quiet Harbour" "Tides" 2019 Ambient 3 "Homeward" m4a 207.652 0.60 415641564151 "0245754202457542"
    song "Brass Fern" "Small Rooms" 2022 Jazz 1 "Kettle Song" mp3 233.082 0.30 251625162511625111 "0-24-5-7-97-54-20"
    song "Brass Fern" "Small Rooms" 2022 Jazz 2 "Three Steps Up" m4a 246.942 0.34 14151415645115 "024579-975420-024"
    video "Drifting Colours.mp4" "Drifting Colours" \
        "gradients=s=640x360:r=25:d=24:n=4:speed=0.02:c0=0x14213d:c1=0xfca311:c2=0x2a9d8f:c3=0xe76f51" 261.626 0.5 156415641564 "0-2-4-5-7-5-4-2-"
    video "Growing Cells.mp4" "Growing Cells" \
        "life=s=160x90:r=25:mold=10:life_color=0x2a9d8f:death_color=0x264653:mold_color=0x14213d:ratio=0.25:seed=7,trim=duration=20,scale=640:360:flags=neighbor" 196 0.5 1645164516 "4-5-7-9-7-5-4-0-"
}
songs & first=$!
more & second=$!
failed=0
wait "$first" || failed=1
wait "$second" || failed=1
[ "$failed" = 0 ] || { echo "error: the demo library could not be made" >&2; exit 1; }

# The list names its files relative to itself, so the folder can be moved.
write_playlist() {
    local entry n=0 length title
    echo "[playlist]"
    for entry in \
        "Music/Ada Lark/First Light/01 - Morning Bus.mp3" \
        "Music/The Quiet Harbour/Tides/02 - Lighthouse.ogg" \
        "Music/Brass Fern/Small Rooms/01 - Kettle Song.mp3" \
        "Videos/Drifting Colours.mp4" \
        "Music/Ada Lark/Long Shadows/01 - Streetlamp Waltz.flac" \
        "Music/The Quiet Harbour/Tides/03 - Homeward.m4a" \
        "Music/Ada Lark/First Light/02 - Paper Kites.mp3" \
        "Music/Brass Fern/Small Rooms/02 - Three Steps Up.m4a" \
        "Music/The Quiet Harbour/Tides/01 - Low Water.ogg" \
        "Videos/Growing Cells.mp4"; do
        n=$((n + 1))
        length=$(ffprobe -v error -show_entries format=duration -of csv=p=0 "$work/$entry")
        title=$(basename "$entry")
        title=${title%.*}
        printf 'File%d=%s\nTitle%d=%s\nLength%d=%.0f\n' "$n" "$entry" "$n" "${title#?? - }" "$n" "$length"
    done
    printf 'NumberOfEntries=%d\nVersion=2\n' "$n"
}
write_playlist > "$work/demo.pls"
echo "$version" > "$work/.complete"
chmod 755 "$work"
rm -rf "$folder"
mv "$work" "$folder"
trap - EXIT
