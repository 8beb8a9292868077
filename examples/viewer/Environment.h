// SPDX-License-Identifier: MIT
// The light of an environment: a latitude-longitude picture, filtered for surfaces that mirror and for surfaces that
// scatter, and the table that goes with it.
#pragma once

#include "RenderSettings.h"

#include <QString>

#include <memory>
#include <vector>

namespace Harrow::Vrk
{
class ShaderProgram;
class Texture;
} // namespace Harrow::Vrk

namespace vrkview
{

/// Made, used and destroyed with the same context current.
class Environment
{
public:
    Environment();
    ~Environment();
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

    /// Loads the picture and filters it, which takes a moment. On false `error` says why in one line. Leaves the
    /// framebuffers as they were, blending and the depth test off.
    bool create(const EnvironmentSettings& settings, QString& error);

    /// Brightens by the exposure of `settings` from now on, of which nothing else counts.
    void expose(const EnvironmentSettings& settings);

    /// Around draws by a bound program that includes Environment.glslh.
    void bind(Harrow::Vrk::ShaderProgram& program);
    void unbind();

private:
    using Map = std::unique_ptr<Harrow::Vrk::Texture>;

    bool load(const QString& path, QString& error);
    bool filter(const EnvironmentSettings& settings);
    float brightness();

    Map _source;
    Map _specular;
    Map _diffuse;
    Map _table;
    float _unexposed = 1.0f; // the scale that shows a white surface in the middle of what a screen has
    float _scale = 1.0f;
};

} // namespace vrkview
