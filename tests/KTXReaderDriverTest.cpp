// SPDX-License-Identifier: MIT
//
// KTX files on the fake driver: the exact calls of each kind of texture.
#include "KTXReaderDriverTestTools.h"

namespace Harrow::Vrk::Test
{

// ---- the calls -----------------------------------------------------------------------------------------------------

TEST_F(KTXReaderLoadTest, APlain2DTextureWithOneLevelIsAChainOfOne)
{
    const QStringList calls = callsFor(KTXFile().level(pattern(32)));
    EXPECT_EQ(calls,
              made(GL_TEXTURE_2D) + storedLevels(GL_TEXTURE_2D, 1) +
                  QStringList({CallLog::call("glTexImage2D", GL_TEXTURE_2D, 0, 0x8058, 4, 2, 0, 0x1908, 0x1401, at(68)),
                               kGetError}) +
                  unbound(GL_TEXTURE_2D) + QStringList(alignment(kFormerAlignment)));
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture->target(), GLenum(GL_TEXTURE_2D));
    EXPECT_EQ(Access::recorded(*texture), (Recorded{0x8058, 4, 2, 0}));
    EXPECT_EQ(texture->parent(), nullptr);
    EXPECT_TRUE(texture->isManaged());
    EXPECT_FALSE(texture->isBound());
    EXPECT_EQ(log.texts(), QStringList());
}

TEST_F(KTXReaderLoadTest, ThePixelsAreTakenFromWhatFollowsTheMetadata)
{
    KTXFile file;
    file.entry(QByteArray("key\0val", 7)).level(pattern(32));
    const QStringList calls = callsFor(file);
    EXPECT_TRUE(calls.contains(
        CallLog::call("glTexImage2D", GL_TEXTURE_2D, 0, 0x8058, 4, 2, 0, 0x1908, 0x1401, at(64 + 12 + 4))));
    EXPECT_EQ(trace.calls, texts({"get(0, 64)", "get(64, 12)", "get(64, 48)", "get(76, 36)", "release(76)"}));
}

TEST_F(KTXReaderLoadTest, Without0StoredLevelsOneIsReadAndTheOthersAreGenerated)
{
    KTXFile file;
    file.levels = 0;
    file.level(pattern(32));
    const QStringList calls = callsFor(file);
    EXPECT_EQ(calls,
              made(GL_TEXTURE_2D) + generatedLevels(GL_TEXTURE_2D) +
                  QStringList({CallLog::call("glTexImage2D", GL_TEXTURE_2D, 0, 0x8058, 4, 2, 0, 0x1908, 0x1401, at(68)),
                               kGetError, CallLog::call("glGenerateMipmap", GL_TEXTURE_2D), kGetError}) +
                  unbound(GL_TEXTURE_2D) + QStringList(alignment(kFormerAlignment)));
    EXPECT_TRUE(texture);
    EXPECT_EQ(log.messages(QtWarningMsg), QStringList(kGenerating));
    EXPECT_EQ(log.texts().size(), 1);
}

TEST_F(KTXReaderLoadTest, PlainTexturesOfEachShape)
{
    const struct
    {
        quint32 width, height, depth;
        GLenum target;
        int bytes;
    } rows[] = {{5, 0, 0, GL_TEXTURE_1D, 20}, {5, 3, 0, GL_TEXTURE_2D, 60}, {5, 3, 2, GL_TEXTURE_3D, 120}};
    GLuint number = 0;
    for (const auto& row : rows)
    {
        KTXFile file;
        file.size(row.width, row.height, row.depth).level(pattern(row.bytes));
        const QStringList calls = callsFor(file);
        const QString upload =
            row.target == GL_TEXTURE_1D
                ? CallLog::call("glTexImage1D", row.target, 0, 0x8058, 5, 0, 0x1908, 0x1401, at(68))
            : row.target == GL_TEXTURE_2D
                ? CallLog::call("glTexImage2D", row.target, 0, 0x8058, 5, 3, 0, 0x1908, 0x1401, at(68))
                : CallLog::call("glTexImage3D", row.target, 0, 0x8058, 5, 3, 2, 0, 0x1908, 0x1401, at(68));
        EXPECT_EQ(calls, made(row.target, ++number) + storedLevels(row.target, 1) + QStringList({upload, kGetError}) +
                             unbound(row.target) + QStringList(alignment(kFormerAlignment)));
        ASSERT_TRUE(texture);
        EXPECT_EQ(Access::recorded(*texture), (Recorded{0x8058, int(row.width), int(row.height), int(row.depth)}));
    }
}

TEST_F(KTXReaderLoadTest, CompressedTexturesOfEachShape)
{
    const struct
    {
        quint32 width, height, depth;
        GLenum target;
    } rows[] = {{5, 0, 0, GL_TEXTURE_1D}, {5, 3, 0, GL_TEXTURE_2D}, {5, 3, 2, GL_TEXTURE_3D}};
    GLuint number = 0;
    for (const auto& row : rows)
    {
        KTXFile file;
        file.compressed(kEtc2).size(row.width, row.height, row.depth).level(pattern(17));
        const QStringList calls = callsFor(file);
        const QString upload =
            row.target == GL_TEXTURE_1D
                ? CallLog::call("glCompressedTexImage1D", row.target, 0, kEtc2, 5, 0, 17, at(68))
            : row.target == GL_TEXTURE_2D
                ? CallLog::call("glCompressedTexImage2D", row.target, 0, kEtc2, 5, 3, 0, 17, at(68))
                : CallLog::call("glCompressedTexImage3D", row.target, 0, kEtc2, 5, 3, 2, 0, 17, at(68));
        EXPECT_EQ(calls, made(row.target, ++number) + storedLevels(row.target, 1) + QStringList({upload, kGetError}) +
                             unbound(row.target) + QStringList(alignment(kFormerAlignment)));
    }
}

TEST_F(KTXReaderLoadTest, EachLevelHasHalfTheSizeAndStandsBehindThePaddedOneBefore)
{
    KTXFile file;
    file.glFormat = GL_RED;
    file.glInternalFormat = GL_R8;
    file.levels = 4;
    file.size(13, 5, 3);
    file.level(pattern(16 * 14 + 13)).level(pattern(8 + 6)).level(pattern(3)).level(pattern(1));
    const QStringList calls = callsFor(file).filter(QStringLiteral("glTexImage"));
    const auto upload = [this](int level, int width, int height, int depth, int offset)
    {
        return CallLog::call("glTexImage3D", GL_TEXTURE_3D, level, GL_R8, width, height, depth, 0, GL_RED,
                             GL_UNSIGNED_BYTE, at(offset));
    };
    const int second = 68 + 240 + 4;
    const int third = second + 16 + 4;
    EXPECT_EQ(calls, QStringList({upload(0, 13, 5, 3, 68), upload(1, 6, 2, 1, second), upload(2, 3, 1, 1, third),
                                  upload(3, 1, 1, 1, third + 4 + 4)}));
}

TEST_F(KTXReaderLoadTest, MoreLevelsThanTheSizesHaveStayAtOneTexel)
{
    KTXFile file;
    file.levels = 4;
    file.size(2, 1).level(pattern(8)).level(pattern(4)).level(pattern(4)).level(pattern(4));
    const QStringList calls = callsFor(file);
    EXPECT_TRUE(calls.contains(parameter(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 3)));
    const QStringList uploads = calls.filter(QStringLiteral("glTexImage"));
    ASSERT_EQ(uploads.size(), 4);
    EXPECT_EQ(uploads.at(3), CallLog::call("glTexImage2D", GL_TEXTURE_2D, 3, 0x8058, 1, 1, 0, 0x1908, 0x1401,
                                           at(64 + 12 + 8 + 8 + 4)));
}

TEST_F(KTXReaderLoadTest, ACubeMapHasSixFacesPerLevel)
{
    KTXFile file;
    file.faces = 6;
    file.levels = 2;
    file.size(2, 2).cubeLevel(16).cubeLevel(4);
    const QStringList calls = callsFor(file);
    QStringList uploads;
    for (int face = 0; face < 6; ++face)
        uploads.append(CallLog::call("glTexImage2D", GL_TEXTURE_CUBE_MAP_POSITIVE_X + face, 0, 0x8058, 2, 2, 0, 0x1908,
                                     0x1401, at(68 + 16 * face)));
    for (int face = 0; face < 6; ++face)
        uploads.append(CallLog::call("glTexImage2D", GL_TEXTURE_CUBE_MAP_POSITIVE_X + face, 1, 0x8058, 1, 1, 0, 0x1908,
                                     0x1401, at(68 + 96 + 4 + 4 * face)));
    EXPECT_EQ(calls, made(GL_TEXTURE_CUBE_MAP) + storedLevels(GL_TEXTURE_CUBE_MAP, 2) + uploads +
                         QStringList(kGetError) + unbound(GL_TEXTURE_CUBE_MAP) +
                         QStringList(alignment(kFormerAlignment)));
}

TEST_F(KTXReaderLoadTest, ACompressedCubeMap)
{
    KTXFile file;
    file.faces = 6;
    file.compressed(kEtc2).size(4, 4).cubeLevel(8);
    const QStringList uploads = callsFor(file).filter(QStringLiteral("TexImage"));
    ASSERT_EQ(uploads.size(), 6);
    for (int face = 0; face < 6; ++face)
        EXPECT_EQ(uploads.at(face), CallLog::call("glCompressedTexImage2D", GL_TEXTURE_CUBE_MAP_POSITIVE_X + face, 0,
                                                  kEtc2, 4, 4, 0, 8, at(68 + 8 * face)));
}

TEST_F(KTXReaderLoadTest, AFaceOf6BytesAdvancesBy8)
{
    KTXFile file;
    file.faces = 6;
    file.levels = 2;
    file.glType = GL_UNSIGNED_SHORT;
    file.glTypeSize = 2;
    file.glFormat = GL_RGB;
    file.glInternalFormat = GL_RGB16;
    file.size(1, 1).cubeLevel(6).cubeLevel(6);
    const QStringList uploads = callsFor(file).filter(QStringLiteral("glTexImage"));
    ASSERT_EQ(uploads.size(), 12);
    for (int face = 0; face < 12; ++face)
        EXPECT_EQ(uploads.at(face),
                  CallLog::call("glTexImage2D", GL_TEXTURE_CUBE_MAP_POSITIVE_X + face % 6, face / 6, GL_RGB16, 1, 1, 0,
                                GL_RGB, GL_UNSIGNED_SHORT, at(68 + 8 * face + (face / 6) * 4)));
}

TEST_F(KTXReaderLoadTest, SixFacesMakeACubeMapWhateverTheSizes)
{
    KTXFile file;
    file.faces = 6;
    file.size(2, 2, 2).cubeLevel(16);
    const QStringList calls = callsFor(file);
    EXPECT_TRUE(calls.contains(bindName(1, GL_TEXTURE_CUBE_MAP)));
    EXPECT_EQ(calls.filter(QStringLiteral("glTexImage2D")).size(), 6);
}

TEST_F(KTXReaderLoadTest, WithoutAShapeNothingIsUploaded)
{
    KTXFile file;
    file.size(0, 2);
    file.levels = 2;
    file.body = word(16) + word(0xFFFFFFFF); // one size word behind the other
    EXPECT_EQ(callsFor(file), QStringList(kGen) + storedLevels(0, 2) + QStringList({kGetError, alignment(8)}));
    EXPECT_EQ(log.messages(), failure("0u != this->_target", "Texture Target is not set on bind") +
                                  failure("0u != this->_target", "Texture Target is not set on unbind"));
    ASSERT_TRUE(texture) << "it is left to OpenGL to refuse";
    EXPECT_EQ(texture->target(), 0u);
    file.levels = 3;
    expectTooShort(file);
}

TEST_F(KTXReaderLoadTest, AnisotropyIsTheSmallerOfRequestAndMaximum)
{
    offerAnisotropy(16);
    GLuint number = 0;
    for (const auto& [requested, set] : {std::pair{1, 1}, {15, 15}, {16, 16}, {17, 16}, {2147483647, 16}})
    {
        TextureFileInfo info = preprocessed();
        info.anisotropy = requested;
        const QStringList calls = callsFor(KTXFile().level(pattern(32)), info);
        const QStringList anisotropy = {query(GL_MAX_TEXTURE_MAX_ANISOTROPY),
                                        parameter(GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY, set)};
        EXPECT_EQ(calls.mid(0, 11), made(GL_TEXTURE_2D, ++number) + storedLevels(GL_TEXTURE_2D, 1, anisotropy));
    }
}

TEST_F(KTXReaderLoadTest, NoAnisotropyIsAskedForByNoneOrLess)
{
    offerAnisotropy(16);
    for (const int requested : {0, -1, -2147483647 - 1})
    {
        TextureFileInfo info = preprocessed();
        info.anisotropy = requested;
        EXPECT_EQ(callsFor(KTXFile().level(pattern(32)), info).filter(QStringLiteral("glTexParameteri")).size(), 4);
    }
}

TEST_F(KTXReaderLoadTest, WithoutTheExtensionThereIsNoAnisotropy)
{
    driver.setInteger(GL_MAX_TEXTURE_MAX_ANISOTROPY, 16);
    TextureFileInfo info = preprocessed();
    info.anisotropy = 4;
    EXPECT_EQ(callsFor(KTXFile().level(pattern(32)), info).filter(QStringLiteral("glTexParameteri")).size(), 4);
}

TEST_F(KTXReaderLoadTest, GeneratedLevelsHaveNoAnisotropy)
{
    offerAnisotropy(16);
    TextureFileInfo info = preprocessed();
    info.anisotropy = 4;
    KTXFile file;
    file.levels = 0;
    EXPECT_EQ(callsFor(file.level(pattern(32)), info).filter(QStringLiteral("glTexParameteri")).size(), 2);
}

TEST_F(KTXReaderLoadTest, TheUnpackAlignmentIs4AndThenWhatItWasBefore)
{
    for (const int before : {1, 2, 4, 8})
    {
        driver.setInteger(GL_UNPACK_ALIGNMENT, before);
        const QStringList calls = callsFor(KTXFile().level(pattern(32)));
        EXPECT_EQ(calls.filter(QStringLiteral("glPixelStorei")), QStringList({alignment(4), alignment(before)}));
        EXPECT_EQ(calls.last(), alignment(before));
    }
}

TEST_F(KTXReaderLoadTest, SrgbMeansTheNextFormatForThreeFormats)
{
    for (const GLenum format : {0x9274u, 0x9276u, 0x9278u})
    {
        KTXFile file;
        file.compressed(format).level(pattern(8));
        TextureFileInfo info = preprocessed();
        EXPECT_TRUE(
            callsFor(file, info)
                .contains(CallLog::call("glCompressedTexImage2D", GL_TEXTURE_2D, 0, format, 4, 2, 0, 8, at(68))));
        info.srgb = true;
        EXPECT_TRUE(
            callsFor(file, info)
                .contains(CallLog::call("glCompressedTexImage2D", GL_TEXTURE_2D, 0, format + 1, 4, 2, 0, 8, at(68))));
        EXPECT_EQ(Access::recorded(*texture)[0], int(format + 1));
    }
}

TEST_F(KTXReaderLoadTest, SrgbDoesNothingForOtherFormats)
{
    TextureFileInfo info = preprocessed();
    info.srgb = true;
    for (const GLenum format : {0x9273u, 0x9275u, 0x9277u, 0x9279u, 0x83F3u, 0x93B0u, 0x8D64u})
    {
        KTXFile file;
        file.compressed(format).level(pattern(8));
        EXPECT_TRUE(
            callsFor(file, info)
                .contains(CallLog::call("glCompressedTexImage2D", GL_TEXTURE_2D, 0, format, 4, 2, 0, 8, at(68))));
    }
    callsFor(KTXFile().level(pattern(32)), info);
    EXPECT_EQ(Access::recorded(*texture)[0], 0x8058);
}

// ---- range and direction -------------------------------------------------------------------------------------------

TEST_F(KTXReaderLoadTest, ATextureThatIsNotPreprocessedIsFlippedAfterItIsUnbound)
{
    const QStringList calls = callsFor(KTXFile().level(pattern(32)), TextureFileInfo());
    EXPECT_EQ(calls.filter(QStringLiteral("glLinkProgram")).size(), 1);
    EXPECT_EQ(calls.filter(QStringLiteral("glViewport")).size(), 1);
    const auto link = calls.indexOf(CallLog::call("glLinkProgram", 1));
    EXPECT_GT(link, calls.indexOf(bindName(0)));
    EXPECT_GT(calls.indexOf(bindName(0)), calls.indexOf(kGetError));
    EXPECT_EQ(calls.last(), alignment(kFormerAlignment)) << "the copy is made with an alignment of 4";
    EXPECT_EQ(calls.filter(QStringLiteral("glPixelStorei")).size(), 2);
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture->textureID(), 2u) << "another one has taken its place";
    EXPECT_TRUE(calls.contains(kDelete));
}

TEST_F(KTXReaderLoadTest, ARangeTakesAPassBeforeTheFlip)
{
    static QStringList fragments;
    fragments.clear();
    driver.replace(
        "glShaderSource",
        +[](GLuint, GLsizei count, const GLchar* const* sources, const GLint*)
        {
            for (GLsizei i = 0; i < count; ++i)
                fragments.append(QString::fromUtf8(sources[i]));
            fragments = fragments.filter(QStringLiteral("u_Src"));
        });
    driver.load();
    TextureFileInfo info;
    info.lowValue = 0.25f;
    info.remapColorRange = false; // of plain images only
    const QStringList calls = callsFor(KTXFile().level(pattern(32)), info);
    ASSERT_EQ(fragments.size(), 2);
    EXPECT_TRUE(fragments[0].contains(QStringLiteral("u_lowValue")));
    EXPECT_TRUE(fragments[1].contains(QStringLiteral("1.0 - vo_TexCoord.y")));
    EXPECT_EQ(calls.filter(QStringLiteral("glLinkProgram")).size(), 2);
    EXPECT_EQ(calls.filter(QStringLiteral("glViewport")).size(), 2);
    EXPECT_EQ(texture->textureID(), 3u);
}

TEST_F(KTXReaderLoadTest, APreprocessedTextureIsNeitherRemappedNorFlipped)
{
    TextureFileInfo info = preprocessed();
    info.lowValue = 0.25f;
    const QStringList calls = callsFor(KTXFile().level(pattern(32)), info);
    EXPECT_EQ(calls.filter(QStringLiteral("glLinkProgram")), QStringList());
    EXPECT_EQ(texture->textureID(), 1u);
}

// ---- byte order ----------------------------------------------------------------------------------------------------

TEST_F(KTXReaderLoadTest, TheImageSizesOfAForeignFileAreReadUnswapped)
{
    KTXFile file;
    file.compressed(5).size(4, 4);
    file.glTypeSize = 4;
    const QByteArray pixels = pattern(8);
    file.body = word(8) + pixels; // as this machine stores it
    EXPECT_TRUE(callsFor(file.bytes(true))
                    .contains(CallLog::call("glCompressedTexImage2D", GL_TEXTURE_2D, 0, 5, 4, 4, 0, 8, at(68))));
    EXPECT_TRUE(texture);
    EXPECT_EQ(QByteArray(static_cast<const char*>(at(68)), 8), pixels) << "and its pixels are used as stored";

    file.body = word(8, true) + pixels;
    EXPECT_EQ(callsFor(file.bytes(true)), QStringList());
    expectFailure(text("Compressed texture a.ktx failed to load."));
}

TEST_F(KTXReaderLoadTest, AForeignFileWithHighBitsHasWrongSizes)
{
    KTXFile file;
    file.compressed(5).size(0x14, 0x23).level(pattern(8));
    EXPECT_TRUE(callsFor(file.bytes(true))
                    .contains(CallLog::call("glCompressedTexImage2D", GL_TEXTURE_2D, 0, 5, 4, 3, 0, 8, at(68))));
}

TEST_F(KTXReaderLoadTest, AReaderOfAnotherMarkerThatIsLoadedAllTheSameSwapsItsLevels)
{
    const struct
    {
        quint32 typeSize;
        QByteArray stored, swapped;
    } rows[] = {{1, QByteArray("\x12\x34\x56\x78\x9A", 5), QByteArray("\x12\x34\x56\x78\x9A", 5)},
                {2, QByteArray("\x12\x34\x56\x78\x9A", 5), QByteArray("\x34\x12\x78\x56\x9A", 5)},
                {4, QByteArray("\x12\x34\x56\x78\x9A", 5), QByteArray("\x08\x06\x04\x02\x9A", 5)}};
    for (const auto& row : rows)
    {
        KTXFile file;
        file.endianness = 0x05030201;
        file.compressed(5).size(4, 4);
        file.glTypeSize = row.typeSize;
        file.body = word(5, true) + row.stored;
        const QStringList calls = callsFor(file.bytes(true));
        EXPECT_FALSE(reader->valid());
        EXPECT_TRUE(calls.contains(CallLog::call("glCompressedTexImage2D", GL_TEXTURE_2D, 0, 5, 4, 4, 0, 5, at(68))));
        EXPECT_EQ(QByteArray(static_cast<const char*>(at(68)), 5), row.swapped) << row.typeSize;
    }
}

} // namespace Harrow::Vrk::Test
