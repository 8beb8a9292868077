// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of the cube map conversion on the real driver share: the places of texels on a cube by OpenGL's own
/// rules, textures made from functions of the direction, reading back, and a fixture that finds what is left alive.

#include "ZelImageCubemapUtils.h"

#include "TextureProcessingDriverTestTools.h"
#include "support/LogCapture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <memory>
#include <vector>

namespace Harrow::Vrk::Test::Cubemap
{

using Type = ZelImageCubemapSourceType;
using ColorSpace = ZelImageCubemapColorSpace;
using Vector = std::array<double, 3>;
using Floats = std::vector<float>;

/// From 0 to 1, by face: +X, -X, +Y, -Y, +Z, -Z.
inline constexpr std::array<Vector, 6> kFaceColors = {
    {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 1, 0}, {0, 1, 1}, {1, 0, 1}}};

/// The direction of the place s, t on a face, each from -1 to 1, as OpenGL selects faces: the table of sc, tc and ma.
inline Vector placeOnFace(int face, double s, double t)
{
    switch (face)
    {
    case 0: // sc = -z, tc = -y, ma = x
        return {1, -t, -s};
    case 1: // sc = z, tc = -y
        return {-1, -t, s};
    case 2: // sc = x, tc = z
        return {s, 1, t};
    case 3: // sc = x, tc = -z
        return {s, -1, -t};
    case 4: // sc = x, tc = -y
        return {s, -t, 1};
    default: // sc = -x, tc = -y
        return {-s, -t, -1};
    }
}

/// The middle of a texel or pixel, from -1 to 1.
inline double middle(int index, int count)
{
    return (2.0 * index + 1.0) / count - 1.0;
}

inline Vector texelPlace(int face, int x, int y, int size)
{
    return placeOnFace(face, middle(x, size), middle(y, size));
}

inline double dot(const Vector& a, const Vector& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

inline Vector normalized(const Vector& v)
{
    const double length = std::sqrt(dot(v, v));
    return {v[0] / length, v[1] / length, v[2] / length};
}

/// The face on which a direction lies.
inline int faceOf(const Vector& v)
{
    int axis = 0;
    for (int i = 1; i < 3; ++i)
        if (std::abs(v[std::size_t(i)]) > std::abs(v[std::size_t(axis)]))
            axis = i;
    return 2 * axis + (v[std::size_t(axis)] < 0 ? 1 : 0);
}

inline std::size_t at(int x, int y, int width)
{
    return (std::size_t(y) * std::size_t(width) + std::size_t(x)) * 4;
}

/// Colours of a picture whose first row is row 0.
inline Floats picture(int width, int height, const std::function<Vector(int x, int y)>& color)
{
    Floats values;
    values.reserve(std::size_t(width) * std::size_t(height) * 4);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
        {
            for (const double channel : color(x, y))
                values.push_back(float(channel));
            values.push_back(0.25f); // no conversion keeps alpha
        }
    return values;
}

inline std::unique_ptr<Texture> newPicture(int width, int height, const std::function<Vector(int x, int y)>& color)
{
    return Processing::newTexture(GL_RGBA32F, GL_RGBA, GL_FLOAT, picture(width, height, color), width, height);
}

using FaceColor = std::function<Vector(int face, int x, int y)>;

/// A cube map with mipmaps.
inline std::unique_ptr<Texture> newCubemap(int size, const FaceColor& color, GLint internalFormat = GL_RGBA32F)
{
    auto texture = std::make_unique<Texture>(nullptr);
    texture->setTarget(GL_TEXTURE_CUBE_MAP);
    const AutoBinder binder(texture.get());
    for (int face = 0; face < 6; ++face)
    {
        const Floats values = picture(size, size, [&](int x, int y) { return color(face, x, y); });
        glTexImage2D(GL_TEXTURE_CUBE_MAP_POSITIVE_X + GLenum(face), 0, internalFormat, size, size, 0, GL_RGBA, GL_FLOAT,
                     values.data());
    }
    glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glGenerateMipmap(GL_TEXTURE_CUBE_MAP);
    return texture;
}

inline int faceParameter(Texture& texture, int face, int level, GLenum name)
{
    const AutoBinder binder(&texture);
    GLint value = -1;
    glGetTexLevelParameteriv(GL_TEXTURE_CUBE_MAP_POSITIVE_X + GLenum(face), level, name, &value);
    return value;
}

inline Floats faceOfCubemap(Texture& texture, int face, int level = 0)
{
    const int size = faceParameter(texture, face, level, GL_TEXTURE_WIDTH);
    const AutoBinder binder(&texture);
    Floats values(std::size_t(size) * std::size_t(size) * 4);
    glGetTexImage(GL_TEXTURE_CUBE_MAP_POSITIVE_X + GLenum(face), level, GL_RGBA, GL_FLOAT, values.data());
    return values;
}

/// All layers of an array, one behind the other.
inline Floats layersOf(Texture& texture, int size, int layers, int level = 0)
{
    const AutoBinder binder(&texture);
    Floats values(std::size_t(size) * std::size_t(size) * std::size_t(layers) * 4);
    glGetTexImage(GL_TEXTURE_CUBE_MAP_ARRAY, level, GL_RGBA, GL_FLOAT, values.data());
    return values;
}

inline Vector colorAt(const Floats& values, std::size_t index)
{
    return {values[index], values[index + 1], values[index + 2]};
}

/// Of the channel that differs most; not a number if one of them is none.
inline double distance(const Vector& a, const Vector& b)
{
    double largest = 0.0;
    for (std::size_t i = 0; i < 3; ++i)
    {
        const double difference = std::abs(a[i] - b[i]);
        if (std::isnan(difference))
            return difference;
        largest = std::max(largest, difference);
    }
    return largest;
}

/// Whether all texels of a level of a cube map are as told, opaque, and where they are not.
inline testing::AssertionResult facesAre(Texture& texture, int size, const FaceColor& expected, double tolerance,
                                         int level = 0)
{
    for (int face = 0; face < 6; ++face)
    {
        const Floats values = faceOfCubemap(texture, face, level);
        if (values.size() != std::size_t(size) * std::size_t(size) * 4)
            return testing::AssertionFailure() << "face " << face << " has " << values.size() << " values";
        for (int y = 0; y < size; ++y)
            for (int x = 0; x < size; ++x)
            {
                const Vector actual = colorAt(values, at(x, y, size));
                const Vector wanted = expected(face, x, y);
                if (!(distance(actual, wanted) <= tolerance) || values[at(x, y, size) + 3] != 1.0f)
                    return testing::AssertionFailure()
                           << "face " << face << " at " << x << ", " << y << " is " << actual[0] << ", " << actual[1]
                           << ", " << actual[2] << ", " << values[at(x, y, size) + 3] << " and not " << wanted[0]
                           << ", " << wanted[1] << ", " << wanted[2];
            }
    }
    return testing::AssertionSuccess();
}

/// A colour for each texel that is like no other, brighter than 1 here and there.
inline Vector noise(int face, int x, int y)
{
    const auto channel = [seed = unsigned(face * 7919 + x * 131 + y * 17 + 1)](unsigned salt)
    {
        unsigned value = (seed + salt * 977u) * 2654435761u;
        value ^= value >> 15;
        value *= 2246822519u;
        value ^= value >> 13;
        return double(value % 4096u) / 1024.0;
    };
    return {channel(1), channel(2), channel(3)};
}

inline Vector fromNoise(int face, int x, int y)
{
    return noise(face, x, y);
}

/// A direction as a colour that takes no sign.
inline Vector shown(const Vector& direction)
{
    return {0.5 * direction[0] + 0.5, 0.5 * direction[1] + 0.5, 0.5 * direction[2] + 0.5};
}

// ---- crosses -------------------------------------------------------------------------------------------------------

/// The direction of a place of an unfolded cube, from its cell and, within that, from -1 to 1 to the right and down.
/// Seen from inside: +Z ahead, +X at the right hand, +Y above. Largest component 1 or -1; all 0 outside the cross.
inline Vector unfolded(int column, int row, double right, double down, bool portrait)
{
    if (column == 1 && row == 1)
        return {right, -down, 1};
    if (column == 2 && row == 1)
        return {1, -down, -right}; // folded back at the right edge
    if (column == 0 && row == 1)
        return {-1, -down, right};
    if (column == 1 && row == 0)
        return {right, 1, down}; // folded back at the upper edge
    if (column == 1 && row == 2)
        return {right, -1, -down};
    if (!portrait && column == 3 && row == 1)
        return {-right, -down, -1};
    if (portrait && column == 1 && row == 3)
        return {right, down, -1}; // hangs below the floor
    return {0, 0, 0};
}

inline Vector crossPixel(int x, int y, int face, bool portrait)
{
    return unfolded(x / face, y / face, middle(x % face, face), middle(y % face, face), portrait);
}

inline std::unique_ptr<Texture> newCross(int face, bool portrait, const std::function<Vector(const Vector&)>& color)
{
    return newPicture((portrait ? 3 : 4) * face, (portrait ? 4 : 3) * face,
                      [&](int x, int y) { return color(crossPixel(x, y, face, portrait)); });
}

/// The picture of a strip or level upside down.
inline std::unique_ptr<Texture> upsideDown(Texture& texture)
{
    const Floats values = Processing::floatsOf(texture);
    const int width = Processing::levelParameter(texture, 0, GL_TEXTURE_WIDTH);
    const int height = Processing::levelParameter(texture, 0, GL_TEXTURE_HEIGHT);
    return newPicture(width, height, [&](int x, int y) { return colorAt(values, at(x, height - 1 - y, width)); });
}

/// Checks that nothing stays alive and no unit taken, and restores what the conversions leave changed.
class ImageCubemapFixture : public Processing::TextureProcessingDriverFixture
{
protected:
    void TearDown() override
    {
        glDepthMask(GL_TRUE);
        TextureProcessingDriverFixture::TearDown();
    }

    static std::unique_ptr<Texture> converted(Texture& source, Type type, int maxSize = 0,
                                              GLenum target = GL_TEXTURE_CUBE_MAP)
    {
        return std::unique_ptr<Texture>(
            ZelImageCubemapUtils::createGLCubemapFromTexture(&source, type, target, ColorSpace::Linear, maxSize));
    }

    static std::unique_ptr<Texture> strip(Texture& source, int level = 0)
    {
        return std::unique_ptr<Texture>(ZelImageCubemapUtils::createGLCubemapStripFromTexture(&source, level));
    }
};

} // namespace Harrow::Vrk::Test::Cubemap
