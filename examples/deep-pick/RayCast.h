// SPDX-License-Identifier: MIT
// What a ray through the middle of a pixel meets, computed on the CPU in double precision from the same triangles, and
// how far off single precision and a rasteriser may be from it. Knows no OpenGL.
#pragma once

#include "PickScene.h"

#include <QPoint>

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace deeppick
{

struct Vector3
{
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

/// A surface that the ray meets.
struct RayHit
{
    /// Of each quantity one number; a distance where it is a vector.
    struct Amounts
    {
        double position = 0.0;
        double normal = 0.0;
        double texCoord = 0.0;
        double depth = 0.0;
    };

    std::uint32_t draw = 0;
    std::uint32_t triangle = 0; ///< of the draw, from 0
    Vector3 position;           ///< world space
    Vector3 normal;             ///< world space, of length 1, or 0 where the model has none
    double u = 0.0;
    double v = 0.0;
    double depth = 0.0;

    /// In pixels, from the pixel's middle to the nearest edge of the triangle; negative from outside of it.
    double inside = 0.0;
    /// How far off a fragment of this triangle may be.
    Amounts allowed;
};

/// The tolerance is no number of its own but follows from two. A rasteriser moves the corners of triangles to a grid in
/// the picture, so what it finds at a pixel is what exact triangles have within `reach` of there: much the same on
/// a surface that is seen from the front, and another place on one that is seen from its edge. And single precision
/// leaves `kRounding` of the distances involved, more in the coordinates within a triangle the thinner it is.
class RayCast
{
public:
    static constexpr double kRounding = 1.0e-6;

    /// `scene` must live as long. `subpixelBits` are those of the rasteriser's grid.
    RayCast(const PickScene& scene, const PickView& view, int subpixelBits);

    /// Pixels.
    double reach() const
    {
        return _reach;
    }

    /// All triangles within `reach` of the pixel's middle, which is counted from the top left, front to back.
    std::vector<RayHit> cast(const QPoint& pixel) const;

private:
    struct Ray
    {
        Vector3 origin;
        Vector3 direction;
    };
    struct Corner
    {
        Vector3 position; // scene space
        double x = 0.0;   // pixels
        double y = 0.0;
        bool isInFront = false; // of the eye, so that it has a place in the picture
    };
    struct Surface;

    Ray rayThrough(double x, double y) const;
    double depthAt(double distance) const;
    std::vector<Corner> cornersOf(const PickDraw& draw) const;
    void castDraw(std::size_t draw, const QPoint& pixel, std::vector<RayHit>& hits) const;
    void addHit(const Surface& surface, double x, double y, RayHit hit, std::vector<RayHit>& hits) const;
    RayHit::Amounts allowedAt(const Surface& surface, const RayHit& hit, const std::array<double, 3>& shares, double x,
                              double y) const;

    const PickScene& _scene;
    PickView _view;
    double _reach;
    double _viewFromScene[3][4]; // rigid
    double _sceneFromView[3][3]; // of directions
    Vector3 _eye;
};

} // namespace deeppick
