// SPDX-License-Identifier: MIT
#include "ModelImages.h"

#include "Terminal.h"

#include <QFileInfo>
#include <QUrl>

#include <assimp/scene.h>

#include <utility>

namespace vrkview
{

namespace
{

// What a plain picture inside a model may measure. Encoded ones are limited by Qt.
constexpr unsigned int kLargestSide = 1 << 14;

// What two pictures that are merged into one may measure each way.
constexpr QSize kLargestMerged(4096, 4096);

// Stands in a path for the number of a tile.
const QLatin1String kTileMark("<UDIM>");

// Null if it is no picture.
QImage decode(const aiTexture& texture)
{
    const auto* const bytes = reinterpret_cast<const uchar*>(texture.pcData);
    if (!bytes)
        return {};
    // A whole file, `mWidth` bytes long. In one form, whatever it was written in: grey is grey in all channels.
    if (texture.mHeight == 0)
        return QImage::fromData(bytes, int(texture.mWidth)).convertToFormat(QImage::Format_ARGB32);
    if (texture.mWidth > kLargestSide || texture.mHeight > kLargestSide)
        return {};
    return QImage(bytes, int(texture.mWidth), int(texture.mHeight), QImage::Format_ARGB32).copy();
}

// The file in a folder that has this name in any case of letters, or an empty string.
QString withoutCase(const QDir& folder, const QString& name)
{
    if (name.isEmpty())
        return {};
    for (const QFileInfo& file : folder.entryInfoList(QDir::Files))
        if (file.fileName().compare(name, Qt::CaseInsensitive) == 0)
            return file.absoluteFilePath();
    return {};
}

} // namespace

ImageTable::ImageTable(const aiScene& scene, const QString& modelPath)
    : _scene(scene), _folder(QFileInfo(modelPath).absoluteDir())
{
}

std::size_t ImageTable::indexOf(const aiString& name)
{
    return add(find(name));
}

std::size_t ImageTable::add(Image image)
{
    const auto known = _known.constFind(image.path);
    if (known != _known.constEnd())
        return *known;
    const std::size_t index = _images.size();
    _known.insert(image.path, index);
    _images.push_back(std::move(image));
    return index;
}

std::size_t ImageTable::indexOfSurface(const aiString* roughness, const aiString* metal)
{
    const QImage rough = pixelsOf(roughness);
    const QImage metallic = pixelsOf(metal);
    const QSize size = rough.size().expandedTo(metallic.size()).expandedTo({1, 1}).boundedTo(kLargestMerged);
    // The red of a picture at a place of the new one.
    const auto redAt = [&size](const QImage& image, int x, int y, int otherwise)
    {
        return image.isNull() ? otherwise
                              : qRed(image.pixel(int(qint64(x) * image.width() / size.width()),
                                                 int(qint64(y) * image.height() / size.height())));
    };
    Image image;
    image.path = QStringLiteral("roughness %1, metal %2")
                     .arg(roughness ? QString::fromUtf8(roughness->C_Str()) : QString(),
                          metal ? QString::fromUtf8(metal->C_Str()) : QString());
    image.pixels = QImage(size, QImage::Format_RGB32);
    for (int y = 0; y < image.pixels.height(); ++y)
        for (int x = 0; x < image.pixels.width(); ++x)
            image.pixels.setPixel(x, y, qRgb(255, redAt(rough, x, y, 255), redAt(metallic, x, y, metal ? 0 : 255)));
    return add(std::move(image));
}

bool ImageTable::holdsNormals(const aiString& name) const
{
    constexpr int kSide = 16;
    const Image found = find(name);
    const QImage whole = found.pixels.isNull() ? QImage(found.path) : found.pixels;
    if (whole.isNull())
    {
        remark(QStringLiteral("the picture '%1' can't be read").arg(found.path));
        return false;
    }
    const QImage image = whole.scaled(kSide, kSide, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    int blue = 0;
    int others = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
        {
            blue += qBlue(image.pixel(x, y));
            others += (qRed(image.pixel(x, y)) + qGreen(image.pixel(x, y))) / 2;
        }
    constexpr int kTexels = kSide * kSide;
    return blue > 190 * kTexels && others > 90 * kTexels && others < 165 * kTexels;
}

QImage ImageTable::pixelsOf(const aiString* name) const
{
    if (!name)
        return {};
    const Image image = find(*name);
    QImage pixels = image.pixels.isNull() ? QImage(image.path) : image.pixels;
    if (pixels.isNull())
        remark(QStringLiteral("the picture '%1' can't be read").arg(image.path));
    return pixels.convertToFormat(QImage::Format_RGB32);
}

std::vector<Image> ImageTable::take()
{
    return std::move(_images);
}

Image ImageTable::find(const aiString& name) const
{
    const QString text = QString::fromUtf8(name.C_Str());
    if (const aiTexture* const embedded = _scene.GetEmbeddedTexture(name.C_Str()))
    {
        const auto known = _known.constFind(text); // decoded before
        return known != _known.constEnd() ? _images[*known] : Image{text, decode(*embedded)};
    }
    if (text.contains(kTileMark))
        return tilesBesideModel(text);
    return {pathBesideModel(text), {}};
}

// The mark stands for a number: 1001 for the first tile, ten tiles in a row.
Image ImageTable::tilesBesideModel(const QString& name) const
{
    constexpr int kFirstTile = 1001;
    constexpr int kLastTile = 9999;
    constexpr int kTilesInARow = 10;
    const QFileInfo pattern(_folder.absoluteFilePath(QString(name).replace(QLatin1Char('\\'), QLatin1Char('/'))));
    const QString before = pattern.fileName().section(kTileMark, 0, 0);
    const QString after = pattern.fileName().section(kTileMark, 1);
    Image image{pattern.absoluteFilePath(), {}, ImageKind::Tiles, {}};
    for (const QFileInfo& file : pattern.absoluteDir().entryInfoList(QDir::Files, QDir::Name))
    {
        const QString number = file.fileName().mid(before.size(), 4);
        const int tile = number.toInt();
        if (file.fileName() != before + number + after || tile < kFirstTile || tile > kLastTile)
            continue;
        const int offset = tile - kFirstTile;
        image.parts.push_back({file.absoluteFilePath(), {}, QPoint(offset % kTilesInARow, offset / kTilesInARow)});
    }
    return image;
}

// Models come from systems with other separators and without a difference between "A" and "a", they were moved without
// their folders, and some write paths as addresses. A path that leads nowhere stays as it is, for the message.
QString ImageTable::pathBesideModel(const QString& name) const
{
    QString slashes = name;
    slashes.replace(QLatin1Char('\\'), QLatin1Char('/'));
    for (const QString& candidate : {name, slashes, QUrl::fromPercentEncoding(slashes.toUtf8())})
        if (QString path = _folder.absoluteFilePath(candidate); QFileInfo(path).isFile())
            return path;
    const QString inFolder = withoutCase(_folder, QFileInfo(slashes).fileName());
    return inFolder.isEmpty() ? slashes : inFolder;
}

} // namespace vrkview
