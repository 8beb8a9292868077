// SPDX-License-Identifier: MIT
#include "EnvironmentPicture.h"

#include "CubeDirections.h"

#include <Terminal.h>
#include <VrkGL/ASTCReader.h>
#include <VrkGL/AutoBinder.h>
#include <VrkGL/GLFunctions.h>
#include <VrkGL/KTXReader.h>
#include <VrkGL/Texture.h>
#include <VrkGL/TextureFileInfo.h>
#include <VrkGL/TextureIO.h>

#include <QFileInfo>
#include <QImage>
#include <QImageReader>
#include <QRgba64>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <iterator>

namespace envmap
{

using namespace Harrow::Vrk;

namespace
{

constexpr double kRatioTolerance = 0.01;
constexpr float kLargestLight = 65504.0f; // of a half float, which is what pictures are read into
constexpr int kMostMegapixels = 128;

struct RatioRow
{
    int width;
    int height;
    Layout layout;
};

constexpr RatioRow kRatios[] = {
    {2, 1, Layout::LatLong}, {4, 3, Layout::Cross},  {3, 4, Layout::Cross},
    {6, 1, Layout::Linear},  {1, 1, Layout::Sphere},
};

float linearFromSrgb(float value)
{
    return value <= 0.04045f ? value / 12.92f : std::pow((value + 0.055f) / 1.055f, 2.4f);
}

LightImage flipped(const LightImage& image)
{
    LightImage result(image.width, image.height);
    for (int y = 0; y < image.height; ++y)
        std::copy_n(image.at(0, image.height - 1 - y), std::size_t(image.width) * 3, result.at(0, y));
    return result;
}

// The columns turned by half the width.
LightImage turned(const LightImage& image)
{
    LightImage result(image.width, image.height);
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x)
            std::copy_n(image.at((x + image.width / 2) % image.width, y), 3, result.at(x, y));
    return result;
}

// ---- reading -------------------------------------------------------------------------------------------------------

bool holdsLight(const Texture& texture)
{
    GLint type = 0;
    glGetTexLevelParameteriv(texture.target(), 0, GL_TEXTURE_RED_TYPE, &type);
    return type == GL_FLOAT;
}

// What the library reads by itself.
bool readTexture(const QString& path, LightImage& picture, bool& isLight)
{
    TextureFileInfo asStored;
    asStored.preprocessed = true;
    TexturePointer texture;
    {
        const vrkview::AbortScope scope;
        texture.reset(LoadTextureFromFile(path, asStored));
    }
    if (!texture || texture->target() != GL_TEXTURE_2D)
        return false;
    const AutoBinder bound(texture.get());
    isLight = holdsLight(*texture);
    picture = readLevel(*texture, 0);
    return !picture.isEmpty();
}

bool readImage(const QString& path, LightImage& picture)
{
    QImageReader reader(path);
    reader.setAutoTransform(true);
    reader.setDecideFormatFromContent(true);
    const QImage image = reader.read().convertToFormat(QImage::Format_RGBA64);
    if (image.isNull())
        return false;
    picture = LightImage(image.width(), image.height());
    for (int y = 0; y < image.height(); ++y)
    {
        const auto* const row = reinterpret_cast<const QRgba64*>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x)
        {
            float* const pixel = picture.at(x, y);
            pixel[0] = float(row[x].red()) / 65535.0f;
            pixel[1] = float(row[x].green()) / 65535.0f;
            pixel[2] = float(row[x].blue()) / 65535.0f;
        }
    }
    return true;
}

void makeUsable(LightImage& picture, bool isLight)
{
    for (float& value : picture.rgb)
    {
        if (!isLight)
            value = linearFromSrgb(value);
        value = value > 0.0f ? std::min(value, kLargestLight) : 0.0f;
    }
}

// ---- textures ------------------------------------------------------------------------------------------------------

/// The first row of `image` goes to v 0.
TexturePointer makeTexture(const LightImage& image)
{
    GLint largest = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &largest);
    if (image.width > largest || image.height > largest)
        return nullptr;
    auto texture = std::make_unique<Texture>(GL_TEXTURE_2D, GL_RGBA32F, image.width, image.height, 1, nullptr);
    const AutoBinder bound(texture.get());
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA32F, image.width, image.height, 0, GL_RGB, GL_FLOAT, image.rgb.data());
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glGenerateMipmap(GL_TEXTURE_2D);
    return texture;
}

void readTexels(GLenum target, int level, LightImage& image)
{
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glGetTexImage(target, level, GL_RGB, GL_FLOAT, image.rgb.data());
}

const char* cubeFault(const LightImage& picture, Layout layout)
{
    const int larger = std::max(picture.width, picture.height);
    if (layout == Layout::Cross && picture.width == picture.height)
        return "a square is no cross, which is 4:3 or 3:4";
    const int face = layout == Layout::Linear  ? picture.width / 6
                     : layout == Layout::Cross ? larger / 4
                                               : picture.width / 4;
    return face < 1 ? "it is too small" : nullptr;
}

} // namespace

std::optional<Layout> guessLayout(int width, int height)
{
    for (const RatioRow& row : kRatios)
        if (std::abs(double(width) * row.height / (double(height) * row.width) - 1.0) < kRatioTolerance)
            return row.layout;
    return std::nullopt;
}

bool readPicture(const QString& path, LightImage& picture, QString& error)
{
    const QFileInfo info(path);
    if (info.isDir())
        error = QStringLiteral("it is a directory");
    else if (!info.isFile())
        error = QStringLiteral("no such file");
    if (!error.isEmpty())
        return false;

    bool isLight = false;
    bool isRead = false;
    {
        const vrkview::QuietScope quiet; // a failure is told by the caller
        const std::unique_ptr<TextureLoader> known(IdentifyTextureFromFile(path));
        isRead = known ? readTexture(path, picture, isLight) : readImage(path, picture);
        // These have the top row first, so that reading them back as a texture has turned them over.
        if (isRead && (dynamic_cast<KTXReader*>(known.get()) || dynamic_cast<ASTCReader*>(known.get())))
            picture = flipped(picture);
    }
    if (!isRead)
        error = QStringLiteral("it is not a picture that can be read");
    else if (qint64(picture.width) * picture.height > qint64(kMostMegapixels) << 20)
        error = QStringLiteral("it has more than %1 megapixels").arg(kMostMegapixels);
    else
        makeUsable(picture, isLight);
    return error.isEmpty();
}

TexturePointer makeCubeMap(const LightImage& picture, Layout layout, QString& error)
{
    if (const char* fault = cubeFault(picture, layout))
    {
        error = QLatin1String(fault);
        return nullptr;
    }
    // The conversion has the first row at v 0, but for the mirror ball; and +x at the left edge of a lat-long picture,
    // where the filter of such maps, and so the whole of this program, has it in the middle.
    const TexturePointer source = makeTexture(layout == Layout::Sphere    ? flipped(picture)
                                              : layout == Layout::LatLong ? turned(picture)
                                                                          : picture);
    TexturePointer cube;
    if (source)
        cube.reset(ZelImageCubemapUtils::createGLCubemapFromTexture(source.get(), layout, GL_TEXTURE_CUBE_MAP,
                                                                    ZelImageCubemapColorSpace::Linear, 0));
    if (!cube)
        error = source ? QStringLiteral("the driver makes no cube map of it")
                       : QStringLiteral("it is larger than the driver's textures");
    return cube;
}

TexturePointer makeLatLongTexture(const LightImage& picture)
{
    return makeTexture(flipped(picture));
}

LightImage latLongOf(const CubeFaces& cube, int width, int height)
{
    LightImage result(width, height);
    for (int y = 0; y < height; ++y)
    {
        for (int x = 0; x < width; ++x)
        {
            const Direction direction = latLongDirection((x + 0.5) / width, 1.0 - (y + 0.5) / height);
            const std::array<double, 3> light = cubeLight(cube, direction);
            std::copy(light.begin(), light.end(), result.at(x, y));
        }
    }
    return result;
}

LightImage readLevel(Texture& texture, int level)
{
    const AutoBinder bound(&texture);
    LightImage image(std::max(0, texture.width(level)), std::max(0, texture.height(level)));
    if (!image.isEmpty())
        readTexels(GL_TEXTURE_2D, level, image);
    return flipped(image);
}

CubeFaces readFaces(Texture& cube)
{
    const AutoBinder bound(&cube);
    CubeFaces faces;
    for (std::size_t face = 0; face < faces.size(); ++face)
    {
        faces[face] = LightImage(cube.width(0), cube.height(0));
        readTexels(GL_TEXTURE_CUBE_MAP_POSITIVE_X + GLenum(face), 0, faces[face]);
    }
    return faces;
}

std::vector<LightImage> readCubes(Texture& cubes)
{
    constexpr int kFaces = 6;
    const AutoBinder bound(&cubes);
    const int size = cubes.width(0);
    LightImage all(size, size * cubes.depth(0));
    readTexels(GL_TEXTURE_CUBE_MAP_ARRAY, 0, all);
    std::vector<LightImage> strips;
    for (int cube = 0; cube < cubes.depth(0) / kFaces; ++cube)
    {
        LightImage& strip = strips.emplace_back(size * kFaces, size);
        for (int face = 0; face < kFaces; ++face)
            for (int y = 0; y < size; ++y)
                std::copy_n(all.at(0, (cube * kFaces + face) * size + y), size * 3, strip.at(face * size, y));
    }
    return strips;
}

LightImage readStrip(Texture& cube, int level)
{
    const TexturePointer strip(ZelImageCubemapUtils::createGLCubemapStripFromTexture(&cube, level));
    return strip ? readLevel(*strip, 0) : LightImage();
}

} // namespace envmap
