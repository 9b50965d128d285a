#!/bin/sh
# SPDX-License-Identifier: MIT
# clean-system.sh: within a Debian system that was made for this, with the packages in /packages and those of a later
# version in /packages/upgraded: installs, upgrades, removes and purges them.
set -eu
cd /packages
export DEBIAN_FRONTEND=noninteractive HOME=/home/tester LC_ALL=C.UTF-8
mkdir -p "$HOME"

fail() { echo "error: $1" >&2; exit 1; }
apt() { apt-get --quiet --quiet --yes --no-install-recommends "$@" >apt.log 2>&1 || { cat apt.log >&2; fail "apt-get $*"; }; }
ours() { dpkg-query --show --showformat '${db:Status-Abbrev}${Package} ${Version}\n' '*kelvo*' 2>/dev/null || true; }
# What bears our name, without what dpkg and apt note of all packages that they have seen.
our_files() {
    find / -xdev \( -path /proc -o -path /sys -o -path /dev -o -path /packages -o -path /var/log -o -path /var/cache/apt \
        -o -path /var/lib/apt \) -prune -o -iname '*kelvo*' -print
}
lacks_nothing() {
    for file in /usr/bin/kelvo-* /usr/lib/*/libkelvo-*.so.? /usr/lib/*/kelvo/plugins/*.so; do
        if ldd "$file" | grep "not found"; then fail "$file lacks a library"; fi
    done
}
works() {
    lacks_nothing
    KELVO_PLUGINS=simulator QT_QPA_PLATFORM=offscreen kelvo-test list >list.log 2>&1 || { cat list.log; fail "kelvo-test list"; }
    grep -q KelvoSimulatorA list.log || { cat list.log; fail "kelvo-test list shows no renderer"; }
    shows_a_window
}
# Where each thread of a process is, which has not come as far as it should.
threads() {
    for task in "/proc/$1/task/"*; do
        echo "$(cat "$task/comm"): $(cat "$task/wchan") $(cat "$task/syscall")"
    done
}
# The console starts with all back ends that do so by default, and ends when it is asked to. There is no display here, but
# what it needs for one.
shows_a_window() {
    if ldd /usr/lib/*/qt6/plugins/platforms/libqxcb.so | grep "not found"; then fail "no windows on X"; fi
    : >gui.log # at once: the console before this one had the same line in it
    QT_QPA_PLATFORM=offscreen kelvo-test-gui >gui.log 2>&1 &
    for _ in $(seq 200); do
        if grep -q "gst-renderer.so.* is running" gui.log; then break; fi
        sleep 0.1
    done
    grep -q "gst-renderer.so.* is running" gui.log || threads $! || true
    code=0
    kill -TERM $! || true
    wait $! || code=$?
    [ "$code" = 0 ] || { cat gui.log; fail "kelvo-test-gui ended with $code"; }
    grep -q "gst-renderer.so.* is running" gui.log || { cat gui.log; fail "kelvo-test-gui has no renderer"; }
    if grep "cannot be used" gui.log; then fail "a back end cannot be used"; fi
}

echo "==> a console without the back end for networks"
apt install ./kelvo-test-gui_*.deb ./libkelvo0_*.deb ./kelvo-plugins-base_*.deb ./kelvo-plugins-gstreamer_*.deb
if dpkg-query --show 'libgupnp*' 2>/dev/null; then fail "it brings GUPnP"; fi
lacks_nothing

echo "==> all of them"
apt install ./*.deb
works
ours

echo "==> upgrade"
apt install ./upgraded/*.deb
test "$(ours | grep -c '^ii .*\.later$')" = "$(find upgraded -name '*.deb' | wc -l)" ||
    fail "not all are of the later version: $(ours)"
works

echo "==> remove"
apt remove '?name(kelvo)'
test -z "$(ours | grep '^i')" || fail "still installed: $(ours)"
echo "==> purge"
apt purge '?name(kelvo)'
test -z "$(ours)" || fail "dpkg still knows $(ours)"
rm -rf "$HOME"
apt autoremove --purge
test -z "$(our_files)" || fail "this is left of ours: $(our_files)"
echo "==> nothing is left"
