#!/bin/bash
# SPDX-License-Identifier: MIT
# run.sh SEEDS [FIRST [STEPS [BUILD...]]]
# So many seeds one after the other, from FIRST (1) on, of STEPS steps (600) each, with the program of each build (asan
# and edit). Their logs go to BUILD/chaos. After each build of which every seed has held, the line for
# docs/reliability.md. A seed that fails does not end the others; its last lines are shown.
set -u
root=$(dirname -- "$(dirname -- "$(dirname -- "$(readlink -f -- "$0")")")")
seeds=${1:?how many seeds}
first=${2:-1}
steps=${3:-600}
builds=("${@:4}")
[ ${#builds[@]} -gt 0 ] || builds=("$root/build-asan" "$root/build-edit")

export LSAN_OPTIONS="suppressions=$root/tests/support/lsan.supp:print_suppressions=0" ASAN_OPTIONS=detect_leaks=0 \
    UBSAN_OPTIONS=print_stacktrace=1
result=0
for build in "${builds[@]}"; do
    failed=0
    longest=0
    waiting=0
    mkdir -p "$build/chaos"
    ctest --test-dir "$build" -R '^(media|gstreamer-registry)$' > "$build/chaos/media.log" || exit 1
    export KELVO_TEST_MEDIA="$build/tests/media" GST_REGISTRY="$build/tests/gstreamer-registry.bin" \
        KELVO_PLUGIN_PATH="$build/lib/kelvo/plugins"
    for ((seed = first; seed < first + seeds; seed++)); do
        log=$build/chaos/seed-$seed.log
        if "$root/tests/chaos/chaos.sh" "$build/tests/chaos-tester" --seed "$seed" --steps "$steps" > "$log" 2>&1; then
            tail -n 1 "$log"
        else
            failed=$((failed + 1))
            echo "seed $seed fails ($log):"
            tail -n 40 "$log"
        fi
        stall=$(sed -n 's/.*longest stall \([0-9]*\) ms.*/\1/p' "$log" | tail -n 1)
        stop=$(sed -n 's/.*with waiting \([0-9]*\) ms.*/\1/p' "$log" | tail -n 1)
        if [ "${stall:-0}" -gt "$longest" ]; then longest=$stall; fi
        if [ "${stop:-0}" -gt "$waiting" ]; then waiting=$stop; fi
    done
    if [ "$failed" = 0 ]; then
        echo "reliability: chaos-${build##*-}: $seeds seeds of $steps steps held, longest stall $longest ms," \
            "with waiting $waiting ms"
    else
        result=1
    fi
done
exit "$result"
