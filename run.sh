#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs what is missing, builds, and draws a picture with vrkview. All arguments go to vrkview:
#   ./run.sh                      the built-in scene, headless, to build/release/vrkview.png
#   ./run.sh some/model.obj       another model
#   ./run.sh --window             in a window: drag orbits, the wheel zooms, H lists the keys
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
build=$here/build/release

"$here/tools/install_packages.sh" run
if [ ! -e "$build/build.ninja" ]; then
    cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release > /dev/null
fi
cmake --build "$build" --target vrkview >&2 || {
    # A folder that test.sh configured wants the tests' packages too.
    cmake -S "$here" -B "$build" -DVRK_BUILD_TESTS=OFF -DVRK_BUILD_BENCHMARKS=OFF > /dev/null
    cmake --build "$build" --target vrkview >&2
}

output=(--output "$build/vrkview.png")
for argument in "$@"; do
    case "$argument" in --output | --output=* | --window | --help | --version | -h | -v | -o) output=() ;; esac
done
exec "$build/bin/vrkview" "${output[@]}" "$@"
