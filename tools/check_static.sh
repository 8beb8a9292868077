#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Reads the code without running it. Each of the two fails when it has something to say; what they are not asked about is in
# .clang-tidy and tools/cppcheck.suppressions, with the reasons.
#   tools/check_static.sh                       both
#   tools/check_static.sh cppcheck              src and examples, within a minute; ctest runs it too
#   tools/check_static.sh tidy                  src and examples
#   tools/check_static.sh tidy pattern...       those of their files whose path holds one of the patterns
# Without cppcheck its check is skipped, and with it the other one of "both": the status is 77, and the last line says
# "SKIPPED".
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=$here/build/static

run_cppcheck() {
    if ! command -v cppcheck > /dev/null; then
        echo 'SKIPPED: there is no cppcheck'
        return 77
    fi
    local folder=$build/cppcheck
    mkdir -p "$folder"
    cd "$here"
    # Macros that mean nothing to it. Each file is looked at in one configuration, that of this system.
    cppcheck -j "$(nproc)" --quiet --error-exitcode=1 --inline-suppr --cppcheck-build-dir="$folder" \
        --enable=warning,performance,portability,style --std=c++20 --language=c++ --library=qt \
        --suppressions-list=tools/cppcheck.suppressions --template='{file}:{line}: {severity}: {message} [{id}]' \
        -D__GNUC__ -D__linux__ -D'VRKGL_EXPORT=' -D'VRKCORE_EXPORT=' -D'Q_OBJECT=' -D'Q_ENUM(x)=' \
        -I src/GL src/Core src/GL examples
}

run_tidy() {
    "$here/tools/install_packages.sh" quality
    # Qt's generated files and the version are all that is built.
    CXX=clang++-14 cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVRK_BUILD_TESTS=OFF > /dev/null
    cmake --build "$build" --target VrkGLBuildInfo > /dev/null
    local pattern number files='/(src/(Core|GL)|examples)/'
    if [ $# -gt 0 ]; then
        files='/(?=(src/(Core|GL)|examples)/).*('
        for pattern in "$@"; do files+="$pattern|"; done
        files=${files%|}')'
    fi
    # The table of functions and the list of requirements are written by tools/generate_gl_loader.py. The log names each file.
    if ! run-clang-tidy-14 -quiet -j "$(nproc)" -p "$build" "^$here$files.*(?<!GLFunctionTable)(?<!GLRequirements)\.cpp\$" \
        > "$build/tidy.log" 2> "$build/tidy.errors"; then
        grep -vE '^clang-tidy-14 ' "$build/tidy.log" || tail -n 20 "$build/tidy.errors"
        return 1
    fi
    number=$(grep -c '^clang-tidy-14 ' "$build/tidy.log" || true)
    echo "clang-tidy has nothing to say about $number files"
    [ "$number" -gt 0 ]
}

case "${1:-}" in
    '') run_cppcheck && run_tidy ;;
    cppcheck) run_cppcheck ;;
    tidy) run_tidy "${@:2}" ;;
    *) echo "Unknown: $1" >&2 && exit 2 ;;
esac
