// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of shaders and programs share: a fake driver whose answers about shaders and programs are written
/// down by the test, and small helpers around call lists.

#include "GLFunctions.h"
#include "support/CallLog.h"
#include "support/FakeDriver.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <cstring>

namespace Harrow::Vrk::Test
{

/// The names of recorded calls without their arguments.
inline QStringList functionNames(const QStringList& calls)
{
    QStringList names;
    for (const QString& call : calls)
        names.append(call.left(call.indexOf(QLatin1Char('('))));
    return names;
}

/// Numbered, right-aligned listing of a text, made independently of the library.
inline QStringList listing(const QStringList& lines)
{
    QStringList result;
    for (qsizetype i = 0; i < lines.size(); ++i)
        result.append(QString::asprintf("%4d : ", static_cast<int>(i + 1)) + lines[i]);
    return result;
}

/// What the scripted driver answers, and what it was given.
struct ShaderScript
{
    struct Variable
    {
        QByteArray name;
        GLint location = -1;
        GLint size = 1;
        GLenum type = GL_FLOAT;
    };

    // Answers.
    QByteArray brokenMark = "broken"; ///< A source that holds this doesn't compile.
    QByteArray shaderLog = "0:1: it is broken\n";
    QHash<QByteArray, QByteArray> shaderLogs; ///< By source, in the place of `shaderLog`.
    QByteArray programLog = "nothing fits\n";
    GLint linkStatus = 1;
    GLint binaryLength = 0;
    GLint completion = 1;
    bool writesCompletion = true;
    int pollsUntilComplete = -1; ///< Below 0: `completion` for ever.
    QList<Variable> attributes;
    QList<Variable> uniforms;
    QList<QByteArray> uniformBlocks;
    QList<QByteArray> storageBlocks;

    // What was given.
    QHash<GLuint, QByteArray> sources;
    QHash<GLuint, GLenum> types;
    QList<QByteArray> varyings;
    GLsizei longestNameAsked = 0;

    QByteArray logOf(GLuint shader) const
    {
        return shaderLogs.value(sources.value(shader), shaderLog);
    }

    static ShaderScript& current()
    {
        static ShaderScript script;
        return script;
    }
};

/// Writes as OpenGL does: at most `size` characters with the closing zero.
inline void writeText(const QByteArray& text, GLsizei size, GLsizei* length, GLchar* out)
{
    if (size < 1)
        return;
    const auto written = std::min<GLsizei>(static_cast<GLsizei>(text.size()), size - 1);
    std::memcpy(out, text.constData(), static_cast<std::size_t>(written));
    out[written] = '\0';
    if (length)
        *length = written;
}

/// Fixture: a fake driver that answers from `ShaderScript::current()`.
class ScriptedDriverTest : public FakeDriverTest
{
protected:
    ShaderScript& script = ShaderScript::current();

    static QString text(const char* words)
    {
        return QString::fromUtf8(words);
    }

    void SetUp() override
    {
        script = ShaderScript();
        FakeDriverTest::SetUp();
        scriptShaders();
        scriptPrograms();
        scriptReflection();
        ASSERT_EQ(driver.load(), 1);
    }

private:
    void scriptShaders()
    {
        driver.replace(
            "glCreateShader",
            +[](GLenum type)
            {
                const GLuint name = FakeDriver::current().nextName("shader");
                ShaderScript::current().types.insert(name, type);
                return name;
            });
        driver.replace(
            "glShaderSource", +[](GLuint shader, GLsizei, const GLchar* const* texts, const GLint* lengths)
                              { ShaderScript::current().sources.insert(shader, QByteArray(texts[0], lengths[0])); });
        driver.replace(
            "glGetShaderiv",
            +[](GLuint shader, GLenum parameter, GLint* value)
            {
                const ShaderScript& s = ShaderScript::current();
                const QByteArray source = s.sources.value(shader);
                if (parameter == GL_COMPILE_STATUS)
                    *value = source.contains(s.brokenMark) ? 0 : 1;
                else if (parameter == GL_INFO_LOG_LENGTH)
                    *value = static_cast<GLint>(s.logOf(shader).size()) + 1;
                else if (parameter == GL_SHADER_SOURCE_LENGTH)
                    *value = static_cast<GLint>(source.size()) + 1;
                else if (parameter == GL_SHADER_TYPE)
                    *value = static_cast<GLint>(s.types.value(shader));
            });
        driver.replace(
            "glGetShaderInfoLog", +[](GLuint shader, GLsizei size, GLsizei* length, GLchar* out)
                                  { writeText(ShaderScript::current().logOf(shader), size, length, out); });
        driver.replace(
            "glGetShaderSource", +[](GLuint shader, GLsizei size, GLsizei* length, GLchar* out)
                                 { writeText(ShaderScript::current().sources.value(shader), size, length, out); });
    }

    void scriptPrograms()
    {
        driver.replace(
            "glGetProgramiv",
            +[](GLuint program, GLenum parameter, GLint* value)
            {
                if (program == 0)
                    return; // an error of OpenGL's, which writes nothing
                ShaderScript& s = ShaderScript::current();
                if (parameter == GL_LINK_STATUS)
                    *value = s.linkStatus;
                else if (parameter == GL_INFO_LOG_LENGTH)
                    *value = static_cast<GLint>(s.programLog.size()) + 1;
                else if (parameter == GL_PROGRAM_BINARY_LENGTH)
                    *value = s.binaryLength;
                else if (parameter == GL_ACTIVE_ATTRIBUTES)
                    *value = static_cast<GLint>(s.attributes.size());
                else if (parameter == GL_ACTIVE_UNIFORMS)
                    *value = static_cast<GLint>(s.uniforms.size());
                else if (parameter == GL_ACTIVE_UNIFORM_BLOCKS)
                    *value = static_cast<GLint>(s.uniformBlocks.size());
                else if (parameter == GL_COMPLETION_STATUS_ARB && s.writesCompletion)
                {
                    if (s.pollsUntilComplete == 0)
                        s.completion = 1;
                    else if (s.pollsUntilComplete > 0)
                        --s.pollsUntilComplete;
                    *value = s.completion;
                }
            });
        driver.replace(
            "glGetProgramInfoLog",
            +[](GLuint program, GLsizei size, GLsizei* length, GLchar* out)
            {
                if (program != 0)
                    writeText(ShaderScript::current().programLog, size, length, out);
            });
        driver.replace(
            "glTransformFeedbackVaryings",
            +[](GLuint, GLsizei count, const GLchar* const* names, GLenum)
            {
                for (GLsizei i = 0; i < count; ++i)
                    ShaderScript::current().varyings.append(QByteArray(names[i]));
            });
    }

    static void writeVariable(const ShaderScript::Variable& variable, GLsizei size, GLsizei* length, GLint* count,
                              GLenum* type, GLchar* name)
    {
        ShaderScript::current().longestNameAsked = std::max(ShaderScript::current().longestNameAsked, size);
        *count = variable.size;
        *type = variable.type;
        writeText(variable.name, size, length, name);
    }

    void scriptReflection()
    {
        driver.replace(
            "glGetActiveAttrib",
            +[](GLuint, GLuint index, GLsizei size, GLsizei* length, GLint* count, GLenum* type, GLchar* name)
            { writeVariable(ShaderScript::current().attributes[index], size, length, count, type, name); });
        driver.replace(
            "glGetAttribLocation",
            +[](GLuint, const GLchar* name) -> GLint
            {
                for (const auto& attribute : ShaderScript::current().attributes)
                    if (attribute.name.startsWith(name))
                        return attribute.location;
                return -1;
            });
        driver.replace(
            "glGetActiveUniform",
            +[](GLuint, GLuint index, GLsizei size, GLsizei* length, GLint* count, GLenum* type, GLchar* name)
            { writeVariable(ShaderScript::current().uniforms[index], size, length, count, type, name); });
        driver.replace(
            "glGetActiveUniformBlockName",
            +[](GLuint, GLuint index, GLsizei size, GLsizei* length, GLchar* name)
            { writeText(ShaderScript::current().uniformBlocks[index], size, length, name); });
        driver.replace(
            "glGetProgramInterfaceiv",
            +[](GLuint, GLenum interface, GLenum parameter, GLint* value)
            {
                if (interface == GL_SHADER_STORAGE_BLOCK && parameter == GL_ACTIVE_RESOURCES)
                    *value = static_cast<GLint>(ShaderScript::current().storageBlocks.size());
            });
        driver.replace(
            "glGetProgramResourceName",
            +[](GLuint, GLenum, GLuint index, GLsizei size, GLsizei* length, GLchar* name)
            { writeText(ShaderScript::current().storageBlocks[index], size, length, name); });
    }
};

} // namespace Harrow::Vrk::Test
