#!/bin/sh
# SPDX-License-Identifier: MIT
# run-in-own-network.sh program [arguments]
# Becomes the program, in a network namespace of its own that has nothing but the loopback interface. Exits with 77, and
# says why, where that cannot be had.
PATH="$PATH:/usr/sbin:/sbin"
skip() {
    echo "Skipped: $1."
    exit 77
}
[ "$(id -u)" = 0 ] || skip "networks of its own can only be made by root"
command -v ip > /dev/null || skip "ip (package iproute2) is not installed"
unshare --net true 2> /dev/null || skip "this system lets nobody make network namespaces (right CAP_SYS_ADMIN)"
exec unshare --net -- sh -c 'ip link set lo up && exec "$@"' sh "$@"
