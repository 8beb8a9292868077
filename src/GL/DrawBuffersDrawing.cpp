// SPDX-License-Identifier: MIT
#include "DrawBuffers.h"

#include "AutoBinder.h"
#include "BufferObject.h"
#include "BufferOffset.h"
#include "Diagnostics.h"
#include "ShaderProgram.h"
#include "VertexArrayObject.h"

#include <numeric>

namespace Harrow::Vrk
{
namespace
{

int drawIDLocation(const ShaderProgram* program)
{
    if (program)
        return program->getUniformLocationNameID();
    GLint current = 0;
    glGetIntegerv(GL_CURRENT_PROGRAM, &current);
    return glGetUniformLocation(static_cast<GLuint>(current), "u_DrawID");
}

// The sum is taken unsigned, as the shader sees it: it may wrap.
void setDrawID(ShaderProgram* program, int location, int base, int number)
{
    if (location < 0)
        return;
    const GLuint drawID = static_cast<GLuint>(base) + static_cast<GLuint>(number);
    if (program)
        program->setUniform(location, drawID);
    else
        glUniform1ui(location, drawID);
}

} // namespace

bool DrawBuffers::draw()
{
    return drawInMode(nullptr, nullptr);
}

bool DrawBuffers::draw(ShaderProgram* program)
{
    return drawInMode(program, nullptr);
}

bool DrawBuffers::draw(ShaderProgram* program, const QList<int>* commandSubset)
{
    return drawInMode(program, commandSubset);
}

bool DrawBuffers::drawInMode(ShaderProgram* program, const QList<int>* commandSubset)
{
    if (!canDraw())
        return false;
    if (_useMultiDrawIndirect)
        return drawMultiDrawElementsIndirect();
    if (!_useBaseInstanceDrawing)
        return drawDrawID(program, commandSubset);
    return drawBaseInstance(commandSubset);
}

bool DrawBuffers::canDraw() const
{
    VRK_ASSERT_RETURN(false == this->_vao.isNull(), false, "Vertex Array Object is NULL on draw");
    VRK_ASSERT_RETURN(true == this->_vao->isBound(), false, "Vertex Array Object is not bound on draw");
    VRK_ASSERT_RETURN(GLenum(-1) != this->_primitiveType, false, "Primitive type is not setup on draw");
    return true;
}

bool DrawBuffers::canDrawWhole() const
{
    if (_boIndex)
    {
        VRK_ASSERT_RETURN(0 != this->_indexType, false, "Index type is not setup on draw");
        VRK_ASSERT_RETURN(0 != this->_indexCount, false, "Index count is not setup on draw");
        VRK_ASSERT_RETURN(this->hasIndicesBound(), false, "No index buffer is bound on draw");
    }
    else
    {
        VRK_ASSERT_RETURN(0 != this->_vertexCount, false, "Index count is not setup on draw");
    }
    return true;
}

// Without an element buffer in the vertex array some drivers read the offsets as addresses. The driver is asked only
// where our own book-keeping does not vouch for one: the application may have put its own there.
bool DrawBuffers::hasIndicesBound() const
{
    if (_boIndex && _boIndex->isBoundTo(GL_ELEMENT_ARRAY_BUFFER))
        return true;
    GLint name = 0;
    glGetIntegerv(GL_ELEMENT_ARRAY_BUFFER_BINDING, &name);
    return name != 0;
}

bool DrawBuffers::canDrawCommands(const QList<int>* commandSubset) const
{
    VRK_ASSERT_RETURN(this->hasIndicesBound(), false, "No index buffer is bound on draw");
    if (commandSubset)
    {
        for (const int command : *commandSubset)
            VRK_ASSERT_RETURN(0 <= command && command < this->_commandsCount, false,
                              "Command (%d) is not one of the %d DrawElementsIndirectCommands on draw", command,
                              this->_commandsCount);
    }
    return true;
}

bool DrawBuffers::drawDrawID(ShaderProgram* program, const QList<int>* commandSubset)
{
    // All is checked before the first OpenGL call.
    const bool hasCommands = _commandsCount != 0;
    if (!(hasCommands ? canDrawCommands(commandSubset) : canDrawWhole()))
        return false;
    const int location = drawIDLocation(program);
    if (hasCommands)
        drawCommands(program, location, commandSubset);
    else
        drawInstances(program, location);
    return true;
}

void DrawBuffers::drawInstances(ShaderProgram* program, int location)
{
    for (int i = 0; i < _instanceCount; ++i)
    {
        setDrawID(program, location, _drawIDBase, i);
        if (!_boIndex)
            glDrawArrays(_primitiveType, 0, static_cast<GLsizei>(_vertexCount));
        else if (_baseVertex != 0)
            glDrawElementsBaseVertex(_primitiveType, _indexCount, _indexType, bufferOffset(_indexBufferOffset),
                                     _baseVertex);
        else
            glDrawElements(_primitiveType, _indexCount, _indexType, bufferOffset(_indexBufferOffset));
        ++_totalDrawCalls;
        ++_totalDrawBatches;
        if (_boIndex)
            _totalDrawIndices += static_cast<quint64>(_indexCount);
    }
}

void DrawBuffers::drawCommands(ShaderProgram* program, int location, const QList<int>* commandSubset)
{
    const int* const subset = commandSubset ? commandSubset->constData() : nullptr;
    const qsizetype draws = commandSubset ? commandSubset->size() : _commandsCount;
    const int* const indexCounts = _commandIndexCounts.constData();
    const size_t* const indexOffsets = _commandIndexOffsets.constData();
    const int* const baseVertices = _commandBaseVertices.constData();
    for (qsizetype j = 0; j < draws; ++j)
    {
        const int command = subset ? subset[j] : static_cast<int>(j);
        setDrawID(program, location, _drawIDBase, command);
        glDrawElementsBaseVertex(_primitiveType, indexCounts[command], _indexType, bufferOffset(indexOffsets[command]),
                                 baseVertices[command]);
        _totalDrawIndices += static_cast<quint64>(indexCounts[command]);
    }
    // The whole list counts, also when a subset was drawn.
    _totalDrawCalls += static_cast<quint64>(_commandsCount);
    _totalDrawBatches += static_cast<quint64>(_commandsCount);
}

bool DrawBuffers::drawBaseInstance(const QList<int>*)
{
    if (_commandsCount != 0)
    {
        VRK_LOG_DEBUG("##### COMMAND COUNT");
        return false;
    }
    if (!canDrawWhole())
        return false;
    const auto baseInstance = static_cast<GLuint>(_drawIDBase);
    if (_boIndex)
    {
        VRK_ASSERT_RETURN(nullptr != _drawElementsInstancedBaseVertexBaseInstance, false,
                          "glDrawElementsInstancedBaseVertexBaseInstance is NULL on draw");
        _drawElementsInstancedBaseVertexBaseInstance(_primitiveType, _indexCount, _indexType,
                                                     bufferOffset(_indexBufferOffset), _instanceCount, _baseVertex,
                                                     baseInstance);
        // Not multiplied by the instances.
        _totalDrawIndices += static_cast<quint64>(_indexCount);
    }
    else
    {
        VRK_ASSERT_RETURN(nullptr != _drawArraysInstancedBaseInstance, false,
                          "glDrawArraysInstancedBaseInstance is NULL on draw");
        _drawArraysInstancedBaseInstance(_primitiveType, _baseVertex, static_cast<GLsizei>(_vertexCount),
                                         _instanceCount, baseInstance);
    }
    ++_totalDrawCalls;
    ++_totalDrawBatches;
    return true;
}

bool DrawBuffers::drawMultiDrawElementsIndirect()
{
    VRK_ASSERT_RETURN(0 != this->_commandsCount, false, "DrawElementsIndirectCommandsCount is not set on draw");
    VRK_ASSERT_RETURN(0 != this->_indexType, false, "Index type is not setup on draw");
    VRK_ASSERT_RETURN(false == this->_boIndex.isNull(), false, "Index buffer object is not set on draw");
    VRK_ASSERT_RETURN(false == this->_boCommands.isNull(), false, "Indirect buffer object is not set on draw");
    VRK_ASSERT_RETURN(nullptr != ::_ptrc_glMultiDrawElementsIndirect, false,
                      "glMultiDrawElementsIndirect is NULL on draw");
    const AutoBinder binder(_boCommands.data());
    glMultiDrawElementsIndirect(_primitiveType, _indexType, nullptr, _commandsCount,
                                sizeof(DrawElementsIndirectCommand));
    ++_totalDrawCalls;
    _totalDrawBatches += static_cast<quint64>(_commandsCount);
    _totalDrawIndices += std::accumulate(_commandIndexCounts.cbegin(), _commandIndexCounts.cend(), quint64(0));
    return true;
}

bool DrawBuffers::drawInstanced(int instanceCount)
{
    if (!canDraw() || !canDrawWhole())
        return false;
    if (_boIndex)
        glDrawElementsInstanced(_primitiveType, _indexCount, _indexType, nullptr, instanceCount);
    else
        glDrawArraysInstanced(_primitiveType, 0, static_cast<GLsizei>(_vertexCount), instanceCount);
    return true;
}

bool DrawBuffers::willDraw(ShaderProgram*, const QList<int>* commandSubset)
{
    if (_useMultiDrawIndirect)
        return _commandsCount != 0;
    if (_commandsCount != 0)
        return (commandSubset ? commandSubset->size() : _commandsCount) != 0;
    return _boIndex ? _indexCount != 0 : _vertexCount != 0;
}

} // namespace Harrow::Vrk
