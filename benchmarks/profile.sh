#!/bin/bash
# SPDX-License-Identifier: MIT
# benchmarks/profile.sh [BUILD]
# Where the processor time goes, by thread and library, as perf (package linux-perf) samples it: of starts that play a song,
# and of a minute of 1080p in the window. Prints two tables in Markdown, the ten largest entries of each; what stands in
# docs/profiles.md was measured by this. Needs the media of benchmarks/run.sh, and no idle machine: it counts samples of
# the program alone.
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

play 3 "$media/song.mp3" # what is made at the first start
echo "Starts until a song plays ($starts):"
echo
perf record -q -F 5000 -g -o "$folder/start" -- bash -c "for ((i = 0; i < $starts; ++i)); do play 0.2 '$media/song.mp3'; done" 2> /dev/null
table "$folder/start"
echo
echo "1080p in the window:"
echo
perf record -q -F 999 -g -o "$folder/film" -- bash -c "for ((i = 0; i < 4; ++i)); do play 15 '$media/video-1920x1080.mp4'; done" 2> /dev/null
table "$folder/film"
