// SPDX-License-Identifier: MIT
// A scene of twelve squares on a wheel, drawn by commands out of one index buffer: transforms that hang on each other,
// culling, a hidden branch, and one property changed by name.
#include "Guide.h"

#include <VrkGL/AutoBinder.h>
#include <VrkGL/BufferObject.h>
#include <VrkGL/DrawBuffers.h>
#include <VrkGL/DrawElementsIndirectCommand.h>
#include <VrkGL/GLFunctions.h>
#include <VrkGL/GLSLMacroProcessor.h>
#include <VrkGL/GPUModel.h>
#include <VrkGL/InstanceDataCollection.h>
#include <VrkGL/InstanceDataPlan.h>
#include <VrkGL/InstanceDataRegistry.h>
#include <VrkGL/OpenGLDeviceContext.h>
#include <VrkGL/SamplerTextureManager.h>
#include <VrkGL/ShaderProgram.h>
#include <VrkGL/VertexArrayObject.h>

#include <QVariant>

using namespace Harrow::Vrk;

constexpr int kSize = 320;
constexpr int kSquares = 12;
constexpr float kHalf = 0.5f;

constexpr char kVertexShader[] = R"(#version 150
#include "VrkUtilities.glslh"
#instancedata "Object"
uniform mat4 u_ClipFromWorld;
in vec2 va_Vertex;
flat out vec4 vo_Color;
void main()
{
    vo_Color = getColor();
    gl_Position = u_ClipFromWorld * getModelMatrix() * vec4(va_Vertex, 0.0, 1.0);
})";

constexpr char kFragmentShader[] = R"(#version 150
flat in vec4 vo_Color;
out vec4 o_Color;
void main() { o_Color = vo_Color; })";

static InstanceDataPlan* registerPlan()
{
    auto* const plan = new InstanceDataPlan("Object");
    for (const QString& matrix : {kModelMatrix, kPreviousModelMatrix, kInverseModelMatrix})
        plan->addMember(InstanceDataPlan::eMat4, matrix); // the scene writes these three
    plan->addMember(InstanceDataPlan::eVec4, "Color");
    plan->setArraySize(kSquares);
    InstanceDataRegistry::Instance().registerPlan(plan);
    return plan;
}

static bool build(ShaderProgram& program, const InstanceDataPlan& plan)
{
    GLSLMacroProcessor processor;
    DrawBuffers::setup(&processor);
    program.setMacroProcessor(&processor);
    program.addShader(GL_VERTEX_SHADER, kVertexShader);
    program.addShader(GL_VERTEX_SHADER, plan.glslc());
    program.addShaderFromFile(GL_VERTEX_SHADER, "VrkUtilities.glslc");
    program.addShader(GL_FRAGMENT_SHADER, kFragmentShader);
    program.setMacroProcessor(nullptr);
    return program.link();
}

/// One square in two triangles, to be drawn by so many commands. Command i reads record i.
static DrawBuffers* newSquares()
{
    const auto device = OpenGLDeviceContext::current();
    const auto vertices = device->newBuffer(), indices = device->newBuffer();
    vertices->setTarget(GL_ARRAY_BUFFER);
    indices->setTarget(GL_ELEMENT_ARRAY_BUFFER);
    const auto vertexArray = device->newVAO();
    vertexArray->upload("va_Vertex", vertices, {-kHalf, -kHalf, kHalf, -kHalf, kHalf, kHalf, -kHalf, kHalf}, 2,
                        GL_STATIC_DRAW);
    constexpr GLushort kIndices[] = {0, 1, 2, 0, 2, 3};
    {
        const AutoBinder bound(indices);
        indices->uploadGLushortData(kIndices, 6, GL_STATIC_DRAW);
    }
    auto* const squares = new DrawBuffers(nullptr);
    squares->setVAO(vertexArray);
    squares->setPrimitiveType(GL_TRIANGLES);
    squares->setIndexedDraw(indices, 6, GL_UNSIGNED_SHORT);
    const QList<DrawElementsIndirectCommand> commands(kSquares, {6, 1, 0, 0, 0});
    squares->setDrawElementsIndirectCommands(commands.constData(), kSquares);
    return squares;
}

/// Squares four units from the wheel's middle. Returns the wheel's transform.
static int fill(GPUModel& scene, InstanceDataPlan* plan)
{
    const int squares = scene.add(newSquares(), 0, nullptr, new InstanceDataCollection(plan, kSquares), 0);
    const GPUModel::BoundingBox box{-kHalf, -kHalf, 0.0f, kHalf, kHalf, 0.0f};
    scene.loadBoundingBoxes(&box, 1);
    const int wheel = scene.addTransform(-1, QMatrix4x4());
    for (int i = 0; i < kSquares; ++i)
    {
        QMatrix4x4 local;
        local.rotate(360.0f * float(i) / float(kSquares), 0.0f, 0.0f, 1.0f);
        local.translate(4.0f, 0.0f, 0.0f);
        scene.useTransform(squares, i, scene.addTransform(wheel, local));
        scene.useBoundingBox(squares, i, 0);
        scene.addObjectName(squares, i, i % 2 == 0 ? "even" : "odd");
    }
    return wheel;
}

static void draw(Guide& guide, InstanceDataPlan* plan)
{
    SamplerTextureManager manager; // a pass announces the textures in its records, though these have none
    ShaderProgram program;
    guide.expect(build(program, *plan), "the program links");
    GPUModel scene; // which deletes what was added
    const int wheel = fill(scene, plan);
    const float gold[] = {1.0f, 0.8f, 0.2f, 1.0f}, blue[] = {0.2f, 0.4f, 1.0f, 1.0f};
    scene.setObjectProperty("even", "Color", gold, sizeof(gold));
    scene.setObjectProperty("odd", "Color", blue, sizeof(blue));

    QMatrix4x4 clipFromWorld; // the left half of the wheel is out of sight
    clipFromWorld.ortho(0.0f, 10.0f, -5.0f, 5.0f, -1.0f, 1.0f);
    QMatrix4x4 turned;
    turned.rotate(30.0f, 0.0f, 0.0f, 1.0f);
    scene.setLocalTransform(wheel, turned, false); // marks only
    scene.setVisibility(1, 2);                     // the first square is hidden
    scene.updateTransforms();
    scene.resetCulling();
    guide.expect(scene.visibilityCull() == 1, "one command is hidden");
    guide.expect(scene.frustumCull(clipFromWorld) == 5, "five are out of sight");

    guide.begin(QColor(26, 28, 33));
    const AutoBinder bound(&program);
    program.setUniform("u_ClipFromWorld", QVariant(clipFromWorld));
    scene.draw(&program, &manager, 0, 0, GPUModel::WindingNone, false); // all flags, and both sides of the squares
    guide.expectColor(guide.pixel(128, kSize / 2), QColor(51, 102, 255),
                      "the last, which is odd, has come to the right");
    guide.expectColor(guide.pixel(111, 224), QColor(26, 28, 33), "where the first would be is nothing");
    scene.updatePreviousMatrices();
}

int main(int argc, char** argv)
{
    Guide guide(argc, argv, kSize, kSize);
    if (!guide.isReady())
        return 1;
    draw(guide, registerPlan());
    InstanceDataRegistry::Instance().clear();
    OpenGLDeviceContext::resetContext();
    return guide.finish();
}
