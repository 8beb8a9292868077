// SPDX-License-Identifier: MIT
#include "ShadowMaps.h"

#include "LightSpace.h"

#include <VrkGL/AutoBinder.h>
#include <VrkGL/Texture.h>

#include <QVariant>

#include <utility>

namespace vrkview
{

using namespace Harrow::Vrk;

namespace
{

constexpr int kMapSide = 1024;

QMatrix4x4 transformOf(const SceneLight& light, const Bounds& bounds)
{
    if (light.kind == SceneLight::Kind::Sun)
        return spaceOfSun(light.place, light.along);
    if (light.kind == SceneLight::Kind::Spot)
        return spaceOfSpot(light.place, light.along, (light.place - bounds.center()).length() + bounds.radius());
    return spaceOfPoint(light.place);
}

ShadowMapManager::Light::Type typeOf(SceneLight::Kind kind)
{
    using Type = ShadowMapManager::Light::Type;
    constexpr Type kTypes[] = {Type::eDirectional, Type::eSpot, Type::ePoint};
    return kTypes[int(kind)];
}

std::unique_ptr<ShadowMapManager::Light> newLight(const SceneLight& source, const Bounds& bounds)
{
    auto light = std::make_unique<ShadowMapManager::Light>();
    light->setType(typeOf(source.kind));
    light->setCSMLevels(source.cascades);
    if (source.kind == SceneLight::Kind::Spot)
        light->setSpotCutoff(source.cutoff);
    light->setTransform(transformOf(source, bounds));
    return light;
}

/// A little more than the bounds: what lies on their faces is not cut in two.
std::pair<QVector3D, QVector3D> widened(const Bounds& bounds)
{
    const float margin = 0.01f * bounds.radius();
    const QVector3D all(margin, margin, margin);
    return {bounds.minimum - all, bounds.maximum + all};
}

/// The framebuffer and the viewport, brought back at the end.
class TargetKeeper
{
public:
    TargetKeeper()
    {
        glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &_framebuffer);
        glGetIntegerv(GL_VIEWPORT, _viewport);
    }
    ~TargetKeeper()
    {
        glBindFramebuffer(GL_FRAMEBUFFER, GLuint(_framebuffer));
        glViewport(_viewport[0], _viewport[1], _viewport[2], _viewport[3]);
    }
    TargetKeeper(const TargetKeeper&) = delete;
    TargetKeeper& operator=(const TargetKeeper&) = delete;

private:
    GLint _framebuffer = 0;
    GLint _viewport[4] = {};
};

} // namespace

ShadowMaps::ShadowMaps() = default;

ShadowMaps::~ShadowMaps()
{
    if (_framebuffer != 0)
        glDeleteFramebuffers(1, &_framebuffer);
    if (_depth != 0)
        glDeleteRenderbuffers(1, &_depth);
}

bool ShadowMaps::create(const std::vector<SceneLight>& lights, const Bounds& bounds, ShadowMapKind kind, QString& error)
{
    _kind = kind;
    _bounds = widened(bounds);
    for (const SceneLight& source : lights)
    {
        _lights.push_back(newLight(source, bounds));
        _lightList.append(QVariant::fromValue<QObject*>(_lights.back().get()));
    }

    glGenFramebuffers(1, &_framebuffer);
    glGenRenderbuffers(1, &_depth);
    glBindRenderbuffer(GL_RENDERBUFFER, _depth);
    glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH_COMPONENT24, kMapSide, kMapSide);
    glBindRenderbuffer(GL_RENDERBUFFER, 0);
    if (makeLayers(1) && layersAreDrawable())
        return true;
    error = QStringLiteral("this driver can't draw into layers of depth");
    return false;
}

/// Depth as the lookups want it, from -1 to 1 and not from 0 to 1, needs a texture of numbers. What is outside of a
/// layer is far away.
bool ShadowMaps::makeLayers(int count)
{
    const bool isVariance = _kind == ShadowMapKind::Variance;
    const GLint internalFormat = isVariance ? GL_RG32F : GL_R32F;
    const GLint filter = isVariance ? GL_LINEAR : GL_NEAREST;
    constexpr GLfloat kFar[] = {1.0f, 1.0f, 1.0f, 1.0f};
    _layers = std::make_unique<Texture>(GL_TEXTURE_2D_ARRAY, internalFormat, kMapSide, kMapSide, count, nullptr);
    _data.setProjectionTexture(_layers.get());
    if (!_layers->bind())
        return false;
    glTexImage3D(GL_TEXTURE_2D_ARRAY, 0, internalFormat, kMapSide, kMapSide, count, 0, isVariance ? GL_RG : GL_RED,
                 GL_FLOAT, nullptr);
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_MAX_LEVEL, 0);
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_MIN_FILTER, filter);
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_MAG_FILTER, filter);
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_BORDER);
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_BORDER);
    glTexParameterfv(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_BORDER_COLOR, kFar);
    _layers->unbind();
    _madeLayers = count;
    return true;
}

bool ShadowMaps::layersAreDrawable()
{
    const TargetKeeper keeper;
    glBindFramebuffer(GL_FRAMEBUFFER, _framebuffer);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, _depth);
    glFramebufferTextureLayer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, _layers->textureID(), 0, 0);
    return glCheckFramebufferStatus(GL_FRAMEBUFFER) == GL_FRAMEBUFFER_COMPLETE;
}

int ShadowMaps::layerCount() const
{
    return _data.transformCount;
}

int ShadowMaps::update(const QMatrix4x4& clipFromView, const QMatrix4x4& viewFromScene, bool sceneHasMoved,
                       const DrawDepth& draw)
{
    const bool changed = ShadowMapManager::processLights(_lightList, _data, &clipFromView, &viewFromScene, &_bounds);
    // Where no projection has changed and nothing has moved, the layers of the last frame are those of this one.
    if ((!changed && !sceneHasMoved) || _data.transformCount == 0)
        return 0;
    if (_data.transformCount > _madeLayers && !makeLayers(_data.transformCount))
        return 0;
    renderLayers(draw);
    return _data.transformCount;
}

void ShadowMaps::renderLayers(const DrawDepth& draw)
{
    const TargetKeeper keeper;
    constexpr GLfloat kFar[] = {1.0f, 1.0f, 0.0f, 0.0f};
    glBindFramebuffer(GL_FRAMEBUFFER, _framebuffer);
    glViewport(0, 0, kMapSide, kMapSide);
    for (int layer = 0; layer < _data.transformCount; ++layer)
    {
        glFramebufferTextureLayer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, _layers->textureID(), 0, layer);
        glDepthMask(GL_TRUE);
        glClearBufferfv(GL_COLOR, 0, kFar);
        glClear(GL_DEPTH_BUFFER_BIT);
        const QMatrix4x4 clipFromScene = _data.transforms[layer].toMatrix();
        // Clip space looks the other way than the spaces before it do; a projection that does not turn it mirrors.
        draw(clipFromScene, clipFromScene.determinant() > 0.0);
    }
}

void ShadowMaps::bind(ShaderProgram& program)
{
    ShadowMapManager::bind(&program, QVariant::fromValue<QObject*>(&_data));
}

void ShadowMaps::unbind(ShaderProgram& program)
{
    ShadowMapManager::unbind(&program, QVariant::fromValue<QObject*>(&_data));
}

} // namespace vrkview
