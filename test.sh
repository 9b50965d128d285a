#!/bin/bash
# SPDX-License-Identifier: MIT
# test.sh [arguments for ctest]
# Installs what is missing, builds everything under the address and undefined behaviour sanitizers, and runs all
# tests; ends with CTest's summary, the tests that needed a second try and those that were skipped. For instance
# "./test.sh -L unit" runs one layer only. KELVO_TEST_ONCE=1 gives no test a second try.
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

logs=$build/Testing/Temporary
kept=$(mktemp -d "${TMPDIR:-/tmp}/kelvo-test-run.XXXXXX")
trap 'rm -rf "$kept"' EXIT
# "12:name" for each that failed; without the file, none did.
failed_names() { sed -n 's/^[0-9]*://p' "$logs/LastTestsFailed.log" 2>/dev/null | sort; }
run() {
    rm -f "$logs/LastTestsFailed.log"
    code=0
    ctest --preset asan "$@" || code=$?
}

echo "==> tests"
# Twice as many as a small machine has cores: most tests wait for their media, not for the processor. One that fails
# in this crowd, where a player may be late by seconds, gets a second try by itself; both outcomes are shown.
run -j4 "$@"
tests_failed=8
if [ "$code" != 0 ] && [ "$code" != "$tests_failed" ]; then exit "$code"; fi
cp "$logs/LastTest.log" "$kept/1.log"
if [ "$code" = "$tests_failed" ] && [ "${KELVO_TEST_ONCE:-0}" != 1 ]; then
    failed_names > "$kept/failed"
    echo "==> once more, one at a time, what failed beside others"
    # Not run(): CTest reads from the file what failed.
    code=0
    ctest --preset asan --rerun-failed || code=$?
    cp "$logs/LastTest.log" "$kept/2.log"
    : > "$kept/failed-again"
    if [ "$code" != 0 ]; then failed_names > "$kept/failed-again"; fi
    echo "==> needed a second try: $(comm -23 "$kept/failed" "$kept/failed-again" | paste -sd ' ' -)"
fi
tests/support/list-skips.py "$kept"/*.log || [ "$code" != 0 ] || code=1
exit "$code"
