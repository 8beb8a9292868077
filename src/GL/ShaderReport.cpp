// SPDX-License-Identifier: MIT
#include "ShaderReport.h"

#include "GLConstants.h"

#include <QMessageLogger>
#include <QString>
#include <QStringView>

#include <algorithm>
#include <iterator>

namespace Harrow::Vrk
{
namespace
{

struct TypeRow
{
    unsigned int type;
    const char* name;
    const char* abbreviation;
};

constexpr TypeRow kTypes[] = {
    {GL_VERTEX_SHADER, "GL_VERTEX_SHADER", "VS"},
    {GL_FRAGMENT_SHADER, "GL_FRAGMENT_SHADER", "FS"},
    {GL_GEOMETRY_SHADER, "GL_GEOMETRY_SHADER", "GS"},
    {GL_TESS_EVALUATION_SHADER, "GL_TESS_EVALUATION_SHADER", "TES"},
    {GL_TESS_CONTROL_SHADER, "GL_TESS_CONTROL_SHADER", "TCS"},
};
constexpr TypeRow kUnknownType = {0, "unknown", ""};

const TypeRow& typeRow(unsigned int shaderType)
{
    const auto* const found = std::find_if(std::begin(kTypes), std::end(kTypes),
                                           [shaderType](const TypeRow& row) { return row.type == shaderType; });
    return found != std::end(kTypes) ? *found : kUnknownType;
}

/// Calls `use` for each piece of `text` between line feeds; a text without any is one piece.
template <typename Use> void forEachLine(QStringView text, Use use)
{
    for (const QStringView line : text.tokenize(u'\n'))
        use(line);
}

} // namespace

QString numberedLines(const QString& text)
{
    constexpr qsizetype kPrefixLength = 8;
    QString listing;
    listing.reserve(text.size() + (text.count(u'\n') + 1) * kPrefixLength);
    int number = 0;
    forEachLine(text,
                [&](QStringView line)
                {
                    listing += QString::number(++number).rightJustified(4);
                    listing += QLatin1String(" : ");
                    listing += line;
                    listing += u'\n';
                });
    return listing;
}

QString compileFailureReport(unsigned int shaderType, const QString& source, const QString& log)
{
    return QStringLiteral("Failed to compile GL shader\n") +
           QStringLiteral(" Shader Type = %1\n").arg(QLatin1String(typeRow(shaderType).name)) +
           QStringLiteral(" =======Source======\n") + numberedLines(source) + QStringLiteral(" =======Log=========\n") +
           log;
}

QString linkFailureReport(const QString& log)
{
    return QStringLiteral("Failed to link GL shader\n") + QStringLiteral(" =======Log=========\n") + log;
}

QString validateFailureReport(const QString& log)
{
    // The two texts share a line: readers of logs look for it as it is.
    return QStringLiteral("Failed to validate GL shader") + QStringLiteral("========= Log =========\n") + log;
}

QString shaderTypeAbbreviation(unsigned int shaderType)
{
    return QString::fromLatin1(typeRow(shaderType).abbreviation);
}

void warnLineByLine(const QString& report)
{
    forEachLine(report, [](QStringView line) { QMessageLogger().warning("%s", line.toUtf8().constData()); });
}

} // namespace Harrow::Vrk
