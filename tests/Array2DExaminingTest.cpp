// SPDX-License-Identifier: MIT

/// \file
/// What Array2DTextureManager asks of a texture before it gives it a place.

#include "Array2DPlacingTestTools.h"

namespace Harrow::Vrk::Test
{
namespace
{

// ---- looking at a texture ------------------------------------------------------------------------------------------

class Array2DExamining : public Array2DPlacing
{
protected:
    static QString asking(const char* function, GLenum target, GLenum name)
    {
        return CallLog::call(function, target, name).chopped(1);
    }
    static QString askingLevel(GLenum target, GLenum name)
    {
        return CallLog::call("glGetTexLevelParameteriv", target, 0, name).chopped(1);
    }

    /// What is asked of the texture, without the addresses to which the answers go.
    QStringList examined(Texture* texture)
    {
        const TextureToken token = array2D->tokenForTexture(texture);
        Record found;
        const CallLog calls;
        array2D->determineSlotLayerDataForTexture(texture, token, found);
        QStringList asked = calls.named({QStringLiteral("glGetTexLevelParameteriv"),
                                         QStringLiteral("glGetTexParameteriv"), QStringLiteral("glGetTexParameterfv")});
        for (QString& call : asked)
            call = call.section(QStringLiteral(", @"), 0, 0);
        // The texture is bound around all that, and let go.
        const QStringList bindings = calls.named({QStringLiteral("glBindTexture")});
        EXPECT_EQ(bindings.size(), 2);
        EXPECT_EQ(bindings.value(0), bindName(texture->textureID(), texture->target()));
        EXPECT_EQ(bindings.value(1), bindName(0, texture->target()));
        return asked;
    }

    static QStringList expectedFor(GLenum target, GLenum levelTarget)
    {
        return {askingLevel(levelTarget, GL_TEXTURE_WIDTH),
                askingLevel(levelTarget, GL_TEXTURE_HEIGHT),
                askingLevel(levelTarget, GL_TEXTURE_INTERNAL_FORMAT),
                askingLevel(levelTarget, GL_TEXTURE_DEPTH),
                asking("glGetTexParameteriv", target, GL_TEXTURE_WRAP_S),
                asking("glGetTexParameteriv", target, GL_TEXTURE_WRAP_T),
                asking("glGetTexParameteriv", target, GL_TEXTURE_MAG_FILTER),
                asking("glGetTexParameteriv", target, GL_TEXTURE_MIN_FILTER),
                asking("glGetTexParameterfv", target, GL_TEXTURE_LOD_BIAS)};
    }
};

TEST_F(Array2DExamining, SizeAndSamplerStateAreAskedInOrder)
{
    makeSlots(2);
    EXPECT_EQ(examined(newTextureOf(sized(64, 32))), expectedFor(GL_TEXTURE_2D, GL_TEXTURE_2D));
}

TEST_F(Array2DExamining, CubeMapIsAskedForItsFirstFace)
{
    makeSlots(2);
    EXPECT_EQ(examined(newTextureOf(sized(64, 64), GL_TEXTURE_CUBE_MAP)),
              expectedFor(GL_TEXTURE_CUBE_MAP, GL_TEXTURE_CUBE_MAP_POSITIVE_X));
}

TEST_F(Array2DExamining, AnisotropyIsAskedLastWhereThereIsSome)
{
    driver.setExtensions({"GL_EXT_texture_filter_anisotropic"});
    makeSlots(2);
    QStringList expected = expectedFor(GL_TEXTURE_2D, GL_TEXTURE_2D);
    expected.append(asking("glGetTexParameterfv", GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY));
    EXPECT_EQ(examined(newTextureOf(sized(64, 32))), expected);
}

TEST_F(Array2DExamining, EveryAnswerGoesIntoTheFormat)
{
    driver.setExtensions({"GL_ARB_texture_filter_anisotropic"});
    makeManager();
    FakeTexture texture = sized(64, 32, GL_RG8);
    texture.wrapS = GL_MIRRORED_REPEAT;
    texture.wrapT = GL_CLAMP_TO_EDGE;
    texture.magFilter = GL_NEAREST;
    texture.minFilter = GL_LINEAR_MIPMAP_LINEAR;
    texture.anisotropy = 8.0f;
    texture.lodBias = -0.5f;
    bound(texture);
    SlotFormat expected = formatOf(64, 32, GL_RG8);
    expected.wrapS = GL_MIRRORED_REPEAT;
    expected.wrapT = GL_CLAMP_TO_EDGE;
    expected.magFilter = GL_NEAREST;
    expected.minFilter = GL_LINEAR_MIPMAP_LINEAR;
    expected.anisotropy = 8.0f;
    expected.lodBias = -0.5f;
    EXPECT_TRUE(slot(0).format == expected);
}

TEST_F(Array2DExamining, AnisotropyIsOneWhereThereIsNone)
{
    makeManager();
    FakeTexture texture = sized(64, 32);
    texture.anisotropy = 8.0f;
    bound(texture);
    EXPECT_EQ(slot(0).format.anisotropy, 1.0f);
}

TEST_F(Array2DExamining, LayersAreSixOfACubeMapAndTheDepthOfAnArray)
{
    makeManager();
    FakeTexture deep = sized(64, 64);
    deep.depth = 5;
    const quint64 plain = bound(deep);
    const quint64 cube = bound(deep, GL_TEXTURE_CUBE_MAP);
    const quint64 array = bound(deep, GL_TEXTURE_2D_ARRAY);
    EXPECT_EQ(place(plain), Place(0, 0));
    EXPECT_EQ(place(cube), Place(0, 1));
    EXPECT_EQ(place(array), Place(0, 7));
    EXPECT_EQ(slot(0).usedLayers, 12);
    EXPECT_EQ(Books::layerCounts(*array2D), QList<int>({1, 1, 6, 5}));
}

TEST_F(Array2DExamining, ArrayWithoutLayersHasNoPlace)
{
    makeManager(1);
    FakeTexture flat = sized(64, 64);
    flat.depth = 0;
    const quint64 token = bound(flat, GL_TEXTURE_2D_ARRAY);
    expectFresh(token);
    EXPECT_EQ(Books::layerCounts(*array2D), QList<int>({1, 0}));
    EXPECT_EQ(log.messages().size(), 1);
}

TEST_F(Array2DExamining, FreeLayersServeACubeMapByTheDistanceRuleAlone)
{
    makeManager();
    QList<Texture*> textures;
    for (int i = 0; i < 20; ++i)
    {
        textures.append(newTextureOf(sized(64, 64)));
        bound(textures.last());
    }
    for (const int layer : {2, 3, 4, 5, 6, 7}) // in a row
        array2D->deleteTexture(textures[layer]);
    const quint64 first = bound(sized(64, 64), GL_TEXTURE_CUBE_MAP);
    EXPECT_EQ(place(first), Place(0, 20));
    EXPECT_EQ(slot(0).freeLayers, QList<int>({2, 3, 4, 5, 6, 7}));
    array2D->deleteTexture(textures[0]); // now 0, 2, 3, 4, 5, 6
    const quint64 second = bound(sized(64, 64), GL_TEXTURE_CUBE_MAP);
    EXPECT_EQ(place(second), Place(0, 0));
    EXPECT_EQ(slot(0).freeLayers, QList<int>({7}));
}

TEST_F(Array2DExamining, ExaminedTokenWaitsForItsCopyAndTheTableForItsUpload)
{
    makeManager();
    Texture* const texture = newTextureOf(sized(64, 64));
    const quint64 token = array2D->tokenForTexture(texture).token;
    forgetPending();
    EXPECT_TRUE(pending().isEmpty());
    array2D->bind(tokens({token}));
    EXPECT_EQ(pending(), tokens({token}));
    EXPECT_TRUE(isDirty());
    // also when it finds no place
    fakeTextures[texture->textureID()].width = 0;
    array2D->dirty(texture);
    forgetPending();
    array2D->bind(tokens({token}));
    expectFresh(token);
    EXPECT_EQ(pending(), tokens({token}));
    EXPECT_TRUE(isDirty());
}

TEST_F(Array2DExamining, OtherTargetsAreReportedAndTakeOneLayer)
{
    makeSlots(2);
    FakeTexture deep = sized(64, 64);
    deep.depth = 5;
    Texture* const texture = newTextureOf(deep, GL_TEXTURE_3D);
    const TextureToken token = array2D->tokenForTexture(texture);
    Record found;
    array2D->determineSlotLayerDataForTexture(texture, token, found);
    EXPECT_EQ(
        log.messages(),
        QStringList(assertionLine(
            QStringLiteral("(GL_TEXTURE_2D == texture->target()) || (GL_TEXTURE_CUBE_MAP == texture->target()) || "
                           "(GL_TEXTURE_2D_ARRAY == texture->target())"),
            QStringLiteral("Texture 1 is for target 0x806F. Only 0xDE1, 0x8C1A or 0x8513 are allowed"))));
    EXPECT_EQ(Place(found.slot, found.layer), Place(0, 0));
    EXPECT_EQ(Books::layerCounts(*array2D)[1], 1);
}

TEST_F(Array2DExamining, NoTextureIsReported)
{
    makeSlots(2);
    Record found;
    found.slot = 7;
    array2D->determineSlotLayerDataForTexture(nullptr, TextureToken(0), found);
    EXPECT_EQ(found.slot, 7);
    EXPECT_EQ(log.messages(), QStringList(assertionLine(QStringLiteral("nullptr != texture"),
                                                        QStringLiteral("Token 0 has no texture"))));
}

TEST_F(Array2DExamining, TokenWithoutARecordIsReported)
{
    makeSlots(2);
    Texture* const texture = newTextureOf(sized(64, 64));
    Record found;
    found.slot = 7;
    array2D->determineSlotLayerDataForTexture(texture, TextureToken(1), found);
    array2D->determineSlotLayerDataForTexture(texture, INVALID_TOKEN, found);
    EXPECT_EQ(found.slot, 7);
    EXPECT_FALSE(slot(0).isUsed());
    EXPECT_EQ(pending(), tokens({0}));
    const QString condition = QStringLiteral("token.token < quint64(_textureTokenToSlotLayerData.size())");
    EXPECT_EQ(log.messages(),
              QStringList({assertionLine(condition, QStringLiteral("Token 1 is not in array 1.")),
                           assertionLine(condition, QStringLiteral("Token 18446744073709551615 is not in array 1."))}));
}

TEST_F(Array2DExamining, TexelsOfUnknownSizeGetNoSlot)
{
    makeSlots(3);
    find(formatOf(64, 64, GL_R8));
    EXPECT_EQ(find(formatOf(64, 64, GL_RGBA16)), kNowhere);
    EXPECT_FALSE(slot(1).isUsed());
    EXPECT_FALSE(slot(2).isUsed());
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList(QStringLiteral("bytesFromInternalFormat() does not implement yet : 0x805B")));
    EXPECT_EQ(log.messages(QtWarningMsg),
              QStringList(line("Failed to find slot or layer (  64x64  ) 0x805B C:0x2901 0x2901 F:0x2601 0x2601  1.0  "
                               "0.0\n")));
}

TEST_F(Array2DExamining, TexelsOfUnknownSizeMoveNoLayers)
{
    makeManager(2);
    const quint64 small = bound(sized(256, 256));
    const quint64 large = bound(sized(512, 512));
    EXPECT_EQ(find(formatOf(64, 64, GL_RGBA16, GL_CLAMP_TO_EDGE)), kNowhere);
    EXPECT_EQ(place(small), Place(0, 0));
    EXPECT_EQ(place(large), Place(1, 0));
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList(QStringLiteral("bytesFromInternalFormat() does not implement yet : 0x805B")));
}

TEST_F(Array2DExamining, TexelsOfUnknownSizeGoIntoASlotThatThereIs)
{
    makeSlots(1);
    find(formatOf(64, 64));
    EXPECT_EQ(find(formatOf(128, 128, GL_RGBA16)), Place(0, 1)); // converted by the copy
    EXPECT_EQ(log.messages(),
              QStringList(line("Textures were resized to fit into texture slots (128x128) -> (64x64)")));
}

TEST_F(Array2DExamining, TexelsOfUnknownSizeAreNotAskedForWithoutNeed)
{
    makeSlots(1);
    find(formatOf(64, 64, GL_R8));
    EXPECT_EQ(find(formatOf(64, 64, GL_RGBA16)), kNowhere);
    EXPECT_EQ(log.messages(QtCriticalMsg), QStringList());
}

} // namespace
} // namespace Harrow::Vrk::Test
