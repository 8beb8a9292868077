// SPDX-License-Identifier: MIT
#include "DrawBuffers.h"

#include "AutoBinder.h"
#include "BufferObject.h"
#include "Diagnostics.h"
#include "GLOptionalFunctions.h"
#include "GLSLMacroProcessor.h"
#include "GLUtilities.h"
#include "OpenGLDeviceContext.h"
#include "UniformBufferObject.h"
#include "VertexArrayObject.h"

#include <utility>

namespace Harrow::Vrk
{
namespace
{

int numAlive = 0;

// How std140 lays a sub-draw out in an array: the stride is a multiple of 16 bytes.
struct UniformCommand
{
    DrawElementsIndirectCommand command;
    std::uint32_t fill[3];
};
static_assert(sizeof(UniformCommand) == 32);

template <typename Estimate> size_t estimate(const auto& object, Estimate member)
{
    return object ? (object.data()->*member)() : 0;
}

} // namespace

bool DrawBuffers::_useBaseInstanceDrawing = false;
DrawBuffers::DrawArraysFunction DrawBuffers::_drawArraysInstancedBaseInstance = nullptr;
DrawBuffers::DrawElementsFunction DrawBuffers::_drawElementsInstancedBaseVertexBaseInstance = nullptr;
quint64 DrawBuffers::_totalDrawCalls = 0;
quint64 DrawBuffers::_totalDrawBatches = 0;
quint64 DrawBuffers::_totalDrawIndices = 0;

DrawBuffers::DrawBuffers(QObject* parent) : QObject(parent)
{
    ++numAlive;
}

DrawBuffers::~DrawBuffers()
{
    --numAlive;
}

bool DrawBuffers::bind()
{
    VRK_ASSERT_RETURN(!this->_vao.isNull(), false, "Vertex Array Object is NULL on bind");
    if (!_vao->bind())
        return false;
    if (_boIndex && !_boIndex->bind())
    {
        _vao->unbind();
        return false;
    }
    return true;
}

bool DrawBuffers::unbind()
{
    VRK_ASSERT_RETURN(!this->_vao.isNull(), false, "Vertex Array Object is NULL on unbind");
    if (_boIndex)
        _boIndex->unbind();
    _vao->unbind();
    return true;
}

bool DrawBuffers::rebind(DrawBuffers* drawBuffersBound)
{
    VRK_ASSERT_RETURN(!this->_vao.isNull(), false, "Vertex Array Object is NULL on rebind");
    if (drawBuffersBound == this)
        return true;
    if (!drawBuffersBound)
        return bind();
    VRK_ASSERT_RETURN(!drawBuffersBound->_vao.isNull(), false, "Vertex Array Object is NULL on rebind");

    bool changed = false;
    if (!_vao->rebind(drawBuffersBound->_vao.data(), changed))
        return false;
    // The index binding lives in the vertex array: another array needs it issued again.
    bool indexBound = true;
    if (_boIndex)
        indexBound = _boIndex->rebind(drawBuffersBound->_boIndex.data(), changed);
    else if (drawBuffersBound->_boIndex)
        indexBound = drawBuffersBound->_boIndex->unbind();
    if (!indexBound)
        _vao->unbind();
    return indexBound;
}

void DrawBuffers::setPrimitiveType(GLenum primitiveType)
{
    VRK_ASSERT(GL_QUADS != primitiveType, "GL_QUADS is not allowed");
    _primitiveType = primitiveType;
}

void DrawBuffers::setVAO(QSharedPointer<VertexArrayObject> vao)
{
    VRK_ASSERT(true == this->_vao.isNull(), "Vertex Array Object is already set");
    _vao = std::move(vao);
}

void DrawBuffers::setVertexCount(GLuint vertexCount)
{
    _vertexCount = vertexCount;
}

void DrawBuffers::setInstanceCount(int instanceCount)
{
    _instanceCount = instanceCount;
}

void DrawBuffers::setBaseVertex(int baseVertex)
{
    _baseVertex = baseVertex;
}

void DrawBuffers::setIndexBufferOffset(size_t indexBufferOffset)
{
    _indexBufferOffset = indexBufferOffset;
}

void DrawBuffers::setIndexedDraw(QSharedPointer<BufferObject> indexBuffer, int indexCount, GLenum indexType)
{
    _boIndex = std::move(indexBuffer);
    _indexCount = indexCount;
    _indexType = indexType;
}

void DrawBuffers::setDrawElementsIndirectCommands(const DrawElementsIndirectCommand* commands, int count)
{
    VRK_ASSERT_RETURN(0 <= count, void(), "DrawElementsIndirectCommands count (%d) is negative", count);
    VRK_ASSERT_RETURN(0 == count || nullptr != commands, void(), "DrawElementsIndirectCommands are NULL");
    _commandsCount = count;
    _commands = QList<DrawElementsIndirectCommand>(commands, commands + count);

    const auto indexSize = static_cast<size_t>(bytesFromInternalFormat(_indexType));
    _commandIndexCounts.resize(count);
    _commandIndexOffsets.resize(count);
    _commandBaseVertices.resize(count);
    for (int i = 0; i < count; ++i)
    {
        const DrawElementsIndirectCommand& command = _commands.at(i);
        _commandIndexCounts[i] = static_cast<int>(command.count);
        _commandIndexOffsets[i] = command.firstIndex * indexSize;
        _commandBaseVertices[i] = static_cast<int>(command.baseVertex);
    }
    _useMultiDrawIndirect = false;
}

void DrawBuffers::clear()
{
    _vao.clear();
    _boIndex.clear();
}

QSharedPointer<VertexArrayObject> DrawBuffers::VAO() const
{
    return _vao;
}

QSharedPointer<BufferObject> DrawBuffers::indexBO() const
{
    return _boIndex;
}

GLenum DrawBuffers::indexType() const
{
    return _indexType;
}

GLuint DrawBuffers::numVerts() const
{
    return _vertexCount;
}

int DrawBuffers::numIndexes() const
{
    return _indexCount;
}

int DrawBuffers::numDrawCommands() const
{
    return _commandsCount;
}

QSharedPointer<UniformBufferObject> DrawBuffers::getDrawElementsIndirectCommandsUniformBufferObject()
{
    if (_commandsUniform)
        return _commandsUniform;
    const QSharedPointer<OpenGLDeviceContext> context = OpenGLDeviceContext::current();
    VRK_ASSERT_RETURN(!context.isNull(), {}, "There is no OpenGLDeviceContext after the end of the process");
    const QSharedPointer<BufferObject> buffer = context->newBuffer();
    buffer->setTarget(GL_UNIFORM_BUFFER);

    QList<UniformCommand> records;
    records.reserve(_commandsCount);
    for (const DrawElementsIndirectCommand& command : std::as_const(_commands))
        records.append({command, {}});
    {
        const AutoBinder binder(buffer.data());
        buffer->uploadArbitraryData(records.constData(), static_cast<int>(records.size()), GL_STATIC_DRAW,
                                    sizeof(UniformCommand));
    }
    _commandsUniform = context->newUniformBuffer(QStringLiteral("u_DrawElementsIndirectCommandsUniform"), buffer);
    return _commandsUniform;
}

size_t DrawBuffers::memoryEstimateCPU() const
{
    // The base vertices are left out of the sum.
    return sizeof(*this) + static_cast<size_t>(_commands.size()) * sizeof(DrawElementsIndirectCommand) +
           static_cast<size_t>(_commandIndexOffsets.size()) * 8 + static_cast<size_t>(_commandIndexCounts.size()) * 4 +
           estimate(_vao, &VertexArrayObject::memoryEstimateCPU) +
           estimate(_boIndex, &BufferObject::memoryEstimateCPU) +
           estimate(_boCommands, &BufferObject::memoryEstimateCPU);
}

size_t DrawBuffers::memoryEstimateGPU() const
{
    return estimate(_vao, &VertexArrayObject::memoryEstimateGPU) +
           estimate(_boIndex, &BufferObject::memoryEstimateGPU) +
           estimate(_boCommands, &BufferObject::memoryEstimateGPU);
}

bool DrawBuffers::isBaseInstanceDrawingSupported()
{
    if (!_drawArraysInstancedBaseInstance)
        _drawArraysInstancedBaseInstance = reinterpret_cast<PFN_glDrawArraysInstancedBaseInstance>(
            getGLProcAddress("glDrawArraysInstancedBaseInstance", true));
    if (!_drawElementsInstancedBaseVertexBaseInstance)
        _drawElementsInstancedBaseVertexBaseInstance =
            reinterpret_cast<PFN_glDrawElementsInstancedBaseVertexBaseInstance>(
                getGLProcAddress("glDrawElementsInstancedBaseVertexBaseInstance", true));
    if (!_drawArraysInstancedBaseInstance || !_drawElementsInstancedBaseVertexBaseInstance)
        return false;
    return hasGLExtension("GL_ARB_shader_draw_parameters");
}

void DrawBuffers::useBaseInstanceDrawing(bool use)
{
    _useBaseInstanceDrawing = use;
}

void DrawBuffers::setup(GLSLMacroProcessor* processor)
{
    if (processor && _useBaseInstanceDrawing)
        processor->addDefine(QStringLiteral("DRAW_BUFFER_USE_BASE_INSTANCE"), QStringLiteral("1"));
}

quint64 DrawBuffers::getAndResetTotalDrawCalls()
{
    return std::exchange(_totalDrawCalls, 0);
}

quint64 DrawBuffers::getAndResetTotalDrawBatches()
{
    return std::exchange(_totalDrawBatches, 0);
}

quint64 DrawBuffers::getAndResetTotalDrawIndices()
{
    return std::exchange(_totalDrawIndices, 0);
}

int DrawBuffers::NumAlive()
{
    return numAlive;
}

} // namespace Harrow::Vrk
