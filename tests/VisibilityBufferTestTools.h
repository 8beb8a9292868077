// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// A scene of triangles in C++, and a caster of rays that finds all that is under a pixel of its picture.

#include "DrawBuffers.h"

#include <QList>
#include <QMatrix4x4>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <random>
#include <vector>

namespace Harrow::Vrk::Test
{

constexpr int kWidth = 24;
constexpr int kHeight = 20;

struct Vec
{
    double x = 0, y = 0, z = 0;
};

struct Vertex
{
    Vec position, normal;
    double u = 0, v = 0;
};

struct Hit
{
    double depth = 0;
    int draw = 0;
    int primitive = 0;
    Vertex surface;
};

struct Draw
{
    QMatrix4x4 world;
    std::vector<std::array<int, 3>> triangles; // vertices of each primitive
};

struct Clip
{
    double x, y, z, w;
};

inline Clip mapped(const QMatrix4x4& m, const Vec& p)
{
    const auto row = [&](int i)
    { return double(m(i, 0)) * p.x + double(m(i, 1)) * p.y + double(m(i, 2)) * p.z + double(m(i, 3)); };
    return {row(0), row(1), row(2), row(3)};
}

/// Where the ray through a place of the picture, from 0 to 1, meets a triangle. False when it doesn't.
inline bool meets(const Clip (&c)[3], double u, double v, double (&share)[3], double& depth)
{
    const double x = 2 * u - 1;
    const double y = 2 * v - 1;
    // The shares of the corners for which both sums of (position - place * w) are 0.
    double a[3], b[3];
    for (int i = 0; i < 3; ++i)
    {
        a[i] = c[i].x - x * c[i].w;
        b[i] = c[i].y - y * c[i].w;
    }
    double sum = 0;
    for (int i = 0; i < 3; ++i)
    {
        const int j = (i + 1) % 3;
        const int k = (i + 2) % 3;
        share[i] = a[j] * b[k] - a[k] * b[j];
        sum += share[i];
    }
    if (std::abs(sum) < 1e-9)
        return false;
    double z = 0;
    double w = 0;
    for (int i = 0; i < 3; ++i)
    {
        share[i] /= sum;
        if (share[i] < 0)
            return false;
        z += share[i] * c[i].z;
        w += share[i] * c[i].w;
    }
    depth = 0.5 * z / w + 0.5;
    return w > 0 && depth > 0 && depth < 1;
}

class Scene
{
public:
    explicit Scene(bool isIndexed) : _isIndexed(isIndexed)
    {
        makeVertices();
        _view.lookAt({0.5f, 1.5f, 6.0f}, {0, 0, 0}, {0, 1, 0});
        _projection.perspective(26, float(kWidth) / kHeight, 2, 12);
        makeDraws();
    }

    const std::vector<Vertex>& vertices() const
    {
        return _vertices;
    }
    const std::vector<Draw>& draws() const
    {
        return _draws;
    }
    const QList<DrawElementsIndirectCommand>& commands() const
    {
        return _commands;
    }
    const std::vector<int>& indices() const
    {
        return _indices;
    }
    const QMatrix4x4& view() const
    {
        return _view;
    }
    const QMatrix4x4& projection() const
    {
        return _projection;
    }

    /// All that is under a pixel, front to back.
    std::vector<Hit> cast(int x, int y) const
    {
        std::vector<Hit> hits;
        for (std::size_t d = 0; d < _draws.size(); ++d)
            for (std::size_t p = 0; p < _draws[d].triangles.size(); ++p)
            {
                const QMatrix4x4 clipFromModel = _projection * _view * _draws[d].world;
                const Vertex* corners[3];
                Clip clip[3];
                for (std::size_t i = 0; i < 3; ++i)
                {
                    corners[i] = &_vertices[std::size_t(_draws[d].triangles[p][i])];
                    clip[i] = mapped(clipFromModel, corners[i]->position);
                }
                double share[3];
                Hit hit;
                if (!meets(clip, (x + 0.5) / kWidth, (y + 0.5) / kHeight, share, hit.depth))
                    continue;
                hit.draw = int(d);
                hit.primitive = int(p);
                for (int i = 0; i < 3; ++i)
                    add(hit.surface, share[i], *corners[i]);
                hits.push_back(hit);
            }
        std::sort(hits.begin(), hits.end(), [](const Hit& a, const Hit& b) { return a.depth < b.depth; });
        return hits;
    }

private:
    static void add(Vertex& sum, double share, const Vertex& vertex)
    {
        const auto addVec = [share](Vec& to, const Vec& v)
        {
            to.x += share * v.x;
            to.y += share * v.y;
            to.z += share * v.z;
        };
        addVec(sum.position, vertex.position);
        addVec(sum.normal, vertex.normal);
        sum.u += share * vertex.u;
        sum.v += share * vertex.v;
    }

    void makeVertices()
    {
        std::mt19937 random(3);
        std::uniform_real_distribution<double> value(-1, 1);
        for (int i = 0; i < 30; ++i)
        {
            // One after the other, since the order of arguments is the compiler's.
            Vertex vertex;
            for (double* const number : {&vertex.position.x, &vertex.position.y, &vertex.position.z, &vertex.normal.x,
                                         &vertex.normal.y, &vertex.normal.z, &vertex.u, &vertex.v})
                *number = value(random);
            // As the shader has them.
            vertex.position = {double(float(1.7 * vertex.position.x)), double(float(1.7 * vertex.position.y)),
                               double(float(vertex.position.z))};
            _vertices.push_back(vertex);
        }
    }

    void makeDraws()
    {
        for (int d = 0; d < 4; ++d)
        {
            Draw draw;
            draw.world.translate(0.4f * float(d) - 0.6f, 0.2f * float(d % 2), -0.5f * float(d));
            draw.world.rotate(40.0f * float(d), 0.3f, 1, 0.2f);
            draw.world.scale(1.0f, 1.3f - 0.1f * float(d), 0.8f);
            const int triangles = 3 + d;
            if (_isIndexed)
            {
                // Each with its own part of the indices and of the vertices.
                const int baseVertex = 3 * d;
                const auto firstIndex = quint32(_indices.size() + 2);
                _indices.resize(firstIndex, -1000); // of nobody
                for (int i = 0; i < 3 * triangles; ++i)
                    _indices.push_back((i * 7 + d * 5) % (30 - baseVertex));
                for (int t = 0; t < triangles; ++t)
                {
                    const auto corner = [&](int k)
                    { return baseVertex + _indices[firstIndex + std::size_t(3 * t + k)]; };
                    draw.triangles.push_back({corner(0), corner(1), corner(2)});
                }
                _commands.append({quint32(3 * triangles), 1, firstIndex, quint32(baseVertex), quint32(d)});
            }
            else
                for (int t = 0; t < triangles; ++t)
                    draw.triangles.push_back({3 * t, 3 * t + 1, 3 * t + 2});
            _draws.push_back(draw);
        }
    }

    bool _isIndexed;
    std::vector<Vertex> _vertices;
    std::vector<Draw> _draws;
    std::vector<int> _indices;
    QList<DrawElementsIndirectCommand> _commands;
    QMatrix4x4 _view, _projection;
};

} // namespace Harrow::Vrk::Test
