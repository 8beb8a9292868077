// SPDX-License-Identifier: MIT
// The lights that stand in a scene, as plain data in the model's space. They are used where shadows are on; without
// shadows one light stays beside the camera.
#pragma once

#include "Model.h"

#include <QMatrix4x4>
#include <QVector3D>

#include <vector>

namespace vrkview
{

/// As many as the shader has room for; more than can cast shadows.
constexpr int kMostLights = 64;
constexpr int kMostCascades = 8;

struct SceneLight
{
    enum class Kind
    {
        Sun, ///< parallel rays
        Spot,
        Point,
    };

    Kind kind = Kind::Sun;
    QVector3D place;                    ///< of a sun: somewhere within what it shines on
    QVector3D along{0.0f, -1.0f, 0.0f}; ///< unit vector, the way it shines; of no meaning for a point
    QVector3D color{1.0f, 1.0f, 1.0f};  ///< linear, what reaches a surface at `reach`; of a sun, anywhere
    float cutoff = 0.0f;                ///< half the angle of a spot's cone, in radians
    float reach = 1.0f;                 ///< the distance at which `color` arrives; nearer is brighter, farther darker
    int cascades = 0;                   ///< of a sun: parts of what the camera sees, each with a map of its own

    /// Of a model's file: it fades with the square of the distance however near it is, a spot's cone from `fullCone` to
    /// `wholeCone`, and highlights are those that surfaces have in an environment.
    bool ofFile = false;
    float fullCone = 0.0f;
    float wholeCone = 0.0f;
};

/// Which of them shine.
enum class LightSet
{
    All, ///< those of the model's file; where it has none a sun, a spot and a point
    Sun,
    Spot,
    Point,
    Ring, ///< any number of spots around, one beside the other
};

struct LightSettings
{
    LightSet set = LightSet::All;
    int ringCount = 0;
    int cascades = 4;
};

/// Around `bounds`, which must not be empty. `ofFile` are those of the model's file, in the same space.
std::vector<SceneLight> makeLights(const LightSettings& settings, const Bounds& bounds,
                                   const std::vector<SceneLight>& ofFile = {});

/// The lights of a model's file in the scene's space, as many as there is room for. Files count brightness in many
/// units, so all of them together are brought to what the other lights have in the middle of `bounds`, which is in the
/// scene's space too: what counts is their ratio.
std::vector<SceneLight> fileLights(const Model& model, const QMatrix4x4& sceneFromModel, const Bounds& bounds);

} // namespace vrkview
