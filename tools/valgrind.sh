#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Runs tests under valgrind's memcheck: reads of what nobody wrote, which the sanitizers of the compiler do not see, and accesses and
# leaks outside instrumented code. Takes the build of ./test.sh as it is. Fails when a test fails or memcheck has something to say.
#   tools/valgrind.sh                    the suites without a driver, and those of the driver that are named below
#   tools/valgrind.sh vrk_gpu_tests...   of these programs alone
# Left out: soaks and comparisons of thousands of random cases, which do the same again and again, and counts of allocations, which
# memcheck makes by itself.
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=${VRK_BUILD:-$here/build/release}
programs=("$@")
[ $# -gt 0 ] || programs=(vrk_core_tests vrk_runtime_tests vrk_gpu_tests vrk_texture_tests vrk_thread_tests vrk_manager_tests
    vrk_scene_tests vrk_lighting_tests)

left_out='*Soak*:*Differential*:*CoverWhatIsSeen*:*EnumerationFinds*:*AnyTurnOfTheCamera*:*NoBoxWithAPoint*:*HeapDoesNotGrow*:HeapCounting.*'
# Driver suites with few draws: buffers, vertex arrays, framebuffers, textures from files.
driver='BufferObjectGL.*:VertexArrayObjectGL.*:FramebufferObjectGL.*:TextureGL.*:UniformBufferObjectGL.*'

"$here/tools/install_packages.sh" quality
mkdir -p "$here/build/valgrind"
# Code that is compiled while it runs has no names, and reads beyond the ends of texts by whole words.
export QT_ENABLE_REGEXP_JIT=0
# The software driver compiles its shaders into memory that it reuses.
memcheck=(valgrind --quiet --error-exitcode=99 --leak-check=full --errors-for-leak-kinds=definite --show-leak-kinds=definite
    --num-callers=30 --smc-check=all-non-file --suppressions="$here/tests/support/valgrind.supp")
status=0
for program in "${programs[@]}"; do
    for filter in "-*GL.*:$left_out" "$driver"; do
        case $filter in -*) kind=unit ;; *) kind=driver ;; esac
        log=$here/build/valgrind/$program.$kind.log
        SECONDS=0 result=0
        "${memcheck[@]}" "$build/bin/$program" --gtest_brief=1 --gtest_filter="$filter" > "$log" 2>&1 || result=$?
        passed=$(sed -n 's/^\[  PASSED  \] \([0-9]*\) test.*/\1/p' "$log")
        [ "$kind" = driver ] && [ "$passed" = 0 ] && [ "$result" -eq 0 ] && continue # it has no such suite
        echo "$program, $kind: ${passed:-no} tests passed, $(grep -c '^==[0-9]*== [^ ].*' "$log" || true) lines of memcheck, ${SECONDS} s"
        [ "$result" -eq 0 ] || { status=1 && echo "FAILED ($result): $log"; }
    done
done
exit $status
