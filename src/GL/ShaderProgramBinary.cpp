// SPDX-License-Identifier: MIT
// Stored program binaries: the key made from the sources, and the two transfers.
#include "ShaderProgram.h"

#include "GLFunctions.h"
#include "Shader.h"
#include "ShaderProgramEntryPoints.h"
#include "ShaderText.h"

#include <QByteArray>
#include <QCryptographicHash>

#include <utility>

namespace Harrow::Vrk
{
namespace
{

QString hexadecimalMd5(const QString& text)
{
    return QString::fromLatin1(QCryptographicHash::hash(text.toUtf8(), QCryptographicHash::Md5).toHex());
}

} // namespace

QString ShaderProgram::constructShaderHash()
{
    preprocess();
    QStringList hashes;
    hashes.reserve(_shaders.size());
    for (const Shader* const shader : std::as_const(_shaders))
        hashes.append(hexadecimalMd5(shader->sourceCode()));
    // The order of the stages must not count.
    hashes.sort();
    return hexadecimalMd5(hashes.join(QString()));
}

bool ShaderProgram::getProgramBinary(QByteArray& data, unsigned int& format) const
{
    if (!isProgramBinariesSupported())
        return false;
    const ShaderProgramEntryPoints& gl = shaderProgramEntryPoints();
    gl.programParameteri(_programID, GL_PROGRAM_BINARY_RETRIEVABLE_HINT, 1);
    GLint length = 0;
    glGetProgramiv(_programID, GL_PROGRAM_BINARY_LENGTH, &length);
    if (length < 1 || length > kLongestDriverAnswer)
        return false;
    QByteArray binary(length, '\0');
    GLsizei written = 0;
    GLenum binaryFormat = 0;
    gl.getProgramBinary(_programID, length, &written, &binaryFormat, binary.data());
    if (written < 1)
        return false; // The driver failed: what is in the array is none of its.
    binary.truncate(written);
    data = binary;
    format = binaryFormat;
    return true;
}

bool ShaderProgram::loadProgramFromRawData(const QByteArray& data, unsigned int format)
{
    if (!isProgramBinariesSupported())
        return false;
    _programID = glCreateProgram();
    shaderProgramEntryPoints().programBinary(_programID, format, data.constData(), toGLsizei(data.size()));
    GLint linked = GL_FALSE;
    glGetProgramiv(_programID, GL_LINK_STATUS, &linked);
    if (linked != GL_FALSE)
    {
        cacheReflection();
        return true;
    }
    // Silent: a rejected binary is what is expected after a driver's update.
    deleteProgram();
    return false;
}

bool ShaderProgram::isProgramBinariesSupported() const
{
    const ShaderProgramEntryPoints& gl = shaderProgramEntryPoints();
    return gl.getProgramBinary && gl.programBinary && gl.programParameteri;
}

} // namespace Harrow::Vrk
