#!/bin/bash
# SPDX-License-Identifier: MIT
# benchmarks/growth.sh [--lists SIZES] [--shared SIZES] [--registry SIZES] [--songs SIZES] [--files SIZES]
# Builds the benchmarks that know --growth, runs them with 10, 100, 1,000, ... of everything, and draws how each cost grows:
# docs/growth.svg and docs/growth.md. SIZES are separated by commas. Needs what benchmarks/run.sh needs, and an idle machine.
set -euo pipefail
cd "$(dirname "$0")/.."
if [ "${1:-}" != --print ]; then
    benchmarks/growth.sh --print "$@" | benchmarks/growth.py --root .
    exit
fi
shift

lists=10,100,1000,10000,100000,1000000
shared=10,100,1000,10000,30000,100000    # their owner takes 2 kB an item, and has five lists
registry=10,100,1000,3000,10000,20000   # all of them come one by one, twice
songs=1000,3000,10000,30000,100000       # to fill a store of a million takes ten minutes, once; also served by an endpoint
files=10,100,1000,10000,30000,100000     # 4 kB of the disk each
while [ $# -gt 0 ]; do
    case "$1 ${2:-}" in
        "--lists "[0-9]*) lists=$2 ;;
        "--shared "[0-9]*) shared=$2 ;;
        "--registry "[0-9]*) registry=$2 ;;
        "--songs "[0-9]*) songs=$2 ;;
        "--files "[0-9]*) files=$2 ;;
        *) sed -n 's/^# benchmarks/usage: benchmarks/p' "$0" >&2; exit 2 ;;
    esac
    shift 2
done

programs=(playlist registry sharing tracker remote index)
cmake --preset benchmarks >/dev/null
cmake --build --preset benchmarks --target "${programs[@]/%/-benchmark}" >/dev/null
build="build-bench/benchmarks"
mkdir -p $build/media
song="$build/media/tiny.mp3"
[ -s "$song" ] || ffmpeg -nostdin -hide_banner -loglevel error -y -f lavfi -i "sine=f=440:d=0.2" -c:a libmp3lame -b:a 32k \
    -metadata title=Tiny -metadata artist=Artist -metadata album=Album -f mp3 "$song"
export QT_QPA_PLATFORM=offscreen LC_ALL=C.UTF-8

# The sizes of a list as arguments.
each() {
    tr , ' ' <<<"$1"
}
# shellcheck disable=SC2046 # each size is an argument
{
    $build/playlist-benchmark --growth $(each "$lists")
    $build/registry-benchmark --growth $(each "$registry") 2>/dev/null
    for size in $(each "$shared"); do
        dbus-run-session -- $build/sharing-benchmark --growth "$size" 2>/dev/null
    done
    $build/tracker-benchmark $build/tracker --growth $(each "$songs")
    for size in $(each "$songs"); do
        dbus-run-session -- benchmarks/tracker/with-endpoint.sh "$build/tracker/$size" \
            $build/remote-benchmark $build/tracker/own @ "$size" --growth
    done
    $build/index-benchmark $build/index-growth "$song" --growth $(each "$files")
}
