// SPDX-License-Identifier: MIT
#include "OpenGLDeviceContext.h"

#include "AutoBinder.h"
#include "BufferObject.h"
#include "DrawBuffers.h"
#include "ShaderProgram.h"
#include "UniformBufferObject.h"
#include "VertexArrayObject.h"
#include "support/CallLog.h"
#include "support/FakeDriver.h"
#include "support/GLTest.h"
#include "support/LogCapture.h"
#include "support/ObjectAccess.h"
#include "support/Picture.h"

#include <QScopeGuard>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <ostream>
#include <string>

namespace Harrow::Vrk::Test
{
namespace
{

/// Takes note of what its own making of a quad asks for.
class CountingContext : public OpenGLDeviceContext
{
public:
    using OpenGLDeviceContext::newBuffer;

    QSharedPointer<BufferObject> newBuffer() override
    {
        ++buffers;
        return buffers > refusedAfter ? nullptr : OpenGLDeviceContext::newBuffer();
    }
    QSharedPointer<VertexArrayObject> newVAO() override
    {
        ++vertexArrays;
        return refuseVertexArrays ? nullptr : OpenGLDeviceContext::newVAO();
    }
    QSharedPointer<DrawBuffers> newFullscreenQuad() override
    {
        ++quads;
        return OpenGLDeviceContext::newFullscreenQuad();
    }

    int buffers = 0;
    int vertexArrays = 0;
    int quads = 0;
    int refusedAfter = 100;
    bool refuseVertexArrays = false;
};

TEST(OpenGLDeviceContextLoadTest, TheInstanceIsThereBeforeAnyContext)
{
    CallLog calls;
    EXPECT_FALSE(OpenGLDeviceContext::current().isNull());
    EXPECT_EQ(OpenGLDeviceContext::current(), OpenGLDeviceContext::current());
    OpenGLDeviceContext::resetContext();
    EXPECT_FALSE(OpenGLDeviceContext::current().isNull());
    EXPECT_EQ(calls.list(), QStringList());
}

// ---- on the fake driver --------------------------------------------------------------------------------------------

QList<QList<float>> uploads;

class OpenGLDeviceContextTest : public FakeDriverTest
{
protected:
    void SetUp() override
    {
        FakeDriverTest::SetUp();
        OpenGLDeviceContext::resetContext();
    }

    void TearDown() override
    {
        OpenGLDeviceContext::resetContext();
    }
};

TEST_F(OpenGLDeviceContextTest, ABufferWithAnIdIsAWrapper)
{
    const int managed = BufferObject::NumAliveManaged();
    CallLog calls;
    auto buffer = OpenGLDeviceContext::current()->newBuffer(17);
    EXPECT_EQ(buffer->getBO(), 17u);
    EXPECT_EQ(buffer->parent(), nullptr);
    EXPECT_EQ(BufferObject::NumAliveManaged(), managed);
    buffer.clear();
    EXPECT_EQ(calls.list(), QStringList());
}

TEST_F(OpenGLDeviceContextTest, ABufferWithoutAnIdIsNewAndItsOwn)
{
    const int managed = BufferObject::NumAliveManaged();
    CallLog calls;
    auto buffer = OpenGLDeviceContext::current()->newBuffer();
    EXPECT_EQ(buffer->getBO(), 1u);
    EXPECT_EQ(buffer->parent(), nullptr);
    EXPECT_EQ(BufferObject::NumAliveManaged(), managed + 1);
    buffer.clear();
    EXPECT_EQ(calls.count("glGenBuffers"), 1);
    EXPECT_EQ(calls.count("glDeleteBuffers"), 1);
}

TEST_F(OpenGLDeviceContextTest, VertexArraysAndUniformBuffersHaveNoParent)
{
    const auto vao = OpenGLDeviceContext::current()->newVAO();
    EXPECT_EQ(vao->parent(), nullptr);
    EXPECT_EQ(vao->getVAO(), 0u);
    const auto buffer = OpenGLDeviceContext::current()->newBuffer();
    const auto block = OpenGLDeviceContext::current()->newUniformBuffer(QStringLiteral("u_Block"), buffer);
    EXPECT_EQ(block->parent(), nullptr);
    EXPECT_EQ(block->bufferObject(), buffer);
}

TEST_F(OpenGLDeviceContextTest, TheQuadsCallsAndNumbers)
{
    uploads.clear();
    driver.replace(
        "glBufferData",
        +[](GLenum, GLsizeiptr size, const void* data, GLenum)
        {
            const auto* const values = static_cast<const float*>(data);
            uploads.append(QList<float>(values, values + size / GLsizeiptr(sizeof(float))));
        });
    driver.load();
    OpenGLDeviceContext context;
    CallLog calls;
    const auto quad = context.newFullscreenQuad();
    ASSERT_FALSE(quad.isNull());
    EXPECT_EQ(quad->parent(), nullptr);

    EXPECT_EQ(calls.count("glGenBuffers"), 2);
    EXPECT_EQ(calls.count("glGenVertexArrays"), 0) << "the vertex array's name comes with its first bind";
    const auto binds = calls.named({"glBindBuffer"});
    EXPECT_EQ(binds, QStringList({CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 1),
                                  CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 0),
                                  CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 2),
                                  CallLog::call("glBindBuffer", GL_ARRAY_BUFFER, 0)}));
    EXPECT_TRUE(calls.list().at(3).startsWith(QStringLiteral("glBindBuffer")));
    EXPECT_TRUE(calls.list().at(4).startsWith(QStringLiteral("glBufferData")));
    EXPECT_TRUE(calls.list().at(4).endsWith(CallLog::call("", GL_STATIC_DRAW).mid(1)));
    EXPECT_TRUE(calls.list().at(7).startsWith(QStringLiteral("glBufferData")));
    EXPECT_EQ(calls.list().size(), 9);

    EXPECT_EQ(uploads.value(0), QList<float>({-1, 1, -1, -1, -1, -1, 1, -1, -1, 1, -1, -1, 1, 1, -1, -1, 1, -1}));
    EXPECT_EQ(uploads.value(1), QList<float>({0, 1, 0, 0, 1, 0, 1, 0, 1, 1, 0, 1}));

    EXPECT_EQ(quad->numVerts(), 6u);
    EXPECT_TRUE(quad->indexBO().isNull());
    ASSERT_TRUE(quad->bind());
    calls.clear();
    EXPECT_TRUE(VertexArrayObjectTestAccess::enableArray(*quad->VAO(), QStringLiteral("va_Vertex"), 0));
    EXPECT_TRUE(VertexArrayObjectTestAccess::enableArray(*quad->VAO(), QStringLiteral("va_TexCoord"), 1));
    EXPECT_TRUE(quad->draw());
    EXPECT_EQ(calls.named({"glVertexAttribPointer", "glDrawArrays"}),
              QStringList({CallLog::call("glVertexAttribPointer", 0, 3, GL_FLOAT, 0, 0, nullptr),
                           CallLog::call("glVertexAttribPointer", 1, 2, GL_FLOAT, 0, 0, nullptr),
                           CallLog::call("glDrawArrays", GL_TRIANGLES, 0, 6)}));
    EXPECT_TRUE(quad->unbind());
    EXPECT_EQ(quad->VAO()->bo(QStringLiteral("va_Vertex"))->getBO(), 1u);
    EXPECT_EQ(quad->VAO()->bo(QStringLiteral("va_TexCoord"))->getBO(), 2u);
}

TEST_F(OpenGLDeviceContextTest, NewFullscreenQuadIsNewEachTime)
{
    OpenGLDeviceContext context;
    EXPECT_NE(context.newFullscreenQuad(), context.newFullscreenQuad());
}

TEST_F(OpenGLDeviceContextTest, FullscreenQuadCalledTwiceIsOneObjectUntilTheReset)
{
    const auto first = OpenGLDeviceContext::current()->fullscreenQuad();
    EXPECT_EQ(OpenGLDeviceContext::current()->fullscreenQuad(), first);
    const auto former = OpenGLDeviceContext::current();
    OpenGLDeviceContext::resetContext();
    EXPECT_NE(OpenGLDeviceContext::current(), former);
    EXPECT_NE(OpenGLDeviceContext::current()->fullscreenQuad(), first);
    EXPECT_EQ(former->fullscreenQuad(), first) << "its holders keep the former instance and its quad";
}

TEST_F(OpenGLDeviceContextTest, ResetLetsTheQuadGo)
{
    const int before = DrawBuffers::NumAlive();
    OpenGLDeviceContext::current()->fullscreenQuad();
    EXPECT_EQ(DrawBuffers::NumAlive(), before + 1);
    OpenGLDeviceContext::resetContext();
    EXPECT_EQ(DrawBuffers::NumAlive(), before);
}

TEST_F(OpenGLDeviceContextTest, CopiesShareTheQuad)
{
    OpenGLDeviceContext original;
    const auto quad = original.fullscreenQuad();
    OpenGLDeviceContext copy(original);
    EXPECT_EQ(copy.fullscreenQuad(), quad);
    OpenGLDeviceContext assigned;
    assigned.fullscreenQuad();
    assigned = original;
    EXPECT_EQ(assigned.fullscreenQuad(), quad);
}

TEST_F(OpenGLDeviceContextTest, TheQuadIsMadeThroughTheVirtualFactories)
{
    CountingContext context;
    const auto quad = context.fullscreenQuad();
    EXPECT_EQ(context.fullscreenQuad(), quad);
    EXPECT_EQ(context.quads, 1);
    EXPECT_EQ(context.buffers, 2);
    EXPECT_EQ(context.vertexArrays, 1);
}

TEST_F(OpenGLDeviceContextTest, AFactoryThatGivesNullGivesNoQuad)
{
    const QString buffer =
        assertionLine(QStringLiteral("!buffer.isNull()"), QStringLiteral("Buffer Object is NULL on newFullscreenQuad"));
    const int buffers = BufferObject::NumAlive();
    LogCapture log;
    for (const int given : {0, 1})
    {
        CountingContext context;
        context.refusedAfter = given;
        EXPECT_TRUE(context.fullscreenQuad().isNull());
        context.refusedAfter = 100;
        EXPECT_FALSE(context.fullscreenQuad().isNull()) << "it is asked for again";
    }
    CountingContext context;
    context.refuseVertexArrays = true;
    EXPECT_TRUE(context.fullscreenQuad().isNull());
    EXPECT_EQ(log.messages(QtCriticalMsg),
              QStringList({buffer, buffer,
                           assertionLine(QStringLiteral("!vao.isNull()"),
                                         QStringLiteral("Vertex Array Object is NULL on newFullscreenQuad"))}));
    EXPECT_EQ(BufferObject::NumAlive(), buffers);
}

// ---- on the real driver --------------------------------------------------------------------------------------------

class OpenGLDeviceContextGL : public GLTest
{
protected:
    void SetUp() override
    {
        GLTest::SetUp();
        DrawBuffersTestAccess::resetMode();
        OpenGLDeviceContext::resetContext();
    }

    void TearDown() override
    {
        OpenGLDeviceContext::resetContext();
        GLTest::TearDown();
    }
};

TEST_F(OpenGLDeviceContextGL, TheQuadCoversTheViewportWithItsTextureCoordinates)
{
    ShaderProgram program;
    program.addShader(GL_VERTEX_SHADER, QStringLiteral("#version 150\n"
                                                       "in vec3 va_Vertex; in vec2 va_TexCoord; out vec2 vo_TexCoord;\n"
                                                       "void main() { gl_Position = vec4(va_Vertex, 1.0);\n"
                                                       "              vo_TexCoord = va_TexCoord; }\n"));
    program.addShader(GL_FRAGMENT_SHADER, QStringLiteral("#version 150\n"
                                                         "in vec2 vo_TexCoord; out vec4 o_Color;\n"
                                                         "void main() { o_Color = vec4(vo_TexCoord, 0.0, 1.0); }\n"));
    ASSERT_TRUE(program.link() && program.bind());
    const auto quad = OpenGLDeviceContext::current()->fullscreenQuad();
    constexpr int size = 16;
    const OffscreenTarget target(size, size);
    ASSERT_TRUE(quad->bind());
    EXPECT_TRUE(quad->VAO()->enableShaderProgramArrays(&program));
    EXPECT_TRUE(quad->draw(&program));
    EXPECT_TRUE(quad->unbind());
    program.unbind();
    QImage expected(size, size, QImage::Format_RGBA8888);
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x)
            expected.setPixel(
                x, y, qRgba(int((x + 0.5) / size * 255 + 0.5), int((size - y - 0.5) / size * 255 + 0.5), 0, 255));
    // A step apart at most: both round, from numbers that are not the same to the last bit.
    EXPECT_TRUE(picturesAgree(target.read(), expected, 1, 0.5));
}

TEST_F(OpenGLDeviceContextGL, EverythingIsReleasedWithTheReset)
{
    const int buffers = BufferObject::NumAlive();
    const int arrays = VertexArrayObject::NumAlive();
    const auto quad = OpenGLDeviceContext::current()->fullscreenQuad().data();
    ASSERT_TRUE(quad->bind() && quad->unbind());
    const GLuint array = quad->VAO()->getVAO();
    const GLuint buffer = quad->VAO()->bo(QStringLiteral("va_Vertex"))->getBO();
    EXPECT_TRUE(glIsVertexArray(array) && glIsBuffer(buffer));
    OpenGLDeviceContext::resetContext();
    EXPECT_FALSE(glIsVertexArray(array) || glIsBuffer(buffer));
    EXPECT_EQ(BufferObject::NumAlive(), buffers);
    EXPECT_EQ(VertexArrayObject::NumAlive(), arrays);
}

// -- the end of the process, with the quad alive --

enum class Ending
{
    eContextCurrent,
    eContextNotCurrent,
    eContextDestroyed,
    eQuadBound
};

void PrintTo(const Ending& ending, std::ostream* stream)
{
    constexpr const char* kNames[] = {"context current", "context not current", "context destroyed", "quad bound"};
    *stream << kNames[int(ending)];
}

/// Told while the library releases its instance: by then there is none any more for anybody.
void atRelease()
{
    if (OpenGLDeviceContext::current())
        std::_Exit(6);
    DrawBuffers late(nullptr);
    if (late.getDrawElementsIndirectCommandsUniformBufferObject())
        std::_Exit(7);
    std::fputs("quad released\n", stderr);
}

void writeToStderr(QtMsgType, const QMessageLogContext&, const QString& text)
{
    std::fprintf(stderr, "%s\n", text.toUtf8().constData());
}

/// Ends this process by `exit`: 0 with "quad released" on stderr when the library lets its quad go without calling
/// OpenGL, 3 or 4 when it does call, 6 or 7 when the instance can still be had then.
[[noreturn]] void endWithQuad(Ending ending)
{
    auto* const own = new HeadlessContext;
    own->makeCurrent();
    {
        const auto quad = OpenGLDeviceContext::current()->fullscreenQuad();
        const bool made = quad->bind() && quad->unbind() && quad->VAO()->getVAO() != 0;
        if (!made)
            std::_Exit(5);
        QObject::connect(quad.data(), &QObject::destroyed, atRelease);
        if (ending == Ending::eQuadBound && !quad->bind())
            std::_Exit(5);
    }
    qInstallMessageHandler(writeToStderr);
    if (ending == Ending::eContextNotCurrent)
        HeadlessContext::releaseCurrent();
    if (ending == Ending::eContextDestroyed)
        delete own;
    ::_ptrc_glDeleteVertexArrays = [](GLsizei, const GLuint*) { std::_Exit(3); };
    ::_ptrc_glDeleteBuffers = [](GLsizei, const GLuint*) { std::_Exit(4); };
    std::exit(0);
}

class OpenGLDeviceContextExitGL : public OpenGLDeviceContextGL, public testing::WithParamInterface<Ending>
{
};

TEST_P(OpenGLDeviceContextExitGL, TheProcessEndsWellWithTheQuadAlive)
{
    // A process of its own, not a fork of this one: the driver has threads.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    // A vertex array that is still bound says so; the quad's own release comes after that of its parts.
    const std::string bound = GetParam() == Ending::eQuadBound
                                  ? "Vertex Array Object is already bound on destroy.*"
                                    "Vertex Array Object is bound during class destructor.*"
                                    "Vertex Array Object needs to be destroied before class destructor.*"
                                  : "";
    EXPECT_EXIT(endWithQuad(GetParam()), testing::ExitedWithCode(0),
                bound +
                    "Assertion '!context.isNull\\(\\)' failed: There is no OpenGLDeviceContext after the end of the "
                    "process.*quad released");
}

INSTANTIATE_TEST_SUITE_P(Endings, OpenGLDeviceContextExitGL,
                         testing::Values(Ending::eContextCurrent, Ending::eContextNotCurrent, Ending::eContextDestroyed,
                                         Ending::eQuadBound));

} // namespace
} // namespace Harrow::Vrk::Test
