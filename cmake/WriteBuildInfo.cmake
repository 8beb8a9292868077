# SPDX-License-Identifier: MIT
# Run at build time: writes GLBuildInfo.h when the version or the source revision changed.
# Arguments: SOURCE_DIR, OUTPUT, VERSION.

set(hash "")
execute_process(
    COMMAND git -C "${SOURCE_DIR}" rev-parse HEAD
    OUTPUT_VARIABLE hash
    OUTPUT_STRIP_TRAILING_WHITESPACE
    ERROR_QUIET
    RESULT_VARIABLE failed)
if(failed OR NOT hash MATCHES "^[0-9a-f]+$")
    string(REPEAT "0" 40 hash)
endif()

set(text "// Written by the build.\n#pragma once\n#define VRKGL_BUILD_VERSION \"${VERSION}\"\n#define VRKGL_BUILD_GIT_HASH \"${hash}\"\n")
set(present "")
if(EXISTS "${OUTPUT}")
    file(READ "${OUTPUT}" present)
endif()
if(NOT text STREQUAL present)
    file(WRITE "${OUTPUT}" "${text}")
endif()
