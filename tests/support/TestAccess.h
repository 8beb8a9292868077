// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// The friend seams through which tests reach private members, and the resets of what classes cache per process.

#include "BufferObject.h"
#include "BufferObjectEntryPoints.h"
#include "ShaderProgram.h"
#include "ShaderProgramEntryPoints.h"

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

} // namespace Harrow::Vrk
