// SPDX-License-Identifier: MIT
#include "Gltf1Nodes.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QQuaternion>
#include <QVector3D>

namespace vrkview
{

namespace
{

QVector3D toVector(const QJsonValue& value, const QVector3D& otherwise)
{
    const QJsonArray array = value.toArray();
    if (array.size() != 3)
        return otherwise;
    return {float(array[0].toDouble()), float(array[1].toDouble()), float(array[2].toDouble())};
}

QQuaternion toRotation(const QJsonValue& value)
{
    const QJsonArray array = value.toArray();
    if (array.size() != 4)
        return {};
    return {float(array[3].toDouble()), float(array[0].toDouble()), float(array[1].toDouble()),
            float(array[2].toDouble())};
}

QMatrix4x4 toMatrix(const QJsonObject& node)
{
    QMatrix4x4 matrix;
    matrix.translate(toVector(node["translation"], QVector3D()));
    matrix.rotate(toRotation(node["rotation"]));
    matrix.scale(toVector(node["scale"], QVector3D(1.0f, 1.0f, 1.0f)));
    return matrix;
}

} // namespace

QHash<QString, QMatrix4x4> gltf1NodeMatrices(const QString& path)
{
    QFile file(path);
    if (!path.endsWith(QLatin1String(".gltf"), Qt::CaseInsensitive) || !file.open(QIODevice::ReadOnly))
        return {};

    // Version 1 keeps nodes by identifier, version 2 in a list, so for version 2 this object is empty.
    QHash<QString, QMatrix4x4> matrices;
    const QJsonObject nodes = QJsonDocument::fromJson(file.readAll()).object()["nodes"].toObject();
    for (auto node = nodes.begin(); node != nodes.end(); ++node)
    {
        const QJsonObject values = node.value().toObject();
        if (values.contains("translation") || values.contains("rotation") || values.contains("scale"))
            matrices.insert(node.key(), toMatrix(values));
    }
    return matrices;
}

} // namespace vrkview
