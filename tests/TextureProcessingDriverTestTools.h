// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of texture processing on the real driver share: a picture of all bytes, the formulas of the
/// operations as the CPU computes them, and comparisons.

#include "TextureProcessing.h"

#include "AutoBinder.h"
#include "GLFunctions.h"
#include "LeftoversTestTools.h"
#include "ShaderProgram.h"
#include "Texture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <memory>
#include <vector>

namespace Harrow::Vrk::Test::Processing
{

inline constexpr int kSize = 64;
inline constexpr int kTexels = kSize * kSize;

using Color = std::array<double, 4>;
using Bytes = std::vector<unsigned char>;
using Floats = std::vector<float>;

/// A picture that holds every byte in every channel, in many combinations.
inline Bytes picture()
{
    Bytes bytes;
    for (int i = 0; i < kTexels; ++i)
        for (const int value : {i, i * 7 + 13, i * 37 + 101, i / 16})
            bytes.push_back(static_cast<unsigned char>(value % 256));
    return bytes;
}

template <typename Value>
std::unique_ptr<Texture> newTexture(GLint internalFormat, GLenum format, GLenum type, const std::vector<Value>& values,
                                    int width = kSize, int height = kSize)
{
    auto texture = std::make_unique<Texture>(nullptr);
    texture->setTarget(GL_TEXTURE_2D);
    const AutoBinder binder(texture.get());
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexImage2D(GL_TEXTURE_2D, 0, internalFormat, width, height, 0, format, type,
                 values.empty() ? nullptr : values.data());
    return texture;
}

inline std::unique_ptr<Texture> newByteTexture(const Bytes& values, int width = kSize, int height = kSize)
{
    return newTexture(GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE, values, width, height);
}

inline Bytes bytesOf(Texture& texture, int level = 0)
{
    const AutoBinder binder(&texture);
    Bytes bytes(std::size_t(texture.width(level)) * std::size_t(texture.height(level)) * 4);
    glGetTexImage(GL_TEXTURE_2D, level, GL_RGBA, GL_UNSIGNED_BYTE, bytes.data());
    return bytes;
}

inline Floats floatsOf(Texture& texture, GLenum format = GL_RGBA, int channels = 4)
{
    const AutoBinder binder(&texture);
    Floats floats(std::size_t(texture.width(0)) * std::size_t(texture.height(0)) * std::size_t(channels));
    glGetTexImage(GL_TEXTURE_2D, 0, format, GL_FLOAT, floats.data());
    return floats;
}

inline int levelParameter(Texture& texture, int level, GLenum name)
{
    const AutoBinder binder(&texture);
    GLint value = -1;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, level, name, &value);
    return value;
}

inline int textureParameter(Texture& texture, GLenum name)
{
    const AutoBinder binder(&texture);
    GLint value = -1;
    glGetTexParameteriv(GL_TEXTURE_2D, name, &value);
    return value;
}

inline void setTextureParameter(Texture& texture, GLenum name, GLint value)
{
    const AutoBinder binder(&texture);
    glTexParameteri(GL_TEXTURE_2D, name, value);
}

// ---- the formulas, on the CPU --------------------------------------------------------------------------------------
// The bases of the powers are never below 0 here: where they are, GLSL leaves the result open.

inline Color keep(const Color& c)
{
    return c;
}

inline Color srgbToLinear(const Color& c)
{
    Color result;
    for (std::size_t i = 0; i < 4; ++i) // alpha too
        result[i] = std::pow((c[i] + 0.055) / 1.055, 2.4);
    return result;
}

inline Color linearToSrgb(const Color& c)
{
    const auto convert = [](double value) { return 1.055 * std::pow(value, 1.0 / 2.4) - 0.055; };
    return {convert(c[0]), convert(c[1]), convert(c[2]), c[3]};
}

inline Color premultiply(const Color& c)
{
    return {c[0] * c[3], c[1] * c[3], c[2] * c[3], c[3]};
}

inline Color remap(const Color& c, double low, double high)
{
    const auto convert = [=](double value) { return low + value * (high - low); };
    return {convert(c[0]), convert(c[1]), convert(c[2]), c[3]};
}

struct Operation
{
    const char* name;
    std::function<bool(Texture*&)> run;
    std::function<Color(const Color&)> formula;
    bool keepsAlpha;
    bool flips;
};

inline const std::vector<Operation>& operations()
{
    static const std::vector<Operation> all = {
        {"FlipY", &FlipY, &keep, true, true},
        {"SrgbToLinear", &SrgbToLinear, &srgbToLinear, false, false},
        {"LinearToSrgb", &LinearToSrgb, &linearToSrgb, true, false},
        {"Premultiply", &Premultiply, &premultiply, true, false},
        {"RemapColorRange", [](Texture*& texture) { return RemapColorRange(texture, 0.2f, 0.7f); },
         [](const Color& c) { return remap(c, 0.2, 0.7); }, true, false},
    };
    return all;
}

inline std::size_t texelAt(int x, int y, int width)
{
    return (std::size_t(y) * std::size_t(width) + std::size_t(x)) * 4;
}

/// Whether `actual` is what the operation makes of `source`, within one step of 255, and where it is not.
inline testing::AssertionResult isResult(const Operation& operation, const Bytes& source, const Bytes& actual)
{
    if (actual.size() != source.size())
        return testing::AssertionFailure() << actual.size() << " bytes";
    for (int y = 0; y < kSize; ++y)
        for (int x = 0; x < kSize; ++x)
        {
            const std::size_t from = texelAt(x, operation.flips ? kSize - 1 - y : y, kSize);
            const Color in = {source[from] / 255.0, source[from + 1] / 255.0, source[from + 2] / 255.0,
                              source[from + 3] / 255.0};
            const Color out = operation.formula(in);
            for (std::size_t channel = 0; channel < 4; ++channel)
            {
                const double expected = std::clamp(out[channel], 0.0, 1.0) * 255.0;
                const bool isExact = operation.flips || (channel == 3 && operation.keepsAlpha);
                const double got = actual[texelAt(x, y, kSize) + channel];
                if (std::abs(got - expected) > (isExact ? 1e-6 : 1.0))
                    return testing::AssertionFailure()
                           << operation.name << " of " << int(source[from + channel]) << " (alpha "
                           << int(source[from + 3]) << ") in channel " << channel << " at " << x << ", " << y << " is "
                           << got << " and not " << expected;
            }
        }
    return testing::AssertionSuccess();
}

/// The same for colours of any size.
inline testing::AssertionResult areNear(const std::vector<Color>& expected, const Floats& actual)
{
    if (actual.size() != expected.size() * 4)
        return testing::AssertionFailure() << actual.size() << " values";
    for (std::size_t i = 0; i < actual.size(); ++i)
    {
        const double value = expected[i / 4][i % 4];
        if (!(std::abs(actual[i] - value) <= 1e-5 + 1e-4 * std::abs(value)))
            return testing::AssertionFailure() << "value " << i << " is " << actual[i] << " and not " << value;
    }
    return testing::AssertionSuccess();
}

class TextureProcessingDriverFixture : public LeftoversFixture
{
protected:
    /// The picture after an operation.
    static Bytes processed(const Operation& operation, const Bytes& source)
    {
        Texture* texture = newByteTexture(source).release();
        EXPECT_TRUE(operation.run(texture));
        Bytes result = bytesOf(*texture);
        delete texture;
        return result;
    }

    static Floats processedFloats(const std::function<bool(Texture*&)>& run, const std::vector<Color>& colors)
    {
        Floats values;
        for (const Color& color : colors)
            values.insert(values.end(), color.begin(), color.end());
        Texture* texture =
            newTexture(GL_RGBA32F, GL_RGBA, GL_FLOAT, values, static_cast<int>(colors.size()), 1).release();
        EXPECT_TRUE(run(texture));
        EXPECT_EQ(levelParameter(*texture, 0, GL_TEXTURE_INTERNAL_FORMAT), GL_RGBA32F);
        Floats result = floatsOf(*texture);
        delete texture;
        return result;
    }

    static std::unique_ptr<ShaderProgram> newShader(const char* statement)
    {
        return std::unique_ptr<ShaderProgram>(MakeTextureShaderFromString(fragmentStage(statement)));
    }

    static QString fragmentStage(const char* statement)
    {
        return QStringLiteral("#version 150\nuniform sampler2D u_Src;\nuniform vec4 u_color;\nin vec2 vo_TexCoord;\n"
                              "out vec4 out_FragColor;\nvoid main() { out_FragColor = %1; }\n")
            .arg(QLatin1String(statement));
    }
};

} // namespace Harrow::Vrk::Test::Processing
