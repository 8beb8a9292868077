// SPDX-License-Identifier: MIT
// A mesh with indices, drawn in a context of Qt's into a texture. The whole of it: start, scene, picture, end.
#include <VrkGL/AutoBinder.h>
#include <VrkGL/AutoEnabler.h>
#include <VrkGL/BufferObject.h>
#include <VrkGL/DrawBuffers.h>
#include <VrkGL/FramebufferObject.h>
#include <VrkGL/GLFunctions.h>
#include <VrkGL/GLUtilities.h>
#include <VrkGL/OpenGLDeviceContext.h>
#include <VrkGL/ShaderProgram.h>
#include <VrkGL/Texture.h>
#include <VrkGL/VertexArrayObject.h>

#include <QGuiApplication>
#include <QImage>
#include <QMatrix4x4>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QVariant>

#include <cmath>

// Qt's header brings the system's names of OpenGL, so the library's are told apart by name.
namespace vrk = Harrow::Vrk;

constexpr int kSize = 320;

constexpr char kVertexShader[] = R"(#version 150
uniform mat4 u_ClipFromModel;
in vec3 va_Vertex;
in vec3 va_Normal;
out vec3 vo_Normal;
void main()
{
    vo_Normal = va_Normal;
    gl_Position = u_ClipFromModel * vec4(va_Vertex, 1.0);
})";

constexpr char kFragmentShader[] = R"(#version 150
in vec3 vo_Normal;
out vec4 o_Color;
void main() { o_Color = vec4(0.5 + 0.5 * normalize(vo_Normal), 1.0); })";

/// A ring around the z axis: 64 by 32 vertices of six floats, place and normal, and two triangles for each of them.
static void makeRing(QList<float>& vertices, QList<GLuint>& indices)
{
    constexpr GLuint kAround = 64, kAcross = 32;
    constexpr float kTurn = 6.2831853f;
    for (GLuint i = 0; i < kAround; ++i)
        for (GLuint j = 0; j < kAcross; ++j)
        {
            const float a = kTurn * float(i) / float(kAround), b = kTurn * float(j) / float(kAcross);
            const float x = std::cos(b) * std::cos(a), y = std::cos(b) * std::sin(a), z = std::sin(b);
            vertices << std::cos(a) + 0.4f * x << std::sin(a) + 0.4f * y << 0.4f * z << x << y << z;

            const GLuint i1 = (i + 1) % kAround, j1 = (j + 1) % kAcross;
            const GLuint p = i * kAcross + j, q = i1 * kAcross + j, r = i1 * kAcross + j1, s = i * kAcross + j1;
            indices << p << q << r << p << r << s;
        }
}

/// The mesh as something to draw: two buffers, a vertex array that names what is in the first, and the second's count.
static void fill(vrk::DrawBuffers& mesh)
{
    QList<float> vertices;
    QList<GLuint> indices;
    makeRing(vertices, indices);

    const auto device = vrk::OpenGLDeviceContext::current();
    const auto vertexBuffer = device->newBuffer(), indexBuffer = device->newBuffer();
    vertexBuffer->setTarget(GL_ARRAY_BUFFER);
    indexBuffer->setTarget(GL_ELEMENT_ARRAY_BUFFER);
    {
        const vrk::AutoBinder boundVertices(vertexBuffer), boundIndices(indexBuffer);
        vertexBuffer->upload(vertices, GL_STATIC_DRAW);
        indexBuffer->uploadGLuintData(indices.constData(), int(indices.size()), GL_STATIC_DRAW);
    }
    const auto vertexArray = device->newVAO();
    constexpr GLuint kStride = 6 * sizeof(float);
    vertexArray->registerBO("va_Vertex", vertexBuffer, 3, GL_FLOAT, false, kStride, 0);
    vertexArray->registerBO("va_Normal", vertexBuffer, 3, GL_FLOAT, false, kStride, 3 * sizeof(float));

    mesh.setVAO(vertexArray);
    mesh.setPrimitiveType(GL_TRIANGLES);
    mesh.setIndexedDraw(indexBuffer, int(indices.size()), GL_UNSIGNED_INT);
}

static bool draw(QImage& picture)
{
    vrk::DrawBuffers mesh(nullptr);
    fill(mesh);

    vrk::ShaderProgram program;
    program.addShader(GL_VERTEX_SHADER, kVertexShader);
    program.addShader(GL_FRAGMENT_SHADER, kFragmentShader);
    if (!program.link())
        return false; // the compiler's words are in the log, and in program.log()

    vrk::Texture color(nullptr), depth(nullptr);
    color.create2D(GL_TEXTURE_2D, GL_RGBA8, kSize, kSize);
    depth.create2D(GL_TEXTURE_2D, GL_DEPTH_COMPONENT16, kSize, kSize);
    vrk::FramebufferObject target(nullptr);
    const vrk::AutoBinder boundTarget(&target);
    target.attach(&color, GL_COLOR_ATTACHMENT0, 0);
    target.attach(&depth, GL_DEPTH_ATTACHMENT, 0);
    target.setDrawBuffers();

    vrk::glViewport(0, 0, kSize, kSize);
    vrk::glClearColor(0.1f, 0.11f, 0.13f, 1.0f);
    vrk::glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    QMatrix4x4 clipFromModel;
    clipFromModel.perspective(40.0f, 1.0f, 0.1f, 100.0f);
    clipFromModel.translate(0.0f, 0.0f, -4.5f);
    {
        const vrk::AutoEnabler depthTest(GL_DEPTH_TEST);
        const vrk::AutoBinder boundProgram(&program), boundMesh(&mesh);
        program.setUniform("u_ClipFromModel", QVariant(clipFromModel));
        mesh.VAO()->enableShaderProgramArrays(&program);
        mesh.draw(&program);
    }
    vrk::glReadPixels(0, 0, kSize, kSize, GL_RGBA, GL_UNSIGNED_BYTE, picture.bits());
    target.detachAll();
    return !vrk::hasGLError(__FILE__, __LINE__);
}

int main(int argc, char** argv)
{
    QGuiApplication application(argc, argv);
    QSurfaceFormat format;
    format.setVersion(3, 2);
    format.setProfile(QSurfaceFormat::CoreProfile);
    QOffscreenSurface surface;
    surface.setFormat(format);
    surface.create();
    QOpenGLContext context;
    context.setFormat(format);
    if (!context.create() || !context.makeCurrent(&surface) || !initializeGLFunctions())
        return 1;

    QImage picture(kSize, kSize, QImage::Format_RGBA8888);
    const bool drawn = draw(picture); // whatever it has made is gone when it returns, with the context still there
    vrk::OpenGLDeviceContext::resetContext();

    // What the ring shows us, straight on, has its normal along z. In its hole is nothing.
    const bool right = picture.pixelColor(kSize / 2, kSize / 2) == QColor(26, 28, 33) &&
                       (picture.pixelColor(54, kSize / 2).blue() > 250);
    if (argc > 1)
        picture.mirrored().save(QString::fromLocal8Bit(argv[1]));
    return drawn && right ? 0 : 1;
}
