#!/bin/bash
# SPDX-License-Identifier: MIT
# copy-of-this-system.sh FOLDER
# Runs the tests of the packages in the folder (debian/tests) on a copy of this system, which lasts as long as they do:
# an overlay in memory, so that nothing is installed on the system itself. To be started in a name space of its own for
# mounts and processes. Exit code 77: such a copy cannot be made here, and why.
set -euo pipefail
packages=$(readlink -f -- "$1")
work=$(mktemp -d "${TMPDIR:-/tmp}/kelvo-copy.XXXXXX")
mount --make-rprivate /
trap 'umount --recursive --lazy "$work" && rmdir "$work"' EXIT
mount -t tmpfs -o mode=755 tmpfs "$work"
mkdir "$work/upper" "$work/work" "$work/root"
if ! mount -t overlay -o "lowerdir=/,upperdir=$work/upper,workdir=$work/work" overlay "$work/root"; then
    echo "error: this system cannot lay a file system over its own" >&2
    exit 77
fi
root=$work/root
mount -t proc proc "$root/proc"
mount --rbind /sys "$root/sys"
mount --rbind /dev "$root/dev"
mount -t tmpfs -o mode=1777 tmpfs "$root/tmp"
mkdir -p "$root/srv/packages"
mount --bind "$packages" "$root/srv/packages"
# A container has these from elsewhere.
for name in hosts resolv.conf; do
    cmp -s "/etc/$name" "$root/etc/$name" || cp -L --remove-destination "/etc/$name" "$root/etc/$name"
done

chroot "$root" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LANG=C.UTF-8 sh -c '
    cd /srv/packages && autopkgtest --no-built-binaries *.deb kelvo-test-gui_*.dsc -- null'
