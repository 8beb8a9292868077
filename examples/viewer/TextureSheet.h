// SPDX-License-Identifier: MIT
// A texture file laid out flat: the picture itself, a cube map as a cross, the slices of a volume in a row, and levels
// side by side.
#pragma once

#include <VrkGL/GLSLMacroProcessor.h>

#include <QRectF>
#include <QSize>
#include <QSizeF>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

namespace Harrow::Vrk
{
class ShaderProgram;
class Texture;
} // namespace Harrow::Vrk

namespace vrkview
{

/// What of a texture file is shown, and how.
struct SheetSettings
{
    QString path;
    std::optional<int> level = 0;  ///< nothing: all of them
    std::optional<float> exposure; ///< in stops; not given: 0 for what holds light, and none for what holds colours
};

/// Made, used and destroyed with the same context current, after `initializeGLFunctions`.
class TextureSheet
{
public:
    TextureSheet();
    ~TextureSheet();
    TextureSheet(const TextureSheet&) = delete;
    TextureSheet& operator=(const TextureSheet&) = delete;

    /// Loads the file. On false `error` says in one line why it cannot be shown.
    bool create(const SheetSettings& settings, QString& error);

    /// Draws over all of the viewport, as large as fits.
    void draw();

    /// Size, kind, levels and format in one line.
    QString description() const;

private:
    /// A part of the sheet. Its rectangle is in texels, from the top left of the sheet.
    struct Cell
    {
        QRectF place;
        int level = 0;
        int part = 0; ///< face of a cube, slice of a volume
    };

    bool load(const QString& path, QString& error);
    void measure();
    bool buildProgram(QString& error);
    void layOut(const std::optional<int>& level);
    void addLevel(int level);

    Harrow::Vrk::GLSLMacroProcessor _macroProcessor; // the programs point at it
    std::unique_ptr<Harrow::Vrk::ShaderProgram> _program;
    std::unique_ptr<Harrow::Vrk::Texture> _texture;
    std::vector<Cell> _cells;
    QSizeF _sheet;
    std::vector<QSize> _levels;
    int _depth = 1;
    int _internalFormat = 0;
    bool _isLinear = false;      ///< sampled as linear light
    bool _isTopRowFirst = false; ///< OpenGL has the bottom row first
    std::optional<float> _exposure;
};

} // namespace vrkview
