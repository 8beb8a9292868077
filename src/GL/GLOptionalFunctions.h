// SPDX-License-Identifier: MIT
// Written by tools/generate_gl_loader.py from the Khronos XML registry. Do not edit.
#pragma once

/// \file
/// Types of the entry points outside the function table, each looked up with `getGLProcAddress` by the unit that
/// uses it. Not installed.

#include "GLFunctions.h"

namespace Harrow::Vrk
{

using GLDEBUGPROCARB = void(VRK_GLAPIENTRY*)(GLenum source, GLenum type, GLuint id, GLenum severity, GLsizei length, const GLchar* message, const void* userParam);

using PFN_glBindBuffersBase = void(VRK_GLAPIENTRY*)(GLenum target, GLuint first, GLsizei count, const GLuint* buffers);
using PFN_glBindFragDataLocationIndexed = void(VRK_GLAPIENTRY*)(GLuint program, GLuint colorNumber, GLuint index, const GLchar* name);
using PFN_glBufferStorage = void(VRK_GLAPIENTRY*)(GLenum target, GLsizeiptr size, const void* data, GLbitfield flags);
using PFN_glDebugMessageCallbackARB = void(VRK_GLAPIENTRY*)(GLDEBUGPROCARB callback, const void* userParam);
using PFN_glDebugMessageControlARB = void(VRK_GLAPIENTRY*)(GLenum source, GLenum type, GLenum severity, GLsizei count, const GLuint* ids, GLboolean enabled);
using PFN_glDispatchCompute = void(VRK_GLAPIENTRY*)(GLuint num_groups_x, GLuint num_groups_y, GLuint num_groups_z);
using PFN_glDrawArraysInstancedBaseInstance = void(VRK_GLAPIENTRY*)(GLenum mode, GLint first, GLsizei count, GLsizei instancecount, GLuint baseinstance);
using PFN_glDrawElementsInstancedBaseVertexBaseInstance = void(VRK_GLAPIENTRY*)(GLenum mode, GLsizei count, GLenum type, const void* indices, GLsizei instancecount, GLint basevertex, GLuint baseinstance);
using PFN_glGetProgramBinary = void(VRK_GLAPIENTRY*)(GLuint program, GLsizei bufSize, GLsizei* length, GLenum* binaryFormat, void* binary);
using PFN_glGetProgramBinaryOES = void(VRK_GLAPIENTRY*)(GLuint program, GLsizei bufSize, GLsizei* length, GLenum* binaryFormat, void* binary);
using PFN_glGetProgramInterfaceiv = void(VRK_GLAPIENTRY*)(GLuint program, GLenum programInterface, GLenum pname, GLint* params);
using PFN_glGetProgramResourceIndex = GLuint(VRK_GLAPIENTRY*)(GLuint program, GLenum programInterface, const GLchar* name);
using PFN_glGetProgramResourceName = void(VRK_GLAPIENTRY*)(GLuint program, GLenum programInterface, GLuint index, GLsizei bufSize, GLsizei* length, GLchar* name);
using PFN_glGetTextureHandleARB = GLuint64(VRK_GLAPIENTRY*)(GLuint texture);
using PFN_glGetTextureHandleNV = GLuint64(VRK_GLAPIENTRY*)(GLuint texture);
using PFN_glIsTextureHandleResidentARB = GLboolean(VRK_GLAPIENTRY*)(GLuint64 handle);
using PFN_glIsTextureHandleResidentNV = GLboolean(VRK_GLAPIENTRY*)(GLuint64 handle);
using PFN_glMakeTextureHandleNonResidentARB = void(VRK_GLAPIENTRY*)(GLuint64 handle);
using PFN_glMakeTextureHandleNonResidentNV = void(VRK_GLAPIENTRY*)(GLuint64 handle);
using PFN_glMakeTextureHandleResidentARB = void(VRK_GLAPIENTRY*)(GLuint64 handle);
using PFN_glMakeTextureHandleResidentNV = void(VRK_GLAPIENTRY*)(GLuint64 handle);
using PFN_glNamedBufferData = void(VRK_GLAPIENTRY*)(GLuint buffer, GLsizeiptr size, const void* data, GLenum usage);
using PFN_glNamedBufferStorage = void(VRK_GLAPIENTRY*)(GLuint buffer, GLsizeiptr size, const void* data, GLbitfield flags);
using PFN_glNamedBufferSubData = void(VRK_GLAPIENTRY*)(GLuint buffer, GLintptr offset, GLsizeiptr size, const void* data);
using PFN_glProgramBinary = void(VRK_GLAPIENTRY*)(GLuint program, GLenum binaryFormat, const void* binary, GLsizei length);
using PFN_glProgramBinaryOES = void(VRK_GLAPIENTRY*)(GLuint program, GLenum binaryFormat, const void* binary, GLint length);
using PFN_glProgramParameteri = void(VRK_GLAPIENTRY*)(GLuint program, GLenum pname, GLint value);
using PFN_glShaderStorageBlockBinding = void(VRK_GLAPIENTRY*)(GLuint program, GLuint storageBlockIndex, GLuint storageBlockBinding);
using PFN_glUniformHandleui64vARB = void(VRK_GLAPIENTRY*)(GLint location, GLsizei count, const GLuint64* value);
using PFN_glUniformHandleui64vNV = void(VRK_GLAPIENTRY*)(GLint location, GLsizei count, const GLuint64* value);

} // namespace Harrow::Vrk
