#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Runs all benchmarks of a build and prints their ratios. Usage: bench/run.sh [build folder]
# The driver is Mesa's no-operation one, so that what is measured is the processor's share alone; but for work that the
# driver itself does.
set -euo pipefail
build=${1:-$(cd "$(dirname "$0")/.." && pwd)/build/release}
for program in "$build"/bin/vrk_bench_*; do
    echo "== $(basename "$program")"
    case $program in
        *_ktx_upload | *_prefilter) "$program" ;;
        *) GALLIUM_NOOP=1 "$program" ;;
    esac
done
