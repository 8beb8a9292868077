// SPDX-License-Identifier: MIT
//
// The books of the pool of scratch textures: what is taken again, what is free and what is in use, and the lines of the
// summary.
#include "TexturePoolTestTools.h"

#include <algorithm>
#include <functional>
#include <limits>

namespace Harrow::Vrk::Test
{

// ---- what is taken again -------------------------------------------------------------------------------------------

TEST_F(TexturePoolTest, AHitMakesOneQueryAndNoTextureCall)
{
    Texture* const texture = take(RGBA, 4, 4, 3, 4);
    texture->setReadOnly();
    release(texture);
    const CallLog calls;
    const LogCapture log;
    EXPECT_EQ(take(RGBA, 4, 4, 3, 4), texture);
    EXPECT_EQ(masked(calls), QStringList({askSamples()}));
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
