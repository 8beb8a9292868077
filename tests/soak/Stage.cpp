// SPDX-License-Identifier: MIT
#include "Stage.h"

#include "Choices.h"
#include "Crowd.h"
#include "OrbitCamera.h"
#include "Random.h"

#include "Array2DTextureManager.h"
#include "AutoBinder.h"
#include "BindlessTextureManager.h"
#include "DrawBuffers.h"
#include "FramebufferObject.h"
#include "GLFunctions.h"
#include "OpenGLDeviceContext.h"
#include "SamplerTextureManager.h"
#include "ShaderProgram.h"
#include "ShadowMapManager.h"
#include "Texture.h"

#include <QSize>

namespace vrksoak
{

using namespace Harrow::Vrk;
using vrkview::ManagerKind;

namespace
{

constexpr int kArraySlots = 14;
constexpr QSize kSizes[] = {{320, 180}, {160, 90}, {200, 200}, {320, 180}, {64, 150}};

// The view turns, and the shadows of what moves are rendered, once in so many frames: they cost far more than a
// picture.
constexpr int kFramesOfView = 8;
constexpr float kDegreesOfView = 3.0f;

std::unique_ptr<Texture> newTarget(GLint internalFormat, int width, int height)
{
    auto texture = std::make_unique<Texture>(nullptr);
    texture->create2D(GL_TEXTURE_2D, internalFormat, width, height);
    return texture;
}

/// A manager that says where its tokens end.
template <typename Manager> class CountedTokens final : public Manager
{
public:
    quint64 end() const
    {
        return this->maxToken().token;
    }
};

} // namespace

QString StageSettings::text() const
{
    return QStringLiteral("%1, %2, %3, crowd of %4")
        .arg(vrkview::wordOf(vrkview::kManagers, manager), vrkview::wordOf(vrkview::kRecordCarriers, carrier),
             QLatin1String(byBaseInstance ? "base instance" : "draw id"))
        .arg(crowd);
}

Stage::Stage() = default;

Stage::~Stage()
{
    destroyTarget();
    _programs.reset();
    _lighting.reset();
    _crowd.reset();
    _records.reset();
    _wardrobe.reset();
    if (_manager)
        TextureManager::setInstance(nullptr);
    _manager.reset();
    OpenGLDeviceContext::resetContext();
}

bool Stage::create(const StageSettings& settings, QString& error)
{
    _settings = settings;
    _model = vrkview::makeCrowd(settings.crowd);
    DrawBuffers::useBaseInstanceDrawing(settings.byBaseInstance);
    _records = std::make_unique<Records>();
    if (!_records->create(settings.carrier, error) || !createManager(settings.manager, error))
        return false;
    _wardrobe = std::make_unique<Wardrobe>(*_manager, vrkview::usesArrays(settings.manager));
    const TextureToken white = _manager->tokenForColor(Qt::white);
    _manager->textureForToken(white);
    _crowd = std::make_unique<CrowdModel>(_model, *_records, *_manager, settings.byBaseInstance, white);
    _lighting = std::make_unique<Lighting>(_model.bounds);
    _tokenEndAtStart = _tokenEnd();
    return _lighting->create(error) && createTarget(kSizes[0].width(), kSizes[0].height(), error) &&
           buildPrograms(0, error);
}

template <typename Manager> Manager& Stage::newManager()
{
    const auto manager = std::make_shared<CountedTokens<Manager>>();
    _manager = manager;
    _tokenEnd = [made = manager.get()] { return made->end(); };
    return *manager;
}

bool Stage::createManager(ManagerKind kind, QString& error)
{
    const bool wantsArrayHandles = kind == ManagerKind::Array2DBindless;
    if ((wantsArrayHandles && !Array2DTextureManager::isBindlessSupported()) ||
        (kind == ManagerKind::Bindless && !BindlessTextureManager::isSupported()))
    {
        error = QStringLiteral("this driver has no bindless textures");
        return false;
    }
    if (kind == ManagerKind::Sampler)
        newManager<SamplerTextureManager>();
    else if (kind == ManagerKind::Bindless)
        newManager<BindlessTextureManager>();
    else
    {
        Array2DTextureManager& arrays = newManager<Array2DTextureManager>();
        arrays.setMaxSlots(kArraySlots);
        arrays.setUseExplicitlyArrayAccessInGLSL(true);
        if (wantsArrayHandles)
            arrays.setBindMode(Array2DTextureManager::BindBindless);
    }
    TextureManager::setInstance(_manager.get());
    return true;
}

// ---- programs ------------------------------------------------------------------------------------------------------

std::unique_ptr<ShaderProgram> Stage::newProgram(Programs& programs, const QString& fragmentName) const
{
    auto program = std::make_unique<ShaderProgram>(nullptr);
    program->setMacroProcessor(&programs.processor);
    program->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral(":/soak/crowd.vert"));
    program->addShaderFromFile(GL_FRAGMENT_SHADER, QStringLiteral(":/soak/%1.frag").arg(fragmentName));
    program->addShaderFromFile(GL_FRAGMENT_SHADER, QStringLiteral("VrkUtilities.glslc"));
    program->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("VrkUtilities.glslc"));
    program->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("VrkUtilities.vert"));
    program->addShaderFromFile(GL_FRAGMENT_SHADER, _manager->getShaderFile());
    program->addShader(GL_VERTEX_SHADER, _records->objectUnit());
    program->addShader(GL_FRAGMENT_SHADER, _records->materialUnit());
    return program;
}

bool Stage::buildPrograms(int look, QString& error)
{
    _look = look;
    auto programs = std::make_unique<Programs>();
    GLSLMacroProcessor& processor = programs->processor;
    processor.addIncludePath(QStringLiteral(":/soak"));
    DrawBuffers::setup(&processor);
    _manager->setup(&processor);
    const bool hasShadows = _lighting->hasShadows();
    processor.addDefine(QStringLiteral("SOAK_LOOK"), QString::number(look));
    processor.addDefine(QStringLiteral("SOAK_SHADOWS"), QString::number(int(hasShadows)));
    if (hasShadows)
        ShadowMapManager::setup(&processor, _lighting->isVariance() ? 1 : 0);
    programs->crowd = newProgram(*programs, QStringLiteral("crowd"));
    if (hasShadows)
    {
        programs->crowd->addShaderFromFile(GL_FRAGMENT_SHADER, ShadowMapManager::getShaderFile());
        programs->depth = newProgram(*programs, QStringLiteral("depth"));
    }
    if (!programs->crowd->link() || (programs->depth && !programs->depth->link()))
    {
        error = QStringLiteral("the driver rejects the crowd's shaders");
        return false;
    }
    _programs = std::move(programs);
    return true;
}

bool Stage::changeLights(Random& random, QString& error)
{
    const bool hadShadows = _lighting->hasShadows();
    const bool wasVariance = _lighting->isVariance();
    _lighting->change(random);
    return (hadShadows == _lighting->hasShadows() && wasVariance == _lighting->isVariance()) ||
           buildPrograms(_look, error);
}

// ---- the picture ---------------------------------------------------------------------------------------------------

bool Stage::createTarget(int width, int height, QString& error)
{
    _width = width;
    _height = height;
    _color = newTarget(GL_RGBA8, width, height);
    _depth = newTarget(GL_DEPTH_COMPONENT32F, width, height);
    _framebuffer = std::make_unique<FramebufferObject>(nullptr);
    const AutoBinder bound(_framebuffer.get());
    _framebuffer->attach(_color.get(), GL_COLOR_ATTACHMENT0, 0);
    _framebuffer->attach(_depth.get(), GL_DEPTH_ATTACHMENT, 0);
    _framebuffer->setDrawBuffers();
    if (_framebuffer->isComplete())
        return true;
    error = QStringLiteral("the framebuffer is not complete");
    return false;
}

void Stage::destroyTarget()
{
    if (_framebuffer)
    {
        const AutoBinder bound(_framebuffer.get());
        _framebuffer->detachAll();
    }
    _framebuffer.reset();
    _color.reset();
    _depth.reset();
}

bool Stage::resizeTarget(Random& random, QString& error)
{
    const QSize size = random.of(kSizes);
    destroyTarget();
    return createTarget(size.width(), size.height(), error);
}

bool Stage::draw(int frame, QString& error)
{
    vrkview::OrbitCamera camera;
    camera.setAngles(kDegreesOfView * float(frame / kFramesOfView), 25.0f);
    const float aspect = float(_width) / float(_height);
    camera.frame(_model, aspect);
    const QMatrix4x4 view = camera.viewFromWorld();
    const QMatrix4x4 projection = camera.clipFromView(aspect);

    _wardrobe->advanceStreamers();
    _crowd->animate(double(frame) / 60.0);
    _crowd->update();
    if (ShadowLayers* const shadows = _lighting->shadows())
        shadows->update(
            projection, view, frame % kFramesOfView == 0,
            [this](const QMatrix4x4& clipFromWorld) { drawDepth(clipFromWorld); }, error);
    drawCrowd(projection * view);
    _crowd->finish();
    return error.isEmpty();
}

void Stage::drawDepth(const QMatrix4x4& clipFromWorld)
{
    ShaderProgram& program = *_programs->depth;
    const AutoBinder programBound(&program);
    _lighting->setFrame(clipFromWorld);
    _lighting->bindFrame(program);
    _crowd->cull(clipFromWorld);
    _crowd->draw(program);
    _lighting->unbindFrame(program);
}

void Stage::drawCrowd(const QMatrix4x4& clipFromWorld)
{
    const AutoBinder target(_framebuffer.get());
    glViewport(0, 0, _width, _height);
    glDepthMask(GL_TRUE);
    glClearColor(0.1f, 0.12f, 0.15f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    ShaderProgram& program = *_programs->crowd;
    const AutoBinder programBound(&program);
    _lighting->setFrame(clipFromWorld);
    _lighting->bind(program);
    _crowd->cull(clipFromWorld);
    _crowd->draw(program);
    _lighting->unbind(program);
}

bool Stage::rest(QString& error)
{
    _crowd->reset();
    for (const TextureToken& token : _wardrobe->tokens())
        _wardrobe->remove(token);
    _wardrobe->emptyPool();
    _lighting->setEnvironment(nullptr);
    _lighting->clear();
    OpenGLDeviceContext::resetContext();
    if (!buildPrograms(0, error))
        return false;
    if (const quint64 end = _tokenEnd(); end != _tokenEndAtStart)
        error = QStringLiteral("tokens are not given back: they end at %1, and not at %2 as at the start")
                    .arg(end)
                    .arg(_tokenEndAtStart);
    return error.isEmpty();
}

} // namespace vrksoak
