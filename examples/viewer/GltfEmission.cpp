// SPDX-License-Identifier: MIT
#include "GltfEmission.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtEndian>

#include <algorithm>
#include <optional>

namespace vrkview
{

namespace
{

const QLatin1String kExtension("KHR_materials_emissive_strength");
const QByteArray kExtensionName = "KHR_materials_emissive_strength";

// Of the binary form: the file's header, then chunks, of which the first is the JSON.
constexpr qsizetype kHeaderSize = 12;
constexpr qsizetype kChunkHeaderSize = 8;
constexpr qsizetype kLengthAt = 8;

std::optional<quint32> wordAt(const QByteArray& data, qsizetype at)
{
    if (at + 4 > data.size())
        return std::nullopt;
    return qFromLittleEndian<quint32>(data.constData() + at);
}

void putWord(QByteArray& data, qsizetype at, quint32 value)
{
    qToLittleEndian(value, data.data() + at);
}

// The extension goes, so that no newer importer counts it a second time.
QJsonObject multiplied(QJsonObject material)
{
    QJsonObject extensions = material["extensions"].toObject();
    const double strength = extensions[kExtension].toObject()["emissiveStrength"].toDouble(1.0);
    QJsonArray factor;
    for (const auto& part : material["emissiveFactor"].toArray())
        factor.append(strength * part.toDouble());
    if (!factor.isEmpty())
        material["emissiveFactor"] = factor;
    extensions.remove(kExtension);
    material["extensions"] = extensions;
    return material;
}

QByteArray multipliedAll(const QByteArray& json)
{
    if (!json.contains(kExtensionName))
        return {};
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isObject())
        return {};
    QJsonObject root = document.object();
    QJsonArray materials;
    for (const auto& material : root["materials"].toArray())
        materials.append(multiplied(material.toObject()));
    root["materials"] = materials;
    return QJsonDocument(root).toJson(QJsonDocument::Compact);
}

QByteArray multipliedBinary(const QByteArray& file)
{
    const std::optional<quint32> length = wordAt(file, kHeaderSize);
    const qsizetype jsonAt = kHeaderSize + kChunkHeaderSize;
    if (!length || qsizetype(*length) > file.size() - jsonAt)
        return {};
    QByteArray json = multipliedAll(file.mid(jsonAt, *length));
    if (json.isEmpty())
        return {};
    while (json.size() % 4 != 0)
        json.append(' ');
    QByteArray result = file.left(jsonAt) + json + file.mid(jsonAt + *length);
    putWord(result, kLengthAt, quint32(result.size()));
    putWord(result, kHeaderSize, quint32(json.size()));
    return result;
}

} // namespace

bool isGltf(const QString& path)
{
    return path.endsWith(QLatin1String(".gltf"), Qt::CaseInsensitive) ||
           path.endsWith(QLatin1String(".glb"), Qt::CaseInsensitive);
}

QByteArray withStrongEmission(const QString& path)
{
    QFile file(path);
    if (!isGltf(path) || !file.open(QIODevice::ReadOnly))
        return {};
    QByteArray contents = file.read(kHeaderSize + kChunkHeaderSize);
    if (!contents.startsWith("glTF"))
        return multipliedAll(contents + file.readAll());
    // Binary files can be large, and few of them have what is looked for.
    contents += file.read(std::min<qint64>(wordAt(contents, kHeaderSize).value_or(0), file.size()));
    return contents.contains(kExtensionName) ? multipliedBinary(contents + file.readAll()) : QByteArray();
}

} // namespace vrkview
