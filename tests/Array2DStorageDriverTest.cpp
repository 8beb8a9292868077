// SPDX-License-Identifier: MIT
//
// Array2DTextureManager on the fake driver: the calls that make the storage of slots, their handles, and their end.
#include "Array2DStorageTestTools.h"

#include <limits>

namespace Harrow::Vrk::Test::Array2DDraws::Storage
{

// ---- making slots --------------------------------------------------------------------------------------------------

TEST_F(Array2DStorageTest, EverySlotStartsWithACompleteTextureOfOneTexel)
{
    makeManager(2);
    const CallLog calls;
    array2D->setupSlots();
    EXPECT_EQ(masked(calls.list()), placeholder(1) + placeholder(2));
    ASSERT_EQ(Books::allSlots(*array2D).size(), 2);
    EXPECT_EQ(Books::slotUnits(*array2D).size(), 2);
    EXPECT_EQ(Books::slotHandles(*array2D), QList<quint64>({0, 0}));
    for (int i = 0; i < 2; ++i)
    {
        EXPECT_EQ(slot(i).texture->textureID(), GLuint(i + 1));
        EXPECT_EQ(slot(i).texture->target(), kArray);
        EXPECT_FALSE(slot(i).isUsed());
        EXPECT_EQ(slot(i).allocatedLayers, 0);
        EXPECT_EQ(slot(i).handle, 0u);
        EXPECT_EQ(slot(i).residentCount, 0);
        EXPECT_EQ(slot(i).format.anisotropy, 1.0f);
    }
}

TEST_F(Array2DStorageTest, SlotsAreMadeOnce)
{
    makeSlots(2);
    const CallLog calls;
    array2D->setupSlots();
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(Array2DStorageTest, UpdateSlotsMakesTheSlots)
{
    makeManager(1);
    EXPECT_EQ(updating(), placeholder(1));
}

TEST_F(Array2DStorageTest, NoSlotIsMadeForNoneOrFewer)
{
    for (const int count : {0, -1, std::numeric_limits<int>::min()})
    {
        makeManager(count);
        EXPECT_EQ(updating(), QStringList()) << count;
        EXPECT_TRUE(Books::allSlots(*array2D).isEmpty());
    }
}

TEST_F(Array2DStorageTest, UnusedSlotsAreLeftAlone)
{
    makeSlots(4);
    EXPECT_EQ(updating(), QStringList());
    EXPECT_TRUE(pending().isEmpty()) << "white has no place";
}

// ---- storage -------------------------------------------------------------------------------------------------------

TEST_F(Array2DStorageTest, ANewSlotGetsItsStorageAndItsTexelsByTheseCalls)
{
    makeSlots(1);
    place(2, 2);
    ASSERT_EQ(last->textureID(), 1000u);
    const QStringList expected = {
        "glActiveTexture(0x84cf)",
        "glBindTexture(0x8c1a, 1)",
        "glTexImage3D(0x8c1a, 0, 0x8058, 2, 2, 1, 0, 0x1908, 0x1401, null)",
        "glTexImage3D(0x8c1a, 1, 0x8058, 1, 1, 1, 0, 0x1908, 0x1401, null)",
        "glTexParameteri(0x8c1a, 0x2800, 0x2601)", // magnification filter: linear
        "glTexParameteri(0x8c1a, 0x2801, 0x2601)", // minification filter
        "glTexParameteri(0x8c1a, 0x2802, 0x2901)", // wrap s: repeat
        "glTexParameteri(0x8c1a, 0x2803, 0x2901)", // wrap t
        "glTexParameteri(0x8c1a, 0x8501, 0)",      // bias of the level of detail
        "glTexParameteri(0x8c1a, 0x813a, 0)",      // lowest level of detail
        "glTexParameteri(0x8c1a, 0x813b, 1)",      // highest one
        "glTexParameteri(0x8c1a, 0x813c, 0)",      // base level
        "glTexParameteri(0x8c1a, 0x813d, 1)",      // last level
        "glFlush()",
        "glActiveTexture(0x84cf)",
        "glBindTexture(0x8c1a, 0)",
        // The copy: what the source is.
        "glFlush()",
        "glActiveTexture(0x84cf)",
        "glBindTexture(0xde1, 0x3e8)",
        "glGetTexLevelParameteriv(0xde1, 0, 0x1000, @)",
        "glGetTexLevelParameteriv(0xde1, 0, 0x1001, @)",
        "glGetTexParameteriv(0xde1, 0x813d, @)",
        "glActiveTexture(0x84cf)",
        "glBindTexture(0xde1, 0)",
        "glGetIntegerv(0x8ca6, @)",
        "glGenFramebuffers(1, @)",
        "glGenFramebuffers(1, @)",
        // The base level, from the source.
        "glBindFramebuffer(0x8d40, 1)",
        "glFramebufferTexture(0x8d40, 0x8ce0, 0x3e8, 0)",
        "glBindFramebuffer(0x8d40, 2)",
        "glFramebufferTextureLayer(0x8d40, 0x8ce0, 1, 0, 0)",
        "glBindFramebuffer(0x8d40, 0)",
        "glActiveTexture(0x84cf)",
        "glBindTexture(0xde1, 0x3e8)",
        "glGetTexLevelParameteriv(0xde1, 0, 0x1000, @)",
        "glGetTexLevelParameteriv(0xde1, 0, 0x1001, @)",
        "glActiveTexture(0x84cf)",
        "glBindTexture(0xde1, 0)",
        "glBindFramebuffer(0x8ca8, 1)",
        "glReadBuffer(0x8ce0)",
        "glBindFramebuffer(0x8ca9, 2)",
        "glDrawBuffer(0x8ce0)",
        "glBlitFramebuffer(0, 0, 2, 2, 0, 0, 2, 2, 0x4000, 0x2601)",
        // The other one, from the slot.
        "glBindFramebuffer(0x8d40, 1)",
        "glFramebufferTextureLayer(0x8d40, 0x8ce0, 1, 0, 0)",
        "glBindFramebuffer(0x8d40, 2)",
        "glFramebufferTextureLayer(0x8d40, 0x8ce0, 1, 1, 0)",
        "glBindFramebuffer(0x8d40, 0)",
        "glBindFramebuffer(0x8ca8, 1)",
        "glReadBuffer(0x8ce0)",
        "glBindFramebuffer(0x8ca9, 2)",
        "glDrawBuffer(0x8ce0)",
        "glBlitFramebuffer(0, 0, 2, 2, 0, 0, 1, 1, 0x4000, 0x2601)",
        "glBindFramebuffer(0x8ca8, 0)",
        "glBindFramebuffer(0x8ca9, 0)",
        "glBindFramebuffer(0x8d40, 0)",
        "glDeleteFramebuffers(1, @)",
        "glDeleteFramebuffers(1, @)",
        "glFlush()",
    };
    EXPECT_EQ(updating(), expected);
    EXPECT_EQ(slot(0).allocatedLayers, 1);
    EXPECT_TRUE(pending().isEmpty());
    const QStringList built = onTop(1, kArray) + QStringList({rgba8(0, 2, 2, 1), rgba8(1, 1, 1, 1)}) +
                              slotParameters(2) + QStringList(CallLog::call("glFlush")) + noneOnTop(kArray) +
                              copied(1, {1000, GL_TEXTURE_2D, 2, 2, 0}, {1, 2, 2, 0});
    EXPECT_EQ(built, expected) << "what the other tests are built of";
}

TEST_F(Array2DStorageTest, EachLevelIsSpecifiedOnceForEachLayer)
{
    makeSlots(1);
    for (int i = 0; i < 3; ++i)
        place(8, 4);
    EXPECT_EQ(updating().filter(QStringLiteral("glTexImage3D")),
              repeated(rgba8(0, 8, 4, 3), 3) + repeated(rgba8(1, 4, 2, 3), 3) + repeated(rgba8(2, 2, 1, 3), 3));
}

TEST_F(Array2DStorageTest, LevelsEndWithTheShorterSide)
{
    makeSlots(1);
    place(16, 5);
    const QStringList calls = updating();
    EXPECT_EQ(calls.filter(QStringLiteral("glTexImage3D")),
              QStringList({rgba8(0, 16, 5, 1), rgba8(1, 8, 2, 1), rgba8(2, 4, 1, 1)}));
    EXPECT_TRUE(calls.contains(parameter(kArray, GL_TEXTURE_MAX_LOD, 2)));
    EXPECT_TRUE(calls.contains(parameter(kArray, GL_TEXTURE_MAX_LEVEL, 2)));
}

TEST_F(Array2DStorageTest, TransferFormatAndTypeAreThoseOfTheInternalFormat)
{
    struct Row
    {
        GLint internalFormat;
        GLenum format;
        GLenum type;
    };
    constexpr Row kRows[] = {{GL_R8, GL_RED, GL_UNSIGNED_BYTE},
                             {GL_RG16F, GL_RG, GL_HALF_FLOAT},
                             {GL_RGBA32F, GL_RGBA, GL_FLOAT},
                             {GL_SRGB8_ALPHA8, GL_RGBA, GL_UNSIGNED_BYTE},
                             {GL_RGB10_A2, GL_RGBA, GL_UNSIGNED_INT_2_10_10_10_REV}};
    makeSlots(int(std::size(kRows)));
    QStringList expected;
    for (const Row& row : kRows)
    {
        FakeTexture description;
        description.internalFormat = row.internalFormat;
        place(description);
        expected += image(0, row.internalFormat, 1, 1, 1, row.format, row.type);
    }
    EXPECT_EQ(updating().filter(QStringLiteral("glTexImage3D")), expected);
}

TEST_F(Array2DStorageTest, TheSlotSamplesAsItsTexturesDo)
{
    makeSlots(1);
    FakeTexture description = sized(4, 4);
    description.wrapS = GL_CLAMP_TO_EDGE;
    description.wrapT = GL_MIRRORED_REPEAT;
    description.magFilter = GL_NEAREST;
    description.minFilter = GL_LINEAR_MIPMAP_NEAREST;
    place(description);
    QStringList expected = slotParameters(3);
    expected[0] = parameter(kArray, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    expected[1] = parameter(kArray, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_NEAREST);
    expected[2] = parameter(kArray, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    expected[3] = parameter(kArray, GL_TEXTURE_WRAP_T, GL_MIRRORED_REPEAT);
    EXPECT_EQ(updating().filter(QStringLiteral("glTexParameter")), expected);
}

TEST_F(Array2DStorageTest, TheBiasOfTheLevelOfDetailIsTruncated)
{
    const std::pair<float, GLint> rows[] = {{2.75f, 2}, {-1.5f, -1}, {0.99f, 0}, {3.0f, 3}};
    for (const auto& [bias, set] : rows)
    {
        makeSlots(1);
        FakeTexture description;
        description.lodBias = bias;
        place(description);
        const QStringList calls = updating();
        EXPECT_EQ(calls.filter(CallLog::call("glTexParameteri", kArray, GL_TEXTURE_LOD_BIAS).chopped(1)),
                  QStringList(parameter(kArray, GL_TEXTURE_LOD_BIAS, set)))
            << bias;
    }
}

TEST_F(Array2DStorageTest, ABiasBeyondAllIntegersIsSetToTheNearestOneAndNoneToZero)
{
    const std::pair<float, GLint> rows[] = {
        {1e20f, std::numeric_limits<GLint>::max()},
        {2147483648.0f, std::numeric_limits<GLint>::max()},
        {-1e20f, std::numeric_limits<GLint>::min()},
        {std::numeric_limits<float>::infinity(), std::numeric_limits<GLint>::max()},
        {std::numeric_limits<float>::quiet_NaN(), 0},
    };
    for (const auto& [bias, set] : rows)
    {
        makeSlots(1);
        FakeTexture description;
        description.lodBias = bias;
        place(description);
        EXPECT_TRUE(updating().contains(parameter(kArray, GL_TEXTURE_LOD_BIAS, set))) << bias;
    }
}

TEST_F(Array2DStorageTest, AnisotropyIsSetBehindTheOthersWhereItIsSupported)
{
    for (const char* const extension : {"GL_ARB_texture_filter_anisotropic", "GL_EXT_texture_filter_anisotropic"})
    {
        offer({extension});
        makeSlots(1);
        FakeTexture description;
        description.anisotropy = 6.5f;
        place(description);
        EXPECT_EQ(updating().filter(QStringLiteral("glTexParameter")),
                  slotParameters(1) +
                      QStringList(CallLog::call("glTexParameterf", kArray, GL_TEXTURE_MAX_ANISOTROPY, 6.5f)));
    }
}

TEST_F(Array2DStorageTest, AnisotropyIsNotSetWhereItIsNotSupported)
{
    makeSlots(1);
    place(2, 2);
    EXPECT_EQ(updating().filter(QStringLiteral("glTexParameterf")), QStringList());
}

TEST_F(Array2DStorageTest, StorageThatIsBigEnoughIsKept)
{
    makeSlots(1);
    place(2, 2);
    const TextureToken second = place(2, 2);
    array2D->updateSlots();
    EXPECT_EQ(updating(), QStringList());
    array2D->deleteTexture(second);
    EXPECT_EQ(updating(), QStringList());
    ASSERT_EQ(slot(0).allocatedLayers, 2);
    place(2, 2);
    EXPECT_EQ(updating(), copied(5, {last->textureID(), GL_TEXTURE_2D, 2, 2, 0}, {1, 2, 2, 1}));
    EXPECT_EQ(slot(0).allocatedLayers, 2);
}

TEST_F(Array2DStorageTest, GrownStorageHasTheLayersInUseAndIsFilledAgain)
{
    makeSlots(1);
    place(1, 1);
    place(1, 1);
    array2D->updateSlots();
    place(1, 1);
    const QStringList calls = updating();
    EXPECT_EQ(calls, onTop(1, kArray) + repeated(rgba8(0, 1, 1, 3), 3) + slotParameters(1) +
                         QStringList(CallLog::call("glFlush")) + noneOnTop(kArray) +
                         copied(5, {1002, GL_TEXTURE_2D, 1, 1, 0}, {1, 1, 1, 2}) +
                         copied(7, {1000, GL_TEXTURE_2D, 1, 1, 0}, {1, 1, 1, 0}) +
                         copied(9, {1001, GL_TEXTURE_2D, 1, 1, 0}, {1, 1, 1, 1}));
    EXPECT_EQ(slot(0).allocatedLayers, 3);
}

TEST_F(Array2DStorageTest, WhatWaitsComesFirstThenTheOldTokensOfGrownSlotsAscending)
{
    makeSlots(2);
    QList<TextureToken> small; // slot 0
    QList<TextureToken> large; // slot 1
    for (int i = 0; i < 3; ++i)
    {
        small.append(place(1, 1)); // 1000, 1002, 1004
        large.append(place(2, 2)); // 1001, 1003, 1005
    }
    array2D->updateSlots();
    place(2, 2); // 1006
    place(1, 1); // 1007
    array2D->dirty(array2D->textureForToken(small[1]));
    array2D->bind(QList<TextureToken>{small[1]}); // waits too, behind them
    EXPECT_EQ(sourcesOf(updating()), QList<int>({1006, 1007, 1002, 1000, 1004, 1001, 1003, 1005}));
}

TEST_F(Array2DStorageTest, OnlyTheSlotThatGrowsIsFilledAgain)
{
    makeSlots(2);
    place(1, 1);
    place(2, 2);
    array2D->updateSlots();
    place(2, 2);
    EXPECT_EQ(sourcesOf(updating()), QList<int>({1002, 1001}));
}

TEST_F(Array2DStorageTest, ASlotThatIsUsedAnewGetsNewStorageInTheSameTexture)
{
    makeSlots(1);
    const TextureToken first = place(4, 4);
    place(4, 4);
    array2D->updateSlots();
    array2D->deleteTexture(first);
    array2D->deleteTexture(array2D->tokenForTexture(last));
    ASSERT_FALSE(slot(0).isUsed());
    EXPECT_EQ(updating(), QStringList());
    EXPECT_EQ(slot(0).allocatedLayers, 2) << "its old storage stays";
    place(1, 1);
    EXPECT_EQ(updating(), onTop(1, kArray) + QStringList(rgba8(0, 1, 1, 1)) + slotParameters(1) +
                              QStringList(CallLog::call("glFlush")) + noneOnTop(kArray) +
                              copied(5, {last->textureID(), GL_TEXTURE_2D, 1, 1, 0}, {1, 1, 1, 0}));
}

TEST_F(Array2DStorageTest, ASlotWithoutLayersSpecifiesNothingButItsParametersEachTime)
{
    makeSlots(1);
    FakeTexture description = sized(16384, 16384);
    description.internalFormat = GL_RGBA16F; // 2 GiB
    const LogCapture log;
    place(description);
    ASSERT_TRUE(slot(0).isUsed());
    ASSERT_EQ(slot(0).usedLayers, 0);
    const QStringList once =
        onTop(1, kArray) + slotParameters(15) + QStringList(CallLog::call("glFlush")) + noneOnTop(kArray);
    EXPECT_EQ(updating(), once);
    EXPECT_EQ(slot(0).allocatedLayers, 0);
    EXPECT_EQ(updating(), once);
}

TEST_F(Array2DStorageTest, ASlotTextureThatADrawHasBoundStaysBound)
{
    make();
    place(2, 2);
    array2D->bind(program.get());
    ASSERT_TRUE(slot(0).texture->isBound());
    const int unit = slot(0).texture->unit();
    place(2, 2);
    const QStringList calls = updating();
    EXPECT_EQ(calls.mid(0, 1), QStringList(activate(unit)));
    EXPECT_TRUE(calls[1].startsWith(QStringLiteral("glTexImage3D"))) << "on the unit that it has";
    EXPECT_TRUE(slot(0).texture->isBound());
    array2D->unbind(program.get());
}

// ---- handles -------------------------------------------------------------------------------------------------------

TEST_F(Array2DStorageTest, ABindlessSlotTakesItsHandleWhenItHasStorage)
{
    makeBindlessSlots(2);
    place(1, 1);
    EXPECT_EQ(updating(), onTop(1, kArray) + QStringList(rgba8(0, 1, 1, 1)) + slotParameters(1) +
                              QStringList(CallLog::call("glFlush")) + handleCall("glGetTextureHandleARB", 1) +
                              noneOnTop(kArray) + handleCall("glIsTextureHandleResidentARB", giveHandle(1)) +
                              copied(1, {1000, GL_TEXTURE_2D, 1, 1, 0}, {1, 1, 1, 0}));
    EXPECT_EQ(slot(0).handle, giveHandle(1));
    EXPECT_EQ(slot(0).residentCount, 0);
    EXPECT_EQ(slot(1).handle, 0u) << "not in use";
}

TEST_F(Array2DStorageTest, TheHandleIsWrittenIntoEveryRecordOfTheSlotAndNoOther)
{
    makeBindlessSlots(2);
    const TextureToken first = place(1, 1);
    const TextureToken elsewhere = place(2, 2);
    const TextureToken second = place(1, 1);
    EXPECT_EQ(record(first), (Record{0, 0, 0, 0, 0, 0, 0, 0}));
    array2D->updateSlots();
    EXPECT_EQ(record(first), (Record{0, 0, 0x40, 1, 0, 0, 0, 0})) << "the low word first";
    EXPECT_EQ(record(second), (Record{0, 1, 0x40, 1, 0, 0, 0, 0}));
    EXPECT_EQ(record(elsewhere), (Record{1, 0, 0x40, 2, 0, 0, 0, 0}));
    EXPECT_EQ(record(TextureToken(0)), kFreshRecord);
}

TEST_F(Array2DStorageTest, GrowthOfASlotWithAResidentHandleMakesANewTexture)
{
    makeBindlessSlots(1);
    const TextureToken first = place(1, 1);
    array2D->updateSlots();
    makeResident(giveHandle(1));
    slot(0).residentCount = 3;
    const TextureToken second = place(1, 1);
    ASSERT_EQ(record(second), (Record{0, 1, 0x40, 1, 0, 0, 0, 0})) << "the handle of then";
    EXPECT_EQ(updating(), handleCall("glIsTextureHandleResidentARB", giveHandle(1)) +
                              handleCall("glMakeTextureHandleNonResidentARB", giveHandle(1)) +
                              QStringList(pointerCall("glDeleteTextures", {1})) + placeholder(2) + onTop(2, kArray) +
                              repeated(rgba8(0, 1, 1, 2), 2) + slotParameters(1) +
                              QStringList(CallLog::call("glFlush")) + handleCall("glGetTextureHandleARB", 2) +
                              noneOnTop(kArray) + handleCall("glIsTextureHandleResidentARB", giveHandle(2)) +
                              copied(3, {1001, GL_TEXTURE_2D, 1, 1, 0}, {2, 1, 1, 1}) +
                              handleCall("glIsTextureHandleResidentARB", giveHandle(2)) +
                              copied(5, {1000, GL_TEXTURE_2D, 1, 1, 0}, {2, 1, 1, 0}));
    EXPECT_EQ(slot(0).residentCount, 0);
    EXPECT_EQ(slot(0).handle, giveHandle(2));
    EXPECT_EQ(record(first), (Record{0, 0, 0x40, 2, 0, 0, 0, 0}));
    EXPECT_EQ(record(second), (Record{0, 1, 0x40, 2, 0, 0, 0, 0}));
    EXPECT_TRUE(residents.isEmpty());
}

TEST_F(Array2DStorageTest, AHandleThatIsNotResidentIsJustDropped)
{
    makeBindlessSlots(1);
    place(1, 1);
    array2D->updateSlots();
    place(1, 1);
    const QStringList calls = updating();
    EXPECT_EQ(calls.mid(0, 2), handleCall("glIsTextureHandleResidentARB", giveHandle(1)) +
                                   QStringList(pointerCall("glDeleteTextures", {1})));
    EXPECT_FALSE(calls.join(QLatin1Char(' ')).contains(QStringLiteral("glMakeTextureHandleNonResidentARB")));
}

TEST_F(Array2DStorageTest, ASlotThatIsUsedAnewLosesItsHandleToo)
{
    makeBindlessSlots(1);
    const TextureToken first = place(4, 4);
    array2D->updateSlots();
    makeResident(giveHandle(1));
    array2D->deleteTexture(first);
    const TextureToken second = place(1, 1);
    array2D->updateSlots();
    EXPECT_TRUE(residents.isEmpty());
    EXPECT_EQ(slot(0).handle, giveHandle(2));
    EXPECT_EQ(record(second), (Record{0, 0, 0x40, 2, 0, 0, 0, 0}));
}

TEST_F(Array2DStorageTest, SamplersNeedNoHandles)
{
    offer({"GL_ARB_bindless_texture"});
    makeSlots(1);
    place(1, 1);
    EXPECT_EQ(updating().filter(QStringLiteral("ARB")), QStringList());
    place(1, 1);
    EXPECT_EQ(updating().filter(QStringLiteral("ARB")), QStringList());
    EXPECT_EQ(slot(0).texture->textureID(), 1u) << "the texture stays";
}

TEST_F(Array2DStorageTest, ADriverWithoutHandlesIsReportedOnceForEachStorage)
{
    makeManager(1);
    array2D->setBindMode(Array2DTextureManager::BindBindless);
    place(1, 1);
    LogCapture log;
    array2D->updateSlots();
    const QString report = assertionLine(QStringLiteral("nullptr != this->_bindless->getTextureHandle"),
                                         QStringLiteral("Bindless textures are not supported"));
    EXPECT_EQ(log.messages(), QStringList(report));
    EXPECT_EQ(slot(0).handle, 0u);
    EXPECT_EQ(slot(0).allocatedLayers, 1);
    EXPECT_TRUE(pending().isEmpty()) << "copied all the same";
    log.clear();
    array2D->updateSlots();
    EXPECT_EQ(log.messages(), QStringList());
}

// ---- the end -------------------------------------------------------------------------------------------------------

TEST_F(Array2DStorageTest, DeletingSlotsEndsResidenceAndTextures)
{
    makeBindlessSlots(3);
    place(1, 1);
    place(2, 2);
    array2D->updateSlots();
    makeResident(giveHandle(1));
    const CallLog calls;
    array2D->deleteSlots();
    EXPECT_EQ(masked(calls.list()), handleCall("glIsTextureHandleResidentARB", giveHandle(1)) +
                                        handleCall("glMakeTextureHandleNonResidentARB", giveHandle(1)) +
                                        QStringList(pointerCall("glDeleteTextures", {1})) +
                                        handleCall("glIsTextureHandleResidentARB", giveHandle(2)) +
                                        repeated(pointerCall("glDeleteTextures", {1}), 2));
    EXPECT_TRUE(Books::allSlots(*array2D).isEmpty());
    EXPECT_TRUE(residents.isEmpty());
}

TEST_F(Array2DStorageTest, TheDestructorDeletesTheSlots)
{
    const int before = Texture::NumAlive();
    makeBindlessSlots(2);
    place(1, 1);
    array2D->updateSlots();
    makeResident(giveHandle(1));
    const CallLog calls;
    array2D.reset();
    EXPECT_EQ(masked(calls.list()).mid(0, 4), handleCall("glIsTextureHandleResidentARB", giveHandle(1)) +
                                                  handleCall("glMakeTextureHandleNonResidentARB", giveHandle(1)) +
                                                  repeated(pointerCall("glDeleteTextures", {1}), 2));
    EXPECT_TRUE(residents.isEmpty());
    EXPECT_EQ(Texture::NumAlive(), before) << "the manager deletes wrapped textures with a token as well";
}

TEST_F(Array2DStorageTest, SlotsThatClearHasSetAsideLiveToTheEndOfTheManager)
{
    const int before = Texture::NumAlive();
    makeBindlessSlots(1);
    place(1, 1);
    array2D->updateSlots();
    makeResident(giveHandle(1));
    {
        const CallLog calls;
        array2D->clear();
        EXPECT_EQ(calls.list(), QStringList());
    }
    EXPECT_TRUE(residents.contains(giveHandle(1)));
    array2D->setupSlots();
    ASSERT_EQ(Books::allSlots(*array2D).size(), 1);
    EXPECT_EQ(slot(0).texture->textureID(), 2u);
    array2D.reset();
    EXPECT_TRUE(residents.isEmpty());
    EXPECT_EQ(Texture::NumAlive(), before);
}

} // namespace Harrow::Vrk::Test::Array2DDraws::Storage
