// SPDX-License-Identifier: MIT
#include "Lighting.h"

#include "Random.h"

#include "AutoBinder.h"
#include "BufferObject.h"
#include "OpenGLDeviceContext.h"
#include "ShaderProgram.h"
#include "Texture.h"
#include "UniformBufferObject.h"

#include <QVariant>

#include <algorithm>

namespace vrksoak
{

using namespace Harrow::Vrk;
using LightType = ShadowMapManager::Light::Type;

namespace
{

constexpr int kMostLights = 4;

// Of a point light. A map for each cascade of each side can be wanted.
constexpr int kMostSides = 6;
static_assert(kMostLights * kMostSides <= kShadowMapTransformArraySizeMax, "each light can have one cascade");

// As std140 lays out the blocks of Soak.glslh.
struct FrameBlock
{
    float clipFromWorld[16];
};
struct LightRecord
{
    float place[4];
    float color[4];
};
struct LightBlock
{
    float ambient[4];
    LightRecord lights[kMostLights];
};

QSharedPointer<UniformBufferObject> newBlock(const QString& name)
{
    const QSharedPointer<BufferObject> buffer = OpenGLDeviceContext::current()->newBuffer();
    buffer->setTarget(GL_UNIFORM_BUFFER);
    return OpenGLDeviceContext::current()->newUniformBuffer(name, buffer);
}

template <typename Block> void fill(const QSharedPointer<UniformBufferObject>& target, const Block& block)
{
    const QSharedPointer<BufferObject> buffer = target->bufferObject();
    const AutoBinder bound(buffer);
    buffer->uploadArbitraryData(&block, 1, GL_DYNAMIC_DRAW, sizeof block);
}

QVector3D direction(Random& random)
{
    return QVector3D(random.unit() - 0.5f, -0.3f - random.unit(), random.unit() - 0.5f).normalized();
}

} // namespace

Lighting::Lighting(const vrkview::Bounds& bounds) : _bounds(bounds) {}

Lighting::~Lighting() = default;

bool Lighting::create(QString& error)
{
    _frameBlock = newBlock(QStringLiteral("u_Frame"));
    _lightBlock = newBlock(QStringLiteral("u_Lights"));
    setEnvironment(nullptr);
    upload();
    if (!_environment)
        error = QStringLiteral("no texture can be had");
    return _environment != nullptr;
}

void Lighting::clear()
{
    _lights.clear();
    _shadows.reset();
    upload();
}

Lighting::Light Lighting::makeLight(Random& random, const vrkview::Bounds& bounds)
{
    constexpr LightType kTypes[] = {LightType::eDirectional, LightType::eSpot, LightType::ePoint};
    Light light;
    light.shadow = {random.of(kTypes), bounds.center(), direction(random), 0.3f + 0.3f * random.unit(),
                    1 + random.below(4)};
    light.color = QVector3D(0.2f + random.unit(), 0.2f + random.unit(), 0.2f + random.unit());
    light.reach = 0.6f * bounds.radius();
    if (light.shadow.type != LightType::eDirectional)
        light.shadow.place -= bounds.radius() * (0.3f + 0.6f * random.unit()) * light.shadow.along;
    return light;
}

void Lighting::change(Random& random)
{
    clear();
    _isVariance = random.oneIn(2);
    int room = kShadowMapTransformArraySizeMax;
    for (int others = random.below(kMostLights + 1) - 1; others >= 0; --others)
    {
        Light light = makeLight(random, _bounds);
        const int sides = light.shadow.type == LightType::ePoint ? kMostSides : 1;
        light.shadow.cascades = std::min(light.shadow.cascades, (room - others * kMostSides) / sides);
        room -= sides * light.shadow.cascades;
        _lights.push_back(light);
    }
    upload();
    if (_lights.empty())
        return;
    std::vector<ShadowLight> casters;
    for (const Light& light : _lights)
        casters.push_back(light.shadow);
    _shadows = std::make_unique<ShadowLayers>(casters, _bounds, _isVariance);
}

void Lighting::upload()
{
    const float ambient = _lights.empty() ? 0.9f : 0.3f;
    LightBlock block = {{ambient, ambient, ambient, float(_lights.size())}, {}};
    for (std::size_t i = 0; i < _lights.size(); ++i)
    {
        const Light& light = _lights[i];
        const bool isSun = light.shadow.type == LightType::eDirectional;
        const QVector3D place = isSun ? -light.shadow.along : light.shadow.place;
        block.lights[i] = {{place.x(), place.y(), place.z(), isSun ? 0.0f : 1.0f},
                           {light.color.x(), light.color.y(), light.color.z(), light.reach}};
    }
    fill(_lightBlock, block);
}

void Lighting::setEnvironment(std::unique_ptr<Texture> map)
{
    _environment = map ? std::move(map) : std::unique_ptr<Texture>(SolidColorTexture(1.0f, 1.0f, 1.0f, 1.0f));
}

void Lighting::setFrame(const QMatrix4x4& clipFromWorld)
{
    FrameBlock block;
    std::copy_n(clipFromWorld.constData(), 16, block.clipFromWorld);
    fill(_frameBlock, block);
}

void Lighting::bindFrame(ShaderProgram& program)
{
    _frameBlock->bind(&program);
}

void Lighting::unbindFrame(ShaderProgram& program)
{
    _frameBlock->unbind(&program);
}

void Lighting::bind(ShaderProgram& program)
{
    static const QString environmentName = QStringLiteral("u_Environment");
    bindFrame(program);
    _lightBlock->bind(&program);
    _environment->bind();
    program.setUniform(environmentName, QVariant(_environment->unit()));
    if (_shadows)
        _shadows->bind(program);
}

void Lighting::unbind(ShaderProgram& program)
{
    if (_shadows)
        _shadows->unbind(program);
    _environment->unbind();
    _lightBlock->unbind(&program);
    unbindFrame(program);
}

} // namespace vrksoak
