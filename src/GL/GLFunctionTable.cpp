// SPDX-License-Identifier: MIT
// Written by tools/generate_gl_loader.py from the Khronos XML registry. Do not edit.
#include "GLFunctionTable.h"

#include "GLFunctions.h"

extern "C" {
void (VRK_GLAPIENTRY* _ptrc_glBlendFunc)(GLenum, GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glClear)(GLbitfield) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glClearColor)(GLfloat, GLfloat, GLfloat, GLfloat) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glClearDepth)(GLdouble) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glClearStencil)(GLint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glColorMask)(GLboolean, GLboolean, GLboolean, GLboolean) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glCullFace)(GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glDepthFunc)(GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glDepthMask)(GLboolean) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glDepthRange)(GLdouble, GLdouble) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glDisable)(GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glDrawBuffer)(GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glEnable)(GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glFinish)(void) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glFlush)(void) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glFrontFace)(GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetBooleanv)(GLenum, GLboolean*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetDoublev)(GLenum, GLdouble*) = nullptr;
GLenum (VRK_GLAPIENTRY* _ptrc_glGetError)(void) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetFloatv)(GLenum, GLfloat*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetIntegerv)(GLenum, GLint*) = nullptr;
const GLubyte* (VRK_GLAPIENTRY* _ptrc_glGetString)(GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetTexImage)(GLenum, GLint, GLenum, GLenum, void*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetTexLevelParameterfv)(GLenum, GLint, GLenum, GLfloat*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetTexLevelParameteriv)(GLenum, GLint, GLenum, GLint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetTexParameterfv)(GLenum, GLenum, GLfloat*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetTexParameteriv)(GLenum, GLenum, GLint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glHint)(GLenum, GLenum) = nullptr;
GLboolean (VRK_GLAPIENTRY* _ptrc_glIsEnabled)(GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glLineWidth)(GLfloat) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glLogicOp)(GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glPixelStoref)(GLenum, GLfloat) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glPixelStorei)(GLenum, GLint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glPointSize)(GLfloat) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glPolygonMode)(GLenum, GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glReadBuffer)(GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glReadPixels)(GLint, GLint, GLsizei, GLsizei, GLenum, GLenum, void*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glScissor)(GLint, GLint, GLsizei, GLsizei) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glStencilFunc)(GLenum, GLint, GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glStencilMask)(GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glStencilOp)(GLenum, GLenum, GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glTexImage1D)(GLenum, GLint, GLint, GLsizei, GLint, GLenum, GLenum, const void*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glTexImage2D)(GLenum, GLint, GLint, GLsizei, GLsizei, GLint, GLenum, GLenum, const void*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glTexParameterf)(GLenum, GLenum, GLfloat) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glTexParameterfv)(GLenum, GLenum, const GLfloat*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glTexParameteri)(GLenum, GLenum, GLint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glTexParameteriv)(GLenum, GLenum, const GLint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glViewport)(GLint, GLint, GLsizei, GLsizei) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glBindTexture)(GLenum, GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glCopyTexImage1D)(GLenum, GLint, GLenum, GLint, GLint, GLsizei, GLint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glCopyTexImage2D)(GLenum, GLint, GLenum, GLint, GLint, GLsizei, GLsizei, GLint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glCopyTexSubImage1D)(GLenum, GLint, GLint, GLint, GLint, GLsizei) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glCopyTexSubImage2D)(GLenum, GLint, GLint, GLint, GLint, GLint, GLsizei, GLsizei) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glDeleteTextures)(GLsizei, const GLuint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glDrawArrays)(GLenum, GLint, GLsizei) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glDrawElements)(GLenum, GLsizei, GLenum, const void*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGenTextures)(GLsizei, GLuint*) = nullptr;
GLboolean (VRK_GLAPIENTRY* _ptrc_glIsTexture)(GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glPolygonOffset)(GLfloat, GLfloat) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glTexSubImage1D)(GLenum, GLint, GLint, GLsizei, GLenum, GLenum, const void*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glTexSubImage2D)(GLenum, GLint, GLint, GLint, GLsizei, GLsizei, GLenum, GLenum, const void*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glCopyTexSubImage3D)(GLenum, GLint, GLint, GLint, GLint, GLint, GLint, GLsizei, GLsizei) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glDrawRangeElements)(GLenum, GLuint, GLuint, GLsizei, GLenum, const void*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glTexImage3D)(GLenum, GLint, GLint, GLsizei, GLsizei, GLsizei, GLint, GLenum, GLenum, const void*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glTexSubImage3D)(GLenum, GLint, GLint, GLint, GLint, GLsizei, GLsizei, GLsizei, GLenum, GLenum, const void*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glActiveTexture)(GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glCompressedTexImage1D)(GLenum, GLint, GLenum, GLsizei, GLint, GLsizei, const void*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glCompressedTexImage2D)(GLenum, GLint, GLenum, GLsizei, GLsizei, GLint, GLsizei, const void*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glCompressedTexImage3D)(GLenum, GLint, GLenum, GLsizei, GLsizei, GLsizei, GLint, GLsizei, const void*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glCompressedTexSubImage1D)(GLenum, GLint, GLint, GLsizei, GLenum, GLsizei, const void*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glCompressedTexSubImage2D)(GLenum, GLint, GLint, GLint, GLsizei, GLsizei, GLenum, GLsizei, const void*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glCompressedTexSubImage3D)(GLenum, GLint, GLint, GLint, GLint, GLsizei, GLsizei, GLsizei, GLenum, GLsizei, const void*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetCompressedTexImage)(GLenum, GLint, void*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glSampleCoverage)(GLfloat, GLboolean) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glBlendColor)(GLfloat, GLfloat, GLfloat, GLfloat) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glBlendEquation)(GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glBlendFuncSeparate)(GLenum, GLenum, GLenum, GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glMultiDrawArrays)(GLenum, const GLint*, const GLsizei*, GLsizei) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glMultiDrawElements)(GLenum, const GLsizei*, GLenum, const void* const*, GLsizei) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glPointParameterf)(GLenum, GLfloat) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glPointParameterfv)(GLenum, const GLfloat*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glPointParameteri)(GLenum, GLint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glPointParameteriv)(GLenum, const GLint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glBeginQuery)(GLenum, GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glBindBuffer)(GLenum, GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glBufferData)(GLenum, GLsizeiptr, const void*, GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glBufferSubData)(GLenum, GLintptr, GLsizeiptr, const void*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glDeleteBuffers)(GLsizei, const GLuint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glDeleteQueries)(GLsizei, const GLuint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glEndQuery)(GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGenBuffers)(GLsizei, GLuint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGenQueries)(GLsizei, GLuint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetBufferParameteriv)(GLenum, GLenum, GLint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetBufferPointerv)(GLenum, GLenum, void* *) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetBufferSubData)(GLenum, GLintptr, GLsizeiptr, void*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetQueryObjectiv)(GLuint, GLenum, GLint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetQueryObjectuiv)(GLuint, GLenum, GLuint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetQueryiv)(GLenum, GLenum, GLint*) = nullptr;
GLboolean (VRK_GLAPIENTRY* _ptrc_glIsBuffer)(GLuint) = nullptr;
GLboolean (VRK_GLAPIENTRY* _ptrc_glIsQuery)(GLuint) = nullptr;
void* (VRK_GLAPIENTRY* _ptrc_glMapBuffer)(GLenum, GLenum) = nullptr;
GLboolean (VRK_GLAPIENTRY* _ptrc_glUnmapBuffer)(GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glAttachShader)(GLuint, GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glBindAttribLocation)(GLuint, GLuint, const GLchar*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glBlendEquationSeparate)(GLenum, GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glCompileShader)(GLuint) = nullptr;
GLuint (VRK_GLAPIENTRY* _ptrc_glCreateProgram)(void) = nullptr;
GLuint (VRK_GLAPIENTRY* _ptrc_glCreateShader)(GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glDeleteProgram)(GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glDeleteShader)(GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glDetachShader)(GLuint, GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glDisableVertexAttribArray)(GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glDrawBuffers)(GLsizei, const GLenum*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glEnableVertexAttribArray)(GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetActiveAttrib)(GLuint, GLuint, GLsizei, GLsizei*, GLint*, GLenum*, GLchar*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetActiveUniform)(GLuint, GLuint, GLsizei, GLsizei*, GLint*, GLenum*, GLchar*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetAttachedShaders)(GLuint, GLsizei, GLsizei*, GLuint*) = nullptr;
GLint (VRK_GLAPIENTRY* _ptrc_glGetAttribLocation)(GLuint, const GLchar*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetProgramInfoLog)(GLuint, GLsizei, GLsizei*, GLchar*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetProgramiv)(GLuint, GLenum, GLint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetShaderInfoLog)(GLuint, GLsizei, GLsizei*, GLchar*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetShaderSource)(GLuint, GLsizei, GLsizei*, GLchar*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetShaderiv)(GLuint, GLenum, GLint*) = nullptr;
GLint (VRK_GLAPIENTRY* _ptrc_glGetUniformLocation)(GLuint, const GLchar*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetUniformfv)(GLuint, GLint, GLfloat*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetUniformiv)(GLuint, GLint, GLint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetVertexAttribPointerv)(GLuint, GLenum, void* *) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetVertexAttribdv)(GLuint, GLenum, GLdouble*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetVertexAttribfv)(GLuint, GLenum, GLfloat*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetVertexAttribiv)(GLuint, GLenum, GLint*) = nullptr;
GLboolean (VRK_GLAPIENTRY* _ptrc_glIsProgram)(GLuint) = nullptr;
GLboolean (VRK_GLAPIENTRY* _ptrc_glIsShader)(GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glLinkProgram)(GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glShaderSource)(GLuint, GLsizei, const GLchar* const*, const GLint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glStencilFuncSeparate)(GLenum, GLenum, GLint, GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glStencilMaskSeparate)(GLenum, GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glStencilOpSeparate)(GLenum, GLenum, GLenum, GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniform1f)(GLint, GLfloat) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniform1fv)(GLint, GLsizei, const GLfloat*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniform1i)(GLint, GLint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniform1iv)(GLint, GLsizei, const GLint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniform2f)(GLint, GLfloat, GLfloat) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniform2fv)(GLint, GLsizei, const GLfloat*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniform2i)(GLint, GLint, GLint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniform2iv)(GLint, GLsizei, const GLint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniform3f)(GLint, GLfloat, GLfloat, GLfloat) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniform3fv)(GLint, GLsizei, const GLfloat*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniform3i)(GLint, GLint, GLint, GLint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniform3iv)(GLint, GLsizei, const GLint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniform4f)(GLint, GLfloat, GLfloat, GLfloat, GLfloat) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniform4fv)(GLint, GLsizei, const GLfloat*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniform4i)(GLint, GLint, GLint, GLint, GLint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniform4iv)(GLint, GLsizei, const GLint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniformMatrix2fv)(GLint, GLsizei, GLboolean, const GLfloat*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniformMatrix3fv)(GLint, GLsizei, GLboolean, const GLfloat*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniformMatrix4fv)(GLint, GLsizei, GLboolean, const GLfloat*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUseProgram)(GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glValidateProgram)(GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib1d)(GLuint, GLdouble) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib1dv)(GLuint, const GLdouble*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib1f)(GLuint, GLfloat) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib1fv)(GLuint, const GLfloat*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib1s)(GLuint, GLshort) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib1sv)(GLuint, const GLshort*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib2d)(GLuint, GLdouble, GLdouble) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib2dv)(GLuint, const GLdouble*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib2f)(GLuint, GLfloat, GLfloat) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib2fv)(GLuint, const GLfloat*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib2s)(GLuint, GLshort, GLshort) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib2sv)(GLuint, const GLshort*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib3d)(GLuint, GLdouble, GLdouble, GLdouble) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib3dv)(GLuint, const GLdouble*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib3f)(GLuint, GLfloat, GLfloat, GLfloat) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib3fv)(GLuint, const GLfloat*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib3s)(GLuint, GLshort, GLshort, GLshort) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib3sv)(GLuint, const GLshort*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4Nbv)(GLuint, const GLbyte*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4Niv)(GLuint, const GLint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4Nsv)(GLuint, const GLshort*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4Nub)(GLuint, GLubyte, GLubyte, GLubyte, GLubyte) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4Nubv)(GLuint, const GLubyte*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4Nuiv)(GLuint, const GLuint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4Nusv)(GLuint, const GLushort*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4bv)(GLuint, const GLbyte*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4d)(GLuint, GLdouble, GLdouble, GLdouble, GLdouble) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4dv)(GLuint, const GLdouble*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4f)(GLuint, GLfloat, GLfloat, GLfloat, GLfloat) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4fv)(GLuint, const GLfloat*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4iv)(GLuint, const GLint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4s)(GLuint, GLshort, GLshort, GLshort, GLshort) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4sv)(GLuint, const GLshort*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4ubv)(GLuint, const GLubyte*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4uiv)(GLuint, const GLuint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttrib4usv)(GLuint, const GLushort*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttribPointer)(GLuint, GLint, GLenum, GLboolean, GLsizei, const void*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniformMatrix2x3fv)(GLint, GLsizei, GLboolean, const GLfloat*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniformMatrix2x4fv)(GLint, GLsizei, GLboolean, const GLfloat*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniformMatrix3x2fv)(GLint, GLsizei, GLboolean, const GLfloat*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniformMatrix3x4fv)(GLint, GLsizei, GLboolean, const GLfloat*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniformMatrix4x2fv)(GLint, GLsizei, GLboolean, const GLfloat*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniformMatrix4x3fv)(GLint, GLsizei, GLboolean, const GLfloat*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glBeginConditionalRender)(GLuint, GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glBeginTransformFeedback)(GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glBindBufferBase)(GLenum, GLuint, GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glBindBufferRange)(GLenum, GLuint, GLuint, GLintptr, GLsizeiptr) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glBindFragDataLocation)(GLuint, GLuint, const GLchar*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glBindFramebuffer)(GLenum, GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glBindRenderbuffer)(GLenum, GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glBindVertexArray)(GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glBlitFramebuffer)(GLint, GLint, GLint, GLint, GLint, GLint, GLint, GLint, GLbitfield, GLenum) = nullptr;
GLenum (VRK_GLAPIENTRY* _ptrc_glCheckFramebufferStatus)(GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glClampColor)(GLenum, GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glClearBufferfi)(GLenum, GLint, GLfloat, GLint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glClearBufferfv)(GLenum, GLint, const GLfloat*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glClearBufferiv)(GLenum, GLint, const GLint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glClearBufferuiv)(GLenum, GLint, const GLuint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glColorMaski)(GLuint, GLboolean, GLboolean, GLboolean, GLboolean) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glDeleteFramebuffers)(GLsizei, const GLuint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glDeleteRenderbuffers)(GLsizei, const GLuint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glDeleteVertexArrays)(GLsizei, const GLuint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glDisablei)(GLenum, GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glEnablei)(GLenum, GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glEndConditionalRender)(void) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glEndTransformFeedback)(void) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glFlushMappedBufferRange)(GLenum, GLintptr, GLsizeiptr) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glFramebufferRenderbuffer)(GLenum, GLenum, GLenum, GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glFramebufferTexture1D)(GLenum, GLenum, GLenum, GLuint, GLint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glFramebufferTexture2D)(GLenum, GLenum, GLenum, GLuint, GLint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glFramebufferTexture3D)(GLenum, GLenum, GLenum, GLuint, GLint, GLint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glFramebufferTextureLayer)(GLenum, GLenum, GLuint, GLint, GLint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGenFramebuffers)(GLsizei, GLuint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGenRenderbuffers)(GLsizei, GLuint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGenVertexArrays)(GLsizei, GLuint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGenerateMipmap)(GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetBooleani_v)(GLenum, GLuint, GLboolean*) = nullptr;
GLint (VRK_GLAPIENTRY* _ptrc_glGetFragDataLocation)(GLuint, const GLchar*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetFramebufferAttachmentParameteriv)(GLenum, GLenum, GLenum, GLint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetIntegeri_v)(GLenum, GLuint, GLint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetRenderbufferParameteriv)(GLenum, GLenum, GLint*) = nullptr;
const GLubyte* (VRK_GLAPIENTRY* _ptrc_glGetStringi)(GLenum, GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetTexParameterIiv)(GLenum, GLenum, GLint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetTexParameterIuiv)(GLenum, GLenum, GLuint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetTransformFeedbackVarying)(GLuint, GLuint, GLsizei, GLsizei*, GLsizei*, GLenum*, GLchar*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetUniformuiv)(GLuint, GLint, GLuint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetVertexAttribIiv)(GLuint, GLenum, GLint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetVertexAttribIuiv)(GLuint, GLenum, GLuint*) = nullptr;
GLboolean (VRK_GLAPIENTRY* _ptrc_glIsEnabledi)(GLenum, GLuint) = nullptr;
GLboolean (VRK_GLAPIENTRY* _ptrc_glIsFramebuffer)(GLuint) = nullptr;
GLboolean (VRK_GLAPIENTRY* _ptrc_glIsRenderbuffer)(GLuint) = nullptr;
GLboolean (VRK_GLAPIENTRY* _ptrc_glIsVertexArray)(GLuint) = nullptr;
void* (VRK_GLAPIENTRY* _ptrc_glMapBufferRange)(GLenum, GLintptr, GLsizeiptr, GLbitfield) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glRenderbufferStorage)(GLenum, GLenum, GLsizei, GLsizei) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glRenderbufferStorageMultisample)(GLenum, GLsizei, GLenum, GLsizei, GLsizei) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glTexParameterIiv)(GLenum, GLenum, const GLint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glTexParameterIuiv)(GLenum, GLenum, const GLuint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glTransformFeedbackVaryings)(GLuint, GLsizei, const GLchar* const*, GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniform1ui)(GLint, GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniform1uiv)(GLint, GLsizei, const GLuint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniform2ui)(GLint, GLuint, GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniform2uiv)(GLint, GLsizei, const GLuint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniform3ui)(GLint, GLuint, GLuint, GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniform3uiv)(GLint, GLsizei, const GLuint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniform4ui)(GLint, GLuint, GLuint, GLuint, GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniform4uiv)(GLint, GLsizei, const GLuint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI1i)(GLuint, GLint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI1iv)(GLuint, const GLint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI1ui)(GLuint, GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI1uiv)(GLuint, const GLuint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI2i)(GLuint, GLint, GLint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI2iv)(GLuint, const GLint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI2ui)(GLuint, GLuint, GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI2uiv)(GLuint, const GLuint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI3i)(GLuint, GLint, GLint, GLint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI3iv)(GLuint, const GLint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI3ui)(GLuint, GLuint, GLuint, GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI3uiv)(GLuint, const GLuint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI4bv)(GLuint, const GLbyte*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI4i)(GLuint, GLint, GLint, GLint, GLint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI4iv)(GLuint, const GLint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI4sv)(GLuint, const GLshort*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI4ubv)(GLuint, const GLubyte*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI4ui)(GLuint, GLuint, GLuint, GLuint, GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI4uiv)(GLuint, const GLuint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttribI4usv)(GLuint, const GLushort*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glVertexAttribIPointer)(GLuint, GLint, GLenum, GLsizei, const void*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glCopyBufferSubData)(GLenum, GLenum, GLintptr, GLintptr, GLsizeiptr) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glDrawArraysInstanced)(GLenum, GLint, GLsizei, GLsizei) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glDrawElementsInstanced)(GLenum, GLsizei, GLenum, const void*, GLsizei) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetActiveUniformBlockName)(GLuint, GLuint, GLsizei, GLsizei*, GLchar*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetActiveUniformBlockiv)(GLuint, GLuint, GLenum, GLint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetActiveUniformName)(GLuint, GLuint, GLsizei, GLsizei*, GLchar*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetActiveUniformsiv)(GLuint, GLsizei, const GLuint*, GLenum, GLint*) = nullptr;
GLuint (VRK_GLAPIENTRY* _ptrc_glGetUniformBlockIndex)(GLuint, const GLchar*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetUniformIndices)(GLuint, GLsizei, const GLchar* const*, GLuint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glPrimitiveRestartIndex)(GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glTexBuffer)(GLenum, GLenum, GLuint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glUniformBlockBinding)(GLuint, GLuint, GLuint) = nullptr;
GLenum (VRK_GLAPIENTRY* _ptrc_glClientWaitSync)(GLsync, GLbitfield, GLuint64) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glDeleteSync)(GLsync) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glDrawElementsBaseVertex)(GLenum, GLsizei, GLenum, const void*, GLint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glDrawElementsInstancedBaseVertex)(GLenum, GLsizei, GLenum, const void*, GLsizei, GLint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glDrawRangeElementsBaseVertex)(GLenum, GLuint, GLuint, GLsizei, GLenum, const void*, GLint) = nullptr;
GLsync (VRK_GLAPIENTRY* _ptrc_glFenceSync)(GLenum, GLbitfield) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glFramebufferTexture)(GLenum, GLenum, GLuint, GLint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetBufferParameteri64v)(GLenum, GLenum, GLint64*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetInteger64i_v)(GLenum, GLuint, GLint64*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetInteger64v)(GLenum, GLint64*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetMultisamplefv)(GLenum, GLuint, GLfloat*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetSynciv)(GLsync, GLenum, GLsizei, GLsizei*, GLint*) = nullptr;
GLboolean (VRK_GLAPIENTRY* _ptrc_glIsSync)(GLsync) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glMultiDrawElementsBaseVertex)(GLenum, const GLsizei*, GLenum, const void* const*, GLsizei, const GLint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glProvokingVertex)(GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glSampleMaski)(GLuint, GLbitfield) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glTexImage2DMultisample)(GLenum, GLsizei, GLenum, GLsizei, GLsizei, GLboolean) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glTexImage3DMultisample)(GLenum, GLsizei, GLenum, GLsizei, GLsizei, GLsizei, GLboolean) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glWaitSync)(GLsync, GLbitfield, GLuint64) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glDrawArraysIndirect)(GLenum, const void*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glDrawElementsIndirect)(GLenum, GLenum, const void*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glMultiDrawArraysIndirect)(GLenum, const void*, GLsizei, GLsizei) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glMultiDrawElementsIndirect)(GLenum, GLenum, const void*, GLsizei, GLsizei) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glPatchParameteri)(GLenum, GLint) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glPatchParameterfv)(GLenum, const GLfloat*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glGetActiveAtomicCounterBufferiv)(GLuint, GLuint, GLenum, GLint*) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glBindImageTexture)(GLuint, GLuint, GLint, GLboolean, GLint, GLenum, GLenum) = nullptr;
void (VRK_GLAPIENTRY* _ptrc_glMemoryBarrier)(GLbitfield) = nullptr;
}

namespace Harrow::Vrk
{
namespace
{

template <typename Function>
void store(void* slot, void* address)
{
    *static_cast<Function*>(slot) = reinterpret_cast<Function>(address);
}

const GLTableEntry kCoreEntries[] = {
    {"glBlendFunc", &_ptrc_glBlendFunc, &store<decltype(_ptrc_glBlendFunc)>},
    {"glClear", &_ptrc_glClear, &store<decltype(_ptrc_glClear)>},
    {"glClearColor", &_ptrc_glClearColor, &store<decltype(_ptrc_glClearColor)>},
    {"glClearDepth", &_ptrc_glClearDepth, &store<decltype(_ptrc_glClearDepth)>},
    {"glClearStencil", &_ptrc_glClearStencil, &store<decltype(_ptrc_glClearStencil)>},
    {"glColorMask", &_ptrc_glColorMask, &store<decltype(_ptrc_glColorMask)>},
    {"glCullFace", &_ptrc_glCullFace, &store<decltype(_ptrc_glCullFace)>},
    {"glDepthFunc", &_ptrc_glDepthFunc, &store<decltype(_ptrc_glDepthFunc)>},
    {"glDepthMask", &_ptrc_glDepthMask, &store<decltype(_ptrc_glDepthMask)>},
    {"glDepthRange", &_ptrc_glDepthRange, &store<decltype(_ptrc_glDepthRange)>},
    {"glDisable", &_ptrc_glDisable, &store<decltype(_ptrc_glDisable)>},
    {"glDrawBuffer", &_ptrc_glDrawBuffer, &store<decltype(_ptrc_glDrawBuffer)>},
    {"glEnable", &_ptrc_glEnable, &store<decltype(_ptrc_glEnable)>},
    {"glFinish", &_ptrc_glFinish, &store<decltype(_ptrc_glFinish)>},
    {"glFlush", &_ptrc_glFlush, &store<decltype(_ptrc_glFlush)>},
    {"glFrontFace", &_ptrc_glFrontFace, &store<decltype(_ptrc_glFrontFace)>},
    {"glGetBooleanv", &_ptrc_glGetBooleanv, &store<decltype(_ptrc_glGetBooleanv)>},
    {"glGetDoublev", &_ptrc_glGetDoublev, &store<decltype(_ptrc_glGetDoublev)>},
    {"glGetError", &_ptrc_glGetError, &store<decltype(_ptrc_glGetError)>},
    {"glGetFloatv", &_ptrc_glGetFloatv, &store<decltype(_ptrc_glGetFloatv)>},
    {"glGetIntegerv", &_ptrc_glGetIntegerv, &store<decltype(_ptrc_glGetIntegerv)>},
    {"glGetString", &_ptrc_glGetString, &store<decltype(_ptrc_glGetString)>},
    {"glGetTexImage", &_ptrc_glGetTexImage, &store<decltype(_ptrc_glGetTexImage)>},
    {"glGetTexLevelParameterfv", &_ptrc_glGetTexLevelParameterfv, &store<decltype(_ptrc_glGetTexLevelParameterfv)>},
    {"glGetTexLevelParameteriv", &_ptrc_glGetTexLevelParameteriv, &store<decltype(_ptrc_glGetTexLevelParameteriv)>},
    {"glGetTexParameterfv", &_ptrc_glGetTexParameterfv, &store<decltype(_ptrc_glGetTexParameterfv)>},
    {"glGetTexParameteriv", &_ptrc_glGetTexParameteriv, &store<decltype(_ptrc_glGetTexParameteriv)>},
    {"glHint", &_ptrc_glHint, &store<decltype(_ptrc_glHint)>},
    {"glIsEnabled", &_ptrc_glIsEnabled, &store<decltype(_ptrc_glIsEnabled)>},
    {"glLineWidth", &_ptrc_glLineWidth, &store<decltype(_ptrc_glLineWidth)>},
    {"glLogicOp", &_ptrc_glLogicOp, &store<decltype(_ptrc_glLogicOp)>},
    {"glPixelStoref", &_ptrc_glPixelStoref, &store<decltype(_ptrc_glPixelStoref)>},
    {"glPixelStorei", &_ptrc_glPixelStorei, &store<decltype(_ptrc_glPixelStorei)>},
    {"glPointSize", &_ptrc_glPointSize, &store<decltype(_ptrc_glPointSize)>},
    {"glPolygonMode", &_ptrc_glPolygonMode, &store<decltype(_ptrc_glPolygonMode)>},
    {"glReadBuffer", &_ptrc_glReadBuffer, &store<decltype(_ptrc_glReadBuffer)>},
    {"glReadPixels", &_ptrc_glReadPixels, &store<decltype(_ptrc_glReadPixels)>},
    {"glScissor", &_ptrc_glScissor, &store<decltype(_ptrc_glScissor)>},
    {"glStencilFunc", &_ptrc_glStencilFunc, &store<decltype(_ptrc_glStencilFunc)>},
    {"glStencilMask", &_ptrc_glStencilMask, &store<decltype(_ptrc_glStencilMask)>},
    {"glStencilOp", &_ptrc_glStencilOp, &store<decltype(_ptrc_glStencilOp)>},
    {"glTexImage1D", &_ptrc_glTexImage1D, &store<decltype(_ptrc_glTexImage1D)>},
    {"glTexImage2D", &_ptrc_glTexImage2D, &store<decltype(_ptrc_glTexImage2D)>},
    {"glTexParameterf", &_ptrc_glTexParameterf, &store<decltype(_ptrc_glTexParameterf)>},
    {"glTexParameterfv", &_ptrc_glTexParameterfv, &store<decltype(_ptrc_glTexParameterfv)>},
    {"glTexParameteri", &_ptrc_glTexParameteri, &store<decltype(_ptrc_glTexParameteri)>},
    {"glTexParameteriv", &_ptrc_glTexParameteriv, &store<decltype(_ptrc_glTexParameteriv)>},
    {"glViewport", &_ptrc_glViewport, &store<decltype(_ptrc_glViewport)>},
    {"glBindTexture", &_ptrc_glBindTexture, &store<decltype(_ptrc_glBindTexture)>},
    {"glCopyTexImage1D", &_ptrc_glCopyTexImage1D, &store<decltype(_ptrc_glCopyTexImage1D)>},
    {"glCopyTexImage2D", &_ptrc_glCopyTexImage2D, &store<decltype(_ptrc_glCopyTexImage2D)>},
    {"glCopyTexSubImage1D", &_ptrc_glCopyTexSubImage1D, &store<decltype(_ptrc_glCopyTexSubImage1D)>},
    {"glCopyTexSubImage2D", &_ptrc_glCopyTexSubImage2D, &store<decltype(_ptrc_glCopyTexSubImage2D)>},
    {"glDeleteTextures", &_ptrc_glDeleteTextures, &store<decltype(_ptrc_glDeleteTextures)>},
    {"glDrawArrays", &_ptrc_glDrawArrays, &store<decltype(_ptrc_glDrawArrays)>},
    {"glDrawElements", &_ptrc_glDrawElements, &store<decltype(_ptrc_glDrawElements)>},
    {"glGenTextures", &_ptrc_glGenTextures, &store<decltype(_ptrc_glGenTextures)>},
    {"glIsTexture", &_ptrc_glIsTexture, &store<decltype(_ptrc_glIsTexture)>},
    {"glPolygonOffset", &_ptrc_glPolygonOffset, &store<decltype(_ptrc_glPolygonOffset)>},
    {"glTexSubImage1D", &_ptrc_glTexSubImage1D, &store<decltype(_ptrc_glTexSubImage1D)>},
    {"glTexSubImage2D", &_ptrc_glTexSubImage2D, &store<decltype(_ptrc_glTexSubImage2D)>},
    {"glCopyTexSubImage3D", &_ptrc_glCopyTexSubImage3D, &store<decltype(_ptrc_glCopyTexSubImage3D)>},
    {"glDrawRangeElements", &_ptrc_glDrawRangeElements, &store<decltype(_ptrc_glDrawRangeElements)>},
    {"glTexImage3D", &_ptrc_glTexImage3D, &store<decltype(_ptrc_glTexImage3D)>},
    {"glTexSubImage3D", &_ptrc_glTexSubImage3D, &store<decltype(_ptrc_glTexSubImage3D)>},
    {"glActiveTexture", &_ptrc_glActiveTexture, &store<decltype(_ptrc_glActiveTexture)>},
    {"glCompressedTexImage1D", &_ptrc_glCompressedTexImage1D, &store<decltype(_ptrc_glCompressedTexImage1D)>},
    {"glCompressedTexImage2D", &_ptrc_glCompressedTexImage2D, &store<decltype(_ptrc_glCompressedTexImage2D)>},
    {"glCompressedTexImage3D", &_ptrc_glCompressedTexImage3D, &store<decltype(_ptrc_glCompressedTexImage3D)>},
    {"glCompressedTexSubImage1D", &_ptrc_glCompressedTexSubImage1D, &store<decltype(_ptrc_glCompressedTexSubImage1D)>},
    {"glCompressedTexSubImage2D", &_ptrc_glCompressedTexSubImage2D, &store<decltype(_ptrc_glCompressedTexSubImage2D)>},
    {"glCompressedTexSubImage3D", &_ptrc_glCompressedTexSubImage3D, &store<decltype(_ptrc_glCompressedTexSubImage3D)>},
    {"glGetCompressedTexImage", &_ptrc_glGetCompressedTexImage, &store<decltype(_ptrc_glGetCompressedTexImage)>},
    {"glSampleCoverage", &_ptrc_glSampleCoverage, &store<decltype(_ptrc_glSampleCoverage)>},
    {"glBlendColor", &_ptrc_glBlendColor, &store<decltype(_ptrc_glBlendColor)>},
    {"glBlendEquation", &_ptrc_glBlendEquation, &store<decltype(_ptrc_glBlendEquation)>},
    {"glBlendFuncSeparate", &_ptrc_glBlendFuncSeparate, &store<decltype(_ptrc_glBlendFuncSeparate)>},
    {"glMultiDrawArrays", &_ptrc_glMultiDrawArrays, &store<decltype(_ptrc_glMultiDrawArrays)>},
    {"glMultiDrawElements", &_ptrc_glMultiDrawElements, &store<decltype(_ptrc_glMultiDrawElements)>},
    {"glPointParameterf", &_ptrc_glPointParameterf, &store<decltype(_ptrc_glPointParameterf)>},
    {"glPointParameterfv", &_ptrc_glPointParameterfv, &store<decltype(_ptrc_glPointParameterfv)>},
    {"glPointParameteri", &_ptrc_glPointParameteri, &store<decltype(_ptrc_glPointParameteri)>},
    {"glPointParameteriv", &_ptrc_glPointParameteriv, &store<decltype(_ptrc_glPointParameteriv)>},
    {"glBeginQuery", &_ptrc_glBeginQuery, &store<decltype(_ptrc_glBeginQuery)>},
    {"glBindBuffer", &_ptrc_glBindBuffer, &store<decltype(_ptrc_glBindBuffer)>},
    {"glBufferData", &_ptrc_glBufferData, &store<decltype(_ptrc_glBufferData)>},
    {"glBufferSubData", &_ptrc_glBufferSubData, &store<decltype(_ptrc_glBufferSubData)>},
    {"glDeleteBuffers", &_ptrc_glDeleteBuffers, &store<decltype(_ptrc_glDeleteBuffers)>},
    {"glDeleteQueries", &_ptrc_glDeleteQueries, &store<decltype(_ptrc_glDeleteQueries)>},
    {"glEndQuery", &_ptrc_glEndQuery, &store<decltype(_ptrc_glEndQuery)>},
    {"glGenBuffers", &_ptrc_glGenBuffers, &store<decltype(_ptrc_glGenBuffers)>},
    {"glGenQueries", &_ptrc_glGenQueries, &store<decltype(_ptrc_glGenQueries)>},
    {"glGetBufferParameteriv", &_ptrc_glGetBufferParameteriv, &store<decltype(_ptrc_glGetBufferParameteriv)>},
    {"glGetBufferPointerv", &_ptrc_glGetBufferPointerv, &store<decltype(_ptrc_glGetBufferPointerv)>},
    {"glGetBufferSubData", &_ptrc_glGetBufferSubData, &store<decltype(_ptrc_glGetBufferSubData)>},
    {"glGetQueryObjectiv", &_ptrc_glGetQueryObjectiv, &store<decltype(_ptrc_glGetQueryObjectiv)>},
    {"glGetQueryObjectuiv", &_ptrc_glGetQueryObjectuiv, &store<decltype(_ptrc_glGetQueryObjectuiv)>},
    {"glGetQueryiv", &_ptrc_glGetQueryiv, &store<decltype(_ptrc_glGetQueryiv)>},
    {"glIsBuffer", &_ptrc_glIsBuffer, &store<decltype(_ptrc_glIsBuffer)>},
    {"glIsQuery", &_ptrc_glIsQuery, &store<decltype(_ptrc_glIsQuery)>},
    {"glMapBuffer", &_ptrc_glMapBuffer, &store<decltype(_ptrc_glMapBuffer)>},
    {"glUnmapBuffer", &_ptrc_glUnmapBuffer, &store<decltype(_ptrc_glUnmapBuffer)>},
    {"glAttachShader", &_ptrc_glAttachShader, &store<decltype(_ptrc_glAttachShader)>},
    {"glBindAttribLocation", &_ptrc_glBindAttribLocation, &store<decltype(_ptrc_glBindAttribLocation)>},
    {"glBlendEquationSeparate", &_ptrc_glBlendEquationSeparate, &store<decltype(_ptrc_glBlendEquationSeparate)>},
    {"glCompileShader", &_ptrc_glCompileShader, &store<decltype(_ptrc_glCompileShader)>},
    {"glCreateProgram", &_ptrc_glCreateProgram, &store<decltype(_ptrc_glCreateProgram)>},
    {"glCreateShader", &_ptrc_glCreateShader, &store<decltype(_ptrc_glCreateShader)>},
    {"glDeleteProgram", &_ptrc_glDeleteProgram, &store<decltype(_ptrc_glDeleteProgram)>},
    {"glDeleteShader", &_ptrc_glDeleteShader, &store<decltype(_ptrc_glDeleteShader)>},
    {"glDetachShader", &_ptrc_glDetachShader, &store<decltype(_ptrc_glDetachShader)>},
    {"glDisableVertexAttribArray", &_ptrc_glDisableVertexAttribArray, &store<decltype(_ptrc_glDisableVertexAttribArray)>},
    {"glDrawBuffers", &_ptrc_glDrawBuffers, &store<decltype(_ptrc_glDrawBuffers)>},
    {"glEnableVertexAttribArray", &_ptrc_glEnableVertexAttribArray, &store<decltype(_ptrc_glEnableVertexAttribArray)>},
    {"glGetActiveAttrib", &_ptrc_glGetActiveAttrib, &store<decltype(_ptrc_glGetActiveAttrib)>},
    {"glGetActiveUniform", &_ptrc_glGetActiveUniform, &store<decltype(_ptrc_glGetActiveUniform)>},
    {"glGetAttachedShaders", &_ptrc_glGetAttachedShaders, &store<decltype(_ptrc_glGetAttachedShaders)>},
    {"glGetAttribLocation", &_ptrc_glGetAttribLocation, &store<decltype(_ptrc_glGetAttribLocation)>},
    {"glGetProgramInfoLog", &_ptrc_glGetProgramInfoLog, &store<decltype(_ptrc_glGetProgramInfoLog)>},
    {"glGetProgramiv", &_ptrc_glGetProgramiv, &store<decltype(_ptrc_glGetProgramiv)>},
    {"glGetShaderInfoLog", &_ptrc_glGetShaderInfoLog, &store<decltype(_ptrc_glGetShaderInfoLog)>},
    {"glGetShaderSource", &_ptrc_glGetShaderSource, &store<decltype(_ptrc_glGetShaderSource)>},
    {"glGetShaderiv", &_ptrc_glGetShaderiv, &store<decltype(_ptrc_glGetShaderiv)>},
    {"glGetUniformLocation", &_ptrc_glGetUniformLocation, &store<decltype(_ptrc_glGetUniformLocation)>},
    {"glGetUniformfv", &_ptrc_glGetUniformfv, &store<decltype(_ptrc_glGetUniformfv)>},
    {"glGetUniformiv", &_ptrc_glGetUniformiv, &store<decltype(_ptrc_glGetUniformiv)>},
    {"glGetVertexAttribPointerv", &_ptrc_glGetVertexAttribPointerv, &store<decltype(_ptrc_glGetVertexAttribPointerv)>},
    {"glGetVertexAttribdv", &_ptrc_glGetVertexAttribdv, &store<decltype(_ptrc_glGetVertexAttribdv)>},
    {"glGetVertexAttribfv", &_ptrc_glGetVertexAttribfv, &store<decltype(_ptrc_glGetVertexAttribfv)>},
    {"glGetVertexAttribiv", &_ptrc_glGetVertexAttribiv, &store<decltype(_ptrc_glGetVertexAttribiv)>},
    {"glIsProgram", &_ptrc_glIsProgram, &store<decltype(_ptrc_glIsProgram)>},
    {"glIsShader", &_ptrc_glIsShader, &store<decltype(_ptrc_glIsShader)>},
    {"glLinkProgram", &_ptrc_glLinkProgram, &store<decltype(_ptrc_glLinkProgram)>},
    {"glShaderSource", &_ptrc_glShaderSource, &store<decltype(_ptrc_glShaderSource)>},
    {"glStencilFuncSeparate", &_ptrc_glStencilFuncSeparate, &store<decltype(_ptrc_glStencilFuncSeparate)>},
    {"glStencilMaskSeparate", &_ptrc_glStencilMaskSeparate, &store<decltype(_ptrc_glStencilMaskSeparate)>},
    {"glStencilOpSeparate", &_ptrc_glStencilOpSeparate, &store<decltype(_ptrc_glStencilOpSeparate)>},
    {"glUniform1f", &_ptrc_glUniform1f, &store<decltype(_ptrc_glUniform1f)>},
    {"glUniform1fv", &_ptrc_glUniform1fv, &store<decltype(_ptrc_glUniform1fv)>},
    {"glUniform1i", &_ptrc_glUniform1i, &store<decltype(_ptrc_glUniform1i)>},
    {"glUniform1iv", &_ptrc_glUniform1iv, &store<decltype(_ptrc_glUniform1iv)>},
    {"glUniform2f", &_ptrc_glUniform2f, &store<decltype(_ptrc_glUniform2f)>},
    {"glUniform2fv", &_ptrc_glUniform2fv, &store<decltype(_ptrc_glUniform2fv)>},
    {"glUniform2i", &_ptrc_glUniform2i, &store<decltype(_ptrc_glUniform2i)>},
    {"glUniform2iv", &_ptrc_glUniform2iv, &store<decltype(_ptrc_glUniform2iv)>},
    {"glUniform3f", &_ptrc_glUniform3f, &store<decltype(_ptrc_glUniform3f)>},
    {"glUniform3fv", &_ptrc_glUniform3fv, &store<decltype(_ptrc_glUniform3fv)>},
    {"glUniform3i", &_ptrc_glUniform3i, &store<decltype(_ptrc_glUniform3i)>},
    {"glUniform3iv", &_ptrc_glUniform3iv, &store<decltype(_ptrc_glUniform3iv)>},
    {"glUniform4f", &_ptrc_glUniform4f, &store<decltype(_ptrc_glUniform4f)>},
    {"glUniform4fv", &_ptrc_glUniform4fv, &store<decltype(_ptrc_glUniform4fv)>},
    {"glUniform4i", &_ptrc_glUniform4i, &store<decltype(_ptrc_glUniform4i)>},
    {"glUniform4iv", &_ptrc_glUniform4iv, &store<decltype(_ptrc_glUniform4iv)>},
    {"glUniformMatrix2fv", &_ptrc_glUniformMatrix2fv, &store<decltype(_ptrc_glUniformMatrix2fv)>},
    {"glUniformMatrix3fv", &_ptrc_glUniformMatrix3fv, &store<decltype(_ptrc_glUniformMatrix3fv)>},
    {"glUniformMatrix4fv", &_ptrc_glUniformMatrix4fv, &store<decltype(_ptrc_glUniformMatrix4fv)>},
    {"glUseProgram", &_ptrc_glUseProgram, &store<decltype(_ptrc_glUseProgram)>},
    {"glValidateProgram", &_ptrc_glValidateProgram, &store<decltype(_ptrc_glValidateProgram)>},
    {"glVertexAttrib1d", &_ptrc_glVertexAttrib1d, &store<decltype(_ptrc_glVertexAttrib1d)>},
    {"glVertexAttrib1dv", &_ptrc_glVertexAttrib1dv, &store<decltype(_ptrc_glVertexAttrib1dv)>},
    {"glVertexAttrib1f", &_ptrc_glVertexAttrib1f, &store<decltype(_ptrc_glVertexAttrib1f)>},
    {"glVertexAttrib1fv", &_ptrc_glVertexAttrib1fv, &store<decltype(_ptrc_glVertexAttrib1fv)>},
    {"glVertexAttrib1s", &_ptrc_glVertexAttrib1s, &store<decltype(_ptrc_glVertexAttrib1s)>},
    {"glVertexAttrib1sv", &_ptrc_glVertexAttrib1sv, &store<decltype(_ptrc_glVertexAttrib1sv)>},
    {"glVertexAttrib2d", &_ptrc_glVertexAttrib2d, &store<decltype(_ptrc_glVertexAttrib2d)>},
    {"glVertexAttrib2dv", &_ptrc_glVertexAttrib2dv, &store<decltype(_ptrc_glVertexAttrib2dv)>},
    {"glVertexAttrib2f", &_ptrc_glVertexAttrib2f, &store<decltype(_ptrc_glVertexAttrib2f)>},
    {"glVertexAttrib2fv", &_ptrc_glVertexAttrib2fv, &store<decltype(_ptrc_glVertexAttrib2fv)>},
    {"glVertexAttrib2s", &_ptrc_glVertexAttrib2s, &store<decltype(_ptrc_glVertexAttrib2s)>},
    {"glVertexAttrib2sv", &_ptrc_glVertexAttrib2sv, &store<decltype(_ptrc_glVertexAttrib2sv)>},
    {"glVertexAttrib3d", &_ptrc_glVertexAttrib3d, &store<decltype(_ptrc_glVertexAttrib3d)>},
    {"glVertexAttrib3dv", &_ptrc_glVertexAttrib3dv, &store<decltype(_ptrc_glVertexAttrib3dv)>},
    {"glVertexAttrib3f", &_ptrc_glVertexAttrib3f, &store<decltype(_ptrc_glVertexAttrib3f)>},
    {"glVertexAttrib3fv", &_ptrc_glVertexAttrib3fv, &store<decltype(_ptrc_glVertexAttrib3fv)>},
    {"glVertexAttrib3s", &_ptrc_glVertexAttrib3s, &store<decltype(_ptrc_glVertexAttrib3s)>},
    {"glVertexAttrib3sv", &_ptrc_glVertexAttrib3sv, &store<decltype(_ptrc_glVertexAttrib3sv)>},
    {"glVertexAttrib4Nbv", &_ptrc_glVertexAttrib4Nbv, &store<decltype(_ptrc_glVertexAttrib4Nbv)>},
    {"glVertexAttrib4Niv", &_ptrc_glVertexAttrib4Niv, &store<decltype(_ptrc_glVertexAttrib4Niv)>},
    {"glVertexAttrib4Nsv", &_ptrc_glVertexAttrib4Nsv, &store<decltype(_ptrc_glVertexAttrib4Nsv)>},
    {"glVertexAttrib4Nub", &_ptrc_glVertexAttrib4Nub, &store<decltype(_ptrc_glVertexAttrib4Nub)>},
    {"glVertexAttrib4Nubv", &_ptrc_glVertexAttrib4Nubv, &store<decltype(_ptrc_glVertexAttrib4Nubv)>},
    {"glVertexAttrib4Nuiv", &_ptrc_glVertexAttrib4Nuiv, &store<decltype(_ptrc_glVertexAttrib4Nuiv)>},
    {"glVertexAttrib4Nusv", &_ptrc_glVertexAttrib4Nusv, &store<decltype(_ptrc_glVertexAttrib4Nusv)>},
    {"glVertexAttrib4bv", &_ptrc_glVertexAttrib4bv, &store<decltype(_ptrc_glVertexAttrib4bv)>},
    {"glVertexAttrib4d", &_ptrc_glVertexAttrib4d, &store<decltype(_ptrc_glVertexAttrib4d)>},
    {"glVertexAttrib4dv", &_ptrc_glVertexAttrib4dv, &store<decltype(_ptrc_glVertexAttrib4dv)>},
    {"glVertexAttrib4f", &_ptrc_glVertexAttrib4f, &store<decltype(_ptrc_glVertexAttrib4f)>},
    {"glVertexAttrib4fv", &_ptrc_glVertexAttrib4fv, &store<decltype(_ptrc_glVertexAttrib4fv)>},
    {"glVertexAttrib4iv", &_ptrc_glVertexAttrib4iv, &store<decltype(_ptrc_glVertexAttrib4iv)>},
    {"glVertexAttrib4s", &_ptrc_glVertexAttrib4s, &store<decltype(_ptrc_glVertexAttrib4s)>},
    {"glVertexAttrib4sv", &_ptrc_glVertexAttrib4sv, &store<decltype(_ptrc_glVertexAttrib4sv)>},
    {"glVertexAttrib4ubv", &_ptrc_glVertexAttrib4ubv, &store<decltype(_ptrc_glVertexAttrib4ubv)>},
    {"glVertexAttrib4uiv", &_ptrc_glVertexAttrib4uiv, &store<decltype(_ptrc_glVertexAttrib4uiv)>},
    {"glVertexAttrib4usv", &_ptrc_glVertexAttrib4usv, &store<decltype(_ptrc_glVertexAttrib4usv)>},
    {"glVertexAttribPointer", &_ptrc_glVertexAttribPointer, &store<decltype(_ptrc_glVertexAttribPointer)>},
    {"glUniformMatrix2x3fv", &_ptrc_glUniformMatrix2x3fv, &store<decltype(_ptrc_glUniformMatrix2x3fv)>},
    {"glUniformMatrix2x4fv", &_ptrc_glUniformMatrix2x4fv, &store<decltype(_ptrc_glUniformMatrix2x4fv)>},
    {"glUniformMatrix3x2fv", &_ptrc_glUniformMatrix3x2fv, &store<decltype(_ptrc_glUniformMatrix3x2fv)>},
    {"glUniformMatrix3x4fv", &_ptrc_glUniformMatrix3x4fv, &store<decltype(_ptrc_glUniformMatrix3x4fv)>},
    {"glUniformMatrix4x2fv", &_ptrc_glUniformMatrix4x2fv, &store<decltype(_ptrc_glUniformMatrix4x2fv)>},
    {"glUniformMatrix4x3fv", &_ptrc_glUniformMatrix4x3fv, &store<decltype(_ptrc_glUniformMatrix4x3fv)>},
    {"glBeginConditionalRender", &_ptrc_glBeginConditionalRender, &store<decltype(_ptrc_glBeginConditionalRender)>},
    {"glBeginTransformFeedback", &_ptrc_glBeginTransformFeedback, &store<decltype(_ptrc_glBeginTransformFeedback)>},
    {"glBindBufferBase", &_ptrc_glBindBufferBase, &store<decltype(_ptrc_glBindBufferBase)>},
    {"glBindBufferRange", &_ptrc_glBindBufferRange, &store<decltype(_ptrc_glBindBufferRange)>},
    {"glBindFragDataLocation", &_ptrc_glBindFragDataLocation, &store<decltype(_ptrc_glBindFragDataLocation)>},
    {"glBindFramebuffer", &_ptrc_glBindFramebuffer, &store<decltype(_ptrc_glBindFramebuffer)>},
    {"glBindRenderbuffer", &_ptrc_glBindRenderbuffer, &store<decltype(_ptrc_glBindRenderbuffer)>},
    {"glBindVertexArray", &_ptrc_glBindVertexArray, &store<decltype(_ptrc_glBindVertexArray)>},
    {"glBlitFramebuffer", &_ptrc_glBlitFramebuffer, &store<decltype(_ptrc_glBlitFramebuffer)>},
    {"glCheckFramebufferStatus", &_ptrc_glCheckFramebufferStatus, &store<decltype(_ptrc_glCheckFramebufferStatus)>},
    {"glClampColor", &_ptrc_glClampColor, &store<decltype(_ptrc_glClampColor)>},
    {"glClearBufferfi", &_ptrc_glClearBufferfi, &store<decltype(_ptrc_glClearBufferfi)>},
    {"glClearBufferfv", &_ptrc_glClearBufferfv, &store<decltype(_ptrc_glClearBufferfv)>},
    {"glClearBufferiv", &_ptrc_glClearBufferiv, &store<decltype(_ptrc_glClearBufferiv)>},
    {"glClearBufferuiv", &_ptrc_glClearBufferuiv, &store<decltype(_ptrc_glClearBufferuiv)>},
    {"glColorMaski", &_ptrc_glColorMaski, &store<decltype(_ptrc_glColorMaski)>},
    {"glDeleteFramebuffers", &_ptrc_glDeleteFramebuffers, &store<decltype(_ptrc_glDeleteFramebuffers)>},
    {"glDeleteRenderbuffers", &_ptrc_glDeleteRenderbuffers, &store<decltype(_ptrc_glDeleteRenderbuffers)>},
    {"glDeleteVertexArrays", &_ptrc_glDeleteVertexArrays, &store<decltype(_ptrc_glDeleteVertexArrays)>},
    {"glDisablei", &_ptrc_glDisablei, &store<decltype(_ptrc_glDisablei)>},
    {"glEnablei", &_ptrc_glEnablei, &store<decltype(_ptrc_glEnablei)>},
    {"glEndConditionalRender", &_ptrc_glEndConditionalRender, &store<decltype(_ptrc_glEndConditionalRender)>},
    {"glEndTransformFeedback", &_ptrc_glEndTransformFeedback, &store<decltype(_ptrc_glEndTransformFeedback)>},
    {"glFlushMappedBufferRange", &_ptrc_glFlushMappedBufferRange, &store<decltype(_ptrc_glFlushMappedBufferRange)>},
    {"glFramebufferRenderbuffer", &_ptrc_glFramebufferRenderbuffer, &store<decltype(_ptrc_glFramebufferRenderbuffer)>},
    {"glFramebufferTexture1D", &_ptrc_glFramebufferTexture1D, &store<decltype(_ptrc_glFramebufferTexture1D)>},
    {"glFramebufferTexture2D", &_ptrc_glFramebufferTexture2D, &store<decltype(_ptrc_glFramebufferTexture2D)>},
    {"glFramebufferTexture3D", &_ptrc_glFramebufferTexture3D, &store<decltype(_ptrc_glFramebufferTexture3D)>},
    {"glFramebufferTextureLayer", &_ptrc_glFramebufferTextureLayer, &store<decltype(_ptrc_glFramebufferTextureLayer)>},
    {"glGenFramebuffers", &_ptrc_glGenFramebuffers, &store<decltype(_ptrc_glGenFramebuffers)>},
    {"glGenRenderbuffers", &_ptrc_glGenRenderbuffers, &store<decltype(_ptrc_glGenRenderbuffers)>},
    {"glGenVertexArrays", &_ptrc_glGenVertexArrays, &store<decltype(_ptrc_glGenVertexArrays)>},
    {"glGenerateMipmap", &_ptrc_glGenerateMipmap, &store<decltype(_ptrc_glGenerateMipmap)>},
    {"glGetBooleani_v", &_ptrc_glGetBooleani_v, &store<decltype(_ptrc_glGetBooleani_v)>},
    {"glGetFragDataLocation", &_ptrc_glGetFragDataLocation, &store<decltype(_ptrc_glGetFragDataLocation)>},
    {"glGetFramebufferAttachmentParameteriv", &_ptrc_glGetFramebufferAttachmentParameteriv, &store<decltype(_ptrc_glGetFramebufferAttachmentParameteriv)>},
    {"glGetIntegeri_v", &_ptrc_glGetIntegeri_v, &store<decltype(_ptrc_glGetIntegeri_v)>},
    {"glGetRenderbufferParameteriv", &_ptrc_glGetRenderbufferParameteriv, &store<decltype(_ptrc_glGetRenderbufferParameteriv)>},
    {"glGetStringi", &_ptrc_glGetStringi, &store<decltype(_ptrc_glGetStringi)>},
    {"glGetTexParameterIiv", &_ptrc_glGetTexParameterIiv, &store<decltype(_ptrc_glGetTexParameterIiv)>},
    {"glGetTexParameterIuiv", &_ptrc_glGetTexParameterIuiv, &store<decltype(_ptrc_glGetTexParameterIuiv)>},
    {"glGetTransformFeedbackVarying", &_ptrc_glGetTransformFeedbackVarying, &store<decltype(_ptrc_glGetTransformFeedbackVarying)>},
    {"glGetUniformuiv", &_ptrc_glGetUniformuiv, &store<decltype(_ptrc_glGetUniformuiv)>},
    {"glGetVertexAttribIiv", &_ptrc_glGetVertexAttribIiv, &store<decltype(_ptrc_glGetVertexAttribIiv)>},
    {"glGetVertexAttribIuiv", &_ptrc_glGetVertexAttribIuiv, &store<decltype(_ptrc_glGetVertexAttribIuiv)>},
    {"glIsEnabledi", &_ptrc_glIsEnabledi, &store<decltype(_ptrc_glIsEnabledi)>},
    {"glIsFramebuffer", &_ptrc_glIsFramebuffer, &store<decltype(_ptrc_glIsFramebuffer)>},
    {"glIsRenderbuffer", &_ptrc_glIsRenderbuffer, &store<decltype(_ptrc_glIsRenderbuffer)>},
    {"glIsVertexArray", &_ptrc_glIsVertexArray, &store<decltype(_ptrc_glIsVertexArray)>},
    {"glMapBufferRange", &_ptrc_glMapBufferRange, &store<decltype(_ptrc_glMapBufferRange)>},
    {"glRenderbufferStorage", &_ptrc_glRenderbufferStorage, &store<decltype(_ptrc_glRenderbufferStorage)>},
    {"glRenderbufferStorageMultisample", &_ptrc_glRenderbufferStorageMultisample, &store<decltype(_ptrc_glRenderbufferStorageMultisample)>},
    {"glTexParameterIiv", &_ptrc_glTexParameterIiv, &store<decltype(_ptrc_glTexParameterIiv)>},
    {"glTexParameterIuiv", &_ptrc_glTexParameterIuiv, &store<decltype(_ptrc_glTexParameterIuiv)>},
    {"glTransformFeedbackVaryings", &_ptrc_glTransformFeedbackVaryings, &store<decltype(_ptrc_glTransformFeedbackVaryings)>},
    {"glUniform1ui", &_ptrc_glUniform1ui, &store<decltype(_ptrc_glUniform1ui)>},
    {"glUniform1uiv", &_ptrc_glUniform1uiv, &store<decltype(_ptrc_glUniform1uiv)>},
    {"glUniform2ui", &_ptrc_glUniform2ui, &store<decltype(_ptrc_glUniform2ui)>},
    {"glUniform2uiv", &_ptrc_glUniform2uiv, &store<decltype(_ptrc_glUniform2uiv)>},
    {"glUniform3ui", &_ptrc_glUniform3ui, &store<decltype(_ptrc_glUniform3ui)>},
    {"glUniform3uiv", &_ptrc_glUniform3uiv, &store<decltype(_ptrc_glUniform3uiv)>},
    {"glUniform4ui", &_ptrc_glUniform4ui, &store<decltype(_ptrc_glUniform4ui)>},
    {"glUniform4uiv", &_ptrc_glUniform4uiv, &store<decltype(_ptrc_glUniform4uiv)>},
    {"glVertexAttribI1i", &_ptrc_glVertexAttribI1i, &store<decltype(_ptrc_glVertexAttribI1i)>},
    {"glVertexAttribI1iv", &_ptrc_glVertexAttribI1iv, &store<decltype(_ptrc_glVertexAttribI1iv)>},
    {"glVertexAttribI1ui", &_ptrc_glVertexAttribI1ui, &store<decltype(_ptrc_glVertexAttribI1ui)>},
    {"glVertexAttribI1uiv", &_ptrc_glVertexAttribI1uiv, &store<decltype(_ptrc_glVertexAttribI1uiv)>},
    {"glVertexAttribI2i", &_ptrc_glVertexAttribI2i, &store<decltype(_ptrc_glVertexAttribI2i)>},
    {"glVertexAttribI2iv", &_ptrc_glVertexAttribI2iv, &store<decltype(_ptrc_glVertexAttribI2iv)>},
    {"glVertexAttribI2ui", &_ptrc_glVertexAttribI2ui, &store<decltype(_ptrc_glVertexAttribI2ui)>},
    {"glVertexAttribI2uiv", &_ptrc_glVertexAttribI2uiv, &store<decltype(_ptrc_glVertexAttribI2uiv)>},
    {"glVertexAttribI3i", &_ptrc_glVertexAttribI3i, &store<decltype(_ptrc_glVertexAttribI3i)>},
    {"glVertexAttribI3iv", &_ptrc_glVertexAttribI3iv, &store<decltype(_ptrc_glVertexAttribI3iv)>},
    {"glVertexAttribI3ui", &_ptrc_glVertexAttribI3ui, &store<decltype(_ptrc_glVertexAttribI3ui)>},
    {"glVertexAttribI3uiv", &_ptrc_glVertexAttribI3uiv, &store<decltype(_ptrc_glVertexAttribI3uiv)>},
    {"glVertexAttribI4bv", &_ptrc_glVertexAttribI4bv, &store<decltype(_ptrc_glVertexAttribI4bv)>},
    {"glVertexAttribI4i", &_ptrc_glVertexAttribI4i, &store<decltype(_ptrc_glVertexAttribI4i)>},
    {"glVertexAttribI4iv", &_ptrc_glVertexAttribI4iv, &store<decltype(_ptrc_glVertexAttribI4iv)>},
    {"glVertexAttribI4sv", &_ptrc_glVertexAttribI4sv, &store<decltype(_ptrc_glVertexAttribI4sv)>},
    {"glVertexAttribI4ubv", &_ptrc_glVertexAttribI4ubv, &store<decltype(_ptrc_glVertexAttribI4ubv)>},
    {"glVertexAttribI4ui", &_ptrc_glVertexAttribI4ui, &store<decltype(_ptrc_glVertexAttribI4ui)>},
    {"glVertexAttribI4uiv", &_ptrc_glVertexAttribI4uiv, &store<decltype(_ptrc_glVertexAttribI4uiv)>},
    {"glVertexAttribI4usv", &_ptrc_glVertexAttribI4usv, &store<decltype(_ptrc_glVertexAttribI4usv)>},
    {"glVertexAttribIPointer", &_ptrc_glVertexAttribIPointer, &store<decltype(_ptrc_glVertexAttribIPointer)>},
    {"glCopyBufferSubData", &_ptrc_glCopyBufferSubData, &store<decltype(_ptrc_glCopyBufferSubData)>},
    {"glDrawArraysInstanced", &_ptrc_glDrawArraysInstanced, &store<decltype(_ptrc_glDrawArraysInstanced)>},
    {"glDrawElementsInstanced", &_ptrc_glDrawElementsInstanced, &store<decltype(_ptrc_glDrawElementsInstanced)>},
    {"glGetActiveUniformBlockName", &_ptrc_glGetActiveUniformBlockName, &store<decltype(_ptrc_glGetActiveUniformBlockName)>},
    {"glGetActiveUniformBlockiv", &_ptrc_glGetActiveUniformBlockiv, &store<decltype(_ptrc_glGetActiveUniformBlockiv)>},
    {"glGetActiveUniformName", &_ptrc_glGetActiveUniformName, &store<decltype(_ptrc_glGetActiveUniformName)>},
    {"glGetActiveUniformsiv", &_ptrc_glGetActiveUniformsiv, &store<decltype(_ptrc_glGetActiveUniformsiv)>},
    {"glGetUniformBlockIndex", &_ptrc_glGetUniformBlockIndex, &store<decltype(_ptrc_glGetUniformBlockIndex)>},
    {"glGetUniformIndices", &_ptrc_glGetUniformIndices, &store<decltype(_ptrc_glGetUniformIndices)>},
    {"glPrimitiveRestartIndex", &_ptrc_glPrimitiveRestartIndex, &store<decltype(_ptrc_glPrimitiveRestartIndex)>},
    {"glTexBuffer", &_ptrc_glTexBuffer, &store<decltype(_ptrc_glTexBuffer)>},
    {"glUniformBlockBinding", &_ptrc_glUniformBlockBinding, &store<decltype(_ptrc_glUniformBlockBinding)>},
    {"glClientWaitSync", &_ptrc_glClientWaitSync, &store<decltype(_ptrc_glClientWaitSync)>},
    {"glDeleteSync", &_ptrc_glDeleteSync, &store<decltype(_ptrc_glDeleteSync)>},
    {"glDrawElementsBaseVertex", &_ptrc_glDrawElementsBaseVertex, &store<decltype(_ptrc_glDrawElementsBaseVertex)>},
    {"glDrawElementsInstancedBaseVertex", &_ptrc_glDrawElementsInstancedBaseVertex, &store<decltype(_ptrc_glDrawElementsInstancedBaseVertex)>},
    {"glDrawRangeElementsBaseVertex", &_ptrc_glDrawRangeElementsBaseVertex, &store<decltype(_ptrc_glDrawRangeElementsBaseVertex)>},
    {"glFenceSync", &_ptrc_glFenceSync, &store<decltype(_ptrc_glFenceSync)>},
    {"glFramebufferTexture", &_ptrc_glFramebufferTexture, &store<decltype(_ptrc_glFramebufferTexture)>},
    {"glGetBufferParameteri64v", &_ptrc_glGetBufferParameteri64v, &store<decltype(_ptrc_glGetBufferParameteri64v)>},
    {"glGetInteger64i_v", &_ptrc_glGetInteger64i_v, &store<decltype(_ptrc_glGetInteger64i_v)>},
    {"glGetInteger64v", &_ptrc_glGetInteger64v, &store<decltype(_ptrc_glGetInteger64v)>},
    {"glGetMultisamplefv", &_ptrc_glGetMultisamplefv, &store<decltype(_ptrc_glGetMultisamplefv)>},
    {"glGetSynciv", &_ptrc_glGetSynciv, &store<decltype(_ptrc_glGetSynciv)>},
    {"glIsSync", &_ptrc_glIsSync, &store<decltype(_ptrc_glIsSync)>},
    {"glMultiDrawElementsBaseVertex", &_ptrc_glMultiDrawElementsBaseVertex, &store<decltype(_ptrc_glMultiDrawElementsBaseVertex)>},
    {"glProvokingVertex", &_ptrc_glProvokingVertex, &store<decltype(_ptrc_glProvokingVertex)>},
    {"glSampleMaski", &_ptrc_glSampleMaski, &store<decltype(_ptrc_glSampleMaski)>},
    {"glTexImage2DMultisample", &_ptrc_glTexImage2DMultisample, &store<decltype(_ptrc_glTexImage2DMultisample)>},
    {"glTexImage3DMultisample", &_ptrc_glTexImage3DMultisample, &store<decltype(_ptrc_glTexImage3DMultisample)>},
    {"glWaitSync", &_ptrc_glWaitSync, &store<decltype(_ptrc_glWaitSync)>},
};

const GLTableEntry kExtensionEntries[] = {
    {"glDrawArraysIndirect", &_ptrc_glDrawArraysIndirect, &store<decltype(_ptrc_glDrawArraysIndirect)>},
    {"glDrawElementsIndirect", &_ptrc_glDrawElementsIndirect, &store<decltype(_ptrc_glDrawElementsIndirect)>},
    {"glMultiDrawArraysIndirect", &_ptrc_glMultiDrawArraysIndirect, &store<decltype(_ptrc_glMultiDrawArraysIndirect)>},
    {"glMultiDrawElementsIndirect", &_ptrc_glMultiDrawElementsIndirect, &store<decltype(_ptrc_glMultiDrawElementsIndirect)>},
    {"glPatchParameteri", &_ptrc_glPatchParameteri, &store<decltype(_ptrc_glPatchParameteri)>},
    {"glPatchParameterfv", &_ptrc_glPatchParameterfv, &store<decltype(_ptrc_glPatchParameterfv)>},
    {"glGetActiveAtomicCounterBufferiv", &_ptrc_glGetActiveAtomicCounterBufferiv, &store<decltype(_ptrc_glGetActiveAtomicCounterBufferiv)>},
    {"glBindImageTexture", &_ptrc_glBindImageTexture, &store<decltype(_ptrc_glBindImageTexture)>},
    {"glMemoryBarrier", &_ptrc_glMemoryBarrier, &store<decltype(_ptrc_glMemoryBarrier)>},
};

const GLTableExtension kExtensions[] = {
    {"GL_ARB_draw_indirect", 0, 2},
    {"GL_ARB_multi_draw_indirect", 2, 2},
    {"GL_ARB_tessellation_shader", 4, 2},
    {"GL_ARB_texture_cube_map_array", 6, 0},
    {"GL_ARB_shader_atomic_counters", 6, 1},
    {"GL_ARB_shader_image_load_store", 7, 2},
};

} // namespace

std::span<const GLTableEntry> glCoreEntries()
{
    return kCoreEntries;
}

std::span<const GLTableEntry> glExtensionEntries()
{
    return kExtensionEntries;
}

std::span<const GLTableExtension> glTableExtensions()
{
    return kExtensions;
}

} // namespace Harrow::Vrk
