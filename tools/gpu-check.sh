#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds the tests that need a GPU's driver (bindless textures), says which driver there is, and runs them there. It needs
# no display: EGL opens the first GPU. Arguments go to ctest.
#   tools/gpu-check.sh
#   VRK_BUILD=build/other tools/gpu-check.sh --rerun-failed
# It fails when a test fails, and with 77 when the driver has nothing that could be tested.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=${VRK_BUILD:-$here/build/release}
export VRK_TEST_GPU=1

cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVRK_BUILD_TESTS=ON -DVRK_TEST_FLAGS=-O1 > /dev/null
cmake --build "$build" --target vrk_bindless_tests >&2

"$build/bin/vrk_bindless_tests" --gtest_filter='GpuGL.*' | grep -E '^GL_' | tee "$build/gpu-driver.txt"
if ! grep -q 'bindless_texture: yes' "$build/gpu-driver.txt"; then
    echo "gpu-check: this driver has no bindless textures, so nothing was checked" >&2
    exit 77
fi
exec ctest --test-dir "$build" --output-on-failure -L gpu "$@"
