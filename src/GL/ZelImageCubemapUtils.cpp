// SPDX-License-Identifier: MIT
#include "ZelImageCubemapUtils.h"

#include "Diagnostics.h"
#include "GLFunctions.h"
#include "Texture.h"
#include "ZelRenderCubemap.h"

#include <QFileInfo>
#include <QObject>

#include <algorithm>
#include <iterator>
#include <memory>

namespace Harrow::Vrk::ZelImageCubemapUtils
{
namespace
{

struct TypeRow
{
    ZelImageCubemapSourceType type;
    const char* name;
};

constexpr TypeRow kTypes[] = {
    {ZelImageCubemapSourceType::None, QT_TRANSLATE_NOOP("QObject", "None")},
    {ZelImageCubemapSourceType::Cubemap, QT_TRANSLATE_NOOP("QObject", "Cubemap")},
    {ZelImageCubemapSourceType::Sphere, QT_TRANSLATE_NOOP("QObject", "Sphere")},
    {ZelImageCubemapSourceType::LatLong, QT_TRANSLATE_NOOP("QObject", "LatLong")},
    {ZelImageCubemapSourceType::Linear, QT_TRANSLATE_NOOP("QObject", "Linear")},
    {ZelImageCubemapSourceType::Cross, QT_TRANSLATE_NOOP("QObject", "Cross")},
};

/// The source, bound for the length of a conversion: so the renderer never finds all units taken when it binds it.
class BoundSource
{
public:
    explicit BoundSource(Texture* source) : _texture(source), _isBound(source->bind()) {}
    ~BoundSource()
    {
        if (_isBound)
            _texture->unbind();
    }
    BoundSource(const BoundSource&) = delete;
    BoundSource& operator=(const BoundSource&) = delete;

    explicit operator bool() const
    {
        return _isBound;
    }

private:
    Texture* _texture;
    bool _isBound;
};

struct Size
{
    int width;
    int height;
};

/// What a layout asks for: its renderer, and the size of a face. No renderer when the source does not fit.
struct Conversion
{
    std::unique_ptr<ZelRenderCubemapBase> renderer;
    int size = 0;
};

Conversion crossConversion(Texture* source, int colorSpace, Size image)
{
    const auto [low, high] = std::minmax({image.width, image.height});
    if (low < 1 || low == high)
    {
        VRK_LOG_DEBUG("[ !! ] Texture(%d,%d) not a 4:3 or 3:4 image. Cannot load cubemap.", image.width, image.height);
        return {};
    }
    return {std::make_unique<ZelRenderCubemap_Cross>(source, colorSpace, low == image.width), high / 4};
}

Conversion conversionFor(ZelImageCubemapSourceType type, Texture* source, int colorSpace, Size image)
{
    switch (type)
    {
    case ZelImageCubemapSourceType::Sphere:
        return {std::make_unique<ZelRenderCubemap_Sphere>(source, colorSpace), image.width / 4};
    case ZelImageCubemapSourceType::LatLong:
        return {std::make_unique<ZelRenderCubemap_LatLongSphere>(source, colorSpace), image.width / 4};
    case ZelImageCubemapSourceType::Linear:
        return {std::make_unique<ZelRenderCubemap_Linear>(source, colorSpace), image.width / 6};
    case ZelImageCubemapSourceType::Cross:
        return crossConversion(source, colorSpace, image);
    default:
        return {};
    }
}

/// Null too when the source has no unit.
Texture* filtered(Texture* source, ZelRenderCubemapBase& renderer, unsigned target, int size, int layers)
{
    const BoundSource bound(source);
    if (!bound)
        return nullptr;
    renderer.setArrayCubes(layers);
    return renderer.renderToNewTexture(target, GL_RGBA32F, size);
}

} // namespace

// ---- names ---------------------------------------------------------------------------------------------------------

bool canFileSupport3DCubemap(const QString& path)
{
    return QFileInfo(path).suffix().toLower() == QLatin1String("dds");
}

QList<ZelImageCubemapSourceType> supportedTypes()
{
    static const QList<ZelImageCubemapSourceType> types = {
        ZelImageCubemapSourceType::None, ZelImageCubemapSourceType::LatLong, ZelImageCubemapSourceType::Cross,
        ZelImageCubemapSourceType::Linear};
    return types;
}

QString typeAsString(ZelImageCubemapSourceType type)
{
    const auto* const row = std::find_if(std::begin(kTypes), std::end(kTypes),
                                         [type](const TypeRow& candidate) { return candidate.type == type; });
    return row != std::end(kTypes) ? QObject::tr(row->name) : QStringLiteral("Unknown");
}

ZelImageCubemapSourceType typeFromString(const QString& name)
{
    const auto* const row =
        std::find_if(std::begin(kTypes), std::end(kTypes),
                     [&name](const TypeRow& candidate) { return QObject::tr(candidate.name) == name; });
    return row != std::end(kTypes) ? row->type : ZelImageCubemapSourceType::None;
}

// ---- new cube maps -------------------------------------------------------------------------------------------------

Texture* createGLCubemapFromTexture(Texture* source, ZelImageCubemapSourceType type, unsigned target,
                                    ZelImageCubemapColorSpace colorSpace, int maxSize)
{
    VRK_ASSERT_RETURN(nullptr != source, nullptr, "Texture is NULL on createGLCubemapFromTexture");
    const BoundSource bound(source);
    if (!bound)
        return nullptr;
    const Size image = {source->width(0), source->height(0)};
    const Conversion conversion = conversionFor(type, source, static_cast<int>(colorSpace), image);
    if (!conversion.renderer)
        return nullptr;
    const int size = maxSize > 0 ? std::min(conversion.size, maxSize) : conversion.size;
    // Making a renderer touches no texture unit: the source is still the active one.
    return conversion.renderer->renderToNewTexture(target, source->internalFormat(0), size);
}

Texture* createGLCubemapBlurFromGLCubemap(Texture* source, unsigned target, int size, int layers)
{
    VRK_ASSERT_RETURN(nullptr != source, nullptr, "Texture is NULL on createGLCubemapBlurFromGLCubemap");
    ZelRenderCubemap_Blur renderer(source);
    Texture* const texture = filtered(source, renderer, target, size, layers);
    if (!texture)
        VRK_LOG_DEBUG("[ !! ] Unable to create cubemap blur from cubemap.");
    return texture;
}

Texture* createGLCubemapNDotLFromGLCubemap(Texture* source, unsigned target, int size, int layers, float power)
{
    VRK_ASSERT_RETURN(nullptr != source, nullptr, "Texture is NULL on createGLCubemapNDotLFromGLCubemap");
    ZelRenderCubemap_NDotL renderer(source, power);
    Texture* const texture = filtered(source, renderer, target, size, layers);
    if (!texture)
        VRK_LOG_DEBUG("[ !! ] Unable to create cubemap NDotL from cubemap.");
    return texture;
}

} // namespace Harrow::Vrk::ZelImageCubemapUtils
