// SPDX-License-Identifier: MIT
#include "ShaderFile.h"

#include <VrkCore/ResourcesPath.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace Harrow::Vrk
{

QStringList shaderFileDirectories()
{
    return {QDir().path(), resourcesPath() + QStringLiteral("/GLSL/src"), QStringLiteral(":/GLSL/src")};
}

std::optional<QString> readShaderFile(const QStringList& directories, const QString& path)
{
    for (const QString& name : directories)
    {
        const QDir directory(name);
        if (!directory.exists())
            continue;
        const QString candidate = directory.filePath(path);
        QFile file(candidate);
        // A directory among the embedded files would open, as an empty file. A pipe may wait for ever for its other end
        // when it is opened already, and a device may have no end.
        if (QFileInfo(candidate).isFile() && file.open(QIODevice::ReadOnly) && !file.isSequential())
            return QString::fromUtf8(file.readAll());
    }
    return std::nullopt;
}

} // namespace Harrow::Vrk
