#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Which lines of src the tests reach. Builds the two libraries with GCC's counters in build/coverage, puts them in the place of those that
# the test programs of ./test.sh were built with, runs these in both profiles, and reports per file. Fails below 95 % of the
# lines, when a test fails, and when tools/coverage_reasons.tsv is not what was found: a reason for each block that no test
# reaches.
#   tools/coverage.sh            all of that
#   tools/coverage.sh report     reports what the last runs have counted
#   tools/coverage.sh write      the same, and brings the tables of docs/quality.md up to date
#   tools/coverage.sh run X...   runs only the tests that ctest is given X... for, on top of what was counted before
# Pages with the lines themselves: build/coverage/report/index.html.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=$here/build/coverage
tests=$here/build/release

run_tests() {
    "$here/tools/install_packages.sh" quality
    if [ ! -d "$tests/tests" ]; then
        echo 'There are no test programs: run ./test.sh first' >&2
        return 1
    fi
    cmake --build "$tests" >&2
    cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVRK_BUILD_EXAMPLES=OFF \
        -DVRK_WARNINGS_AS_ERRORS=ON -DVRK_COVERAGE=ON > /dev/null
    cmake --build "$build" --target VrkCore VrkGL >&2
    [ $# -gt 0 ] || find "$build" -name '*.gcda' -delete
    # The programs look for the libraries here before they look where they were built. The checks on the tree itself run no
    # code of src, and the programs of label "install" bring libraries of their own.
    LD_LIBRARY_PATH=$build/lib ctest --test-dir "$tests" --output-on-failure --parallel "$(nproc)" \
        --label-regex '^(unit|gl|floor|qt)$' --exclude-regex '^checks\.' "$@"
}

report() {
    mkdir -p "$build/report"
    local status=0
    gcovr --config "$here/gcovr.cfg" --root "$here" --object-directory "$build/src" "$build/src" \
        --txt "$build/report/lines.txt" --json "$build/report/lines.json" \
        --html-details "$build/report/index.html" --print-summary || status=$?
    cat "$build/report/lines.txt"
    python3 "$here/tools/coverage_reasons.py" "$@" "$here" "$build/report/lines.json" || status=1
    return "$status"
}

case "${1:-}" in
    '') run_tests && report ;;
    run) run_tests "${@:2}" ;;
    report) report ;;
    write) report --write ;;
    *) echo "Unknown: $1" >&2 && exit 2 ;;
esac
