#!/bin/bash
# SPDX-License-Identifier: MIT
# tests/soak/run.sh [MINUTES]
# A tester's day in so many minutes (60): the console as users run it does everything again and again, on a display, a
# bus and a sound server of its own, and what it holds is watched from outside. When nothing grows, the figures are
# written into docs/benchmarks.md. Needs what the tests need (scripts/install-dependencies.sh test).
# Environment: KELVO_SOAK_BUILD names a release build that is there; KELVO_SOAK_OUTPUT a folder for what is left behind.
set -euo pipefail
cd "$(dirname "$0")/../.."
minutes=${1:-60}
build=${KELVO_SOAK_BUILD:-}
if [ -z "$build" ]; then
    build=build
    cmake --preset release >/dev/null
    cmake --build --preset release >/dev/null
fi
build=$(readlink -f "$build")
output=${KELVO_SOAK_OUTPUT:-$build/soak}
mkdir -p "$output"
export KELVO_E2E_PROGRAM=$build/bin/kelvo-test-gui KELVO_E2E_MEDIA=$output/media KELVO_E2E_OUTPUT=$output
export KELVO_SOAK_MINUTES=$minutes KELVO_SOAK_SAMPLES=$output/samples.csv
/usr/bin/python3 -B tests/e2e/run-scenario.py tests/soak/long_day.py | tee "$output/figures"
benchmarks/report.py --root . --long-day <"$output/figures" >/dev/null
