#!/bin/bash
# SPDX-License-Identifier: MIT
# raise-version.sh FOLDER PACKAGE...
# Writes the packages once more into the folder, as those of a later version.
set -euo pipefail
to=$1
shift
mkdir -p "$to"
work=$(mktemp -d "${TMPDIR:-/tmp}/kelvo-version.XXXXXX")
trap 'rm -rf "$work"' EXIT
for package; do
    version=$(dpkg-deb --field "$package" Version)
    rm -rf "$work/tree"
    dpkg-deb --raw-extract "$package" "$work/tree"
    # Also where the others of the same version are named.
    sed -i "s/${version//./\\.}/$version.later/g" "$work/tree/DEBIAN/control"
    name=$(basename "$package")
    dpkg-deb --root-owner-group -Znone --build "$work/tree" "$to/${name/"$version"/"$version.later"}" >/dev/null
done
