// SPDX-License-Identifier: MIT
// Panels of text over the picture in the window: help, what a frame costs, and short remarks. They are no part of the
// picture itself.
#pragma once

#include "TextImage.h"

#include <VrkGL/GLFunctions.h>
#include <VrkGL/GLSLMacroProcessor.h>

#include <QPoint>
#include <QSize>
#include <QString>

#include <array>
#include <memory>

namespace Harrow::Vrk
{
class ShaderProgram;
class Texture;
} // namespace Harrow::Vrk

namespace vrkview
{

enum class Panel
{
    Stats,  ///< at the top left
    Help,   ///< at the top right
    Remark, ///< at the bottom
};

/// Made, used and destroyed with the same context current. What is shown may be set without one.
class Overlay
{
public:
    Overlay();
    ~Overlay();
    Overlay(const Overlay&) = delete;
    Overlay& operator=(const Overlay&) = delete;

    /// On false `error` says why in one line.
    bool create(QString& error);

    /// No rows hide the panel.
    void show(Panel panel, const TextRows& rows);

    const TextRows& rows(Panel panel) const
    {
        return _panels[std::size_t(panel)].rows;
    }

    /// Over what the bound framebuffer of this size in pixels holds. A panel is painted and uploaded only where its
    /// text, or the room for it, is another than in the last frame. Leaves viewport and blend function changed.
    void draw(const QSize& framebuffer, double devicePixelRatio);

    /// How often a panel was uploaded.
    int uploads() const
    {
        return _uploads;
    }

private:
    struct Text
    {
        TextRows rows;
        bool isStale = false;
        QSize size; ///< of the picture; empty where there is nothing to be seen
        std::unique_ptr<Harrow::Vrk::Texture> texture;
    };

    void paint(Text& text);
    void drawPanel(const Text& text, const QPoint& lowerLeft);

    Harrow::Vrk::GLSLMacroProcessor _macroProcessor; // the program points at it
    std::unique_ptr<Harrow::Vrk::ShaderProgram> _program;
    std::array<Text, 3> _panels;
    QSize _framebuffer;
    double _devicePixelRatio = 1.0;
    int _uploads = 0;
};

} // namespace vrkview
