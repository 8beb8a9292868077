// SPDX-License-Identifier: MIT
#include "Shapes.h"

#include <algorithm>
#include <cmath>

namespace vrkview
{

namespace
{

constexpr float kPi = 3.14159265358979f;

// Appends the triangles of a grid whose vertices were appended row by row. Counter-clockwise seen from the side from
// which columns run to the right and rows run up.
void addGrid(Mesh& mesh, std::uint32_t first, int rows, int columns)
{
    for (int row = 0; row + 1 < rows; ++row)
    {
        for (int column = 0; column + 1 < columns; ++column)
        {
            const std::uint32_t corner = first + std::uint32_t(row * columns + column);
            const std::uint32_t above = corner + std::uint32_t(columns);
            mesh.indices.insert(mesh.indices.end(), {corner, corner + 1, above + 1, corner, above + 1, above});
        }
    }
}

// Triangles whose corners meet, as at the poles of a sphere, cover nothing; the grid made them, this drops them.
void dropEmptyTriangles(Mesh& mesh)
{
    std::vector<std::uint32_t> kept;
    kept.reserve(mesh.indices.size());
    for (std::size_t i = 0; i < mesh.indices.size(); i += 3)
    {
        const QVector3D& a = mesh.positions[mesh.indices[i]];
        const QVector3D& b = mesh.positions[mesh.indices[i + 1]];
        const QVector3D& c = mesh.positions[mesh.indices[i + 2]];
        if (QVector3D::crossProduct(b - a, c - a).length() > 1.0e-9f)
            kept.insert(kept.end(), {mesh.indices[i], mesh.indices[i + 1], mesh.indices[i + 2]});
    }
    mesh.indices = std::move(kept);
}

// The direction from the axis at an angle in radians; 0 is +x, growing towards -z.
QVector3D radial(float angle)
{
    return {std::cos(angle), 0.0f, -std::sin(angle)};
}

// The angle in radians of a step around a circle; the step that comes round to the start has the start's angle.
float around(int step, int steps)
{
    return 2.0f * kPi * float(step % steps) / float(steps);
}

// A flat face across a turned outline at `angle`; `side` is 1 where the sweep ends and -1 where it starts.
void addCap(Mesh& mesh, const Profile& profile, float angle, float side)
{
    const QVector3D out = radial(angle);
    const QVector3D normal = side * QVector3D(-std::sin(angle), 0.0f, -std::cos(angle));
    const auto first = std::uint32_t(mesh.positions.size());
    for (const ProfilePoint& point : profile)
    {
        mesh.positions.push_back(point.radius * out + QVector3D(0.0f, point.height, 0.0f));
        mesh.normals.push_back(normal);
        mesh.texCoords.emplace_back(point.radius, point.height);
    }
    for (std::uint32_t i = 1; i + 1 < profile.size(); ++i)
    {
        if (side > 0.0f)
            mesh.indices.insert(mesh.indices.end(), {first, first + i + 1, first + i});
        else
            mesh.indices.insert(mesh.indices.end(), {first, first + i, first + i + 1});
    }
}

// Where the lines of a box face's grid run on one axis: dense in the rounded ends, so that each step of an end turns
// the normal by the same angle, and one step across the flat part.
std::vector<float> roundedAxis(float half, float edgeRadius, int edgeSteps)
{
    std::vector<float> lines;
    for (int i = 0; i <= edgeSteps; ++i)
        lines.push_back(-(half - edgeRadius) -
                        edgeRadius * std::tan(0.25f * kPi * float(edgeSteps - i) / float(edgeSteps)));
    for (int i = 0; i <= edgeSteps; ++i)
        lines.push_back((half - edgeRadius) + edgeRadius * std::tan(0.25f * kPi * float(i) / float(edgeSteps)));
    return lines;
}

float largestRadius(const Profile& profile)
{
    float largest = 0.0f;
    for (const ProfilePoint& point : profile)
        largest = std::max(largest, point.radius);
    return largest;
}

// How long the outline is up to each of its points.
std::vector<float> lengthsAlong(const Profile& profile)
{
    std::vector<float> lengths{0.0f};
    for (std::size_t i = 1; i < profile.size(); ++i)
        lengths.push_back(lengths.back() + std::hypot(profile[i].radius - profile[i - 1].radius,
                                                      profile[i].height - profile[i - 1].height));
    return lengths;
}

// Whether a point belongs to a level face: it and a neighbour look straight up, or down, from the same height.
bool isLevel(const Profile& profile, std::size_t index)
{
    const auto isAlike = [&](std::size_t other)
    {
        return profile[other].normalOut == 0.0f && profile[other].height == profile[index].height &&
               profile[other].normalUp * profile[index].normalUp > 0.0f;
    };
    return profile[index].normalOut == 0.0f &&
           ((index > 0 && isAlike(index - 1)) || (index + 1 < profile.size() && isAlike(index + 1)));
}

QVector3D trefoil(float scale, float t)
{
    const float ring = (2.0f + std::cos(3.0f * t)) * scale;
    return {ring * std::cos(2.0f * t), std::sin(3.0f * t) * scale, -ring * std::sin(2.0f * t)};
}

} // namespace

Profile sharpProfile(const std::vector<QVector2D>& corners)
{
    Profile profile;
    for (std::size_t i = 0; i + 1 < corners.size(); ++i)
    {
        const QVector2D along = (corners[i + 1] - corners[i]).normalized();
        profile.push_back({corners[i].x(), corners[i].y(), along.y(), -along.x()});
        profile.push_back({corners[i + 1].x(), corners[i + 1].y(), along.y(), -along.x()});
    }
    return profile;
}

Mesh revolve(const Profile& profile, int steps, float startDegrees, float sweepDegrees, bool capped)
{
    Mesh mesh;
    const float largest = largestRadius(profile);
    const std::vector<float> lengths = lengthsAlong(profile);
    for (std::size_t row = 0; row < profile.size(); ++row)
    {
        const ProfilePoint& point = profile[row];
        const bool level = isLevel(profile, row);
        for (int step = 0; step <= steps; ++step)
        {
            const float turn = float(step) / float(steps);
            // The last row of a full turn stands on the first to the bit, so that no crack shows.
            const float angle = sweepDegrees == 360.0f ? around(step, steps) : turn * sweepDegrees * kPi / 180.0f;
            const QVector3D out = radial(startDegrees * kPi / 180.0f + angle);
            mesh.positions.push_back(point.radius * out + QVector3D(0.0f, point.height, 0.0f));
            mesh.normals.push_back((point.normalOut * out + QVector3D(0.0f, point.normalUp, 0.0f)).normalized());
            mesh.texCoords.push_back(level ? point.radius * QVector2D(out.x(), -out.z())
                                           : QVector2D(turn * sweepDegrees * kPi / 180.0f * largest, lengths[row]));
        }
    }
    addGrid(mesh, 0, int(profile.size()), steps + 1);
    if (capped)
    {
        addCap(mesh, profile, startDegrees * kPi / 180.0f, -1.0f);
        addCap(mesh, profile, startDegrees * kPi / 180.0f + sweepDegrees * kPi / 180.0f, 1.0f);
    }
    dropEmptyTriangles(mesh);
    return mesh;
}

Mesh makeSphere(int steps)
{
    Profile profile;
    for (int i = 0; i <= steps; ++i)
    {
        const float angle = kPi * (float(i) / float(steps) - 0.5f);
        const float radius = i == 0 || i == steps ? 0.0f : std::cos(angle);
        profile.push_back({radius, std::sin(angle), radius, std::sin(angle)});
    }
    return revolve(profile, 2 * steps);
}

Mesh makeTorus(float ringRadius, float tubeRadius, int steps)
{
    Profile profile;
    for (int i = 0; i <= steps; ++i)
    {
        const float angle = around(i, steps);
        const float out = std::cos(angle);
        const float up = std::sin(angle);
        profile.push_back({ringRadius + tubeRadius * out, tubeRadius * up, out, up});
    }
    return revolve(profile, 2 * steps);
}

Mesh makeRoundedBox(const QVector3D& halfSize, float edgeRadius, int edgeSteps)
{
    const float smallest = std::min({halfSize.x(), halfSize.y(), halfSize.z()});
    const float radius = std::clamp(edgeRadius, 0.0f, smallest);
    const QVector3D core = halfSize - QVector3D(radius, radius, radius);

    Mesh mesh;
    for (int axis = 0; axis < 3; ++axis)
    {
        const int u = (axis + 1) % 3;
        const int v = (axis + 2) % 3;
        const std::vector<float> columns = roundedAxis(halfSize[u], radius, edgeSteps);
        const std::vector<float> rows = roundedAxis(halfSize[v], radius, edgeSteps);
        for (const float side : {1.0f, -1.0f})
        {
            const auto first = std::uint32_t(mesh.positions.size());
            for (const float row : rows)
            {
                for (const float column : columns)
                {
                    // A point of the plain box, drawn in onto the sphere around the nearest point of the core.
                    QVector3D outer;
                    outer[axis] = side * halfSize[axis];
                    outer[u] = side * column; // mirrored with the side, so that both faces wind outwards
                    outer[v] = row;
                    QVector3D inner;
                    for (int i = 0; i < 3; ++i)
                        inner[i] = std::clamp(outer[i], -core[i], core[i]);
                    const QVector3D normal = (outer - inner).normalized();
                    mesh.positions.push_back(inner + radius * normal);
                    mesh.normals.push_back(normal);
                    mesh.texCoords.emplace_back(0.5f + 0.5f * column / halfSize[u], 0.5f + 0.5f * row / halfSize[v]);
                }
            }
            addGrid(mesh, first, int(rows.size()), int(columns.size()));
        }
    }
    dropEmptyTriangles(mesh);
    return mesh;
}

Mesh makeTrefoilKnot(float scale, float tubeRadius, int steps, int tubeSteps)
{
    Mesh mesh;
    for (int step = 0; step <= steps; ++step)
    {
        const float t = around(step, steps);
        const float h = 1.0e-2f;
        const QVector3D center = trefoil(scale, t);
        const QVector3D ahead = trefoil(scale, t + h);
        const QVector3D behind = trefoil(scale, t - h);
        const QVector3D along = (ahead - behind).normalized();
        // The curve bends everywhere, so its own curvature gives a frame that comes back to itself after one round.
        const QVector3D bend = ahead + behind - 2.0f * center;
        const QVector3D side = QVector3D::crossProduct(along, bend).normalized();
        const QVector3D out = QVector3D::crossProduct(side, along);
        for (int tube = 0; tube <= tubeSteps; ++tube)
        {
            const float angle = around(tube, tubeSteps);
            const QVector3D normal = std::cos(angle) * out + std::sin(angle) * side;
            mesh.positions.push_back(center + tubeRadius * normal);
            mesh.normals.push_back(normal.normalized());
            mesh.texCoords.emplace_back(float(tube) / float(tubeSteps), float(step) / float(steps));
        }
    }
    addGrid(mesh, 0, steps + 1, tubeSteps + 1);
    return mesh;
}

void repeatTexCoords(Mesh& mesh, float repeats)
{
    float around = 0.0f;
    for (const QVector2D& texCoord : mesh.texCoords)
        around = std::max(around, texCoord.x());
    const float whole = std::max(1.0f, std::round(around * repeats));
    for (QVector2D& texCoord : mesh.texCoords)
        texCoord *= QVector2D(around > 0.0f ? whole / around : repeats, repeats);
}

} // namespace vrkview
