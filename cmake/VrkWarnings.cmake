# SPDX-License-Identifier: MIT
# Warnings of the project's own targets; they are errors in CI and in test.sh.

option(VRK_WARNINGS_AS_ERRORS "Treat warnings as errors" OFF)

function(vrk_warnings target)
    if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
        target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual)
        if(VRK_WARNINGS_AS_ERRORS)
            target_compile_options(${target} PRIVATE -Werror)
        endif()
    endif()
endfunction()
