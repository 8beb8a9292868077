// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The seam to the platform's OpenGL binding: looking up entry points and asking for the current context. Not
/// installed. The native binding is EGL and GLX on Unix and WGL on Windows; tests put a platform of their own here.
/// Free of Qt, so that the WGL side can be compiled without it.

#include "Export.h"

namespace Harrow::Vrk
{

class VRKGL_EXPORT GLPlatform
{
public:
    virtual ~GLPlatform();

    /// The driver's address for an entry point, or null when the current context does not offer it. As some drivers
    /// do, a platform may also give 1, 2, 3 or all ones for a miss: see `isMissing`.
    virtual void* procAddress(const char* name) = 0;

    /// Whether a result of `procAddress` means that there is no such entry point.
    static bool isMissing(void* address);

    /// The address of a symbol of the OpenGL library module, or null. The second road to functions of OpenGL 1.1
    /// on systems whose `procAddress` does not know them.
    virtual void* moduleSymbol(const char* name) = 0;

    /// Identity of the context that is current on this thread, or null. Only compared, never dereferenced.
    virtual void* currentContext() = 0;

    /// The platform in force: the native one unless `install` has put another in its place.
    static GLPlatform& active();

    /// Puts `platform` in force, or the native one again when null. Not owned; not thread-safe.
    static void install(GLPlatform* platform);

    /// The platform of this operating system. Lives to the end of the process.
    static GLPlatform& native();

    /// True once the library's globals are being released at process exit. OpenGL objects are left to the driver from
    /// then on: their context, or the driver itself, may be gone.
    static bool isProcessEnding();
    static void markProcessEnding(bool ending = true);
};

} // namespace Harrow::Vrk
