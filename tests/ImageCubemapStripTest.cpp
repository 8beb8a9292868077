// SPDX-License-Identifier: MIT
//
// The ways out of a cube map on the real driver: a strip of its faces, the copy as a level of another one, and the
// round trips of faces through all of them.
#include "ZelImageCubemapUtils.h"

#include "ImageCubemapTestTools.h"

namespace Harrow::Vrk::Test
{

using namespace Cubemap;

namespace
{

constexpr int kFace = 8; // texels

} // namespace

class ImageCubemapStripGL : public ImageCubemapFixture
{
};

// ---- a strip -------------------------------------------------------------------------------------------------------

TEST_F(ImageCubemapStripGL, AStripShowsTheFacesUpsideDown)
{
    const auto cubemap = newCubemap(kFace, &fromNoise);
    const auto row = strip(*cubemap);
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->target(), unsigned(GL_TEXTURE_2D));
    EXPECT_EQ(Processing::levelParameter(*row, 0, GL_TEXTURE_WIDTH), 6 * kFace);
    EXPECT_EQ(Processing::levelParameter(*row, 0, GL_TEXTURE_HEIGHT), kFace);
    EXPECT_EQ(Processing::levelParameter(*row, 0, GL_TEXTURE_INTERNAL_FORMAT), GL_RGBA32F);
    const Floats values = Processing::floatsOf(*row);
    for (int y = 0; y < kFace; ++y)
        for (int x = 0; x < 6 * kFace; ++x)
            ASSERT_LT(distance(colorAt(values, at(x, y, 6 * kFace)), noise(x / kFace, x % kFace, kFace - 1 - y)), 1e-5)
                << x << ", " << y;
}

TEST_F(ImageCubemapStripGL, AStripShowsEveryDirectionUpright)
{
    const auto cubemap = newCubemap(kFace, [](int face, int x, int y) { return shown(texelPlace(face, x, y, kFace)); });
    const auto row = strip(*cubemap);
    ASSERT_NE(row, nullptr);
    const Floats values = Processing::floatsOf(*row);
    // Ahead, from left to right and bottom to top.
    for (int y = 0; y < kFace; ++y)
        for (int x = 0; x < kFace; ++x)
            ASSERT_LT(distance(colorAt(values, at(4 * kFace + x, y, 6 * kFace)),
                               shown({middle(x, kFace), middle(y, kFace), 1})),
                      1e-5);
}

TEST_F(ImageCubemapStripGL, AStripOfEachLevelShowsThatLevel)
{
    // Halves of odd sizes are rounded down: 23 has levels of 11, 5, 2 and 1 texels, of which 2 is nearer to 23 / 16
    // than to 23 / 8.
    for (const int size : {16, 12, 23})
    {
        const auto cubemap = newCubemap(size, &fromNoise);
        for (int level = 0; size >> level > 0; ++level)
        {
            const auto row = strip(*cubemap, level);
            ASSERT_NE(row, nullptr) << level;
            const int width = size >> level;
            const Floats values = Processing::floatsOf(*row);
            for (int face = 0; face < 6; ++face)
            {
                const Floats expected = faceOfCubemap(*cubemap, face, level);
                for (int y = 0; y < width; ++y)
                    for (int x = 0; x < width; ++x)
                        ASSERT_LT(distance(colorAt(values, at(face * width + x, y, 6 * width)),
                                           colorAt(expected, at(x, width - 1 - y, width))),
                                  1e-5)
                            << size << " level " << level << " face " << face;
            }
        }
    }
}

TEST_F(ImageCubemapStripGL, AStripOfALevelIsOfTheBaseLevelWithoutMipmapsInTheFilter)
{
    const auto cubemap = newCubemap(4, [](int face, int, int) { return kFaceColors[std::size_t(face)]; });
    {
        const AutoBinder binder(cubemap.get());
        for (int face = 0; face < 6; ++face)
        {
            const Floats white(2 * 2 * 4, 1.0f);
            glTexSubImage2D(GL_TEXTURE_CUBE_MAP_POSITIVE_X + GLenum(face), 1, 0, 0, 2, 2, GL_RGBA, GL_FLOAT,
                            white.data());
        }
        glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    }
    const auto row = strip(*cubemap, 1);
    ASSERT_NE(row, nullptr);
    const Floats values = Processing::floatsOf(*row);
    for (int x = 0; x < 12; ++x)
        EXPECT_EQ(colorAt(values, at(x, 0, 12)), kFaceColors[std::size_t(x / 2)]);
}

TEST_F(ImageCubemapStripGL, AStripHasLinearFiltersAndClampedEdges)
{
    const auto cubemap = newCubemap(4, &fromNoise);
    const auto row = strip(*cubemap);
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(Processing::textureParameter(*row, GL_TEXTURE_MIN_FILTER), GL_LINEAR);
    EXPECT_EQ(Processing::textureParameter(*row, GL_TEXTURE_MAG_FILTER), GL_LINEAR);
    EXPECT_EQ(Processing::textureParameter(*row, GL_TEXTURE_WRAP_S), GL_CLAMP_TO_EDGE);
    EXPECT_EQ(Processing::textureParameter(*row, GL_TEXTURE_WRAP_T), GL_CLAMP_TO_EDGE);
    EXPECT_EQ(Processing::levelParameter(*row, 4, GL_TEXTURE_WIDTH), 1) << "there are mipmaps";
}

TEST_F(ImageCubemapStripGL, AStripLeavesItsStateAndTheViewportAsItWas)
{
    const auto cubemap = newCubemap(4, &fromNoise);
    glEnable(GL_BLEND);
    glEnable(GL_DEPTH_TEST);
    glViewport(3, 4, 50, 60);
    glClearColor(0.5f, 0.25f, 0.0f, 0.0f);
    ASSERT_NE(strip(*cubemap), nullptr);
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    EXPECT_FALSE(glIsEnabled(GL_DEPTH_TEST));
    GLboolean depthWrites = GL_TRUE;
    glGetBooleanv(GL_DEPTH_WRITEMASK, &depthWrites);
    EXPECT_EQ(depthWrites, GL_FALSE);
    std::array<GLfloat, 4> color = {};
    glGetFloatv(GL_COLOR_CLEAR_VALUE, color.data());
    EXPECT_EQ(color, (std::array<GLfloat, 4>{1, 1, 1, 1}));
    std::array<GLint, 4> viewport = {};
    glGetIntegerv(GL_VIEWPORT, viewport.data());
    EXPECT_EQ(viewport, (std::array<GLint, 4>{3, 4, 50, 60}));
    EXPECT_EQ(ShaderProgram::currentShaderProgram(), nullptr);
}

TEST_F(ImageCubemapStripGL, AStripOfALevelThatIsNotThereIsNothing)
{
    const auto cubemap = newCubemap(4, &fromNoise);
    const LogCapture log;
    EXPECT_NE(strip(*cubemap, 2), nullptr);
    EXPECT_EQ(strip(*cubemap, 3), nullptr) << "no such level";
    EXPECT_EQ(strip(*cubemap, 2000), nullptr) << "beyond the greatest";
    EXPECT_EQ(strip(*cubemap, -1), nullptr);
    {
        const AutoBinder binder(cubemap.get());
        glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MAX_LEVEL, 0);
    }
    EXPECT_EQ(strip(*cubemap, 1), nullptr);
    EXPECT_NE(strip(*cubemap, 0), nullptr);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(ImageCubemapStripGL, AStripOfAFormatThatCannotBeDrawnIntoIsNothing)
{
    const auto cubemap = newCubemap(4, &fromNoise, GL_RGB9_E5);
    const LogCapture log;
    EXPECT_EQ(strip(*cubemap), nullptr);
    // The format is none that the library knows a transfer for, so the strip has no image at all.
    EXPECT_EQ(log.messages(QtCriticalMsg).size(), 2);
    while (glGetError() != GL_NO_ERROR)
        continue;
}

TEST_F(ImageCubemapStripGL, AStripOfWhatIsNoCubemapIsNothing)
{
    const auto source = newCross(kFace, false, &shown);
    const LogCapture log;
    EXPECT_EQ(strip(*source), nullptr);
    EXPECT_EQ(log.texts(), QStringList());
}

// ---- a copy as level -----------------------------------------------------------------------------------------------

TEST_F(ImageCubemapStripGL, ACopyAsLevelBringsAllFaces)
{
    const auto source = newCubemap(4, &fromNoise);
    const auto destination = newCubemap(16, [](int, int, int) { return Vector{9, 9, 9}; });
    ASSERT_TRUE(ZelImageCubemapUtils::copyCubeMapTextureAsLod(source.get(), destination.get(), 2));
    for (int face = 0; face < 6; ++face)
    {
        EXPECT_EQ(faceOfCubemap(*destination, face, 2), faceOfCubemap(*source, face)) << face;
        EXPECT_EQ(colorAt(faceOfCubemap(*destination, face, 1), 0), (Vector{9, 9, 9}));
        EXPECT_EQ(colorAt(faceOfCubemap(*destination, face, 3), 0), (Vector{9, 9, 9}));
    }
}

TEST_F(ImageCubemapStripGL, ACopyLeavesTheViewportAtTheSizeOfTheSource)
{
    const auto source = newCubemap(4, &fromNoise);
    const auto destination = newCubemap(16, &fromNoise);
    for (const int level : {2, 3})
    {
        glViewport(1, 2, 30, 40);
        EXPECT_EQ(ZelImageCubemapUtils::copyCubeMapTextureAsLod(source.get(), destination.get(), level), level == 2);
        std::array<GLint, 4> viewport = {};
        glGetIntegerv(GL_VIEWPORT, viewport.data());
        EXPECT_EQ(viewport, (std::array<GLint, 4>{0, 0, 4, 4})) << level;
        GLint framebuffer = -1;
        glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &framebuffer);
        EXPECT_EQ(framebuffer, 0);
        glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &framebuffer);
        EXPECT_EQ(framebuffer, 0);
    }
}

TEST_F(ImageCubemapStripGL, ACopyWantsSizeAndFormatAlike)
{
    const auto source = newCubemap(4, &fromNoise);
    const auto larger = newCubemap(16, &fromNoise);
    const auto otherFormat = newCubemap(16, &fromNoise, GL_RGBA16F);
    const auto flat = newCross(kFace, false, &shown);
    const LogCapture log;
    using ZelImageCubemapUtils::copyCubeMapTextureAsLod;
    EXPECT_FALSE(copyCubeMapTextureAsLod(source.get(), larger.get(), 1));
    EXPECT_FALSE(copyCubeMapTextureAsLod(source.get(), larger.get(), 7)) << "no such level";
    EXPECT_FALSE(copyCubeMapTextureAsLod(source.get(), larger.get(), -1));
    EXPECT_FALSE(copyCubeMapTextureAsLod(source.get(), otherFormat.get(), 2));
    EXPECT_FALSE(copyCubeMapTextureAsLod(flat.get(), larger.get(), 0)) << "no cube map";
    EXPECT_FALSE(copyCubeMapTextureAsLod(source.get(), flat.get(), 0));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(ImageCubemapStripGL, ACopyIntoATextureOfOneLevelTakesLevelZeroOnly)
{
    const auto source = newCubemap(4, &fromNoise);
    const auto destination = newCubemap(8, &fromNoise);
    {
        const AutoBinder binder(destination.get());
        glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MAX_LEVEL, 0);
    }
    EXPECT_FALSE(ZelImageCubemapUtils::copyCubeMapTextureAsLod(source.get(), destination.get(), 1))
        << "although size and format of that level fit";
    const auto same = newCubemap(8, [](int face, int x, int y) { return noise(face + 6, x, y); });
    ASSERT_TRUE(ZelImageCubemapUtils::copyCubeMapTextureAsLod(same.get(), destination.get(), 0));
    for (int face = 0; face < 6; ++face)
        EXPECT_EQ(faceOfCubemap(*destination, face), faceOfCubemap(*same, face));
}

TEST_F(ImageCubemapStripGL, ACopyTakesNoLevelBeyondTheGreatest)
{
    const auto source = newCubemap(2, &fromNoise);
    const auto destination = newCubemap(8, &fromNoise);
    {
        const AutoBinder binder(destination.get());
        glTexParameteri(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_MAX_LEVEL, 1);
    }
    EXPECT_FALSE(ZelImageCubemapUtils::copyCubeMapTextureAsLod(source.get(), destination.get(), 2));
    const auto fitting = newCubemap(4, &fromNoise);
    EXPECT_TRUE(ZelImageCubemapUtils::copyCubeMapTextureAsLod(fitting.get(), destination.get(), 1));
}

// ---- round trips ---------------------------------------------------------------------------------------------------

TEST_F(ImageCubemapStripGL, FromACubemapToAStripAndBackNothingIsLost)
{
    const auto cubemap = newCubemap(kFace, &fromNoise);
    const auto row = strip(*cubemap);
    ASSERT_NE(row, nullptr);
    const auto upright = upsideDown(*row);
    const auto again = converted(*upright, Type::Linear);
    ASSERT_NE(again, nullptr);
    EXPECT_TRUE(facesAre(*again, kFace, &fromNoise, 1e-5));
}

TEST_F(ImageCubemapStripGL, FromARowToACubemapAndBackNothingIsLost)
{
    const auto source = newPicture(6 * kFace, kFace, [](int x, int y) { return noise(x / kFace, x % kFace, y); });
    const auto cubemap = converted(*source, Type::Linear);
    ASSERT_NE(cubemap, nullptr);
    const auto row = strip(*cubemap);
    ASSERT_NE(row, nullptr);
    const Floats values = Processing::floatsOf(*upsideDown(*row));
    for (int y = 0; y < kFace; ++y)
        for (int x = 0; x < 6 * kFace; ++x)
            ASSERT_LT(distance(colorAt(values, at(x, y, 6 * kFace)), noise(x / kFace, x % kFace, y)), 1e-5);
}

TEST_F(ImageCubemapStripGL, BothCrossesAndTheRowGiveOneCubemap)
{
    const auto lying = newCross(kFace, false, &shown);
    const auto upright = newCross(kFace, true, &shown);
    const auto one = converted(*lying, Type::Cross);
    const auto two = converted(*upright, Type::Cross);
    ASSERT_NE(one, nullptr);
    ASSERT_NE(two, nullptr);
    const auto row = strip(*one);
    ASSERT_NE(row, nullptr);
    const auto unrolled = upsideDown(*row);
    const auto three = converted(*unrolled, Type::Linear);
    ASSERT_NE(three, nullptr);
    for (int face = 0; face < 6; ++face)
    {
        const Floats first = faceOfCubemap(*one, face);
        const Floats second = faceOfCubemap(*two, face);
        const Floats third = faceOfCubemap(*three, face);
        for (std::size_t i = 0; i < first.size(); ++i)
        {
            ASSERT_NEAR(first[i], second[i], 1e-6) << face;
            ASSERT_NEAR(first[i], third[i], 1e-5) << face;
        }
    }
}

TEST_F(ImageCubemapStripGL, ALevelThatWasCopiedInShowsInItsStrip)
{
    const auto source = newCubemap(4, &fromNoise);
    const auto destination = newCubemap(16, [](int, int, int) { return Vector{9, 9, 9}; });
    ASSERT_TRUE(ZelImageCubemapUtils::copyCubeMapTextureAsLod(source.get(), destination.get(), 2));
    const auto expected = strip(*source);
    const auto actual = strip(*destination, 2);
    ASSERT_NE(expected, nullptr);
    ASSERT_NE(actual, nullptr);
    const Floats wanted = Processing::floatsOf(*expected);
    const Floats got = Processing::floatsOf(*actual);
    ASSERT_EQ(got.size(), wanted.size());
    for (std::size_t i = 0; i < got.size(); ++i)
        ASSERT_NEAR(got[i], wanted[i], 1e-5);
}

} // namespace Harrow::Vrk::Test
