// SPDX-License-Identifier: MIT
//
// Array2DTextureManager on the real driver: which texels the layers of the slots have. Mesa 22.3 loses levels of an
// array that is specified with several layers at once where its base has an odd side, or its second level a side of 1;
// slots of several layers have other sizes here.
#include "Array2DCopyTestTools.h"

#include "support/LogCapture.h"

#include <QFile>
#include <QImage>
#include <QTemporaryDir>

namespace Harrow::Vrk::Test
{
namespace
{

class Array2DCopyGL : public Array2DCopyFixture
{
protected:
    static QString resized(const OpenArray2DManager* manager, int width, int height, int slotWidth, int slotHeight)
    {
        return QString::asprintf("%p Textures were resized to fit into texture slots (%dx%d) -> (%dx%d)",
                                 static_cast<const void*>(manager), width, height, slotWidth, slotHeight);
    }

    static bool writePng(const QString& path, const QColor& color)
    {
        QImage image(2, 2, QImage::Format_ARGB32);
        image.fill(color);
        return image.save(path, "PNG");
    }
};

constexpr std::array<float, 4> kWhite = {1, 1, 1, 1};
constexpr std::array<float, 4> kRed = {1, 0, 0, 1};

} // namespace

// ---- which texels --------------------------------------------------------------------------------------------------

TEST_F(Array2DCopyGL, EveryLevelOfTheSourceIsThere)
{
    makeManager();
    const LayerLevels levels = noiseChain(16, 16, 5, 1);
    const TextureToken token = place(newTexture(levels));
    array2D->updateSlots();
    expectCopied(token, levels);
}

TEST_F(Array2DCopyGL, TexturesOfOneFormatAreLayersOfOneSlot)
{
    makeManager();
    QList<TextureToken> all;
    std::vector<LayerLevels> sources;
    for (unsigned i = 0; i < 5; ++i)
    {
        sources.push_back(noiseChain(8, 8, 4, i));
        all.append(place(newTexture(sources.back())));
    }
    array2D->updateSlots();
    for (int i = 0; i < 5; ++i)
    {
        EXPECT_EQ(record(all[i]).slot, 0);
        EXPECT_EQ(record(all[i]).layer, i);
        expectCopied(all[i], sources[std::size_t(i)]);
    }
}

TEST_F(Array2DCopyGL, LevelsThatTheSourceLacksAreBuiltFromTheLevelBefore)
{
    makeManager();
    for (const int levels : {1, 2, 3})
    {
        const LayerLevels source = noiseChain(16, 16, levels, unsigned(levels));
        const TextureToken token = place(newTexture(source));
        array2D->updateSlots();
        expectCopied(token, source);
    }
}

TEST_F(Array2DCopyGL, ASourceThatNeverSaidItsGreatestLevelGivesItsBaseAlone)
{
    makeManager();
    const LayerLevels source = noiseChain(8, 8, 4, 1);
    Texture* const texture = newTexture(source);
    {
        const AutoBinder binder(texture);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 1000);
    }
    const TextureToken token = place(texture);
    array2D->updateSlots();
    expectCopied(token, {source[0]});
}

TEST_F(Array2DCopyGL, LevelsOfWhatIsNotSquareEndWithTheShorterSide)
{
    makeManager();
    const LayerLevels wide = noiseChain(16, 4, 5, 1);
    const LayerLevels high = noiseChain(2, 16, 1, 2);
    const LayerLevels odd = noiseChain(7, 5, 1, 3);
    const LayerLevels oddChain = noiseChain(9, 5, 3, 4);
    const TextureToken wideToken = place(newTexture(wide));
    const TextureToken highToken = place(newTexture(high));
    const TextureToken oddToken = place(newTexture(odd));
    const TextureToken oddChainToken = place(newTexture(oddChain));
    array2D->updateSlots();
    EXPECT_EQ(slotLevels(slotOf(wideToken)), 3);
    EXPECT_EQ(slotLevels(slotOf(highToken)), 2);
    EXPECT_EQ(slotLevels(slotOf(oddToken)), 3);
    EXPECT_EQ(slotLevels(slotOf(oddChainToken)), 3);
    expectCopied(wideToken, wide);
    expectCopied(highToken, high);
    expectCopied(oddToken, odd);
    expectCopied(oddChainToken, oddChain);
}

TEST_F(Array2DCopyGL, TheSixFacesOfACubeMapAreLayersInTheirOrder)
{
    makeManager();
    place(newTexture(noiseChain(8, 8, 1, 99))); // in layer 0
    std::vector<LayerLevels> faces;
    for (unsigned face = 0; face < 6; ++face)
        faces.push_back(noiseChain(8, 8, 2, face));
    const TextureToken token = place(newCubeMap(faces));
    array2D->updateSlots();
    ASSERT_EQ(record(token).layer, 1);
    EXPECT_EQ(slotOf(token).allocatedLayers, 7);
    for (int face = 0; face < 6; ++face)
        expectCopied(token, faces[std::size_t(face)], face);
}

TEST_F(Array2DCopyGL, TheLayersOfAnArrayAreLayers)
{
    makeManager();
    place(newTexture(noiseChain(8, 4, 1, 99)));
    std::vector<LayerLevels> layers;
    for (unsigned layer = 0; layer < 3; ++layer)
        layers.push_back(noiseChain(8, 4, 2, layer));
    const TextureToken token = place(newArray(layers));
    array2D->updateSlots();
    ASSERT_EQ(record(token).layer, 1);
    for (int layer = 0; layer < 3; ++layer)
        expectCopied(token, layers[std::size_t(layer)], layer);
}

TEST_F(Array2DCopyGL, EveryFormatThatCanBeDrawnIntoIsCopiedAsItIs)
{
    makeManager(32);
    const TexelImage image = noise(8, 8, 1);
    for (const GLint internalFormat : {GL_R8, GL_RG8, GL_RGBA8, GL_RGBA, GL_SRGB8_ALPHA8, GL_RGB10_A2, GL_R16F,
                                       GL_RG16F, GL_RGBA16F, GL_R32F, GL_RG32F, GL_RGBA32F, GL_R11F_G11F_B10F})
    {
        Texture* const texture = newTexture({image}, internalFormat);
        TexelImage stored{8, 8, std::vector<float>(8 * 8 * 4)};
        {
            const AutoBinder binder(texture);
            glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_FLOAT, stored.texels.data());
        }
        const TextureToken token = place(texture);
        array2D->updateSlots();
        ASSERT_GE(record(token).slot, 0);
        EXPECT_TRUE(areAlike(texelsOf(*slotOf(token).texture, 0, record(token).layer), stored, 0))
            << std::hex << internalFormat;
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR)) << std::hex << internalFormat;
    }
}

// ---- scaled --------------------------------------------------------------------------------------------------------

TEST_F(Array2DCopyGL, ATextureLargerThanASlotMayBeIsShrunk)
{
    makeManager();
    array2D->setupSlots();
    Books::setMaxSlotSize(*array2D, 8, 8);
    const LayerLevels square = noiseChain(16, 16, 2, 1);
    const LayerLevels wide = noiseChain(32, 4, 1, 2);
    const TextureToken squareToken = place(newTexture(square));
    const TextureToken wideToken = place(newTexture(wide));
    array2D->updateSlots();
    EXPECT_EQ(slotOf(squareToken).format.width, 8);
    EXPECT_EQ(slotOf(squareToken).format.height, 8);
    EXPECT_EQ(slotOf(wideToken).format.width, 8);
    EXPECT_EQ(slotOf(wideToken).format.height, 4);
    EXPECT_TRUE(areAlike(texelsOf(*slotOf(squareToken).texture, 0, 0), boxFiltered(square[0]), kStep));
    EXPECT_TRUE(areAlike(texelsOf(*slotOf(squareToken).texture, 1, 0), boxFiltered(square[1]), kStep));
    expectCopied(squareToken, square, 0, kScaled);
    expectCopied(wideToken, wide, 0, kScaled);
}

TEST_F(Array2DCopyGL, ATextureInASmallerSlotIsShrunk)
{
    makeManager(1);
    const LayerLevels small = noiseChain(8, 8, 4, 1);
    const LayerLevels large = noiseChain(16, 16, 2, 2);
    const LayerLevels wide = noiseChain(64, 32, 1, 3);
    const TextureToken smallToken = place(newTexture(small));
    const LogCapture log;
    const TextureToken largeToken = place(newTexture(large));
    const TextureToken wideToken = place(newTexture(wide));
    EXPECT_EQ(log.messages(),
              QStringList({resized(array2D.get(), 16, 16, 8, 8), resized(array2D.get(), 64, 32, 8, 8)}));
    array2D->updateSlots();
    EXPECT_EQ(record(largeToken).layer, 1);
    EXPECT_EQ(record(wideToken).layer, 2);
    expectCopied(smallToken, small);
    EXPECT_TRUE(areAlike(texelsOf(*slotOf(largeToken).texture, 0, 1), boxFiltered(large[0]), kStep));
    expectCopied(largeToken, large, 0, kScaled);
    expectCopied(wideToken, wide, 0, kScaled);
}

TEST_F(Array2DCopyGL, ATextureInALargerSlotIsEnlarged)
{
    makeManager(1);
    array2D->setSlotReallocationMethod(TextureManager::eReallocateLarger);
    const LayerLevels large = noiseChain(16, 16, 5, 1);
    const LayerLevels small = noiseChain(4, 4, 1, 2);
    const LayerLevels flat = noiseChain(8, 1, 1, 3);
    const TextureToken largeToken = place(newTexture(large));
    const LogCapture log;
    const TextureToken smallToken = place(newTexture(small));
    const TextureToken flatToken = place(newTexture(flat));
    EXPECT_EQ(log.messages(),
              QStringList({resized(array2D.get(), 4, 4, 16, 16), resized(array2D.get(), 8, 1, 16, 16)}));
    array2D->updateSlots();
    expectCopied(largeToken, large);
    expectCopied(smallToken, small, 0, kScaled);
    expectCopied(flatToken, flat, 0, kScaled);
}

TEST_F(Array2DCopyGL, ACubeMapIsScaledFaceByFace)
{
    makeManager(1);
    const TextureToken small = place(newTexture(noiseChain(4, 4, 1, 9)));
    std::vector<LayerLevels> faces;
    for (unsigned face = 0; face < 6; ++face)
        faces.push_back(noiseChain(8, 8, 1, face));
    const LogCapture log;
    const TextureToken token = place(newCubeMap(faces));
    array2D->updateSlots();
    ASSERT_EQ(record(token).slot, record(small).slot);
    for (int face = 0; face < 6; ++face)
        expectCopied(token, faces[std::size_t(face)], face, kScaled);
}

TEST_F(Array2DCopyGL, TexelsAreConvertedToTheFormatOfASimilarSlot)
{
    makeManager(1);
    TexelImage bright = noise(4, 4, 1);
    for (float& value : bright.texels)
        value = value * 6 - 2;
    const LayerLevels bytes = noiseChain(4, 4, 3, 2);
    const TextureToken halfToken = place(newTexture({bright}, GL_RGBA16F));
    const LogCapture log;
    const TextureToken byteToken = place(newTexture(bytes));
    EXPECT_EQ(log.messages(), QStringList(resized(array2D.get(), 4, 4, 4, 4)));
    array2D->updateSlots();
    ASSERT_EQ(record(byteToken).slot, record(halfToken).slot);
    EXPECT_TRUE(areAlike(texelsOf(*slotOf(halfToken).texture, 0, 0), bright, 4.0f / 2048));
    expectCopied(byteToken, bytes, 0, 1.0f / 2048);
}

TEST_F(Array2DCopyGL, FloatsAreClampedInASlotOfBytes)
{
    makeManager(1);
    TexelImage bright = noise(4, 4, 1);
    for (float& value : bright.texels)
        value = value * 6 - 2;
    TexelImage clamped = bright;
    for (float& value : clamped.texels)
        value = std::clamp(value, 0.0f, 1.0f);
    place(newTexture(noiseChain(4, 4, 1, 2)));
    const LogCapture log;
    const TextureToken token = place(newTexture({bright}, GL_RGBA16F));
    array2D->updateSlots();
    ASSERT_EQ(record(token).slot, 0);
    expectCopied(token, {clamped}, 0, kStep);
}

// ---- over time -----------------------------------------------------------------------------------------------------

TEST_F(Array2DCopyGL, OldLayersComeBackWhenASlotGrows)
{
    makeManager();
    QList<TextureToken> all;
    std::vector<LayerLevels> sources;
    for (unsigned i = 0; i < 6; ++i)
    {
        sources.push_back(noiseChain(8, 8, i % 3 + 1, i));
        all.append(place(newTexture(sources.back())));
        array2D->updateSlots();
        ASSERT_EQ(slotOf(all[0]).allocatedLayers, int(i) + 1);
        for (int j = 0; j <= int(i); ++j)
            expectCopied(all[j], sources[std::size_t(j)]);
    }
}

TEST_F(Array2DCopyGL, AFreedLayerIsFilledByItsNextToken)
{
    makeManager();
    const LayerLevels kept = noiseChain(4, 4, 3, 1);
    const LayerLevels next = noiseChain(4, 4, 3, 2);
    const TextureToken freed = place(newTexture(noiseChain(4, 4, 3, 3)));
    const TextureToken keptToken = place(newTexture(kept));
    array2D->updateSlots();
    array2D->deleteTexture(freed);
    const TextureToken nextToken = place(newTexture(next));
    ASSERT_EQ(record(nextToken).layer, 0);
    array2D->updateSlots();
    EXPECT_EQ(slotOf(nextToken).allocatedLayers, 2);
    expectCopied(keptToken, kept);
    expectCopied(nextToken, next);
}

TEST_F(Array2DCopyGL, ASlotThatIsUsedAnewForASmallerFormatHasItsLevelsAlone)
{
    makeManager(1);
    const TextureToken first = place(newTexture(noiseChain(32, 32, 6, 1)));
    array2D->updateSlots();
    array2D->deleteTexture(first);
    const LayerLevels small = noiseChain(4, 2, 2, 2);
    const TextureToken token = place(newTexture(small));
    array2D->updateSlots();
    EXPECT_EQ(slotLevels(slotOf(token)), 2);
    expectCopied(token, small);
}

TEST_F(Array2DCopyGL, LayersThatMoveToAnotherSlotAreCopiedFromTheirSources)
{
    makeManager(2);
    const LayerLevels large = noiseChain(16, 16, 5, 1);
    const LayerLevels small = noiseChain(8, 8, 4, 2);
    const LayerLevels third = noiseChain(5, 3, 2, 3); // fits neither: the large ones go to the small ones
    const TextureToken largeToken = place(newTexture(large));
    const TextureToken smallToken = place(newTexture(small));
    array2D->updateSlots();
    const LogCapture log;
    const TextureToken thirdToken = place(newTexture(third));
    EXPECT_EQ(log.messages(), QStringList(resized(array2D.get(), 16, 16, 8, 8)));
    array2D->updateSlots();
    EXPECT_EQ(record(largeToken).slot, record(smallToken).slot);
    expectCopied(largeToken, large, 0, kScaled);
    expectCopied(smallToken, small);
    expectCopied(thirdToken, third);
}

TEST_F(Array2DCopyGL, AChangedTextureIsCopiedAgainWhenItWasSaidDirty)
{
    makeManager();
    const LayerLevels before = noiseChain(8, 8, 1, 1);
    const LayerLevels after = noiseChain(8, 8, 1, 2);
    Texture* const texture = newTexture(before);
    const TextureToken token = place(texture);
    array2D->updateSlots();
    fill(*texture, after);
    array2D->bind(QList<TextureToken>{token});
    array2D->updateSlots();
    expectCopied(token, before);
    array2D->dirty(texture);
    array2D->bind(QList<TextureToken>{token});
    array2D->updateSlots();
    expectCopied(token, after);
}

TEST_F(Array2DCopyGL, AChangedTextureOfAnotherSizeGetsAnotherPlace)
{
    makeManager();
    const LayerLevels after = noiseChain(16, 8, 1, 2);
    const LayerLevels stays = noiseChain(8, 8, 1, 3);
    Texture* const texture = newTexture(noiseChain(8, 8, 1, 1));
    const TextureToken token = place(texture);
    const TextureToken other = place(newTexture(stays));
    array2D->updateSlots();
    fill(*texture, after);
    array2D->dirty(texture);
    EXPECT_EQ(record(token).slot, -1);
    array2D->bind(QList<TextureToken>{token});
    array2D->updateSlots();
    EXPECT_EQ(slotOf(token).format.width, 16);
    expectCopied(token, after);
    expectCopied(other, stays);
}

TEST_F(Array2DCopyGL, AStreamerThatHasChangedIsCopiedAgain)
{
    makeManager();
    auto* const streamer = new TestStreamer(false);
    streamer->setTarget(GL_TEXTURE_2D);
    LayerLevels shown = noiseChain(8, 8, 1, 1);
    fill(*streamer, shown);
    {
        const AutoBinder binder(streamer);
        setSampling(GL_TEXTURE_2D, 1);
    }
    const TextureToken token = place(streamer);
    array2D->updateSlots();
    expectCopied(token, shown);
    for (unsigned frame = 2; frame < 5; ++frame)
    {
        streamer->changes = true;
        streamer->onUpdate = [&shown, streamer, frame] { fill(*streamer, shown = noiseChain(8, 8, 1, frame)); };
        EXPECT_TRUE(array2D->updateTextureStreamers());
        array2D->updateSlots();
        expectCopied(token, shown);
    }
    const LayerLevels last = shown;
    streamer->changes = false;
    streamer->onUpdate = nullptr;
    EXPECT_FALSE(array2D->updateTextureStreamers());
    array2D->updateSlots();
    expectCopied(token, last);
}

TEST_F(Array2DCopyGL, AFileThatComesLaterIsThereOnceItIsSaidDirty)
{
    makeManager();
    QTemporaryDir directory;
    const QString path = directory.filePath("late.png");
    ASSERT_TRUE(writePng(path, Qt::red));
    const TextureToken token = array2D->tokenForImage(path, {});
    ASSERT_TRUE(QFile::remove(path));
    {
        const LogCapture log;
        array2D->bind(QList<TextureToken>{token});
        array2D->updateSlots();
    }
    ASSERT_GE(record(token).slot, 0);
    EXPECT_TRUE(areAlike(texelsOf(*slotOf(token).texture, 0, record(token).layer), plain(1, 1, kWhite), 0));
    ASSERT_TRUE(writePng(path, Qt::red));
    array2D->dirty(array2D->textureForToken(token));
    array2D->bind(QList<TextureToken>{token});
    array2D->updateSlots();
    expectCopied(token, {plain(2, 2, kRed)});
}

TEST_F(Array2DCopyGL, AFileThatComesLaterIsThereOnceItsSlotGrows)
{
    makeManager();
    QTemporaryDir directory;
    const QString path = directory.filePath("late.png");
    ASSERT_TRUE(writePng(path, Qt::red));
    const TextureToken token = array2D->tokenForImage(path, {});
    ASSERT_TRUE(QFile::remove(path));
    {
        const LogCapture log;
        array2D->bind(QList<TextureToken>{token});
        array2D->updateSlots();
    }
    ASSERT_TRUE(writePng(path, Qt::red));
    const TextureToken blue = array2D->tokenForColor(Qt::blue);
    array2D->bind(QList<TextureToken>{blue});
    ASSERT_EQ(record(blue).slot, record(token).slot);
    array2D->updateSlots();
    EXPECT_TRUE(areAlike(texelsOf(*slotOf(token).texture, 0, record(token).layer), plain(1, 1, kRed), 0));
    expectCopied(blue, {plain(1, 1, {0, 0, 1, 1})});
}

TEST_F(Array2DCopyGL, PatchesHaveTheTexelsOfTheirTextures)
{
    makeManager();
    const LayerLevels first = noiseChain(4, 4, 1, 1);
    const LayerLevels second = noiseChain(4, 4, 1, 2);
    Texture* const textures[] = {newTexture(first), newTexture(second)};
    const TextureToken set = array2D->createUDIMToken();
    for (int i = 0; i < 2; ++i)
    {
        array2D->tokenForTexture(textures[i]);
        array2D->addUDIMPatch(set, QPoint(i, 0), textures[i]);
    }
    array2D->bind(QList<TextureToken>{set});
    array2D->updateSlots();
    const TextureToken patch(quint64(record(set).slot));
    expectCopied(patch, first);
    expectCopied(TextureToken(patch.token + 1), second);
    place(newTexture(noiseChain(4, 4, 1, 3))); // grows the slot
    array2D->updateSlots();
    expectCopied(patch, first);
    expectCopied(TextureToken(patch.token + 1), second);
    array2D->deleteUDIM(set);
}

// ---- what is left behind -------------------------------------------------------------------------------------------

TEST_F(Array2DCopyGL, TheDrawFramebufferIsBoundAgainToBothTargets)
{
    makeManager();
    GLuint framebuffers[2] = {};
    glGenFramebuffers(2, framebuffers);
    place(newTexture(noiseChain(4, 4, 1, 1)));
    glBindFramebuffer(GL_READ_FRAMEBUFFER, framebuffers[0]);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, framebuffers[1]);
    array2D->updateSlots();
    GLint draw = 0;
    GLint read = 0;
    glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &draw);
    glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &read);
    EXPECT_EQ(draw, GLint(framebuffers[1]));
    EXPECT_EQ(read, GLint(framebuffers[1])) << "on purpose";
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
    glDeleteFramebuffers(2, framebuffers);
}

TEST_F(Array2DCopyGL, NoFramebufferAndNoBoundTextureIsLeftBehind)
{
    makeManager();
    place(newTexture(noiseChain(4, 4, 1, 1)));
    array2D->updateSlots();
    for (GLuint name = 1; name < 100; ++name)
        EXPECT_FALSE(glIsFramebuffer(name)) << name;
    GLint units = 0;
    glGetIntegerv(GL_MAX_TEXTURE_IMAGE_UNITS, &units);
    for (int unit = 0; unit < units; ++unit)
    {
        glActiveTexture(GL_TEXTURE0 + GLenum(unit));
        for (const GLenum binding : {GL_TEXTURE_BINDING_2D, GL_TEXTURE_BINDING_2D_ARRAY})
        {
            GLint bound = -1;
            glGetIntegerv(binding, &bound);
            EXPECT_EQ(bound, 0) << unit;
        }
    }
    glActiveTexture(GL_TEXTURE0);
}

TEST_F(Array2DCopyGL, MasksAndTestsOfADrawDoNotTouchTheCopy)
{
    makeManager();
    const LayerLevels levels = noiseChain(8, 8, 1, 1);
    const TextureToken token = place(newTexture(levels));
    glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
    glEnable(GL_BLEND);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_NEVER);
    glViewport(0, 0, 1, 1);
    array2D->updateSlots();
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glDisable(GL_BLEND);
    glDisable(GL_DEPTH_TEST);
    glDepthFunc(GL_LESS);
    expectCopied(token, levels);
}

TEST_F(Array2DCopyGL, TenThousandFillsLeaveNoError)
{
    constexpr int kFills = 10'000;
    constexpr std::size_t kLiving = 24;
    makeManager(4);
    std::vector<TextureToken> living;
    std::vector<LayerLevels> contents;
    const LayerLevels kinds[] = {noiseChain(4, 4, 3, 1), noiseChain(4, 4, 1, 2), noiseChain(8, 4, 2, 3)};
    int fills = 0;
    for (unsigned i = 0; fills < kFills; ++i)
    {
        if (living.size() == kLiving)
        {
            const std::size_t gone = (i * 7u) % kLiving;
            array2D->deleteTexture(living[gone]);
            living.erase(living.begin() + std::ptrdiff_t(gone));
            contents.erase(contents.begin() + std::ptrdiff_t(gone));
        }
        contents.push_back(kinds[i % 3]);
        living.push_back(place(newTexture(contents.back())));
        array2D->updateSlots();
        ASSERT_TRUE(Books::pendingTokens(*array2D).isEmpty());
        ++fills;
        ASSERT_EQ(glGetError(), GLenum(GL_NO_ERROR)) << fills;
    }
    for (std::size_t i = 0; i < living.size(); ++i)
        expectCopied(living[i], contents[i]);
    EXPECT_LE(slotOf(living[0]).allocatedLayers, int(kLiving)) << "layers are used again";
}

} // namespace Harrow::Vrk::Test
