// SPDX-License-Identifier: MIT
#include "ZelRenderCubemapMatrices.h"

#include "CubemapFaces.h"

#include <algorithm>

namespace Harrow::Vrk
{
namespace
{

// ---- faces in space ------------------------------------------------------------------------------------------------

// Column by column, as OpenGL takes them.
constexpr float kFaceNormalColumns[kCubemapFaces][3][3] = {
    {{1, 0, 0}, {0, 0, -1}, {0, -1, 0}},  // +X
    {{-1, 0, 0}, {0, 0, 1}, {0, -1, 0}},  // -X
    {{0, 1, 0}, {1, 0, 0}, {0, 0, 1}},    // +Y
    {{0, -1, 0}, {1, 0, 0}, {0, 0, -1}},  // -Y
    {{0, 0, 1}, {1, 0, 0}, {0, -1, 0}},   // +Z
    {{0, 0, -1}, {-1, 0, 0}, {0, -1, 0}}, // -Z
};

// ---- cells of a cross ----------------------------------------------------------------------------------------------

struct Cell
{
    int column;
    int row;
};

/// Where a face lies, and along which half edges of the cell (u, v) each axis of space runs.
struct CrossFace
{
    Cell cell;
    float axes[3][2];
};

constexpr CrossFace kLandscape[kCubemapFaces] = {
    {{2, 1}, {{0, 0}, {0, -1}, {-1, 0}}}, // +X
    {{0, 1}, {{0, 0}, {0, -1}, {1, 0}}},  // -X
    {{1, 0}, {{1, 0}, {0, 0}, {0, 1}}},   // +Y
    {{1, 2}, {{1, 0}, {0, 0}, {0, -1}}},  // -Y
    {{1, 1}, {{1, 0}, {0, -1}, {0, 0}}},  // +Z
    {{3, 1}, {{-1, 0}, {0, -1}, {0, 0}}}, // -Z
};

constexpr CrossFace kPortrait[kCubemapFaces] = {
    {{2, 1}, {{0, 0}, {0, -1}, {-1, 0}}}, // +X
    {{0, 1}, {{0, 0}, {0, -1}, {1, 0}}},  // -X
    {{1, 0}, {{1, 0}, {0, 0}, {0, 1}}},   // +Y
    {{1, 2}, {{1, 0}, {0, 0}, {0, -1}}},  // -Y
    {{1, 1}, {{1, 0}, {0, -1}, {0, 0}}},  // +Z
    {{1, 3}, {{1, 0}, {0, 1}, {0, 0}}},   // -Z hangs below -Y, and so upside down
};

// ---- cells of rows -------------------------------------------------------------------------------------------------

constexpr float kHalf = 1.0f / 12.0f; // of a cell

// Row by row.
constexpr float kLinearRows[kCubemapFaces][2][4] = {
    {{0, 0, -kHalf, kHalf}, {0, -0.5f, 0, 0.5f}},         // +X
    {{0, 0, kHalf, 0.25f}, {0, -0.5f, 0, 0.5f}},          // -X
    {{kHalf, 0, 0, 5.0f / 12.0f}, {0, 0, 0.5f, 0.5f}},    // +Y
    {{kHalf, 0, 0, 7.0f / 12.0f}, {0, 0, -0.5f, 0.5f}},   // -Y
    {{kHalf, 0, 0, 0.75f}, {0, -0.5f, 0, 0.5f}},          // +Z
    {{-kHalf, 0, 0, 11.0f / 12.0f}, {0, -0.5f, 0, 0.5f}}, // -Z
};

constexpr float kStripRows[kCubemapFaces][3][3] = {
    {{0, 0, -1}, {0, 1, 0}, {-1, 0, 0}}, // +X
    {{0, 0, 1}, {0, 1, 0}, {1, 0, 0}},   // -X
    {{1, 0, 0}, {0, 0, -1}, {0, -1, 0}}, // +Y
    {{1, 0, 0}, {0, 0, 1}, {0, 1, 0}},   // -Y
    {{1, 0, 0}, {0, 1, 0}, {0, 0, -1}},  // +Z
    {{-1, 0, 0}, {0, 1, 0}, {0, 0, 1}},  // -Z
};

} // namespace

QMatrix3x3 cubemapFaceNormalMatrix(int face)
{
    QMatrix3x3 matrix;
    std::copy_n(&kFaceNormalColumns[face][0][0], 9, matrix.data()); // Qt keeps columns too
    return matrix;
}

QMatrix4x2 cubemapCrossMatrix(int face, bool portrait)
{
    const CrossFace& row = (portrait ? kPortrait : kLandscape)[face];
    const float su = 0.5f / (portrait ? 3.0f : 4.0f);
    const float sv = 0.5f / (portrait ? 4.0f : 3.0f);
    QMatrix4x2 matrix;
    for (int axis = 0; axis < 3; ++axis)
    {
        matrix(0, axis) = row.axes[axis][0] * su;
        matrix(1, axis) = row.axes[axis][1] * sv;
    }
    matrix(0, 3) = static_cast<float>(row.cell.column * 2 + 1) * su;
    matrix(1, 3) = static_cast<float>(row.cell.row * 2 + 1) * sv;
    return matrix;
}

QMatrix4x2 cubemapLinearMatrix(int face)
{
    return QMatrix4x2(&kLinearRows[face][0][0]);
}

QMatrix3x3 cubemapStripMatrix(int face)
{
    return QMatrix3x3(&kStripRows[face][0][0]);
}

} // namespace Harrow::Vrk
