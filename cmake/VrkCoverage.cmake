# SPDX-License-Identifier: MIT
# Counts which lines of the libraries run: tools/coverage.sh builds them so, runs the tests and reports.
option(VRK_COVERAGE "Count which lines of the libraries run" OFF)

function(vrk_coverage target)
    if(NOT VRK_COVERAGE)
        return()
    endif()
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        message(FATAL_ERROR "VRK_COVERAGE is for GCC: see tools/coverage.sh.")
    endif()
    # Tests with threads count too. Without optimisation a line is what was written there.
    target_compile_options(${target} PRIVATE --coverage -fprofile-abs-path -fprofile-update=atomic -O0)
    target_link_options(${target} PRIVATE --coverage)
endfunction()
