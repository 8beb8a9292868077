// SPDX-License-Identifier: MIT
//
// How the pool of scratch textures makes a texture: the calls, what is asked for in vain, and what is left then.
#include "TexturePoolTestTools.h"

namespace Harrow::Vrk::Test
{

TEST_F(TexturePoolTest, OneSampleAndOneLayerMakeA2DTexture)
{
    const CallLog calls;
    const LogCapture log;
    const Texture* const texture = take(RGBA16F, 64, 32, 1, 1);
    EXPECT_EQ(masked(calls),
              QStringList({askSamples(), "glGenTextures(1, @)", activate(kUnits - 1), bindName(1, GL_TEXTURE_2D),
                           parameter(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST),
                           parameter(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST),
                           CallLog::call("glTexImage2D", GL_TEXTURE_2D, 0, GL_RGBA16F, 64, 32, 0, GL_RGBA,
                                         GL_HALF_FLOAT, nullptr),
                           activate(kUnits - 1), bindName(0, GL_TEXTURE_2D)}));
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_EQ(texture->parent(), nullptr);
    EXPECT_EQ(TextureTestAccess::recorded(*texture), (Recorded{GL_RGBA16F, 64, 32, 1}));
}

TEST_F(TexturePoolTest, OneSampleAndMoreLayersMakeAnArrayThatRecordsDepth1)
{
    constexpr GLenum target = GL_TEXTURE_2D_ARRAY;
    const CallLog calls;
    const Texture* const texture = take(R32I, 64, 32, 5, 1);
    EXPECT_EQ(masked(calls), QStringList({askSamples(), "glGenTextures(1, @)", activate(kUnits - 1),
                                          bindName(1, target), parameter(target, GL_TEXTURE_MAG_FILTER, GL_NEAREST),
                                          parameter(target, GL_TEXTURE_MIN_FILTER, GL_NEAREST),
                                          CallLog::call("glTexImage3D", target, 0, GL_R32I, 64, 32, 5, 0,
                                                        GL_RED_INTEGER, GL_INT, nullptr),
                                          activate(kUnits - 1), bindName(0, target)}));
    EXPECT_EQ(TextureTestAccess::recorded(*texture), (Recorded{GL_R32I, 64, 32, 1}));
}

TEST_F(TexturePoolTest, MoreSamplesAndOneLayerMakeAMultisampleTextureWithoutParameters)
{
    constexpr GLenum target = GL_TEXTURE_2D_MULTISAMPLE;
    const CallLog calls;
    const Texture* const texture = take(DEPTH24_STENCIL8, 64, 32, 1, 2);
    EXPECT_EQ(masked(calls),
              QStringList({askSamples(), "glGenTextures(1, @)", activate(kUnits - 1), bindName(1, target),
                           CallLog::call("glTexImage2DMultisample", target, 2, GL_DEPTH24_STENCIL8, 64, 32, 0),
                           activate(kUnits - 1), bindName(0, target)}));
    EXPECT_EQ(TextureTestAccess::recorded(*texture), (Recorded{GL_DEPTH24_STENCIL8, 64, 32, 1}));
}

TEST_F(TexturePoolTest, MoreSamplesAndMoreLayersMakeAMultisampleArrayThatRecordsItsDepth)
{
    constexpr GLenum target = GL_TEXTURE_2D_MULTISAMPLE_ARRAY;
    const CallLog calls;
    const Texture* const texture = take(RGBA, 64, 32, 5, kMaxSamples);
    EXPECT_EQ(masked(calls),
              QStringList({askSamples(), "glGenTextures(1, @)", activate(kUnits - 1), bindName(1, target),
                           CallLog::call("glTexImage3DMultisample", target, kMaxSamples, GL_RGBA, 64, 32, 5, 0),
                           activate(kUnits - 1), bindName(0, target)}));
    EXPECT_EQ(TextureTestAccess::recorded(*texture), (Recorded{GL_RGBA, 64, 32, 5}));
}

TEST_F(TexturePoolTest, FixedSampleLocationsCountForTexturesMadeFromThenOn)
{
    const CallLog calls;
    Texture* const old = take(RGBA, 4, 4, 1, 4);
    release(old);
    manager->setTempTextureFixedSampleLocations(true);
    EXPECT_EQ(take(RGBA, 4, 4, 1, 4), old) << "it is no part of the description";
    take(RGBA, 4, 4, 1, 4);
    take(RGBA, 4, 4, 2, 4);
    manager->setTempTextureFixedSampleLocations(false);
    take(RGBA, 4, 4, 2, 4);
    const GLenum flat = GL_TEXTURE_2D_MULTISAMPLE;
    const GLenum layered = GL_TEXTURE_2D_MULTISAMPLE_ARRAY;
    EXPECT_EQ(calls.named({"glTexImage2DMultisample", "glTexImage3DMultisample"}),
              QStringList({CallLog::call("glTexImage2DMultisample", flat, 4, GL_RGBA, 4, 4, 0),
                           CallLog::call("glTexImage2DMultisample", flat, 4, GL_RGBA, 4, 4, 1),
                           CallLog::call("glTexImage3DMultisample", layered, 4, GL_RGBA, 4, 4, 2, 1),
                           CallLog::call("glTexImage3DMultisample", layered, 4, GL_RGBA, 4, 4, 2, 0)}));
}

TEST_F(TexturePoolTest, SizesBelowOneAreReportedAndAskedForAllTheSame)
{
    const struct
    {
        int width, height, depth;
        const char* shown;
        QString image;
    } rows[] = {
        {0, 4, 1, "0x4x1",
         CallLog::call("glTexImage2D", GL_TEXTURE_2D, 0, GL_RED, 0, 4, 0, GL_RED, GL_UNSIGNED_BYTE, nullptr)},
        {4, -1, 1, "4x-1x1",
         CallLog::call("glTexImage2D", GL_TEXTURE_2D, 0, GL_RED, 4, -1, 0, GL_RED, GL_UNSIGNED_BYTE, nullptr)},
        {4, 4, 0, "4x4x0",
         CallLog::call("glTexImage3D", GL_TEXTURE_2D_ARRAY, 0, GL_RED, 4, 4, 0, 0, GL_RED, GL_UNSIGNED_BYTE, nullptr)},
    };
    for (const auto& row : rows)
    {
        const CallLog calls;
        const LogCapture log;
        Texture* const texture = take(R, row.width, row.height, row.depth, 1);
        EXPECT_NE(texture, nullptr);
        EXPECT_EQ(log.messages(QtCriticalMsg),
                  QStringList(assertionLine(
                      "width > 0 && height > 0 && depth > 0",
                      QStringLiteral("TexturePool asked for texture of size (%1)").arg(QLatin1String(row.shown)))));
        EXPECT_EQ(calls.named({"glTexImage2D", "glTexImage3D"}), QStringList(row.image));
        EXPECT_TRUE(inUse().contains(texture));
    }
}

TEST_F(TexturePoolTest, SamplesBelowOneAreReportedAndGoTheWayOfOne)
{
    for (const int samples : {0, -2})
    {
        const CallLog calls;
        const LogCapture log;
        const Texture* const texture = take(R, 4, 4, 1, samples);
        EXPECT_EQ(log.messages(),
                  QStringList(assertionLine("samples > 0", "TexturePool requested samples can't be less than 1")));
        EXPECT_EQ(texture->target(), GLenum(GL_TEXTURE_2D));
        EXPECT_EQ(calls.count("glTexImage2D"), 1);
        EXPECT_EQ(calls.count("glTexParameteri"), 2);
    }
    const LogCapture log;
    EXPECT_EQ(take(R, 4, 4, 3, 0)->target(), GLenum(GL_TEXTURE_2D_ARRAY));
}

TEST_F(TexturePoolTest, BothReportsComeInOrderBeforeTheDriverIsAsked)
{
    const LogCapture log;
    take(R, 0, 0, 0, 0);
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({assertionLine("width > 0 && height > 0 && depth > 0",
                                         "TexturePool asked for texture of size (0x0x0)"),
                           assertionLine("samples > 0", "TexturePool requested samples can't be less than 1")}));
}

TEST_F(TexturePoolTest, WithoutAFreeUnitANewTextureIsNullAndAnOldOneCanStillBeTaken)
{
    Texture* const old = take(RGBA);
    release(old);
    std::vector<std::unique_ptr<Texture>> others;
    for (int i = 0; i < kUnits; ++i)
    {
        others.push_back(newTexture());
        others.back()->bind();
    }
    const CallLog calls;
    const LogCapture log;
    EXPECT_EQ(take(RGB), nullptr);
    EXPECT_EQ(log.messages(), QStringList("There is no available texture units"));
    EXPECT_EQ(masked(calls), QStringList({askSamples(), "glGenTextures(1, @)", "glDeleteTextures(1, @)"}));
    EXPECT_EQ(known(), QSet<Texture*>({old}));
    EXPECT_EQ(inUse(), QSet<Texture*>());
    EXPECT_EQ(take(RGBA), old);
    for (const auto& other : others)
        other->unbind();
    EXPECT_NE(take(RGB), nullptr);
}

} // namespace Harrow::Vrk::Test
