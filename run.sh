#!/bin/bash
# SPDX-License-Identifier: MIT
# run.sh [URL]
# Installs what is missing, builds the console and starts it: with the playlist that the URL (or the name of a
# file) names, otherwise with the demo library's. Without a display, X11 or Wayland, it starts a virtual one, waits
# until it has seen the console play, and leaves a screenshot.
# Environment: KELVO_SKIP_INSTALL=1 installs nothing; KELVO_DEMO_DIR is where the demo library is kept.
set -euo pipefail

root=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
build=$root/build
program=$build/bin/kelvo-test-gui
data=${XDG_DATA_HOME:-$HOME/.local/share}
demo=${KELVO_DEMO_DIR:-$data/kelvo/demo}

# file_url PATH: the path as a file:// URL, all but plain characters as %XX.
file_url() {
    local LC_ALL=C path out="" i char code
    path=$(readlink -f -- "$1")
    for ((i = 0; i < ${#path}; ++i)); do
        char=${path:i:1}
        case $char in
            [A-Za-z0-9/._~-]) out+=$char ;;
            *)
                # Bytes above 127 come out negative.
                printf -v code '%d' "'$char"
                printf -v char '%%%02X' $((code & 255))
                out+=$char
                ;;
        esac
    done
    echo "file://$out"
}

build_release() {
    echo "==> build: $build"
    local launcher=()
    if command -v ccache >/dev/null; then launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache); fi
    if [ ! -f "$build/build.ninja" ]; then
        (cd "$root" && cmake --preset release "${launcher[@]}")
    fi
    cmake --build "$build" --parallel "$(nproc)"
}

# The indexer looks into the user's own music and video folders, and into the demo library beside them.
media_folders() {
    local music=$HOME/Music videos=$HOME/Videos
    if command -v xdg-user-dir >/dev/null; then
        music=$(xdg-user-dir MUSIC)
        videos=$(xdg-user-dir VIDEOS)
    fi
    # Without such folders the tool names the home folder, which is not meant.
    [ "$music" != "$HOME" ] || music=""
    [ "$videos" != "$HOME" ] || videos=""
    echo "$music:$videos:$demo"
}

has_x11() { [ -n "${DISPLAY:-}" ] && xdpyinfo >/dev/null 2>&1; }
# There the console says itself what it needs to show a window.
has_wayland() {
    local name=${WAYLAND_DISPLAY:-}
    [ -n "$name" ] || return 1
    [ -S "$name" ] || [ -S "${XDG_RUNTIME_DIR:-}/$name" ]
}

# A console without a session bus works, but publishes no playlists.
on_a_bus() {
    if [ -n "${DBUS_SESSION_BUS_ADDRESS:-}" ] || [ -S "${XDG_RUNTIME_DIR:-/nowhere}/bus" ]; then
        "$@"
    else
        dbus-run-session -- "$@"
    fi
}

# What earlier versions made under another name moves, unless there is something already.
take_over_demo() {
    local old=$data/kelvo-test-gui/demo
    if [ -n "${KELVO_DEMO_DIR:-}" ] || [ ! -d "$old" ] || [ -e "$demo" ]; then return; fi
    echo "==> demo library: moving it from $old"
    mkdir -p "$(dirname -- "$demo")" && mv -nT -- "$old" "$demo" || return 0
    rmdir -- "$data/kelvo-test-gui" 2>/dev/null || true
}

take_over_demo
"$root/scripts/install-dependencies.sh" run
build_release
url=${1-}
if [ $# = 0 ]; then
    "$root/scripts/make-demo-library.sh" "$demo"
    url=$(file_url "$demo/demo.pls")
elif [ -f "$url" ]; then
    url=$(file_url "$url")
fi
if [ -d "$demo" ]; then
    export KELVO_MEDIA_DIRS=${KELVO_MEDIA_DIRS:-$(media_folders)}
fi
echo "==> start: $program $url"
if has_x11 || has_wayland; then
    on_a_bus "$program" "$url"
else
    echo "==> no display here: starting a virtual one"
    on_a_bus "$root/scripts/show-headless.sh" "$build/kelvo-test-gui.png" "$program" "$url"
fi
