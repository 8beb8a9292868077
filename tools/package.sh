#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds the Debian packages libvrkgl1, libvrkgl-dev and vrkgl-viewer, and prints their paths.
#   tools/package.sh                                      into build/packages
#   tools/package.sh -DVRK_PACKAGE_MAINTAINER='A <a@b>'   arguments go to CMake
# VRK_BUILD names the folder to build in, build/package if not given; VRK_PACKAGES the folder for the packages.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=${VRK_BUILD:-$here/build/package}
packages=${VRK_PACKAGES:-$here/build/packages}

missing=()
for tool in dpkg-shlibdeps:dpkg-dev dpkg-deb:dpkg file:file strip:binutils cpack:cmake ninja:ninja-build; do
    command -v "${tool%:*}" > /dev/null || missing+=("${tool#*:}")
done
if [ ${#missing[@]} -gt 0 ]; then
    echo "package: these Debian packages are missing: ${missing[*]}" >&2
    exit 1
fi

# For /usr libraries lie in a folder of their architecture. Where the loader looks anyway, programs need not say so.
cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
    -DCMAKE_SKIP_INSTALL_RPATH=ON -DVRK_BUILD_EXAMPLES=ON "$@" > /dev/null
cmake --build "$build" >&2

rm -rf "$build/packages"
(cd "$build" && umask 022 && cpack -G DEB) > "$build/cpack.log" 2>&1 || { cat "$build/cpack.log" >&2 && exit 1; }
mkdir -p "$packages"
for name in libvrkgl1 libvrkgl-dev vrkgl-viewer; do
    made=$(ls "$build/packages/${name}"_*.deb)
    rm -f "$packages/${name}"_*.deb
    cp "$made" "$packages/"
    echo "$packages/$(basename "$made")"
done
