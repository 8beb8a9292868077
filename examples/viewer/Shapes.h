// SPDX-License-Identifier: MIT
// Generators of triangle meshes: surfaces of revolution, boxes with round edges, knots. Each gives unit normals that
// point outwards, triangles that run counter-clockwise seen from outside, and texture coordinates.
#pragma once

#include "Model.h"

#include <vector>

namespace vrkview
{

/// One point of an outline that turns around +y: distance from the axis, height, and the outward normal of the outline
/// there (need not be unit length). An edge is two points at one place with two normals.
struct ProfilePoint
{
    float radius;
    float height;
    float normalOut;
    float normalUp;
};

using Profile = std::vector<ProfilePoint>;

/// The outline through `corners` (radius, height), with a sharp edge at each of them. Walking along it, outside is on
/// the right, so an outline that starts at the axis on the ground runs outwards, up and back in.
Profile sharpProfile(const std::vector<QVector2D>& corners);

/// Turns `profile` around +y from `startDegrees` through `sweepDegrees` in `steps` steps; angle 0 is +x, and grows
/// towards -z. A sweep below 360 of an outline that is a closed convex loop gets two end faces if `capped`.
/// Texture coordinates are lengths: around, at the largest radius, and along the outline; on level faces and on end
/// faces those of the plane.
Mesh revolve(const Profile& profile, int steps, float startDegrees = 0.0f, float sweepDegrees = 360.0f,
             bool capped = false);

/// Radius 1 around the origin.
Mesh makeSphere(int steps);

/// Lies in the plane y = 0 around the origin.
Mesh makeTorus(float ringRadius, float tubeRadius, int steps);

/// Around the origin; edges and corners are rounded by `edgeRadius`, at most the smallest half size.
Mesh makeRoundedBox(const QVector3D& halfSize, float edgeRadius, int edgeSteps);

/// A tube along the trefoil knot, axis +y, around the origin, about 3 `scale` in radius. Right-handed and not its
/// own mirror image.
Mesh makeTrefoilKnot(float scale, float tubeRadius, int steps, int tubeSteps);

/// Scales texture coordinates that are lengths so that a picture shows `repeats` times in a unit; along x it is a whole
/// number of times in all, so that what goes around meets itself.
void repeatTexCoords(Mesh& mesh, float repeats);

} // namespace vrkview
