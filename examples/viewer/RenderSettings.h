// SPDX-License-Identifier: MIT
// The roads that records, draw numbers and textures can take to the shader: choices for the whole process, made on the
// command line and carried out by the renderer. The picture is the same by all of them.
#pragma once

#include "SceneLights.h"

#include <QString>

#include <optional>

namespace vrkview
{

/// What brings the number of a draw to the shader.
enum class DrawIdCarrier
{
    Automatic,    ///< the uniform: with it commands can be culled
    Uniform,      ///< a uniform set before each draw
    BaseInstance, ///< the base instance of one instanced draw for each list; nothing is culled
};

/// What brings the records of objects and materials to the shader.
enum class RecordCarrier
{
    UniformBuffer,
    Uniform,
    BufferTexture,
    Texture,
    StorageBuffer,
};

/// What makes textures reachable from the shader.
enum class ManagerKind
{
    Sampler,         ///< a sampler for each texture of a draw
    Array2D,         ///< copies in the layers of a few array textures
    Array2DBindless, ///< the same, reached by handles
    Bindless,        ///< a handle for each texture
};

/// What is drawn in place of the scene.
enum class DebugView
{
    None,
    Slots,   ///< what the texture manager holds
    Shadows, ///< what the layers of the shadow maps hold
};

/// What the layers of shadow maps hold.
enum class ShadowMapKind
{
    Plain,    ///< depth: shadows with sharp edges
    Variance, ///< depth and its square, smoothed
};

/// How surfaces mirror an environment.
enum class SpecularModel
{
    BlinnPhong,
    AshikhminShirley,
    GGX,
};

/// How they scatter it.
enum class DiffuseModel
{
    Lambert,
    OrenNayar,
};

struct EnvironmentSettings
{
    QString path; ///< empty: there is none
    std::optional<float> exposure;
    SpecularModel specular = SpecularModel::GGX;
    DiffuseModel diffuse = DiffuseModel::Lambert;
};

/// What smooths the edges of a finished picture.
enum class AntiAliasingKind
{
    None,
    FXAA,
    SMAA,
};

struct RenderSettings
{
    DrawIdCarrier drawIdCarrier = DrawIdCarrier::Automatic;
    RecordCarrier recordCarrier = RecordCarrier::UniformBuffer;
    ManagerKind manager = ManagerKind::Sampler;
    DebugView debugView = DebugView::None;
    bool gizmos = false;  ///< grid, axes and where the lights are
    bool shadows = false; ///< lights of the scene that cast shadows, in place of one that stays beside the camera
    ShadowMapKind shadowMaps = ShadowMapKind::Plain;
    LightSettings lights;
    EnvironmentSettings environment;
    AntiAliasingKind antiAliasing = AntiAliasingKind::None;
};

} // namespace vrkview
