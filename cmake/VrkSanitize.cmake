# SPDX-License-Identifier: MIT
set(VRK_SANITIZE OFF CACHE STRING "ON: AddressSanitizer and UndefinedBehaviorSanitizer; thread: ThreadSanitizer; OFF: neither")

if(VRK_SANITIZE STREQUAL "thread")
    add_compile_options(-fsanitize=thread -fno-omit-frame-pointer -O1 -g1)
    add_link_options(-fsanitize=thread)
elseif(VRK_SANITIZE)
    # Optimised further the checks take longer to compile and are more often optimised away.
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer -O1)
    add_link_options(-fsanitize=address,undefined)
endif()

option(VRK_FUZZ "Build the fuzz targets, and the library instrumented for them (needs clang)" OFF)
option(VRK_FUZZ_COVERAGE "Count which lines the fuzz targets reach" OFF)

if(VRK_FUZZ)
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        message(FATAL_ERROR "VRK_FUZZ needs clang: its runtime has the fuzzer. See tools/fuzz.sh.")
    endif()
    if(VRK_SANITIZE)
        message(FATAL_ERROR "VRK_FUZZ brings its own sanitizers: leave VRK_SANITIZE off.")
    endif()
    add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined
                        -fsanitize-coverage-allowlist=${PROJECT_SOURCE_DIR}/tests/fuzz/coverage.list
                        -fno-omit-frame-pointer -gline-tables-only)
    if(VRK_FUZZ_COVERAGE)
        add_compile_options(-fprofile-instr-generate -fcoverage-mapping)
        add_link_options(-fprofile-instr-generate)
    endif()
    # Shared libraries find the sanitizers' runtime in the program.
    add_link_options(-fsanitize=address,undefined)
endif()
