#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds an example alone against an installed tree, and has it draw.
# Arguments: example (minimal, viewer or guides), prefix, source folder, build folder, compiler.
set -euo pipefail
example=$1 prefix=$2 source=$3 build=$4 compiler=$5
rm -rf "$build"
launcher=$(command -v ccache || true)
cmake -S "$source" -B "$build" -DCMAKE_BUILD_TYPE=Release -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_COMPILER_LAUNCHER="$launcher" \
    -DCMAKE_CXX_FLAGS="${VRK_CONSUMER_FLAGS:-}"
cmake --build "$build"
cd "$build"
case "$example" in
    minimal)
        ./vrkminimal
        picture=vrkminimal.png
        ;;
    viewer)
        picture=$(./vrkview --builtin --size 160x90 --output picture.png)
        ;;
    guides)
        ctest --output-on-failure
        picture=picture.png
        ./vrkguide-shadows "$picture"
        ;;
esac
[ "$(head -c 4 "$picture" | tail -c 3)" = PNG ]
