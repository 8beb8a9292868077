#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Installs what is missing, builds everything, and runs all tests in both OpenGL profiles. Arguments go to ctest:
#   ./test.sh                     all tests
#   ./test.sh -L unit             one label: unit, gl, floor, qt, image, install, gpu, soak, fuzz-smoke
#   VRK_SANITIZE=ON ./test.sh     the same under AddressSanitizer and UndefinedBehaviorSanitizer, in a build of its own
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
case "${VRK_SANITIZE:-OFF}" in
    ON | on | 1 | true) sanitize=ON build=$here/build/sanitize ;;
    *) sanitize=OFF build=$here/build/release ;;
esac

"$here/tools/install_packages.sh" test
cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVRK_BUILD_TESTS=ON -DVRK_BUILD_BENCHMARKS=ON \
    -DVRK_TEST_FLAGS=-O1 -DVRK_WARNINGS_AS_ERRORS=ON -DVRK_SANITIZE="$sanitize" > /dev/null
cmake --build "$build" >&2

if [ "$sanitize" = ON ]; then
    # What the driver and Qt keep for the life of the process is not ours.
    export LSAN_OPTIONS="suppressions=$here/tests/support/leaks.supp:print_suppressions=0"
fi
exec ctest --test-dir "$build" --output-on-failure --parallel "$(nproc)" "$@"
