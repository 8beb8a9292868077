// SPDX-License-Identifier: MIT
//
// The queries of the deep G-buffer: lists that a ray caster in C++ fills are walked by the shader, which has to find
// the places, normals and texture coordinates that the rays met.

#include "GLSLPassTestTools.h"
#include "VisibilityBufferTestTools.h"

#include "DrawBuffers.h"
#include "InstanceDataCollection.h"
#include "InstanceDataPlan.h"
#include "InstanceDataRegistry.h"
#include "UniformBufferObject.h"

#include <QMatrix4x4>
#include <QSharedPointer>

#include <gtest/gtest.h>

#include <cstring>

namespace Harrow::Vrk::Test
{
namespace
{

const QString kHeader = QStringLiteral("include/VisibilityBuffer.glslh");
const QString kUnit = QStringLiteral("src/VisibilityBuffer.glslc");
const QString kFrag = QStringLiteral("frag");

constexpr int kNodesPerRow = 37; // shares no factor with the picture
constexpr int kMaxFragments = 12;
constexpr int kRecords = 110; // more than the block of commands has

// ---- the shaders ---------------------------------------------------------------------------------------------------

const QString kPlanName = QStringLiteral("InstanceInfo");

InstanceDataPlan* registeredPlan()
{
    auto* const plan = new InstanceDataPlan(kPlanName);
    plan->addMember(InstanceDataPlan::eMat4, QStringLiteral("ModelMatrix"));
    plan->addMember(InstanceDataPlan::eFloat, QStringLiteral("Tag"));
    plan->setArraySize(kRecords);
    InstanceDataRegistry::Instance().registerPlan(plan);
    return plan;
}

/// Gives out what fragment number u_Which of the pixel is, and how many there are.
const QString kCaller =
    QStringLiteral("#version 150\n#include \"VrkUtilities.glslh\"\n#include \"VisibilityBuffer.glslh\"\n"
                   "#instancedata \"InstanceInfo\"\n"
                   "uniform int u_Which;\nin vec2 vo_TexCoord;\nout vec4 o[3];\n"
                   "void main()\n{\n"
                   "    uint pointer = 77u;\n    initializeVisibilityBufferQuery(vo_TexCoord, pointer);\n"
                   "    o[0] = o[1] = o[2] = vec4(0.0);\n    int count = 0;\n"
                   "    while (doesVisibilityBufferHaveFragment(pointer))\n    {\n"
                   "        vec4 position;\n        float depth;\n        vec3 normal;\n        vec2 texCoord;\n"
                   "        getFragmentInfo(vo_TexCoord, pointer, position, depth, normal, texCoord);\n"
                   "        if (count == u_Which)\n        {\n"
                   "            o[0] = vec4(position.xyz / position.w, depth);\n"
                   "            o[1] = vec4(normal, getTag());\n"
                   "            o[2] = vec4(texCoord, float(getDrawID()), 0.0);\n        }\n"
                   "        ++count;\n    }\n"
                   "    o[2].w = float(count);\n}\n");

class VisibilityBufferGL : public GLSLPassTest
{
protected:
    void SetUp() override
    {
        GLSLPassTest::SetUp();
        _plan = registeredPlan();
    }

    void TearDown() override
    {
        for (int unit = 8; unit < 12; ++unit)
        {
            glActiveTexture(GLenum(GL_TEXTURE0 + unit));
            glBindTexture(GL_TEXTURE_BUFFER, 0);
        }
        glActiveTexture(GL_TEXTURE0);
        glDeleteTextures(GLsizei(_bufferTextures.size()), _bufferTextures.data());
        glDeleteBuffers(GLsizei(_buffers.size()), _buffers.data());
        _program.reset();
        InstanceDataRegistry::Instance().clear();
        GLSLPassTest::TearDown();
    }

    void link()
    {
        _program = linked(coveringVertexStage(), {kCaller, embedded(kUnit), _plan->glslc()});
        ASSERT_TRUE(_program);
    }

    /// As buffer texture on a unit of its own.
    template <typename Number>
    void setBuffer(const char* sampler, int unit, GLenum internalFormat, const std::vector<Number>& numbers)
    {
        GLuint names[2];
        glGenBuffers(1, &names[0]);
        glGenTextures(1, &names[1]);
        _buffers.push_back(names[0]);
        _bufferTextures.push_back(names[1]);
        glBindBuffer(GL_TEXTURE_BUFFER, names[0]);
        glBufferData(GL_TEXTURE_BUFFER, GLsizeiptr(numbers.size() * sizeof(Number)), numbers.data(), GL_STATIC_DRAW);
        glBindBuffer(GL_TEXTURE_BUFFER, 0);
        glActiveTexture(GLenum(GL_TEXTURE0 + unit));
        glBindTexture(GL_TEXTURE_BUFFER, names[1]);
        glTexBuffer(GL_TEXTURE_BUFFER, internalFormat, names[0]);
        _program->setUniform(_program->getUniformLocation(QLatin1String(sampler)), unit);
    }

    void setScene(const Scene& scene, bool isIndexed)
    {
        _program->bind();
        std::vector<float> positions, normals, texCoords;
        for (const Vertex& vertex : scene.vertices())
        {
            for (const double number : {vertex.position.x, vertex.position.y, vertex.position.z, 1.0})
                positions.push_back(float(number));
            for (const double number : {vertex.normal.x, vertex.normal.y, vertex.normal.z, 0.0})
                normals.push_back(float(number));
            texCoords.push_back(float(vertex.u));
            texCoords.push_back(float(vertex.v));
        }
        setBuffer("u_VertexBuffer", 8, GL_RGBA32F, positions);
        setBuffer("u_NormalBuffer", 9, GL_RGBA32F, normals);
        setBuffer("u_texCoordBuffer", 10, GL_RG32F, texCoords);
        setBuffer("u_IndexBuffer", 11, GL_R32I, isIndexed ? scene.indices() : std::vector<int>(1, -1000));
        _program->setUniform(_program->getUniformLocation(QStringLiteral("u_indexedDraw")), int(isIndexed));
        _program->setUniform(QStringLiteral("u_InvCameraMatrix"), scene.view().inverted());
        _program->setUniform(QStringLiteral("u_InvProjMatrix"), scene.projection().inverted());
        _program->setUniform(_program->getUniformLocation(QStringLiteral("u_SamplerNodeBufferWidth")), kNodesPerRow);
        _program->unbind();

        // The draws have their records twice, for ids within the block of commands and beyond it.
        _collection = std::make_unique<InstanceDataCollection>(_plan, std::size_t(kRecords));
        for (const int first : {0, 100})
            for (int d = 0; d < int(scene.draws().size()); ++d)
            {
                const float tag = 100.0f + float(d);
                _collection->set(first + d, QStringLiteral("ModelMatrix"),
                                 scene.draws()[std::size_t(d)].world.constData(), 64);
                _collection->set(first + d, QStringLiteral("Tag"), &tag, sizeof(tag));
            }
    }

    /// The lists of all pixels, with nodes in a random order. `drawOffset` is added to the draw ids.
    void fill(const std::vector<std::vector<Hit>>& lists, int drawOffset = 0)
    {
        std::size_t count = 0;
        for (const std::vector<Hit>& hits : lists)
            count += hits.size();
        const int rows = int(count) / kNodesPerRow + 2;
        std::vector<std::uint32_t> pointers(std::size_t(rows) * kNodesPerRow);
        for (std::size_t i = 0; i < pointers.size(); ++i)
            pointers[i] = std::uint32_t(i + 1);
        std::shuffle(pointers.begin(), pointers.end(), std::mt19937(9));

        std::vector<std::uint32_t> nodes(pointers.size() * 4, 0xDEADBEEF);
        std::vector<std::uint32_t> heads(lists.size(), 0);
        std::size_t used = 0;
        for (std::size_t pixel = 0; pixel < lists.size(); ++pixel)
        {
            std::uint32_t* link = &heads[pixel];
            for (const Hit& hit : lists[pixel])
            {
                const std::uint32_t pointer = pointers[used++];
                *link = pointer;
                std::uint32_t* const node = &nodes[std::size_t(pointer - 1) * 4];
                const auto depth = float(hit.depth);
                node[0] = 0;
                node[1] = std::uint32_t(hit.primitive + 1);
                std::memcpy(&node[2], &depth, sizeof(depth));
                node[3] = std::uint32_t(hit.draw + drawOffset);
                link = node;
            }
        }
        _heads = integerTexture(kWidth, kHeight, GL_R32UI, GL_RED_INTEGER, heads);
        _nodes = integerTexture(kNodesPerRow, rows, GL_RGBA32UI, GL_RGBA_INTEGER, nodes);
    }

    std::vector<FloatPicture> query(int which)
    {
        _program->bind();
        _program->setUniform(_program->getUniformLocation(QStringLiteral("u_Which")), which);
        EXPECT_TRUE(_collection->bind(_program.get(), nullptr));
        const auto results =
            drawAll(*_program, kWidth, kHeight, {{"u_SamplerHeadPointer", _heads}, {"u_SamplerNodeBuffer", _nodes}}, 3);
        _program->bind();
        EXPECT_TRUE(_collection->unbind(_program.get(), nullptr));
        _program->unbind();
        return results;
    }

    static std::vector<std::vector<Hit>> castAll(const Scene& scene)
    {
        std::vector<std::vector<Hit>> lists;
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x)
                lists.push_back(scene.cast(x, y));
        return lists;
    }

    static void expectHit(const std::vector<FloatPicture>& found, int x, int y, const Hit& hit)
    {
        const Color place = found[0].pixel(x, y);
        const Color normal = found[1].pixel(x, y);
        const Color other = found[2].pixel(x, y);
        const Vertex& surface = hit.surface;
        EXPECT_EQ(place.a, double(float(hit.depth)));
        EXPECT_EQ(other.b, hit.draw);
        EXPECT_EQ(normal.a, 100 + hit.draw);
        // Single precision through two inverted matrices, and from a depth; slanted triangles make most of it.
        const double found8[] = {place.r, place.g, place.b, normal.r, normal.g, normal.b, other.r, other.g};
        const double wanted8[] = {surface.position.x, surface.position.y, surface.position.z, surface.normal.x,
                                  surface.normal.y,   surface.normal.z,   surface.u,          surface.v};
        for (int i = 0; i < 8; ++i)
            EXPECT_NEAR(found8[i], wanted8[i], 1e-4) << x << ", " << y << ": " << i;
    }

    void compare(const Scene& scene)
    {
        const std::vector<std::vector<Hit>> lists = castAll(scene);
        fill(lists);
        std::size_t longest = 0;
        int empty = 0;
        for (const std::vector<Hit>& hits : lists)
        {
            longest = std::max(longest, hits.size());
            empty += hits.empty();
        }
        EXPECT_GE(longest, 5u);
        EXPECT_LT(longest, std::size_t(kMaxFragments));
        EXPECT_GT(empty, 50);
        EXPECT_LT(empty, kWidth * kHeight - 100);
        for (int which = 0; which < int(longest); ++which)
        {
            const std::vector<FloatPicture> found = query(which);
            for (int y = 0; y < kHeight; ++y)
                for (int x = 0; x < kWidth; ++x)
                {
                    const std::vector<Hit>& hits = lists[std::size_t(y * kWidth + x)];
                    ASSERT_EQ(found[2].pixel(x, y).a, double(hits.size())) << x << ", " << y;
                    if (which < int(hits.size()))
                        expectHit(found, x, y, hits[std::size_t(which)]);
                    if (HasFailure())
                        return;
                }
        }
    }

    InstanceDataPlan* _plan = nullptr;
    std::unique_ptr<ShaderProgram> _program;
    std::unique_ptr<InstanceDataCollection> _collection;
    GLuint _heads = 0;
    GLuint _nodes = 0;

private:
    std::vector<GLuint> _buffers;
    std::vector<GLuint> _bufferTextures;
};

} // namespace

// ---- by the validator ----------------------------------------------------------------------------------------------

TEST(VisibilityBuffer, TheHeaderHasTwoFunctionsAMacroAndNoGuard)
{
    const QString header = embedded(kHeader);
    for (const char* const line : {"\nvoid initializeVisibilityBufferQuery(vec2 ndcCoord, inout uint pointer);\n",
                                   "\n#define doesVisibilityBufferHaveFragment(pointer) (pointer!=0u)\n",
                                   "\nvoid getFragmentInfo(vec2 ndcCoord, inout uint pointer, out vec4 position, out "
                                   "float depth, out vec3 normal,\n"
                                   "                     out vec2 texCoord);\n"})
        EXPECT_TRUE(header.contains(QLatin1String(line))) << line;
    EXPECT_EQ(header.count(QStringLiteral("\n#")), 1);
}

TEST(VisibilityBuffer, TheUnitDeclaresItsUniforms)
{
    const QString unit = embedded(kUnit);
    for (const char* const declaration :
         {"uniform usampler2D u_SamplerHeadPointer;", "uniform usampler2D u_SamplerNodeBuffer;",
          "uniform int u_SamplerNodeBufferWidth;", "uniform mat4 u_InvCameraMatrix;", "uniform mat4 u_InvProjMatrix;",
          "uniform samplerBuffer u_VertexBuffer;", "uniform samplerBuffer u_NormalBuffer;",
          "uniform samplerBuffer u_texCoordBuffer;", "uniform isamplerBuffer u_IndexBuffer;",
          "uniform bool u_indexedDraw;", "#instancedata \"InstanceInfo\""})
        EXPECT_TRUE(unit.contains(QLatin1String(declaration))) << declaration;
}

// ---- by a driver ---------------------------------------------------------------------------------------------------

TEST_F(VisibilityBufferGL, FragmentsOfIndexedDrawsAreFoundFrontToBack)
{
    ASSERT_NO_FATAL_FAILURE(link());
    const Scene scene(true);
    setScene(scene, true);
    DrawBuffers buffers(nullptr);
    buffers.setDrawElementsIndirectCommands(scene.commands().constData(), int(scene.commands().size()));
    const QSharedPointer<UniformBufferObject> block = buffers.getDrawElementsIndirectCommandsUniformBufferObject();
    ASSERT_TRUE(block);
    ASSERT_TRUE(block->bind(_program.get()));
    compare(scene);
    EXPECT_TRUE(block->unbind(_program.get()));
}

TEST_F(VisibilityBufferGL, FragmentsOfDrawsWithoutIndicesAreFoundFrontToBack)
{
    ASSERT_NO_FATAL_FAILURE(link());
    const Scene scene(false);
    setScene(scene, false);
    compare(scene);
}

TEST_F(VisibilityBufferGL, AnEmptyListHasPointer0)
{
    _program = linked(coveringVertexStage(),
                      {QStringLiteral("#version 150\n#include \"VisibilityBuffer.glslh\"\nout vec4 o;\nvoid main()\n{\n"
                                      "    uint pointer = 7u;\n"
                                      "    initializeVisibilityBufferQuery(vec2(0.0), pointer);\n"
                                      "    o = vec4(float(pointer), float(doesVisibilityBufferHaveFragment(pointer)), "
                                      "0.0, 1.0);\n}\n"),
                       embedded(kUnit), _plan->glslc()});
    ASSERT_TRUE(_program);
    std::vector<std::uint32_t> heads(kWidth * kHeight, 0);
    heads[5 * kWidth + 3] = 12;
    const GLuint pointers = integerTexture(kWidth, kHeight, GL_R32UI, GL_RED_INTEGER, heads);
    const FloatPicture found = draw(*_program, kWidth, kHeight, {{"u_SamplerHeadPointer", pointers}});
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
        {
            const bool isThere = x == 3 && y == 5;
            EXPECT_EQ(found.pixel(x, y).r, isThere ? 12 : 0) << x << ", " << y;
            EXPECT_EQ(found.pixel(x, y).g, isThere ? 1 : 0) << x << ", " << y;
        }
}

// The functions are not to be called so, but must not read beyond what there is.
TEST_F(VisibilityBufferGL, AskingForNoFragmentGivesZeros)
{
    _program = linked(
        coveringVertexStage(),
        {QStringLiteral("#version 150\n#include \"VisibilityBuffer.glslh\"\nin vec2 vo_TexCoord;\n"
                        "out vec4 o[2];\nuniform uint u_Pointer;\nvoid main()\n{\n    uint pointer = u_Pointer;\n"
                        "    getFragmentInfo(vo_TexCoord, pointer, o[0], o[1].w, o[1].xyz, o[1].xy);\n"
                        "    o[1].z += float(pointer);\n}\n"),
         embedded(kUnit), _plan->glslc()});
    ASSERT_TRUE(_program);
    const Scene scene(false);
    setScene(scene, false);
    fill(castAll(scene));
    _program->bind();
    _program->setUniform(_program->getUniformLocation(QStringLiteral("u_Pointer")), 0u);
    ASSERT_TRUE(_collection->bind(_program.get(), nullptr));
    const auto found = drawAll(*_program, kWidth, kHeight, {{"u_SamplerNodeBuffer", _nodes}}, 2);
    _program->bind();
    EXPECT_TRUE(_collection->unbind(_program.get(), nullptr));
    for (const FloatPicture& picture : found)
        for (const float value : picture.values)
            ASSERT_EQ(value, 0.0f);
}

// A width that no texture has must not be divided by. The nodes are one below the other then.
TEST_F(VisibilityBufferGL, AWidthBelow1CountsAs1)
{
    _program =
        linked(coveringVertexStage(),
               {QStringLiteral("#version 150\n#include \"VrkUtilities.glslh\"\n#include \"VisibilityBuffer.glslh\"\n"
                               "in vec2 vo_TexCoord;\nout vec4 o;\nvoid main()\n{\n    uint pointer = 2u;\n"
                               "    vec4 position;\n    float depth;\n    vec3 normal;\n    vec2 texCoord;\n"
                               "    getFragmentInfo(vo_TexCoord, pointer, position, depth, normal, texCoord);\n"
                               "    o = vec4(float(pointer), depth, float(getDrawID()), 1.0);\n}\n"),
                embedded(kUnit), _plan->glslc()});
    ASSERT_TRUE(_program);
    setScene(Scene(false), false);
    const float depth = 0.375f;
    std::vector<std::uint32_t> nodes = {9, 1, 0, 3, 3, 1, 0, 2, 9, 1, 0, 3};
    std::memcpy(&nodes[6], &depth, sizeof(depth));
    _nodes = integerTexture(1, 3, GL_RGBA32UI, GL_RGBA_INTEGER, nodes);
    for (const int width : {1, 0, -5})
    {
        _program->bind();
        _program->setUniform(_program->getUniformLocation(QStringLiteral("u_SamplerNodeBufferWidth")), width);
        ASSERT_TRUE(_collection->bind(_program.get(), nullptr));
        const FloatPicture found = draw(*_program, kWidth, kHeight, {{"u_SamplerNodeBuffer", _nodes}});
        _program->bind();
        EXPECT_TRUE(_collection->unbind(_program.get(), nullptr));
        _program->unbind();
        EXPECT_EQ(found.pixel(0, 0).r, 3) << width;
        EXPECT_EQ(found.pixel(0, 0).g, double(depth)) << width;
        EXPECT_EQ(found.pixel(0, 0).b, 2) << width;
    }
}

// There is no command for these ids, but there are records.
TEST_F(VisibilityBufferGL, DrawsBeyondTheBlockOfCommandsHaveNoNormal)
{
    ASSERT_NO_FATAL_FAILURE(link());
    const Scene scene(true);
    setScene(scene, true);
    DrawBuffers buffers(nullptr);
    buffers.setDrawElementsIndirectCommands(scene.commands().constData(), int(scene.commands().size()));
    const QSharedPointer<UniformBufferObject> block = buffers.getDrawElementsIndirectCommandsUniformBufferObject();
    ASSERT_TRUE(block && block->bind(_program.get()));
    const std::vector<std::vector<Hit>> lists = castAll(scene);
    fill(lists, 100);
    const std::vector<FloatPicture> found = query(0);
    EXPECT_TRUE(block->unbind(_program.get()));
    int count = 0;
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
        {
            const std::vector<Hit>& hits = lists[std::size_t(y * kWidth + x)];
            ASSERT_EQ(found[2].pixel(x, y).a, double(hits.size()));
            if (hits.empty())
                continue;
            ++count;
            EXPECT_EQ(found[0].pixel(x, y).a, double(float(hits[0].depth)));
            EXPECT_NEAR(found[0].pixel(x, y).r, hits[0].surface.position.x, 1e-4);
            EXPECT_EQ(found[1].pixel(x, y).a, 100 + hits[0].draw);
            const Color normal = found[1].pixel(x, y);
            EXPECT_EQ(std::abs(normal.r) + std::abs(normal.g) + std::abs(normal.b), 0);
            EXPECT_EQ(found[2].pixel(x, y).r, 0);
            EXPECT_EQ(found[2].pixel(x, y).b, 100 + hits[0].draw);
        }
    EXPECT_GT(count, 100);
}

// With base instances the utilities have no getDrawID of their own, so both may be linked.
TEST_F(VisibilityBufferGL, TheUtilitiesMayBeLinkedWithBaseInstancesOnly)
{
    const auto verdict = [this](const char* define)
    {
        GLSLMacroProcessor processor;
        if (define[0] != '\0')
            processor.addDefine(QLatin1String(define), QStringLiteral("1"));
        QList<std::pair<QString, QString>> texts;
        for (const QString& text :
             {kCaller, embedded(kUnit), _plan->glslc(), embedded(QStringLiteral("src/VrkUtilities.glslc"))})
            texts.append({kFrag, GLSLMacroProcessor::process(text, &processor)});
        return validate({QStringLiteral("-l")}, texts);
    };
    const Verdict together = verdict("DRAW_BUFFER_USE_BASE_INSTANCE");
    EXPECT_TRUE(together.good()) << together.output.toStdString();
    const Verdict twice = verdict("");
    EXPECT_TRUE(twice.ran);
    EXPECT_FALSE(twice.good());
    EXPECT_TRUE(twice.output.contains(QStringLiteral("getDrawID"))) << twice.output.toStdString();
}

} // namespace Harrow::Vrk::Test
