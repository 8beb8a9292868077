// SPDX-License-Identifier: MIT
#include "Work.h"

#include "ReferenceFilter.h"
#include "SplitSum.h"

#include <PictureFile.h>
#include <Terminal.h>
#include <VrkGL/GLFunctions.h>
#include <VrkGL/GLUtilities.h>
#include <VrkGL/Texture.h>

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <limits>

namespace envmap
{

using namespace Harrow::Vrk;

namespace
{

constexpr int kFaces = 6;
constexpr int kTableSide = 256;
constexpr int kPublishedSide = 144; // of the table beside it, which the CPU computes
constexpr int kMostCompared = 1536; // texels of a level
constexpr float kNdotlPower = 1.0f;

constexpr int kTopHeight = 272; // of the picture and the table on the sheet
constexpr int kHalfWidth = (ContactSheet::kInnerWidth - ContactSheet::kGap) / 2;
constexpr int kThirdWidth = (ContactSheet::kInnerWidth - 2 * ContactSheet::kGap) / 3;

// What the library clears a face with before it draws into it.
constexpr float kUndrawn[kFaces][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 1, 0}, {0, 1, 1}, {1, 0, 1}};

bool wasNeverDrawn(const LightImage& strip)
{
    const int size = strip.height;
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < strip.width; ++x)
            if (!std::equal(strip.at(x, y), strip.at(x, y) + 3, kUndrawn[x / size]))
                return false;
    return !strip.isEmpty();
}

bool hasCubeArrays()
{
    return openGlVersionSupported(4, 0) || hasGLExtension("GL_ARB_texture_cube_map_array");
}

int limit(GLenum name)
{
    GLint value = 0;
    glGetIntegerv(name, &value);
    return value;
}

QString number(double value)
{
    return QString::number(value, 'g', 3);
}

bool isDiffuse(ShadingModel model)
{
    return model >= SHADING_DIFFUSE_START_INDEX;
}

} // namespace

Work::Work(const Options& options) : _options(options) {}

Work::~Work() = default;

bool Work::run(QString& error)
{
    if (!checkDriver(error))
        return false;
    if (!_options.imagePath.isEmpty() &&
        (!readSource(error) || !makeCube(error) || !filter(error) || !makeLayers(error)))
        return false;
    if ((_options.table || !_options.sheetPath.isEmpty()) && !makeTable(error))
        return false;
    if (const GLenum fault = glGetError(); fault != GL_NO_ERROR)
    {
        error = QStringLiteral("the driver gave up (OpenGL error 0x%1)").arg(fault, 0, 16);
        return false;
    }
    if (_options.compare)
        compare();
    return _options.sheetPath.isEmpty() || drawSheet(error);
}

bool Work::isLatLong() const
{
    return !_options.latLong.isEmpty();
}

bool Work::checkDriver(QString& error) const
{
    const int mostFace = std::min(limit(GL_MAX_CUBE_MAP_TEXTURE_SIZE), limit(GL_MAX_TEXTURE_SIZE) / kFaces);
    const int mostSide = limit(GL_MAX_TEXTURE_SIZE);
    if (!isLatLong() && _options.size > mostFace)
        error = QStringLiteral("--size can be at most %1 with this driver").arg(mostFace);
    else if (std::max(_options.latLong.width(), _options.latLong.height()) > mostSide)
        error = QStringLiteral("--lat-long can be at most %1x%1 with this driver").arg(mostSide);
    else if ((_options.blurLayers > 0 || _options.ndotlLayers > 0) && !hasCubeArrays())
        error = QStringLiteral("this driver has no cube-map arrays, which --blur and --ndotl want");
    return error.isEmpty();
}

// Of what comes before the comparison, which takes the second half where it is asked for.
void Work::begin(const char* work, float from, float to)
{
    const float part = _options.compare ? 0.5f : 1.0f;
    _progress.begin(QLatin1String(work), part * from, part * to);
}

// ---- steps ---------------------------------------------------------------------------------------------------------

bool Work::readSource(QString& error)
{
    begin("reading", 0.0f, 0.1f);
    QString fault;
    if (!readPicture(_options.imagePath, _picture, fault))
    {
        error = QStringLiteral("cannot read '%1': %2").arg(_options.imagePath, fault);
        return false;
    }
    const std::optional<Layout> layout =
        _options.layout ? _options.layout : guessLayout(_picture.width, _picture.height);
    if (!layout)
        error = QStringLiteral("'%1' is %2 by %3 pixels, which tells no layout: name it by --layout")
                    .arg(_options.imagePath)
                    .arg(_picture.width)
                    .arg(_picture.height);
    else
        _layout = *layout;
    return layout.has_value();
}

bool Work::makeCube(QString& error)
{
    begin("making the cube map", 0.1f, 0.2f);
    QString fault;
    _cube = makeCubeMap(_picture, _layout, fault);
    if (_cube)
    {
        _cubeStrip = readStrip(*_cube, 0);
        if (!_cubeStrip.isEmpty())
            return write(_cubeStrip, QStringLiteral("cube"), error);
        fault = QStringLiteral("a row of its cube map's faces would be wider than the driver's textures");
    }
    error = QStringLiteral("cannot use '%1' as %2: %3").arg(_options.imagePath, layoutName(_layout), fault);
    return false;
}

bool Work::filter(QString& error)
{
    begin("filtering", 0.2f, 0.7f);
    // Texels of the small levels are large, and those at the edges of a face lie on two of them.
    glEnable(GL_TEXTURE_CUBE_MAP_SEAMLESS);
    if (!(isLatLong() ? filterLatLong(error) : filterCube(error)))
        return false;
    const QString kind = isLatLong() ? QStringLiteral("latlong-") : QString();
    for (std::size_t i = 0; i < _levels.size(); ++i)
        if (!write(_levels[i].light, QStringLiteral("%1%2-%3").arg(kind, _options.modelName).arg(i), error))
            return false;
    if (_levels.size() == 1 && !isDiffuse(_options.model))
        _remarks.append(QStringLiteral("a single level has the roughness 0 / 0, so what is in it is up to the driver"));
    return true;
}

void Work::addLevel(LightImage light, int level, int levels)
{
    _levels.push_back({std::move(light), levels > 1 ? double(level) / (levels - 1) : 0.0});
}

bool Work::filterCube(QString& error)
{
    const TexturePointer map(
        CreatePrefilteredCubeEnvMap(_cube.get(), _options.size, unsigned(_options.samples), _options.model, RGBA32F));
    const int levels = MaxLODLevel(_options.size, _options.size);
    for (int level = 0; map && level < levels; ++level)
        addLevel(readStrip(*map, level), level, levels);
    if (!map || _levels.back().light.isEmpty())
        error = QStringLiteral("the driver cannot filter the cube map");
    return error.isEmpty();
}

bool Work::filterLatLong(QString& error)
{
    const int face = _cubeStrip.height;
    _latLong = _layout == Layout::LatLong ? _picture : latLongOf(readFaces(*_cube), 4 * face, 2 * face);
    const TexturePointer source = makeLatLongTexture(_latLong);
    SetDiffuseImportanceSampling(!_options.everyTexel);
    const QSize size = _options.latLong;
    TexturePointer map;
    if (source)
        map.reset(CreatePrefilteredLatLongEnvMap(source.get(), size.width(), size.height(), unsigned(_options.samples),
                                                 _options.model, RGBA32F));
    const int levels = MaxLODLevel(size.width(), size.height());
    for (int level = 0; map && level < levels; ++level)
        addLevel(readLevel(*map, level), level, levels);
    if (!map)
        error = QStringLiteral("the driver cannot filter the map");
    return error.isEmpty();
}

bool Work::makeLayers(QString& error)
{
    if (_options.blurLayers > 0)
    {
        begin("blurring", 0.7f, 0.75f);
        TexturePointer cubes;
        {
            const vrkview::QuietScope quiet; // what becomes of it is told below
            cubes.reset(ZelImageCubemapUtils::createGLCubemapBlurFromGLCubemap(_cube.get(), GL_TEXTURE_CUBE_MAP_ARRAY,
                                                                               _options.size, _options.blurLayers));
        }
        if (!addLayers("blur", std::move(cubes), error))
            return false;
        if (wasNeverDrawn(_layers.front().second))
            _remarks.append(QStringLiteral(
                "the driver rejects the shader that blurs: these files hold a colour for each face, and no light"));
    }
    if (_options.ndotlLayers > 0)
    {
        begin("filtering by powers of the cosine", 0.75f, 0.95f);
        TexturePointer cubes(ZelImageCubemapUtils::createGLCubemapNDotLFromGLCubemap(
            _cube.get(), GL_TEXTURE_CUBE_MAP_ARRAY, _options.size, _options.ndotlLayers, kNdotlPower));
        if (!addLayers("ndotl", std::move(cubes), error))
            return false;
    }
    return true;
}

bool Work::addLayers(const char* name, TexturePointer cubes, QString& error)
{
    if (!cubes)
    {
        error = QStringLiteral("the driver makes no cube-map array for --%1").arg(QLatin1String(name));
        return false;
    }
    std::vector<LightImage> strips = readCubes(*cubes);
    for (std::size_t i = 0; i < strips.size(); ++i)
    {
        const QString label = QStringLiteral("%1-%2").arg(QLatin1String(name)).arg(i);
        if (!write(strips[i], label, error))
            return false;
        _layers.emplace_back(label, std::move(strips[i]));
    }
    return true;
}

bool Work::makeTable(QString& error)
{
    begin("making the table", 0.95f, 1.0f);
    // With one level the blue channel is the roughness.
    const TexturePointer table(CreatePreintegratedBRDFTable(kTableSide, kTableSide, 1, _options.model, RGBA32F));
    if (!table)
    {
        error = QStringLiteral("the driver cannot make the table");
        return false;
    }
    _table = readLevel(*table, 0);
    if (!_options.table)
        return true;
    const QString name = QStringLiteral("brdf-%1.png").arg(_options.modelName);
    return writeImage(numbersImage(_table), pathOf(name), error);
}

// ---- comparing -----------------------------------------------------------------------------------------------------

void Work::compare()
{
    if (_levels.size() == 1 && !isDiffuse(_options.model))
    {
        _remarks.append(QStringLiteral("a single level is not compared"));
        return;
    }
    _remarks.append(
        QStringLiteral("compared with a reference: the same integral on the CPU in double precision, without mipmaps"));
    const ReferenceEnvironment environment =
        isLatLong() ? ReferenceEnvironment(_latLong) : ReferenceEnvironment(readFaces(*_cube));
    for (std::size_t i = 0; i < _levels.size(); ++i)
    {
        const Level& level = _levels[i];
        const float part = 0.5f / float(_levels.size());
        _progress.begin(QStringLiteral("comparing"), 0.5f + part * float(i), 0.5f + part * float(i + 1));
        const ReferenceFilter filter(environment, {_options.model, level.roughness, _options.everyTexel});
        const std::vector<FilteredTexel> texels =
            isLatLong() ? texelsOfLatLong(level.light, kMostCompared) : texelsOfStrip(level.light, kMostCompared);
        const Deviation found = deviation(filter, texels, [this](float fraction) { _progress.advance(fraction); });
        const double relative = found.reference > 0.0 ? found.mean / found.reference : 0.0;
        _remarks.append(QStringLiteral("level %1, roughness %2: mean error %3, largest %4, mean relative to the mean "
                                       "light %5 %; %6 texels against %7")
                            .arg(i)
                            .arg(level.roughness, 0, 'f', 3)
                            .arg(number(found.mean), number(found.largest), number(100.0 * relative))
                            .arg(texels.size())
                            .arg(filter.method()));
    }
}

// ---- files ---------------------------------------------------------------------------------------------------------

// Of a file in the folder for them, which is made with the first one.
QString Work::pathOf(const QString& file) const
{
    QDir().mkdir(_options.outputFolder);
    return QDir(_options.outputFolder).filePath(file);
}

bool Work::write(const LightImage& light, const QString& name, QString& error)
{
    const bool isPng = _options.format == FileFormat::Png;
    const QString file = QStringLiteral("%1-%2.%3")
                             .arg(QFileInfo(_options.imagePath).completeBaseName(), name,
                                  isPng ? QStringLiteral("png") : QStringLiteral("hdr"));
    const QString path = pathOf(file);
    if (isPng)
        return writeImage(clippedImage(light, _options.exposure), path, error);
    QString fault;
    if (!vrkview::writeRadiance(light, path, fault))
    {
        error = QStringLiteral("cannot write '%1': %2").arg(path, fault);
        return false;
    }
    _files.append(path);
    return true;
}

bool Work::writeImage(const QImage& image, const QString& path, QString& error)
{
    QString fault;
    if (!vrkview::writePicture(image, path, fault))
    {
        error = QStringLiteral("cannot write '%1': %2").arg(path, fault);
        return false;
    }
    _files.append(path);
    return true;
}

QString Work::title() const
{
    const QString how =
        _options.everyTexel ? QStringLiteral("every texel") : QStringLiteral("%1 samples").arg(_options.samples);
    return QStringLiteral("%1: %2, %3").arg(QFileInfo(_options.imagePath).completeBaseName(), _options.modelName, how);
}

bool Work::drawSheet(QString& error)
{
    const float exposure = _options.exposure;
    ContactSheet sheet(title());
    const double ratio = double(_picture.width) / _picture.height;
    const int width = std::clamp(int(std::lround(kTopHeight * ratio)), 1, ContactSheet::kInnerWidth);
    const int height = std::clamp(int(std::lround(width / ratio)), 1, kTopHeight);
    sheet.add(softImage(_picture, exposure),
              QStringLiteral("source: %1, %2 by %3").arg(layoutName(_layout)).arg(_picture.width).arg(_picture.height),
              QSize(width, height));
    sheet.add(numbersImage(_table), QStringLiteral("response table"), QSize(kTopHeight, kTopHeight));
    if (_options.model == SHADING_PHYSICALLY_BASED)
        sheet.add(numbersImage(publishedSplitSum(kPublishedSide)), QStringLiteral("published split sum"),
                  QSize(kTopHeight, kTopHeight));
    sheet.add(softImage(_cubeStrip, exposure),
              QStringLiteral("cube map: +x -x +y -y +z -z, %1 texels a face").arg(_cubeStrip.height),
              QSize(ContactSheet::kInnerWidth, ContactSheet::kInnerWidth / kFaces));
    for (std::size_t i = 0; i < _levels.size(); ++i)
    {
        const LightImage& light = _levels[i].light;
        const int cell = isLatLong() ? kThirdWidth : kHalfWidth;
        sheet.add(softImage(light, exposure),
                  QStringLiteral("level %1: roughness %2").arg(i).arg(_levels[i].roughness, 0, 'f', 2),
                  QSize(cell, std::max(1, cell * light.height / std::max(1, light.width))));
    }
    for (const auto& [label, strip] : _layers)
        sheet.add(softImage(strip, exposure), label, QSize(kHalfWidth, kHalfWidth / kFaces));
    return writeImage(sheet.draw(), _options.sheetPath, error);
}

} // namespace envmap
