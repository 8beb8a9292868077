// SPDX-License-Identifier: MIT
// Reads Radiance pictures for the tests, with no code of the library or of the viewer: the new run-length rows and
// plain ones, as the format's description has them.
#pragma once

#include <QByteArray>
#include <QString>

#include <array>
#include <vector>

struct RadiancePicture
{
    using Pixel = std::array<unsigned char, 4>; ///< three mantissas and the exponent

    int width = 0; ///< 0 where the bytes are no such picture, or are too few or too many
    int height = 0;
    int codedRows = 0; ///< run-length coded ones
    std::vector<Pixel> pixels;

    const Pixel& at(int x, int y) const
    {
        return pixels[std::size_t(y) * std::size_t(width) + std::size_t(x)];
    }
    std::array<double, 3> color(int x, int y) const;
};

RadiancePicture decodeRadiance(const QByteArray& file);

/// Fails the test where there is no such file.
RadiancePicture readRadiance(const QString& path);
