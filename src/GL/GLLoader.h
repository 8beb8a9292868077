// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Fills the function table of GLFunctions.h and tells the version of the context. Applications call
/// `initializeGLFunctions` (GLUtilities.h) instead, which calls this once. A context must be current.

#include "Export.h"

extern "C"
{
    /// Loads all pointers of the table. Returns 0 when not even `glGetIntegerv` and `glGetStringi` can be had;
    /// otherwise 1 plus the number of core functions that are missing (their pointers stay null). Silent.
    VRKGL_EXPORT int ogl_LoadFunctions(void);

    /// The context's version, read once per process and kept, whichever context is current later.
    VRKGL_EXPORT int ogl_GetMajorVersion(void);
    VRKGL_EXPORT int ogl_GetMinorVersion(void);

    /// Compares from the argument to the context, the reverse of what the name says, on purpose: 1 when (major, minor)
    /// is at least the context's version, else 0. Use `openGlVersionSupported` to ask what a context supports.
    VRKGL_EXPORT int ogl_IsVersionGEQ(int major, int minor);
}
