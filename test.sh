#!/bin/bash
# SPDX-License-Identifier: MIT
# test.sh [arguments for ctest]
# Installs what is missing, builds everything under the address and undefined behaviour sanitizers, and runs all
# tests, each once; ends with CTest's summary and the tests that were skipped. For instance "./test.sh -L unit" runs one
# layer only.
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
# Three times as many as a small machine has cores: tests wait for their media as well as use the processor, and with more
# of them at once those that compute take longer than they may. "-j4" among the arguments takes the place of this number.
code=0
ctest --preset asan -j6 "$@" || code=$?
tests_failed=8
if [ "$code" != 0 ] && [ "$code" != "$tests_failed" ]; then exit "$code"; fi
tests/support/list-skips.py "$build/Testing/Temporary/LastTest.log" || [ "$code" != 0 ] || code=1
exit "$code"
