// SPDX-License-Identifier: MIT
#include "AntiAliasing.h"

#include <VrkGL/AutoBinder.h>
#include <VrkGL/AutoEnabler.h>
#include <VrkGL/DrawBuffers.h>
#include <VrkGL/OpenGLDeviceContext.h>
#include <VrkGL/ShaderProgram.h>
#include <VrkGL/Texture.h>
#include <VrkGL/TextureFileInfo.h>
#include <VrkGL/TextureIO.h>
#include <VrkGL/VertexArrayObject.h>

#include <QFile>
#include <QVariant>
#include <QVector4D>

#include <initializer_list>
#include <utility>
#include <vector>

namespace vrkview
{

using namespace Harrow::Vrk;

namespace
{

void setClampedAndLinear()
{
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 0);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
}

std::unique_ptr<Texture> newMap(const QSize& size, GLint internalFormat, GLenum format)
{
    auto map = std::make_unique<Texture>(GL_TEXTURE_2D, internalFormat, size.width(), size.height(), 1, nullptr);
    const AutoBinder bound(map.get());
    glTexImage2D(GL_TEXTURE_2D, 0, internalFormat, size.width(), size.height(), 0, format, GL_UNSIGNED_BYTE, nullptr);
    setClampedAndLinear();
    return map;
}

/// One of the tables of SMAA, which lie inside of the program.
std::unique_ptr<Texture> loadTable(const QString& name)
{
    QFile file(QStringLiteral(":/vrkview/%1").arg(name));
    if (!file.open(QIODevice::ReadOnly))
        return nullptr;
    QByteArray bytes = file.readAll();
    TextureFileInfo asStored;
    asStored.preprocessed = true;
    std::unique_ptr<Texture> table(LoadTextureFromMemory(reinterpret_cast<unsigned char*>(bytes.data()),
                                                         std::size_t(bytes.size()), asStored, name));
    if (!table)
        return nullptr;
    const AutoBinder bound(table.get());
    setClampedAndLinear();
    return table;
}

/// Textures of a pass, bound for its length, each under the name of its sampler.
class Samplers
{
public:
    Samplers(ShaderProgram& program, std::initializer_list<std::pair<const char*, Texture*>> textures)
    {
        for (const auto& [name, texture] : textures)
        {
            texture->bind();
            program.setUniform(QLatin1String(name), QVariant(texture->unit()));
            _bound.push_back(texture);
        }
    }
    ~Samplers()
    {
        for (auto texture = _bound.rbegin(); texture != _bound.rend(); ++texture)
            (*texture)->unbind();
    }
    Samplers(const Samplers&) = delete;
    Samplers& operator=(const Samplers&) = delete;

private:
    std::vector<Texture*> _bound;
};

} // namespace

AntiAliasing::AntiAliasing() = default;

AntiAliasing::~AntiAliasing()
{
    if (_framebuffer != 0)
        glDeleteFramebuffers(1, &_framebuffer);
}

bool AntiAliasing::create(AntiAliasingKind kind, const QSize& size, QString& error)
{
    _kind = kind;
    _size = size;
    if (kind == AntiAliasingKind::None)
        return true;
    _macroProcessor.addIncludePath(QStringLiteral(":/vrkview"));
    _picture = newMap(size, GL_RGBA8, GL_RGBA);
    glGenFramebuffers(1, &_framebuffer);
    return kind == AntiAliasingKind::FXAA ? createFXAA(error) : createSMAA(error);
}

AntiAliasing::Program AntiAliasing::newProgram(const QString& vertexName, const QString& fragmentName, QString& error)
{
    auto program = std::make_unique<ShaderProgram>(nullptr);
    program->setMacroProcessor(&_macroProcessor);
    program->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral(":/vrkview/%1.vert").arg(vertexName));
    program->addShaderFromFile(GL_FRAGMENT_SHADER, QStringLiteral(":/vrkview/%1.frag").arg(fragmentName));
    if (_kind == AntiAliasingKind::FXAA)
        program->addShaderFromFile(GL_FRAGMENT_SHADER, QStringLiteral("FXAA.glslc"));
    if (program->link())
        return program;
    error = QStringLiteral("the driver rejects the %1 shaders").arg(fragmentName);
    return nullptr;
}

bool AntiAliasing::createFXAA(QString& error)
{
    _fxaa = newProgram(QStringLiteral("background"), QStringLiteral("fxaa"), error);
    return _fxaa != nullptr;
}

bool AntiAliasing::createSMAA(QString& error)
{
    _edges = newMap(_size, GL_RG8, GL_RG);
    _weights = newMap(_size, GL_RGBA8, GL_RGBA);
    _area = loadTable(QStringLiteral("smaa-area.ktx"));
    _search = loadTable(QStringLiteral("smaa-search.ktx"));
    if (!_area || !_search)
    {
        error = QStringLiteral("the tables of SMAA can't be loaded");
        return false;
    }
    _edgesProgram = newProgram(QStringLiteral("smaa-edges"), QStringLiteral("smaa-edges"), error);
    _weightsProgram =
        _edgesProgram ? newProgram(QStringLiteral("smaa-weights"), QStringLiteral("smaa-weights"), error) : nullptr;
    _blendProgram =
        _weightsProgram ? newProgram(QStringLiteral("smaa-blend"), QStringLiteral("smaa-blend"), error) : nullptr;
    return _blendProgram != nullptr;
}

void AntiAliasing::apply(GLuint framebuffer)
{
    if (_kind == AntiAliasingKind::None)
        return;
    glViewport(0, 0, _size.width(), _size.height());
    glBindFramebuffer(GL_READ_FRAMEBUFFER, framebuffer);
    drawInto(_picture); // for the copy alone
    glBlitFramebuffer(0, 0, _size.width(), _size.height(), 0, 0, _size.width(), _size.height(), GL_COLOR_BUFFER_BIT,
                      GL_NEAREST);
    const AutoDisabler noDepthTest(GL_DEPTH_TEST);
    const AutoDisabler noBlending(GL_BLEND);
    if (_kind == AntiAliasingKind::FXAA)
        drawFXAA(framebuffer);
    else
        drawSMAA(framebuffer);
}

/// Directs drawing into one of our own pictures.
void AntiAliasing::drawInto(const Map& target)
{
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, _framebuffer);
    glFramebufferTexture2D(GL_DRAW_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, target->textureID(), 0);
}

/// By the bound program.
void AntiAliasing::drawPass(ShaderProgram& program)
{
    const auto width = float(_size.width());
    const auto height = float(_size.height());
    program.setUniform(QStringLiteral("u_Metrics"), QVector4D(1.0f / width, 1.0f / height, width, height));
    const QSharedPointer<DrawBuffers> quad = OpenGLDeviceContext::current()->fullscreenQuad();
    const AutoBinder quadBound(quad.get());
    quad->VAO()->enableShaderProgramArrays(&program);
    quad->draw(&program);
}

void AntiAliasing::drawFXAA(GLuint framebuffer)
{
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    const AutoBinder programBound(_fxaa.get());
    const Samplers samplers(*_fxaa, {{"u_Picture", _picture.get()}});
    drawPass(*_fxaa);
}

void AntiAliasing::drawSMAA(GLuint framebuffer)
{
    constexpr GLfloat kNothing[] = {0.0f, 0.0f, 0.0f, 0.0f};
    {
        drawInto(_edges);
        glClearBufferfv(GL_COLOR, 0, kNothing); // pixels without an edge are not written
        const AutoBinder programBound(_edgesProgram.get());
        const Samplers samplers(*_edgesProgram, {{"u_Picture", _picture.get()}});
        drawPass(*_edgesProgram);
    }
    {
        drawInto(_weights);
        glClearBufferfv(GL_COLOR, 0, kNothing);
        const AutoBinder programBound(_weightsProgram.get());
        const Samplers samplers(*_weightsProgram,
                                {{"u_Edges", _edges.get()}, {"u_Area", _area.get()}, {"u_Search", _search.get()}});
        drawPass(*_weightsProgram);
    }
    glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
    const AutoBinder programBound(_blendProgram.get());
    const Samplers samplers(*_blendProgram, {{"u_Picture", _picture.get()}, {"u_Weights", _weights.get()}});
    drawPass(*_blendProgram);
}

} // namespace vrkview
