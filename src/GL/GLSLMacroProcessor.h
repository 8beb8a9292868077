// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The text stage in front of the GLSL compiler: expands `#include`, `#macro` and `#instancedata` and writes the
/// held defines behind each `#version`. A GLSLMacroProcessor holds what varies between shader builds; the
/// expansion itself is the static function process. Nothing here touches OpenGL.

#include "Export.h"

#include <QDir>
#include <QList>
#include <QMap>
#include <QString>

QT_BEGIN_NAMESPACE
class QRegularExpression;
QT_END_NAMESPACE

namespace Harrow::Vrk
{

struct GLSLMacroProcessorTestAccess;

/// The macros, defines and include directories of a shader build, and the expansion of GLSL text with them.
///
/// The dialect, line by line (a line ends at the first CR or LF):
///
/// - `#include "name"`, in the first column: becomes the expanded contents of the file, taken from the first
///   include directory that has it.
/// - `#instancedata "name"`, in the first column: becomes the expanded declarations of the plan of that name.
///   Of an unknown plan nothing remains; the registry warns of it.
/// - `#macro NAME text`, indented or not: becomes the expanded value of the macro NAME, or, when it is not
///   held, the expanded text. There must be whitespace behind the name. Since the name may be empty,
///   `#macro X` with nothing behind the X is the nameless macro with the default text X, whereas `#macroX`
///   is no directive.
/// - `#version ...`, in the first column: stays, and each define follows it as a line `#define name value`.
///   This holds for every such line at every depth, so a `#macro` whose text is a `#version` line chooses
///   the version and still gets the defines behind it.
/// - Everything else stays as it is.
///
/// The processor knows neither conditions nor comments: a directive is also expanded in an inactive `#if`
/// branch, and `//` switches it off only because the directive then no longer begins its line. An expanded
/// directive leaves its own line end behind, hence an empty line, so line numbers of the output differ from
/// those of the source. A file is expanded as often as it is named; what is needed twice guards itself by
/// `#ifndef`. A file, macro or plan that reaches itself is cut off, see process.
///
/// An object is a small value: copies share their data until one of them is changed. It may be used from any
/// thread, by one thread at a time, also when it is only expanded with.
class VRKGL_EXPORT GLSLMacroProcessor
{
public:
    /// No macro, no define, and two include directories: `resourcesPath()` + "/GLSL/include", so that an
    /// installed file takes the place of the embedded one of the same name, then ":/GLSL/include". Where no
    /// resources are installed the first of them is "/GLSL/include", see resourcesPath.
    GLSLMacroProcessor();

    /// Holds the define `name`, in place of a value held before. The defines are written in ascending order
    /// of their names. Takes effect at the next expansion; texts already expanded stay.
    void addDefine(const QString& name, const QString& value);
    /// Drops the define `name`. A name that is not held is no error.
    void removeDefine(const QString& name);

    /// Holds the macro `name`, in place of a value held before. The value is GLSL text of any kind, also
    /// directives; it is expanded wherever a `#macro` line names it.
    void addMacro(const QString& name, const QString& value);
    /// Drops the macro `name`. A name that is not held is no error.
    void removeMacro(const QString& name);

    /// Appends a directory to those that `#include` searches. The two that are there from the start are
    /// always searched first. Whether the directory exists does not matter until a file is looked for.
    void addIncludePath(const QString& path);

    /// The expanded text of `source`.
    ///
    /// `processor` stays the caller's and may be null: then a default-constructed one serves this call, with
    /// which `#include` finds the standard library and no macro or define is held. Files are read as UTF-8.
    ///
    /// There is no failure value. A directive whose text cannot be had is gone from the output, and a warning
    /// goes to the Qt message log, whether or not the library's own logging is on:
    /// - "Cannot extract include filename from '%s'", with the whole line: the name is empty.
    /// - "Failed to open include file '%s'", with the name: no directory has a readable file of that name.
    ///   Directories, pipes and devices are no files.
    /// - "Expansion depth limit of 256 reached at '%s'", with the whole line: the directive would be nested
    ///   deeper than that, as where a file includes itself.
    /// - "Expansion size limit of 268435456 reached at '%s'", with the whole line: the text of the directive, or
    ///   the defines behind a `#version` line, would take the output beyond that many characters, or the files
    ///   read in the call have more bytes.
    ///
    /// Of the last two one is given once in a call. From there on nothing is nested in that call any more: every
    /// further `#macro`, `#instancedata` and `#include` line expands to nothing. Include files are not looked for
    /// any more, so a missing one gives no warning; an empty name still does. What was expanded so far and all
    /// other lines stay. `#version` lines stay too, each with its defines as long as these fit; a source that is
    /// beyond the size by itself comes back with its other lines as they are.
    static QString process(const QString& source, GLSLMacroProcessor* processor);

private:
    friend struct GLSLMacroProcessorTestAccess;
    class Expansion;

    // process with another limit of size than its own.
    static QString processWithin(qsizetype sizeLimit, const QString& source, GLSLMacroProcessor* processor);

    // Single steps of process for one line, which process itself does not use. `line` is left as it was
    // when there is nothing to put in its place. All take a null processor.

    // All defines, each as a line "#define name value".
    static QString processDefines(GLSLMacroProcessor* processor);
    // The name of the file is the whole match of the pattern, not its first capture.
    static void processLineInclude(QString& line, QRegularExpression& pattern, GLSLMacroProcessor* processor);
    // Capture 1 is the name; the default text, capture 2, is not expanded here.
    static void processLineMacro(QString& line, QRegularExpression& pattern, GLSLMacroProcessor* processor);
    // The name of the plan is the whole match of the pattern, not its first capture.
    static void processLineMaterial(QString& line, QRegularExpression& pattern, GLSLMacroProcessor* processor);

    QMap<QString, QString> _macros;
    QMap<QString, QString> _defines;
    QList<QDir> _includeDirectories;
};

} // namespace Harrow::Vrk
