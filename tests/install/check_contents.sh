#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# What an installation holds, and what it does not. Arguments: prefix, libdir, folder of the headers, private headers…
set -euo pipefail
prefix=$1 lib=$1/$2 sources=$3
shift 3
for file in \
    "$lib/libVrkGL.so.1.0.0" "$lib/libVrkGL.so.1" "$lib/libVrkGL.so" "$lib/libVrkCore.so.1" \
    "$lib/cmake/VrkGL/VrkGLConfig.cmake" "$lib/pkgconfig/vrkgl.pc" \
    "$prefix/include/VrkCore/ResourcesPath.h" \
    "$prefix/share/vrkgl/GLSL/include/VrkUtilities.glslh" "$prefix/share/vrkgl/GLSL/src/VrkUtilities.glslc"; do
    [ -e "$file" ] || { echo "missing: $file"; exit 1; }
done
for path in "$sources"/*.h; do
    header=$(basename "$path")
    case " $* " in
        *" $header "*) [ ! -e "$prefix/include/VrkGL/$header" ] || { echo "private header installed: $header"; exit 1; } ;;
        *) [ -e "$prefix/include/VrkGL/$header" ] || { echo "header missing: $header"; exit 1; } ;;
    esac
done
# The exported C names.
symbols=$(nm -D --defined-only "$lib/libVrkGL.so" | awk '{print $3}')
for name in ogl_LoadFunctions ogl_GetMajorVersion ogl_GetMinorVersion ogl_IsVersionGEQ; do
    grep -qx "$name" <<< "$symbols" || { echo "not exported: $name"; exit 1; }
done
count=$(grep -c '^_ptrc_gl' <<< "$symbols")
[ "$count" -eq 325 ] || { echo "$count pointers are exported, 325 are expected"; exit 1; }
