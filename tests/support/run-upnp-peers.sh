#!/bin/sh
# SPDX-License-Identifier: MIT
# run-upnp-peers.sh [--prepare] media-folder program [arguments]
# Starts a UPnP renderer and a server (rygel) on the loopback interface of a network namespace of its own, when root
# may make one, runs the program beside them and ends them. With --prepare the program starts and ends them itself.
# The program gets
#   KELVO_UPNP_INTERFACE      where they are
#   KELVO_TEST_UPNP_PEERS     process id of rygel; empty when there is none
#   KELVO_TEST_UPNP_START     a command that becomes rygel
#   KELVO_TEST_UPNP_MISSING   why there is none
set -u
prepare=""
if [ "$1" = "--prepare" ]; then
    prepare=$1
    shift
fi
media=$1
shift
if [ "${KELVO_TEST_NAMESPACE:-}" = "" ] && unshare --net true 2>/dev/null; then
    export KELVO_TEST_NAMESPACE=1
    exec unshare --net -- "$0" $prepare "$media" "$@"
fi
if [ "${KELVO_TEST_NAMESPACE:-}" = "1" ]; then
    ip link set lo up multicast on
fi
export KELVO_UPNP_INTERFACE=lo KELVO_TEST_UPNP_PEERS="" KELVO_TEST_UPNP_MISSING=""
if ! command -v rygel > /dev/null; then
    export KELVO_TEST_UPNP_MISSING="rygel is not installed"
    exec "$@"
fi
folder=$(mktemp -d "${TMPDIR:-/tmp}/kelvo-upnp.XXXXXX") || exit 1
bus=""
peers=""
finish() {
    [ -n "$peers" ] && kill -CONT "$peers" 2>/dev/null
    [ -n "$peers" ] && kill "$peers" 2>/dev/null
    [ -n "$bus" ] && kill "$bus" 2>/dev/null
    rm -rf "$folder"
}
trap finish EXIT
trap 'exit 143' TERM INT
. "$(dirname -- "$0")/rygel-peer.sh"
prepare_rygel "$folder" "$media" lo
# The name of the bus must be found from a network namespace: a path.
dbus-daemon --session --nofork --nopidfile --address="unix:path=$folder/bus" > /dev/null 2>&1 &
bus=$!
export KELVO_TEST_UPNP_START="$folder/start" KELVO_TEST_UPNP_LOG="$folder/rygel.log"
if [ "$prepare" = "" ]; then
    "$folder/start" &
    peers=$!
    export KELVO_TEST_UPNP_PEERS=$peers
fi
"$@"
