// SPDX-License-Identifier: MIT
#include "SceneRenderer.h"

#include "Choices.h"
#include "Environment.h"
#include "Gizmos.h"
#include "ModelTextures.h"
#include "Scene.h"
#include "ScenePlans.h"
#include "ShadowMaps.h"

#include <VrkGL/Array2DTextureManager.h>
#include <VrkGL/AutoBinder.h>
#include <VrkGL/AutoEnabler.h>
#include <VrkGL/BindlessTextureManager.h>
#include <VrkGL/BufferObject.h>
#include <VrkGL/DrawBuffers.h>
#include <VrkGL/GLFunctions.h>
#include <VrkGL/InstanceDataPlan.h>
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

// As std140 lays out u_Lights of Lights.glslh.
struct LightRecord
{
    float place[4];
    float along[4];
    float color[4];
    float more[4];
};
struct LightBlock
{
    float ambient[4];
    LightRecord lights[kMostLights];
};
static_assert(sizeof(LightBlock) == 16 + 64 * kMostLights, "std140 packs the block without gaps");

// What is left of the light of sky and ground where lights of the scene shine.
constexpr float kAmbient = 0.45f;

// How far around a place its shadows are looked up, in the scene's radius.
constexpr float kShadowRadius = 0.0025f;

/// Of length 1, however small the vector is.
QVector3D direction(const QVector4D& vector)
{
    const QVector3D v = vector.toVector3D();
    return (v / std::max({std::abs(v.x()), std::abs(v.y()), std::abs(v.z())})).normalized();
}

/// Every driver has 16 samplers for a stage. These, the table of tokens, two of records, the environment's three and
/// the shadow maps are that many.
constexpr int kArraySlots = 9;

double milliseconds(const QElapsedTimer& timer)
{
    return double(timer.nsecsElapsed()) * 1.0e-6;
}

void store(const QVector3D& vector, float (&target)[4], float last = 0.0f)
{
    for (int axis = 0; axis < 3; ++axis)
        target[axis] = vector[axis];
    target[3] = last;
}

LightRecord recordOf(const SceneLight& light)
{
    LightRecord record;
    store(light.place, record.place, float(light.kind));
    store(light.along, record.along, std::cos(light.cutoff));
    store(light.color, record.color, light.reach * light.reach);
    // From nothing to all of it between the two cosines.
    const float narrowest = 1.0e-4f;
    const float slope = 1.0f / std::max(std::cos(light.fullCone) - std::cos(light.wholeCone), narrowest);
    store({light.ofFile ? 1.0f : 0.0f, slope, -std::cos(light.wholeCone) * slope}, record.more);
    return record;
}

/// All that there ever is in the scene's space, whatever moves.
Bounds boundsIn(const QMatrix4x4& sceneFromModel, const Model& model)
{
    float reach = 0.0f;
    for (const Motion& motion : model.motions)
        reach = std::max(reach, 2.0f * motion.radius);
    const QVector3D margin(reach, reach, reach);
    Bounds bounds;
    bounds.add(sceneFromModel.map(model.bounds.minimum - margin));
    bounds.add(sceneFromModel.map(model.bounds.maximum + margin));
    return bounds;
}

bool link(ShaderProgram& program, const char* name, QString& error)
{
    if (program.link())
        return true;
    error = QStringLiteral("the driver rejects the %1 shaders").arg(QLatin1String(name));
    return false;
}

} // namespace

SceneRenderer::SceneRenderer() = default;

SceneRenderer::~SceneRenderer()
{
    destroy();
}

bool SceneRenderer::isSupported(const Model& model, const RenderSettings& settings, QString& error)
{
    const auto hasLayers = [](const Image& image)
    { return image.kind == ImageKind::Cube || image.kind == ImageKind::Layers; };
    const bool wantsArrayHandles = settings.manager == ManagerKind::Array2DBindless;
    if (settings.drawIdCarrier == DrawIdCarrier::BaseInstance && !DrawBuffers::isBaseInstanceDrawingSupported())
        error = QStringLiteral("this driver can't carry the draw's number in the base instance");
    else if (settings.recordCarrier == RecordCarrier::StorageBuffer && !InstanceDataPlan::supportsStorageMechanism())
        error = QStringLiteral("this driver has no storage blocks");
    else if ((wantsArrayHandles && !Array2DTextureManager::isBindlessSupported()) ||
             (settings.manager == ManagerKind::Bindless && !BindlessTextureManager::isSupported()))
        error = QStringLiteral("this driver has no bindless textures");
    else if (!usesArrays(settings.manager) && std::any_of(model.images.begin(), model.images.end(), hasLayers))
        error = QStringLiteral("cube maps and textures with layers want array2d");
    else
        return true;
    return false;
}

bool SceneRenderer::create(const Model& model, const RenderSettings& settings, QString& error)
{
    return isSupported(model, settings, error) && build(model, settings, error);
}

/// An environment that is there already stays.
bool SceneRenderer::build(const Model& model, const RenderSettings& settings, QString& error)
{
    _settings = settings;
    chooseDrawIdCarrier(settings.drawIdCarrier);
    _plans = std::make_unique<ScenePlans>();
    if (!_plans->create(settings.recordCarrier, Scene::wantedRecords(model), error))
        return false;

    // Defines reach a shader when it is added, so they come first.
    _macroProcessor = GLSLMacroProcessor();
    _macroProcessor.addIncludePath(QStringLiteral(":/vrkview"));
    DrawBuffers::setup(&_macroProcessor);
    createTextureManager(settings.manager);
    _textures->setup(&_macroProcessor);
    if (settings.shadows)
    {
        _macroProcessor.addDefine(QStringLiteral("VRKVIEW_SHADOWS"), QStringLiteral("1"));
        ShadowMapManager::setup(&_macroProcessor, settings.shadowMaps == ShadowMapKind::Variance ? 1 : 0);
    }
    if (!settings.environment.path.isEmpty())
    {
        _macroProcessor.addDefine(QStringLiteral("VRKVIEW_ENVIRONMENT"), QStringLiteral("1"));
        if (!createEnvironment(settings.environment, error))
            return false;
    }
    if (!buildPrograms(settings, error))
        return false;

    const QSharedPointer<BufferObject> frameBuffer = OpenGLDeviceContext::current()->newBuffer();
    frameBuffer->setTarget(GL_UNIFORM_BUFFER);
    _frame = OpenGLDeviceContext::current()->newUniformBuffer(QStringLiteral("u_Frame"), frameBuffer);
    const ModelTextures textures(*_textures, _streamers, model);
    _whiteTiles = textures.whiteTiles();
    if (usesArrays(settings.manager))
        _textures->bind(textures.tokens()); // places for all before the first draw, or the slots grow with each list
    _scene = std::make_unique<Scene>(model, textures, *_textures, *_plans, _byBaseInstance);
    _bounds = boundsIn(_scene->worldFromScene().inverted(), model);
    if (settings.shadows)
    {
        _sceneLights =
            makeLights(settings.lights, _bounds, fileLights(model, _scene->worldFromScene().inverted(), _bounds));
        if (!createLights(_sceneLights, _bounds, settings.shadowMaps, error))
            return false;
    }
    return !settings.gizmos || createGizmos(error);
}

bool SceneRenderer::createEnvironment(const EnvironmentSettings& settings, QString& error)
{
    if (_environment)
    {
        _environment->expose(settings);
        return true;
    }
    _environment = std::make_unique<Environment>();
    return _environment->create(settings, error);
}

bool SceneRenderer::createGizmos(QString& error)
{
    _gizmos = std::make_unique<Gizmos>();
    return _gizmos->create(_bounds, _sceneLights, _macroProcessor, error);
}

void SceneRenderer::destroy()
{
    _gizmos.reset();
    _environment.reset();
    _shadows.reset();
    _lights.reset();
    _scene.reset();
    _plans.reset();
    if (_textures)
        TextureManager::setInstance(nullptr);
    _textures.reset();
    _streamers = {};
    _advancedAt.reset();
    _frame.reset();
    _sceneLights.clear();
    _whiteTiles.clear();
    _stats = FrameStats();
    _debugProgram.reset();
    _depthProgram.reset();
    _sceneProgram.reset();
    _backgroundProgram.reset();
}

/// A manager of our own, and not the one that the library would make on demand: its textures go with this context.
void SceneRenderer::createTextureManager(ManagerKind kind)
{
    if (kind == ManagerKind::Sampler)
        _textures = std::make_shared<SamplerTextureManager>();
    else if (kind == ManagerKind::Bindless)
        _textures = std::make_shared<BindlessTextureManager>();
    else
    {
        const auto arrays = std::make_shared<Array2DTextureManager>();
        arrays->setMaxSlots(kArraySlots);
        arrays->setUseExplicitlyArrayAccessInGLSL(true); // pixels of one draw may want several slots
        if (kind == ManagerKind::Array2DBindless)
            arrays->setBindMode(Array2DTextureManager::BindBindless);
        _textures = arrays;
    }
    TextureManager::setInstance(_textures.get());
}

void SceneRenderer::chooseDrawIdCarrier(DrawIdCarrier wanted)
{
    _byBaseInstance = wanted == DrawIdCarrier::BaseInstance;
    DrawBuffers::useBaseInstanceDrawing(_byBaseInstance);
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

/// Whose vertices are the scene's.
SceneRenderer::Program SceneRenderer::newSceneProgram(const QString& fragmentName)
{
    Program program = newProgram(QStringLiteral("scene"), fragmentName);
    // One of the two defines getDrawID(), which one follows from DrawBuffers::setup.
    program->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("VrkUtilities.glslc"));
    program->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("VrkUtilities.vert"));
    program->addShaderFromFile(GL_FRAGMENT_SHADER, _textures->getShaderFile());
    program->addShader(GL_VERTEX_SHADER, _plans->objectUnit());
    program->addShader(GL_FRAGMENT_SHADER, _plans->materialUnit());
    return program;
}

bool SceneRenderer::buildPrograms(const RenderSettings& settings, QString& error)
{
    const QString background = _environment ? QStringLiteral("sky") : QStringLiteral("background");
    _backgroundProgram = newProgram(background, background);
    _sceneProgram = newSceneProgram(QStringLiteral("scene"));
    if (settings.shadows)
    {
        _sceneProgram->addShaderFromFile(GL_FRAGMENT_SHADER, ShadowMapManager::getShaderFile());
        _depthProgram = newSceneProgram(QStringLiteral("depth"));
    }
    return link(*_backgroundProgram, "background", error) && link(*_sceneProgram, "scene", error) &&
           (!_depthProgram || link(*_depthProgram, "depth", error)) && buildDebugProgram(settings.debugView, error);
}

bool SceneRenderer::buildDebugProgram(DebugView debugView, QString& error)
{
    _debugView = debugView;
    _debugProgram.reset();
    if (debugView == DebugView::None)
        return true;
    const bool isSlots = debugView == DebugView::Slots;
    _debugProgram =
        newProgram(QStringLiteral("background"), isSlots ? QStringLiteral("slots") : QStringLiteral("shadows"));
    _debugProgram->addShaderFromFile(GL_FRAGMENT_SHADER,
                                     isSlots ? _textures->getShaderFile() : ShadowMapManager::getShaderFile());
    return link(*_debugProgram, isSlots ? "slots" : "shadow map", error);
}

bool SceneRenderer::createLights(const std::vector<SceneLight>& lights, const Bounds& bounds, ShadowMapKind kind,
                                 QString& error)
{
    _shadowRadius = kShadowRadius * bounds.radius();
    uploadLights(lights);
    _shadows = std::make_unique<ShadowMaps>();
    return _shadows->create(lights, bounds, kind, error);
}

void SceneRenderer::uploadLights(const std::vector<SceneLight>& lights)
{
    LightBlock block = {};
    store(QVector3D(kAmbient, kAmbient, kAmbient), block.ambient, float(lights.size()));
    std::transform(lights.begin(), lights.end(), block.lights, recordOf);
    const QSharedPointer<BufferObject> buffer = OpenGLDeviceContext::current()->newBuffer();
    buffer->setTarget(GL_UNIFORM_BUFFER);
    _lights = OpenGLDeviceContext::current()->newUniformBuffer(QStringLiteral("u_Lights"), buffer);
    const AutoBinder bound(buffer);
    buffer->uploadArbitraryData(&block, 1, GL_STATIC_DRAW, sizeof(block));
}

View SceneRenderer::viewOf(const OrbitCamera& camera, float aspect) const
{
    return {camera.viewFromWorld() * _scene->worldFromScene(), camera.clipFromView(aspect)};
}

std::optional<View> SceneRenderer::fileCamera(const QString& name, float aspect) const
{
    const int index = fileCameraIndex(name);
    return index < 0 ? std::nullopt : std::optional<View>(fileCameraView(index, aspect));
}

int SceneRenderer::fileCameraIndex(const QString& name) const
{
    const int named = _scene->gpuModel().getCameraIndex(name);
    if (named >= 0)
        return named;
    bool isNumber = false;
    const int index = name.toInt(&isNumber);
    return isNumber && index >= 0 && index < fileCameraCount() ? index : -1;
}

int SceneRenderer::fileCameraCount() const
{
    return _scene->gpuModel().getCameraCount();
}

View SceneRenderer::fileCameraView(int index, float aspect) const
{
    const GPUModel& model = _scene->gpuModel();
    return View{model.getCameraWorldSpaceMatrix(index), model.getCameraProjectionMatrix(index, aspect)};
}

void SceneRenderer::animate(double seconds)
{
    QElapsedTimer timer;
    timer.start();
    _scene->animate(seconds);
    if (!_streamers.isEmpty() && _advancedAt != seconds)
    {
        _advancedAt = seconds;
        _streamers.advance();
        _textures->updateTextureStreamers();
    }
    _stats.animate = milliseconds(timer);
}

void SceneRenderer::draw(const View& view)
{
    QElapsedTimer timer;
    timer.start();
    countDraws(); // what others have drawn since the last frame is not ours
    _scene->update();
    _stats.update = milliseconds(timer);
    if (_shadows)
        drawShadows(view);
    updateFrame(view.clipFromView * view.viewFromScene, view.viewFromScene);
    glDepthMask(GL_TRUE);
    glClear(GL_DEPTH_BUFFER_BIT);
    drawBackground();
    drawScene(view); // which fills the slots
    if (_gizmos)
        _gizmos->draw(*_frame);
    if (_debugProgram)
        drawDebugView();
}

void SceneRenderer::updateFrame(const QMatrix4x4& clipFromScene, const QMatrix4x4& viewFromScene)
{
    FrameBlock block;
    std::copy_n(clipFromScene.constData(), 16, block.clipFromScene);
    store(viewFromScene.inverted().map(QVector3D()), block.eye, _shadowRadius);
    // Over the viewer's left shoulder, so that every side is well lit when it is looked at.
    const QVector3D right = direction(viewFromScene.row(0));
    const QVector3D up = direction(viewFromScene.row(1));
    const QVector3D back = direction(viewFromScene.row(2));
    store((-0.7f * right + 0.7f * up + 0.55f * back).normalized(), block.toKey);

    const QSharedPointer<BufferObject> buffer = _frame->bufferObject();
    const AutoBinder bound(buffer);
    buffer->uploadArbitraryData(&block, 1, GL_DYNAMIC_DRAW, sizeof(block));
}

/// Renders the layers of the shadow maps that have changed: the scene's depth, as each projection sees it.
void SceneRenderer::drawShadows(const View& view)
{
    QElapsedTimer timer;
    timer.start();
    _stats.shadowLayersDrawn = _shadows->update(view.clipFromView, view.viewFromScene, _scene->hasMotion(),
                                                [&](const QMatrix4x4& clipFromScene, bool mirrored)
                                                {
                                                    const AutoBinder programBound(_depthProgram.get());
                                                    updateFrame(clipFromScene, view.viewFromScene);
                                                    _frame->bind(_depthProgram.get());
                                                    _scene->cull(clipFromScene);
                                                    _scene->sort();
                                                    _scene->drawOpaque(*_depthProgram, mirrored);
                                                    _frame->unbind(_depthProgram.get());
                                                });
    _stats.shadowLayers = _shadows->layerCount();
    _stats.shadows = milliseconds(timer);
    countDraws(); // so that those of the scene begin at 0
}

void SceneRenderer::drawBackground()
{
    const AutoBinder programBound(_backgroundProgram.get());
    if (_environment)
    {
        _frame->bind(_backgroundProgram.get());
        _environment->bind(*_backgroundProgram);
    }
    drawQuad(*_backgroundProgram);
    if (_environment)
    {
        _environment->unbind();
        _frame->unbind(_backgroundProgram.get());
    }
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

void SceneRenderer::drawDebugView()
{
    const AutoBinder programBound(_debugProgram.get());
    if (_debugView == DebugView::Slots)
        _textures->bind(_debugProgram.get());
    else
        _shadows->bind(*_debugProgram);
    drawQuad(*_debugProgram);
    if (_debugView == DebugView::Slots)
        _textures->unbind(_debugProgram.get());
    else
        _shadows->unbind(*_debugProgram);
}

void SceneRenderer::bindSceneProgram()
{
    _frame->bind(_sceneProgram.get());
    if (_environment)
        _environment->bind(*_sceneProgram);
    if (!_shadows)
        return;
    _lights->bind(_sceneProgram.get());
    _shadows->bind(*_sceneProgram);
}

void SceneRenderer::unbindSceneProgram()
{
    if (_shadows)
    {
        _shadows->unbind(*_sceneProgram);
        _lights->unbind(_sceneProgram.get());
    }
    if (_environment)
        _environment->unbind();
    _frame->unbind(_sceneProgram.get());
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
    bindSceneProgram();
    timed(_stats.cull, [&] { _stats.culled = _scene->cull(view.clipFromView * view.viewFromScene); });
    timed(_stats.sort, [&] { _scene->sort(); });
    timed(_stats.draw, [&] { _scene->draw(*_sceneProgram, view.viewFromScene); });
    timed(_stats.finish, [&] { _scene->finish(); });
    unbindSceneProgram();
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
