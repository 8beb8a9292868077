// SPDX-License-Identifier: MIT
// Out of a cube map: into a level of another one, and into a row of its faces.
#include "ZelImageCubemapUtils.h"

#include "AutoBinder.h"
#include "CubemapFaces.h"
#include "Diagnostics.h"
#include "DrawBuffers.h"
#include "FramebufferObject.h"
#include "FullscreenQuad.h"
#include "GLFunctions.h"
#include "GLUtilities.h"
#include "ShaderProgram.h"
#include "Texture.h"
#include "ZelRenderCubemapMatrices.h"

#include <QSharedPointer>
#include <QVariant>

#include <array>
#include <limits>
#include <memory>

namespace Harrow::Vrk::ZelImageCubemapUtils
{
namespace
{

struct LevelForm
{
    int width;
    int height;
    int internalFormat;

    bool operator==(const LevelForm&) const = default;

    /// Whether there is such a level, and a row of six of it can be counted.
    bool canBeUnfolded() const
    {
        return width > 0 && height > 0 && width <= std::numeric_limits<int>::max() / kCubemapFaces;
    }
};

/// Of a bound texture on the active unit; of a cube map the positive X face.
LevelForm levelForm(const Texture& texture, int level)
{
    return {texture.width(level), texture.height(level), texture.internalFormat(level)};
}

/// Of a bound texture on the active unit. A maximum below 0 is no limit.
bool isWithinMaxLevel(const Texture& texture, int level)
{
    if (level < 0)
        return false;
    GLint maxLevel = 0;
    glGetTexParameteriv(texture.target(), GL_TEXTURE_MAX_LEVEL, &maxLevel);
    return (maxLevel < 1 || level <= maxLevel) && (maxLevel != 0 || level == 0);
}

// ---- copying -------------------------------------------------------------------------------------------------------

bool blitFaces(const Texture& source, const Texture& destination, int level, int width, int height)
{
    const FramebufferObject reading(nullptr);
    const FramebufferObject drawing(nullptr);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, reading.getFBO());
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, drawing.getFBO());
    bool isComplete = true;
    for (int face = 0; face < kCubemapFaces && isComplete; ++face)
    {
        glFramebufferTexture2D(GL_READ_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, cubemapFaceTarget(face), source.textureID(),
                               0);
        glFramebufferTexture2D(GL_DRAW_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, cubemapFaceTarget(face),
                               destination.textureID(), level);
        isComplete = glCheckFramebufferStatus(GL_DRAW_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
        if (isComplete)
            glBlitFramebuffer(0, 0, width, height, 0, 0, width, height, GL_COLOR_BUFFER_BIT, GL_LINEAR);
    }
    glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
    return isComplete;
}

// ---- unfolding -----------------------------------------------------------------------------------------------------

std::unique_ptr<ShaderProgram> newStripProgram()
{
    auto program = std::make_unique<ShaderProgram>(nullptr);
    program->setFragDataLocations({QStringLiteral("out_FragColor")});
    program->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("CubeRender_ToLinearVS.glslc"));
    program->addShaderFromFile(GL_FRAGMENT_SHADER, QStringLiteral("CubeRender_ToLinearFS.glslc"));
    if (!program->compile() || !program->link())
        program.reset(); // it has reported that
    return program;
}

/// Null without a texture unit.
std::unique_ptr<Texture> newStrip(const LevelForm& face)
{
    const int width = face.width * kCubemapFaces;
    auto strip = std::make_unique<Texture>(GL_TEXTURE_2D, face.internalFormat, width, face.height, 1, nullptr);
    if (!strip->bind())
        return nullptr;
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    const auto internalFormat = static_cast<unsigned>(face.internalFormat);
    glTexImage2D(GL_TEXTURE_2D, 0, face.internalFormat, width, face.height, 0, formatFromInternalFormat(internalFormat),
                 typeFromInternalFormat(internalFormat), nullptr);
    glGenerateMipmap(GL_TEXTURE_2D); // of nothing as yet, and none after the drawing
    strip->unbind();
    return strip;
}

/// With program and source bound. False when the strip cannot be drawn into.
bool drawFaces(FramebufferObject& framebuffer, Texture& strip, ShaderProgram& program, DrawBuffers& quad,
               const LevelForm& form)
{
    const AutoBinder framebufferBinder(&framebuffer);
    const int transform = program.getUniformLocation(QStringLiteral("u_Transform"));
    glDisable(GL_BLEND);
    glDisable(GL_DEPTH_TEST);
    glDepthMask(GL_FALSE);
    glClearColor(1.0f, 1.0f, 1.0f, 1.0f);

    bool isComplete = true;
    for (int face = 0; face < kCubemapFaces && isComplete; ++face)
    {
        glViewport(face * form.width, 0, form.width, form.height);
        framebuffer.attach(&strip, GL_COLOR_ATTACHMENT0, 0);
        isComplete = glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
        if (isComplete)
        {
            if (transform >= 0)
                program.setUniform(transform, QVariant::fromValue(cubemapStripMatrix(face)));
            quad.bind();
            quad.draw();
            quad.unbind();
            glFlush();
        }
        framebuffer.detach(GL_COLOR_ATTACHMENT0); // in any case: it would count as attached for good
    }
    return isComplete;
}

/// The strip of a bound source, or null.
std::unique_ptr<Texture> drawStrip(Texture& source, const LevelForm& form)
{
    std::unique_ptr<ShaderProgram> program = newStripProgram();
    if (!program)
        return nullptr;
    std::unique_ptr<Texture> strip = newStrip(form);
    if (!strip)
        return nullptr;
    FramebufferObject framebuffer(nullptr);
    const QSharedPointer<DrawBuffers> quad = newFullscreenQuadFor(*program, "createGLCubemapStripFromTexture");
    if (!quad)
        return nullptr;
    {
        const AutoBinder programBinder(program.get());
        const AutoBinder sourceBinder(&source); // active again
        program->setUniform(QStringLiteral("u_Texture"), source.unit());
        if (!drawFaces(framebuffer, *strip, *program, *quad, form))
            strip.reset();
    }
    program.reset(); // before the framebuffer
    return strip;
}

} // namespace

Texture* createGLCubemapStripFromTexture(Texture* source, int level)
{
    VRK_ASSERT_RETURN(nullptr != source, nullptr, "Texture is NULL on createGLCubemapStripFromTexture");
    if (!source->bind())
        return nullptr;
    std::unique_ptr<Texture> strip;
    if (source->target() == GL_TEXTURE_CUBE_MAP && isWithinMaxLevel(*source, level))
    {
        const LevelForm form = levelForm(*source, level);
        std::array<GLint, 4> viewport = {};
        glGetIntegerv(GL_VIEWPORT, viewport.data());
        if (form.canBeUnfolded())
            strip = drawStrip(*source, form);
        glViewport(viewport[0], viewport[1], viewport[2], viewport[3]);
    }
    source->unbind();
    return strip.release();
}

bool copyCubeMapTextureAsLod(Texture* source, Texture* destination, int level)
{
    VRK_ASSERT_RETURN(nullptr != source && nullptr != destination, false, "Texture is NULL on copyCubeMapTextureAsLod");
    if (source->target() != GL_TEXTURE_CUBE_MAP)
        return false;
    if (!source->bind())
        return false;
    const LevelForm form = levelForm(*source, 0);
    source->unbind();
    glViewport(0, 0, form.width, form.height);

    if (destination->target() != GL_TEXTURE_CUBE_MAP || !destination->bind())
        return false;
    const bool fits = isWithinMaxLevel(*destination, level) && levelForm(*destination, level) == form;
    destination->unbind();
    return fits && blitFaces(*source, *destination, level, form.width, form.height);
}

} // namespace Harrow::Vrk::ZelImageCubemapUtils
