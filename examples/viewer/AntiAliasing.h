// SPDX-License-Identifier: MIT
// Smooths the edges of a finished picture: passes over all of it that know nothing of the scene.
#pragma once

#include "RenderSettings.h"

#include <VrkGL/GLFunctions.h>
#include <VrkGL/GLSLMacroProcessor.h>

#include <QSize>
#include <QString>

#include <memory>

namespace Harrow::Vrk
{
class ShaderProgram;
class Texture;
} // namespace Harrow::Vrk

namespace vrkview
{

/// Made, used and destroyed with the same context current.
class AntiAliasing
{
public:
    AntiAliasing();
    ~AntiAliasing();
    AntiAliasing(const AntiAliasing&) = delete;
    AntiAliasing& operator=(const AntiAliasing&) = delete;

    /// For pictures of this size. On false `error` says why in one line.
    bool create(AntiAliasingKind kind, const QSize& size, QString& error);

    /// Smooths what `framebuffer` holds, which has one sample a pixel. Leaves it bound.
    void apply(GLuint framebuffer);

private:
    using Program = std::unique_ptr<Harrow::Vrk::ShaderProgram>;
    using Map = std::unique_ptr<Harrow::Vrk::Texture>;

    bool createFXAA(QString& error);
    bool createSMAA(QString& error);
    Program newProgram(const QString& vertexName, const QString& fragmentName, QString& error);
    void drawFXAA(GLuint framebuffer);
    void drawSMAA(GLuint framebuffer);
    void drawInto(const Map& target);
    void drawPass(Harrow::Vrk::ShaderProgram& program);

    AntiAliasingKind _kind = AntiAliasingKind::None;
    QSize _size;
    Harrow::Vrk::GLSLMacroProcessor _macroProcessor; // programs point at it
    Program _fxaa;
    Program _edgesProgram;
    Program _weightsProgram;
    Program _blendProgram;
    Map _picture; // as it was
    Map _edges;
    Map _weights;
    Map _area;
    Map _search;
    GLuint _framebuffer = 0;
};

} // namespace vrkview
