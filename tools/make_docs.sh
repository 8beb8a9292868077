#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Writes the reference of the public headers and the guides, by doxygen, and fails when there is anything to warn of: above
# all a class or a member of a public header that no comment tells about.
#   tools/make_docs.sh [folder]     into build/doxygen if no folder is named
# Without doxygen nothing is written: the status is 77, and the last line says "SKIPPED".
set -euo pipefail
folder=$(realpath -m "${1:-"$(dirname "$0")/../build/doxygen"}")
cd "$(dirname "$0")/.."

if ! command -v doxygen > /dev/null; then
    echo "SKIPPED: there is no doxygen (Debian: doxygen)"
    exit 77
fi
not_installed=$(sed -n '/^set(VRK_PRIVATE_HEADERS/,/)/p' cmake/layers.cmake | grep -oE '\w+\.h' | sed 's,^,src/GL/,')
mkdir -p "$folder"
{
    cat docs/Doxyfile
    echo "OUTPUT_DIRECTORY = \"$folder\""
    echo "EXCLUDE += ${not_installed//$'\n'/ }"
    echo "WARN_LOGFILE = \"$folder/warnings\""
} | doxygen -
if [ -s "$folder/warnings" ]; then
    sort -u "$folder/warnings"
    exit 1
fi
if [ ! -f "$folder/html/classHarrow_1_1Vrk_1_1Texture.html" ]; then
    echo "doxygen has found no headers"
    exit 1
fi
