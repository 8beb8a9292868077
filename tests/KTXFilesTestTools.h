// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of KTX files on the real driver share: a fixture that loads files, and a look into textures.

#include "KTXReader.h"

#include "AutoBinder.h"
#include "GLFunctions.h"
#include "KTXRecogniser.h"
#include "KTXTestTools.h"
#include "Texture.h"
#include "TextureIO.h"
#include "TextureIOTestTools.h"
#include "support/GLTest.h"
#include "support/LogCapture.h"

#include <QTemporaryDir>

#include <memory>
#include <vector>

namespace Harrow::Vrk::Test
{

using Bytes = std::vector<unsigned char>;

struct PlainLevel
{
    int width, height, depth;
    std::vector<Bytes> faces;
};

inline GLint levelParameter(GLenum target, int level, GLenum name)
{
    GLint value = -1;
    glGetTexLevelParameteriv(target, level, name, &value);
    return value;
}

/// A level of the bound texture, in rows without a gap.
inline Bytes texelsOf(GLenum target, int level, const PlainLevel& plain, GLenum format, GLenum type, int texelBytes)
{
    Bytes texels(size_t(plain.width) * size_t(plain.height) * size_t(plain.depth) * size_t(texelBytes));
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glGetTexImage(target, level, format, type, texels.data());
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    return texels;
}

class KTXDriverFixture : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        EXPECT_EQ(Texture::NumAlive(), 0);
        RegisterTextureRecogniser(new KTXRecogniser, QStringLiteral("ktx"));
        glPixelStorei(GL_UNPACK_ALIGNMENT, 2);
    }

    void TearDown() override
    {
        EXPECT_EQ(Texture::NumAlive(), 0);
        GLint alignment = 0;
        glGetIntegerv(GL_UNPACK_ALIGNMENT, &alignment);
        EXPECT_EQ(alignment, 2);
        glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
        expectAllUnitsFree();
        GLTest::TearDown();
    }

    static void expectAllUnitsFree()
    {
        // Opens the context's books where nothing has been bound yet.
        Texture probe(nullptr);
        probe.setTarget(GL_TEXTURE_2D);
        EXPECT_TRUE(probe.bind());
        EXPECT_TRUE(probe.unbind());
        GLint units = 0;
        glGetIntegerv(GL_MAX_TEXTURE_IMAGE_UNITS, &units);
        for (GLint unit = 0; unit < units; ++unit)
            EXPECT_TRUE(Texture::isTextureUnitFree(unsigned(unit))) << unit;
    }

    std::unique_ptr<Texture> load(const QString& path, const TextureFileInfo& info = preprocessed())
    {
        return std::unique_ptr<Texture>(LoadTextureFromFile(path, info));
    }

    std::unique_ptr<Texture> load(const KTXFile& contents, const TextureFileInfo& info = preprocessed())
    {
        return load(writeFile(folder.filePath(QStringLiteral("a.ktx")), contents.bytes()), info);
    }

    const EmptyRegistry registry;
    QTemporaryDir folder;
};

} // namespace Harrow::Vrk::Test
