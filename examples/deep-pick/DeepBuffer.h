// SPDX-License-Identifier: MIT
// A deep G-buffer: for each pixel of a picture the list of all fragments of the scene, front to back, as
// "VisibilityBuffer.glslh" reads it. Filled by image load/store and an atomic counter.
#pragma once

#include "Fragment.h"
#include "PickScene.h"
#include "SceneBuffers.h"

#include <VrkGL/GLFunctions.h>
#include <VrkGL/GLSLMacroProcessor.h>

#include <QImage>
#include <QPoint>
#include <QString>

#include <cstdint>
#include <memory>
#include <vector>

namespace Harrow::Vrk
{
class ShaderProgram;
}

namespace deeppick
{

/// Wants its context current, from `create` to the destructor. `create`, `fill` and `sort`, then the rest.
class DeepBuffer
{
public:
    DeepBuffer();
    ~DeepBuffer();
    DeepBuffer(const DeepBuffer&) = delete;
    DeepBuffer& operator=(const DeepBuffer&) = delete;

    /// What the current driver lacks for this, in one line, or nothing.
    static QString driverFault();

    /// How fine the driver's grid of places is that corners of triangles are moved to: so many bits of a pixel.
    static int subpixelBits();

    /// On false `error` says in one line why the driver can't hold the scene or the picture.
    bool create(const PickScene& scene, const PickView& view, QString& error);

    /// Draws the scene into the lists, with room for `room` fragments (0 for a guess), and again with more room as long
    /// as there were more. On false `error` says in one line why not all of them can be held.
    bool fill(std::size_t room, QString& error);

    /// Brings each list in order, nearest first.
    void sort();

    /// All that is under a pixel, counted from the top left, front to back.
    std::vector<Fragment> query(const QPoint& pixel);

    /// The picture by the number of fragments under each pixel; null where there is no memory for it.
    QImage picture();

    /// Fragments in all lists, and in the longest of them once they are sorted.
    std::size_t fragmentCount() const
    {
        return _fragmentCount;
    }
    std::uint32_t deepest() const
    {
        return _deepest;
    }
    /// How often the scene was drawn until all had room.
    int drawings() const
    {
        return _drawings;
    }

private:
    using Program = std::unique_ptr<Harrow::Vrk::ShaderProgram>;

    bool createPrograms(QString& error);
    bool createTargets(QString& error);
    bool makeRoom(std::size_t room, QString& error);
    std::size_t drawOnce();
    void clearLists();
    void bindLists(Harrow::Vrk::ShaderProgram& program);
    static void unbindLists();
    void beginPass(Harrow::Vrk::ShaderProgram& program, GLenum target);
    void endPass(Harrow::Vrk::ShaderProgram& program);
    void bindQueries(Harrow::Vrk::ShaderProgram& program);
    void unbindQueries(Harrow::Vrk::ShaderProgram& program);
    std::vector<Fragment> queryFrom(int first, int count, int x, int y);
    static void drawQuad(Harrow::Vrk::ShaderProgram& program);

    PickView _view;
    float _worldFromScene = 1.0f;
    SceneBuffers _scene;
    Harrow::Vrk::GLSLMacroProcessor _macroProcessor;
    Program _fill;
    Program _sort;
    Program _query;
    Program _picture;
    GLuint _framebuffer = 0;
    GLuint _color = 0;
    GLuint _counts = 0;
    GLuint _heads = 0;
    GLuint _nodes = 0;
    std::size_t _room = 0;
    int _nodesWidth = 1;
    std::size_t _fragmentCount = 0;
    std::uint32_t _deepest = 0;
    int _drawings = 0;
};

} // namespace deeppick
