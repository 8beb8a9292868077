// SPDX-License-Identifier: MIT
#include "ShadowLayers.h"

#include "AutoBinder.h"
#include "FramebufferObject.h"
#include "GLFunctions.h"
#include "LightSpace.h"
#include "Texture.h"

#include <QVariant>

namespace vrksoak
{

using namespace Harrow::Vrk;

namespace
{

constexpr int kSide = 128;

QMatrix4x4 transformOf(const ShadowLight& light, const vrkview::Bounds& bounds)
{
    if (light.type == ShadowMapManager::Light::eDirectional)
        return vrkview::spaceOfSun(light.place, light.along);
    if (light.type == ShadowMapManager::Light::ePoint)
        return vrkview::spaceOfPoint(light.place);
    return vrkview::spaceOfSpot(light.place, light.along, 2.0f * bounds.radius());
}

} // namespace

ShadowLayers::ShadowLayers(const std::vector<ShadowLight>& lights, const vrkview::Bounds& bounds, bool isVariance)
    : _isVariance(isVariance), _bounds(bounds.minimum, bounds.maximum)
{
    for (const ShadowLight& source : lights)
    {
        auto light = std::make_unique<ShadowMapManager::Light>();
        light->setType(source.type);
        light->setCSMLevels(source.cascades);
        if (source.type == ShadowMapManager::Light::eSpot)
            light->setSpotCutoff(source.cutoff);
        light->setTransform(transformOf(source, bounds));
        _lightList.append(QVariant::fromValue<QObject*>(light.get()));
        _lights.push_back(std::move(light));
    }
    _framebuffer = std::make_unique<FramebufferObject>(nullptr);
    _depth = std::make_unique<Texture>(nullptr);
    _depth->create2D(GL_TEXTURE_2D, GL_DEPTH_COMPONENT32F, kSide, kSide);
    const AutoBinder bound(_framebuffer.get());
    _framebuffer->attach(_depth.get(), GL_DEPTH_ATTACHMENT, 0);
    makeLayers(1);
}

ShadowLayers::~ShadowLayers()
{
    const AutoBinder bound(_framebuffer.get());
    _framebuffer->detachAll();
}

/// Outside of a layer all is far away.
void ShadowLayers::makeLayers(int count)
{
    constexpr GLfloat kFar[] = {1.0f, 1.0f, 1.0f, 1.0f};
    _layers = std::make_unique<Texture>(nullptr);
    _layers->create3D(GL_TEXTURE_2D_ARRAY, _isVariance ? GL_RG32F : GL_R32F, kSide, kSide, count);
    const AutoBinder bound(_layers.get());
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_BORDER);
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_BORDER);
    glTexParameterfv(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_BORDER_COLOR, kFar);
    _data.setProjectionTexture(_layers.get());
    _madeLayers = count;
}

bool ShadowLayers::update(const QMatrix4x4& clipFromView, const QMatrix4x4& viewFromWorld, bool sceneHasMoved,
                          const DrawDepth& draw, QString& error)
{
    constexpr GLfloat kFar[] = {1.0f, 1.0f, 0.0f, 0.0f};
    const bool changed = ShadowMapManager::processLights(_lightList, _data, &clipFromView, &viewFromWorld, &_bounds);
    if (!changed && !sceneHasMoved)
        return true;
    if (_data.transformCount > _madeLayers)
        makeLayers(_data.transformCount);
    const AutoBinder bound(_framebuffer.get());
    glViewport(0, 0, kSide, kSide);
    for (int layer = 0; layer < _data.transformCount; ++layer)
    {
        _framebuffer->attach3D(_layers.get(), GL_COLOR_ATTACHMENT0, layer, 0);
        if (!_framebuffer->isComplete())
            error = QStringLiteral("layer %1 of the shadows cannot be drawn into").arg(layer);
        glDepthMask(GL_TRUE);
        glClearBufferfv(GL_COLOR, 0, kFar);
        glClear(GL_DEPTH_BUFFER_BIT);
        draw(_data.transforms[layer].toMatrix());
        _framebuffer->detach(GL_COLOR_ATTACHMENT0);
    }
    return error.isEmpty();
}

void ShadowLayers::bind(ShaderProgram& program)
{
    ShadowMapManager::bind(&program, QVariant::fromValue<QObject*>(&_data));
}

void ShadowLayers::unbind(ShaderProgram& program)
{
    ShadowMapManager::unbind(&program, QVariant::fromValue<QObject*>(&_data));
}

} // namespace vrksoak
