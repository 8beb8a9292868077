#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Builds the library with ThreadSanitizer in build/thread, and runs the suites of what is told to be safe on several
# threads, on the fake driver, again and again: each time threads meet in other places.
#   tools/thread_sanitizer.sh        20 times
#   tools/thread_sanitizer.sh 500    that often
set -euo pipefail
here=$(cd "$(dirname "$0")/.." && pwd)
build=$here/build/thread

"$here/tools/install_packages.sh" test
cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVRK_BUILD_TESTS=ON -DVRK_BUILD_EXAMPLES=OFF -DVRK_WARNINGS_AS_ERRORS=ON -DVRK_SANITIZE=thread > /dev/null
cmake --build "$build" --target vrk_thread_tests >&2
export TSAN_OPTIONS="second_deadlock_stack=1:exitcode=66:${TSAN_OPTIONS:-}"
exec "$build/bin/vrk_thread_tests" --gtest_repeat="${1:-20}" --gtest_brief=1
