// SPDX-License-Identifier: MIT
#include "TextureProcessing.h"

#include "Diagnostics.h"
#include "DrawBuffers.h"
#include "FramebufferObject.h"
#include "FullscreenQuad.h"
#include "GLUtilities.h"
#include "ShaderProgram.h"
#include "Texture.h"

#include <QMessageLogger>
#include <QVariant>

#include <algorithm>
#include <iterator>
#include <memory>

namespace Harrow::Vrk
{
namespace
{

// ---- the shaders of the in-place operations: their texts are interface, oddities included ---------------------------

#define VRK_PROCESSING_SHADER(uniforms, statements)                                                                    \
    "#version 150\n"                                                                                                   \
    "uniform sampler2D u_Src;\n" uniforms "in vec2 vo_TexCoord;\n"                                                     \
    "out vec4 out_FragColor;\n"                                                                                        \
    "void main()\n"                                                                                                    \
    "{\n" statements "}\n"

constexpr char kFlipY[] =
    VRK_PROCESSING_SHADER("", "    out_FragColor = texture(u_Src, vec2(vo_TexCoord.x, 1.0 - vo_TexCoord.y));\n");

constexpr char kSrgbToLinear[] = VRK_PROCESSING_SHADER("", "    vec4 color = texture(u_Src, vo_TexCoord);\n"
                                                           "    vec4 res = pow((color + 0.055) / 1.055, vec4(2.4));\n"
                                                           "    out_FragColor = res;\n");

constexpr char kLinearToSrgb[] =
    VRK_PROCESSING_SHADER("", "    vec4 color = texture(u_Src, vo_TexCoord);\n"
                              "    vec4 res = vec4(vec3(1.055 * pow(color.rgb, vec3(1 / 2.4)) - 0.055), color.a);\n"
                              "    out_FragColor = res;\n");

constexpr char kPremultiply[] = VRK_PROCESSING_SHADER("", "    vec4 color = texture(u_Src, vo_TexCoord);\n"
                                                          "    out_FragColor = vec4(color.rgb * color.a, color.a);\n");

constexpr char kRemapColorRange[] =
    VRK_PROCESSING_SHADER("uniform float u_lowValue;\n"
                          "uniform float u_highValue;\n",
                          "    vec4 color = texture(u_Src, vo_TexCoord);\n"
                          "    color.rgb = color.rgb * (u_highValue - u_lowValue) + u_lowValue, vec3(0.0);\n"
                          "    out_FragColor = color;\n");

#undef VRK_PROCESSING_SHADER

// ---- programs ------------------------------------------------------------------------------------------------------

std::unique_ptr<ShaderProgram> newTextureShader()
{
    auto program = std::make_unique<ShaderProgram>(nullptr);
    program->setFragDataLocations({QStringLiteral("out_FragColor")});
    program->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("passthroughVS.glslc"));
    return program;
}

// ---- one pass ------------------------------------------------------------------------------------------------------

void setUniforms(ShaderProgram& program, const QHash<QString, QVariant>& uniforms, const Texture& source)
{
    for (auto uniform = uniforms.cbegin(); uniform != uniforms.cend(); ++uniform)
        program.setUniform(uniform.key(), uniform.value());
    program.setUniform(QStringLiteral("u_Src"), source.unit()); // last, so that it wins
}

void beginPass(int width, int height)
{
    glDisable(GL_BLEND);
    glDisable(GL_DEPTH_TEST);
    glDepthMask(GL_FALSE);
    glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    glViewport(0, 0, width, height);
}

void endPass()
{
    glDepthMask(GL_TRUE);
    glEnable(GL_DEPTH_TEST);
}

/// With the program in use, the source bound and the destination's framebuffer in force.
void drawQuad(DrawBuffers& quad, ShaderProgram& program, const QHash<QString, QVariant>& uniforms,
              const Texture& source, int width, int height)
{
    quad.bind();
    setUniforms(program, uniforms, source);
    beginPass(width, height);
    quad.draw();
    endPass();
    quad.unbind();
}

void makeMipmaps(Texture& texture)
{
    // Without a unit of its own the call would meet whatever texture the active one holds.
    if (!texture.bind())
        return;
    glGenerateMipmap(texture.target());
    texture.unbind();
}

/// False, with the destination as it was, when the pass cannot be made at all. How it went is not looked at.
bool process(ShaderProgram& program, const QHash<QString, QVariant>& uniforms, Texture& source, Texture& destination)
{
    if (!program.bind())
        return false;
    if (!source.bind())
    {
        program.unbind();
        return false;
    }
    const int width = source.width(0);
    const int height = source.height(0);
    auto framebuffer = std::make_unique<FramebufferObject>(nullptr);
    framebuffer->bind();
    framebuffer->attach(&destination, GL_COLOR_ATTACHMENT0, 0);
    framebuffer->setDrawBuffers();
    const QSharedPointer<DrawBuffers> quad = newFullscreenQuadFor(program, "ProcessTexture");
    if (quad)
        drawQuad(*quad, program, uniforms, source, width, height);
    framebuffer->detach(GL_COLOR_ATTACHMENT0);
    framebuffer->unbind();
    framebuffer.reset();
    source.unbind();
    program.unbind();
    if (!quad)
        return false;
    makeMipmaps(destination);
    return true;
}

bool replace(Texture*& texture, const char* shader, const QHash<QString, QVariant>& uniforms = {})
{
    std::unique_ptr<ShaderProgram> program(MakeTextureShaderFromString(QString::fromLatin1(shader)));
    if (!program)
        return false;
    std::unique_ptr<Texture> copy(WritableCopyOfTexture(texture, 0, 0));
    if (!copy || !process(*program, uniforms, *texture, *copy))
        return false;
    program.reset(); // before the old texture
    delete texture;
    texture = copy.release();
    return true;
}

// ---- copies --------------------------------------------------------------------------------------------------------

/// What a writable copy takes over from its source, in this order.
constexpr GLenum kCopiedParameters[] = {GL_TEXTURE_MIN_FILTER, GL_TEXTURE_MAG_FILTER, GL_TEXTURE_WRAP_S,
                                        GL_TEXTURE_WRAP_T,     GL_TEXTURE_BASE_LEVEL, GL_TEXTURE_MAX_LEVEL};

GLenum writableFormat(const Texture& source, int level)
{
    const GLint internalFormat = source.internalFormat(level);
    GLint compressed = GL_FALSE;
    glGetTexLevelParameteriv(source.target(), level, GL_TEXTURE_COMPRESSED, &compressed);
    return compressed != GL_FALSE ? GL_RGBA : static_cast<GLenum>(internalFormat);
}

struct BlitForm
{
    int externalFormat;
    GLenum attachment;
    GLbitfield mask;
};

constexpr BlitForm kBlitForms[] = {
    {GL_DEPTH_COMPONENT, GL_DEPTH_ATTACHMENT, GL_DEPTH_BUFFER_BIT},
    {GL_DEPTH_STENCIL, GL_DEPTH_STENCIL_ATTACHMENT, GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT},
};
constexpr BlitForm kColorBlit = {0, GL_COLOR_ATTACHMENT0, GL_COLOR_BUFFER_BIT};

BlitForm blitFormOf(TextureFormat format)
{
    const auto* const found = std::find_if(std::begin(kBlitForms), std::end(kBlitForms),
                                           [external = ExternalFormat(format)](const BlitForm& row)
                                           { return row.externalFormat == external; });
    return found != std::end(kBlitForms) ? *found : kColorBlit;
}

} // namespace

void BlitTexture(const Texture* source, const Texture* destination, TextureFormat format, int width, int height)
{
    VRK_ASSERT_RETURN(nullptr != source && nullptr != destination, , "Texture is NULL on BlitTexture");
    const FramebufferObject reading(nullptr);
    const FramebufferObject drawing(nullptr);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, reading.getFBO());
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, drawing.getFBO());

    const BlitForm form = blitFormOf(format);
    glFramebufferTexture2D(GL_READ_FRAMEBUFFER, form.attachment, source->target(), source->textureID(), 0);
    glFramebufferTexture2D(GL_DRAW_FRAMEBUFFER, form.attachment, destination->target(), destination->textureID(), 0);
    glBlitFramebuffer(0, 0, width, height, 0, 0, width, height, form.mask, GL_NEAREST);
    glFramebufferTexture2D(GL_READ_FRAMEBUFFER, form.attachment, source->target(), 0, 0);
    glFramebufferTexture2D(GL_DRAW_FRAMEBUFFER, form.attachment, destination->target(), 0, 0);

    glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, 0);
}

ShaderProgram* MakeTextureShaderFromFile(const QString& path)
{
    std::unique_ptr<ShaderProgram> program = newTextureShader();
    program->addShaderFromFile(GL_FRAGMENT_SHADER, path);
    return program->compile() && program->link() ? program.release() : nullptr;
}

ShaderProgram* MakeTextureShaderFromString(const QString& fragmentSource)
{
    std::unique_ptr<ShaderProgram> program = newTextureShader();
    program->addShader(GL_FRAGMENT_SHADER, fragmentSource, QString());
    if (!program->compile())
    {
        QMessageLogger().warning("shader program failed to compile:\n%s", program->log().toUtf8().constData());
        return nullptr;
    }
    if (!program->link())
    {
        QMessageLogger().warning("shader program failed to link:\n%s", program->log().toUtf8().constData());
        return nullptr;
    }
    return program.release();
}

void ProcessTexture(ShaderProgram* program, const QHash<QString, QVariant>& uniforms, Texture* source,
                    Texture* destination)
{
    VRK_ASSERT_RETURN(nullptr != program, , "Shader Program is NULL on ProcessTexture");
    VRK_ASSERT_RETURN(nullptr != source && nullptr != destination, , "Texture is NULL on ProcessTexture");
    process(*program, uniforms, *source, *destination);
}

Texture* WritableCopyOfTexture(Texture* source, GLenum internalFormat, int level)
{
    VRK_ASSERT_RETURN(nullptr != source, nullptr, "Texture is NULL on WritableCopyOfTexture");
    if (!source->bind())
        return nullptr;
    const int width = source->width(level);
    const int height = source->height(level);
    if (internalFormat == 0)
        internalFormat = writableFormat(*source, level);
    GLint parameters[std::size(kCopiedParameters)] = {};
    for (size_t i = 0; i < std::size(kCopiedParameters); ++i)
        glGetTexParameteriv(source->target(), kCopiedParameters[i], &parameters[i]);
    const GLenum format = formatFromInternalFormat(internalFormat);
    const GLenum type = typeFromInternalFormat(internalFormat);
    source->unbind();

    auto copy = std::make_unique<Texture>(nullptr);
    copy->setTarget(source->target());
    if (level == 0)
        copy->setSize(0, static_cast<int>(internalFormat), width, height, 1);
    if (!copy->bind())
        return nullptr;
    for (size_t i = 0; i < std::size(kCopiedParameters); ++i)
        glTexParameteri(copy->target(), kCopiedParameters[i], parameters[i]);
    glTexImage2D(copy->target(), level, static_cast<GLint>(internalFormat), width, height, 0, format, type, nullptr);
    copy->unbind();
    return copy.release();
}

bool FlipY(Texture*& texture)
{
    VRK_ASSERT_RETURN(nullptr != texture, false, "Texture is NULL on FlipY");
    return replace(texture, kFlipY);
}

bool LinearToSrgb(Texture*& texture)
{
    return texture && replace(texture, kLinearToSrgb);
}

bool SrgbToLinear(Texture*& texture)
{
    return texture && replace(texture, kSrgbToLinear);
}

bool Premultiply(Texture*& texture)
{
    return texture && replace(texture, kPremultiply);
}

bool RemapColorRange(Texture*& texture, float low, float high)
{
    if (!texture || (low == 0.0f && high == 1.0f))
        return false;
    return replace(texture, kRemapColorRange,
                   {{QStringLiteral("u_lowValue"), low}, {QStringLiteral("u_highValue"), high}});
}

} // namespace Harrow::Vrk
