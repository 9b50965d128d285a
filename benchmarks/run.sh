#!/bin/bash
# SPDX-License-Identifier: MIT
# benchmarks/run.sh [number of songs ...]
# Builds the benchmarks, makes their media once, prints the figures and writes them into docs/benchmarks.md, and the most
# asked for into the README. Needs what the tests need (scripts/install-dependencies.sh test) and an idle machine.
set -euo pipefail
cd "$(dirname "$0")/.."
if [ "${1:-}" != --print ]; then
    benchmarks/run.sh --print "$@" | benchmarks/report.py --root .
    exit
fi
shift

cmake --preset benchmarks >/dev/null
cmake --build --preset benchmarks >/dev/null
build=build-bench
media=$build/benchmarks/media
mkdir -p "$media"

make_media() {
    local target=$1
    shift
    [ -s "$target" ] || { ffmpeg -nostdin -hide_banner -loglevel error -y "$@" "$target.part" && mv "$target.part" "$target"; }
}
make_media "$media/song.mp3" -f lavfi -i "sine=f=440:d=60" -c:a libmp3lame -b:a 192k -f mp3
make_media "$media/short.mp3" -f lavfi -i "sine=f=440:d=2" -c:a libmp3lame -b:a 128k \
    -metadata title=Short -metadata artist=Artist -metadata album=Album -f mp3
make_media "$media/film.mp4" -f lavfi -i "testsrc2=s=640x360:r=25:d=60" -f lavfi -i "sine=f=440:d=60" \
    -c:v libx264 -preset ultrafast -g 50 -pix_fmt yuv420p -c:a aac -f mp4
for size in 640x360 1920x1080; do
    make_media "$media/video-$size.mp4" -f lavfi -i "testsrc2=s=$size:r=25:d=20" -f lavfi -i "sine=f=440:d=20" \
        -c:v libx264 -preset ultrafast -g 50 -pix_fmt yuv420p -c:a aac -f mp4
done
make_media "$media/blip.wav" -f lavfi -i "sine=f=440:d=0.2" -ac 2 -f wav
make_media "$media/long.mp3" -f lavfi -i "sine=f=330:d=7200" -c:a libmp3lame -b:a 64k -ac 1 -f mp3

# A display of its own, so that no other window is taken for the program's.
coproc XVFB { exec Xvfb -displayfd 1 -screen 0 1280x800x24 -nolisten tcp -noreset 2>/dev/null; }
read -r number <&"${XVFB[0]}"
trap 'kill "$XVFB_PID"' EXIT
export DISPLAY=:$number QT_QPA_PLATFORM=xcb LC_ALL=C.UTF-8

echo "| what | here | reference in the same run | ratio | goal |"
echo "|---|---|---|---|---|"
KELVO_PLUGINS="" $build/benchmarks/startup-benchmark $build/benchmarks/empty-window $build/bin/kelvo-test-gui 2>/dev/null
$build/benchmarks/registry-benchmark
$build/benchmarks/recording-benchmark "$build/benchmarks"
KELVO_AUDIO_SINK="fakesink sync=true" $build/benchmarks/recording-video-benchmark "$media/video-1920x1080.mp4" "$build/benchmarks"
nothing=$(mktemp -d)
HOME=$nothing XDG_DATA_HOME=$nothing XDG_CONFIG_HOME=$nothing XDG_CACHE_HOME=$nothing KELVO_MEDIA_DIRS=$nothing \
    dbus-run-session -- $build/benchmarks/plugin-benchmark $build/lib/kelvo/plugins 2>/dev/null
rm -r "$nothing"
KELVO_AUDIO_SINK="fakesink sync=true" KELVO_VIDEO_SINK="fakesink sync=true" $build/benchmarks/playback-benchmark \
    "$media/song.mp3" "$media/film.mp4" "$media/long.mp3" "$media/video-1920x1080.mp4"
KELVO_AUDIO_SINK="fakesink sync=false" $build/benchmarks/changes-benchmark "$media/blip.wav"
python3 benchmarks/process_benchmark.py --console $build/bin/kelvo-test-gui --media "$media/song.mp3" "$media/film.mp4" \
    --video "$media/video-640x360.mp4" "$media/video-1920x1080.mp4" --adaptor "$media/video-1920x1080.mp4"
dbus-run-session -- python3 benchmarks/idle_benchmark.py --console $build/bin/kelvo-test-gui \
    --reference $build/benchmarks/empty-window 2>/dev/null
python3 benchmarks/scenario_benchmark.py --program $build/bin/kelvo-test --media "$media/song.mp3"
python3 benchmarks/reading_benchmark.py --program $build/bin/kelvo-test
dbus-run-session -- python3 benchmarks/listening_benchmark.py --program $build/bin/kelvo-test
if [ -x $build/benchmarks/playlist-benchmark ]; then
    $build/benchmarks/playlist-benchmark
fi
$build/benchmarks/editing-benchmark
# Devices of a network that nobody else is on, when root may make one.
alone=()
if unshare --net true 2>/dev/null; then
    alone=(unshare --net sh -c 'ip link set lo up multicast on; exec "$@"' sh)
fi
"${alone[@]}" $build/benchmarks/network-benchmark $build/lib/kelvo/plugins benchmarks/network/pretended_devices.py
dbus-run-session -- $build/benchmarks/sharing-benchmark 2>/dev/null
# 100,000 songs unless said otherwise; to fill one of a million songs takes ten minutes, once.
tracker=$build/benchmarks/tracker
$build/benchmarks/tracker-benchmark $tracker "${@:-100000}"
for songs in "${@:-100000}"; do
    dbus-run-session -- benchmarks/tracker/with-endpoint.sh "$tracker/$songs" \
        $build/benchmarks/remote-benchmark $tracker/own @ "$songs"
done
$build/benchmarks/index-benchmark $build/benchmarks/index "$media/short.mp3"
python3 benchmarks/tracker/miner_benchmark.py $build/benchmarks/index
