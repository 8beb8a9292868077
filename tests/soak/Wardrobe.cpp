// SPDX-License-Identifier: MIT
#include "Wardrobe.h"

#include "FileBytes.h"
#include "Random.h"

#include "AutoBinder.h"
#include "ColorCycleTextureStreamer.h"
#include "GLFunctions.h"
#include "GLUtilities.h"
#include "ImageCycleTextureStreamer.h"
#include "MandelbrotCPUTextureStreamer.h"
#include "MandelbrotGPUTextureStreamer.h"
#include "Texture.h"
#include "TextureFileInfo.h"
#include "TextureIO.h"
#include "TextureManager.h"

#include <QColor>
#include <QImage>

#include <algorithm>
#include <bit>

namespace vrksoak
{

using namespace Harrow::Vrk;

namespace
{

// A manager that copies has a slot for each size and form, so there are few.
constexpr int kSides[] = {16, 32, 64};
constexpr int kImageSide = 64;
constexpr int kStreamerSide = 64;
constexpr std::size_t kMost = 40;
constexpr std::size_t kMostLent = 8;

QImage paint(Random& random, int side)
{
    QImage image(side, side, QImage::Format_ARGB32);
    const int cell = 1 << (1 + random.below(4));
    const QRgb light = qRgb(120 + random.below(136), 120 + random.below(136), 120 + random.below(136));
    const QRgb dark = qRgb(random.below(120), random.below(120), random.below(120));
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x)
            image.setPixel(x, y, (x / cell + y / cell) % 2 == 0 ? light : dark);
    return image;
}

/// Of the texture that is bound.
void upload(const QImage& image)
{
    const QImage bytes = image.convertToFormat(QImage::Format_RGBA8888);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, bytes.width(), bytes.height(), 0, GL_RGBA, GL_UNSIGNED_BYTE,
                 bytes.constBits());
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAX_LEVEL, std::bit_width(unsigned(bytes.width())) - 1);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_REPEAT);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_REPEAT);
    glGenerateMipmap(GL_TEXTURE_2D);
}

Texture* newPainted(Random& random, int side)
{
    auto* const texture = new Texture(GL_TEXTURE_2D, GL_RGBA8, side, side, 1, nullptr);
    const AutoBinder bound(texture);
    upload(paint(random, side));
    return texture;
}

TextureStreamer* newColors(Random& random, std::function<void()>& step)
{
    QColor colors[4];
    for (QColor& color : colors)
        color = QColor(random.below(256), random.below(256), random.below(256));
    auto* const made = ColorCycleTextureStreamer::make(colors, 4, kStreamerSide, kStreamerSide, 3, nullptr);
    step = [made] { made->nextFrame(); };
    return made;
}

TextureStreamer* newImages(Random& random, std::function<void()>& step)
{
    Texture* textures[3]; // which the streamer takes over
    for (Texture*& texture : textures)
        texture = newPainted(random, kStreamerSide);
    auto* const made = new ImageCycleTextureStreamer(textures, 3, 5, nullptr);
    step = [made] { made->nextFrame(); };
    return made;
}

template <typename Streamer> TextureStreamer* newFractal(std::function<void()>& step)
{
    Streamer* const made = Streamer::make(kStreamerSide, kStreamerSide, nullptr);
    made->setDomainCenter(-0.743643, 0.131825);
    step = [made, frame = 0]() mutable
    {
        if (++frame % 4 == 0)
            made->zoomDomain(frame % 400 < 200 ? 0.97f : 1.0f / 0.97f);
    };
    return made;
}

} // namespace

Wardrobe::Wardrobe(TextureManager& manager, bool copies) : _manager(manager), _copies(copies)
{
    Random random(1, 0);
    for (int i = 0; i < 6; ++i)
    {
        _files.push_back(_folder.filePath(QStringLiteral("%1.png").arg(i)));
        paint(random, kImageSide).save(_files.back());
    }
}

Wardrobe::~Wardrobe() = default;

bool Wardrobe::isFull() const
{
    return _entries.size() >= kMost;
}

TextureToken Wardrobe::keep(Entry entry)
{
    if (entry.token == INVALID_TOKEN)
        qWarning("a texture has no token");
    _entries.push_back(std::move(entry));
    return _entries.back().token;
}

// ---- what comes ----------------------------------------------------------------------------------------------------

TextureToken Wardrobe::addMade(Random& random)
{
    if (isFull())
        return INVALID_TOKEN;
    Entry entry;
    entry.texture = newPainted(random, random.of(kSides));
    entry.token = _manager.tokenForTexture(entry.texture);
    entry.isPaintable = true;
    return keep(entry);
}

TextureToken Wardrobe::addFromImage(Random& random)
{
    if (isFull())
        return INVALID_TOKEN;
    Entry entry;
    TextureFileInfo info;
    if (random.oneIn(4))
    {
        info.lowValue = 0.25f; // which is a pass on the GPU
        info.highValue = 0.75f;
    }
    entry.texture = QImageToTexture(paint(random, kImageSide), false, info);
    entry.token = _manager.tokenForTexture(entry.texture);
    return keep(entry);
}

bool Wardrobe::holds(const TextureToken& token) const
{
    return std::any_of(_entries.begin(), _entries.end(), [&](const Entry& entry) { return entry.token == token; });
}

TextureToken Wardrobe::addColor(Random& random)
{
    const QColor color(64 * random.below(4), 64 * random.below(4), 200);
    const TextureToken token = _manager.tokenForColor(color);
    if (holds(token))
        return token;
    Entry entry;
    entry.token = token;
    entry.texture = _manager.textureForColor(color);
    return keep(entry);
}

TextureToken Wardrobe::addFromFile(Random& random)
{
    const TextureToken token = _manager.tokenForImage(random.of(_files), TextureFileInfo());
    if (holds(token))
        return token;
    Entry entry;
    entry.token = token;
    entry.texture = _manager.textureForToken(token);
    return keep(entry);
}

/// What cannot be copied is loaded and dropped again.
TextureToken Wardrobe::addFromMemory(Random& random)
{
    const TextureBytes file = makeTextureBytes(random);
    QByteArray bytes = file.bytes;
    TextureFileInfo info;
    info.preprocessed = !file.isPlain; // or its rows are turned around, which a cube map's cannot be
    std::unique_ptr<Texture> texture(LoadTextureFromMemory(reinterpret_cast<unsigned char*>(bytes.data()),
                                                           std::size_t(bytes.size()), info, file.name));
    if (!texture)
        qWarning("the texture '%s' does not load", qUtf8Printable(file.name));
    if (!texture || isFull() || (_copies && !file.isPlain) || texture->target() != GL_TEXTURE_2D)
        return INVALID_TOKEN;
    Entry entry;
    entry.texture = texture.release();
    entry.token = _manager.tokenForTexture(entry.texture);
    return keep(entry);
}

TextureToken Wardrobe::addWrapped(Random& random)
{
    if (isFull())
        return INVALID_TOKEN;
    Entry entry;
    glGenTextures(1, &entry.wrappedName);
    entry.texture = new Texture(entry.wrappedName, nullptr);
    entry.texture->setTarget(GL_TEXTURE_2D);
    {
        const AutoBinder bound(entry.texture);
        upload(paint(random, random.of(kSides)));
    }
    entry.token = _manager.tokenForTexture(entry.texture);
    return keep(entry);
}

TextureToken Wardrobe::addStreamer(Random& random)
{
    constexpr int kMostStreamers = 4;
    const auto streamers =
        std::count_if(_entries.begin(), _entries.end(), [](const Entry& entry) { return bool(entry.step); });
    if (isFull() || streamers >= kMostStreamers)
        return INVALID_TOKEN;
    Entry entry;
    switch (random.below(openGlVersionSupported(4, 3) ? 4 : 3))
    {
    case 0:
        entry.texture = newColors(random, entry.step);
        break;
    case 1:
        entry.texture = newImages(random, entry.step);
        break;
    case 2:
        entry.texture = newFractal<MandelbrotCPUTextureStreamer>(entry.step);
        break;
    default:
        entry.texture = newFractal<MandelbrotGPUTextureStreamer>(entry.step);
        break;
    }
    entry.token = _manager.tokenForTexture(entry.texture);
    return keep(entry);
}

/// In a manager that knows tiles.
TextureToken Wardrobe::addTiles(Random& random)
{
    if (isFull() || !_manager.supportsUDIMs())
        return INVALID_TOKEN;
    Entry entry;
    entry.isTiles = true;
    entry.token = _manager.createUDIMToken();
    for (int i = 1 + random.below(4); i > 0; --i)
    {
        entry.tiles.push_back(newPainted(random, kSides[2]));
        _manager.addUDIMPatch(entry.token, {i % 2, i / 2}, entry.tiles.back());
    }
    return keep(entry);
}

// ---- what happens to them ------------------------------------------------------------------------------------------

TextureToken Wardrobe::some(Random& random) const
{
    return _entries.empty() ? INVALID_TOKEN : random.of(_entries).token;
}

void Wardrobe::repaint(Random& random)
{
    if (_entries.empty())
        return;
    const Entry& entry = random.of(_entries);
    if (!entry.isPaintable)
        return;
    {
        const AutoBinder bound(entry.texture);
        upload(paint(random, random.of(kSides)));
    }
    _manager.dirty(entry.texture);
}

void Wardrobe::lend(Random& random)
{
    constexpr TextureFormat kFormats[] = {RGBA, RGBA16F, R32F};
    if (_lent.size() >= kMostLent)
        return;
    const int side = random.of(kSides);
    const int depth = random.oneIn(3) ? 2 : 1;
    const int samples = depth == 1 && random.oneIn(3) ? 4 : 1;
    if (Texture* const texture = _manager.tempTexture(random.of(kFormats), side, side, depth, samples))
        _lent.push_back(texture);
    if (!_lent.empty() && random.oneIn(2))
    {
        _manager.addTempTextureRef(_lent.back(), 2);
        _manager.releaseTempTextureRef(_lent.back(), 2);
    }
}

void Wardrobe::takeBack(Random& random)
{
    if (!_lent.empty())
    {
        const auto which = _lent.begin() + random.below(int(_lent.size()));
        _manager.releaseTempTextureRef(*which, 1);
        _lent.erase(which);
    }
    if (random.oneIn(4))
        _manager.deleteUnusedTempTextures();
}

void Wardrobe::advanceStreamers()
{
    for (const Entry& entry : _entries)
        if (entry.step)
            entry.step();
    _manager.updateTextureStreamers();
}

// ---- what goes -----------------------------------------------------------------------------------------------------

void Wardrobe::remove(TextureToken token)
{
    const auto found =
        std::find_if(_entries.begin(), _entries.end(), [&](const Entry& entry) { return entry.token == token; });
    if (found == _entries.end())
        return;
    const Entry entry = std::move(*found);
    _entries.erase(found);
    if (entry.isTiles)
    {
        for (Texture* const tile : entry.tiles)
            _manager.removeUDIMPatch(entry.token, tile);
        _manager.deleteUDIM(entry.token);
        for (Texture* const tile : entry.tiles)
            delete tile;
        return;
    }
    _manager.deleteTexture(entry.texture); // which is gone now unless it is a wrapper
    if (entry.wrappedName != 0)
    {
        delete entry.texture;
        glDeleteTextures(1, &entry.wrappedName);
    }
}

std::vector<TextureToken> Wardrobe::tokens() const
{
    std::vector<TextureToken> result;
    for (const Entry& entry : _entries)
        result.push_back(entry.token);
    return result;
}

void Wardrobe::emptyPool()
{
    for (Texture* const texture : _lent)
        _manager.releaseTempTextureRef(texture, 1);
    _lent.clear();
    _manager.deleteUnusedTempTextures();
}

} // namespace vrksoak
