// SPDX-License-Identifier: MIT
#include "OpenGLDeviceContext.h"

#include "BufferObject.h"
#include "Diagnostics.h"
#include "DrawBuffers.h"
#include "GLPlatform.h"
#include "UniformBufferObject.h"
#include "VertexArrayObject.h"

#include <QString>

#include <iterator>
#include <utility>

namespace Harrow::Vrk
{
namespace
{

// Two triangles that share the diagonal from the top left to the bottom right.
constexpr int kQuadVertices = 6;
constexpr float kQuadPositions[] = {
    -1.0f, 1.0f,  -1.0f, //
    -1.0f, -1.0f, -1.0f, //
    1.0f,  -1.0f, -1.0f, //
    1.0f,  -1.0f, -1.0f, //
    1.0f,  1.0f,  -1.0f, //
    -1.0f, 1.0f,  -1.0f, //
};
constexpr float kQuadTexCoords[] = {
    0.0f, 1.0f, //
    0.0f, 0.0f, //
    1.0f, 0.0f, //
    1.0f, 0.0f, //
    1.0f, 1.0f, //
    0.0f, 1.0f, //
};
static_assert(std::size(kQuadPositions) == std::size_t(kQuadVertices) * 3);
static_assert(std::size(kQuadTexCoords) == std::size_t(kQuadVertices) * 2);

// The instance of the process. By the time it is released at exit the context of its quad, or the driver itself, may be
// gone, so the objects that still live are told to leave OpenGL alone.
// The pointer itself is never destroyed: whoever asks later than that finds null.
QSharedPointer<OpenGLDeviceContext>& currentInstance =
    *new QSharedPointer<OpenGLDeviceContext>(new OpenGLDeviceContext);

struct ReleaseAtExit
{
    ~ReleaseAtExit()
    {
        GLPlatform::markProcessEnding();
        currentInstance.clear();
    }
};

const ReleaseAtExit releaseAtExit;

bool addQuadAttribute(VertexArrayObject& vao, const char* name, const QSharedPointer<BufferObject>& buffer,
                      int valuesPerVertex)
{
    VRK_ASSERT_RETURN(!buffer.isNull(), false, "Buffer Object is NULL on newFullscreenQuad");
    buffer->setTarget(GL_ARRAY_BUFFER);
    return vao.upload(QString::fromLatin1(name), buffer, valuesPerVertex, GL_FLOAT);
}

template <size_t Count> void fill(BufferObject& buffer, const float (&values)[Count])
{
    buffer.bind();
    buffer.upload(values, static_cast<int>(Count), GL_STATIC_DRAW);
    buffer.unbind();
}

} // namespace

OpenGLDeviceContext::OpenGLDeviceContext() = default;
OpenGLDeviceContext::OpenGLDeviceContext(const OpenGLDeviceContext& other) = default;
OpenGLDeviceContext& OpenGLDeviceContext::operator=(const OpenGLDeviceContext& other) = default;
OpenGLDeviceContext::~OpenGLDeviceContext() = default;

QSharedPointer<BufferObject> OpenGLDeviceContext::newBuffer(unsigned int bufferId)
{
    return QSharedPointer<BufferObject>(new BufferObject(bufferId, nullptr));
}

QSharedPointer<BufferObject> OpenGLDeviceContext::newBuffer()
{
    return QSharedPointer<BufferObject>(new BufferObject(nullptr));
}

QSharedPointer<DrawBuffers> OpenGLDeviceContext::fullscreenQuad()
{
    if (!_fullscreenQuad)
        _fullscreenQuad = newFullscreenQuad();
    return _fullscreenQuad;
}

QSharedPointer<DrawBuffers> OpenGLDeviceContext::newFullscreenQuad()
{
    QSharedPointer<DrawBuffers> quad(new DrawBuffers(nullptr));
    const QSharedPointer<VertexArrayObject> vao = newVAO();
    VRK_ASSERT_RETURN(!vao.isNull(), {}, "Vertex Array Object is NULL on newFullscreenQuad");
    quad->setVAO(vao);

    const QSharedPointer<BufferObject> positions = newBuffer();
    if (!addQuadAttribute(*vao, "va_Vertex", positions, 3))
        return {};
    const QSharedPointer<BufferObject> texCoords = newBuffer();
    if (!addQuadAttribute(*vao, "va_TexCoord", texCoords, 2))
        return {};
    fill(*positions, kQuadPositions);
    fill(*texCoords, kQuadTexCoords);

    quad->setVertexCount(kQuadVertices);
    quad->setPrimitiveType(GL_TRIANGLES);
    return quad;
}

QSharedPointer<VertexArrayObject> OpenGLDeviceContext::newVAO()
{
    return QSharedPointer<VertexArrayObject>(new VertexArrayObject(nullptr));
}

QSharedPointer<UniformBufferObject> OpenGLDeviceContext::newUniformBuffer(const QString& blockName,
                                                                          QSharedPointer<BufferObject> buffer)
{
    return QSharedPointer<UniformBufferObject>(new UniformBufferObject(blockName, std::move(buffer), nullptr));
}

QSharedPointer<OpenGLDeviceContext> OpenGLDeviceContext::current()
{
    return currentInstance;
}

void OpenGLDeviceContext::resetContext()
{
    currentInstance = QSharedPointer<OpenGLDeviceContext>(new OpenGLDeviceContext);
}

} // namespace Harrow::Vrk
