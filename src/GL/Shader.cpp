// SPDX-License-Identifier: MIT
#include "Shader.h"

#include "GLFunctions.h"
#include "GLPlatform.h"
#include "GLSLMacroProcessor.h"
#include "ShaderReport.h"
#include "ShaderText.h"

#include <QByteArray>
#include <QFile>
#include <QTextStream>

namespace Harrow::Vrk
{

Shader::Shader(unsigned int type, const QString& source, GLSLMacroProcessor* macroProcessor, QObject* /*parent*/)
    : QObject(nullptr), _shaderType(type), _source(GLSLMacroProcessor::process(source, macroProcessor))
{
}

Shader::Shader(unsigned int type, const QString& source, QObject* parent) : Shader(type, source, nullptr, parent) {}

Shader::~Shader()
{
    if (_shaderID != 0 && !GLPlatform::isProcessEnding())
        glDeleteShader(_shaderID);
}

bool Shader::compile()
{
    if (_shaderID != 0)
        return true;

    _shaderID = glCreateShader(_shaderType);
    const QByteArray source = _source.toLatin1();
    const GLchar* const text = source.constData();
    const GLint length = toGLsizei(source.size());
    glShaderSource(_shaderID, 1, &text, &length);
    glCompileShader(_shaderID);
    GLint compiled = GL_FALSE;
    glGetShaderiv(_shaderID, GL_COMPILE_STATUS, &compiled);
    if (compiled != GL_FALSE)
        return true;

    _log = readShaderLog(_shaderID);
    warnLineByLine(compileFailureReport(_shaderType, _source, _log));
    glDeleteShader(_shaderID);
    _shaderID = 0;
    return false;
}

void Shader::clearSource()
{
    _source.clear();
    _source.squeeze();
}

void Shader::dumpSourceCode(const QString& path) const
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text))
        return;
    QTextStream stream(&file);
    stream << _source;
}

bool Shader::isCompiled() const
{
    return _shaderID != 0;
}

QString Shader::log() const
{
    return _log;
}

int Shader::shaderType() const
{
    return static_cast<int>(_shaderType);
}

QString Shader::sourceCode() const
{
    return _source;
}

unsigned int Shader::shaderID() const
{
    return _shaderID;
}

} // namespace Harrow::Vrk
