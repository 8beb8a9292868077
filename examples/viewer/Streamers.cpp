// SPDX-License-Identifier: MIT
#include "Streamers.h"

#include <VrkGL/ColorCycleTextureStreamer.h>
#include <VrkGL/GLUtilities.h>
#include <VrkGL/ImageCycleTextureStreamer.h>
#include <VrkGL/MandelbrotCPUTextureStreamer.h>
#include <VrkGL/MandelbrotGPUTextureStreamer.h>
#include <VrkGL/Texture.h>
#include <VrkGL/TextureFileInfo.h>
#include <VrkGL/TextureIO.h>

#include <QColor>
#include <QImage>

#include <cmath>
#include <iterator>

namespace vrkview
{

using namespace Harrow::Vrk;

namespace
{

constexpr int kSide = 128; // texels
constexpr int kFramesPerColor = 15;
constexpr int kFramesPerImage = 30;
constexpr int kImages = 6;

// Where the fractal is worth a closer look, how much closer each frame goes, and when it starts again.
constexpr double kCenterX = -0.743643;
constexpr double kCenterY = 0.131825;
constexpr float kZoom = 0.97f;
constexpr int kZoomFrames = 360;

/// A dial with one more field lit than the last one.
QImage dial(int number)
{
    QImage image(kSide, kSide, QImage::Format_ARGB32);
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x)
        {
            const double u = 2.0 * (x + 0.5) / kSide - 1.0;
            const double v = 2.0 * (y + 0.5) / kSide - 1.0;
            const double distance = std::hypot(u, v);
            const double turn = std::fmod(std::atan2(u, -v) / (2.0 * M_PI) + 1.0, 1.0);
            const int field = int(turn * kImages);
            const bool isRing = distance > 0.45 && distance < 0.85;
            image.setPixelColor(x, y,
                                !isRing           ? QColor(24, 28, 36)
                                : field <= number ? QColor::fromHsv(field * 360 / kImages, 190, 235)
                                                  : QColor(60, 66, 78));
        }
    return image;
}

TextureStreamer* makeColors(std::vector<std::function<void()>>& steps)
{
    const QColor colors[] = {QColor(214, 69, 65), QColor(244, 179, 80), QColor(63, 195, 128), QColor(65, 131, 215)};
    ColorCycleTextureStreamer* const streamer =
        ColorCycleTextureStreamer::make(colors, int(std::size(colors)), kSide, kSide, kFramesPerColor, nullptr);
    if (streamer)
        steps.emplace_back([streamer] { streamer->nextFrame(); });
    return streamer;
}

TextureStreamer* makeImages(std::vector<std::function<void()>>& steps)
{
    std::vector<Texture*> textures; // which the streamer takes over
    textures.reserve(kImages);
    for (int i = 0; i < kImages; ++i)
        textures.push_back(QImageToTexture(dial(i).mirrored(), false, TextureFileInfo()));
    auto* const streamer =
        new ImageCycleTextureStreamer(textures.data(), int(textures.size()), kFramesPerImage, nullptr);
    steps.emplace_back([streamer] { streamer->nextFrame(); });
    return streamer;
}

TextureStreamer* watch(MandelbrotTextureStreamer* streamer, std::vector<std::function<void()>>& steps)
{
    if (!streamer)
        return nullptr;
    steps.emplace_back(
        [streamer, frame = 0]() mutable
        {
            if (frame++ % kZoomFrames == 0)
            {
                streamer->setDomainExtents(-2.5, -1.5, 1.0, 1.5);
                streamer->setDomainCenter(kCenterX, kCenterY);
            }
            else
                streamer->zoomDomain(kZoom);
        });
    return streamer;
}

} // namespace

TextureStreamer* Streamers::make(StreamerKind kind)
{
    constexpr int kComputeMajor = 4;
    constexpr int kComputeMinor = 3;
    switch (kind)
    {
    case StreamerKind::Colors:
        return makeColors(_steps);
    case StreamerKind::Images:
        return makeImages(_steps);
    case StreamerKind::MandelbrotGPU:
        if (openGlVersionSupported(kComputeMajor, kComputeMinor))
            return watch(MandelbrotGPUTextureStreamer::make(kSide, kSide, nullptr), _steps);
        break; // the processor can do it too
    case StreamerKind::MandelbrotCPU:
        break;
    }
    return watch(MandelbrotCPUTextureStreamer::make(kSide, kSide, nullptr), _steps);
}

void Streamers::advance()
{
    for (const std::function<void()>& step : _steps)
        step();
}

} // namespace vrkview
