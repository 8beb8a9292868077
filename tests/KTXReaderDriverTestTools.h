// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of the KTX reader on the fake driver share: the fixture, which loads a file and keeps its calls, and
/// the calls that all files have in common.

#include "KTXReader.h"

#include "GLUtilities.h"
#include "KTXTestTools.h"
#include "TextureCallTools.h"
#include "TextureIOTestTools.h"
#include "TextureTestTools.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace Harrow::Vrk::Test
{

inline const QString kGetError = QStringLiteral("glGetError()");
inline constexpr int kFormerAlignment = 8;

inline QStringList made(GLenum target, GLuint name = 1)
{
    return {kGen, activate(kUnits - 1), bindName(name, target)};
}

inline QStringList unbound(GLenum target)
{
    return {activate(kUnits - 1), bindName(0, target)};
}

/// Parameters with stored levels, up to the alignment.
inline QStringList storedLevels(GLenum target, int levels, const QStringList& anisotropy = {})
{
    return QStringList({parameter(target, GL_TEXTURE_BASE_LEVEL, 0),
                        parameter(target, GL_TEXTURE_MAX_LEVEL, levels - 1),
                        parameter(target, GL_TEXTURE_MIN_FILTER, 0x2703),    // GL_LINEAR_MIPMAP_LINEAR
                        parameter(target, GL_TEXTURE_MAG_FILTER, 0x2601)}) + // GL_LINEAR
           anisotropy +
           QStringList({query(GL_UNPACK_ALIGNMENT), alignment(4)});
}

inline QStringList generatedLevels(GLenum target)
{
    return {parameter(target, GL_TEXTURE_MAG_FILTER, 0x2601), parameter(target, GL_TEXTURE_MIN_FILTER, 0x2601),
            query(GL_UNPACK_ALIGNMENT), alignment(4)};
}

inline const QString kGenerating =
    QStringLiteral("Generating Mipmaps. For increased loading performance, include these in the .ktx file.");

class KTXReaderLoadTest : public TextureFixture
{
protected:
    void SetUp() override
    {
        driver.setInteger(GL_UNPACK_ALIGNMENT, kFormerAlignment);
        TextureFixture::SetUp();
        aliveBefore = Texture::NumAlive();
        makeRecord();
        readExtensions();
    }

    void TearDown() override
    {
        texture.reset();
        reader.reset();
        EXPECT_EQ(Texture::NumAlive(), aliveBefore);
        EXPECT_EQ(trace.alive, 0);
        for (unsigned unit = 0; unit < kUnits; ++unit)
            EXPECT_TRUE(Texture::isTextureUnitFree(unit)) << unit;
    }

    /// So that the list of extensions is not asked for among the calls of a test.
    static void readExtensions()
    {
        hasGLExtension("GL_EXT_texture_filter_anisotropic");
    }

    void offerAnisotropy(int maximum)
    {
        driver.setContext(this); // whose extensions are not known yet
        driver.setExtensions({"GL_EXT_texture_filter_anisotropic"});
        driver.setInteger(GL_MAX_TEXTURE_MAX_ANISOTROPY, maximum);
        makeRecord();
        readExtensions();
    }

    /// The calls that loading makes.
    QStringList callsFor(const QByteArray& bytes, const TextureFileInfo& info = preprocessed())
    {
        texture.reset();
        reader.reset();
        trace.calls.clear();
        trace.held = 0;
        reader = newReader(bytes, &trace, name);
        log.clear();
        const CallLog calls;
        texture.reset(reader->load(info));
        return withoutAddresses(calls.list());
    }

    QStringList callsFor(const KTXFile& file, const TextureFileInfo& info = preprocessed())
    {
        return callsFor(file.bytes(), info);
    }

    /// Loading gives null with the message, and the file's memory has its pointers back but for the header's and
    /// the two that begin with the metadata.
    void expectFailure(const QString& message, int pointersKept = 1)
    {
        EXPECT_FALSE(texture);
        EXPECT_EQ(log.messages(QtWarningMsg), QStringList(message));
        EXPECT_EQ(log.texts().size(), 1);
        EXPECT_EQ(trace.held, pointersKept);
        EXPECT_EQ(Texture::NumAlive(), aliveBefore);
    }

    /// Refused before OpenGL is asked.
    void expectRefused(const KTXFile& file, const QString& message)
    {
        EXPECT_EQ(callsFor(file), QStringList());
        expectFailure(message, file.metadata.isEmpty() ? 1 : 3);
    }

    void expectTooShort(const KTXFile& file)
    {
        expectRefused(file, (file.glType == 0 ? QStringLiteral("Compressed texture") : QStringLiteral("Texture")) +
                                QStringLiteral(" a.ktx failed to load."));
    }

    const void* at(qint64 offset) const
    {
        return trace.start + offset;
    }

    MemoryTrace trace;
    std::unique_ptr<KTXReader> reader;
    std::unique_ptr<Texture> texture;
    LogCapture log;
    QString name = QStringLiteral("a.ktx");
    int aliveBefore = 0;
};

inline constexpr GLenum kEtc2 = 0x9274; // GL_COMPRESSED_RGB8_ETC2

} // namespace Harrow::Vrk::Test
