// SPDX-License-Identifier: MIT
//
// The pool of scratch textures on the real driver: what it makes can be drawn to, keeps its contents from one user to
// the next, and is given back.
#include "TexturePool.h"

#include "AutoBinder.h"
#include "FramebufferObject.h"
#include "GLFunctions.h"
#include "SamplerTextureManager.h"
#include "Texture.h"
#include "support/GLTest.h"
#include "support/LogCapture.h"

#include <algorithm>
#include <array>
#include <memory>

namespace Harrow::Vrk::Test
{
namespace
{

constexpr int kSize = 8;

using Pixel = std::array<float, 4>;

constexpr Pixel kRed = {1, 0, 0, 1};
constexpr Pixel kGreen = {0, 1, 0, 1};

enum class Kind
{
    Color,
    Integer,
    Depth,
    DepthStencil
};

/// Every format, and what OpenGL says of it: "required" are the formats that each driver must draw to.
struct FormatRow
{
    TextureFormat format;
    Kind kind;
    bool required;
};
constexpr FormatRow kFormats[] = {
    {R, Kind::Color, true},
    {RG, Kind::Color, true},
    {RGB, Kind::Color, false},
    {RGBA, Kind::Color, true},
    {SRGB8A8, Kind::Color, true},
    {R16F, Kind::Color, true},
    {RG16F, Kind::Color, true},
    {RGB16F, Kind::Color, false},
    {RGBA16F, Kind::Color, true},
    {R32F, Kind::Color, true},
    {RG32F, Kind::Color, true},
    {RGB32F, Kind::Color, false},
    {RGBA32F, Kind::Color, true},
    {R16I, Kind::Integer, true},
    {RG16I, Kind::Integer, true},
    {RGB16I, Kind::Integer, false},
    {RGBA16I, Kind::Integer, true},
    {R11FG11FB10F, Kind::Color, true},
    {RGBA1010102, Kind::Color, true},
    {R32I, Kind::Integer, true},
    {RG32I, Kind::Integer, true},
    {RGB32I, Kind::Integer, false},
    {RGBA32I, Kind::Integer, true},
    {DEPTH32F, Kind::Depth, true},
    {DEPTH24_STENCIL8, Kind::DepthStencil, true},
    {DEPTH32F_STENCIL8, Kind::DepthStencil, true},
};
static_assert(std::size(kFormats) == 26);

GLenum pointFor(Kind kind)
{
    switch (kind)
    {
    case Kind::Depth:
        return GL_DEPTH_ATTACHMENT;
    case Kind::DepthStencil:
        return GL_DEPTH_STENCIL_ATTACHMENT;
    default:
        return GL_COLOR_ATTACHMENT0;
    }
}

int integerOf(GLenum name)
{
    GLint value = 0;
    glGetIntegerv(name, &value);
    return value;
}

int levelParameter(Texture& texture, GLenum name)
{
    const AutoBinder binder(&texture);
    GLint value = -1;
    glGetTexLevelParameteriv(texture.target(), 0, name, &value);
    return value;
}

Pixel firstPixel()
{
    Pixel pixel = {};
    glReadPixels(0, 0, 1, 1, GL_RGBA, GL_FLOAT, pixel.data());
    return pixel;
}

class TexturePoolGL : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        _texturesBefore = Texture::NumAlive();
        manager = std::make_unique<SamplerTextureManager>();
        TextureManager::setInstance(manager.get());
    }

    void TearDown() override
    {
        TextureManager::setInstance(nullptr);
        manager.reset();
        EXPECT_EQ(Texture::NumAlive(), _texturesBefore);
        GLTest::TearDown();
    }

    int texturesAlive() const
    {
        return Texture::NumAlive() - _texturesBefore;
    }

    std::unique_ptr<SamplerTextureManager> manager;

private:
    int _texturesBefore = 0;
};

} // namespace

// ---- what is made --------------------------------------------------------------------------------------------------

TEST_F(TexturePoolGL, EveryFormatIsMadeAndTheRequiredOnesCanBeDrawnTo)
{
    for (const FormatRow& row : kFormats)
    {
        Texture* const texture = manager->tempTexture(row.format, kSize, kSize, 1, 1);
        ASSERT_TRUE(texture);
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR)) << row.format;
        EXPECT_EQ(levelParameter(*texture, GL_TEXTURE_WIDTH), kSize);
        EXPECT_EQ(levelParameter(*texture, GL_TEXTURE_HEIGHT), kSize);
        FramebufferObject framebuffer(nullptr);
        const AutoBinder binder(&framebuffer);
        ASSERT_TRUE(framebuffer.attach(texture, pointFor(row.kind), 0));
        framebuffer.setDrawBuffers();
        EXPECT_TRUE(!row.required || framebuffer.isComplete()) << row.format;
        framebuffer.detachAndReleaseAll();
    }
}

TEST_F(TexturePoolGL, EveryFormatIsMadeAsAnArrayAndEachLayerCanBeDrawnTo)
{
    for (const FormatRow& row : kFormats)
    {
        Texture* const texture = manager->tempTexture(row.format, kSize, kSize, 3, 1);
        ASSERT_TRUE(texture);
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR)) << row.format;
        EXPECT_EQ(levelParameter(*texture, GL_TEXTURE_DEPTH), 3) << "the image is right, whatever was recorded";
        FramebufferObject framebuffer(nullptr);
        const AutoBinder binder(&framebuffer);
        for (int layer = 0; layer < 3; ++layer)
        {
            ASSERT_TRUE(framebuffer.attach3D(texture, pointFor(row.kind), layer, 0));
            framebuffer.setDrawBuffers();
            EXPECT_TRUE(!row.required || framebuffer.isComplete()) << row.format << " layer " << layer;
            framebuffer.detachAll();
        }
        manager->releaseTempTextureRef(texture, 1);
    }
}

TEST_F(TexturePoolGL, RequiredFormatsAreMadeWithSamplesAndCanBeDrawnTo)
{
    ASSERT_GE(integerOf(GL_MAX_SAMPLES), 2);
    int made = 0;
    for (const FormatRow& row : kFormats)
    {
        // Integer formats have a limit of their own, which may be 1.
        const int samples = row.kind == Kind::Integer ? std::min(2, integerOf(GL_MAX_INTEGER_SAMPLES)) : 2;
        if (!row.required || samples < 2)
            continue;
        Texture* const texture = manager->tempTexture(row.format, kSize, kSize, 1, samples);
        ASSERT_TRUE(texture);
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR)) << row.format;
        EXPECT_GE(levelParameter(*texture, GL_TEXTURE_SAMPLES), samples);
        FramebufferObject framebuffer(nullptr);
        const AutoBinder binder(&framebuffer);
        ASSERT_TRUE(framebuffer.attach(texture, pointFor(row.kind), 0));
        framebuffer.setDrawBuffers();
        EXPECT_TRUE(framebuffer.isComplete()) << row.format;
        framebuffer.detachAndReleaseAll();
        Texture* const array = manager->tempTexture(row.format, kSize, kSize, 2, samples);
        EXPECT_EQ(levelParameter(*array, GL_TEXTURE_DEPTH), 2);
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR)) << row.format;
        ++made;
    }
    EXPECT_GE(made, 15) << "all but the integer ones at the least";
}

TEST_F(TexturePoolGL, AMultisampleArrayIsCompleteInThePlaceOfAnotherTexture)
{
    for (const bool fixed : {false, true})
    {
        manager->setTempTextureFixedSampleLocations(fixed);
        Texture* const flat = manager->tempTexture(RGBA, kSize, kSize, 1, 2);
        Texture* const array = manager->tempTexture(RGBA, kSize, kSize, 3, 2);
        ASSERT_TRUE(flat && array);
        EXPECT_EQ(levelParameter(*array, GL_TEXTURE_DEPTH), 3);
        FramebufferObject framebuffer(nullptr);
        const AutoBinder binder(&framebuffer);
        ASSERT_TRUE(framebuffer.attach(flat, GL_COLOR_ATTACHMENT0, 0));
        EXPECT_TRUE(framebuffer.isComplete());
        ASSERT_TRUE(framebuffer.attachUpdate(array, GL_COLOR_ATTACHMENT0, 0));
        EXPECT_TRUE(framebuffer.isComplete());
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
        framebuffer.detachAndReleaseAll();
    }
}

TEST_F(TexturePoolGL, AMultisampleTextureResolvesIntoAnotherScratchTexture)
{
    Texture* const samples = manager->tempTexture(RGBA, kSize, kSize, 1, integerOf(GL_MAX_SAMPLES));
    Texture* const resolved = manager->tempTexture(RGBA, kSize, kSize, 1, 1);
    FramebufferObject source(nullptr);
    FramebufferObject target(nullptr);
    source.bind();
    source.attach(samples, GL_COLOR_ATTACHMENT0, 0);
    glClearBufferfv(GL_COLOR, 0, kGreen.data());
    source.unbind();
    target.bind();
    target.attach(resolved, GL_COLOR_ATTACHMENT0, 0);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, source.getFBO());
    glBlitFramebuffer(0, 0, kSize, kSize, 0, 0, kSize, kSize, GL_COLOR_BUFFER_BIT, GL_NEAREST);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, target.getFBO());
    EXPECT_EQ(firstPixel(), kGreen);
    target.detachAndReleaseAll();
    target.unbind();
    source.bind();
    source.detachAndReleaseAll();
    source.unbind();
}

TEST_F(TexturePoolGL, SamplesAreClampedToTheDriversAndLocationsAreFixedOnDemand)
{
    const int most = integerOf(GL_MAX_SAMPLES);
    const LogCapture log;
    Texture* const free = manager->tempTexture(RGBA, kSize, kSize, 1, most + 1);
    EXPECT_EQ(log.messages(QtDebugMsg),
              QStringList("Warning: TexturePool::take() requested more than GL_MAX_SAMPLES samples."));
    EXPECT_EQ(levelParameter(*free, GL_TEXTURE_SAMPLES), most);
    EXPECT_EQ(levelParameter(*free, GL_TEXTURE_FIXED_SAMPLE_LOCATIONS), GL_FALSE);
    manager->setTempTextureFixedSampleLocations(true);
    for (const int depth : {1, 2})
        EXPECT_EQ(
            levelParameter(*manager->tempTexture(RGBA, kSize, kSize, depth, most), GL_TEXTURE_FIXED_SAMPLE_LOCATIONS),
            GL_TRUE);
}

TEST_F(TexturePoolGL, FiltersAreNearest)
{
    for (const int depth : {1, 2})
    {
        Texture* const texture = manager->tempTexture(RGBA, kSize, kSize, depth, 1);
        const AutoBinder binder(texture);
        for (const GLenum filter : {GL_TEXTURE_MIN_FILTER, GL_TEXTURE_MAG_FILTER})
        {
            GLint value = 0;
            glGetTexParameteriv(texture->target(), GLenum(filter), &value);
            EXPECT_EQ(value, GL_NEAREST);
        }
    }
}

TEST_F(TexturePoolGL, SizesThatTheDriverRefusesStillGiveATexture)
{
    const LogCapture log;
    Texture* const texture = manager->tempTexture(RGBA, -1, kSize, 1, 1);
    EXPECT_TRUE(texture);
    EXPECT_EQ(glGetError(), GLenum(GL_INVALID_VALUE));
    manager->releaseTempTextureRef(texture, 1);
    manager->deleteUnusedTempTextures();
    EXPECT_EQ(texturesAlive(), 0);
}

// ---- what is taken again -------------------------------------------------------------------------------------------

TEST_F(TexturePoolGL, ATextureTakenAgainIsNotCleared)
{
    FramebufferObject framebuffer(nullptr);
    const AutoBinder binder(&framebuffer);
    Texture* const texture = manager->tempTexture(RGBA32F, kSize, kSize, 1, 1);
    framebuffer.attach(texture, GL_COLOR_ATTACHMENT0, 0);
    glClearBufferfv(GL_COLOR, 0, kRed.data());
    framebuffer.detachAndReleaseAll();
    Texture* const again = manager->tempTexture(RGBA32F, kSize, kSize, 1, 1);
    EXPECT_EQ(again, texture);
    framebuffer.attach(again, GL_COLOR_ATTACHMENT0, 0);
    EXPECT_EQ(firstPixel(), kRed);
    framebuffer.detachAndReleaseAll();
}

TEST_F(TexturePoolGL, RepeatedPassesUseTheSameTexturesAndDeleteUnusedGivesThemBack)
{
    FramebufferObject framebuffer(nullptr);
    const AutoBinder binder(&framebuffer);
    for (int pass = 0; pass < 5; ++pass)
    {
        framebuffer.attach(manager->tempTexture(RGBA, kSize, kSize, 1, 1), GL_COLOR_ATTACHMENT0, 0);
        framebuffer.attach(manager->tempTexture(RGBA16F, kSize, kSize, 1, 1), GL_COLOR_ATTACHMENT1, 0);
        framebuffer.attach(manager->tempTexture(DEPTH32F, kSize, kSize, 1, 1), GL_DEPTH_ATTACHMENT, 0);
        framebuffer.setDrawBuffers();
        EXPECT_TRUE(framebuffer.isComplete());
        EXPECT_EQ(texturesAlive(), 3);
        framebuffer.detachAndReleaseAll();
        EXPECT_EQ(texturesAlive(), 3);
    }
    Texture* const texture = manager->tempTexture(RGBA, kSize, kSize, 1, 1);
    const GLuint name = texture->textureID();
    manager->deleteUnusedTempTextures();
    EXPECT_EQ(texturesAlive(), 1);
    EXPECT_TRUE(glIsTexture(name));
    manager->releaseTempTextureRef(texture, 1);
    manager->deleteUnusedTempTextures();
    EXPECT_EQ(texturesAlive(), 0);
    EXPECT_FALSE(glIsTexture(name));
}

TEST_F(TexturePoolGL, TheEndOfTheManagerDeletesTexturesInUseToo)
{
    const GLuint name = manager->tempTexture(RGBA, kSize, kSize, 1, 1)->textureID();
    EXPECT_TRUE(glIsTexture(name));
    TextureManager::setInstance(nullptr);
    manager.reset();
    EXPECT_EQ(texturesAlive(), 0);
    EXPECT_FALSE(glIsTexture(name));
}

} // namespace Harrow::Vrk::Test
