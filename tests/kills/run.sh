#!/bin/bash
# SPDX-License-Identifier: MIT
# run.sh KILLS [SEED] [FURTHER ARGUMENTS OF kills.py]
# Kills the console so many times (500 take a quarter of an hour) with what is built in build-edit, which is built first; another
# build folder is named by KELVO_KILLS_BUILD and built by its user (target "kills", test "media").
# What failed is tried again by the arguments that its line begins with: run.sh 10 --seed 7 --chain 12
set -euo pipefail
tests=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
root=$(dirname -- "$(dirname -- "$tests")")

if ! [[ ${1:-} =~ ^[0-9]+$ ]]; then
    echo "usage: $0 KILLS [SEED] [ARGUMENTS]" >&2
    exit 2
fi
kills=$1
shift
seed=()
if [[ ${1:-} =~ ^[0-9]+$ ]]; then
    seed=(--seed "$1")
    shift
fi
build=${KELVO_KILLS_BUILD:-}
if [ -z "$build" ]; then
    build=$root/build-edit
    cd "$root"
    [ -e "$build/build.ninja" ] || cmake --preset edit
    cmake --build --preset edit --target kills
    ctest --test-dir "$build" --quiet -R '^(media|gstreamer-registry)$' > /dev/null
fi
exec /usr/bin/python3 -B "$tests/kills.py" --build "$build" "${seed[@]}" "$@" "$kills"
