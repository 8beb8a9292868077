// SPDX-License-Identifier: MIT
#include "SceneBuffers.h"

#include <FilledBuffer.h>
#include <Terminal.h>

#include <VrkGL/AutoBinder.h>
#include <VrkGL/BufferObject.h>
#include <VrkGL/DrawBuffers.h>
#include <VrkGL/DrawElementsIndirectCommand.h>
#include <VrkGL/InstanceDataCollection.h>
#include <VrkGL/InstanceDataPlan.h>
#include <VrkGL/InstanceDataRegistry.h>
#include <VrkGL/OpenGLDeviceContext.h>
#include <VrkGL/ShaderProgram.h>
#include <VrkGL/UniformBufferObject.h>
#include <VrkGL/VertexArrayObject.h>

#include <algorithm>

namespace deeppick
{

using namespace Harrow::Vrk;
using vrkview::newFilledBuffer;

namespace
{

const QString kModelMatrix = QStringLiteral("ModelMatrix");
const QString kLabel = QStringLiteral("Label"); // number of the object's name, then of the instance

} // namespace

SceneBuffers::SceneBuffers() = default;

SceneBuffers::~SceneBuffers()
{
    for (const Lookup& lookup : _lookups)
        glDeleteTextures(1, &lookup.texture);
    _records.reset();
    if (_plan)
        InstanceDataRegistry::Instance().clear();
}

bool SceneBuffers::create(const PickScene& scene, QString& error)
{
    GLint mostTexels = 0;
    glGetIntegerv(GL_MAX_TEXTURE_BUFFER_SIZE, &mostTexels);
    const std::size_t texels = std::max(scene.positions.size(), scene.indices.size());
    if (texels > std::size_t(std::max(mostTexels, 0)))
    {
        error = QStringLiteral("the model has %1 vertices and %2 indices; this driver's buffer textures hold %3")
                    .arg(scene.positions.size())
                    .arg(scene.indices.size())
                    .arg(mostTexels);
        return false;
    }
    while (glGetError() != GL_NO_ERROR)
    {
    }
    addLookup("u_VertexBuffer", GL_RGBA32F, newFilledBuffer(GL_ARRAY_BUFFER, scene.positions));
    addLookup("u_NormalBuffer", GL_RGBA32F, newFilledBuffer(GL_ARRAY_BUFFER, scene.normals));
    addLookup("u_texCoordBuffer", GL_RG32F, newFilledBuffer(GL_ARRAY_BUFFER, scene.texCoords));
    addLookup("u_IndexBuffer", GL_R32I, newFilledBuffer(GL_ELEMENT_ARRAY_BUFFER, scene.indices));
    createRecords(scene);
    createDraws(scene, _lookups.back().buffer);
    if (glGetError() == GL_NO_ERROR)
        return true;
    error = QStringLiteral("the driver has no memory for a model of %1 triangles").arg(scene.triangleCount());
    return false;
}

/// As texture of one row, which a shader reads by number.
void SceneBuffers::addLookup(const char* sampler, GLenum format, const QSharedPointer<BufferObject>& buffer)
{
    Lookup lookup;
    lookup.sampler = sampler;
    lookup.buffer = buffer;
    glGenTextures(1, &lookup.texture);
    glBindTexture(GL_TEXTURE_BUFFER, lookup.texture);
    glTexBuffer(GL_TEXTURE_BUFFER, format, buffer->getBO());
    glBindTexture(GL_TEXTURE_BUFFER, 0);
    _lookups.push_back(lookup);
}

void SceneBuffers::createRecords(const PickScene& scene)
{
    _plan = new InstanceDataPlan(QStringLiteral("InstanceInfo"));
    _plan->addMember(InstanceDataPlan::eMat4, kModelMatrix);
    _plan->addMember(InstanceDataPlan::eUVec2, kLabel);
    _plan->setArraySize(kMostDraws);
    InstanceDataRegistry::Instance().registerPlan(_plan);
    // As many as the block in the shader has.
    _records = std::make_unique<InstanceDataCollection>(_plan, _plan->arraySize());
    for (std::size_t i = 0; i < scene.draws.size(); ++i)
    {
        const PickDraw& draw = scene.draws[i];
        const GLuint label[] = {draw.object, draw.instance};
        _records->set(int(i), kModelMatrix, draw.sceneFromMesh.constData(), 16 * sizeof(float));
        _records->set(int(i), kLabel, label, sizeof label);
    }
}

void SceneBuffers::createDraws(const PickScene& scene, const QSharedPointer<BufferObject>& indices)
{
    std::vector<DrawElementsIndirectCommand> commands;
    for (const PickDraw& draw : scene.draws)
        commands.push_back({draw.indexCount, 1, draw.firstIndex, draw.baseVertex, 0});
    const QSharedPointer<VertexArrayObject> vertexArray = OpenGLDeviceContext::current()->newVAO();
    vertexArray->registerBO(QStringLiteral("va_Vertex"), _lookups.front().buffer, 3, GL_FLOAT, false, sizeof(QVector4D),
                            0);
    _draws = std::make_unique<DrawBuffers>(nullptr);
    _draws->setVAO(vertexArray);
    _draws->setPrimitiveType(GL_TRIANGLES);
    _draws->setIndexedDraw(indices, int(scene.indices.size()), GL_UNSIGNED_INT);
    _draws->setDrawElementsIndirectCommands(commands.data(), int(commands.size()));
    _commands = _draws->getDrawElementsIndirectCommandsUniformBufferObject();
    _drawCount = int(commands.size());
}

QString SceneBuffers::recordUnit() const
{
    return _plan->glslc();
}

void SceneBuffers::draw(ShaderProgram& program)
{
    vrkview::ProgressLine progress;
    _records->bind(&program, nullptr);
    {
        const AutoBinder bound(_draws.get());
        _draws->VAO()->enableShaderProgramArrays(&program);
        for (int i = 0; i < _drawCount; ++i)
        {
            const QList<int> command = {i};
            _draws->draw(&program, &command);
            glFinish();
            progress.show(QStringLiteral("filling the lists"), float(i + 1) / float(_drawCount));
        }
    }
    _records->unbind(&program, nullptr);
}

void SceneBuffers::bindForQueries(ShaderProgram& program, int firstUnit)
{
    for (std::size_t i = 0; i < _lookups.size(); ++i)
    {
        const int unit = firstUnit + int(i);
        glActiveTexture(GLenum(GL_TEXTURE0 + unit));
        glBindTexture(GL_TEXTURE_BUFFER, _lookups[i].texture);
        program.setUniform(program.getUniformLocation(QLatin1String(_lookups[i].sampler)), unit);
    }
    glActiveTexture(GL_TEXTURE0);
    program.setUniform(program.getUniformLocation(QStringLiteral("u_indexedDraw")), 1);
    _records->bind(&program, nullptr);
    _commands->bind(&program);
}

void SceneBuffers::unbindFromQueries(ShaderProgram& program, int firstUnit)
{
    _commands->unbind(&program);
    _records->unbind(&program, nullptr);
    for (std::size_t i = 0; i < _lookups.size(); ++i)
    {
        glActiveTexture(GLenum(GL_TEXTURE0 + firstUnit + int(i)));
        glBindTexture(GL_TEXTURE_BUFFER, 0);
    }
    glActiveTexture(GL_TEXTURE0);
}

} // namespace deeppick
