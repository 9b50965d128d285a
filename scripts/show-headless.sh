#!/bin/bash
# SPDX-License-Identifier: MIT
# show-headless.sh SCREENSHOT PROGRAM [ARGUMENT...]
# Runs the console on a virtual display until it has been seen to play, takes a screenshot and closes its window.
# Ends with the console's exit code, or with 1 when nothing played within KELVO_HEADLESS_LIMIT seconds (30).
set -euo pipefail

screenshot=${1:?usage: show-headless.sh SCREENSHOT PROGRAM [ARGUMENT...]}
shift
limit=${KELVO_HEADLESS_LIMIT:-30}
work=$(mktemp -d "${TMPDIR:-/tmp}/kelvo-headless.XXXXXX")
log=$work/log
pids=()
# The last one started ends first, so that the console is gone before its display is.
end_all() {
    local i
    for ((i = ${#pids[@]} - 1; i >= 0; --i)); do
        kill "${pids[i]}" 2>/dev/null || true
        wait "${pids[i]}" 2>/dev/null || true
    done
    rm -rf "$work"
}
trap end_all EXIT

# wait_for SECONDS COMMAND...: until the command succeeds; fails after that time.
wait_for() {
    local end=$((SECONDS + $1))
    shift
    until "$@" >/dev/null 2>&1; do
        [ "$SECONDS" -lt "$end" ] || return 1
        sleep 0.1
    done
}
fail() {
    echo "error: $1; the last lines of the log:" >&2
    tail -n 15 "$log" >&2 || true
    exit 1
}
shoot() { import -silent -window root "$1"; }

mkfifo "$work/display"
Xvfb -displayfd 3 -screen 0 1280x800x24 -nolisten tcp -noreset 3>"$work/display" 2>"$work/xvfb.log" &
pids+=($!)
read -r -t 20 number <"$work/display" || { cat "$work/xvfb.log" >&2; echo "error: no virtual display" >&2; exit 1; }
export DISPLAY=:$number QT_QPA_PLATFORM=xcb
unset WAYLAND_DISPLAY
# Nobody listens here: sound goes to a sink that only keeps the time.
export KELVO_AUDIO_SINK=${KELVO_AUDIO_SINK-fakesink sync=true}
openbox --config-file "$(dirname "$0")/headless-openbox.xml" >"$work/openbox.log" 2>&1 &
pids+=($!)
# It announces itself long before it listens: only what it does on a wish proves that it will see a window and a key.
wait_for 10 sh -c 'xdotool set_num_desktops 2 && [ "$(xdotool get_num_desktops)" = 2 ]' ||
    fail "the window manager did not start"

"$@" >"$log" 2>&1 &
console=$!
pids+=("$console")
playing() { grep -q '"\?Playing\."\?' "$log" || ! kill -0 "$console"; }
wait_for "$limit" playing || { shoot "$screenshot"; fail "nothing played within $limit s (screenshot: $screenshot)"; }
kill -0 "$console" 2>/dev/null || fail "the console ended at once"
# Playing shows on the screen: the position label moves.
shoot "$work/before.png"
moved() { shoot "$screenshot" && ! compare -metric AE "$work/before.png" "$screenshot" null:; }
wait_for 10 moved || fail "the picture did not move while playing (screenshot: $screenshot)"
sleep 2 # for a picture in which the position has got somewhere
shoot "$screenshot"
echo "==> it plays; screenshot: $screenshot"

window=$(xdotool search --onlyvisible --name '^KELVO test-GUI$' | head -n 1)
xdotool windowactivate --sync "$window" key alt+F4
wait_for 10 sh -c "! kill -0 $console" || fail "the console did not close"
unset 'pids[-1]'
code=0
wait "$console" || code=$?
echo "==> closed, exit code $code"
exit "$code"
