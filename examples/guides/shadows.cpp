// SPDX-License-Identifier: MIT
// A sun over a floor and two boxes: one shadow map fitted, rendered and looked up.
#include "Guide.h"

#include <VrkGL/AutoBinder.h>
#include <VrkGL/AutoEnabler.h>
#include <VrkGL/BufferObject.h>
#include <VrkGL/DrawBuffers.h>
#include <VrkGL/FramebufferObject.h>
#include <VrkGL/GLFunctions.h>
#include <VrkGL/GLSLMacroProcessor.h>
#include <VrkGL/OpenGLDeviceContext.h>
#include <VrkGL/ShaderProgram.h>
#include <VrkGL/ShadowMapManager.h>
#include <VrkGL/Texture.h>
#include <VrkGL/VertexArrayObject.h>

#include <QMatrix4x4>
#include <QVariant>

using namespace Harrow::Vrk;

constexpr int kSize = 360;
constexpr int kMapSide = 512;

constexpr char kVertexShader[] = R"(#version 150
uniform mat4 u_ClipFromWorld;
in vec3 va_Vertex;
out vec3 vo_Place;
void main()
{
    vo_Place = va_Vertex;
    gl_Position = u_ClipFromWorld * vec4(va_Vertex, 1.0);
})";

// A layer holds depth from -1 to 1, and a little more than there is: as much as it changes from texel to texel.
constexpr char kDepthShader[] = R"(#version 150
out vec4 o_Depth;
void main()
{
    float depth = 2.0 * gl_FragCoord.z - 1.0;
    o_Depth = vec4(depth + fwidth(depth));
})";

constexpr char kLitShader[] = R"(#version 150
#include "ShadowMapManager.glslh"
uniform vec3 u_ToSun;
in vec3 vo_Place;
out vec4 o_Color;
void main()
{
    vec3 normal = normalize(cross(dFdx(vo_Place), dFdy(vo_Place)));
    float light = max(dot(normal, u_ToSun), 0.0);
    if (light > 0.0)
        light *= shadowMapGetVisibility(0u, vo_Place); // light 0 of the list
    vec3 color = vo_Place.y > 0.001 ? vec3(1.0, 0.8, 0.5) : vec3(1.0);
    o_Color = vec4(color * (0.2 + 0.8 * light), 1.0);
})";

static void build(DrawBuffers& scene)
{
    QList<float> vertices;
    Guide::addBox(vertices, {-5.0f, -0.2f, -5.0f}, {5.0f, 0.0f, 5.0f});
    Guide::addBox(vertices, {-1.0f, 0.0f, -1.0f}, {1.0f, 2.0f, 1.0f});
    Guide::addBox(vertices, {-3.6f, 0.0f, 1.6f}, {-2.4f, 0.8f, 2.8f});
    const auto buffer = OpenGLDeviceContext::current()->newBuffer();
    buffer->setTarget(GL_ARRAY_BUFFER);
    const auto vertexArray = OpenGLDeviceContext::current()->newVAO();
    vertexArray->upload("va_Vertex", buffer, vertices, 3, GL_STATIC_DRAW);
    scene.setVAO(vertexArray);
    scene.setPrimitiveType(GL_TRIANGLES);
    scene.setVertexCount(GLuint(vertices.size() / 3));
}

static void draw(DrawBuffers& scene, ShaderProgram& program, const QMatrix4x4& clipFromWorld)
{
    program.setUniform("u_ClipFromWorld", QVariant(clipFromWorld));
    const AutoBinder bound(&scene);
    scene.VAO()->enableShaderProgramArrays(&program);
    scene.draw(&program);
}

/// An array of numbers, one layer for each projection. What is outside of a layer is far away.
static void makeLayers(Texture& layers, int count)
{
    constexpr GLfloat kFar[] = {1.0f, 1.0f, 1.0f, 1.0f};
    layers.create3D(GL_TEXTURE_2D_ARRAY, GL_R32F, kMapSide, kMapSide, count);
    const AutoBinder bound(&layers);
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_BORDER);
    glTexParameteri(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_BORDER);
    glTexParameterfv(GL_TEXTURE_2D_ARRAY, GL_TEXTURE_BORDER_COLOR, kFar);
}

static void renderLayers(DrawBuffers& scene, ShaderProgram& program, const ShadowMapManager::RenderData& data)
{
    Texture depth(nullptr); // which all layers share
    depth.create2D(GL_TEXTURE_2D, GL_DEPTH_COMPONENT16, kMapSide, kMapSide);
    FramebufferObject target(nullptr);
    const AutoBinder boundTarget(&target), boundProgram(&program);
    target.attach(&depth, GL_DEPTH_ATTACHMENT, 0);
    glViewport(0, 0, kMapSide, kMapSide);
    glClearColor(1.0f, 1.0f, 1.0f, 1.0f); // nothing there
    for (int layer = 0; layer < data.transformCount; ++layer)
    {
        target.attach3D(data.projectionTexture(), GL_COLOR_ATTACHMENT0, layer, 0);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        draw(scene, program, data.transforms[layer].toMatrix());
        target.detach(GL_COLOR_ATTACHMENT0);
    }
    target.detachAll();
}

static bool link(ShaderProgram& lit, ShaderProgram& depth)
{
    GLSLMacroProcessor processor;
    ShadowMapManager::setup(&processor, 0); // 1 for variance maps
    lit.setMacroProcessor(&processor);
    lit.addShader(GL_VERTEX_SHADER, kVertexShader);
    lit.addShader(GL_FRAGMENT_SHADER, kLitShader);
    lit.addShaderFromFile(GL_FRAGMENT_SHADER, ShadowMapManager::getShaderFile());
    lit.setMacroProcessor(nullptr);
    depth.addShader(GL_VERTEX_SHADER, kVertexShader);
    depth.addShader(GL_FRAGMENT_SHADER, kDepthShader);
    return lit.link() && depth.link();
}

static void drawFrame(Guide& guide)
{
    ShaderProgram lit, depth;
    guide.expect(link(lit, depth), "the programs link");
    DrawBuffers scene(nullptr);
    build(scene);
    Texture layers(nullptr);
    makeLayers(layers, 1);

    // A sun shines along the +z of its space, which is turned by 110 degrees to the right and looks down by 40.
    ShadowMapManager::Light sun;
    sun.setType(ShadowMapManager::Light::eDirectional);
    QMatrix4x4 worldFromSun;
    worldFromSun.rotate(110.0f, 0.0f, 1.0f, 0.0f);
    worldFromSun.rotate(40.0f, 1.0f, 0.0f, 0.0f);
    sun.setTransform(worldFromSun);
    const QVector3D toSun = -worldFromSun.column(2).toVector3D();

    QMatrix4x4 clipFromView, viewFromWorld;
    clipFromView.perspective(40.0f, 1.0f, 0.1f, 100.0f);
    viewFromWorld.lookAt({0.0f, 9.0f, 13.0f}, {0.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f});
    const QMatrix4x4 clipFromWorld = clipFromView * viewFromWorld;
    const std::pair<QVector3D, QVector3D> bounds({-5.05f, -0.25f, -5.05f}, {5.05f, 2.05f, 5.05f});

    // The frame: fit, render the layers if a projection has changed, draw.
    ShadowMapManager::RenderData data;
    data.setProjectionTexture(&layers);
    const QVariant renderData = QVariant::fromValue<QObject*>(&data);
    const QVariantList lights{QVariant::fromValue<QObject*>(&sun)};
    const AutoEnabler depthTest(GL_DEPTH_TEST);
    const auto fit = [&]
    { return ShadowMapManager::processLights(lights, data, &clipFromView, &viewFromWorld, &bounds); };
    if (fit())
        renderLayers(scene, depth, data);

    guide.begin(QColor(26, 28, 33));
    const AutoBinder bound(&lit);
    lit.setUniform("u_ToSun", QVariant(toSun));
    ShadowMapManager::bind(&lit, renderData);
    draw(scene, lit, clipFromWorld);
    ShadowMapManager::unbind(&lit, renderData);

    const auto seenAt = [&](const QVector3D& place)
    {
        const QVector3D ndc = clipFromWorld.map(place);
        return guide.pixel(int((ndc.x() + 1.0f) / 2.0f * kSize), int((ndc.y() + 1.0f) / 2.0f * kSize));
    };
    const auto gray = [](float light) { return QColor::fromRgbF(light, light, light); };
    const QColor shaded = gray(0.2f), sunny = gray(0.2f + 0.8f * toSun.y());
    guide.expectColor(seenAt({-2.0f, 0.0f, 0.0f}), sunny, "the floor before the box is in the sun");
    guide.expectColor(seenAt({2.0f, 0.0f, -0.6f}), shaded, "behind the box is its shadow");
    guide.expectColor(seenAt({4.0f, 0.0f, -0.6f}), sunny, "which ends where 2 / tan 40 says");
    guide.expect(data.transformCount == 1 && !fit(), "nothing has moved, so the map of the last frame will do");
}

int main(int argc, char** argv)
{
    Guide guide(argc, argv, kSize, kSize);
    if (!guide.isReady())
        return 1;
    drawFrame(guide);
    OpenGLDeviceContext::resetContext();
    return guide.finish();
}
