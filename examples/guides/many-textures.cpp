// SPDX-License-Identifier: MIT
// Two thousand different textures in one frame, each under a token in a record, and every one of them read back.
#include "Guide.h"

#include <VrkGL/Array2DTextureManager.h>
#include <VrkGL/AutoBinder.h>
#include <VrkGL/DrawBuffers.h>
#include <VrkGL/GLFunctions.h>
#include <VrkGL/GLSLMacroProcessor.h>
#include <VrkGL/InstanceData.h>
#include <VrkGL/InstanceDataCollection.h>
#include <VrkGL/InstanceDataPlan.h>
#include <VrkGL/InstanceDataRegistry.h>
#include <VrkGL/OpenGLDeviceContext.h>
#include <VrkGL/ShaderProgram.h>
#include <VrkGL/TextureIO.h>
#include <VrkGL/VertexArrayObject.h>

#include <QImage>

using namespace Harrow::Vrk;

constexpr int kColumns = 50;
constexpr int kRows = 40;
constexpr int kCell = 8; // pixels, and texels

constexpr char kVertexShader[] = R"(#version 150
#include "VrkUtilities.glslh"
in vec3 va_Vertex;
in vec2 va_TexCoord;
flat out uint vo_Record;
out vec2 vo_TexCoord;
const vec2 kCells = vec2(50.0, 40.0);
void main()
{
    vo_Record = getDrawID();
    vo_TexCoord = va_TexCoord;
    vec2 cell = vec2(vo_Record % 50u, vo_Record / 50u);
    gl_Position = vec4((cell + va_TexCoord) / kCells * 2.0 - 1.0, 0.0, 1.0);
})";

constexpr char kFragmentShader[] = R"(#version 150
#include "TextureManager.glslh"
#instancedata "Cell"
flat in uint vo_Record;
in vec2 vo_TexCoord;
out vec4 o_Color;
void main() { o_Color = managedTexture(getPicture(vo_Record), vo_TexCoord); })";

/// The number of a cell as a colour of its own.
static QColor colorOf(int cell)
{
    return QColor(5 * (cell % kColumns), 6 * (cell / kColumns), 255 - 4 * (cell % kColumns));
}

/// A tile of that colour with a dark frame.
static Texture* newPicture(int cell)
{
    QImage image(kCell, kCell, QImage::Format_ARGB32);
    image.fill(QColor(26, 28, 33));
    for (int y = 1; y < kCell - 1; ++y)
        for (int x = 1; x < kCell - 1; ++x)
            image.setPixelColor(x, y, colorOf(cell));
    return QImageToTexture(image, false, TextureFileInfo()); // with mipmaps
}

static InstanceDataPlan* registerPlan()
{
    auto* const plan = new InstanceDataPlan("Cell");
    plan->addMember(InstanceDataPlan::eTexture, "Picture");
    plan->setMechanism(InstanceDataPlan::eBufferTextureMechanism); // thousands of records on every driver
    plan->setArraySize(std::size_t(kColumns) * kRows);
    InstanceDataRegistry::Instance().registerPlan(plan);
    return plan;
}

static bool build(ShaderProgram& program, TextureManager& manager, const InstanceDataPlan& plan)
{
    GLSLMacroProcessor processor;
    DrawBuffers::setup(&processor);
    manager.setup(&processor);
    program.setMacroProcessor(&processor);
    program.addShader(GL_VERTEX_SHADER, kVertexShader);
    program.addShaderFromFile(GL_VERTEX_SHADER, "VrkUtilities.glslc");
    program.addShaderFromFile(GL_VERTEX_SHADER, "VrkUtilities.vert");
    program.addShader(GL_FRAGMENT_SHADER, kFragmentShader);
    program.addShader(GL_FRAGMENT_SHADER, plan.glslc());
    program.addShaderFromFile(GL_FRAGMENT_SHADER, manager.getShaderFile()); // the body of managedTexture
    program.setMacroProcessor(nullptr);
    return program.link();
}

static void draw(Guide& guide, TextureManager& manager)
{
    InstanceDataPlan* const plan = registerPlan();
    QList<InstanceData> list;
    QList<TextureToken> tokens;
    for (int cell = 0; cell < kColumns * kRows; ++cell)
    {
        tokens.append(manager.tokenForTexture(newPicture(cell)));
        InstanceData record("Cell");
        record.setTextureToken(plan->offset("Picture"), tokens.last());
        list.append(record);
    }
    manager.bind(tokens); // all at once, before the first draw: the array is made once, with room for each

    {
        InstanceDataCollection records("Cell", list);
        const auto cells = OpenGLDeviceContext::current()->newFullscreenQuad();
        cells->setInstanceCount(kColumns * kRows);
        ShaderProgram program;
        guide.expect(build(program, manager, *plan), "the program links");

        guide.begin(Qt::black);
        const AutoBinder boundProgram(&program), boundCells(cells);
        cells->VAO()->enableShaderProgramArrays(&program);
        records.bind(&program, &manager); // uploads the records, and announces the tokens in them
        manager.bind(&program);           // copies what is new into the array, and sets the samplers
        cells->draw(&program);
        manager.unbind(&program);
        records.unbind(&program, &manager);
    }
    int right = 0;
    for (int cell = 0; cell < kColumns * kRows; ++cell)
    {
        const int x = cell % kColumns, y = cell / kColumns;
        right += guide.pixel(x * kCell + kCell / 2, y * kCell + kCell / 2) == colorOf(cell);
    }
    guide.expect(right == kColumns * kRows, "each of the two thousand cells shows its own texture");
    InstanceDataRegistry::Instance().clear();
}

int main(int argc, char** argv)
{
    Guide guide(argc, argv, kColumns * kCell, kRows * kCell);
    if (!guide.isReady())
        return 1;
    DrawBuffers::useBaseInstanceDrawing(DrawBuffers::isBaseInstanceDrawingSupported());
    {
        Array2DTextureManager manager;
        manager.setMaxSlots(4); // array textures, one for each size and format
        TextureManager::setInstance(&manager);
        draw(guide, manager);
        TextureManager::setInstance(nullptr);
    } // and all textures that have a token go with it
    OpenGLDeviceContext::resetContext();
    return guide.finish();
}
