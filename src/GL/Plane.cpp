// SPDX-License-Identifier: MIT
#include "Plane.h"

#include "VectorNormalize.h"

namespace Harrow::Vrk
{

Plane::Plane(const QVector3D& planeNormal, const QVector3D& point)
    : normal(planeNormal), distance(QVector3D::dotProduct(planeNormal, point))
{
}

Plane::Plane(const QVector3D& a, const QVector3D& b, const QVector3D& c)
    : Plane(normalize(QVector3D::crossProduct(b - a, c - a)), a)
{
}

int Plane::WhichSide(const QVector3D& point) const
{
    const float d = this->DistanceTo(point);
    if (d < 0.0f)
        return -1;
    return d > 0.0f ? 1 : 0;
}

QVector3D planeIntersection(const Plane& a, const Plane& b, const Plane& c)
{
    // A point on the line common to b and c. In double, as `den` is a small difference where the two are nearly
    // parallel. Where they are parallel it is 0, and the floating-point division then gives what is infinite or not a
    // number.
    const QVector3D dir = normalize(QVector3D::crossProduct(b.normal, c.normal));
    const double dotbc = QVector3D::dotProduct(b.normal, c.normal);
    const double den = 1.0 - dotbc * dotbc;
    const double kb = (b.distance - c.distance * dotbc) / den;
    const double kc = (c.distance - b.distance * dotbc) / den;
    const QVector3D base = b.normal * static_cast<float>(kb) + c.normal * static_cast<float>(kc);

    // Along that line to a.
    const float s =
        QVector3D::dotProduct(a.normal * a.distance - base, a.normal) / QVector3D::dotProduct(dir, a.normal);
    return base + dir * s;
}

} // namespace Harrow::Vrk
