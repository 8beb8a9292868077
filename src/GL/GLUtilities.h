// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The floor of the library: loading OpenGL's functions, asking what the current context can do, and turning OpenGL's
/// own error reports into log lines. Everything here runs on a thread with a current context.

#include "Export.h"
#include "GLLoader.h"

/// Fills the function table, once per process. The application calls this after it made its first context current and
/// before it uses anything else of the library; the library never calls it. Returns whether the table is filled. On
/// failure it logs "Failed to initialize OpenGL '%s'" (critical, guarded) with the driver's version text; such a call
/// can be repeated. A repeated successful call costs nothing.
///
/// Each other call, also one that fails, registers the recognisers of texture files that the library has: Radiance
/// "hdr", "ktx" and "astc", in this order. See `RegisterTextureRecogniser`.
VRKGL_EXPORT bool initializeGLFunctions(void);

/// Sends the driver's debug reports, through `GL_ARB_debug_output`, to the guarded debug log: synchronously, on the
/// thread and at the call that caused them. Returns false, after "Failed to obtain '%s'" in the debug log, where the
/// driver lacks it; nothing is changed then. A debug context may be needed for the driver to report at all.
VRKGL_EXPORT bool initializeGLDebugging(void);

/// Address of an entry point outside the table, or null. With `optional` false a miss is logged as "Failed to obtain
/// '%s'" (debug, guarded). On Unix the answer is null unless the current context has the version or an extension that
/// introduces the name in the Khronos registry, whatever the driver's look-up says. A null `name` is reported.
VRKGL_EXPORT void* getGLProcAddress(const char* name, bool optional);

/// Whether the current context offers an extension; "GL_ARB_x" and "ARB_x" are the same question. The names are read
/// once per context handle and kept for the life of the process; the state without a context counts as a handle too.
/// While the environment variable `VRK_NO_GL_EXTENSIONS` is set, in any value, the answer is false for every context
/// not yet read. Any thread that has a context current. A null `name`, and a first question before the functions are
/// loaded, are reported and answered false.
VRKGL_EXPORT bool hasGLExtension(const char* name);

/// Whether the current context's version is at least `major`.`minor`. Asks the driver on every call.
VRKGL_EXPORT bool openGlVersionSupported(int major, int minor);

/// Whether a type that `glGetActiveUniform` reports is a sampler. Image types are not.
VRKGL_EXPORT bool isSamplerType(unsigned int glType);

/// Logs (debug, guarded) one line about the bound draw framebuffer, its first colour and its depth attachment. For a
/// person at a debugger. Leaves an OpenGL error where the framebuffer has no such attachment point.
VRKGL_EXPORT void logGLFramebuffer(void);

/// Placeholder of the export surface. Always 0.
VRKGL_EXPORT int vrkGetMemory(void);

/// What a raw OpenGL internal format, as read back from a texture or a file, is made of: the bytes of one texel, and
/// the format and type of a pixel transfer. Each knows a set of its own; anything else gives 0 and a critical message
/// that names the function, "bytesFromInternalFormat() does not implement yet : 0x%04X", whatever the logging switch
/// says. The index types `GL_UNSIGNED_SHORT` and `GL_UNSIGNED_INT` have bytes too. Compressed formats pass for plain
/// ones of 8 bits with as many channels. Any thread, no context.
VRKGL_EXPORT int bytesFromInternalFormat(unsigned internalFormat);
VRKGL_EXPORT unsigned formatFromInternalFormat(unsigned internalFormat);
VRKGL_EXPORT unsigned typeFromInternalFormat(unsigned internalFormat);

namespace Harrow::Vrk
{

/// Reads OpenGL's error flags, at most 10, and writes each as the warning "[%s:%d] glError: 0x%X '%s' caught" with the
/// given place. Not subject to the logging switch. Of the library, only `MandelbrotGPUTextureStreamer` calls it. Does
/// nothing while no function is loaded.
VRKGL_EXPORT void checkGLError(const char* file, int line);

/// As `checkGLError`, and tells whether any error was reported.
VRKGL_EXPORT bool hasGLError(const char* file, int line);

} // namespace Harrow::Vrk
