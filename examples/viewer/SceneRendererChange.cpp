// SPDX-License-Identifier: MIT
// Other settings for a renderer that is at work.
#include "Environment.h"
#include "Gizmos.h"
#include "Scene.h"
#include "SceneRenderer.h"
#include "ShadowMaps.h"

#include <VrkGL/ShaderProgram.h>

#include <utility>

namespace vrkview
{

namespace
{

bool isSame(const LightSettings& a, const LightSettings& b)
{
    return a.set == b.set && a.ringCount == b.ringCount && a.cascades == b.cascades;
}

/// Whether the same programs and the same objects on the GPU serve both.
bool haveSameScene(const RenderSettings& a, const RenderSettings& b)
{
    return a.drawIdCarrier == b.drawIdCarrier && a.recordCarrier == b.recordCarrier && a.manager == b.manager &&
           a.shadows == b.shadows && a.shadowMaps == b.shadowMaps && isSame(a.lights, b.lights) &&
           a.environment.path.isEmpty() == b.environment.path.isEmpty();
}

/// Whether the same filtered maps serve both.
bool haveSameMaps(const EnvironmentSettings& a, const EnvironmentSettings& b)
{
    return a.path == b.path && (a.path.isEmpty() || (a.specular == b.specular && a.diffuse == b.diffuse));
}

} // namespace

bool SceneRenderer::change(const Model& model, const RenderSettings& settings, QString& error)
{
    if (!isSupported(model, settings, error))
        return false;

    // Filtering takes long, so maps that still serve are kept.
    std::unique_ptr<Environment> environment;
    if (!haveSameMaps(_settings.environment, settings.environment) && !settings.environment.path.isEmpty())
    {
        environment = std::make_unique<Environment>();
        if (!environment->create(settings.environment, error))
            return false;
    }
    if (!haveSameScene(_settings, settings))
        return rebuild(model, settings, std::move(environment), error);
    if (environment)
        _environment.swap(environment);
    if (changeInPlace(settings, error))
        return true;
    if (environment)
        _environment.swap(environment);
    QString ignored; // it is what was there before
    changeInPlace(_settings, ignored);
    return false;
}

/// `environment` takes the place of the one that there is; null keeps that, as far as the settings want one.
bool SceneRenderer::rebuild(const Model& model, const RenderSettings& settings,
                            std::unique_ptr<Environment> environment, QString& error)
{
    const RenderSettings formerSettings = _settings;
    std::unique_ptr<Environment> former = std::move(_environment);
    destroy();
    const bool wantsFormer = !environment && !settings.environment.path.isEmpty();
    _environment = wantsFormer ? std::move(former) : std::move(environment);
    if (build(model, settings, error))
        return true;

    if (wantsFormer)
        former = std::move(_environment);
    destroy();
    _environment = std::move(former);
    QString alsoFailed;
    if (!build(model, formerSettings, alsoFailed))
        destroy();
    return false;
}

/// What needs no other scene.
bool SceneRenderer::changeInPlace(const RenderSettings& settings, QString& error)
{
    if (_environment)
        _environment->expose(settings.environment);
    if (settings.debugView != _debugView && !buildDebugProgram(settings.debugView, error))
        return false;
    if (!settings.gizmos)
        _gizmos.reset();
    else if (!_gizmos && !createGizmos(error))
        return false;
    _settings = settings;
    return true;
}

} // namespace vrkview
