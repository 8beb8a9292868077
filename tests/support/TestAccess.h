// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The friend seams through which tests reach private members, and the resets of what classes cache per process.

#include "BufferObject.h"
#include "BufferObjectEntryPoints.h"
#include "ShaderProgram.h"
#include "ShaderProgramEntryPoints.h"
#include "Texture.h"
#include "TextureUnits.h"

#include <array>

namespace Harrow::Vrk
{

struct BufferObjectTestAccess
{
    static BufferObject* wrap(GLuint name)
    {
        return new BufferObject(name, nullptr);
    }
    static BufferObject* make()
    {
        return new BufferObject(nullptr);
    }
    static bool create(BufferObject& object)
    {
        return object.create();
    }
    static bool destroy(BufferObject& object)
    {
        return object.destroy();
    }
    static void setName(BufferObject& object, GLuint name)
    {
        object._bo = name;
    }
    static void resetEntryPoints()
    {
        bufferObjectEntryPoints() = {};
    }
};

struct ShaderProgramTestAccess
{
    static void resetEntryPoints()
    {
        shaderProgramEntryPoints() = {};
    }
    static void setClock(QTime (*clock)())
    {
        ShaderProgram::_clock = clock;
    }
    static bool isPreprocessed(const ShaderProgram& program)
    {
        return program._preprocessed;
    }
    static const QMultiHash<int, Shader*>& shaders(const ShaderProgram& program)
    {
        return program._shaders;
    }
};

struct TextureTestAccess
{
    static bool create(Texture& texture)
    {
        return texture.create();
    }
    static bool destroy(Texture& texture)
    {
        return texture.destroy();
    }
    static void setName(Texture& texture, unsigned name)
    {
        texture._textureID = name;
    }
    static int maxTextureUnits(const Texture& texture)
    {
        return texture.maxTextureUnits();
    }
    static int dimensionLevelSize(Texture& texture, int dimension, int level)
    {
        return texture.dimensionLevelSize(dimension, level);
    }
    static int maxLevel(const Texture& texture)
    {
        return texture._maxLevel;
    }
    /// Internal format, width, height and depth, as recorded.
    static std::array<int, 4> recorded(const Texture& texture)
    {
        return {texture._internalFormat, texture._width, texture._height, texture._depth};
    }
    /// A context of the next test may come again at the same place; its record must not.
    static void forgetContexts()
    {
        TextureUnits::forgetAll();
    }
    static QBasicMutex& recordsMutex()
    {
        return TextureUnits::recordsMutex();
    }
};

} // namespace Harrow::Vrk
