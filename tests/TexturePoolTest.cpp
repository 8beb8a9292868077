// SPDX-License-Identifier: MIT
//
// The pool of scratch textures on the fake driver, reached as its users reach it, through a texture manager: the calls
// that make a texture, the books of what is free and what is in use, and the lines of the summary.
#include "TexturePool.h"

#include "SamplerTextureManager.h"
#include "TextureTestTools.h"

#include <QRegularExpression>
#include <QSet>

#include <algorithm>
#include <functional>
#include <limits>
#include <vector>

namespace Harrow::Vrk
{

/// The pool itself is not exported, so nothing here calls a function of its own.
struct TexturePoolTestAccess
{
    static int refCount(const TexturePool& pool, Texture* texture)
    {
        return pool._refCounts.value(texture, 0);
    }
    static QSet<Texture*> inUse(const TexturePool& pool)
    {
        return QSet<Texture*>(pool._refCounts.keyBegin(), pool._refCounts.keyEnd());
    }
    static QSet<Texture*> known(const TexturePool& pool)
    {
        return QSet<Texture*>(pool._keys.keyBegin(), pool._keys.keyEnd());
    }
    static qsizetype freeLists(const TexturePool& pool)
    {
        return pool._freeTextures.size();
    }
};

struct TextureManagerTestAccess
{
    static const TexturePool& pool(const TextureManager& manager)
    {
        return *manager._texturePool;
    }
};

} // namespace Harrow::Vrk

namespace Harrow::Vrk::Test
{
namespace
{

constexpr int kMaxSamples = 8;

QList<GLuint> deletedNames;

/// The calls, but for the addresses where answers go.
QStringList shapes(const CallLog& calls)
{
    QStringList result = calls.list();
    result.replaceInStrings(QRegularExpression(QStringLiteral("@[0-9a-f]+")), QStringLiteral("@"));
    return result;
}

QString askSamples()
{
    return QStringLiteral("glGetIntegerv(0x8d57, @)");
}

QString tooManySamples()
{
    return QStringLiteral("Warning: TexturePool::take() requested more than GL_MAX_SAMPLES samples.");
}

class TexturePoolTest : public TextureFixture
{
protected:
    void SetUp() override
    {
        deletedNames.clear();
        driver.replace(
            "glDeleteTextures",
            +[](GLsizei count, const GLuint* names) { deletedNames += QList(names, names + count); });
        driver.setInteger(GL_MAX_SAMPLES, kMaxSamples);
        TextureFixture::SetUp();
        makeRecord();
        _texturesBefore = Texture::NumAlive();
        manager = std::make_unique<SamplerTextureManager>();
    }

    void TearDown() override
    {
        manager.reset();
        EXPECT_EQ(Texture::NumAlive(), _texturesBefore);
    }

    Texture* take(TextureFormat format = RGBA, int width = 4, int height = 4, int depth = 1, int samples = 1)
    {
        return manager->tempTexture(format, width, height, depth, samples);
    }
    std::vector<Texture*> takeSome(int count)
    {
        std::vector<Texture*> textures;
        for (int i = 0; i < count; ++i)
            textures.push_back(take());
        return textures;
    }
    void release(Texture* texture, int count = 1)
    {
        manager->releaseTempTextureRef(texture, count);
    }
    int refCount(Texture* texture) const
    {
        return TexturePoolTestAccess::refCount(pool(), texture);
    }
    QSet<Texture*> inUse() const
    {
        return TexturePoolTestAccess::inUse(pool());
    }
    QSet<Texture*> known() const
    {
        return TexturePoolTestAccess::known(pool());
    }
    qsizetype freeLists() const
    {
        return TexturePoolTestAccess::freeLists(pool());
    }
    int texturesAlive() const
    {
        return Texture::NumAlive() - _texturesBefore;
    }

    QStringList summary() const
    {
        const LogCapture log;
        manager->printTempTextureSummary();
        EXPECT_EQ(log.messages(), log.messages(QtDebugMsg));
        return log.messages();
    }

    std::unique_ptr<SamplerTextureManager> manager;

private:
    const TexturePool& pool() const
    {
        return TextureManagerTestAccess::pool(*manager);
    }

    int _texturesBefore = 0;
};

} // namespace

// ---- how a texture is made -----------------------------------------------------------------------------------------

TEST_F(TexturePoolTest, OneSampleAndOneLayerMakeA2DTexture)
{
    const CallLog calls;
    const LogCapture log;
    const Texture* const texture = take(RGBA16F, 64, 32, 1, 1);
    EXPECT_EQ(shapes(calls),
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
    EXPECT_EQ(shapes(calls), QStringList({askSamples(), "glGenTextures(1, @)", activate(kUnits - 1),
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
    EXPECT_EQ(shapes(calls),
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
    EXPECT_EQ(shapes(calls),
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
    EXPECT_EQ(shapes(calls), QStringList({askSamples(), "glGenTextures(1, @)", "glDeleteTextures(1, @)"}));
    EXPECT_EQ(known(), QSet<Texture*>({old}));
    EXPECT_EQ(inUse(), QSet<Texture*>());
    EXPECT_EQ(take(RGBA), old);
    for (const auto& other : others)
        other->unbind();
    EXPECT_NE(take(RGB), nullptr);
}

// ---- what is taken again -------------------------------------------------------------------------------------------

TEST_F(TexturePoolTest, AHitMakesOneQueryAndNoTextureCall)
{
    Texture* const texture = take(RGBA, 4, 4, 3, 4);
    texture->setReadOnly();
    release(texture);
    const CallLog calls;
    const LogCapture log;
    EXPECT_EQ(take(RGBA, 4, 4, 3, 4), texture);
    EXPECT_EQ(shapes(calls), QStringList({askSamples()}));
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_EQ(refCount(texture), 1);
    EXPECT_EQ(freeLists(), 0);
}

TEST_F(TexturePoolTest, TwoTakesWithoutAReleaseAreTwoTexturesAndAReleasedOneIsTakenNext)
{
    Texture* const first = take();
    Texture* const second = take();
    EXPECT_NE(first, second);
    release(first);
    EXPECT_EQ(take(), first);
    release(second);
    EXPECT_EQ(take(), second);
    EXPECT_EQ(known(), QSet<Texture*>({first, second}));
}

TEST_F(TexturePoolTest, EachPartOfTheDescriptionTellsTexturesApart)
{
    Texture* const texture = take(RGBA, 4, 8, 2, 2);
    release(texture);
    EXPECT_NE(take(RGB, 4, 8, 2, 2), texture);
    EXPECT_NE(take(RGBA, 5, 8, 2, 2), texture);
    EXPECT_NE(take(RGBA, 4, 9, 2, 2), texture);
    EXPECT_NE(take(RGBA, 4, 8, 3, 2), texture);
    EXPECT_NE(take(RGBA, 4, 8, 2, 3), texture);
    EXPECT_NE(take(RGBA, 8, 4, 2, 2), texture) << "nor do two of them change places";
    EXPECT_EQ(take(RGBA, 4, 8, 2, 2), texture);
}

TEST_F(TexturePoolTest, SamplesBeyondTheDriversCountAsTheDrivers)
{
    const CallLog calls;
    LogCapture log;
    Texture* const texture = take(RGBA, 4, 4, 1, 64);
    EXPECT_EQ(log.texts().size(), 1);
    EXPECT_EQ(log.messages(QtDebugMsg), QStringList(tooManySamples()));
    EXPECT_EQ(calls.named({"glTexImage2DMultisample"}),
              QStringList(CallLog::call("glTexImage2DMultisample", GL_TEXTURE_2D_MULTISAMPLE, 8, GL_RGBA, 4, 4, 0)));
    release(texture);
    log.clear();
    EXPECT_EQ(take(RGBA, 4, 4, 1, 8), texture);
    EXPECT_EQ(log.texts(), QStringList()) << "as many as there are is not too many";
    release(texture);
    EXPECT_EQ(take(RGBA, 4, 4, 1, 64), texture);
    EXPECT_EQ(log.messages(QtDebugMsg), QStringList(tooManySamples()));
}

TEST_F(TexturePoolTest, OfSeveralFreeOnesTheOneAtTheHighestAddressIsTaken)
{
    std::vector<Texture*> textures = takeSome(12);
    std::vector<Texture*> ordered = textures;
    std::sort(ordered.begin(), ordered.end(), std::greater<>());
    for (int i = 0; i < 12; ++i)
        release(textures[size_t(i * 5 % 12)]);
    EXPECT_EQ(freeLists(), 1);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(take(), ordered[size_t(i)]);
    release(ordered[1]);
    EXPECT_EQ(take(), ordered[1]) << "also when it came back later";
    for (size_t i = 3; i < 12; ++i)
        EXPECT_EQ(take(), ordered[i]);
    EXPECT_EQ(freeLists(), 0);
    EXPECT_EQ(inUse().size(), 12);
}

// ---- references ----------------------------------------------------------------------------------------------------

TEST_F(TexturePoolTest, AsManyReleasesAsReferencesFreeATexture)
{
    Texture* const texture = take();
    manager->addTempTextureRef(texture, 2);
    EXPECT_EQ(refCount(texture), 3);
    release(texture);
    release(texture);
    EXPECT_EQ(refCount(texture), 1);
    EXPECT_EQ(inUse(), QSet<Texture*>({texture}));
    EXPECT_EQ(freeLists(), 0);
    release(texture);
    EXPECT_EQ(inUse(), QSet<Texture*>());
    EXPECT_EQ(freeLists(), 1);
    EXPECT_EQ(known(), QSet<Texture*>({texture}));
}

TEST_F(TexturePoolTest, AReleaseByTooMuchFreesTheTextureOnce)
{
    Texture* const texture = take();
    manager->addTempTextureRef(texture, 1);
    release(texture, 100);
    EXPECT_EQ(inUse(), QSet<Texture*>());
    release(texture, 100);
    EXPECT_EQ(summary().value(2), "- 1 free textures");
    EXPECT_EQ(take(), texture);
    EXPECT_NE(take(), texture);
}

TEST_F(TexturePoolTest, AReleaseOfNoneOrLessOnlyAdds)
{
    Texture* const texture = take();
    release(texture, 0);
    EXPECT_EQ(refCount(texture), 1);
    release(texture, -4);
    EXPECT_EQ(refCount(texture), 5);
}

TEST_F(TexturePoolTest, AddingNoneOrLessDoesNothing)
{
    Texture* const texture = take();
    for (const int count : {0, -1, std::numeric_limits<int>::min()})
        manager->addTempTextureRef(texture, count);
    EXPECT_EQ(refCount(texture), 1);
}

TEST_F(TexturePoolTest, NullForeignAndFreeTexturesAreSilentlyLeftAlone)
{
    Texture* const texture = take();
    release(texture);
    const auto foreign = newTexture();
    const CallLog calls;
    const LogCapture log;
    for (Texture* const other : {static_cast<Texture*>(nullptr), foreign.get(), texture})
    {
        manager->addTempTextureRef(other, 3);
        EXPECT_EQ(refCount(other), 0);
        release(other);
        release(other, -3);
        EXPECT_EQ(refCount(other), 0);
    }
    EXPECT_EQ(known(), QSet<Texture*>({texture}));
    EXPECT_EQ(summary().value(2), "- 1 free textures");
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(TexturePoolTest, CountsStopAtTheLargestInsteadOfOverflowing)
{
    constexpr int kMost = std::numeric_limits<int>::max();
    Texture* const texture = take();
    manager->addTempTextureRef(texture, kMost);
    EXPECT_EQ(refCount(texture), kMost);
    release(texture, std::numeric_limits<int>::min());
    EXPECT_EQ(refCount(texture), kMost);
    release(texture, kMost);
    EXPECT_EQ(inUse(), QSet<Texture*>());
}

// ---- deleting ------------------------------------------------------------------------------------------------------

TEST_F(TexturePoolTest, DeleteUnusedLeavesTexturesInUseAlone)
{
    Texture* const used = take(RGBA);
    Texture* const free = take(RGBA);
    Texture* const other = take(RGB, 16, 16);
    const GLuint names[] = {free->textureID(), other->textureID()};
    release(free);
    release(other);
    EXPECT_EQ(freeLists(), 2);
    manager->deleteUnusedTempTextures();
    EXPECT_EQ(QSet<GLuint>(deletedNames.cbegin(), deletedNames.cend()), QSet<GLuint>({names[0], names[1]}));
    EXPECT_EQ(deletedNames.size(), 2);
    EXPECT_EQ(texturesAlive(), 1);
    EXPECT_EQ(known(), QSet<Texture*>({used}));
    EXPECT_EQ(inUse(), QSet<Texture*>({used}));
    EXPECT_EQ(freeLists(), 0);
    manager->deleteUnusedTempTextures();
    EXPECT_EQ(deletedNames.size(), 2);
    release(used);
    EXPECT_EQ(take(RGBA), used);
}

TEST_F(TexturePoolTest, FreeOnesAreDeletedInTheOrderOfTheirReleaseWhenNoneWasTakenAgain)
{
    const std::vector<Texture*> textures = takeSome(5);
    QList<GLuint> expected;
    for (const size_t i : {3u, 0u, 4u, 2u, 1u})
    {
        expected.append(textures[i]->textureID());
        release(textures[i]);
    }
    manager->deleteUnusedTempTextures();
    EXPECT_EQ(deletedNames, expected);
}

TEST_F(TexturePoolTest, ATakeSortsTheFreeOnesAndLaterOnesFollowThem)
{
    const std::vector<Texture*> textures = takeSome(7);
    std::vector<Texture*> ordered = textures;
    std::sort(ordered.begin(), ordered.end(), std::less<>());
    // The lowest and another stay in use; of the five others the highest is taken out again.
    for (const size_t i : {5u, 2u, 6u, 4u, 3u})
        release(ordered[i]);
    ASSERT_EQ(take(), ordered[6]);
    release(ordered[1]);
    release(ordered[0]);
    QList<GLuint> expected;
    for (const size_t i : {2u, 3u, 4u, 5u, 1u, 0u})
        expected.append(ordered[i]->textureID());
    manager->deleteUnusedTempTextures();
    EXPECT_EQ(deletedNames, expected);
    EXPECT_EQ(inUse(), QSet<Texture*>({ordered[6]}));
}

TEST_F(TexturePoolTest, ClearDeletesTheFreeOnesAndTheEndOfTheManagerAll)
{
    Texture* const used = take();
    release(take());
    EXPECT_EQ(texturesAlive(), 2);
    manager->clear();
    EXPECT_EQ(texturesAlive(), 1);
    EXPECT_EQ(known(), QSet<Texture*>({used}));
    manager.reset();
    EXPECT_EQ(texturesAlive(), 0);
}

// ---- the summary ---------------------------------------------------------------------------------------------------

TEST_F(TexturePoolTest, TheSummaryOfNothing)
{
    EXPECT_EQ(summary(), QStringList({"0 managed textures:", "- 0 active textures", "- 0 free textures",
                                      "- breakdown by texture format, width and height:"}));
}

TEST_F(TexturePoolTest, TheSummaryCountsFreeAndActiveOnesOfEachDescription)
{
    take(RGBA, 4, 8);
    take(RGBA, 4, 8);
    release(take(RGBA, 4, 8));
    release(take(R16F, 2, 3));
    take(SRGB8A8, 100, 200);
    QStringList lines = summary();
    EXPECT_EQ(lines.mid(0, 4), QStringList({"5 managed textures:", "- 3 active textures", "- 2 free textures",
                                            "- breakdown by texture format, width and height:"}));
    lines = lines.mid(4);
    lines.sort();
    EXPECT_EQ(lines, QStringList({"  - R16F 2x3: 1 free, 0 active", "  - RGBA 4x8: 1 free, 2 active",
                                  "  - SRGB8A8 100x200: 0 free, 1 active"}));
}

TEST_F(TexturePoolTest, DescriptionsThatDifferInDepthOrSamplesGiveLinesThatLookAlike)
{
    take(RGBA, 4, 4, 1, 1);
    take(RGBA, 4, 4, 2, 1);
    take(RGBA, 4, 4, 1, 2);
    const QString line = QStringLiteral("  - RGBA 4x4: 0 free, 1 active");
    EXPECT_EQ(summary().mid(4), QStringList({line, line, line}));
}

TEST_F(TexturePoolTest, TheSummaryNamesEachFormatAsItsTableDoes)
{
    // From the first packed format on, each prints as the one two further on.
    const QStringList names =
        QStringLiteral("R RG RGB RGBA SRGB8A8 R16F RG16F RGB16F RGBA16F R32F RG32F RGB32F RGBA32F R16I RG16I RGB16I "
                       "RGBA16I R32I RG32I RGB32I RGBA32I DEPTH32F DEPTH24_STENCIL8 DEPTH32F_STENCIL8 unknown unknown")
            .split(u' ');
    ASSERT_EQ(names.size(), 26);
    for (int value = 0; value < 26; ++value)
    {
        Texture* const texture = take(TextureFormat(value), 7, 9);
        EXPECT_EQ(summary().value(4), QStringLiteral("  - %1 7x9: 0 free, 1 active").arg(names[value])) << value;
        release(texture);
        manager->deleteUnusedTempTextures();
    }
}

TEST_F(TexturePoolTest, TheSummaryChangesNothing)
{
    Texture* const used = take(RGBA);
    release(take(RGB));
    const CallLog calls;
    EXPECT_EQ(summary(), summary());
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(freeLists(), 1);
    EXPECT_EQ(inUse(), QSet<Texture*>({used}));
}

} // namespace Harrow::Vrk::Test
