// SPDX-License-Identifier: MIT
//
// KTX files that the tests compose, on the real driver: what is in the texture, and what OpenGL refuses.
#include "KTXFilesTestTools.h"

#include "GLUtilities.h"

namespace Harrow::Vrk::Test
{

using KTXReaderGL = KTXDriverFixture;

TEST_F(KTXReaderGL, ATextureOfOneDimension)
{
    KTXFile file;
    const QByteArray pixels = pattern(20);
    const auto texture = load(file.size(5, 0).level(pixels));
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture->target(), GLenum(GL_TEXTURE_1D));
    const AutoBinder binder(texture.get());
    EXPECT_EQ(texelsOf(GL_TEXTURE_1D, 0, {5, 1, 1, {}}, GL_RGBA, GL_UNSIGNED_BYTE, 4),
              Bytes(pixels.begin(), pixels.end()));
}

TEST_F(KTXReaderGL, ARangeIsRemappedAndThePictureTurned)
{
    KTXFile file;
    file.size(2, 2).level(QByteArray("\0\0\0\0\xFF\xFF\xFF\xFF\x80\x40\x20\x10\x01\x02\x03\x04", 16));
    TextureFileInfo info;
    info.lowValue = 0.25f;
    info.highValue = 0.75f;
    const auto texture = load(file, info);
    ASSERT_TRUE(texture);
    const AutoBinder binder(texture.get());
    const Bytes texels = texelsOf(GL_TEXTURE_2D, 0, {2, 2, 1, {}}, GL_RGBA, GL_UNSIGNED_BYTE, 4);
    const std::vector<int> source = {0x80, 0x40, 0x20, 0x10, 1, 2, 3, 4, 0, 0, 0, 0, 255, 255, 255, 255};
    for (size_t i = 0; i < texels.size(); ++i)
        EXPECT_NEAR(texels[i], i % 4 == 3 ? source[i] : 63.75 + source[i] / 2.0, 1.0) << i;
}

TEST_F(KTXReaderGL, AnisotropyIsWhatTheFileInfoAsksFor)
{
    TextureFileInfo info = preprocessed();
    info.anisotropy = 2;
    const auto texture = load(KTXFile().level(pattern(32)), info);
    ASSERT_TRUE(texture);
    if (!hasGLExtension("GL_EXT_texture_filter_anisotropic"))
        return; // nothing was set, and OpenGL has no word for it
    const AutoBinder binder(texture.get());
    GLint anisotropy = 0;
    glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY, &anisotropy);
    EXPECT_EQ(anisotropy, 2);
}

TEST_F(KTXReaderGL, AnErrorFromBeforeIsBlamedOnTheFile)
{
    glEnable(0xFFFF);
    const LogCapture log;
    EXPECT_FALSE(load(KTXFile().level(pattern(32))));
    EXPECT_EQ(log.messages(QtWarningMsg),
              QStringList(QStringLiteral("Texture %1 failed to load.").arg(folder.filePath(QStringLiteral("a.ktx")))));
    EXPECT_TRUE(load(KTXFile().level(pattern(32)))) << "once";
}

TEST_F(KTXReaderGL, WhatIsNot2DAndNotPreprocessedComesOutWithoutItsPixels)
{
    KTXFile cube;
    cube.faces = 6;
    cube.size(2, 2).cubeLevel(16);
    KTXFile line;
    line.size(2, 0).level(pattern(8));
    KTXFile volume;
    volume.size(2, 2, 2).level(pattern(32));
    for (const KTXFile& file : {cube, line, volume})
    {
        const LogCapture log;
        const auto texture = load(file, TextureFileInfo());
        ASSERT_TRUE(texture);
        EXPECT_EQ(log.texts(QtWarningMsg), QStringList());
        EXPECT_NE(glGetError(), GLenum(GL_NO_ERROR)) << "the flip is made for 2D textures";
        const AutoBinder binder(texture.get());
        EXPECT_EQ(texture->width(0), 0);
    }
}

TEST_F(KTXReaderGL, ACompressedSizeThatIsWrongIsRefusedByOpenGL)
{
    for (const int bytes : {7, 9, 16})
    {
        KTXFile file;
        file.compressed(0x9274).size(4, 4).level(pattern(bytes));
        EXPECT_FALSE(load(file)) << bytes;
    }
}

TEST_F(KTXReaderGL, AnInvalidFileIsNotLoaded)
{
    KTXFile file;
    file.entry(QByteArray("key\0val\0", 8)).level(pattern(32)); // the walk ends exactly
    const LogCapture log;
    EXPECT_FALSE(load(file));
    EXPECT_EQ(log.messages(), QStringList(QStringLiteral("Data appears invalid for texture file '%1'")
                                              .arg(folder.filePath(QStringLiteral("a.ktx")))));
}

TEST_F(KTXReaderGL, AnInvalidBlockOfMemoryIsNotLoaded)
{
    QByteArray bytes = kKTXMagic;
    const LogCapture log;
    EXPECT_EQ(LoadTextureFromMemory(reinterpret_cast<unsigned char*>(bytes.data()), size_t(bytes.size()),
                                    preprocessed(), QString()),
              nullptr);
    EXPECT_EQ(log.messages(), texts({"Data appears invalid for texture data '<unnamed>'"}));
}

TEST_F(KTXReaderGL, AFileThatIsLoadedFromMemory)
{
    QByteArray bytes = KTXFile().level(pattern(32)).bytes();
    const std::unique_ptr<Texture> texture(LoadTextureFromMemory(reinterpret_cast<unsigned char*>(bytes.data()),
                                                                 size_t(bytes.size()), preprocessed(), QString()));
    ASSERT_TRUE(texture);
    const AutoBinder binder(texture.get());
    const QByteArray expected = pattern(32);
    EXPECT_EQ(texelsOf(GL_TEXTURE_2D, 0, {4, 2, 1, {}}, GL_RGBA, GL_UNSIGNED_BYTE, 4),
              Bytes(expected.begin(), expected.end()));
}

} // namespace Harrow::Vrk::Test
