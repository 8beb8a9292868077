// SPDX-License-Identifier: MIT
#include "SceneRenderer.h"

#include "GpuScene.h"
#include "ModelTextures.h"

#include <VrkGL/AutoBinder.h>
#include <VrkGL/AutoEnabler.h>
#include <VrkGL/BufferObject.h>
#include <VrkGL/DrawBuffers.h>
#include <VrkGL/GLFunctions.h>
#include <VrkGL/OpenGLDeviceContext.h>
#include <VrkGL/SamplerTextureManager.h>
#include <VrkGL/ShaderProgram.h>
#include <VrkGL/UniformBufferObject.h>
#include <VrkGL/VertexArrayObject.h>

#include <algorithm>

namespace vrkview
{

using namespace Harrow::Vrk;

namespace
{

// As std140 lays out u_Frame of Frame.glslh.
struct FrameBlock
{
    float clipFromWorld[16];
    float eye[4];
    float toKey[4];
};
static_assert(sizeof(FrameBlock) == 96, "std140 packs the block without gaps");

void store(const QVector3D& vector, float (&target)[4])
{
    for (int axis = 0; axis < 3; ++axis)
        target[axis] = vector[axis];
    target[3] = 0.0f;
}

} // namespace

SceneRenderer::SceneRenderer() = default;

SceneRenderer::~SceneRenderer()
{
    destroy();
}

bool SceneRenderer::create(const Model& model, DrawIdCarrier drawIdCarrier, QString& error)
{
    if (!chooseDrawIdCarrier(drawIdCarrier, error))
        return false;

    // Defines reach a shader when it is added, so they come first.
    _macroProcessor.addIncludePath(QStringLiteral(":/vrkview"));
    _macroProcessor.addDefine(QStringLiteral("OBJECT_CAPACITY"), QString::number(GpuScene::objectCapacity()));
    DrawBuffers::setup(&_macroProcessor);
    createTextureManager();
    _textures->setup(&_macroProcessor);

    _backgroundProgram = buildProgram(QStringLiteral("background"), false, error);
    _sceneProgram = buildProgram(QStringLiteral("scene"), true, error);
    if (!_backgroundProgram || !_sceneProgram)
        return false;

    const QSharedPointer<BufferObject> frameBuffer = OpenGLDeviceContext::current()->newBuffer();
    frameBuffer->setTarget(GL_UNIFORM_BUFFER);
    _frame = OpenGLDeviceContext::current()->newUniformBuffer(QStringLiteral("u_Frame"), frameBuffer);
    _scene = std::make_unique<GpuScene>(model, ModelTextures(*_textures, model), *_textures);
    return true;
}

void SceneRenderer::destroy()
{
    _scene.reset();
    if (_textures)
        TextureManager::setInstance(nullptr);
    _textures.reset();
    _frame.reset();
    _sceneProgram.reset();
    _backgroundProgram.reset();
}

/// A manager of our own, and not the one that the library would make on demand: its textures go with this context.
void SceneRenderer::createTextureManager()
{
    _textures = std::make_unique<SamplerTextureManager>();
    TextureManager::setInstance(_textures.get());
}

bool SceneRenderer::chooseDrawIdCarrier(DrawIdCarrier wanted, QString& error)
{
    const bool supported = DrawBuffers::isBaseInstanceDrawingSupported();
    if (wanted == DrawIdCarrier::BaseInstance && !supported)
    {
        error = QStringLiteral("this driver can't carry the draw's number in the base instance");
        return false;
    }
    DrawBuffers::useBaseInstanceDrawing(supported && wanted != DrawIdCarrier::Uniform);
    return true;
}

SceneRenderer::Program SceneRenderer::buildProgram(const QString& name, bool drawsScene, QString& error)
{
    auto program = std::make_unique<ShaderProgram>(nullptr);
    program->setMacroProcessor(&_macroProcessor);
    program->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral(":/vrkview/%1.vert").arg(name));
    program->addShaderFromFile(GL_FRAGMENT_SHADER, QStringLiteral(":/vrkview/%1.frag").arg(name));
    program->addShaderFromFile(GL_FRAGMENT_SHADER, QStringLiteral("VrkUtilities.glslc"));
    if (drawsScene)
    {
        // One of the two defines getDrawID(), which one follows from DrawBuffers::setup.
        program->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("VrkUtilities.glslc"));
        program->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("VrkUtilities.vert"));
        program->addShaderFromFile(GL_FRAGMENT_SHADER, _textures->getShaderFile());
    }
    if (program->link())
        return program;
    error = QStringLiteral("the driver rejects the %1 shaders").arg(name);
    return nullptr;
}

void SceneRenderer::draw(const OrbitCamera& camera, float aspect)
{
    updateFrame(camera, aspect);
    glDepthMask(GL_TRUE);
    glClear(GL_DEPTH_BUFFER_BIT);
    drawBackground();
    drawScene();
}

void SceneRenderer::updateFrame(const OrbitCamera& camera, float aspect)
{
    FrameBlock block;
    const QMatrix4x4 clipFromWorld = camera.clipFromView(aspect) * camera.viewFromWorld();
    std::copy_n(clipFromWorld.constData(), 16, block.clipFromWorld);
    store(camera.eye(), block.eye);
    // Over the viewer's left shoulder, so that every side is well lit when it is looked at.
    store((-0.7f * camera.right() + 0.7f * camera.up() + 0.55f * camera.back()).normalized(), block.toKey);

    const QSharedPointer<BufferObject> buffer = _frame->bufferObject();
    const AutoBinder bound(buffer);
    buffer->uploadArbitraryData(&block, 1, GL_DYNAMIC_DRAW, sizeof(block));
}

void SceneRenderer::drawBackground()
{
    const AutoDisabler noDepthTest(GL_DEPTH_TEST);
    const QSharedPointer<DrawBuffers> quad = OpenGLDeviceContext::current()->fullscreenQuad();
    const AutoBinder programBound(_backgroundProgram.get());
    const AutoBinder quadBound(quad.get());
    quad->VAO()->enableShaderProgramArrays(_backgroundProgram.get());
    quad->draw(_backgroundProgram.get());
}

void SceneRenderer::drawScene()
{
    const AutoEnabler depthTest(GL_DEPTH_TEST);
    const AutoBinder programBound(_sceneProgram.get());
    _frame->bind(_sceneProgram.get());
    _scene->draw(*_sceneProgram);
    _frame->unbind(_sceneProgram.get());
}

} // namespace vrkview
