// SPDX-License-Identifier: MIT
// The objects that the application keeps: lights, and what they are made into.
#include "ShadowMapManager.h"

#include "Diagnostics.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace Harrow::Vrk
{

// ---- Light ---------------------------------------------------------------------------------------------------------

ShadowMapManager::Light::Light(QObject* parent) : QObject(parent) {}

void ShadowMapManager::Light::setType(Type type)
{
    _type = type;
}

void ShadowMapManager::Light::setOn(bool on)
{
    _on = on;
}

void ShadowMapManager::Light::setShadowCaster(bool shadowCaster)
{
    _shadowCaster = shadowCaster;
}

void ShadowMapManager::Light::setCSMLevels(int levels)
{
    _csmLevels = levels;
}

void ShadowMapManager::Light::setSpotCutoff(float radians)
{
    _spotCutoff = radians;
}

void ShadowMapManager::Light::setTransform(const QMatrix4x4& worldFromLight)
{
    _transform = worldFromLight;
}

ShadowMapManager::Light::Type ShadowMapManager::Light::type() const
{
    return _type;
}

bool ShadowMapManager::Light::on() const
{
    return _on;
}

bool ShadowMapManager::Light::shadowCaster() const
{
    return _shadowCaster;
}

int ShadowMapManager::Light::csmLevels() const
{
    return _csmLevels;
}

float ShadowMapManager::Light::spotCutoff() const
{
    return _spotCutoff;
}

QMatrix4x4 ShadowMapManager::Light::transform() const
{
    return _transform;
}

// ---- RenderData ----------------------------------------------------------------------------------------------------

ShadowMapManager::RenderData::Transform::Transform(const QMatrix4x4& matrix)
{
    *this = matrix;
}

ShadowMapManager::RenderData::Transform& ShadowMapManager::RenderData::Transform::operator=(const QMatrix4x4& matrix)
{
    std::memcpy(this->values, matrix.constData(), sizeof this->values);
    return *this;
}

QMatrix4x4 ShadowMapManager::RenderData::Transform::toMatrix() const
{
    QMatrix4x4 matrix;
    std::memcpy(matrix.data(), this->values, sizeof this->values); // data() marks it as one of any kind
    return matrix;
}

bool ShadowMapManager::RenderData::Transform::operator==(const QMatrix4x4& matrix) const
{
    return std::equal(std::begin(this->values), std::end(this->values), matrix.constData());
}

ShadowMapManager::RenderData::RenderData(QObject* parent)
    : QObject(parent),
      transforms(kShadowMapTransformArraySizeMax),
      projectorInfos(kShadowMapInfoArraySizeMax),
      blurInfos(kShadowMapTransformArraySizeMax)
{
}

void ShadowMapManager::RenderData::setProjectionTexture(Texture* texture)
{
    _projectionTexture = texture;
}

bool ShadowMapManager::RenderData::setTransform(int index, const QMatrix4x4& matrix, float blur)
{
    VRK_ASSERT_RETURN(index >= 0 && index < this->transforms.size() && index < this->blurInfos.size(), false,
                      "There is no shadow projection %d among %lld", index,
                      static_cast<long long>(std::min(this->transforms.size(), this->blurInfos.size())));
    const Transform& stored = this->transforms.at(index);
    if (stored == matrix && this->blurInfos.at(index).blur == blur)
        return false;
    this->transforms[index] = matrix;
    this->blurInfos[index].blur = blur;
    return true;
}

Texture* ShadowMapManager::RenderData::projectionTexture() const
{
    return _projectionTexture;
}

} // namespace Harrow::Vrk
