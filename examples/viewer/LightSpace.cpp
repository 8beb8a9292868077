// SPDX-License-Identifier: MIT
#include "LightSpace.h"

#include <QVector4D>

#include <cmath>

namespace vrkview
{

namespace
{

// How far the library's projection of a spot goes, in units of the light's space.
constexpr float kSpotRange = 100.0f;

/// Where z is the third axis, and a place in the middle.
QMatrix4x4 transformAlong(const QVector3D& place, const QVector3D& z, float scale)
{
    const QVector3D beside = std::abs(z.y()) < 0.99f ? QVector3D(0, 1, 0) : QVector3D(1, 0, 0);
    const QVector3D x = QVector3D::crossProduct(beside, z).normalized();
    const QVector3D y = QVector3D::crossProduct(z, x);
    QMatrix4x4 matrix;
    matrix.setColumn(0, QVector4D(scale * x, 0.0f));
    matrix.setColumn(1, QVector4D(scale * y, 0.0f));
    matrix.setColumn(2, QVector4D(scale * z, 0.0f));
    matrix.setColumn(3, QVector4D(place, 1.0f));
    return matrix;
}

} // namespace

QMatrix4x4 spaceOfSun(const QVector3D& place, const QVector3D& along)
{
    return transformAlong(place, along, 1.0f);
}

QMatrix4x4 spaceOfSpot(const QVector3D& place, const QVector3D& along, float farthest)
{
    return transformAlong(place, -along, farthest / kSpotRange);
}

QMatrix4x4 spaceOfPoint(const QVector3D& place)
{
    QMatrix4x4 matrix;
    matrix.translate(place);
    return matrix;
}

} // namespace vrkview
