// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Ties named vertex attributes to buffers and sets up an OpenGL vertex array for whichever program is about to draw.
/// Attribute names are the contract between geometry and shaders; an index that already holds what the program wants
/// costs no OpenGL call.

#include "Bindable.h"
#include "Export.h"
#include "GLFunctions.h"

#include <QList>
#include <QMap>
#include <QObject>
#include <QSharedPointer>
#include <QString>

#include <cstddef>

namespace Harrow::Vrk
{

class BufferObject;
class GLContextTracker;
class ShaderProgram;

/// Made by `OpenGLDeviceContext::newVAO`. OpenGL cannot share a vertex array between contexts, so its name is made by
/// the first `bind` or `rebind`, in the context that is current then, and the object belongs to that context from then
/// on; nothing checks this later. Its buffers may be shared. All operations run on the thread of that context.
class VRKGL_EXPORT VertexArrayObject : public QObject, public Bindable
{
public:
    /// Deletes the OpenGL vertex array, so its context has to be current. A bound object is reported and its vertex
    /// array left alive. At process exit OpenGL is not called.
    ~VertexArrayObject() override;

    /// Makes the vertex array current. False, after an assertion, when it already is.
    bool bind() override;

    /// Leaves no vertex array current. False, after an assertion, when it is not bound.
    bool unbind() override;

    /// Takes the binding over from `vertexArrayObjectBound`, which is then unbound; null means plain `bind`. `changed`
    /// tells whether OpenGL's binding had to change, so that attributes and index buffer have to be set up again.
    /// This object itself is true and unchanged, bound or not. False, after an assertion, when this one is bound
    /// already or the other one is not.
    bool rebind(VertexArrayObject* vertexArrayObjectBound, bool& changed);

    /// Feeds attribute `attrName` from `bufferObj`: `valuesPerVertex` components (1 to 4) of `type` for each vertex,
    /// tightly packed from the start of the buffer, not normalised. Replaces an earlier record of that name; takes
    /// effect at the next `enableShaderProgramArrays`. A type that `isTypeSupported` denies is reported and stored.
    void registerBO(const QString& attrName, QSharedPointer<BufferObject> bufferObj, int valuesPerVertex, GLenum type);

    /// The same for interleaved data: `stride` bytes from vertex to vertex (0 for tightly packed), the first one at
    /// `offset` bytes. Integers reach the shader as integers unless `normalized`.
    void registerBO(const QString& attrName, QSharedPointer<BufferObject> bufferObj, int valuesPerVertex, GLenum type,
                    bool normalized, GLuint stride, GLuint offset);

    /// `registerBO` for a buffer that the caller fills; no data moves. False, after an assertion, for a null buffer.
    bool upload(const QString& attrName, QSharedPointer<BufferObject> bufferObj, int valuesPerVertex, GLenum type);

    /// Fills the buffer with `valueCount` floats and registers it. The buffer must have its target and must not be
    /// bound. False, with nothing stored, when the buffer is null, `valueCount` is no multiple of `valuesPerVertex`
    /// (assertions) or the buffer cannot be bound ("[ !! ] Failed to bind BO", critical). What the buffer itself says
    /// of the upload is not looked at.
    bool upload(const QString& attrName, QSharedPointer<BufferObject> bufferObj, const float* data, int valueCount,
                int valuesPerVertex, GLenum usage);
    bool upload(const QString& attrName, QSharedPointer<BufferObject> bufferObj, const QList<float>& values,
                int valuesPerVertex, GLenum usage);

    /// Overwrites `valueCount` floats of an attribute's buffer from value number `offset` on. False, after an
    /// assertion, for an unknown name, for other `valuesPerVertex` than the record's, for no whole number of vertices,
    /// or a null buffer; false too for a buffer that cannot be bound ("[ !! ] Failed to bind BO", critical). True even
    /// where the buffer denies the write.
    bool subUpload(const QString& attrName, const float* data, int valueCount, int valuesPerVertex, int offset);
    bool subUpload(const QString& attrName, const QList<float>& values, int valuesPerVertex, int offset);

    /// Maps an attribute's buffer for writing. The mapping lasts until `unmapBO`, though the buffer is unbound again.
    /// Null for an unknown name.
    void* mapBO(const QString& attrName);
    void unmapBO(const QString& attrName);

    /// Points every attribute of `program` at its record, and disables an attribute without a record: the shader reads
    /// zeros there, or what the context holds for an index that was never pointed anywhere. The object must be bound.
    /// True for a null program; false, after an assertion, at the first attribute that fails.
    bool enableShaderProgramArrays(const ShaderProgram* program);

    /// OpenGL's name, 0 before the first bind.
    GLuint getVAO() const;

    /// Whether the object is bound. An object that never was is reported by an assertion.
    bool isBound() const
    {
        return _vao != 0 ? _vaoBound : isBoundWithoutName(); // asked before every draw
    }

    /// The attribute's buffer, or null for an unknown name.
    QSharedPointer<BufferObject> bo(const QString& attrName);

    /// Always null: contexts are not compared.
    GLContextTracker* getContextTracker();

    /// Bytes of this object and its records, with those of the buffers. A buffer counts once for each attribute.
    size_t memoryEstimateCPU() const;
    /// Bytes that the buffers hold on the GPU, counted in the same way.
    size_t memoryEstimateGPU() const;

    /// True for `GL_UNSIGNED_BYTE`, `GL_UNSIGNED_SHORT`, `GL_INT`, `GL_UNSIGNED_INT`, `GL_FLOAT` and `GL_HALF_FLOAT`.
    static bool isTypeSupported(GLenum type);

    /// Number of living objects.
    static int NumAlive();

private:
    friend class OpenGLDeviceContext;
    friend struct VertexArrayObjectTestAccess;

    struct AttributeData
    {
        int _valuesPerVertex;
        GLenum type;
        bool normalized;
        GLuint stride;
        GLuint offset;
        QSharedPointer<BufferObject> bo;
    };

    // Reads GL_MAX_VERTEX_ATTRIBS, so a context must be current.
    explicit VertexArrayObject(QObject* parent);

    bool create();
    bool destroy();
    bool isBoundWithoutName() const;
    bool enableArray(const QString& attrName, int attributeIndex);
    void enableConstant(int attributeIndex);
    bool enablePointer(int attributeIndex, const AttributeData& data);
    static bool hasVertexBufferBound(const BufferObject& bufferObj);
    void dirtyAttributeName(const QString& attrName);

    GLuint _vao = 0;
    bool _vaoBound = false;
    QMap<QString, AttributeData> _attributesData;
    // What each attribute index of the vertex array was last set up from; empty when unknown.
    QList<QString> _attributeNames;
    GLContextTracker* _contextTracker = nullptr;
};

} // namespace Harrow::Vrk
