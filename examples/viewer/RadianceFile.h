// SPDX-License-Identifier: MIT
// Light in a picture, and the Radiance file that keeps it: each colour as three mantissas with one exponent, so that
// a sky and the sun in it fit into one file.
#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <vector>

namespace vrkview
{

/// Linear colours without an upper limit, three floats a pixel, the top row first.
struct LightImage
{
    int width = 0;
    int height = 0;
    std::vector<float> rgb;

    LightImage() = default;
    /// Black.
    LightImage(int columns, int rows) : width(columns), height(rows), rgb(std::size_t(columns) * std::size_t(rows) * 3)
    {
    }

    bool isEmpty() const
    {
        return rgb.empty();
    }
    float* at(int x, int y)
    {
        return rgb.data() + (std::size_t(y) * std::size_t(width) + std::size_t(x)) * 3;
    }
    const float* at(int x, int y) const
    {
        return rgb.data() + (std::size_t(y) * std::size_t(width) + std::size_t(x)) * 3;
    }
};

/// The bytes of a ".hdr" file. Rows are run-length coded channel by channel where they are 8 to 32767 pixels wide, and
/// plain where they are not. No channel comes back farther off than a 255th of the pixel's largest. What is negative or
/// no number becomes 0, what is too large the largest colour.
QByteArray radianceBytes(const LightImage& image);

/// Writes `image` to `path`, replacing a file that is there. On false `error` says why in one line, and what was there
/// is as it was.
bool writeRadiance(const LightImage& image, const QString& path, QString& error);

} // namespace vrkview
