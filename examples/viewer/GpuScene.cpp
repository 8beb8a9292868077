// SPDX-License-Identifier: MIT
#include "GpuScene.h"

#include <VrkGL/AutoBinder.h>
#include <VrkGL/BufferObject.h>
#include <VrkGL/DrawBuffers.h>
#include <VrkGL/GLFunctions.h>
#include <VrkGL/OpenGLDeviceContext.h>
#include <VrkGL/ShaderProgram.h>
#include <VrkGL/UniformBufferObject.h>
#include <VrkGL/VertexArrayObject.h>

#include <algorithm>

namespace vrkview
{

using namespace Harrow::Vrk;

namespace
{

// As std140 lays out ObjectRecord of scene.vert: columns of a mat3 are padded to four floats.
struct ObjectRecord
{
    float worldFromModel[16];
    float normalFromModel[3][4];
    float baseColor[4];
    float surface[4];
};
static_assert(sizeof(ObjectRecord) == 144, "std140 packs the record without gaps");

// Some drivers allow blocks of gigabytes, which no shader compiler likes to see declared.
constexpr int kLargestBlock = 64 * 1024;

template <typename Value> QSharedPointer<BufferObject> newBuffer(GLenum target, const std::vector<Value>& values)
{
    QSharedPointer<BufferObject> buffer = OpenGLDeviceContext::current()->newBuffer();
    // Filled through a target of its own: an element buffer bound here would belong to whatever vertex array is bound.
    buffer->setTarget(GL_COPY_WRITE_BUFFER);
    {
        const AutoBinder bound(buffer);
        buffer->uploadArbitraryData(values.data(), int(values.size()), GL_STATIC_DRAW, sizeof(Value));
    }
    buffer->setTarget(target);
    return buffer;
}

QSharedPointer<DrawBuffers> upload(const Mesh& mesh)
{
    const QSharedPointer<VertexArrayObject> vertexArray = OpenGLDeviceContext::current()->newVAO();
    vertexArray->upload(QStringLiteral("va_Vertex"), newBuffer(GL_ARRAY_BUFFER, mesh.positions), 3, GL_FLOAT);
    vertexArray->upload(QStringLiteral("va_Normal"), newBuffer(GL_ARRAY_BUFFER, mesh.normals), 3, GL_FLOAT);
    if (!mesh.texCoords.empty())
        vertexArray->upload(QStringLiteral("va_TexCoord"), newBuffer(GL_ARRAY_BUFFER, mesh.texCoords), 2, GL_FLOAT);

    QSharedPointer<DrawBuffers> buffers(new DrawBuffers(nullptr));
    buffers->setVAO(vertexArray);
    buffers->setPrimitiveType(GL_TRIANGLES);
    buffers->setVertexCount(GLuint(mesh.positions.size()));
    buffers->setIndexedDraw(newBuffer(GL_ELEMENT_ARRAY_BUFFER, mesh.indices), int(mesh.indices.size()),
                            GL_UNSIGNED_INT);
    return buffers;
}

ObjectRecord toRecord(const QMatrix4x4& worldFromModel, const Material& material)
{
    ObjectRecord record = {};
    std::copy_n(worldFromModel.constData(), 16, record.worldFromModel);
    const QMatrix3x3 normal = worldFromModel.normalMatrix();
    for (int column = 0; column < 3; ++column)
        for (int row = 0; row < 3; ++row)
            record.normalFromModel[column][row] = normal(row, column);
    for (int channel = 0; channel < 3; ++channel)
        record.baseColor[channel] = material.baseColor[channel];
    record.baseColor[3] = 1.0f;
    record.surface[0] = material.roughness;
    record.surface[1] = material.metallic;
    return record;
}

} // namespace

int GpuScene::objectCapacity()
{
    GLint bytes = 0;
    glGetIntegerv(GL_MAX_UNIFORM_BLOCK_SIZE, &bytes);
    return std::min(bytes, kLargestBlock) / int(sizeof(ObjectRecord));
}

GpuScene::GpuScene(const Model& model)
{
    std::vector<DrawBuffersPointer> meshes;
    meshes.reserve(model.meshes.size());
    for (const Mesh& mesh : model.meshes)
        meshes.push_back(mesh.indices.empty() ? DrawBuffersPointer() : upload(mesh));

    std::vector<Instance> instances;
    for (const Instance& instance : model.instances)
        if (meshes[instance.mesh])
            instances.push_back(instance);
    std::stable_sort(instances.begin(), instances.end(),
                     [](const Instance& a, const Instance& b) { return a.mesh < b.mesh; });

    const int capacity = objectCapacity();
    for (std::size_t first = 0; first < instances.size(); first += std::size_t(capacity))
        addPage(model, &instances[first], int(std::min(instances.size() - first, std::size_t(capacity))), meshes);
}

GpuScene::~GpuScene() = default;

void GpuScene::addPage(const Model& model, const Instance* first, int count,
                       const std::vector<DrawBuffersPointer>& meshes)
{
    Page page;
    // Always as large as the block that the shader declares.
    std::vector<ObjectRecord> records(static_cast<std::size_t>(objectCapacity()));
    for (int i = 0; i < count; ++i)
    {
        const Instance& instance = first[i];
        records[std::size_t(i)] =
            toRecord(instance.worldFromModel, model.materials[model.meshes[instance.mesh].material]);
        if (i == 0 || instance.mesh != first[i - 1].mesh)
            page.runs.push_back({meshes[instance.mesh], i, 0});
        ++page.runs.back().count;
    }
    page.records = OpenGLDeviceContext::current()->newUniformBuffer(QStringLiteral("u_Objects"),
                                                                    newBuffer(GL_UNIFORM_BUFFER, records));
    _pages.push_back(std::move(page));
}

void GpuScene::draw(ShaderProgram& program)
{
    DrawBuffers* bound = nullptr;
    for (const Page& page : _pages)
    {
        page.records->bind(&program);
        for (const Run& run : page.runs)
        {
            if (!run.buffers->rebind(bound))
                continue;
            bound = run.buffers.get();
            bound->VAO()->enableShaderProgramArrays(&program);
            bound->setDrawIDBase(run.first);
            bound->setInstanceCount(run.count);
            bound->draw(&program);
        }
        page.records->unbind(&program);
    }
    if (bound)
        bound->unbind();
}

} // namespace vrkview
