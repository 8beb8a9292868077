// SPDX-License-Identifier: MIT
#include "CrowdModel.h"

#include "Random.h"

#include "AutoBinder.h"
#include "AutoEnabler.h"
#include "BufferObject.h"
#include "DrawBuffers.h"
#include "DrawElementsIndirectCommand.h"
#include "GLFunctions.h"
#include "InstanceDataCollection.h"
#include "OpenGLDeviceContext.h"
#include "TextureManager.h"
#include "VertexArrayObject.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace vrksoak
{

using namespace Harrow::Vrk;

namespace
{

constexpr quint64 kInPass = 1;
constexpr quint64 kHidden = quint64(1) << 63;
constexpr quint64 kOnlySimpleDraws = 1 << 4; // feature flag

// Of one list: fewer than the slots of a manager of samplers.
constexpr int kPalette = 3;

// Lists that may come beside those of the start.
constexpr std::size_t kMostMore = 12;

template <typename Value> QSharedPointer<BufferObject> newBuffer(GLenum target, const std::vector<Value>& values)
{
    QSharedPointer<BufferObject> buffer = OpenGLDeviceContext::current()->newBuffer();
    buffer->setTarget(GL_COPY_WRITE_BUFFER); // the element buffer would belong to whatever vertex array is bound
    {
        const AutoBinder bound(buffer);
        buffer->uploadArbitraryData(values.data(), int(values.size()), GL_STATIC_DRAW, sizeof(Value));
    }
    buffer->setTarget(target);
    return buffer;
}

GPUModel::BoundingBox boxOf(const vrkview::Mesh& mesh)
{
    vrkview::Bounds bounds;
    for (const QVector3D& position : mesh.positions)
        bounds.add(position);
    return {bounds.minimum.x(), bounds.minimum.y(), bounds.minimum.z(),
            bounds.maximum.x(), bounds.maximum.y(), bounds.maximum.z()};
}

} // namespace

CrowdModel::CrowdModel(const vrkview::Model& model, const Records& records, TextureManager& manager,
                       bool byBaseInstance, TextureToken white)
    : _model(model), _records(records), _manager(manager), _byBaseInstance(byBaseInstance), _white(white)
{
    if (_byBaseInstance)
        _gpuModel.setFeatureFlags(_gpuModel.getFeatureFlags() | kOnlySimpleDraws);
    std::vector<GPUModel::BoundingBox> boxes;
    for (const vrkview::Mesh& mesh : _model.meshes)
    {
        _meshes.push_back(upload(mesh));
        boxes.push_back(boxOf(mesh));
    }
    _gpuModel.loadBoundingBoxes(boxes.data(), int(boxes.size()));
    fill();
    _partsAtStart = _parts.size();
}

CrowdModel::~CrowdModel() = default;

void CrowdModel::reset()
{
    _gpuModel.updatePreviousMatrices();
    _gpuModel.clear();
    _parts.clear();
    fill();
}

// ---- building ------------------------------------------------------------------------------------------------------

CrowdModel::MeshOnGpu CrowdModel::upload(const vrkview::Mesh& mesh) const
{
    MeshOnGpu result;
    result.vertexArray = OpenGLDeviceContext::current()->newVAO();
    result.vertexArray->upload(QStringLiteral("va_Vertex"), newBuffer(GL_ARRAY_BUFFER, mesh.positions), 3, GL_FLOAT);
    result.vertexArray->upload(QStringLiteral("va_Normal"), newBuffer(GL_ARRAY_BUFFER, mesh.normals), 3, GL_FLOAT);
    result.vertexArray->upload(QStringLiteral("va_TexCoord"), newBuffer(GL_ARRAY_BUFFER, mesh.texCoords), 2, GL_FLOAT);
    result.indices = newBuffer(GL_ELEMENT_ARRAY_BUFFER, mesh.indices);
    result.indexCount = int(mesh.indices.size());
    return result;
}

void CrowdModel::fill()
{
    for (const vrkview::Node& node : _model.nodes)
        _gpuModel.addTransform(-1, node.parentFromNode);
    std::vector<std::vector<int>> transforms(_model.meshes.size());
    for (const vrkview::Instance& instance : _model.instances)
    {
        std::vector<int>& ofMesh = transforms[instance.mesh];
        ofMesh.push_back(instance.node);
        if (int(ofMesh.size()) == _records.capacity())
        {
            addPart(instance.mesh, ofMesh);
            ofMesh.clear();
        }
    }
    for (std::size_t mesh = 0; mesh < transforms.size(); ++mesh)
        if (!transforms[mesh].empty())
            addPart(mesh, transforms[mesh]);
}

void CrowdModel::addPart(std::size_t mesh, const std::vector<int>& transforms)
{
    const int count = int(transforms.size());
    Part part;
    part.mesh = mesh;
    part.transforms = transforms;
    part.palette.fill(_white, kPalette);
    InstanceDataCollection* const materials = _records.newMaterials(count, part.palette);
    InstanceDataCollection* const objects = _records.newObjects(count);
    part.handle = _byBaseInstance ? _gpuModel.addSimple(newBuffers(mesh, count), 0, materials, objects, kInPass)
                                  : _gpuModel.add(newBuffers(mesh, count), int(mesh), materials, objects, kInPass);
    follow(part);
    _parts.push_back(part);
}

DrawBuffers* CrowdModel::newBuffers(std::size_t mesh, int instances) const
{
    const MeshOnGpu& onGpu = _meshes[mesh];
    auto buffers = std::make_unique<DrawBuffers>(nullptr);
    buffers->setVAO(onGpu.vertexArray);
    buffers->setPrimitiveType(GL_TRIANGLES);
    buffers->setIndexedDraw(onGpu.indices, onGpu.indexCount, GL_UNSIGNED_INT);
    if (_byBaseInstance)
    {
        buffers->setInstanceCount(instances);
        return buffers.release();
    }
    DrawElementsIndirectCommand command = {};
    command.count = GLuint(onGpu.indexCount);
    command.instanceCount = 1;
    const std::vector<DrawElementsIndirectCommand> commands(std::size_t(instances), command);
    buffers->setDrawElementsIndirectCommands(commands.data(), instances);
    return buffers.release();
}

void CrowdModel::follow(const Part& part)
{
    if (_byBaseInstance)
        return; // lists without commands follow nothing that the model knows of
    for (std::size_t i = 0; i < part.transforms.size(); ++i)
    {
        _gpuModel.useTransform(part.handle, int(i), part.transforms[i]);
        _gpuModel.useBoundingBox(part.handle, int(i), int(part.mesh));
    }
}

// ---- what comes and goes -------------------------------------------------------------------------------------------

CrowdModel::Part& CrowdModel::some(Random& random)
{
    return random.of(_parts);
}

void CrowdModel::addPart(Random& random)
{
    if (_parts.size() >= _partsAtStart + kMostMore)
    {
        reset(); // a model loses its drawables all at once
        return;
    }
    const std::size_t mesh = std::size_t(random.below(int(_meshes.size())));
    std::vector<int> transforms;
    for (int i = random.below(_records.capacity()); i >= 0; --i)
    {
        QMatrix4x4 matrix;
        matrix.translate(QVector3D(random.unit() - 0.5f, 0.2f * random.unit(), random.unit() - 0.5f) *
                         (1.6f * _model.bounds.radius()));
        transforms.push_back(_gpuModel.addTransform(-1, matrix));
    }
    addPart(mesh, transforms);
}

void CrowdModel::hideOrShow(Random& random)
{
    Part& part = some(random);
    part.isHidden = !part.isHidden;
    _gpuModel.setFlags(part.handle, part.isHidden ? kHidden : 0, kHidden);
}

void CrowdModel::replaceRecords(Random& random)
{
    const Part& part = some(random);
    const int count = int(part.transforms.size());
    // The draw list stays, and the model would delete it with the rest.
    _gpuModel.updatePreviousMatrices();
    delete _gpuModel.materialData(part.handle);
    delete _gpuModel.objectData(part.handle);
    _gpuModel.setDeleteOnClear(false);
    _gpuModel.set(part.handle, _gpuModel.drawBuffers(part.handle), _records.newMaterials(count, part.palette),
                  _records.newObjects(count), 0, 0);
    _gpuModel.setDeleteOnClear(true);
    // So that the new records get their matrices.
    for (const int transform : part.transforms)
    {
        QMatrix4x4 matrix = _gpuModel.localTransform(transform);
        matrix.translate(0.001f, 0.0f, 0.0f);
        _gpuModel.setLocalTransform(transform, matrix, false);
    }
}

void CrowdModel::replaceGeometry(Random& random)
{
    Part& part = some(random);
    const int count = int(part.transforms.size());
    _gpuModel.updatePreviousMatrices();
    part.mesh = std::size_t(random.below(int(_meshes.size())));
    _gpuModel.set(part.handle, newBuffers(part.mesh, count), _records.newMaterials(count, part.palette),
                  _records.newObjects(count), 0, 0);
    follow(part);
}

void CrowdModel::giveToken(Random& random, TextureToken token)
{
    Part& part = some(random);
    part.palette[random.below(kPalette)] = token;
    _records.setTokens(*_gpuModel.materialData(part.handle), part.palette);
}

void CrowdModel::forgetToken(TextureToken token)
{
    for (Part& part : _parts)
    {
        if (!part.palette.contains(token))
            continue;
        std::replace(part.palette.begin(), part.palette.end(), token, _white);
        _records.setTokens(*_gpuModel.materialData(part.handle), part.palette);
    }
}

// ---- a frame -------------------------------------------------------------------------------------------------------

void CrowdModel::animate(double seconds)
{
    constexpr double kTurn = 6.283185307179586;
    for (const vrkview::Motion& motion : _model.motions)
    {
        const double angle = kTurn * (motion.phase + double(motion.turnsPerSecond) * seconds);
        QMatrix4x4 matrix;
        matrix.translate(motion.center +
                         motion.radius * QVector3D(float(std::cos(angle)), 0.0f, float(-std::sin(angle))));
        _gpuModel.setLocalTransform(motion.node, matrix, false);
    }
}

void CrowdModel::update()
{
    if (_gpuModel.updateTransforms() && _byBaseInstance)
        moveFollowers();
}

void CrowdModel::moveFollowers()
{
    for (const Part& part : _parts)
    {
        InstanceDataCollection* const objects = _gpuModel.objectData(part.handle);
        for (std::size_t i = 0; i < part.transforms.size(); ++i)
        {
            const QMatrix4x4 world = _gpuModel.worldTransform(part.transforms[i]);
            const QMatrix3x3 normal = _gpuModel.normalTransform(part.transforms[i]);
            objects->set(int(i), kModelMatrix, world.constData(), 16 * sizeof(float));
            objects->set(int(i), kModelNormalMatrix, normal.constData(), 9 * sizeof(float));
        }
    }
}

void CrowdModel::cull(const QMatrix4x4& clipFromWorld)
{
    if (_byBaseInstance)
        return;
    _gpuModel.resetCulling();
    _gpuModel.visibilityCull();
    _gpuModel.frustumCull(clipFromWorld);
}

void CrowdModel::draw(ShaderProgram& program)
{
    const AutoEnabler depthTest(GL_DEPTH_TEST);
    _gpuModel.draw(&program, &_manager, kInPass, kInPass | kHidden);
}

void CrowdModel::finish()
{
    _gpuModel.updatePreviousMatrices();
}

} // namespace vrksoak
