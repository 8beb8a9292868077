// SPDX-License-Identifier: MIT
//
// Texture on the real driver: what is really bound where, what storage is there, what is read back.
#include "Texture.h"

#include "AutoBinder.h"
#include "GLFunctions.h"
#include "GLStateTools.h"
#include "support/GLTest.h"
#include "support/LogCapture.h"
#include "support/TestAccess.h"

#include <QScopeGuard>

#include <array>
#include <memory>
#include <vector>

namespace Harrow::Vrk::Test
{
namespace
{

using Pixel = std::array<unsigned char, 4>;

/// The name that OpenGL has bound to a unit's target. Leaves the active unit as it was.
unsigned nameOn(int unit, GLenum binding = GL_TEXTURE_BINDING_2D)
{
    GLint active = 0;
    GLint name = 0;
    glGetIntegerv(GL_ACTIVE_TEXTURE, &active);
    glActiveTexture(GL_TEXTURE0 + GLenum(unit));
    glGetIntegerv(binding, &name);
    glActiveTexture(GLenum(active));
    return unsigned(name);
}

int activeUnit()
{
    GLint active = 0;
    glGetIntegerv(GL_ACTIVE_TEXTURE, &active);
    return active - GL_TEXTURE0;
}

Pixel texelOf(Texture& texture)
{
    Pixel pixel = {};
    const AutoBinder binder(&texture);
    glGetTexImage(texture.target(), 0, GL_RGBA, GL_UNSIGNED_BYTE, pixel.data());
    return pixel;
}

int parameterOf(GLenum target, GLenum name)
{
    GLint value = 0;
    glGetTexParameteriv(target, name, &value);
    return value;
}

/// All units are free at the start and at the end of each test.
class TextureGL : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        if (HasFatalFailure())
            return;
        const int before = Texture::NumAlive();
        ASSERT_EQ(before, 0);
        expectAllUnitsFree();
    }

    void TearDown() override
    {
        ASSERT_TRUE(context().makeCurrent());
        EXPECT_EQ(Texture::NumAlive(), 0);
        expectAllUnitsFree();
        GLTest::TearDown();
    }

    static void expectAllUnitsFree()
    {
        const TextureUnits& units = TextureUnits::ofCurrentContext();
        EXPECT_EQ(units.maxTextureImageUnits, unitCount());
        EXPECT_EQ(units.freeTextureUnits.size(), unitCount());
        EXPECT_TRUE(units.boundTextureCounts.isEmpty());
    }
};

} // namespace

// ---- units ---------------------------------------------------------------------------------------------------------

TEST_F(TextureGL, UnitsAreTakenFromTheTopAndFreedOnesAgain)
{
    const int top = unitCount() - 1;
    Texture first(nullptr);
    Texture second(nullptr);
    Texture third(nullptr);
    for (Texture* const texture : {&first, &second, &third})
        texture->setTarget(GL_TEXTURE_2D);
    ASSERT_TRUE(first.bind());
    ASSERT_TRUE(second.bind());
    EXPECT_EQ(first.unit(), top);
    EXPECT_EQ(second.unit(), top - 1);
    EXPECT_EQ(nameOn(top), first.textureID());
    EXPECT_EQ(nameOn(top - 1), second.textureID());
    EXPECT_EQ(activeUnit(), top - 1);
    EXPECT_TRUE(first.unbind());
    EXPECT_EQ(nameOn(top), 0u);
    EXPECT_EQ(activeUnit(), top);
    ASSERT_TRUE(third.bind());
    EXPECT_EQ(third.unit(), top);
    EXPECT_EQ(nameOn(top), third.textureID());
    EXPECT_TRUE(second.unbind());
    EXPECT_TRUE(third.unbind());
}

TEST_F(TextureGL, ANestedBindStaysBoundUntilItsLastUnbind)
{
    const int top = unitCount() - 1;
    Texture texture(nullptr);
    texture.setTarget(GL_TEXTURE_CUBE_MAP);
    texture.bind();
    texture.bind();
    texture.unbind();
    EXPECT_EQ(nameOn(top, GL_TEXTURE_BINDING_CUBE_MAP), texture.textureID());
    EXPECT_FALSE(Texture::isTextureUnitFree(unsigned(top)));
    texture.unbind();
    EXPECT_EQ(nameOn(top, GL_TEXTURE_BINDING_CUBE_MAP), 0u);
    EXPECT_TRUE(Texture::isTextureUnitFree(unsigned(top)));
}

TEST_F(TextureGL, MoreTexturesThanUnitsAreRefusedAndTheOthersStayBound)
{
    const int count = unitCount();
    std::vector<std::unique_ptr<Texture>> textures;
    for (int i = 0; i <= count; ++i)
    {
        textures.push_back(std::make_unique<Texture>(nullptr));
        textures.back()->setTarget(GL_TEXTURE_2D);
    }
    for (int i = 0; i < count; ++i)
        ASSERT_TRUE(textures[std::size_t(i)]->bind());
    {
        const LogCapture log;
        EXPECT_FALSE(textures.back()->bind());
        EXPECT_EQ(log.messages(), QStringList(QStringLiteral("There is no available texture units")));
    }
    for (int i = 0; i < count; ++i)
    {
        EXPECT_EQ(nameOn(count - 1 - i), textures[std::size_t(i)]->textureID());
        EXPECT_TRUE(textures[std::size_t(i)]->unbind());
    }
}

TEST_F(TextureGL, TwoContextsThatShareHaveUnitsOfTheirOwn)
{
    HeadlessContext second(&context());
    ASSERT_TRUE(second.isValid());
    const auto forget = qScopeGuard([] { TextureTestAccess::forgetContexts(); });
    const int top = unitCount() - 1;
    Texture first(nullptr);
    Texture other(nullptr);
    first.create2D(GL_TEXTURE_2D, GL_RGBA8, 8, 4);
    other.create2D(GL_TEXTURE_2D, GL_RGBA8, 16, 2);
    first.bind();
    other.bind();

    ASSERT_TRUE(second.makeCurrent());
    EXPECT_FALSE(Texture::isTextureUnitFree(0)) << "no record here yet";
    EXPECT_FALSE(other.isBound());
    ASSERT_TRUE(other.bind());
    EXPECT_EQ(other.unit(), top);
    EXPECT_EQ(nameOn(top), other.textureID());
    EXPECT_EQ(other.width(0), 16) << "one texture, seen from the other context";
    EXPECT_EQ(other.height(0), 2);
    EXPECT_TRUE(other.unbind());
    EXPECT_EQ(nameOn(top), 0u);

    ASSERT_TRUE(context().makeCurrent());
    EXPECT_EQ(first.unit(), top);
    EXPECT_EQ(other.unit(), top - 1);
    EXPECT_EQ(nameOn(top), first.textureID());
    EXPECT_EQ(nameOn(top - 1), other.textureID());
    EXPECT_TRUE(first.unbind());
    EXPECT_TRUE(other.unbind());
}

TEST_F(TextureGL, AfterAChangeOfTargetTheNameStaysOnTheOldOne)
{
    const int top = unitCount() - 1;
    Texture texture(nullptr);
    texture.setTarget(GL_TEXTURE_2D);
    ASSERT_TRUE(texture.bind());
    texture.setTarget(GL_TEXTURE_3D);
    EXPECT_TRUE(texture.unbind());
    EXPECT_EQ(nameOn(top, GL_TEXTURE_BINDING_2D), texture.textureID());
    EXPECT_TRUE(Texture::isTextureUnitFree(unsigned(top)));
    glBindTexture(GL_TEXTURE_2D, 0);
}

TEST_F(TextureGL, AWrapperOfAnOwnedNameSharesItsUnit)
{
    const int top = unitCount() - 1;
    Texture owner(nullptr);
    owner.create2D(GL_TEXTURE_2D, GL_R8, 8, 4);
    Texture wrapper(owner.textureID(), nullptr);
    wrapper.setTarget(GL_TEXTURE_2D);
    ASSERT_TRUE(owner.bind());
    ASSERT_TRUE(wrapper.bind());
    EXPECT_EQ(wrapper.unit(), top);
    EXPECT_EQ(wrapper.width(0), 8);
    EXPECT_TRUE(owner.unbind());
    EXPECT_TRUE(owner.isBound());
    EXPECT_EQ(nameOn(top), owner.textureID());
    EXPECT_TRUE(wrapper.unbind());
    EXPECT_FALSE(owner.isBound());
    EXPECT_EQ(nameOn(top), 0u);
}

// ---- life ----------------------------------------------------------------------------------------------------------

TEST_F(TextureGL, AnOwnedNameIsGoneWithItsObjectAndAWrappedOneIsNot)
{
    GLuint foreign = 0;
    glGenTextures(1, &foreign);
    {
        Texture wrapper(foreign, nullptr);
        wrapper.setTarget(GL_TEXTURE_2D);
        const AutoBinder binder(&wrapper);
    }
    EXPECT_EQ(glIsTexture(foreign), GLboolean(GL_TRUE));
    glDeleteTextures(1, &foreign);

    auto owned = std::make_unique<Texture>(nullptr);
    const unsigned name = owned->textureID();
    owned->create2D(GL_TEXTURE_2D, GL_R8, 1, 1);
    EXPECT_EQ(glIsTexture(name), GLboolean(GL_TRUE));
    owned.reset();
    EXPECT_EQ(glIsTexture(name), GLboolean(GL_FALSE));
}

// ---- storage -------------------------------------------------------------------------------------------------------

TEST_F(TextureGL, Create2DGivesStorageOfThatSizeWithNearestFilters)
{
    Texture texture(nullptr);
    texture.create2D(GL_TEXTURE_2D, GL_RGBA16F, 100, 60);
    const AutoBinder binder(&texture);
    EXPECT_EQ(texture.width(0), 100);
    EXPECT_EQ(texture.height(0), 60);
    EXPECT_EQ(texture.depth(0), 1);
    EXPECT_EQ(texture.internalFormat(0), GL_RGBA16F);
    EXPECT_EQ(texture.width(1), 0) << "no second level";
    EXPECT_EQ(parameterOf(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER), GL_NEAREST);
    EXPECT_EQ(parameterOf(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER), GL_NEAREST);
}

TEST_F(TextureGL, Create3DGivesVolumesAndArrays)
{
    for (const GLenum target : {GLenum(GL_TEXTURE_3D), GLenum(GL_TEXTURE_2D_ARRAY)})
    {
        Texture texture(nullptr);
        texture.create3D(target, GL_R11F_G11F_B10F, 20, 10, 5);
        const AutoBinder binder(&texture);
        EXPECT_EQ(texture.width(0), 20);
        EXPECT_EQ(texture.height(0), 10);
        EXPECT_EQ(texture.depth(0), 5);
        EXPECT_EQ(texture.internalFormat(0), GL_R11F_G11F_B10F);
        EXPECT_EQ(parameterOf(target, GL_TEXTURE_MAG_FILTER), GL_NEAREST);
    }
}

TEST_F(TextureGL, MultisampleStorageKnowsItsSizeOnlyWhileBound)
{
    Texture flat(nullptr);
    flat.create2DMultisample(GL_TEXTURE_2D_MULTISAMPLE, GL_RGBA8, 32, 16, 4);
    EXPECT_EQ(TextureTestAccess::recorded(flat), (std::array<int, 4>{0, 0, 0, 0}));
    {
        const AutoBinder binder(&flat);
        EXPECT_EQ(flat.width(0), 32);
        EXPECT_EQ(flat.height(0), 16);
        GLint value = 0;
        glGetTexLevelParameteriv(GL_TEXTURE_2D_MULTISAMPLE, 0, GL_TEXTURE_SAMPLES, &value);
        EXPECT_GE(value, 4);
        glGetTexLevelParameteriv(GL_TEXTURE_2D_MULTISAMPLE, 0, GL_TEXTURE_FIXED_SAMPLE_LOCATIONS, &value);
        EXPECT_EQ(value, GL_TRUE);
    }
    Texture layered(nullptr);
    layered.create3DMultisample(GL_TEXTURE_2D_MULTISAMPLE_ARRAY, GL_RGBA8, 32, 16, 3, 4);
    const AutoBinder binder(&layered);
    EXPECT_EQ(layered.width(0), 32);
    EXPECT_EQ(layered.depth(0), 3);
}

TEST_F(TextureGL, StorageWithoutATransferTypeIsRefusedByTheDriver)
{
    Texture texture(nullptr);
    {
        const LogCapture log;
        texture.create2D(GL_TEXTURE_2D, GL_DEPTH24_STENCIL8, 8, 4);
        EXPECT_EQ(log.texts(), QStringList(QStringLiteral("typeFromInternalFormat() does not implement yet : 0x88F0")));
    }
    EXPECT_EQ(glGetError(), GLenum(GL_INVALID_ENUM));
    const AutoBinder binder(&texture);
    EXPECT_EQ(texture.width(0), 0);
}

TEST_F(TextureGL, LevelsOfACubeMapAreThoseOfItsFace)
{
    Texture texture(nullptr);
    texture.setTarget(GL_TEXTURE_CUBE_MAP);
    const AutoBinder binder(&texture);
    glTexImage2D(GL_TEXTURE_CUBE_MAP_POSITIVE_X, 0, GL_RGBA8, 8, 8, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    glTexImage2D(GL_TEXTURE_CUBE_MAP_POSITIVE_X, 1, GL_RGBA8, 4, 4, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    EXPECT_EQ(texture.width(0), 8);
    EXPECT_EQ(texture.height(1), 4);
    EXPECT_EQ(texture.internalFormat(0), GL_RGBA8);
}

TEST_F(TextureGL, ALevelThatOpenGLRefusesIsMinusOne)
{
    Texture texture(nullptr);
    texture.create2D(GL_TEXTURE_2D, GL_R8, 4, 4);
    const AutoBinder binder(&texture);
    EXPECT_EQ(texture.width(-1), -1);
    EXPECT_EQ(glGetError(), GLenum(GL_INVALID_VALUE));
}

// ---- one colour ----------------------------------------------------------------------------------------------------

TEST_F(TextureGL, SolidColorIsReadBackAsItsTruncatedBytes)
{
    glPixelStorei(GL_UNPACK_ALIGNMENT, 8);
    const std::unique_ptr<Texture> texture(SolidColorTexture(0.999f, 0.5f, 0.0f, 1.0f));
    GLint alignment = 0;
    glGetIntegerv(GL_UNPACK_ALIGNMENT, &alignment);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    EXPECT_EQ(alignment, 8);
    EXPECT_EQ(texelOf(*texture), (Pixel{254, 127, 0, 255}));

    const AutoBinder binder(texture.get());
    EXPECT_EQ(texture->width(0), 1);
    EXPECT_EQ(texture->height(0), 1);
    EXPECT_EQ(parameterOf(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER), GL_NEAREST);
    EXPECT_EQ(parameterOf(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S), GL_REPEAT);
    EXPECT_EQ(parameterOf(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T), GL_REPEAT);
    EXPECT_EQ(parameterOf(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL), 0);
}

TEST_F(TextureGL, WithoutAFreeUnitTheColourGoesToWhatTheActiveUnitHolds)
{
    const int count = unitCount();
    std::vector<std::unique_ptr<Texture>> textures;
    for (int i = 0; i < count; ++i)
    {
        textures.push_back(std::make_unique<Texture>(nullptr));
        textures.back()->create2D(GL_TEXTURE_2D, GL_RGBA8, 8, 4);
        ASSERT_TRUE(textures.back()->bind());
    }
    std::unique_ptr<Texture> color;
    {
        const LogCapture log;
        color.reset(SolidColorTexture(1, 0, 0, 1));
        EXPECT_EQ(log.messages(), QStringList(QStringLiteral("There is no available texture units")));
    }
    EXPECT_EQ(textures.back()->width(0), 1) << "the last bind left its unit active";
    EXPECT_TRUE(textures.back()->unbind());
    {
        const AutoBinder binder(color.get());
        EXPECT_EQ(color->width(0), 0) << "no storage";
    }
    textures.pop_back();
    for (const auto& texture : textures)
    {
        EXPECT_TRUE(texture->bind());
        EXPECT_EQ(texture->width(0), 8) << "the others are as they were";
        EXPECT_TRUE(texture->unbind());
        EXPECT_TRUE(texture->unbind());
    }
}

} // namespace Harrow::Vrk::Test
