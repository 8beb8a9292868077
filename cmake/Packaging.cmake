# SPDX-License-Identifier: MIT
# Debian packages by CPack, one per component of the installation:
#   library      libvrkgl1      the two shared libraries and the GLSL files that stand before the embedded ones
#   development  libvrkgl-dev   headers, link names, the CMake package and the pkg-config file
#   viewer       vrkgl-viewer   vrkview, vrk-envmap and vrk-deep-pick, when the examples are built
# tools/package.sh builds them and tools/check_packages.sh checks them.

set(VRK_PACKAGE_MAINTAINER "The VrkGL authors <maintainers@vrkgl.invalid>" CACHE STRING
    "Maintainer field of the Debian packages; who gives packages to others sets their own address")
set(VRK_PACKAGE_RELEASE 1 CACHE STRING "Revision of the Debian packages of one version")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME vrkgl)
set(CPACK_PACKAGE_VENDOR VrkGL)
set(CPACK_PACKAGE_CONTACT "${VRK_PACKAGE_MAINTAINER}")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # would come before the first line of each description below
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
# Folders that we did not write have the modes that Debian wants, whatever the umask of the one who packs.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_COMPONENTS_ALL library development)
if(VRK_BUILD_EXAMPLES)
    list(APPEND CPACK_COMPONENTS_ALL viewer)
endif()

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE ${VRK_PACKAGE_RELEASE})
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(debian_version ${PROJECT_VERSION}-${VRK_PACKAGE_RELEASE})
set(same_library "libvrkgl${PROJECT_VERSION_MAJOR} (= ${debian_version})")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libvrkgl${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
# Tells packages that link with the libraries what to depend on, and has the loader's cache brought up to date.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "data-driven real-time rendering layer on OpenGL
VrkGL draws scenes from data on OpenGL 3.2 core and up: draw lists, records of
instances, thousands of textures, shadows and environment light, with a library
of GLSL files. It works in any OpenGL context, with or without a window.
.
This package holds the shared libraries and the GLSL files.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libvrkgl-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${same_library}, qt6-base-dev (>= 6.4)")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "pkg-config, cmake (>= 3.25)")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "data-driven real-time rendering layer on OpenGL - development files
VrkGL draws scenes from data on OpenGL 3.2 core and up: draw lists, records of
instances, thousands of textures, shadows and environment light, with a library
of GLSL files. It works in any OpenGL context, with or without a window.
.
This package holds the headers, the CMake package \"VrkGL\" and the pkg-config
file \"vrkgl\".")

set(CPACK_DEBIAN_VIEWER_PACKAGE_NAME vrkgl-viewer)
set(CPACK_DEBIAN_VIEWER_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_VIEWER_PACKAGE_SHLIBDEPS ON)
# The library is in no package that dpkg-shlibdeps could ask while it is built; it is found here and named by hand.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_VIEWER_PACKAGE_DEPENDS "${same_library}")
set(CPACK_DEBIAN_VIEWER_PACKAGE_SUGGESTS assimp-testmodels)
set(CPACK_COMPONENT_VIEWER_DESCRIPTION "viewer of 3D models and tools on the VrkGL rendering layer
vrkview draws a 3D model, a crowd or a wall of textures in a window, or
without one to a picture file. vrk-envmap filters environment pictures for
lighting, and vrk-deep-pick lists all surfaces that lie under a pixel.")

# The terms of use, where Debian looks for them; a plain installation has no use for these copies.
foreach(component library development viewer)
    string(TOUPPER ${component} upper)
    install(FILES ${PROJECT_SOURCE_DIR}/LICENSE RENAME copyright COMPONENT ${component} EXCLUDE_FROM_ALL
            DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
endforeach()

include(CPack)
