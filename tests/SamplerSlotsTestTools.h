// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// What the suites of the managers with sampler slots share on the fake driver: a view of the slots' books, a driver
/// that keeps what is uploaded, and the call lists of each step of a draw.

#include "SamplerSlots.h"

#include "CallMaskTools.h"
#include "ShaderProgram.h"
#include "TextureManagerTestTools.h"

#include <array>

namespace Harrow::Vrk
{

struct SamplerSlotsTestAccess
{
    static const QList<int>& slotUnits(const SamplerSlots& object)
    {
        return object._slotUnits;
    }
    static const QList<int>& slotRefCounts(const SamplerSlots& object)
    {
        return object._slotRefCounts;
    }
    static Texture* slotMapTexture(const SamplerSlots& object)
    {
        return object._slotMapTexture.get();
    }
    static Texture* defaultTexture(const SamplerSlots& object)
    {
        return object._defaultTexture.get();
    }
};

} // namespace Harrow::Vrk

namespace Harrow::Vrk::Test
{

using SlotRecords = QList<std::array<quint32, 4>>;

inline constexpr int kManyUnits = 8;
inline constexpr GLint kMapLocation = 11;
inline constexpr GLint kSlotsLocation = 12;
inline constexpr const char* kMapName = "u_TextureTokenManagedTextureSlotMap";
inline constexpr const char* kSlotsName = "u_ManagedTextureSlots[0]";

/// What the driver was given last: the numbers of a slot map, or its records, and the units of the slots.
inline QList<int> uploadedMap;
inline SlotRecords uploadedRecords;
inline QList<int> uploadedSlots;

inline void VRK_GLAPIENTRY keepImage(GLenum, GLint, GLint, GLsizei width, GLsizei, GLint, GLenum format, GLenum,
                                     const void* texels)
{
    if (format == GL_RED_INTEGER)
    {
        const auto* const slotNumbers = static_cast<const GLint*>(texels);
        uploadedMap = QList<int>(slotNumbers, slotNumbers + width);
    }
    if (format == GL_RGBA_INTEGER)
    {
        const auto* const records = static_cast<const std::array<quint32, 4>*>(texels);
        uploadedRecords = SlotRecords(records, records + width);
    }
}

inline void VRK_GLAPIENTRY keepSlots(GLint, GLsizei count, const GLint* units)
{
    uploadedSlots = count > 0 ? QList<int>(units, units + count) : QList<int>();
}

class SlotsFixture : public ManagerFixture
{
protected:
    void SetUp() override
    {
        ManagerFixture::SetUp();
        driver.setInteger(GL_MAX_TEXTURE_IMAGE_UNITS, kManyUnits);
        driver.setInteger(GL_MAX_TEXTURE_SIZE, 1024);
        driver.setUniformLocation(kMapName, kMapLocation);
        driver.setUniformLocation(kSlotsName, kSlotsLocation);
        driver.replace("glTexImage2D", &keepImage);
        driver.replace("glUniform1iv", &keepSlots);
        ASSERT_EQ(driver.load(), 1);
        uploadedMap.clear();
        uploadedRecords.clear();
        uploadedSlots.clear();
        program = std::make_unique<ShaderProgram>();
        ASSERT_TRUE(program->link());
        makeRecord();
    }

    void TearDown() override
    {
        program.reset();
        ManagerFixture::TearDown();
    }

    static QStringList bound(int unit, GLuint name)
    {
        return {activate(unit), bindName(name)};
    }

    static QStringList nearest()
    {
        return {parameter(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST),
                parameter(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST)};
    }

    static QStringList makingDefault(int unit, GLuint name)
    {
        return QStringList({pointerCall("glGenTextures", {1})}) + bound(unit, name) + nearest() + bound(unit, 0);
    }

    static QStringList makingMap(int unit, GLuint name)
    {
        return QStringList({pointerCall("glGenTextures", {1})}) + bound(unit, name) + nearest() +
               QStringList({parameter(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE),
                            parameter(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE)}) +
               bound(unit, 0);
    }

    static QStringList asking(GLuint name)
    {
        return {CallLog::call("glGetUniformLocation", name, kMapName),
                CallLog::call("glGetUniformLocation", name, kSlotsName)};
    }

    static QString settingMap(int unit)
    {
        return CallLog::call("glUniform1i", kMapLocation, unit);
    }

    static QString settingSlots(int count)
    {
        return pointerCall("glUniform1iv", {kSlotsLocation, count});
    }

    static bool allUnitsFree()
    {
        return TextureUnits::ofCurrentContext().freeTextureUnits.size() == kManyUnits;
    }

    std::unique_ptr<ShaderProgram> program;
};

} // namespace Harrow::Vrk::Test
