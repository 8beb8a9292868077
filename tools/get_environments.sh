#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Makes Radiance pictures of real environments, to try vrkview --env and vrk-envmap with: those of Debian's blender-data,
# which are in the public domain (CC0), turned from OpenEXR by oiiotool of openimageio-tools.
#   tools/get_environments.sh [--install] <folder>
# --install installs the two packages where they are missing, which wants root; without it a missing one ends the script.
set -euo pipefail

install=no
if [ "${1:-}" = --install ]; then
    install=yes
    shift
fi
folder=${1:?folder for the pictures}

shopt -s nullglob
find_missing() {
    # The folder has Blender's version in its name in some releases.
    pictures=(/usr/share/blender/datafiles/studiolights/world/*.exr
        /usr/share/blender/*/datafiles/studiolights/world/*.exr)
    missing=()
    [ ${#pictures[@]} -gt 0 ] || missing+=(blender-data)
    command -v oiiotool > /dev/null || missing+=(openimageio-tools)
}

find_missing
if [ ${#missing[@]} -gt 0 ] && [ "$install" = yes ]; then
    as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo > /dev/null || { echo "Neither root nor sudo to install: ${missing[*]}" >&2; exit 1; }
        as_root=(sudo)
    fi
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq install -y --no-install-recommends "${missing[@]}" > /dev/null
    find_missing
fi
if [ ${#missing[@]} -gt 0 ]; then
    echo "Missing packages: ${missing[*]} (--install installs them)" >&2
    exit 1
fi

mkdir -p "$folder"
for picture in "${pictures[@]}"; do
    result="$folder/$(basename "$picture" .exr).hdr"
    oiiotool "$picture" --ch R,G,B -d float -o "$result"
    echo "$result"
done
