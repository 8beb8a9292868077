// SPDX-License-Identifier: MIT
#include "Model.h"

#include <algorithm>
#include <cmath>

namespace vrkview
{

namespace
{

// Shaders square distances in single precision; outside of this the squares, and with them the picture, are lost.
constexpr float kLargestRadius = 1.0e15f;
constexpr float kSmallestRadius = 1.0e-15f;

// Half as many directions as there are extremes: opposite directions share an axis.
constexpr int kFittingAxes = 48;

// Directions spread evenly over the upper half of the sphere, along a spiral.
std::vector<QVector3D> fittingAxes()
{
    constexpr double kGoldenAngle = 2.39996322972865332;
    std::vector<QVector3D> axes;
    for (int i = 0; i < kFittingAxes; ++i)
    {
        const double up = (i + 0.5) / kFittingAxes;
        const double out = std::sqrt(1.0 - up * up);
        axes.emplace_back(float(out * std::cos(kGoldenAngle * i)), float(up), float(out * std::sin(kGoldenAngle * i)));
    }
    return axes;
}

// The points that lie farthest along an axis, either way.
struct Extent
{
    QVector3D axis;
    QVector3D lowest;
    QVector3D highest;
    float lowestAt = std::numeric_limits<float>::infinity();
    float highestAt = -std::numeric_limits<float>::infinity();

    void add(const QVector3D& point)
    {
        const float at = QVector3D::dotProduct(axis, point);
        if (at < lowestAt)
        {
            lowestAt = at;
            lowest = point;
        }
        if (at > highestAt)
        {
            highestAt = at;
            highest = point;
        }
    }
};

bool isFinite(const QVector3D& point)
{
    return std::isfinite(point.x()) && std::isfinite(point.y()) && std::isfinite(point.z());
}

} // namespace

void Bounds::add(const QVector3D& point)
{
    for (int axis = 0; axis < 3; ++axis)
    {
        minimum[axis] = std::min(minimum[axis], point[axis]);
        maximum[axis] = std::max(maximum[axis], point[axis]);
    }
}

bool Bounds::isEmpty() const
{
    return minimum.x() > maximum.x() || minimum.y() > maximum.y() || minimum.z() > maximum.z();
}

QVector3D Bounds::center() const
{
    return 0.5f * minimum + 0.5f * maximum;
}

float Bounds::radius() const
{
    const QVector3D half = 0.5f * maximum - 0.5f * minimum;
    return static_cast<float>(std::hypot(double(half.x()), double(half.y()), double(half.z())));
}

std::size_t Model::triangleCount() const
{
    std::size_t count = 0;
    for (const Instance& instance : instances)
        count += meshes[instance.mesh].indices.size() / 3;
    return count;
}

void Model::measure()
{
    bounds = Bounds();
    extremes.clear();
    std::vector<Extent> extents;
    for (const QVector3D& axis : fittingAxes())
        extents.push_back({axis, {}, {}});

    for (const Instance& instance : instances)
    {
        for (const QVector3D& position : meshes[instance.mesh].positions)
        {
            const QVector3D point = instance.worldFromModel.map(position);
            bounds.add(point);
            for (Extent& extent : extents)
                extent.add(point);
        }
    }
    if (bounds.isEmpty())
        return;
    for (const Extent& extent : extents)
        extremes.insert(extremes.end(), {extent.lowest, extent.highest});
}

QString Model::fault() const
{
    if (triangleCount() == 0)
        return QStringLiteral("it holds no triangles");

    // Bounds alone would not do: comparisons with NaN are false, so such a vertex leaves them as they were.
    for (const Instance& instance : instances)
        for (const QVector3D& position : meshes[instance.mesh].positions)
            if (!isFinite(instance.worldFromModel.map(position)))
                return QStringLiteral("a coordinate is not a finite number");

    if (!(bounds.radius() < kLargestRadius) || !(bounds.center().length() < kLargestRadius))
        return QStringLiteral("its coordinates are too large to be drawn");
    if (bounds.radius() > 0.0f && bounds.radius() < kSmallestRadius)
        return QStringLiteral("it is too small to be drawn");
    return {};
}

} // namespace vrkview
