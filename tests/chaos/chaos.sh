#!/bin/sh
# SPDX-License-Identifier: MIT
# chaos.sh program [arguments]
# Runs the chaos program offscreen, with a home, a session bus and, where that is allowed, a network of its own, and with
# a small folder of media to look through. The environment names the media (KELVO_TEST_MEDIA) and what else tests need.
set -u
if [ "${KELVO_TEST_NAMESPACE:-}" = "" ] && unshare --net true 2>/dev/null; then
    export KELVO_TEST_NAMESPACE=1
    exec unshare --net -- "$0" "$@"
fi
if [ "${KELVO_TEST_NAMESPACE:-}" = "1" ]; then
    ip link set lo up multicast on
fi
here=$(dirname -- "$(readlink -f -- "$0")")
music=$(mktemp -d "${TMPDIR:-/tmp}/kelvo-chaos.XXXXXX") || exit 1
trap 'rm -rf "$music"' EXIT
for name in blip.mp3 blip.ogg tone.flac covered.mp3 clip.webm garbage.mp3 truncated.ogg; do
    cp "$KELVO_TEST_MEDIA/$name" "$music" || exit 1
done
export QT_QPA_PLATFORM=offscreen KELVO_PLUGINS="" KELVO_BROWSER=/bin/true KELVO_UPNP_INTERFACE=lo \
    KELVO_MEDIA_DIRS="$music" KELVO_AUDIO_SINK="fakesink sync=true" KELVO_VIDEO_SINK="fakesink sync=true"
"$here/../support/run-isolated.sh" --bus "$@"
