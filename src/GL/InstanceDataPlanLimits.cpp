// SPDX-License-Identifier: MIT
// How many records of a plan a driver lets a shader declare, carrier by carrier.
#include "InstanceDataPlan.h"

#include "Diagnostics.h"
#include "GLFunctions.h"
#include "ParameterMechanism.h"

#include <algorithm>

namespace Harrow::Vrk
{
namespace
{

constexpr size_t kTexelBytes = 16;
constexpr size_t kComponentBytes = 4;

size_t toSize(GLint value)
{
    return value > 0 ? static_cast<size_t>(value) : 0;
}

} // namespace

/// `value` stays as it is when OpenGL writes nothing, as it does without a context.
void InstanceDataPlan::getGLParameter(unsigned int parameter, int* value) const
{
    if (::_ptrc_glGetIntegerv)
        glGetIntegerv(parameter, value);
}

void InstanceDataPlan::applyLimits()
{
    switch (_mechanism)
    {
    case eBufferTextureMechanism:
        return limitToBufferTexture();
    case eUniformBufferMechanism:
        return limitToUniformBlock();
    case eUniformMechanism:
        return limitToUniforms();
    case eTextureMechanism:
        return checkTextureSize();
    case eStorageBufferMechanism:
        return limitToStorageBlock();
    }
}

void InstanceDataPlan::limitArraySize(const char* carrier, size_t maximum)
{
    _arraySizeMax = maximum;
    _arraySize = std::min(_arraySize, maximum);
    logLimits(carrier, static_cast<int>(_arraySize), static_cast<int>(_arraySizeMax));
}

void InstanceDataPlan::logLimits(const char* carrier, int size, int maximum) const
{
    VRK_LOG_DEBUG("%s: size %4d max %4d plan '%s'", carrier, size, maximum, qPrintable(_name));
}

void InstanceDataPlan::limitToBufferTexture()
{
    GLint texels = 2048;
    getGLParameter(GL_MAX_TEXTURE_BUFFER_SIZE, &texels);
    VRK_ASSERT_RETURN(_totalDataSize > 0, , "Plan '%s' is empty", qPrintable(_name));
    limitArraySize("bxt", toSize(texels) * kTexelBytes / _totalDataSize);
}

void InstanceDataPlan::limitToUniformBlock()
{
    GLint bytes = 0;
    getGLParameter(GL_MAX_UNIFORM_BLOCK_SIZE, &bytes);
    if (bytes >= 1 && _totalDataSize > 0)
        limitArraySize("ubo", toSize(bytes) / _totalDataSize);
}

void InstanceDataPlan::limitToUniforms()
{
    GLint fragmentComponents = 896;
    GLint vertexComponents = 1024;
    getGLParameter(GL_MAX_FRAGMENT_UNIFORM_COMPONENTS, &fragmentComponents);
    getGLParameter(GL_MAX_VERTEX_UNIFORM_COMPONENTS, &vertexComponents);
    size_t components = 0;
    for (auto members = _members.cbegin(); members != _members.cend(); ++members)
    {
        const size_t perMember = ParameterMechanism::numberComponents(members.key());
        components += (perMember == 3 ? 4 : perMember) * static_cast<size_t>(members->size());
    }
    const size_t available = toSize(std::min(fragmentComponents, vertexComponents));
    limitArraySize("uni", components == 0 ? 1 : available / (components * kComponentBytes));
}

void InstanceDataPlan::checkTextureSize() const
{
    GLint maxTextureSize = 1024;
    getGLParameter(GL_MAX_TEXTURE_SIZE, &maxTextureSize);
    VRK_ASSERT(static_cast<int>(_totalDataSize) <= maxTextureSize,
               "Total data size (%zu) for plan %s exceeds GL_MAX_TEXTURE_SIZE (%d)", _totalDataSize, qPrintable(_name),
               maxTextureSize);
    logLimits("txt", static_cast<int>(_totalDataSize), maxTextureSize);
}

void InstanceDataPlan::limitToStorageBlock()
{
    if (!::_ptrc_glGetInteger64v)
    {
        VRK_LOG_WARNING("OpenGL has not been initialised. No way it obtain correct maximum InstanceData table size for "
                        "'%s'",
                        qPrintable(_name));
        return;
    }
    GLint64 bytes = 0;
    glGetInteger64v(GL_MAX_SHADER_STORAGE_BLOCK_SIZE, &bytes);
    if (bytes >= 1 && _totalDataSize > 0)
        limitArraySize("ssb", static_cast<size_t>(bytes) / _totalDataSize);
}

} // namespace Harrow::Vrk
