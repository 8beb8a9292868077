// SPDX-License-Identifier: MIT
//
// The cube map conversion on the real driver: where each direction of a layout ends up, and the ways back out of a cube
// map. What a source holds is told by the folding of paper, by angles and by OpenGL's own table of faces, and not by
// the matrices of the library.
#include "ZelImageCubemapUtils.h"

#include "ImageCubemapTestTools.h"

namespace Harrow::Vrk::Test
{

using namespace Cubemap;

namespace
{

constexpr int kFace = 8; // texels

/// The direction of a place in a map by latitude and longitude.
Vector latLongPixel(int x, int y, int width, int height)
{
    const double theta = 2.0 * M_PI * (x + 0.5) / width;
    const double phi = M_PI * (y + 0.5) / height;
    return {std::sin(phi) * std::cos(theta), std::cos(phi), std::sin(phi) * std::sin(theta)};
}

Vector colorOfFace(const Vector& direction)
{
    return kFaceColors[std::size_t(faceOf(direction))];
}

/// Six colours out, by direction alone.
testing::AssertionResult showsSixColors(Texture& cubemap, int size)
{
    return facesAre(
        cubemap, size, [](int face, int, int) { return kFaceColors[std::size_t(face)]; }, 0.0);
}

} // namespace

class ImageCubemapLayoutsGL : public ImageCubemapFixture
{
};

// ---- six colours in, six directions out ----------------------------------------------------------------------------

TEST_F(ImageCubemapLayoutsGL, SixColorsOfALyingCross)
{
    const auto source = newCross(kFace, false, &colorOfFace);
    const auto cubemap = converted(*source, Type::Cross);
    ASSERT_NE(cubemap, nullptr);
    EXPECT_TRUE(showsSixColors(*cubemap, kFace));
}

TEST_F(ImageCubemapLayoutsGL, SixColorsOfAnUprightCross)
{
    const auto source = newCross(kFace, true, &colorOfFace);
    const auto cubemap = converted(*source, Type::Cross);
    ASSERT_NE(cubemap, nullptr);
    EXPECT_TRUE(showsSixColors(*cubemap, kFace));
}

TEST_F(ImageCubemapLayoutsGL, SixColorsOfARow)
{
    const auto source = newPicture(6 * kFace, kFace, [](int x, int) { return kFaceColors[std::size_t(x / kFace)]; });
    const auto cubemap = converted(*source, Type::Linear);
    ASSERT_NE(cubemap, nullptr);
    EXPECT_TRUE(showsSixColors(*cubemap, kFace));
}

TEST_F(ImageCubemapLayoutsGL, SixColorsOfAMapByLatitudeAndLongitude)
{
    constexpr int width = 256, height = 128, size = width / 4;
    const auto source =
        newPicture(width, height, [](int x, int y) { return colorOfFace(latLongPixel(x, y, width, height)); });
    const auto cubemap = converted(*source, Type::LatLong);
    ASSERT_NE(cubemap, nullptr);
    for (int face = 0; face < 6; ++face)
    {
        const Floats values = faceOfCubemap(*cubemap, face);
        ASSERT_EQ(values.size(), std::size_t(size * size * 4));
        // At the rim the nearest pixel of the map may lie beyond it.
        for (int y = 3; y < size - 3; ++y)
            for (int x = 3; x < size - 3; ++x)
                ASSERT_EQ(colorAt(values, at(x, y, size)), kFaceColors[std::size_t(face)])
                    << face << " at " << x << ", " << y;
    }
}

TEST_F(ImageCubemapLayoutsGL, ColorsOfAMirrorBall)
{
    // Its picture has +X at the right, +Y at the last row of the texture, and both +Z and -Z in the middle.
    constexpr int width = 64, size = width / 4;
    const auto source = newPicture(width, width,
                                   [](int x, int y)
                                   {
                                       const double right = middle(x, width), up = middle(y, width);
                                       if (std::abs(right) < 0.55 && std::abs(up) < 0.55)
                                           return kFaceColors[4];
                                       if (std::abs(right) > std::abs(up))
                                           return kFaceColors[right > 0 ? 0 : 1];
                                       return kFaceColors[up > 0 ? 2 : 3];
                                   });
    const auto cubemap = converted(*source, Type::Sphere);
    ASSERT_NE(cubemap, nullptr);
    for (const auto& [face, expected] : {std::pair{0, 0}, {1, 1}, {2, 2}, {3, 3}, {4, 4}, {5, 4}})
    {
        const Floats values = faceOfCubemap(*cubemap, face);
        ASSERT_EQ(values.size(), std::size_t(size * size * 4));
        for (int y = 4; y < size - 4; ++y)
            for (int x = 4; x < size - 4; ++x)
                ASSERT_EQ(colorAt(values, at(x, y, size)), kFaceColors[std::size_t(expected)])
                    << face << " at " << x << ", " << y;
    }
}

// ---- every direction, texel by texel -------------------------------------------------------------------------------

TEST_F(ImageCubemapLayoutsGL, EveryTexelOfACrossComesFromItsDirection)
{
    for (const bool portrait : {false, true})
    {
        const auto source = newCross(kFace, portrait, &shown);
        const auto cubemap = converted(*source, Type::Cross);
        ASSERT_NE(cubemap, nullptr) << portrait;
        EXPECT_TRUE(facesAre(
            *cubemap, kFace, [](int face, int x, int y) { return shown(texelPlace(face, x, y, kFace)); }, 1e-6))
            << (portrait ? "upright" : "lying");
    }
}

TEST_F(ImageCubemapLayoutsGL, EveryTexelOfARowComesFromItsPlace)
{
    const auto source = newPicture(6 * kFace, kFace, [](int x, int y) { return noise(x / kFace, x % kFace, y); });
    const auto cubemap = converted(*source, Type::Linear);
    ASSERT_NE(cubemap, nullptr);
    EXPECT_TRUE(facesAre(*cubemap, kFace, &fromNoise, 0.0)) << "rows and columns are those of OpenGL's faces";
}

TEST_F(ImageCubemapLayoutsGL, EveryTexelOfALatLongMapComesFromItsDirection)
{
    constexpr int width = 512, height = 256, size = width / 4;
    const auto source =
        newPicture(width, height, [](int x, int y) { return shown(latLongPixel(x, y, width, height)); });
    const auto cubemap = converted(*source, Type::LatLong);
    ASSERT_NE(cubemap, nullptr);
    // Half the diagonal of a pixel at the equator, and what OpenGL's arc cosine may be off.
    constexpr double tolerance = 0.5 * 0.5 * 1.4143 * M_PI / height + 0.001;
    EXPECT_TRUE(facesAre(
        *cubemap, size, [](int face, int x, int y) { return shown(normalized(texelPlace(face, x, y, size))); },
        tolerance));
}

TEST_F(ImageCubemapLayoutsGL, EveryTexelOfAMirrorBallComesFromXAndY)
{
    constexpr int width = 128, size = width / 4;
    const auto source = newPicture(width, width,
                                   [](int x, int y) {
                                       return Vector{(x + 0.5) / width, (y + 0.5) / width, 0.0};
                                   });
    const auto cubemap = converted(*source, Type::Sphere);
    ASSERT_NE(cubemap, nullptr);
    EXPECT_TRUE(facesAre(
        *cubemap, size,
        [](int face, int x, int y)
        {
            const Vector n = normalized(texelPlace(face, x, y, size));
            return Vector{0.5 * n[0] + 0.5, 0.5 * n[1] + 0.5, 0.0};
        },
        0.5 / width + 1e-5));
}

TEST_F(ImageCubemapLayoutsGL, ThePolesOfALatLongMapHaveNoLongitudeAndAreThereAllTheSame)
{
    // Faces of an odd size have a texel that looks straight up or down.
    constexpr int width = 20, height = 10;
    const auto source = newPicture(width, height,
                                   [](int, int y) {
                                       return Vector{y == 0 ? 1.0 : 0.0, y == height - 1 ? 1.0 : 0.0, 0.5};
                                   });
    // The lowest point is at v 1, which is the upper edge again where v repeats.
    Processing::setTextureParameter(*source, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    const auto cubemap = converted(*source, Type::LatLong);
    ASSERT_NE(cubemap, nullptr);
    EXPECT_EQ(colorAt(faceOfCubemap(*cubemap, 2), at(2, 2, 5)), (Vector{1.0, 0.0, 0.5}));
    EXPECT_EQ(colorAt(faceOfCubemap(*cubemap, 3), at(2, 2, 5)), (Vector{0.0, 1.0, 0.5}));
}

// ---- sizes and what the result is ----------------------------------------------------------------------------------

TEST_F(ImageCubemapLayoutsGL, ACubemapHasMipmapsFiltersAndClampedEdges)
{
    const auto source = newCross(kFace, false, [](const Vector&) { return Vector{0.5, 2.0, 0.125}; });
    const auto cubemap = converted(*source, Type::Cross);
    ASSERT_NE(cubemap, nullptr);
    for (int level = 0; level < 4; ++level)
        EXPECT_TRUE(facesAre(
            *cubemap, kFace >> level,
            [](int, int, int) {
                return Vector{0.5, 2.0, 0.125};
            },
            0.0, level))
            << level;
    EXPECT_EQ(faceParameter(*cubemap, 5, 0, GL_TEXTURE_INTERNAL_FORMAT), GL_RGBA32F);
    const AutoBinder binder(cubemap.get());
    const struct
    {
        GLenum name;
        GLint value;
    } rows[] = {{GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE},
                {GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE},
                {GL_TEXTURE_WRAP_R, GL_CLAMP_TO_EDGE},
                {GL_TEXTURE_MAG_FILTER, GL_LINEAR},
                {GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR}};
    for (const auto& row : rows)
    {
        GLint value = 0;
        glGetTexParameteriv(GL_TEXTURE_CUBE_MAP, row.name, &value);
        EXPECT_EQ(value, row.value) << row.name;
    }
}

TEST_F(ImageCubemapLayoutsGL, TheSourceKeepsTheFiltersThatItWasReadWith)
{
    const auto source = newCross(kFace, false, &shown);
    Processing::setTextureParameter(*source, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    Processing::setTextureParameter(*source, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    ASSERT_NE(converted(*source, Type::Cross), nullptr);
    EXPECT_EQ(Processing::textureParameter(*source, GL_TEXTURE_MIN_FILTER), GL_NEAREST);
    EXPECT_EQ(Processing::textureParameter(*source, GL_TEXTURE_MAG_FILTER), GL_NEAREST);
}

TEST_F(ImageCubemapLayoutsGL, FacesHaveTheSizeThatTheLayoutTells)
{
    const struct
    {
        Type type;
        int width, height, maxSize, size;
    } rows[] = {
        {Type::Sphere, 64, 64, 0, 16},   {Type::LatLong, 64, 32, 0, 16},  {Type::LatLong, 67, 31, 0, 16},
        {Type::Linear, 48, 8, 0, 8},     {Type::Cross, 64, 48, 0, 16},    {Type::Cross, 48, 64, 0, 16},
        {Type::Cross, 50, 30, 0, 12}, // 5:3 is no cross, and taken as one
        {Type::LatLong, 64, 32, 5, 5},   {Type::LatLong, 64, 32, 16, 16}, {Type::LatLong, 64, 32, 1000, 16},
        {Type::LatLong, 64, 32, -3, 16},
    };
    for (const auto& row : rows)
    {
        const auto source = newPicture(row.width, row.height, [](int, int) { return Vector{1, 0.5, 0.25}; });
        const auto cubemap = converted(*source, row.type, row.maxSize);
        ASSERT_NE(cubemap, nullptr) << row.width;
        for (int face = 0; face < 6; ++face)
        {
            EXPECT_EQ(faceParameter(*cubemap, face, 0, GL_TEXTURE_WIDTH), row.size) << row.width << " " << row.maxSize;
            EXPECT_EQ(faceParameter(*cubemap, face, 0, GL_TEXTURE_HEIGHT), row.size) << row.width;
        }
        EXPECT_TRUE(facesAre(
            *cubemap, row.size,
            [](int, int, int) {
                return Vector{1, 0.5, 0.25};
            },
            0.0));
    }
}

TEST_F(ImageCubemapLayoutsGL, AFormatOfBytesStaysOne)
{
    const auto source = Processing::newByteTexture(Processing::Bytes(16 * 12 * 4, 77), 16, 12);
    const auto cubemap = converted(*source, Type::Cross);
    ASSERT_NE(cubemap, nullptr);
    EXPECT_EQ(faceParameter(*cubemap, 0, 0, GL_TEXTURE_INTERNAL_FORMAT), GL_RGBA8);
    EXPECT_TRUE(facesAre(
        *cubemap, 4,
        [](int, int, int) {
            return Vector{77 / 255.0, 77 / 255.0, 77 / 255.0};
        },
        1e-6));
}

TEST_F(ImageCubemapLayoutsGL, TheColorSpaceHasNoEffect)
{
    const auto source = newCross(kFace, false, &shown);
    const auto plain = converted(*source, Type::Cross);
    for (const auto space : {ColorSpace::Gamma22, ColorSpace::sRGB, static_cast<ColorSpace>(99)})
    {
        const std::unique_ptr<Texture> other(
            ZelImageCubemapUtils::createGLCubemapFromTexture(source.get(), Type::Cross, GL_TEXTURE_CUBE_MAP, space, 0));
        ASSERT_NE(other, nullptr);
        for (int face = 0; face < 6; ++face)
            EXPECT_EQ(faceOfCubemap(*other, face), faceOfCubemap(*plain, face));
    }
}

TEST_F(ImageCubemapLayoutsGL, AnArrayOfOneCubeTakesTheSameFaces)
{
    const auto source = newPicture(6 * kFace, kFace, [](int x, int y) { return noise(x / kFace, x % kFace, y); });
    const LogCapture log;
    const auto cubemap = converted(*source, Type::Linear, 0, GL_TEXTURE_CUBE_MAP_ARRAY);
    if (isFloor())
    {
        EXPECT_EQ(cubemap, nullptr) << "arrays came with OpenGL 4.0";
        EXPECT_EQ(log.messages(), QStringList(QStringLiteral("[ !! ] Unhandled Texture Type 0x9009")));
        return;
    }
    ASSERT_NE(cubemap, nullptr);
    const Floats values = layersOf(*cubemap, kFace, 6);
    for (int face = 0; face < 6; ++face)
        for (int y = 0; y < kFace; ++y)
            for (int x = 0; x < kFace; ++x)
                ASSERT_LT(distance(colorAt(values, at(x, face * kFace + y, kFace)), noise(face, x, y)), 1e-6);
}

TEST_F(ImageCubemapLayoutsGL, AConversionLeavesItsState)
{
    const auto source = newCross(kFace, false, &shown);
    glEnable(GL_BLEND);
    glClearColor(0.5f, 0.25f, 1.0f, 1.0f);
    glViewport(3, 4, 50, 60);
    ASSERT_NE(converted(*source, Type::Cross), nullptr);
    EXPECT_FALSE(glIsEnabled(GL_BLEND));
    std::array<GLfloat, 4> color = {1, 1, 1, 1};
    glGetFloatv(GL_COLOR_CLEAR_VALUE, color.data());
    EXPECT_EQ(color, (std::array<GLfloat, 4>{0, 0, 0, 0}));
    std::array<GLint, 4> viewport = {};
    glGetIntegerv(GL_VIEWPORT, viewport.data());
    EXPECT_EQ(viewport, (std::array<GLint, 4>{0, 0, kFace, kFace}));
    GLint framebuffer = -1;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &framebuffer);
    EXPECT_EQ(framebuffer, 0);
    EXPECT_EQ(ShaderProgram::currentShaderProgram(), nullptr);
}

TEST_F(ImageCubemapLayoutsGL, FacesOfNoSizeAreOpenGLsBusiness)
{
    const auto source = newPicture(3, 2, [](int, int) { return Vector{1, 1, 1}; });
    const auto cubemap = converted(*source, Type::LatLong);
    ASSERT_NE(cubemap, nullptr) << "three quarters of a texel";
    EXPECT_EQ(faceParameter(*cubemap, 0, 0, GL_TEXTURE_WIDTH), 0);
    EXPECT_NE(glGetError(), GLenum(GL_NO_ERROR));
    while (glGetError() != GL_NO_ERROR)
        continue;
}

TEST_F(ImageCubemapLayoutsGL, AnotherTargetGivesNothing)
{
    const auto source = newCross(kFace, false, &shown);
    const LogCapture log;
    EXPECT_EQ(converted(*source, Type::Cross, 0, GL_TEXTURE_2D), nullptr);
    EXPECT_EQ(log.messages(), QStringList({QStringLiteral("[ !! ] Unhandled Texture Type 0xDE1"),
                                           QStringLiteral("[ !! ] Unhandled Texture Type 0xDE1")}));
}

} // namespace Harrow::Vrk::Test
