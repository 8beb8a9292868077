// SPDX-License-Identifier: MIT
//
// A small scene through the whole road on the real driver: records of two plans, tokens, transforms, culling and
// passes, read back as a picture of 4 by 4 cells.
#include "GPUModelPassTestTools.h"

#include "AutoBinder.h"
#include "AutoEnabler.h"
#include "BufferObject.h"
#include "GLSLMacroProcessor.h"
#include "InstanceDataCollection.h"
#include "InstanceDataPlan.h"
#include "InstanceDataRegistry.h"
#include "OpenGLDeviceContext.h"
#include "SamplerTextureManager.h"
#include "ShaderProgram.h"
#include "VertexArrayObject.h"
#include "support/CallLog.h"
#include "support/GLTest.h"
#include "support/LogCapture.h"
#include "support/ObjectAccess.h"
#include "support/Picture.h"

#include <QColor>
#include <QVector4D>

#include <array>
#include <cmath>
#include <memory>
#include <tuple>
#include <vector>

namespace Harrow::Vrk::Test
{
namespace
{

constexpr int kCells = 4;
constexpr int kCellPixels = 10;
constexpr int kSide = kCells * kCellPixels;
constexpr int kRecords = 16;

const QString kTint = QStringLiteral("Tint");
const QString kColorMap = QStringLiteral("ColorMap");

const char* const kVertexText = R"(#version 150
#include "VrkUtilities.glslh"
#instancedata "Object"
in vec3 va_Vertex;
uniform mat4 u_ClipFromWorld;
flat out uint vo_Draw;
void main()
{
    vo_Draw = getDrawID();
    gl_Position = u_ClipFromWorld * get%1(vo_Draw) * vec4(va_Vertex, 1.0);
}
)";

const char* const kFragmentText = R"(#version 150
#include "TextureManager.glslh"
#instancedata "Material"
flat in uint vo_Draw;
out vec4 o_Color;
void main()
{
    o_Color = managedTexture(getColorMap(vo_Draw), vec2(0.5)) * getTint(vo_Draw);
}
)";

/// Colour, depth and stencil. Bound while alive.
class Target
{
public:
    Target()
    {
        glGenFramebuffers(1, &_framebuffer);
        glGenRenderbuffers(2, _renderbuffers);
        glBindFramebuffer(GL_FRAMEBUFFER, _framebuffer);
        attach(0, GL_RGBA8, GL_COLOR_ATTACHMENT0);
        attach(1, GL_DEPTH24_STENCIL8, GL_DEPTH_STENCIL_ATTACHMENT);
        EXPECT_EQ(glCheckFramebufferStatus(GL_FRAMEBUFFER), GLenum(GL_FRAMEBUFFER_COMPLETE));
        glViewport(0, 0, kSide, kSide);
        clear();
    }
    ~Target()
    {
        glBindFramebuffer(GL_FRAMEBUFFER, 0);
        glDeleteFramebuffers(1, &_framebuffer);
        glDeleteRenderbuffers(2, _renderbuffers);
    }
    Target(const Target&) = delete;
    Target& operator=(const Target&) = delete;

    void clear()
    {
        glClearColor(0, 0, 0, 1);
        glClearStencil(0);
        glStencilMask(255);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    }

    /// In the middle of a cell, counted from the lower left.
    static int stencilAt(int x, int y)
    {
        GLubyte value = 0;
        glReadPixels(x * kCellPixels + kCellPixels / 2, y * kCellPixels + kCellPixels / 2, 1, 1, GL_STENCIL_INDEX,
                     GL_UNSIGNED_BYTE, &value);
        return value;
    }

private:
    void attach(int index, GLenum format, GLenum attachment)
    {
        glBindRenderbuffer(GL_RENDERBUFFER, _renderbuffers[index]);
        glRenderbufferStorage(GL_RENDERBUFFER, format, kSide, kSide);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, attachment, GL_RENDERBUFFER, _renderbuffers[index]);
    }

    GLuint _framebuffer = 0;
    GLuint _renderbuffers[2] = {};
};

/// The cell of a point, from above.
QMatrix4x4 cell(int x, int y, float z = 0)
{
    return translation(float(x) + 0.5f, float(y) + 0.5f, z);
}

using Cells = std::array<std::array<QColor, kCells>, kCells>;

class GPUModelGL : public GLTest
{
protected:
    using Access = GPUModelTestAccess;

    void SetUp() override
    {
        GLTest::SetUp();
        DrawBuffersTestAccess::resetEntryPoints();
        DrawBuffersTestAccess::resetMode();
        UniformBufferObjectTestAccess::forgetContexts();
        InstanceDataRegistry::Instance().clear();
        Access::setPrimitiveRestartDone(false, false);
        Access::setPrimitiveRestartDone(true, false);
        manager = std::make_unique<SamplerTextureManager>();
        TextureManager::setInstance(manager.get());
        target = std::make_unique<Target>();
        clipFromWorld.ortho(0, kCells, 0, kCells, -10, 10);
        registerPlans();
        program = build("ModelMatrix");
    }

    void TearDown() override
    {
        model.clear();
        program.reset();
        objects.reset();
        list.reset();
        InstanceDataRegistry::Instance().clear();
        target.reset();
        TextureManager::setInstance(nullptr);
        manager.reset();
        UniformBufferObjectTestAccess::forgetContexts();
        glDisable(GL_PRIMITIVE_RESTART);
        glFrontFace(GL_CCW);
        glStencilFunc(GL_ALWAYS, 0, ~0u);
        glStencilMask(~0u);
        glStencilOp(GL_KEEP, GL_KEEP, GL_KEEP);
        GLTest::TearDown();
    }

    void registerPlans()
    {
        const LogCapture limits;
        objectPlan = new InstanceDataPlan(QStringLiteral("Object"));
        for (const QString& matrix : {kModelMatrix, kPreviousModelMatrix, kInverseModelMatrix})
            objectPlan->addMember(InstanceDataPlan::eMat4, matrix);
        materialPlan = new InstanceDataPlan(QStringLiteral("Material"));
        materialPlan->addMember(InstanceDataPlan::eVec4, kTint);
        materialPlan->addMember(InstanceDataPlan::eTexture, kColorMap);
        for (InstanceDataPlan* const plan : {objectPlan, materialPlan})
        {
            plan->setArraySize(kRecords);
            InstanceDataRegistry::Instance().registerPlan(plan);
        }
    }

    /// A program that places what it draws by one of the matrices of the object records.
    std::unique_ptr<ShaderProgram> build(const char* matrix)
    {
        GLSLMacroProcessor processor;
        DrawBuffers::setup(&processor);
        manager->setup(&processor);
        auto result = std::make_unique<ShaderProgram>();
        result->setMacroProcessor(&processor);
        result->addShader(GL_VERTEX_SHADER, QString::fromLatin1(kVertexText).arg(QLatin1String(matrix)));
        result->addShader(GL_VERTEX_SHADER, objectPlan->glslc());
        result->addShader(GL_FRAGMENT_SHADER, QString::fromLatin1(kFragmentText));
        result->addShader(GL_FRAGMENT_SHADER, materialPlan->glslc());
        result->addShaderFromFile(GL_FRAGMENT_SHADER, manager->getShaderFile());
        for (const GLenum stage : {GL_VERTEX_SHADER, GL_FRAGMENT_SHADER})
            result->addShaderFromFile(stage, QStringLiteral("VrkUtilities.glslc"));
        EXPECT_TRUE(result->link()) << result->log().toStdString();
        result->setMacroProcessor(nullptr);
        return result;
    }

    /// `count` commands, each a square of 0.8 around the origin, seen counter-clockwise from above. Belongs to the
    /// model.
    static DrawBuffers* newSquares(int count)
    {
        auto* const buffers = new DrawBuffers(nullptr);
        const auto context = OpenGLDeviceContext::current();
        buffers->setVAO(context->newVAO());
        buffers->setPrimitiveType(GL_TRIANGLES);
        const auto vertices = context->newBuffer();
        vertices->setTarget(GL_ARRAY_BUFFER);
        const QList<float> corners = {-0.4f, -0.4f, 0, 0.4f, -0.4f, 0, 0.4f, 0.4f, 0, -0.4f, 0.4f, 0};
        EXPECT_TRUE(buffers->VAO()->upload(QStringLiteral("va_Vertex"), vertices, corners, 3, GL_STATIC_DRAW));
        const auto indices = context->newBuffer();
        indices->setTarget(GL_ELEMENT_ARRAY_BUFFER);
        const GLushort numbers[] = {0, 1, 2, 0, 2, 3};
        const AutoBinder binder(indices.data());
        EXPECT_TRUE(indices->uploadGLushortData(numbers, 6, GL_STATIC_DRAW));
        buffers->setIndexedDraw(indices, 6, GL_UNSIGNED_SHORT);
        const QList<DrawElementsIndirectCommand> commands(count, {6, 1, 0, 0, 0});
        buffers->setDrawElementsIndirectCommands(commands.constData(), count);
        return buffers;
    }

    /// A drawable with a command at each of these places, in colours that come half by token and half by tint.
    int add(const QList<QMatrix4x4>& places, const QList<QColor>& colors, quint64 flags = 0, int key = 0)
    {
        auto* const material = new InstanceDataCollection(materialPlan, kRecords);
        const auto count = int(places.size());
        for (int i = 0; i < kRecords; ++i)
        {
            const QColor color = i < count ? colors.at(i) : QColor(Qt::white);
            const bool byToken = i % 2 == 0;
            const TextureToken token = manager->tokenForColor(byToken ? color : QColor(Qt::white));
            const QColor tint = byToken ? QColor(Qt::white) : color;
            const float numbers[] = {float(tint.redF()), float(tint.greenF()), float(tint.blueF()),
                                     float(tint.alphaF())};
            material->set(i, kColorMap, &token.token, sizeof token.token);
            material->set(i, kTint, numbers, sizeof numbers);
        }
        const int handle =
            model.add(newSquares(count), key, material, new InstanceDataCollection(objectPlan, kRecords), flags);
        for (int command = 0; command < count; ++command)
            model.useTransform(handle, command, model.addTransform(-1, places.at(command)));
        model.updateTransforms();
        return handle;
    }

    template <typename Draw> void draw(ShaderProgram& with, Draw pass)
    {
        const AutoBinder binder(&with);
        with.setUniform(QStringLiteral("u_ClipFromWorld"), clipFromWorld);
        EXPECT_TRUE(pass(&with));
    }

    void draw(GPUModel::WindingType winding = GPUModel::WindingUnchanged, const QMatrix4x4* matrix = nullptr,
              quint64 value = 0, bool stencil = false)
    {
        draw(*program,
             [&](ShaderProgram* with) { return model.draw(with, manager.get(), value, 0, winding, matrix, stencil); });
    }

    static QImage picture()
    {
        return readPicture(kSide, kSide);
    }

    /// The middle of each cell, row 0 below; black where nothing was drawn.
    static Cells cells()
    {
        const QImage image = picture();
        Cells result;
        for (int x = 0; x < kCells; ++x)
            for (int y = 0; y < kCells; ++y)
                result[std::size_t(x)][std::size_t(y)] = image.pixelColor(
                    x * kCellPixels + kCellPixels / 2, kSide - 1 - (y * kCellPixels + kCellPixels / 2));
        return result;
    }

    static Cells blackBut(const std::vector<std::tuple<int, int, QColor>>& colored)
    {
        Cells result;
        for (auto& column : result)
            column.fill(QColor(0, 0, 0));
        for (const auto& [x, y, color] : colored)
            result[std::size_t(x)][std::size_t(y)] = color;
        return result;
    }

    GPUModel model;
    InstanceDataPlan* objectPlan = nullptr;
    InstanceDataPlan* materialPlan = nullptr;
    std::unique_ptr<SamplerTextureManager> manager;
    std::unique_ptr<ShaderProgram> program;
    std::unique_ptr<Target> target;
    std::unique_ptr<InstanceDataCollection> objects;
    std::unique_ptr<DrawBuffers> list;
    QMatrix4x4 clipFromWorld;
    const QColor red{255, 0, 0};
    const QColor green{0, 255, 0};
    const QColor blue{0, 0, 255};
    const QColor grey{51, 102, 153};
};

QMatrix4x4 mirrored()
{
    return scaling(-1, 1, 1);
}

/// Seen from behind, and not mirrored.
QMatrix4x4 turned()
{
    QMatrix4x4 matrix;
    matrix.rotate(180, 0, 1, 0);
    return matrix;
}

// -- places and colours --

TEST_F(GPUModelGL, CommandsStandWhereTheirTransformsPutThemInTheColoursOfTheirRecords)
{
    add({cell(0, 0), cell(3, 0), cell(1, 2)}, {red, green, blue});
    add({cell(2, 3), cell(3, 3)}, {grey, red}, 0, 5);
    draw();
    const Cells expected = blackBut({{0, 0, red}, {3, 0, green}, {1, 2, blue}, {2, 3, grey}, {3, 3, red}});
    EXPECT_EQ(cells(), expected);
    target->clear();
    draw(); // warm
    EXPECT_EQ(cells(), expected);
}

TEST_F(GPUModelGL, AChildMovesWithItsParentFromFrameToFrame)
{
    const int handle = add({cell(0, 0), translation(1, 1, 0)}, {red, green});
    model.setTransformParent(1, 0);
    model.setLocalTransform(0, cell(1, 0), false);
    EXPECT_TRUE(model.updateTransforms());
    draw();
    EXPECT_EQ(cells(), blackBut({{1, 0, red}, {2, 1, green}}));
    model.setLocalTransform(0, cell(2, 2), false);
    model.updateTransforms();
    target->clear();
    draw();
    EXPECT_EQ(cells(), blackBut({{2, 2, red}, {3, 3, green}}));
    EXPECT_EQ(model.objectData(handle)->size(), kRecords);
}

TEST_F(GPUModelGL, AChangedMaterialIsSeenInTheNextFrame)
{
    const int handle = add({cell(0, 0), cell(1, 0)}, {red, green});
    model.addMaterialName(handle, 1, QStringLiteral("paint"));
    draw();
    const float tint[] = {0, 0, 1, 1};
    model.setMaterialProperty(QStringLiteral("paint"), kTint, tint, sizeof tint);
    draw();
    EXPECT_EQ(cells(), blackBut({{0, 0, red}, {1, 0, blue}}));
}

TEST_F(GPUModelGL, ASimpleDrawShowsTheSameAsAPass)
{
    add({cell(0, 0), cell(2, 1)}, {red, grey});
    add({cell(3, 2)}, {blue}, 0, 9);
    draw();
    const QImage passed = picture();
    target->clear();
    draw(*program, [this](ShaderProgram* with) { return model.drawSimple(with, manager.get(), 0, 0); });
    EXPECT_TRUE(picturesAgree(picture(), passed, 0, 0));
    EXPECT_EQ(cells(), blackBut({{0, 0, red}, {2, 1, grey}, {3, 2, blue}}));
}

TEST_F(GPUModelGL, APassDrawsWhatItsFlagsSelect)
{
    add({cell(0, 0)}, {red}, 1);
    add({cell(1, 0)}, {green}, 2);
    add({cell(2, 0)}, {blue}, 3);
    draw(*program, [this](ShaderProgram* with) { return model.draw(with, manager.get(), 2, 2); });
    EXPECT_EQ(cells(), blackBut({{1, 0, green}, {2, 0, blue}}));
}

// -- faces --

TEST_F(GPUModelGL, MirroredCommandsComeOutRightWithCullingOn)
{
    add({cell(0, 0), cell(1, 0) * mirrored(), cell(2, 0) * turned(), cell(3, 0) * turned() * mirrored(), cell(0, 1)},
        {red, green, blue, grey, grey});
    for (const auto winding : {GPUModel::WindingCCW, GPUModel::WindingCW})
    {
        target->clear();
        draw(winding);
        EXPECT_EQ(cells(), blackBut({{0, 0, red}, {1, 0, green}, {0, 1, grey}})) << winding;
    }
    for (const auto winding : {GPUModel::WindingNone, GPUModel::WindingUnchanged})
    {
        target->clear();
        draw(winding);
        EXPECT_EQ(cells(), blackBut({{0, 0, red}, {1, 0, green}, {2, 0, blue}, {3, 0, grey}, {0, 1, grey}})) << winding;
    }
}

TEST_F(GPUModelGL, ATwoSidedDrawableShowsItsBack)
{
    add({cell(0, 0), cell(1, 0) * turned()}, {red, green});
    add({cell(0, 1), cell(1, 1) * turned(), cell(2, 1) * mirrored()}, {red, green, blue}, kTwoSidedFlag);
    draw(GPUModel::WindingCCW);
    EXPECT_EQ(cells(), blackBut({{0, 0, red}, {0, 1, red}, {1, 1, green}, {2, 1, blue}}));
    EXPECT_EQ(glIsEnabled(GL_CULL_FACE), GL_FALSE);
}

// -- what is culled --

TEST_F(GPUModelGL, CullingChangesNoPicture)
{
    QList<QMatrix4x4> places;
    QList<QColor> colors;
    for (int i = 0; i < kRecords; ++i)
    {
        // A ring, half of it beyond the picture.
        const float angle = float(i) * 0.3927f;
        places.append(translation(4.0f + 3.0f * std::cos(angle), 2.0f + 1.7f * std::sin(angle), 0));
        colors.append(QColor(250 - 60 * (i % 4), 60 * (i % 4), 100 + 10 * (i % 3)));
    }
    const int handle = add(places, colors);
    const GPUModel::BoundingBox box = {-0.4f, -0.4f, 0, 0.4f, 0.4f, 0};
    model.loadBoundingBoxes(&box, 1);
    for (int command = 0; command < kRecords; ++command)
        model.useBoundingBox(handle, command, 0);
    draw();
    const QImage whole = picture();
    target->clear();
    EXPECT_EQ(model.visibilityCull(), 0);
    const int culled = model.frustumCull(clipFromWorld);
    EXPECT_GT(culled, 4);
    EXPECT_LT(culled, 12);
    DrawBuffersTestAccess::resetMode();
    CallLog calls;
    draw();
    EXPECT_EQ(calls.count("glDrawElementsBaseVertex"), kRecords - culled);
    EXPECT_TRUE(picturesAgree(picture(), whole, 0, 0));
}

TEST_F(GPUModelGL, HiddenTransformsAreNotDrawn)
{
    add({cell(0, 0), cell(1, 0), cell(2, 0)}, {red, green, blue});
    model.setVisibility(1, 2);
    draw();
    EXPECT_EQ(cells(), blackBut({{0, 0, red}, {2, 0, blue}}));
    target->clear();
    model.setTransformParent(0, 1);
    model.setVisibility(1, 3);
    EXPECT_EQ(model.visibilityCull(), 2);
    draw();
    EXPECT_EQ(cells(), blackBut({{2, 0, blue}}));
}

// -- order --

TEST_F(GPUModelGL, TransparentCommandsAreDrawnFromTheNearestOn)
{
    const int handle = add({cell(1, 1, 0), cell(1, 1, 4), cell(1, 1, 2)},
                           {QColor(255, 0, 0, 128), QColor(0, 255, 0, 128), QColor(0, 0, 255, 128)});
    const GPUModel::BoundingBox box = {-0.4f, -0.4f, -0.1f, 0.4f, 0.4f, 0.1f};
    model.loadBoundingBoxes(&box, 1);
    for (int command = 0; command < 3; ++command)
        model.useBoundingBox(handle, command, 0);
    const AutoEnabler blending(GL_BLEND);
    glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ZERO, GL_ONE);
    const auto drawnFrom = [this](float z)
    {
        target->clear();
        const QMatrix4x4 matrix = translation(1.5f, 1.5f, z);
        draw(GPUModel::WindingCCW, &matrix, kSortFlag);
        return cells()[1][1];
    };
    // What is drawn last counts half, what is drawn before it a quarter, and the first an eighth.
    const auto isMix = [](const QColor& color, int r, int g, int b)
    { return std::abs(color.red() - r) <= 2 && std::abs(color.green() - g) <= 2 && std::abs(color.blue() - b) <= 2; };
    EXPECT_TRUE(isMix(drawnFrom(9), 128, 32, 64)) << "green, blue, red";
    EXPECT_TRUE(isMix(drawnFrom(-9), 32, 128, 64)) << "red, blue, green";
    EXPECT_TRUE(isMix(drawnFrom(2.5f), 128, 64, 32)) << "blue, green, red";
    glBlendFunc(GL_ONE, GL_ZERO);
}

// -- stencil --

TEST_F(GPUModelGL, TheStencilBufferHoldsTheKeyPlusOneWhereADrawableIs)
{
    add({cell(0, 0), cell(1, 0) * mirrored()}, {red, green}, 0, 0);
    add({cell(2, 0)}, {blue}, 0, 41);
    add({cell(3, 0)}, {grey}, 0, 41);
    add({cell(0, 1)}, {grey}, 0, 254);
    draw(GPUModel::WindingCCW, nullptr, 0, true);
    EXPECT_EQ(Target::stencilAt(0, 0), 1);
    EXPECT_EQ(Target::stencilAt(1, 0), 1);
    EXPECT_EQ(Target::stencilAt(2, 0), 42);
    EXPECT_EQ(Target::stencilAt(3, 0), 42);
    EXPECT_EQ(Target::stencilAt(0, 1), 255);
    EXPECT_EQ(Target::stencilAt(1, 1), 0);
    EXPECT_EQ(glIsEnabled(GL_STENCIL_TEST), GL_FALSE);
    draw(); // a pass without stencil leaves it as it is
    EXPECT_EQ(Target::stencilAt(2, 0), 42);
}

TEST_F(GPUModelGL, AStencilTestOfTheCallersStaysOn)
{
    add({cell(0, 0)}, {red}, 0, 6);
    glEnable(GL_STENCIL_TEST);
    draw(GPUModel::WindingUnchanged, nullptr, 0, true);
    EXPECT_EQ(glIsEnabled(GL_STENCIL_TEST), GL_TRUE);
    glDisable(GL_STENCIL_TEST);
    EXPECT_EQ(Target::stencilAt(0, 0), 7);
}

// -- previous matrices --

TEST_F(GPUModelGL, PreviousMatricesAreThoseOfTheFrameBefore)
{
    add({cell(0, 0), cell(3, 3)}, {red, green});
    const auto previous = build("PreviousModelMatrix");
    const auto drawPrevious = [&]
    {
        target->clear();
        draw(*previous, [this](ShaderProgram* with) { return model.draw(with, manager.get(), 0, 0); });
        return cells();
    };
    EXPECT_EQ(drawPrevious(), blackBut({})); // zeroed records: nothing was before
    model.updatePreviousMatrices();
    EXPECT_EQ(drawPrevious(), blackBut({{0, 0, red}, {3, 3, green}}));
    model.setLocalTransform(0, cell(1, 2), false);
    model.updateTransforms();
    EXPECT_EQ(drawPrevious(), blackBut({{0, 0, red}, {3, 3, green}}));
    draw();
    EXPECT_EQ(cells(), blackBut({{0, 0, red}, {1, 2, red}, {3, 3, green}}));
    model.updatePreviousMatrices();
    EXPECT_EQ(drawPrevious(), blackBut({{1, 2, red}, {3, 3, green}}));
}

// -- calls --

TEST_F(GPUModelGL, AWarmFrameUploadsNothingAndBindsSharedRecordsOnce)
{
    const int first = add({cell(0, 0), cell(1, 0)}, {red, green});
    model.setDeleteOnClear(false);
    std::vector<std::unique_ptr<DrawBuffers>> owned;
    owned.emplace_back(model.drawBuffers(first));
    const std::unique_ptr<InstanceDataCollection> material(model.materialData(first));
    objects.reset(model.objectData(first));
    for (int i = 0; i < 3; ++i)
    {
        owned.emplace_back(newSquares(1));
        const int handle = model.add(owned.back().get(), 0, material.get(), objects.get(), 0);
        model.useTransform(handle, 0, 0);
    }
    const auto frame = [this]
    {
        model.updateTransforms();
        model.resetCulling();
        model.visibilityCull();
        model.frustumCull(clipFromWorld);
        model.sortDrawablesByFlags();
        draw(GPUModel::WindingCCW);
        model.updatePreviousMatrices();
    };
    frame();
    frame(); // sends the previous matrices of the first
    CallLog calls;
    frame();
    const QStringList uploads = calls.named({"glBufferData", "glBufferSubData", "glNamedBufferData",
                                             "glNamedBufferSubData", "glTexImage2D", "glTexSubImage2D"});
    EXPECT_EQ(uploads, QStringList());
    EXPECT_EQ(calls.count("glDrawElementsBaseVertex"), 5);
    EXPECT_EQ(calls.count("glBindVertexArray"), 5); // four lists, and none at the end
    EXPECT_EQ(calls.count("glBindBufferBase"), 4);  // each collection once, and none at the end
    EXPECT_EQ(calls.count("glEnableVertexAttribArray"), 0);
    model.clear();
}

} // namespace
} // namespace Harrow::Vrk::Test
