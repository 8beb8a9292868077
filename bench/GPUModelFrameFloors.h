// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The floors of the scene's benchmark: the same questions answered by hand-written vectorised loops over flat arrays,
/// which know nothing of drawables, flags and marks.

#include <QMatrix4x4>
#include <QVector3D>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <vector>

namespace Harrow::Vrk::Bench
{

class FlatScene
{
public:
    void add(const QMatrix4x4& world, const float* box)
    {
        std::array<float, 16> numbers;
        std::copy_n(world.constData(), 16, numbers.begin());
        _worlds.push_back(numbers);
        std::array<float, 6> sides;
        std::copy_n(box, 6, sides.begin());
        _boxes.push_back(sides);
        _inverses.push_back(world.inverted());
        _states.push_back(1);
        _culled.push_back(0);
    }

    /// Marks all that are outside, and counts them.
    int cullByFrustum(const QMatrix4x4& clipFromWorld)
    {
        const Frustum frustum(clipFromWorld);
        int count = 0;
        for (std::size_t i = 0; i < _worlds.size(); ++i)
        {
            const bool outside = frustum.hasOutside(_worlds[i].data(), _boxes[i].data());
            _culled[i] = outside;
            count += outside;
        }
        return count;
    }

    /// The same, where item i is found by number.
    int cullByFrustum(const QMatrix4x4& clipFromWorld, const std::vector<int>& refs)
    {
        const Frustum frustum(clipFromWorld);
        int count = 0;
        for (std::size_t i = 0; i < refs.size(); ++i)
        {
            const auto ref = std::size_t(refs[i]);
            const bool outside = frustum.hasOutside(_worlds[ref].data(), _boxes[ref].data());
            _culled[i] = outside;
            count += outside;
        }
        return count;
    }

    int cullByVisibility()
    {
        int count = 0;
        for (std::size_t i = 0; i < _worlds.size(); ++i)
        {
            const Four* const columns = reinterpret_cast<const Four*>(_worlds[i].data());
            const Four lengths =
                columns[0] * columns[0] + columns[1] * columns[1] + columns[2] * columns[2] + columns[3] * columns[3];
            const bool isNothing = lengths[0] < kNothing && lengths[1] < kNothing && lengths[2] < kNothing;
            const bool culled = _states[i] == 2 || _states[i] == 3 || isNothing;
            _culled[i] = culled;
            count += culled;
        }
        return count;
    }

    bool isCulled(int item) const
    {
        return _culled[std::size_t(item)] != 0;
    }

    /// By the distance of each command's box; `refs` are the numbers of the commands' items.
    void sort(const QVector3D& point, const int* refs, std::vector<int>& commands)
    {
        _order.clear();
        for (const int command : commands)
        {
            const auto ref = std::size_t(refs[command]);
            const QVector3D p = _inverses[ref].map(point);
            float sum = 0;
            for (int axis = 0; axis < 3; ++axis)
            {
                const float low = _boxes[ref][std::size_t(axis)];
                const float high = _boxes[ref][std::size_t(axis) + 3];
                const float beyond = p[axis] - std::max(low, std::min(p[axis], high));
                sum += beyond * beyond;
            }
            _order.push_back({std::sqrt(sum), command});
        }
        std::sort(_order.begin(), _order.end(), [](const auto& a, const auto& b) { return a.distance < b.distance; });
        for (std::size_t i = 0; i < commands.size(); ++i)
            commands[i] = _order[i].command;
    }

private:
    typedef float Four __attribute__((vector_size(16), aligned(4)));
    static constexpr float kNothing = 1.0e-6f;

    struct Entry
    {
        float distance;
        int command;
    };

    /// The six planes in four lanes, of which the last one is idle.
    class Frustum
    {
    public:
        explicit Frustum(const QMatrix4x4& clipFromWorld)
        {
            std::copy_n(reinterpret_cast<const Four*>(clipFromWorld.constData()), 4, _columns);
        }

        bool hasOutside(const float* world, const float* box) const
        {
            Four low = {};
            Four high = {};
            for (int axis = 0; axis < 3; ++axis)
            {
                const Four column = clipColumn(world + 4 * axis);
                const Four last = Four{} + column[3];
                const Four least = Four{} + box[axis];
                const Four greatest = Four{} + box[axis + 3];
                const Four plus = last + column;
                const Four minus = last - column;
                low += plus * (plus >= 0.0f ? greatest : least);
                high += minus * (minus >= 0.0f ? greatest : least);
            }
            const Four column = clipColumn(world + 12);
            const Four last = Four{} + column[3];
            low += last + column;
            high += last - column;
            const auto outside = (low <= 0.0f) | (high <= 0.0f);
            return (outside[0] | outside[1] | outside[2]) != 0;
        }

    private:
        Four clipColumn(const float* v) const
        {
            return _columns[0] * v[0] + _columns[1] * v[1] + _columns[2] * v[2] + _columns[3] * v[3];
        }

        Four _columns[4];
    };

    std::vector<std::array<float, 16>> _worlds;
    std::vector<std::array<float, 6>> _boxes;
    std::vector<QMatrix4x4> _inverses;
    std::vector<int> _states;
    std::vector<char> _culled;
    std::vector<Entry> _order;
};

} // namespace Harrow::Vrk::Bench
