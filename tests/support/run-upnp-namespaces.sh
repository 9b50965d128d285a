#!/bin/sh
# SPDX-License-Identifier: MIT
# run-upnp-namespaces.sh media-folder program [arguments]
# Makes two networks that are joined by a cable, as two computers would be: network namespaces and a veth pair. The
# program runs at one end. It starts and ends UPnP peers at the other end, by commands that are prepared here; each has
# folders of its own and neither sound nor screen. Exits with 77, and says why, where that cannot be had.
#
# Nothing of it has a name that another run could have too, and nothing outlives it: the namespaces belong to a process
# namespace, which the kernel clears, of hung processes too, as soon as this script has ended, however it did.
# The program gets
#   KELVO_UPNP_INTERFACE     its end of the cable
#   KELVO_TEST_UPNP_ADDRESS  network address of the other end
#   KELVO_TEST_UPNP_PEERS    a folder that has, for each peer that is installed, the command <peer>/start that becomes
#                            it: gmediarender, rygel, minidlna, gerbera
set -u
PATH="$PATH:/usr/sbin:/sbin"
near=10.77.0.1
far=10.77.0.2

skip() {
    echo "Skipped: $1."
    exit 77
}
has() { command -v "$1" > /dev/null; }

# --- on the machine ---
if [ "${KELVO_TEST_NAMESPACES:-}" = "" ]; then
    [ "$(id -u)" = 0 ] || skip "networks of its own can only be made by root"
    has ip || skip "ip (package iproute2) is not installed"
    has gmediarender || has rygel || has minidlnad || has gerbera \
        || skip "neither gmediarender, rygel, minidlna nor gerbera is installed"
    unshare --net --pid --fork --mount-proc true 2> /dev/null \
        || skip "this system lets nobody make network and process namespaces (right CAP_SYS_ADMIN)"
    folder=$(mktemp -d "${TMPDIR:-/tmp}/kelvo-upnp.XXXXXX") || exit 1
    inside=""
    finish() {
        [ -n "$inside" ] && kill -KILL "$inside" && wait "$inside"
        # What dies may still have written.
        rm -rf "$folder" || rm -rf "$folder"
    }
    trap finish EXIT
    trap 'exit 143' HUP INT TERM
    export KELVO_TEST_NAMESPACES="$folder"
    setpriv --pdeathsig KILL unshare --net --pid --fork --kill-child --mount-proc -- "$0" "$@" &
    inside=$!
    wait "$inside"
    code=$?
    inside=""
    exit $code
fi

# --- within the namespaces, at the end of the program ---
folder=$KELVO_TEST_NAMESPACES
media=$1
shift
at_far_end="nsenter --net=$folder/far-end --"

connect() { # command, interface, address
    # Without addresses of IPv6: peers would wait until they are known to be nobody else's.
    $1 ip link set lo up && $1 ip link set "$2" addrgenmode none && $1 ip addr add "$3/24" dev "$2" \
        && $1 ip link set "$2" up && $1 ip route add 239.0.0.0/8 dev "$2"
}
lay_cable() {
    : > "$folder/far-end"
    unshare --net="$folder/far-end" true && ip link add kelvo0 type veth peer name kelvo1 \
        && ip link set kelvo1 netns "$folder/far-end" \
        && connect "" kelvo0 $near && connect "$at_far_end" kelvo1 $far
}
lay_cable || skip "this system has no veth network devices, or lets nobody join namespaces by them"

# The environment of a peer.
own_folders() {
    own=$folder/$1
    mkdir -p "$own/home" "$own/config" "$own/cache" "$own/data" "$own/state" "$own/media"
    echo "env HOME=$own/home XDG_CONFIG_HOME=$own/config XDG_CACHE_HOME=$own/cache XDG_DATA_HOME=$own/data" \
        "XDG_STATE_HOME=$own/state"
}
# prepare peer program arguments...; the command takes further ones.
prepare() {
    peer=$1
    shift
    environment=$(own_folders "$peer")
    cat > "$folder/$peer/start" << START
#!/bin/sh
exec $environment $at_far_end $* "\$@" >> "$folder/$peer/$peer.log" 2>&1
START
    chmod +x "$folder/$peer/start"
}

if has gmediarender; then
    # A fake sink of its own choice would have no clock.
    prepare gmediarender gmediarender -I kelvo1 -f "'Test gmediarender'" -u 6b656c76-6f00-4000-8000-000000000001 \
        --gstout-audiopipe="'fakesink sync=true'" --gstout-videosink=fakesink --logfile stderr
fi

if has rygel; then
    . "$(dirname -- "$0")/rygel-peer.sh"
    environment=$(own_folders rygel)
    prepare_rygel "$folder/rygel" "$media" kelvo1 "$environment $at_far_end"
    # The name of the bus must be found from another network namespace: a path.
    dbus-daemon --session --nofork --nopidfile --address="unix:path=$folder/rygel/bus" > /dev/null 2>&1 &
fi

if has minidlnad; then
    prepare minidlna minidlnad -d -f "'$folder/minidlna/minidlna.conf'" -P "'$folder/minidlna/pid'"
    cat > "$folder/minidlna/minidlna.conf" << CONFIG
friendly_name=Test minidlna
network_interface=kelvo1
port=8200
media_dir=$folder/minidlna/media
db_dir=$folder/minidlna/cache
log_dir=$folder/minidlna
notify_interval=60
inotify=no
CONFIG
    cp "$media/tone.mp3" "$media/short.mp3" "$folder/minidlna/media"
fi

if has gerbera; then
    prepare gerbera gerbera --interface kelvo1 --port 49400 --config "'$folder/gerbera/config/config.xml'" \
        --home "'$folder/gerbera/home'" --add "'$folder/gerbera/media'"
    cat > "$folder/gerbera/config/config.xml" << CONFIG
<?xml version="1.0" encoding="UTF-8"?>
<config version="2" xmlns="http://mediatomb.cc/config/2">
  <server>
    <ui enabled="no"/>
    <name>Test gerbera</name>
    <udn>uuid:6b656c76-6f00-4000-8000-000000000002</udn>
    <home>$folder/gerbera/home</home>
    <webroot>/usr/share/gerbera/web</webroot>
    <storage>
      <sqlite3 enabled="yes"><database-file>gerbera.db</database-file></sqlite3>
    </storage>
  </server>
  <import hidden-files="no">
    <scripting script-charset="UTF-8"><virtual-layout type="disabled"/></scripting>
    <mappings>
      <extension-mimetype ignore-unknown="no"><map from="mp3" to="audio/mpeg"/></extension-mimetype>
      <mimetype-upnpclass><map from="audio/*" to="object.item.audioItem.musicTrack"/></mimetype-upnpclass>
      <mimetype-contenttype><treat mimetype="audio/mpeg" as="mp3"/></mimetype-contenttype>
    </mappings>
  </import>
</config>
CONFIG
    cp "$media/tone.mp3" "$media/short.mp3" "$folder/gerbera/media"
fi

export KELVO_UPNP_INTERFACE=kelvo0 KELVO_TEST_UPNP_ADDRESS="$far" KELVO_TEST_UPNP_PEERS="$folder"
"$@"
code=$?
if [ $code != 0 ]; then
    for log in "$folder"/*/*.log; do
        [ -e "$log" ] || continue
        echo "--- the end of $(basename "$log") ---"
        tail -n 15 "$log"
    done
fi
exit $code
