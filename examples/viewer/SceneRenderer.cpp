// SPDX-License-Identifier: MIT
#include "SceneRenderer.h"

#include "ModelTextures.h"
#include "Scene.h"
#include "ScenePlans.h"

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

#include <QElapsedTimer>

#include <algorithm>
#include <cmath>

namespace vrkview
{

using namespace Harrow::Vrk;

namespace
{

// As std140 lays out u_Frame of Frame.glslh.
struct FrameBlock
{
    float clipFromScene[16];
    float eye[4];
    float toKey[4];
};
static_assert(sizeof(FrameBlock) == 96, "std140 packs the block without gaps");

/// Of length 1, however small the vector is.
QVector3D direction(const QVector4D& vector)
{
    const QVector3D v = vector.toVector3D();
    return (v / std::max({std::abs(v.x()), std::abs(v.y()), std::abs(v.z())})).normalized();
}

double milliseconds(const QElapsedTimer& timer)
{
    return double(timer.nsecsElapsed()) * 1.0e-6;
}

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

bool SceneRenderer::create(const Model& model, const RenderSettings& settings, QString& error)
{
    _plans = std::make_unique<ScenePlans>();
    if (!chooseDrawIdCarrier(settings.drawIdCarrier, error) ||
        !_plans->create(settings.recordCarrier, Scene::wantedRecords(model), error))
        return false;

    // Defines reach a shader when it is added, so they come first.
    _macroProcessor.addIncludePath(QStringLiteral(":/vrkview"));
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
    _scene = std::make_unique<Scene>(model, ModelTextures(*_textures, model), *_textures, *_plans, _byBaseInstance);
    return true;
}

void SceneRenderer::destroy()
{
    _scene.reset();
    _plans.reset();
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
    _byBaseInstance = wanted == DrawIdCarrier::BaseInstance;
    DrawBuffers::useBaseInstanceDrawing(_byBaseInstance);
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
        program->addShader(GL_VERTEX_SHADER, _plans->objectUnit());
        program->addShader(GL_FRAGMENT_SHADER, _plans->materialUnit());
    }
    if (program->link())
        return program;
    error = QStringLiteral("the driver rejects the %1 shaders").arg(name);
    return nullptr;
}

View SceneRenderer::viewOf(const OrbitCamera& camera, float aspect) const
{
    return {camera.viewFromWorld() * _scene->worldFromScene(), camera.clipFromView(aspect)};
}

std::optional<View> SceneRenderer::fileCamera(const QString& name, float aspect) const
{
    const GPUModel& model = _scene->gpuModel();
    bool isNumber = false;
    int index = model.getCameraIndex(name);
    if (index < 0)
        index = name.toInt(&isNumber);
    if (index < 0 || index >= model.getCameraCount() || (!isNumber && model.getCameraIndex(name) < 0))
        return std::nullopt;
    return View{model.getCameraWorldSpaceMatrix(index), model.getCameraProjectionMatrix(index, aspect)};
}

void SceneRenderer::animate(double seconds)
{
    QElapsedTimer timer;
    timer.start();
    _scene->animate(seconds);
    _stats.animate = milliseconds(timer);
}

void SceneRenderer::draw(const View& view)
{
    updateFrame(view);
    glDepthMask(GL_TRUE);
    glClear(GL_DEPTH_BUFFER_BIT);
    drawBackground();
    drawScene(view);
}

void SceneRenderer::updateFrame(const View& view)
{
    FrameBlock block;
    const QMatrix4x4 clipFromScene = view.clipFromView * view.viewFromScene;
    std::copy_n(clipFromScene.constData(), 16, block.clipFromScene);
    store(view.viewFromScene.inverted().map(QVector3D()), block.eye);
    // Over the viewer's left shoulder, so that every side is well lit when it is looked at.
    const QVector3D right = direction(view.viewFromScene.row(0));
    const QVector3D up = direction(view.viewFromScene.row(1));
    const QVector3D back = direction(view.viewFromScene.row(2));
    store((-0.7f * right + 0.7f * up + 0.55f * back).normalized(), block.toKey);

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

void SceneRenderer::drawScene(const View& view)
{
    QElapsedTimer timer;
    const auto timed = [&timer](double& time, const auto& phase)
    {
        timer.start();
        phase();
        time = milliseconds(timer);
    };
    const AutoBinder programBound(_sceneProgram.get());
    _frame->bind(_sceneProgram.get());
    timed(_stats.update, [&] { _scene->update(); });
    timed(_stats.cull, [&] { _stats.culled = _scene->cull(view.clipFromView * view.viewFromScene); });
    timed(_stats.sort, [&] { _scene->sort(); });
    timed(_stats.draw, [&] { _scene->draw(*_sceneProgram, view.viewFromScene); });
    timed(_stats.finish, [&] { _scene->finish(); });
    _frame->unbind(_sceneProgram.get());
    countDraws();
}

void SceneRenderer::countDraws()
{
    _stats.commands = _scene->commandCount();
    _stats.drawCalls = DrawBuffers::getAndResetTotalDrawCalls();
    _stats.batches = DrawBuffers::getAndResetTotalDrawBatches();
    _stats.indices = DrawBuffers::getAndResetTotalDrawIndices();
    _stats.bytesCPU = _scene->gpuModel().memoryEstimateCPU();
    _stats.bytesGPU = _scene->gpuModel().memoryEstimateGPU();
}

} // namespace vrkview
