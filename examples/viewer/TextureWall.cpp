// SPDX-License-Identifier: MIT
#include "TextureWall.h"

#include <QColor>

#include <algorithm>
#include <cmath>

namespace vrkview
{

namespace
{

constexpr float kSpacing = 1.08f;
constexpr int kFaces = 6;
constexpr int kLayers = 3;
constexpr int kMarks = 4; // squares in a row of the pattern that tells the panels apart

// Of this many panels one is a cube map, one an array, one a set of tiles.
constexpr int kCycle = 32;
constexpr int kCubeInCycle = 7;
constexpr int kLayersInCycle = 15;
constexpr int kTilesInCycle = 23;
constexpr int kFormatCycle = 8;

// All kinds share these few, so that nothing is scaled where a manager keeps textures of one size together.
constexpr QSize kSizes[] = {{32, 32}, {64, 64}, {16, 16}, {64, 32}, {32, 32}};
constexpr QSize kPartSize{32, 32};

QColor hue(int number, float lightness)
{
    constexpr double kGolden = 0.6180339887498949;
    return QColor::fromHslF(float(std::fmod(number * kGolden, 1.0)), 0.65f, lightness);
}

/// Unlike that of every other number below 65536: its bits are dark and light squares inside a frame.
QImage pattern(int number, const QSize& size, int shade = 0)
{
    QImage image(size, QImage::Format_RGB32);
    const QColor light = hue(number + 7 * shade, 0.62f);
    const QColor dark = hue(number + 7 * shade, 0.34f);
    const QColor frame = hue(number + 3, 0.22f);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
        {
            const int column = x * (kMarks + 2) / size.width() - 1;
            const int row = y * (kMarks + 2) / size.height() - 1;
            const bool isFrame = column < 0 || column >= kMarks || row < 0 || row >= kMarks;
            const bool isSet = !isFrame && (number >> (row * kMarks + column)) & 1;
            image.setPixelColor(x, y, isFrame ? frame : isSet ? light : dark);
        }
    return image;
}

Image partsOf(int number, ImageKind kind, int count)
{
    Image image{QStringLiteral("panel %1").arg(number), {}, kind, {}};
    for (int part = 0; part < count; ++part)
        image.parts.push_back({QString(), pattern(number, kPartSize, part), QPoint(part % 2, part / 2)});
    return image;
}

Image imageOf(int number)
{
    switch (number % kCycle)
    {
    case kCubeInCycle:
        return partsOf(number, ImageKind::Cube, kFaces);
    case kLayersInCycle:
        return partsOf(number, ImageKind::Layers, kLayers);
    case kTilesInCycle:
        return partsOf(number, ImageKind::Tiles, 3); // one of four places is empty
    default:
        break;
    }
    QImage pixels = pattern(number, kSizes[number % int(std::size(kSizes))]);
    if (number % kFormatCycle == 3)
        pixels = pattern(number, kPartSize).convertToFormat(QImage::Format_Grayscale8);
    if (number % kFormatCycle == 5)
        pixels = pattern(number, kPartSize).convertToFormat(QImage::Format_RGBA64);
    return {QStringLiteral("panel %1").arg(number), pixels, ImageKind::Flat, {}};
}

/// From -0.5 to 0.5, facing +z. The texture coordinates reach to `reach`.
Mesh makePanel(const char* name, float reach)
{
    Mesh mesh;
    mesh.name = QLatin1String(name);
    mesh.positions = {{-0.5f, -0.5f, 0.0f}, {0.5f, -0.5f, 0.0f}, {0.5f, 0.5f, 0.0f}, {-0.5f, 0.5f, 0.0f}};
    mesh.normals.assign(4, QVector3D(0.0f, 0.0f, 1.0f));
    mesh.texCoords = {{0.0f, 0.0f}, {reach, 0.0f}, {reach, reach}, {0.0f, reach}};
    mesh.indices = {0, 1, 2, 0, 2, 3};
    return mesh;
}

} // namespace

Model makeTextureWall(int count)
{
    Model model;
    model.name = QStringLiteral("wall of %1 textures").arg(count);
    model.meshes = {makePanel("panel", 1.0f), makePanel("panel of tiles", 2.0f)};
    const int side = int(std::ceil(std::sqrt(double(count))));
    for (int i = 0; i < count; ++i)
    {
        model.images.push_back(imageOf(i));
        Material material;
        material.name = model.images.back().path;
        material.baseColor = {1.0f, 1.0f, 1.0f};
        material.roughness = 1.0f;
        material.baseColorImage = model.images.size() - 1;
        material.wrapS = Wrap::Clamp;
        material.wrapT = Wrap::Clamp;
        model.materials.push_back(material);
        const int column = i % side;
        const int row = i / side;
        QMatrix4x4 matrix;
        matrix.translate((float(column) - 0.5f * float(side - 1)) * kSpacing,
                         (0.5f * float(side - 1) - float(row)) * kSpacing);
        const bool hasTiles = model.images.back().kind == ImageKind::Tiles;
        model.instances.push_back({hasTiles ? std::size_t(1) : std::size_t(0), matrix, -1, model.materials.size() - 1});
    }
    model.measure();
    return model;
}

} // namespace vrkview
