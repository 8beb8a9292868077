// SPDX-License-Identifier: MIT
// Written by tools/generate_gl_loader.py from the Khronos XML registry. Do not edit.
#pragma once

/// \file
/// The OpenGL function table: one exported pointer `_ptrc_gl…` per entry point, null until `ogl_LoadFunctions`
/// (through `initializeGLFunctions`) fills it. The table holds the 316 functions of the 3.2 core profile and 9 of
/// six extensions, and is shared by all contexts of the process.
///
/// Inside `namespace Harrow::Vrk` the OpenGL names are inline functions that call through the pointers, so code in
/// that namespace writes `glBindBuffer(…)`. They are functions, not macros: the header can stand before or after
/// `<GL/gl.h>` and Qt's OpenGL headers, whose own declarations and members of the same names stay usable.
/// A caller whose pointer is null reports "OpenGL function '%s' is not available" through the critical log, does
/// nothing and returns 0; calling through the bare pointer crashes then.

#include "Export.h"
#include "GLConstants.h"

#include <cstddef>
#include <cstdint>

#if defined(_WIN32)
#define VRK_GLAPIENTRY __stdcall
#else
#define VRK_GLAPIENTRY
#endif

/// The same type as in the system's headers: C++ allows a typedef to be repeated when it agrees.
typedef unsigned int GLenum;
typedef unsigned char GLboolean;
typedef unsigned int GLbitfield;
typedef void GLvoid;
typedef signed char GLbyte;
typedef unsigned char GLubyte;
typedef short GLshort;
typedef unsigned short GLushort;
typedef int GLint;
typedef unsigned int GLuint;
typedef int GLsizei;
typedef float GLfloat;
typedef double GLdouble;
typedef char GLchar;
typedef unsigned short GLhalf;
typedef std::ptrdiff_t GLintptr;
typedef std::ptrdiff_t GLsizeiptr;
typedef std::int64_t GLint64;
typedef std::uint64_t GLuint64;
typedef struct __GLsync* GLsync;


extern "C" {
/// The entry point in the driver; null until it is loaded.
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glBlendFunc)(GLenum, GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glClear)(GLbitfield);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glClearColor)(GLfloat, GLfloat, GLfloat, GLfloat);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glClearDepth)(GLdouble);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glClearStencil)(GLint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glColorMask)(GLboolean, GLboolean, GLboolean, GLboolean);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glCullFace)(GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glDepthFunc)(GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glDepthMask)(GLboolean);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glDepthRange)(GLdouble, GLdouble);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glDisable)(GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glDrawBuffer)(GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glEnable)(GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glFinish)(void);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glFlush)(void);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glFrontFace)(GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetBooleanv)(GLenum, GLboolean*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetDoublev)(GLenum, GLdouble*);
extern VRKGL_EXPORT GLenum (VRK_GLAPIENTRY* _ptrc_glGetError)(void);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetFloatv)(GLenum, GLfloat*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetIntegerv)(GLenum, GLint*);
extern VRKGL_EXPORT const GLubyte* (VRK_GLAPIENTRY* _ptrc_glGetString)(GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetTexImage)(GLenum, GLint, GLenum, GLenum, void*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetTexLevelParameterfv)(GLenum, GLint, GLenum, GLfloat*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetTexLevelParameteriv)(GLenum, GLint, GLenum, GLint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetTexParameterfv)(GLenum, GLenum, GLfloat*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetTexParameteriv)(GLenum, GLenum, GLint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glHint)(GLenum, GLenum);
extern VRKGL_EXPORT GLboolean (VRK_GLAPIENTRY* _ptrc_glIsEnabled)(GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glLineWidth)(GLfloat);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glLogicOp)(GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glPixelStoref)(GLenum, GLfloat);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glPixelStorei)(GLenum, GLint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glPointSize)(GLfloat);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glPolygonMode)(GLenum, GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glReadBuffer)(GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glReadPixels)(GLint, GLint, GLsizei, GLsizei, GLenum, GLenum, void*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glScissor)(GLint, GLint, GLsizei, GLsizei);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glStencilFunc)(GLenum, GLint, GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glStencilMask)(GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glStencilOp)(GLenum, GLenum, GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glTexImage1D)(GLenum, GLint, GLint, GLsizei, GLint, GLenum, GLenum, const void*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glTexImage2D)(GLenum, GLint, GLint, GLsizei, GLsizei, GLint, GLenum, GLenum, const void*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glTexParameterf)(GLenum, GLenum, GLfloat);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glTexParameterfv)(GLenum, GLenum, const GLfloat*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glTexParameteri)(GLenum, GLenum, GLint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glTexParameteriv)(GLenum, GLenum, const GLint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glViewport)(GLint, GLint, GLsizei, GLsizei);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glBindTexture)(GLenum, GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glCopyTexImage1D)(GLenum, GLint, GLenum, GLint, GLint, GLsizei, GLint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glCopyTexImage2D)(GLenum, GLint, GLenum, GLint, GLint, GLsizei, GLsizei, GLint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glCopyTexSubImage1D)(GLenum, GLint, GLint, GLint, GLint, GLsizei);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glCopyTexSubImage2D)(GLenum, GLint, GLint, GLint, GLint, GLint, GLsizei, GLsizei);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glDeleteTextures)(GLsizei, const GLuint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glDrawArrays)(GLenum, GLint, GLsizei);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glDrawElements)(GLenum, GLsizei, GLenum, const void*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGenTextures)(GLsizei, GLuint*);
extern VRKGL_EXPORT GLboolean (VRK_GLAPIENTRY* _ptrc_glIsTexture)(GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glPolygonOffset)(GLfloat, GLfloat);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glTexSubImage1D)(GLenum, GLint, GLint, GLsizei, GLenum, GLenum, const void*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glTexSubImage2D)(GLenum, GLint, GLint, GLint, GLsizei, GLsizei, GLenum, GLenum, const void*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glCopyTexSubImage3D)(GLenum, GLint, GLint, GLint, GLint, GLint, GLint, GLsizei, GLsizei);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glDrawRangeElements)(GLenum, GLuint, GLuint, GLsizei, GLenum, const void*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glTexImage3D)(GLenum, GLint, GLint, GLsizei, GLsizei, GLsizei, GLint, GLenum, GLenum, const void*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glTexSubImage3D)(GLenum, GLint, GLint, GLint, GLint, GLsizei, GLsizei, GLsizei, GLenum, GLenum, const void*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glActiveTexture)(GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glCompressedTexImage1D)(GLenum, GLint, GLenum, GLsizei, GLint, GLsizei, const void*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glCompressedTexImage2D)(GLenum, GLint, GLenum, GLsizei, GLsizei, GLint, GLsizei, const void*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glCompressedTexImage3D)(GLenum, GLint, GLenum, GLsizei, GLsizei, GLsizei, GLint, GLsizei, const void*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glCompressedTexSubImage1D)(GLenum, GLint, GLint, GLsizei, GLenum, GLsizei, const void*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glCompressedTexSubImage2D)(GLenum, GLint, GLint, GLint, GLsizei, GLsizei, GLenum, GLsizei, const void*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glCompressedTexSubImage3D)(GLenum, GLint, GLint, GLint, GLint, GLsizei, GLsizei, GLsizei, GLenum, GLsizei, const void*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetCompressedTexImage)(GLenum, GLint, void*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glSampleCoverage)(GLfloat, GLboolean);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glBlendColor)(GLfloat, GLfloat, GLfloat, GLfloat);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glBlendEquation)(GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glBlendFuncSeparate)(GLenum, GLenum, GLenum, GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glMultiDrawArrays)(GLenum, const GLint*, const GLsizei*, GLsizei);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glMultiDrawElements)(GLenum, const GLsizei*, GLenum, const void* const*, GLsizei);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glPointParameterf)(GLenum, GLfloat);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glPointParameterfv)(GLenum, const GLfloat*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glPointParameteri)(GLenum, GLint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glPointParameteriv)(GLenum, const GLint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glBeginQuery)(GLenum, GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glBindBuffer)(GLenum, GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glBufferData)(GLenum, GLsizeiptr, const void*, GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glBufferSubData)(GLenum, GLintptr, GLsizeiptr, const void*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glDeleteBuffers)(GLsizei, const GLuint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glDeleteQueries)(GLsizei, const GLuint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glEndQuery)(GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGenBuffers)(GLsizei, GLuint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGenQueries)(GLsizei, GLuint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetBufferParameteriv)(GLenum, GLenum, GLint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetBufferPointerv)(GLenum, GLenum, void* *);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetBufferSubData)(GLenum, GLintptr, GLsizeiptr, void*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetQueryObjectiv)(GLuint, GLenum, GLint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetQueryObjectuiv)(GLuint, GLenum, GLuint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetQueryiv)(GLenum, GLenum, GLint*);
extern VRKGL_EXPORT GLboolean (VRK_GLAPIENTRY* _ptrc_glIsBuffer)(GLuint);
extern VRKGL_EXPORT GLboolean (VRK_GLAPIENTRY* _ptrc_glIsQuery)(GLuint);
extern VRKGL_EXPORT void* (VRK_GLAPIENTRY* _ptrc_glMapBuffer)(GLenum, GLenum);
extern VRKGL_EXPORT GLboolean (VRK_GLAPIENTRY* _ptrc_glUnmapBuffer)(GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glAttachShader)(GLuint, GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glBindAttribLocation)(GLuint, GLuint, const GLchar*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glBlendEquationSeparate)(GLenum, GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glCompileShader)(GLuint);
extern VRKGL_EXPORT GLuint (VRK_GLAPIENTRY* _ptrc_glCreateProgram)(void);
extern VRKGL_EXPORT GLuint (VRK_GLAPIENTRY* _ptrc_glCreateShader)(GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glDeleteProgram)(GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glDeleteShader)(GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glDetachShader)(GLuint, GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glDisableVertexAttribArray)(GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glDrawBuffers)(GLsizei, const GLenum*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glEnableVertexAttribArray)(GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetActiveAttrib)(GLuint, GLuint, GLsizei, GLsizei*, GLint*, GLenum*, GLchar*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetActiveUniform)(GLuint, GLuint, GLsizei, GLsizei*, GLint*, GLenum*, GLchar*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetAttachedShaders)(GLuint, GLsizei, GLsizei*, GLuint*);
extern VRKGL_EXPORT GLint (VRK_GLAPIENTRY* _ptrc_glGetAttribLocation)(GLuint, const GLchar*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetProgramInfoLog)(GLuint, GLsizei, GLsizei*, GLchar*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetProgramiv)(GLuint, GLenum, GLint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetShaderInfoLog)(GLuint, GLsizei, GLsizei*, GLchar*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetShaderSource)(GLuint, GLsizei, GLsizei*, GLchar*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetShaderiv)(GLuint, GLenum, GLint*);
extern VRKGL_EXPORT GLint (VRK_GLAPIENTRY* _ptrc_glGetUniformLocation)(GLuint, const GLchar*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetUniformfv)(GLuint, GLint, GLfloat*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetUniformiv)(GLuint, GLint, GLint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetVertexAttribPointerv)(GLuint, GLenum, void* *);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetVertexAttribdv)(GLuint, GLenum, GLdouble*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetVertexAttribfv)(GLuint, GLenum, GLfloat*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetVertexAttribiv)(GLuint, GLenum, GLint*);
extern VRKGL_EXPORT GLboolean (VRK_GLAPIENTRY* _ptrc_glIsProgram)(GLuint);
extern VRKGL_EXPORT GLboolean (VRK_GLAPIENTRY* _ptrc_glIsShader)(GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glLinkProgram)(GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glShaderSource)(GLuint, GLsizei, const GLchar* const*, const GLint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glStencilFuncSeparate)(GLenum, GLenum, GLint, GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glStencilMaskSeparate)(GLenum, GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glStencilOpSeparate)(GLenum, GLenum, GLenum, GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniform1f)(GLint, GLfloat);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniform1fv)(GLint, GLsizei, const GLfloat*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniform1i)(GLint, GLint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniform1iv)(GLint, GLsizei, const GLint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniform2f)(GLint, GLfloat, GLfloat);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniform2fv)(GLint, GLsizei, const GLfloat*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniform2i)(GLint, GLint, GLint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniform2iv)(GLint, GLsizei, const GLint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniform3f)(GLint, GLfloat, GLfloat, GLfloat);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniform3fv)(GLint, GLsizei, const GLfloat*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniform3i)(GLint, GLint, GLint, GLint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniform3iv)(GLint, GLsizei, const GLint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniform4f)(GLint, GLfloat, GLfloat, GLfloat, GLfloat);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniform4fv)(GLint, GLsizei, const GLfloat*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniform4i)(GLint, GLint, GLint, GLint, GLint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniform4iv)(GLint, GLsizei, const GLint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniformMatrix2fv)(GLint, GLsizei, GLboolean, const GLfloat*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniformMatrix3fv)(GLint, GLsizei, GLboolean, const GLfloat*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniformMatrix4fv)(GLint, GLsizei, GLboolean, const GLfloat*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUseProgram)(GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glValidateProgram)(GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib1d)(GLuint, GLdouble);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib1dv)(GLuint, const GLdouble*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib1f)(GLuint, GLfloat);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib1fv)(GLuint, const GLfloat*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib1s)(GLuint, GLshort);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib1sv)(GLuint, const GLshort*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib2d)(GLuint, GLdouble, GLdouble);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib2dv)(GLuint, const GLdouble*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib2f)(GLuint, GLfloat, GLfloat);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib2fv)(GLuint, const GLfloat*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib2s)(GLuint, GLshort, GLshort);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib2sv)(GLuint, const GLshort*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib3d)(GLuint, GLdouble, GLdouble, GLdouble);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib3dv)(GLuint, const GLdouble*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib3f)(GLuint, GLfloat, GLfloat, GLfloat);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib3fv)(GLuint, const GLfloat*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib3s)(GLuint, GLshort, GLshort, GLshort);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib3sv)(GLuint, const GLshort*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4Nbv)(GLuint, const GLbyte*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4Niv)(GLuint, const GLint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4Nsv)(GLuint, const GLshort*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4Nub)(GLuint, GLubyte, GLubyte, GLubyte, GLubyte);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4Nubv)(GLuint, const GLubyte*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4Nuiv)(GLuint, const GLuint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4Nusv)(GLuint, const GLushort*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4bv)(GLuint, const GLbyte*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4d)(GLuint, GLdouble, GLdouble, GLdouble, GLdouble);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4dv)(GLuint, const GLdouble*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4f)(GLuint, GLfloat, GLfloat, GLfloat, GLfloat);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4fv)(GLuint, const GLfloat*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4iv)(GLuint, const GLint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4s)(GLuint, GLshort, GLshort, GLshort, GLshort);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4sv)(GLuint, const GLshort*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4ubv)(GLuint, const GLubyte*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4uiv)(GLuint, const GLuint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4usv)(GLuint, const GLushort*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttribPointer)(GLuint, GLint, GLenum, GLboolean, GLsizei, const void*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniformMatrix2x3fv)(GLint, GLsizei, GLboolean, const GLfloat*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniformMatrix2x4fv)(GLint, GLsizei, GLboolean, const GLfloat*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniformMatrix3x2fv)(GLint, GLsizei, GLboolean, const GLfloat*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniformMatrix3x4fv)(GLint, GLsizei, GLboolean, const GLfloat*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniformMatrix4x2fv)(GLint, GLsizei, GLboolean, const GLfloat*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniformMatrix4x3fv)(GLint, GLsizei, GLboolean, const GLfloat*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glBeginConditionalRender)(GLuint, GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glBeginTransformFeedback)(GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glBindBufferBase)(GLenum, GLuint, GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glBindBufferRange)(GLenum, GLuint, GLuint, GLintptr, GLsizeiptr);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glBindFragDataLocation)(GLuint, GLuint, const GLchar*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glBindFramebuffer)(GLenum, GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glBindRenderbuffer)(GLenum, GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glBindVertexArray)(GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glBlitFramebuffer)(GLint, GLint, GLint, GLint, GLint, GLint, GLint, GLint, GLbitfield, GLenum);
extern VRKGL_EXPORT GLenum (VRK_GLAPIENTRY* _ptrc_glCheckFramebufferStatus)(GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glClampColor)(GLenum, GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glClearBufferfi)(GLenum, GLint, GLfloat, GLint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glClearBufferfv)(GLenum, GLint, const GLfloat*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glClearBufferiv)(GLenum, GLint, const GLint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glClearBufferuiv)(GLenum, GLint, const GLuint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glColorMaski)(GLuint, GLboolean, GLboolean, GLboolean, GLboolean);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glDeleteFramebuffers)(GLsizei, const GLuint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glDeleteRenderbuffers)(GLsizei, const GLuint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glDeleteVertexArrays)(GLsizei, const GLuint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glDisablei)(GLenum, GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glEnablei)(GLenum, GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glEndConditionalRender)(void);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glEndTransformFeedback)(void);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glFlushMappedBufferRange)(GLenum, GLintptr, GLsizeiptr);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glFramebufferRenderbuffer)(GLenum, GLenum, GLenum, GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glFramebufferTexture1D)(GLenum, GLenum, GLenum, GLuint, GLint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glFramebufferTexture2D)(GLenum, GLenum, GLenum, GLuint, GLint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glFramebufferTexture3D)(GLenum, GLenum, GLenum, GLuint, GLint, GLint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glFramebufferTextureLayer)(GLenum, GLenum, GLuint, GLint, GLint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGenFramebuffers)(GLsizei, GLuint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGenRenderbuffers)(GLsizei, GLuint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGenVertexArrays)(GLsizei, GLuint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGenerateMipmap)(GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetBooleani_v)(GLenum, GLuint, GLboolean*);
extern VRKGL_EXPORT GLint (VRK_GLAPIENTRY* _ptrc_glGetFragDataLocation)(GLuint, const GLchar*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetFramebufferAttachmentParameteriv)(GLenum, GLenum, GLenum, GLint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetIntegeri_v)(GLenum, GLuint, GLint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetRenderbufferParameteriv)(GLenum, GLenum, GLint*);
extern VRKGL_EXPORT const GLubyte* (VRK_GLAPIENTRY* _ptrc_glGetStringi)(GLenum, GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetTexParameterIiv)(GLenum, GLenum, GLint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetTexParameterIuiv)(GLenum, GLenum, GLuint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetTransformFeedbackVarying)(GLuint, GLuint, GLsizei, GLsizei*, GLsizei*, GLenum*, GLchar*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetUniformuiv)(GLuint, GLint, GLuint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetVertexAttribIiv)(GLuint, GLenum, GLint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetVertexAttribIuiv)(GLuint, GLenum, GLuint*);
extern VRKGL_EXPORT GLboolean (VRK_GLAPIENTRY* _ptrc_glIsEnabledi)(GLenum, GLuint);
extern VRKGL_EXPORT GLboolean (VRK_GLAPIENTRY* _ptrc_glIsFramebuffer)(GLuint);
extern VRKGL_EXPORT GLboolean (VRK_GLAPIENTRY* _ptrc_glIsRenderbuffer)(GLuint);
extern VRKGL_EXPORT GLboolean (VRK_GLAPIENTRY* _ptrc_glIsVertexArray)(GLuint);
extern VRKGL_EXPORT void* (VRK_GLAPIENTRY* _ptrc_glMapBufferRange)(GLenum, GLintptr, GLsizeiptr, GLbitfield);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glRenderbufferStorage)(GLenum, GLenum, GLsizei, GLsizei);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glRenderbufferStorageMultisample)(GLenum, GLsizei, GLenum, GLsizei, GLsizei);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glTexParameterIiv)(GLenum, GLenum, const GLint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glTexParameterIuiv)(GLenum, GLenum, const GLuint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glTransformFeedbackVaryings)(GLuint, GLsizei, const GLchar* const*, GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniform1ui)(GLint, GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniform1uiv)(GLint, GLsizei, const GLuint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniform2ui)(GLint, GLuint, GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniform2uiv)(GLint, GLsizei, const GLuint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniform3ui)(GLint, GLuint, GLuint, GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniform3uiv)(GLint, GLsizei, const GLuint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniform4ui)(GLint, GLuint, GLuint, GLuint, GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniform4uiv)(GLint, GLsizei, const GLuint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI1i)(GLuint, GLint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI1iv)(GLuint, const GLint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI1ui)(GLuint, GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI1uiv)(GLuint, const GLuint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI2i)(GLuint, GLint, GLint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI2iv)(GLuint, const GLint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI2ui)(GLuint, GLuint, GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI2uiv)(GLuint, const GLuint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI3i)(GLuint, GLint, GLint, GLint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI3iv)(GLuint, const GLint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI3ui)(GLuint, GLuint, GLuint, GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI3uiv)(GLuint, const GLuint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI4bv)(GLuint, const GLbyte*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI4i)(GLuint, GLint, GLint, GLint, GLint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI4iv)(GLuint, const GLint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI4sv)(GLuint, const GLshort*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI4ubv)(GLuint, const GLubyte*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI4ui)(GLuint, GLuint, GLuint, GLuint, GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI4uiv)(GLuint, const GLuint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI4usv)(GLuint, const GLushort*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glVertexAttribIPointer)(GLuint, GLint, GLenum, GLsizei, const void*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glCopyBufferSubData)(GLenum, GLenum, GLintptr, GLintptr, GLsizeiptr);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glDrawArraysInstanced)(GLenum, GLint, GLsizei, GLsizei);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glDrawElementsInstanced)(GLenum, GLsizei, GLenum, const void*, GLsizei);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetActiveUniformBlockName)(GLuint, GLuint, GLsizei, GLsizei*, GLchar*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetActiveUniformBlockiv)(GLuint, GLuint, GLenum, GLint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetActiveUniformName)(GLuint, GLuint, GLsizei, GLsizei*, GLchar*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetActiveUniformsiv)(GLuint, GLsizei, const GLuint*, GLenum, GLint*);
extern VRKGL_EXPORT GLuint (VRK_GLAPIENTRY* _ptrc_glGetUniformBlockIndex)(GLuint, const GLchar*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetUniformIndices)(GLuint, GLsizei, const GLchar* const*, GLuint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glPrimitiveRestartIndex)(GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glTexBuffer)(GLenum, GLenum, GLuint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glUniformBlockBinding)(GLuint, GLuint, GLuint);
extern VRKGL_EXPORT GLenum (VRK_GLAPIENTRY* _ptrc_glClientWaitSync)(GLsync, GLbitfield, GLuint64);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glDeleteSync)(GLsync);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glDrawElementsBaseVertex)(GLenum, GLsizei, GLenum, const void*, GLint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glDrawElementsInstancedBaseVertex)(GLenum, GLsizei, GLenum, const void*, GLsizei, GLint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glDrawRangeElementsBaseVertex)(GLenum, GLuint, GLuint, GLsizei, GLenum, const void*, GLint);
extern VRKGL_EXPORT GLsync (VRK_GLAPIENTRY* _ptrc_glFenceSync)(GLenum, GLbitfield);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glFramebufferTexture)(GLenum, GLenum, GLuint, GLint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetBufferParameteri64v)(GLenum, GLenum, GLint64*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetInteger64i_v)(GLenum, GLuint, GLint64*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetInteger64v)(GLenum, GLint64*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetMultisamplefv)(GLenum, GLuint, GLfloat*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetSynciv)(GLsync, GLenum, GLsizei, GLsizei*, GLint*);
extern VRKGL_EXPORT GLboolean (VRK_GLAPIENTRY* _ptrc_glIsSync)(GLsync);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glMultiDrawElementsBaseVertex)(GLenum, const GLsizei*, GLenum, const void* const*, GLsizei, const GLint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glProvokingVertex)(GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glSampleMaski)(GLuint, GLbitfield);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glTexImage2DMultisample)(GLenum, GLsizei, GLenum, GLsizei, GLsizei, GLboolean);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glTexImage3DMultisample)(GLenum, GLsizei, GLenum, GLsizei, GLsizei, GLsizei, GLboolean);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glWaitSync)(GLsync, GLbitfield, GLuint64);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glDrawArraysIndirect)(GLenum, const void*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glDrawElementsIndirect)(GLenum, GLenum, const void*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glMultiDrawArraysIndirect)(GLenum, const void*, GLsizei, GLsizei);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glMultiDrawElementsIndirect)(GLenum, GLenum, const void*, GLsizei, GLsizei);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glPatchParameteri)(GLenum, GLint);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glPatchParameterfv)(GLenum, const GLfloat*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glGetActiveAtomicCounterBufferiv)(GLuint, GLuint, GLenum, GLint*);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glBindImageTexture)(GLuint, GLuint, GLint, GLboolean, GLint, GLenum, GLenum);
extern VRKGL_EXPORT void (VRK_GLAPIENTRY* _ptrc_glMemoryBarrier)(GLbitfield);
}

namespace Harrow::Vrk
{

namespace Detail
{
/// Reports a call of an entry point that the driver lacks or that was not loaded yet.
VRKGL_EXPORT void reportMissingGLFunction(const char* name);

/// The same, and gives what the caller returns then: 0.
template <typename Result> Result missing(const char* name)
{
    reportMissingGLFunction(name);
    return Result();
}
} // namespace Detail

/// OpenGL's function of that name, through its pointer.
inline void glBlendFunc(GLenum sfactor, GLenum dfactor) { return ::_ptrc_glBlendFunc ? ::_ptrc_glBlendFunc(sfactor, dfactor) : Detail::missing<void>("glBlendFunc"); }
inline void glClear(GLbitfield mask) { return ::_ptrc_glClear ? ::_ptrc_glClear(mask) : Detail::missing<void>("glClear"); }
inline void glClearColor(GLfloat red, GLfloat green, GLfloat blue, GLfloat alpha) { return ::_ptrc_glClearColor ? ::_ptrc_glClearColor(red, green, blue, alpha) : Detail::missing<void>("glClearColor"); }
inline void glClearDepth(GLdouble depth) { return ::_ptrc_glClearDepth ? ::_ptrc_glClearDepth(depth) : Detail::missing<void>("glClearDepth"); }
inline void glClearStencil(GLint s) { return ::_ptrc_glClearStencil ? ::_ptrc_glClearStencil(s) : Detail::missing<void>("glClearStencil"); }
inline void glColorMask(GLboolean red, GLboolean green, GLboolean blue, GLboolean alpha) { return ::_ptrc_glColorMask ? ::_ptrc_glColorMask(red, green, blue, alpha) : Detail::missing<void>("glColorMask"); }
inline void glCullFace(GLenum mode) { return ::_ptrc_glCullFace ? ::_ptrc_glCullFace(mode) : Detail::missing<void>("glCullFace"); }
inline void glDepthFunc(GLenum func) { return ::_ptrc_glDepthFunc ? ::_ptrc_glDepthFunc(func) : Detail::missing<void>("glDepthFunc"); }
inline void glDepthMask(GLboolean flag) { return ::_ptrc_glDepthMask ? ::_ptrc_glDepthMask(flag) : Detail::missing<void>("glDepthMask"); }
inline void glDepthRange(GLdouble n, GLdouble f) { return ::_ptrc_glDepthRange ? ::_ptrc_glDepthRange(n, f) : Detail::missing<void>("glDepthRange"); }
inline void glDisable(GLenum cap) { return ::_ptrc_glDisable ? ::_ptrc_glDisable(cap) : Detail::missing<void>("glDisable"); }
inline void glDrawBuffer(GLenum buf) { return ::_ptrc_glDrawBuffer ? ::_ptrc_glDrawBuffer(buf) : Detail::missing<void>("glDrawBuffer"); }
inline void glEnable(GLenum cap) { return ::_ptrc_glEnable ? ::_ptrc_glEnable(cap) : Detail::missing<void>("glEnable"); }
inline void glFinish() { return ::_ptrc_glFinish ? ::_ptrc_glFinish() : Detail::missing<void>("glFinish"); }
inline void glFlush() { return ::_ptrc_glFlush ? ::_ptrc_glFlush() : Detail::missing<void>("glFlush"); }
inline void glFrontFace(GLenum mode) { return ::_ptrc_glFrontFace ? ::_ptrc_glFrontFace(mode) : Detail::missing<void>("glFrontFace"); }
inline void glGetBooleanv(GLenum pname, GLboolean* data) { return ::_ptrc_glGetBooleanv ? ::_ptrc_glGetBooleanv(pname, data) : Detail::missing<void>("glGetBooleanv"); }
inline void glGetDoublev(GLenum pname, GLdouble* data) { return ::_ptrc_glGetDoublev ? ::_ptrc_glGetDoublev(pname, data) : Detail::missing<void>("glGetDoublev"); }
inline GLenum glGetError() { return ::_ptrc_glGetError ? ::_ptrc_glGetError() : Detail::missing<GLenum>("glGetError"); }
inline void glGetFloatv(GLenum pname, GLfloat* data) { return ::_ptrc_glGetFloatv ? ::_ptrc_glGetFloatv(pname, data) : Detail::missing<void>("glGetFloatv"); }
inline void glGetIntegerv(GLenum pname, GLint* data) { return ::_ptrc_glGetIntegerv ? ::_ptrc_glGetIntegerv(pname, data) : Detail::missing<void>("glGetIntegerv"); }
inline const GLubyte* glGetString(GLenum name) { return ::_ptrc_glGetString ? ::_ptrc_glGetString(name) : Detail::missing<const GLubyte*>("glGetString"); }
inline void glGetTexImage(GLenum target, GLint level, GLenum format, GLenum type, void* pixels) { return ::_ptrc_glGetTexImage ? ::_ptrc_glGetTexImage(target, level, format, type, pixels) : Detail::missing<void>("glGetTexImage"); }
inline void glGetTexLevelParameterfv(GLenum target, GLint level, GLenum pname, GLfloat* params) { return ::_ptrc_glGetTexLevelParameterfv ? ::_ptrc_glGetTexLevelParameterfv(target, level, pname, params) : Detail::missing<void>("glGetTexLevelParameterfv"); }
inline void glGetTexLevelParameteriv(GLenum target, GLint level, GLenum pname, GLint* params) { return ::_ptrc_glGetTexLevelParameteriv ? ::_ptrc_glGetTexLevelParameteriv(target, level, pname, params) : Detail::missing<void>("glGetTexLevelParameteriv"); }
inline void glGetTexParameterfv(GLenum target, GLenum pname, GLfloat* params) { return ::_ptrc_glGetTexParameterfv ? ::_ptrc_glGetTexParameterfv(target, pname, params) : Detail::missing<void>("glGetTexParameterfv"); }
inline void glGetTexParameteriv(GLenum target, GLenum pname, GLint* params) { return ::_ptrc_glGetTexParameteriv ? ::_ptrc_glGetTexParameteriv(target, pname, params) : Detail::missing<void>("glGetTexParameteriv"); }
inline void glHint(GLenum target, GLenum mode) { return ::_ptrc_glHint ? ::_ptrc_glHint(target, mode) : Detail::missing<void>("glHint"); }
inline GLboolean glIsEnabled(GLenum cap) { return ::_ptrc_glIsEnabled ? ::_ptrc_glIsEnabled(cap) : Detail::missing<GLboolean>("glIsEnabled"); }
inline void glLineWidth(GLfloat width) { return ::_ptrc_glLineWidth ? ::_ptrc_glLineWidth(width) : Detail::missing<void>("glLineWidth"); }
inline void glLogicOp(GLenum opcode) { return ::_ptrc_glLogicOp ? ::_ptrc_glLogicOp(opcode) : Detail::missing<void>("glLogicOp"); }
inline void glPixelStoref(GLenum pname, GLfloat param) { return ::_ptrc_glPixelStoref ? ::_ptrc_glPixelStoref(pname, param) : Detail::missing<void>("glPixelStoref"); }
inline void glPixelStorei(GLenum pname, GLint param) { return ::_ptrc_glPixelStorei ? ::_ptrc_glPixelStorei(pname, param) : Detail::missing<void>("glPixelStorei"); }
inline void glPointSize(GLfloat size) { return ::_ptrc_glPointSize ? ::_ptrc_glPointSize(size) : Detail::missing<void>("glPointSize"); }
inline void glPolygonMode(GLenum face, GLenum mode) { return ::_ptrc_glPolygonMode ? ::_ptrc_glPolygonMode(face, mode) : Detail::missing<void>("glPolygonMode"); }
inline void glReadBuffer(GLenum src) { return ::_ptrc_glReadBuffer ? ::_ptrc_glReadBuffer(src) : Detail::missing<void>("glReadBuffer"); }
inline void glReadPixels(GLint x, GLint y, GLsizei width, GLsizei height, GLenum format, GLenum type, void* pixels) { return ::_ptrc_glReadPixels ? ::_ptrc_glReadPixels(x, y, width, height, format, type, pixels) : Detail::missing<void>("glReadPixels"); }
inline void glScissor(GLint x, GLint y, GLsizei width, GLsizei height) { return ::_ptrc_glScissor ? ::_ptrc_glScissor(x, y, width, height) : Detail::missing<void>("glScissor"); }
inline void glStencilFunc(GLenum func, GLint ref, GLuint mask) { return ::_ptrc_glStencilFunc ? ::_ptrc_glStencilFunc(func, ref, mask) : Detail::missing<void>("glStencilFunc"); }
inline void glStencilMask(GLuint mask) { return ::_ptrc_glStencilMask ? ::_ptrc_glStencilMask(mask) : Detail::missing<void>("glStencilMask"); }
inline void glStencilOp(GLenum fail, GLenum zfail, GLenum zpass) { return ::_ptrc_glStencilOp ? ::_ptrc_glStencilOp(fail, zfail, zpass) : Detail::missing<void>("glStencilOp"); }
inline void glTexImage1D(GLenum target, GLint level, GLint internalformat, GLsizei width, GLint border, GLenum format, GLenum type, const void* pixels) { return ::_ptrc_glTexImage1D ? ::_ptrc_glTexImage1D(target, level, internalformat, width, border, format, type, pixels) : Detail::missing<void>("glTexImage1D"); }
inline void glTexImage2D(GLenum target, GLint level, GLint internalformat, GLsizei width, GLsizei height, GLint border, GLenum format, GLenum type, const void* pixels) { return ::_ptrc_glTexImage2D ? ::_ptrc_glTexImage2D(target, level, internalformat, width, height, border, format, type, pixels) : Detail::missing<void>("glTexImage2D"); }
inline void glTexParameterf(GLenum target, GLenum pname, GLfloat param) { return ::_ptrc_glTexParameterf ? ::_ptrc_glTexParameterf(target, pname, param) : Detail::missing<void>("glTexParameterf"); }
inline void glTexParameterfv(GLenum target, GLenum pname, const GLfloat* params) { return ::_ptrc_glTexParameterfv ? ::_ptrc_glTexParameterfv(target, pname, params) : Detail::missing<void>("glTexParameterfv"); }
inline void glTexParameteri(GLenum target, GLenum pname, GLint param) { return ::_ptrc_glTexParameteri ? ::_ptrc_glTexParameteri(target, pname, param) : Detail::missing<void>("glTexParameteri"); }
inline void glTexParameteriv(GLenum target, GLenum pname, const GLint* params) { return ::_ptrc_glTexParameteriv ? ::_ptrc_glTexParameteriv(target, pname, params) : Detail::missing<void>("glTexParameteriv"); }
inline void glViewport(GLint x, GLint y, GLsizei width, GLsizei height) { return ::_ptrc_glViewport ? ::_ptrc_glViewport(x, y, width, height) : Detail::missing<void>("glViewport"); }
inline void glBindTexture(GLenum target, GLuint texture) { return ::_ptrc_glBindTexture ? ::_ptrc_glBindTexture(target, texture) : Detail::missing<void>("glBindTexture"); }
inline void glCopyTexImage1D(GLenum target, GLint level, GLenum internalformat, GLint x, GLint y, GLsizei width, GLint border) { return ::_ptrc_glCopyTexImage1D ? ::_ptrc_glCopyTexImage1D(target, level, internalformat, x, y, width, border) : Detail::missing<void>("glCopyTexImage1D"); }
inline void glCopyTexImage2D(GLenum target, GLint level, GLenum internalformat, GLint x, GLint y, GLsizei width, GLsizei height, GLint border) { return ::_ptrc_glCopyTexImage2D ? ::_ptrc_glCopyTexImage2D(target, level, internalformat, x, y, width, height, border) : Detail::missing<void>("glCopyTexImage2D"); }
inline void glCopyTexSubImage1D(GLenum target, GLint level, GLint xoffset, GLint x, GLint y, GLsizei width) { return ::_ptrc_glCopyTexSubImage1D ? ::_ptrc_glCopyTexSubImage1D(target, level, xoffset, x, y, width) : Detail::missing<void>("glCopyTexSubImage1D"); }
inline void glCopyTexSubImage2D(GLenum target, GLint level, GLint xoffset, GLint yoffset, GLint x, GLint y, GLsizei width, GLsizei height) { return ::_ptrc_glCopyTexSubImage2D ? ::_ptrc_glCopyTexSubImage2D(target, level, xoffset, yoffset, x, y, width, height) : Detail::missing<void>("glCopyTexSubImage2D"); }
inline void glDeleteTextures(GLsizei n, const GLuint* textures) { return ::_ptrc_glDeleteTextures ? ::_ptrc_glDeleteTextures(n, textures) : Detail::missing<void>("glDeleteTextures"); }
inline void glDrawArrays(GLenum mode, GLint first, GLsizei count) { return ::_ptrc_glDrawArrays ? ::_ptrc_glDrawArrays(mode, first, count) : Detail::missing<void>("glDrawArrays"); }
inline void glDrawElements(GLenum mode, GLsizei count, GLenum type, const void* indices) { return ::_ptrc_glDrawElements ? ::_ptrc_glDrawElements(mode, count, type, indices) : Detail::missing<void>("glDrawElements"); }
inline void glGenTextures(GLsizei n, GLuint* textures) { return ::_ptrc_glGenTextures ? ::_ptrc_glGenTextures(n, textures) : Detail::missing<void>("glGenTextures"); }
inline GLboolean glIsTexture(GLuint texture) { return ::_ptrc_glIsTexture ? ::_ptrc_glIsTexture(texture) : Detail::missing<GLboolean>("glIsTexture"); }
inline void glPolygonOffset(GLfloat factor, GLfloat units) { return ::_ptrc_glPolygonOffset ? ::_ptrc_glPolygonOffset(factor, units) : Detail::missing<void>("glPolygonOffset"); }
inline void glTexSubImage1D(GLenum target, GLint level, GLint xoffset, GLsizei width, GLenum format, GLenum type, const void* pixels) { return ::_ptrc_glTexSubImage1D ? ::_ptrc_glTexSubImage1D(target, level, xoffset, width, format, type, pixels) : Detail::missing<void>("glTexSubImage1D"); }
inline void glTexSubImage2D(GLenum target, GLint level, GLint xoffset, GLint yoffset, GLsizei width, GLsizei height, GLenum format, GLenum type, const void* pixels) { return ::_ptrc_glTexSubImage2D ? ::_ptrc_glTexSubImage2D(target, level, xoffset, yoffset, width, height, format, type, pixels) : Detail::missing<void>("glTexSubImage2D"); }
inline void glCopyTexSubImage3D(GLenum target, GLint level, GLint xoffset, GLint yoffset, GLint zoffset, GLint x, GLint y, GLsizei width, GLsizei height) { return ::_ptrc_glCopyTexSubImage3D ? ::_ptrc_glCopyTexSubImage3D(target, level, xoffset, yoffset, zoffset, x, y, width, height) : Detail::missing<void>("glCopyTexSubImage3D"); }
inline void glDrawRangeElements(GLenum mode, GLuint start, GLuint end, GLsizei count, GLenum type, const void* indices) { return ::_ptrc_glDrawRangeElements ? ::_ptrc_glDrawRangeElements(mode, start, end, count, type, indices) : Detail::missing<void>("glDrawRangeElements"); }
inline void glTexImage3D(GLenum target, GLint level, GLint internalformat, GLsizei width, GLsizei height, GLsizei depth, GLint border, GLenum format, GLenum type, const void* pixels) { return ::_ptrc_glTexImage3D ? ::_ptrc_glTexImage3D(target, level, internalformat, width, height, depth, border, format, type, pixels) : Detail::missing<void>("glTexImage3D"); }
inline void glTexSubImage3D(GLenum target, GLint level, GLint xoffset, GLint yoffset, GLint zoffset, GLsizei width, GLsizei height, GLsizei depth, GLenum format, GLenum type, const void* pixels) { return ::_ptrc_glTexSubImage3D ? ::_ptrc_glTexSubImage3D(target, level, xoffset, yoffset, zoffset, width, height, depth, format, type, pixels) : Detail::missing<void>("glTexSubImage3D"); }
inline void glActiveTexture(GLenum texture) { return ::_ptrc_glActiveTexture ? ::_ptrc_glActiveTexture(texture) : Detail::missing<void>("glActiveTexture"); }
inline void glCompressedTexImage1D(GLenum target, GLint level, GLenum internalformat, GLsizei width, GLint border, GLsizei imageSize, const void* data) { return ::_ptrc_glCompressedTexImage1D ? ::_ptrc_glCompressedTexImage1D(target, level, internalformat, width, border, imageSize, data) : Detail::missing<void>("glCompressedTexImage1D"); }
inline void glCompressedTexImage2D(GLenum target, GLint level, GLenum internalformat, GLsizei width, GLsizei height, GLint border, GLsizei imageSize, const void* data) { return ::_ptrc_glCompressedTexImage2D ? ::_ptrc_glCompressedTexImage2D(target, level, internalformat, width, height, border, imageSize, data) : Detail::missing<void>("glCompressedTexImage2D"); }
inline void glCompressedTexImage3D(GLenum target, GLint level, GLenum internalformat, GLsizei width, GLsizei height, GLsizei depth, GLint border, GLsizei imageSize, const void* data) { return ::_ptrc_glCompressedTexImage3D ? ::_ptrc_glCompressedTexImage3D(target, level, internalformat, width, height, depth, border, imageSize, data) : Detail::missing<void>("glCompressedTexImage3D"); }
inline void glCompressedTexSubImage1D(GLenum target, GLint level, GLint xoffset, GLsizei width, GLenum format, GLsizei imageSize, const void* data) { return ::_ptrc_glCompressedTexSubImage1D ? ::_ptrc_glCompressedTexSubImage1D(target, level, xoffset, width, format, imageSize, data) : Detail::missing<void>("glCompressedTexSubImage1D"); }
inline void glCompressedTexSubImage2D(GLenum target, GLint level, GLint xoffset, GLint yoffset, GLsizei width, GLsizei height, GLenum format, GLsizei imageSize, const void* data) { return ::_ptrc_glCompressedTexSubImage2D ? ::_ptrc_glCompressedTexSubImage2D(target, level, xoffset, yoffset, width, height, format, imageSize, data) : Detail::missing<void>("glCompressedTexSubImage2D"); }
inline void glCompressedTexSubImage3D(GLenum target, GLint level, GLint xoffset, GLint yoffset, GLint zoffset, GLsizei width, GLsizei height, GLsizei depth, GLenum format, GLsizei imageSize, const void* data) { return ::_ptrc_glCompressedTexSubImage3D ? ::_ptrc_glCompressedTexSubImage3D(target, level, xoffset, yoffset, zoffset, width, height, depth, format, imageSize, data) : Detail::missing<void>("glCompressedTexSubImage3D"); }
inline void glGetCompressedTexImage(GLenum target, GLint level, void* img) { return ::_ptrc_glGetCompressedTexImage ? ::_ptrc_glGetCompressedTexImage(target, level, img) : Detail::missing<void>("glGetCompressedTexImage"); }
inline void glSampleCoverage(GLfloat value, GLboolean invert) { return ::_ptrc_glSampleCoverage ? ::_ptrc_glSampleCoverage(value, invert) : Detail::missing<void>("glSampleCoverage"); }
inline void glBlendColor(GLfloat red, GLfloat green, GLfloat blue, GLfloat alpha) { return ::_ptrc_glBlendColor ? ::_ptrc_glBlendColor(red, green, blue, alpha) : Detail::missing<void>("glBlendColor"); }
inline void glBlendEquation(GLenum mode) { return ::_ptrc_glBlendEquation ? ::_ptrc_glBlendEquation(mode) : Detail::missing<void>("glBlendEquation"); }
inline void glBlendFuncSeparate(GLenum sfactorRGB, GLenum dfactorRGB, GLenum sfactorAlpha, GLenum dfactorAlpha) { return ::_ptrc_glBlendFuncSeparate ? ::_ptrc_glBlendFuncSeparate(sfactorRGB, dfactorRGB, sfactorAlpha, dfactorAlpha) : Detail::missing<void>("glBlendFuncSeparate"); }
inline void glMultiDrawArrays(GLenum mode, const GLint* first, const GLsizei* count, GLsizei drawcount) { return ::_ptrc_glMultiDrawArrays ? ::_ptrc_glMultiDrawArrays(mode, first, count, drawcount) : Detail::missing<void>("glMultiDrawArrays"); }
inline void glMultiDrawElements(GLenum mode, const GLsizei* count, GLenum type, const void* const* indices, GLsizei drawcount) { return ::_ptrc_glMultiDrawElements ? ::_ptrc_glMultiDrawElements(mode, count, type, indices, drawcount) : Detail::missing<void>("glMultiDrawElements"); }
inline void glPointParameterf(GLenum pname, GLfloat param) { return ::_ptrc_glPointParameterf ? ::_ptrc_glPointParameterf(pname, param) : Detail::missing<void>("glPointParameterf"); }
inline void glPointParameterfv(GLenum pname, const GLfloat* params) { return ::_ptrc_glPointParameterfv ? ::_ptrc_glPointParameterfv(pname, params) : Detail::missing<void>("glPointParameterfv"); }
inline void glPointParameteri(GLenum pname, GLint param) { return ::_ptrc_glPointParameteri ? ::_ptrc_glPointParameteri(pname, param) : Detail::missing<void>("glPointParameteri"); }
inline void glPointParameteriv(GLenum pname, const GLint* params) { return ::_ptrc_glPointParameteriv ? ::_ptrc_glPointParameteriv(pname, params) : Detail::missing<void>("glPointParameteriv"); }
inline void glBeginQuery(GLenum target, GLuint id) { return ::_ptrc_glBeginQuery ? ::_ptrc_glBeginQuery(target, id) : Detail::missing<void>("glBeginQuery"); }
inline void glBindBuffer(GLenum target, GLuint buffer) { return ::_ptrc_glBindBuffer ? ::_ptrc_glBindBuffer(target, buffer) : Detail::missing<void>("glBindBuffer"); }
inline void glBufferData(GLenum target, GLsizeiptr size, const void* data, GLenum usage) { return ::_ptrc_glBufferData ? ::_ptrc_glBufferData(target, size, data, usage) : Detail::missing<void>("glBufferData"); }
inline void glBufferSubData(GLenum target, GLintptr offset, GLsizeiptr size, const void* data) { return ::_ptrc_glBufferSubData ? ::_ptrc_glBufferSubData(target, offset, size, data) : Detail::missing<void>("glBufferSubData"); }
inline void glDeleteBuffers(GLsizei n, const GLuint* buffers) { return ::_ptrc_glDeleteBuffers ? ::_ptrc_glDeleteBuffers(n, buffers) : Detail::missing<void>("glDeleteBuffers"); }
inline void glDeleteQueries(GLsizei n, const GLuint* ids) { return ::_ptrc_glDeleteQueries ? ::_ptrc_glDeleteQueries(n, ids) : Detail::missing<void>("glDeleteQueries"); }
inline void glEndQuery(GLenum target) { return ::_ptrc_glEndQuery ? ::_ptrc_glEndQuery(target) : Detail::missing<void>("glEndQuery"); }
inline void glGenBuffers(GLsizei n, GLuint* buffers) { return ::_ptrc_glGenBuffers ? ::_ptrc_glGenBuffers(n, buffers) : Detail::missing<void>("glGenBuffers"); }
inline void glGenQueries(GLsizei n, GLuint* ids) { return ::_ptrc_glGenQueries ? ::_ptrc_glGenQueries(n, ids) : Detail::missing<void>("glGenQueries"); }
inline void glGetBufferParameteriv(GLenum target, GLenum pname, GLint* params) { return ::_ptrc_glGetBufferParameteriv ? ::_ptrc_glGetBufferParameteriv(target, pname, params) : Detail::missing<void>("glGetBufferParameteriv"); }
inline void glGetBufferPointerv(GLenum target, GLenum pname, void* * params) { return ::_ptrc_glGetBufferPointerv ? ::_ptrc_glGetBufferPointerv(target, pname, params) : Detail::missing<void>("glGetBufferPointerv"); }
inline void glGetBufferSubData(GLenum target, GLintptr offset, GLsizeiptr size, void* data) { return ::_ptrc_glGetBufferSubData ? ::_ptrc_glGetBufferSubData(target, offset, size, data) : Detail::missing<void>("glGetBufferSubData"); }
inline void glGetQueryObjectiv(GLuint id, GLenum pname, GLint* params) { return ::_ptrc_glGetQueryObjectiv ? ::_ptrc_glGetQueryObjectiv(id, pname, params) : Detail::missing<void>("glGetQueryObjectiv"); }
inline void glGetQueryObjectuiv(GLuint id, GLenum pname, GLuint* params) { return ::_ptrc_glGetQueryObjectuiv ? ::_ptrc_glGetQueryObjectuiv(id, pname, params) : Detail::missing<void>("glGetQueryObjectuiv"); }
inline void glGetQueryiv(GLenum target, GLenum pname, GLint* params) { return ::_ptrc_glGetQueryiv ? ::_ptrc_glGetQueryiv(target, pname, params) : Detail::missing<void>("glGetQueryiv"); }
inline GLboolean glIsBuffer(GLuint buffer) { return ::_ptrc_glIsBuffer ? ::_ptrc_glIsBuffer(buffer) : Detail::missing<GLboolean>("glIsBuffer"); }
inline GLboolean glIsQuery(GLuint id) { return ::_ptrc_glIsQuery ? ::_ptrc_glIsQuery(id) : Detail::missing<GLboolean>("glIsQuery"); }
inline void* glMapBuffer(GLenum target, GLenum access) { return ::_ptrc_glMapBuffer ? ::_ptrc_glMapBuffer(target, access) : Detail::missing<void*>("glMapBuffer"); }
inline GLboolean glUnmapBuffer(GLenum target) { return ::_ptrc_glUnmapBuffer ? ::_ptrc_glUnmapBuffer(target) : Detail::missing<GLboolean>("glUnmapBuffer"); }
inline void glAttachShader(GLuint program, GLuint shader) { return ::_ptrc_glAttachShader ? ::_ptrc_glAttachShader(program, shader) : Detail::missing<void>("glAttachShader"); }
inline void glBindAttribLocation(GLuint program, GLuint index, const GLchar* name) { return ::_ptrc_glBindAttribLocation ? ::_ptrc_glBindAttribLocation(program, index, name) : Detail::missing<void>("glBindAttribLocation"); }
inline void glBlendEquationSeparate(GLenum modeRGB, GLenum modeAlpha) { return ::_ptrc_glBlendEquationSeparate ? ::_ptrc_glBlendEquationSeparate(modeRGB, modeAlpha) : Detail::missing<void>("glBlendEquationSeparate"); }
inline void glCompileShader(GLuint shader) { return ::_ptrc_glCompileShader ? ::_ptrc_glCompileShader(shader) : Detail::missing<void>("glCompileShader"); }
inline GLuint glCreateProgram() { return ::_ptrc_glCreateProgram ? ::_ptrc_glCreateProgram() : Detail::missing<GLuint>("glCreateProgram"); }
inline GLuint glCreateShader(GLenum type) { return ::_ptrc_glCreateShader ? ::_ptrc_glCreateShader(type) : Detail::missing<GLuint>("glCreateShader"); }
inline void glDeleteProgram(GLuint program) { return ::_ptrc_glDeleteProgram ? ::_ptrc_glDeleteProgram(program) : Detail::missing<void>("glDeleteProgram"); }
inline void glDeleteShader(GLuint shader) { return ::_ptrc_glDeleteShader ? ::_ptrc_glDeleteShader(shader) : Detail::missing<void>("glDeleteShader"); }
inline void glDetachShader(GLuint program, GLuint shader) { return ::_ptrc_glDetachShader ? ::_ptrc_glDetachShader(program, shader) : Detail::missing<void>("glDetachShader"); }
inline void glDisableVertexAttribArray(GLuint index) { return ::_ptrc_glDisableVertexAttribArray ? ::_ptrc_glDisableVertexAttribArray(index) : Detail::missing<void>("glDisableVertexAttribArray"); }
inline void glDrawBuffers(GLsizei n, const GLenum* bufs) { return ::_ptrc_glDrawBuffers ? ::_ptrc_glDrawBuffers(n, bufs) : Detail::missing<void>("glDrawBuffers"); }
inline void glEnableVertexAttribArray(GLuint index) { return ::_ptrc_glEnableVertexAttribArray ? ::_ptrc_glEnableVertexAttribArray(index) : Detail::missing<void>("glEnableVertexAttribArray"); }
inline void glGetActiveAttrib(GLuint program, GLuint index, GLsizei bufSize, GLsizei* length, GLint* size, GLenum* type, GLchar* name) { return ::_ptrc_glGetActiveAttrib ? ::_ptrc_glGetActiveAttrib(program, index, bufSize, length, size, type, name) : Detail::missing<void>("glGetActiveAttrib"); }
inline void glGetActiveUniform(GLuint program, GLuint index, GLsizei bufSize, GLsizei* length, GLint* size, GLenum* type, GLchar* name) { return ::_ptrc_glGetActiveUniform ? ::_ptrc_glGetActiveUniform(program, index, bufSize, length, size, type, name) : Detail::missing<void>("glGetActiveUniform"); }
inline void glGetAttachedShaders(GLuint program, GLsizei maxCount, GLsizei* count, GLuint* shaders) { return ::_ptrc_glGetAttachedShaders ? ::_ptrc_glGetAttachedShaders(program, maxCount, count, shaders) : Detail::missing<void>("glGetAttachedShaders"); }
inline GLint glGetAttribLocation(GLuint program, const GLchar* name) { return ::_ptrc_glGetAttribLocation ? ::_ptrc_glGetAttribLocation(program, name) : Detail::missing<GLint>("glGetAttribLocation"); }
inline void glGetProgramInfoLog(GLuint program, GLsizei bufSize, GLsizei* length, GLchar* infoLog) { return ::_ptrc_glGetProgramInfoLog ? ::_ptrc_glGetProgramInfoLog(program, bufSize, length, infoLog) : Detail::missing<void>("glGetProgramInfoLog"); }
inline void glGetProgramiv(GLuint program, GLenum pname, GLint* params) { return ::_ptrc_glGetProgramiv ? ::_ptrc_glGetProgramiv(program, pname, params) : Detail::missing<void>("glGetProgramiv"); }
inline void glGetShaderInfoLog(GLuint shader, GLsizei bufSize, GLsizei* length, GLchar* infoLog) { return ::_ptrc_glGetShaderInfoLog ? ::_ptrc_glGetShaderInfoLog(shader, bufSize, length, infoLog) : Detail::missing<void>("glGetShaderInfoLog"); }
inline void glGetShaderSource(GLuint shader, GLsizei bufSize, GLsizei* length, GLchar* source) { return ::_ptrc_glGetShaderSource ? ::_ptrc_glGetShaderSource(shader, bufSize, length, source) : Detail::missing<void>("glGetShaderSource"); }
inline void glGetShaderiv(GLuint shader, GLenum pname, GLint* params) { return ::_ptrc_glGetShaderiv ? ::_ptrc_glGetShaderiv(shader, pname, params) : Detail::missing<void>("glGetShaderiv"); }
inline GLint glGetUniformLocation(GLuint program, const GLchar* name) { return ::_ptrc_glGetUniformLocation ? ::_ptrc_glGetUniformLocation(program, name) : Detail::missing<GLint>("glGetUniformLocation"); }
inline void glGetUniformfv(GLuint program, GLint location, GLfloat* params) { return ::_ptrc_glGetUniformfv ? ::_ptrc_glGetUniformfv(program, location, params) : Detail::missing<void>("glGetUniformfv"); }
inline void glGetUniformiv(GLuint program, GLint location, GLint* params) { return ::_ptrc_glGetUniformiv ? ::_ptrc_glGetUniformiv(program, location, params) : Detail::missing<void>("glGetUniformiv"); }
inline void glGetVertexAttribPointerv(GLuint index, GLenum pname, void* * pointer) { return ::_ptrc_glGetVertexAttribPointerv ? ::_ptrc_glGetVertexAttribPointerv(index, pname, pointer) : Detail::missing<void>("glGetVertexAttribPointerv"); }
inline void glGetVertexAttribdv(GLuint index, GLenum pname, GLdouble* params) { return ::_ptrc_glGetVertexAttribdv ? ::_ptrc_glGetVertexAttribdv(index, pname, params) : Detail::missing<void>("glGetVertexAttribdv"); }
inline void glGetVertexAttribfv(GLuint index, GLenum pname, GLfloat* params) { return ::_ptrc_glGetVertexAttribfv ? ::_ptrc_glGetVertexAttribfv(index, pname, params) : Detail::missing<void>("glGetVertexAttribfv"); }
inline void glGetVertexAttribiv(GLuint index, GLenum pname, GLint* params) { return ::_ptrc_glGetVertexAttribiv ? ::_ptrc_glGetVertexAttribiv(index, pname, params) : Detail::missing<void>("glGetVertexAttribiv"); }
inline GLboolean glIsProgram(GLuint program) { return ::_ptrc_glIsProgram ? ::_ptrc_glIsProgram(program) : Detail::missing<GLboolean>("glIsProgram"); }
inline GLboolean glIsShader(GLuint shader) { return ::_ptrc_glIsShader ? ::_ptrc_glIsShader(shader) : Detail::missing<GLboolean>("glIsShader"); }
inline void glLinkProgram(GLuint program) { return ::_ptrc_glLinkProgram ? ::_ptrc_glLinkProgram(program) : Detail::missing<void>("glLinkProgram"); }
inline void glShaderSource(GLuint shader, GLsizei count, const GLchar* const* string, const GLint* length) { return ::_ptrc_glShaderSource ? ::_ptrc_glShaderSource(shader, count, string, length) : Detail::missing<void>("glShaderSource"); }
inline void glStencilFuncSeparate(GLenum face, GLenum func, GLint ref, GLuint mask) { return ::_ptrc_glStencilFuncSeparate ? ::_ptrc_glStencilFuncSeparate(face, func, ref, mask) : Detail::missing<void>("glStencilFuncSeparate"); }
inline void glStencilMaskSeparate(GLenum face, GLuint mask) { return ::_ptrc_glStencilMaskSeparate ? ::_ptrc_glStencilMaskSeparate(face, mask) : Detail::missing<void>("glStencilMaskSeparate"); }
inline void glStencilOpSeparate(GLenum face, GLenum sfail, GLenum dpfail, GLenum dppass) { return ::_ptrc_glStencilOpSeparate ? ::_ptrc_glStencilOpSeparate(face, sfail, dpfail, dppass) : Detail::missing<void>("glStencilOpSeparate"); }
inline void glUniform1f(GLint location, GLfloat v0) { return ::_ptrc_glUniform1f ? ::_ptrc_glUniform1f(location, v0) : Detail::missing<void>("glUniform1f"); }
inline void glUniform1fv(GLint location, GLsizei count, const GLfloat* value) { return ::_ptrc_glUniform1fv ? ::_ptrc_glUniform1fv(location, count, value) : Detail::missing<void>("glUniform1fv"); }
inline void glUniform1i(GLint location, GLint v0) { return ::_ptrc_glUniform1i ? ::_ptrc_glUniform1i(location, v0) : Detail::missing<void>("glUniform1i"); }
inline void glUniform1iv(GLint location, GLsizei count, const GLint* value) { return ::_ptrc_glUniform1iv ? ::_ptrc_glUniform1iv(location, count, value) : Detail::missing<void>("glUniform1iv"); }
inline void glUniform2f(GLint location, GLfloat v0, GLfloat v1) { return ::_ptrc_glUniform2f ? ::_ptrc_glUniform2f(location, v0, v1) : Detail::missing<void>("glUniform2f"); }
inline void glUniform2fv(GLint location, GLsizei count, const GLfloat* value) { return ::_ptrc_glUniform2fv ? ::_ptrc_glUniform2fv(location, count, value) : Detail::missing<void>("glUniform2fv"); }
inline void glUniform2i(GLint location, GLint v0, GLint v1) { return ::_ptrc_glUniform2i ? ::_ptrc_glUniform2i(location, v0, v1) : Detail::missing<void>("glUniform2i"); }
inline void glUniform2iv(GLint location, GLsizei count, const GLint* value) { return ::_ptrc_glUniform2iv ? ::_ptrc_glUniform2iv(location, count, value) : Detail::missing<void>("glUniform2iv"); }
inline void glUniform3f(GLint location, GLfloat v0, GLfloat v1, GLfloat v2) { return ::_ptrc_glUniform3f ? ::_ptrc_glUniform3f(location, v0, v1, v2) : Detail::missing<void>("glUniform3f"); }
inline void glUniform3fv(GLint location, GLsizei count, const GLfloat* value) { return ::_ptrc_glUniform3fv ? ::_ptrc_glUniform3fv(location, count, value) : Detail::missing<void>("glUniform3fv"); }
inline void glUniform3i(GLint location, GLint v0, GLint v1, GLint v2) { return ::_ptrc_glUniform3i ? ::_ptrc_glUniform3i(location, v0, v1, v2) : Detail::missing<void>("glUniform3i"); }
inline void glUniform3iv(GLint location, GLsizei count, const GLint* value) { return ::_ptrc_glUniform3iv ? ::_ptrc_glUniform3iv(location, count, value) : Detail::missing<void>("glUniform3iv"); }
inline void glUniform4f(GLint location, GLfloat v0, GLfloat v1, GLfloat v2, GLfloat v3) { return ::_ptrc_glUniform4f ? ::_ptrc_glUniform4f(location, v0, v1, v2, v3) : Detail::missing<void>("glUniform4f"); }
inline void glUniform4fv(GLint location, GLsizei count, const GLfloat* value) { return ::_ptrc_glUniform4fv ? ::_ptrc_glUniform4fv(location, count, value) : Detail::missing<void>("glUniform4fv"); }
inline void glUniform4i(GLint location, GLint v0, GLint v1, GLint v2, GLint v3) { return ::_ptrc_glUniform4i ? ::_ptrc_glUniform4i(location, v0, v1, v2, v3) : Detail::missing<void>("glUniform4i"); }
inline void glUniform4iv(GLint location, GLsizei count, const GLint* value) { return ::_ptrc_glUniform4iv ? ::_ptrc_glUniform4iv(location, count, value) : Detail::missing<void>("glUniform4iv"); }
inline void glUniformMatrix2fv(GLint location, GLsizei count, GLboolean transpose, const GLfloat* value) { return ::_ptrc_glUniformMatrix2fv ? ::_ptrc_glUniformMatrix2fv(location, count, transpose, value) : Detail::missing<void>("glUniformMatrix2fv"); }
inline void glUniformMatrix3fv(GLint location, GLsizei count, GLboolean transpose, const GLfloat* value) { return ::_ptrc_glUniformMatrix3fv ? ::_ptrc_glUniformMatrix3fv(location, count, transpose, value) : Detail::missing<void>("glUniformMatrix3fv"); }
inline void glUniformMatrix4fv(GLint location, GLsizei count, GLboolean transpose, const GLfloat* value) { return ::_ptrc_glUniformMatrix4fv ? ::_ptrc_glUniformMatrix4fv(location, count, transpose, value) : Detail::missing<void>("glUniformMatrix4fv"); }
inline void glUseProgram(GLuint program) { return ::_ptrc_glUseProgram ? ::_ptrc_glUseProgram(program) : Detail::missing<void>("glUseProgram"); }
inline void glValidateProgram(GLuint program) { return ::_ptrc_glValidateProgram ? ::_ptrc_glValidateProgram(program) : Detail::missing<void>("glValidateProgram"); }
inline void glVertexAttrib1d(GLuint index, GLdouble x) { return ::_ptrc_glVertexAttrib1d ? ::_ptrc_glVertexAttrib1d(index, x) : Detail::missing<void>("glVertexAttrib1d"); }
inline void glVertexAttrib1dv(GLuint index, const GLdouble* v) { return ::_ptrc_glVertexAttrib1dv ? ::_ptrc_glVertexAttrib1dv(index, v) : Detail::missing<void>("glVertexAttrib1dv"); }
inline void glVertexAttrib1f(GLuint index, GLfloat x) { return ::_ptrc_glVertexAttrib1f ? ::_ptrc_glVertexAttrib1f(index, x) : Detail::missing<void>("glVertexAttrib1f"); }
inline void glVertexAttrib1fv(GLuint index, const GLfloat* v) { return ::_ptrc_glVertexAttrib1fv ? ::_ptrc_glVertexAttrib1fv(index, v) : Detail::missing<void>("glVertexAttrib1fv"); }
inline void glVertexAttrib1s(GLuint index, GLshort x) { return ::_ptrc_glVertexAttrib1s ? ::_ptrc_glVertexAttrib1s(index, x) : Detail::missing<void>("glVertexAttrib1s"); }
inline void glVertexAttrib1sv(GLuint index, const GLshort* v) { return ::_ptrc_glVertexAttrib1sv ? ::_ptrc_glVertexAttrib1sv(index, v) : Detail::missing<void>("glVertexAttrib1sv"); }
inline void glVertexAttrib2d(GLuint index, GLdouble x, GLdouble y) { return ::_ptrc_glVertexAttrib2d ? ::_ptrc_glVertexAttrib2d(index, x, y) : Detail::missing<void>("glVertexAttrib2d"); }
inline void glVertexAttrib2dv(GLuint index, const GLdouble* v) { return ::_ptrc_glVertexAttrib2dv ? ::_ptrc_glVertexAttrib2dv(index, v) : Detail::missing<void>("glVertexAttrib2dv"); }
inline void glVertexAttrib2f(GLuint index, GLfloat x, GLfloat y) { return ::_ptrc_glVertexAttrib2f ? ::_ptrc_glVertexAttrib2f(index, x, y) : Detail::missing<void>("glVertexAttrib2f"); }
inline void glVertexAttrib2fv(GLuint index, const GLfloat* v) { return ::_ptrc_glVertexAttrib2fv ? ::_ptrc_glVertexAttrib2fv(index, v) : Detail::missing<void>("glVertexAttrib2fv"); }
inline void glVertexAttrib2s(GLuint index, GLshort x, GLshort y) { return ::_ptrc_glVertexAttrib2s ? ::_ptrc_glVertexAttrib2s(index, x, y) : Detail::missing<void>("glVertexAttrib2s"); }
inline void glVertexAttrib2sv(GLuint index, const GLshort* v) { return ::_ptrc_glVertexAttrib2sv ? ::_ptrc_glVertexAttrib2sv(index, v) : Detail::missing<void>("glVertexAttrib2sv"); }
inline void glVertexAttrib3d(GLuint index, GLdouble x, GLdouble y, GLdouble z) { return ::_ptrc_glVertexAttrib3d ? ::_ptrc_glVertexAttrib3d(index, x, y, z) : Detail::missing<void>("glVertexAttrib3d"); }
inline void glVertexAttrib3dv(GLuint index, const GLdouble* v) { return ::_ptrc_glVertexAttrib3dv ? ::_ptrc_glVertexAttrib3dv(index, v) : Detail::missing<void>("glVertexAttrib3dv"); }
inline void glVertexAttrib3f(GLuint index, GLfloat x, GLfloat y, GLfloat z) { return ::_ptrc_glVertexAttrib3f ? ::_ptrc_glVertexAttrib3f(index, x, y, z) : Detail::missing<void>("glVertexAttrib3f"); }
inline void glVertexAttrib3fv(GLuint index, const GLfloat* v) { return ::_ptrc_glVertexAttrib3fv ? ::_ptrc_glVertexAttrib3fv(index, v) : Detail::missing<void>("glVertexAttrib3fv"); }
inline void glVertexAttrib3s(GLuint index, GLshort x, GLshort y, GLshort z) { return ::_ptrc_glVertexAttrib3s ? ::_ptrc_glVertexAttrib3s(index, x, y, z) : Detail::missing<void>("glVertexAttrib3s"); }
inline void glVertexAttrib3sv(GLuint index, const GLshort* v) { return ::_ptrc_glVertexAttrib3sv ? ::_ptrc_glVertexAttrib3sv(index, v) : Detail::missing<void>("glVertexAttrib3sv"); }
inline void glVertexAttrib4Nbv(GLuint index, const GLbyte* v) { return ::_ptrc_glVertexAttrib4Nbv ? ::_ptrc_glVertexAttrib4Nbv(index, v) : Detail::missing<void>("glVertexAttrib4Nbv"); }
inline void glVertexAttrib4Niv(GLuint index, const GLint* v) { return ::_ptrc_glVertexAttrib4Niv ? ::_ptrc_glVertexAttrib4Niv(index, v) : Detail::missing<void>("glVertexAttrib4Niv"); }
inline void glVertexAttrib4Nsv(GLuint index, const GLshort* v) { return ::_ptrc_glVertexAttrib4Nsv ? ::_ptrc_glVertexAttrib4Nsv(index, v) : Detail::missing<void>("glVertexAttrib4Nsv"); }
inline void glVertexAttrib4Nub(GLuint index, GLubyte x, GLubyte y, GLubyte z, GLubyte w) { return ::_ptrc_glVertexAttrib4Nub ? ::_ptrc_glVertexAttrib4Nub(index, x, y, z, w) : Detail::missing<void>("glVertexAttrib4Nub"); }
inline void glVertexAttrib4Nubv(GLuint index, const GLubyte* v) { return ::_ptrc_glVertexAttrib4Nubv ? ::_ptrc_glVertexAttrib4Nubv(index, v) : Detail::missing<void>("glVertexAttrib4Nubv"); }
inline void glVertexAttrib4Nuiv(GLuint index, const GLuint* v) { return ::_ptrc_glVertexAttrib4Nuiv ? ::_ptrc_glVertexAttrib4Nuiv(index, v) : Detail::missing<void>("glVertexAttrib4Nuiv"); }
inline void glVertexAttrib4Nusv(GLuint index, const GLushort* v) { return ::_ptrc_glVertexAttrib4Nusv ? ::_ptrc_glVertexAttrib4Nusv(index, v) : Detail::missing<void>("glVertexAttrib4Nusv"); }
inline void glVertexAttrib4bv(GLuint index, const GLbyte* v) { return ::_ptrc_glVertexAttrib4bv ? ::_ptrc_glVertexAttrib4bv(index, v) : Detail::missing<void>("glVertexAttrib4bv"); }
inline void glVertexAttrib4d(GLuint index, GLdouble x, GLdouble y, GLdouble z, GLdouble w) { return ::_ptrc_glVertexAttrib4d ? ::_ptrc_glVertexAttrib4d(index, x, y, z, w) : Detail::missing<void>("glVertexAttrib4d"); }
inline void glVertexAttrib4dv(GLuint index, const GLdouble* v) { return ::_ptrc_glVertexAttrib4dv ? ::_ptrc_glVertexAttrib4dv(index, v) : Detail::missing<void>("glVertexAttrib4dv"); }
inline void glVertexAttrib4f(GLuint index, GLfloat x, GLfloat y, GLfloat z, GLfloat w) { return ::_ptrc_glVertexAttrib4f ? ::_ptrc_glVertexAttrib4f(index, x, y, z, w) : Detail::missing<void>("glVertexAttrib4f"); }
inline void glVertexAttrib4fv(GLuint index, const GLfloat* v) { return ::_ptrc_glVertexAttrib4fv ? ::_ptrc_glVertexAttrib4fv(index, v) : Detail::missing<void>("glVertexAttrib4fv"); }
inline void glVertexAttrib4iv(GLuint index, const GLint* v) { return ::_ptrc_glVertexAttrib4iv ? ::_ptrc_glVertexAttrib4iv(index, v) : Detail::missing<void>("glVertexAttrib4iv"); }
inline void glVertexAttrib4s(GLuint index, GLshort x, GLshort y, GLshort z, GLshort w) { return ::_ptrc_glVertexAttrib4s ? ::_ptrc_glVertexAttrib4s(index, x, y, z, w) : Detail::missing<void>("glVertexAttrib4s"); }
inline void glVertexAttrib4sv(GLuint index, const GLshort* v) { return ::_ptrc_glVertexAttrib4sv ? ::_ptrc_glVertexAttrib4sv(index, v) : Detail::missing<void>("glVertexAttrib4sv"); }
inline void glVertexAttrib4ubv(GLuint index, const GLubyte* v) { return ::_ptrc_glVertexAttrib4ubv ? ::_ptrc_glVertexAttrib4ubv(index, v) : Detail::missing<void>("glVertexAttrib4ubv"); }
inline void glVertexAttrib4uiv(GLuint index, const GLuint* v) { return ::_ptrc_glVertexAttrib4uiv ? ::_ptrc_glVertexAttrib4uiv(index, v) : Detail::missing<void>("glVertexAttrib4uiv"); }
inline void glVertexAttrib4usv(GLuint index, const GLushort* v) { return ::_ptrc_glVertexAttrib4usv ? ::_ptrc_glVertexAttrib4usv(index, v) : Detail::missing<void>("glVertexAttrib4usv"); }
inline void glVertexAttribPointer(GLuint index, GLint size, GLenum type, GLboolean normalized, GLsizei stride, const void* pointer) { return ::_ptrc_glVertexAttribPointer ? ::_ptrc_glVertexAttribPointer(index, size, type, normalized, stride, pointer) : Detail::missing<void>("glVertexAttribPointer"); }
inline void glUniformMatrix2x3fv(GLint location, GLsizei count, GLboolean transpose, const GLfloat* value) { return ::_ptrc_glUniformMatrix2x3fv ? ::_ptrc_glUniformMatrix2x3fv(location, count, transpose, value) : Detail::missing<void>("glUniformMatrix2x3fv"); }
inline void glUniformMatrix2x4fv(GLint location, GLsizei count, GLboolean transpose, const GLfloat* value) { return ::_ptrc_glUniformMatrix2x4fv ? ::_ptrc_glUniformMatrix2x4fv(location, count, transpose, value) : Detail::missing<void>("glUniformMatrix2x4fv"); }
inline void glUniformMatrix3x2fv(GLint location, GLsizei count, GLboolean transpose, const GLfloat* value) { return ::_ptrc_glUniformMatrix3x2fv ? ::_ptrc_glUniformMatrix3x2fv(location, count, transpose, value) : Detail::missing<void>("glUniformMatrix3x2fv"); }
inline void glUniformMatrix3x4fv(GLint location, GLsizei count, GLboolean transpose, const GLfloat* value) { return ::_ptrc_glUniformMatrix3x4fv ? ::_ptrc_glUniformMatrix3x4fv(location, count, transpose, value) : Detail::missing<void>("glUniformMatrix3x4fv"); }
inline void glUniformMatrix4x2fv(GLint location, GLsizei count, GLboolean transpose, const GLfloat* value) { return ::_ptrc_glUniformMatrix4x2fv ? ::_ptrc_glUniformMatrix4x2fv(location, count, transpose, value) : Detail::missing<void>("glUniformMatrix4x2fv"); }
inline void glUniformMatrix4x3fv(GLint location, GLsizei count, GLboolean transpose, const GLfloat* value) { return ::_ptrc_glUniformMatrix4x3fv ? ::_ptrc_glUniformMatrix4x3fv(location, count, transpose, value) : Detail::missing<void>("glUniformMatrix4x3fv"); }
inline void glBeginConditionalRender(GLuint id, GLenum mode) { return ::_ptrc_glBeginConditionalRender ? ::_ptrc_glBeginConditionalRender(id, mode) : Detail::missing<void>("glBeginConditionalRender"); }
inline void glBeginTransformFeedback(GLenum primitiveMode) { return ::_ptrc_glBeginTransformFeedback ? ::_ptrc_glBeginTransformFeedback(primitiveMode) : Detail::missing<void>("glBeginTransformFeedback"); }
inline void glBindBufferBase(GLenum target, GLuint index, GLuint buffer) { return ::_ptrc_glBindBufferBase ? ::_ptrc_glBindBufferBase(target, index, buffer) : Detail::missing<void>("glBindBufferBase"); }
inline void glBindBufferRange(GLenum target, GLuint index, GLuint buffer, GLintptr offset, GLsizeiptr size) { return ::_ptrc_glBindBufferRange ? ::_ptrc_glBindBufferRange(target, index, buffer, offset, size) : Detail::missing<void>("glBindBufferRange"); }
inline void glBindFragDataLocation(GLuint program, GLuint color, const GLchar* name) { return ::_ptrc_glBindFragDataLocation ? ::_ptrc_glBindFragDataLocation(program, color, name) : Detail::missing<void>("glBindFragDataLocation"); }
inline void glBindFramebuffer(GLenum target, GLuint framebuffer) { return ::_ptrc_glBindFramebuffer ? ::_ptrc_glBindFramebuffer(target, framebuffer) : Detail::missing<void>("glBindFramebuffer"); }
inline void glBindRenderbuffer(GLenum target, GLuint renderbuffer) { return ::_ptrc_glBindRenderbuffer ? ::_ptrc_glBindRenderbuffer(target, renderbuffer) : Detail::missing<void>("glBindRenderbuffer"); }
inline void glBindVertexArray(GLuint array) { return ::_ptrc_glBindVertexArray ? ::_ptrc_glBindVertexArray(array) : Detail::missing<void>("glBindVertexArray"); }
inline void glBlitFramebuffer(GLint srcX0, GLint srcY0, GLint srcX1, GLint srcY1, GLint dstX0, GLint dstY0, GLint dstX1, GLint dstY1, GLbitfield mask, GLenum filter) { return ::_ptrc_glBlitFramebuffer ? ::_ptrc_glBlitFramebuffer(srcX0, srcY0, srcX1, srcY1, dstX0, dstY0, dstX1, dstY1, mask, filter) : Detail::missing<void>("glBlitFramebuffer"); }
inline GLenum glCheckFramebufferStatus(GLenum target) { return ::_ptrc_glCheckFramebufferStatus ? ::_ptrc_glCheckFramebufferStatus(target) : Detail::missing<GLenum>("glCheckFramebufferStatus"); }
inline void glClampColor(GLenum target, GLenum clamp) { return ::_ptrc_glClampColor ? ::_ptrc_glClampColor(target, clamp) : Detail::missing<void>("glClampColor"); }
inline void glClearBufferfi(GLenum buffer, GLint drawbuffer, GLfloat depth, GLint stencil) { return ::_ptrc_glClearBufferfi ? ::_ptrc_glClearBufferfi(buffer, drawbuffer, depth, stencil) : Detail::missing<void>("glClearBufferfi"); }
inline void glClearBufferfv(GLenum buffer, GLint drawbuffer, const GLfloat* value) { return ::_ptrc_glClearBufferfv ? ::_ptrc_glClearBufferfv(buffer, drawbuffer, value) : Detail::missing<void>("glClearBufferfv"); }
inline void glClearBufferiv(GLenum buffer, GLint drawbuffer, const GLint* value) { return ::_ptrc_glClearBufferiv ? ::_ptrc_glClearBufferiv(buffer, drawbuffer, value) : Detail::missing<void>("glClearBufferiv"); }
inline void glClearBufferuiv(GLenum buffer, GLint drawbuffer, const GLuint* value) { return ::_ptrc_glClearBufferuiv ? ::_ptrc_glClearBufferuiv(buffer, drawbuffer, value) : Detail::missing<void>("glClearBufferuiv"); }
inline void glColorMaski(GLuint index, GLboolean r, GLboolean g, GLboolean b, GLboolean a) { return ::_ptrc_glColorMaski ? ::_ptrc_glColorMaski(index, r, g, b, a) : Detail::missing<void>("glColorMaski"); }
inline void glDeleteFramebuffers(GLsizei n, const GLuint* framebuffers) { return ::_ptrc_glDeleteFramebuffers ? ::_ptrc_glDeleteFramebuffers(n, framebuffers) : Detail::missing<void>("glDeleteFramebuffers"); }
inline void glDeleteRenderbuffers(GLsizei n, const GLuint* renderbuffers) { return ::_ptrc_glDeleteRenderbuffers ? ::_ptrc_glDeleteRenderbuffers(n, renderbuffers) : Detail::missing<void>("glDeleteRenderbuffers"); }
inline void glDeleteVertexArrays(GLsizei n, const GLuint* arrays) { return ::_ptrc_glDeleteVertexArrays ? ::_ptrc_glDeleteVertexArrays(n, arrays) : Detail::missing<void>("glDeleteVertexArrays"); }
inline void glDisablei(GLenum target, GLuint index) { return ::_ptrc_glDisablei ? ::_ptrc_glDisablei(target, index) : Detail::missing<void>("glDisablei"); }
inline void glEnablei(GLenum target, GLuint index) { return ::_ptrc_glEnablei ? ::_ptrc_glEnablei(target, index) : Detail::missing<void>("glEnablei"); }
inline void glEndConditionalRender() { return ::_ptrc_glEndConditionalRender ? ::_ptrc_glEndConditionalRender() : Detail::missing<void>("glEndConditionalRender"); }
inline void glEndTransformFeedback() { return ::_ptrc_glEndTransformFeedback ? ::_ptrc_glEndTransformFeedback() : Detail::missing<void>("glEndTransformFeedback"); }
inline void glFlushMappedBufferRange(GLenum target, GLintptr offset, GLsizeiptr length) { return ::_ptrc_glFlushMappedBufferRange ? ::_ptrc_glFlushMappedBufferRange(target, offset, length) : Detail::missing<void>("glFlushMappedBufferRange"); }
inline void glFramebufferRenderbuffer(GLenum target, GLenum attachment, GLenum renderbuffertarget, GLuint renderbuffer) { return ::_ptrc_glFramebufferRenderbuffer ? ::_ptrc_glFramebufferRenderbuffer(target, attachment, renderbuffertarget, renderbuffer) : Detail::missing<void>("glFramebufferRenderbuffer"); }
inline void glFramebufferTexture1D(GLenum target, GLenum attachment, GLenum textarget, GLuint texture, GLint level) { return ::_ptrc_glFramebufferTexture1D ? ::_ptrc_glFramebufferTexture1D(target, attachment, textarget, texture, level) : Detail::missing<void>("glFramebufferTexture1D"); }
inline void glFramebufferTexture2D(GLenum target, GLenum attachment, GLenum textarget, GLuint texture, GLint level) { return ::_ptrc_glFramebufferTexture2D ? ::_ptrc_glFramebufferTexture2D(target, attachment, textarget, texture, level) : Detail::missing<void>("glFramebufferTexture2D"); }
inline void glFramebufferTexture3D(GLenum target, GLenum attachment, GLenum textarget, GLuint texture, GLint level, GLint zoffset) { return ::_ptrc_glFramebufferTexture3D ? ::_ptrc_glFramebufferTexture3D(target, attachment, textarget, texture, level, zoffset) : Detail::missing<void>("glFramebufferTexture3D"); }
inline void glFramebufferTextureLayer(GLenum target, GLenum attachment, GLuint texture, GLint level, GLint layer) { return ::_ptrc_glFramebufferTextureLayer ? ::_ptrc_glFramebufferTextureLayer(target, attachment, texture, level, layer) : Detail::missing<void>("glFramebufferTextureLayer"); }
inline void glGenFramebuffers(GLsizei n, GLuint* framebuffers) { return ::_ptrc_glGenFramebuffers ? ::_ptrc_glGenFramebuffers(n, framebuffers) : Detail::missing<void>("glGenFramebuffers"); }
inline void glGenRenderbuffers(GLsizei n, GLuint* renderbuffers) { return ::_ptrc_glGenRenderbuffers ? ::_ptrc_glGenRenderbuffers(n, renderbuffers) : Detail::missing<void>("glGenRenderbuffers"); }
inline void glGenVertexArrays(GLsizei n, GLuint* arrays) { return ::_ptrc_glGenVertexArrays ? ::_ptrc_glGenVertexArrays(n, arrays) : Detail::missing<void>("glGenVertexArrays"); }
inline void glGenerateMipmap(GLenum target) { return ::_ptrc_glGenerateMipmap ? ::_ptrc_glGenerateMipmap(target) : Detail::missing<void>("glGenerateMipmap"); }
inline void glGetBooleani_v(GLenum target, GLuint index, GLboolean* data) { return ::_ptrc_glGetBooleani_v ? ::_ptrc_glGetBooleani_v(target, index, data) : Detail::missing<void>("glGetBooleani_v"); }
inline GLint glGetFragDataLocation(GLuint program, const GLchar* name) { return ::_ptrc_glGetFragDataLocation ? ::_ptrc_glGetFragDataLocation(program, name) : Detail::missing<GLint>("glGetFragDataLocation"); }
inline void glGetFramebufferAttachmentParameteriv(GLenum target, GLenum attachment, GLenum pname, GLint* params) { return ::_ptrc_glGetFramebufferAttachmentParameteriv ? ::_ptrc_glGetFramebufferAttachmentParameteriv(target, attachment, pname, params) : Detail::missing<void>("glGetFramebufferAttachmentParameteriv"); }
inline void glGetIntegeri_v(GLenum target, GLuint index, GLint* data) { return ::_ptrc_glGetIntegeri_v ? ::_ptrc_glGetIntegeri_v(target, index, data) : Detail::missing<void>("glGetIntegeri_v"); }
inline void glGetRenderbufferParameteriv(GLenum target, GLenum pname, GLint* params) { return ::_ptrc_glGetRenderbufferParameteriv ? ::_ptrc_glGetRenderbufferParameteriv(target, pname, params) : Detail::missing<void>("glGetRenderbufferParameteriv"); }
inline const GLubyte* glGetStringi(GLenum name, GLuint index) { return ::_ptrc_glGetStringi ? ::_ptrc_glGetStringi(name, index) : Detail::missing<const GLubyte*>("glGetStringi"); }
inline void glGetTexParameterIiv(GLenum target, GLenum pname, GLint* params) { return ::_ptrc_glGetTexParameterIiv ? ::_ptrc_glGetTexParameterIiv(target, pname, params) : Detail::missing<void>("glGetTexParameterIiv"); }
inline void glGetTexParameterIuiv(GLenum target, GLenum pname, GLuint* params) { return ::_ptrc_glGetTexParameterIuiv ? ::_ptrc_glGetTexParameterIuiv(target, pname, params) : Detail::missing<void>("glGetTexParameterIuiv"); }
inline void glGetTransformFeedbackVarying(GLuint program, GLuint index, GLsizei bufSize, GLsizei* length, GLsizei* size, GLenum* type, GLchar* name) { return ::_ptrc_glGetTransformFeedbackVarying ? ::_ptrc_glGetTransformFeedbackVarying(program, index, bufSize, length, size, type, name) : Detail::missing<void>("glGetTransformFeedbackVarying"); }
inline void glGetUniformuiv(GLuint program, GLint location, GLuint* params) { return ::_ptrc_glGetUniformuiv ? ::_ptrc_glGetUniformuiv(program, location, params) : Detail::missing<void>("glGetUniformuiv"); }
inline void glGetVertexAttribIiv(GLuint index, GLenum pname, GLint* params) { return ::_ptrc_glGetVertexAttribIiv ? ::_ptrc_glGetVertexAttribIiv(index, pname, params) : Detail::missing<void>("glGetVertexAttribIiv"); }
inline void glGetVertexAttribIuiv(GLuint index, GLenum pname, GLuint* params) { return ::_ptrc_glGetVertexAttribIuiv ? ::_ptrc_glGetVertexAttribIuiv(index, pname, params) : Detail::missing<void>("glGetVertexAttribIuiv"); }
inline GLboolean glIsEnabledi(GLenum target, GLuint index) { return ::_ptrc_glIsEnabledi ? ::_ptrc_glIsEnabledi(target, index) : Detail::missing<GLboolean>("glIsEnabledi"); }
inline GLboolean glIsFramebuffer(GLuint framebuffer) { return ::_ptrc_glIsFramebuffer ? ::_ptrc_glIsFramebuffer(framebuffer) : Detail::missing<GLboolean>("glIsFramebuffer"); }
inline GLboolean glIsRenderbuffer(GLuint renderbuffer) { return ::_ptrc_glIsRenderbuffer ? ::_ptrc_glIsRenderbuffer(renderbuffer) : Detail::missing<GLboolean>("glIsRenderbuffer"); }
inline GLboolean glIsVertexArray(GLuint array) { return ::_ptrc_glIsVertexArray ? ::_ptrc_glIsVertexArray(array) : Detail::missing<GLboolean>("glIsVertexArray"); }
inline void* glMapBufferRange(GLenum target, GLintptr offset, GLsizeiptr length, GLbitfield access) { return ::_ptrc_glMapBufferRange ? ::_ptrc_glMapBufferRange(target, offset, length, access) : Detail::missing<void*>("glMapBufferRange"); }
inline void glRenderbufferStorage(GLenum target, GLenum internalformat, GLsizei width, GLsizei height) { return ::_ptrc_glRenderbufferStorage ? ::_ptrc_glRenderbufferStorage(target, internalformat, width, height) : Detail::missing<void>("glRenderbufferStorage"); }
inline void glRenderbufferStorageMultisample(GLenum target, GLsizei samples, GLenum internalformat, GLsizei width, GLsizei height) { return ::_ptrc_glRenderbufferStorageMultisample ? ::_ptrc_glRenderbufferStorageMultisample(target, samples, internalformat, width, height) : Detail::missing<void>("glRenderbufferStorageMultisample"); }
inline void glTexParameterIiv(GLenum target, GLenum pname, const GLint* params) { return ::_ptrc_glTexParameterIiv ? ::_ptrc_glTexParameterIiv(target, pname, params) : Detail::missing<void>("glTexParameterIiv"); }
inline void glTexParameterIuiv(GLenum target, GLenum pname, const GLuint* params) { return ::_ptrc_glTexParameterIuiv ? ::_ptrc_glTexParameterIuiv(target, pname, params) : Detail::missing<void>("glTexParameterIuiv"); }
inline void glTransformFeedbackVaryings(GLuint program, GLsizei count, const GLchar* const* varyings, GLenum bufferMode) { return ::_ptrc_glTransformFeedbackVaryings ? ::_ptrc_glTransformFeedbackVaryings(program, count, varyings, bufferMode) : Detail::missing<void>("glTransformFeedbackVaryings"); }
inline void glUniform1ui(GLint location, GLuint v0) { return ::_ptrc_glUniform1ui ? ::_ptrc_glUniform1ui(location, v0) : Detail::missing<void>("glUniform1ui"); }
inline void glUniform1uiv(GLint location, GLsizei count, const GLuint* value) { return ::_ptrc_glUniform1uiv ? ::_ptrc_glUniform1uiv(location, count, value) : Detail::missing<void>("glUniform1uiv"); }
inline void glUniform2ui(GLint location, GLuint v0, GLuint v1) { return ::_ptrc_glUniform2ui ? ::_ptrc_glUniform2ui(location, v0, v1) : Detail::missing<void>("glUniform2ui"); }
inline void glUniform2uiv(GLint location, GLsizei count, const GLuint* value) { return ::_ptrc_glUniform2uiv ? ::_ptrc_glUniform2uiv(location, count, value) : Detail::missing<void>("glUniform2uiv"); }
inline void glUniform3ui(GLint location, GLuint v0, GLuint v1, GLuint v2) { return ::_ptrc_glUniform3ui ? ::_ptrc_glUniform3ui(location, v0, v1, v2) : Detail::missing<void>("glUniform3ui"); }
inline void glUniform3uiv(GLint location, GLsizei count, const GLuint* value) { return ::_ptrc_glUniform3uiv ? ::_ptrc_glUniform3uiv(location, count, value) : Detail::missing<void>("glUniform3uiv"); }
inline void glUniform4ui(GLint location, GLuint v0, GLuint v1, GLuint v2, GLuint v3) { return ::_ptrc_glUniform4ui ? ::_ptrc_glUniform4ui(location, v0, v1, v2, v3) : Detail::missing<void>("glUniform4ui"); }
inline void glUniform4uiv(GLint location, GLsizei count, const GLuint* value) { return ::_ptrc_glUniform4uiv ? ::_ptrc_glUniform4uiv(location, count, value) : Detail::missing<void>("glUniform4uiv"); }
inline void glVertexAttribI1i(GLuint index, GLint x) { return ::_ptrc_glVertexAttribI1i ? ::_ptrc_glVertexAttribI1i(index, x) : Detail::missing<void>("glVertexAttribI1i"); }
inline void glVertexAttribI1iv(GLuint index, const GLint* v) { return ::_ptrc_glVertexAttribI1iv ? ::_ptrc_glVertexAttribI1iv(index, v) : Detail::missing<void>("glVertexAttribI1iv"); }
inline void glVertexAttribI1ui(GLuint index, GLuint x) { return ::_ptrc_glVertexAttribI1ui ? ::_ptrc_glVertexAttribI1ui(index, x) : Detail::missing<void>("glVertexAttribI1ui"); }
inline void glVertexAttribI1uiv(GLuint index, const GLuint* v) { return ::_ptrc_glVertexAttribI1uiv ? ::_ptrc_glVertexAttribI1uiv(index, v) : Detail::missing<void>("glVertexAttribI1uiv"); }
inline void glVertexAttribI2i(GLuint index, GLint x, GLint y) { return ::_ptrc_glVertexAttribI2i ? ::_ptrc_glVertexAttribI2i(index, x, y) : Detail::missing<void>("glVertexAttribI2i"); }
inline void glVertexAttribI2iv(GLuint index, const GLint* v) { return ::_ptrc_glVertexAttribI2iv ? ::_ptrc_glVertexAttribI2iv(index, v) : Detail::missing<void>("glVertexAttribI2iv"); }
inline void glVertexAttribI2ui(GLuint index, GLuint x, GLuint y) { return ::_ptrc_glVertexAttribI2ui ? ::_ptrc_glVertexAttribI2ui(index, x, y) : Detail::missing<void>("glVertexAttribI2ui"); }
inline void glVertexAttribI2uiv(GLuint index, const GLuint* v) { return ::_ptrc_glVertexAttribI2uiv ? ::_ptrc_glVertexAttribI2uiv(index, v) : Detail::missing<void>("glVertexAttribI2uiv"); }
inline void glVertexAttribI3i(GLuint index, GLint x, GLint y, GLint z) { return ::_ptrc_glVertexAttribI3i ? ::_ptrc_glVertexAttribI3i(index, x, y, z) : Detail::missing<void>("glVertexAttribI3i"); }
inline void glVertexAttribI3iv(GLuint index, const GLint* v) { return ::_ptrc_glVertexAttribI3iv ? ::_ptrc_glVertexAttribI3iv(index, v) : Detail::missing<void>("glVertexAttribI3iv"); }
inline void glVertexAttribI3ui(GLuint index, GLuint x, GLuint y, GLuint z) { return ::_ptrc_glVertexAttribI3ui ? ::_ptrc_glVertexAttribI3ui(index, x, y, z) : Detail::missing<void>("glVertexAttribI3ui"); }
inline void glVertexAttribI3uiv(GLuint index, const GLuint* v) { return ::_ptrc_glVertexAttribI3uiv ? ::_ptrc_glVertexAttribI3uiv(index, v) : Detail::missing<void>("glVertexAttribI3uiv"); }
inline void glVertexAttribI4bv(GLuint index, const GLbyte* v) { return ::_ptrc_glVertexAttribI4bv ? ::_ptrc_glVertexAttribI4bv(index, v) : Detail::missing<void>("glVertexAttribI4bv"); }
inline void glVertexAttribI4i(GLuint index, GLint x, GLint y, GLint z, GLint w) { return ::_ptrc_glVertexAttribI4i ? ::_ptrc_glVertexAttribI4i(index, x, y, z, w) : Detail::missing<void>("glVertexAttribI4i"); }
inline void glVertexAttribI4iv(GLuint index, const GLint* v) { return ::_ptrc_glVertexAttribI4iv ? ::_ptrc_glVertexAttribI4iv(index, v) : Detail::missing<void>("glVertexAttribI4iv"); }
inline void glVertexAttribI4sv(GLuint index, const GLshort* v) { return ::_ptrc_glVertexAttribI4sv ? ::_ptrc_glVertexAttribI4sv(index, v) : Detail::missing<void>("glVertexAttribI4sv"); }
inline void glVertexAttribI4ubv(GLuint index, const GLubyte* v) { return ::_ptrc_glVertexAttribI4ubv ? ::_ptrc_glVertexAttribI4ubv(index, v) : Detail::missing<void>("glVertexAttribI4ubv"); }
inline void glVertexAttribI4ui(GLuint index, GLuint x, GLuint y, GLuint z, GLuint w) { return ::_ptrc_glVertexAttribI4ui ? ::_ptrc_glVertexAttribI4ui(index, x, y, z, w) : Detail::missing<void>("glVertexAttribI4ui"); }
inline void glVertexAttribI4uiv(GLuint index, const GLuint* v) { return ::_ptrc_glVertexAttribI4uiv ? ::_ptrc_glVertexAttribI4uiv(index, v) : Detail::missing<void>("glVertexAttribI4uiv"); }
inline void glVertexAttribI4usv(GLuint index, const GLushort* v) { return ::_ptrc_glVertexAttribI4usv ? ::_ptrc_glVertexAttribI4usv(index, v) : Detail::missing<void>("glVertexAttribI4usv"); }
inline void glVertexAttribIPointer(GLuint index, GLint size, GLenum type, GLsizei stride, const void* pointer) { return ::_ptrc_glVertexAttribIPointer ? ::_ptrc_glVertexAttribIPointer(index, size, type, stride, pointer) : Detail::missing<void>("glVertexAttribIPointer"); }
inline void glCopyBufferSubData(GLenum readTarget, GLenum writeTarget, GLintptr readOffset, GLintptr writeOffset, GLsizeiptr size) { return ::_ptrc_glCopyBufferSubData ? ::_ptrc_glCopyBufferSubData(readTarget, writeTarget, readOffset, writeOffset, size) : Detail::missing<void>("glCopyBufferSubData"); }
inline void glDrawArraysInstanced(GLenum mode, GLint first, GLsizei count, GLsizei instancecount) { return ::_ptrc_glDrawArraysInstanced ? ::_ptrc_glDrawArraysInstanced(mode, first, count, instancecount) : Detail::missing<void>("glDrawArraysInstanced"); }
inline void glDrawElementsInstanced(GLenum mode, GLsizei count, GLenum type, const void* indices, GLsizei instancecount) { return ::_ptrc_glDrawElementsInstanced ? ::_ptrc_glDrawElementsInstanced(mode, count, type, indices, instancecount) : Detail::missing<void>("glDrawElementsInstanced"); }
inline void glGetActiveUniformBlockName(GLuint program, GLuint uniformBlockIndex, GLsizei bufSize, GLsizei* length, GLchar* uniformBlockName) { return ::_ptrc_glGetActiveUniformBlockName ? ::_ptrc_glGetActiveUniformBlockName(program, uniformBlockIndex, bufSize, length, uniformBlockName) : Detail::missing<void>("glGetActiveUniformBlockName"); }
inline void glGetActiveUniformBlockiv(GLuint program, GLuint uniformBlockIndex, GLenum pname, GLint* params) { return ::_ptrc_glGetActiveUniformBlockiv ? ::_ptrc_glGetActiveUniformBlockiv(program, uniformBlockIndex, pname, params) : Detail::missing<void>("glGetActiveUniformBlockiv"); }
inline void glGetActiveUniformName(GLuint program, GLuint uniformIndex, GLsizei bufSize, GLsizei* length, GLchar* uniformName) { return ::_ptrc_glGetActiveUniformName ? ::_ptrc_glGetActiveUniformName(program, uniformIndex, bufSize, length, uniformName) : Detail::missing<void>("glGetActiveUniformName"); }
inline void glGetActiveUniformsiv(GLuint program, GLsizei uniformCount, const GLuint* uniformIndices, GLenum pname, GLint* params) { return ::_ptrc_glGetActiveUniformsiv ? ::_ptrc_glGetActiveUniformsiv(program, uniformCount, uniformIndices, pname, params) : Detail::missing<void>("glGetActiveUniformsiv"); }
inline GLuint glGetUniformBlockIndex(GLuint program, const GLchar* uniformBlockName) { return ::_ptrc_glGetUniformBlockIndex ? ::_ptrc_glGetUniformBlockIndex(program, uniformBlockName) : Detail::missing<GLuint>("glGetUniformBlockIndex"); }
inline void glGetUniformIndices(GLuint program, GLsizei uniformCount, const GLchar* const* uniformNames, GLuint* uniformIndices) { return ::_ptrc_glGetUniformIndices ? ::_ptrc_glGetUniformIndices(program, uniformCount, uniformNames, uniformIndices) : Detail::missing<void>("glGetUniformIndices"); }
inline void glPrimitiveRestartIndex(GLuint index) { return ::_ptrc_glPrimitiveRestartIndex ? ::_ptrc_glPrimitiveRestartIndex(index) : Detail::missing<void>("glPrimitiveRestartIndex"); }
inline void glTexBuffer(GLenum target, GLenum internalformat, GLuint buffer) { return ::_ptrc_glTexBuffer ? ::_ptrc_glTexBuffer(target, internalformat, buffer) : Detail::missing<void>("glTexBuffer"); }
inline void glUniformBlockBinding(GLuint program, GLuint uniformBlockIndex, GLuint uniformBlockBinding) { return ::_ptrc_glUniformBlockBinding ? ::_ptrc_glUniformBlockBinding(program, uniformBlockIndex, uniformBlockBinding) : Detail::missing<void>("glUniformBlockBinding"); }
/** Type of the object that is called as `glClientWaitSync`. */ struct Call_glClientWaitSync { /** The call, through the pointer. */ GLenum operator()(GLsync sync, GLbitfield flags, GLuint64 timeout) const { return ::_ptrc_glClientWaitSync ? ::_ptrc_glClientWaitSync(sync, flags, timeout) : Detail::missing<GLenum>("glClientWaitSync"); } };
inline constexpr Call_glClientWaitSync glClientWaitSync{};
/** Type of the object that is called as `glDeleteSync`. */ struct Call_glDeleteSync { /** The call, through the pointer. */ void operator()(GLsync sync) const { return ::_ptrc_glDeleteSync ? ::_ptrc_glDeleteSync(sync) : Detail::missing<void>("glDeleteSync"); } };
inline constexpr Call_glDeleteSync glDeleteSync{};
inline void glDrawElementsBaseVertex(GLenum mode, GLsizei count, GLenum type, const void* indices, GLint basevertex) { return ::_ptrc_glDrawElementsBaseVertex ? ::_ptrc_glDrawElementsBaseVertex(mode, count, type, indices, basevertex) : Detail::missing<void>("glDrawElementsBaseVertex"); }
inline void glDrawElementsInstancedBaseVertex(GLenum mode, GLsizei count, GLenum type, const void* indices, GLsizei instancecount, GLint basevertex) { return ::_ptrc_glDrawElementsInstancedBaseVertex ? ::_ptrc_glDrawElementsInstancedBaseVertex(mode, count, type, indices, instancecount, basevertex) : Detail::missing<void>("glDrawElementsInstancedBaseVertex"); }
inline void glDrawRangeElementsBaseVertex(GLenum mode, GLuint start, GLuint end, GLsizei count, GLenum type, const void* indices, GLint basevertex) { return ::_ptrc_glDrawRangeElementsBaseVertex ? ::_ptrc_glDrawRangeElementsBaseVertex(mode, start, end, count, type, indices, basevertex) : Detail::missing<void>("glDrawRangeElementsBaseVertex"); }
inline GLsync glFenceSync(GLenum condition, GLbitfield flags) { return ::_ptrc_glFenceSync ? ::_ptrc_glFenceSync(condition, flags) : Detail::missing<GLsync>("glFenceSync"); }
inline void glFramebufferTexture(GLenum target, GLenum attachment, GLuint texture, GLint level) { return ::_ptrc_glFramebufferTexture ? ::_ptrc_glFramebufferTexture(target, attachment, texture, level) : Detail::missing<void>("glFramebufferTexture"); }
inline void glGetBufferParameteri64v(GLenum target, GLenum pname, GLint64* params) { return ::_ptrc_glGetBufferParameteri64v ? ::_ptrc_glGetBufferParameteri64v(target, pname, params) : Detail::missing<void>("glGetBufferParameteri64v"); }
inline void glGetInteger64i_v(GLenum target, GLuint index, GLint64* data) { return ::_ptrc_glGetInteger64i_v ? ::_ptrc_glGetInteger64i_v(target, index, data) : Detail::missing<void>("glGetInteger64i_v"); }
inline void glGetInteger64v(GLenum pname, GLint64* data) { return ::_ptrc_glGetInteger64v ? ::_ptrc_glGetInteger64v(pname, data) : Detail::missing<void>("glGetInteger64v"); }
inline void glGetMultisamplefv(GLenum pname, GLuint index, GLfloat* val) { return ::_ptrc_glGetMultisamplefv ? ::_ptrc_glGetMultisamplefv(pname, index, val) : Detail::missing<void>("glGetMultisamplefv"); }
/** Type of the object that is called as `glGetSynciv`. */ struct Call_glGetSynciv { /** The call, through the pointer. */ void operator()(GLsync sync, GLenum pname, GLsizei count, GLsizei* length, GLint* values) const { return ::_ptrc_glGetSynciv ? ::_ptrc_glGetSynciv(sync, pname, count, length, values) : Detail::missing<void>("glGetSynciv"); } };
inline constexpr Call_glGetSynciv glGetSynciv{};
/** Type of the object that is called as `glIsSync`. */ struct Call_glIsSync { /** The call, through the pointer. */ GLboolean operator()(GLsync sync) const { return ::_ptrc_glIsSync ? ::_ptrc_glIsSync(sync) : Detail::missing<GLboolean>("glIsSync"); } };
inline constexpr Call_glIsSync glIsSync{};
inline void glMultiDrawElementsBaseVertex(GLenum mode, const GLsizei* count, GLenum type, const void* const* indices, GLsizei drawcount, const GLint* basevertex) { return ::_ptrc_glMultiDrawElementsBaseVertex ? ::_ptrc_glMultiDrawElementsBaseVertex(mode, count, type, indices, drawcount, basevertex) : Detail::missing<void>("glMultiDrawElementsBaseVertex"); }
inline void glProvokingVertex(GLenum mode) { return ::_ptrc_glProvokingVertex ? ::_ptrc_glProvokingVertex(mode) : Detail::missing<void>("glProvokingVertex"); }
inline void glSampleMaski(GLuint maskNumber, GLbitfield mask) { return ::_ptrc_glSampleMaski ? ::_ptrc_glSampleMaski(maskNumber, mask) : Detail::missing<void>("glSampleMaski"); }
inline void glTexImage2DMultisample(GLenum target, GLsizei samples, GLenum internalformat, GLsizei width, GLsizei height, GLboolean fixedsamplelocations) { return ::_ptrc_glTexImage2DMultisample ? ::_ptrc_glTexImage2DMultisample(target, samples, internalformat, width, height, fixedsamplelocations) : Detail::missing<void>("glTexImage2DMultisample"); }
inline void glTexImage3DMultisample(GLenum target, GLsizei samples, GLenum internalformat, GLsizei width, GLsizei height, GLsizei depth, GLboolean fixedsamplelocations) { return ::_ptrc_glTexImage3DMultisample ? ::_ptrc_glTexImage3DMultisample(target, samples, internalformat, width, height, depth, fixedsamplelocations) : Detail::missing<void>("glTexImage3DMultisample"); }
/** Type of the object that is called as `glWaitSync`. */ struct Call_glWaitSync { /** The call, through the pointer. */ void operator()(GLsync sync, GLbitfield flags, GLuint64 timeout) const { return ::_ptrc_glWaitSync ? ::_ptrc_glWaitSync(sync, flags, timeout) : Detail::missing<void>("glWaitSync"); } };
inline constexpr Call_glWaitSync glWaitSync{};
inline void glDrawArraysIndirect(GLenum mode, const void* indirect) { return ::_ptrc_glDrawArraysIndirect ? ::_ptrc_glDrawArraysIndirect(mode, indirect) : Detail::missing<void>("glDrawArraysIndirect"); }
inline void glDrawElementsIndirect(GLenum mode, GLenum type, const void* indirect) { return ::_ptrc_glDrawElementsIndirect ? ::_ptrc_glDrawElementsIndirect(mode, type, indirect) : Detail::missing<void>("glDrawElementsIndirect"); }
inline void glMultiDrawArraysIndirect(GLenum mode, const void* indirect, GLsizei drawcount, GLsizei stride) { return ::_ptrc_glMultiDrawArraysIndirect ? ::_ptrc_glMultiDrawArraysIndirect(mode, indirect, drawcount, stride) : Detail::missing<void>("glMultiDrawArraysIndirect"); }
inline void glMultiDrawElementsIndirect(GLenum mode, GLenum type, const void* indirect, GLsizei drawcount, GLsizei stride) { return ::_ptrc_glMultiDrawElementsIndirect ? ::_ptrc_glMultiDrawElementsIndirect(mode, type, indirect, drawcount, stride) : Detail::missing<void>("glMultiDrawElementsIndirect"); }
inline void glPatchParameteri(GLenum pname, GLint value) { return ::_ptrc_glPatchParameteri ? ::_ptrc_glPatchParameteri(pname, value) : Detail::missing<void>("glPatchParameteri"); }
inline void glPatchParameterfv(GLenum pname, const GLfloat* values) { return ::_ptrc_glPatchParameterfv ? ::_ptrc_glPatchParameterfv(pname, values) : Detail::missing<void>("glPatchParameterfv"); }
inline void glGetActiveAtomicCounterBufferiv(GLuint program, GLuint bufferIndex, GLenum pname, GLint* params) { return ::_ptrc_glGetActiveAtomicCounterBufferiv ? ::_ptrc_glGetActiveAtomicCounterBufferiv(program, bufferIndex, pname, params) : Detail::missing<void>("glGetActiveAtomicCounterBufferiv"); }
inline void glBindImageTexture(GLuint unit, GLuint texture, GLint level, GLboolean layered, GLint layer, GLenum access, GLenum format) { return ::_ptrc_glBindImageTexture ? ::_ptrc_glBindImageTexture(unit, texture, level, layered, layer, access, format) : Detail::missing<void>("glBindImageTexture"); }
inline void glMemoryBarrier(GLbitfield barriers) { return ::_ptrc_glMemoryBarrier ? ::_ptrc_glMemoryBarrier(barriers) : Detail::missing<void>("glMemoryBarrier"); }

} // namespace Harrow::Vrk
