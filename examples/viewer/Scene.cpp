// SPDX-License-Identifier: MIT
#include "Scene.h"

#include "FilledBuffer.h"
#include "ModelTextures.h"

#include <VrkGL/AutoEnabler.h>
#include <VrkGL/DrawBuffers.h>
#include <VrkGL/DrawElementsIndirectCommand.h>
#include <VrkGL/GLFunctions.h>
#include <VrkGL/InstanceDataCollection.h>
#include <VrkGL/OpenGLDeviceContext.h>
#include <VrkGL/SamplerTextureManager.h>
#include <VrkGL/TextureManager.h>
#include <VrkGL/VertexArrayObject.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <set>

namespace vrkview
{

using namespace Harrow::Vrk;

namespace
{

// Flags of drawables. The library knows the two-sided one and the one that asks for an order by distance.
constexpr quint64 kOpaque = 1 << 0;
constexpr quint64 kTransparent = 1 << 1;
constexpr quint64 kPassMask = kOpaque | kTransparent;
// By base instance, where the library leaves the sides of triangles alone: which are the front ones.
constexpr quint64 kFrontCCW = 1 << 2;
constexpr quint64 kFrontCW = 1 << 3;
constexpr quint64 kFrontMask = kFrontCCW | kFrontCW;
constexpr quint64 kOneUVSet = quint64(1) << 55;
constexpr quint64 kTwoUVSets = quint64(2) << 55;
constexpr quint64 kTwoSided = quint64(1) << 60;
constexpr quint64 kByDistance = quint64(1) << 62;

constexpr quint64 kOnlySimpleDraws = 1 << 4; // feature flag

// The radius that a scene is brought to: the library takes for nothing what is below a thousandth.
constexpr int kSceneRadiusExponent = 10;

/// A power of two near the size, by which things are scaled without rounding.
float powerOfTwoNear(float size)
{
    return size > 0.0f && std::isfinite(size) ? std::ldexp(1.0f, std::clamp(std::ilogb(size), -100, 100)) : 1.0f;
}

float largestCoordinate(const Mesh& mesh)
{
    float largest = 0.0f;
    for (const QVector3D& position : mesh.positions)
        largest = std::max({largest, std::abs(position.x()), std::abs(position.y()), std::abs(position.z())});
    return largest;
}

QMatrix4x4 scaling(float factor)
{
    QMatrix4x4 matrix;
    matrix.scale(factor);
    return matrix;
}

GPUModel::BoundingBox boxOf(const Mesh& mesh, float scale)
{
    Bounds bounds;
    for (const QVector3D& position : mesh.positions)
        bounds.add(position / scale);
    return {bounds.minimum.x(), bounds.minimum.y(), bounds.minimum.z(),
            bounds.maximum.x(), bounds.maximum.y(), bounds.maximum.z()};
}

/// How many textures the draws of one list can have between them.
std::size_t texturesOfOneList(const TextureManager& manager)
{
    if (dynamic_cast<const SamplerTextureManager*>(&manager))
        return std::size_t(std::max(manager.getMaxSlots(), 1));
    return std::numeric_limits<std::size_t>::max();
}

quint64 flagsOf(const Mesh& mesh, const Material& material)
{
    return (material.transparent ? kTransparent : kOpaque) | (material.twoSided ? kTwoSided : 0) |
           (mesh.texCoords.empty()       ? 0
            : mesh.moreTexCoords.empty() ? kOneUVSet
                                         : kTwoUVSets);
}

} // namespace

std::size_t Scene::wantedRecords(const Model& model)
{
    std::vector<std::size_t> instances(model.meshes.size());
    for (const Instance& instance : model.instances)
        ++instances[instance.mesh];
    return instances.empty() ? 1 : std::max<std::size_t>(1, *std::max_element(instances.begin(), instances.end()));
}

Scene::Scene(const Model& model, const ModelTextures& textures, TextureManager& manager, const ScenePlans& plans,
             bool byBaseInstance)
    : _manager(manager),
      _byBaseInstance(byBaseInstance),
      _sceneScale(std::ldexp(1.0f, kSceneRadiusExponent) / powerOfTwoNear(model.bounds.radius())),
      _motions(model.motions)
{
    if (_byBaseInstance)
        _gpuModel.setFeatureFlags(_gpuModel.getFeatureFlags() | kOnlySimpleDraws);
    // In the model's unit, which a camera's view has again: the scale is taken back with the root's.
    _gpuModel.setClipPlaneDefaults(0.002f * model.bounds.radius(), 20.0f * model.bounds.radius());
    addNodes(model);
    addDrawables(model, textures, plans);
    addCameras(model);
    addLights(model);
    update(); // a view through one of the cameras asks for its matrix before the first frame
}

Scene::~Scene() = default;

QMatrix4x4 Scene::worldFromScene() const
{
    return scaling(1.0f / _sceneScale);
}

// ---- building ------------------------------------------------------------------------------------------------------

void Scene::addNodes(const Model& model)
{
    const int root = _gpuModel.addTransform(-1, scaling(_sceneScale));
    _firstNode = root + 1;
    for (const Node& node : model.nodes)
    {
        const int index =
            _gpuModel.addTransform(node.parent < 0 ? root : _firstNode + node.parent, node.parentFromNode);
        if (!node.name.isEmpty())
            _gpuModel.setTransformName(index, node.name);
    }
}

/// The transform that an instance follows: that of its node, with a child of its own where the mesh's numbers in the
/// buffer are not those of the model.
int Scene::transformOf(const Instance& instance, const MeshOnGpu& mesh)
{
    if (instance.node < 0)
        return _gpuModel.addTransform(0, instance.worldFromModel * scaling(mesh.scale));
    const int node = _firstNode + instance.node;
    return mesh.scale == 1.0f ? node : _gpuModel.addTransform(node, scaling(mesh.scale));
}

Scene::MeshOnGpu Scene::upload(const Mesh& mesh) const
{
    MeshOnGpu result;
    // Within a few powers of two of 1 nothing is gained.
    const float size = powerOfTwoNear(largestCoordinate(mesh));
    result.scale = size < 1.0e-3f || size > 1.0e3f ? size : 1.0f;
    std::vector<QVector3D> positions = mesh.positions;
    if (result.scale != 1.0f)
        for (QVector3D& position : positions)
            position /= result.scale;

    result.vertexArray = OpenGLDeviceContext::current()->newVAO();
    result.vertexArray->upload(QStringLiteral("va_Vertex"), newFilledBuffer(GL_ARRAY_BUFFER, positions), 3, GL_FLOAT);
    result.vertexArray->upload(QStringLiteral("va_Normal"), newFilledBuffer(GL_ARRAY_BUFFER, mesh.normals), 3,
                               GL_FLOAT);
    if (!mesh.texCoords.empty())
        result.vertexArray->upload(QStringLiteral("va_TexCoord"), newFilledBuffer(GL_ARRAY_BUFFER, mesh.texCoords), 2,
                                   GL_FLOAT);
    if (!mesh.moreTexCoords.empty())
        result.vertexArray->upload(QStringLiteral("va_MoreTexCoord"),
                                   newFilledBuffer(GL_ARRAY_BUFFER, mesh.moreTexCoords), 2, GL_FLOAT);
    result.indices = newFilledBuffer(GL_ELEMENT_ARRAY_BUFFER, mesh.indices);
    result.indexCount = int(mesh.indices.size());
    return result;
}

void Scene::addDrawables(const Model& model, const ModelTextures& textures, const ScenePlans& plans)
{
    std::vector<std::vector<const Instance*>> instancesOf(model.meshes.size());
    for (const Instance& instance : model.instances)
        instancesOf[instance.mesh].push_back(&instance);

    std::vector<GPUModel::BoundingBox> boxes(model.meshes.size());
    for (std::size_t index = 0; index < model.meshes.size(); ++index)
    {
        const Mesh& mesh = model.meshes[index];
        const std::vector<const Instance*>& instances = instancesOf[index];
        if (mesh.indices.empty() || instances.empty())
            continue;
        const MeshOnGpu onGpu = upload(mesh);
        boxes[index] = boxOf(mesh, onGpu.scale);
        if (!_byBaseInstance)
        {
            addDrawables(model, instances, onGpu, textures, 0, plans);
            continue;
        }
        // Mirrored ones apart: the front face is set for whole lists.
        std::vector<const Instance*> upright;
        std::vector<const Instance*> mirrored;
        for (const Instance* const instance : instances)
            (instance->worldFromModel.determinant() < 0.0 ? mirrored : upright).push_back(instance);
        const bool twoSided = model.materials[mesh.material].twoSided;
        addDrawables(model, upright, onGpu, textures, twoSided ? 0 : kFrontCCW, plans);
        addDrawables(model, mirrored, onGpu, textures, twoSided ? 0 : kFrontCW, plans);
    }
    _gpuModel.loadBoundingBoxes(boxes.data(), int(boxes.size()));
}

/// As many as it takes: a list has room for so many records, and for so many textures. All instances are of one mesh.
void Scene::addDrawables(const Model& model, const std::vector<const Instance*>& instances, const MeshOnGpu& onGpu,
                         const ModelTextures& textures, quint64 flags, const ScenePlans& plans)
{
    const std::size_t mostTextures = texturesOfOneList(_manager);
    std::vector<const Instance*> some;
    std::vector<PicturedMaterial> materials;
    std::set<quint64> tokens;
    const auto flush = [&]
    {
        if (!some.empty())
            addDrawable(model, some, onGpu, flags, plans.newMaterials(materials), plans.newObjects(some.size()));
        some.clear();
        materials.clear();
        tokens.clear();
    };
    for (const Instance* const instance : instances)
    {
        const Mesh& mesh = model.meshes[instance->mesh];
        const PicturedMaterial material = textures.picturedMaterial(instance->material.value_or(mesh.material), mesh);
        std::set<quint64> together = tokens;
        for (const TextureToken& token : material.tokens())
            together.insert(token.token);
        if (some.size() == plans.capacity() || together.size() > mostTextures)
            flush();
        for (const TextureToken& token : material.tokens())
            tokens.insert(token.token);
        some.push_back(instance);
        materials.push_back(material);
    }
    flush();
}

void Scene::addDrawable(const Model& model, const std::vector<const Instance*>& instances, const MeshOnGpu& onGpu,
                        quint64 flags, InstanceDataCollection* materials, InstanceDataCollection* objects)
{
    const std::size_t meshIndex = instances.front()->mesh;
    const Mesh& mesh = model.meshes[meshIndex];
    const Material& material = model.materials[mesh.material];
    const auto count = int(instances.size());
    std::unique_ptr<DrawBuffers> buffers = newDrawBuffers(onGpu, count);
    objects->setBOUsageFlags(GL_DYNAMIC_DRAW);
    flags |= flagsOf(mesh, material);
    const int handle = _byBaseInstance
                           ? _gpuModel.addSimple(buffers.release(), 0, materials, objects, flags)
                           : _gpuModel.add(buffers.release(), int(mesh.material), materials, objects, flags);
    for (int i = 0; i < count; ++i)
    {
        const int transform = transformOf(*instances[std::size_t(i)], onGpu);
        if (_byBaseInstance)
            _followers.push_back({handle, i, transform});
        else
        {
            _gpuModel.useTransform(handle, i, transform);
            _gpuModel.useBoundingBox(handle, i, int(meshIndex));
        }
        _gpuModel.addMaterialName(handle, i, material.name);
        _gpuModel.addObjectName(handle, i, mesh.name);
    }
    _commandCount += count;
    _hasTransparency = _hasTransparency || material.transparent;
}

std::unique_ptr<DrawBuffers> Scene::newDrawBuffers(const MeshOnGpu& mesh, int instances) const
{
    auto buffers = std::make_unique<DrawBuffers>(nullptr);
    buffers->setVAO(mesh.vertexArray);
    buffers->setPrimitiveType(GL_TRIANGLES);
    buffers->setIndexedDraw(mesh.indices, mesh.indexCount, GL_UNSIGNED_INT);
    if (_byBaseInstance)
    {
        buffers->setInstanceCount(instances);
        return buffers;
    }
    DrawElementsIndirectCommand command = {};
    command.count = GLuint(mesh.indexCount);
    command.instanceCount = 1;
    const std::vector<DrawElementsIndirectCommand> commands(std::size_t(instances), command);
    buffers->setDrawElementsIndirectCommands(commands.data(), instances);
    return buffers;
}

void Scene::addCameras(const Model& model)
{
    for (const FileCamera& source : model.cameras)
    {
        GPUModel::Camera camera;
        camera.transform = source.node < 0 ? 0 : _firstNode + source.node;
        camera.horizontalAperture = 0.036f;
        camera.verticalAperture = camera.horizontalAperture / source.aspect;
        camera.focalLength = 0.5f * camera.horizontalAperture / std::tan(0.5f * source.horizontalFieldOfView);
        camera.nearClip = source.nearClip;
        camera.farClip = source.farClip;
        _gpuModel.addCamera(camera, source.name);
    }
}

/// What a light's words mean is ours to say: colour as three floats, then the node's transform.
void Scene::addLights(const Model& model)
{
    for (const FileLight& source : model.lights)
    {
        Light light;
        const float color[] = {source.color.x(), source.color.y(), source.color.z()};
        std::memcpy(light.payload, color, sizeof(color));
        light.payload[3] = quint32(source.node < 0 ? 0 : _firstNode + source.node);
        light.bits = quint64(source.kind) << 61;
        _gpuModel.addLight(light, source.name);
    }
}

// ---- a frame -------------------------------------------------------------------------------------------------------

void Scene::animate(double seconds)
{
    constexpr double kTurn = 6.283185307179586;
    for (const Motion& motion : _motions)
    {
        const double turns = motion.phase + double(motion.turnsPerSecond) * seconds;
        QMatrix4x4 matrix;
        matrix.translate(motion.center + motion.radius * QVector3D(float(std::cos(kTurn * turns)), 0.0f,
                                                                   float(-std::sin(kTurn * turns))));
        matrix.rotate(float(std::fmod(360.0 * turns, 360.0)), 0.0f, 1.0f, 0.0f);
        _gpuModel.setLocalTransform(_firstNode + motion.node, matrix, false);
    }
}

void Scene::update()
{
    if (_gpuModel.updateTransforms() && _byBaseInstance)
        moveFollowers();
}

/// Lists without commands have no instances that the model knows of, so their matrices are written here.
void Scene::moveFollowers()
{
    for (const Follower& follower : _followers)
    {
        InstanceDataCollection* const objects = _gpuModel.objectData(follower.drawable);
        const QMatrix4x4 world = _gpuModel.worldTransform(follower.transform);
        const QMatrix4x4 inverse = world.inverted();
        const QMatrix3x3 normal = _gpuModel.normalTransform(follower.transform);
        objects->copyInstanceMember(follower.instance, kModelMatrix, kPreviousModelMatrix);
        objects->set(follower.instance, kModelMatrix, world.constData(), 16 * sizeof(float));
        objects->set(follower.instance, kInverseModelMatrix, inverse.constData(), 16 * sizeof(float));
        objects->set(follower.instance, kModelNormalMatrix, normal.constData(), 9 * sizeof(float));
    }
}

int Scene::cull(const QMatrix4x4& clipFromScene)
{
    if (_byBaseInstance)
        return 0; // lists without commands are drawn whole
    _gpuModel.resetCulling();
    return _gpuModel.visibilityCull() + _gpuModel.frustumCull(clipFromScene);
}

void Scene::sort()
{
    _gpuModel.sortDrawablesByFlags();
}

void Scene::draw(ShaderProgram& program, const QMatrix4x4& viewFromScene)
{
    const AutoEnabler depthTest(GL_DEPTH_TEST);
    drawPass(program, kOpaque, viewFromScene, false);
    if (!_hasTransparency)
        return;
    const AutoEnabler blending(GL_BLEND);
    glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
    glDepthMask(GL_FALSE);
    drawPass(program, kTransparent | kByDistance, viewFromScene, false);
    glDepthMask(GL_TRUE);
}

void Scene::drawOpaque(ShaderProgram& program, bool mirrored)
{
    const AutoEnabler depthTest(GL_DEPTH_TEST);
    drawPass(program, kOpaque, QMatrix4x4(), mirrored);
}

void Scene::drawPass(ShaderProgram& program, quint64 pass, const QMatrix4x4& viewFromScene, bool mirrored)
{
    if (!_byBaseInstance)
    {
        _gpuModel.draw(&program, &_manager, pass, kPassMask, mirrored ? GPUModel::WindingCW : GPUModel::WindingCCW,
                       &viewFromScene, false);
        return;
    }
    _gpuModel.draw(&program, &_manager, pass, kPassMask | kFrontMask); // both sides
    const AutoEnabler culling(GL_CULL_FACE);
    glFrontFace(mirrored ? GL_CW : GL_CCW);
    _gpuModel.draw(&program, &_manager, pass | kFrontCCW, kPassMask | kFrontMask);
    glFrontFace(mirrored ? GL_CCW : GL_CW);
    _gpuModel.draw(&program, &_manager, pass | kFrontCW, kPassMask | kFrontMask);
    glFrontFace(GL_CCW);
}

void Scene::finish()
{
    _gpuModel.updatePreviousMatrices();
}

} // namespace vrkview
