// SPDX-License-Identifier: MIT
// What lights the crowd: an environment, and lights with shadows that come and go.
#pragma once

#include "ShadowLayers.h"

#include <QMatrix4x4>
#include <QSharedPointer>
#include <QString>

#include <memory>
#include <vector>

namespace Harrow::Vrk
{
class ShaderProgram;
class Texture;
class UniformBufferObject;
} // namespace Harrow::Vrk

namespace vrksoak
{

class Random;

class Lighting
{
public:
    /// `bounds` is all that the lights shine on.
    explicit Lighting(const vrkview::Bounds& bounds);
    ~Lighting();

    /// Without lights, in a white environment.
    bool create(QString& error);

    /// Other lights of other kinds, or none, in maps of one kind or the other. A program made for another `hasShadows`
    /// or kind is of no use any more.
    void change(Random& random);
    void clear();
    bool hasShadows() const
    {
        return _shadows != nullptr;
    }
    bool isVariance() const
    {
        return _isVariance;
    }

    /// A latitude-longitude map, which is owned from now on; null for a white one.
    void setEnvironment(std::unique_ptr<Harrow::Vrk::Texture> map);

    /// Null without lights.
    ShadowLayers* shadows()
    {
        return _shadows.get();
    }

    /// The block of what all draws share.
    void setFrame(const QMatrix4x4& clipFromWorld);
    void bindFrame(Harrow::Vrk::ShaderProgram& program);
    void unbindFrame(Harrow::Vrk::ShaderProgram& program);

    /// Around draws by a bound program of the crowd; the frame's block too.
    void bind(Harrow::Vrk::ShaderProgram& program);
    void unbind(Harrow::Vrk::ShaderProgram& program);

private:
    void upload();

    struct Light
    {
        ShadowLight shadow;
        QVector3D color;
        float reach; ///< the distance at which the colour arrives
    };

    static Light makeLight(Random& random, const vrkview::Bounds& bounds);

    vrkview::Bounds _bounds;
    bool _isVariance = false;
    std::vector<Light> _lights;
    std::unique_ptr<ShadowLayers> _shadows;
    std::unique_ptr<Harrow::Vrk::Texture> _environment;
    QSharedPointer<Harrow::Vrk::UniformBufferObject> _frameBlock;
    QSharedPointer<Harrow::Vrk::UniformBufferObject> _lightBlock;
};

} // namespace vrksoak
