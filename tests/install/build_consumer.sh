#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds the consumer against an installed tree and runs it; then once more in a moved tree whose GLSL was changed.
# Arguments: way (find_package or pkg_config), prefix, libdir, source folder, build folder, compiler.
set -euo pipefail
way=$1 prefix=$2 libdir=$3 source=$4 build=$5 compiler=$6
rm -rf "$build"
mkdir -p "$build"
case "$way" in
    find_package)
        cmake -S "$source" -B "$build" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$compiler" \
            -DCMAKE_CXX_FLAGS="${VRK_CONSUMER_FLAGS:-}"
        cmake --build "$build"
        ;;
    pkg_config)
        export PKG_CONFIG_PATH=$prefix/$libdir/pkgconfig
        [ "$(pkg-config --modversion vrkgl)" = 1.0.0 ]
        # shellcheck disable=SC2046,SC2086
        "$compiler" -std=c++17 ${VRK_CONSUMER_FLAGS:-} -fPIC "$source/main.cpp" -o "$build/consumer" \
            $(pkg-config --cflags --libs vrkgl)
        ;;
esac
LD_LIBRARY_PATH=$prefix/$libdir "$build/consumer"

cp -a "$prefix" "$build/moved"
echo "// changed_in_place" >> "$build/moved/share/vrkgl/GLSL/include/VrkUtilities.glslh"
LD_LIBRARY_PATH=$build/moved/$libdir "$build/consumer" changed_in_place
