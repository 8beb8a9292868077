#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds the library and the fuzz targets with clang, AddressSanitizer and UndefinedBehaviorSanitizer, and runs them one
# after the other. Fails when one of them finds something; what it found then lies in build/fuzz/found/<target>.
#   tools/fuzz.sh                       60 seconds of each target
#   tools/fuzz.sh 10m ktx glsl          ten minutes of each of the two (s, m and h for seconds, minutes and hours)
#   tools/fuzz.sh 1000000 hdr           a million runs
#   tools/fuzz.sh build                 builds, and makes the seeds
#   tools/fuzz.sh show ktx file...      runs the target on these files alone, with its report
#   tools/fuzz.sh coverage              replays all corpora, and tells for each unit which share of its lines they reach
# Corpora grow in build/fuzz/corpus/<target>. VRK_TEST_DATA tells where the real files lie that they start from too.
# Without clang or its runtime nothing is run: the status is 77, and the last line says "SKIPPED".
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=$here/build/fuzz
all=(ktx hdr astc identify glsl)
longest() { case $1 in ktx) echo 8192 ;; identify) echo 4096 ;; *) echo 2048 ;; esac; }

compiler=
for name in "${CXX:-}" clang++-14 clang++; do
    if [ -n "$name" ] && command -v "$name" > /dev/null && "$name" --version | grep clang > /dev/null; then
        compiler=$name
        break
    fi
done
if [ -z "$compiler" ]; then
    echo "SKIPPED: there is no clang++ to build the fuzz targets with"
    exit 77
fi
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
printf '#include <cstddef>\n#include <cstdint>\nextern "C" int LLVMFuzzerTestOneInput(const std::uint8_t*, std::size_t) { return 0; }\n' \
    > "$scratch/probe.cpp"
if ! "$compiler" -fsanitize=fuzzer,address,undefined "$scratch/probe.cpp" -o "$scratch/probe" 2> "$scratch/report"; then
    tail -n 3 "$scratch/report"
    echo "SKIPPED: $compiler has no runtime for fuzzing (Debian: libclang-rt-14-dev)"
    exit 77
fi

# build_targets <folder> [option of CMake...]
build_targets() {
    # Another run of this script may be at work in the same folder.
    mkdir -p "$here/build"
    exec 9> "$here/build/fuzz.lock"
    flock 9
    cmake -S "$here" -B "$1" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_BUILD_TYPE=Release \
        -DCMAKE_CXX_FLAGS_RELEASE=-O2 -DVRK_FUZZ=ON -DVRK_BUILD_EXAMPLES=OFF -DVRK_WARNINGS_AS_ERRORS=ON "${@:2}" > /dev/null
    cmake --build "$1" --target "${all[@]/#/fuzz_}" >&2
    python3 "$here/tests/fuzz/make_seeds.py" "$here" "$build/seeds" "${VRK_TEST_DATA:-$here/../shared/data}"
    exec 9>&-
}

# report_coverage <folder>: what the corpora and seeds reach of the units that tests/fuzz/coverage.list names
report_coverage() {
    local suffix=${compiler##*clang++} target pattern
    local -a patterns units=()
    for target in "${all[@]}"; do
        mkdir -p "$build/corpus/$target"
        LLVM_PROFILE_FILE="$scratch/$target-%m.profraw" "$1/bin/fuzz_$target" -runs=0 -timeout=60 -rss_limit_mb=2048 \
            "$build/corpus/$target" "$build/seeds/$target" 2> "$scratch/report" || { cat "$scratch/report" >&2 && return 1; }
    done
    "llvm-profdata$suffix" merge -o "$scratch/all.profdata" "$scratch"/*.profraw
    mapfile -t patterns < <(sed -n 's|^src:\*/||p' "$here/tests/fuzz/coverage.list")
    for pattern in "${patterns[@]}"; do
        # shellcheck disable=SC2206 # a pattern of file names
        units+=("$here"/$pattern)
    done
    "llvm-cov$suffix" report -instr-profile="$scratch/all.profdata" -object "$1/lib/libVrkGL.so" \
        "$1/lib/libVrkCore.so" "${units[@]}"
}

# Little of what was freed is kept back: the targets free as much in a second as the sanitizer would keep by itself.
export ASAN_OPTIONS="quarantine_size_mb=32:malloc_context_size=12:${ASAN_OPTIONS:-}"
export UBSAN_OPTIONS="print_stacktrace=1:${UBSAN_OPTIONS:-}"
export VRK_ENABLE_LOGGING=1 # messages are formatted, and then dropped

limit=${1:-60s}
shift || true
if [ "$limit" = show ]; then
    target=${1:?a target: ${all[*]}}
    shift
    exec "$build/bin/fuzz_$target" -timeout=5 -rss_limit_mb=2048 -error_exitcode=1 "$@"
fi
if [ "$limit" = build ]; then
    build_targets "$build"
    exit 0
fi
if [ "$limit" = coverage ]; then
    build_targets "$build-coverage" -DVRK_FUZZ_COVERAGE=ON
    report_coverage "$build-coverage"
    exit 0
fi
if [[ ! $limit =~ ^([0-9]+)([smh]?)$ ]]; then
    echo "Neither a time nor a number of runs: $limit" >&2
    exit 2
fi
case ${BASH_REMATCH[2]} in
    '') amount=-runs=${BASH_REMATCH[1]} ;;
    s) amount=-max_total_time=${BASH_REMATCH[1]} ;;
    m) amount=-max_total_time=$((BASH_REMATCH[1] * 60)) ;;
    h) amount=-max_total_time=$((BASH_REMATCH[1] * 3600)) ;;
esac
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=("${all[@]}")
for target in "${targets[@]}"; do
    case " ${all[*]} " in *" $target "*) ;; *) echo "No such target: $target (there are ${all[*]})" >&2 && exit 2 ;; esac
done
build_targets "$build"

status=0
for target in "${targets[@]}"; do
    corpus=$build/corpus/$target found=$build/found/$target log=$build/found/$target.log
    mkdir -p "$corpus" "$found"
    failed=
    "$build/bin/fuzz_$target" "$amount" -max_len="$(longest "$target")" -timeout=5 -rss_limit_mb=2048 -error_exitcode=1 \
        -dict="$here/tests/fuzz/$target.dict" -artifact_prefix="$found/" -print_final_stats=1 \
        "$corpus" "$build/seeds/$target" > "$log" 2>&1 || failed=$?
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log")
    coverage=$(grep -o 'cov: [0-9]* ft: [0-9]*' "$log" | tail -n 1 || true)
    if [ -n "$failed" ]; then
        cat "$log" >&2
        status=1
    fi
    echo "$target: ${failed:+FAILED ($failed), }${runs:-unknown} runs, ${rate:-unknown} a second, ${coverage:-no coverage}"
done
exit $status
