// SPDX-License-Identifier: MIT
#include "RayCast.h"

#include <Terminal.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace deeppick
{

namespace
{

constexpr double kHuge = std::numeric_limits<double>::infinity();
constexpr double kSinglePrecision = 1.0 / (1 << 24);

Vector3 operator+(const Vector3& a, const Vector3& b)
{
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}

Vector3 operator-(const Vector3& a, const Vector3& b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

Vector3 operator*(double factor, const Vector3& a)
{
    return {factor * a.x, factor * a.y, factor * a.z};
}

double dot(const Vector3& a, const Vector3& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

Vector3 cross(const Vector3& a, const Vector3& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

double length(const Vector3& a)
{
    return std::sqrt(dot(a, a));
}

Vector3 normalized(const Vector3& a)
{
    const double size = length(a);
    return size > 0.0 ? (1.0 / size) * a : Vector3{};
}

Vector3 toVector3(const QVector4D& a)
{
    return {double(a.x()), double(a.y()), double(a.z())};
}

using Matrix3 = std::array<Vector3, 3>; // rows

Vector3 operator*(const Matrix3& m, const Vector3& a)
{
    return {dot(m[0], a), dot(m[1], a), dot(m[2], a)};
}

Matrix3 rotationOf(const QMatrix4x4& m)
{
    Matrix3 result;
    for (int i = 0; i < 3; ++i)
        result[std::size_t(i)] = {double(m(i, 0)), double(m(i, 1)), double(m(i, 2))};
    return result;
}

/// The inverse, transposed, times the determinant.
Matrix3 cofactors(const Matrix3& m)
{
    return {cross(m[1], m[2]), cross(m[2], m[0]), cross(m[0], m[1])};
}

/// Which turns normals as `m` turns surfaces, but for their length.
Matrix3 normalMatrix(const Matrix3& m)
{
    const Matrix3 c = cofactors(m);
    const double sign = dot(m[0], c[0]) < 0.0 ? -1.0 : 1.0;
    return {sign * c[0], sign * c[1], sign * c[2]};
}

struct Point
{
    double x;
    double y;
};

double distanceToSegment(const Point& a, const Point& b, const Point& p)
{
    const double dx = b.x - a.x;
    const double dy = b.y - a.y;
    const double square = dx * dx + dy * dy;
    const double share = square > 0.0 ? std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / square, 0.0, 1.0) : 0.0;
    return std::hypot(a.x + share * dx - p.x, a.y + share * dy - p.y);
}

/// From `p` to the triangle's nearest edge; negative from outside.
double distanceInside(const std::array<Point, 3>& corners, const Point& p)
{
    double nearest = kHuge;
    int left = 0;
    int right = 0;
    for (std::size_t i = 0; i < 3; ++i)
    {
        const Point& a = corners[i];
        const Point& b = corners[(i + 1) % 3];
        const double side = (b.x - a.x) * (p.y - a.y) - (b.y - a.y) * (p.x - a.x);
        left += side > 0.0 ? 1 : 0;
        right += side < 0.0 ? 1 : 0;
        nearest = std::min(nearest, distanceToSegment(a, b, p));
    }
    return left == 3 || right == 3 ? nearest : -nearest;
}

} // namespace

/// A triangle with what its corners have.
struct RayCast::Surface
{
    std::array<Vector3, 3> positions; // scene space
    std::array<Vector3, 3> normals;   // as the matrix leaves them
    std::array<QVector2D, 3> texCoords;

    /// Where a ray meets the triangle's plane: distance in lengths of its direction, and the shares of the corners.
    /// False for a ray along the plane.
    bool meet(const Ray& ray, double& distance, std::array<double, 3>& shares) const
    {
        const Vector3 ab = positions[1] - positions[0];
        const Vector3 ac = positions[2] - positions[0];
        const Vector3 across = cross(ray.direction, ac);
        const double determinant = dot(ab, across);
        if (std::abs(determinant) <= 1e-14 * length(ab) * length(ac) * length(ray.direction))
            return false;
        const Vector3 toOrigin = ray.origin - positions[0];
        const Vector3 other = cross(toOrigin, ab);
        shares[1] = dot(toOrigin, across) / determinant;
        shares[2] = dot(ray.direction, other) / determinant;
        shares[0] = 1.0 - shares[1] - shares[2];
        distance = dot(ac, other) / determinant;
        return true;
    }

    Vector3 normalAt(const std::array<double, 3>& shares) const
    {
        return shares[0] * normals[0] + shares[1] * normals[1] + shares[2] * normals[2];
    }
};

RayCast::RayCast(const PickScene& scene, const PickView& view, int subpixelBits)
    : _scene(scene),
      _view(view),
      _reach(std::ldexp(1.0, -std::clamp(subpixelBits, 4, 24)) +
             kRounding * std::max(view.size.width(), view.size.height()))
{
    const Matrix3 rotation = rotationOf(view.viewFromScene);
    const Matrix3 inverted = cofactors(rotation); // but for rows and columns, and the determinant
    const double determinant = dot(rotation[0], inverted[0]);
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 4; ++column)
            _viewFromScene[row][column] = double(view.viewFromScene(row, column));
    for (std::size_t i = 0; i < 3; ++i)
    {
        const Vector3 column = (1.0 / determinant) * inverted[i];
        _sceneFromView[0][i] = column.x;
        _sceneFromView[1][i] = column.y;
        _sceneFromView[2][i] = column.z;
    }
    const auto along = [&](int row)
    {
        return -(_sceneFromView[row][0] * _viewFromScene[0][3] + _sceneFromView[row][1] * _viewFromScene[1][3] +
                 _sceneFromView[row][2] * _viewFromScene[2][3]);
    };
    _eye = {along(0), along(1), along(2)};
}

/// Through a place in the picture, in pixels from the top left. Its direction has length 1 along the view.
RayCast::Ray RayCast::rayThrough(double x, double y) const
{
    const double viewX = (2.0 * x / _view.size.width() - 1.0) / double(_view.clipFromView(0, 0));
    const double viewY = (1.0 - 2.0 * y / _view.size.height()) / double(_view.clipFromView(1, 1));
    const auto along = [&](int row)
    { return _sceneFromView[row][0] * viewX + _sceneFromView[row][1] * viewY - _sceneFromView[row][2]; };
    return {_eye, {along(0), along(1), along(2)}};
}

/// Of a place so far from the eye, along the view: 0 at the near plane, 1 at the far plane.
double RayCast::depthAt(double distance) const
{
    const auto a = double(_view.clipFromView(2, 2));
    const auto b = double(_view.clipFromView(2, 3));
    return 0.5 + 0.5 * (b / distance - a);
}

std::vector<RayCast::Corner> RayCast::cornersOf(const PickDraw& draw) const
{
    const QMatrix4x4& matrix = draw.sceneFromMesh;
    const Matrix3 rotation = rotationOf(matrix);
    const Vector3 shift = toVector3(matrix.column(3));
    std::vector<Corner> corners(draw.vertexCount);
    for (std::size_t i = 0; i < corners.size(); ++i)
    {
        Corner& corner = corners[i];
        corner.position = rotation * toVector3(_scene.positions[draw.baseVertex + i]) + shift;
        const auto view = [&](int row)
        {
            return _viewFromScene[row][0] * corner.position.x + _viewFromScene[row][1] * corner.position.y +
                   _viewFromScene[row][2] * corner.position.z + _viewFromScene[row][3];
        };
        const double distance = -view(2);
        corner.isInFront = distance > 0.0;
        corner.x = 0.5 * _view.size.width() * (1.0 + double(_view.clipFromView(0, 0)) * view(0) / distance);
        corner.y = 0.5 * _view.size.height() * (1.0 - double(_view.clipFromView(1, 1)) * view(1) / distance);
    }
    return corners;
}

std::vector<RayHit> RayCast::cast(const QPoint& pixel) const
{
    vrkview::ProgressLine progress;
    std::vector<RayHit> hits;
    for (std::size_t draw = 0; draw < _scene.draws.size(); ++draw)
    {
        castDraw(draw, pixel, hits);
        progress.show(QStringLiteral("casting the ray"), float(draw + 1) / float(_scene.draws.size()));
    }
    std::sort(hits.begin(), hits.end(), [](const RayHit& a, const RayHit& b) { return a.depth < b.depth; });
    return hits;
}

void RayCast::castDraw(std::size_t drawIndex, const QPoint& pixel, std::vector<RayHit>& hits) const
{
    const PickDraw& draw = _scene.draws[drawIndex];
    const double x = pixel.x() + 0.5;
    const double y = pixel.y() + 0.5;
    const std::vector<Corner> corners = cornersOf(draw);
    const Matrix3 forNormals = normalMatrix(rotationOf(draw.sceneFromMesh));
    for (std::uint32_t first = 0; first + 2 < draw.indexCount; first += 3)
    {
        std::array<std::size_t, 3> indices;
        std::array<Point, 3> places;
        bool isInFront = true;
        for (std::size_t i = 0; i < 3; ++i)
        {
            indices[i] = std::size_t(_scene.indices[draw.firstIndex + first + i]);
            places[i] = {corners[indices[i]].x, corners[indices[i]].y};
            isInFront = isInFront && corners[indices[i]].isInFront;
        }
        // Most triangles are elsewhere in the picture.
        const auto [left, right] = std::minmax({places[0].x, places[1].x, places[2].x});
        const auto [top, bottom] = std::minmax({places[0].y, places[1].y, places[2].y});
        if (isInFront && (x < left - _reach || x > right + _reach || y < top - _reach || y > bottom + _reach))
            continue;
        RayHit hit;
        hit.draw = std::uint32_t(drawIndex);
        hit.triangle = first / 3;
        hit.inside = isInFront ? distanceInside(places, {x, y}) : 0.0;
        if (hit.inside < -_reach)
            continue;
        Surface surface;
        for (std::size_t i = 0; i < 3; ++i)
        {
            surface.positions[i] = corners[indices[i]].position;
            surface.normals[i] = forNormals * toVector3(_scene.normals[draw.baseVertex + indices[i]]);
            surface.texCoords[i] = _scene.texCoords[draw.baseVertex + indices[i]];
        }
        addHit(surface, x, y, hit, hits);
    }
}

void RayCast::addHit(const Surface& surface, double x, double y, RayHit hit, std::vector<RayHit>& hits) const
{
    double distance = 0.0;
    std::array<double, 3> shares;
    const Ray ray = rayThrough(x, y);
    if (!surface.meet(ray, distance, shares))
    {
        // Seen from its edge: it may leave a fragment, of which nothing can be said.
        hit.inside = std::min(hit.inside, 0.0);
        hit.allowed = {kHuge, kHuge, kHuge, kHuge};
        hits.push_back(hit);
        return;
    }
    // A triangle that reaches behind the eye has no edges in the picture; whether it is met the shares alone say.
    if (hit.inside == 0.0 && *std::min_element(shares.begin(), shares.end()) < -kRounding)
        return;
    hit.depth = depthAt(distance);
    // What lies beyond the planes is cut off. It takes an eye within the scene to have such.
    if (distance <= 0.0 || hit.depth < 0.0 || hit.depth > 1.0)
        return;
    hit.position = double(_scene.worldFromScene) * (ray.origin + distance * ray.direction);
    hit.normal = normalized(surface.normalAt(shares));
    for (std::size_t i = 0; i < 3; ++i)
    {
        hit.u += shares[i] * double(surface.texCoords[i].x());
        hit.v += shares[i] * double(surface.texCoords[i].y());
    }
    hit.allowed = allowedAt(surface, hit, shares, x, y);
    hits.push_back(hit);
}

RayHit::Amounts RayCast::allowedAt(const Surface& surface, const RayHit& hit, const std::array<double, 3>& shares,
                                   double x, double y) const
{
    const auto world = double(_scene.worldFromScene);
    const Vector3 position = (1.0 / world) * hit.position;

    // How far from there the plane of the triangle is within reach. Depths are of the size of 1.
    double shift = 0.0;
    double depthShift = 0.0;
    for (const auto& [dx, dy] : {Point{_reach, 0.0}, Point{-_reach, 0.0}, Point{0.0, _reach}, Point{0.0, -_reach}})
    {
        double distance = 0.0;
        std::array<double, 3> others;
        const Ray ray = rayThrough(x + dx, y + dy);
        if (!surface.meet(ray, distance, others) || distance <= 0.0)
            return {kHuge, kHuge, kHuge, kHuge};
        shift = std::max(shift, length(ray.origin + distance * ray.direction - position));
        depthShift = std::max(depthShift, std::abs(depthAt(distance) - hit.depth));
    }
    shift += kRounding * (length(position - _eye) + length(position) + double(_scene.radius));
    depthShift += kRounding;

    // So much the shares of the corners are off for that: the heights of a triangle are where shares go from 0 to 1.
    // And dot products of its sides cancel each other the more the thinner it is.
    const Vector3 sides[3] = {surface.positions[2] - surface.positions[1], surface.positions[0] - surface.positions[2],
                              surface.positions[1] - surface.positions[0]};
    const double area = length(cross(sides[1], sides[2]));
    const double sine = area / (length(sides[1]) * length(sides[2]));
    const double thinness =
        8.0 * kSinglePrecision * length(sides[0]) / (std::min(length(sides[1]), length(sides[2])) * sine * sine);
    const Vector3 normal = surface.normalAt(shares);
    RayHit::Amounts allowed{world * shift, kRounding, kRounding, depthShift};
    for (std::size_t i = 0; i < 3; ++i)
    {
        const double share = shift * length(sides[i]) / area + thinness + 8.0 * kSinglePrecision;
        const Vector3 toCorner = surface.normals[i] - normal;
        const QVector2D& texCoord = surface.texCoords[i];
        allowed.normal += share * length(toCorner) / std::max(length(normal), 1e-30);
        allowed.texCoord += share * std::hypot(double(texCoord.x()) - hit.u, double(texCoord.y()) - hit.v) +
                            kRounding * std::hypot(double(texCoord.x()), double(texCoord.y()));
    }
    return allowed;
}

} // namespace deeppick
