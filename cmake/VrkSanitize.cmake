# SPDX-License-Identifier: MIT
option(VRK_SANITIZE "Build with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)

if(VRK_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
endif()
