// SPDX-License-Identifier: MIT
// How a picture goes on beyond its edges, and what is seen where it does: held against texels that are filtered here.
#include "ModelFiles.h"
#include "PbrFiles.h"
#include "ViewerRun.h"

#include <gtest/gtest.h>

#include <QJsonArray>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <utility>

namespace
{

constexpr int kSide = 192;

// The numbers of glTF.
constexpr int kRepeat = 10497;
constexpr int kMirror = 33648;
constexpr int kClamp = 33071;

/// A square that shows `picture` in any light, over texture coordinates from `offset` on; there are `repeats` of it.
Square squareOf(const QImage& picture, int wrapS, int wrapT, double repeats, double offset)
{
    const QJsonObject transform{{"offset", QJsonArray{offset, offset}}, {"scale", QJsonArray{repeats, repeats}}};
    const QJsonObject texture{{"index", 0}, {"extensions", QJsonObject{{"KHR_texture_transform", transform}}}};
    return {.material = {{"pbrMetallicRoughness", QJsonObject{{"baseColorTexture", texture}}},
                         {"extensions", QJsonObject{{"KHR_materials_unlit", QJsonObject()}}}},
            .pictures = {picture},
            .sampler = {{"wrapS", wrapS}, {"wrapT", wrapT}},
            .root = {{"extensionsUsed", QJsonArray{"KHR_materials_unlit", "KHR_texture_transform"}}}};
}

QImage draw(const Square& square, const QString& manager, const ModelFolder& folder = ModelFolder())
{
    return drawWithViewer({folder.write("square.gltf", gltfFile(square)), "--camera", "front", "--samples", "1",
                           "--size", QString("%1x%1").arg(kSide), "--manager", manager});
}

/// Of 0 and 1 alone, which every encoding leaves as they are, and without an order.
QImage scattered(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    quint32 state = 1;
    const auto next = [&state]
    {
        state = state * 1664525u + 1013904223u;
        return state >> 31 ? 255 : 0;
    };
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
        {
            const int red = next();
            const int green = next();
            image.setPixel(x, y, qRgb(red, green, next()));
        }
    return image;
}

/// A KTX file with one level of RGBA8, the top row first.
QByteArray ktxFile(const QImage& image)
{
    QByteArray bytes("\xABKTX 11\xBB\r\n\x1A\n");
    const auto append = [&bytes](std::initializer_list<quint32> words)
    {
        for (const quint32 word : words)
            for (int shift = 0; shift < 32; shift += 8)
                bytes.append(char(word >> shift));
    };
    const auto width = quint32(image.width());
    const auto height = quint32(image.height());
    append({0x04030201, 0x1401, 1, 0x1908, 0x8058, 0x1908, width, height, 0, 0, 1, 1, 0, 4 * width * height});
    const QImage texels = image.convertToFormat(QImage::Format_RGBA8888);
    bytes.append(reinterpret_cast<const char*>(texels.constBits()), texels.sizeInBytes());
    return bytes;
}

/// The texel that stands at a place beyond the picture's edges.
int texelAt(int place, int count, int wrap)
{
    if (wrap == kClamp)
        return std::clamp(place, 0, count - 1);
    const int period = wrap == kMirror ? 2 * count : count;
    const int inside = (place % period + period) % period;
    return inside < count ? inside : period - 1 - inside;
}

/// Two neighbours, and how much the second one counts.
struct Pair
{
    int texels[2];
    double second;
};

Pair neighbours(double place, int count, int wrap)
{
    const double texel = place * count - 0.5;
    const int first = int(std::floor(texel));
    return {{texelAt(first, count, wrap), texelAt(first + 1, count, wrap)}, texel - first};
}

/// What a linear filter gives at a place; 0 and 1 are the edges, y goes downwards.
QVector3D filtered(const QImage& image, double x, double y, int wrapS, int wrapT)
{
    const Pair columns = neighbours(x, image.width(), wrapS);
    const Pair rows = neighbours(y, image.height(), wrapT);
    QVector3D sum;
    for (int row = 0; row < 2; ++row)
        for (int column = 0; column < 2; ++column)
        {
            const double weight =
                (column ? columns.second : 1 - columns.second) * (row ? rows.second : 1 - rows.second);
            const QRgb color = image.pixel(columns.texels[column], rows.texels[row]);
            sum += float(weight / 255) * QVector3D(float(qRed(color)), float(qGreen(color)), float(qBlue(color)));
        }
    return sum;
}

double lightOf(int channel)
{
    return std::pow(channel / 255.0, 2.2);
}

/// From -1 to 1 across the square.
double placeOf(int pixel)
{
    const double half = 3.0 * std::tan(0.4); // of what the camera sees there
    return (2.0 * (pixel + 0.5) / kSide - 1.0) * half;
}

/// `full` is the light of a texel of 1.
void expectFiltered(const QImage& picture, const QImage& image, int wrapS, int wrapT, const char* manager,
                    double full = 1.0)
{
    const auto texelOf = [full](int channel) { return lightOf(channel) / full; };
    double worst = 0.0;
    QPoint where;
    int pixels = 0;
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x)
        {
            if (std::max(std::abs(placeOf(x)), std::abs(placeOf(y))) > 0.98)
                continue; // of the background, or not far from it
            // The square shows the coordinates from -0.5 to 1.5.
            const QVector3D wanted = filtered(image, 0.5 + placeOf(x), 0.5 + placeOf(y), wrapS, wrapT);
            const QRgb drawn = picture.pixel(x, y);
            const double off = std::max({std::abs(texelOf(qRed(drawn)) - double(wanted.x())),
                                         std::abs(texelOf(qGreen(drawn)) - double(wanted.y())),
                                         std::abs(texelOf(qBlue(drawn)) - double(wanted.z()))});
            if (off > worst)
                where = {x, y};
            worst = std::max(worst, off);
            ++pixels;
        }
    EXPECT_GT(pixels, 10000);
    // A driver counts parts of a texel in steps of 1/256, each way; a step of the picture is up to 0.009.
    EXPECT_LE(worst, 0.02 / full) << manager << " " << wrapS << " " << wrapT << " at " << where.x() << " " << where.y();
}

} // namespace

TEST(WrapPictureTest, EveryPixelIsWhatALinearFilterGivesAlsoAcrossTheEdges)
{
    const QImage image = scattered(16, 8);
    for (const char* manager : {"sampler", "array2d"})
        for (const auto& [wrapS, wrapT] : {std::pair(kRepeat, kRepeat), std::pair(kMirror, kMirror),
                                           std::pair(kClamp, kClamp), std::pair(kRepeat, kClamp)})
            expectFiltered(draw(squareOf(image, wrapS, wrapT, 2.0, -0.5), manager), image, wrapS, wrapT, manager);
}

TEST(WrapPictureTest, SoItIsWithTexturesThatRepeatOfThemselves)
{
    const QImage image = scattered(16, 8);
    const ModelFolder folder;
    folder.write("picture.ktx", ktxFile(image));
    for (const char* manager : {"sampler", "array2d"})
        for (const auto& [wrapS, wrapT] : {std::pair(kRepeat, kRepeat), std::pair(kClamp, kMirror)})
        {
            Square square = squareOf(image, wrapS, wrapT, 2.0, -0.5);
            square.root["images"] = QJsonArray{QJsonObject{{"uri", "picture.ktx"}}};
            expectFiltered(draw(square, manager, folder), image, wrapS, wrapT, manager);
        }
}

// Each picture of a material has a way of its own to go on; the other ones of this square have none.
TEST(WrapPictureTest, SoItIsWithWhatShinesByItself)
{
    const QImage image = scattered(16, 8);
    for (const char* manager : {"sampler", "array2d"})
        for (const auto& [wrapS, wrapT] : {std::pair(kRepeat, kRepeat), std::pair(kClamp, kMirror)})
        {
            constexpr double kFull = 0.5; // below where bright light is held back
            Square square = squareOf(image, wrapS, wrapT, 2.0, -0.5);
            const QJsonValue texture = square.material["pbrMetallicRoughness"].toObject()["baseColorTexture"];
            square.material = {{"pbrMetallicRoughness", QJsonObject{{"baseColorFactor", QJsonArray{0.0, 0.0, 0.0, 1.0}},
                                                                    {"metallicFactor", 1.0}}},
                               {"emissiveTexture", texture},
                               {"emissiveFactor", QJsonArray{kFull, kFull, kFull}}};
            square.root["extensionsUsed"] = QJsonArray{"KHR_texture_transform"};
            expectFiltered(draw(square, manager), image, wrapS, wrapT, manager, kFull);
        }
}

// Moved by half of itself and looked at half a picture farther, a picture that repeats shows what it showed: but the
// seams lie where its middle was.
TEST(WrapPictureTest, SeamsOfSmallRepeatsAreNotToBeSeen)
{
    constexpr int kSize = 64;
    QImage image(kSize, kSize, QImage::Format_RGB32);
    QImage moved = image;
    for (int y = 0; y < kSize; ++y)
        for (int x = 0; x < kSize; ++x)
            image.setPixel(x, y, qRgb(4 * x, 4 * y, 255 - 4 * x)); // a step from one edge to the other
    for (int y = 0; y < kSize; ++y)
        for (int x = 0; x < kSize; ++x)
            moved.setPixel(x, y, image.pixel((x + kSize / 2) % kSize, (y + kSize / 2) % kSize));
    for (const double repeats : {1.7, 6.3, 13.0, 60.0}) // by levels from 0 on to the last one
    {
        const QImage drawn = draw(squareOf(image, kRepeat, kRepeat, repeats, 0.0), "array2d");
        const QImage same = draw(squareOf(moved, kRepeat, kRepeat, repeats, 0.5), "array2d");
        EXPECT_LE(difference(drawn, same).largest, 3) << repeats << " repeats";
    }
}
