// SPDX-License-Identifier: MIT
#include "Overlay.h"

#include <VrkGL/AutoBinder.h>
#include <VrkGL/AutoEnabler.h>
#include <VrkGL/DrawBuffers.h>
#include <VrkGL/OpenGLDeviceContext.h>
#include <VrkGL/ShaderProgram.h>
#include <VrkGL/Texture.h>
#include <VrkGL/VertexArrayObject.h>

#include <QVariant>

#include <algorithm>

namespace vrkview
{

using namespace Harrow::Vrk;

namespace
{

constexpr double kMargin = 10.0; // around a panel, device independent

/// What is left of a panel, and what is below of it, of all that is free: halves are the middle.
struct Placement
{
    double left;
    double below;
};
constexpr Placement kPlacements[] = {{0.0, 1.0}, {1.0, 1.0}, {0.5, 0.0}};

/// The texel next to each pixel, and no other ones.
void setExact()
{
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, 0);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
}

} // namespace

Overlay::Overlay() = default;

Overlay::~Overlay() = default;

bool Overlay::create(QString& error)
{
    _program = std::make_unique<ShaderProgram>(nullptr);
    _program->setMacroProcessor(&_macroProcessor);
    _program->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral(":/vrkview/background.vert"));
    _program->addShaderFromFile(GL_FRAGMENT_SHADER, QStringLiteral(":/vrkview/overlay.frag"));
    if (_program->link())
        return true;
    error = QStringLiteral("the driver rejects the overlay shaders");
    return false;
}

void Overlay::show(Panel panel, const TextRows& rows)
{
    Text& text = _panels[std::size_t(panel)];
    text.isStale = text.isStale || rows != text.rows;
    text.rows = rows;
}

void Overlay::draw(const QSize& framebuffer, double devicePixelRatio)
{
    const bool hasOtherRoom = framebuffer != _framebuffer || devicePixelRatio != _devicePixelRatio;
    _framebuffer = framebuffer;
    _devicePixelRatio = devicePixelRatio;
    const int margin = int(kMargin * devicePixelRatio);
    for (std::size_t panel = 0; panel < _panels.size(); ++panel)
    {
        Text& text = _panels[panel];
        if (text.isStale || hasOtherRoom)
            paint(text);
        if (text.size.isEmpty())
            continue;
        const QSize free = framebuffer - text.size - 2 * QSize(margin, margin);
        drawPanel(text, QPoint(margin + int(kPlacements[panel].left * free.width()),
                               margin + int(kPlacements[panel].below * free.height())));
    }
}

void Overlay::paint(Text& text)
{
    const int margins = 2 * int(kMargin * _devicePixelRatio);
    const QImage image = drawText(text.rows, _framebuffer - QSize(margins, margins), _devicePixelRatio).mirrored();
    text.isStale = false;
    text.size = image.size();
    text.texture.reset();
    if (image.isNull())
        return;
    text.texture = std::make_unique<Texture>(GL_TEXTURE_2D, GL_RGBA8, image.width(), image.height(), 1, nullptr);
    const AutoBinder bound(text.texture.get());
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, image.width(), image.height(), 0, GL_RGBA, GL_UNSIGNED_BYTE,
                 image.constBits()); // rows of four bytes a pixel need no other alignment than the default
    setExact();
    ++_uploads;
}

/// The quad fills the viewport, so the viewport is the panel.
void Overlay::drawPanel(const Text& text, const QPoint& lowerLeft)
{
    const AutoDisabler noDepthTest(GL_DEPTH_TEST);
    const AutoEnabler blending(GL_BLEND);
    glBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    glViewport(lowerLeft.x(), lowerLeft.y(), text.size.width(), text.size.height());
    const QSharedPointer<DrawBuffers> quad = OpenGLDeviceContext::current()->fullscreenQuad();
    const AutoBinder programBound(_program.get());
    const AutoBinder textureBound(text.texture.get());
    _program->setUniform(QStringLiteral("u_Text"), QVariant(text.texture->unit()));
    const AutoBinder quadBound(quad.get());
    quad->VAO()->enableShaderProgramArrays(_program.get());
    quad->draw(_program.get());
}

} // namespace vrkview
