// SPDX-License-Identifier: MIT
#include "ShaderText.h"

#include <QByteArray>

namespace Harrow::Vrk
{
namespace
{

using GetParameter = void (*)(GLuint, GLenum, GLint*);
using GetText = void (*)(GLuint, GLsizei, GLsizei*, GLchar*);

QString readText(GLuint name, GetParameter getParameter, GLenum lengthParameter, GetText getText)
{
    GLint length = 0;
    getParameter(name, lengthParameter, &length);
    length = qBound(0, length, kLongestDriverAnswer);
    QByteArray text(qsizetype(length) + 1, '\0');
    GLsizei written = 0;
    getText(name, length, &written, text.data());
    // Sources go to the driver as Latin-1, and its texts quote them.
    return QString::fromLatin1(text.constData(), qBound(0, written, length));
}

} // namespace

QString readShaderLog(GLuint shader)
{
    return readText(shader, &glGetShaderiv, GL_INFO_LOG_LENGTH, &glGetShaderInfoLog);
}

QString readShaderSource(GLuint shader)
{
    return readText(shader, &glGetShaderiv, GL_SHADER_SOURCE_LENGTH, &glGetShaderSource);
}

QString readProgramLog(GLuint program)
{
    return readText(program, &glGetProgramiv, GL_INFO_LOG_LENGTH, &glGetProgramInfoLog);
}

} // namespace Harrow::Vrk
