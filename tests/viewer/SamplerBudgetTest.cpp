// SPDX-License-Identifier: MIT
// What the shaders of the viewer ask of a driver's samplers, with the manager that has one for each texture.
#include "Driver.h"
#include "HeadlessContext.h"
#include "ModelFiles.h"
#include "ModelReader.h"
#include "PbrFiles.h"
#include "RenderTarget.h"
#include "SceneRenderer.h"
#include "Shapes.h"

#include <VrkGL/GLFunctions.h>
#include <VrkGL/OpenGLDeviceContext.h>

#include <gtest/gtest.h>

#include <QJsonArray>

#include <array>
#include <optional>
#include <set>

using namespace vrkview;
using namespace Harrow::Vrk;

namespace
{

// What every driver of OpenGL 3.2 has for one stage.
constexpr int kUnitsEverywhere = 16;

QStringList warnings;

void keepWarning(QtMsgType, const QMessageLogContext&, const QString& text)
{
    warnings.append(text);
}

class SamplerBudgetTest : public testing::Test
{
protected:
    void SetUp() override
    {
        QString driver;
        ASSERT_TRUE(context.create(error)) << qPrintable(error);
        ASSERT_TRUE(startDriver(driver, error)) << qPrintable(error);
        target.emplace();
        ASSERT_TRUE(target->create({64, 64}, 1, AntiAliasingKind::None, error)) << qPrintable(error);
        warnings.clear();
        previous = qInstallMessageHandler(&keepWarning);
    }

    void TearDown() override
    {
        qInstallMessageHandler(previous);
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
        renderer.destroy();
        target.reset();
        OpenGLDeviceContext::resetContext();
        context.destroy();
    }

    QImage draw(const Model& model, const RenderSettings& settings)
    {
        EXPECT_TRUE(renderer.create(model, settings, error)) << qPrintable(error);
        target->bind();
        OrbitCamera camera;
        camera.setAngles(0.0f, 0.0f);
        camera.frame(model, 1.0f);
        renderer.draw(renderer.viewOf(camera, 1.0f));
        target->resolve();
        return target->read();
    }

    HeadlessContext context;
    std::optional<RenderTarget> target;
    SceneRenderer renderer;
    QString error;
    QtMessageHandler previous = nullptr;
};

bool isSampler(GLenum type)
{
    static const std::set<GLenum> kTypes = {GL_SAMPLER_1D,
                                            GL_SAMPLER_2D,
                                            GL_SAMPLER_3D,
                                            GL_SAMPLER_CUBE,
                                            GL_SAMPLER_1D_ARRAY,
                                            GL_SAMPLER_2D_ARRAY,
                                            GL_SAMPLER_CUBE_MAP_ARRAY,
                                            GL_SAMPLER_BUFFER,
                                            GL_SAMPLER_2D_RECT,
                                            GL_SAMPLER_2D_MULTISAMPLE,
                                            GL_SAMPLER_2D_MULTISAMPLE_ARRAY,
                                            GL_SAMPLER_1D_SHADOW,
                                            GL_SAMPLER_2D_SHADOW,
                                            GL_SAMPLER_CUBE_SHADOW,
                                            GL_SAMPLER_1D_ARRAY_SHADOW,
                                            GL_SAMPLER_2D_ARRAY_SHADOW,
                                            GL_SAMPLER_CUBE_MAP_ARRAY_SHADOW,
                                            GL_SAMPLER_2D_RECT_SHADOW,
                                            GL_INT_SAMPLER_1D,
                                            GL_INT_SAMPLER_2D,
                                            GL_INT_SAMPLER_3D,
                                            GL_INT_SAMPLER_CUBE,
                                            GL_INT_SAMPLER_1D_ARRAY,
                                            GL_INT_SAMPLER_2D_ARRAY,
                                            GL_INT_SAMPLER_CUBE_MAP_ARRAY,
                                            GL_INT_SAMPLER_BUFFER,
                                            GL_INT_SAMPLER_2D_RECT,
                                            GL_INT_SAMPLER_2D_MULTISAMPLE,
                                            GL_INT_SAMPLER_2D_MULTISAMPLE_ARRAY,
                                            GL_UNSIGNED_INT_SAMPLER_1D,
                                            GL_UNSIGNED_INT_SAMPLER_2D,
                                            GL_UNSIGNED_INT_SAMPLER_3D,
                                            GL_UNSIGNED_INT_SAMPLER_CUBE,
                                            GL_UNSIGNED_INT_SAMPLER_1D_ARRAY,
                                            GL_UNSIGNED_INT_SAMPLER_2D_ARRAY,
                                            GL_UNSIGNED_INT_SAMPLER_CUBE_MAP_ARRAY,
                                            GL_UNSIGNED_INT_SAMPLER_BUFFER,
                                            GL_UNSIGNED_INT_SAMPLER_2D_RECT,
                                            GL_UNSIGNED_INT_SAMPLER_2D_MULTISAMPLE,
                                            GL_UNSIGNED_INT_SAMPLER_2D_MULTISAMPLE_ARRAY};
    return kTypes.count(type) > 0;
}

/// Of all stages of a program together, so at least what one of them has.
int samplersOf(GLuint program)
{
    GLint uniforms = 0;
    glGetProgramiv(program, GL_ACTIVE_UNIFORMS, &uniforms);
    int samplers = 0;
    for (GLint i = 0; i < uniforms; ++i)
    {
        std::array<char, 256> name = {};
        GLint size = 0;
        GLenum type = 0;
        glGetActiveUniform(program, GLuint(i), GLsizei(name.size()), nullptr, &size, &type, name.data());
        // The records of objects are the vertex stage's.
        if (isSampler(type) && !QByteArray(name.data()).contains("Object"))
            samplers += size;
    }
    return samplers;
}

/// Squares of one mesh in a row, each with another picture than the next.
Model manyPictures(std::size_t count)
{
    Model model;
    Mesh mesh;
    mesh.positions = {{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}};
    mesh.normals.assign(4, {0, 0, 1});
    mesh.texCoords = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    mesh.indices = {0, 1, 2, 0, 2, 3};
    model.meshes.push_back(mesh);
    for (std::size_t i = 0; i < count; ++i)
    {
        Material material;
        material.unlit = true;
        material.baseColor = {1.0f, 1.0f, 1.0f};
        material.baseColorImage = model.images.size();
        const QImage picture = plainPicture(i % 2 == 0 ? 255 : 0, i % 3 == 0 ? 255 : 0, i % 5 == 0 ? 255 : 0);
        model.images.push_back({QString("picture %1").arg(i), picture});
        model.materials.push_back(material);
        Instance instance;
        instance.worldFromModel.translate(2.5f * float(i), 0.0f, 0.0f);
        instance.material = i;
        model.instances.push_back(instance);
    }
    model.measure();
    return model;
}

} // namespace

TEST_F(SamplerBudgetTest, EveryProgramFitsIntoTheUnitsThatEveryDriverHas)
{
    const ModelFolder folder;
    const QString around = folder.write("even.hdr", environmentFile([](const QVector3D&) { return 1.0f; }));
    for (const ManagerKind manager : {ManagerKind::Sampler, ManagerKind::Array2D})
    {
        RenderSettings settings;
        settings.manager = manager;
        settings.recordCarrier = RecordCarrier::Texture;
        settings.shadows = true;
        settings.environment.path = around;
        draw(manyPictures(1), settings);
        int programs = 0;
        int most = 0;
        for (GLuint name = 1; name < 200; ++name)
            if (glIsProgram(name))
            {
                ++programs;
                most = std::max(most, samplersOf(name));
            }
        EXPECT_GE(programs, 3);
        EXPECT_LE(most, kUnitsEverywhere);
        EXPECT_GE(most, 12) << "textures of a draw, their table, records, the environment's three and the shadow maps";
        renderer.destroy();
    }
}

TEST_F(SamplerBudgetTest, OneMeshWithMorePicturesThanSlotsIsDrawnInSeveralLists)
{
    constexpr std::size_t kCount = 20;
    const Model model = manyPictures(kCount);
    RenderSettings settings;
    settings.manager = ManagerKind::Sampler;
    const QImage picture = draw(model, settings);
    EXPECT_EQ(warnings.filter("Rendering will be incorrect").size(), 0) << qPrintable(warnings.join('\n'));
    renderer.destroy();
    settings.manager = ManagerKind::Array2D;
    EXPECT_EQ(picture, draw(model, settings));
    std::set<QRgb> colors;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x)
            colors.insert(picture.pixel(x, y));
    for (const QRgb color : {qRgb(255, 0, 0), qRgb(0, 255, 0), qRgb(0, 0, 255), qRgb(0, 0, 0)})
        EXPECT_EQ(colors.count(color), 1u) << qRed(color) << " " << qGreen(color) << " " << qBlue(color);
}
