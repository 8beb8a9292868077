// SPDX-License-Identifier: MIT
// DrawBuffers on the real driver: what reaches the shader.
#include "DrawBuffersTestTools.h"

#include "AutoBinder.h"
#include "GLSLMacroProcessor.h"
#include "UniformBufferObject.h"
#include "support/GLTest.h"
#include "support/Picture.h"
#include "support/TransformFeedback.h"

namespace Harrow::Vrk::Test
{
namespace
{

using Access = DrawBuffersTestAccess;

class DrawBuffersGL : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        Access::resetEntryPoints();
        Access::resetMode();
        UniformBufferObjectTestAccess::forgetContexts();
        object.reset(new DrawBuffers(nullptr));
        object->setVAO(OpenGLDeviceContext::current()->newVAO());
        object->setPrimitiveType(GL_POINTS);
    }

    void TearDown() override
    {
        object.reset();
        Access::resetMode();
        GLTest::TearDown();
    }

    /// Vertices with the values 0, 1, 2, …
    void setVertices(int count)
    {
        QList<float> values;
        for (int i = 0; i < count; ++i)
            values.append(float(i));
        auto buffer = OpenGLDeviceContext::current()->newBuffer();
        buffer->setTarget(GL_ARRAY_BUFFER);
        ASSERT_TRUE(object->VAO()->upload(QStringLiteral("va_Value"), buffer, values, 1, GL_STATIC_DRAW));
        object->setVertexCount(GLuint(count));
    }

    void setIndices(const QList<GLushort>& values)
    {
        const auto buffer = newIndexBuffer();
        ASSERT_TRUE(buffer->bind());
        ASSERT_TRUE(buffer->uploadGLushortData(values.constData(), int(values.size()), GL_STATIC_DRAW));
        ASSERT_TRUE(buffer->unbind());
        object->setIndexedDraw(buffer, int(values.size()), GL_UNSIGNED_SHORT);
    }

    /// A program that puts out each vertex's value and what getDrawID() says, in the mode that is chosen.
    static QSharedPointer<ShaderProgram> drawIDProgram()
    {
        auto program = QSharedPointer<ShaderProgram>::create();
        GLSLMacroProcessor processor;
        DrawBuffers::setup(&processor);
        program->setMacroProcessor(&processor);
        program->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("VrkUtilities.glslc"));
        program->addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("VrkUtilities.vert"));
        program->addShader(GL_VERTEX_SHADER, QStringLiteral("#version 150\n"
                                                            "#include \"VrkUtilities.glslh\"\n"
                                                            "in float va_Value;\n"
                                                            "out vec2 vo_Value;\n"
                                                            "void main() {\n"
                                                            "    vo_Value = vec2(va_Value, float(getDrawID()));\n"
                                                            "    gl_Position = vec4(0.0);\n"
                                                            "}\n"));
        program->setTransformFeedbackVaryings({QStringLiteral("vo_Value")}, GL_INTERLEAVED_ATTRIBS);
        EXPECT_TRUE(program->link());
        program->setMacroProcessor(nullptr);
        return program;
    }

    /// The pairs of value and draw identifier that reach the shader during `draw`.
    template <typename Draw> QList<QPair<int, int>> drawn(Draw draw)
    {
        const auto program = drawIDProgram();
        EXPECT_TRUE(program->bind());
        EXPECT_TRUE(object->bind());
        EXPECT_TRUE(object->VAO()->enableShaderProgramArrays(program.data()));
        TransformFeedback feedback(GL_POINTS);
        EXPECT_TRUE(draw(program.data()));
        const QList<float> values = feedback.end<float>(2);
        EXPECT_TRUE(object->unbind());
        EXPECT_TRUE(program->unbind());
        QList<QPair<int, int>> pairs;
        for (qsizetype i = 0; i < values.size(); i += 2)
            pairs.append({int(values[i]), int(values[i + 1])});
        return pairs;
    }

    QList<QPair<int, int>> drawn()
    {
        return drawn([this](ShaderProgram* program) { return object->draw(program); });
    }

    /// Both modes where the driver has them, else the one.
    static QList<bool> modes()
    {
        const bool supported = DrawBuffers::isBaseInstanceDrawingSupported();
        EXPECT_EQ(supported, !isFloor());
        return supported ? QList<bool>{false, true} : QList<bool>{false};
    }

    using Pairs = QList<QPair<int, int>>;

    QScopedPointer<DrawBuffers> object;
};

TEST_F(DrawBuffersGL, InstancesShowTheirIdentifiersInBothModes)
{
    setVertices(2);
    object->setInstanceCount(3);
    object->setDrawIDBase(40);
    for (const bool baseInstance : modes())
    {
        DrawBuffers::useBaseInstanceDrawing(baseInstance);
        EXPECT_EQ(drawn(), Pairs({{0, 40}, {1, 40}, {0, 41}, {1, 41}, {0, 42}, {1, 42}})) << baseInstance;
        EXPECT_EQ(takeTotals(), baseInstance ? Totals({1, 1, 0}) : Totals({3, 3, 0}));
    }
}

TEST_F(DrawBuffersGL, IndexedInstancesShowTheirIdentifiersInBothModes)
{
    setVertices(8);
    setIndices({9, 9, 2, 0, 1});
    object->setIndexedDraw(object->indexBO(), 3, GL_UNSIGNED_SHORT);
    object->setIndexBufferOffset(4);
    object->setBaseVertex(5);
    object->setInstanceCount(2);
    object->setDrawIDBase(7);
    for (const bool baseInstance : modes())
    {
        DrawBuffers::useBaseInstanceDrawing(baseInstance);
        EXPECT_EQ(drawn(), Pairs({{7, 7}, {5, 7}, {6, 7}, {7, 8}, {5, 8}, {6, 8}})) << baseInstance;
        EXPECT_EQ(takeTotals(), baseInstance ? Totals({1, 1, 3}) : Totals({2, 2, 6}));
    }
}

TEST_F(DrawBuffersGL, TheBaseVertexIsTheFirstOneByBaseInstanceAlone)
{
    setVertices(4);
    object->setVertexCount(2);
    object->setBaseVertex(2);
    for (const bool baseInstance : modes())
    {
        DrawBuffers::useBaseInstanceDrawing(baseInstance);
        EXPECT_EQ(drawn(), baseInstance ? Pairs({{2, 0}, {3, 0}}) : Pairs({{0, 0}, {1, 0}}));
    }
}

TEST_F(DrawBuffersGL, WithoutAProgramTheOneInUseIsServed)
{
    setVertices(1);
    object->setDrawIDBase(9);
    EXPECT_EQ(drawn([this](ShaderProgram*) { return object->draw(); }), Pairs({{0, 9}}));
}

TEST_F(DrawBuffersGL, SubDrawsShowTheirNumbers)
{
    setVertices(10);
    setIndices({0, 1, 2, 3, 4, 5});
    const DrawElementsIndirectCommand commands[] = {{2, 1, 0, 0, 0}, {1, 1, 5, 4, 0}, {2, 1, 2, 0xFFFFFFFF, 0}};
    object->setDrawElementsIndirectCommands(commands, 3);
    object->setDrawIDBase(20);
    EXPECT_EQ(drawn(), Pairs({{0, 20}, {1, 20}, {9, 21}, {1, 22}, {2, 22}}));
    const QList<int> subset = {2, 0};
    EXPECT_EQ(drawn([&](ShaderProgram* program) { return object->draw(program, &subset); }),
              Pairs({{1, 22}, {2, 22}, {0, 20}, {1, 20}}));
}

TEST_F(DrawBuffersGL, WithoutABoundIndexBufferNothingIsDrawnAndReported)
{
    setVertices(4);
    for (const bool baseInstance : modes())
    {
        DrawBuffers::useBaseInstanceDrawing(baseInstance);
        const auto program = drawIDProgram();
        ASSERT_TRUE(program->bind());
        for (const bool setAfterBind : {true, false})
        {
            if (!setAfterBind)
                setIndices({3, 2, 1});
            ASSERT_TRUE(setAfterBind ? object->bind() : object->VAO()->bind());
            if (setAfterBind)
                setIndices({3, 2, 1});
            EXPECT_TRUE(object->VAO()->enableShaderProgramArrays(program.data()));
            LogCapture log;
            TransformFeedback feedback(GL_POINTS);
            EXPECT_FALSE(object->draw());
            EXPECT_FALSE(object->draw(program.data()));
            EXPECT_FALSE(object->drawInstanced(1));
            EXPECT_EQ(feedback.end<float>(2), QList<float>());
            EXPECT_EQ(log.messages(), QStringList({noIndices(), noIndices(), noIndices()}));
            EXPECT_TRUE(object->VAO()->unbind());
            object->setIndexedDraw({}, 0, 0);
        }
        program->unbind();
    }
    EXPECT_EQ(takeTotals(), Totals({0, 0, 0}));
}

TEST_F(DrawBuffersGL, SubDrawsWithoutABoundIndexBufferAreReported)
{
    setVertices(4);
    setIndices({3, 2, 1});
    const DrawElementsIndirectCommand command = {2, 1, 1, 0, 0};
    object->setDrawElementsIndirectCommands(&command, 1);
    const auto program = drawIDProgram();
    ASSERT_TRUE(program->bind());
    ASSERT_TRUE(object->VAO()->bind());
    EXPECT_TRUE(object->VAO()->enableShaderProgramArrays(program.data()));
    LogCapture log;
    TransformFeedback feedback(GL_POINTS);
    EXPECT_FALSE(object->draw(program.data()));
    EXPECT_EQ(feedback.end<float>(2), QList<float>());
    EXPECT_EQ(log.messages(), QStringList(noIndices()));
    EXPECT_TRUE(object->VAO()->unbind());
    program->unbind();
}

TEST_F(DrawBuffersGL, SubDrawsReadTheApplicationsOwnElementBuffer)
{
    setVertices(4);
    setIndices({3, 2, 1});
    const QSharedPointer<BufferObject> own = object->indexBO();
    object->setIndexedDraw({}, 0, GL_UNSIGNED_SHORT);
    const DrawElementsIndirectCommand commands[] = {{2, 1, 1, 0, 0}, {1, 1, 0, 0, 0}};
    object->setDrawElementsIndirectCommands(commands, 2);
    EXPECT_EQ(drawn(
                  [&](ShaderProgram* program)
                  {
                      glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, own->getBO());
                      return object->draw(program);
                  }),
              Pairs({{2, 0}, {1, 0}, {3, 1}}));
}

TEST_F(DrawBuffersGL, AnAttributeInAnIndexBufferIsReportedAndLeavesTheIndicesInPlace)
{
    setVertices(4);
    setIndices({3, 2});
    object->VAO()->registerBO(QStringLiteral("va_Value"), newIndexBuffer(), 1, GL_FLOAT, false, 0, 16);
    const auto program = drawIDProgram();
    ASSERT_TRUE(program->bind());
    ASSERT_TRUE(object->bind());
    {
        LogCapture log;
        EXPECT_FALSE(object->VAO()->enableShaderProgramArrays(program.data()));
        EXPECT_EQ(log.messages(),
                  QStringList(assertion("hasVertexBufferBound(*data.bo)",
                                        "No vertex buffer is bound for attribute index 0 on enable array")));
    }
    GLint bound = 0;
    glGetIntegerv(GL_ELEMENT_ARRAY_BUFFER_BINDING, &bound);
    EXPECT_EQ(GLuint(bound), object->indexBO()->getBO());
    TransformFeedback feedback(GL_POINTS);
    EXPECT_TRUE(object->draw(program.data()));
    EXPECT_EQ(feedback.end<float>(2), QList<float>({0, 0, 0, 0})) << "two points, with what the context holds";
    EXPECT_TRUE(object->unbind());
    program->unbind();
}

TEST_F(DrawBuffersGL, DrawInstancedLeavesTheIdentifierAlone)
{
    setVertices(2);
    object->setDrawIDBase(20);
    EXPECT_EQ(drawn([this](ShaderProgram*) { return object->drawInstanced(2); }),
              Pairs({{0, 0}, {1, 0}, {0, 0}, {1, 0}}));
    setIndices({1});
    EXPECT_EQ(drawn([this](ShaderProgram*) { return object->drawInstanced(2); }), Pairs({{1, 0}, {1, 0}}));
}

TEST_F(DrawBuffersGL, MultiDrawReadsTheCommandBuffer)
{
    setVertices(10);
    setIndices({0, 1, 2, 3, 4, 5});
    const DrawElementsIndirectCommand commands[] = {{2, 1, 0, 0, 0}, {1, 1, 5, 4, 0}};
    object->setDrawElementsIndirectCommands(commands, 2);
    Access::useMultiDrawIndirect(*object, true);
    const auto commandBuffer = OpenGLDeviceContext::current()->newBuffer();
    commandBuffer->setTarget(isFloor() ? GL_ARRAY_BUFFER : GL_DRAW_INDIRECT_BUFFER);
    {
        const AutoBinder binder(commandBuffer.data());
        ASSERT_TRUE(commandBuffer->uploadArbitraryData(commands, 2, GL_STATIC_DRAW, sizeof(commands[0])));
    }
    Access::setCommandBuffer(*object, commandBuffer);
    if (isFloor())
    {
        LogCapture log;
        EXPECT_EQ(drawn([this](ShaderProgram* program) { return !object->draw(program); }), Pairs());
        EXPECT_EQ(log.messages(QtCriticalMsg), QStringList(assertion("nullptr != ::_ptrc_glMultiDrawElementsIndirect",
                                                                     "glMultiDrawElementsIndirect is NULL on draw")));
        return;
    }
    EXPECT_EQ(drawn(), Pairs({{0, 0}, {1, 0}, {9, 0}}));
    EXPECT_EQ(takeTotals(), Totals({1, 2, 3}));
}

TEST_F(DrawBuffersGL, RebindSwitchesGeometryWithItsIndices)
{
    setVertices(4);
    setIndices({3, 2});
    DrawBuffers other(nullptr);
    other.setPrimitiveType(GL_POINTS);
    other.setVAO(OpenGLDeviceContext::current()->newVAO());
    ASSERT_TRUE(
        other.VAO()->upload(QStringLiteral("va_Value"), object->VAO()->bo(QStringLiteral("va_Value")), 1, GL_FLOAT));
    other.setIndexedDraw(object->indexBO(), 2, GL_UNSIGNED_SHORT); // in another vertex array
    EXPECT_EQ(drawn(
                  [&](ShaderProgram* program)
                  {
                      bool good = object->draw(program) && other.rebind(object.data()) &&
                                  other.VAO()->enableShaderProgramArrays(program);
                      other.setDrawIDBase(1);
                      good = good && other.draw(program) && object->rebind(&other);
                      object->setDrawIDBase(2);
                      return good && object->draw(program);
                  }),
              Pairs({{3, 0}, {2, 0}, {3, 1}, {2, 1}, {3, 2}, {2, 2}}));
}

TEST_F(DrawBuffersGL, TheShaderReadsTheCommandsOfItsDraw)
{
    QList<DrawElementsIndirectCommand> commands;
    for (quint32 i = 0; i < 100; ++i) // what the block holds
        commands.append({1, i, 2 * i, 3 * i, 4 * i});
    setVertices(1);
    setIndices({0});
    object->setDrawElementsIndirectCommands(commands.constData(), 100);
    const auto block = object->getDrawElementsIndirectCommandsUniformBufferObject();
    object->setDrawElementsIndirectCommands(nullptr, 0);

    ShaderProgram program;
    program.addShader(GL_VERTEX_SHADER,
                      QStringLiteral("#version 150\n"
                                     "#include \"DrawElementsIndirectCommand.glslh\"\n"
                                     "out vec4 vo_Value;\n"
                                     "void main() {\n"
                                     "    DrawElementsIndirectCommand c = u_DrawElementsIndirectCommands[u_DrawID];\n"
                                     "    vo_Value = vec4(c.count + c.instanceCount, c.firstIndex, c.baseVertex,\n"
                                     "                    c.baseInstance);\n"
                                     "    gl_Position = vec4(0.0);\n"
                                     "}\n"));
    program.setTransformFeedbackVaryings({QStringLiteral("vo_Value")}, GL_INTERLEAVED_ATTRIBS);
    ASSERT_TRUE(program.link() && program.bind());
    EXPECT_TRUE(block->bind());
    ASSERT_TRUE(object->bind());
    TransformFeedback feedback(GL_POINTS);
    for (const int id : {0, 1, 99})
    {
        object->setDrawIDBase(id);
        EXPECT_TRUE(object->draw(&program));
    }
    EXPECT_EQ(feedback.end<float>(4), QList<float>({1, 0, 0, 0, 2, 2, 3, 4, 100, 198, 297, 396}));
    object->unbind();
    EXPECT_TRUE(block->unbind());
    program.unbind();
}

TEST_F(DrawBuffersGL, TrianglesArePutWhereTheirIdentifierSays)
{
    // Four instances, each a square of 2 x 2 pixels, in a picture of 8 x 2: the identifier gives place and colour.
    object->setPrimitiveType(GL_TRIANGLES);
    const auto buffer = OpenGLDeviceContext::current()->newBuffer();
    buffer->setTarget(GL_ARRAY_BUFFER);
    ASSERT_TRUE(
        object->VAO()->upload(QStringLiteral("va_Vertex"), buffer, {0, 0, 1, 0, 1, 1, 0, 1}, 2, GL_STATIC_DRAW));
    setIndices({0, 1, 2, 0, 2, 3});
    object->setInstanceCount(4);
    for (const bool baseInstance : modes())
    {
        DrawBuffers::useBaseInstanceDrawing(baseInstance);
        ShaderProgram program;
        GLSLMacroProcessor processor;
        DrawBuffers::setup(&processor);
        program.setMacroProcessor(&processor);
        program.addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("VrkUtilities.glslc"));
        program.addShaderFromFile(GL_VERTEX_SHADER, QStringLiteral("VrkUtilities.vert"));
        program.addShader(GL_VERTEX_SHADER,
                          QStringLiteral("#version 150\n"
                                         "#include \"VrkUtilities.glslh\"\n"
                                         "in vec2 va_Vertex;\n"
                                         "flat out float vo_Shade;\n"
                                         "void main() {\n"
                                         "    float id = float(getDrawID());\n"
                                         "    vo_Shade = (id + 1.0) / 4.0;\n"
                                         "    gl_Position = vec4((va_Vertex.x + id) / 2.0 - 1.0,\n"
                                         "                       va_Vertex.y * 2.0 - 1.0, 0.0, 1.0);\n"
                                         "}\n"));
        program.addShader(GL_FRAGMENT_SHADER, QStringLiteral("#version 150\n"
                                                             "flat in float vo_Shade;\n"
                                                             "out vec4 o_Color;\n"
                                                             "void main() { o_Color = vec4(vo_Shade); }\n"));
        ASSERT_TRUE(program.link() && program.bind());
        const OffscreenTarget target(8, 2);
        glClearColor(0, 0, 0, 0);
        glClear(GL_COLOR_BUFFER_BIT);
        ASSERT_TRUE(object->bind());
        EXPECT_TRUE(object->VAO()->enableShaderProgramArrays(&program));
        EXPECT_TRUE(object->draw(&program));
        object->unbind();
        program.unbind();
        QImage expected(8, 2, QImage::Format_RGBA8888);
        const int shades[] = {64, 128, 191, 255}; // quarters of 255, rounded
        for (int x = 0; x < 8; ++x)
            for (int y = 0; y < 2; ++y)
            {
                const int shade = shades[x / 2];
                expected.setPixel(x, y, qRgba(shade, shade, shade, shade));
            }
        EXPECT_TRUE(picturesAgree(target.read(), expected, 1, 0.5)) << baseInstance;
    }
}

} // namespace
} // namespace Harrow::Vrk::Test
