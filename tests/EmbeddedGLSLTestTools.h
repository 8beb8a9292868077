// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The embedded GLSL files as texts, and glslangValidator's verdict on what is made of them.

#include <QFile>
#include <QIODevice>
#include <QList>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <utility>

namespace Harrow::Vrk::Test
{

/// The text of ":/GLSL/" + name, or an empty one.
inline QString embedded(const QString& name)
{
    QFile file(QStringLiteral(":/GLSL/") + name);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// glslangValidator on texts, each with its stage as "vert" or "frag".
struct Verdict
{
    bool ran = false;
    int exitCode = -1;
    QString output;
    bool good() const
    {
        return ran && exitCode == 0;
    }
};

inline Verdict validate(const QStringList& options, const QList<std::pair<QString, QString>>& texts)
{
    const QTemporaryDir folder;
    QStringList arguments = options;
    for (const auto& [stage, text] : texts)
    {
        QFile file(folder.filePath(QStringLiteral("%1.%2").arg(arguments.size()).arg(stage)));
        if (!file.open(QIODevice::WriteOnly))
            return {};
        file.write(text.toUtf8());
        arguments.append(file.fileName());
    }
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral("glslangValidator"), arguments);
    if (!process.waitForFinished(30000))
        return {false, -1, QStringLiteral("glslangValidator does not run: ") + process.errorString()};
    return {true, process.exitCode(), QString::fromUtf8(process.readAll())};
}

#define EXPECT_VALID(options, ...)                                                                                     \
    do                                                                                                                 \
    {                                                                                                                  \
        const Verdict validity = validate(options, {__VA_ARGS__});                                                     \
        EXPECT_TRUE(validity.good()) << validity.output.toStdString();                                                 \
    } while (false)

} // namespace Harrow::Vrk::Test
