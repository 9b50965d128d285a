# SPDX-License-Identifier: MIT
# shellcheck shell=sh
# Sourced by the scripts that run UPnP peers for tests.

# prepare_rygel folder media-folder interface [command that runs it elsewhere]
# Writes folder/start, a command that becomes rygel on that network interface: a "Test renderer" and a "Test server" of
# a few of the media, on the session bus at folder/bus, with what it says in folder/rygel.log.
prepare_rygel() {
    mkdir -p "$1/config" "$1/media" "$1/cache"
    for name in tone.mp3 short.mp3; do
        ln -s "$2/$name" "$1/media/$name"
    done
    cat > "$1/config/rygel.conf" << CONFIG
[general]
ipv6=false
enable-transcoding=false
interface=$3
media-engine=librygel-media-engine-gst.so
log-level=*:2
[Playbin]
enabled=true
title=Test renderer
[MediaExport]
enabled=true
title=Test server
uris=$1/media
monitor-changes=false
[Tracker3]
enabled=false
[MPRIS]
enabled=false
[External]
enabled=false
CONFIG
    # No device of the machine makes a sound or shows a picture: what is left keeps time silently.
    silent=""
    for sink in alsa pulse openal jackaudio oss oss4 xv x gl glimage wayland gtk kms; do
        silent="$silent${sink}sink:NONE,${sink}imagesink:NONE,"
    done
    cat > "$1/start" << START
#!/bin/sh
export DBUS_SESSION_BUS_ADDRESS="unix:path=$1/bus" XDG_CONFIG_HOME="$1/config" XDG_CACHE_HOME="$1/cache"
export GST_PLUGIN_FEATURE_RANK="${silent}fakesink:NONE"
exec ${4:-} rygel >> "$1/rygel.log" 2>&1
START
    chmod +x "$1/start"
}
