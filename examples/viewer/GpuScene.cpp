// SPDX-License-Identifier: MIT
#include "GpuScene.h"

#include "ModelTextures.h"

#include <VrkGL/AutoBinder.h>
#include <VrkGL/BufferObject.h>
#include <VrkGL/DrawBuffers.h>
#include <VrkGL/GLFunctions.h>
#include <VrkGL/OpenGLDeviceContext.h>
#include <VrkGL/ShaderProgram.h>
#include <VrkGL/TextureManager.h>
#include <VrkGL/UniformBufferObject.h>
#include <VrkGL/VertexArrayObject.h>

#include <algorithm>
#include <tuple>

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
    quint32 image[4];
};
static_assert(sizeof(ObjectRecord) == 160, "std140 packs the record without gaps");

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

ObjectRecord toRecord(const QMatrix4x4& worldFromModel, const Material& material, const TextureToken& token)
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
    record.surface[2] = material.alphaCutoff;
    record.image[0] = quint32(token.token);
    record.image[1] = quint32(token.token >> 32);
    record.image[2] = quint32(material.wrapS);
    record.image[3] = quint32(material.wrapT);
    return record;
}

} // namespace

int GpuScene::objectCapacity()
{
    GLint bytes = 0;
    glGetIntegerv(GL_MAX_UNIFORM_BLOCK_SIZE, &bytes);
    return std::min(bytes, kLargestBlock) / int(sizeof(ObjectRecord));
}

GpuScene::GpuScene(const Model& model, const ModelTextures& textures, TextureManager& manager) : _manager(manager)
{
    std::vector<DrawBuffersPointer> meshes;
    meshes.reserve(model.meshes.size());
    for (const Mesh& mesh : model.meshes)
        meshes.push_back(mesh.indices.empty() ? DrawBuffersPointer() : upload(mesh));

    std::vector<Drawn> drawn;
    for (const Instance& instance : model.instances)
        if (meshes[instance.mesh])
            drawn.push_back({&instance, textures.tokenOf(model.meshes[instance.mesh])});
    const auto place = [](const Drawn& d) { return std::tuple(d.token.token, d.instance->mesh); };
    std::stable_sort(drawn.begin(), drawn.end(),
                     [place](const Drawn& a, const Drawn& b) { return place(a) < place(b); });

    const int capacity = objectCapacity();
    for (std::size_t first = 0; first < drawn.size(); first += std::size_t(capacity))
        addPage(model, &drawn[first], int(std::min(drawn.size() - first, std::size_t(capacity))), meshes);
}

GpuScene::~GpuScene() = default;

void GpuScene::addPage(const Model& model, const Drawn* first, int count, const std::vector<DrawBuffersPointer>& meshes)
{
    Page page;
    // Always as large as the block that the shader declares.
    std::vector<ObjectRecord> records(static_cast<std::size_t>(objectCapacity()));
    for (int i = 0; i < count; ++i)
    {
        const Instance& instance = *first[i].instance;
        const Material& material = model.materials[model.meshes[instance.mesh].material];
        records[std::size_t(i)] = toRecord(instance.worldFromModel, material, first[i].token);
        if (i == 0 || instance.mesh != first[i - 1].instance->mesh)
            batchFor(page, first[i].token).runs.push_back({meshes[instance.mesh], i, 0});
        ++page.batches.back().runs.back().count;
    }
    page.records = OpenGLDeviceContext::current()->newUniformBuffer(QStringLiteral("u_Objects"),
                                                                    newBuffer(GL_UNIFORM_BUFFER, records));
    _pages.push_back(std::move(page));
}

/// The batch that a run with this picture goes to: the last one, or a new one if the last has all that can be reached.
GpuScene::Batch& GpuScene::batchFor(Page& page, const TextureToken& token) const
{
    const bool isKnown = !page.batches.empty() && page.batches.back().tokens.contains(token);
    if (page.batches.empty() || (!isKnown && page.batches.back().tokens.size() >= _manager.getMaxSlots()))
        page.batches.emplace_back();
    if (!isKnown)
        page.batches.back().tokens.append(token);
    return page.batches.back();
}

void GpuScene::draw(ShaderProgram& program)
{
    DrawBuffers* bound = nullptr;
    for (const Page& page : _pages)
    {
        page.records->bind(&program);
        for (const Batch& batch : page.batches)
        {
            _manager.bind(batch.tokens);
            _manager.bind(&program);
            drawRuns(batch, program, bound);
            _manager.unbind(&program);
            _manager.unbind(batch.tokens);
        }
        page.records->unbind(&program);
    }
    if (bound)
        bound->unbind();
}

/// `bound` is what the last draw has left bound, for the next one to rebind.
void GpuScene::drawRuns(const Batch& batch, ShaderProgram& program, DrawBuffers*& bound)
{
    for (const Run& run : batch.runs)
    {
        if (!run.buffers->rebind(bound))
            continue;
        bound = run.buffers.get();
        bound->VAO()->enableShaderProgramArrays(&program);
        bound->setDrawIDBase(run.first);
        bound->setInstanceCount(run.count);
        bound->draw(&program);
    }
}

} // namespace vrkview
