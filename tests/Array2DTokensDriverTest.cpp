// SPDX-License-Identifier: MIT
//
// Array2DTextureManager on the fake driver: what it defines for its GLSL, and what it does with announced tokens, sets
// of UDIM patches and streamers.
#include "Array2DBindingTestTools.h"
#include "GLSLMacroProcessor.h"

namespace Harrow::Vrk::Test::Array2DDraws
{

// ---- setup ---------------------------------------------------------------------------------------------------------

namespace
{

/// The defines in the order in which a text gets them, that of their names.
QString defines(bool queryLod, bool uniforms, bool texture, bool explicitAccess, int slotCount)
{
    QString text = QStringLiteral("#version 150\n");
    if (explicitAccess)
        text += QStringLiteral("#define TEXTURE_ARRAY_ARRAY2D_EXPLICIT_ARRAY_ACCESS 1\n");
    text += QStringLiteral("#define TEXTURE_MANAGER_ARRAY2D 1\n"
                           "#define TEXTURE_MANAGER_ARRAY2D_NUM_UVEC4S_PER_TOKEN 2\n");
    if (texture)
        text += QStringLiteral("#define TEXTURE_MANAGER_ARRAY2D_SLOT_MAP_USE_TEXTURE 1\n");
    if (uniforms)
        text += QStringLiteral("#define TEXTURE_MANAGER_ARRAY2D_SLOT_MAP_USE_UNIFORMS 1\n");
    if (queryLod)
        text += QStringLiteral("#define TEXTURE_MANAGER_ARRAY2D_SUPPORTS_TEXTURE_QUERY_LOD 1\n");
    return text + QStringLiteral("#define TEXTURE_MANAGER_ARRAY2D_UNIFORMS_SIZE 128\n"
                                 "#define TEXTURE_MANAGER_SLOT_COUNT %1\n"
                                 "#define TEXTURE_MANAGER_SUPPORTS_UDIMS 1\n")
                      .arg(slotCount);
}

} // namespace

TEST_F(Array2DBindingTest, SetupDefinesWhatItsSwitchesSay)
{
    for (const int major : {3, 4})
    {
        driver.setVersion(major, major == 3 ? 2 : 0);
        for (int switches = 0; switches < 8; ++switches)
        {
            makeManager();
            array2D->setUseSlotMapUniforms((switches & 1) != 0);
            array2D->setUseSlotMapTexture((switches & 2) != 0);
            array2D->setUseExplicitlyArrayAccessInGLSL((switches & 4) != 0);
            GLSLMacroProcessor processor;
            array2D->setup(&processor);
            EXPECT_EQ(GLSLMacroProcessor::process(QStringLiteral("#version 150"), &processor),
                      defines(major == 4, switches & 1, switches & 2, switches & 4, 8))
                << major << " " << switches;
        }
    }
}

TEST_F(Array2DBindingTest, SetupStartsWithTheTextureAloneAndDirectAccess)
{
    driver.setVersion(3, 2);
    makeManager();
    array2D->setMaxSlots(13);
    GLSLMacroProcessor processor;
    array2D->setup(&processor);
    EXPECT_EQ(GLSLMacroProcessor::process(QStringLiteral("#version 150"), &processor),
              defines(false, false, true, false, 13));
}

TEST_F(Array2DBindingTest, SetupChoosesTheVersionOfItsFile)
{
    const struct
    {
        int major;
        int minor;
        const char* version;
    } rows[] = {{3, 2, "#version 150"}, {3, 3, "#version 150"}, {4, 0, "#version 400"}, {4, 5, "#version 400"}};
    for (const auto& row : rows)
    {
        driver.setVersion(row.major, row.minor);
        makeManager();
        GLSLMacroProcessor processor;
        array2D->setup(&processor);
        const QString text = GLSLMacroProcessor::process(
            QStringLiteral("#macro TEXTURE_MANAGER_ARRAY2D_GLSL_VERSION #version 150"), &processor);
        EXPECT_EQ(text.section(u'\n', 0, 0), QLatin1String(row.version)) << row.major << row.minor;
    }
}

TEST_F(Array2DBindingTest, SetupWithoutAProcessorDoesNothing)
{
    makeManager();
    const CallLog calls;
    const LogCapture log;
    array2D->setup(nullptr);
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(Array2DBindingTest, SwitchesCountFromTheNextSetup)
{
    driver.setVersion(3, 2);
    makeManager();
    GLSLMacroProcessor processor;
    array2D->setup(&processor);
    array2D->setUseSlotMapUniforms(true);
    EXPECT_EQ(GLSLMacroProcessor::process(QStringLiteral("#version 150"), &processor),
              defines(false, false, true, false, 8));
    array2D->setup(&processor);
    EXPECT_EQ(GLSLMacroProcessor::process(QStringLiteral("#version 150"), &processor),
              defines(false, true, true, false, 8));
}

TEST_F(Array2DBindingTest, TheFileIsThatOfTheBindMode)
{
    makeManager();
    EXPECT_EQ(array2D->getShaderFile(), QStringLiteral("Array2DTextureManager.glslc"));
    array2D->setBindMode(Array2DTextureManager::BindBindless);
    EXPECT_EQ(array2D->getShaderFile(), QStringLiteral("Array2DTextureManagerBindless.glslc"));
    array2D->setBindMode(Array2DTextureManager::BindSamplers);
    EXPECT_EQ(array2D->getShaderFile(), QStringLiteral("Array2DTextureManager.glslc"));
}

// ---- placing -------------------------------------------------------------------------------------------------------

TEST_F(Array2DBindingTest, NoTokensMakeNoSlots)
{
    makeManager();
    const CallLog calls;
    array2D->bind(QList<TextureToken>());
    array2D->bind(QSet<TextureToken>());
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_TRUE(Books::allSlots(*array2D).isEmpty());
}

TEST_F(Array2DBindingTest, TheInvalidTokenIsPassedOver)
{
    makeManager();
    const LogCapture log;
    announce({INVALID_TOKEN});
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_EQ(Books::allSlots(*array2D).size(), 8) << "but the slots are made";
    EXPECT_EQ(Books::records(*array2D).size(), 1);
}

TEST_F(Array2DBindingTest, ATokenBeyondTheTableIsReported)
{
    makeManager();
    const TextureToken known = tokenOf(4, 4);
    const LogCapture log;
    announce({TextureToken(2), TextureToken(99), known});
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({assertionLine("token.token < quint64(_textureTokenToSlotLayerData.size())",
                                         "Token 2 is not in array 2."),
                           assertionLine("token.token < quint64(_textureTokenToSlotLayerData.size())",
                                         "Token 99 is not in array 2.")}));
    EXPECT_EQ(log.texts().size(), 2);
    EXPECT_EQ(record(known)[0], 0) << "those behind it are placed";
}

TEST_F(Array2DBindingTest, AnotherTargetIsReportedByBothSteps)
{
    makeManager();
    const TextureToken token = array2D->tokenForTexture(newTextureOf(sized(4, 1), GL_TEXTURE_1D));
    const LogCapture log;
    announce({token});
    const QString line = assertionLine("(GL_TEXTURE_2D == texture->target()) || (GL_TEXTURE_CUBE_MAP == "
                                       "texture->target()) || (GL_TEXTURE_2D_ARRAY == texture->target())",
                                       "Texture 1 is for target 0xDE0. Only 0xDE1, 0x8C1A or 0x8513 are allowed");
    EXPECT_EQ(log.messages(), QStringList({line, line}));
    EXPECT_EQ(record(token)[0], 0) << "and it is placed";
}

TEST_F(Array2DBindingTest, ATokenWithoutAnythingIsPassedOver)
{
    makeManager();
    const TextureToken nothing = array2D->reserveTokenBlock(1);
    array2D->textureTokenIssued(nothing);
    const LogCapture log;
    announce({nothing});
    EXPECT_EQ(record(nothing), kFreshRecord);
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(Array2DBindingTest, AColourIsRealisedWhenItIsBound)
{
    makeManager();
    const TextureToken red = array2D->tokenForColor(Qt::red);
    EXPECT_FALSE(Tables::tokenToTexture(*array2D).contains(red));
    announce({red});
    EXPECT_TRUE(Tables::tokenToTexture(*array2D).contains(red));
}

TEST_F(Array2DBindingTest, PlacedTokensCostNothingMore)
{
    makeManager();
    const QList<TextureToken> list = {tokenOf(4, 4), tokenOf(8, 8), tokenOf(4, 4)};
    array2D->bind(list);
    array2D->updateSlots();
    const Record places[] = {record(list[0]), record(list[1]), record(list[2])};
    const CallLog calls;
    const LogCapture log;
    array2D->unbind(list);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(record(list[i]), places[i]) << "unbind leaves the places";
    Books::setSlotMapDirty(*array2D, false);
    array2D->bind(list);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(record(list[i]), places[i]);
    EXPECT_EQ(calls.list(), QStringList());
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_FALSE(Books::slotMapDirty(*array2D));
    EXPECT_EQ(Books::pendingTokens(*array2D), QList<TextureToken>());
}

TEST_F(Array2DBindingTest, ASetIsPlacedInItsOwnOrder)
{
    makeManager();
    QSet<TextureToken> set;
    for (int size = 1; size <= 6; ++size)
        set.insert(tokenOf(size, size));
    TextureManager& base = *array2D;
    base.bind(set);
    int place = 0;
    for (const TextureToken& token : set)
        EXPECT_EQ(record(token)[0], place++);
}

// ---- streamers -----------------------------------------------------------------------------------------------------

namespace
{

class Array2DStreamerTest : public Array2DBindingTest
{
protected:
    void SetUp() override
    {
        Array2DBindingTest::SetUp();
        make();
        for (unsigned name : {501u, 502u})
        {
            streamers.push_back(new TestStreamer(name, true)); // the manager deletes them at its end
            streamers.back()->setTarget(GL_TEXTURE_2D);
            fakeTextures[name] = sized(16, 16);
            list.append(array2D->tokenForTexture(streamers.back()));
        }
        array2D->updateSlots(); // nothing is pending any more
    }

    std::vector<TestStreamer*> streamers;
    QList<TextureToken> list;
};

} // namespace

TEST_F(Array2DStreamerTest, AChangedStreamerIsCopiedAgain)
{
    array2D->bind(list);
    array2D->bind(program.get());
    array2D->unbind(program.get());
    ASSERT_EQ(Books::pendingTokens(*array2D), QList<TextureToken>());
    streamers[0]->changes = false;
    EXPECT_TRUE(array2D->updateTextureStreamers());
    EXPECT_EQ(Books::pendingTokens(*array2D), QList<TextureToken>({list[1]}));
    const CallLog calls;
    array2D->bind(program.get());
    EXPECT_GT(calls.count("glBlitFramebuffer"), 0);
    EXPECT_EQ(calls.count("glTexImage1D"), 0) << "its place is the same";
    EXPECT_EQ(Books::pendingTokens(*array2D), QList<TextureToken>());
    array2D->unbind(program.get());
}

TEST_F(Array2DStreamerTest, AStreamerWithoutAPlaceWaitsForNothing)
{
    EXPECT_TRUE(array2D->updateTextureStreamers());
    EXPECT_EQ(Books::pendingTokens(*array2D), QList<TextureToken>());
    EXPECT_EQ(streamers[0]->updates, 1);
    EXPECT_EQ(streamers[1]->updates, 1);
}

TEST_F(Array2DStreamerTest, NoChangeIsNoResult)
{
    array2D->bind(list);
    array2D->updateSlots();
    for (TestStreamer* const streamer : streamers)
        streamer->changes = false;
    EXPECT_FALSE(array2D->updateTextureStreamers());
    EXPECT_EQ(Books::pendingTokens(*array2D), QList<TextureToken>());
    EXPECT_EQ(streamers[1]->updates, 1) << "all are asked";
}

TEST_F(Array2DStreamerTest, AStreamerThatLostItsTokenGetsAnotherOne)
{
    array2D->bind(list);
    array2D->updateSlots();
    streamers[1]->changes = false;
    streamers[0]->onUpdate = [this] { array2D->deleteTexture(list[0]); };
    EXPECT_TRUE(array2D->updateTextureStreamers());
    EXPECT_NE(array2D->findToken(streamers[0]), INVALID_TOKEN);
    EXPECT_EQ(record(array2D->findToken(streamers[0])), kFreshRecord);
}

} // namespace Harrow::Vrk::Test::Array2DDraws
