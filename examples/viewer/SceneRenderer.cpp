// SPDX-License-Identifier: MIT
#include "SceneRenderer.h"

#include "ModelTextures.h"
#include "Scene.h"
#include "ScenePlans.h"

#include <VrkGL/Array2DTextureManager.h>
#include <VrkGL/AutoBinder.h>
#include <VrkGL/AutoEnabler.h>
#include <VrkGL/BindlessTextureManager.h>
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

/// With the table of tokens this leaves samplers for others on every driver.
constexpr int kArraySlots = 12;

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
    if (!createTextureManager(settings.manager, error))
        return false;
    _textures->setup(&_macroProcessor);
    if (!buildPrograms(settings.debugView, error))
        return false;

    const QSharedPointer<BufferObject> frameBuffer = OpenGLDeviceContext::current()->newBuffer();
    frameBuffer->setTarget(GL_UNIFORM_BUFFER);
    _frame = OpenGLDeviceContext::current()->newUniformBuffer(QStringLiteral("u_Frame"), frameBuffer);
    const ModelTextures textures(*_textures, model);
    if (settings.manager == ManagerKind::Array2D || settings.manager == ManagerKind::Array2DBindless)
        _textures->bind(textures.tokens()); // places for all before the first draw, or the slots grow with each list
    _scene = std::make_unique<Scene>(model, textures, *_textures, *_plans, _byBaseInstance);
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
    _slotsProgram.reset();
    _sceneProgram.reset();
    _backgroundProgram.reset();
}

/// A manager of our own, and not the one that the library would make on demand: its textures go with this context.
bool SceneRenderer::createTextureManager(ManagerKind kind, QString& error)
{
    const bool wantsArrayHandles = kind == ManagerKind::Array2DBindless;
    if ((wantsArrayHandles && !Array2DTextureManager::isBindlessSupported()) ||
        (kind == ManagerKind::Bindless && !BindlessTextureManager::isSupported()))
    {
        error = QStringLiteral("this driver has no bindless textures");
        return false;
    }
    if (kind == ManagerKind::Sampler)
        _textures = std::make_shared<SamplerTextureManager>();
    else if (kind == ManagerKind::Bindless)
        _textures = std::make_shared<BindlessTextureManager>();
    else
    {
        const auto arrays = std::make_shared<Array2DTextureManager>();
        arrays->setMaxSlots(kArraySlots);
        arrays->setUseExplicitlyArrayAccessInGLSL(true); // pixels of one draw may want several slots
        if (wantsArrayHandles)
            arrays->setBindMode(Array2DTextureManager::BindBindless);
        _textures = arrays;
    }
    TextureManager::setInstance(_textures.get());
    return true;
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

SceneRenderer::Program SceneRenderer::newProgram(const QString& vertexName, const QString& fragmentName)
{
    auto program = std::make_unique<ShaderProgram>(nullptr);
    program->setMacroProcessor(&_macroProcessor);
    program->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral(":/vrkview/%1.vert").arg(vertexName));
    program->addShaderFromFile(GL_FRAGMENT_SHADER, QStringLiteral(":/vrkview/%1.frag").arg(fragmentName));
    program->addShaderFromFile(GL_FRAGMENT_SHADER, QStringLiteral("VrkUtilities.glslc"));
    return program;
}

bool SceneRenderer::buildPrograms(DebugView debugView, QString& error)
{
    const auto linked = [&error](const Program& program, const char* name)
    {
        if (program->link())
            return true;
        error = QStringLiteral("the driver rejects the %1 shaders").arg(QLatin1String(name));
        return false;
    };
    _backgroundProgram = newProgram(QStringLiteral("background"), QStringLiteral("background"));
    _sceneProgram = newProgram(QStringLiteral("scene"), QStringLiteral("scene"));
    // One of the two defines getDrawID(), which one follows from DrawBuffers::setup.
    _sceneProgram->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("VrkUtilities.glslc"));
    _sceneProgram->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("VrkUtilities.vert"));
    _sceneProgram->addShaderFromFile(GL_FRAGMENT_SHADER, _textures->getShaderFile());
    _sceneProgram->addShader(GL_VERTEX_SHADER, _plans->objectUnit());
    _sceneProgram->addShader(GL_FRAGMENT_SHADER, _plans->materialUnit());
    if (!linked(_backgroundProgram, "background") || !linked(_sceneProgram, "scene"))
        return false;
    if (debugView != DebugView::Slots)
        return true;
    _slotsProgram = newProgram(QStringLiteral("background"), QStringLiteral("slots"));
    _slotsProgram->addShaderFromFile(GL_FRAGMENT_SHADER, _textures->getShaderFile());
    return linked(_slotsProgram, "slots");
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
    drawQuad(*_backgroundProgram);
    drawScene(view); // which fills the slots
    if (_slotsProgram)
        drawSlots();
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

void SceneRenderer::drawQuad(ShaderProgram& program)
{
    const AutoDisabler noDepthTest(GL_DEPTH_TEST);
    const QSharedPointer<DrawBuffers> quad = OpenGLDeviceContext::current()->fullscreenQuad();
    const AutoBinder programBound(&program);
    const AutoBinder quadBound(quad.get());
    quad->VAO()->enableShaderProgramArrays(&program);
    quad->draw(&program);
}

void SceneRenderer::drawSlots()
{
    const AutoBinder programBound(_slotsProgram.get());
    _textures->bind(_slotsProgram.get());
    drawQuad(*_slotsProgram);
    _textures->unbind(_slotsProgram.get());
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
