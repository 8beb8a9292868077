// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Whether a box is wholly outside a frustum. The box is tested in its own space, so that none of its corners is
/// transformed. Not installed.

#include <QMatrix4x4>

#include <cstring>

namespace Harrow::Vrk
{

/// Four planes at a time: each operation is one on four numbers. All products and sums are made in the order in which
/// QMatrix4x4 and the plain test make them, so that the answers are the same.
class FrustumTest
{
public:
    /// `viewProjection` takes the world to clip space.
    explicit FrustumTest(const QMatrix4x4& viewProjection)
    {
        for (int column = 0; column < 4; ++column)
            std::memcpy(&_columns[column], viewProjection.constData() + qsizetype(4) * column, sizeof(Four));
    }

    /// `world` are the 16 numbers of the matrix from the box's space to the world, column by column; `box` its least x,
    /// y, z and its greatest. A box that only touches a plane is outside.
    bool isOutside(const float* world, const float* box) const
    {
        // Lanes 0 to 2 of these belong to the planes row3 + row0, row3 + row1, row3 + row2 of viewProjection * world,
        // and to row3 - row0 and so on; lane 3 is of no use.
        Four low = all(0.0f);
        Four high = low;
        for (int axis = 0; axis < 3; ++axis)
        {
            const Four column = clipColumn(world + qsizetype(4) * axis);
            const Four last = all(column[3]);
            const Four plus = last + column;
            const Four minus = last - column;
            const Four onLow = plus * farthest(plus, box[axis], box[axis + 3]);
            const Four onHigh = minus * farthest(minus, box[axis], box[axis + 3]);
            low = axis == 0 ? onLow : low + onLow;
            high = axis == 0 ? onHigh : high + onHigh;
        }
        const Four column = clipColumn(world + 12);
        const Four last = all(column[3]);
        return isAnyOfThreeNotAboveZero(low + (last + column), high + (last - column));
    }

private:
#if defined(__GNUC__)
    /// One register of the processor.
    typedef float Four __attribute__((vector_size(16)));

    /// For each plane the side of the box that is farthest along its normal.
    static Four farthest(const Four& normal, float least, float greatest)
    {
        return normal >= 0.0f ? all(greatest) : all(least);
    }

    static bool isAnyOfThreeNotAboveZero(const Four& a, const Four& b)
    {
        const auto is = (a <= 0.0f) | (b <= 0.0f);
        return (is[0] | is[1] | is[2]) != 0;
    }
#else
    struct Four
    {
        float lane[4];

        float operator[](int i) const
        {
            return lane[i];
        }
        friend Four operator+(const Four& a, const Four& b)
        {
            return {{a[0] + b[0], a[1] + b[1], a[2] + b[2], a[3] + b[3]}};
        }
        friend Four operator-(const Four& a, const Four& b)
        {
            return {{a[0] - b[0], a[1] - b[1], a[2] - b[2], a[3] - b[3]}};
        }
        friend Four operator*(const Four& a, const Four& b)
        {
            return {{a[0] * b[0], a[1] * b[1], a[2] * b[2], a[3] * b[3]}};
        }
    };

    static Four farthest(const Four& normal, float least, float greatest)
    {
        Four sides;
        for (int i = 0; i < 4; ++i)
            sides.lane[i] = normal[i] >= 0.0f ? greatest : least;
        return sides;
    }

    static bool isAnyOfThreeNotAboveZero(const Four& a, const Four& b)
    {
        bool is = false;
        for (int i = 0; i < 3; ++i)
            is |= a[i] <= 0.0f || b[i] <= 0.0f;
        return is;
    }
#endif

    static Four all(float number)
    {
        return Four{number, number, number, number};
    }

    /// One column of viewProjection * world.
    Four clipColumn(const float* v) const
    {
        return _columns[0] * all(v[0]) + _columns[1] * all(v[1]) + _columns[2] * all(v[2]) + _columns[3] * all(v[3]);
    }

    Four _columns[4];
};

} // namespace Harrow::Vrk
