// SPDX-License-Identifier: MIT
#include "ModelFiles.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace
{

template <typename Value> QByteArray bytesOf(const std::vector<Value>& values)
{
    return QByteArray(reinterpret_cast<const char*>(values.data()), qsizetype(values.size() * sizeof(Value)));
}

QJsonArray toJson(const QVector3D& vector)
{
    return {double(vector.x()), double(vector.y()), double(vector.z())};
}

} // namespace

ModelFolder::ModelFolder()
{
    EXPECT_TRUE(_folder.isValid()) << qPrintable(_folder.errorString());
}

QString ModelFolder::write(const QString& name, const QByteArray& contents) const
{
    QFile file(path(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly)) << qPrintable(file.errorString());
    EXPECT_EQ(file.write(contents), contents.size());
    return file.fileName();
}

QString ModelFolder::path(const QString& name) const
{
    return _folder.filePath(name);
}

QStringList ModelFolder::entries() const
{
    return QDir(_folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

QByteArray gltfFile(const TriangleSoup& mesh, const std::vector<QMatrix4x4>& nodes, const QVector3D& linearColor,
                    float roughness)
{
    const QByteArray parts[] = {bytesOf(mesh.positions), bytesOf(mesh.normals), bytesOf(mesh.indices)};
    QByteArray data;
    QJsonArray views;
    for (const QByteArray& part : parts)
    {
        views.append(QJsonObject{{"buffer", 0}, {"byteOffset", data.size()}, {"byteLength", part.size()}});
        data += part;
    }

    const float huge = std::numeric_limits<float>::max();
    QVector3D minimum(huge, huge, huge);
    QVector3D maximum = -minimum;
    for (const QVector3D& position : mesh.positions)
    {
        for (int axis = 0; axis < 3; ++axis)
        {
            minimum[axis] = std::min(minimum[axis], position[axis]);
            maximum[axis] = std::max(maximum[axis], position[axis]);
        }
    }
    const auto vertexCount = qint64(mesh.positions.size());
    const QJsonArray accessors = {
        QJsonObject{{"bufferView", 0},
                    {"componentType", 5126},
                    {"count", vertexCount},
                    {"type", "VEC3"},
                    {"min", toJson(minimum)},
                    {"max", toJson(maximum)}},
        QJsonObject{{"bufferView", 1}, {"componentType", 5126}, {"count", vertexCount}, {"type", "VEC3"}},
        QJsonObject{
            {"bufferView", 2}, {"componentType", 5125}, {"count", qint64(mesh.indices.size())}, {"type", "SCALAR"}}};

    QJsonArray nodeList;
    QJsonArray roots;
    for (const QMatrix4x4& node : nodes)
    {
        QJsonArray matrix; // columns, as QMatrix4x4 keeps them
        for (int i = 0; i < 16; ++i)
            matrix.append(double(node.constData()[i]));
        roots.append(nodeList.size());
        nodeList.append(QJsonObject{{"mesh", 0}, {"matrix", matrix}});
    }
    const QJsonObject surface{
        {"baseColorFactor", QJsonArray{double(linearColor.x()), double(linearColor.y()), double(linearColor.z()), 1.0}},
        {"metallicFactor", 0.0},
        {"roughnessFactor", double(roughness)}};
    const QJsonObject primitive{
        {"attributes", QJsonObject{{"POSITION", 0}, {"NORMAL", 1}}}, {"indices", 2}, {"material", 0}};
    const QJsonObject root{
        {"asset", QJsonObject{{"version", "2.0"}}},
        {"buffers",
         QJsonArray{QJsonObject{{"byteLength", data.size()},
                                {"uri", QString("data:application/octet-stream;base64," + data.toBase64())}}}},
        {"bufferViews", views},
        {"accessors", accessors},
        {"materials", QJsonArray{QJsonObject{{"name", "paint"}, {"pbrMetallicRoughness", surface}}}},
        {"meshes", QJsonArray{QJsonObject{{"primitives", QJsonArray{primitive}}}}},
        {"nodes", nodeList},
        {"scenes", QJsonArray{QJsonObject{{"nodes", roots}}}},
        {"scene", 0}};
    return QJsonDocument(root).toJson(QJsonDocument::Compact);
}

QByteArray withCamera(const QByteArray& gltf, const QString& name, const QVector3D& position)
{
    QJsonObject root = QJsonDocument::fromJson(gltf).object();
    const QJsonObject lens{{"yfov", 0.8}, {"aspectRatio", 1.0}, {"znear", 0.1}, {"zfar", 100.0}};
    root["cameras"] = QJsonArray{QJsonObject{{"name", name}, {"type", "perspective"}, {"perspective", lens}}};
    QJsonArray nodes = root["nodes"].toArray();
    QJsonObject scene = root["scenes"].toArray()[0].toObject();
    QJsonArray roots = scene["nodes"].toArray();
    roots.append(nodes.size());
    nodes.append(QJsonObject{{"name", name}, {"camera", 0}, {"translation", toJson(position)}});
    scene["nodes"] = roots;
    root["nodes"] = nodes;
    root["scenes"] = QJsonArray{scene};
    return QJsonDocument(root).toJson(QJsonDocument::Compact);
}

QByteArray objFile(const TriangleSoup& mesh, const QByteArray& materialLines)
{
    QByteArray text;
    for (const QVector3D& p : mesh.positions)
        text += QString::asprintf("v %.9g %.9g %.9g\n", double(p.x()), double(p.y()), double(p.z())).toLatin1();
    for (const QVector3D& n : mesh.normals)
        text += QString::asprintf("vn %.9g %.9g %.9g\n", double(n.x()), double(n.y()), double(n.z())).toLatin1();
    text += materialLines;
    for (std::size_t i = 0; i < mesh.indices.size(); i += 3)
    {
        text += "f";
        for (std::size_t corner = i; corner < i + 3; ++corner)
        {
            const QByteArray number = QByteArray::number(mesh.indices[corner] + 1);
            text += " " + (mesh.normals.empty() ? number : number + "//" + number);
        }
        text += "\n";
    }
    return text;
}

TriangleSoup boxSoup(const QVector3D& minimum, const QVector3D& maximum)
{
    TriangleSoup soup;
    for (int axis = 0; axis < 3; ++axis)
    {
        for (int side = 0; side < 2; ++side)
        {
            const int u = (axis + 1) % 3;
            const int v = (axis + 2) % 3;
            const auto first = std::uint32_t(soup.positions.size());
            QVector3D normal;
            normal[axis] = side == 1 ? 1.0f : -1.0f;
            for (int corner = 0; corner < 4; ++corner)
            {
                QVector3D position;
                position[axis] = side == 1 ? maximum[axis] : minimum[axis];
                position[u] = corner == 1 || corner == 2 ? maximum[u] : minimum[u];
                position[v] = corner >= 2 ? maximum[v] : minimum[v];
                soup.positions.push_back(position);
                soup.normals.push_back(normal);
            }
            if (side == 1)
                soup.indices.insert(soup.indices.end(), {first, first + 1, first + 2, first, first + 2, first + 3});
            else
                soup.indices.insert(soup.indices.end(), {first, first + 2, first + 1, first, first + 3, first + 2});
        }
    }
    return soup;
}

TriangleSoup sphereSoup(const QVector3D& center, float radius, int steps)
{
    constexpr double kPi = 3.14159265358979323846;
    TriangleSoup soup;
    const int columns = 2 * steps;
    for (int row = 0; row <= steps; ++row)
    {
        const double up = kPi * (double(row) / steps - 0.5);
        for (int column = 0; column <= columns; ++column)
        {
            const double around = 2.0 * kPi * column / columns;
            const QVector3D normal(float(std::cos(up) * std::cos(around)), float(std::sin(up)),
                                   float(-std::cos(up) * std::sin(around)));
            soup.positions.push_back(center + radius * normal);
            soup.normals.push_back(normal);
        }
    }
    for (int row = 0; row < steps; ++row)
    {
        for (int column = 0; column < columns; ++column)
        {
            const auto corner = std::uint32_t(row * (columns + 1) + column);
            const std::uint32_t above = corner + std::uint32_t(columns + 1);
            if (row > 0)
                soup.indices.insert(soup.indices.end(), {corner, corner + 1, above + 1});
            if (row + 1 < steps)
                soup.indices.insert(soup.indices.end(), {corner, above + 1, above});
        }
    }
    return soup;
}

TriangleSoup transformed(const TriangleSoup& soup, const QMatrix4x4& matrix)
{
    TriangleSoup result = soup;
    const QMatrix4x4 normalMatrix = matrix.inverted().transposed();
    for (QVector3D& position : result.positions)
        position = matrix.map(position);
    for (QVector3D& normal : result.normals)
        normal = normalMatrix.mapVector(normal).normalized();
    if (matrix.determinant() < 0.0)
        for (std::size_t i = 0; i < result.indices.size(); i += 3)
            std::swap(result.indices[i + 1], result.indices[i + 2]);
    return result;
}

void append(TriangleSoup& soup, const TriangleSoup& more)
{
    const auto first = std::uint32_t(soup.positions.size());
    soup.positions.insert(soup.positions.end(), more.positions.begin(), more.positions.end());
    soup.normals.insert(soup.normals.end(), more.normals.begin(), more.normals.end());
    for (const std::uint32_t index : more.indices)
        soup.indices.push_back(first + index);
}

QString writeTiledSquares(const ModelFolder& folder)
{
    QImage red(16, 16, QImage::Format_RGB32);
    red.fill(qRgb(255, 0, 0));
    for (const char* const name : {"left.1001.png", "right.1001.png"})
        EXPECT_TRUE(red.save(folder.path(name)));
    folder.write("tiled.mtl",
                 "newmtl left\nKd 1 1 1\nmap_Kd left.<UDIM>.png\nnewmtl right\nKd 1 1 1\nmap_Kd right.<UDIM>.png\n");
    return folder.write("tiled.obj",
                        "mtllib tiled.mtl\nv -2 -1 0\nv 0 -1 0\nv 2 -1 0\nv 2 1 0\nv 0 1 0\nv -2 1 0\n"
                        "vt 0 0\nvt 0.9 0\nvt 0.9 0.9\nvt 0 0.9\nvn 0 0 1\n"
                        "usemtl left\nf 1/1/1 2/2/1 5/3/1 6/4/1\nusemtl right\nf 2/1/1 3/2/1 4/3/1 5/4/1\n");
}
