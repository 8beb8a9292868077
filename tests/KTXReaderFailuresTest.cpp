// SPDX-License-Identifier: MIT
//
// KTX files on the fake driver: what is refused, what fails, and what is said of it.
#include "KTXReaderDriverTestTools.h"

namespace Harrow::Vrk::Test
{

// ---- refusals ------------------------------------------------------------------------------------------------------

TEST_F(KTXReaderLoadTest, ACubeMapArrayIsRefusedAsSuch)
{
    KTXFile file;
    file.faces = 6;
    file.arrayElements = 2;
    file.cubeLevel(32);
    expectRefused(file, QStringLiteral("Cubemap arrays not supported yet, sorry!"));
    EXPECT_EQ(trace.calls, texts({"get(0, 64)"}));
    EXPECT_TRUE(reader->valid()) << "the reader stays usable";
    EXPECT_EQ(reader->arraySize(), 2u);
}

TEST_F(KTXReaderLoadTest, AnArrayIsRefused)
{
    for (const quint32 count : {1u, 2u})
    {
        KTXFile file;
        file.arrayElements = count;
        file.level(pattern(64));
        expectRefused(file, QStringLiteral("Array textures not supported yet, sorry!"));
    }
}

TEST_F(KTXReaderLoadTest, NothingBehindTheMetadataIsNoTextureWithoutAWord)
{
    EXPECT_EQ(callsFor(KTXFile()), QStringList());
    EXPECT_FALSE(texture);
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_EQ(trace.calls, texts({"get(0, 64)", "get(64, 0)"}));
    KTXFile file;
    file.entry("abc"); // 7 of 8 bytes
    EXPECT_EQ(callsFor(file), QStringList());
    EXPECT_FALSE(texture);
    EXPECT_EQ(log.texts(), QStringList());
    EXPECT_TRUE(reader->valid());
}

TEST_F(KTXReaderLoadTest, AnErrorOfOpenGLIsAFailedLoad)
{
    for (const bool compressed : {false, true})
    {
        KTXFile file;
        file.levels = 2;
        if (compressed)
            file.compressed(kEtc2);
        file.level(pattern(32)).level(pattern(8));
        driver.pushError(GL_INVALID_VALUE);
        const QStringList calls = callsFor(file);
        expectFailure((compressed ? QStringLiteral("Compressed texture") : QStringLiteral("Texture")) +
                      QStringLiteral(" a.ktx failed to load."));
        EXPECT_EQ(calls.filter(QStringLiteral("TexImage2D")).size(), 2) << "a failed level does not stop the next one";
        EXPECT_EQ(calls.mid(calls.indexOf(kGetError)), QStringList(kGetError) + unbound(GL_TEXTURE_2D) +
                                                           QStringList({alignment(kFormerAlignment), kDelete}));
        EXPECT_EQ(calls.count(kGetError), 1);
        EXPECT_EQ(trace.calls.last(), text("release(64)"));
        EXPECT_TRUE(reader->valid());
    }
}

TEST_F(KTXReaderLoadTest, AFailedTextureIsProcessedBeforeItIsDeleted)
{
    driver.pushError(GL_INVALID_VALUE);
    const QStringList calls = callsFor(KTXFile().level(pattern(32)), TextureFileInfo());
    EXPECT_FALSE(texture);
    EXPECT_EQ(log.messages(QtWarningMsg), QStringList(text("Texture a.ktx failed to load.")));
    EXPECT_EQ(calls.filter(QStringLiteral("glLinkProgram")).size(), 1);
    EXPECT_EQ(calls.count(kDelete), 2);
    EXPECT_EQ(calls.last(), kDelete);
}

TEST_F(KTXReaderLoadTest, AFileWithAnErrorHasNoMipmapsGenerated)
{
    KTXFile file;
    file.levels = 0;
    driver.pushError(GL_INVALID_VALUE);
    const QStringList calls = callsFor(file.level(pattern(32)));
    expectFailure(text("Texture a.ktx failed to load."));
    EXPECT_EQ(calls.filter(QStringLiteral("glGenerateMipmap")), QStringList());
}

TEST_F(KTXReaderLoadTest, AnErrorOfTheMipmapsIsAFailedLoadToo)
{
    KTXFile file;
    file.levels = 0;
    driver.pushError(GL_NO_ERROR);
    driver.pushError(GL_OUT_OF_MEMORY);
    callsFor(file.level(pattern(32)));
    EXPECT_FALSE(texture);
    EXPECT_EQ(log.messages(), QStringList({kGenerating, text("Texture a.ktx failed to load.")}));
}

TEST_F(KTXReaderLoadTest, AFileWithoutANameIsCalledUnnamed)
{
    for (const QString& none : {QString(), QStringLiteral("")})
    {
        name = none;
        driver.pushError(GL_INVALID_VALUE);
        callsFor(KTXFile().level(pattern(32)));
        expectFailure(text("Texture <unnamed> failed to load."));
        driver.pushError(GL_INVALID_VALUE);
        callsFor(KTXFile().compressed(kEtc2).level(pattern(8)));
        expectFailure(text("Compressed texture <unnamed> failed to load."));
    }
}

TEST_F(KTXReaderLoadTest, TheWarningsAreSaidWithLoggingOffToo)
{
    if (!isLoggingSwitchedOff())
    {
        EXPECT_TRUE(passesWithLoggingOff("KTXReaderLoadTest.TheWarningsAreSaidWithLoggingOffToo"));
        return;
    }
    KTXFile file;
    file.levels = 0;
    callsFor(file.level(pattern(32)));
    EXPECT_TRUE(texture);
    EXPECT_EQ(log.texts(QtWarningMsg),
              texts({"Generating Mipmaps. For increased loading performance, include these in the .ktx file."}));
    file.arrayElements = 1;
    callsFor(file);
    EXPECT_EQ(log.texts(QtWarningMsg), texts({"Array textures not supported yet, sorry!"}));
    driver.pushError(GL_INVALID_VALUE);
    callsFor(KTXFile().level(pattern(32)));
    EXPECT_FALSE(texture);
    EXPECT_EQ(log.texts(QtWarningMsg), texts({"Texture a.ktx failed to load."}));
}

TEST_F(KTXReaderLoadTest, WithoutAFreeUnitNothingIsUploadedIntoAnothersTexture)
{
    std::vector<std::unique_ptr<Texture>> others;
    for (int i = 0; i < kUnits; ++i)
    {
        others.push_back(newTexture());
        ASSERT_TRUE(others.back()->bind());
    }
    aliveBefore += kUnits;
    EXPECT_EQ(callsFor(KTXFile().level(pattern(32)), TextureFileInfo()), QStringList({kGen, kDelete}));
    EXPECT_FALSE(texture);
    EXPECT_EQ(log.messages(), texts({"There is no available texture units", "Texture a.ktx failed to load."}));
    EXPECT_EQ(trace.held, 1);
    for (const auto& other : others)
        other->unbind();
    others.clear();
    aliveBefore -= kUnits;
}

} // namespace Harrow::Vrk::Test
