#!/bin/bash
# SPDX-License-Identifier: MIT
# test.sh [arguments for ctest]
# Installs what is missing, builds everything under the address and undefined behaviour sanitizers, and runs all
# tests; ends with CTest's summary. For instance "./test.sh -L unit" runs one layer only.
set -euo pipefail

root=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
"$root/scripts/install-dependencies.sh" test
cd "$root"
build=$root/build-asan
echo "==> build: $build"
launcher=()
if command -v ccache >/dev/null; then launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache); fi
if [ ! -f "$build/build.ninja" ]; then cmake --preset asan "${launcher[@]}"; fi
cmake --build --preset asan --parallel "$(nproc)"
echo "==> tests"
# Twice as many as a small machine has cores: most tests wait for their media, not for the processor. One that fails
# in this crowd, where a player may be late by seconds, gets a second try by itself; both outcomes are shown.
code=0
ctest --preset asan -j4 "$@" || code=$?
tests_failed=8
[ "$code" = "$tests_failed" ] || exit "$code"
echo "==> once more, one at a time, what failed beside others"
ctest --preset asan --rerun-failed
