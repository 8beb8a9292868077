// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// One drawable piece of geometry: a vertex array, an optional index buffer, counts, and optionally a list of
/// sub-draws. Hides from the caller how the number that the shader reads with `getDrawID()` travels: as the uniform
/// "u_DrawID", or as base instance. Counts calls, batches and indices for the application's statistics.

#include "Bindable.h"
#include "DrawElementsIndirectCommand.h"
#include "Export.h"
#include "GLFunctions.h"

#include <QList>
#include <QObject>
#include <QSharedPointer>

#include <cstddef>

namespace Harrow::Vrk
{

class BufferObject;
class GLSLMacroProcessor;
class ShaderProgram;
class UniformBufferObject;
class VertexArrayObject;

/// The draw identifier. Draw number i of an object, an instance or a sub-draw, shows `_drawIDBase + i` in the shader.
/// The application chooses once for the process how it gets there:
///
/// - by uniform (the default, for all drivers): one draw call for each instance, "u_DrawID" set before each;
/// - by base instance: one draw call for all instances. Sub-draws are not drawn in this mode.
///
/// A draw needs the object bound (`bind`, `rebind`), the attributes enabled (`VertexArrayObject::
/// enableShaderProgramArrays`) and the program in use. All operations run on the thread of the current context; the
/// counters and the mode belong to the process and are not locked. A broken precondition is an assertion: it is
/// reported, nothing is drawn and false comes back.
///
/// Between `bind` and `unbind` nothing else may bind or unbind `GL_ELEMENT_ARRAY_BUFFER`: that binding belongs to the
/// vertex array, so filling another index buffer there takes this one's away. Fill index buffers before.
class VRKGL_EXPORT DrawBuffers : public QObject, public Bindable
{
    Q_OBJECT

public:
    /// Without geometry. One instance is drawn until another number is set.
    explicit DrawBuffers(QObject* parent);
    ~DrawBuffers() override;

    /// Binds the vertex array, then the index buffer if there is one. When either fails nothing stays bound.
    bool bind() override;

    /// Unbinds the index buffer, then the vertex array; what they say is not looked at. False, after an assertion,
    /// without a vertex array.
    bool unbind() override;

    /// Takes the binding over from `drawBuffersBound` with the fewest calls; null means plain `bind`, and this object
    /// itself is true without a call. When the index buffer fails the vertex array is unbound.
    bool rebind(DrawBuffers* drawBuffersBound);

    /// OpenGL's primitive. `GL_QUADS` is reported and stored.
    void setPrimitiveType(GLenum primitiveType);

    /// The vertex array. One that is set already is reported and replaced.
    void setVAO(QSharedPointer<VertexArrayObject> vao);

    /// Vertices of a draw without indices.
    void setVertexCount(GLuint vertexCount);

    /// Instances of a draw without sub-draws, 1 at first. Below 1 nothing is drawn by uniform.
    void setInstanceCount(int instanceCount);

    /// Added to each index. For a draw without indices: the first vertex by base instance, ignored by uniform.
    void setBaseVertex(int baseVertex);

    /// Draw identifier of the first instance, or of the first sub-draw.
    void setDrawIDBase(int drawIDBase)
    {
        _drawIDBase = drawIDBase; // set before every draw
    }

    /// Bytes into the index buffer. Ignored by sub-draws and by `drawInstanced`.
    void setIndexBufferOffset(size_t indexBufferOffset);

    /// Draws `indexCount` indices of `indexType` (`GL_UNSIGNED_SHORT` or `GL_UNSIGNED_INT`). The buffer's target must
    /// be `GL_ELEMENT_ARRAY_BUFFER`.
    void setIndexedDraw(QSharedPointer<BufferObject> indexBuffer, int indexCount, GLenum indexType);

    /// Copies `count` sub-draws, drawn in place of the whole; 0 ends that. Their offsets come from the index type, so
    /// `setIndexedDraw` comes first: without it each sub-draw gives the critical message of `bytesFromInternalFormat`
    /// and begins at offset 0. A uniform buffer that was handed out already keeps the older ones. A negative count, or
    /// null with a count, is an assertion and changes nothing.
    void setDrawElementsIndirectCommands(const DrawElementsIndirectCommand* commands, int count);

    /// Lets go of vertex array and index buffer. Counts and sub-draws stay.
    void clear();

    /// Draws. The location of "u_DrawID" comes from `program`, which must be in use; without one the driver is asked.
    /// `commandSubset` picks sub-draws by index, in its order; null means all of them, and an index that is not in
    /// the list is an assertion. A program without the uniform is drawn with all the same. Indices need a bound index
    /// buffer. By base instance sub-draws are not drawn: "##### COMMAND COUNT" in the debug log (guarded), and false.
    bool draw();
    bool draw(ShaderProgram* program);
    bool draw(ShaderProgram* program, const QList<int>* commandSubset);

    /// Draws `instanceCount` instances with OpenGL's own instancing. No draw identifier is set, nothing is counted, and
    /// index offset, base vertex and sub-draws are ignored.
    bool drawInstanced(int instanceCount);

    /// Whether there is anything to draw: sub-draws, or else indices or vertices. Instances and the mode are not looked
    /// at.
    bool willDraw(ShaderProgram* program, const QList<int>* commandSubset);

    /// What was set, without a call of OpenGL: null or 0 where nothing was.
    QSharedPointer<VertexArrayObject> VAO() const;
    QSharedPointer<BufferObject> indexBO() const;
    GLenum indexType() const;
    GLuint numVerts() const;
    int numIndexes() const;
    int numDrawCommands() const;

    /// The sub-draws as block "u_DrawElementsIndirectCommandsUniform", for shaders that look a draw's indices up. Made
    /// at the first call, from the sub-draws of that moment, in the current context; without any the buffer stays
    /// empty, after an assertion. The block in the shader holds 100.
    QSharedPointer<UniformBufferObject> getDrawElementsIndirectCommandsUniformBufferObject();

    /// Bytes of this object and its lists, with what the vertex array and the index buffer need.
    size_t memoryEstimateCPU() const;
    /// Bytes that vertex array and index buffer hold on the GPU.
    size_t memoryEstimateGPU() const;

    /// Whether the current context can draw by base instance and its shaders can read it.
    static bool isBaseInstanceDrawingSupported();

    /// Chooses for the process how draw identifiers travel. Ask `isBaseInstanceDrawingSupported` first: the value is
    /// taken as it is, and by base instance nothing is drawn until that call has found the functions.
    static void useBaseInstanceDrawing(bool use);

    /// Defines DRAW_BUFFER_USE_BASE_INSTANCE for shaders that use `getDrawID()`, if that is the mode. Called after
    /// `useBaseInstanceDrawing`, for each processor; null is ignored.
    static void setup(GLSLMacroProcessor* processor);

    /// Draw calls, batches and indices since the last time this was asked.
    static quint64 getAndResetTotalDrawCalls();
    static quint64 getAndResetTotalDrawBatches();
    static quint64 getAndResetTotalDrawIndices();

    /// Number of living objects.
    static int NumAlive();

private:
    friend struct DrawBuffersTestAccess;

    using DrawArraysFunction = void(VRK_GLAPIENTRY*)(GLenum, GLint, GLsizei, GLsizei, GLuint);
    using DrawElementsFunction = void(VRK_GLAPIENTRY*)(GLenum, GLsizei, GLenum, const void*, GLsizei, GLint, GLuint);

    // Hidden, so that calls of one another are inlined: a draw is to cost little more than its OpenGL calls.
    Q_DECL_HIDDEN bool drawInMode(ShaderProgram* program, const QList<int>* commandSubset);
    Q_DECL_HIDDEN bool drawBaseInstance(const QList<int>* commandSubset);
    Q_DECL_HIDDEN bool drawDrawID(ShaderProgram* program, const QList<int>* commandSubset);
    Q_DECL_HIDDEN bool drawMultiDrawElementsIndirect();

    Q_DECL_HIDDEN bool canDraw() const;
    Q_DECL_HIDDEN bool canDrawWhole() const;
    Q_DECL_HIDDEN bool hasIndicesBound() const;
    Q_DECL_HIDDEN bool canDrawCommands(const QList<int>* commandSubset) const;
    Q_DECL_HIDDEN void drawInstances(ShaderProgram* program, int location);
    Q_DECL_HIDDEN void drawCommands(ShaderProgram* program, int location, const QList<int>* commandSubset);

    GLenum _primitiveType = GLenum(-1);
    GLenum _indexType = 0;
    int _indexCount = 0;
    GLuint _vertexCount = 0;
    size_t _indexBufferOffset = 0;
    int _baseVertex = 0;
    int _instanceCount = 1;
    int _drawIDBase = 0;
    QSharedPointer<VertexArrayObject> _vao;
    QSharedPointer<BufferObject> _boIndex;
    QSharedPointer<BufferObject> _boCommands;
    QSharedPointer<UniformBufferObject> _commandsUniform;
    QList<DrawElementsIndirectCommand> _commands;
    int _commandsCount = 0;
    QList<int> _commandIndexCounts;
    QList<size_t> _commandIndexOffsets;
    QList<int> _commandBaseVertices;
    bool _useMultiDrawIndirect = false;

    static DrawArraysFunction _drawArraysInstancedBaseInstance;
    static DrawElementsFunction _drawElementsInstancedBaseVertexBaseInstance;
    Q_DECL_HIDDEN static bool _useBaseInstanceDrawing;
    Q_DECL_HIDDEN static quint64 _totalDrawCalls;
    Q_DECL_HIDDEN static quint64 _totalDrawBatches;
    Q_DECL_HIDDEN static quint64 _totalDrawIndices;
};

} // namespace Harrow::Vrk
