#!/bin/bash
# SPDX-License-Identifier: MIT
# build-packages.sh [FOLDER [REVISION]]
# Builds the Debian packages of a revision (that which is checked out), source and binary, into the folder
# (build-packages), in a tree of their own within it, which is made anew: what is not committed stays out.
# Their version is that of the project, followed by the time and name of the commit unless that has the tag "v<version>".
# All files have the time of the commit, or that of SOURCE_DATE_EPOCH.
# Environment: KELVO_SHARE_COMPILED=1 lets builds in different folders share what ccache has compiled, for which it tells
# the compiler names relative to the tree; the debug information then has those. DEB_BUILD_OPTIONS as dpkg-buildpackage
# knows it. KELVO_SKIP_INSTALL=1 installs nothing.
set -euo pipefail

root=$(dirname -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")")
output=$(readlink -m -- "${1:-$root/build-packages}")
revision=$(git -C "$root" rev-parse --verify "${2:-HEAD}^{commit}")
tree=$output/kelvo-test-gui

package_version() {
    local project
    project=$(git -C "$root" show "$revision:CMakeLists.txt" | sed -n 's/^project(kelvo-test-gui VERSION \([0-9.]*\).*/\1/p')
    if [ -z "$project" ]; then
        echo "error: CMakeLists.txt names no version" >&2
        return 1
    fi
    if git -C "$root" tag --points-at "$revision" | grep -qx "v$project"; then
        echo "$project"
    else
        echo "$project+$(TZ=UTC git -C "$root" log -1 --abbrev=12 --date=format-local:%Y%m%d.%H%M%S --format=%cd.g%h "$revision")"
    fi
}

# The version is written in CMakeLists.txt alone, so Debian's changelog is made of it.
write_changelog() {
    sed -e "s/@VERSION@/$version/" -e "s/@DATE@/$(LC_ALL=C date --utc --rfc-email --date="@$SOURCE_DATE_EPOCH")/" \
        "$tree/debian/changelog.in" >"$tree/debian/changelog"
}

"$root/scripts/install-dependencies.sh" package
version=$(package_version)
SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-$(git -C "$root" log -1 --format=%ct "$revision")}
export SOURCE_DATE_EPOCH
if command -v ccache >/dev/null; then
    # Named here because a package is built without the user's home.
    CCACHE_DIR=$(ccache --get-config cache_dir)
    export CCACHE_DIR CCACHE_SLOPPINESS=pch_defines,time_macros CMAKE_CXX_COMPILER_LAUNCHER=ccache
    if [ "${KELVO_SHARE_COMPILED:-}" = 1 ]; then export CCACHE_BASEDIR=$tree; fi
fi
echo "==> packages: $version"
if [ -n "$(git -C "$root" status --porcelain)" ]; then
    echo "==> what is not committed is not in them"
fi
rm -rf "$tree"
mkdir -p "$tree"
rm -f "$output"/{kelvo-,libkelvo}*.{deb,dsc,tar.xz,changes,buildinfo}
git -C "$root" archive "$revision" | tar -x -C "$tree"
write_changelog
echo "$revision" >"$output/revision"
(cd "$tree" && dpkg-buildpackage --unsigned-source --unsigned-changes)
echo "==> packages are in $output"
