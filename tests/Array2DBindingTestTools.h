// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of the binding half of Array2DTextureManager share: a driver that keeps what a program is given,
/// with a book of handles, and the call lists of a draw.

#include "Array2DTestTools.h"
#include "CallMaskTools.h"
#include "GLRuntimeTestAccess.h"
#include "ShaderProgram.h"

#include <QSet>

#include <array>

/// A namespace of its own, since the managers with sampler slots are tested in the same program by the like.
namespace Harrow::Vrk::Test::Array2DDraws
{

inline constexpr GLint kSampleLocation = 21;
inline constexpr GLint kUniformsLocation = 22;
inline constexpr GLint kSlotsLocation = 23;
inline constexpr GLint kHandlesLocation = 24;
inline constexpr const char* kSampleName = "u_TextureTokenManagedTextureSlotMapSample";
inline constexpr const char* kUniformsName = "u_TextureTokenManagedTextureSlotMapUniforms[0]";
inline constexpr const char* kSlotsName = "u_ManagedTextureSlots[0]";
inline constexpr const char* kHandlesName = "u_ManagedTextureHandles[0]";

/// What the driver was given last.
inline QList<int> uploadedTable;
inline QList<int> uploadedUniforms;
inline QList<int> uploadedSlots;
inline QList<GLuint> uploadedHandles;

inline void VRK_GLAPIENTRY keepTable(GLenum, GLint, GLint, GLsizei width, GLint, GLenum, GLenum, const void* texels)
{
    const auto* const words = static_cast<const GLint*>(texels);
    uploadedTable = QList<int>(words, words + 4 * qsizetype(width));
}
inline void VRK_GLAPIENTRY keepUniforms(GLint, GLsizei count, const GLint* words)
{
    uploadedUniforms = QList<int>(words, words + 4 * qsizetype(count));
}
inline void VRK_GLAPIENTRY keepSlots(GLint, GLsizei count, const GLint* units)
{
    uploadedSlots = QList<int>(units, units + count);
}
inline void VRK_GLAPIENTRY keepHandles(GLint, GLsizei count, const GLuint* words)
{
    uploadedHandles = QList<GLuint>(words, words + 2 * qsizetype(count));
}

/// The driver's own book of handles: of texture n, (n << 32) + 0x40.
inline QSet<GLuint64> residents;

inline GLuint64 VRK_GLAPIENTRY giveHandle(GLuint name)
{
    return (GLuint64(name) << 32) + 0x40;
}
inline GLboolean VRK_GLAPIENTRY isResidentHandle(GLuint64 handle)
{
    return residents.contains(handle) ? GL_TRUE : GL_FALSE;
}
inline void VRK_GLAPIENTRY makeResident(GLuint64 handle)
{
    EXPECT_FALSE(residents.contains(handle)) << "an error of OpenGL";
    residents.insert(handle);
}
inline void VRK_GLAPIENTRY makeNonResident(GLuint64 handle)
{
    EXPECT_TRUE(residents.remove(handle)) << "an error of OpenGL";
}

inline FakeTexture sized(int width, int height)
{
    FakeTexture texture;
    texture.width = width;
    texture.height = height;
    return texture;
}

using Record = std::array<qint32, 8>;
inline constexpr Record kFreshRecord = {-1, 0, 0, 0, 0, 0, 0, 0};

class Array2DBindingTest : public Array2DFixture
{
protected:
    void SetUp() override
    {
        Array2DFixture::SetUp();
        driver.replace("glTexImage1D", &keepTable);
        driver.replace("glUniform4iv", &keepUniforms);
        driver.replace("glUniform1iv", &keepSlots);
        driver.replace("glUniform2uiv", &keepHandles);
        driver.replace("glGetTextureHandleARB", &giveHandle);
        driver.replace("glIsTextureHandleResidentARB", &isResidentHandle);
        driver.replace("glMakeTextureHandleResidentARB", &makeResident);
        driver.replace("glMakeTextureHandleNonResidentARB", &makeNonResident);
        ASSERT_EQ(driver.load(), 1);
        uploadedTable.clear();
        uploadedUniforms.clear();
        uploadedSlots.clear();
        uploadedHandles.clear();
        residents.clear();
    }

    void TearDown() override
    {
        program.reset();
        other.reset();
        Array2DFixture::TearDown();
    }

    /// A program with some of the four uniforms.
    void makeProgram(const QList<QByteArray>& names)
    {
        const std::pair<const char*, GLint> all[] = {{kSampleName, kSampleLocation},
                                                     {kUniformsName, kUniformsLocation},
                                                     {kSlotsName, kSlotsLocation},
                                                     {kHandlesName, kHandlesLocation}};
        for (const auto& [name, location] : all)
            driver.setUniformLocation(name, names.contains(name) ? location : -1);
        program = std::make_unique<ShaderProgram>();
        ASSERT_TRUE(program->link());
    }

    /// The manager in its default state, with a program that keeps the table in a texture.
    void make()
    {
        makeManager();
        makeProgram({kSampleName, kSlotsName});
    }

    void makeBindless()
    {
        driver.setExtensions({"GL_ARB_bindless_texture"});
        GLRuntimeTestAccess::forgetExtensionsOf(driver.currentContext());
        makeManager();
        array2D->setBindMode(Array2DTextureManager::BindBindless);
        makeProgram({kSampleName, kHandlesName});
    }

    /// `bind` takes a list and a set.
    void announce(const QList<TextureToken>& list)
    {
        array2D->bind(list);
    }

    TextureToken tokenOf(int width, int height)
    {
        return array2D->tokenForTexture(newTextureOf(sized(width, height)));
    }

    /// All eight words.
    Record record(const TextureToken& token)
    {
        const auto& data = Books::records(*array2D)[static_cast<qsizetype>(token.token)];
        return {data.slot,      data.layer,        qint32(data.handle[0]), qint32(data.handle[1]),
                data.udimWidth, data.udimMaxPatch, data.unused[0],         data.unused[1]};
    }

    Books::SlotData& slot(int index)
    {
        return *Books::allSlots(*array2D)[index];
    }

    static QStringList asking(GLuint name, const QList<const char*>& names)
    {
        QStringList calls;
        for (const char* const text : names)
            calls.append(CallLog::call("glGetUniformLocation", name, text));
        return calls;
    }

    static QStringList toProgram(const CallLog& calls)
    {
        return masked(calls.named(
            {"glGetUniformLocation", "glUniform4iv", "glTexImage1D", "glUniform1i", "glUniform2uiv", "glUniform1iv"}));
    }

    static QString uploadingTable(int width)
    {
        return pointerCall("glTexImage1D", {GL_TEXTURE_1D, 0, GL_RGBA32I, width, 0, GL_RGBA_INTEGER, GL_INT});
    }
    static QString settingUniforms(int count)
    {
        return pointerCall("glUniform4iv", {kUniformsLocation, count});
    }
    static QString settingSample(int unit)
    {
        return CallLog::call("glUniform1i", kSampleLocation, unit);
    }
    static QString settingSlots(int count)
    {
        return pointerCall("glUniform1iv", {kSlotsLocation, count});
    }
    static QString settingHandles(int count)
    {
        return pointerCall("glUniform2uiv", {kHandlesLocation, count});
    }
    static QStringList bound(int unit, GLuint name, GLenum target)
    {
        return {activate(unit), bindName(name, target)};
    }

    QList<int> wordsOf(int tokenCount)
    {
        QList<int> words;
        for (int token = 0; token < tokenCount; ++token)
            for (const qint32 word : record(TextureToken(quint64(token))))
                words.append(word);
        return words;
    }

    static bool allUnitsFree()
    {
        return TextureUnits::ofCurrentContext().textureToUnitMaps.isEmpty();
    }

    quint64 handleOfSlot(int index)
    {
        return slot(index).handle;
    }

    std::unique_ptr<ShaderProgram> program;
    std::unique_ptr<ShaderProgram> other;
};

} // namespace Harrow::Vrk::Test::Array2DDraws
