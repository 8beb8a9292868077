// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Full-screen passes over pictures of numbers, for suites that hold a pass on a driver against a copy of it in C++;
/// and the pictures that such suites use.

#include "EmbeddedGLSLTestTools.h"
#include "support/GLTest.h"

#include "GLFunctions.h"
#include "GLSLMacroProcessor.h"
#include "ShaderProgram.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <memory>
#include <random>
#include <utility>
#include <vector>

namespace Harrow::Vrk::Test
{

/// One pixel in double precision, for copies of shaders.
struct Color
{
    double r = 0, g = 0, b = 0, a = 0;

    friend Color operator+(const Color& p, const Color& q)
    {
        return {p.r + q.r, p.g + q.g, p.b + q.b, p.a + q.a};
    }
    friend Color operator*(double s, const Color& p)
    {
        return {s * p.r, s * p.g, s * p.b, s * p.a};
    }
};

/// Four floats a pixel. The first row is that at texture coordinate 0.
struct FloatPicture
{
    int width = 0;
    int height = 0;
    std::vector<float> values;

    FloatPicture() = default;
    FloatPicture(int columns, int rows) : width(columns), height(rows), values(std::size_t(columns) * rows * 4) {}

    float* at(int x, int y)
    {
        return &values[(std::size_t(y) * width + x) * 4];
    }
    const float* at(int x, int y) const
    {
        return &values[(std::size_t(y) * width + x) * 4];
    }
    void set(int x, int y, const Color& color)
    {
        const float channels[] = {float(color.r), float(color.g), float(color.b), float(color.a)};
        std::copy_n(channels, 4, at(x, y));
    }

    /// The pixel, or the nearest one at the edge.
    Color pixel(int x, int y) const
    {
        const float* const p = at(std::clamp(x, 0, width - 1), std::clamp(y, 0, height - 1));
        return {p[0], p[1], p[2], p[3]};
    }
    /// What a linear filter gives at a place in pixels, where (0.5, 0.5) is the centre of the first one.
    Color sample(double x, double y) const
    {
        const double left = std::floor(x - 0.5);
        const double top = std::floor(y - 0.5);
        const double u = x - 0.5 - left;
        const double v = y - 0.5 - top;
        const auto row = [&](int j) { return (1 - u) * pixel(int(left), j) + u * pixel(int(left) + 1, j); };
        return (1 - v) * row(int(top)) + v * row(int(top) + 1);
    }
};

/// The greatest difference of any channel, and where it is.
struct FloatDifference
{
    double greatest = 0;
    int x = 0;
    int y = 0;
};

inline FloatDifference difference(const FloatPicture& a, const FloatPicture& b)
{
    FloatDifference result;
    for (int y = 0; y < a.height; ++y)
        for (int x = 0; x < a.width; ++x)
            for (int i = 0; i < 4; ++i)
            {
                const double d = std::abs(double(a.at(x, y)[i]) - double(b.at(x, y)[i]));
                // A difference that is no number is the greatest of all.
                if (!(d <= result.greatest))
                    result = {std::isnan(d) ? 1e30 : d, x, y};
            }
    return result;
}

#define EXPECT_PICTURES_NEAR(actual, expected, tolerance, ...)                                                         \
    do                                                                                                                 \
    {                                                                                                                  \
        const FloatPicture &actual_ = (actual), &expected_ = (expected);                                               \
        ASSERT_EQ(actual_.values.size(), expected_.values.size());                                                     \
        const FloatDifference d_ = difference(actual_, expected_);                                                     \
        EXPECT_LE(d_.greatest, tolerance) << "at " << d_.x << ", " << d_.y << ": " << __VA_ARGS__;                     \
    } while (false)

/// Fails at the first pixel that is one color with all eight around it and differs in `found`. The number of such
/// pixels. Pictures of bytes are compared in so many steps, 255; others, with 0, by their floats.
inline int countConstantAndUntouched(const FloatPicture& found, const FloatPicture& picture, double steps)
{
    int count = 0;
    for (int y = 0; y < picture.height; ++y)
        for (int x = 0; x < picture.width; ++x)
        {
            const float* const here = picture.at(x, y);
            bool isConstant = true;
            for (int i = 0; i < 9; ++i)
            {
                const int column = std::clamp(x + i % 3 - 1, 0, picture.width - 1);
                const int row = std::clamp(y + i / 3 - 1, 0, picture.height - 1);
                isConstant = isConstant && std::equal(here, here + 4, picture.at(column, row));
            }
            count += isConstant;
            for (int i = 0; i < 4 && isConstant; ++i)
            {
                const float value = found.at(x, y)[i];
                const bool isSame =
                    steps > 0 ? std::lround(value * steps) == std::lround(here[i] * steps) : value == here[i];
                if (isSame)
                    continue;
                ADD_FAILURE() << x << ", " << y << ": " << here[i] << " has become " << value;
                return -1;
            }
        }
    return count;
}

// ---- pictures ------------------------------------------------------------------------------------------------------

/// Each pixel is `inside` or `outside`, as its centre is.
inline FloatPicture twoColored(int width, int height, const Color& inside, const Color& outside,
                               const std::function<bool(double, double)>& isInside)
{
    FloatPicture picture(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            picture.set(x, y, isInside(x + 0.5, y + 0.5) ? inside : outside);
    return picture;
}

/// The plane to one side of a line that goes near the middle, in the direction of `degrees`.
inline FloatPicture edgeAt(double degrees, int size, const Color& inside, const Color& outside)
{
    const double angle = degrees * 3.14159265358979 / 180.0;
    const double nx = -std::sin(angle);
    const double ny = std::cos(angle);
    // Off the pixels' centres, where a line of 45 degrees would have to choose.
    const double distance = 0.5 * size * (nx + ny) + 0.137;
    return twoColored(size, size, inside, outside, [=](double x, double y) { return nx * x + ny * y > distance; });
}

/// A line of that width through the middle.
inline FloatPicture lineAt(double degrees, double lineWidth, int size, const Color& inside, const Color& outside)
{
    const double angle = degrees * 3.14159265358979 / 180.0;
    const double nx = -std::sin(angle);
    const double ny = std::cos(angle);
    const double distance = 0.5 * size * (nx + ny) + 0.137;
    return twoColored(size, size, inside, outside,
                      [=](double x, double y) { return std::abs(nx * x + ny * y - distance) < 0.5 * lineWidth; });
}

/// Steps, corners, teeth and single pixels of all kinds: two colours in patches of random sizes.
inline FloatPicture patches(unsigned seed, int size, const Color& inside, const Color& outside)
{
    FloatPicture picture(size, size);
    std::mt19937 random(seed);
    const auto below = [&random](int n) { return int(random() % unsigned(n)); };
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x)
            picture.set(x, y, outside);
    for (int i = 0; i < 40; ++i)
    {
        const int w = 1 + below(i % 2 ? 4 : 24);
        const int h = 1 + below(i % 2 ? 24 : 4);
        const int left = below(size);
        const int top = below(size);
        const Color& color = i % 3 ? inside : outside;
        for (int y = top; y < std::min(size, top + h); ++y)
            for (int x = left; x < std::min(size, left + w); ++x)
                picture.set(x, y, color);
    }
    return picture;
}

// ---- passes --------------------------------------------------------------------------------------------------------

/// A vertex stage that covers the picture and gives out `vo_TexCoord`. It needs no attributes.
inline QString coveringVertexStage()
{
    return QStringLiteral("#version 150\nout vec2 vo_TexCoord;\nvoid main()\n{\n"
                          "    vo_TexCoord = 2.0 * vec2(gl_VertexID & 1, gl_VertexID >> 1);\n"
                          "    gl_Position = vec4(2.0 * vo_TexCoord - 1.0, 0.0, 1.0);\n}\n");
}

class GLSLPassTest : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        glGenVertexArrays(1, &_vertexArray);
        glBindVertexArray(_vertexArray);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
    }

    void TearDown() override
    {
        glUseProgram(0);
        glActiveTexture(GL_TEXTURE0);
        glBindVertexArray(0);
        glDeleteVertexArrays(1, &_vertexArray);
        glDeleteTextures(GLsizei(_textures.size()), _textures.data());
        _textures.clear();
        glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
        glPixelStorei(GL_PACK_ALIGNMENT, 4);
        GLTest::TearDown();
    }

    /// Null, with a failure, when the texts don't link.
    static std::unique_ptr<ShaderProgram> linked(const QString& vertexText, const QList<QString>& fragmentTexts)
    {
        auto program = std::make_unique<ShaderProgram>();
        program->addShader(GL_VERTEX_SHADER, vertexText);
        for (const QString& text : fragmentTexts)
            program->addShader(GL_FRAGMENT_SHADER, text);
        if (!program->link())
        {
            ADD_FAILURE() << program->log().toStdString();
            return nullptr;
        }
        return program;
    }

    /// Filtered linearly and clamped to its edges. Lives until the end of the test.
    GLuint texture(const FloatPicture& picture, GLenum internalFormat = GL_RGBA32F)
    {
        const GLuint name = emptyTexture(internalFormat, picture.width, picture.height, GL_RGBA, GL_FLOAT);
        glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, picture.width, picture.height, GL_RGBA, GL_FLOAT,
                        picture.values.data());
        return name;
    }

    /// Whole numbers, texel by texel.
    GLuint integerTexture(int width, int height, GLenum internalFormat, GLenum format,
                          const std::vector<std::uint32_t>& numbers)
    {
        const GLuint name = emptyTexture(internalFormat, width, height, format, GL_UNSIGNED_INT);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
        glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, width, height, format, GL_UNSIGNED_INT, numbers.data());
        return name;
    }

    using Inputs = std::vector<std::pair<const char*, GLuint>>;

    /// One pass into `targets` pictures of that format that were cleared to 0.
    std::vector<FloatPicture> drawAll(ShaderProgram& program, int width, int height, const Inputs& inputs, int targets,
                                      GLenum targetFormat = GL_RGBA32F)
    {
        GLuint framebuffer = 0;
        glGenFramebuffers(1, &framebuffer);
        std::vector<GLuint> colors;
        for (int i = 0; i < targets; ++i)
            colors.push_back(emptyTexture(targetFormat, width, height, GL_RGBA, GL_FLOAT));
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        std::vector<GLenum> buffers;
        for (int i = 0; i < targets; ++i)
        {
            buffers.push_back(GLenum(GL_COLOR_ATTACHMENT0 + i));
            glFramebufferTexture2D(GL_FRAMEBUFFER, buffers.back(), GL_TEXTURE_2D, colors[std::size_t(i)], 0);
        }
        glDrawBuffers(targets, buffers.data());
        EXPECT_EQ(glCheckFramebufferStatus(GL_FRAMEBUFFER), GLenum(GL_FRAMEBUFFER_COMPLETE));
        glViewport(0, 0, width, height);
        glClearColor(0, 0, 0, 0);
        glClear(GL_COLOR_BUFFER_BIT);

        program.bind();
        for (std::size_t i = 0; i < inputs.size(); ++i)
        {
            glActiveTexture(GLenum(GL_TEXTURE0 + i));
            glBindTexture(GL_TEXTURE_2D, inputs[i].second);
            const int location = program.getUniformLocation(QLatin1String(inputs[i].first));
            EXPECT_GE(location, 0) << inputs[i].first;
            program.setUniform(location, int(i));
        }
        glDrawArrays(GL_TRIANGLES, 0, 3);
        program.unbind();

        std::vector<FloatPicture> results;
        for (int i = 0; i < targets; ++i)
        {
            FloatPicture& result = results.emplace_back(width, height);
            glReadBuffer(buffers[std::size_t(i)]);
            glReadPixels(0, 0, width, height, GL_RGBA, GL_FLOAT, result.values.data());
        }
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glDeleteFramebuffers(1, &framebuffer);
        return results;
    }

    FloatPicture draw(ShaderProgram& program, int width, int height, const Inputs& inputs,
                      GLenum targetFormat = GL_RGBA32F)
    {
        return drawAll(program, width, height, inputs, 1, targetFormat).front();
    }

private:
    GLuint emptyTexture(GLenum internalFormat, int width, int height, GLenum format, GLenum type)
    {
        GLuint name = 0;
        glGenTextures(1, &name);
        _textures.push_back(name);
        glBindTexture(GL_TEXTURE_2D, name);
        glTexImage2D(GL_TEXTURE_2D, 0, GLint(internalFormat), width, height, 0, format, type, nullptr);
        for (const GLenum filter : {GL_TEXTURE_MIN_FILTER, GL_TEXTURE_MAG_FILTER})
            glTexParameteri(GL_TEXTURE_2D, filter, GL_LINEAR);
        for (const GLenum wrap : {GL_TEXTURE_WRAP_S, GL_TEXTURE_WRAP_T})
            glTexParameteri(GL_TEXTURE_2D, wrap, GL_CLAMP_TO_EDGE);
        return name;
    }

    GLuint _vertexArray = 0;
    std::vector<GLuint> _textures;
};

} // namespace Harrow::Vrk::Test
