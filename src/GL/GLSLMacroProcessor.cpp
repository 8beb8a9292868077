// SPDX-License-Identifier: MIT

#include "GLSLMacroProcessor.h"

#include "InstanceDataPlan.h"
#include "InstanceDataRegistry.h"

#include <VrkCore/ResourcesPath.h>

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QMessageLogger>
#include <QRegularExpression>
#include <QStringView>

#include <algorithm>
#include <initializer_list>

namespace Harrow::Vrk
{

namespace
{

// How many directives deep a text may be nested. Real shaders stay below ten; the limit is for texts that
// reach themselves, and it keeps the stack that the expansion takes below a few hundred kilobytes.
constexpr int kDepthLimit = 256;

// How many characters a call may make of its source, and how many bytes of files it may read. Real shaders stay
// below a million; the limit is for files that each include the next one twice, which grow as the powers of two.
constexpr qsizetype kSizeLimit = qsizetype(1) << 28;

const QRegularExpression& includePattern()
{
    static const QRegularExpression pattern(QStringLiteral("^#include *\"([^\"]*)\"\\s*$"));
    return pattern;
}

const QRegularExpression& instanceDataPattern()
{
    static const QRegularExpression pattern(QStringLiteral("^#instancedata *\"([^\"]*)\"\\s*$"));
    return pattern;
}

const QRegularExpression& macroPattern()
{
    static const QRegularExpression pattern(QStringLiteral("^\\s*#macro\\s*([^\\s]*)\\s([^\\n\\r]*)\\s*$"));
    return pattern;
}

bool isLineEnd(QChar c)
{
    return c == u'\n' || c == u'\r';
}

// The captures of a match as parts of the line that was matched, so that none of them is a copy.
struct LineMatch
{
    bool matched = false;
    QStringView first;
    QStringView second;
};

LineMatch matchLine(const QRegularExpression& pattern, QStringView line)
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 5, 0)
    const QRegularExpressionMatch match = pattern.matchView(line);
#else
    const QRegularExpressionMatch match = pattern.match(line);
#endif
    return {match.hasMatch(), match.capturedView(1), match.capturedView(2)};
}

QString defineLines(const QMap<QString, QString>& defines)
{
    QString lines;
    for (auto define = defines.cbegin(); define != defines.cend(); ++define)
        lines += QStringLiteral("#define %1 %2\n").arg(define.key(), define.value());
    return lines;
}

enum class Reading
{
    eDone,
    eNoFile,
    eTooLong
};

// The contents of an open file, taken from the bytes that may still be read. The size of the file is no promise: files
// of the system give more than they say.
Reading readText(QFile& file, qsizetype& bytesLeft, QString& text)
{
    if (file.size() > bytesLeft)
        return Reading::eTooLong;
    constexpr qsizetype kPiece = 1 << 16;
    QByteArray bytes;
    for (;;)
    {
        const QByteArray piece = file.read(std::min(kPiece, bytesLeft - bytes.size() + 1));
        if (piece.isEmpty())
            break;
        bytes += piece;
        if (bytes.size() > bytesLeft)
            return Reading::eTooLong;
    }
    bytesLeft -= bytes.size();
    text = QString::fromUtf8(bytes);
    return Reading::eDone;
}

// Reads the first file of that name that opens. A pipe may wait for ever for its other end when it is opened
// already, a device may have no end, and a directory among the embedded files opens as an empty file.
Reading readIncludeFile(const QList<QDir>& directories, const QString& name, qsizetype& bytesLeft, QString& text)
{
    for (const QDir& directory : directories)
    {
        const QString path = directory.filePath(name);
        if (!QFileInfo(path).isFile())
            continue;
        QFile file(path);
        // The file may have become another one since.
        if (file.open(QIODevice::ReadOnly) && !file.isSequential())
            return readText(file, bytesLeft, text);
    }
    return Reading::eNoFile;
}

// The declarations of the plan of that name; false when the plan is unknown.
bool planDeclarations(const QString& name, QString& text)
{
    const InstanceDataPlan* const plan = InstanceDataRegistry::Instance().getPlan(name);
    if (!plan)
        return false;
    text = plan->glslh();
    return true;
}

void warnNoIncludeName(QStringView line)
{
    QMessageLogger().warning("Cannot extract include filename from '%s'", line.toUtf8().constData());
}

void warnNoIncludeFile(const QString& name)
{
    QMessageLogger().warning("Failed to open include file '%s'", name.toUtf8().constData());
}

void warnDepthLimit(QStringView line)
{
    QMessageLogger().warning("Expansion depth limit of %d reached at '%s'", kDepthLimit, line.toUtf8().constData());
}

void warnSizeLimit(qsizetype limit, QStringView line)
{
    QMessageLogger().warning("Expansion size limit of %lld reached at '%s'", static_cast<long long>(limit),
                             line.toUtf8().constData());
}

} // namespace

/// One call of process: the output that all nested texts are written to in turn, and how deep they nest.
///
/// Whether a line is a directive depends on the whole line and not on the `#` that led to it. So each line
/// with a `#` is looked at once, at its first `#`, and a line that is no directive is copied as a whole. With
/// that the work is proportional to the text, however many `#` a line has.
///
/// What is written and what is still to be copied of the texts that are open are counted together. So a text that
/// fits when it is opened still fits when its end is written, whatever is nested in it.
class GLSLMacroProcessor::Expansion
{
public:
    Expansion(const GLSLMacroProcessor& processor, qsizetype sizeLimit, QString& output)
        : _processor(processor), _sizeLimit(sizeLimit), _output(output), _defineLines(defineLines(processor._defines))
    {
    }

    void expand(QStringView text);

private:
    bool expandLine(QStringView line, qsizetype hash);
    bool expandMacro(QStringView line);
    bool expandInstanceData(QStringView line);
    bool expandInclude(QStringView line);
    void expandVersion(QStringView line);
    void appendNested(QStringView text, QStringView line);
    Reading includeText(const QString& name, QString& text);
    bool hasRoomFor(qsizetype characters) const;
    void reachSizeLimit(QStringView line);

    const GLSLMacroProcessor& _processor;
    const qsizetype _sizeLimit;
    QString& _output;
    // The characters of the open texts that are not yet copied or replaced.
    qsizetype _pending = 0;
    // What follows each #version: empty when no define is held.
    const QString _defineLines;
    // The files read in this call, by name: a file that is named a thousand times is read once.
    QHash<QString, QString> _files;
    qsizetype _fileBytesLeft = _sizeLimit;
    int _depth = 0;
    // From then on nothing is nested any more.
    bool _limitReached = false;
};

void GLSLMacroProcessor::Expansion::expand(QStringView text)
{
    qsizetype copied = 0;
    _pending += text.size();
    for (qsizetype hash = text.indexOf(u'#'); hash >= 0; hash = text.indexOf(u'#', copied))
    {
        // What stands in front of the '#' stays, also the blanks that indent a #macro.
        _output.append(text.sliced(copied, hash - copied));

        // The copy position is at a line end or at the start, so the way back never passes it.
        qsizetype lineStart = hash;
        while (lineStart > copied && !isLineEnd(text[lineStart - 1]))
            --lineStart;
        const qsizetype lineEnd = std::find_if(text.begin() + hash, text.end(), isLineEnd) - text.begin();

        _pending -= lineEnd - copied;
        if (!expandLine(text.sliced(lineStart, lineEnd - lineStart), hash - lineStart))
            _output.append(text.sliced(hash, lineEnd - hash));
        copied = lineEnd;
    }
    _output.append(text.sliced(copied));
    _pending -= text.size() - copied;
}

// Replaces a directive; false when the line is none. `hash` is the place of the first '#' in the line. The
// prefixes spare all other lines the patterns, which decide.
bool GLSLMacroProcessor::Expansion::expandLine(QStringView line, qsizetype hash)
{
    const QStringView directive = line.sliced(hash);
    if (directive.startsWith(u"#macro"))
        return expandMacro(line);
    if (0 != hash)
        return false;
    if (directive.startsWith(u"#instancedata"))
        return expandInstanceData(line);
    if (directive.startsWith(u"#include"))
        return expandInclude(line);
    if (directive.startsWith(u"#version"))
    {
        expandVersion(line);
        return true;
    }
    return false;
}

bool GLSLMacroProcessor::Expansion::expandMacro(QStringView line)
{
    const LineMatch match = matchLine(macroPattern(), line);
    if (!match.matched)
        return false;
    const auto macro = _processor._macros.constFind(match.first.toString());
    appendNested(_processor._macros.cend() != macro ? QStringView(macro.value()) : match.second, line);
    return true;
}

bool GLSLMacroProcessor::Expansion::expandInstanceData(QStringView line)
{
    const LineMatch match = matchLine(instanceDataPattern(), line);
    if (!match.matched)
        return false;
    if (_limitReached)
        return true;
    QString text;
    if (planDeclarations(match.first.toString(), text))
        appendNested(text, line);
    return true;
}

bool GLSLMacroProcessor::Expansion::expandInclude(QStringView line)
{
    const LineMatch match = matchLine(includePattern(), line);
    if (!match.matched)
        return false;
    const QString name = match.first.toString();
    if (name.isEmpty())
    {
        warnNoIncludeName(line);
        return true;
    }
    if (_limitReached)
        return true;
    QString text;
    switch (includeText(name, text))
    {
    case Reading::eDone:
        appendNested(text, line);
        break;
    case Reading::eNoFile:
        warnNoIncludeFile(name);
        break;
    case Reading::eTooLong:
        reachSizeLimit(line);
        break;
    }
    return true;
}

// The line stays in any case. The defines behind it are left out where they have no room: a text of many such lines
// is multiplied by the length of the defines.
void GLSLMacroProcessor::Expansion::expandVersion(QStringView line)
{
    const bool definesFit = hasRoomFor(line.size() + 1 + _defineLines.size());
    _output.append(line);
    _output.append(u'\n');
    if (_defineLines.isEmpty() || definesFit)
        _output.append(_defineLines);
    else
        reachSizeLimit(line);
}

// Appends the expansion of a text that the directive in `line` stands for, and a line end. Once a text
// would have nested too deep nothing is nested any more: a text that names itself twice at each level would
// otherwise go on for two to the power of the limit.
void GLSLMacroProcessor::Expansion::appendNested(QStringView text, QStringView line)
{
    if (_limitReached)
        return;
    if (kDepthLimit == _depth)
    {
        _limitReached = true;
        warnDepthLimit(line);
        return;
    }
    if (!hasRoomFor(text.size() + 1))
    {
        reachSizeLimit(line);
        return;
    }
    ++_depth;
    ++_pending;
    expand(text);
    --_pending;
    --_depth;
    _output.append(u'\n');
}

Reading GLSLMacroProcessor::Expansion::includeText(const QString& name, QString& text)
{
    const auto known = _files.constFind(name);
    if (_files.cend() != known)
    {
        text = known.value();
        return Reading::eDone;
    }
    const Reading reading = readIncludeFile(_processor._includeDirectories, name, _fileBytesLeft, text);
    if (Reading::eDone == reading)
        _files.insert(name, text);
    return reading;
}

bool GLSLMacroProcessor::Expansion::hasRoomFor(qsizetype characters) const
{
    return _output.size() + _pending + characters <= _sizeLimit;
}

void GLSLMacroProcessor::Expansion::reachSizeLimit(QStringView line)
{
    if (!_limitReached)
        warnSizeLimit(_sizeLimit, line);
    _limitReached = true;
}

GLSLMacroProcessor::GLSLMacroProcessor()
    : _includeDirectories(
          {QDir(resourcesPath() + QStringLiteral("/GLSL/include")), QDir(QStringLiteral(":/GLSL/include"))})
{
}

void GLSLMacroProcessor::addDefine(const QString& name, const QString& value)
{
    _defines.insert(name, value);
}

void GLSLMacroProcessor::removeDefine(const QString& name)
{
    _defines.remove(name);
}

void GLSLMacroProcessor::addMacro(const QString& name, const QString& value)
{
    _macros.insert(name, value);
}

void GLSLMacroProcessor::removeMacro(const QString& name)
{
    _macros.remove(name);
}

void GLSLMacroProcessor::addIncludePath(const QString& path)
{
    _includeDirectories.append(QDir(path));
}

QString GLSLMacroProcessor::process(const QString& source, GLSLMacroProcessor* processor)
{
    return processWithin(kSizeLimit, source, processor);
}

QString GLSLMacroProcessor::processWithin(qsizetype sizeLimit, const QString& source, GLSLMacroProcessor* processor)
{
    if (nullptr == processor)
    {
        GLSLMacroProcessor standard;
        return processWithin(sizeLimit, source, &standard);
    }
    QString output;
    output.reserve(source.size());
    Expansion(*processor, sizeLimit, output).expand(source);
    return output;
}

QString GLSLMacroProcessor::processDefines(GLSLMacroProcessor* processor)
{
    return nullptr == processor ? QString() : defineLines(processor->_defines);
}

void GLSLMacroProcessor::processLineInclude(QString& line, QRegularExpression& pattern, GLSLMacroProcessor* processor)
{
    if (!line.startsWith(u"#include"))
        return;
    const QString name = pattern.match(line).captured(0);
    if (name.isEmpty())
    {
        warnNoIncludeName(line);
        return;
    }
    const QList<QDir> directories =
        nullptr == processor ? GLSLMacroProcessor()._includeDirectories : processor->_includeDirectories;
    qsizetype bytesLeft = kSizeLimit;
    QString text;
    switch (readIncludeFile(directories, name, bytesLeft, text))
    {
    case Reading::eDone:
        line = process(text, processor);
        break;
    case Reading::eNoFile:
        warnNoIncludeFile(name);
        break;
    case Reading::eTooLong:
        warnSizeLimit(kSizeLimit, line);
        break;
    }
}

void GLSLMacroProcessor::processLineMacro(QString& line, QRegularExpression& pattern, GLSLMacroProcessor* processor)
{
    const QRegularExpressionMatch match = pattern.match(line);
    if (!match.hasMatch())
        return;
    const QString name = match.captured(1);
    if (nullptr != processor && processor->_macros.contains(name))
        line = process(processor->_macros.value(name), processor);
    else
        line = match.captured(2);
}

void GLSLMacroProcessor::processLineMaterial(QString& line, QRegularExpression& pattern, GLSLMacroProcessor* processor)
{
    if (!line.startsWith(u"#instancedata"))
        return;
    QString text;
    if (planDeclarations(pattern.match(line).captured(0), text))
        line = process(text, processor);
}

} // namespace Harrow::Vrk
