// SPDX-License-Identifier: MIT
// What a linked program has: attributes, uniforms and blocks, kept so that no name is asked for twice.
#include "ShaderProgram.h"

#include "Diagnostics.h"
#include "GLFunctions.h"
#include "GLUtilities.h"
#include "ShaderProgramEntryPoints.h"

#include <QMap>

#include <array>
#include <string_view>

namespace Harrow::Vrk
{
namespace
{

constexpr unsigned int kBindingUnset = 0xFFFFFFFF;

/// What the driver writes a name into. Longer names are cut by the driver; whatever it writes, the text ends inside.
template <std::size_t Size> class NameBuffer
{
public:
    GLsizei size() const
    {
        return static_cast<GLsizei>(Size);
    }

    GLchar* data()
    {
        _characters.fill('\0');
        return _characters.data();
    }

    const char* text()
    {
        _characters[Size - 1] = '\0';
        return _characters.data();
    }

    QString string()
    {
        return QString::fromLocal8Bit(text());
    }

private:
    std::array<GLchar, Size> _characters = {};
};

bool isBuiltIn(std::string_view name)
{
    return name.size() >= 3 && name.substr(0, 3) == "gl_";
}

bool isToleratedBuiltIn(std::string_view name)
{
    // Fourteen characters, so that "gl_BaseInstance" passes as well as the name with the suffix.
    constexpr std::string_view kBaseInstance = "gl_BaseInstanceARB";
    constexpr std::size_t kCompared = 14;
    return name.substr(0, kCompared) == kBaseInstance.substr(0, kCompared) || name == "gl_InstanceID" ||
           name == "gl_VertexID";
}

int indexOf(const QHash<QString, unsigned int>& indices, const QString& name)
{
    const auto found = indices.constFind(name);
    return found != indices.constEnd() ? static_cast<int>(*found) : -1;
}

} // namespace

// ---- caches --------------------------------------------------------------------------------------------------------

void ShaderProgram::cacheVertexAttributes()
{
    _vertexAttributes.clear();
    if (_programID == kShaderProgramNotLinked)
        return;
    GLint count = 0;
    glGetProgramiv(_programID, GL_ACTIVE_ATTRIBUTES, &count);
    if (count < 1)
        return;

    NameBuffer<200> buffer;
    for (GLint i = 0; i < count; ++i)
    {
        GLsizei length = 0;
        GLint size = 0;
        GLenum type = 0;
        glGetActiveAttrib(_programID, static_cast<GLuint>(i), buffer.size(), &length, &size, &type, buffer.data());
        const char* const name = buffer.text();
        const GLint location = glGetAttribLocation(_programID, name);
        if (!isBuiltIn(name))
        {
            if (location >= 0)
                _vertexAttributes.insert(buffer.string(), location);
        }
        else if (!isToleratedBuiltIn(name))
            VRK_LOG_CRITICAL("[ !! ] Shader Contains GL attribute '%s'. This is illigal", name);
    }
}

void ShaderProgram::cacheUniformLocations()
{
    static const QString drawID = QStringLiteral("u_DrawID");
    _drawIDLocation = getUniformLocation(drawID);
}

void ShaderProgram::cacheUniformBlockIndices()
{
    _uniformBlockIndices.clear();
    _uniformBlockBindingIndices.clear();
    _storageBlockIndices.clear();
    _storageBlockBindingIndices.clear();
    if (_programID == kShaderProgramNotLinked)
        return;

    NameBuffer<1024> buffer;
    GLint count = 0;
    glGetProgramiv(_programID, GL_ACTIVE_UNIFORM_BLOCKS, &count);
    for (GLint i = 0; i < count; ++i)
    {
        GLsizei length = 0;
        const auto index = static_cast<GLuint>(i);
        glGetActiveUniformBlockName(_programID, index, buffer.size(), &length, buffer.data());
        _uniformBlockIndices.insert(buffer.string(), index);
        _uniformBlockBindingIndices.insert(index, kBindingUnset);
    }

    const ShaderProgramEntryPoints& gl = shaderProgramEntryPoints();
    if (!gl.getProgramInterfaceiv || !gl.getProgramResourceName || !gl.getProgramResourceIndex)
        return;
    count = 0;
    gl.getProgramInterfaceiv(_programID, GL_SHADER_STORAGE_BLOCK, GL_ACTIVE_RESOURCES, &count);
    for (GLint i = 0; i < count; ++i)
    {
        GLsizei length = 0;
        const auto index = static_cast<GLuint>(i);
        gl.getProgramResourceName(_programID, GL_SHADER_STORAGE_BLOCK, index, buffer.size(), &length, buffer.data());
        _storageBlockIndices.insert(buffer.string(), index);
        _storageBlockBindingIndices.insert(index, kBindingUnset);
    }
}

void ShaderProgram::summaryUniforms()
{
    QMap<GLenum, GLint> tally;
    NameBuffer<1024> buffer;
    GLint count = 0;
    glGetProgramiv(_programID, GL_ACTIVE_UNIFORMS, &count);
    for (GLint i = 0; i < count; ++i)
    {
        GLsizei length = 0;
        GLint size = 0;
        GLenum type = 0;
        glGetActiveUniform(_programID, static_cast<GLuint>(i), buffer.size(), &length, &size, &type, buffer.data());
        tally[type] += size;
    }

    const auto* const self = static_cast<const void*>(this);
    GLint samplers = 0;
    for (auto entry = tally.constBegin(); entry != tally.constEnd(); ++entry)
    {
        VRK_LOG_DEBUG("%p Type 0x%04X : %d", self, entry.key(), entry.value());
        if (isSamplerType(entry.key()))
            samplers += entry.value();
    }
    VRK_LOG_DEBUG("%p Texture Samplers %d", self, samplers);
}

// ---- uniforms and attributes ---------------------------------------------------------------------------------------

int ShaderProgram::getUniformLocation(const QString& name) const
{
    const auto found = _uniformLocations.constFind(name);
    if (found != _uniformLocations.constEnd())
        return *found;
    const GLint location = glGetUniformLocation(_programID, name.toLocal8Bit().constData());
    _uniformLocations.insert(name, location);
    return location;
}

bool ShaderProgram::hasUniform(const QString& name) const
{
    return getUniformLocation(name) >= 0;
}

int ShaderProgram::getUniformLocationNameID() const
{
    return _drawIDLocation;
}

int ShaderProgram::getVertexAttributeLocation(const QString& name) const
{
    return _vertexAttributes.value(name, -1);
}

const QHash<QString, int>& ShaderProgram::getVertexAttributeNameLocationMap() const
{
    return _vertexAttributes;
}

QList<QString> ShaderProgram::getVertexAttributeNames() const
{
    return _vertexAttributes.keys();
}

// ---- blocks --------------------------------------------------------------------------------------------------------

int ShaderProgram::getUniformBlockIndex(const QString& name) const
{
    return indexOf(_uniformBlockIndices, name);
}

int ShaderProgram::getStorageBlockIndex(const QString& name) const
{
    return indexOf(_storageBlockIndices, name);
}

// The conditions below are printed as they stand, so each form spells them out.

unsigned int ShaderProgram::getUniformBlockBinding(unsigned int blockIndex)
{
    const auto itFind = this->_uniformBlockBindingIndices.constFind(blockIndex);
    VRK_ASSERT_RETURN(itFind != this->_uniformBlockBindingIndices.end(), kBindingUnset,
                      "Trying to get uniformBlockIndex %u on shader %u. Does not exist.", blockIndex, _programID);
    return *itFind;
}

unsigned int ShaderProgram::getStorageBlockBinding(unsigned int blockIndex)
{
    const auto itFind = this->_storageBlockBindingIndices.constFind(blockIndex);
    VRK_ASSERT_RETURN(itFind != this->_storageBlockBindingIndices.end(), kBindingUnset,
                      "Trying to get storageBlockIndex %u on shader %u. Does not exist.", blockIndex, _programID);
    return *itFind;
}

void ShaderProgram::setUniformBlockBinding(unsigned int blockIndex, unsigned int binding)
{
    const auto itFind = this->_uniformBlockBindingIndices.find(blockIndex);
    VRK_ASSERT_RETURN(itFind != this->_uniformBlockBindingIndices.end(), /* nothing */,
                      "Trying to set uniformBlockIndex %u on shader %u. Does not exist.", blockIndex, _programID);
    if (*itFind == binding)
        return;
    glUniformBlockBinding(_programID, blockIndex, binding);
    *itFind = binding;
}

void ShaderProgram::setStorageBlockBinding(unsigned int blockIndex, unsigned int binding)
{
    const auto itFind = this->_storageBlockBindingIndices.find(blockIndex);
    VRK_ASSERT_RETURN(itFind != this->_storageBlockBindingIndices.end(), /* nothing */,
                      "Trying to set storageBlockIndex %u on shader %u. Does not exist.", blockIndex, _programID);
    if (*itFind == binding)
        return;
    const auto bindBlock = shaderProgramEntryPoints().shaderStorageBlockBinding;
    if (!bindBlock)
    {
        Detail::reportMissingGLFunction("glShaderStorageBlockBinding");
        return;
    }
    bindBlock(_programID, blockIndex, binding);
    *itFind = binding;
}

int ShaderProgram::getTypeBlockIndex(unsigned int bufferType, const QString& name) const
{
    return bufferType == GL_SHADER_STORAGE_BUFFER ? getStorageBlockIndex(name) : getUniformBlockIndex(name);
}

unsigned int ShaderProgram::getTypeBlockBinding(unsigned int bufferType, unsigned int blockIndex)
{
    return bufferType == GL_SHADER_STORAGE_BUFFER ? getStorageBlockBinding(blockIndex)
                                                  : getUniformBlockBinding(blockIndex);
}

void ShaderProgram::setTypeBlockBinding(unsigned int bufferType, unsigned int blockIndex, unsigned int binding)
{
    if (bufferType == GL_SHADER_STORAGE_BUFFER)
        setStorageBlockBinding(blockIndex, binding);
    else
        setUniformBlockBinding(blockIndex, binding);
}

} // namespace Harrow::Vrk
