#!/bin/bash
# SPDX-License-Identifier: MIT
# benchmarks/profile.sh [BUILD]
# Where the processor time goes, by thread and library, as perf (package linux-perf) samples it: of starts that play a song
# or a film, of a minute of 1080p in the window, and of the benchmarks that miss a goal. Prints tables in Markdown, the
# largest entries of each; what stands in docs/profiles.md was measured by this. Needs the media and stores of
# benchmarks/run.sh, and no idle machine: it counts samples of the programs alone.
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build-bench}
media=$PWD/build-bench/benchmarks/media
starts=40
entries=10

folder=$(mktemp -d)
coproc XVFB { exec Xvfb -displayfd 1 -screen 0 1280x800x24 -nolisten tcp -noreset 2>/dev/null; }
read -r number <&"${XVFB[0]}"
trap 'kill "$XVFB_PID"; rm -rf "$folder"' EXIT
export DISPLAY=:$number QT_QPA_PLATFORM=xcb LC_ALL=C.UTF-8 KELVO_PLUGINS=gst-renderer KELVO_AUDIO_SINK="fakesink sync=true" \
    HOME=$folder XDG_DATA_HOME=$folder XDG_CONFIG_HOME=$folder XDG_CACHE_HOME=$folder XDG_RUNTIME_DIR=$folder
console=$build/bin/kelvo-test-gui

# play SECONDS FILE: and ends it there.
play() { timeout -s KILL "$1" "$console" "$2" > /dev/null 2>&1 || true; }
export -f play
export console

# table FILE: thread and library, with their share of all samples.
table() {
    echo "| share | thread | library |"
    echo "|---|---|---|"
    perf report -i "$1" --no-children -g none --sort comm,dso --stdio --field-separator '|' 2> /dev/null \
        | awk -F '|' -v most="$entries" '!/^#/ && NF >= 3 && n < most {
              for (i = 1; i <= 3; ++i) gsub(/^ +| +$/, "", $i)
              if ($3 == "[kernel.kallsyms]") $3 = "the kernel"
              print "| " $1 " | " $2 " | " $3 " |"; ++n }'
}

# profile TITLE FREQUENCY COMMAND...
profile() {
    # Without its cache of programs: links to the files of the system, which then look newer than what was made from them.
    perf record -q -N -F "$2" -g -o "$folder/samples" -- "${@:3}" > /dev/null 2>&1
    printf '%s:\n\n' "$1"
    table "$folder/samples"
    echo
}

play 3 "$media/song.mp3" # what is made at the first start
profile "$starts starts until a song plays" 5000 bash -c "for ((i = 0; i < $starts; ++i)); do play 0.2 '$media/song.mp3'; done"
profile "$starts starts until a film plays" 5000 bash -c "for ((i = 0; i < $starts; ++i)); do play 0.2 '$media/film.mp4'; done"
profile "1080p in the window" 999 bash -c "for ((i = 0; i < 4; ++i)); do play 15 '$media/video-1920x1080.mp4'; done"
benchmarks=$build/benchmarks
export KELVO_VIDEO_SINK="fakesink sync=true"
profile "Starts, seeks and pauses of the engine, and those of a bare playbin" 999 "$benchmarks/playback-benchmark" \
    "$media/song.mp3" "$media/film.mp4" "$media/long.mp3" "$media/video-1920x1080.mp4"
profile "Playlists in view" 999 "$benchmarks/editing-benchmark"
profile "A shared playlist" 999 dbus-run-session -- "$benchmarks/sharing-benchmark"
profile "A library of 100,000 songs, and SQLite" 999 "$benchmarks/tracker-benchmark" "$benchmarks/tracker" 100000
profile "10,000 files indexed" 999 "$benchmarks/index-benchmark" "$benchmarks/index" "$media/short.mp3"
