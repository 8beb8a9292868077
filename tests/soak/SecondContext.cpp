// SPDX-License-Identifier: MIT
#include "SecondContext.h"

#include "Random.h"

#include "AutoBinder.h"
#include "DrawBuffers.h"
#include "FramebufferObject.h"
#include "GLFunctions.h"
#include "OpenGLDeviceContext.h"
#include "ShaderProgram.h"
#include "Texture.h"
#include "TextureProcessing.h"
#include "VertexArrayObject.h"
#include "support/HeadlessContext.h"

#include <QVariant>

#include <array>
#include <memory>
#include <vector>

namespace vrksoak
{

using namespace Harrow::Vrk;

namespace
{

constexpr int kSide = 16;

const QString kCopy = QStringLiteral(R"(#version 150
in vec2 vo_TexCoord;
uniform sampler2D u_Src;
out vec4 out_FragColor;
void main()
{
    out_FragColor = texture(u_Src, vo_TexCoord);
}
)");

std::unique_ptr<Texture> newColored(GLubyte value)
{
    auto texture = std::make_unique<Texture>(nullptr);
    texture->create2D(GL_TEXTURE_2D, GL_RGBA8, kSide, kSide);
    const std::vector<GLubyte> texels(4 * kSide * kSide, value);
    const AutoBinder bound(texture.get());
    glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, kSide, kSide, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
    return texture;
}

/// Draws `source` into a texture of this context's framebuffer and reads a pixel back.
bool drawsCopy(Texture& source, GLubyte expected)
{
    const std::unique_ptr<ShaderProgram> program(MakeTextureShaderFromString(kCopy));
    const std::unique_ptr<Texture> target = newColored(0);
    const QSharedPointer<DrawBuffers> quad = OpenGLDeviceContext::current()->newFullscreenQuad();
    FramebufferObject framebuffer(nullptr);
    const AutoBinder framebufferBound(&framebuffer);
    framebuffer.attach(target.get(), GL_COLOR_ATTACHMENT0, 0);
    framebuffer.setDrawBuffers();
    glViewport(0, 0, kSide, kSide);
    std::array<GLubyte, 4> pixel = {};
    if (program)
    {
        const AutoBinder programBound(program.get());
        const AutoBinder sourceBound(&source);
        const AutoBinder quadBound(quad.get());
        program->setUniform(QStringLiteral("u_Src"), QVariant(source.unit()));
        quad->VAO()->enableShaderProgramArrays(program.get());
        quad->draw(program.get());
        glReadPixels(kSide / 2, kSide / 2, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel.data());
    }
    framebuffer.detachAll();
    return pixel == std::array<GLubyte, 4>{expected, expected, expected, expected};
}

} // namespace

void useSecondContext(Test::HeadlessContext& first, Random& random, QString& error)
{
    const auto value = GLubyte(1 + random.below(255));
    const std::unique_ptr<Texture> shared = newColored(value);
    glFinish(); // what one context has written another one sees when it is done
    {
        Test::HeadlessContext second(&first);
        if (!second.makeCurrent())
            error = QStringLiteral("there is no second context");
        else if (!drawsCopy(*shared, value))
            error = QStringLiteral("a second context does not draw the texture of the first");
        first.makeCurrent();
    }
}

} // namespace vrksoak
