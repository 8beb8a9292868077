// SPDX-License-Identifier: MIT
#include "ZelRenderCubemap.h"

#include "AutoBinder.h"
#include "BufferObject.h"
#include "CubemapFaces.h"
#include "Diagnostics.h"
#include "DrawBuffers.h"
#include "FramebufferObject.h"
#include "GLFunctions.h"
#include "GLUtilities.h"
#include "OpenGLDeviceContext.h"
#include "ShaderProgram.h"
#include "Texture.h"
#include "VertexArrayObject.h"
#include "ZelRenderCubemapMatrices.h"

#include <QElapsedTimer>
#include <QMatrix4x4>
#include <QSharedPointer>
#include <QString>
#include <QVarLengthArray>
#include <QVariant>

#include <algorithm>
#include <iterator>
#include <limits>

namespace Harrow::Vrk
{
namespace
{

// ---- the quad: each pixel carries (1, s, t) ------------------------------------------------------------------------

constexpr int kQuadVertices = 4;
constexpr float kQuadPositions[] = {
    -1.0f, -1.0f, //
    1.0f,  -1.0f, //
    -1.0f, 1.0f,  //
    1.0f,  1.0f,  //
};
constexpr float kQuadNormals[] = {
    1.0f, -1.0f, -1.0f, //
    1.0f, 1.0f,  -1.0f, //
    1.0f, -1.0f, 1.0f,  //
    1.0f, 1.0f,  1.0f,  //
};
static_assert(std::size(kQuadPositions) == std::size_t(kQuadVertices) * 2);
static_assert(std::size(kQuadNormals) == std::size_t(kQuadVertices) * 3);

template <std::size_t Count>
bool uploadAttribute(OpenGLDeviceContext& context, VertexArrayObject& vao, const char* name,
                     const float (&values)[Count])
{
    const QSharedPointer<BufferObject> buffer = context.newBuffer();
    if (buffer.isNull())
        return false;
    buffer->setTarget(GL_ARRAY_BUFFER);
    return vao.upload(QString::fromLatin1(name), buffer, values, static_cast<int>(Count),
                      static_cast<int>(Count) / kQuadVertices, GL_STATIC_DRAW);
}

bool uploadQuad(DrawBuffers& quad)
{
    const QSharedPointer<OpenGLDeviceContext> context = OpenGLDeviceContext::current();
    if (context.isNull())
        return false;
    const QSharedPointer<VertexArrayObject> vao = context->newVAO();
    if (vao.isNull())
        return false;
    quad.setVAO(vao);
    const bool hasPositions = uploadAttribute(*context, *vao, "zel_Vertex", kQuadPositions);
    const bool hasNormals = uploadAttribute(*context, *vao, "zel_Normal", kQuadNormals);
    return hasPositions && hasNormals;
}

// ---- faces ---------------------------------------------------------------------------------------------------------

struct Color
{
    float r, g, b;
};

// What a face holds until it is drawn, so that one that never was shows, and shows which it is.
constexpr Color kFaceColors[kCubemapFaces] = {
    {1, 0, 0}, // red
    {0, 1, 0}, // green
    {0, 0, 1}, // blue
    {1, 1, 0}, // yellow
    {0, 1, 1}, // cyan
    {1, 0, 1}, // magenta
};

/// Arrays came with OpenGL 4.0.
bool hasCubemapArrays()
{
    return openGlVersionSupported(4, 0) || hasGLExtension("GL_ARB_texture_cube_map_array");
}

/// No more than OpenGL can be asked for.
GLsizei layersOf(int cubes)
{
    constexpr qint64 kMax = std::numeric_limits<GLsizei>::max();
    return static_cast<GLsizei>(std::clamp(qint64(cubes) * kCubemapFaces, -kMax, kMax));
}

void logUnhandledTarget(unsigned target)
{
    VRK_LOG_DEBUG("[ !! ] Unhandled Texture Type 0x%X", target);
}

/// One texture for each cube of a batch, gone with the framebuffer. Nothing is drawn into them.
void makeBatchTextures(FramebufferObject& framebuffer, int count, int internalFormat, int size)
{
    for (int slot = 0; slot < count; ++slot)
    {
        auto* const texture = new Texture(&framebuffer);
        texture->setTarget(GL_TEXTURE_2D);
        // Without a unit of its own the image would go into the texture that the active one holds.
        if (!texture->bind())
            continue;
        texture->create2D(GL_TEXTURE_2D, internalFormat, size, size);
        texture->unbind();
    }
}

} // namespace

ZelRenderCubemapBase::ZelRenderCubemapBase() : _quad(std::make_unique<DrawBuffers>(nullptr))
{
    if (!uploadQuad(*_quad))
        VRK_LOG_DEBUG("Failed to upload buffers.");
    _quad->setPrimitiveType(GL_TRIANGLE_STRIP);
    _quad->setVertexCount(kQuadVertices);
}

ZelRenderCubemapBase::~ZelRenderCubemapBase()
{
    _quad.reset();
    _program.reset();
    glFlush();
}

bool ZelRenderCubemapBase::createProgram()
{
    return _program != nullptr;
}

bool ZelRenderCubemapBase::setupFace(int face)
{
    setUniform(QStringLiteral("u_ZelNormalMatrix"), QVariant::fromValue(cubemapFaceNormalMatrix(face)));
    return hasLinkedProgram();
}

void ZelRenderCubemapBase::beginProgram() {}

void ZelRenderCubemapBase::endProgram() {}

void ZelRenderCubemapBase::setArrayCubes(int cubes)
{
    _arrayCubes = cubes;
}

bool ZelRenderCubemapBase::hasLinkedProgram() const
{
    return _program && _program->isLinked();
}

void ZelRenderCubemapBase::setUniform(const QString& name, const QVariant& value)
{
    // A look-up in a program that there is none of would be an error of OpenGL's.
    if (hasLinkedProgram())
        _program->setUniform(name, value);
}

// ---- a new texture -------------------------------------------------------------------------------------------------

Texture* ZelRenderCubemapBase::renderToNewTexture(unsigned target, int internalFormat, int size)
{
    if (target == GL_TEXTURE_CUBE_MAP_ARRAY && !hasCubemapArrays())
    {
        logUnhandledTarget(target);
        return nullptr;
    }
    auto texture = std::make_unique<Texture>(target, internalFormat, size, size, 1, nullptr);
    if (!texture->bind())
        return nullptr;
    allocate(target, internalFormat, size);
    const bool isRendered = render(*texture, internalFormat, size);
    if (isRendered)
    {
        // Bound still, but another unit is active by now.
        const AutoBinder binder(texture.get());
        glGenerateMipmap(target);
    }
    texture->unbind(); // before it may go: it would keep its unit
    return isRendered ? texture.release() : nullptr;
}

void ZelRenderCubemapBase::allocate(unsigned target, int internalFormat, int size) const
{
    const unsigned format = formatFromInternalFormat(static_cast<unsigned>(internalFormat));
    const unsigned type = typeFromInternalFormat(static_cast<unsigned>(internalFormat));
    if (target == GL_TEXTURE_CUBE_MAP)
        for (int face = 0; face < kCubemapFaces; ++face)
            glTexImage2D(cubemapFaceTarget(face), 0, internalFormat, size, size, 0, format, type, nullptr);
    else if (target == GL_TEXTURE_CUBE_MAP_ARRAY)
        glTexImage3D(target, 0, internalFormat, size, size, layersOf(_arrayCubes), 0, format, type, nullptr);
    else
        logUnhandledTarget(target); // and goes on: the render stops for it

    for (const GLenum wrap : {GL_TEXTURE_WRAP_S, GL_TEXTURE_WRAP_T, GL_TEXTURE_WRAP_R})
        glTexParameteri(target, wrap, GL_CLAMP_TO_EDGE);
    glTexParameteri(target, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(target, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
}

// ---- the render ----------------------------------------------------------------------------------------------------

bool ZelRenderCubemapBase::render(const Texture& texture, int internalFormat, int size)
{
    QElapsedTimer timer;
    timer.start();
    _layerCount = texture.target() == GL_TEXTURE_CUBE_MAP_ARRAY ? texture.depth(0) / kCubemapFaces : 1;

    beginProgram();
    const bool hasProgram = createProgram();
    endProgram();
    if (!hasProgram)
    {
        VRK_LOG_DEBUG("[ !! ] Failed to create Shader");
        return false;
    }

    if (!enableQuadArrays())
        return false;
    FramebufferObject framebuffer(nullptr);
    const AutoBinder framebufferBinder(&framebuffer);
    makeBatchTextures(framebuffer, _activeBatch, internalFormat, size);

    glDisable(GL_BLEND);
    const AutoBinder programBinder(_program.get());
    setUniform(QStringLiteral("u_ZelModelViewProjectionMatrix"), QMatrix4x4());
    for (_layer = 0; _layer < _layerCount; _layer += _batchSize)
    {
        _activeBatch = std::min(_batchSize, _layerCount - _layer);
        if (!renderBatch(texture, size))
            return false;
    }

    glFlush();
    VRK_LOG_DEBUG("rendercubemap() took %d ms", static_cast<int>(timer.elapsed()));
    return true;
}

bool ZelRenderCubemapBase::enableQuadArrays()
{
    const QSharedPointer<VertexArrayObject> vao = _quad->VAO();
    VRK_ASSERT_RETURN(!vao.isNull(), false, "Vertex Array Object is NULL on rendercubemap");
    const AutoBinder binder(vao.data());
    vao->enableShaderProgramArrays(_program.get());
    return true;
}

bool ZelRenderCubemapBase::renderBatch(const Texture& texture, int size)
{
    for (int face = 0; face < kCubemapFaces; ++face)
    {
        _face = face;
        if (!attachFace(texture))
        {
            logUnhandledTarget(texture.target());
            return false;
        }
        glViewport(0, 0, size, size);
        setDrawBuffers();
        clearFace();
        if (setupFace(face))
            drawQuad();
        finishFace();
    }
    return true;
}

bool ZelRenderCubemapBase::attachFace(const Texture& texture) const
{
    const GLuint name = texture.textureID();
    if (texture.target() == GL_TEXTURE_CUBE_MAP)
    {
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, cubemapFaceTarget(_face), name, 0);
        return true;
    }
    if (texture.target() == GL_TEXTURE_CUBE_MAP_ARRAY)
    {
        for (int slot = 0; slot < _activeBatch; ++slot)
            glFramebufferTextureLayer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0 + static_cast<GLenum>(slot), name, 0,
                                      _face + (_layer + slot) * kCubemapFaces);
        return true;
    }
    return false;
}

void ZelRenderCubemapBase::setDrawBuffers() const
{
    QVarLengthArray<GLenum, 8> attachments;
    for (int slot = 0; slot < _activeBatch; ++slot)
        attachments.append(GL_COLOR_ATTACHMENT0 + static_cast<GLenum>(slot));
    glDrawBuffers(static_cast<GLsizei>(attachments.size()), attachments.constData());
}

void ZelRenderCubemapBase::clearFace() const
{
    const Color& color = kFaceColors[_face];
    glClearColor(color.r, color.g, color.b, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
}

void ZelRenderCubemapBase::drawQuad()
{
    _quad->bind();
    _quad->draw();
    _quad->unbind();
    // One face after the other: drivers give up on a draw that takes too long, and those of a filter take long.
    glFlush();
    glFinish();
}

} // namespace Harrow::Vrk
