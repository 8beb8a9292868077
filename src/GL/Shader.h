// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// One GLSL stage: the source text after expansion, and the OpenGL shader object that is made from it. Stages are made
/// by `ShaderProgram`, which owns them and links them.

#include "Export.h"

#include <QObject>
#include <QString>

namespace Harrow::Vrk
{

class GLSLMacroProcessor;

/// All operations that touch OpenGL (`compile` and the destructor of a compiled stage) want the context of the shader
/// object, or one that shares with it, current on the calling thread.
class VRKGL_EXPORT Shader : public QObject
{
public:
    /// Expands `source` at once with `macroProcessor`, which is borrowed for the call and may be null. `type` is
    /// `GL_VERTEX_SHADER` or another shader type of OpenGL. `parent` is ignored: a stage lives as long as its program,
    /// which deletes it, so a parent would delete it twice.
    Shader(unsigned int type, const QString& source, GLSLMacroProcessor* macroProcessor, QObject* parent);
    /// The same without a processor: the library's own includes resolve, and no macro or define is held.
    Shader(unsigned int type, const QString& source, QObject* parent);

    /// Deletes the OpenGL shader if there is one. While the process ends OpenGL is left alone.
    ~Shader() override;

    /// Compiles the expanded text, as Latin-1, and waits for the outcome. True at once when it is compiled already. On
    /// failure returns false: the driver's text is kept in `log`, the OpenGL shader is gone, and a report goes to the
    /// Qt message log as warnings, whatever the logging switch says: the type, the expanded source with line numbers,
    /// which are those that the driver means, and the driver's text.
    bool compile();

    /// Empties the source text and gives its memory back. A compiled stage stays compiled.
    void clearSource();

    /// Writes the expanded source to a text file, as UTF-8. Does nothing when the file doesn't open.
    void dumpSourceCode(const QString& path) const;

    /// Whether there is an OpenGL shader that compiled.
    bool isCompiled() const;
    /// The driver's text about the last compilation that failed; a later success leaves it.
    QString log() const;
    int shaderType() const;
    /// The expanded text; empty after `clearSource`.
    QString sourceCode() const;
    /// The OpenGL name, 0 while not compiled.
    unsigned int shaderID() const;

private:
    unsigned int _shaderType = 0;
    QString _source;
    QString _log;
    unsigned int _shaderID = 0;
};

} // namespace Harrow::Vrk
