// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The two tables of SMAA as the generator writes them, and a copy of the algorithm that goes pixel by pixel: it walks
/// along edges and reads none of them through a filter.

#include "GLSLPassTestTools.h"

#include <QByteArray>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <optional>

namespace Harrow::Vrk::Test
{

constexpr int kAreaWidth = 160;
constexpr int kAreaHeight = 560;
constexpr int kSearchWidth = 64;
constexpr int kSearchHeight = 16;

/// Runs the generator into `folder`. False, with a failure, when it doesn't succeed.
inline bool generateSMAATextures(const QString& folder, const QStringList& options = {})
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QStringLiteral("python3"),
                  QStringList(QStringLiteral(VRK_SMAA_GENERATOR)) + options + QStringList(folder));
    const bool isDone = process.waitForFinished(120000) && process.exitCode() == 0;
    EXPECT_TRUE(isDone) << process.readAll().toStdString();
    return isDone;
}

inline QByteArray fileBytes(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

struct SMAATables
{
    QByteArray area;   // two bytes a texel
    QByteArray search; // one byte a texel

    /// Red and green of a texel of the area table as written, from 0 to 1.
    double areaAt(int x, int y, int channel) const
    {
        return uchar(area[(y * kAreaWidth + x) * 2 + channel]) / 255.0;
    }

    FloatPicture areaPicture() const
    {
        FloatPicture picture(kAreaWidth, kAreaHeight);
        for (int y = 0; y < kAreaHeight; ++y)
            for (int x = 0; x < kAreaWidth; ++x)
                picture.set(x, y, {areaAt(x, y, 0), areaAt(x, y, 1), 0, 0});
        return picture;
    }
    FloatPicture searchPicture() const
    {
        FloatPicture picture(kSearchWidth, kSearchHeight);
        for (int y = 0; y < kSearchHeight; ++y)
            for (int x = 0; x < kSearchWidth; ++x)
                picture.set(x, y, {uchar(search[y * kSearchWidth + x]) / 255.0, 0, 0, 0});
        return picture;
    }

    /// Made once in a process.
    static const SMAATables& generated()
    {
        static const SMAATables tables = []
        {
            SMAATables result;
            const QTemporaryDir folder;
            if (generateSMAATextures(folder.path(), {QStringLiteral("--raw")}))
            {
                result.area = fileBytes(folder.filePath(QStringLiteral("smaa-area.raw")));
                result.search = fileBytes(folder.filePath(QStringLiteral("smaa-search.raw")));
            }
            return result;
        }();
        return tables;
    }
    bool isComplete() const
    {
        return area.size() == kAreaWidth * kAreaHeight * 2 && search.size() == kSearchWidth * kSearchHeight;
    }
};

// ---- the copy ------------------------------------------------------------------------------------------------------

struct SMAASettings
{
    const char* preset = "";
    double threshold = 0.1;
    int steps = 16;
    int diagonalSteps = 8;                       // 0: none
    std::optional<double> cornerRounding = 25.0; // none: corners as they come
};

inline const SMAASettings kSMAAPresets[] = {{"SMAA_PRESET_LOW", 0.15, 4, 0, std::nullopt},
                                            {"SMAA_PRESET_MEDIUM", 0.1, 8, 0, std::nullopt},
                                            {"SMAA_PRESET_HIGH", 0.1, 16, 8, 25.0},
                                            {"SMAA_PRESET_ULTRA", 0.05, 32, 16, 25.0},
                                            {"NO_PRESET", 0.1, 16, 8, 25.0}};

enum class SMAAEdges
{
    Luma,
    Color,
    Depth
};

class PlainSMAA
{
public:
    explicit PlainSMAA(const SMAASettings& settings) : _settings(settings), _area(SMAATables::generated().areaPicture())
    {
    }

    /// Red: an edge to the left, green: one to the top. `predication` lowers the threshold, scaled up before, where it
    /// has an edge too.
    FloatPicture edges(const FloatPicture& picture, SMAAEdges kind, const FloatPicture* predication = nullptr) const
    {
        FloatPicture out(picture.width, picture.height);
        for (int y = 0; y < out.height; ++y)
            for (int x = 0; x < out.width; ++x)
            {
                const bool left = isEdge(picture, kind, predication, x, y, -1, 0);
                const bool top = isEdge(picture, kind, predication, x, y, 0, -1);
                out.set(x, y, {double(left), double(top), 0, 0});
            }
        return out;
    }

    /// Red, green: the top edge's weights for this pixel and for the one above; blue, alpha: the left edge's.
    FloatPicture weights(const FloatPicture& edgePicture, const std::array<double, 4>& subsample = {}) const
    {
        FloatPicture out(edgePicture.width, edgePicture.height);
        for (int y = 0; y < out.height; ++y)
            for (int x = 0; x < out.width; ++x)
                out.set(x, y, weightsAt({edgePicture, false}, x, y, subsample));
        return out;
    }

    /// `speeds` is a picture of velocities that replaces alpha, or null.
    static FloatPicture blended(const FloatPicture& picture, const FloatPicture& weightPicture,
                                const FloatPicture* velocities = nullptr)
    {
        FloatPicture out(picture.width, picture.height);
        for (int y = 0; y < out.height; ++y)
            for (int x = 0; x < out.width; ++x)
                out.set(x, y, blendedAt(picture, weightPicture, velocities, x, y));
        return out;
    }

private:
    using Pair = std::array<double, 2>;

    // ---- edges

    static double contrast(const FloatPicture& picture, SMAAEdges kind, int x1, int y1, int x2, int y2)
    {
        const Color p = picture.pixel(x1, y1);
        const Color q = picture.pixel(x2, y2);
        if (kind == SMAAEdges::Depth)
            return std::abs(p.r - q.r);
        if (kind == SMAAEdges::Luma)
            return std::abs(0.2126 * (p.r - q.r) + 0.7152 * (p.g - q.g) + 0.0722 * (p.b - q.b));
        return std::max({std::abs(p.r - q.r), std::abs(p.g - q.g), std::abs(p.b - q.b)});
    }

    bool isEdge(const FloatPicture& picture, SMAAEdges kind, const FloatPicture* predication, int x, int y, int dx,
                int dy) const
    {
        const double own = contrast(picture, kind, x, y, x + dx, y + dy);
        if (kind == SMAAEdges::Depth)
            return own >= 0.1 * _settings.threshold;
        double threshold = _settings.threshold;
        if (predication != nullptr)
        {
            const bool isThere = contrast(*predication, SMAAEdges::Depth, x, y, x + dx, y + dy) >= 0.01;
            threshold *= 2.0 * (isThere ? 1 - 0.4 : 1.0);
        }
        if (own < threshold)
            return false;
        // The neighbouring edges all around the corner, and those behind the left and the top neighbour.
        const double strongest =
            std::max({contrast(picture, kind, x, y, x - 1, y), contrast(picture, kind, x, y, x, y - 1),
                      contrast(picture, kind, x, y, x + 1, y), contrast(picture, kind, x, y, x, y + 1),
                      contrast(picture, kind, x - 1, y, x - 2, y), contrast(picture, kind, x, y - 1, x, y - 2)});
        return 2.0 * own >= strongest;
    }

    // ---- weights

    /// Edges along one axis and across it.
    struct View
    {
        const FloatPicture& edges;
        bool isVertical;

        bool along(int i, int j) const
        {
            return isVertical ? edges.pixel(j, i).r > 0.5 : edges.pixel(i, j).g > 0.5;
        }
        bool crossing(int i, int j) const
        {
            return isVertical ? edges.pixel(j, i).g > 0.5 : edges.pixel(i, j).r > 0.5;
        }
    };

    Color weightsAt(const View& rows, int x, int y, const std::array<double, 4>& subsample) const
    {
        const View columns = {rows.edges, true};
        Color result;
        if (rows.along(x, y))
        {
            const Pair diagonal = _settings.diagonalSteps > 0 ? diagonalWeights(rows, x, y, subsample) : Pair{};
            if (diagonal[0] + diagonal[1] > 0)
                return {diagonal[0], diagonal[1], 0, 0};
            const Pair w = straightWeights(rows, x, y, subsample[1]);
            result.r = w[0];
            result.g = w[1];
        }
        if (columns.along(y, x))
        {
            const Pair w = straightWeights(columns, y, x, subsample[0]);
            result.b = w[0];
            result.a = w[1];
        }
        return result;
    }

    /// i along the edge, j across it.
    Pair straightWeights(const View& view, int i, int j, double subsample) const
    {
        const auto isCrossed = [&](int k) { return view.crossing(k, j) || view.crossing(k, j - 1); };
        int first = i;
        while (first > i - (2 * _settings.steps - 1) && view.along(first - 1, j) && !isCrossed(first))
            --first;
        int last = i;
        while (last < i + 2 * _settings.steps && view.along(last + 1, j) && !isCrossed(last + 1))
            ++last;
        const int behind = last + 1;
        const auto crossings = [&](int k) { return 3.0 * view.crossing(k, j) + 1.0 * view.crossing(k, j - 1); };
        const Pair distances = {double(i - first), double(last - i)};
        const Color area = _area.sample(16 * crossings(first) + std::sqrt(distances[0]) + 0.5,
                                        16 * crossings(behind) + std::sqrt(distances[1]) + 0.5 + 80 * subsample);
        Pair result = {area.r, area.g};
        if (_settings.cornerRounding)
        {
            const Pair near = {double(distances[0] <= distances[1]), double(distances[1] <= distances[0])};
            const double part = (1 - *_settings.cornerRounding / 100) / (near[0] + near[1]);
            const auto kept = [&](int row)
            {
                return std::clamp(
                    1 - part * (near[0] * view.crossing(first, row) + near[1] * view.crossing(behind, row)), 0.0, 1.0);
            };
            result[0] *= kept(j + 1);
            result[1] *= kept(j - 2);
        }
        return result;
    }

    struct DiagonalEnd
    {
        int length = -1;
        bool isOpen = true; // the search stopped before the end
        bool hasTop = false;
    };

    /// `shifted`: the left edges of the pixels one further to the right.
    DiagonalEnd searchDiagonal(const View& rows, int x, int y, int dx, int dy, int shifted) const
    {
        DiagonalEnd end;
        while (end.length < _settings.diagonalSteps - 1 && end.isOpen)
        {
            x += dx;
            y += dy;
            ++end.length;
            end.hasTop = rows.along(x, y);
            end.isOpen = end.hasTop && rows.crossing(x + shifted, y);
        }
        return end;
    }

    Pair diagonalWeights(const View& rows, int x, int y, const std::array<double, 4>& subsample) const
    {
        const auto area = [&](int d1, int d2, double c1, double c2, double part)
        { return _area.sample(80 + 20 * c1 + d1 + 0.5, 20 * c2 + d2 + 0.5 + 80 * part); };
        Pair result = {};

        DiagonalEnd a = {0, false, false};
        if (rows.crossing(x, y))
        {
            a = searchDiagonal(rows, x, y, -1, 1, 0);
            a.length += a.hasTop;
        }
        DiagonalEnd b = searchDiagonal(rows, x, y, 1, -1, 0);
        if (a.length + b.length > 2)
        {
            const int ax = x - a.length;
            const int ay = y + a.length;
            const int bx = x + b.length + 1;
            const int by = y - b.length;
            const double c1 = a.isOpen ? 0 : 2.0 * rows.along(ax - 1, ay) + rows.crossing(ax, ay);
            const double c2 = b.isOpen ? 0 : 2.0 * rows.along(bx, by) + rows.crossing(bx, by - 1);
            const Color w = area(a.length, b.length, c1, c2, subsample[2]);
            result = {w.r, w.g};
        }

        a = searchDiagonal(rows, x, y, -1, -1, 1);
        b = {0, false, false};
        if (rows.crossing(x + 1, y))
        {
            b = searchDiagonal(rows, x, y, 1, 1, 1);
            b.length += b.hasTop;
        }
        if (a.length + b.length > 2)
        {
            const int ax = x - a.length;
            const int ay = y - a.length;
            const int bx = x + b.length + 1;
            const int by = y + b.length;
            const double c1 = a.isOpen ? 0 : 2.0 * rows.along(ax - 1, ay) + rows.crossing(ax, ay - 1);
            const double c2 = b.isOpen ? 0 : 2.0 * rows.along(bx, by) + rows.crossing(bx, by);
            const Color w = area(a.length, b.length, c1, c2, subsample[3]);
            result = {result[0] + w.g, result[1] + w.r};
        }
        return result;
    }

    // ---- blending

    static Color blendedAt(const FloatPicture& picture, const FloatPicture& weightPicture,
                           const FloatPicture* velocities, int x, int y)
    {
        const double right = x + 1 < picture.width ? weightPicture.pixel(x + 1, y).a : weightPicture.pixel(x, y).a;
        const double bottom = y + 1 < picture.height ? weightPicture.pixel(x, y + 1).g : weightPicture.pixel(x, y).g;
        const double left = weightPicture.pixel(x, y).b;
        const double top = weightPicture.pixel(x, y).r;
        const auto mixed = [&](const FloatPicture& source)
        {
            const Color own = source.pixel(x, y);
            if (right + bottom + left + top < 1e-5)
                return own;
            const bool isHorizontal = std::max(right, left) > std::max(bottom, top);
            const double w1 = isHorizontal ? right : bottom;
            const double w2 = isHorizontal ? left : top;
            const Color n1 = isHorizontal ? source.pixel(x + 1, y) : source.pixel(x, y + 1);
            const Color n2 = isHorizontal ? source.pixel(x - 1, y) : source.pixel(x, y - 1);
            return (w1 / (w1 + w2)) * ((1 - w1) * own + w1 * n1) + (w2 / (w1 + w2)) * ((1 - w2) * own + w2 * n2);
        };
        Color result = mixed(picture);
        if (velocities != nullptr)
        {
            const Color velocity = mixed(*velocities);
            result.a = std::sqrt(5 * std::hypot(velocity.r, velocity.g));
        }
        return result;
    }

    SMAASettings _settings;
    FloatPicture _area;
};

} // namespace Harrow::Vrk::Test
