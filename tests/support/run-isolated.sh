#!/bin/sh
# SPDX-License-Identifier: MIT
# run-isolated.sh [--bus] program [arguments]
# Runs a test program with a home, XDG folders and, with --bus, a session bus of its own, so that tests see
# neither the user's files nor each other.
set -u
bus=""
if [ "$1" = "--bus" ]; then
    bus=1
    shift
fi
folder=$(mktemp -d "${TMPDIR:-/tmp}/kelvo-test.XXXXXX") || exit 1
trap 'rm -rf "$folder"' EXIT
mkdir -p "$folder/home" "$folder/config" "$folder/data" "$folder/cache" "$folder/state"
mkdir -m 700 "$folder/runtime"
export HOME="$folder/home" XDG_CONFIG_HOME="$folder/config" XDG_DATA_HOME="$folder/data" \
    XDG_CACHE_HOME="$folder/cache" XDG_STATE_HOME="$folder/state" XDG_RUNTIME_DIR="$folder/runtime" \
    LC_ALL=C.UTF-8
# A test that is given GStreamer's index of its plug-ins finds it complete. A few of them depend on the home and would be
# looked at again in each of these, in a process of its own, for an index that is then written anew.
export GST_REGISTRY_UPDATE=no
unset DISPLAY WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS
# Addresses that nobody listens on: no test may reach the user's servers, nor start any.
export PULSE_SERVER="unix:$folder/no-sound"
if [ -n "$bus" ]; then
    # Without the services that the machine offers on demand: the desktop's index would answer instead of a test's own.
    sed '/<standard_session_servicedirs/d' /usr/share/dbus-1/session.conf > "$folder/bus.conf"
    dbus-run-session --config-file="$folder/bus.conf" -- "$@"
else
    export DBUS_SESSION_BUS_ADDRESS="unix:path=$folder/no-bus"
    "$@"
fi
