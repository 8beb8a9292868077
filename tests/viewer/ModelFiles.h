// SPDX-License-Identifier: MIT
// Model files that the tests write themselves, so that every number in them is known.
#pragma once

#include <QByteArray>
#include <QMatrix4x4>
#include <QString>
#include <QTemporaryDir>
#include <QVector3D>

#include <cstdint>
#include <vector>

/// A folder that goes with the test, and files in it.
class ModelFolder
{
public:
    ModelFolder();

    /// Writes `contents` and returns the file's path.
    QString write(const QString& name, const QByteArray& contents) const;
    QString path(const QString& name) const;
    QStringList entries() const;

private:
    QTemporaryDir _folder;
};

struct TriangleSoup
{
    std::vector<QVector3D> positions;
    std::vector<QVector3D> normals; ///< one a position, or none
    std::vector<std::uint32_t> indices;
};

/// A glTF file holding one mesh, drawn at each of `nodes`, with its data in the file itself. The material is a plain
/// dielectric of the given linear colour.
QByteArray gltfFile(const TriangleSoup& mesh, const std::vector<QMatrix4x4>& nodes, const QVector3D& linearColor,
                    float roughness);

/// The same with a camera at `position` that looks along -z, with a field of view of 0.8 radians and a square film.
QByteArray withCamera(const QByteArray& gltf, const QString& name, const QVector3D& position);

/// Wavefront OBJ of the same, in one piece; `materialLines` goes in front of the faces.
QByteArray objFile(const TriangleSoup& mesh, const QByteArray& materialLines = QByteArray());

/// An axis-aligned box, with its own four corners and normal for each face.
TriangleSoup boxSoup(const QVector3D& minimum, const QVector3D& maximum);

/// A sphere around `center` with smooth normals.
TriangleSoup sphereSoup(const QVector3D& center, float radius, int steps);

/// The soup moved by a matrix, which may mirror: normals come out pointing outwards and triangles keep their side.
TriangleSoup transformed(const TriangleSoup& soup, const QMatrix4x4& matrix);

/// Two squares side by side, each with a set of one red tile, which only some texture managers have.
QString writeTiledSquares(const ModelFolder& folder);

void append(TriangleSoup& soup, const TriangleSoup& more);
