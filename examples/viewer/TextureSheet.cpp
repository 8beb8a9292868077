// SPDX-License-Identifier: MIT
#include "TextureSheet.h"

#include "Terminal.h"

#include <VrkGL/ASTCReader.h>
#include <VrkGL/AutoBinder.h>
#include <VrkGL/AutoEnabler.h>
#include <VrkGL/DrawBuffers.h>
#include <VrkGL/GLFunctions.h>
#include <VrkGL/KTXReader.h>
#include <VrkGL/OpenGLDeviceContext.h>
#include <VrkGL/ShaderProgram.h>
#include <VrkGL/Texture.h>
#include <VrkGL/TextureFileInfo.h>
#include <VrkGL/TextureIO.h>
#include <VrkGL/VertexArrayObject.h>

#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace vrkview
{

using namespace Harrow::Vrk;

namespace
{

constexpr int kMostLevels = 20;
constexpr int kMostSlices = 64;
constexpr double kMargin = 0.04; // of the picture, on each side
constexpr double kGap = 0.02;    // of the base level's width, between levels

struct KindOfTexture
{
    GLenum target;
    const char* name;
    const char* define;
};

constexpr KindOfTexture kKinds[] = {
    {GL_TEXTURE_1D, "1D", "SHEET_1D"},
    {GL_TEXTURE_2D, "2D", "SHEET_2D"},
    {GL_TEXTURE_3D, "3D", "SHEET_3D"},
    {GL_TEXTURE_CUBE_MAP, "cube map", "SHEET_CUBE"},
};

const KindOfTexture* kindOf(const Texture& texture)
{
    const auto* const kind = std::find_if(std::begin(kKinds), std::end(kKinds),
                                          [&](const KindOfTexture& one) { return one.target == texture.target(); });
    return kind != std::end(kKinds) ? kind : nullptr;
}

/// Where OpenGL's faces stand on the cross, which is four wide and three high: the one towards +z in its middle.
constexpr QPoint kFacePlaces[] = {{2, 1}, {0, 1}, {1, 0}, {1, 2}, {1, 1}, {3, 1}};

GLint levelParameter(GLenum target, int level, GLenum name)
{
    GLint value = 0;
    glGetTexLevelParameteriv(target == GL_TEXTURE_CUBE_MAP ? GL_TEXTURE_CUBE_MAP_POSITIVE_X : target, level, name,
                             &value);
    return value;
}

bool isSrgb(GLint internalFormat)
{
    constexpr GLint kFormats[] = {GL_SRGB8, GL_SRGB8_ALPHA8, GL_COMPRESSED_SRGB8_ETC2,
                                  GL_COMPRESSED_SRGB8_PUNCHTHROUGH_ALPHA1_ETC2, GL_COMPRESSED_SRGB8_ALPHA8_ETC2_EAC};
    return std::find(std::begin(kFormats), std::end(kFormats), internalFormat) != std::end(kFormats);
}

} // namespace

TextureSheet::TextureSheet() = default;

TextureSheet::~TextureSheet() = default;

bool TextureSheet::create(const SheetSettings& settings, QString& error)
{
    _exposure = settings.exposure;
    if (!load(settings.path, error))
        return false;
    if (settings.level && *settings.level >= int(_levels.size()))
    {
        error = QStringLiteral("'%1' has no level %2").arg(settings.path).arg(*settings.level);
        return false;
    }
    layOut(settings.level);
    return buildProgram(error);
}

bool TextureSheet::load(const QString& path, QString& error)
{
    if (!QFileInfo(path).isFile())
    {
        error = QStringLiteral("there is no file '%1'").arg(path);
        return false;
    }
    {
        const std::unique_ptr<TextureLoader> loader(IdentifyTextureFromFile(path));
        _isTopRowFirst = dynamic_cast<KTXReader*>(loader.get()) || dynamic_cast<ASTCReader*>(loader.get());
    }
    TextureFileInfo asStored;
    asStored.preprocessed = true;
    {
        const AbortScope scope;
        _texture.reset(LoadTextureFromFile(path, asStored));
    }
    if (_texture && kindOf(*_texture))
        measure();
    if (!_levels.empty())
        return true;
    error = QStringLiteral("'%1' is no texture that can be shown").arg(path);
    return false;
}

/// What is shown are texels, so they are not smoothed.
void TextureSheet::measure()
{
    const AutoBinder bound(_texture.get());
    const GLenum target = _texture->target();
    GLint lastLevel = 0;
    glGetTexParameteriv(target, GL_TEXTURE_MAX_LEVEL, &lastLevel);
    for (int level = 0; level <= std::min(lastLevel, kMostLevels); ++level)
    {
        const QSize size(levelParameter(target, level, GL_TEXTURE_WIDTH),
                         levelParameter(target, level, GL_TEXTURE_HEIGHT));
        if (size.isEmpty())
            break;
        _levels.push_back(size);
    }
    _depth = std::clamp(levelParameter(target, 0, GL_TEXTURE_DEPTH), 1, kMostSlices);
    _internalFormat = levelParameter(target, 0, GL_TEXTURE_INTERNAL_FORMAT);
    _isLinear = isSrgb(_internalFormat) || levelParameter(target, 0, GL_TEXTURE_RED_TYPE) == GL_FLOAT;
    glTexParameteri(target, GL_TEXTURE_MAX_LEVEL, std::max(0, int(_levels.size()) - 1));
    glTexParameteri(target, GL_TEXTURE_MIN_FILTER, GL_NEAREST_MIPMAP_NEAREST);
    glTexParameteri(target, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
}

bool TextureSheet::buildProgram(QString& error)
{
    _macroProcessor.addIncludePath(QStringLiteral(":/vrkview"));
    if (_isTopRowFirst)
        _macroProcessor.addDefine(QStringLiteral("SHEET_TOP_ROW_FIRST"), QStringLiteral("1"));
    _macroProcessor.addDefine(QLatin1String(kindOf(*_texture)->define), QStringLiteral("1"));
    _program = std::make_unique<ShaderProgram>(nullptr);
    _program->setMacroProcessor(&_macroProcessor);
    _program->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral(":/vrkview/background.vert"));
    _program->addShaderFromFile(GL_FRAGMENT_SHADER, QStringLiteral(":/vrkview/sheet.frag"));
    _program->addShaderFromFile(GL_FRAGMENT_SHADER, QStringLiteral("VrkUtilities.glslc"));
    if (_program->link())
        return true;
    error = QStringLiteral("the driver rejects the sheet shaders");
    return false;
}

// ---- layout --------------------------------------------------------------------------------------------------------

void TextureSheet::layOut(const std::optional<int>& level)
{
    const int first = level.value_or(0);
    const int last = level.value_or(int(_levels.size()) - 1);
    for (int i = first; i <= last; ++i)
        addLevel(i);
}

/// To the right of what is there.
void TextureSheet::addLevel(int level)
{
    const QSizeF size = _levels[std::size_t(level)];
    const double left = _cells.empty() ? 0.0 : _sheet.width() + kGap * _levels.front().width();
    const bool isCube = _texture->target() == GL_TEXTURE_CUBE_MAP;
    const int parts = isCube ? int(std::size(kFacePlaces)) : std::max(1, _depth >> level);
    for (int part = 0; part < parts; ++part)
    {
        const QPoint place = isCube ? kFacePlaces[part] : QPoint(part, 0);
        const QPointF corner(left + place.x() * size.width(), place.y() * size.height());
        _cells.push_back({QRectF(corner, size), level, part});
        _sheet = _sheet.expandedTo(QSizeF(corner.x() + size.width(), corner.y() + size.height()));
    }
}

// ---- drawing -------------------------------------------------------------------------------------------------------

void TextureSheet::draw()
{
    glClearColor(0.13f, 0.14f, 0.15f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    const AutoDisabler noDepthTest(GL_DEPTH_TEST);
    const QSharedPointer<DrawBuffers> quad = OpenGLDeviceContext::current()->fullscreenQuad();
    const AutoBinder programBound(_program.get());
    const AutoBinder textureBound(_texture.get());
    const AutoBinder quadBound(quad.get());
    quad->VAO()->enableShaderProgramArrays(_program.get());
    _program->setUniform(QStringLiteral("u_Texture"), _texture->unit());
    _program->setUniform(QStringLiteral("u_IsLight"), _isLinear || _exposure ? 1 : 0);
    _program->setUniform(QStringLiteral("u_Exposure"), std::exp2(_exposure.value_or(0.0f)));

    GLint viewport[4] = {};
    glGetIntegerv(GL_VIEWPORT, viewport);
    // The target may be drawn larger than the picture.
    const double width = viewport[2];
    const double height = viewport[3];
    const double scale = (1.0 - 2.0 * kMargin) * std::min(width / _sheet.width(), height / _sheet.height());
    const QPointF corner(0.5 * (width - scale * _sheet.width()), 0.5 * (height - scale * _sheet.height()));
    for (const Cell& cell : _cells)
    {
        const int left = int(std::lround(corner.x() + scale * cell.place.left()));
        const int right = int(std::lround(corner.x() + scale * cell.place.right()));
        const int top = int(std::lround(corner.y() + scale * cell.place.top()));
        const int bottom = int(std::lround(corner.y() + scale * cell.place.bottom()));
        glViewport(left, int(height) - bottom, std::max(1, right - left), std::max(1, bottom - top));
        _program->setUniform(QStringLiteral("u_Level"), float(cell.level));
        _program->setUniform(QStringLiteral("u_Part"), cell.part);
        _program->setUniform(QStringLiteral("u_Slices"), std::max(1, _depth >> cell.level));
        quad->draw(_program.get());
    }
    glViewport(viewport[0], viewport[1], viewport[2], viewport[3]);
}

QString TextureSheet::description() const
{
    const QSize size = _levels.front();
    return QStringLiteral("%1, %2 by %3 texels, %4 level(s), format 0x%5")
        .arg(QLatin1String(kindOf(*_texture)->name))
        .arg(size.width())
        .arg(size.height())
        .arg(_levels.size())
        .arg(_internalFormat, 0, 16);
}

} // namespace vrkview
