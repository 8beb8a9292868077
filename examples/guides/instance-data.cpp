// SPDX-License-Identifier: MIT
// Twenty-four pieces in one draw list, each with a record of its own. Drawn once by every carrier and each way of
// passing the draw's number, always with the same picture.
#include "Guide.h"

#include <VrkGL/AutoBinder.h>
#include <VrkGL/BufferObject.h>
#include <VrkGL/DrawBuffers.h>
#include <VrkGL/GLFunctions.h>
#include <VrkGL/GLSLMacroProcessor.h>
#include <VrkGL/InstanceDataCollection.h>
#include <VrkGL/InstanceDataPlan.h>
#include <VrkGL/InstanceDataRegistry.h>
#include <VrkGL/OpenGLDeviceContext.h>
#include <VrkGL/ShaderProgram.h>
#include <VrkGL/VertexArrayObject.h>

#include <QMatrix4x4>

#include <cstdio>

using namespace Harrow::Vrk;

constexpr int kSize = 320;
constexpr int kPieces = 24;

constexpr char kVertexShader[] = R"(#version 150
#include "VrkUtilities.glslh"
#instancedata "Object"
in vec2 va_Vertex;
flat out vec4 vo_Color;
void main()
{
    vo_Color = getColor(); // of the record of this draw; getColor(7u) would be that of another
    gl_Position = getModelMatrix() * vec4(va_Vertex, 0.0, 1.0);
})";

constexpr char kFragmentShader[] = R"(#version 150
flat in vec4 vo_Color;
out vec4 o_Color;
void main() { o_Color = vo_Color; })";

struct Carrier
{
    InstanceDataPlan::MechanismType type;
    const char* name;
};

constexpr Carrier kCarriers[] = {{InstanceDataPlan::eUniformBufferMechanism, "uniform block"},
                                 {InstanceDataPlan::eUniformMechanism, "plain uniforms"},
                                 {InstanceDataPlan::eBufferTextureMechanism, "buffer texture"},
                                 {InstanceDataPlan::eTextureMechanism, "texture"},
                                 {InstanceDataPlan::eStorageBufferMechanism, "storage block"}};

static QColor colorOf(int piece)
{
    return QColor::fromHsvF(float(piece) / float(kPieces), 0.6f, 0.9f);
}

/// What each piece carries.
static InstanceDataPlan* registerPlan(InstanceDataPlan::MechanismType carrier)
{
    auto* const plan = new InstanceDataPlan("Object");
    plan->addMember(InstanceDataPlan::eMat4, "ModelMatrix");
    plan->addMember(InstanceDataPlan::eVec4, "Color");
    plan->setMechanism(carrier);
    plan->setArraySize(kPieces);
    InstanceDataRegistry::Instance().registerPlan(plan); // which owns it from now on
    return plan;
}

static bool build(ShaderProgram& program, const InstanceDataPlan& plan)
{
    GLSLMacroProcessor processor;
    DrawBuffers::setup(&processor);
    program.setMacroProcessor(&processor);
    program.addShader(GL_VERTEX_SHADER, kVertexShader);
    program.addShader(GL_VERTEX_SHADER, plan.glslc()); // the bodies of getColor and getModelMatrix
    program.addShaderFromFile(GL_VERTEX_SHADER, "VrkUtilities.glslc");
    program.addShaderFromFile(GL_VERTEX_SHADER, "VrkUtilities.vert"); // getDrawID by base instance
    program.addShader(GL_FRAGMENT_SHADER, kFragmentShader);
    program.setMacroProcessor(nullptr);
    return program.link();
}

static void fill(InstanceDataCollection& records)
{
    for (int i = 0; i < kPieces; ++i)
    {
        QMatrix4x4 matrix;
        matrix.rotate(90.0f + 360.0f * float(i) / float(kPieces), 0.0f, 0.0f, 1.0f);
        records.set(i, "ModelMatrix", matrix.constData(), 16 * sizeof(float));
        const QColor color = colorOf(i);
        const float rgba[] = {float(color.redF()), float(color.greenF()), float(color.blueF()), 1.0f};
        records.set(i, "Color", rgba, sizeof(rgba));
    }
}

static void drawWheel(Guide& guide, InstanceDataPlan& plan)
{
    InstanceDataCollection records(&plan, kPieces);
    fill(records);

    const auto buffer = OpenGLDeviceContext::current()->newBuffer();
    buffer->setTarget(GL_ARRAY_BUFFER);
    const auto vertexArray = OpenGLDeviceContext::current()->newVAO();
    vertexArray->upload("va_Vertex", buffer, {0.4f, -0.04f, 0.95f, -0.1f, 0.95f, 0.1f, 0.4f, 0.04f}, 2, GL_STATIC_DRAW);
    DrawBuffers pieces(nullptr);
    pieces.setVAO(vertexArray);
    pieces.setPrimitiveType(GL_TRIANGLE_FAN);
    pieces.setVertexCount(4);
    pieces.setInstanceCount(kPieces); // instance i reads record i

    ShaderProgram program;
    guide.expect(build(program, plan), "the program links");
    guide.begin(QColor(26, 28, 33));
    {
        const AutoBinder boundProgram(&program), boundPieces(&pieces);
        vertexArray->enableShaderProgramArrays(&program);
        records.bind(&program, nullptr); // uploads what has changed; no textures here, so no manager
        pieces.draw(&program);
        records.unbind(&program, nullptr);
    }
    guide.expectColor(guide.pixel(kSize / 2, kSize - 40), colorOf(0), "the first piece is at the top");
    guide.expectColor(guide.pixel(40, kSize / 2), colorOf(6), "the seventh is on the left");
    guide.expectColor(guide.pixel(kSize / 2, kSize / 2), QColor(26, 28, 33), "nothing is in the middle");
}

int main(int argc, char** argv)
{
    Guide guide(argc, argv, kSize, kSize);
    if (!guide.isReady())
        return 1;
    for (const bool byBaseInstance : {false, true})
    {
        if (byBaseInstance && !DrawBuffers::isBaseInstanceDrawingSupported())
            continue;
        DrawBuffers::useBaseInstanceDrawing(byBaseInstance); // before any program is built
        for (const Carrier& carrier : kCarriers)
        {
            if (carrier.type == InstanceDataPlan::eStorageBufferMechanism &&
                !InstanceDataPlan::supportsStorageMechanism())
                continue;
            InstanceDataPlan* const plan = registerPlan(carrier.type);
            DrawBuffers::getAndResetTotalDrawCalls();
            drawWheel(guide, *plan);
            std::printf("%-14s  %2d draw calls; %zu bytes a record, at most %zu of them\n", carrier.name,
                        int(DrawBuffers::getAndResetTotalDrawCalls()), plan->totalDataSize(), plan->arraySizeMax());
            InstanceDataRegistry::Instance().clear();
        }
    }
    OpenGLDeviceContext::resetContext();
    return guide.finish();
}
