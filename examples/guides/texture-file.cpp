// SPDX-License-Identifier: MIT
// A format of texture files of our own: the library knows it by its first bytes, from memory, from a file and by token.
//
// A TINY file: "TINY", width and height as a byte each, then pairs of bytes, how many pixels (1 to 255) and their grey,
// row after row from the top.
#include "Guide.h"

#include <VrkCore/Memory.h>
#include <VrkGL/AutoBinder.h>
#include <VrkGL/GLFunctions.h>
#include <VrkGL/SamplerTextureManager.h>
#include <VrkGL/Texture.h>
#include <VrkGL/TextureFileInfo.h>
#include <VrkGL/TextureIO.h>
#include <VrkGL/TextureLoader.h>
#include <VrkGL/TextureRecogniser.h>

#include <QImage>
#include <QTemporaryDir>

#include <cstring>
#include <memory>

using namespace Harrow::Vrk;

constexpr char kSignature[] = "TINY";
constexpr quint64 kSignatureBytes = 4;
constexpr quint64 kHeaderBytes = 6;

/// Reads one file. What is in the file is not trusted: runs must fill the picture, and no more than that.
class TinyLoader : public TextureLoader2DHelper
{
public:
    TinyLoader(Memory* memory, quint32 width, quint32 height)
        : _memory(memory), _image(int(width), int(height), QImage::Format_ARGB32)
    {
        const quint64 size = memory->size() - kHeaderBytes;
        void* const runs = memory->get(kHeaderBytes, size);
        _valid = runs && !_image.isNull() && decode(static_cast<const uchar*>(runs), size);
        memory->release(runs);
    }

    bool valid() const override
    {
        return _valid;
    }
    quint32 width() const override
    {
        return quint32(_image.width());
    }
    quint32 height() const override
    {
        return quint32(_image.height());
    }

    Texture* load(const TextureFileInfo& info) override
    {
        return QImageToTexture(_image, false, info); // with mipmaps, in the range of colours that `info` asks for
    }

private:
    bool decode(const uchar* runs, quint64 size)
    {
        const int pixels = _image.width() * _image.height();
        int pixel = 0;
        for (quint64 at = 0; at + 1 < size; at += 2)
            for (int count = runs[at]; count > 0; --count, ++pixel)
            {
                if (pixel == pixels)
                    return false;
                const int row = _image.height() - 1 - pixel / _image.width(); // OpenGL has the bottom row first
                _image.setPixel(pixel % _image.width(), row, qRgb(runs[at + 1], runs[at + 1], runs[at + 1]));
            }
        return pixel == pixels;
    }

    std::unique_ptr<Memory> _memory; // a loader owns it
    QImage _image;
    bool _valid = false;
};

/// Tells whether a file is of this format, by its first bytes. One object serves all files.
class TinyRecogniser : public TextureRecogniser
{
public:
    TextureLoader* recognise(Memory* memory, const QString& /*name*/) const override
    {
        void* const bytes = memory->get(0, kHeaderBytes);
        if (!bytes)
            return nullptr; // shorter than a header: somebody else's
        const auto* const header = static_cast<const uchar*>(bytes);
        const bool isTiny = std::memcmp(header, kSignature, kSignatureBytes) == 0;
        const quint32 width = header[4], height = header[5];
        memory->release(bytes);
        return isTiny ? new TinyLoader(memory, width, height) : nullptr; // without one the memory stays the caller's
    }
};

static Texture* fromMemory(QByteArray bytes, const char* name)
{
    return LoadTextureFromMemory(reinterpret_cast<uchar*>(bytes.data()), size_t(bytes.size()), TextureFileInfo(), name);
}

/// Green of a texel in the base level, which is four by two.
static int texel(Texture* texture, int x, int y)
{
    uchar pixels[2][4][4] = {};
    const AutoBinder bound(texture);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
    return pixels[y][x][1];
}

static void load(Guide& guide)
{
    // Four by two: a white row above three dark pixels and a light one.
    const QByteArray good = QByteArray("TINY\4\2") + "\4\377" + "\3\40" + "\1\300";
    const std::unique_ptr<Texture> loaded(fromMemory(good, "good"));
    guide.expect(loaded && texel(loaded.get(), 0, 1) == 0xFF, "the upper row is white");
    guide.expect(loaded && texel(loaded.get(), 0, 0) == 0x20 && texel(loaded.get(), 3, 0) == 0xC0,
                 "the lower one ends light");

    guide.expect(!fromMemory(good.chopped(2), "short"), "a file that ends too early gives no texture");
    guide.expect(!fromMemory(good + "\1\1", "long"), "neither does one with too many pixels");

    // By a file's path, whatever its suffix, and by token.
    const QTemporaryDir folder;
    const QString path = folder.filePath("picture.dat");
    QFile file(path);
    guide.expect(file.open(QIODevice::WriteOnly) && file.write(good) == good.size(), "the file could be written");
    file.close();
    const std::unique_ptr<Texture> fromFile(LoadTextureFromFile(path, TextureFileInfo()));
    guide.expect(fromFile && texel(fromFile.get(), 3, 0) == 0xC0, "the file is known by its content");

    SamplerTextureManager manager;
    Texture* const managed = manager.textureForToken(manager.tokenForImage(path, TextureFileInfo()));
    guide.expect(managed && texel(managed, 3, 0) == 0xC0, "a manager loads it too");
}

int main(int argc, char** argv)
{
    Guide guide(argc, argv, 8, 8);
    if (!guide.isReady())
        return 1;
    RegisterTextureRecogniser(new TinyRecogniser, "tiny"); // which is asked first for "*.tiny"
    load(guide);
    DeleteAllRegisteredTextureRecognisers();
    return guide.finish();
}
