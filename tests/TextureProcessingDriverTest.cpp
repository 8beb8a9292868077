// SPDX-License-Identifier: MIT
//
// Texture processing on the real driver: what is in the result, checked against the same formula on the CPU.
#include "TextureProcessing.h"

#include "TextureProcessingDriverTestTools.h"
#include "support/LogCapture.h"

#include <QFile>
#include <QTemporaryDir>
#include <QVariant>
#include <QVector4D>

#include <bitset>
#include <string>
#include <utility>

namespace Harrow::Vrk::Test
{

using namespace Processing;

class TextureProcessingGL : public TextureProcessingDriverFixture
{
};

// ---- results -------------------------------------------------------------------------------------------------------

TEST_F(TextureProcessingGL, ThePictureHoldsEveryByteInEveryChannel)
{
    const Bytes bytes = picture();
    for (std::size_t channel = 0; channel < 4; ++channel)
    {
        std::bitset<256> seen;
        for (std::size_t i = channel; i < bytes.size(); i += 4)
            seen.set(bytes[i]);
        EXPECT_TRUE(seen.all());
    }
}

class TextureProcessingInPlaceGL : public TextureProcessingGL, public testing::WithParamInterface<std::size_t>
{
protected:
    static const Operation& operation()
    {
        return operations()[GetParam()];
    }
};

TEST_P(TextureProcessingInPlaceGL, EveryByteComesOutAsTheFormulaSays)
{
    const Bytes source = picture();
    const LogCapture log;
    EXPECT_TRUE(isResult(operation(), source, processed(operation(), source)));
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_P(TextureProcessingInPlaceGL, TheSameHoldsWithALinearFilter)
{
    const Bytes source = picture();
    Texture* texture = newByteTexture(source).release();
    setTextureParameter(*texture, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    setTextureParameter(*texture, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    EXPECT_TRUE(operation().run(texture));
    Operation tolerant = operation();
    tolerant.keepsAlpha = false;
    EXPECT_TRUE(isResult(tolerant, source, bytesOf(*texture)));
    delete texture;
}

TEST_P(TextureProcessingInPlaceGL, TheResultHasMipmapsWhereTheSourceHadNone)
{
    Texture* texture = newByteTexture(picture()).release();
    EXPECT_TRUE(operation().run(texture));
    for (int level = 0; level <= 6; ++level)
    {
        EXPECT_EQ(levelParameter(*texture, level, GL_TEXTURE_WIDTH), kSize >> level);
        EXPECT_EQ(levelParameter(*texture, level, GL_TEXTURE_HEIGHT), kSize >> level);
    }
    EXPECT_EQ(levelParameter(*texture, 7, GL_TEXTURE_WIDTH), 0);
    delete texture;
}

TEST_P(TextureProcessingInPlaceGL, TheMipmapsAreOfTheResultAndNotOfTheSource)
{
    const Bytes source(std::size_t(kTexels) * 4, 128); // one colour, so that every level is of one colour too
    Texture* texture = newByteTexture(source).release();
    {
        const AutoBinder binder(texture);
        const Bytes wrong(std::size_t(kTexels), 255);
        for (int level = 1; level <= 6; ++level)
            glTexImage2D(GL_TEXTURE_2D, level, GL_RGBA8, kSize >> level, kSize >> level, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                         wrong.data());
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    }
    EXPECT_TRUE(operation().run(texture));
    const Color in = {128 / 255.0, 128 / 255.0, 128 / 255.0, 128 / 255.0};
    const Color out = operation().formula(in);
    for (int level = 0; level <= 6; ++level)
    {
        const Bytes bytes = bytesOf(*texture, level);
        ASSERT_FALSE(bytes.empty());
        for (std::size_t i = 0; i < bytes.size(); ++i)
            ASSERT_NEAR(bytes[i], out[i % 4] * 255.0, 1.0) << "level " << level;
    }
    delete texture;
}

TEST_P(TextureProcessingInPlaceGL, TheRangeOfLevelsIsKeptAndBoundsTheMipmaps)
{
    Texture* texture = newByteTexture(picture()).release();
    setTextureParameter(*texture, GL_TEXTURE_MAX_LEVEL, 2);
    EXPECT_TRUE(operation().run(texture));
    EXPECT_EQ(textureParameter(*texture, GL_TEXTURE_MAX_LEVEL), 2);
    EXPECT_EQ(levelParameter(*texture, 2, GL_TEXTURE_WIDTH), 16);
    EXPECT_EQ(levelParameter(*texture, 3, GL_TEXTURE_WIDTH), 0);
    delete texture;
}

TEST_P(TextureProcessingInPlaceGL, FiltersWrapModesSizeAndFormatStay)
{
    Texture* texture = newTexture<unsigned char>(GL_RGB8, GL_RGB, GL_UNSIGNED_BYTE, {}, 40, 24).release();
    const std::pair<GLenum, GLint> parameters[] = {{GL_TEXTURE_MIN_FILTER, GL_NEAREST_MIPMAP_LINEAR},
                                                   {GL_TEXTURE_MAG_FILTER, GL_LINEAR},
                                                   {GL_TEXTURE_WRAP_S, GL_MIRRORED_REPEAT},
                                                   {GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE},
                                                   {GL_TEXTURE_BASE_LEVEL, 0},
                                                   {GL_TEXTURE_MAX_LEVEL, 3}};
    for (const auto& [name, value] : parameters)
        setTextureParameter(*texture, name, value);
    EXPECT_TRUE(operation().run(texture));
    for (const auto& [name, value] : parameters)
        EXPECT_EQ(textureParameter(*texture, name), value) << name;
    EXPECT_EQ(levelParameter(*texture, 0, GL_TEXTURE_WIDTH), 40);
    EXPECT_EQ(levelParameter(*texture, 0, GL_TEXTURE_HEIGHT), 24);
    EXPECT_EQ(levelParameter(*texture, 0, GL_TEXTURE_INTERNAL_FORMAT), GL_RGB8);
    delete texture;
}

TEST_P(TextureProcessingInPlaceGL, TheOldTextureIsGoneAndTheNewOneHasAnotherName)
{
    Texture* texture = newByteTexture(picture()).release();
    const unsigned before = texture->textureID();
    EXPECT_TRUE(operation().run(texture));
    EXPECT_NE(texture->textureID(), before);
    EXPECT_EQ(glIsTexture(before), GL_FALSE);
    EXPECT_EQ(glIsTexture(texture->textureID()), GL_TRUE);
    delete texture;
}

INSTANTIATE_TEST_SUITE_P(Operations, TextureProcessingInPlaceGL, testing::Range<std::size_t>(0, 5),
                         [](const auto& tested) { return std::string(operations()[tested.param].name); });

TEST_F(TextureProcessingGL, FlipYTwiceIsThePictureAgain)
{
    const Bytes source = picture();
    Texture* texture = newByteTexture(source).release();
    EXPECT_TRUE(FlipY(texture));
    EXPECT_NE(bytesOf(*texture), source);
    EXPECT_TRUE(FlipY(texture));
    EXPECT_EQ(bytesOf(*texture), source);
    delete texture;
}

// Near black the two differ from the standard's curves, which are straight lines there.
TEST_F(TextureProcessingGL, LinearToSrgbHasNoLinearSegmentAndIsNotClamped)
{
    const std::vector<Color> colors = {{0.0, 0.0005, 0.003, 0.0}, {0.04, 0.5, 1.0, 0.25}, {2.5, 4.0, 0.001, 7.0}};
    std::vector<Color> expected;
    for (const Color& color : colors)
        expected.push_back(linearToSrgb(color));
    EXPECT_NEAR(expected[0][0], -0.055, 1e-9) << "black comes out below black";
    EXPECT_LT(expected[0][1], 0.0);
    EXPECT_TRUE(areNear(expected, processedFloats(&LinearToSrgb, colors)));
}

TEST_F(TextureProcessingGL, SrgbToLinearHasNoLinearSegmentAndConvertsAlpha)
{
    const std::vector<Color> colors = {{0.0, 0.0005, 0.003, 0.0}, {0.04, 0.5, 1.0, 0.25}, {2.5, 4.0, 0.001, 0.5}};
    std::vector<Color> expected;
    for (const Color& color : colors)
        expected.push_back(srgbToLinear(color));
    EXPECT_GT(expected[0][0], 8e-4) << "black comes out above black";
    EXPECT_NEAR(expected[2][3], 0.2140, 1e-4);
    EXPECT_TRUE(areNear(expected, processedFloats(&SrgbToLinear, colors)));
}

TEST_F(TextureProcessingGL, PremultiplyIsNotClamped)
{
    const std::vector<Color> colors = {{-1.0, 0.5, 3.0, 2.0}, {1.0, 2.0, 4.0, -0.5}, {1.0, 1.0, 1.0, 0.0}};
    const std::vector<Color> expected = {{-2.0, 1.0, 6.0, 2.0}, {-0.5, -1.0, -2.0, -0.5}, {0.0, 0.0, 0.0, 0.0}};
    EXPECT_TRUE(areNear(expected, processedFloats(&Premultiply, colors)));
}

TEST_F(TextureProcessingGL, RemapColorRangeIsNotClampedByItsCommaExpression)
{
    const std::vector<Color> colors = {{0.0, 0.5, 1.0, 9.0}, {-2.0, 3.0, 0.25, -1.0}};
    const std::vector<Color> expected = {{-2.0, 0.5, 3.0, 9.0}, {-12.0, 13.0, -0.75, -1.0}};
    const auto run = [](Texture*& texture) { return RemapColorRange(texture, -2.0f, 3.0f); };
    EXPECT_TRUE(areNear(expected, processedFloats(run, colors)));
}

TEST_F(TextureProcessingGL, RemapColorRangeMayInvertNarrowAndGoBeyondTheFormat)
{
    const std::pair<float, float> ranges[] = {{1.0f, 0.0f}, {0.5f, 0.5f}, {-1.0f, 2.0f}, {0.0f, 0.5f}, {0.5f, 1.0f}};
    const Bytes source = picture();
    for (const auto& [low, high] : ranges)
    {
        const Operation operation = {
            "RemapColorRange",
            [low = low, high = high](Texture*& texture) { return RemapColorRange(texture, low, high); },
            [low = low, high = high](const Color& c) { return remap(c, low, high); }, true, false};
        EXPECT_TRUE(isResult(operation, source, processed(operation, source))) << low << " to " << high;
    }
}

TEST_F(TextureProcessingGL, RemapColorRangeToTheSameRangeLeavesTheTexture)
{
    const Bytes source = picture();
    const auto owner = newByteTexture(source);
    Texture* texture = owner.get();
    EXPECT_FALSE(RemapColorRange(texture, 0.0f, 1.0f));
    EXPECT_EQ(texture, owner.get());
    EXPECT_EQ(bytesOf(*texture), source);
}

TEST_F(TextureProcessingGL, TheResultIsTheSameByBaseInstance)
{
    EXPECT_EQ(DrawBuffers::isBaseInstanceDrawingSupported(), !isFloor());
    DrawBuffers::useBaseInstanceDrawing(!isFloor());
    const Bytes source = picture();
    EXPECT_TRUE(isResult(operations()[0], source, processed(operations()[0], source)));
    DrawBuffers::useBaseInstanceDrawing(false);
}

// ---- compressed sources --------------------------------------------------------------------------------------------

class TextureProcessingCompressedGL : public TextureProcessingGL, public testing::WithParamInterface<GLenum>
{
};

TEST_P(TextureProcessingCompressedGL, ACompressedSourceGivesAnRGBAOneOfTheSameSizeFiltersAndWrapModes)
{
    Texture* texture = newTexture(static_cast<GLint>(GetParam()), GL_RGBA, GL_UNSIGNED_BYTE, picture()).release();
    ASSERT_EQ(levelParameter(*texture, 0, GL_TEXTURE_COMPRESSED), GL_TRUE);
    const std::pair<GLenum, GLint> parameters[] = {{GL_TEXTURE_MIN_FILTER, GL_LINEAR},
                                                   {GL_TEXTURE_MAG_FILTER, GL_NEAREST},
                                                   {GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE},
                                                   {GL_TEXTURE_WRAP_T, GL_MIRRORED_REPEAT}};
    for (const auto& [name, value] : parameters)
        setTextureParameter(*texture, name, value);
    const std::unique_ptr<Texture> copy(WritableCopyOfTexture(texture, 0, 0));
    const Bytes unpacked = bytesOf(*texture); // as the driver reads its own blocks
    ASSERT_TRUE(FlipY(texture));
    for (Texture* const result : {copy.get(), texture})
    {
        EXPECT_EQ(levelParameter(*result, 0, GL_TEXTURE_COMPRESSED), GL_FALSE);
        EXPECT_EQ(levelParameter(*result, 0, GL_TEXTURE_INTERNAL_FORMAT), GL_RGBA);
        EXPECT_EQ(levelParameter(*result, 0, GL_TEXTURE_WIDTH), kSize);
        EXPECT_EQ(levelParameter(*result, 0, GL_TEXTURE_HEIGHT), kSize);
        for (const auto& [name, value] : parameters)
            EXPECT_EQ(textureParameter(*result, name), value) << name;
    }
    Operation flip = operations()[0];
    EXPECT_TRUE(isResult(flip, unpacked, bytesOf(*texture)));
    delete texture;
}

INSTANTIATE_TEST_SUITE_P(Formats, TextureProcessingCompressedGL,
                         testing::Values(GL_COMPRESSED_RGBA, GL_COMPRESSED_RGBA_S3TC_DXT5_EXT));

// ---- writable copies -----------------------------------------------------------------------------------------------

TEST_F(TextureProcessingGL, AWritableCopyOfAnotherLevelHasStorageForThatLevelAlone)
{
    const auto source = newByteTexture(picture());
    {
        const AutoBinder binder(source.get());
        glGenerateMipmap(GL_TEXTURE_2D);
    }
    const std::unique_ptr<Texture> copy(WritableCopyOfTexture(source.get(), 0, 1));
    ASSERT_TRUE(copy);
    EXPECT_EQ(levelParameter(*copy, 1, GL_TEXTURE_WIDTH), kSize / 2);
    EXPECT_EQ(levelParameter(*copy, 1, GL_TEXTURE_HEIGHT), kSize / 2);
    EXPECT_EQ(levelParameter(*copy, 1, GL_TEXTURE_INTERNAL_FORMAT), GL_RGBA8);
    EXPECT_EQ(levelParameter(*copy, 0, GL_TEXTURE_WIDTH), 0);
}

TEST_F(TextureProcessingGL, AWritableCopyTakesAGivenFormat)
{
    const auto source = newByteTexture(picture());
    const std::unique_ptr<Texture> copy(WritableCopyOfTexture(source.get(), GL_RGBA16F, 0));
    ASSERT_TRUE(copy);
    EXPECT_EQ(levelParameter(*copy, 0, GL_TEXTURE_INTERNAL_FORMAT), GL_RGBA16F);
    EXPECT_EQ(levelParameter(*copy, 0, GL_TEXTURE_WIDTH), kSize);
}

// ---- ProcessTexture ------------------------------------------------------------------------------------------------

TEST_F(TextureProcessingGL, ProcessTextureSetsUniformsAndTakesTheSourceItself)
{
    const Bytes source = picture();
    const auto from = newByteTexture(source);
    const auto to = newByteTexture({});
    const auto program = newShader("texture(u_Src, vo_TexCoord).bgra + u_color");
    ASSERT_TRUE(program);
    const QVector4D color(0.25f, 0.0f, -0.5f, 1.0f);
    ProcessTexture(program.get(),
                   {{QStringLiteral("u_color"), color}, {QStringLiteral("u_Src"), 3}, {QStringLiteral("u_none"), 1.0f}},
                   from.get(), to.get());
    const Operation expected = {"the shader", nullptr,
                                [](const Color& c) {
                                    return Color{c[2] + 0.25, c[1], c[0] - 0.5, c[3] + 1.0};
                                },
                                false, false};
    EXPECT_TRUE(isResult(expected, source, bytesOf(*to)));
    EXPECT_EQ(bytesOf(*from), source);
}

TEST_F(TextureProcessingGL, AShaderFromAFileServesAsOneFromAString)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("swap.glslc"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(fragmentStage("texture(u_Src, vo_TexCoord).bgra").toUtf8());
    file.close();
    const Bytes source = picture();
    const auto from = newByteTexture(source);
    const auto to = newByteTexture({});
    const std::unique_ptr<ShaderProgram> program(MakeTextureShaderFromFile(path));
    ASSERT_TRUE(program);
    ProcessTexture(program.get(), {}, from.get(), to.get());
    const Operation expected = {"the shader", nullptr,
                                [](const Color& c) {
                                    return Color{c[2], c[1], c[0], c[3]};
                                },
                                true, false};
    EXPECT_TRUE(isResult(expected, source, bytesOf(*to)));
}

TEST_F(TextureProcessingGL, BrokenShadersAreNullAndOnlyTheStringsOneWarnsOfItsOwn)
{
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("broken.glslc"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const QString text = fragmentStage("no such thing");
    file.write(text.toUtf8());
    file.close();
    const QString start = QStringLiteral("shader program failed to compile:\n");
    {
        const LogCapture log;
        EXPECT_EQ(MakeTextureShaderFromFile(path), nullptr);
        EXPECT_EQ(log.messages().filter(QStringLiteral("shader program failed")), QStringList());
    }
    const LogCapture log;
    EXPECT_EQ(MakeTextureShaderFromString(text), nullptr);
    EXPECT_EQ(log.messages().filter(QStringLiteral("shader program failed")).size(), 1);
    EXPECT_TRUE(log.messages().last().startsWith(start));
    EXPECT_GT(log.messages().last().size(), start.size()) << "the driver says why";
}

TEST_F(TextureProcessingGL, AShaderThatDoesNotLinkIsNullWithAWarning)
{
    // Each stage compiles for itself; the coordinate is of another type than the vertex stage writes.
    const QString text = QStringLiteral("#version 150\nuniform sampler2D u_Src;\nin vec3 vo_TexCoord;\n"
                                        "out vec4 out_FragColor;\n"
                                        "void main() { out_FragColor = texture(u_Src, vo_TexCoord.xz); }\n");
    const LogCapture log;
    EXPECT_EQ(MakeTextureShaderFromString(text), nullptr);
    EXPECT_TRUE(log.messages().last().startsWith(QStringLiteral("shader program failed to link:\n")));
}

TEST_F(TextureProcessingGL, ALargerDestinationIsCoveredAsFarAsTheSourceGoes)
{
    const Bytes source = picture();
    const auto from = newByteTexture(source);
    constexpr int kWidth = 100;
    constexpr int kHeight = 80;
    const auto to = newByteTexture(Bytes(std::size_t(kWidth) * kHeight * 4, 77), kWidth, kHeight);
    const auto program = newShader("texture(u_Src, vo_TexCoord)");
    ProcessTexture(program.get(), {}, from.get(), to.get());
    const Bytes result = bytesOf(*to);
    const std::array<unsigned char, 4> black = {0, 0, 0, 255};
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            for (std::size_t channel = 0; channel < 4; ++channel)
            {
                const bool covered = x < kSize && y < kSize;
                ASSERT_EQ(result[texelAt(x, y, kWidth) + channel],
                          covered ? source[texelAt(x, y, kSize) + channel] : black[channel])
                    << x << ", " << y;
            }
}

TEST_F(TextureProcessingGL, ASmallerDestinationGetsTheLowerLeftCornerUnscaled)
{
    const Bytes source = picture();
    const auto from = newByteTexture(source);
    constexpr int kWidth = 40;
    constexpr int kHeight = 24;
    const auto to = newByteTexture({}, kWidth, kHeight);
    const auto program = newShader("texture(u_Src, vo_TexCoord)");
    ProcessTexture(program.get(), {}, from.get(), to.get());
    const Bytes result = bytesOf(*to);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            for (std::size_t channel = 0; channel < 4; ++channel)
                ASSERT_EQ(result[texelAt(x, y, kWidth) + channel], source[texelAt(x, y, kSize) + channel])
                    << x << ", " << y;
}

// ---- BlitTexture ---------------------------------------------------------------------------------------------------

TEST_F(TextureProcessingGL, BlitTextureCopiesTheCornerOfAColourTexture)
{
    const Bytes source = picture();
    const auto from = newByteTexture(source);
    const auto to = newByteTexture(Bytes(source.size(), 77));
    BlitTexture(from.get(), to.get(), RGBA, 50, 20);
    const Bytes result = bytesOf(*to);
    for (int y = 0; y < kSize; ++y)
        for (int x = 0; x < kSize; ++x)
            for (std::size_t channel = 0; channel < 4; ++channel)
            {
                const std::size_t at = texelAt(x, y, kSize) + channel;
                ASSERT_EQ(result[at], x < 50 && y < 20 ? source[at] : 77) << x << ", " << y;
            }
    EXPECT_EQ(bytesOf(*from), source);
}

TEST_F(TextureProcessingGL, BlitTextureCopiesDepth)
{
    Floats source;
    for (int i = 0; i < kTexels; ++i)
        source.push_back(float(i) / float(kTexels));
    const auto from = newTexture(GL_DEPTH_COMPONENT32F, GL_DEPTH_COMPONENT, GL_FLOAT, source);
    const auto to = newTexture(GL_DEPTH_COMPONENT32F, GL_DEPTH_COMPONENT, GL_FLOAT, Floats(kTexels, 0.75f));
    BlitTexture(from.get(), to.get(), DEPTH32F, kSize, 32);
    const Floats result = floatsOf(*to, GL_DEPTH_COMPONENT, 1);
    for (std::size_t i = 0; i < result.size(); ++i)
        ASSERT_EQ(result[i], i < std::size_t(kSize) * 32 ? source[i] : 0.75f) << i;
}

TEST_F(TextureProcessingGL, BlitTextureCopiesDepthWithStencil)
{
    std::vector<GLuint> source;
    for (GLuint i = 0; i < kTexels; ++i)
        source.push_back((i * 4000u) << 8 | (i % 256u));
    const auto from = newTexture(GL_DEPTH24_STENCIL8, GL_DEPTH_STENCIL, GL_UNSIGNED_INT_24_8, source);
    const auto to =
        newTexture(GL_DEPTH24_STENCIL8, GL_DEPTH_STENCIL, GL_UNSIGNED_INT_24_8, std::vector<GLuint>(kTexels, 0));
    BlitTexture(from.get(), to.get(), DEPTH24_STENCIL8, kSize, kSize);
    std::vector<GLuint> result(kTexels);
    const AutoBinder binder(to.get());
    glGetTexImage(GL_TEXTURE_2D, 0, GL_DEPTH_STENCIL, GL_UNSIGNED_INT_24_8, result.data());
    EXPECT_EQ(result, source);
}

} // namespace Harrow::Vrk::Test
