// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of the Mandelbrot set's streamers share: a view of their books, and a fake driver that takes pixels
/// and has the uniforms of the compute shader.

#include "MandelbrotCPUTextureStreamer.h"
#include "MandelbrotGPUTextureStreamer.h"

#include "StreamerTestTools.h"

#include <array>
#include <memory>
#include <vector>

namespace Harrow::Vrk
{

struct MandelbrotTestAccess
{
    static std::array<double, 4> domain(const MandelbrotTextureStreamer& streamer)
    {
        return {streamer._domainMinX, streamer._domainMinY, streamer._domainMaxX, streamer._domainMaxY};
    }
    static bool dirty(const MandelbrotTextureStreamer& streamer)
    {
        return streamer._dirty;
    }
    static void clean(MandelbrotTextureStreamer& streamer)
    {
        streamer._dirty = false;
    }
    static ShaderProgram* program(const MandelbrotGPUTextureStreamer& streamer)
    {
        return streamer._program;
    }
};

} // namespace Harrow::Vrk

namespace Harrow::Vrk::Test
{

using Inside = MandelbrotTestAccess;
using Domain = std::array<double, 4>;

inline constexpr int kWidth = 40;
inline constexpr int kHeight = 20;
inline const QString kNoUnit = QStringLiteral("There is no available texture units");

/// What the driver was given last.
inline std::vector<quint32> uploaded;

class MandelbrotFixture : public StreamerFixture
{
protected:
    void SetUp() override
    {
        uploaded.clear();
        driver.replace(
            "glTexSubImage2D",
            +[](GLenum, GLint, GLint, GLint, GLsizei width, GLsizei height, GLenum, GLenum, const void* pixels)
            {
                const auto* const words = static_cast<const quint32*>(pixels);
                uploaded.assign(words, words + std::ptrdiff_t(width) * height);
            });
        for (const char* const name : {"u_textureWidth", "u_textureHeight", "u_region", "u_texture"})
            driver.setUniformLocation(name, ++_locations);
        StreamerFixture::SetUp();
        driver.setExtensions({"GL_ARB_shader_image_load_store"});
        ASSERT_NE(driver.load(), 0);
        BaseLevelScript::current() = {kWidth, kHeight, GL_RGBA8};
    }

    /// An update gives back the unit that the driver has named as the active one.
    static QStringList withUnitKept(const QStringList& calls)
    {
        return QStringList{writing("glGetIntegerv", GL_ACTIVE_TEXTURE)} + calls + QStringList{activate(5)};
    }

    template <typename Streamer> static std::unique_ptr<Streamer> make(int width = kWidth, int height = kHeight)
    {
        return std::unique_ptr<Streamer>(Streamer::make(width, height, nullptr));
    }

private:
    int _locations = 0;
};

/// What both sizes below 1 are reported as.
inline QStringList invalidSizes()
{
    return {assertionLine(QStringLiteral("width > 0"), QStringLiteral("Invalid width")),
            assertionLine(QStringLiteral("height > 0"), QStringLiteral("Invalid height"))};
}

template <typename Streamer> void expectMakeChecksItsSizes()
{
    const struct
    {
        int width, height;
        const char* text;
    } rows[] = {{0, 8, "Invalid width"}, {0, 0, "Invalid width"}, {-3, 8, "Invalid width"}, {8, 0, "Invalid height"}};
    for (const auto& row : rows)
    {
        const LogCapture log;
        const CallLog calls;
        EXPECT_EQ(Streamer::make(row.width, row.height, nullptr), nullptr);
        ASSERT_EQ(log.lines().size(), 1);
        EXPECT_EQ(log.lines()[0].type, QtWarningMsg);
        EXPECT_EQ(log.lines()[0].text, QLatin1String(row.text));
        EXPECT_EQ(calls.list(), QStringList());
    }
    const LogCapture log;
    EXPECT_NE(std::unique_ptr<Streamer>(Streamer::make(1, 1, nullptr)), nullptr);
    EXPECT_EQ(log.texts(), QStringList());
}

} // namespace Harrow::Vrk::Test
