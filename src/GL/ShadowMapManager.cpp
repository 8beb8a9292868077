// SPDX-License-Identifier: MIT
#include "ShadowMapManager.h"

#include "Diagnostics.h"
#include "GLFunctions.h"
#include "GLSLMacroProcessor.h"
#include "ShaderProgram.h"
#include "ShadowMapManagerCulling.h"
#include "Texture.h"

#include <QMetaType>
#include <QVariant>
#include <QVector3D>

#include <algorithm>
#include <iterator>
#include <numbers>
#include <utility>

namespace Harrow::Vrk
{
namespace
{

using RenderData = ShadowMapManager::RenderData;
using Light = ShadowMapManager::Light;

constexpr int kVarianceMapsFlag = 1;
constexpr float kBlur = 0.0005f;

// Of projections that are not fitted. Degrees, and units of the world. The angle is above 90 so that neighbouring sides
// overlap, and the least of all visibilities shows no seam.
constexpr float kSideAngle = 91.0f;
constexpr float kNear = 0.1f;
constexpr float kFar = 100.0f;

float varianceClamp = 0.1f;
QList<QMatrix4x4> sextant;

/// The directions of a point light's sides.
struct SextantRow
{
    QVector3D centre;
    QVector3D up;
};

constexpr SextantRow kSextant[] = {
    {{-1.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f}}, {{1.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f}},
    {{0.0f, 1.0f, 0.0f}, {-1.0f, 0.0f, 0.0f}}, {{0.0f, -1.0f, 0.0f}, {1.0f, 0.0f, 0.0f}},
    {{0.0f, 0.0f, 1.0f}, {0.0f, 1.0f, 0.0f}},  {{0.0f, 0.0f, -1.0f}, {0.0f, 1.0f, 0.0f}},
};

QMatrix4x4 spotProjection(const Light& light)
{
    const float fullAngle = light.spotCutoff() * 360.0f / std::numbers::pi_v<float>; // degrees
    QMatrix4x4 m;
    m.lookAt(QVector3D(), QVector3D(0.0f, 0.0f, -1.0f), QVector3D(0.0f, 1.0f, 0.0f));
    m.perspective(fullAngle, 1.0f, kNear, kFar);
    return m * light.transform().inverted();
}

/// A box of 8 by 8 by 12 around the light.
QMatrix4x4 fixedDirectionalProjection(const Light& light)
{
    QMatrix4x4 m;
    m.scale(0.25f, 0.25f, 1.0f);
    m.scale(1.0f, 1.0f, 1.0f / 12.0f);
    m.translate(0.0f, 0.0f, 6.0f);
    return m * light.transform().inverted();
}

/// One round of `processLights`: the next free projection, and whether anything has changed.
class Round
{
public:
    Round(RenderData& data, ShadowMapManagerCulling& culling) : _data(data), _culling(culling) {}

    void beginLight(RenderData::ProjectorInfo& info)
    {
        changed |= info.index != projectorIndex;
        info.count = 0;
        info.index = projectorIndex;
    }

    void project(RenderData::ProjectorInfo& info, Light& light)
    {
        switch (light.type())
        {
        case Light::ePoint:
            if (_culling.processLightPoint(_data, info, &light, changed))
                projectorIndex += info.count;
            else
                writeAllSides(info, light.transform().inverted());
            break;
        case Light::eSpot:
            write(info, spotProjection(light));
            break;
        case Light::eDirectional:
            if (_culling.processLightDirectional(_data, info, &light, changed))
                projectorIndex += info.count;
            else
                write(info, fixedDirectionalProjection(light));
            break;
        }
    }

    bool isFull() const
    {
        return projectorIndex >= _data.transforms.size();
    }

    int projectorIndex = 0;
    bool changed = false;

private:
    void writeAllSides(RenderData::ProjectorInfo& info, const QMatrix4x4& toLight)
    {
        for (const QMatrix4x4& side : std::as_const(sextant))
        {
            if (isFull() || !write(info, side * toLight))
                return;
        }
    }

    /// False when the blur has no room: `isFull` looks at the transforms alone.
    bool write(RenderData::ProjectorInfo& projectorInfo, const QMatrix4x4& matrix)
    {
        VRK_ASSERT((projectorInfo.index + projectorInfo.count) == projectorIndex,
                   "projection Info (%d,%d) and projectorIndex %d are out of sync", projectorInfo.index,
                   projectorInfo.count, projectorIndex);
        VRK_ASSERT_RETURN(projectorIndex < _data.blurInfos.size(), false,
                          "No room for the blur of shadow projection %d among %lld", projectorIndex,
                          static_cast<long long>(_data.blurInfos.size()));
        changed |= _data.setTransform(projectorIndex, matrix, kBlur);
        ++projectorInfo.count;
        ++projectorIndex;
        return true;
    }

    RenderData& _data;
    ShadowMapManagerCulling& _culling;
};

QVariantList toList(const QVariant& lights)
{
    const QMetaType listType = QMetaType::fromType<QVariantList>();
    if (lights.metaType() == listType)
        return lights.toList();
    QVariantList list;
    if (!QMetaType::convert(lights.metaType(), lights.constData(), listType, &list))
        list.clear();
    return list;
}

/// The lights past the last one, so that a shader finds no projections for them.
void clearInfosFrom(RenderData& data, qsizetype first)
{
    for (qsizetype i = first; i < data.projectorInfos.size(); ++i)
        data.projectorInfos[i] = {};
}

} // namespace

// ---- the program ---------------------------------------------------------------------------------------------------

bool ShadowMapManager::bind(ShaderProgram* program, QVariant dataVariant)
{
    VRK_ASSERT_RETURN(false == dataVariant.isNull(), false, "NULL render data variant used");
    VRK_ASSERT_RETURN(true == dataVariant.canConvert<QObject*>(), false, "render data is not a 'QObject*' type is '%s'",
                      dataVariant.typeName());
    VRK_ASSERT_RETURN(NULL != dataVariant.value<QObject*>(), false, "NULL QObject render data");
    auto* const object = dataVariant.value<QObject*>();
    const auto* const renderData = qobject_cast<const RenderData*>(object);
    if (!renderData)
        VRK_LOG_DEBUG("Type '%s'\n", object->metaObject()->className());
    VRK_ASSERT_RETURN(NULL != renderData, false, "NULL render data used");
    Texture* const texture = renderData->projectionTexture();
    VRK_ASSERT_RETURN(NULL != texture, false, "NULL render data texture used");
    const bool isTextureBound = texture->bind();
    VRK_ASSERT_RETURN(NULL != program, false, "NULL program used");
    if (!isTextureBound) // which it has reported; there is no unit to name
        return false;

    static const QString samplerName = QStringLiteral("u_ShadowMapDepthSampler");
    static const QString clampName = QStringLiteral("u_VarianceClamp");
    static const QString infosName = QStringLiteral("u_ShadowMapProjectionInfos");
    static const QString transformsName = QStringLiteral("u_ShadowMapProjectionTransforms");

    program->setUniform(samplerName, QVariant(texture->unit()));
    program->setUniform(clampName, QVariant(varianceClamp));

    VRK_ASSERT(kShadowMapInfoArraySizeMax == renderData->projectorInfos.size(),
               "Projector Info Array size %d does not match size required by shader %d",
               static_cast<int>(renderData->projectorInfos.size()), kShadowMapInfoArraySizeMax);
    const int infos = program->getUniformLocation(infosName);
    if (infos >= 0)
        glUniform2iv(infos, static_cast<GLsizei>(renderData->projectorInfos.size()),
                     reinterpret_cast<const GLint*>(renderData->projectorInfos.constData()));

    VRK_ASSERT(kShadowMapTransformArraySizeMax == renderData->transforms.size(),
               "Projector Info Array size %d does not match size required by shader %d",
               static_cast<int>(renderData->transforms.size()), kShadowMapTransformArraySizeMax);
    const int transforms = program->getUniformLocation(transformsName);
    if (transforms >= 0)
        glUniformMatrix4fv(transforms, static_cast<GLsizei>(renderData->transforms.size()), GL_FALSE,
                           reinterpret_cast<const GLfloat*>(renderData->transforms.constData()));
    return true;
}

bool ShadowMapManager::unbind(ShaderProgram* /*program*/, QVariant dataVariant)
{
    const auto* const renderData = qobject_cast<const RenderData*>(dataVariant.value<QObject*>());
    VRK_ASSERT_RETURN(NULL != renderData, false, "NULL render data used");
    Texture* const texture = renderData->projectionTexture();
    VRK_ASSERT_RETURN(NULL != texture, false, "NULL render data texture used");
    texture->unbind();
    return true;
}

void ShadowMapManager::setup(GLSLMacroProcessor* processor, int flags)
{
    if (!processor)
        return;
    if (flags & kVarianceMapsFlag)
        processor->addDefine(QStringLiteral("SHADOW_MAP_MANAGER_USE_VARIANCE_MAPS"), QStringLiteral("1"));
    processor->addDefine(QStringLiteral("SHADOW_MAP_MANAGER_INFO_ARRAY_SIZE"),
                         QString::number(kShadowMapInfoArraySizeMax));
    processor->addDefine(QStringLiteral("SHADOW_MAP_MANAGER_TRANSFORM_ARRAY_SIZE"),
                         QString::number(kShadowMapTransformArraySizeMax));
}

void ShadowMapManager::setVarianceClamping(float clamp)
{
    varianceClamp = clamp;
}

QString ShadowMapManager::getShaderFile()
{
    return QStringLiteral("ShadowMapManager.glslc");
}

// ---- the lights ----------------------------------------------------------------------------------------------------

bool ShadowMapManager::processLights(QVariant lights, RenderData& data)
{
    return processLights(std::move(lights), data, nullptr, nullptr, nullptr);
}

bool ShadowMapManager::processLights(QVariant lights, RenderData& data, const QMatrix4x4* projection,
                                     const QMatrix4x4* view, const std::pair<QVector3D, QVector3D>* sceneBounds)
{
    setupSextant();
    if (lights.isNull())
    {
        data.lightCount = 0;
        data.transformCount = 0;
        clearInfosFrom(data, 0);
        return false;
    }

    ShadowMapManagerCulling culling;
    culling.setupCameras(projection, view);
    culling.setupScene(sceneBounds);
    culling.setupPost();

    const QVariantList list = toList(lights);
    const qsizetype maxLights = data.projectorInfos.size();
    if (list.size() > maxLights)
        VRK_LOG_DEBUG("More lights %d than shadow projection supports %d. Ignoring top most.",
                      static_cast<int>(list.size()), static_cast<int>(maxLights));
    const int count = static_cast<int>(std::min(list.size(), maxLights));

    Round round(data, culling);
    for (int i = 0; i < count; ++i)
    {
        RenderData::ProjectorInfo& info = data.projectorInfos[i];
        round.beginLight(info);
        auto* const light = qobject_cast<Light*>(list[i].value<QObject*>());
        VRK_ASSERT_RETURN(NULL != light, false, "Light %d is NULL", i);
        if (!round.isFull() && light->on() && light->shadowCaster())
            round.project(info, *light);
    }

    const bool changed = round.changed || data.transformCount != round.projectorIndex || data.lightCount != count;
    data.transformCount = round.projectorIndex;
    data.lightCount = count;
    clearInfosFrom(data, count);
    return data.transformCount != 0 && changed;
}

void ShadowMapManager::setupSextant()
{
    if (sextant.size() == std::ssize(kSextant))
        return;
    sextant.clear();
    for (const SextantRow& row : kSextant)
    {
        QMatrix4x4 view;
        view.lookAt(QVector3D(), row.centre, row.up);
        QMatrix4x4 projection;
        projection.perspective(kSideAngle, 1.0f, kNear, kFar);
        sextant.append(projection * view);
    }
}

} // namespace Harrow::Vrk
