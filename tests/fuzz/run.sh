#!/bin/bash
# SPDX-License-Identifier: MIT
# run.sh [--coverage] SECONDS [TARGET...]
# Runs each fuzz target of build-fuzz (or only these) for so long, from the inputs in corpus/ and those that earlier runs
# have found; says how many inputs it tried, and fails when one was a finding. With --coverage also how much of the
# sources that the target is about was reached, by all inputs known: branches, among them those of the sanitizers, which
# only a fault would take.
# Each target without a finding gets the line for docs/reliability.md.
# A finding stays in build-fuzz/findings/TARGET. It is tried again by: build-fuzz/fuzz/TARGET FILE
set -uo pipefail
tests=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
root=$(dirname -- "$(dirname -- "$tests")")
build=$root/build-fuzz

coverage=0
if [ "${1:-}" = --coverage ]; then
    coverage=1
    shift
fi
if ! [[ ${1:-} =~ ^[0-9]+$ ]]; then
    echo "usage: $0 [--coverage] SECONDS [TARGET...]" >&2
    exit 2
fi
seconds=$1
shift
if [ $# = 0 ]; then
    shopt -s nullglob
    names=("$build"/fuzz/*.readers)
    names=("${names[@]##*/}")
    set -- "${names[@]%.readers}"
fi
if [ $# = 0 ]; then
    echo "$0: nothing is built: cmake --preset fuzz && cmake --build --preset fuzz" >&2
    exit 2
fi

# In memory where that is possible: some targets write a file for each input.
memory=/dev/shm
if [ ! -w "$memory" ]; then memory=${TMPDIR:-/tmp}; fi
TMPDIR=$(mktemp -d "$memory/kelvo-fuzz.XXXXXX")
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT
# The address sanitizer remembers who had each piece of memory, and does not give all back that was freed: in millions of
# inputs that comes to more than the limit. A process is followed by another before.
longest=240
asan=detect_leaks=1:allocator_may_return_null=1:quarantine_size_mb=64
export UBSAN_OPTIONS=print_stacktrace=1
export LSAN_OPTIONS=suppressions=$root/tests/support/lsan.supp:print_suppressions=0
# The readers of network data must not speak to anything.
export GIO_USE_VFS=local GSETTINGS_BACKEND=memory

# The branches reached in the sources of a target, of all and by file.
count_edges() {
    awk '
        FNR == NR { readers[$0] = 1; next }
        /COVERED_FUNC: / {
            place = $NF
            sub(/:[0-9]+(:[0-9]+)?$/, "", place)
            for (reader in readers)
                if (substr(place, length(place) - length(reader) + 1) == reader) {
                    for (i = 1; i < NF; ++i) if ($i == "edges:") split($(i + 1), edges, "/")
                    hit[reader] += edges[1]; all[reader] += edges[2]
                }
        }
        END {
            for (reader in all) { reached += hit[reader]; there += all[reader] }
            printf "%d of %d branches of its sources (%d %%)\n", reached, there, 100 * reached / there
            fflush()
            for (reader in all) printf "    %s: %d of %d branches (%d %%)\n", reader, hit[reader], all[reader], 100 * hit[reader] / all[reader] | "sort"
        }
    ' "$1" "$2"
}

result=0
for target in "$@"; do
    found=$build/findings/$target
    known=$build/corpus/$target
    log=$build/fuzz/$target.log
    mkdir -p "$found" "$known"
    inputs=("$known")
    if [ -d "$tests/corpus/$target" ]; then inputs+=("$tests/corpus/$target"); fi
    if [ "$target" = scenario ]; then inputs+=("$root/data/scenarios"); fi
    options=(-timeout=5 -rss_limit_mb=1024 -max_len=8192 -artifact_prefix="$found/")
    if [ -f "$tests/$target.dict" ]; then options+=(-dict="$tests/$target.dict"); fi
    export ASAN_OPTIONS=$asan
    # Whose a leak is, is told by libraries without frame pointers.
    if [ "$target" = playlist-file ]; then ASAN_OPTIONS+=:fast_unwind_on_malloc=0:malloc_context_size=14; fi
    code=0
    units=0
    megabytes=0
    # 0 where the process has come to no end.
    stat() { sed -n "s/^stat::$1: *//p" "$log" | grep . || echo 0; }
    for ((left = seconds; left > 0 && code == 0; left -= longest)); do
        "$build/fuzz/$target" "${options[@]}" -max_total_time=$((left < longest ? left : longest)) \
            -print_final_stats=1 "${inputs[@]}" > "$log" 2>&1 < /dev/null || code=$?
        units=$((units + $(stat number_of_executed_units)))
        if [ "$(stat peak_rss_mb)" -gt "$megabytes" ]; then megabytes=$(stat peak_rss_mb); fi
    done
    edges=$(grep -o ' cov: [0-9]*' "$log" | tail -1)
    tried="$units inputs, $((units / seconds)) a second"
    echo "$target: $tried,${edges:- none} branches, $megabytes MB"
    if [ "$code" != 0 ]; then
        echo "==> $target: a finding; the end of $log:"
        tail -60 "$log"
        result=1
    elif [ "$coverage" = 1 ]; then
        "$build/fuzz/$target" "${options[@]}" -runs=0 -print_coverage=1 "${inputs[@]}" > "$log.coverage" 2>&1 < /dev/null
        covered=$(count_edges "$build/fuzz/$target.readers" "$log.coverage")
        echo "${covered#*$'\n'}"
        tried+=", ${covered%%$'\n'*}"
    fi
    if [ "$code" = 0 ]; then echo "reliability: fuzz-$target: $tried, no finding in $seconds s"; fi
done
exit "$result"
