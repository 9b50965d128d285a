#!/bin/bash
# SPDX-License-Identifier: MIT
# run-often.sh [--runs N] [--busy LOOPS] [arguments for test.sh]
# Runs all tests N times (10) beside so many busy loops (4), as on a machine that has other work to do: each run ends
# with a line that names what failed in it, and the seconds that the tests took. The whole output of each run stays in
# build-asan/Testing/runs. Fails when a run did.
set -uo pipefail
root=$(dirname -- "$(dirname -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")")")
runs=10
busy=4
while [ $# -gt 0 ]; do
    case $1 in
        --runs) runs=$2; shift 2 ;;
        --busy) busy=$2; shift 2 ;;
        *) break ;;
    esac
done
# Seconds of all tests on two cores that have nothing else to do.
limit=240

logs=$root/build-asan/Testing/runs
mkdir -p "$logs"
loops=()
# shellcheck disable=SC2317  # by the trap
end_loops() { [ ${#loops[@]} = 0 ] || kill "${loops[@]}"; }
trap end_loops EXIT
# So that the trap is run.
trap 'exit 143' TERM INT
for ((i = 0; i < busy; ++i)); do
    while :; do :; done &
    loops+=($!)
done

passed=0
longest=0
tests=0
for ((run = 1; run <= runs; ++run)); do
    log=$logs/$run.log
    code=0
    "$root/test.sh" "$@" > "$log" 2>&1 < /dev/null || code=$?
    tests=$(sed -n 's/^.*% tests passed, .* out of \([0-9]*\)$/\1/p' "$log")
    seconds=$(sed -n 's/^Total Test time (real) = *\([0-9]*\)\..*$/\1/p' "$log")
    failed=$(sed -n '/^The following tests FAILED:/,$s/^[[:space:]]*[0-9]* - \([^ ]*\) (.*)$/\1/p' "$log" | paste -sd ' ' -)
    if [ "$code" = 0 ]; then passed=$((passed + 1)); fi
    if [ "${seconds:-0}" -gt "$longest" ]; then longest=$seconds; fi
    echo "run $run of $runs: code $code, ${tests:-no} tests, failed: ${failed:-none}, ${seconds:-?} s"
done

[ "$passed" = "$runs" ] || exit 1
if [ "$busy" -gt 0 ]; then
    echo "reliability: suite-steady: $runs runs of $tests tests beside $busy busy loops, none failed"
elif [ "$longest" -lt "$limit" ]; then
    echo "reliability: suite-time: $tests tests in $longest s on $(nproc) cores"
fi
