// SPDX-License-Identifier: MIT
#include "Farbfeld.h"

#include <VrkCore/Memory.h>
#include <VrkGL/TextureIO.h>
#include <VrkGL/TextureLoader.h>

#include <QImage>
#include <QtEndian>

#include <cstring>
#include <memory>

namespace vrkview
{

using namespace Harrow::Vrk;

namespace
{

constexpr quint64 kHeaderBytes = 16;
constexpr quint32 kLargestSide = 1 << 15;

class FarbfeldLoader : public TextureLoader2DHelper
{
public:
    FarbfeldLoader(Memory* memory, quint32 width, quint32 height) : _memory(memory), _width(width), _height(height) {}

    bool valid() const override
    {
        return _width > 0 && _width <= kLargestSide && _height > 0 && _height <= kLargestSide &&
               _memory->size() >= kHeaderBytes + pixelBytes();
    }
    quint32 width() const override
    {
        return _width;
    }
    quint32 height() const override
    {
        return _height;
    }

    Texture* load(const TextureFileInfo& info) override
    {
        void* const pixels = _memory->get(kHeaderBytes, pixelBytes());
        QImage image(int(_width), int(_height), QImage::Format_ARGB32);
        if (!pixels || image.isNull())
            return nullptr;
        const auto* pixel = static_cast<const uchar*>(pixels);
        for (int row = image.height() - 1; row >= 0; --row) // OpenGL has the bottom row first
        {
            auto* const line = reinterpret_cast<QRgb*>(image.scanLine(row));
            for (int column = 0; column < image.width(); ++column, pixel += 8)
                line[column] = toRgb(pixel);
        }
        _memory->release(pixels);
        return QImageToTexture(image, false, info);
    }

private:
    quint64 pixelBytes() const
    {
        return quint64(_width) * _height * 8;
    }

    static QRgb toRgb(const uchar* pixel)
    {
        const auto channel = [pixel](std::size_t index)
        { return (qFromBigEndian<quint16>(pixel + 2 * index) + 128) / 257; };
        return qRgba(channel(0), channel(1), channel(2), channel(3));
    }

    std::unique_ptr<Memory> _memory; // a loader owns it
    quint32 _width;
    quint32 _height;
};

} // namespace

TextureLoader* FarbfeldRecogniser::recognise(Memory* memory, const QString& /*name*/) const
{
    void* const bytes = memory->get(0, kHeaderBytes);
    if (!bytes)
        return nullptr; // shorter than a header: somebody else's
    const auto* const header = static_cast<const uchar*>(bytes);
    TextureLoader* loader = nullptr;
    if (std::memcmp(header, "farbfeld", 8) == 0)
        loader = new FarbfeldLoader(memory, qFromBigEndian<quint32>(header + 8), qFromBigEndian<quint32>(header + 12));
    memory->release(bytes);
    return loader;
}

} // namespace vrkview
